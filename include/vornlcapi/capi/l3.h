/* SPDX-License-Identifier: Apache-2.0 */
/* Layer 3: router interfaces, hosts and routes. The conventions are in capi.h. */
#ifndef VORNLCAPI_CAPI_L3_H_
#define VORNLCAPI_CAPI_L3_H_

#include "vornlcapi/export.h"
#include "vornlcapi/records.h"

#ifdef __cplusplus
extern "C" {
#endif

/*
 * Hosts and routes are known by their address or subnet together with their port. `mac` is the
 * next hop's address, `interface` the id of the router interface that packets leave through.
 */

/* ---- Router interfaces ----------------------------------------------------------------------- */

/* Routes the frames to `mac` in `vlan`. Receives the id that the SDK chose. */
VORN_EXPORT int ctype_vorn_create_l3_interface(unsigned char* mac, unsigned int vlan,
                                               unsigned int* id);
/* The same under an id of the caller's choice; `replace` lets it take the place of the interface
 * that has the id. */
VORN_EXPORT int ctype_vorn_create_l3_interface_with_id(unsigned char* mac, unsigned int vlan,
                                                       unsigned int id, int replace);
/* Receives the VLAN and the 6 bytes of the address. */
VORN_EXPORT int ctype_vorn_get_l3_interface(unsigned int id, unsigned int* vlan,
                                            unsigned char* mac);
/* Delete one interface, or all. 0 while hosts or routes lead through one of them. */
VORN_EXPORT int ctype_vorn_delete_l3_interface(unsigned char* mac, unsigned int vlan);
VORN_EXPORT int ctype_vorn_delete_l3_interface_by_id(unsigned int id);
VORN_EXPORT int ctype_vorn_delete_l3_interface_all(void);

/* ---- Hosts ----------------------------------------------------------------------------------- */

/* Add a host behind a physical port or a LAG. C has no getter for hosts. */
VORN_EXPORT int ctype_vorn_add_l3_host_ip4(usp_s* port, unsigned int ip, unsigned char* mac,
                                           unsigned int interface);
VORN_EXPORT int ctype_vorn_add_l3_host_ip6(usp_s* port, unsigned char* ip6, unsigned char* mac,
                                           unsigned int interface);
/* Delete the IPv6 hosts of an interface with `ip6`, else its IPv4 hosts. */
VORN_EXPORT int ctype_vorn_delete_l3_host_by_interface(unsigned int interface, int ip6);
/* Delete the hosts whose address has the same first 24 bits, for IPv6 64 bits. */
VORN_EXPORT int ctype_vorn_delete_l3_host_by_network_ip4(unsigned int ip);
VORN_EXPORT int ctype_vorn_delete_l3_host_by_network_ip6(unsigned char* ip6);
/* Delete a host behind a physical port or a LAG. */
VORN_EXPORT int ctype_vorn_delete_l3_host_by_addr_ip4(unsigned int ip, usp_s* port);
VORN_EXPORT int ctype_vorn_delete_l3_host_by_addr_ip6(unsigned char* ip6, usp_s* port);
/* Deletes all hosts. */
VORN_EXPORT int ctype_vorn_clear_l3_host_table(void);

/* ---- Routes ---------------------------------------------------------------------------------- */

/* Adds a route. Among routes of one subnet the lowest metric wins, then the earliest. */
VORN_EXPORT int ctype_vorn_add_l3_route_ip4(usp_s* port, unsigned int ip, unsigned int mask,
                                            unsigned char* mac, unsigned int interface,
                                            unsigned int metric);
/* Adds a route, whose metric is 0. For a LAG interface the LAG with the id `port->port` carries
 * it: IPv4 routes go by the id that the LAG really has. */
VORN_EXPORT int ctype_vorn_add_l3_route_ip6(usp_s* port, unsigned char* ip6, unsigned char* mask6,
                                            unsigned char* mac, unsigned int interface);
/* Receives the 6 bytes of the next hop's address, the interface and the metric. */
VORN_EXPORT int ctype_vorn_get_l3_route_by_subnet_ip4(unsigned int ip, unsigned int mask,
                                                      usp_s* port, unsigned char* mac,
                                                      unsigned int* interface,
                                                      unsigned int* metric);
/* Receives the interface and the 6 bytes of the next hop's address. Refuses LAG interfaces. */
VORN_EXPORT int ctype_vorn_get_l3_route_by_subnet_ip6(unsigned char* ip6, unsigned char* mask6,
                                                      usp_s* port, unsigned int* interface,
                                                      unsigned char* mac);
/* Deletes the IPv6 routes of an interface with `ip6`, else its IPv4 routes. */
VORN_EXPORT int ctype_vorn_delete_l3_route_by_interface(unsigned int interface, int ip6);
/* Delete a route through a physical port or a LAG. */
VORN_EXPORT int ctype_vorn_delete_l3_route_by_subnet_ip4(unsigned int ip, unsigned int mask,
                                                         usp_s* port);
VORN_EXPORT int ctype_vorn_delete_l3_route_by_subnet_ip6(unsigned char* ip6, unsigned char* mask6,
                                                         usp_s* port);
/* Deletes all routes. */
VORN_EXPORT int ctype_vorn_clear_l3_route_table(void);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* VORNLCAPI_CAPI_L3_H_ */
