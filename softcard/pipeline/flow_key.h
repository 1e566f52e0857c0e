// SPDX-License-Identifier: Apache-2.0
//
// A frame as the flow table sees it.
#ifndef SOFTCARD_PIPELINE_FLOW_KEY_H_
#define SOFTCARD_PIPELINE_FLOW_KEY_H_

#include <cstdint>

#include "softcard/base/net_types.h"
#include "softcard/frames/frame.h"
#include "softcard/frames/parser.h"
#include "softcard/tables/flow_table.h"

namespace softcard {

// The fields that flows look at. `vlan` and `priority` are those that the frame was put into.
inline FlowKey flow_key(PortIndex ingress, std::uint16_t vlan, std::uint8_t priority,
                        const Headers& headers) {
  FlowKey key;
  key.set_ethernet(ingress, headers.source, headers.destination, vlan, priority,
                   headers.ether_type);
  switch (headers.l3) {
    case Layer3::arp:
      key.set_ip_protocol(static_cast<std::uint8_t>(headers.arp_operation));
      key.set_ipv4(headers.ipv4_source, headers.ipv4_destination);
      break;
    case Layer3::ipv4:
      key.set_ipv4(headers.ipv4_source, headers.ipv4_destination);
      key.set_ip_protocol(headers.ip_protocol);
      key.set_tos(headers.tos);
      break;
    case Layer3::ipv6:
      key.set_ip_protocol(headers.ip_protocol);
      key.set_tos(headers.tos);
      break;
    case Layer3::none:
      break;
  }
  if (headers.l4 != Layer4::none) key.set_l4_ports(headers.l4_source, headers.l4_destination);
  return key;
}

// The bytes that user-defined qualifiers look at.
inline UdfReader udf_reader(const Frame& frame, const Headers& headers) {
  return {frame.data(), static_cast<std::uint32_t>(frame.size()), headers.l3_offset,
          headers.l4_offset};
}

}  // namespace softcard

#endif  // SOFTCARD_PIPELINE_FLOW_KEY_H_
