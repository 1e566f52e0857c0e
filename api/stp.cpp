// SPDX-License-Identifier: Apache-2.0
//
// Spanning-tree states and BPDU processing.

#include "vornlcapi/api/stp.h"

#include "api/ports.h"
#include "vornlcapi/api/lag.h"

using namespace vorn::detail;

// ---- Single spanning tree -----------------------------------------------------------------------

bool vorn_get_port_stp_state(const Usp& port, stp_state_t& state) {
  return on_port<TranslateLookup, &VornSdkBase::get_port_stp_state>(port, state);
}

// Addresses learned behind a port that goes to state 0 must not live on, so the flush is made
// even when a member refused the state, and its result is what the caller gets. It knows only
// physical ports and LAGs.
bool vorn_set_port_stp_state(const Usp& port, stp_state_t state) {
  std::list<Mp> members;
  if (!vorn_usp_to_mp_list(port, members)) return false;
  VornSdkBase* const sdk = find_sdk();
  if (sdk == nullptr) return false;
  const bool all_set = each_of(members, sdk, [state](VornSdkBase& to, const Mp& mp) {
    return to.set_port_stp_state(mp, state);
  });
  if (state != 0) return all_set;

  if (is_port_physical(port)) return sdk->clear_fdb_by_port(members.front(), false, false);
  if (!is_port_logical_lag(port)) return false;
  unsigned int lag_id = 0;
  if (!vorn_lag_usp_to_lag_id(port, lag_id)) return false;
  return sdk->clear_fdb_by_port(Mp(0, lag_id), true, false);
}

bool vorn_set_ports_stp_state(const std::list<Usp>& ports, stp_state_t state) {
  return on_ports<&VornSdkBase::set_port_stp_state>(ports, state);
}

// ---- Multiple spanning tree ---------------------------------------------------------------------
// The SDK takes the instance first, ahead of the port.

bool vorn_get_port_mstp_state(const Usp& port, mstp_state_t& state, unsigned int instance) {
  const Target to = TranslateLookup::find(port);
  return to.sdk != nullptr && to.sdk->get_port_mstp_state(instance, to.mp, state);
}

bool vorn_set_port_mstp_state(const Usp& port, mstp_state_t state, unsigned int instance) {
  return TranslateLookup::each(port, [=](VornSdkBase& sdk, const Mp& mp) {
    return sdk.set_port_mstp_state(instance, mp, state);
  });
}

bool vorn_set_ports_mstp_state(const std::list<Usp>& ports, mstp_state_t state,
                               unsigned int instance) {
  return LookupTranslate::each(ports, [=](VornSdkBase& sdk, const Mp& mp) {
    return sdk.set_port_mstp_state(instance, mp, state);
  });
}

// ---- BPDUs --------------------------------------------------------------------------------------

bool vorn_get_port_bpdu_processing(const Usp& port, bool& on) {
  return on_port<LookupTranslate, &VornSdkBase::get_port_bpdu_processing>(port, on);
}

bool vorn_set_port_bpdu_processing(const Usp& port, bool on) {
  return on_port<LookupTranslate, &VornSdkBase::set_port_bpdu_processing>(port, on);
}
