// SPDX-License-Identifier: Apache-2.0
//
// Values of the card as the shell reads and prints them.
#ifndef SHELL_CARD_TEXT_H_
#define SHELL_CARD_TEXT_H_

#include <string>
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

Value mac_value(const softcard::MacAddress& mac);
Value address_value(softcard::Ipv4 ip);
Value address_value(const softcard::Ipv6Address& ip);

template <class Number>
Value count_value(Number number) {
  return number_value(std::uint64_t{number});
}

}  // namespace shell

#endif  // SHELL_CARD_TEXT_H_
