/* SPDX-License-Identifier: Apache-2.0 */
/* How ports and switch treat traffic: storm control, mirroring, flood blocking, unknown unicast,
 * class of service, what a port lets in and out, forward mode. The conventions are in capi.h. */
#ifndef VORNLCAPI_CAPI_TRAFFIC_H_
#define VORNLCAPI_CAPI_TRAFFIC_H_

#include <stdbool.h>

#include "vornlcapi/export.h"
#include "vornlcapi/records.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Storm control: frames a second that a port lets in; 0 means no limit -------------------- */
/* The getters read a physical port, the setters act on every member of a port. */

/* Unicast frames with an unknown destination. */
VORN_EXPORT int ctype_vorn_get_port_unicast_control(usp_s* port, unsigned int* frames_per_second);
VORN_EXPORT int ctype_vorn_set_port_unicast_control(usp_s* port, unsigned int frames_per_second);

/* Multicast frames. */
VORN_EXPORT int ctype_vorn_get_port_multicast_control(usp_s* port, unsigned int* frames_per_second);
VORN_EXPORT int ctype_vorn_set_port_multicast_control(usp_s* port, unsigned int frames_per_second);

/* Broadcast frames. The getter's result after success is left open: only 0 is certain, and means
 * failure. */
VORN_EXPORT int ctype_vorn_get_port_broadcast_control(usp_s* port, unsigned int* frames_per_second);
VORN_EXPORT int ctype_vorn_set_port_broadcast_control(usp_s* port, unsigned int frames_per_second);

/* ---- Mirroring: physical ports only ---------------------------------------------------------- */

/* Receives the port that the frames of `mirrored` are copied to, and which frames those are. 0
 * when it is not mirrored. */
VORN_EXPORT int ctype_vorn_get_port_mirror(usp_s* mirror_to, usp_s* mirrored, mirror_type_t* type);
/* Copies the frames of `mirrored` that `type` names to `mirror_to`. */
VORN_EXPORT int ctype_vorn_set_port_mirror(usp_s* mirror_to, usp_s* mirrored, mirror_type_t type);

/* ---- Flood blocking: FLOOD_BLOCK_... bits ---------------------------------------------------- */

/* Which floods that come in through a port are kept from the CPU. The setter takes several ports,
 * although its name is singular; those before one that fails keep the new setting. */
VORN_EXPORT int ctype_vorn_get_port_flood_blocking_cpu(usp_s* port, flood_block_type_t* type);
VORN_EXPORT int ctype_vorn_set_port_flood_blocking_cpu(usp_s* ports, int count,
                                                       flood_block_type_t type);

/* Which floods that come in through `from` are kept from leaving through `to`, a physical port.
 * The setter takes several ports, as above. */
VORN_EXPORT int ctype_vorn_get_port_flood_blocking(usp_s* from, usp_s* to,
                                                   flood_block_type_t* type);
VORN_EXPORT int ctype_vorn_set_port_flood_blocking(usp_s* ports, int count, usp_s* to,
                                                   flood_block_type_t type);

/* ---- Unknown unicast to the CPU -------------------------------------------------------------- */

/* Whether frames to unknown addresses that come in through a physical port go to the CPU too. */
VORN_EXPORT int ctype_vorn_get_port_switch_unknown_unicast_to_cpu(usp_s* port, bool* on);
VORN_EXPORT int ctype_vorn_set_port_switch_unknown_unicast_to_cpu(usp_s* port, int on);

/* The same for all ports. */
VORN_EXPORT int ctype_vorn_get_switch_unknown_unicast_to_cpu(bool* on);
VORN_EXPORT int ctype_vorn_set_switch_unknown_unicast_to_cpu(int on);

/* ---- Class of service ------------------------------------------------------------------------ */

/* Egress queue, 0 to 7, of frames of an 802.1p priority, 0 to 7, on a physical port; the setter
 * acts on every member. */
VORN_EXPORT int ctype_vorn_get_port_cos_mapping(usp_s* port, unsigned int priority,
                                                unsigned int* queue);
VORN_EXPORT int ctype_vorn_set_port_cos_mapping(usp_s* port, unsigned int priority,
                                                unsigned int queue);

/* ---- What a physical port lets in and out ---------------------------------------------------- */

/* Which frames the port throws away as they come in. */
VORN_EXPORT int ctype_vorn_get_port_ingress_discarding(usp_s* port, ingress_discard_type_t* type);
VORN_EXPORT int ctype_vorn_set_port_ingress_discarding(usp_s* port, ingress_discard_type_t type);

/* Whether the port sends. It goes on receiving. */
VORN_EXPORT int ctype_vorn_get_port_egress_admin_state(usp_s* port, bool* on);
VORN_EXPORT int ctype_vorn_set_port_egress_admin_state(usp_s* port, int on);

/* Sets whether the port forwards by the MAC table. There is no getter. */
VORN_EXPORT int ctype_vorn_set_port_l2_enable(usp_s* port, int on);

/* ---- Forward mode of the switch -------------------------------------------------------------- */

/* The part that the flow table has in forwarding: SWITCH_FORWARD_MODE_... */
VORN_EXPORT int ctype_vorn_get_switch_forward_mode(unsigned int* mode);
VORN_EXPORT int ctype_vorn_set_switch_forward_mode(unsigned int mode);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* VORNLCAPI_CAPI_TRAFFIC_H_ */
