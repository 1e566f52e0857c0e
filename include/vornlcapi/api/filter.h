// SPDX-License-Identifier: Apache-2.0
//
// Packet filters: what they match goes to the CPU and nowhere else. api.h has the conventions.
#ifndef VORNLCAPI_API_FILTER_H_
#define VORNLCAPI_API_FILTER_H_

#include "vornlcapi/export.h"

// ---- ARP packets whose target address is `ip` under `mask` --------------------------------------

// Adds an ARP filter.
VORN_EXPORT bool vorn_add_arp_filter(unsigned int ip, unsigned int mask);

// Deletes an ARP filter.
VORN_EXPORT bool vorn_delete_arp_filter(unsigned int ip, unsigned int mask);

// Deletes all ARP filters.
VORN_EXPORT bool vorn_delete_arp_filter_all();

// ---- IPv4 and IPv6 packets of a protocol, 0 to 255 ----------------------------------------------

// Adds a filter for an IP protocol.
VORN_EXPORT bool vorn_add_ip_protocol_filter(unsigned int protocol);

// Deletes the filter for an IP protocol.
VORN_EXPORT bool vorn_delete_ip_protocol_filter(unsigned int protocol);

// Deletes all filters for IP protocols.
VORN_EXPORT bool vorn_delete_ip_protocol_filter_all();

// ---- TCP and UDP packets to a layer-4 port, 0 to 65535 ------------------------------------------

// Adds a filter for a destination port.
VORN_EXPORT bool vorn_add_l4_destination_port_filter(unsigned int port);

// Deletes the filter for a destination port.
VORN_EXPORT bool vorn_delete_l4_destination_port_filter(unsigned int port);

// Deletes all filters for destination ports.
VORN_EXPORT bool vorn_delete_l4_destination_port_filter_all();

#endif  // VORNLCAPI_API_FILTER_H_
