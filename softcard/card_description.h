// SPDX-License-Identifier: Apache-2.0
//
// What a card is made of: its ports and the sizes of its tables. The default is a card of 48 ports
// of 1000 Mbit/s and 4 uplinks of 10000; another one comes from a small text file:
//
//   # Eight copper ports, two uplinks, a small FDB.
//   mac 02:00:5e:00:10:00          # base address; port i has base + 1 + i
//   ports 8 speed 1000             # each such line appends ports
//   ports 2 speed 10000
//   port 3 mac 02:00:5e:00:20:01   # an address of its own for the port 1/1/3
//   capacity fdb 4096              # see CardDescription::capacity for the names
//   mstp-instance 2 vlans 20,30-39 # these VLANs follow spanning-tree instance 2
//   mac-moves 5                    # move events a second that one MAC address may cause
//   hash-seed 1                    # for measurements that repeat; else drawn anew for each card
//
// One statement a line; # starts a comment. A line that is malformed makes the whole file refused.
#ifndef SOFTCARD_CARD_DESCRIPTION_H_
#define SOFTCARD_CARD_DESCRIPTION_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <istream>
#include <optional>
#include <string>
#include <vector>

#include "softcard/base/limits.h"
#include "softcard/base/net_types.h"

namespace softcard {

struct PortDescription {
  unsigned speed_mbps;  // the fastest the port can do: 10, 100, 1000, 2500, 10000, 25000, 40000
                        // or 100000
  MacAddress mac;
};

// The most entries of each table; a full table refuses and changes nothing. The names are those of
// the statement `capacity`, with - for _.
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

struct CardDescription {
  // The default card.
  CardDescription();

  MacAddress base_mac;  // the card's own address
  std::vector<PortDescription> ports;
  CardCapacity capacity;
  std::array<std::uint8_t, kVlanCount> mstp_instance{};  // by VLAN; 0 where the file says nothing
  unsigned mac_moves_per_second = 1;                     // EventQueue says of what; 0: no limit
  std::optional<std::uint64_t> hash_seed;                // of KeyedHash; drawn where none is given
};

// Reads a description. False leaves `out` as it was and puts "name:line: what is wrong" into
// `error`; `name` is what messages call the input.
bool read_card_description(std::istream& in, const std::string& name, CardDescription& out,
                           std::string& error);

// The same from a file; a file that cannot be opened is an error too.
bool load_card_description(const std::string& path, CardDescription& out, std::string& error);

}  // namespace softcard

#endif  // SOFTCARD_CARD_DESCRIPTION_H_
