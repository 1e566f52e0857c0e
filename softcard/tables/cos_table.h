// SPDX-License-Identifier: Apache-2.0
//
// Class of service: the egress queue of each 802.1p priority at each port. At the start priority p
// goes to queue p.
#ifndef SOFTCARD_TABLES_COS_TABLE_H_
#define SOFTCARD_TABLES_COS_TABLE_H_

#include <array>
#include <cstdint>

#include "softcard/base/limits.h"
#include "softcard/base/net_types.h"
#include "softcard/base/refusal.h"

namespace softcard {

class CosTable {
 public:
  CosTable() { queues_.fill({0, 1, 2, 3, 4, 5, 6, 7}); }

  // `priority` is below kPriorities.
  unsigned queue(PortIndex port, unsigned priority) const { return queues_[port][priority]; }

  // False for a priority or a queue that there is not.
  bool set_queue(PortIndex port, unsigned priority, unsigned queue) {
    if (!in_range("priority", priority, 0, kPriorities - 1) ||
        !in_range("queue", queue, 0, kQueues - 1)) {
      return false;
    }
    queues_[port][priority] = static_cast<std::uint8_t>(queue);
    return true;
  }

 private:
  std::array<std::array<std::uint8_t, kPriorities>, kMaxPorts> queues_;
};

}  // namespace softcard

#endif  // SOFTCARD_TABLES_COS_TABLE_H_
