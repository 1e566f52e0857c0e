// SPDX-License-Identifier: Apache-2.0
//
// Spanning-tree states. capi.h has the conventions.
#include "vornlcapi/capi/stp.h"

#include "capi/conversions.h"
#include "vornlcapi/api/stp.h"

using namespace vorn::detail;

int ctype_vorn_get_port_stp_state(usp_s* port, stp_state_t* state) {
  return fetch<vorn_get_port_stp_state>(to_usp(port), out(state));
}

int ctype_vorn_set_port_stp_state(usp_s* port, stp_state_t state) {
  return vorn_set_port_stp_state(to_usp(port), state);
}

int ctype_vorn_get_port_mstp_state(usp_s* port, mstp_state_t* state, unsigned int instance) {
  return fetch<vorn_get_port_mstp_state>(to_usp(port), out(state), instance);
}

int ctype_vorn_set_port_mstp_state(usp_s* port, mstp_state_t state, unsigned int instance) {
  return vorn_set_port_mstp_state(to_usp(port), state, instance);
}

int ctype_vorn_get_port_bpdu_processing(usp_s* port, bool* on) {
  return fetch<vorn_get_port_bpdu_processing>(to_usp(port), out(on));
}

int ctype_vorn_set_port_bpdu_processing(usp_s* port, int on) {
  return vorn_set_port_bpdu_processing(to_usp(port), to_flag(on));
}
