// SPDX-License-Identifier: Apache-2.0
//
// The entry points of the family `l3`, a row each; row.h says what stands in a row.
#ifndef ENTRYPOINTS_L3_H_
#define ENTRYPOINTS_L3_H_

#include "entrypoints/row.h"
#include "vornlcapi/api/l3.h"
#include "vornlcapi/capi/l3.h"

namespace entrypoints {

template <class Rows>
void add_l3(Rows& rows) {
  rows.add(VORN_BOTH(create_l3_interface), {"mac", "vlan", "out id"}, "makes a router interface");
  rows.add(VORN_BOTH(create_l3_interface_with_id), {"mac", "vlan", "id", "replace"},
           "makes one under an id of its own");
  rows.add(VORN_BOTH(get_l3_interface), {"id", "out vlan", "out mac"},
           "VLAN and address of a router interface");
  rows.add(VORN_BOTH(delete_l3_interface), {"mac", "vlan"}, "deletes a router interface");
  rows.add(VORN_BOTH(delete_l3_interface_by_id), {"id"}, "deletes a router interface");
  rows.add(VORN_BOTH(delete_l3_interface_all), {}, "deletes all router interfaces");
  rows.add(VORN_BOTH(add_l3_host_ip4), {"port", "ip", "mac", "interface"}, "adds a neighbour");
  rows.add(VORN_BOTH(add_l3_host_ip6), {"port", "ip6", "mac", "interface"}, "adds a neighbour");
  rows.add(VORN_API(get_l3_host_ip4), {"ip", "port", "out mac", "out interface"},
           "address and interface of a neighbour");
  rows.add(VORN_API(get_l3_host_ip6), {"ip6", "port", "out mac", "out interface"},
           "address and interface of a neighbour");
  rows.add(VORN_BOTH(delete_l3_host_by_interface), {"interface", "ip6"},
           "deletes the neighbours of an interface: on IPv6, off IPv4");
  rows.add(VORN_BOTH(delete_l3_host_by_network_ip4), {"ip"}, "deletes the neighbours of a /24");
  rows.add(VORN_BOTH(delete_l3_host_by_network_ip6), {"ip6"}, "deletes the neighbours of a /64");
  rows.add(VORN_BOTH(delete_l3_host_by_addr_ip4), {"ip", "port"}, "deletes a neighbour");
  rows.add(VORN_BOTH(delete_l3_host_by_addr_ip6), {"ip6", "port"}, "deletes a neighbour");
  rows.add(VORN_BOTH(clear_l3_host_table), {}, "deletes all neighbours");
  rows.add(VORN_BOTH(add_l3_route_ip4), {"port", "ip", "mask", "mac", "interface", "metric"},
           "adds a route; mac is the next hop's");
  rows.add(VORN_BOTH(add_l3_route_ip6), {"port", "ip6", "mask6", "mac", "interface"},
           "adds a route; mac is the next hop's");
  rows.add(VORN_BOTH(get_l3_route_by_subnet_ip4),
           {"ip", "mask", "port", "out mac", "out interface", "out metric"}, "next hop of a route");
  rows.add(VORN_BOTH(get_l3_route_by_subnet_ip6),
           {"ip6", "mask6", "port", "out interface", "out mac"}, "next hop of a route");
  rows.add(VORN_BOTH(delete_l3_route_by_interface), {"interface", "ip6"},
           "deletes the routes of an interface: on IPv6, off IPv4");
  rows.add(VORN_BOTH(delete_l3_route_by_subnet_ip4), {"ip", "mask", "port"}, "deletes a route");
  rows.add(VORN_BOTH(delete_l3_route_by_subnet_ip6), {"ip6", "mask6", "port"}, "deletes a route");
  rows.add(VORN_BOTH(clear_l3_route_table), {}, "deletes all routes");
}

}  // namespace entrypoints

#endif  // ENTRYPOINTS_L3_H_
