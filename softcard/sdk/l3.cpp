// SPDX-License-Identifier: Apache-2.0
//
// Layer-3 interfaces, hosts and routes. Both families of addresses share one way.

#include "softcard/sdk/sdk.h"

#include "softcard/base/refusal.h"
#include "softcard/sdk/conversions.h"

namespace softcard {
namespace {

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
      return refuse("no packet to such an address is routed");
    }
  }
  return true;
}
bool is_routed(Ipv4 ip, unsigned length = 32) { return is_routed(ip, length, kUnroutedIpv4); }
bool is_routed(const Ipv6Address& ip, unsigned length = 128) {
  return is_routed(ip, length, kUnroutedIpv6);
}

// The way to a neighbour through a port or LAG and a router interface that exist.
bool next_hop_of(Card& card, const Mp& mp, bool trunk, const unsigned char* mac, unsigned interface,
                 NextHop& next_hop) {
  next_hop.mac = mac_of(mac);
  next_hop.interface_id = interface;
  return destination_of(card, mp, trunk, next_hop.destination) && !next_hop.mac.is_group() &&
         card.tables().l3.interfaces.get(interface) != nullptr;
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
         succeeded(hosts.add(ip, next_hop));
}

template <class Address>
bool get_host(Card& card, L3HostTable<Address>& hosts, const Address& ip, const Mp& mp, bool trunk,
              unsigned char* mac, unsigned& interface) {
  Destination destination;
  if (!destination_of(card, mp, trunk, destination)) return false;
  const L3Host<Address>* const host = hosts.find(ip, destination);
  if (host == nullptr) return false;
  write_next_hop(host->next_hop, mac, interface);
  return true;
}

// `length` is below 0 for a mask with holes: no route has one.
template <class Address>
std::optional<L3Route<Address>> find_route(Card& card, L3RouteTable<Address>& routes,
                                           const Address& ip, int length, const Mp& mp,
                                           bool trunk) {
  Destination destination;
  if (length < 0 || !destination_of(card, mp, trunk, destination)) return std::nullopt;
  return routes.find(ip, static_cast<unsigned>(length), destination);
}

template <class Address>
bool remove_route(Card& card, L3RouteTable<Address>& routes, const Address& ip, int length,
                  const Mp& mp, bool trunk) {
  Destination destination;
  return length >= 0 && destination_of(card, mp, trunk, destination) &&
         routes.remove(ip, static_cast<unsigned>(length), destination);
}

}  // namespace

bool SoftSdk::create_l3_interface(const unsigned char* mac, unsigned int vlan, unsigned int& id) {
  std::uint32_t chosen = 0;
  if (!valid_vlan(vlan) || mac_of(mac).is_group() ||
      tables_.l3.interfaces.create(mac_of(mac), static_cast<std::uint16_t>(vlan), chosen) !=
          L3Add::added) {
    return false;
  }
  id = chosen;
  return true;
}

bool SoftSdk::create_l3_interface_with_id(const unsigned char* mac, unsigned int vlan,
                                          unsigned int id, bool replace) {
  return valid_vlan(vlan) && !mac_of(mac).is_group() &&
         succeeded(tables_.l3.interfaces.create_with_id(
             mac_of(mac), static_cast<std::uint16_t>(vlan), id, replace));
}

bool SoftSdk::get_l3_interface(unsigned int id, unsigned int& vlan, unsigned char* mac) {
  const L3Interface* const found = tables_.l3.interfaces.get(id);
  if (found == nullptr) return false;
  vlan = found->vlan;
  write_mac(found->mac, mac);
  return true;
}

bool SoftSdk::delete_l3_interface(const unsigned char* mac, unsigned int vlan) {
  if (!valid_vlan(vlan)) return false;
  const L3Interface* const found =
      tables_.l3.interfaces.find(static_cast<std::uint16_t>(vlan), mac_of(mac));
  return found != nullptr && card_.delete_l3_interface(found->id);
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
  if (tables_.l3.interfaces.get(interface) == nullptr) return false;
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
  Destination destination;
  return destination_of(card_, mp, trunk, destination) &&
         tables_.l3.ipv4_hosts.remove(ip, destination);
}

bool SoftSdk::delete_l3_host_by_addr_ip6(const unsigned char* ip6, const Mp& mp, bool trunk) {
  Destination destination;
  return destination_of(card_, mp, trunk, destination) &&
         tables_.l3.ipv6_hosts.remove(ip6_of(ip6), destination);
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
  const int length = mask_length(mask);
  NextHop next_hop;
  return length >= 0 && is_routed(ip, static_cast<unsigned>(length)) &&
         next_hop_of(card_, mp, trunk, mac, interface, next_hop) &&
         succeeded(tables_.l3.ipv4_routes.add(ip, static_cast<unsigned>(length), next_hop, metric));
}

bool SoftSdk::add_l3_route_ip6(const Mp& mp, bool trunk, const unsigned char* ip6,
                               const unsigned char* mask6, const unsigned char* mac,
                               unsigned int interface) {
  const int length = mask_length(ip6_of(mask6));
  NextHop next_hop;
  return length >= 0 && is_routed(ip6_of(ip6), static_cast<unsigned>(length)) &&
         next_hop_of(card_, mp, trunk, mac, interface, next_hop) &&
         succeeded(
             tables_.l3.ipv6_routes.add(ip6_of(ip6), static_cast<unsigned>(length), next_hop));
}

bool SoftSdk::get_l3_route_by_subnet_ip4(unsigned int ip, unsigned int mask, const Mp& mp,
                                         bool trunk, unsigned char (&mac)[6],
                                         unsigned int& interface, unsigned int& metric) {
  const auto route = find_route(card_, tables_.l3.ipv4_routes, ip, mask_length(mask), mp, trunk);
  if (!route) return false;
  write_next_hop(route->next_hop, mac, interface);
  metric = route->metric;
  return true;
}

bool SoftSdk::get_l3_route_by_subnet_ip6(const unsigned char* ip6, const unsigned char* mask6,
                                         const Mp& mp, bool trunk, unsigned int& interface,
                                         unsigned char* mac) {
  const auto route =
      find_route(card_, tables_.l3.ipv6_routes, ip6_of(ip6), mask_length(ip6_of(mask6)), mp, trunk);
  if (!route) return false;
  write_next_hop(route->next_hop, mac, interface);
  return true;
}

bool SoftSdk::delete_l3_route_by_interface(unsigned int interface, bool ip6) {
  if (tables_.l3.interfaces.get(interface) == nullptr) return false;
  if (ip6) {
    tables_.l3.ipv6_routes.remove_by_interface(interface);
  } else {
    tables_.l3.ipv4_routes.remove_by_interface(interface);
  }
  return true;
}

bool SoftSdk::delete_l3_route_by_subnet_ip4(unsigned int ip, unsigned int mask, const Mp& mp,
                                            bool trunk) {
  return remove_route(card_, tables_.l3.ipv4_routes, ip, mask_length(mask), mp, trunk);
}

bool SoftSdk::delete_l3_route_by_subnet_ip6(const unsigned char* ip6, const unsigned char* mask6,
                                            const Mp& mp, bool trunk) {
  return remove_route(card_, tables_.l3.ipv6_routes, ip6_of(ip6), mask_length(ip6_of(mask6)), mp,
                      trunk);
}

bool SoftSdk::clear_l3_route_table() {
  tables_.l3.ipv4_routes.clear();
  tables_.l3.ipv6_routes.clear();
  return true;
}

}  // namespace softcard
