// SPDX-License-Identifier: Apache-2.0
//
// What a router may pass on, and what becomes of the rest.
#ifndef SOFTCARD_PIPELINE_ROUTABLE_H_
#define SOFTCARD_PIPELINE_ROUTABLE_H_

#include <algorithm>
#include <optional>

#include "softcard/base/address_scope.h"
#include "softcard/base/net_types.h"
#include "softcard/frames/checksum.h"
#include "softcard/frames/frame.h"
#include "softcard/frames/parser.h"
#include "softcard/tables/drop_counters.h"
#include "vornlcapi/enums.h"

namespace softcard {

// Why a router does not pass a packet on, and why its CPU gets it: RX_REASON_..., 0 when it is
// dropped.
struct Unrouted {
  DropReason reason;
  unsigned cpu_reason;
};

// Nothing when a router may pass a packet between these addresses on. What is for the link that it
// came from is the router's own.
template <class Address>
std::optional<Unrouted> why_not_routed(const Address& source, const Address& destination) {
  if (link_subnet(destination) != 0) return Unrouted{DropReason::router_local, RX_REASON_ROUTER};
  if (host_subnet(destination) + link_subnet(source) + host_subnet(source) != 0) {
    return Unrouted{DropReason::martian, 0};
  }
  return std::nullopt;
}

// Nothing for a packet that is passed on if a route is there.
inline std::optional<Unrouted> why_not_routed(const Frame& frame, const Headers& headers) {
  if (headers.l3_damaged) return Unrouted{DropReason::bad_ip, 0};
  if (headers.l3 != Layer3::ipv4 && headers.l3 != Layer3::ipv6) {
    return Unrouted{DropReason::router_local, RX_REASON_ROUTER};
  }
  const std::uint8_t* const header = frame.data() + headers.l3_offset;
  if (headers.l3 == Layer3::ipv4 &&
      fold(sum_words(header, (header[0] & 0xFu) * std::size_t{4})) != 0xFFFF) {
    return Unrouted{DropReason::bad_ip, 0};
  }
  const auto why = headers.l3 == Layer3::ipv4
                       ? why_not_routed(headers.ipv4_source, headers.ipv4_destination)
                       : why_not_routed(Ipv6Address::from_bytes(header + 8),
                                        Ipv6Address::from_bytes(header + 24));
  if (why) return why;
  if (headers.options) return Unrouted{DropReason::router_local, RX_REASON_OPTIONS};
  if (headers.ttl <= 1) return Unrouted{DropReason::ttl, RX_REASON_TTL};
  return std::nullopt;
}

}  // namespace softcard

#endif  // SOFTCARD_PIPELINE_ROUTABLE_H_
