// SPDX-License-Identifier: Apache-2.0
//
// The VLAN table and the VLAN settings of ports. capi.h has the conventions.
#include "vornlcapi/capi/vlan.h"

#include <algorithm>

#include "capi/conversions.h"
#include "vornlcapi/api/vlan.h"

using namespace vorn::detail;

namespace {

// Lowers *count to the number of members.
void store_count(const std::list<Usp>& members, unsigned int* count) {
  *count = std::min(*count, static_cast<unsigned int>(members.size()));
}

}  // namespace

// ---- VLANs and their members --------------------------------------------------------------------

int ctype_vorn_create_vlan(unsigned int vlan) { return vorn_create_vlan(vlan); }

int ctype_vorn_delete_vlan(unsigned int vlan) { return vorn_delete_vlan(vlan); }

int ctype_vorn_add_ports_to_vlan(unsigned int vlan, usp_s* tagged, int tagged_count,
                                 usp_s* untagged, int untagged_count) {
  const std::list<Usp> tagged_ports = to_list(tagged, tagged_count);
  const std::list<Usp> untagged_ports = to_list(untagged, untagged_count);
  return vorn_add_ports_to_vlan(vlan, tagged_ports, untagged_ports);
}

int ctype_vorn_delete_ports_from_vlan(unsigned int vlan, usp_s* ports, int count) {
  return vorn_delete_ports_from_vlan(vlan, to_list(ports, count));
}

int ctype_vorn_get_vlan_info(unsigned int vlan, usp_s* tagged, unsigned int* tagged_count,
                             usp_s* untagged, unsigned int* untagged_count) {
  std::list<Usp> tagged_ports;
  std::list<Usp> untagged_ports;
  if (!vorn_get_vlan_info(vlan, tagged_ports, untagged_ports)) return 0;
  // The counts are bounded by the caller's; the arrays receive every member all the same.
  store_count(tagged_ports, tagged_count);
  store_count(untagged_ports, untagged_count);
  for (const Usp& port : tagged_ports) store(port, tagged++);
  for (const Usp& port : untagged_ports) store(port, untagged++);
  return 1;
}

// ---- Classification of untagged frames ----------------------------------------------------------

int ctype_vorn_set_mac_vlan(unsigned char* mac, unsigned int vlan, unsigned int priority) {
  return vorn_set_mac_vlan(MacBytes(mac), vlan, priority);
}

int ctype_vorn_set_ipv4_subnet_vlan(unsigned int ip, unsigned int mask, unsigned int vlan,
                                    unsigned int priority) {
  return vorn_set_ipv4_subnet_vlan(ip, mask, vlan, priority);
}

int ctype_vorn_set_ipv6_subnet_vlan(unsigned char* ip6, unsigned int prefix_length,
                                    unsigned int vlan, unsigned int priority) {
  return vorn_set_ipv6_subnet_vlan(Ip6Bytes(ip6), prefix_length, vlan, priority);
}

// ---- VLAN settings of a port --------------------------------------------------------------------

int ctype_vorn_get_port_pvid(usp_s* port, unsigned int* pvid) {
  return fetch<vorn_get_port_pvid>(to_usp(port), out(pvid));
}

int ctype_vorn_set_port_pvid(usp_s* port, unsigned int pvid) {
  return vorn_set_port_pvid(to_usp(port), pvid);
}

int ctype_vorn_get_port_vlan_priority(usp_s* port, unsigned int vlan, unsigned int* priority) {
  return fetch<vorn_get_port_vlan_priority>(to_usp(port), vlan, out(priority));
}

int ctype_vorn_set_port_vlan_priority(usp_s* port, unsigned int vlan, unsigned int priority) {
  return vorn_set_port_vlan_priority(to_usp(port), vlan, priority);
}

int ctype_vorn_get_port_vlan_accept_frame(usp_s* port, bool* all) {
  return fetch<vorn_get_port_vlan_accept_frame>(to_usp(port), out(all));
}

int ctype_vorn_set_port_vlan_accept_frame(usp_s* port, int all) {
  return vorn_set_port_vlan_accept_frame(to_usp(port), to_flag(all));
}

int ctype_vorn_set_port_protocol_vlan(usp_s* port, frame_type_t type, unsigned short protocol,
                                      unsigned int vlan) {
  return vorn_set_port_protocol_vlan(to_usp(port), type, protocol, vlan);
}

int ctype_vorn_delete_port_protocol_vlan(usp_s* port, frame_type_t type, unsigned short protocol) {
  return vorn_delete_port_protocol_vlan(to_usp(port), type, protocol);
}

int ctype_vorn_delete_port_protocol_vlan_all(usp_s* port) {
  return vorn_delete_port_protocol_vlan_all(to_usp(port));
}
