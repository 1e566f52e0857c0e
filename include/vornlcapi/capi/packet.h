/* SPDX-License-Identifier: Apache-2.0 */
/* Packets sent from the CPU. The conventions are in capi.h. */
#ifndef VORNLCAPI_CAPI_PACKET_H_
#define VORNLCAPI_CAPI_PACKET_H_

#include "vornlcapi/export.h"
#include "vornlcapi/records.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Returns 0 without sending when packet->length is 0. Forwards a frame as if it had come in
 * through a port of its VLAN: that of its tag, else VLAN 1. */
VORN_EXPORT int ctype_vorn_send_packet_from_cpu(ctype_packet_s* packet);

/* Returns 0 without sending when packet->length is 0. Sends a frame out of each port given whose
 * link is up: of a LAG through its first such member, of a VLAN interface through all of them. A
 * port that is reached twice sends twice; one that is unknown or has no link is passed over. With
 * no port left the SDK is asked all the same, and says whether that is a success.
 *   tagged     send with an 802.1Q tag: the frame's own, else one with the port's PVID
 *   untagged   send without */
VORN_EXPORT int ctype_vorn_send_packet_by_port(usp_s* tagged, int tagged_count, usp_s* untagged,
                                               int untagged_count, ctype_packet_s* packet);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* VORNLCAPI_CAPI_PACKET_H_ */
