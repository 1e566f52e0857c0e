// SPDX-License-Identifier: Apache-2.0
//
// Where frames are counted: one row a way that a frame can go or be dropped, with every counter and
// drop of every port that it changes. Nothing else may change.
//
//      a    b    c    d
//      |    |    |    |      VLAN 10: 0, 1, 2 untagged, 3 tagged; b, c, d known there
//    +-0----1----2----3-+    VLAN 20: 4 untagged; router interfaces r (10) and s (20)
//    +------------------+    the CPU's queue is full

#include <ostream>

#include "tests/softcard/switch_fixture.h"

namespace softcard {
namespace {

constexpr char kPing[] = "a r ipv4 src=192.0.2.1 dst=198.51.100.1 ttl=9 icmp type=8";
constexpr unsigned kPinged = 0xc6336401;

class CountersTest;

struct CountersRow {
  const char* name;
  void (*set_up)(CountersTest& test);
  const char* frame;  // comes in at port 0
  const char* counted;
};
void PrintTo(const CountersRow& row, std::ostream* out) { *out << row.name; }

class CountersTest : public SwitchTest, public ::testing::WithParamInterface<CountersRow> {
 public:
  CountersTest() {
    vlan(10, mps({3}), mps({0, 1, 2}));
    vlan(20, {}, mps({4}));
    for (const char station : {'b', 'c', 'd'}) {
      ok(sdk.add_mac_to_port(mp(static_cast<PortIndex>(station - 'a')), mac(station), 10, false));
    }
    ok(sdk.create_l3_interface(mac('r'), 10, r));
    ok(sdk.create_l3_interface(mac('s'), 20, s));
    card.events().set_room(LCMGR_REPORT_RX_PACKET, 0);
  }
  void TearDown() override {
    for (const PortIndex port : card.tables().ports.all()) {
      if (card.cable(port) != nullptr) cable(port).clear();
    }
    SwitchTest::TearDown();
  }
  // A flow that takes every frame and does these things with it.
  void flow(std::initializer_list<unsigned> outputs) {
    const unsigned id = flow_of_all_frames();
    for (const unsigned port : outputs) {
      const bool physical = port >= OF_PORT_FIRST_PHYSICAL;
      ok(sdk.add_of_flow_action(
          id, OF_ACTION_OUTPUT, {{port, 0, 0}},
          physical ? mp(static_cast<PortIndex>(port - OF_PORT_FIRST_PHYSICAL)) : Mp(0, 0)));
    }
  }
  unsigned r = 0, s = 0;
};

TEST_P(CountersTest, CountsThatAndNothingElse) {
  const CountersRow& row = GetParam();
  row.set_up(*this);
  for (const PortIndex port : card.tables().ports.all()) cable(port).clear();
  counted();
  in(0, row.frame[0] == '\0' ? std::vector<std::uint8_t>(13) : bytes_of(row.frame));
  EXPECT_EQ(counted(), row.counted);
}

using Test = CountersTest;
const CountersRow kWays[] = {
    {"unicast", [](Test&) {}, "a b", "0 in; 1 out q0"},
    {"multicast", [](Test&) {}, "a 01:00:5e:00:00:05",
     "0 in-multicast; 1 out-multicast q0; 2 out-multicast q0; 3 out-multicast q0"},
    {"broadcast", [](Test&) {}, "a all",
     "0 in-broadcast; 1 out-broadcast q0; 2 out-broadcast q0; 3 out-broadcast q0"},
    {"unknown", [](Test&) {}, "a x", "0 in; 1 out q0; 2 out q0; 3 out q0"},
    {"routed",
     [](Test& t) { t.ok(t.sdk.add_l3_host_ip4(t.mp(4), false, kPinged, t.mac('e'), t.s)); }, kPing,
     "0 in; 4 out q0"},
    {"routed at the MTU",
     [](Test& t) {
       t.ok(t.sdk.add_l3_host_ip4(t.mp(4), false, kPinged, t.mac('e'), t.s));
       t.ok(t.sdk.set_port_mtu(t.mp(4), 64));
     },
     "a r vlan=10 ipv4 src=192.0.2.1 dst=198.51.100.1 size=68", "0 in; 4 out q0"},
    {"queue by tag", [](Test& t) { t.ok(t.sdk.set_port_cos_mapping(t.mp(1), 6, 2)); },
     "a b vlan=10 prio=6", "0 in; 1 out q2"},
    {"flow of two outputs",
     [](Test& t) {
       t.flow({OF_PORT_FIRST_PHYSICAL + 1, OF_PORT_FIRST_PHYSICAL + 5});
     },
     "a b", "0 in; 1 out q0; 5 out q0"},
    {"flow of an output and nowhere",
     [](Test& t) {
       t.flow({OF_PORT_FIRST_PHYSICAL + 1, OF_PORT_DROP});
     },
     "a b", "0 in; 1 out q0"},
    {"flow back", [](Test& t) { t.flow({OF_PORT_IN_PORT}); }, "a b", "0 in out q0"},
    {"mirrored in",
     [](Test& t) { t.ok(t.sdk.set_port_mirror(t.mp(6), t.mp(0), MIRROR_TYPE_INGRESS)); }, "a b",
     "0 in; 1 out q0; 6 out q0"},
    {"mirrored out",
     [](Test& t) { t.ok(t.sdk.set_port_mirror(t.mp(6), t.mp(3), MIRROR_TYPE_EGRESS)); }, "a d",
     "0 in; 3 out q0; 6 out q0"},
    {"mirrored out with its priority",
     [](Test& t) { t.ok(t.sdk.set_port_mirror(t.mp(6), t.mp(3), MIRROR_TYPE_EGRESS)); },
     "a d vlan=10 prio=5", "0 in; 3 out q5; 6 out q5"},
    {"counters off", [](Test& t) { t.ok(t.sdk.set_port_stat_enable(t.mp(0), false)); }, "a b",
     "1 out q0"},
};
const CountersRow kIngressDrops[] = {
    {"runt", [](Test&) {}, "", "0 in-errors undersize !runt"},
    {"malformed", [](Test&) {}, "a b type=0x100 payload=01", "0 in-errors !malformed"},
    {"oversize", [](Test&) {}, "a b size=1515", "0 in-errors oversize !oversize"},
    {"link down", [](Test& t) { t.ok(t.sdk.set_port_state(t.mp(0), false)); }, "a b",
     "0 !link-down"},
    {"pause, not honoured", [](Test&) {}, "a 01:80:c2:00:00:01 type=0x8808 payload=0001ffff",
     "0 !pause"},
    {"pause, honoured",
     [](Test& t) { t.ok(t.sdk.set_port_flow_control_8023x(t.mp(0), true, false)); },
     "a 01:80:c2:00:00:01 type=0x8808 payload=0001ffff", "0 in-pause !pause"},
    {"discarding",
     [](Test& t) { t.ok(t.sdk.set_port_ingress_discarding(t.mp(0), INGRESS_DISCARD_ALL)); }, "a b",
     "0 in in-discards !ingress-discard"},
    {"tagged only", [](Test& t) { t.ok(t.sdk.set_port_vlan_accept_frame(t.mp(0), false)); }, "a b",
     "0 in in-discards in-vlan !accept-frame"},
    {"no VLAN", [](Test&) {}, "a b vlan=99", "0 in in-discards in-vlan !no-vlan"},
    {"no member", [](Test&) {}, "a b vlan=20", "0 in in-discards in-vlan !not-member"},
    {"spanning tree", [](Test& t) { t.ok(t.sdk.set_port_stp_state(t.mp(0), STP_STATE_BLOCKING)); },
     "a b", "0 in in-discards in-stp !stp-ingress"},
    {"spanning tree disabled",
     [](Test& t) { t.ok(t.sdk.set_port_stp_state(t.mp(0), STP_STATE_DISABLED)); },
     "a 01:80:c2:00:00:00", "0 in-multicast in-discards in-stp !stp-ingress"},
    {"lock", [](Test& t) { t.ok(t.sdk.set_port_mac_lock(t.mp(0), true)); }, "a b",
     "0 in in-discards in-lock !mac-lock"},
    {"reserved, no room", [](Test&) {}, "a 01:80:c2:00:00:02",
     "0 in-multicast in-discards !cpu-queue"},
    {"filter, no room", [](Test& t) { t.ok(t.sdk.add_ip_protocol_filter(89)); },
     "a b ipv4 src=192.0.2.1 dst=192.0.2.2 proto=89", "0 in in-discards !cpu-queue"},
    {"system MAC, no room", [](Test& t) { t.ok(t.sdk.add_system_mac(t.mac('b'), 10)); }, "a b",
     "0 in in-discards !cpu-queue"},
    {"flow to the CPU, no room", [](Test& t) { t.flow({OF_PORT_CONTROLLER}); }, "a b",
     "0 in in-discards !cpu-queue"},
    {"no flow", [](Test& t) { t.ok(t.sdk.set_switch_forward_mode(SWITCH_FORWARD_MODE_FLOW)); },
     "a b", "0 in in-discards !flow-miss"},
    {"flow without output", [](Test& t) { t.flow({}); }, "a b", "0 in in-discards !flow-drop"},
    {"flow to the ingress port", [](Test& t) { t.flow({OF_PORT_FIRST_PHYSICAL}); }, "a b",
     "0 in in-discards !same-port"},
    {"layer 2 off", [](Test& t) { t.ok(t.sdk.set_port_l2_enable(t.mp(0), false)); }, "a b",
     "0 in in-discards !l2-disabled"},
    {"same port", [](Test& t) { t.ok(t.sdk.add_mac_to_port(t.mp(0), t.mac('x'), 10, false)); },
     "a x", "0 in in-discards !same-port"},
    {"nowhere to flood",
     [](Test& t) {
       std::list<Mp> others = t.mps({1, 2, 3});
       t.ok(t.sdk.delete_ports_from_vlan(10, others));
     },
     "a all", "0 in-broadcast in-discards !flood-nowhere"},
    {"empty LAG",
     [](Test& t) { t.ok(t.sdk.add_mac_to_port(Mp(0, t.lag({})), t.mac('x'), 10, true)); }, "a x",
     "0 in in-discards !lag-empty"},
};
const CountersRow kRouterDrops[] = {
    {"damaged", [](Test&) {}, "a r ipv4 src=192.0.2.1 dst=198.51.100.1 checksum=0x1234",
     "0 in in-discards !bad-ip"},
    {"own, no room", [](Test&) {}, "a r arp spa=192.0.2.1 tpa=192.0.2.2",
     "0 in in-discards !router-local"},
    {"options, no room", [](Test&) {}, "a r ipv4 src=192.0.2.1 dst=198.51.100.1 options=94040000",
     "0 in in-discards !router-local"},
    {"link-local, no room", [](Test&) {}, "a r ipv4 src=192.0.2.1 dst=169.254.0.1",
     "0 in in-discards !router-local"},
    {"martian", [](Test&) {}, "a r ipv4 src=127.0.0.1 dst=198.51.100.1",
     "0 in in-discards !martian"},
    {"TTL, no room", [](Test&) {}, "a r ipv4 src=192.0.2.1 dst=198.51.100.1 ttl=1",
     "0 in in-discards !ttl"},
    {"no route, no room", [](Test&) {}, kPing, "0 in in-discards !no-route"},
    {"no interface",
     [](Test& t) {
       t.ok(t.sdk.add_l3_host_ip4(t.mp(4), false, kPinged, t.mac('e'), t.s));
       t.ok(t.card.tables().l3.interfaces.remove(t.s));
     },
     kPing, "0 in in-discards !no-interface"},
    {"MTU of the way out, no room",
     [](Test& t) {
       t.ok(t.sdk.add_l3_host_ip4(t.mp(4), false, kPinged, t.mac('e'), t.s));
       t.ok(t.sdk.set_port_mtu(t.mp(4), 64));
     },
     "a r ipv4 src=192.0.2.1 dst=198.51.100.1 size=65", "0 in in-discards !router-mtu"},
    {"empty LAG",
     [](Test& t) { t.ok(t.sdk.add_l3_host_ip4(Mp(0, t.lag({})), true, kPinged, t.mac('e'), t.s)); },
     kPing, "0 in in-discards !lag-empty"},
    {"not in the VLAN of the way out",
     [](Test& t) { t.ok(t.sdk.add_l3_host_ip4(t.mp(5), false, kPinged, t.mac('e'), t.s)); }, kPing,
     "0 in; 5 out-discards !egress-not-member"},
};
const CountersRow kEgressDrops[] = {
    {"no link", [](Test& t) { t.ok(t.sdk.set_port_state(t.mp(1), false)); }, "a b",
     "0 in; 1 out-discards !egress-down"},
    {"egress off", [](Test& t) { t.ok(t.sdk.set_port_egress_admin_state(t.mp(1), false)); }, "a b",
     "0 in; 1 out-discards !egress-state"},
    {"no member", [](Test& t) { t.ok(t.sdk.add_mac_to_port(t.mp(4), t.mac('x'), 10, false)); },
     "a x", "0 in; 4 out-discards !egress-not-member"},
    {"layer 2 off", [](Test& t) { t.ok(t.sdk.set_port_l2_enable(t.mp(1), false)); }, "a b",
     "0 in; 1 out-discards !egress-l2-disabled"},
    {"spanning tree", [](Test& t) { t.ok(t.sdk.set_port_stp_state(t.mp(1), STP_STATE_BLOCKING)); },
     "a b", "0 in; 1 out-discards !stp-egress"},
    {"MTU", [](Test& t) { t.ok(t.sdk.set_port_mtu(t.mp(1), 64)); }, "a b size=65",
     "0 in; 1 out-discards !egress-mtu"},
    {"flood, egress off at one",
     [](Test& t) { t.ok(t.sdk.set_port_egress_admin_state(t.mp(1), false)); }, "a all",
     "0 in-broadcast; 1 out-discards !egress-state; 2 out-broadcast q0; 3 out-broadcast q0"},
    {"flood, layer 2 off at one", [](Test& t) { t.ok(t.sdk.set_port_l2_enable(t.mp(2), false)); },
     "a all",
     "0 in-broadcast; 1 out-broadcast q0; 2 out-discards !egress-l2-disabled; "
     "3 out-broadcast q0"},
    {"flood, spanning tree at one",
     [](Test& t) { t.ok(t.sdk.set_port_stp_state(t.mp(3), STP_STATE_LEARNING)); }, "a all",
     "0 in-broadcast; 1 out-broadcast q0; 2 out-broadcast q0; 3 out-discards !stp-egress"},
    {"flood, MTU of one", [](Test& t) { t.ok(t.sdk.set_port_mtu(t.mp(1), 64)); }, "a all size=65",
     "0 in-broadcast; 1 out-discards !egress-mtu; 2 out-broadcast q0; 3 out-broadcast q0"},
    {"flood, no link at one", [](Test& t) { t.ok(t.sdk.set_port_state(t.mp(1), false)); }, "a all",
     "0 in-broadcast; 2 out-broadcast q0; 3 out-broadcast q0"},
    {"flood blocked at all",
     [](Test& t) {
       for (const PortIndex port : {PortIndex{1}, PortIndex{2}, PortIndex{3}}) {
         t.ok(t.sdk.set_port_flood_blocking(t.mp(0), t.mp(port), FLOOD_BLOCK_ALL));
       }
     },
     "a all",
     "0 in-broadcast in-discards !flood-nowhere; 1 out-discards !flood-blocked; "
     "2 out-discards !flood-blocked; 3 out-discards !flood-blocked"},
    {"flow, no link",
     [](Test& t) {
       t.flow({OF_PORT_FIRST_PHYSICAL + 5});
       t.ok(t.sdk.set_port_state(t.mp(5), false));
     },
     "a b", "0 in; 5 out-discards !egress-down"},
    {"mirror, no link",
     [](Test& t) {
       t.ok(t.sdk.set_port_mirror(t.mp(6), t.mp(0), MIRROR_TYPE_INGRESS));
       t.ok(t.sdk.set_port_state(t.mp(6), false));
     },
     "a b", "0 in; 1 out q0; 6 out-discards !egress-down"},
    {"mirror, egress off",
     [](Test& t) {
       t.ok(t.sdk.set_port_mirror(t.mp(6), t.mp(1), MIRROR_TYPE_EGRESS));
       t.ok(t.sdk.set_port_egress_admin_state(t.mp(6), false));
     },
     "a b", "0 in; 1 out q0; 6 out-discards !egress-state"},
    {"mirror, MTU",
     [](Test& t) {
       t.ok(t.sdk.set_port_mirror(t.mp(6), t.mp(0), MIRROR_TYPE_INGRESS));
       t.ok(t.sdk.set_port_mtu(t.mp(6), 64));
     },
     "a b vlan=10 size=69", "0 in; 1 out q0; 6 out-discards !egress-mtu"},
    {"mirror, MTU kept",
     [](Test& t) {
       t.ok(t.sdk.set_port_mirror(t.mp(6), t.mp(0), MIRROR_TYPE_INGRESS));
       t.ok(t.sdk.set_port_mtu(t.mp(6), 64));
     },
     "a b vlan=10 size=68", "0 in; 1 out q0; 6 out q0"},
    {"mirrors of a frame that is dropped",
     [](Test& t) {
       t.ok(t.sdk.set_port_mirror(t.mp(6), t.mp(0), MIRROR_TYPE_BOTH));
       t.ok(t.sdk.set_port_ingress_discarding(t.mp(0), INGRESS_DISCARD_ALL));
     },
     "a b", "0 in in-discards !ingress-discard; 6 out q0"},
};
INSTANTIATE_TEST_SUITE_P(Ways, CountersTest, ::testing::ValuesIn(kWays));
INSTANTIATE_TEST_SUITE_P(In, CountersTest, ::testing::ValuesIn(kIngressDrops));
INSTANTIATE_TEST_SUITE_P(Router, CountersTest, ::testing::ValuesIn(kRouterDrops));
INSTANTIATE_TEST_SUITE_P(Out, CountersTest, ::testing::ValuesIn(kEgressDrops));

// A limit of 3 lets 3 frames in at once, and each of its kind alone counts.
TEST_F(SwitchTest, StormCountersAtTheLimit) {
  vlan(10, {}, mps({0, 1}));
  ok(sdk.set_port_flood_blocking_cpu(mp(0), FLOOD_BLOCK_ALL));
  ok(sdk.set_port_broadcast_control(mp(0), 3));
  ok(sdk.set_port_multicast_control(mp(0), 3));
  ok(sdk.set_port_unicast_control(mp(0), 3));
  const struct {
    const char* frame;
    const char* kind;
  } kRows[] = {{"a all", "-broadcast"}, {"a 01:00:5e:00:00:05", "-multicast"}, {"a x", ""}};
  for (const auto& row : kRows) {
    const std::string kind = row.kind;
    for (int i = 0; i < 3; ++i) {
      in(0, row.frame);
      EXPECT_EQ(counted(), "0 in" + kind + "; 1 out" + kind + " q0");
    }
    in(0, row.frame);
    EXPECT_EQ(counted(),
              "0 in" + kind + " in-discards in-storm !storm" + (kind.empty() ? "-unicast" : kind));
  }
  skip({1}, 9);
}

}  // namespace
}  // namespace softcard
