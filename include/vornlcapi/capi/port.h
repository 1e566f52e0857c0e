/* SPDX-License-Identifier: Apache-2.0 */
/* Physical settings of ports. The conventions are in capi.h. */
#ifndef VORNLCAPI_CAPI_PORT_H_
#define VORNLCAPI_CAPI_PORT_H_

#include <stdbool.h>

#include "vornlcapi/export.h"
#include "vornlcapi/records.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Speed, duplex, autonegotiation, link: physical ports only ------------------------------- */

/* The speed in force; the setter fixes it, and 0 says that the port has no ability for it. */
VORN_EXPORT int ctype_vorn_get_port_speed(usp_s* port, speed_type_t* speed);
VORN_EXPORT int ctype_vorn_set_port_speed(usp_s* port, speed_type_t speed);

/* The duplex mode in force; the setter fixes it, and 0 says that the port has no ability for it. */
VORN_EXPORT int ctype_vorn_get_port_duplex(usp_s* port, duplex_type_t* duplex);
VORN_EXPORT int ctype_vorn_set_port_duplex(usp_s* port, duplex_type_t duplex);

/* Whether the port negotiates speed and duplex mode. */
VORN_EXPORT int ctype_vorn_get_port_autoneg(usp_s* port, bool* on);
VORN_EXPORT int ctype_vorn_set_port_autoneg(usp_s* port, int on);

/* Whether the port has a link: exactly PHY_STATE_UP means so. The setter forces the PHY down, or
 * lets it come up again. */
VORN_EXPORT int ctype_vorn_get_port_link_state(usp_s* port, phy_state_t* state);
VORN_EXPORT int ctype_vorn_set_port_link_state(usp_s* port, phy_state_t state);

/* ---- Frame size and administrative state ----------------------------------------------------- */

/* Sets the largest frame, in bytes from the destination address on, without 802.1Q tag and
 * checksum, that every member of a port takes. There is no getter. */
VORN_EXPORT int ctype_vorn_set_port_mtu(usp_s* port, unsigned int bytes);

/* Whether a physical port is on. The setter switches every member of a port or LAG and refuses
 * VLAN interfaces. */
VORN_EXPORT int ctype_vorn_get_port_state(usp_s* port, bool* on);
VORN_EXPORT int ctype_vorn_set_port_state(usp_s* port, int on);

/* ---- Abilities: PORT_ABILITY_... bits, physical ports only ----------------------------------- */

/* What the port can do. */
VORN_EXPORT int ctype_vorn_get_port_ability(usp_s* port, port_ability_type_t* ability);

/* What the port advertises when it negotiates: no more than it can do. */
VORN_EXPORT int ctype_vorn_set_port_advertising_ability(usp_s* port, port_ability_type_t ability);
VORN_EXPORT int ctype_vorn_get_port_advertising_ability(usp_s* port, port_ability_type_t* ability);

/* What is in force: one speed and duplex mode, and pause; none without a link. */
VORN_EXPORT int ctype_vorn_get_port_current_ability(usp_s* port, port_ability_type_t* ability);

/* What the link partner advertises. */
VORN_EXPORT int ctype_vorn_get_port_peer_ability(usp_s* port, port_ability_type_t* ability);

/* ---- Pause frames and jamming ---------------------------------------------------------------- */
/* The getters read a physical port. The setters act on every member of a port or LAG and refuse
 * VLAN interfaces. */

/* IEEE 802.3x: whether received pause frames are honoured, whether they are sent. */
VORN_EXPORT int ctype_vorn_get_port_flow_control_8023x(usp_s* port, bool* receive, bool* transmit);
VORN_EXPORT int ctype_vorn_set_port_flow_control_8023x(usp_s* port, int receive, int transmit);

/* Jamming: backpressure on a half-duplex port. */
VORN_EXPORT int ctype_vorn_get_port_jaming_control(usp_s* port, bool* on);
VORN_EXPORT int ctype_vorn_set_port_jaming_control(usp_s* port, int on);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* VORNLCAPI_CAPI_PORT_H_ */
