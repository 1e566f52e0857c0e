// SPDX-License-Identifier: Apache-2.0
//
// The flow table.

#include "vornlcapi/api/flow.h"

#include "api/ports.h"

using namespace vorn::detail;

namespace {

// Looks up, then makes the SDK's form of a flow. The ingress port is translated only when it is
// part of the match; otherwise it stays Mp(0, 0). The match block is copied as it is. Null when
// the lookup or the translation fails.
VornSdkBase* prepare(const of_flow_s& flow, of_flow_mp_s& out) {
  VornSdkBase* const sdk = find_sdk();
  if (sdk == nullptr) return nullptr;
  if ((flow.match.flags & OF_MATCH_IN_PORT) != 0 && !vorn_usp_to_mp(flow.in_port, out.in_port)) {
    return nullptr;
  }
  out.match = flow.match;
  return sdk;
}

// Looks up, then finds the hardware port that an action needs: that of a flow port number above 6,
// a signed comparison, in an output action. All other actions get Mp(0, 0).
Target prepare(of_action_t kind, const of_action_param_s& param) {
  Target to;
  to.sdk = find_sdk();
  const int flow_port = static_cast<int>(param.word[0]);
  if (to.sdk == nullptr || kind != OF_ACTION_OUTPUT || flow_port < OF_PORT_FIRST_PHYSICAL) {
    return to;
  }
  const Usp port(1, 1, static_cast<unsigned int>(flow_port - OF_PORT_FIRST_PHYSICAL));
  if (!vorn_usp_to_mp(port, to.mp)) to.sdk = nullptr;
  return to;
}

}  // namespace

// ---- Flows --------------------------------------------------------------------------------------

bool vorn_add_of_flow(const of_flow_s& flow, unsigned int& id, const of_flow_qualify_udf_s& udf) {
  of_flow_mp_s hardware_flow;
  VornSdkBase* const sdk = prepare(flow, hardware_flow);
  return sdk != nullptr && sdk->add_of_flow(hardware_flow, id, udf);
}

bool vorn_add_of_flow_with_id(const of_flow_s& flow, unsigned int id) {
  of_flow_mp_s hardware_flow;
  VornSdkBase* const sdk = prepare(flow, hardware_flow);
  return sdk != nullptr && sdk->add_of_flow_with_id(hardware_flow, id);
}

bool vorn_delete_of_flow(unsigned int id) { return call<&VornSdkBase::delete_of_flow>(id); }

bool vorn_clear_of_flow_table() { return call<&VornSdkBase::clear_of_flow_table>(); }

// ---- Actions ------------------------------------------------------------------------------------

bool vorn_add_of_flow_action(unsigned int id, of_action_t kind, of_action_param_s param) {
  const Target to = prepare(kind, param);
  return to.sdk != nullptr && to.sdk->add_of_flow_action(id, kind, param, to.mp);
}

bool vorn_delete_of_flow_action(unsigned int id, of_action_t kind, of_action_param_s param) {
  const Target to = prepare(kind, param);
  return to.sdk != nullptr && to.sdk->delete_of_flow_action(id, kind, param, to.mp);
}

bool vorn_clear_of_flow_action(unsigned int id) {
  return call<&VornSdkBase::clear_of_flow_action>(id);
}

// ---- Priorities and counters --------------------------------------------------------------------

bool vorn_set_of_flow_priority(unsigned int id, int priority) {
  return call<&VornSdkBase::set_of_flow_priority>(id, priority);
}

bool vorn_get_of_flow_priority(unsigned int id, int& priority) {
  return call<&VornSdkBase::get_of_flow_priority>(id, priority);
}

bool vorn_get_of_flow_stat_counter64(unsigned int id, unsigned long long& packets) {
  return call<&VornSdkBase::get_of_flow_stat_counter64>(id, packets);
}

bool vorn_get_of_flow_stat_counter32(unsigned int id, unsigned int& packets) {
  return call<&VornSdkBase::get_of_flow_stat_counter32>(id, packets);
}
