// SPDX-License-Identifier: Apache-2.0
//
// The entry points of the family `filter`, a row each; row.h says what stands in a row.
#ifndef ENTRYPOINTS_FILTER_H_
#define ENTRYPOINTS_FILTER_H_

#include "entrypoints/row.h"
#include "vornlcapi/api/filter.h"
#include "vornlcapi/capi/filter.h"

namespace entrypoints {

template <class Rows>
void add_filter(Rows& rows) {
  rows.add(VORN_BOTH(add_arp_filter), {"ip", "mask"}, "ARP packets with that target go to the CPU");
  rows.add(VORN_BOTH(delete_arp_filter), {"ip", "mask"}, "ends an ARP filter");
  rows.add(VORN_BOTH(delete_arp_filter_all), {}, "ends all ARP filters");
  rows.add(VORN_BOTH(add_ip_protocol_filter), {"protocol"},
           "packets of an IP protocol go to the CPU");
  rows.add(VORN_BOTH(delete_ip_protocol_filter), {"protocol"},
           "ends the filter for an IP protocol");
  rows.add(VORN_BOTH(delete_ip_protocol_filter_all), {}, "ends all filters for IP protocols");
  rows.add(VORN_BOTH(add_l4_destination_port_filter), {"port"},
           "TCP and UDP packets to a port go to the CPU; through C deletes");
  rows.add(VORN_BOTH(delete_l4_destination_port_filter), {"port"},
           "ends the filter for a TCP and UDP port");
  rows.add(VORN_BOTH(delete_l4_destination_port_filter_all), {},
           "ends all filters for TCP and UDP ports");
}

}  // namespace entrypoints

#endif  // ENTRYPOINTS_FILTER_H_
