// SPDX-License-Identifier: Apache-2.0
//
// The card's routes send every packet where Linux's would, or nowhere.

#include "agent/route_plan.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace agent {
namespace {

Prefix prefix(const std::string& text) {
  Prefix result;
  EXPECT_TRUE(parse(text, result)) << text;
  return result;
}

// The route that longest prefix match finds.
const PlannedRoute* lookup(const std::vector<PlannedRoute>& routes, const Ip& ip) {
  const PlannedRoute* best = nullptr;
  for (const PlannedRoute& route : routes) {
    if (contains(route.prefix, ip) && (!best || best->prefix.length < route.prefix.length)) {
      best = &route;
    }
  }
  return best;
}

const Hop* lookup(const CardModel::Routes& routes, const Ip& ip) {
  // Of the prefixes around an address the longest stands last.
  const Hop* best = nullptr;
  for (const auto& [in, hop] : routes) {
    if (contains(in, ip)) best = &hop;
  }
  return best;
}

std::vector<PlannedRoute> sorted(std::vector<PlannedRoute> routes) {
  std::sort(routes.begin(), routes.end(),
            [](const auto& a, const auto& b) { return a.prefix < b.prefix; });
  return routes;
}

PlannedRoute route(const std::string& to, unsigned port) {
  PlannedRoute result;
  result.prefix = prefix(to);
  if (port != 0) result.hop = Hop{port, 1, {}};
  return result;
}

TEST(RoutePlan, CutsARouteAroundWhatIsForLinux) {
  CardModel::Routes card;
  EXPECT_EQ(
      cover(sorted({route("0.0.0.0/0", 1), route("192.0.0.0/4", 0), route("8.0.0.0/8", 2)}), card),
      0u);
  std::set<std::string> texts;
  for (const auto& [in, hop] : card) texts.insert(text(in) + " " + std::to_string(hop.port));
  EXPECT_EQ(texts, (std::set<std::string>{"0.0.0.0/1 1", "8.0.0.0/8 2", "128.0.0.0/2 1",
                                          "224.0.0.0/3 1", "208.0.0.0/4 1"}));
}

TEST(RoutePlan, LeavesARouteWithTooManyGapsToLinux) {
  std::vector<PlannedRoute> routes = {route("10.0.0.0/8", 1), route("20.0.0.0/8", 2)};
  for (unsigned i = 0; i <= kMostGaps; ++i) {
    routes.push_back(
        route("10." + std::to_string(i / 256) + "." + std::to_string(i % 256) + ".0/24", 0));
  }
  CardModel::Routes card;
  EXPECT_EQ(cover(sorted(routes), card), 1u);
  ASSERT_EQ(card.size(), 1u);
  EXPECT_EQ(card.begin()->first, prefix("20.0.0.0/8"));
}

TEST(RoutePlan, PutsNothingInTheCardThatStaysOnALink) {
  CardModel::Routes card;
  cover(sorted({route("127.0.0.0/8", 1), route("224.0.0.0/4", 1), route("fe80::/64", 1),
                route("224.0.0.0/3", 1)}),
        card);
  ASSERT_EQ(card.size(), 1u);
  EXPECT_EQ(card.begin()->first, prefix("224.0.0.0/3"));
}

// Random routes of few bits, so that they often lie within each other.
TEST(RoutePlan, AgreesWithLongestPrefixMatch) {
  std::mt19937 engine(1);
  const auto random = [&] { return static_cast<unsigned>(engine()); };
  for (int round = 0; round < 300; ++round) {
    SCOPED_TRACE(round);
    const Family family = round % 2 == 0 ? Family::v4 : Family::v6;
    // Of IPv6 the last bits differ, where the pieces are deepest.
    const unsigned first = family == Family::v4 ? 0 : 120;
    Ip base;
    base.family = family;
    if (family == Family::v6) base.bytes = {0x20, 0x01, 0x0d, 0xb8};
    const auto address = [&](unsigned low) {
      Ip ip = base;
      ip.bytes[first / 8] = static_cast<std::uint8_t>(low);
      return ip;
    };
    std::set<Prefix> prefixes;
    for (unsigned i = 0; i < random() % 12; ++i) {
      prefixes.insert(prefix_of(address(random() % 256), first + random() % 9));
    }
    std::vector<PlannedRoute> routes;
    for (const Prefix& in : prefixes) {
      PlannedRoute made;
      made.prefix = in;
      if (random() % 3 != 0) made.hop = Hop{random() % 4, 1, {}};
      made.on_link = static_cast<int>(random() % 4);
      routes.push_back(made);
    }
    CardModel::Routes card;
    cover(routes, card);
    ASSERT_TRUE(std::is_sorted(card.begin(), card.end(),
                               [](const auto& a, const auto& b) { return a.first < b.first; }));
    for (unsigned low = 0; low < 256; ++low) {
      const Ip ip = address(low);
      if (stays_on_link(ip)) continue;
      const PlannedRoute* const wanted = lookup(routes, ip);
      const Hop* const found = lookup(card, ip);
      ASSERT_EQ(found != nullptr, wanted != nullptr && wanted->hop) << text(ip);
      if (found != nullptr) {
        ASSERT_EQ(found->port, wanted->hop->port) << text(ip);
      }
      ASSERT_EQ(link_of(routes, ip), wanted == nullptr ? 0 : wanted->on_link) << text(ip);
    }
  }
}

TEST(Net, ReadsAndPrintsAddresses) {
  for (const char* good : {"0.0.0.0/0", "192.0.2.128/25", "2001:db8::/32", "2001:db8::1/128"}) {
    EXPECT_EQ(text(prefix(good)), good);
  }
  for (const char* bad : {"", "192.0.2.1", "192.0.2.1/24", "192.0.2.0/33", "192.0.2.0/", "::/129",
                          "192.0.2.0/24x", "2001:db8::1/64"}) {
    Prefix untouched = prefix("10.0.0.0/8");
    EXPECT_FALSE(parse(bad, untouched)) << bad;
    EXPECT_EQ(text(untouched), "10.0.0.0/8");
  }
}

}  // namespace
}  // namespace agent
