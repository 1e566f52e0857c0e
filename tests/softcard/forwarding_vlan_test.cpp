// SPDX-License-Identifier: Apache-2.0
//
// VLANs: membership, tags, and how untagged frames get into one.
//
//      a    b    c    d          VLAN 10: 0 and 1 untagged, 2 tagged
//      |    |    |    |          VLAN 20: 3 untagged, 2 tagged
//    +-0----1----2----3-+
//    |      card        |        VLAN 1 keeps the other ports; they stay silent.
//    +------------------+

#include "tests/softcard/switch_fixture.h"

namespace softcard {
namespace {

class VlanTest : public SwitchTest {
 protected:
  VlanTest() {
    std::list<Mp> all = mps({0, 1, 2, 3, 4, 5, 6, 7});
    ok(sdk.delete_ports_from_vlan(1, all));
    vlan(10, mps({2}), mps({0, 1}));
    vlan(20, mps({2}), mps({3}));
    for (const PortIndex port : card.tables().ports.all())
      ok(sdk.set_port_flood_blocking_cpu(mp(port), FLOOD_BLOCK_ALL));
  }
};

// effect: create_vlan - frames of the VLAN are forwarded from now on
// effect: add_ports_to_vlan - floods and unicast reach the members, tagged or untagged as given
// effect: get_vlan_info - tells where floods go
TEST_F(VlanTest, FloodStaysInTheVlanAndIsTaggedByMembership) {
  in(0, "a all");
  out(1, "a all untagged");
  out(2, "a all vlan=10 prio=0 tpid=0x8100");
  in(2, "c all vlan=20");
  out(3, "c all untagged");
  in(2, "c all vlan=10");
  out({0, 1}, "c all untagged");
  std::list<Mp> tagged, untagged;
  ok(sdk.get_vlan_info(10, tagged, untagged));
  EXPECT_EQ(tagged, mps({2}));
  EXPECT_EQ(untagged, mps({0, 1}));
}

TEST_F(VlanTest, KnownUnicastCrossesTheTrunkOnly) {
  in(2, "c all vlan=10");
  skip({0, 1});
  in(0, "a c vlan=0 prio=5");  // a priority tag: untagged, and the priority stays
  out(2, "a c vlan=10 prio=5");
  in(0, "a c vlan=10 prio=1 dei=1");
  out(2, "a c vlan=10 prio=1 dei=1");
  in(3, "d c");  // c is unknown in VLAN 20
  out(2, "d c vlan=20");
}

// effect: delete_ports_from_vlan - neither sends nor lets in frames of the VLAN any more
TEST_F(VlanTest, PortThatLeftTheVlanIsCutOff) {
  std::list<Mp> trunk = mps({2});
  ok(sdk.delete_ports_from_vlan(10, trunk));
  std::list<Mp> tagged, untagged;
  ok(sdk.get_vlan_info(10, tagged, untagged));
  EXPECT_TRUE(tagged.empty() && untagged.size() == 2);
  in(0, "a all");
  out(1, "a all");
  in(2, "c all vlan=10");
  EXPECT_EQ(drops(2, DropReason::not_member), 1u);
  EXPECT_EQ(stat(2, STAT_IN_VLAN_DISCARDS), 1u);
  EXPECT_EQ(stat(2, STAT_IN_DISCARDS), 1u);
}

// effect: delete_vlan - its frames are dropped
TEST_F(VlanTest, FramesOfADeletedVlanAreDropped) {
  ok(sdk.delete_vlan(10));
  std::list<Mp> tagged, untagged;
  EXPECT_FALSE(sdk.get_vlan_info(10, tagged, untagged));
  in(0, "a all");
  in(2, "c all vlan=10");
  EXPECT_EQ(drops(0, DropReason::no_vlan) + drops(2, DropReason::no_vlan), 2u);
  in(2, "c all vlan=4095");
  EXPECT_EQ(drops(2, DropReason::no_vlan), 2u);
}

// effect: set_port_pvid - untagged frames go into it
TEST_F(VlanTest, PvidTakesUntaggedFrames) {
  ok(sdk.set_port_pvid(mp(2), 20));
  in(2, "c all");
  out(3, "c all untagged");
  unsigned pvid = 0;
  ok(sdk.get_port_pvid(mp(2), pvid));
  EXPECT_EQ(pvid, 20u);
}

// effect: set_port_vlan_accept_frame - off: untagged and priority-tagged frames are dropped
TEST_F(VlanTest, TaggedFramesOnly) {
  ok(sdk.set_port_pvid(mp(2), 10));
  ok(sdk.set_port_vlan_accept_frame(mp(2), false));
  in(2, "c all");
  in(2, "c all vlan=0 prio=3");
  EXPECT_EQ(drops(2, DropReason::accept_frame), 2u);
  in(2, "c all vlan=10");
  skip({0, 1});
  bool all = true;
  ok(sdk.get_port_vlan_accept_frame(mp(2), all));
  EXPECT_FALSE(all);
}

// effect: set_port_vlan_priority - the tag and egress queue of frames that came in untagged
TEST_F(VlanTest, PriorityOfUntaggedFrames) {
  ok(sdk.set_port_protocol_vlan(mp(0), FRAME_TYPE_ETHERNET, 0x88b6, 20));
  ok(sdk.add_mac_to_port(mp(2), mac('c'), 10, false));
  ok(sdk.add_mac_to_port(mp(2), mac('c'), 20, false));
  std::list<Mp> trunk = mps({0}), untagged;
  ok(sdk.add_ports_to_vlan(20, trunk, untagged));
  const auto priority_is = [&](const std::string& frame, unsigned vlan_id, unsigned priority) {
    in(0, frame);
    const std::string number = std::to_string(priority);
    out(2, "a c vlan=" + std::to_string(vlan_id) + " prio=" + number);
    EXPECT_EQ(counted(), "0 in; 2 out q" + number) << frame;
  };
  counted();
  priority_is("a c", 10, 0);
  ok(sdk.set_port_vlan_priority(mp(0), 0, 2));  // for every VLAN without its own
  priority_is("a c", 10, 2);
  ok(sdk.set_port_vlan_priority(mp(0), 10, 6));
  priority_is("a c", 10, 6);
  priority_is("a c type=0x88b6", 20, 2);  // the priority of the VLAN that it got into
  ok(sdk.set_port_vlan_priority(mp(0), 20, 0));
  priority_is("a c type=0x88b6", 20, 0);
  priority_is("a c vlan=0 prio=5", 10, 5);
  priority_is("a c vlan=0 prio=0", 10, 0);
  priority_is("a c vlan=20 prio=1", 20, 1);
  unsigned priority = 0;
  ok(sdk.get_port_vlan_priority(mp(0), 10, priority));
  EXPECT_EQ(priority, 6u);
}

TEST_F(VlanTest, InnerTagsAndServiceTagsPassUntouched) {
  in(2, "c all vlan=10 vlan=77 prio=3 ipv4 src=192.0.2.1 dst=192.0.2.2");
  out({0, 1}, "c all vlan=77 prio=3 ipv4 dst=192.0.2.2");
  in(2, "c all vlan=20 tpid=0x88a8");
  out(3, "c all untagged");
  ok(sdk.set_port_pvid(mp(2), 20));
  vlan(20, mps({2, 3}), {});
  in(2, "c all vlan=20 tpid=0x88a8");
  out(3, "c all vlan=20 tpid=0x88a8");
}

// ---- By protocol, address and subnet ------------------------------------------------------------

// effect: set_port_protocol_vlan - untagged frames of the protocol go into its VLAN
// effect: delete_port_protocol_vlan - they go by the PVID again
// effect: delete_port_protocol_vlan_all - none of the rules is left
TEST_F(VlanTest, ProtocolVlanByEncapsulation) {
  ok(sdk.set_port_pvid(mp(2), 10));
  ok(sdk.set_port_protocol_vlan(mp(2), FRAME_TYPE_ETHERNET, 0x86dd, 20));
  ok(sdk.set_port_protocol_vlan(mp(2), FRAME_TYPE_SNAP, 0x809b, 20));
  ok(sdk.set_port_protocol_vlan(mp(2), FRAME_TYPE_LLC, 0xf0f0, 20));
  const char* const in_20[] = {"c all ipv6 src=2001:db8::1 dst=2001:db8::2",
                               "c all snap proto=0x809b payload=0102",
                               "c all llc dsap=0xf0 ssap=0xf0 payload=01"};
  for (const char* frame : in_20) {
    in(2, frame);
    out(3, frame);
  }
  in(2, "c all type=0x809b");  // the same number in another encapsulation
  out({0, 1}, "");
  ok(sdk.delete_port_protocol_vlan(mp(2), FRAME_TYPE_SNAP, 0x809b));
  in(2, in_20[1]);
  out({0, 1}, "");
  ok(sdk.delete_port_protocol_vlan_all(mp(2)));
  in(2, in_20[0]);
  out({0, 1}, "");
}

// effect: set_mac_vlan - untagged frames from the address go into its VLAN, before any other rule
// effect: set_ipv4_subnet_vlan - untagged frames from the subnet, ARP included, go into its VLAN
// effect: set_ipv6_subnet_vlan - untagged frames from the subnet go into its VLAN
TEST_F(VlanTest, MacBeforeSubnetBeforeProtocolBeforePvid) {
  const unsigned char subnet6[16] = {0x20, 0x01, 0x0d, 0xb8};
  vlan(30, {}, mps({4}));
  vlan(40, {}, mps({5}));
  vlan(50, {}, mps({6}));
  for (unsigned number : {30u, 40u, 50u}) vlan(number, mps({2}), {});
  const char* const ip = "c all ipv4 src=192.0.2.1 dst=192.0.2.2";
  const char* const ip6 = "c all ipv6 src=2001:db8::1 dst=2001:db8::2";
  ok(sdk.set_port_pvid(mp(2), 20));
  in(2, ip);
  out(3, "");
  ok(sdk.set_port_protocol_vlan(mp(2), FRAME_TYPE_ETHERNET, 0x0800, 30));
  in(2, ip);
  out(4, "");
  ok(sdk.set_ipv4_subnet_vlan(0xc0000200, 0xffffff00, 40, 3));
  in(2, ip);
  out(5, "");
  in(2, "c all arp spa=192.0.2.1 tpa=192.0.2.2");
  out(5, "");
  ok(sdk.set_ipv4_subnet_vlan(0xc0000201, 0xffffffff, 50, 3));  // the longest mask
  in(2, ip);
  out(6, "");
  ok(sdk.set_ipv6_subnet_vlan(subnet6, 32, 40, 4));
  in(2, ip6);
  out(5, "");
  ok(sdk.set_mac_vlan(mac('c'), 10, 7));
  for (const char* frame : {ip, ip6}) {
    in(2, frame);
    out({0, 1}, "");
  }
  in(2, "c all vlan=20");  // a tag settles it
  out(3, "");
  ok(sdk.set_mac_vlan(mac('c'), 0, 0));
  ok(sdk.set_ipv4_subnet_vlan(0xc0000201, 0xffffffff, 0, 0));
  ok(sdk.set_ipv4_subnet_vlan(0xc0000200, 0xffffff00, 0, 0));
  ok(sdk.set_ipv6_subnet_vlan(subnet6, 32, 0, 0));
  in(2, ip6);
  out(3, "");
}

TEST_F(VlanTest, RulesGiveThePriority) {
  ok(sdk.set_mac_vlan(mac('a'), 10, 5));
  in(0, "a all");
  skip({1});
  out(2, "a all vlan=10 prio=5");
  in(0, "a all vlan=0 prio=1");
  skip({1});
  out(2, "a all vlan=10 prio=1");
}

// effect: set_port_cos_mapping - the egress queue in the counters
TEST_F(VlanTest, PriorityChoosesTheEgressQueue) {
  ok(sdk.set_port_cos_mapping(mp(1), 4, 7));
  in(2, "c all vlan=10 prio=4");
  skip({0, 1});
  EXPECT_EQ(stat(0, STAT_OUT_QUEUE_4), 1u);
  EXPECT_EQ(stat(1, STAT_OUT_QUEUE_7), 1u);
  unsigned queue = 0;
  ok(sdk.get_port_cos_mapping(mp(1), 4, queue));
  EXPECT_EQ(queue, 7u);
}

}  // namespace
}  // namespace softcard
