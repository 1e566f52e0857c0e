// SPDX-License-Identifier: Apache-2.0
//
// Link aggregation groups. Every change goes to the SDK, then to the host's LAG list, then to the
// mapping; a step that fails ends it, and the places stay out of step.

#include "vornlcapi/api/lag.h"

#include "api/frame.h"
#include "vorn_lag_list.h"
#include "vorn_port_mapping.h"

using namespace vorn::detail;

// ---- LAGs and their members ---------------------------------------------------------------------

// The mapping alone says whether the LAG exists.
bool vorn_create_lag(const Usp& lag) {
  VornSdkBase* const sdk = find_sdk();
  if (sdk == nullptr) return false;
  unsigned int id = 0;
  if (vornsdk_lag_usp_to_lag_id(lag, id)) return true;
  return sdk->create_lag(id) && add_lag_to_list(id, lag_list) && vornsdk_add_lag_mapping(lag, id);
}

// A LAG that is missing from the mapping or from the list counts as deleted.
bool vorn_delete_lag(const Usp& lag) {
  VornSdkBase* const sdk = find_sdk();
  if (sdk == nullptr || !is_port_logical_lag(lag)) return false;
  unsigned int id = 0;
  if (!vornsdk_lag_usp_to_lag_id(lag, id) || !is_lag_exist(id, lag_list)) return true;
  return sdk->delete_lag(id) && delete_lag_from_list(id, lag_list) &&
         vornsdk_delete_lag_mapping(lag, id);
}

// The present members come first and the translation appends the new ones to them: the SDK and
// the list get both.
bool vorn_add_ports_to_lag(const Usp& lag, const std::list<Usp>& ports) {
  VornSdkBase* const sdk = find_sdk();
  unsigned int id = 0;
  std::list<Mp> members;
  return sdk != nullptr && is_port_logical_lag(lag) && vorn_create_lag(lag) &&
         vornsdk_lag_usp_to_lag_id(lag, id) && get_lag_member(id, members) &&
         vorn_usp_list_to_mp_list(ports, members) && sdk->add_ports_to_lag(id, members) &&
         add_lag_member(id, lag_list, members);
}

// Not the mirror of adding: the ports are translated before the id is asked for, the present
// members do not matter, and a LAG without id has nothing to remove.
bool vorn_delete_ports_from_lag(const Usp& lag, const std::list<Usp>& ports) {
  VornSdkBase* const sdk = find_sdk();
  std::list<Mp> mps;
  if (sdk == nullptr || !is_port_logical_lag(lag) || !vorn_usp_list_to_mp_list(ports, mps)) {
    return false;
  }
  unsigned int id = 0;
  if (!vornsdk_lag_usp_to_lag_id(lag, id)) return true;
  return sdk->delete_ports_from_lag(id, mps) && delete_lag_member(id, lag_list, mps);
}

// ---- Balancing: the kind of port is asked for ahead of the lookup -------------------------------

bool vorn_set_lag_balancing_strategy(const Usp& lag, lag_psc_t psc) {
  if (!is_port_logical_lag(lag)) return false;
  VornSdkBase* const sdk = find_sdk();
  unsigned int id = 0;
  return sdk != nullptr && vornsdk_lag_usp_to_lag_id(lag, id) &&
         sdk->set_lag_balancing_strategy(id, psc);
}

bool vorn_get_lag_balancing_strategy(const Usp& lag, lag_psc_t& psc) {
  if (!is_port_logical_lag(lag)) return false;
  VornSdkBase* const sdk = find_sdk();
  unsigned int id = 0;
  return sdk != nullptr && vornsdk_lag_usp_to_lag_id(lag, id) &&
         sdk->get_lag_balancing_strategy(id, psc);
}

// ---- Mapping ------------------------------------------------------------------------------------

bool vorn_lag_usp_to_lag_id(const Usp& lag, unsigned int& id) {
  return vornsdk_lag_usp_to_lag_id(lag, id);
}

bool vorn_lag_id_to_lag_usp(unsigned int id, Usp& lag) {
  return vornsdk_lag_id_to_lag_usp(id, lag);
}
