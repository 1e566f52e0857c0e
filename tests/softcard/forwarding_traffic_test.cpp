// SPDX-License-Identifier: Apache-2.0
//
// What ports let in and out: discarding, storm limits, flood blocking, mirrors, unknown unicast to
// the CPU, layer 2 off, egress off.
//
//      a    b    c    d
//      |    |    |    |      VLAN 10: 0, 1, 2, 3 untagged; 4 mirrors
//    +-0----1----2----3-+
//    +------------------+

#include "tests/softcard/switch_fixture.h"

namespace softcard {
namespace {

class TrafficTest : public SwitchTest {
 protected:
  static CardDescription with_addresses() {
    CardDescription description = eight_ports();
    for (PortDescription& port : description.ports) port.mac.bytes = {2, 0, 0, 0, 0, 7};
    return description;
  }
  TrafficTest() : SwitchTest(with_addresses()) {
    vlan(10, {}, mps({0, 1, 2, 3}));
    for (PortIndex port = 0; port < 4; ++port) {
      ok(sdk.set_port_flood_blocking_cpu(mp(port), FLOOD_BLOCK_ALL));
    }
    ok(sdk.add_mac_to_port(mp(1), mac('b'), 10, false));
  }
  // How many of `count` frames from port 0 get out of port 1.
  std::size_t passed(const std::string& words, unsigned count) {
    for (unsigned i = 0; i < count; ++i) in(0, words);
    const std::size_t sent = cable(1).waiting();
    for (PortIndex port = 1; port < 4; ++port) cable(port).clear();
    return sent;
  }
};

// effect: set_port_ingress_discarding - untagged, tagged or all frames are dropped as they come in
TEST_F(TrafficTest, IngressDiscarding) {
  vlan(10, mps({1}), {});
  const struct {
    ingress_discard_type_t type;
    unsigned untagged, tagged;
  } kRows[] = {{INGRESS_DISCARD_NONE, 1, 1},
               {INGRESS_DISCARD_UNTAGGED, 0, 1},
               {INGRESS_DISCARD_TAGGED, 1, 0},
               {INGRESS_DISCARD_ALL, 0, 0}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.type);
    ok(sdk.set_port_ingress_discarding(mp(0), row.type));
    ingress_discard_type_t type = INGRESS_DISCARD_NONE;
    ok(sdk.get_port_ingress_discarding(mp(0), type));
    EXPECT_EQ(type, row.type);
    EXPECT_EQ(passed("a b", 1), row.untagged);
    EXPECT_EQ(passed("a b vlan=0", 1), row.untagged);
    EXPECT_EQ(passed("a b vlan=10", 1), row.tagged);
  }
  EXPECT_EQ(drops(0, DropReason::ingress_discard), 6u);
}

// effect: set_port_egress_admin_state - off: the port receives and sends nothing
TEST_F(TrafficTest, EgressOff) {
  ok(sdk.set_port_egress_admin_state(mp(1), false));
  in(0, "a b");
  in(0, "a all");
  skip({2, 3});
  EXPECT_EQ(stat(1, STAT_OUT_DISCARDS), 2u);
  EXPECT_EQ(drops(1, DropReason::egress_state), 2u);
  in(1, "b a");
  out(0, "b a");
  bool on = true;
  ok(sdk.get_port_egress_admin_state(mp(1), on));
  EXPECT_FALSE(on);
}

// effect: set_port_l2_enable - off: neither forwards by the FDB nor is forwarded to
TEST_F(TrafficTest, Layer2Off) {
  ok(sdk.set_port_l2_enable(mp(1), false));
  in(0, "a b");
  EXPECT_EQ(drops(1, DropReason::egress_l2_disabled), 1u);
  in(0, "a all");
  skip({2, 3});
  in(1, "x all");
  EXPECT_EQ(drops(1, DropReason::l2_disabled), 1u);
  EXPECT_EQ(card.tables().fdb.find(10, MacAddress::from_bytes(mac('x'))), nullptr);
  ok(sdk.set_port_flood_blocking_cpu(mp(1), FLOOD_BLOCK_NONE));
  in(1, "x all");
  cpu(RX_REASON_FLOOD, "x all");
}

TEST_F(TrafficTest, Layer2OffStillReachesTheCpu) {
  ok(sdk.set_port_l2_enable(mp(1), false));
  ok(sdk.set_port_flood_blocking_cpu(mp(1), FLOOD_BLOCK_NONE));
  ok(sdk.add_system_mac(mac('s'), 10));
  ok(sdk.add_mac_to_port(mp(2), mac('c'), 10, false));
  counted();
  const struct {
    const char* frame;
    unsigned to_cpu;  // 0: the CPU gets nothing
    const char* counted;
  } kRows[] = {{"b s", RX_REASON_SYSTEM_MAC, "1 in"},
               {"b x", 0, "1 in in-discards !l2-disabled"},
               {"b c", 0, "1 in in-discards !l2-disabled"},
               {"b all", RX_REASON_FLOOD, "1 in-broadcast in-discards !l2-disabled"}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.frame);
    in(1, row.frame);
    if (row.to_cpu != 0) cpu(row.to_cpu, row.frame);
    EXPECT_EQ(counted(), row.counted);
  }
  ok(sdk.set_port_switch_unknown_unicast_to_cpu(mp(1), true));
  in(1, "b x");
  cpu(RX_REASON_UNKNOWN_UNICAST, "b x");
  ok(sdk.set_port_flood_blocking_cpu(mp(1), FLOOD_BLOCK_UNKNOWN_UNICAST));
  in(1, "b x");
}

// ---- Storm control ------------------------------------------------------------------------------

// effect: set_port_broadcast_control - broadcasts beyond the rate are dropped
// effect: set_port_multicast_control - multicasts beyond the rate are dropped
// effect: set_port_unicast_control - unknown unicasts beyond the rate are dropped, known ones pass
TEST_F(TrafficTest, StormLimitsByKind) {
  ok(sdk.set_port_broadcast_control(mp(0), 10));
  ok(sdk.set_port_multicast_control(mp(0), 20));
  ok(sdk.set_port_unicast_control(mp(0), 30));
  unsigned rates[3] = {};
  ok(sdk.get_port_broadcast_control(mp(0), rates[0]));
  ok(sdk.get_port_multicast_control(mp(0), rates[1]));
  ok(sdk.get_port_unicast_control(mp(0), rates[2]));
  EXPECT_TRUE(rates[0] == 10 && rates[1] == 20 && rates[2] == 30);
  EXPECT_EQ(passed("a all", 50), 10u);
  EXPECT_EQ(passed("a 01:00:5e:00:00:05", 50), 20u);
  EXPECT_EQ(passed("a x", 50), 30u);
  EXPECT_EQ(passed("a b", 50), 50u);
  EXPECT_EQ(drops(0, DropReason::storm_broadcast), 40u);
  EXPECT_EQ(drops(0, DropReason::storm_multicast), 30u);
  EXPECT_EQ(drops(0, DropReason::storm_unicast), 20u);
  EXPECT_EQ(stat(0, STAT_IN_STORM_DISCARDS), 90u);
  warp(0.5);
  EXPECT_EQ(passed("a all", 50), 5u);
  warp(7);
  EXPECT_EQ(passed("a all", 50), 10u);            // one second's worth at most
  ok(sdk.set_port_broadcast_control(mp(0), 20));  // another rate holds from now on
  EXPECT_EQ(passed("a all", 50), 20u);
  ok(sdk.set_port_broadcast_control(mp(0), 0));
  EXPECT_EQ(passed("a all", 50), 50u);
}

// effect: set_port_flow_control_8023x - pause frames are counted, and sent against a storm
// effect: get_port_flow_control_8023x - tells which
TEST_F(TrafficTest, PauseFrames) {
  const std::string pause = "b 01:80:c2:00:00:01 type=0x8808 payload=0001ffff size=60";
  in(0, pause);
  EXPECT_EQ(stat(0, STAT_IN_PAUSE_FRAMES), 0u);
  ok(sdk.set_port_flow_control_8023x(mp(0), true, true));
  unsigned receive = 0, transmit = 0;
  ok(sdk.get_port_flow_control_8023x(mp(0), receive, transmit));
  EXPECT_TRUE(receive == 1 && transmit == 1);
  in(0, pause);
  EXPECT_EQ(stat(0, STAT_IN_PAUSE_FRAMES), 1u);
  EXPECT_EQ(drops(0, DropReason::pause), 2u);

  ok(sdk.set_port_broadcast_control(mp(0), 1));
  EXPECT_EQ(passed("a all", 5), 1u);
  out(0, "02:00:00:00:00:07 01:80:c2:00:00:01 type=0x8808 payload=0001ffff" + std::string(84, '0'));
  EXPECT_EQ(stat(0, STAT_OUT_PAUSE_FRAMES), 1u);  // one holds for 33 milliseconds
  warp(0.04);
  EXPECT_EQ(passed("a all", 5), 0u);
  EXPECT_EQ(stat(0, STAT_OUT_PAUSE_FRAMES), 2u);
  skip({0});
}

// effect: set_port_jaming_control - a half-duplex port jams what is above its storm limit
TEST_F(TrafficTest, Jamming) {
  ok(sdk.set_port_duplex(mp(0), DUPLEX_TYPE_HALF));
  ok(sdk.set_port_broadcast_control(mp(0), 1));
  EXPECT_EQ(passed("a all", 3), 1u);
  EXPECT_EQ(stat(0, STAT_OUT_JAMS), 0u);
  ok(sdk.set_port_jaming_control(mp(0), true));
  bool on = false;
  ok(sdk.get_port_jaming_control(mp(0), on));
  EXPECT_TRUE(on);
  EXPECT_EQ(passed("a all", 3), 0u);
  EXPECT_EQ(stat(0, STAT_OUT_JAMS), 3u);
}

// ---- Floods -------------------------------------------------------------------------------------

// effect: set_port_flood_blocking - floods of the kinds from one port do not leave the other
TEST_F(TrafficTest, FloodBlockingByPairAndKind) {
  const struct {
    flood_block_type_t kind;
    const char* frame;
  } kRows[] = {{FLOOD_BLOCK_UNKNOWN_UNICAST, "a x"},
               {FLOOD_BLOCK_MULTICAST, "a 01:00:5e:00:00:05"},
               {FLOOD_BLOCK_BROADCAST, "a all"}};
  for (const auto& row : kRows) {
    ok(sdk.set_port_flood_blocking(mp(0), mp(1), row.kind));
    flood_block_type_t kind = FLOOD_BLOCK_NONE;
    ok(sdk.get_port_flood_blocking(mp(0), mp(1), kind));
    EXPECT_EQ(kind, row.kind);
    for (const auto& other : kRows) {
      in(0, other.frame);
      skip({2, 3});
      if (&other != &row) out(1, other.frame);
    }
    in(2, std::string("c") + (row.frame + 1));  // from another port all pass
    skip({0, 1, 3});
  }
  EXPECT_EQ(drops(1, DropReason::flood_blocked), 3u);
  in(0, "a b");  // known unicast is no flood
  out(1, "a b");
}

// effect: set_port_flood_blocking_cpu - the CPU gets no copy of such floods
TEST_F(TrafficTest, FloodBlockingToTheCpu) {
  ok(sdk.set_port_flood_blocking_cpu(mp(0), FLOOD_BLOCK_MULTICAST));
  flood_block_type_t kind = FLOOD_BLOCK_NONE;
  ok(sdk.get_port_flood_blocking_cpu(mp(0), kind));
  EXPECT_EQ(kind, FLOOD_BLOCK_MULTICAST);
  in(0, "a 01:00:5e:00:00:05");
  in(0, "a all payload=05");
  skip({1, 2, 3}, 2);
  EXPECT_EQ(cpu(RX_REASON_FLOOD, "a all payload=05").vlan, 10u);
}

// effect: set_port_switch_unknown_unicast_to_cpu - the CPU gets a copy, besides the flood
// effect: set_switch_unknown_unicast_to_cpu - the same from every port
TEST_F(TrafficTest, UnknownUnicastToTheCpu) {
  for (const PortIndex port : {PortIndex{0}, PortIndex{2}}) {
    ok(sdk.set_port_flood_blocking_cpu(mp(port), FLOOD_BLOCK_NONE));
  }
  const auto send_both = [&] {
    in(0, "a x");
    in(2, "c x");
    skip({1, 3}, 2);
    skip({0, 2});
  };
  bool on = false;
  ok(sdk.set_port_switch_unknown_unicast_to_cpu(mp(0), true));
  ok(sdk.get_port_switch_unknown_unicast_to_cpu(mp(0), on));
  EXPECT_TRUE(on);
  send_both();
  cpu(RX_REASON_UNKNOWN_UNICAST, "a x");
  ok(sdk.set_port_switch_unknown_unicast_to_cpu(mp(0), false));
  ok(sdk.set_switch_unknown_unicast_to_cpu(true));
  on = false;
  ok(sdk.get_switch_unknown_unicast_to_cpu(on));
  EXPECT_TRUE(on);
  send_both();
  cpu(RX_REASON_UNKNOWN_UNICAST, "a x");
  cpu(RX_REASON_UNKNOWN_UNICAST, "c x");
}

// ---- Mirrors ------------------------------------------------------------------------------------

// effect: set_port_mirror - copies of what came in, of what went out, or of both
// effect: get_port_mirror - tells where to
TEST_F(TrafficTest, MirrorByType) {
  vlan(10, mps({1}), {});
  const struct {
    mirror_type_t type;
    bool ingress, egress;
  } kRows[] = {{MIRROR_TYPE_INGRESS, true, false},
               {MIRROR_TYPE_EGRESS, false, true},
               {MIRROR_TYPE_BOTH, true, true},
               {MIRROR_TYPE_NONE, false, false}};
  in(0, "a a");
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.type);
    ok(sdk.set_port_mirror(mp(4), mp(1), row.type));
    Mp to(0, 0);
    mirror_type_t type = MIRROR_TYPE_NONE;
    EXPECT_EQ(sdk.get_port_mirror(to, mp(1), type), row.type != MIRROR_TYPE_NONE);
    EXPECT_TRUE(row.type == MIRROR_TYPE_NONE || (to == mp(4) && type == row.type));
    in(1, "b a vlan=10 prio=2");
    out(0, "b a untagged");
    if (row.ingress) out(4, "b a vlan=10 prio=2");
    in(0, "a b");
    out(1, "a b vlan=10");
    if (row.egress) out(4, "a b vlan=10");
  }
  ok(sdk.set_port_mirror(mp(4), mp(1), MIRROR_TYPE_INGRESS));
  ok(sdk.set_port_ingress_discarding(mp(1), INGRESS_DISCARD_ALL));
  in(1, "b a vlan=10");  // dropped, and seen all the same
  out(4, "b a vlan=10");
}

// A mirror-to port that sends nothing gets no copy; the frames themselves go on.
TEST_F(TrafficTest, MirrorToAPortThatCannotSend) {
  ok(sdk.set_port_mirror(mp(4), mp(1), MIRROR_TYPE_BOTH));
  ok(sdk.set_port_egress_admin_state(mp(4), false));
  in(0, "a b");
  in(1, "b a");
  EXPECT_EQ(drops(4, DropReason::egress_state), 2u);
  ok(sdk.set_port_egress_admin_state(mp(4), true));
  ok(sdk.set_port_state(mp(4), false));
  in(0, "a b");
  in(1, "b a");
  EXPECT_EQ(drops(4, DropReason::egress_down), 2u);
  skip({0, 1}, 2);
}

}  // namespace
}  // namespace softcard
