// SPDX-License-Identifier: Apache-2.0
//
// The conversions that are not worth repeating in each entry point.
#include "capi/conversions.h"

#include <cstddef>
#include <vector>

namespace vorn::detail {

// C callers are compiled against these sizes. Records with pointers differ between targets.
static_assert(sizeof(bool) == 1, "a flag that comes out is one byte");
static_assert(sizeof(usp_s) == 12 && alignof(usp_s) == 4 && offsetof(usp_s, slot) == 4 &&
                  offsetof(usp_s, port) == 8,
              "usp_s");
static_assert(offsetof(ctype_packet_s, type) == 4 && offsetof(ctype_packet_s, data) == 8 &&
                  sizeof(ctype_packet_s) == 8 + sizeof(void*),
              "ctype_packet_s");
static_assert(sizeof(ctype_of_flow_s) == 60 && offsetof(ctype_of_flow_s, src_mac) == 12 &&
                  offsetof(ctype_of_flow_s, dst_mac) == 18 &&
                  offsetof(ctype_of_flow_s, vlan_id) == 24 &&
                  offsetof(ctype_of_flow_s, vlan_priority) == 26 &&
                  offsetof(ctype_of_flow_s, ether_type) == 28 &&
                  offsetof(ctype_of_flow_s, src_ip) == 32 &&
                  offsetof(ctype_of_flow_s, dst_ip) == 36 &&
                  offsetof(ctype_of_flow_s, src_ip_mask) == 40 &&
                  offsetof(ctype_of_flow_s, dst_ip_mask) == 44 &&
                  offsetof(ctype_of_flow_s, src_l4_port) == 48 &&
                  offsetof(ctype_of_flow_s, dst_l4_port) == 50 &&
                  offsetof(ctype_of_flow_s, ip_protocol) == 52 &&
                  offsetof(ctype_of_flow_s, tos) == 54 && offsetof(ctype_of_flow_s, flags) == 56,
              "ctype_of_flow_s");
static_assert(sizeof(ctype_of_flow_qualify_udf_s) == 16 && sizeof(ctype_of_action_param_s) == 12,
              "qualifier and action parameter");

std::list<Usp> to_list(const usp_s* ports, int count) {
  std::list<Usp> list;
  for (int i = 0; i != count; ++i) list.push_back(to_usp(&ports[i]));
  return list;
}

of_flow_s to_flow(const ctype_of_flow_s* flow) {
  of_flow_s copy;
  copy.in_port = to_usp(&flow->in_port);
  std::memcpy(copy.match.src_mac, flow->src_mac, sizeof(copy.match.src_mac));
  std::memcpy(copy.match.dst_mac, flow->dst_mac, sizeof(copy.match.dst_mac));
  copy.match.vlan_id = flow->vlan_id;
  copy.match.vlan_priority = flow->vlan_priority;
  copy.match.ether_type = flow->ether_type;
  copy.match.src_ip = flow->src_ip;
  copy.match.dst_ip = flow->dst_ip;
  copy.match.src_ip_mask = flow->src_ip_mask;
  copy.match.dst_ip_mask = flow->dst_ip_mask;
  copy.match.src_l4_port = flow->src_l4_port;
  copy.match.dst_l4_port = flow->dst_l4_port;
  copy.match.ip_protocol = flow->ip_protocol;
  copy.match.tos = flow->tos;
  copy.match.flags = flow->flags;
  return copy;
}

of_flow_qualify_udf_s to_udf(const ctype_of_flow_qualify_udf_s* udf) {
  return {udf->base, udf->offset, udf->value, udf->mask};
}

Packet to_packet(const ctype_packet_s* packet) {
  const std::vector<unsigned char> data(packet->data, packet->data + packet->length);
  Packet copy;
  copy.set_type(packet->type);
  copy.set_data(data);
  return copy;
}

}  // namespace vorn::detail
