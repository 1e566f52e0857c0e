// SPDX-License-Identifier: Apache-2.0
//
// The flow table at work: what flows match, what their actions do to frames, and how that goes
// together with the ordinary way.
//
//      a    b    c    d
//      |    |    |    |      VLAN 10: 0, 1, 2 untagged, 3 tagged; b is known at port 1
//    +-0----1----2----3-+
//    +------------------+

#include <cstring>

#include "softcard/frames/wire.h"
#include "tests/softcard/switch_fixture.h"

namespace softcard {
namespace {

constexpr char kUdp[] =
    "a b ipv4 src=192.0.2.1 dst=198.51.100.9 tos=8 udp sport=1000 dport=53 payload=deadbeef";
constexpr char kArp[] = "a all arp op=reply spa=192.0.2.1 tpa=198.51.100.9";
constexpr char kUdp6[] = "a b ipv6 src=2001:db8::1 dst=2001:db8::2 tc=8 udp sport=1000 dport=53";

class FlowForwardingTest : public SwitchTest {
 protected:
  FlowForwardingTest() {
    vlan(10, mps({3}), mps({0, 1, 2}));
    for (PortIndex port = 0; port < 4; ++port) {
      ok(sdk.set_port_flood_blocking_cpu(mp(port), FLOOD_BLOCK_ALL));
    }
    ok(sdk.add_mac_to_port(mp(1), mac('b'), 10, false));
  }

  static of_flow_mp_s flow(unsigned flags) {
    of_flow_mp_s flow;
    std::memset(&flow.match, 0xee, sizeof flow.match);  // what is not named must not matter
    flow.match.flags = flags;
    return flow;
  }
  unsigned add(of_flow_mp_s match, const of_flow_qualify_udf_s& udf = {}) {
    unsigned id = 0;
    ok(sdk.add_of_flow(match, id, udf));
    return id;
  }
  void act(unsigned id, of_action_t kind, unsigned word = 0, unsigned second = 0) {
    const bool port = kind == OF_ACTION_OUTPUT && word >= OF_PORT_FIRST_PHYSICAL;
    ok(sdk.add_of_flow_action(
        id, kind, {{word, second, 0}},
        port ? mp(static_cast<PortIndex>(word - OF_PORT_FIRST_PHYSICAL)) : Mp(0, 0)));
  }
  void output(unsigned id, unsigned port) {
    act(id, OF_ACTION_OUTPUT, OF_PORT_FIRST_PHYSICAL + port);
  }
  std::uint64_t packets(unsigned id) {
    unsigned long long count = 0;
    ok(sdk.get_of_flow_stat_counter64(id, count));
    return count;
  }
};

// effect: add_of_flow - takes matching frames from their ordinary way; without action it drops them
// effect: add_of_flow_action - an output sends them where it says
// effect: delete_of_flow - they go the ordinary way again
// effect: get_of_flow_stat_counter64 - counts the frames taken
// effect: get_of_flow_stat_counter32 - counts the frames taken
TEST_F(FlowForwardingTest, OverridesTheOrdinaryWay) {
  in(0, kUdp);
  out(1, kUdp);
  of_flow_mp_s match = flow(OF_MATCH_SRC_MAC);
  std::memcpy(match.match.src_mac, mac('a'), 6);
  const unsigned id = add(match);
  int priority = 0;
  ok(sdk.get_of_flow_priority(id, priority));
  EXPECT_EQ(priority, 32768);
  in(0, kUdp);
  EXPECT_EQ(drops(0, DropReason::flow_drop), 1u);
  output(id, 2);
  in(0, kUdp);
  out(2, kUdp);
  EXPECT_EQ(packets(id), 2u);
  unsigned low = 0;
  ok(sdk.get_of_flow_stat_counter32(id, low));
  EXPECT_EQ(low, 2u);
  in(1, "b x");
  skip({0, 2, 3});
  ok(sdk.delete_of_flow(id));
  in(0, kUdp);
  out(1, kUdp);
}

// Each field: a frame that agrees and one that does not.
TEST_F(FlowForwardingTest, EveryFieldOfTheMatch) {
  struct Row {
    const char* name;
    unsigned flag;
    void (*fill)(of_flow_mp_s& flow);
    const char* matches;
    const char* differs;
  };
  static const Row kRows[] = {
      {"in port", OF_MATCH_IN_PORT, [](of_flow_mp_s& f) { f.in_port = mp(0); }, kUdp, ""},
      {"source MAC", OF_MATCH_SRC_MAC,
       [](of_flow_mp_s& f) { std::memcpy(f.match.src_mac, mac('a'), 6); }, kUdp, "x b"},
      {"destination MAC", OF_MATCH_DST_MAC,
       [](of_flow_mp_s& f) { std::memcpy(f.match.dst_mac, mac('b'), 6); }, kUdp, "a all"},
      {"VLAN of the PVID", OF_MATCH_VLAN_ID, [](of_flow_mp_s& f) { f.match.vlan_id = 10; }, kUdp,
       "a b vlan=1"},
      {"VLAN of the tag", OF_MATCH_VLAN_ID, [](of_flow_mp_s& f) { f.match.vlan_id = 10; },
       "a b vlan=10", "a b vlan=1"},
      {"priority", OF_MATCH_VLAN_PRIORITY, [](of_flow_mp_s& f) { f.match.vlan_priority = 5; },
       "a b vlan=0 prio=5", kUdp},
      {"type", OF_MATCH_ETHER_TYPE, [](of_flow_mp_s& f) { f.match.ether_type = 0x0800; }, kUdp,
       kUdp6},
      {"type behind tags", OF_MATCH_ETHER_TYPE,
       [](of_flow_mp_s& f) { f.match.ether_type = 0x0800; },
       "a b vlan=10 vlan=7 ipv4 src=192.0.2.1 dst=192.0.2.2", "a b vlan=10 vlan=7"},
      {"source IP", OF_MATCH_SRC_IP,
       [](of_flow_mp_s& f) {
         f.match.src_ip = 0xc0000277;
         f.match.src_ip_mask = 0xffffff00;
       },
       kUdp, "a b ipv4 src=192.0.3.1 dst=198.51.100.9"},
      {"destination IP", OF_MATCH_DST_IP,
       [](of_flow_mp_s& f) {
         f.match.dst_ip = 0xc6336409;
         f.match.dst_ip_mask = 0xff0000ff;
       },
       kUdp, "a b ipv4 src=192.0.2.1 dst=198.51.100.8"},
      {"ARP target", OF_MATCH_DST_IP,
       [](of_flow_mp_s& f) {
         f.match.dst_ip = 0xc6336409;
         f.match.dst_ip_mask = ~0u;
       },
       kArp, "a all arp tpa=192.0.2.2"},
      {"ARP operation", OF_MATCH_IP_PROTOCOL, [](of_flow_mp_s& f) { f.match.ip_protocol = 2; },
       kArp, "a all arp"},
      {"source port", OF_MATCH_SRC_L4_PORT, [](of_flow_mp_s& f) { f.match.src_l4_port = 1000; },
       kUdp, "a b ipv4 src=192.0.2.1 dst=192.0.2.2 udp sport=1 dport=53"},
      {"destination port", OF_MATCH_DST_L4_PORT, [](of_flow_mp_s& f) { f.match.dst_l4_port = 53; },
       kUdp6, "a b ipv4 src=192.0.2.1 dst=192.0.2.2 tcp sport=1 dport=54"},
      {"ICMP type", OF_MATCH_SRC_L4_PORT, [](of_flow_mp_s& f) { f.match.src_l4_port = 8; },
       "a b ipv4 src=192.0.2.1 dst=192.0.2.2 icmp type=8",
       "a b ipv4 src=192.0.2.1 dst=192.0.2.2 icmp type=0"},
      {"protocol", OF_MATCH_IP_PROTOCOL, [](of_flow_mp_s& f) { f.match.ip_protocol = 17; }, kUdp,
       "a b ipv4 src=192.0.2.1 dst=192.0.2.2 tcp sport=1 dport=2"},
      {"next header", OF_MATCH_IP_PROTOCOL, [](of_flow_mp_s& f) { f.match.ip_protocol = 17; },
       "a b ipv6 src=2001:db8::1 dst=2001:db8::2 hopopts dstopts udp sport=1 dport=2",
       "a b ipv6 src=2001:db8::1 dst=2001:db8::2 hopopts icmp6 type=128"},
      {"TOS", OF_MATCH_TOS, [](of_flow_mp_s& f) { f.match.tos = 8; }, kUdp,
       "a b ipv4 src=192.0.2.1 dst=192.0.2.2"},
      {"traffic class", OF_MATCH_TOS, [](of_flow_mp_s& f) { f.match.tos = 8; }, kUdp6,
       "a b ipv6 src=2001:db8::1 dst=2001:db8::2"},
      // A field that a frame lacks matches nothing, not even 0.
      {"no TOS", OF_MATCH_TOS, [](of_flow_mp_s& f) { f.match.tos = 0; },
       "a b ipv4 src=192.0.2.1 dst=192.0.2.2", kArp},
      {"no IP for TOS", OF_MATCH_TOS, [](of_flow_mp_s& f) { f.match.tos = 0; },
       "a b ipv6 src=2001:db8::1 dst=2001:db8::2", "a b"},
      {"no protocol", OF_MATCH_IP_PROTOCOL, [](of_flow_mp_s& f) { f.match.ip_protocol = 0; },
       "a b ipv4 src=192.0.2.1 dst=192.0.2.2 proto=0", "a b"},
      {"no IPv4", OF_MATCH_SRC_IP, [](of_flow_mp_s& f) { f.match.src_ip_mask = 0; }, kUdp, kUdp6},
      {"no IPv4 at all", OF_MATCH_DST_IP, [](of_flow_mp_s& f) { f.match.dst_ip_mask = 0; }, kArp,
       "a b"},
      {"no source port", OF_MATCH_SRC_L4_PORT, [](of_flow_mp_s& f) { f.match.src_l4_port = 0; },
       "a b ipv4 src=192.0.2.1 dst=192.0.2.2 udp sport=0 dport=0",
       "a b ipv4 src=192.0.2.1 dst=192.0.2.2 proto=89"},
      {"no ports in a later fragment", OF_MATCH_DST_L4_PORT,
       [](of_flow_mp_s& f) { f.match.dst_l4_port = 0; },
       "a b ipv4 src=192.0.2.1 dst=192.0.2.2 mf=1 udp sport=0 dport=0",
       "a b ipv4 src=192.0.2.1 dst=192.0.2.2 frag=64 proto=17 payload=0000000000000000"},
  };
  vlan(1, mps({0}), {});
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.name);
    of_flow_mp_s match = flow(row.flag);
    row.fill(match);
    const unsigned id = add(match);
    in(0, row.matches);
    EXPECT_EQ(packets(id), 1u);
    in(row.flag == OF_MATCH_IN_PORT ? 2 : 0, row.differs[0] != '\0' ? row.differs : kUdp);
    EXPECT_EQ(packets(id), 1u);
    ok(sdk.delete_of_flow(id));
    for (const PortIndex port : card.tables().ports.all()) cable(port).clear();
    ok(sdk.clear_fdb_table(false));
  }
}

TEST_F(FlowForwardingTest, UserDefinedQualifier) {
  const of_flow_qualify_udf_s kRows[] = {{OF_UDF_FRAME, 6, 0x00005e00, 0xffffffff},
                                         {OF_UDF_L3, 16, 0xc6336409, 0xffffffff},
                                         {OF_UDF_L4, 8, 0xde00be00, 0xff00ff00}};
  for (const of_flow_qualify_udf_s& udf : kRows) {
    SCOPED_TRACE(udf.base);
    const unsigned id = add(flow(0), udf);
    in(0, kUdp);
    EXPECT_EQ(packets(id), 1u);
    in(0, "02:00:00:00:00:01 b ipv4 src=192.0.2.1 dst=192.0.2.2 udp sport=1 dport=2");
    EXPECT_EQ(packets(id), 1u);
    skip({1});
    ok(sdk.delete_of_flow(id));
  }
}

// effect: set_of_flow_priority - the highest priority takes the frame, of equal ones the lowest id
// effect: add_of_flow_with_id - as add_of_flow
TEST_F(FlowForwardingTest, PriorityDecides) {
  for (unsigned id : {7u, 8u}) {
    of_flow_mp_s match = flow(OF_MATCH_IN_PORT);
    match.in_port = mp(0);
    ok(sdk.add_of_flow_with_id(match, id));
  }
  output(7, 1);
  output(8, 2);
  in(0, kUdp);
  out(1, kUdp);
  ok(sdk.set_of_flow_priority(8, 40000));
  int priority = 0;
  ok(sdk.get_of_flow_priority(8, priority));
  EXPECT_EQ(priority, 40000);
  in(0, kUdp);
  out(2, kUdp);
}

// effect: delete_of_flow_action - the frame goes there no more
// effect: clear_of_flow_action - the flow drops
// effect: clear_of_flow_table - all frames go the ordinary way
TEST_F(FlowForwardingTest, ActionsComeAndGo) {
  const unsigned id = add(flow(0));
  output(id, 1);
  output(id, 2);
  in(0, kUdp);
  out({1, 2}, kUdp);
  ok(sdk.delete_of_flow_action(id, OF_ACTION_OUTPUT, {{OF_PORT_FIRST_PHYSICAL + 1, 0, 0}}, mp(1)));
  in(0, kUdp);
  out(2, kUdp);
  ok(sdk.clear_of_flow_action(id));
  in(0, kUdp);
  EXPECT_EQ(drops(0, DropReason::flow_drop), 1u);
  ok(sdk.clear_of_flow_table());
  in(0, kUdp);
  out(1, kUdp);
}

TEST_F(FlowForwardingTest, EveryOutput) {
  const unsigned id = add(flow(0));
  const auto only = [&](unsigned port) {
    ok(sdk.clear_of_flow_action(id));
    act(id, OF_ACTION_OUTPUT, port);
    in(0, kUdp);
  };
  only(OF_PORT_DROP);
  EXPECT_EQ(drops(0, DropReason::flow_drop), 1u);
  only(OF_PORT_IN_PORT);
  out(0, kUdp);
  only(OF_PORT_CONTROLLER);
  cpu(RX_REASON_FLOW, kUdp);
  only(OF_PORT_LOCAL);
  cpu(RX_REASON_LOCAL, kUdp);
  only(OF_PORT_NORMAL);
  out(1, kUdp);
  only(OF_PORT_FLOOD);
  out({1, 2}, kUdp);
  out(3, "a b vlan=10");
  only(OF_PORT_ALL);  // whatever the VLAN, as it is
  out({1, 2, 3, 4, 5, 6, 7}, "a b untagged");
  only(OF_PORT_FIRST_PHYSICAL);  // the ingress port by its number is no way out
  EXPECT_EQ(drops(0, DropReason::same_port), 1u);
}

TEST_F(FlowForwardingTest, EverySetAction) {
  const struct {
    of_action_t kind;
    unsigned word, second;
    const char* came;
  } kRows[] = {
      {OF_ACTION_SET_VLAN_ID, 20, 0, "a b vlan=20 ipv4 udp"},
      {OF_ACTION_SET_VLAN_PRIORITY, 6, 0, "a b vlan=0 prio=6 ipv4 udp"},
      {OF_ACTION_STRIP_VLAN, 0, 0, "a b untagged ipv4 udp"},
      {OF_ACTION_SET_SRC_MAC, 0x00005e00, 0x5378, "x b ipv4 udp"},
      {OF_ACTION_SET_DST_MAC, 0x00005e00, 0x5378, "a x ipv4 udp"},
      {OF_ACTION_SET_SRC_IP, 0xcb007107, 0, "a b ipv4 src=203.0.113.7 udp sport=1000"},
      {OF_ACTION_SET_DST_IP, 0xcb007107, 0, "a b ipv4 dst=203.0.113.7 udp sport=1000"},
      {OF_ACTION_SET_TOS, 0xb8, 0, "a b ipv4 tos=184 udp"},
      {OF_ACTION_SET_SRC_L4_PORT, 77, 0, "a b ipv4 udp sport=77 dport=53"},
      {OF_ACTION_SET_DST_L4_PORT, 77, 0, "a b ipv4 udp sport=1000 dport=77"},
  };
  const unsigned id = add(flow(0));
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.kind);
    ok(sdk.clear_of_flow_action(id));
    act(id, row.kind, row.word, row.second);
    output(id, 2);
    in(0, kUdp);
    std::vector<std::uint8_t> frame;
    ASSERT_TRUE(cable(2).take(frame));
    expect_shows(frame, row.came, "port 2");
    // Checksums fit again: the printer leaves out only those that do.
    EXPECT_EQ(print_frame(frame.data(), frame.size()).find("checksum"), std::string::npos);
  }
}

TEST_F(FlowForwardingTest, ActionsApplyInTheirOrder) {
  const unsigned id = add(flow(0));
  output(id, 1);
  act(id, OF_ACTION_SET_VLAN_ID, 20);
  act(id, OF_ACTION_SET_VLAN_PRIORITY, 3);
  output(id, 2);
  act(id, OF_ACTION_STRIP_VLAN);
  act(id, OF_ACTION_SET_TOS, 4);
  act(id, OF_ACTION_OUTPUT, OF_PORT_CONTROLLER);
  in(0, kUdp);
  out(1, kUdp);
  out(2, "a b vlan=20 prio=3 ipv4 tos=8");
  cpu(RX_REASON_FLOW, "a b untagged ipv4 tos=4");
  in(0, "a b vlan=10 vlan=7");
  out(1, "a b vlan=10 vlan=7");
  out(2, "a b vlan=20 prio=3 vlan=7");
  cpu(RX_REASON_FLOW, "a b vlan=7");
}

TEST_F(FlowForwardingTest, QueueAndRewrittenFrameOnTheOrdinaryWay) {
  const unsigned id = add(flow(0));
  act(id, OF_ACTION_SET_QUEUE, 5);
  act(id, OF_ACTION_SET_DST_MAC, 0x00005e00, 0x5300 + 'b');
  act(id, OF_ACTION_OUTPUT, OF_PORT_NORMAL);
  in(0, "a x");
  out(1, "a b");
  EXPECT_EQ(stat(1, STAT_OUT_QUEUE_5), 1u);
}

// The queue of the ordinary way is that of the priority that the frame has by then.
TEST_F(FlowForwardingTest, QueueOfARewrittenPriority) {
  const unsigned id = add(flow(0));
  act(id, OF_ACTION_SET_VLAN_PRIORITY, 6);
  act(id, OF_ACTION_OUTPUT, OF_PORT_NORMAL);
  ok(sdk.set_port_cos_mapping(mp(3), 6, 4));
  ok(sdk.add_mac_to_port(mp(3), mac('d'), 10, false));
  counted();
  in(0, "a b vlan=10 prio=2");
  out(1, "a b untagged");
  EXPECT_EQ(counted(), "0 in; 1 out q6");
  in(0, "a d");
  out(3, "a d vlan=10 prio=6");
  EXPECT_EQ(counted(), "0 in; 3 out q4");
  act(id, OF_ACTION_SET_QUEUE, 1);  // a queue that is set goes before both
  ok(sdk.delete_of_flow_action(id, OF_ACTION_OUTPUT, {{OF_PORT_NORMAL, 0, 0}}, Mp(0, 0)));
  act(id, OF_ACTION_OUTPUT, OF_PORT_NORMAL);
  in(0, "a d");
  out(3, "a d vlan=10 prio=6");
  EXPECT_EQ(counted(), "0 in; 3 out q1");
}

// A flow's flood is blocked by the kind of frame that it floods.
TEST_F(FlowForwardingTest, FloodBlockingHoldsForFlows) {
  act(add(flow(0)), OF_ACTION_OUTPUT, OF_PORT_FLOOD);
  ok(sdk.set_port_flood_blocking(mp(0), mp(1), FLOOD_BLOCK_UNKNOWN_UNICAST));
  ok(sdk.set_port_flood_blocking(mp(0), mp(2), FLOOD_BLOCK_BROADCAST));
  in(0, kUdp);
  out({2, 3}, "a b");
  in(0, kArp);
  out({1, 3}, "a all");
}

// A frame that a filter takes reaches no flow.
TEST_F(FlowForwardingTest, FiltersComeBeforeFlows) {
  const unsigned id = add(flow(0));
  output(id, 2);
  ok(sdk.add_l4_destination_port_filter(53));
  in(0, kUdp);
  cpu(RX_REASON_L4_PORT_FILTER, kUdp);
  EXPECT_EQ(packets(id), 0u);
  in(0, kArp);
  out(2, kArp);
}

// Each flow counts the frame as it came in, once.
TEST_F(FlowForwardingTest, CountsFramesAndBytes) {
  const unsigned id = add(flow(0));
  act(id, OF_ACTION_SET_VLAN_ID, 20);
  output(id, 1);
  output(id, 2);
  in(0, "a b size=100");
  in(2, "c b size=64");
  skip({1}, 2);
  skip({2});
  const Flow* counting = card.tables().flows.get(id);
  EXPECT_TRUE(counting->packets == 2 && counting->bytes == 164);
}

TEST_F(FlowForwardingTest, OrdinaryWayInAnotherVlanAndThroughTheRouter) {
  vlan(20, {}, mps({4, 5}));
  unsigned id = add(flow(0));
  act(id, OF_ACTION_SET_VLAN_ID, 20);
  act(id, OF_ACTION_OUTPUT, OF_PORT_NORMAL);
  in(0, kUdp);
  out({4, 5}, "a b untagged");
  unsigned interface = 0;
  ok(sdk.create_l3_interface(mac('r'), 20, interface));
  ok(sdk.add_l3_host_ip4(mp(5), false, 0xc6336409, mac('f'), interface));
  act(id, OF_ACTION_SET_DST_MAC, 0x00005e00, 0x5300 + 'r');
  ok(sdk.delete_of_flow_action(id, OF_ACTION_OUTPUT, {{OF_PORT_NORMAL, 0, 0}}, Mp(0, 0)));
  act(id, OF_ACTION_OUTPUT, OF_PORT_NORMAL);
  in(0, kUdp);
  out(5, "r f untagged ipv4 ttl=63 udp");
}

// effect: set_switch_forward_mode - flows first, flows only, or no flows
TEST_F(FlowForwardingTest, ForwardModes) {
  of_flow_mp_s match = flow(OF_MATCH_IN_PORT);
  match.in_port = mp(0);
  output(add(match), 2);
  const struct {
    unsigned mode;
    PortIndex from_a;
    bool from_c;
  } kRows[] = {{SWITCH_FORWARD_MODE_HYBRID, 2, true},
               {SWITCH_FORWARD_MODE_FLOW, 2, false},
               {SWITCH_FORWARD_MODE_NORMAL, 1, true}};
  for (const auto& row : kRows) {
    ok(sdk.set_switch_forward_mode(row.mode));
    unsigned mode = 9;
    ok(sdk.get_switch_forward_mode(mode));
    EXPECT_EQ(mode, row.mode);
    in(0, "a b");
    out(row.from_a, "a b");
    in(2, "c b");
    if (row.from_c) out(1, "c b");
  }
  EXPECT_EQ(drops(2, DropReason::flow_miss), 1u);
  ok(sdk.clear_of_flow_table());  // by flows alone, and there is none
  ok(sdk.set_switch_forward_mode(SWITCH_FORWARD_MODE_FLOW));
  counted();
  in(0, "a b");
  EXPECT_EQ(counted(), "0 in in-discards !flow-miss");
}

TEST_F(FlowForwardingTest, SpanningTreeHoldsForFlowsToo) {
  output(add(flow(0)), 2);
  ok(sdk.set_port_stp_state(mp(2), STP_STATE_BLOCKING));
  in(0, "a b");
  EXPECT_EQ(drops(2, DropReason::stp_egress), 1u);
}

}  // namespace
}  // namespace softcard
