// SPDX-License-Identifier: Apache-2.0
//
// Link aggregation groups. capi.h has the conventions.
#include "vornlcapi/capi/lag.h"

#include "capi/conversions.h"
#include "vornlcapi/api/lag.h"

using namespace vorn::detail;

int ctype_vorn_create_lag(usp_s* lag) { return vorn_create_lag(to_usp(lag)); }

int ctype_vorn_delete_lag(usp_s* lag) { return vorn_delete_lag(to_usp(lag)); }

int ctype_vorn_add_ports_to_lag(usp_s* lag, usp_s* ports, int count) {
  const std::list<Usp> members = to_list(ports, count);  // before the single port
  return vorn_add_ports_to_lag(to_usp(lag), members);
}

int ctype_vorn_delete_ports_from_lag(usp_s* lag, usp_s* ports, int count) {
  const std::list<Usp> members = to_list(ports, count);  // before the single port
  return vorn_delete_ports_from_lag(to_usp(lag), members);
}

int ctype_vorn_set_lag_balancing_strategy(usp_s* lag, lag_psc_t psc) {
  return vorn_set_lag_balancing_strategy(to_usp(lag), psc);
}

int ctype_vorn_get_lag_balancing_strategy(usp_s* lag, lag_psc_t* psc) {
  return fetch<vorn_get_lag_balancing_strategy>(to_usp(lag), out(psc));
}

int ctype_vorn_lag_usp_to_lag_id(usp_s* lag, unsigned int* id) {
  return fetch<vorn_lag_usp_to_lag_id>(to_usp(lag), out(id));
}

int ctype_vorn_lag_id_to_lag_usp(unsigned int id, usp_s* lag) {
  return fetch<vorn_lag_id_to_lag_usp>(id, out(lag));
}
