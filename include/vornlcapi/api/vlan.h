// SPDX-License-Identifier: Apache-2.0
//
// The VLAN table, the rules that put untagged frames into a VLAN, and the VLAN settings of
// ports. api.h has the conventions.
#ifndef VORNLCAPI_API_VLAN_H_
#define VORNLCAPI_API_VLAN_H_

#include <list>

#include "vornlcapi/export.h"
#include "vornlcapi/types.h"

// ---- VLANs and their members --------------------------------------------------------------------

// Makes a VLAN without members. False when it exists.
VORN_EXPORT bool vorn_create_vlan(unsigned int vlan);

// Deletes a VLAN with its memberships. False when it does not exist.
VORN_EXPORT bool vorn_delete_vlan(unsigned int vlan);

// Adds members to a VLAN: frames leave `tagged` ports with an 802.1Q tag and `untagged` ports
// without. A port that is a member already changes to the kind given. Either list may be empty.
// If a port of either list does not translate the SDK is not asked.
VORN_EXPORT bool vorn_add_ports_to_vlan(unsigned int vlan, const std::list<Usp>& tagged,
                                        const std::list<Usp>& untagged);

// Removes members of either kind from a VLAN.
// If one of the ports does not translate the SDK is not asked.
VORN_EXPORT bool vorn_delete_ports_from_vlan(unsigned int vlan, const std::list<Usp>& ports);

// Appends the physical ports that are members of a VLAN to the lists, which are not cleared.
// False also when the SDK answers but one of its ports has no logical address; the lists may
// have grown then, and `untagged` is untouched if the port was a tagged one.
VORN_EXPORT bool vorn_get_vlan_info(unsigned int vlan, std::list<Usp>& tagged,
                                    std::list<Usp>& untagged);

// ---- Classification of untagged frames ----------------------------------------------------------
// Where several rules fit a frame, the rule for its MAC address comes before one for a subnet, that
// before one for its protocol, and the PVID comes last.

// Puts untagged frames from an address into a VLAN with a priority.
//   vlan       0 deletes the rule.
//   priority   802.1p, 0 to 7.
VORN_EXPORT bool vorn_set_mac_vlan(const unsigned char* mac, unsigned int vlan,
                                   unsigned int priority);

// Puts untagged frames from an IPv4 subnet into a VLAN with a priority, as vorn_set_mac_vlan(). Of
// several subnets the one with the longest mask wins.
VORN_EXPORT bool vorn_set_ipv4_subnet_vlan(unsigned int ip, unsigned int mask, unsigned int vlan,
                                           unsigned int priority);

// Puts untagged frames from an IPv6 subnet into a VLAN with a priority, as
// vorn_set_ipv4_subnet_vlan().
//   prefix_length   bits, 0 to 128.
VORN_EXPORT bool vorn_set_ipv6_subnet_vlan(const unsigned char* ip6, unsigned int prefix_length,
                                           unsigned int vlan, unsigned int priority);

// ---- VLAN settings of a port --------------------------------------------------------------------

// Gets the VLAN of untagged frames of a physical port that no other rule classifies.
VORN_EXPORT bool vorn_get_port_pvid(const Usp& port, unsigned int& pvid);

// Sets the VLAN of untagged frames of every member of `port`.
VORN_EXPORT bool vorn_set_port_pvid(const Usp& port, unsigned int pvid);

// Sets the VLAN of untagged frames of every port listed.
VORN_EXPORT bool vorn_set_ports_pvid(const std::list<Usp>& ports, unsigned int pvid);

// Gets the 802.1p priority that a physical port gives to untagged frames put into `vlan`.
VORN_EXPORT bool vorn_get_port_vlan_priority(const Usp& port, unsigned int vlan,
                                             unsigned int& priority);

// Sets the priority that every member of `port` gives to untagged frames put into `vlan`.
//   vlan       0: all VLANs that have none of their own.
//   priority   802.1p, 0 to 7.
VORN_EXPORT bool vorn_set_port_vlan_priority(const Usp& port, unsigned int vlan,
                                             unsigned int priority);

// Gets which frames a physical port accepts: all (true) or only tagged ones (false). A tag with
// VLAN 0 counts as none.
VORN_EXPORT bool vorn_get_port_vlan_accept_frame(const Usp& port, bool& all);

// Sets which frames every member of `port` accepts: all (true) or only tagged ones (false).
VORN_EXPORT bool vorn_set_port_vlan_accept_frame(const Usp& port, bool all);

// Has every member of `port` put untagged frames of a protocol into a VLAN.
//   protocol   what the frame type makes of it: EtherType, SNAP type, or DSAP << 8 | SSAP.
VORN_EXPORT bool vorn_set_port_protocol_vlan(const Usp& port, frame_type_t type,
                                             unsigned short protocol, unsigned int vlan);

// Deletes the rule for a protocol from every member of `port`.
VORN_EXPORT bool vorn_delete_port_protocol_vlan(const Usp& port, frame_type_t type,
                                                unsigned short protocol);

// Deletes the rules for all protocols from every member of `port`.
VORN_EXPORT bool vorn_delete_port_protocol_vlan_all(const Usp& port);

#endif  // VORNLCAPI_API_VLAN_H_
