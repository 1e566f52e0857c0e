// SPDX-License-Identifier: Apache-2.0
//
// The parts that everything in the card is made of: numbers and addresses as text, the clock,
// hashing.

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "softcard/base/clock.h"
#include "softcard/base/flat_index.h"
#include "softcard/base/hash.h"
#include "softcard/base/text.h"
#include "softcard/tables/l3_table.h"

namespace softcard {
namespace {

// ---- Text ---------------------------------------------------------------------------------------

TEST(Text, NumbersAreReadWholeOrNotAtAll) {
  const struct {
    const char* text;
    bool decimal, number;  // whether each of the two readers takes it
    int value;
  } kRows[] = {
      {"0", true, true, 0},     {"250", true, true, 250},         {"007", true, true, 7},
      {"-5", true, true, -5},   {"0x1f", false, true, 31},        {"0XfA", false, true, 250},
      {"251", false, false, 0}, {"-6", false, false, 0},          {"0xfb", false, false, 0},
      {"", false, false, 0},    {"0x", false, false, 0},          {"0x-1", false, false, 0},
      {"1 ", false, false, 0},  {" 1", false, false, 0},          {"+1", false, false, 0},
      {"1f", false, false, 0},  {"99999999999", false, false, 0}, {"x1", false, false, 0},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.text);
    int decimal = 77;
    int number = 77;
    EXPECT_EQ(parse_decimal(row.text, -5, 250, decimal), row.decimal);
    EXPECT_EQ(decimal, row.decimal ? row.value : 77);
    EXPECT_EQ(parse_number(row.text, -5, 250, number), row.number);
    EXPECT_EQ(number, row.number ? row.value : 77);
  }
  EXPECT_EQ(hex_text(0), "0x0");
  EXPECT_EQ(hex_text(0x88b5), "0x88b5");
  EXPECT_EQ(hex_text(UINT64_MAX), "0xffffffffffffffff");
}

TEST(Text, BytesAndAddressesAreReadWholeOrNotAtAll) {
  const MacAddress mac = MacAddress::from_number(0x02005e00a10f);
  MacAddress read_mac;
  for (const char* text : {"02:00:5e:00:a1:0f", "2:0:5E:0:A1:F", "02-00-5e-00-a1-0f"}) {
    read_mac = MacAddress();
    EXPECT_TRUE(parse_mac(text, read_mac) && read_mac == mac) << text;
  }
  for (const char* text : {"", "02", "02:00:5e:00:a1", "02:00:5e:00:a1:0f:", "02:00:5e:00:a1:0f:11",
                           "02:00-5e:00:a1:0f", "02:00:5e:00:a1:100", "02::5e:00:a1:0f",
                           "02:00:5e:00:a1:0g", "02:00:5e:00:a1: f", "02:00:5e:00:a1:-1"}) {
    EXPECT_FALSE(parse_mac(text, read_mac)) << text;
  }
  EXPECT_TRUE(read_mac == mac);
  EXPECT_EQ(mac_text(mac), "02:00:5e:00:a1:0f");

  Ipv4 ipv4 = 5;
  for (const char* text :
       {"", "192.0.2", "192.0.2.256", "192.0.2.1 ", "192.0.2.1.1", "3221225985"}) {
    EXPECT_FALSE(parse_ipv4(text, ipv4)) << text;
  }
  EXPECT_FALSE(parse_ipv4(std::string("192.0.2.1\0", 10), ipv4));
  EXPECT_EQ(ipv4, 5u);
  EXPECT_TRUE(parse_ipv4("192.0.2.1", ipv4));
  EXPECT_EQ(ipv4, 0xc0000201u);
  EXPECT_EQ(ipv4_text(0xfffe0a00), "255.254.10.0");

  Ipv6Address ipv6;
  EXPECT_TRUE(parse_ipv6("2001:0DB8:0:0::0.0.0.1", ipv6));
  EXPECT_EQ(ipv6_text(ipv6), "2001:db8::1");
  for (const char* text :
       {"", "2001:db8", "2001:db8::1::", "2001:db8::10000", "::1%lo", "::1/128"}) {
    EXPECT_FALSE(parse_ipv6(text, ipv6)) << text;
  }
  EXPECT_EQ(ipv6_text(ipv6), "2001:db8::1");

  std::vector<std::uint8_t> bytes = {9};
  for (const char* text : {"0", "0g", "+1", "0x", "01:2"}) {
    EXPECT_FALSE(parse_bytes(text, bytes)) << text;
  }
  EXPECT_EQ(bytes, std::vector<std::uint8_t>{9});
  EXPECT_TRUE(parse_bytes("00Fa10", bytes));
  EXPECT_EQ(bytes_text(bytes.data(), bytes.size()), "00fa10");
  EXPECT_EQ(bytes_text(bytes.data(), bytes.size(), 2), "00fa:10");
  EXPECT_TRUE(parse_bytes("", bytes) && bytes.empty());
}

TEST(Text, PrintingAndReadingAreInverse) {
  std::mt19937_64 random(7);
  for (int round = 0; round < 500; ++round) {
    const std::uint64_t number = random() >> random() % 64;
    std::uint64_t read_number = 0;
    EXPECT_TRUE(parse_number(hex_text(number), std::uint64_t{0}, UINT64_MAX, read_number));
    EXPECT_EQ(read_number, number);
    const MacAddress mac = MacAddress::from_number(number);
    MacAddress read_mac;
    EXPECT_TRUE(parse_mac(mac_text(mac), read_mac) && read_mac == mac) << mac_text(mac);
    const auto ipv4 = static_cast<Ipv4>(number);
    Ipv4 read_ipv4 = 0;
    EXPECT_TRUE(parse_ipv4(ipv4_text(ipv4), read_ipv4) && read_ipv4 == ipv4) << ipv4_text(ipv4);
    Ipv6Address ipv6;
    for (auto& byte : ipv6.bytes)
      byte = static_cast<std::uint8_t>(random() % 3 == 0 ? random() : 0);
    Ipv6Address read_ipv6;
    EXPECT_TRUE(parse_ipv6(ipv6_text(ipv6), read_ipv6) && read_ipv6 == ipv6) << ipv6_text(ipv6);
  }
}

// ---- Clock --------------------------------------------------------------------------------------

TEST(VirtualClock, StopsAtItsEnd) {
  VirtualClock clock;
  EXPECT_TRUE(clock.warp_ns(UINT64_MAX - 5));
  EXPECT_EQ(clock.now_seconds(), 18446744073u);
  EXPECT_FALSE(clock.warp_ns(6));
  EXPECT_EQ(clock.now_ns(), UINT64_MAX - 5);
  EXPECT_TRUE(clock.warp_ns(5));
  EXPECT_FALSE(clock.warp_ns(1));
  EXPECT_TRUE(clock.warp_ns(0));
  EXPECT_EQ(clock.now_ns(), UINT64_MAX);
}

// ---- Hashing ------------------------------------------------------------------------------------

// Keys as addresses come: in a row, by the last byte of a network, at random.
TEST(KeyedHash, SpreadsKeysOfEveryKindUnderEverySeed) {
  constexpr std::size_t kKeys = 4096;
  std::mt19937_64 random(3);
  for (std::uint64_t seed : {std::uint64_t{0}, std::uint64_t{1}, UINT64_MAX, std::uint64_t{7919}}) {
    const KeyedHash hash(seed);
    for (int kind = 0; kind < 3; ++kind) {
      FlatIndex index;
      std::vector<unsigned> buckets(kKeys / 4);
      std::set<std::uint64_t> results;
      for (std::uint32_t i = 0; i < kKeys; ++i) {
        const std::uint64_t key = kind == 0   ? 0x020000000000 + i
                                  : kind == 1 ? std::uint64_t{i} << 36
                                              : random();
        results.insert(hash.spread(key));
        ++buckets[hash(key) >> 22];
        index.insert(hash(key), i);
      }
      EXPECT_EQ(results.size(), kKeys) << "different keys, different results";
      EXPECT_LE(*std::max_element(buckets.begin(), buckets.end()), 18u) << seed << ' ' << kind;
      EXPECT_LE(index.longest_search(), 8u) << seed << ' ' << kind;
    }
  }
  EXPECT_EQ(KeyedHash(1).spread(5), KeyedHash(1).spread(5));
  EXPECT_NE(KeyedHash(1).spread(5), KeyedHash(2).spread(5));
  EXPECT_NE(KeyedHash::drawn().spread(5), KeyedHash::drawn().spread(5));
}

TEST(KeyedHash, NeighboursChosenForOneSeedDoNotCollideUnderAnother) {
  const KeyedHash known(1);
  std::vector<Ipv4> chosen;
  for (Ipv4 ip = 0; chosen.size() < 512; ++ip) {
    if (address_hash(known, ip) >> 24 == 0) chosen.push_back(ip);
  }
  const auto longest = [&](const KeyedHash& hash) {
    L3HostTable<Ipv4> hosts(1024, hash);
    for (const Ipv4 ip : chosen) hosts.add(ip, {Destination::port(1), MacAddress(), 1});
    return hosts.longest_search();
  };
  EXPECT_GE(longest(known), 512u / 7);
  for (std::uint64_t seed = 2; seed < 6; ++seed) EXPECT_LE(longest(KeyedHash(seed)), 8u) << seed;
}

}  // namespace
}  // namespace softcard
