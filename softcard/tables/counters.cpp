// SPDX-License-Identifier: Apache-2.0

#include "softcard/tables/counters.h"

namespace softcard {

std::uint64_t Counters::brief(PortIndex port, brief_stat_type_t type) const {
  const auto& values = ports_[port].values;
  switch (type) {
    case BRIEF_STAT_IN_OCTETS:
      return values[STAT_IN_OCTETS];
    case BRIEF_STAT_IN_PACKETS:
      return values[STAT_IN_UNICAST_PACKETS] + values[STAT_IN_MULTICAST_PACKETS] +
             values[STAT_IN_BROADCAST_PACKETS];
    case BRIEF_STAT_IN_DISCARDS:
      return values[STAT_IN_DISCARDS];
    case BRIEF_STAT_IN_ERRORS:
      return values[STAT_IN_ERRORS];
    case BRIEF_STAT_OUT_OCTETS:
      return values[STAT_OUT_OCTETS];
    case BRIEF_STAT_OUT_PACKETS:
      return values[STAT_OUT_UNICAST_PACKETS] + values[STAT_OUT_MULTICAST_PACKETS] +
             values[STAT_OUT_BROADCAST_PACKETS];
    case BRIEF_STAT_OUT_DISCARDS:
      return values[STAT_OUT_DISCARDS];
    case BRIEF_STAT_OUT_ERRORS:
      return values[STAT_OUT_ERRORS];
    default:
      return 0;
  }
}

}  // namespace softcard
