// SPDX-License-Identifier: Apache-2.0
//
// Tables of Linux in, frames of the card out.

#include "agent/planner.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <list>
#include <random>

#include "linux_fixture.h"

namespace agent {
namespace {

using namespace std::chrono_literals;

// ---- Ports and bridges --------------------------------------------------------------------------

TEST_F(LinuxTest, PortsWithoutABridgeAreApart) {
  inject(station(0), station(0).to_all() + " arp tpa=192.0.2.9");
  EXPECT_CPU_PACKET(RX_REASON_FLOOD, "eth untagged arp");
  inject(station(0),
         station(0).to("02:00:5e:00:10:01") + " ipv4 src=192.0.2.1 dst=192.0.2.9 ttl=64");
  EXPECT_CPU_PACKET(RX_REASON_SYSTEM_MAC, "eth ipv4 ttl=64");
  // Another port's address is nobody's here, and a tag leads into no other VLAN.
  inject(station(0), station(0).to("02:00:5e:00:10:02"));
  inject(station(0), "eth src=00:00:5e:00:53:01 dst=02:00:5e:00:10:02 vlan=4093");
  inject(station(0), "eth src=00:00:5e:00:53:01 dst=02:00:5e:00:10:01 vlan=4094");
  EXPECT_NO_FRAMES();
}

// What others left in the card is gone when the agent begins.
TEST_F(LinuxTest, BeginsWithAnEmptyCard) {
  const Usp left(1, 1, 5);
  EXPECT_OK(vorn_create_vlan(50));
  EXPECT_OK(vorn_add_ports_to_vlan(50, {left}, {}));
  EXPECT_OK(vorn_add_ports_to_vlan(1, {}, {left}));
  EXPECT_OK(vorn_add_mac_to_port(left, mac(9).data(), 50));
  unsigned id = 0;
  EXPECT_OK(vorn_create_l3_interface(mac(9).data(), 50, id));
  EXPECT_OK(vorn_add_l3_route_ip4(left, 0, 0, mac(8).data(), id, 0));
  ASSERT_TRUE(writer_.begin(kPorts));
  settle();
  std::list<Usp> tagged;
  std::list<Usp> untagged;
  EXPECT_REFUSED(vorn_get_vlan_info(50, tagged, untagged), "VLAN 50");
  EXPECT_OK(vorn_get_vlan_info(1, tagged, untagged));
  EXPECT_TRUE(tagged.empty() && untagged.empty());
  EXPECT_EQ(card().tables().l3.ipv4_routes.size() + card().tables().l3.interfaces.size(), 0u);
}

TEST_F(LinuxTest, SettingsOfAnInterfaceReachItsPort) {
  port(2).mtu = 9000;
  port(3).up = false;
  settle();
  unsigned bytes = 0;
  bool on = true;
  phy_state_t link = PHY_STATE_UP;
  EXPECT_OK(vorn_get_port_mtu(Usp(1, 1, 2), bytes));
  EXPECT_EQ(bytes, 9014u);
  EXPECT_OK(vorn_get_port_state(Usp(1, 1, 3), on));
  EXPECT_FALSE(on);
  EXPECT_OK(vorn_get_port_link_state(Usp(1, 1, 3), link));
  EXPECT_NE(link, PHY_STATE_UP);
  port(2).mtu = 65000;
  settle();
  ASSERT_EQ(said_.size(), 1u);
  EXPECT_NE(said_[0].find("the MTU of port 2"), std::string::npos) << said_[0];
  settle();
  EXPECT_EQ(said_.size(), 1u);  // said once
}

TEST_F(LinuxTest, ABridgeIsAVlan) {
  bridge();
  join(0);
  join(1);
  settle();
  inject(station(0), station(0).to(station(1)));
  EXPECT_FRAME(station(1), "eth untagged src=00:00:5e:00:53:01");
  inject(station(1), station(1).to_all() + " arp tpa=192.0.2.9");
  EXPECT_FRAME(station(0), "eth untagged arp");
  EXPECT_CPU_PACKET(RX_REASON_FLOOD, "eth arp");
  inject(station(0), station(0).to("02:00:5e:00:20:64"));
  EXPECT_CPU_PACKET(RX_REASON_SYSTEM_MAC, "eth dst=02:00:5e:00:20:64");
  EXPECT_EQ(plan_.to_isolate, (std::vector<int>{1, 2}));

  port(0).isolated = true;
  port(1).master = 0;
  settle();
  EXPECT_EQ(plan_.to_isolate, std::vector<int>{});
  inject(station(0), station(0).to_all());
  EXPECT_CPU_PACKET(RX_REASON_FLOOD, "eth");
  EXPECT_NO_FRAMES();
}

TEST_F(LinuxTest, BridgesKeepTheirVlans) {
  bridge(kBridge);
  bridge(kBridge + 1);
  join(0, kBridge);
  join(1, kBridge + 1);
  settle();
  const auto before = plan_.bridges;
  ASSERT_EQ(before.size(), 2u);
  linux_.remove_link(kBridge);
  port(0).master = 0;
  bridge(kBridge - 1);
  settle();
  for (const auto& [vlan, index] : before) {
    if (index == kBridge + 1) {
      EXPECT_EQ(plan_.bridges.at(vlan), index);
    }
  }
  EXPECT_EQ(plan_.bridges.size(), 2u);
}

TEST_F(LinuxTest, PortsThatTheCardDoesNotHaveAreReachedThroughLinux) {
  bridge();
  join(0);
  join(1);
  linux_.links[kOther].master = kBridge;
  linux_.fdb[{kOther, mac(0x77)}] = FdbKind::learned;
  linux_.fdb[{kBridge, mac(0x78)}] = FdbKind::local;
  linux_.fdb[{2, mac(0x78)}] = FdbKind::fixed;  // but it is the bridge's own
  linux_.fdb[{2, mac(0x79)}] = FdbKind::fixed;
  linux_.fdb[{2, mac(0x7a)}] = FdbKind::learned;  // the card learns for itself
  settle();
  for (const char* to : {"00:00:5e:00:53:77", "00:00:5e:00:53:78"}) {
    inject(station(0), station(0).to(to));
    EXPECT_CPU_PACKET(RX_REASON_SYSTEM_MAC, std::string("eth dst=") + to);
  }
  inject(station(0), station(0).to("00:00:5e:00:53:79"));
  EXPECT_FRAME(station(1), "eth dst=00:00:5e:00:53:79");
  inject(station(0), station(0).to("00:00:5e:00:53:7a"));
  EXPECT_FRAME(station(1), "eth dst=00:00:5e:00:53:7a");
  EXPECT_CPU_PACKET(RX_REASON_UNKNOWN_UNICAST, "eth dst=00:00:5e:00:53:7a");

  linux_.fdb.clear();
  linux_.remove_link(kOther);
  settle();
  inject(station(0), station(0).to("00:00:5e:00:53:77"));
  EXPECT_FRAME(station(1), "eth dst=00:00:5e:00:53:77");
}

TEST_F(LinuxTest, TheKernelsSpanningTreeIsThePorts) {
  const struct {
    BridgePortState linux_state;
    stp_state_t card;
  } rows[] = {{BridgePortState::disabled, STP_STATE_DISABLED},
              {BridgePortState::listening, STP_STATE_LISTENING},
              {BridgePortState::learning, STP_STATE_LEARNING},
              {BridgePortState::blocking, STP_STATE_BLOCKING},
              {BridgePortState::forwarding, STP_STATE_FORWARDING}};
  bridge().bridge.stp = true;
  join(0);
  for (const auto& row : rows) {
    port(0).port_state = row.linux_state;
    settle();
    stp_state_t state = STP_STATE_DISABLED;
    EXPECT_OK(vorn_get_port_stp_state(Usp(1, 1, 0), state));
    EXPECT_EQ(state, row.card);
  }
  const std::string bpdu =
      "eth src=00:00:5e:00:53:01 dst=01:80:c2:00:00:00 llc dsap=0x42 ssap=0x42";
  join(1);
  settle();
  inject(station(0), bpdu);
  EXPECT_CPU_PACKET(RX_REASON_RESERVED, "eth dst=01:80:c2:00:00:00");
  EXPECT_NO_FRAMES();
  // Without a spanning tree of its own a bridge is transparent to others'.
  bridge().bridge.stp = false;
  settle();
  inject(station(0), bpdu);
  EXPECT_FRAME(station(1), "eth dst=01:80:c2:00:00:00");
  EXPECT_CPU_PACKET(RX_REASON_FLOOD, "eth dst=01:80:c2:00:00:00");
  // A port that leaves the bridge forwards, whatever it was there.
  port(0).port_state = BridgePortState::blocking;
  port(0).master = 0;
  settle();
  inject(station(0), station(0).to("02:00:5e:00:10:01"));
  EXPECT_CPU_PACKET(RX_REASON_SYSTEM_MAC, "eth");
}

TEST_F(LinuxTest, AddressesAgeAsTheBridgeSays) {
  Bridge& settings = bridge().bridge;
  join(0);
  join(1);
  const auto known = [&] {
    inject(station(2), station(2).to_all());  // a frame for the clock to be seen
    EXPECT_CPU_PACKET(RX_REASON_FLOOD, "eth");
    return card().tables().fdb.learned_in(2) != 0;
  };
  settings.ageing_seconds = 20;
  bridge(kBridge + 1).bridge.ageing_seconds = 500;  // the shortest counts
  settle();
  inject(station(0), station(0).to(station(1)));
  EXPECT_FRAME(station(1), "eth");
  warp(15s);
  EXPECT_TRUE(known());
  warp(6s);
  EXPECT_FALSE(known());

  settings.ageing_seconds = 0;
  bridge(kBridge + 1).bridge.ageing_seconds = 0;
  settle();
  inject(station(0), station(0).to(station(1)));
  EXPECT_FRAME(station(1), "eth");
  warp(100000s);
  EXPECT_TRUE(known());

  // A change of the topology forgets what is known, and ages soon what is learned.
  inject(station(0), station(0).to(station(1)));
  EXPECT_FRAME(station(1), "eth");
  settings.topology_change = true;
  ++settings.topology_changes;
  settings.forward_delay_seconds = 4;
  settle();
  EXPECT_FALSE(known());
  inject(station(0), station(0).to(station(1)));
  EXPECT_FRAME(station(1), "eth");
  warp(5s);
  EXPECT_FALSE(known());
}

// ---- Routing ------------------------------------------------------------------------------------

class RoutingTest : public LinuxTest {
 protected:
  using LinuxTest::LinuxTest;

  void SetUp() override {
    LinuxTest::SetUp();
    address(1, "192.0.2.254", "192.0.2.0/24");
    address(2, "198.51.100.254", "198.51.100.0/24");
    address(3, "203.0.113.254", "203.0.113.0/24");
    address(1, "2001:db8:1::fe", "2001:db8:1::/64");
    address(2, "2001:db8:2::fe", "2001:db8:2::/64");
    neighbour(2, "198.51.100.1", 0x21);
    neighbour(3, "203.0.113.1", 0x31);
    neighbour(2, "2001:db8:2::1", 0x22);
    route("0.0.0.0/0", {via(2, "198.51.100.1")});
    settle();
  }

  void send(const std::string& to) {
    const bool v4 = to.find(':') == std::string::npos;
    inject(station(0),
           station(0).to("02:00:5e:00:10:01") +
               (v4 ? " ipv4 src=192.0.2.1 ttl=9 dst=" : " ipv6 src=2001:db8:1::1 hops=9 dst=") +
               to);
  }
  void expect_out(unsigned n, const std::string& next_hop) {
    EXPECT_FRAME(Usp(1, 1, n), "eth untagged dst=" + next_hop);
  }
  void expect_linux() { EXPECT_CPU_PACKET(RX_REASON_NO_ROUTE, "eth"); }
};

TEST_F(RoutingTest, RoutesAsLinuxDoes) {
  send("198.51.100.1");  // a neighbour
  EXPECT_FRAME(Usp(1, 1, 1), "eth src=02:00:5e:00:10:02 dst=00:00:5e:00:53:21 ipv4 ttl=8");
  send("2001:db8:2::1");
  EXPECT_FRAME(Usp(1, 1, 1), "eth src=02:00:5e:00:10:02 dst=00:00:5e:00:53:22 ipv6 hops=8");
  send("100.64.0.1");  // the default route
  expect_out(1, "00:00:5e:00:53:21");
  // Which knows nothing of connected networks and of the router's own addresses.
  for (const char* to : {"192.0.2.254", "203.0.113.254", "203.0.113.77", "198.51.100.255"}) {
    send(to);
    expect_linux();
  }
  route("100.64.0.0/10", {via(3, "203.0.113.1")});
  route("100.64.1.0/24", {}, RouteKind::local);  // unreachable, say
  settle();
  send("100.64.0.1");
  expect_out(2, "00:00:5e:00:53:31");
  send("100.64.1.1");
  expect_linux();
  EXPECT_EQ(plan_.gateways,
            (std::set<LinuxState::NeighbourKey>{{2, ip("198.51.100.1")}, {3, ip("203.0.113.1")}}));
  remove_route("100.64.0.0/10");
  remove_route("100.64.1.0/24");
  settle();
  send("100.64.1.1");
  expect_out(1, "00:00:5e:00:53:21");
}

TEST_F(RoutingTest, FollowsNeighboursRoutesAndLinks) {
  const auto goes = [&](const char* to, int port_number, const char* next_hop) {
    SCOPED_TRACE(to);
    settle();
    send(to);
    if (port_number < 0) {
      expect_linux();
    } else {
      expect_out(static_cast<unsigned>(port_number), next_hop);
    }
  };
  neighbour(2, "198.51.100.1", 0x29);
  goes("100.64.0.1", 1, "00:00:5e:00:53:29");
  neighbour(2, "198.51.100.1", 0x29, /*resolved=*/false);
  goes("100.64.0.1", -1, "");
  goes("198.51.100.1", -1, "");
  neighbour(2, "198.51.100.1", 0x21);
  route("100.64.0.0/10", {via(3, "203.0.113.1"), via(2, "198.51.100.1")});
  goes("100.64.0.1", 2, "00:00:5e:00:53:31");
  EXPECT_EQ(plan_.several_next_hops, 1u);
  port(2).carrier = false;  // the second next hop takes over
  goes("100.64.0.1", 1, "00:00:5e:00:53:21");
  goes("203.0.113.1", -1, "");
  port(2).up = false;
  settle();
  EXPECT_EQ(plan_.card.routers.count(Planner::port_vlan(2)), 0u);
  port(2).up = port(2).carrier = true;
  // The lowest metric counts.
  route("100.64.0.0/10", {via(2, "198.51.100.1")}, RouteKind::unicast, 7);
  goes("100.64.0.1", 2, "00:00:5e:00:53:31");
  const auto& routes = plan_.card.routes;
  EXPECT_EQ(std::adjacent_find(routes.begin(), routes.end(),
                               [](const auto& a, const auto& b) { return a.first == b.first; }),
            routes.end());
  remove_route("100.64.0.0/10");
  goes("100.64.0.1", 1, "00:00:5e:00:53:21");
  // A gateway that another interface of Linux reaches.
  linux_.links[kOther].up = linux_.links[kOther].carrier = true;
  neighbour(kOther, "192.0.2.200", 0x99);
  route("100.64.0.0/16", {via(kOther, "192.0.2.200")});
  goes("100.64.0.1", -1, "");
  goes("100.65.0.1", 1, "00:00:5e:00:53:21");
  // A neighbour that Linux would reach by a route of its own.
  neighbour(3, "100.64.0.9", 0x98);
  goes("100.64.0.9", -1, "");
  // Routing off.
  for (unsigned n = 0; n < kPorts; ++n) port(n).forwards_v4 = false;
  settle();
  send("100.65.0.1");
  expect_linux();
  send("2001:db8:2::1");
  EXPECT_FRAME(Usp(1, 1, 1), "eth dst=00:00:5e:00:53:22");
}

TEST_F(RoutingTest, RoutesOutOfABridge) {
  bridge();
  join(4);
  join(5);
  address(kBridge, "10.0.0.254", "10.0.0.0/24");
  neighbour(kBridge, "10.0.0.1", 0x05);
  settle();
  send("10.0.0.1");
  expect_linux();  // at which port it is nobody has said yet
  const unsigned vlan = plan_.bridges.begin()->first;
  learned_[{vlan, mac(0x05)}] = 4;
  settle();
  send("10.0.0.1");
  EXPECT_FRAME(Usp(1, 1, 4), "eth untagged src=02:00:5e:00:20:64 dst=00:00:5e:00:53:05");
  learned_[{vlan, mac(0x05)}] = 5;
  settle();
  send("10.0.0.1");
  EXPECT_FRAME(Usp(1, 1, 5), "eth dst=00:00:5e:00:53:05");
  neighbour(kBridge, "10.0.0.2", 0x06);
  linux_.fdb[{6, mac(0x06)}] = FdbKind::fixed;
  settle();
  send("10.0.0.2");
  EXPECT_FRAME(Usp(1, 1, 5), "eth dst=00:00:5e:00:53:06");
  // And in from one.
  inject(station(4), station(4).to("02:00:5e:00:20:64") + " ipv4 src=10.0.0.7 dst=198.51.100.1");
  EXPECT_FRAME(Usp(1, 1, 1), "eth dst=00:00:5e:00:53:21");
}

class SmallTablesTest : public RoutingTest {
 protected:
  SmallTablesTest()
      : RoutingTest("ports 8 speed 1000\ncapacity ipv4-routes 3\ncapacity ipv4-hosts 2\n") {}
};

// Packets never take a shorter prefix because their own route did not fit.
TEST_F(SmallTablesTest, WhatDoesNotFitGoesThroughLinux) {
  remove_route("0.0.0.0/0");
  route("100.0.0.0/8", {via(2, "198.51.100.1")});
  route("100.64.0.0/10", {via(3, "203.0.113.1")});
  route("100.64.1.0/24", {via(2, "198.51.100.1")});
  settle();
  EXPECT_EQ(writer_.missing(), 0u);
  said_.clear();
  send("100.64.0.1");
  expect_out(2, "00:00:5e:00:53:31");

  route("100.64.2.0/24", {via(3, "203.0.113.1")});
  route("100.64.3.0/24", {via(3, "203.0.113.1")});
  route("100.64.4.0/24", {via(3, "203.0.113.1")});
  settle();
  ASSERT_EQ(said_.size(), 1u);
  EXPECT_NE(said_[0].find("the card refuses"), std::string::npos) << said_[0];
  EXPECT_GT(writer_.missing(), 0u);
  for (const char* to : {"100.64.9.1", "100.1.0.1"}) {  // around what did not fit
    send(to);
    expect_linux();
  }
  for (int last = 1; last <= 4; ++last) {
    send("100.64." + std::to_string(last) + ".1");
    const bool out_here =
        card().tables().l3.ipv4_routes.lookup((100u << 24) + (64u << 16) +
                                              (static_cast<unsigned>(last) << 8)) != nullptr;
    if (!out_here) {
      expect_linux();
    } else {
      expect_out(last == 1 ? 1 : 2, last == 1 ? "00:00:5e:00:53:21" : "00:00:5e:00:53:31");
    }
  }
  for (int last = 2; last <= 4; ++last) remove_route("100.64." + std::to_string(last) + ".0/24");
  settle();
  EXPECT_EQ(writer_.missing(), 0u);
  EXPECT_EQ(said_.back(), "the card has taken all routes");
  send("100.1.0.1");
  expect_out(1, "00:00:5e:00:53:21");
  neighbour(2, "198.51.100.2", 0x23);
  settle();
  send("198.51.100.2");
  expect_linux();
}

// ---- Differences --------------------------------------------------------------------------------

// Whatever Linux had before, the card does what it has now; and what is done is not done again.
TEST_F(RoutingTest, OneStateAfterAnotherEndsInTheLast) {
  std::mt19937 engine(7);
  const auto random = [&] { return static_cast<unsigned>(engine()); };
  const auto maybe = [&] { return random() % 2 == 0; };
  bridge();
  bridge(kBridge + 1);
  address(kBridge, "10.0.0.254", "10.0.0.0/24");
  for (int round = 0; round < 200; ++round) {
    SCOPED_TRACE(round);
    const auto n = random() % kPorts;
    switch (random() % 6) {
      case 0:
        port(n).up = port(n).carrier = maybe();
        break;
      case 1:
        port(n).master = maybe() ? 0 : maybe() ? kBridge : kBridge + 1;
        port(n).port_state = static_cast<BridgePortState>(random() % 5);
        break;
      case 2:
        neighbour(static_cast<int>(n) + 1, "198.51.100.1", random() % 250, maybe());
        break;
      case 3:
        neighbour(kBridge, "10.0.0." + std::to_string(n + 1), n);
        learned_[{2, mac(n)}] = random() % kPorts;
        break;
      case 4: {
        const std::string to = "100." + std::to_string(n) + (maybe() ? ".0.0/16" : ".128.0/17");
        if (maybe()) {
          remove_route(to);
        } else {
          route(to, {maybe() ? via(2, "198.51.100.1") : via(kBridge, "10.0.0.1")});
        }
        break;
      }
      default:
        linux_.fdb[{static_cast<int>(n) + 1, mac(n)}] = maybe() ? FdbKind::fixed : FdbKind::learned;
        port(n).mac[0] = static_cast<std::uint8_t>(2 + 4 * (random() % 8));
    }
    settle();
    ASSERT_EQ(writer_.missing(), 0u) << (said_.empty() ? "" : said_.back());
    const softcard::L3Table& l3 = card().tables().l3;
    ASSERT_EQ(l3.interfaces.size(), plan_.card.routers.size());
    std::size_t v4_routes = 0;
    for (const auto& [in, hop] : plan_.card.routes) {
      if (in.ip.family != Family::v4) continue;
      ++v4_routes;
      unsigned char next[6];
      unsigned interface = 0;
      unsigned metric = 0;
      ASSERT_TRUE(vorn_get_l3_route_by_subnet_ip4(number(in.ip),
                                                  in.length == 0 ? 0 : ~0U << (32 - in.length),
                                                  writer_.usp(hop.port), next, interface, metric))
          << text(in);
      ASSERT_TRUE(std::equal(hop.mac.begin(), hop.mac.end(), next)) << text(in);
      ASSERT_EQ(interface, hop.vlan) << text(in);
    }
    ASSERT_EQ(l3.ipv4_routes.size(), v4_routes);
    ASSERT_EQ(l3.ipv4_hosts.size() + l3.ipv6_hosts.size(), plan_.card.hosts.size());
    for (const auto& [number_of_port, model] : plan_.card.ports) {
      std::list<Usp> tagged;
      std::list<Usp> members;
      ASSERT_TRUE(vorn_get_vlan_info(model.vlan, tagged, members));
      ASSERT_EQ(std::count(members.begin(), members.end(), writer_.usp(number_of_port)), 1);
    }
    ASSERT_EQ(card().tables().fdb.size() - card().tables().fdb.learned(),
              plan_.card.own_addresses.size() + plan_.card.stations.size());

    unsigned calls = 0;
    softcard::host::call_watch().set_sink([&](const std::string&) { ++calls; });
    ASSERT_TRUE(vorn_set_lcmgr_trace("trace_level_sdk", true));
    writer_.apply(plan_.card);
    ASSERT_TRUE(vorn_set_lcmgr_trace("trace_level_sdk", false));
    softcard::host::call_watch().set_sink({});
    ASSERT_LE(calls, 1u);  // the end of the trace
  }
}

// ---- Tables of Linux ----------------------------------------------------------------------------

TEST(LinuxStateTest, KeepsAlternativesAsTheKernelDoes) {
  LinuxState state;
  RouteKey v4;
  ASSERT_TRUE(parse("192.0.2.0/24", v4.prefix));
  RouteKey v6;
  ASSERT_TRUE(parse("2001:db8::/32", v6.prefix));
  const auto by = [](std::initializer_list<int> interfaces) {
    Route route;
    for (const int interface : interfaces) route.legs.push_back({interface, false, {}});
    return route;
  };
  const auto legs = [&](const RouteKey& key) {
    std::string text;
    const auto found = state.routes.find(key);
    if (found == state.routes.end()) return text;
    for (const Route& route : found->second) {
      for (const RouteLeg& leg : route.legs) text += std::to_string(leg.interface);
      text += ' ';
    }
    return text;
  };
  state.add_route(v4, by({1}), RouteChange::add);
  state.add_route(v4, by({2}), RouteChange::append);
  EXPECT_EQ(legs(v4), "1 2 ");
  state.add_route(v4, by({3}), RouteChange::replace);
  EXPECT_EQ(legs(v4), "3 2 ");
  state.add_route(v4, by({2}), RouteChange::append);  // told twice
  EXPECT_EQ(legs(v4), "3 2 ");
  state.remove_route(v4, by({3}));
  EXPECT_EQ(legs(v4), "2 ");
  state.remove_route(v4, by({2}));
  EXPECT_EQ(legs(v4), "");

  state.add_route(v6, by({1}), RouteChange::add);
  state.add_route(v6, by({2, 1}), RouteChange::append);
  EXPECT_EQ(legs(v6), "21 ");
  state.remove_route(v6, by({2}));
  EXPECT_EQ(legs(v6), "1 ");
  state.remove_route(v6, by({1}));
  EXPECT_EQ(legs(v6), "");

  state.links[4].name = "swp3";
  state.addresses[4].insert(Ip());
  state.fdb[{4, Mac{}}] = FdbKind::learned;
  state.neighbours[{4, Ip()}].resolved = true;
  state.neighbours[{5, Ip()}].resolved = true;
  state.remove_link(4);
  EXPECT_TRUE(state.links.empty() && state.addresses.empty() && state.fdb.empty());
  EXPECT_EQ(state.neighbours.size(), 1u);
}

}  // namespace
}  // namespace agent
