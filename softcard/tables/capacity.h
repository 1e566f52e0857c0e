// SPDX-License-Identifier: Apache-2.0
//
// How many entries each table takes.
#ifndef SOFTCARD_TABLES_CAPACITY_H_
#define SOFTCARD_TABLES_CAPACITY_H_

#include <cstddef>

#include "softcard/base/limits.h"

namespace softcard {

// The most entries of each table; a full table refuses and changes nothing. The names are those of
// the statement `capacity` in a card description, with - for _.
struct CardCapacity {
  std::size_t vlans = kMaxVlan;
  std::size_t lags = kMaxLagNumber;
  std::size_t fdb = 131072;  // MAC addresses
  std::size_t l3_interfaces = 4096;
  std::size_t ipv4_hosts = 131072;
  std::size_t ipv6_hosts = 65536;
  std::size_t ipv4_routes = 131072;
  std::size_t ipv6_routes = 65536;
  std::size_t flows = 131072;
  std::size_t mac_vlans = 1024;
  std::size_t subnet_vlans = 1024;  // IPv4 and IPv6 each
  std::size_t protocol_vlans = 16;  // per port
  std::size_t arp_filters = 64;
};

}  // namespace softcard

#endif  // SOFTCARD_TABLES_CAPACITY_H_
