// SPDX-License-Identifier: Apache-2.0
//
// Layer-3 interfaces, hosts and routes. Both families of addresses share one way.

#include "softcard/sdk/sdk.h"

#include "softcard/base/refusal.h"
#include "softcard/base/text.h"
#include "softcard/sdk/conversions.h"

namespace softcard {
namespace {

// Texts and tables of both families.
std::string text(Ipv4 ip) { return ipv4_text(ip); }
std::string text(const Ipv6Address& ip) { return ipv6_text(ip); }

const char* table_name(const L3HostTable<Ipv4>&) { return "ipv4-hosts"; }
const char* table_name(const L3HostTable<Ipv6Address>&) { return "ipv6-hosts"; }
const char* table_name(const L3RouteTable<Ipv4>&) { return "ipv4-routes"; }
const char* table_name(const L3RouteTable<Ipv6Address>&) { return "ipv6-routes"; }

// The subnets that no router sends a packet to: packets to them stay on their link or in a host.
struct Ipv4Subnet {
  Ipv4 prefix;
  unsigned length;
};
constexpr Ipv4Subnet kUnroutedIpv4[] = {
    {0, 32}, {0x7f000000, 8}, {0xa9fe0000, 16}, {0xe0000000, 4}, {0xffffffff, 32}};
struct Ipv6Subnet {
  Ipv6Address prefix;
  unsigned length;
};
constexpr Ipv6Subnet kUnroutedIpv6[] = {{{}, 128},
                                        {{{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}}, 128},
                                        {{{0xfe, 0x80}}, 10},
                                        {{{0xff}}, 8}};

// Whether packets to the first `length` bits of `ip` are ever routed.
template <class Address, class Subnets>
bool is_routed(const Address& ip, unsigned length, const Subnets& unrouted) {
  for (const auto& subnet : unrouted) {
    if (length >= subnet.length && masked(ip, subnet.length) == subnet.prefix) {
      return refuse(text(ip), ": no packet to such an address is routed");
    }
  }
  return true;
}
bool is_routed(Ipv4 ip, unsigned length = 32) { return is_routed(ip, length, kUnroutedIpv4); }
bool is_routed(const Ipv6Address& ip, unsigned length = 128) {
  return is_routed(ip, length, kUnroutedIpv6);
}

const L3Interface* required(Card& card, unsigned interface) {
  const L3Interface* const found = card.tables().l3.interfaces.get(interface);
  if (found == nullptr) refuse("L3 interface ", interface, " does not exist");
  return found;
}

bool is_individual(const MacAddress& mac) {
  return !mac.is_group() || refuse(mac, " is a group address");
}

// What a table of hosts or routes made of an entry whose values are good.
template <class Table>
bool added(const Table& table, L3Add result) {
  return succeeded(result) || refuse_full(table_name(table), table.capacity());
}

template <class Address>
bool no_host(const Card& card, const Address& ip, Destination destination) {
  return refuse("there is no host ", text(ip), " at ", text(card, destination));
}

template <class Address>
bool no_route(const Card& card, const Address& ip, unsigned length, Destination destination) {
  return refuse("there is no route ", text(masked(ip, length)), "/", length, " by ",
                text(card, destination));
}

// The way to a neighbour through a port or LAG and a router interface that exist.
bool next_hop_of(Card& card, const Mp& mp, bool trunk, const unsigned char* mac, unsigned interface,
                 NextHop& next_hop) {
  next_hop.mac = mac_of(mac);
  next_hop.interface_id = interface;
  return destination_of(card, mp, trunk, next_hop.destination) && is_individual(next_hop.mac) &&
         required(card, interface) != nullptr;
}

void write_next_hop(const NextHop& next_hop, unsigned char* mac, unsigned& interface) {
  write_mac(next_hop.mac, mac);
  interface = next_hop.interface_id;
}

template <class Address>
bool add_host(Card& card, L3HostTable<Address>& hosts, const Address& ip, const Mp& mp, bool trunk,
              const unsigned char* mac, unsigned interface) {
  NextHop next_hop;
  return is_routed(ip) && next_hop_of(card, mp, trunk, mac, interface, next_hop) &&
         added(hosts, hosts.add(ip, next_hop));
}

template <class Address>
bool get_host(Card& card, L3HostTable<Address>& hosts, const Address& ip, const Mp& mp, bool trunk,
              unsigned char* mac, unsigned& interface) {
  Destination destination;
  if (!destination_of(card, mp, trunk, destination)) return false;
  const L3Host<Address>* const host = hosts.find(ip, destination);
  if (host == nullptr) return no_host(card, ip, destination);
  write_next_hop(host->next_hop, mac, interface);
  return true;
}

template <class Address>
bool remove_host(Card& card, L3HostTable<Address>& hosts, const Address& ip, const Mp& mp,
                 bool trunk) {
  Destination destination;
  if (!destination_of(card, mp, trunk, destination)) return false;
  return hosts.remove(ip, destination) || no_host(card, ip, destination);
}

template <class Address>
bool add_route(Card& card, L3RouteTable<Address>& routes, const Address& ip, const Address& mask,
               const Mp& mp, bool trunk, const unsigned char* mac, unsigned interface,
               unsigned metric = 0) {
  unsigned length = 0;
  NextHop next_hop;
  return mask_length(mask, length) && is_routed(ip, length) &&
         next_hop_of(card, mp, trunk, mac, interface, next_hop) &&
         added(routes, routes.add(ip, length, next_hop, metric));
}

template <class Address>
std::optional<L3Route<Address>> find_route(Card& card, L3RouteTable<Address>& routes,
                                           const Address& ip, const Address& mask, const Mp& mp,
                                           bool trunk) {
  unsigned length = 0;
  Destination destination;
  if (!mask_length(mask, length) || !destination_of(card, mp, trunk, destination)) {
    return std::nullopt;
  }
  auto route = routes.find(ip, length, destination);
  if (!route) no_route(card, ip, length, destination);
  return route;
}

template <class Address>
bool remove_route(Card& card, L3RouteTable<Address>& routes, const Address& ip, const Address& mask,
                  const Mp& mp, bool trunk) {
  unsigned length = 0;
  Destination destination;
  if (!mask_length(mask, length) || !destination_of(card, mp, trunk, destination)) return false;
  return routes.remove(ip, length, destination) || no_route(card, ip, length, destination);
}

// Whether an interface may have this address and VLAN.
bool good_interface(const MacAddress& mac, unsigned vlan) {
  return in_range("VLAN", vlan, 1, kMaxVlan) && is_individual(mac);
}

// Why a good interface was not made: `id` is the one asked for, or the one that has the address.
bool no_interface(const L3InterfaceTable& interfaces, L3Add result, const MacAddress& mac,
                  unsigned vlan, std::uint32_t id) {
  if (result == L3Add::full) return refuse_full("l3-interfaces", interfaces.capacity());
  const L3Interface* const owner = interfaces.find(static_cast<std::uint16_t>(vlan), mac);
  return refuse("create_l3_interface: L3 interface ", owner == nullptr ? id : owner->id, " exists");
}

}  // namespace

bool SoftSdk::create_l3_interface(const unsigned char* mac, unsigned int vlan, unsigned int& id) {
  if (!good_interface(mac_of(mac), vlan)) return false;
  L3InterfaceTable& interfaces = tables_.l3.interfaces;
  std::uint32_t chosen = 0;
  const L3Add result = interfaces.create(mac_of(mac), static_cast<std::uint16_t>(vlan), chosen);
  if (!succeeded(result)) return no_interface(interfaces, result, mac_of(mac), vlan, chosen);
  id = chosen;
  return true;
}

bool SoftSdk::create_l3_interface_with_id(const unsigned char* mac, unsigned int vlan,
                                          unsigned int id, bool replace) {
  if (!good_interface(mac_of(mac), vlan)) return false;
  L3InterfaceTable& interfaces = tables_.l3.interfaces;
  const L3Add result =
      interfaces.create_with_id(mac_of(mac), static_cast<std::uint16_t>(vlan), id, replace);
  return succeeded(result) || no_interface(interfaces, result, mac_of(mac), vlan, id);
}

bool SoftSdk::get_l3_interface(unsigned int id, unsigned int& vlan, unsigned char* mac) {
  const L3Interface* const found = required(card_, id);
  if (found == nullptr) return false;
  vlan = found->vlan;
  write_mac(found->mac, mac);
  return true;
}

bool SoftSdk::delete_l3_interface(const unsigned char* mac, unsigned int vlan) {
  if (!in_range("VLAN", vlan, 1, kMaxVlan)) return false;
  const L3Interface* const found =
      tables_.l3.interfaces.find(static_cast<std::uint16_t>(vlan), mac_of(mac));
  if (found == nullptr) {
    return refuse("there is no L3 interface ", mac_of(mac), " in VLAN ", vlan);
  }
  return card_.delete_l3_interface(found->id);
}

bool SoftSdk::delete_l3_interface_by_id(unsigned int id) { return card_.delete_l3_interface(id); }

bool SoftSdk::delete_l3_interface_all() { return card_.delete_all_l3_interfaces(); }

// ---- Hosts --------------------------------------------------------------------------------------

bool SoftSdk::add_l3_host_ip4(Mp mp, bool trunk, unsigned int ip, const unsigned char* mac,
                              unsigned int interface) {
  return add_host(card_, tables_.l3.ipv4_hosts, ip, mp, trunk, mac, interface);
}

bool SoftSdk::add_l3_host_ip6(Mp mp, bool trunk, const unsigned char* ip6, const unsigned char* mac,
                              unsigned int interface) {
  return add_host(card_, tables_.l3.ipv6_hosts, ip6_of(ip6), mp, trunk, mac, interface);
}

bool SoftSdk::get_l3_host_ip4(unsigned int ip, Mp mp, unsigned char* mac, unsigned int& interface,
                              bool trunk) {
  return get_host(card_, tables_.l3.ipv4_hosts, ip, mp, trunk, mac, interface);
}

bool SoftSdk::get_l3_host_ip6(const unsigned char* ip6, Mp mp, unsigned char* mac,
                              unsigned int& interface, bool trunk) {
  return get_host(card_, tables_.l3.ipv6_hosts, ip6_of(ip6), mp, trunk, mac, interface);
}

bool SoftSdk::delete_l3_host_by_interface(unsigned int interface, bool ip6) {
  if (required(card_, interface) == nullptr) return false;
  if (ip6) {
    tables_.l3.ipv6_hosts.remove_by_interface(interface);
  } else {
    tables_.l3.ipv4_hosts.remove_by_interface(interface);
  }
  return true;
}

bool SoftSdk::delete_l3_host_by_network_ip4(unsigned int ip) {
  tables_.l3.ipv4_hosts.remove_network(ip);
  return true;
}

bool SoftSdk::delete_l3_host_by_network_ip6(const unsigned char* ip6) {
  tables_.l3.ipv6_hosts.remove_network(ip6_of(ip6));
  return true;
}

bool SoftSdk::delete_l3_host_by_addr_ip4(unsigned int ip, const Mp& mp, bool trunk) {
  return remove_host(card_, tables_.l3.ipv4_hosts, ip, mp, trunk);
}

bool SoftSdk::delete_l3_host_by_addr_ip6(const unsigned char* ip6, const Mp& mp, bool trunk) {
  return remove_host(card_, tables_.l3.ipv6_hosts, ip6_of(ip6), mp, trunk);
}

bool SoftSdk::clear_l3_host_table() {
  tables_.l3.ipv4_hosts.clear();
  tables_.l3.ipv6_hosts.clear();
  return true;
}

// ---- Routes -------------------------------------------------------------------------------------

bool SoftSdk::add_l3_route_ip4(const Mp& mp, bool trunk, unsigned int ip, unsigned int mask,
                               const unsigned char* mac, unsigned int interface,
                               unsigned int metric) {
  return add_route(card_, tables_.l3.ipv4_routes, ip, mask, mp, trunk, mac, interface, metric);
}

bool SoftSdk::add_l3_route_ip6(const Mp& mp, bool trunk, const unsigned char* ip6,
                               const unsigned char* mask6, const unsigned char* mac,
                               unsigned int interface) {
  return add_route(card_, tables_.l3.ipv6_routes, ip6_of(ip6), ip6_of(mask6), mp, trunk, mac,
                   interface);
}

bool SoftSdk::get_l3_route_by_subnet_ip4(unsigned int ip, unsigned int mask, const Mp& mp,
                                         bool trunk, unsigned char (&mac)[6],
                                         unsigned int& interface, unsigned int& metric) {
  const auto route = find_route(card_, tables_.l3.ipv4_routes, ip, mask, mp, trunk);
  if (!route) return false;
  write_next_hop(route->next_hop, mac, interface);
  metric = route->metric;
  return true;
}

bool SoftSdk::get_l3_route_by_subnet_ip6(const unsigned char* ip6, const unsigned char* mask6,
                                         const Mp& mp, bool trunk, unsigned int& interface,
                                         unsigned char* mac) {
  const auto route =
      find_route(card_, tables_.l3.ipv6_routes, ip6_of(ip6), ip6_of(mask6), mp, trunk);
  if (!route) return false;
  write_next_hop(route->next_hop, mac, interface);
  return true;
}

bool SoftSdk::delete_l3_route_by_interface(unsigned int interface, bool ip6) {
  if (required(card_, interface) == nullptr) return false;
  if (ip6) {
    tables_.l3.ipv6_routes.remove_by_interface(interface);
  } else {
    tables_.l3.ipv4_routes.remove_by_interface(interface);
  }
  return true;
}

bool SoftSdk::delete_l3_route_by_subnet_ip4(unsigned int ip, unsigned int mask, const Mp& mp,
                                            bool trunk) {
  return remove_route(card_, tables_.l3.ipv4_routes, ip, mask, mp, trunk);
}

bool SoftSdk::delete_l3_route_by_subnet_ip6(const unsigned char* ip6, const unsigned char* mask6,
                                            const Mp& mp, bool trunk) {
  return remove_route(card_, tables_.l3.ipv6_routes, ip6_of(ip6), ip6_of(mask6), mp, trunk);
}

bool SoftSdk::clear_l3_route_table() {
  tables_.l3.ipv4_routes.clear();
  tables_.l3.ipv6_routes.clear();
  return true;
}

}  // namespace softcard
