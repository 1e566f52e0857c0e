// SPDX-License-Identifier: Apache-2.0
//
// The counters of the ports: every kind of stat_type_t, from which the brief set follows. A port
// whose counters are off keeps their values. Drops by reason are in
// drop_counters.h.
//
// Conventions: a PortIndex given is a port of the card. Sizes are bytes of the whole frame without
// its checksum.
#ifndef SOFTCARD_TABLES_COUNTERS_H_
#define SOFTCARD_TABLES_COUNTERS_H_

#include <array>
#include <cstdint>
#include <vector>

#include "softcard/base/net_types.h"
#include "softcard/frames/parser.h"
#include "vornlcapi/enums.h"

namespace softcard {

// The kind of a frame by its destination address.
enum class CastKind : std::uint8_t { unicast, multicast, broadcast };

// The kind of a destination address; `destination` is MacAddress::to_number().
constexpr CastKind cast_of(std::uint64_t destination) {
  if ((destination >> 40 & 1) == 0) return CastKind::unicast;
  return destination == kBroadcast ? CastKind::broadcast : CastKind::multicast;
}

class Counters {
 public:
  static constexpr unsigned kChecksumBytes = 4;

  explicit Counters(PortIndex ports) : ports_(ports) {}

  // ---- Counting: the pipeline's -----------------------------------------------------------------

  void add(PortIndex port, stat_type_t type, std::uint64_t amount = 1) {
    Port& counters = ports_[port];
    counters.values[type] += amount & counters.enabled_mask;
  }
  void received(PortIndex port, std::size_t bytes, CastKind cast) {
    Port& counters = ports_[port];
    const std::uint64_t one = counters.enabled_mask & 1;
    counters.values[STAT_IN_OCTETS] += bytes & counters.enabled_mask;
    counters.values[STAT_IN_UNICAST_PACKETS + static_cast<unsigned>(cast)] += one;
    counters.values[size_class(bytes + kChecksumBytes)] += one;
  }
  void sent(PortIndex port, std::size_t bytes, CastKind cast, unsigned queue) {
    Port& counters = ports_[port];
    const std::uint64_t one = counters.enabled_mask & 1;
    counters.values[STAT_OUT_OCTETS] += bytes & counters.enabled_mask;
    counters.values[STAT_OUT_UNICAST_PACKETS + static_cast<unsigned>(cast)] += one;
    counters.values[STAT_OUT_QUEUE_0 + queue] += one;
  }

  // ---- Reading ----------------------------------------------------------------------------------

  // `type` is below STAT_TYPE_COUNT, BRIEF_STAT_TYPE_COUNT.
  std::uint64_t value(PortIndex port, stat_type_t type) const { return ports_[port].values[type]; }
  std::uint64_t brief(PortIndex port, brief_stat_type_t type) const;

  // ---- Settings ---------------------------------------------------------------------------------

  void set_enabled(PortIndex port, bool on) {
    ports_[port].enabled_mask = on ? ~std::uint64_t{0} : 0;
  }
  bool enabled(PortIndex port) const { return ports_[port].enabled_mask != 0; }
  // Sets all counters of the port to 0.
  void clear(PortIndex port) { ports_[port].values = {}; }

 private:
  struct Port {
    std::uint64_t enabled_mask = ~std::uint64_t{0};
    std::array<std::uint64_t, STAT_TYPE_COUNT> values{};
  };

  // The counter of a frame's size, checksum counted.
  static unsigned size_class(std::size_t bytes) {
    if (bytes <= 64) return STAT_IN_PACKETS_64;
    if (bytes > 1518) return STAT_IN_PACKETS_1519_MAX;
    if (bytes >= 1024) return STAT_IN_PACKETS_1024_1518;
    // 65-127, 128-255, 256-511, 512-1023: by the position of the highest bit.
    return STAT_IN_PACKETS_65_127 + 31u - 6u -
           static_cast<unsigned>(__builtin_clz(static_cast<unsigned>(bytes)));
  }

  std::vector<Port> ports_;
};

}  // namespace softcard

#endif  // SOFTCARD_TABLES_COUNTERS_H_
