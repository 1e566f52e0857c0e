// SPDX-License-Identifier: Apache-2.0
//
// Physical settings of ports.

#include "vornlcapi/api/port.h"

#include "api/ports.h"

using namespace vorn::detail;

// ---- Speed, duplex, autonegotiation, link -------------------------------------------------------

bool vorn_get_port_speed(const Usp& port, speed_type_t& speed) {
  return on_port<TranslateLookup, &VornSdkBase::get_port_speed>(port, speed);
}

bool vorn_set_port_speed(const Usp& port, speed_type_t speed) {
  return on_port<TranslateLookup, &VornSdkBase::set_port_speed>(port, speed);
}

bool vorn_get_port_duplex(const Usp& port, duplex_type_t& duplex) {
  return on_port<TranslateLookup, &VornSdkBase::get_port_duplex>(port, duplex);
}

bool vorn_set_port_duplex(const Usp& port, duplex_type_t duplex) {
  return on_port<TranslateLookup, &VornSdkBase::set_port_duplex>(port, duplex);
}

bool vorn_get_port_autoneg(const Usp& port, bool& on) {
  return on_port<TranslateLookup, &VornSdkBase::get_port_autoneg>(port, on);
}

bool vorn_set_port_autoneg(const Usp& port, bool on) {
  return on_port<TranslateLookup, &VornSdkBase::set_port_autoneg>(port, on);
}

bool vorn_get_port_link_state(const Usp& port, phy_state_t& state) {
  return on_port<TranslateLookup, &VornSdkBase::get_port_link_state>(port, state);
}

bool vorn_set_port_link_state(const Usp& port, phy_state_t state) {
  return on_port<TranslateLookup, &VornSdkBase::set_port_link_state>(port, state);
}

// ---- MTU and administrative state ---------------------------------------------------------------

bool vorn_get_port_mtu(const Usp& port, unsigned int& bytes) {
  return on_port<TranslateLookup, &VornSdkBase::get_port_mtu>(port, bytes);
}

bool vorn_set_port_mtu(const Usp& port, unsigned int bytes) {
  return on_members<LookupTranslate, &VornSdkBase::set_port_mtu>(port, bytes);
}

bool vorn_set_ports_mtu(const std::list<Usp>& ports, unsigned int bytes) {
  return on_ports<&VornSdkBase::set_port_mtu>(ports, bytes);
}

bool vorn_get_port_state(const Usp& port, bool& on) {
  return on_port<TranslateLookup, &VornSdkBase::get_port_state>(port, on);
}

bool vorn_set_port_state(const Usp& port, bool on) {
  return is_physical_or_lag(port) &&
         on_members<TranslateLookup, &VornSdkBase::set_port_state>(port, on);
}

bool vorn_set_ports_state(const std::list<Usp>& ports, bool on) {
  return on_ports<&VornSdkBase::set_port_state>(ports, on);
}

// ---- Abilities ----------------------------------------------------------------------------------

bool vorn_get_port_ability(const Usp& port, port_ability_type_t& ability) {
  return on_port<LookupTranslate, &VornSdkBase::get_port_ability>(port, ability);
}

bool vorn_set_port_advertising_ability(const Usp& port, port_ability_type_t ability) {
  return on_port<LookupTranslate, &VornSdkBase::set_port_advertising_ability>(port, ability);
}

bool vorn_get_port_advertising_ability(const Usp& port, port_ability_type_t& ability) {
  return on_port<LookupTranslate, &VornSdkBase::get_port_advertising_ability>(port, ability);
}

bool vorn_get_port_current_ability(const Usp& port, port_ability_type_t& ability) {
  return on_port<LookupTranslate, &VornSdkBase::get_port_current_ability>(port, ability);
}

// The SDK takes the hardware port by value here, unlike in every other single-port operation.
bool vorn_get_port_peer_ability(const Usp& port, port_ability_type_t& ability) {
  const Target to = LookupTranslate::find(port);
  return to.sdk != nullptr && to.sdk->get_port_peer_ability(to.mp, ability);
}

// ---- Flow control and jamming -------------------------------------------------------------------

// The SDK answers with words, and it may write them even when it refuses: the flags are set only
// after it succeeded.
bool vorn_get_port_flow_control_8023x(const Usp& port, bool& receive, bool& transmit) {
  unsigned int receive_word = 0;
  unsigned int transmit_word = 0;
  if (!on_port<TranslateLookup, &VornSdkBase::get_port_flow_control_8023x>(port, receive_word,
                                                                           transmit_word)) {
    return false;
  }
  receive = receive_word == 1;
  transmit = transmit_word == 1;
  return true;
}

bool vorn_set_port_flow_control_8023x(const Usp& port, bool receive, bool transmit) {
  return is_physical_or_lag(port) &&
         on_members<TranslateLookup, &VornSdkBase::set_port_flow_control_8023x>(port, receive,
                                                                                transmit);
}

// The second flag goes first: callers of this form give the two in reverse order.
bool vorn_set_ports_flow_control_8023x(const std::list<Usp>& ports, bool transmit, bool receive) {
  return on_ports<&VornSdkBase::set_port_flow_control_8023x>(ports, receive, transmit);
}

bool vorn_get_port_jaming_control(const Usp& port, bool& on) {
  return on_port<TranslateLookup, &VornSdkBase::get_port_jaming_control>(port, on);
}

bool vorn_set_port_jaming_control(const Usp& port, bool on) {
  return is_physical_or_lag(port) &&
         on_members<TranslateLookup, &VornSdkBase::set_port_jaming_control>(port, on);
}
