// SPDX-License-Identifier: Apache-2.0
//
// Which kinds of flooded frames are kept from which ports and from the CPU, by the port that they
// came in through.
#ifndef SOFTCARD_TABLES_FLOOD_BLOCK_TABLE_H_
#define SOFTCARD_TABLES_FLOOD_BLOCK_TABLE_H_

#include <array>
#include <cstdint>

#include "softcard/base/net_types.h"
#include "softcard/base/port_set.h"
#include "softcard/base/refusal.h"
#include "vornlcapi/enums.h"

namespace softcard {

class FloodBlockTable {
 public:
  // The ports that floods of one kind (a single FLOOD_BLOCK_... bit) from a port may not leave
  // through.
  const PortSet& blocked(PortIndex from, flood_block_type_t kind) const {
    return blocked_[from][static_cast<unsigned>(kind) / 2];  // 1, 2, 4 stand at 0, 1, 2
  }
  // Whether floods of one kind from a port are kept from the CPU.
  bool blocked_to_cpu(PortIndex from, flood_block_type_t kind) const {
    return (cpu_[from] & kind) != 0;
  }

  // Replaces what was set for the pair; false for bits that name no kind.
  bool set(PortIndex from, PortIndex to, flood_block_type_t kinds) {
    if (!in_range("kinds of floods", unsigned{kinds}, 0, FLOOD_BLOCK_ALL)) return false;
    for (unsigned i = 0; i < 3; ++i) blocked_[from][i].assign(to, (kinds >> i & 1) != 0);
    return true;
  }
  flood_block_type_t get(PortIndex from, PortIndex to) const {
    unsigned kinds = 0;
    for (unsigned i = 0; i < 3; ++i) kinds |= blocked_[from][i].contains(to) ? 1u << i : 0u;
    return static_cast<flood_block_type_t>(kinds);
  }

  bool set_to_cpu(PortIndex from, flood_block_type_t kinds) {
    if (!in_range("kinds of floods", unsigned{kinds}, 0, FLOOD_BLOCK_ALL)) return false;
    cpu_[from] = static_cast<std::uint8_t>(kinds);
    return true;
  }
  flood_block_type_t get_to_cpu(PortIndex from) const {
    return static_cast<flood_block_type_t>(cpu_[from]);
  }

 private:
  std::array<std::array<PortSet, 3>, kMaxPorts> blocked_;
  std::array<std::uint8_t, kMaxPorts> cpu_{};
};

}  // namespace softcard

#endif  // SOFTCARD_TABLES_FLOOD_BLOCK_TABLE_H_
