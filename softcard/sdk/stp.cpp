// SPDX-License-Identifier: Apache-2.0
//
// Spanning tree: the states of ports, alone and by instance, and BPDUs.

#include "softcard/sdk/sdk.h"

namespace softcard {

bool SoftSdk::set_port_mstp_state(unsigned int instance, const Mp& mp, mstp_state_t state) {
  return on_port(mp, [&](PortIndex port) { return tables_.stp.set_mstp(instance, port, state); });
}

bool SoftSdk::get_port_mstp_state(unsigned int instance, const Mp& mp, mstp_state_t& state) {
  return in_range("instance", instance, 0, kMstpInstances - 1) &&
         on_port(mp, [&](PortIndex port) { state = tables_.stp.mstp(instance, port); });
}

bool SoftSdk::set_port_stp_state(const Mp& mp, stp_state_t state) {
  return on_port(mp, [&](PortIndex port) { return tables_.stp.set_stp(port, state); });
}

bool SoftSdk::get_port_stp_state(const Mp& mp, stp_state_t& state) {
  return on_port(mp, [&](PortIndex port) { state = tables_.stp.stp(port); });
}

bool SoftSdk::set_port_bpdu_processing(const Mp& mp, bool on) {
  return on_port(mp, [&](PortIndex port) { tables_.stp.set_bpdu_processing(port, on); });
}

bool SoftSdk::get_port_bpdu_processing(const Mp& mp, bool& on) {
  return on_port(mp, [&](PortIndex port) { on = tables_.stp.bpdu_processing(port); });
}

}  // namespace softcard
