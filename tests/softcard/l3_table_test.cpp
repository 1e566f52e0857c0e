// SPDX-License-Identifier: Apache-2.0

#include "softcard/tables/l3_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <random>
#include <utility>
#include <vector>

namespace softcard {
namespace {

const MacAddress kMac = MacAddress::from_number(0x00005E005301);
const MacAddress kOtherMac = MacAddress::from_number(0x00005E005302);

// Addresses a few bits away from one another, so that prefixes of all lengths nest.
template <class Address>
struct Near;
template <>
struct Near<Ipv4> {
  static Ipv4 flip(Ipv4 ip, unsigned bit) { return ip ^ (1u << bit); }
  static Ipv4 base() { return 0xC0000200; }
};
template <>
struct Near<Ipv6Address> {
  static Ipv6Address flip(Ipv6Address ip, unsigned bit) {
    ip.bytes[15 - bit / 8] = static_cast<std::uint8_t>(ip.bytes[15 - bit / 8] ^ (1u << bit % 8));
    return ip;
  }
  static Ipv6Address base() { return {{0x20, 0x01, 0x0D, 0xB8, 0, 0, 0, 1}}; }
};

template <class Address>
class L3Tables : public ::testing::Test {
 protected:
  static constexpr unsigned kWidth = AddressBits<Address>::kWidth;

  unsigned below(unsigned n) { return static_cast<unsigned>(random_() % n); }
  Address near_address(unsigned most_flips) {
    Address ip = Near<Address>::base();
    for (unsigned flips = below(most_flips + 1); flips > 0; --flips) {
      ip = Near<Address>::flip(ip, below(kWidth));
    }
    return ip;
  }
  NextHop next_hop() {
    return {Destination::port(static_cast<PortIndex>(below(3))), MacAddress::from_number(below(8)),
            below(4)};
  }

 private:
  std::mt19937 random_{20240502};
};
using Families = ::testing::Types<Ipv4, Ipv6Address>;
TYPED_TEST_SUITE(L3Tables, Families);

template <class Container, class Goes>
std::size_t remove_if(Container& container, Goes&& goes) {
  const auto end = std::remove_if(container.begin(), container.end(), goes);
  const auto removed = static_cast<std::size_t>(container.end() - end);
  container.erase(end, container.end());
  return removed;
}

TYPED_TEST(L3Tables, RoutesAgreeWithBruteForce) {
  using Route = L3Route<TypeParam>;
  constexpr std::size_t kCapacity = 200;
  L3RouteTable<TypeParam> table(kCapacity);
  std::vector<Route> model;  // in the order of their coming
  int full = 0, replaced = 0, best_moved = 0;
  for (int round = 0; round < 12000; ++round) {
    SCOPED_TRACE(round);
    const TypeParam ip = this->near_address(3);
    const unsigned length = this->below(this->kWidth + 1);
    const TypeParam prefix = masked(ip, length);
    const NextHop hop = this->next_hop();
    const auto same_key = [&](const Route& r) {
      return r.prefix == prefix && r.length == length && r.next_hop.destination == hop.destination;
    };
    const unsigned what = this->below(1000);
    // Few rounds remove in bulk, so that the table runs full between them.
    if (what < 700) {
      const std::uint32_t metric = this->below(3);
      const L3Add result = table.add(ip, length, hop, metric);
      const auto existing = std::find_if(model.begin(), model.end(), same_key);
      if (existing != model.end()) {
        ASSERT_EQ(result, L3Add::replaced);
        ++replaced;
        const bool moves = existing->metric != metric;
        *existing = {prefix, length, metric, hop};
        if (moves) std::rotate(existing, existing + 1, model.end());
      } else if (model.size() == kCapacity) {
        ASSERT_EQ(result, L3Add::full);
        ++full;
      } else {
        ASSERT_EQ(result, L3Add::added);
        model.push_back({prefix, length, metric, hop});
      }
    } else if (what < 996) {
      ASSERT_EQ(table.remove(ip, length, hop.destination), remove_if(model, same_key) == 1);
      // Random keys seldom meet: take one that is there as well.
      if (what < 850 && !model.empty()) {
        const Route victim = model[this->below(static_cast<unsigned>(model.size()))];
        best_moved += *table.lookup(victim.prefix) == victim.next_hop;
        ASSERT_TRUE(table.remove(victim.prefix, victim.length, victim.next_hop.destination));
        remove_if(model, [&](const Route& r) {
          return r.prefix == victim.prefix && r.length == victim.length &&
                 r.next_hop.destination == victim.next_hop.destination;
        });
      }
    } else if (what < 999) {
      ASSERT_EQ(table.remove_by_interface(hop.interface_id), remove_if(model, [&](const Route& r) {
                  return r.next_hop.interface_id == hop.interface_id;
                }));
    } else {
      table.clear();
      model.clear();
    }
    ASSERT_EQ(table.size(), model.size());

    std::vector<TypeParam> ips;
    for (int i = 0; i < 3; ++i) ips.push_back(this->near_address(4));
    ips.push_back(ip);
    std::vector<const NextHop*> batch(ips.size());
    table.lookup_batch(ips.data(), ips.size(), batch.data());
    for (std::size_t i = 0; i < ips.size(); ++i) {
      const Route* best = nullptr;
      for (const Route& r : model) {
        if (masked(ips[i], r.length) != r.prefix) continue;
        if (best == nullptr || r.length > best->length ||
            (r.length == best->length && r.metric < best->metric)) {
          best = &r;
        }
      }
      const NextHop* found = table.lookup(ips[i]);
      ASSERT_EQ(found, batch[i]);
      ASSERT_EQ(found != nullptr, best != nullptr);
      ASSERT_TRUE(found == nullptr || *found == best->next_hop);
    }
    const std::optional<Route> exact = table.find(ip, length, hop.destination);
    const auto expected = std::find_if(model.begin(), model.end(), same_key);
    ASSERT_EQ(exact.has_value(), expected != model.end());
    if (!exact) continue;
    ASSERT_TRUE(exact->prefix == prefix && exact->length == length &&
                exact->metric == expected->metric && exact->next_hop == expected->next_hop);
  }
  EXPECT_GT(std::min({full, replaced, best_moved}), 20);
  EXPECT_EQ(table.add(Near<TypeParam>::base(), this->kWidth + 1, NextHop()), L3Add::invalid);
}

TYPED_TEST(L3Tables, HostsAgreeWithModel) {
  using Host = L3Host<TypeParam>;
  constexpr std::size_t kCapacity = 150;
  constexpr unsigned kNetwork = AddressBits<TypeParam>::kWidth == 32 ? 24 : 64;
  L3HostTable<TypeParam> table(kCapacity);
  std::vector<Host> model;  // in the order of their coming
  int full = 0, shared = 0;
  for (int round = 0; round < 20000; ++round) {
    SCOPED_TRACE(round);
    const TypeParam ip = this->near_address(2);
    const NextHop hop = this->next_hop();
    const auto same_key = [&](const Host& h) {
      return h.ip == ip && h.next_hop.destination == hop.destination;
    };
    const unsigned what = this->below(1000);
    if (what < 700) {
      const L3Add result = table.add(ip, hop);
      const auto existing = std::find_if(model.begin(), model.end(), same_key);
      if (existing != model.end()) {
        ASSERT_EQ(result, L3Add::replaced);
        existing->next_hop = hop;
      } else if (model.size() == kCapacity) {
        ASSERT_EQ(result, L3Add::full);
        ++full;
      } else {
        ASSERT_EQ(result, L3Add::added);
        model.push_back({ip, hop});
      }
    } else if (what < 990) {
      ASSERT_EQ(table.remove(ip, hop.destination), remove_if(model, same_key) == 1);
    } else if (what < 996) {
      ASSERT_EQ(table.remove_network(ip), remove_if(model, [&](const Host& h) {
                  return masked(h.ip, kNetwork) == masked(ip, kNetwork);
                }));
    } else if (what < 999) {
      ASSERT_EQ(table.remove_by_interface(hop.interface_id), remove_if(model, [&](const Host& h) {
                  return h.next_hop.interface_id == hop.interface_id;
                }));
    } else {
      table.clear();
      model.clear();
    }
    ASSERT_EQ(table.size(), model.size());
    const auto first =
        std::find_if(model.begin(), model.end(), [&](const Host& h) { return h.ip == ip; });
    const auto exact = std::find_if(model.begin(), model.end(), same_key);
    const Host* found = table.find(ip);
    ASSERT_EQ(found != nullptr, first != model.end());
    ASSERT_TRUE(found == nullptr || found->next_hop == first->next_hop);
    ASSERT_EQ(table.find(ip, hop.destination) != nullptr, exact != model.end());
    shared += exact != model.end() && exact != first;
  }
  EXPECT_GT(std::min(full, shared), 20);
}

TEST(L3Masks, OnlyContiguousOnesHaveALength) {
  const std::pair<Ipv4, int> ipv4[] = {{0, 0},           {0x80000000, 1},  {0xFFFFFF00, 24},
                                       {0xFFFFFFFF, 32}, {0x00FFFFFF, -1}, {0xFF00FF00, -1},
                                       {0x7FFFFFFF, -1}, {1, -1}};
  for (const auto& [mask, length] : ipv4) EXPECT_EQ(mask_length(mask), length) << std::hex << mask;

  Ipv6Address ones;
  ones.bytes.fill(0xFF);
  for (unsigned length = 0; length <= 128; ++length) {
    Ipv6Address mask = masked(ones, length);
    EXPECT_EQ(mask_length(mask), static_cast<int>(length));
    if (length == 0) continue;
    mask.bytes[0] = 0x7F;
    EXPECT_EQ(mask_length(mask), -1) << length;
  }
}

TEST(L3Interfaces, KeepIdsAndPairsUnique) {
  L3InterfaceTable table(3);
  std::uint32_t id = 99;
  EXPECT_EQ(table.create(kMac, 4096, id), L3Add::invalid);
  EXPECT_EQ(table.create(kMac, 10, id), L3Add::added);
  EXPECT_EQ(id, 1u);
  EXPECT_EQ(table.create_with_id(kMac, 20, 2, false), L3Add::added);
  EXPECT_EQ(table.create_with_id(kOtherMac, 20, 2, false), L3Add::exists);
  EXPECT_EQ(table.create_with_id(kMac, 10, 2, true), L3Add::exists) << "the pair is id 1's";
  EXPECT_EQ(table.create_with_id(kOtherMac, 30, 2, true), L3Add::replaced);
  EXPECT_EQ(table.find(20, kMac), nullptr);
  ASSERT_NE(table.find(30, kOtherMac), nullptr);
  EXPECT_EQ(table.find(30, kOtherMac)->id, 2u);
  EXPECT_EQ(table.create(kMac, 40, id), L3Add::added);
  EXPECT_EQ(id, 3u);
  EXPECT_EQ(table.create(kMac, 50, id), L3Add::full);
  EXPECT_EQ(table.create_with_id(kMac, 50, 7, true), L3Add::full);
  EXPECT_EQ(table.create(kMac, 10, id), L3Add::exists);
  EXPECT_EQ(id, 1u);
  EXPECT_TRUE(table.remove(10, kMac));
  EXPECT_FALSE(table.remove(1));
  EXPECT_EQ(table.get(1), nullptr);
  EXPECT_EQ(table.create(kMac, 50, id), L3Add::added);
  EXPECT_EQ(id, 1u) << "the lowest free id comes back";
  table.clear();
  EXPECT_EQ(table.size(), 0u);
  EXPECT_EQ(table.find(50, kMac), nullptr);
}

}  // namespace
}  // namespace softcard
