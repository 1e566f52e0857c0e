// SPDX-License-Identifier: Apache-2.0
//
// Physical settings of ports: speed, duplex, autonegotiation, link, MTU, administrative state,
// abilities, flow control and jamming. api.h has the conventions.
#ifndef VORNLCAPI_API_PORT_H_
#define VORNLCAPI_API_PORT_H_

#include <list>

#include "vornlcapi/export.h"
#include "vornlcapi/types.h"

// ---- Speed, duplex, autonegotiation, link -------------------------------------------------------

// Gets the speed in force on a physical port.
VORN_EXPORT bool vorn_get_port_speed(const Usp& port, speed_type_t& speed);

// Fixes the speed of a physical port. False for one that the port has no ability for.
VORN_EXPORT bool vorn_set_port_speed(const Usp& port, speed_type_t speed);

// Gets the duplex mode in force on a physical port.
VORN_EXPORT bool vorn_get_port_duplex(const Usp& port, duplex_type_t& duplex);

// Fixes the duplex mode of a physical port. False for one that the port has no ability for.
VORN_EXPORT bool vorn_set_port_duplex(const Usp& port, duplex_type_t duplex);

// Gets whether a physical port negotiates speed and duplex mode.
VORN_EXPORT bool vorn_get_port_autoneg(const Usp& port, bool& on);

// Sets whether a physical port negotiates speed and duplex mode.
VORN_EXPORT bool vorn_set_port_autoneg(const Usp& port, bool on);

// Gets the link (PHY) state of a physical port: it has a link when `state` is exactly PHY_STATE_UP.
VORN_EXPORT bool vorn_get_port_link_state(const Usp& port, phy_state_t& state);

// Forces the link of a physical port down, or lets it come up again.
VORN_EXPORT bool vorn_set_port_link_state(const Usp& port, phy_state_t state);

// ---- MTU and administrative state ---------------------------------------------------------------

// Gets the largest frame that a physical port accepts.
//   bytes   from the destination address on, without 802.1Q tag and checksum.
VORN_EXPORT bool vorn_get_port_mtu(const Usp& port, unsigned int& bytes);

// Sets the largest frame that every member of `port` accepts, counted as in
// vorn_get_port_mtu().
VORN_EXPORT bool vorn_set_port_mtu(const Usp& port, unsigned int bytes);

// Sets the largest frame of every port listed, counted as in vorn_get_port_mtu().
VORN_EXPORT bool vorn_set_ports_mtu(const std::list<Usp>& ports, unsigned int bytes);

// Gets whether a physical port is switched on. This is what was asked for; the link is another
// matter.
VORN_EXPORT bool vorn_get_port_state(const Usp& port, bool& on);

// Switches every member of `port` on or off. Refuses a VLAN interface and an unknown port before
// anything else happens.
VORN_EXPORT bool vorn_set_port_state(const Usp& port, bool on);

// Switches every port listed on or off.
VORN_EXPORT bool vorn_set_ports_state(const std::list<Usp>& ports, bool on);

// ---- Abilities: PORT_ABILITY_... bits -----------------------------------------------------------

// Gets what a physical port can do.
VORN_EXPORT bool vorn_get_port_ability(const Usp& port, port_ability_type_t& ability);

// Sets what a physical port advertises when it negotiates. False for more than the port can do.
VORN_EXPORT bool vorn_set_port_advertising_ability(const Usp& port, port_ability_type_t ability);

// Gets what a physical port advertises when it negotiates.
VORN_EXPORT bool vorn_get_port_advertising_ability(const Usp& port, port_ability_type_t& ability);

// Gets what is in force on a physical port: one speed and duplex mode, and pause; none without a
// link.
VORN_EXPORT bool vorn_get_port_current_ability(const Usp& port, port_ability_type_t& ability);

// Gets what the link partner of a physical port advertises.
VORN_EXPORT bool vorn_get_port_peer_ability(const Usp& port, port_ability_type_t& ability);

// ---- Flow control and jamming -------------------------------------------------------------------

// Gets whether a physical port honours IEEE 802.3x pause frames and whether it sends them.
// After false both flags are untouched, whatever the SDK did.
VORN_EXPORT bool vorn_get_port_flow_control_8023x(const Usp& port, bool& receive, bool& transmit);

// Sets whether every member of `port` honours pause frames and whether it sends them. Refuses a
// VLAN interface and an unknown port before anything else happens.
VORN_EXPORT bool vorn_set_port_flow_control_8023x(const Usp& port, bool receive, bool transmit);

// Sets the pause-frame flags of every port listed, taking them in reverse order: the first says
// whether pause frames are sent and the second whether they are honoured, unlike
// vorn_set_port_flow_control_8023x().
VORN_EXPORT bool vorn_set_ports_flow_control_8023x(const std::list<Usp>& ports, bool transmit,
                                                   bool receive);

// Gets whether a half-duplex physical port jams, its backpressure against the link partner.
VORN_EXPORT bool vorn_get_port_jaming_control(const Usp& port, bool& on);

// Sets whether every member of `port` jams. Refuses a VLAN interface and an unknown port before
// anything else happens.
VORN_EXPORT bool vorn_set_port_jaming_control(const Usp& port, bool on);

#endif  // VORNLCAPI_API_PORT_H_
