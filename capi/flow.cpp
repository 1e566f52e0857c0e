// SPDX-License-Identifier: Apache-2.0
//
// The flow table. capi.h has the conventions.
#include "vornlcapi/capi/flow.h"

#include "capi/conversions.h"
#include "vornlcapi/api/flow.h"

using namespace vorn::detail;

// ---- Flows --------------------------------------------------------------------------------------

int ctype_vorn_add_of_flow(ctype_of_flow_s* flow, unsigned int* id,
                           ctype_of_flow_qualify_udf_s* udf) {
  return fetch<vorn_add_of_flow>(to_flow(flow), out(id), to_udf(udf));
}

int ctype_vorn_add_of_flow_with_id(ctype_of_flow_s* flow, unsigned int id) {
  return vorn_add_of_flow_with_id(to_flow(flow), id);
}

int ctype_vorn_delete_of_flow(unsigned int id) { return vorn_delete_of_flow(id); }

int ctype_vorn_clear_of_flow_table() { return vorn_clear_of_flow_table(); }

// ---- Actions ------------------------------------------------------------------------------------

int ctype_vorn_add_of_flow_action(unsigned int id, ctype_of_action_t kind,
                                  ctype_of_action_param_s param) {
  return vorn_add_of_flow_action(id, to_action(kind), to_action_param(param));
}

int ctype_vorn_delete_of_flow_action(unsigned int id, ctype_of_action_t kind,
                                     ctype_of_action_param_s param) {
  return vorn_delete_of_flow_action(id, to_action(kind), to_action_param(param));
}

int ctype_vorn_clear_of_flow_action(unsigned int id) { return vorn_clear_of_flow_action(id); }

// ---- Priorities and counters --------------------------------------------------------------------

int ctype_vorn_set_of_flow_priority(unsigned int id, int priority) {
  return vorn_set_of_flow_priority(id, priority);
}

int ctype_vorn_get_of_flow_priority(unsigned int id, int* priority) {
  return fetch<vorn_get_of_flow_priority>(id, out(priority));
}

int ctype_vorn_get_of_flow_stat_counter64(unsigned int id, unsigned long long* packets) {
  return fetch<vorn_get_of_flow_stat_counter64>(id, out(packets));
}

int ctype_vorn_get_of_flow_stat_counter32(unsigned int id, unsigned int* packets) {
  return fetch<vorn_get_of_flow_stat_counter32>(id, out(packets));
}
