// SPDX-License-Identifier: Apache-2.0
//
// Layer-3 interfaces, hosts and routes. api.h has the conventions.
//
// Hosts and routes are known by their address or subnet together with the port that they lead out
// of. That is a physical port or a LAG, which reaches the SDK as its id; a VLAN interface, an
// unknown port and a LAG without id give false, and the SDK is not asked. Functions that see this
// differently say so.
#ifndef VORNLCAPI_API_L3_H_
#define VORNLCAPI_API_L3_H_

#include "vornlcapi/export.h"
#include "vornlcapi/types.h"

// ---- Interfaces ---------------------------------------------------------------------------------

// Makes a router interface: frames to `mac` in `vlan` are routed.
//   id   out: what the SDK chose.
VORN_EXPORT bool vorn_create_l3_interface(const unsigned char* mac, unsigned int vlan,
                                          unsigned int& id);

// Makes a router interface under an id of the caller's choice.
//   replace   whether it may take the place of the interface that has the id; false without it
//             when there is one.
VORN_EXPORT bool vorn_create_l3_interface_with_id(const unsigned char* mac, unsigned int vlan,
                                                  unsigned int id, bool replace);

// Gets VLAN and address of a router interface.
//   mac   out: 6 bytes.
VORN_EXPORT bool vorn_get_l3_interface(unsigned int id, unsigned int& vlan, unsigned char* mac);

// Deletes the router interface with an address in a VLAN. False while hosts or routes lead through
// it.
VORN_EXPORT bool vorn_delete_l3_interface(const unsigned char* mac, unsigned int vlan);

// Deletes the router interface with an id. False while hosts or routes lead through it.
VORN_EXPORT bool vorn_delete_l3_interface_by_id(unsigned int id);

// Deletes all router interfaces. False, and nothing is deleted, while hosts or routes lead through
// one.
VORN_EXPORT bool vorn_delete_l3_interface_all();

// ---- Hosts: `mac` is the host's address, `interface` the id of the router interface -------------

// Adds an IPv4 host behind a physical port or a LAG.
VORN_EXPORT bool vorn_add_l3_host_ip4(const Usp& port, unsigned int ip, const unsigned char* mac,
                                      unsigned int interface);

// Adds an IPv6 host behind a physical port or a LAG.
VORN_EXPORT bool vorn_add_l3_host_ip6(const Usp& port, const unsigned char* ip6,
                                      const unsigned char* mac, unsigned int interface);

// Gets address and interface of an IPv4 host behind a physical port or a LAG.
//   mac   out: 6 bytes.
VORN_EXPORT bool vorn_get_l3_host_ip4(unsigned int ip, const Usp& port, unsigned char* mac,
                                      unsigned int& interface);

// Gets address and interface of an IPv6 host behind a physical port or a LAG.
//   mac   out: 6 bytes.
VORN_EXPORT bool vorn_get_l3_host_ip6(const unsigned char* ip6, const Usp& port, unsigned char* mac,
                                      unsigned int& interface);

// Deletes the IPv4 hosts of a router interface, or with `ip6` the IPv6 ones.
VORN_EXPORT bool vorn_delete_l3_host_by_interface(unsigned int interface, bool ip6);

// Deletes the IPv4 hosts that share the first 24 bits of `ip`.
VORN_EXPORT bool vorn_delete_l3_host_by_network_ip4(unsigned int ip);

// Deletes the IPv6 hosts that share the first 64 bits of `ip6`.
VORN_EXPORT bool vorn_delete_l3_host_by_network_ip6(const unsigned char* ip6);

// Deletes an IPv4 host behind a physical port or a LAG.
VORN_EXPORT bool vorn_delete_l3_host_by_addr_ip4(unsigned int ip, const Usp& port);

// Deletes an IPv6 host behind a physical port or a LAG.
VORN_EXPORT bool vorn_delete_l3_host_by_addr_ip6(const unsigned char* ip6, const Usp& port);

// Deletes all hosts.
VORN_EXPORT bool vorn_clear_l3_host_table();

// ---- Routes: `mac` is the next hop's address ----------------------------------------------------

// Adds a route to an IPv4 subnet through a physical port or a LAG.
//   metric   among routes to the same subnet the lowest wins, then the earliest route.
VORN_EXPORT bool vorn_add_l3_route_ip4(const Usp& port, unsigned int ip, unsigned int mask,
                                       const unsigned char* mac, unsigned int interface,
                                       unsigned int metric);

// Adds a route to an IPv6 subnet, whose metric is 0, through a physical port or a LAG. The port
// number of a LAG interface reaches the SDK in place of the LAG's id, unlike in
// vorn_add_l3_route_ip4().
VORN_EXPORT bool vorn_add_l3_route_ip6(const Usp& port, const unsigned char* ip6,
                                       const unsigned char* mask6, const unsigned char* mac,
                                       unsigned int interface);

// Gets next hop, interface and metric of a route to an IPv4 subnet through a physical port or a
// LAG.
VORN_EXPORT bool vorn_get_l3_route_by_subnet_ip4(unsigned int ip, unsigned int mask,
                                                 const Usp& port, unsigned char (&mac)[6],
                                                 unsigned int& interface, unsigned int& metric);

// Gets interface and next hop of a route to an IPv6 subnet through a physical port. A LAG gives
// false, unless the host translates its interface to a hardware port: the number of that port
// then reaches the SDK as a LAG's id.
//   mac   out: 6 bytes.
VORN_EXPORT bool vorn_get_l3_route_by_subnet_ip6(const unsigned char* ip6,
                                                 const unsigned char* mask6, const Usp& port,
                                                 unsigned int& interface, unsigned char* mac);

// Deletes the IPv4 routes of a router interface, or with `ip6` the IPv6 ones.
VORN_EXPORT bool vorn_delete_l3_route_by_interface(unsigned int interface, bool ip6);

// Deletes a route to an IPv4 subnet through a physical port or a LAG.
VORN_EXPORT bool vorn_delete_l3_route_by_subnet_ip4(unsigned int ip, unsigned int mask,
                                                    const Usp& port);

// Deletes a route to an IPv6 subnet through a physical port or a LAG.
VORN_EXPORT bool vorn_delete_l3_route_by_subnet_ip6(const unsigned char* ip6,
                                                    const unsigned char* mask6, const Usp& port);

// Deletes all routes.
VORN_EXPORT bool vorn_clear_l3_route_table();

#endif  // VORNLCAPI_API_L3_H_
