// SPDX-License-Identifier: Apache-2.0
//
// Packets sent from the CPU. api.h has the conventions.
#ifndef VORNLCAPI_API_PACKET_H_
#define VORNLCAPI_API_PACKET_H_

#include <list>

#include "vornlcapi/export.h"
#include "vornlcapi/types.h"

// Has the switch forward a packet as if it had come in through a port of its VLAN: that of its
// 802.1Q tag, else VLAN 1.
VORN_EXPORT bool vorn_send_packet_from_cpu(const Packet& packet);

// Sends a packet out of the listed ports whose link is up. A LAG sends once, through its first
// member that is up; a VLAN interface through all of its members that are up. A port reached twice
// sends twice.
// A port that is down or unknown is passed over and is no failure; with no port left the SDK is
// asked all the same, with empty lists, and says whether that is a success.
//   tagged     send with an 802.1Q tag: the packet's own, else one with the port's PVID.
//   untagged   send without.
VORN_EXPORT bool vorn_send_packet_by_port(const std::list<Usp>& tagged,
                                          const std::list<Usp>& untagged, const Packet& packet);

#endif  // VORNLCAPI_API_PACKET_H_
