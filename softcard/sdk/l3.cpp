// SPDX-License-Identifier: Apache-2.0
//
// Layer-3 interfaces, hosts and routes. Both families of addresses share one way.

#include "softcard/sdk/sdk.h"

#include "softcard/base/address_scope.h"
#include "softcard/base/refusal.h"
#include "softcard/base/text.h"
#include "softcard/sdk/conversions.h"

namespace softcard {
namespace {

// Both families of addresses.
std::string text(Ipv4 ip) { return ipv4_text(ip); }
std::string text(const Ipv6Address& ip) { return ipv6_text(ip); }

const char* table_name(const L3HostTable<Ipv4>&) { return "ipv4-hosts"; }
const char* table_name(const L3HostTable<Ipv6Address>&) { return "ipv6-hosts"; }
const char* table_name(const L3RouteTable<Ipv4>&) { return "ipv4-routes"; }
const char* table_name(const L3RouteTable<Ipv6Address>&) { return "ipv6-routes"; }

// Whether packets to the first `length` bits of `ip` are ever routed.
template <class Address>
bool is_routed(const Address& ip, unsigned length = 8 * sizeof(Address)) {
  const unsigned unrouted = link_subnet(ip) + host_subnet(ip);
  return unrouted == 0 || length < unrouted ||
         refuse(text(ip), ": no packet to such an address is routed");
}

const L3Interface* required(Card& card, unsigned interface) {
  const L3Interface* const found = card.tables().l3.interfaces.get(interface);
  if (found == nullptr) refuse("L3 interface ", interface, " does not exist");
  return found;
}

bool is_individual(const MacAddress& mac) {
  return !mac.is_group() || refuse(mac, " is a group address");
}

// Whether a table of hosts or routes took an entry whose values are good.
template <class Table>
bool added(const Table& table, L3Add result) {
  return succeeded(result) || refuse_full(table_name(table), table.capacity());
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
bool add_host(Card& card, const Address& ip, const Mp& mp, bool trunk, const unsigned char* mac,
              unsigned interface) {
  L3HostTable<Address>& hosts = card.tables().l3.hosts<Address>();
  NextHop next_hop;
  return is_routed(ip) && next_hop_of(card, mp, trunk, mac, interface, next_hop) &&
         added(hosts, hosts.add(ip, next_hop));
}

// Whether the host of `ip` at a port or LAG is there, for which `step(host table, destination)` is
// true.
template <class Address, class Step>
bool with_host(Card& card, const Address& ip, const Mp& mp, bool trunk, const Step& step) {
  Destination at;
  return destination_of(card, mp, trunk, at) &&
         (step(card.tables().l3.hosts<Address>(), at) ||
          refuse("there is no host ", text(ip), " at ", text(card, at)));
}

template <class Address>
bool get_host(Card& card, const Address& ip, const Mp& mp, bool trunk, unsigned char* mac,
              unsigned& interface) {
  return with_host(card, ip, mp, trunk, [&](const auto& hosts, Destination at) {
    const L3Host<Address>* const host = hosts.find(ip, at);
    if (host != nullptr) write_next_hop(host->next_hop, mac, interface);
    return host != nullptr;
  });
}

template <class Address>
bool remove_host(Card& card, const Address& ip, const Mp& mp, bool trunk) {
  return with_host(card, ip, mp, trunk,
                   [&](auto& hosts, Destination at) { return hosts.remove(ip, at); });
}

template <class Address>
bool add_route(Card& card, const Address& ip, const Address& mask, const Mp& mp, bool trunk,
               const unsigned char* mac, unsigned interface, unsigned metric = 0) {
  L3RouteTable<Address>& routes = card.tables().l3.routes<Address>();
  unsigned length = 0;
  NextHop next_hop;
  return mask_length(mask, length) && is_routed(ip, length) &&
         next_hop_of(card, mp, trunk, mac, interface, next_hop) &&
         added(routes, routes.add(ip, length, next_hop, metric));
}

// As with_host(): `step(route table, mask length, destination)`.
template <class Address, class Step>
bool with_route(Card& card, const Address& ip, const Address& mask, const Mp& mp, bool trunk,
                const Step& step) {
  unsigned length = 0;
  Destination by;
  return mask_length(mask, length) && destination_of(card, mp, trunk, by) &&
         (step(card.tables().l3.routes<Address>(), length, by) ||
          refuse("there is no route ", text(masked(ip, length)), "/", length, " by ",
                 text(card, by)));
}

template <class Address>
bool get_route(Card& card, const Address& ip, const Address& mask, const Mp& mp, bool trunk,
               unsigned char* mac, unsigned& interface, unsigned& metric) {
  return with_route(card, ip, mask, mp, trunk,
                    [&](const auto& routes, unsigned length, Destination by) {
                      const auto route = routes.find(ip, length, by);
                      if (!route) return false;
                      write_next_hop(route->next_hop, mac, interface);
                      metric = route->metric;
                      return true;
                    });
}

template <class Address>
bool remove_route(Card& card, const Address& ip, const Address& mask, const Mp& mp, bool trunk) {
  return with_route(card, ip, mask, mp, trunk, [&](auto& routes, unsigned length, Destination by) {
    return routes.remove(ip, length, by);
  });
}

// Removes what leads through an interface from the table of one family.
template <class Ipv4Table, class Ipv6Table>
bool remove_behind(Card& card, unsigned interface, bool ip6, Ipv4Table& ipv4, Ipv6Table& ipv6) {
  if (required(card, interface) == nullptr) return false;
  if (ip6) {
    ipv6.remove_by_interface(interface);
  } else {
    ipv4.remove_by_interface(interface);
  }
  return true;
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
  return add_host(card_, ip, mp, trunk, mac, interface);
}

bool SoftSdk::add_l3_host_ip6(Mp mp, bool trunk, const unsigned char* ip6, const unsigned char* mac,
                              unsigned int interface) {
  return add_host(card_, ip6_of(ip6), mp, trunk, mac, interface);
}

bool SoftSdk::get_l3_host_ip4(unsigned int ip, Mp mp, unsigned char* mac, unsigned int& interface,
                              bool trunk) {
  return get_host(card_, ip, mp, trunk, mac, interface);
}

bool SoftSdk::get_l3_host_ip6(const unsigned char* ip6, Mp mp, unsigned char* mac,
                              unsigned int& interface, bool trunk) {
  return get_host(card_, ip6_of(ip6), mp, trunk, mac, interface);
}

bool SoftSdk::delete_l3_host_by_interface(unsigned int interface, bool ip6) {
  return remove_behind(card_, interface, ip6, tables_.l3.ipv4_hosts, tables_.l3.ipv6_hosts);
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
  return remove_host(card_, ip, mp, trunk);
}

bool SoftSdk::delete_l3_host_by_addr_ip6(const unsigned char* ip6, const Mp& mp, bool trunk) {
  return remove_host(card_, ip6_of(ip6), mp, trunk);
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
  return add_route(card_, ip, mask, mp, trunk, mac, interface, metric);
}

bool SoftSdk::add_l3_route_ip6(const Mp& mp, bool trunk, const unsigned char* ip6,
                               const unsigned char* mask6, const unsigned char* mac,
                               unsigned int interface) {
  return add_route(card_, ip6_of(ip6), ip6_of(mask6), mp, trunk, mac, interface);
}

bool SoftSdk::get_l3_route_by_subnet_ip4(unsigned int ip, unsigned int mask, const Mp& mp,
                                         bool trunk, unsigned char (&mac)[6],
                                         unsigned int& interface, unsigned int& metric) {
  return get_route(card_, ip, mask, mp, trunk, mac, interface, metric);
}

bool SoftSdk::get_l3_route_by_subnet_ip6(const unsigned char* ip6, const unsigned char* mask6,
                                         const Mp& mp, bool trunk, unsigned int& interface,
                                         unsigned char* mac) {
  unsigned metric = 0;
  return get_route(card_, ip6_of(ip6), ip6_of(mask6), mp, trunk, mac, interface, metric);
}

bool SoftSdk::delete_l3_route_by_interface(unsigned int interface, bool ip6) {
  return remove_behind(card_, interface, ip6, tables_.l3.ipv4_routes, tables_.l3.ipv6_routes);
}

bool SoftSdk::delete_l3_route_by_subnet_ip4(unsigned int ip, unsigned int mask, const Mp& mp,
                                            bool trunk) {
  return remove_route(card_, ip, mask, mp, trunk);
}

bool SoftSdk::delete_l3_route_by_subnet_ip6(const unsigned char* ip6, const unsigned char* mask6,
                                            const Mp& mp, bool trunk) {
  return remove_route(card_, ip6_of(ip6), ip6_of(mask6), mp, trunk);
}

bool SoftSdk::clear_l3_route_table() {
  tables_.l3.ipv4_routes.clear();
  tables_.l3.ipv6_routes.clear();
  return true;
}

}  // namespace softcard
