// SPDX-License-Identifier: Apache-2.0
//
// Values of the card as the shell reads and prints them.
#ifndef SHELL_CARD_TEXT_H_
#define SHELL_CARD_TEXT_H_

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "command.h"
#include "softcard/card.h"
#include "value.h"

namespace shell {

// Takes a word that names a physical port of the card.
softcard::PortIndex take_physical_port(const softcard::Card& card, Arguments& arguments);
// The physical ports of the words that are left, all ports when none is.
std::vector<softcard::PortIndex> take_physical_ports(const softcard::Card& card,
                                                     Arguments& arguments);

std::string port_text(softcard::PortIndex port);
Value port_value(softcard::PortIndex port);
// `1/1/0-3,1/1/7`, and in JSON a list of ports; - for none.
Value ports_value(const softcard::PortSet& ports);
// A port, `lag/2`, cpu, drop, none.
Value destination_value(const softcard::Card& card, softcard::Destination destination);

// A flow's match in the words that vorn_add_of_flow reads, its user-defined qualifier behind.
std::string flow_match_text(const softcard::FlowMatch& match);

Value mac_value(const softcard::MacAddress& mac);
Value address_value(softcard::Ipv4 ip);
Value address_value(const softcard::Ipv6Address& ip);

// Call visit(entry) for each entry of a table of layer 3 in an order that tells nothing of how it
// came there but what counts: interfaces by id; hosts and routes by address, and those of one
// address in the order in which they are preferred.
template <class Visit>
void for_each_in_order(const softcard::L3InterfaceTable& interfaces, Visit&& visit) {
  std::map<std::uint32_t, const softcard::L3Interface*> by_id;
  interfaces.for_each([&](const softcard::L3Interface& entry) { by_id[entry.id] = &entry; });
  for (const auto& [id, entry] : by_id) visit(*entry);
}
template <class Address, class Visit>
void for_each_in_order(const softcard::L3HostTable<Address>& hosts, Visit&& visit) {
  std::set<Address> addresses;
  hosts.for_each([&](const auto& host) { addresses.insert(host.ip); });
  for (const Address& ip : addresses) hosts.for_each_of(ip, visit);
}
template <class Address, class Visit>
void for_each_in_order(const softcard::L3RouteTable<Address>& routes, Visit&& visit) {
  std::set<std::pair<Address, unsigned>> subnets;
  routes.for_each([&](const auto& route) { subnets.emplace(route.prefix, route.length); });
  for (const auto& [prefix, length] : subnets) routes.for_each_of(prefix, length, visit);
}

template <class Number>
Value count_value(Number number) {
  return number_value(std::uint64_t{number});
}

}  // namespace shell

#endif  // SHELL_CARD_TEXT_H_
