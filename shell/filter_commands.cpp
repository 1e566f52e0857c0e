// SPDX-License-Identifier: Apache-2.0
#include "entry_point.h"
#include "vornlcapi/api/filter.h"
#include "vornlcapi/capi/filter.h"

namespace shell {

void add_filter_commands(CommandTable& table) {
  Family family(table, "filter");
  family.add(VORN_BOTH(add_arp_filter), {"ip", "mask"},
             "ARP packets with that target go to the CPU");
  family.add(VORN_BOTH(delete_arp_filter), {"ip", "mask"}, "ends an ARP filter");
  family.add(VORN_BOTH(delete_arp_filter_all), {}, "ends all ARP filters");
  family.add(VORN_BOTH(add_ip_protocol_filter), {"protocol"},
             "packets of an IP protocol go to the CPU");
  family.add(VORN_BOTH(delete_ip_protocol_filter), {"protocol"},
             "ends the filter for an IP protocol");
  family.add(VORN_BOTH(delete_ip_protocol_filter_all), {}, "ends all filters for IP protocols");
  family.add(VORN_BOTH(add_l4_destination_port_filter), {"port"},
             "TCP and UDP packets to a port go to the CPU; through C deletes");
  family.add(VORN_BOTH(delete_l4_destination_port_filter), {"port"},
             "ends the filter for a TCP and UDP port");
  family.add(VORN_BOTH(delete_l4_destination_port_filter_all), {},
             "ends all filters for TCP and UDP ports");
}

}  // namespace shell
