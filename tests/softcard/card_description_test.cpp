// SPDX-License-Identifier: Apache-2.0

#include "softcard/card_description.h"

#include <gtest/gtest.h>

#include <sstream>

#include "softcard/base/address_plan.h"

namespace softcard {
namespace {

TEST(CardDescription, DefaultIs48PortsAnd4Uplinks) {
  const CardDescription card;
  ASSERT_EQ(card.ports.size(), 52u);
  EXPECT_EQ(card.ports[47].speed_mbps, 1000u);
  EXPECT_EQ(card.ports[48].speed_mbps, 10000u);
  EXPECT_EQ(card.ports[51].mac.to_number(), card.base_mac.to_number() + 52);
}

TEST(CardDescription, ReadsEveryStatement) {
  std::istringstream in(
      "# a small card\n"
      "mac 02:00:5e:00:53:00\r\n"
      "ports 3 speed 100   # copper\n"
      "\n"
      "ports 1 speed 40000\n"
      "port 1 mac 02:00:5e:00:53:aa\n"
      "capacity fdb 64\n"
      "capacity ipv6-routes 5\n"
      "mstp-instance 7 vlans 10,20-22\n"
      "mac-moves 0\n"
      "hash-seed 0xfedcba9876543210\n");
  CardDescription card;
  std::string error;
  ASSERT_TRUE(read_card_description(in, "small", card, error)) << error;
  ASSERT_EQ(card.ports.size(), 4u);
  EXPECT_EQ(card.ports[3].speed_mbps, 40000u);
  EXPECT_EQ(card.ports[0].mac.to_number(), 0x02005e005301u);
  EXPECT_EQ(card.ports[1].mac.to_number(), 0x02005e0053aau);
  EXPECT_EQ(card.ports[3].mac.to_number(), 0x02005e005304u);
  EXPECT_EQ(card.capacity.fdb, 64u);
  EXPECT_EQ(card.capacity.ipv6_routes, 5u);
  EXPECT_EQ(card.capacity.vlans, 4094u);
  for (const unsigned vlan : {10u, 20u, 21u, 22u}) EXPECT_EQ(card.mstp_instance[vlan], 7) << vlan;
  for (const unsigned vlan : {1u, 11u, 19u, 23u}) EXPECT_EQ(card.mstp_instance[vlan], 0) << vlan;
  EXPECT_EQ(card.mac_moves_per_second, 0u);
  EXPECT_EQ(card.hash_seed, 0xfedcba9876543210u);
  EXPECT_FALSE(CardDescription().hash_seed.has_value()) << "drawn";
}

TEST(CardDescription, NamesThePlaceOfAnErrorAndChangesNothing) {
  struct Row {
    const char* text;
    const char* error;
  };
  const Row rows[] = {
      {"colour red", "file:1: unknown statement 'colour'"},
      {"ports 4 speed 1000\nports", "file:2: usage: ports <count> speed <Mbit/s>"},
      {"ports 0 speed 1000", "file:1: '0' is no number of ports (1 to 256)"},
      {"ports -1 speed 1000", "file:1: '-1' is no number of ports (1 to 256)"},
      {"ports 4 speed 1001",
       "file:1: '1001' is no speed (10, 100, 1000, 2500, 10000, 25000, 40000 or 100000)"},
      {"ports 200 speed 1000\n\nports 57 speed 1000", "file:3: a card has at most 256 ports"},
      {"ports 2 speed 10\nport 2 mac 02:00:5e:00:53:01",
       "file:2: '2' is none of the 2 ports named so far"},
      {"mac 02:00:5e:00:53", "file:1: '02:00:5e:00:53' is no address such as 02:00:5e:00:10:01"},
      {"mac 02-00:5e:00:53:00",
       "file:1: '02-00:5e:00:53:00' is no address such as 02:00:5e:00:10:01"},
      {"mac 01:00:5e:00:53:00", "file:1: '01:00:5e:00:53:00' is no station's address"},
      {"capacity fdb 0", "file:1: '0' is no capacity for fdb (1 to 16777216)"},
      {"capacity fdb 12x", "file:1: '12x' is no capacity for fdb (1 to 16777216)"},
      {"capacity lags 129", "file:1: '129' is no capacity for lags (1 to 128)"},
      {"capacity frogs 3", "file:1: unknown table 'frogs'"},
      {"mstp-instance 64 vlans 1", "file:1: '64' is no instance (0 to 63)"},
      {"mstp-instance 1 vlans 9-8", "file:1: '9-8' is no VLAN or range of VLANs (1 to 4094)"},
      {"mstp-instance 1 vlans 4095", "file:1: '4095' is no VLAN or range of VLANs (1 to 4094)"},
      {"mac-moves", "file:1: usage: mac-moves <events a second>, 0 to 1000000"},
      {"hash-seed", "file:1: usage: hash-seed <number below 2^64>"},
      {"hash-seed 18446744073709551616", "file:1: usage: hash-seed <number below 2^64>"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    std::istringstream in(row.text);
    CardDescription card;
    card.ports.resize(7);
    std::string error;
    EXPECT_FALSE(read_card_description(in, "file", card, error));
    EXPECT_EQ(error, row.error);
    EXPECT_EQ(card.ports.size(), 7u);
  }
  CardDescription card;
  std::string error;
  EXPECT_FALSE(load_card_description("no/such/file", card, error));
  EXPECT_EQ(error, "no/such/file: cannot be opened");
}

// ---- Addresses ----------------------------------------------------------------------------------

TEST(AddressPlan, TextGoesBothWays) {
  const std::pair<Usp, const char*> rows[] = {
      {Usp(1, 1, 0), "1/1/0"},        {Usp(1, 1, 51), "1/1/51"},
      {Usp(1, 2, 1), "lag/1"},        {Usp(1, 2, 128), "lag/128"},
      {Usp(1, 3, 4094), "vlan/4094"}, {Usp(1, 2, 0), "1/2/0"},
      {Usp(1, 3, 4095), "1/3/4095"},  {Usp(7, 0, 4294967295u), "7/0/4294967295"},
  };
  for (const auto& [usp, text] : rows) {
    EXPECT_EQ(AddressPlan::text(usp), text);
    Usp read(0, 0, 0);
    std::string error;
    EXPECT_TRUE(parse_usp(text, read, error)) << error;
    EXPECT_TRUE(read == usp) << text;
  }
}

TEST(AddressPlan, RefusesOtherTextWithTheReason) {
  const std::pair<const char*, const char*> rows[] = {
      {"lag/0", "'lag/0': lag/ wants a number from 1 to 128"},
      {"lag/129", "'lag/129': lag/ wants a number from 1 to 128"},
      {"vlan/4095", "'vlan/4095': vlan/ wants a number from 1 to 4094"},
      {"vlan/", "'vlan/': vlan/ wants a number from 1 to 4094"},
      {"1/1", "'1/1' is no port: write unit/slot/port such as 1/1/3, lag/2 or vlan/10"},
      {"1/1/3/", "'1/1/3/' is no port: write unit/slot/port such as 1/1/3, lag/2 or vlan/10"},
      {"1/1/ 3", "'1/1/ 3' is no port: write unit/slot/port such as 1/1/3, lag/2 or vlan/10"},
      {"", "'' is no port: write unit/slot/port such as 1/1/3, lag/2 or vlan/10"},
  };
  for (const auto& [text, message] : rows) {
    Usp usp(5, 6, 7);
    std::string error;
    EXPECT_FALSE(parse_usp(text, usp, error)) << text;
    EXPECT_EQ(error, message);
    EXPECT_TRUE(usp == Usp(5, 6, 7));
  }
}

TEST(AddressPlan, NoPortIsMp00) {
  const AddressPlan plan(2);
  PortIndex port = 9;
  for (const Mp mp : {Mp(0, 0), Mp(1, 0), Mp(1, 3), Mp(0, 1), Mp(2, 1)}) {
    EXPECT_FALSE(plan.port_of(mp, port)) << mp.module() << ':' << mp.port();
  }
  for (const Usp usp : {Usp(1, 1, 2), Usp(1, 2, 0), Usp(0, 1, 0), Usp(1, 0, 0)}) {
    EXPECT_FALSE(plan.port_of(usp, port)) << AddressPlan::text(usp);
  }
  EXPECT_EQ(port, 9);
  EXPECT_TRUE(plan.port_of(Mp(1, 2), port));
  EXPECT_EQ(port, 1);
  EXPECT_TRUE(AddressPlan::mp_of(1) == Mp(1, 2));
}

}  // namespace
}  // namespace softcard
