// SPDX-License-Identifier: Apache-2.0
//
// Counters of physical ports. capi.h has the conventions.
#include "vornlcapi/capi/stat.h"

#include "capi/conversions.h"
#include "vornlcapi/api/stat.h"

using namespace vorn::detail;

// ---- The full set -------------------------------------------------------------------------------

int ctype_vorn_get_port_stat_counter(usp_s* port, stat_type_t type, unsigned long long* value) {
  return fetch<vorn_get_port_stat_counter>(to_usp(port), type, out(value));
}

int ctype_vorn_get_port_stat_counter32(usp_s* port, stat_type_t type, unsigned int* value) {
  return fetch<vorn_get_port_stat_counter32>(to_usp(port), type, out(value));
}

// The four that read all counters report only whether that works: neither the caller's array nor
// its count is touched.

int ctype_vorn_get_port_stat_counter_all64(usp_s* port, void*, unsigned int*) {
  std::list<StatCounter64> discarded;
  return vorn_get_port_stat_counter_all64(to_usp(port), discarded);
}

int ctype_vorn_get_port_stat_counter_all32(usp_s* port, void*, unsigned int*) {
  std::list<StatCounter32> discarded;
  return vorn_get_port_stat_counter_all32(to_usp(port), discarded);
}

// ---- The brief set ------------------------------------------------------------------------------

int ctype_vorn_get_port_brief_stat_counter64(usp_s* port, brief_stat_type_t type,
                                             unsigned long long* value) {
  return fetch<vorn_get_port_brief_stat_counter64>(to_usp(port), type, out(value));
}

int ctype_vorn_get_port_brief_stat_counter32(usp_s* port, brief_stat_type_t type,
                                             unsigned int* value) {
  return fetch<vorn_get_port_brief_stat_counter32>(to_usp(port), type, out(value));
}

int ctype_vorn_get_port_brief_stat_counter_all64(usp_s* port, void*, unsigned int*) {
  return vorn_get_port_brief_stat_counter_all64(to_usp(port), {});
}

int ctype_vorn_get_port_brief_stat_counter_all32(usp_s* port, void*, unsigned int*) {
  return vorn_get_port_brief_stat_counter_all32(to_usp(port), {});
}

// ---- Clearing and collection --------------------------------------------------------------------

int ctype_vorn_clear_port_stat_counter(usp_s* port) {
  return vorn_clear_port_stat_counter(to_usp(port));
}

int ctype_vorn_get_port_stat_enabled(usp_s* port, bool* on) {
  return fetch<vorn_get_port_stat_enabled>(to_usp(port), out(on));
}

int ctype_vorn_set_port_stat_enable(usp_s* port, int on) {
  return vorn_set_port_stat_enable(to_usp(port), to_flag(on));
}
