/* SPDX-License-Identifier: Apache-2.0 */
/* Packet filters: what matches goes to the CPU and nowhere else. The conventions are in capi.h. */
#ifndef VORNLCAPI_CAPI_FILTER_H_
#define VORNLCAPI_CAPI_FILTER_H_

#include "vornlcapi/export.h"
#include "vornlcapi/records.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Filters of ARP packets whose target address is `ip` under `mask`. */
VORN_EXPORT int ctype_vorn_add_arp_filter(unsigned int ip, unsigned int mask);
VORN_EXPORT int ctype_vorn_delete_arp_filter(unsigned int ip, unsigned int mask);
VORN_EXPORT int ctype_vorn_delete_arp_filter_all(void);

/* Filters of IPv4 and IPv6 packets of a protocol, 0 to 255. */
VORN_EXPORT int ctype_vorn_add_ip_protocol_filter(unsigned int protocol);
VORN_EXPORT int ctype_vorn_delete_ip_protocol_filter(unsigned int protocol);
VORN_EXPORT int ctype_vorn_delete_ip_protocol_filter_all(void);

/* Deletes the filter of TCP and UDP packets to `port`: the same as the next one. C programs
 * cannot add such a filter; C++ programs call vorn_add_l4_destination_port_filter. */
VORN_EXPORT int ctype_vorn_add_l4_destination_port_filter(unsigned int port);
/* Deletes the filter of TCP and UDP packets to `port`, 0 to 65535. */
VORN_EXPORT int ctype_vorn_delete_l4_destination_port_filter(unsigned int port);
/* Deletes all filters of destination ports. */
VORN_EXPORT int ctype_vorn_delete_l4_destination_port_filter_all(void);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* VORNLCAPI_CAPI_FILTER_H_ */
