// SPDX-License-Identifier: Apache-2.0
//
// The fields of a flow as the interface has them (of_match_s, and ctype_of_flow_s with the same
// names) and as the flow table has them: listed once, copied in either direction.
#ifndef SOFTCARD_SDK_FLOW_FIELDS_H_
#define SOFTCARD_SDK_FLOW_FIELDS_H_

#include <algorithm>
#include <iterator>
#include <type_traits>

#include "softcard/tables/flow_table.h"
#include "vornlcapi/types.h"

namespace softcard {

// Calls visit(bit of FlowMatch::fields, bit of of_match_s::flags, member of `match`, member of
// `record`) for each member but the ingress port, which has another form on either side.
template <class Match, class Record, class Visit>
void for_each_flow_field(Match& match, Record& record, Visit&& visit) {
  visit(kFlowSourceMac, OF_MATCH_SRC_MAC, match.source_mac.bytes, record.src_mac);
  visit(kFlowDestinationMac, OF_MATCH_DST_MAC, match.destination_mac.bytes, record.dst_mac);
  visit(kFlowVlan, OF_MATCH_VLAN_ID, match.vlan, record.vlan_id);
  visit(kFlowPriority, OF_MATCH_VLAN_PRIORITY, match.priority, record.vlan_priority);
  visit(kFlowEtherType, OF_MATCH_ETHER_TYPE, match.ether_type, record.ether_type);
  visit(kFlowIpv4Source, OF_MATCH_SRC_IP, match.ipv4_source, record.src_ip);
  visit(kFlowIpv4Destination, OF_MATCH_DST_IP, match.ipv4_destination, record.dst_ip);
  visit(kFlowIpv4Source, OF_MATCH_SRC_IP, match.ipv4_source_mask, record.src_ip_mask);
  visit(kFlowIpv4Destination, OF_MATCH_DST_IP, match.ipv4_destination_mask, record.dst_ip_mask);
  visit(kFlowL4Source, OF_MATCH_SRC_L4_PORT, match.l4_source, record.src_l4_port);
  visit(kFlowL4Destination, OF_MATCH_DST_L4_PORT, match.l4_destination, record.dst_l4_port);
  visit(kFlowIpProtocol, OF_MATCH_IP_PROTOCOL, match.ip_protocol, record.ip_protocol);
  visit(kFlowTos, OF_MATCH_TOS, match.tos, record.tos);
}

template <class From, class To>
void copy_flow_field(const From& from, To& to) {
  if constexpr (std::is_integral_v<To>) {
    to = static_cast<To>(from);
  } else {
    std::copy(std::begin(from), std::end(from), std::begin(to));
  }
}

// Copies the fields whose bit in `record.flags` is set; what the others hold is undefined.
template <class Record>
void read_flow_fields(const Record& record, FlowMatch& match) {
  for_each_flow_field(match, record,
                      [&](FlowField field, unsigned bit, auto& to, const auto& from) {
                        if ((record.flags & bit) == 0) return;
                        match.fields |= field;
                        copy_flow_field(from, to);
                      });
}

// Copies the fields that the flow asks for and sets their bits.
template <class Record>
void write_flow_fields(const FlowMatch& match, Record& record) {
  for_each_flow_field(match, record,
                      [&](FlowField field, unsigned bit, const auto& from, auto& to) {
                        if ((match.fields & field) == 0) return;
                        record.flags |= bit;
                        copy_flow_field(from, to);
                      });
}

}  // namespace softcard

#endif  // SOFTCARD_SDK_FLOW_FIELDS_H_
