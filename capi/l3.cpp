// SPDX-License-Identifier: Apache-2.0
//
// Router interfaces, hosts and routes. capi.h has the conventions.
#include "vornlcapi/capi/l3.h"

#include "capi/conversions.h"
#include "vornlcapi/api/l3.h"

using namespace vorn::detail;

// ---- Router interfaces --------------------------------------------------------------------------

int ctype_vorn_create_l3_interface(unsigned char* mac, unsigned int vlan, unsigned int* id) {
  return fetch<vorn_create_l3_interface>(MacBytes(mac), vlan, out(id));
}

int ctype_vorn_create_l3_interface_with_id(unsigned char* mac, unsigned int vlan, unsigned int id,
                                           int replace) {
  return vorn_create_l3_interface_with_id(MacBytes(mac), vlan, id, to_flag(replace));
}

int ctype_vorn_get_l3_interface(unsigned int id, unsigned int* vlan, unsigned char* mac) {
  return fetch<vorn_get_l3_interface>(id, out(vlan), out_mac(mac));
}

int ctype_vorn_delete_l3_interface(unsigned char* mac, unsigned int vlan) {
  return vorn_delete_l3_interface(MacBytes(mac), vlan);
}

int ctype_vorn_delete_l3_interface_by_id(unsigned int id) {
  return vorn_delete_l3_interface_by_id(id);
}

int ctype_vorn_delete_l3_interface_all() { return vorn_delete_l3_interface_all(); }

// ---- Hosts --------------------------------------------------------------------------------------

int ctype_vorn_add_l3_host_ip4(usp_s* port, unsigned int ip, unsigned char* mac,
                               unsigned int interface) {
  return vorn_add_l3_host_ip4(to_usp(port), ip, MacBytes(mac), interface);
}

int ctype_vorn_add_l3_host_ip6(usp_s* port, unsigned char* ip6, unsigned char* mac,
                               unsigned int interface) {
  return vorn_add_l3_host_ip6(to_usp(port), Ip6Bytes(ip6), MacBytes(mac), interface);
}

int ctype_vorn_delete_l3_host_by_interface(unsigned int interface, int ip6) {
  return vorn_delete_l3_host_by_interface(interface, to_flag(ip6));
}

int ctype_vorn_delete_l3_host_by_network_ip4(unsigned int ip) {
  return vorn_delete_l3_host_by_network_ip4(ip);
}

int ctype_vorn_delete_l3_host_by_network_ip6(unsigned char* ip6) {
  return vorn_delete_l3_host_by_network_ip6(Ip6Bytes(ip6));
}

int ctype_vorn_delete_l3_host_by_addr_ip4(unsigned int ip, usp_s* port) {
  return vorn_delete_l3_host_by_addr_ip4(ip, to_usp(port));
}

int ctype_vorn_delete_l3_host_by_addr_ip6(unsigned char* ip6, usp_s* port) {
  return vorn_delete_l3_host_by_addr_ip6(Ip6Bytes(ip6), to_usp(port));
}

int ctype_vorn_clear_l3_host_table() { return vorn_clear_l3_host_table(); }

// ---- Routes -------------------------------------------------------------------------------------

int ctype_vorn_add_l3_route_ip4(usp_s* port, unsigned int ip, unsigned int mask, unsigned char* mac,
                                unsigned int interface, unsigned int metric) {
  return vorn_add_l3_route_ip4(to_usp(port), ip, mask, MacBytes(mac), interface, metric);
}

int ctype_vorn_add_l3_route_ip6(usp_s* port, unsigned char* ip6, unsigned char* mask6,
                                unsigned char* mac, unsigned int interface) {
  return vorn_add_l3_route_ip6(to_usp(port), Ip6Bytes(ip6), Ip6Bytes(mask6), MacBytes(mac),
                               interface);
}

int ctype_vorn_get_l3_route_by_subnet_ip4(unsigned int ip, unsigned int mask, usp_s* port,
                                          unsigned char* mac, unsigned int* interface,
                                          unsigned int* metric) {
  return fetch<vorn_get_l3_route_by_subnet_ip4>(ip, mask, to_usp(port), out_mac(mac),
                                                out(interface), out(metric));
}

int ctype_vorn_get_l3_route_by_subnet_ip6(unsigned char* ip6, unsigned char* mask6, usp_s* port,
                                          unsigned int* interface, unsigned char* mac) {
  return fetch<vorn_get_l3_route_by_subnet_ip6>(Ip6Bytes(ip6), Ip6Bytes(mask6), to_usp(port),
                                                out(interface), out_mac(mac));
}

int ctype_vorn_delete_l3_route_by_interface(unsigned int interface, int ip6) {
  return vorn_delete_l3_route_by_interface(interface, to_flag(ip6));
}

int ctype_vorn_delete_l3_route_by_subnet_ip4(unsigned int ip, unsigned int mask, usp_s* port) {
  return vorn_delete_l3_route_by_subnet_ip4(ip, mask, to_usp(port));
}

int ctype_vorn_delete_l3_route_by_subnet_ip6(unsigned char* ip6, unsigned char* mask6,
                                             usp_s* port) {
  return vorn_delete_l3_route_by_subnet_ip6(Ip6Bytes(ip6), Ip6Bytes(mask6), to_usp(port));
}

int ctype_vorn_clear_l3_route_table() { return vorn_clear_l3_route_table(); }
