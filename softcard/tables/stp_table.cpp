// SPDX-License-Identifier: Apache-2.0

#include "softcard/tables/stp_table.h"

#include "softcard/base/refusal.h"

namespace softcard {
namespace {

static_assert(STP_STATE_BLOCKING == 0U + MSTP_STATE_BLOCKING &&
                  STP_STATE_LEARNING == 0U + MSTP_STATE_LEARNING &&
                  STP_STATE_FORWARDING == 0U + MSTP_STATE_FORWARDING &&
                  STP_STATE_DISABLED == 0U + MSTP_STATE_DISABLED,
              "both kinds of state are kept as the same numbers");

bool lets_data_through(std::uint8_t state) { return state == STP_STATE_FORWARDING; }
bool lets_learn(std::uint8_t state) {
  return state == STP_STATE_LEARNING || state == STP_STATE_FORWARDING;
}

}  // namespace

StpTable::StpTable(const PortSet& ports) : bpdu_processing_(ports) {
  stp_.fill(STP_STATE_FORWARDING);
  for (auto& states : mstp_) states.fill(MSTP_STATE_FORWARDING);
  gates_.fill({ports, ports});
}

bool StpTable::set_stp(PortIndex port, stp_state_t state) {
  if (!in_range("STP state", unsigned{state}, 0, STP_STATE_DISABLED)) return false;
  stp_[port] = static_cast<std::uint8_t>(state);
  for (unsigned instance = 0; instance < kMstpInstances; ++instance) update_gate(instance, port);
  return true;
}

bool StpTable::set_mstp(unsigned instance, PortIndex port, mstp_state_t state) {
  if (!in_range("instance", instance, 0, kMstpInstances - 1) ||
      !in_range("MSTP state", unsigned{state}, 0, MSTP_STATE_DISABLED)) {
    return false;
  }
  mstp_[instance][port] = static_cast<std::uint8_t>(state);
  update_gate(instance, port);
  return true;
}

void StpTable::update_gate(unsigned instance, PortIndex port) {
  const std::uint8_t own = stp_[port];
  const std::uint8_t in_instance = mstp_[instance][port];
  gates_[instance].forwarding.assign(port,
                                     lets_data_through(own) && lets_data_through(in_instance));
  gates_[instance].learning.assign(port, lets_learn(own) && lets_learn(in_instance));
}

}  // namespace softcard
