// SPDX-License-Identifier: Apache-2.0
//
// How ports and switch treat traffic: storm control, mirroring, flood blocking, unknown unicast,
// class of service, what a port lets in and out, forward mode. api.h has the conventions.
#ifndef VORNLCAPI_API_TRAFFIC_H_
#define VORNLCAPI_API_TRAFFIC_H_

#include <list>

#include "vornlcapi/export.h"
#include "vornlcapi/types.h"

// ---- Storm control: frames a second that a port lets in; 0 means no limit -----------------------

// Gets the limit for unicast frames with an unknown destination on a physical port.
VORN_EXPORT bool vorn_get_port_unicast_control(const Usp& port, unsigned int& frames_per_second);

// Sets the limit for unicast frames with an unknown destination on every member of `port`.
VORN_EXPORT bool vorn_set_port_unicast_control(const Usp& port, unsigned int frames_per_second);

// Gets the limit for multicast frames on a physical port.
VORN_EXPORT bool vorn_get_port_multicast_control(const Usp& port, unsigned int& frames_per_second);

// Sets the limit for multicast frames on every member of `port`.
VORN_EXPORT bool vorn_set_port_multicast_control(const Usp& port, unsigned int frames_per_second);

// Gets the limit for broadcast frames on a physical port.
VORN_EXPORT bool vorn_get_port_broadcast_control(const Usp& port, unsigned int& frames_per_second);

// Sets the limit for broadcast frames on every member of `port`.
VORN_EXPORT bool vorn_set_port_broadcast_control(const Usp& port, unsigned int frames_per_second);

// ---- Mirroring ----------------------------------------------------------------------------------

// Finds the port that the frames of `mirrored` are copied to. Both are physical ports.
// False when `mirrored` is not mirrored, and also when the SDK answers but its port has no logical
// address: `type` is written then, `mirror_to` is not.
VORN_EXPORT bool vorn_get_port_mirror(Usp& mirror_to, const Usp& mirrored, mirror_type_t& type);

// Copies the frames of `mirrored` that `type` names to `mirror_to`; an earlier mirror-to port gets
// none any more. Both are physical ports.
VORN_EXPORT bool vorn_set_port_mirror(const Usp& mirror_to, const Usp& mirrored,
                                      mirror_type_t type);

// ---- Flood blocking: FLOOD_BLOCK_... bits -------------------------------------------------------

// Gets which floods that come in through a physical port are kept from the CPU.
VORN_EXPORT bool vorn_get_port_flood_blocking_cpu(const Usp& port, flood_block_type_t& type);

// Sets which floods that come in through every port listed are kept from the CPU. It takes a list
// although its name says port.
VORN_EXPORT bool vorn_set_port_flood_blocking_cpu(const std::list<Usp>& ports,
                                                  flood_block_type_t type);

// Gets which floods that come in through `from` are kept from leaving through `to`. Both are
// physical ports.
VORN_EXPORT bool vorn_get_port_flood_blocking(const Usp& from, const Usp& to,
                                              flood_block_type_t& type);

// Sets which floods that come in through every port listed are kept from leaving through `to`, a
// physical port. It takes a list although its name says port. When `to` does not translate no
// port listed is looked at, and an empty list gives false.
VORN_EXPORT bool vorn_set_port_flood_blocking(const std::list<Usp>& ports, const Usp& to,
                                              flood_block_type_t type);

// ---- Unknown unicast to the CPU -----------------------------------------------------------------

// Gets whether unicast frames with an unknown destination that come in through a physical port
// are handed to the CPU too.
VORN_EXPORT bool vorn_get_port_switch_unknown_unicast_to_cpu(const Usp& port, bool& enabled);

// Sets whether unicast frames with an unknown destination that come in through a physical port
// are handed to the CPU too.
VORN_EXPORT bool vorn_set_port_switch_unknown_unicast_to_cpu(const Usp& port, bool enable);

// Gets whether the CPU receives such frames of all ports.
VORN_EXPORT bool vorn_get_switch_unknown_unicast_to_cpu(bool& enabled);

// Sets whether the CPU receives such frames of all ports.
VORN_EXPORT bool vorn_set_switch_unknown_unicast_to_cpu(bool enable);

// ---- Class of service: 802.1p priority 0 to 7, egress queue 0 to 7 ------------------------------

// Gets the egress queue of a priority on a physical port.
VORN_EXPORT bool vorn_get_port_cos_mapping(const Usp& port, unsigned int priority,
                                           unsigned int& queue);

// Sets the egress queue of a priority on every member of `port`.
VORN_EXPORT bool vorn_set_port_cos_mapping(const Usp& port, unsigned int priority,
                                           unsigned int queue);

// ---- What a port lets in and out ----------------------------------------------------------------

// Gets which frames a physical port throws away as they come in.
VORN_EXPORT bool vorn_get_port_ingress_discarding(const Usp& port, ingress_discard_type_t& type);

// Sets which frames a physical port throws away as they come in.
VORN_EXPORT bool vorn_set_port_ingress_discarding(const Usp& port, ingress_discard_type_t type);

// Gets whether a physical port sends.
VORN_EXPORT bool vorn_get_port_egress_admin_state(const Usp& port, bool& on);

// Sets whether a physical port sends. It goes on receiving.
VORN_EXPORT bool vorn_set_port_egress_admin_state(const Usp& port, bool on);

// Sets whether a physical port forwards by the MAC table. There is no getter.
VORN_EXPORT bool vorn_set_port_l2_enable(const Usp& port, bool enable);

// ---- Forward mode of the switch: SWITCH_FORWARD_MODE_... ----------------------------------------

// Gets the part that the flow table has in forwarding.
VORN_EXPORT bool vorn_get_switch_forward_mode(unsigned int& mode);

// Sets the part that the flow table has in forwarding.
VORN_EXPORT bool vorn_set_switch_forward_mode(unsigned int mode);

#endif  // VORNLCAPI_API_TRAFFIC_H_
