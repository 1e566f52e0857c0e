// SPDX-License-Identifier: Apache-2.0
//
// The MAC table. capi.h has the conventions.
#include "vornlcapi/capi/fdb.h"

#include "capi/conversions.h"
#include "vornlcapi/api/fdb.h"

using namespace vorn::detail;

// ---- Entries ------------------------------------------------------------------------------------

int ctype_vorn_add_system_mac(unsigned char* mac, unsigned int vlan) {
  return vorn_add_system_mac(mac, vlan);
}

int ctype_vorn_add_system_mac_vlan_bitmap(unsigned char* mac, unsigned char* bitmap) {
  return vorn_add_system_mac_vlan_bitmap(mac, bitmap);
}

int ctype_vorn_delete_mac(unsigned int vlan, unsigned char* mac) {
  return vorn_delete_mac(vlan, mac);
}

int ctype_vorn_delete_mac_vlan_bitmap(unsigned char* mac, unsigned char* bitmap) {
  return vorn_delete_mac_vlan_bitmap(mac, bitmap);
}

int ctype_vorn_delete_mac_by_mac(unsigned char* mac) { return vorn_delete_mac_by_mac(mac); }

int ctype_vorn_add_mac_to_port(usp_s* port, unsigned char* mac, unsigned int vlan) {
  return vorn_add_mac_to_port(to_usp(port), mac, vlan);
}

int ctype_vorn_traverse_mac_table(void* arg) { return vorn_traverse_mac_table(arg); }

// ---- Ageing and flushes -------------------------------------------------------------------------

int ctype_vorn_get_fdb_aging_time(int* seconds) {
  return fetch<vorn_get_fdb_aging_time>(out(seconds));
}

int ctype_vorn_set_fdb_aging_time(int seconds) { return vorn_set_fdb_aging_time(seconds); }

int ctype_vorn_clear_fdb_table(int and_static) { return vorn_clear_fdb_table(to_flag(and_static)); }

int ctype_vorn_clear_fdb_by_vlan(unsigned int vlan, int and_static) {
  return vorn_clear_fdb_by_vlan(vlan, to_flag(and_static));
}

int ctype_vorn_clear_fdb_by_port(usp_s* port, int and_static) {
  return vorn_clear_fdb_by_port(to_usp(port), to_flag(and_static));
}

// ---- MAC lock -----------------------------------------------------------------------------------

int ctype_vorn_get_port_mac_lock(usp_s* port, bool* on) {
  return fetch<vorn_get_port_mac_lock>(to_usp(port), out(on));
}

int ctype_vorn_set_port_mac_lock(usp_s* port, int on) {
  return vorn_set_port_mac_lock(to_usp(port), to_flag(on));
}

int ctype_vorn_get_port_mac_lock_ext(usp_s* port, bool* on, bool* drop) {
  return fetch<vorn_get_port_mac_lock_ext>(to_usp(port), out(on), out(drop));
}

int ctype_vorn_set_port_mac_lock_ext(usp_s* port, int on, int drop) {
  return vorn_set_port_mac_lock_ext(to_usp(port), to_flag(on), to_flag(drop));
}

// ---- MAC limit ----------------------------------------------------------------------------------

int ctype_vorn_get_port_mac_limit(usp_s* port, int* limit) {
  return fetch<vorn_get_port_mac_limit>(to_usp(port), out(limit));
}

int ctype_vorn_set_port_mac_limit(usp_s* port, int limit) {
  return vorn_set_port_mac_limit(to_usp(port), limit);
}

// vorn_get_system_mac_limit() is always false, so that nothing is ever stored.
int ctype_vorn_get_system_mac_limit(int* limit) {
  return fetch<vorn_get_system_mac_limit>(out(limit));
}

int ctype_vorn_set_system_mac_limit(int limit) { return vorn_set_system_mac_limit(limit); }
