// SPDX-License-Identifier: Apache-2.0
//
// Physical settings of ports. capi.h has the conventions.
#include "vornlcapi/capi/port.h"

#include "capi/conversions.h"
#include "vornlcapi/api/port.h"

using namespace vorn::detail;

// ---- Speed, duplex, autonegotiation, link -------------------------------------------------------

int ctype_vorn_get_port_speed(usp_s* port, speed_type_t* speed) {
  return fetch<vorn_get_port_speed>(to_usp(port), out(speed));
}

int ctype_vorn_set_port_speed(usp_s* port, speed_type_t speed) {
  return vorn_set_port_speed(to_usp(port), speed);
}

int ctype_vorn_get_port_duplex(usp_s* port, duplex_type_t* duplex) {
  return fetch<vorn_get_port_duplex>(to_usp(port), out(duplex));
}

int ctype_vorn_set_port_duplex(usp_s* port, duplex_type_t duplex) {
  return vorn_set_port_duplex(to_usp(port), duplex);
}

int ctype_vorn_get_port_autoneg(usp_s* port, bool* on) {
  return fetch<vorn_get_port_autoneg>(to_usp(port), out(on));
}

int ctype_vorn_set_port_autoneg(usp_s* port, int on) {
  return vorn_set_port_autoneg(to_usp(port), to_flag(on));
}

int ctype_vorn_get_port_link_state(usp_s* port, phy_state_t* state) {
  return fetch<vorn_get_port_link_state>(to_usp(port), out(state));
}

int ctype_vorn_set_port_link_state(usp_s* port, phy_state_t state) {
  return vorn_set_port_link_state(to_usp(port), state);
}

// ---- Frame size and administrative state --------------------------------------------------------

int ctype_vorn_set_port_mtu(usp_s* port, unsigned int bytes) {
  return vorn_set_port_mtu(to_usp(port), bytes);
}

int ctype_vorn_get_port_state(usp_s* port, bool* on) {
  return fetch<vorn_get_port_state>(to_usp(port), out(on));
}

int ctype_vorn_set_port_state(usp_s* port, int on) {
  return vorn_set_port_state(to_usp(port), to_flag(on));
}

// ---- Abilities ----------------------------------------------------------------------------------

int ctype_vorn_get_port_ability(usp_s* port, port_ability_type_t* ability) {
  return fetch<vorn_get_port_ability>(to_usp(port), out(ability));
}

int ctype_vorn_set_port_advertising_ability(usp_s* port, port_ability_type_t ability) {
  return vorn_set_port_advertising_ability(to_usp(port), ability);
}

int ctype_vorn_get_port_advertising_ability(usp_s* port, port_ability_type_t* ability) {
  return fetch<vorn_get_port_advertising_ability>(to_usp(port), out(ability));
}

int ctype_vorn_get_port_current_ability(usp_s* port, port_ability_type_t* ability) {
  return fetch<vorn_get_port_current_ability>(to_usp(port), out(ability));
}

int ctype_vorn_get_port_peer_ability(usp_s* port, port_ability_type_t* ability) {
  return fetch<vorn_get_port_peer_ability>(to_usp(port), out(ability));
}

// ---- Pause frames and jamming -------------------------------------------------------------------

int ctype_vorn_get_port_flow_control_8023x(usp_s* port, bool* receive, bool* transmit) {
  return fetch<vorn_get_port_flow_control_8023x>(to_usp(port), out(receive), out(transmit));
}

int ctype_vorn_set_port_flow_control_8023x(usp_s* port, int receive, int transmit) {
  return vorn_set_port_flow_control_8023x(to_usp(port), to_flag(receive), to_flag(transmit));
}

int ctype_vorn_get_port_jaming_control(usp_s* port, bool* on) {
  return fetch<vorn_get_port_jaming_control>(to_usp(port), out(on));
}

int ctype_vorn_set_port_jaming_control(usp_s* port, int on) {
  return vorn_set_port_jaming_control(to_usp(port), to_flag(on));
}
