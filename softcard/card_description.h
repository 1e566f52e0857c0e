// SPDX-License-Identifier: Apache-2.0
//
// The description of a card: its ports and the sizes of its tables. The default is a card of 48
// ports of 1000 Mbit/s and 4 uplinks of 10000; another one comes from a small text file:
//
//   # Eight copper ports, two uplinks, a small FDB.
//   mac 02:00:5e:00:10:00          # base address; port i has base + 1 + i
//   ports 8 speed 1000             # each such line appends ports
//   ports 2 speed 10000
//   port 3 mac 02:00:5e:00:20:01   # an address of its own for the port 1/1/3
//   capacity fdb 4096              # see CardCapacity for the names
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
#include "softcard/tables/capacity.h"
#include "softcard/tables/port_table.h"

namespace softcard {

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
