// SPDX-License-Identifier: Apache-2.0
//
// Port settings, links and abilities.

#include "softcard/sdk/sdk.h"

namespace softcard {

bool SoftSdk::set_port_state(const Mp& mp, bool on) {
  return on_port(mp, [&](PortIndex port) { tables_.ports.set_admin(port, on); });
}

bool SoftSdk::get_port_state(const Mp& mp, bool& on) {
  return on_port(mp, [&](PortIndex port) { on = tables_.ports.admin(port); });
}

bool SoftSdk::set_port_autoneg(const Mp& mp, bool on) {
  return on_port(mp, [&](PortIndex port) { tables_.ports.set_autoneg(port, on); });
}

bool SoftSdk::get_port_autoneg(const Mp& mp, bool& on) {
  return on_port(mp, [&](PortIndex port) { on = tables_.ports.autoneg(port); });
}

bool SoftSdk::set_port_speed(const Mp& mp, speed_type_t speed) {
  return on_port(mp, [&](PortIndex port) { return tables_.ports.set_speed(port, speed); });
}

bool SoftSdk::get_port_speed(const Mp& mp, speed_type_t& speed) {
  return on_port(mp, [&](PortIndex port) { speed = tables_.ports.mode(port).speed; });
}

bool SoftSdk::set_port_duplex(const Mp& mp, duplex_type_t duplex) {
  return on_port(mp, [&](PortIndex port) { return tables_.ports.set_duplex(port, duplex); });
}

bool SoftSdk::get_port_duplex(const Mp& mp, duplex_type_t& duplex) {
  return on_port(mp, [&](PortIndex port) { duplex = tables_.ports.mode(port).duplex; });
}

bool SoftSdk::set_port_flow_control_8023x(const Mp& mp, bool receive, bool transmit) {
  return on_port(mp, [&](PortIndex port) { tables_.ports.set_pause(port, receive, transmit); });
}

bool SoftSdk::get_port_flow_control_8023x(const Mp& mp, unsigned int& receive,
                                          unsigned int& transmit) {
  return on_port(mp, [&](PortIndex port) {
    receive = tables_.ports.pause_receive(port) ? 1 : 0;
    transmit = tables_.ports.pause_transmit(port) ? 1 : 0;
  });
}

bool SoftSdk::set_port_jaming_control(const Mp& mp, bool on) {
  return on_port(mp, [&](PortIndex port) { return tables_.ports.set_jamming(port, on); });
}

bool SoftSdk::get_port_jaming_control(const Mp& mp, bool& on) {
  return on_port(mp, [&](PortIndex port) { on = tables_.ports.jamming(port); });
}

bool SoftSdk::set_port_mtu(const Mp& mp, unsigned int bytes) {
  return on_port(mp, [&](PortIndex port) { return tables_.ports.set_mtu(port, bytes); });
}

bool SoftSdk::get_port_mtu(const Mp& mp, unsigned int& bytes) {
  return on_port(mp, [&](PortIndex port) { bytes = tables_.ports.mtu_bytes(port); });
}

bool SoftSdk::set_port_link_state(const Mp& mp, phy_state_t state) {
  return on_port(mp, [&](PortIndex port) {
    if (!in_range("link state", unsigned{state}, PHY_STATE_DOWN, PHY_STATE_UP)) return false;
    tables_.ports.set_phy_forced_down(port, state == PHY_STATE_DOWN);
    return true;
  });
}

bool SoftSdk::get_port_link_state(const Mp& mp, phy_state_t& state) {
  return on_port(mp, [&](PortIndex port) {
    state = tables_.ports.is_up(port) ? PHY_STATE_UP : PHY_STATE_DOWN;
  });
}

bool SoftSdk::get_port_ability(const Mp& mp, port_ability_type_t& ability) {
  return on_port(mp, [&](PortIndex port) {
    ability = static_cast<port_ability_type_t>(tables_.ports.ability(port));
  });
}

bool SoftSdk::set_port_advertising_ability(const Mp& mp, port_ability_type_t ability) {
  return on_port(mp, [&](PortIndex port) { return tables_.ports.set_advertised(port, ability); });
}

bool SoftSdk::get_port_advertising_ability(const Mp& mp, port_ability_type_t& ability) {
  return on_port(mp, [&](PortIndex port) {
    ability = static_cast<port_ability_type_t>(tables_.ports.advertised(port));
  });
}

bool SoftSdk::get_port_current_ability(const Mp& mp, port_ability_type_t& ability) {
  return on_port(mp, [&](PortIndex port) {
    ability = static_cast<port_ability_type_t>(tables_.ports.current(port));
  });
}

bool SoftSdk::get_port_peer_ability(Mp mp, port_ability_type_t& ability) {
  return on_port(mp, [&](PortIndex port) {
    ability = static_cast<port_ability_type_t>(tables_.ports.peer_offer(port));
  });
}

}  // namespace softcard
