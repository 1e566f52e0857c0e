// SPDX-License-Identifier: Apache-2.0
//
// Link aggregation: one logical port, one member for each frame.
//
//      a              VLAN 1: all ports untagged. LAG x: 1, 2, 3 - LAG y: 4, 5
//      |    x    y
//    +-0---123---45-+
//    +--------------+

#include <map>
#include <set>

#include "tests/softcard/switch_fixture.h"

namespace softcard {
namespace {

class LagForwardingTest : public SwitchTest {
 protected:
  LagForwardingTest() {
    x = lag({1, 2, 3});
    for (const PortIndex port : card.tables().ports.all()) {
      ok(sdk.set_port_flood_blocking_cpu(mp(port), FLOOD_BLOCK_ALL));
      if (port > 5) ok(sdk.set_port_state(mp(port), false));
    }
  }
  // Sends a frame into port 0 and returns the port that it came out of, one and no other.
  PortIndex way(const std::string& words) {
    in(0, words);
    PortIndex found = kNoPort;
    for (const PortIndex port : card.tables().ports.all()) {
      std::vector<std::uint8_t> frame;
      while (cable(port).take(frame)) {
        EXPECT_EQ(found, kNoPort) << words;
        found = port;
      }
    }
    return found;
  }
  unsigned x = 0;
};

// effect: create_lag - what is learned on a member is known by the LAG
// effect: add_ports_to_lag - floods leave through one member and not back into the LAG
TEST_F(LagForwardingTest, IsOnePortForFloodsAndLearning) {
  in(0, "a all");
  unsigned copies = 0;
  for (PortIndex port = 1; port < 4; ++port) copies += cable(port).waiting() != 0 ? 1u : 0u;
  EXPECT_EQ(copies, 1u);
  for (PortIndex port = 1; port < 4; ++port) cable(port).clear();
  skip({4, 5});
  in(2, "b all");  // nothing goes to 1 and 3
  skip({0, 4, 5});
  EXPECT_EQ(card.tables().fdb.find(1, MacAddress::from_bytes(mac('b')))->destination(),
            Destination::lag(static_cast<std::uint16_t>(x)));
  const PortIndex member = way("a b");
  EXPECT_TRUE(member >= 1 && member <= 3);
  in(3, "c b");  // within the LAG: nowhere
  EXPECT_EQ(drops(3, DropReason::same_port), 1u);
}

// effect: set_lag_balancing_strategy - what of a frame changes its member, and what does not
TEST_F(LagForwardingTest, BalancesByWhatTheStrategyNames) {
  // The fields that vary: source and destination address, IP addresses, ports.
  struct Part {
    const char* name;
    std::string (*frame)(unsigned);
  };
  static constexpr Part kParts[] = {
      {"source MAC",
       [](unsigned n) {
         return "02:00:00:00:00:" + std::to_string(10 + n) +
                " f ipv4 src=192.0.2.1 dst=198.51.100.1 udp sport=1 dport=2";
       }},
      {"destination MAC",
       [](unsigned n) {
         return "a 02:00:00:00:01:" + std::to_string(10 + n) +
                " ipv4 src=192.0.2.1 dst=198.51.100.1 udp sport=1 dport=2";
       }},
      {"source IP",
       [](unsigned n) {
         return "a f ipv4 src=192.0.2." + std::to_string(n + 1) +
                " dst=198.51.100.1 udp sport=1 dport=2";
       }},
      {"source IP",
       [](unsigned n) {
         return "a f ipv6 src=2001:db8::" + std::to_string(n + 1) +
                " dst=2001:db8::1 udp sport=1 dport=2";
       }},
      {"destination IP",
       [](unsigned n) {
         return "a f ipv4 src=192.0.2.1 dst=198.51.100." + std::to_string(n + 1) +
                " udp sport=1 dport=2";
       }},
      {"destination IP",
       [](unsigned n) {
         return "a f ipv6 src=2001:db8::1 dst=2001:db8::" + std::to_string(n + 1) +
                " udp sport=1 dport=2";
       }},
      {"port",
       [](unsigned n) {
         return "a f ipv4 src=192.0.2.1 dst=198.51.100.1 tcp sport=1 dport=" +
                std::to_string(n + 1);
       }},
  };
  const struct {
    lag_psc_t psc;
    std::set<std::string> spreads;
  } kRows[] = {
      {LAG_PSC_SRC_MAC, {"source MAC"}},
      {LAG_PSC_DST_MAC, {"destination MAC"}},
      {LAG_PSC_SRC_DST_MAC, {"source MAC", "destination MAC"}},
      {LAG_PSC_SRC_IP, {"source IP"}},
      {LAG_PSC_DST_IP, {"destination IP"}},
      {LAG_PSC_SRC_DST_IP, {"source IP", "destination IP"}},
      {LAG_PSC_SRC_DST_IP_PORT, {"source IP", "destination IP", "port"}},
  };
  std::list<Mp> away = mps({4, 5});
  ok(sdk.delete_ports_from_vlan(1, away));
  for (const auto& row : kRows) {
    ok(sdk.set_lag_balancing_strategy(x, row.psc));
    lag_psc_t psc = LAG_PSC_SRC_MAC;
    ok(sdk.get_lag_balancing_strategy(x, psc));
    EXPECT_EQ(psc, row.psc);
    for (const Part& part : kParts) {
      std::map<PortIndex, unsigned> members;
      for (unsigned n = 0; n < 60; ++n) {
        const PortIndex member = way(part.frame(n));
        ++members[member];
        EXPECT_EQ(way(part.frame(n)), member) << "a flow stays on its member";
      }
      const bool spreads = row.spreads.count(part.name) != 0;
      EXPECT_EQ(members.size(), spreads ? 3u : 1u) << row.psc << " by " << part.name;
      if (spreads) {
        for (const auto& [port, count] : members) EXPECT_GT(count, 8u) << row.psc << port;
      }
    }
  }
}

TEST_F(LagForwardingTest, FramesWithoutPortsStayTogether) {
  ok(sdk.set_lag_balancing_strategy(x, LAG_PSC_SRC_DST_IP_PORT));
  std::list<Mp> away = mps({4, 5});
  ok(sdk.delete_ports_from_vlan(1, away));
  std::set<PortIndex> members;
  for (const char* rest : {"mf=1 udp sport=1 dport=2", "mf=1 udp sport=7 dport=9",
                           "mf=1 frag=64 proto=17 payload=0102030405060708", "frag=128 proto=17"}) {
    members.insert(way(std::string("a f ipv4 src=192.0.2.1 dst=192.0.2.2 ") + rest));
  }
  EXPECT_EQ(members.size(), 1u);
  members.clear();
  for (unsigned type = 0; type < 16; ++type) {
    members.insert(
        way("a f ipv4 src=192.0.2.1 dst=192.0.2.2 icmp code=0 type=" + std::to_string(type)));
  }
  EXPECT_EQ(members.size(), 1u) << "a type is no port";
}

// effect: set_port_link_state - down: nothing goes in or out, a LAG uses its other members
TEST_F(LagForwardingTest, FailsOverAndKeepsTheFlowsOfTheOthers) {
  in(1, "b all");
  skip({0, 4, 5});
  std::map<unsigned, PortIndex> before;
  const auto frame = [](unsigned n) { return "02:00:00:00:00:" + std::to_string(10 + n) + " b"; };
  for (unsigned n = 0; n < 40; ++n) before[n] = way(frame(n));
  ok(sdk.set_port_link_state(mp(2), PHY_STATE_DOWN));
  phy_state_t state = PHY_STATE_UP;
  ok(sdk.get_port_link_state(mp(2), state));
  EXPECT_EQ(state, PHY_STATE_DOWN);
  std::set<PortIndex> others;
  for (const auto& [n, member] : before) {
    const PortIndex now = way(frame(n));
    EXPECT_NE(now, 2);
    if (member == 2) {
      others.insert(now);
    } else {
      EXPECT_EQ(now, member);
    }
  }
  EXPECT_EQ(others, (std::set<PortIndex>{1, 3})) << "they share what it carried";
  ok(sdk.set_port_link_state(mp(1), PHY_STATE_DOWN));
  ok(sdk.set_port_link_state(mp(3), PHY_STATE_DOWN));
  in(0, "a b");
  EXPECT_EQ(drops(0, DropReason::lag_empty), 1u);
  ok(sdk.set_port_link_state(mp(3), PHY_STATE_UP));
  EXPECT_EQ(way("a b"), 3);
}

// Each state that keeps a member from sending leaves its frames to the others, and none is lost.
TEST_F(LagForwardingTest, OnlyMembersThatCanSendAreChosen) {
  ok(sdk.add_mac_to_port(Mp(0, x), mac('b'), 1, true));
  const struct {
    const char* name;
    void (*hold)(LagForwardingTest& test, bool on);
    bool floods_only;
  } kRows[] = {
      {"link", [](LagForwardingTest& t, bool on) { t.ok(t.sdk.set_port_state(mp(2), !on)); },
       false},
      {"egress",
       [](LagForwardingTest& t, bool on) { t.ok(t.sdk.set_port_egress_admin_state(mp(2), !on)); },
       false},
      {"layer 2", [](LagForwardingTest& t, bool on) { t.ok(t.sdk.set_port_l2_enable(mp(2), !on)); },
       false},
      {"spanning tree",
       [](LagForwardingTest& t, bool on) {
         t.ok(t.sdk.set_port_stp_state(mp(2), on ? STP_STATE_BLOCKING : STP_STATE_FORWARDING));
       },
       false},
      {"VLAN",
       [](LagForwardingTest& t, bool on) {
         std::list<Mp> member = mps({2}), tagged;
         t.ok(on ? t.sdk.delete_ports_from_vlan(1, member)
                 : t.sdk.add_ports_to_vlan(1, tagged, member));
       },
       false},
      {"flood blocking",
       [](LagForwardingTest& t, bool on) {
         t.ok(t.sdk.set_port_flood_blocking(mp(0), mp(2), on ? FLOOD_BLOCK_ALL : FLOOD_BLOCK_NONE));
       },
       true},
  };
  std::list<Mp> away = mps({4, 5});
  ok(sdk.delete_ports_from_vlan(1, away));
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    row.hold(*this, true);
    card.clear_counters();
    std::map<PortIndex, unsigned> known, flooded;
    for (unsigned n = 10; n < 70; ++n) {
      ++known[way("02:00:00:00:00:" + std::to_string(n) + " b")];
      ++flooded[way("02:00:00:00:00:" + std::to_string(n) + " all")];
    }
    EXPECT_TRUE(known[1] > 8 && known[3] > 8 && (known[2] > 8) == row.floods_only);
    EXPECT_TRUE(flooded[1] > 8 && flooded[3] > 8 && flooded[2] == 0);
    EXPECT_EQ(stat(2, STAT_OUT_DISCARDS), 0u);
    row.hold(*this, false);
  }
}

// A member's lock keeps unknown addresses out of the LAG at that member alone.
TEST_F(LagForwardingTest, LockedMember) {
  ok(sdk.set_port_mac_lock(mp(2), true));
  counted();
  in(2, "b a");
  EXPECT_EQ(counted(), "2 in in-discards in-lock !mac-lock");
  in(1, "b a");
  skip({0, 4, 5});
  in(2, "b a");  // the LAG knows it by now
  skip({0, 4, 5});
  ok(sdk.set_port_mac_lock_ext(mp(3), true, false));
  in(3, "c a");
  skip({0, 4, 5});
  EXPECT_EQ(card.tables().fdb.find(1, MacAddress::from_bytes(mac('c'))), nullptr);
}

TEST_F(LagForwardingTest, FlowsToAllPortsSendOneCopyToEachLag) {
  const unsigned y = lag({4, 5});
  const unsigned id = flow_of_all_frames();
  ok(sdk.add_of_flow_action(id, OF_ACTION_OUTPUT, {{OF_PORT_ALL, 0, 0}}, Mp(0, 0)));
  const auto copies = [&](std::initializer_list<PortIndex> members) {
    std::size_t sum = 0;
    for (const PortIndex port : members) {
      sum += cable(port).waiting();
      cable(port).clear();
    }
    return sum;
  };
  for (unsigned n = 10; n < 30; ++n) {
    const std::string frame = "02:00:00:00:00:" + std::to_string(n) + " b";
    in(0, frame);
    EXPECT_TRUE(copies({1, 2, 3}) == 1 && copies({4, 5}) == 1);
    in(2, frame);  // nothing back into its own LAG
    EXPECT_TRUE(copies({1, 2, 3}) == 0 && copies({4, 5}) == 1 && copies({0}) == 1);
  }
  ok(sdk.set_port_link_state(mp(4), PHY_STATE_DOWN));
  in(0, "a b");
  EXPECT_TRUE(copies({1, 2, 3}) == 1 && copies({5}) == 1);
  ok(sdk.delete_lag(y));
}

// effect: delete_ports_from_lag - the port is one of its own again
// effect: delete_lag - the members are ports of their own again
TEST_F(LagForwardingTest, MembersBecomePortsAgain) {
  std::list<Mp> one = mps({3});
  ok(sdk.delete_ports_from_lag(x, one));
  in(1, "b all");
  skip({0, 3, 4, 5});
  lag_psc_t psc = LAG_PSC_SRC_MAC;
  ok(sdk.get_lag_balancing_strategy(x, psc));
  ok(sdk.delete_lag(x));
  EXPECT_FALSE(sdk.get_lag_balancing_strategy(x, psc));
  in(1, "b all");
  skip({0, 2, 3, 4, 5});
}

// A static address on a port that is, or becomes, a member is the LAG's while the port is one.
TEST_F(LagForwardingTest, StaticAddressOfAMemberIsTheLags) {
  ok(sdk.add_mac_to_port(mp(2), mac('b'), 1, false));
  ok(sdk.add_mac_to_port(mp(4), mac('e'), 1, false));
  const unsigned y = lag({4, 5});
  std::set<PortIndex> members;
  for (unsigned n = 10; n < 40; ++n) {
    members.insert(way("02:00:00:00:00:" + std::to_string(n) + " b"));
    members.insert(way("02:00:00:00:00:" + std::to_string(n) + " e"));
  }
  EXPECT_EQ(members, (std::set<PortIndex>{1, 2, 3, 4, 5}));
  counted();
  in(1, "c b");  // never back into the LAG
  in(5, "f e");
  EXPECT_EQ(counted(), "1 in in-discards !same-port; 5 in in-discards !same-port");
  ok(sdk.set_port_link_state(mp(2), PHY_STATE_DOWN));
  ok(sdk.set_port_link_state(mp(4), PHY_STATE_DOWN));
  EXPECT_TRUE(way("a b") == 1 || way("a b") == 3);
  EXPECT_EQ(way("a e"), 5);
  const FdbEntry* entry = card.tables().fdb.find(1, MacAddress::from_bytes(mac('b')));
  EXPECT_EQ(entry->destination(), Destination::port(2)) << "it reads as it was set";

  ok(sdk.set_port_mac_lock(mp(1), true));  // known at one member is known at all
  in(1, "b a");
  out(0, "b a");
  EXPECT_EQ(card.tables().fdb.find(1, MacAddress::from_bytes(mac('b')))->hit(), true);
  ok(sdk.set_port_link_state(mp(4), PHY_STATE_UP));
  ok(sdk.delete_lag(y));
  EXPECT_EQ(way("a e"), 4);
  in(5, "f e");
  out(4, "f e");
}

// The CPU is no port, and so no member of the LAG that port 0 is in.
TEST_F(LagForwardingTest, SystemAddressBesideALagOfTheFirstPort) {
  lag({0, 4});
  ok(sdk.add_system_mac(mac('s'), 1));
  in(1, "b s");
  cpu(RX_REASON_SYSTEM_MAC, "b s");
}

TEST_F(LagForwardingTest, BetweenTwoLags) {
  const unsigned y = lag({4, 5});
  ok(sdk.add_mac_to_port(Mp(0, y), mac('y'), 1, true));
  in(2, "b y");
  const std::size_t sent = cable(4).waiting() + cable(5).waiting();
  EXPECT_EQ(sent, 1u);
  cable(4).clear();
  cable(5).clear();
  ok(sdk.clear_fdb_by_port(Mp(0, y), true, true));
  ok(sdk.set_system_mac_limit(Mp(0, y), 1, PORT_KIND_LAG));
  in(4, "y y");
  in(5, "z z");
  EXPECT_EQ(card.tables().fdb.learned_on(Destination::lag(static_cast<std::uint16_t>(y))), 1u);
  for (const PortIndex port : card.tables().ports.all()) cable(port).clear();
}

}  // namespace
}  // namespace softcard
