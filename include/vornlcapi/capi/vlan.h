/* SPDX-License-Identifier: Apache-2.0 */
/* The VLAN table, the rules that put untagged frames into a VLAN, and the VLAN settings of ports.
 * The conventions are in capi.h. */
#ifndef VORNLCAPI_CAPI_VLAN_H_
#define VORNLCAPI_CAPI_VLAN_H_

#include <stdbool.h>

#include "vornlcapi/export.h"
#include "vornlcapi/records.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- VLANs and their members ----------------------------------------------------------------- */

/* Makes a VLAN without members. 0 when it exists. */
VORN_EXPORT int ctype_vorn_create_vlan(unsigned int vlan);
/* Deletes a VLAN with its memberships. 0 when it does not exist. */
VORN_EXPORT int ctype_vorn_delete_vlan(unsigned int vlan);

/* Adds members: frames of the VLAN leave `tagged` ports with an 802.1Q tag and `untagged` ports
 * without. A port that is a member already changes to the kind given. */
VORN_EXPORT int ctype_vorn_add_ports_to_vlan(unsigned int vlan, usp_s* tagged, int tagged_count,
                                             usp_s* untagged, int untagged_count);
/* Removes members of either kind. */
VORN_EXPORT int ctype_vorn_delete_ports_from_vlan(unsigned int vlan, usp_s* ports, int count);

/* Writes past the counts that it reports: both arrays need room for every member of the VLAN,
 * whatever the counts say.
 *   tagged, untagged   receive all members of their kind
 *   ..._count          in: any number; out: the smaller of it and the number of members */
VORN_EXPORT int ctype_vorn_get_vlan_info(unsigned int vlan, usp_s* tagged,
                                         unsigned int* tagged_count, usp_s* untagged,
                                         unsigned int* untagged_count);

/* ---- Classification of untagged frames ------------------------------------------------------- */
/* Where several rules fit a frame, the rule for its MAC address comes before one for a subnet, that
 * before one for its protocol, and the PVID comes last. */

/* VLAN and 802.1p priority, 0 to 7, of frames from an address or a subnet; of subnets the one with
 * the longest mask wins. VLAN 0 deletes the rule. */
VORN_EXPORT int ctype_vorn_set_mac_vlan(unsigned char* mac, unsigned int vlan,
                                        unsigned int priority);
VORN_EXPORT int ctype_vorn_set_ipv4_subnet_vlan(unsigned int ip, unsigned int mask,
                                                unsigned int vlan, unsigned int priority);
/* The same for an IPv6 subnet.
 *   prefix_length   bits, 0 to 128 */
VORN_EXPORT int ctype_vorn_set_ipv6_subnet_vlan(unsigned char* ip6, unsigned int prefix_length,
                                                unsigned int vlan, unsigned int priority);

/* ---- VLAN settings of a port ----------------------------------------------------------------- */
/* The getters read a physical port, the others act on every member of a port. */

/* VLAN of untagged frames that no rule classifies. */
VORN_EXPORT int ctype_vorn_get_port_pvid(usp_s* port, unsigned int* pvid);
VORN_EXPORT int ctype_vorn_set_port_pvid(usp_s* port, unsigned int pvid);

/* 802.1p priority, 0 to 7, of untagged frames put into `vlan`; VLAN 0 stands for all VLANs that
 * have none of their own. */
VORN_EXPORT int ctype_vorn_get_port_vlan_priority(usp_s* port, unsigned int vlan,
                                                  unsigned int* priority);
VORN_EXPORT int ctype_vorn_set_port_vlan_priority(usp_s* port, unsigned int vlan,
                                                  unsigned int priority);

/* Whether all frames are accepted; off: tagged ones only, and VLAN 0 counts as untagged. */
VORN_EXPORT int ctype_vorn_get_port_vlan_accept_frame(usp_s* port, bool* all);
VORN_EXPORT int ctype_vorn_set_port_vlan_accept_frame(usp_s* port, int all);

/* VLAN of untagged frames of a protocol.
 *   protocol   as the frame type has it: EtherType, SNAP type, or DSAP << 8 | SSAP */
VORN_EXPORT int ctype_vorn_set_port_protocol_vlan(usp_s* port, frame_type_t type,
                                                  unsigned short protocol, unsigned int vlan);
/* Delete the rule for a protocol, or the rules for all. */
VORN_EXPORT int ctype_vorn_delete_port_protocol_vlan(usp_s* port, frame_type_t type,
                                                     unsigned short protocol);
VORN_EXPORT int ctype_vorn_delete_port_protocol_vlan_all(usp_s* port);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* VORNLCAPI_CAPI_VLAN_H_ */
