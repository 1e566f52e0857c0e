// SPDX-License-Identifier: Apache-2.0
//
// The MAC table at work: learning, ageing, moves, static and system entries, flushes, locks,
// limits.
//
//      a    b    c    d
//      |    |    |    |      VLAN 10: 0, 1, 2, 3 untagged
//    +-0----1----2----3-+    VLAN 20: 0, 1 tagged
//    +------------------+

#include <utility>

#include "tests/softcard/switch_fixture.h"

namespace softcard {
namespace {

class FdbForwardingTest : public SwitchTest {
 protected:
  FdbForwardingTest() {
    vlan(10, {}, mps({0, 1, 2, 3}));
    vlan(20, mps({0, 1}), {});
    for (const PortIndex port : card.tables().ports.all()) {
      ok(sdk.set_port_flood_blocking_cpu(mp(port), FLOOD_BLOCK_ALL));
    }
  }
  // Lets stations be heard at their own ports.
  void hear(const std::string& stations) {
    for (const char station : stations) {
      in(static_cast<PortIndex>(station - 'a'), std::string(1, station) + " " + station);
      for (const PortIndex port : card.tables().ports.all()) cable(port).clear();
    }
  }
  // Whether port 3's frame to a station is flooded; both ways it must reach the station's port.
  bool flooded(char station) {
    in(3, std::string("d ") + station);
    out(static_cast<PortIndex>(station - 'a'), std::string("d ") + station);
    bool all = true;
    for (PortIndex port = 0; port < 3; ++port) {
      if (port == station - 'a') continue;
      all = all && cable(port).waiting() == 1;
      cable(port).clear();
    }
    return all;
  }
};

TEST_F(FdbForwardingTest, LearnsAndStopsFlooding) {
  EXPECT_TRUE(flooded('a'));
  hear("a");
  EXPECT_FALSE(flooded('a'));
  const std::uint64_t before = drops(0, DropReason::same_port);
  in(0, "b a");  // back where it came from: nowhere
  EXPECT_EQ(drops(0, DropReason::same_port), before + 1);
}

TEST_F(FdbForwardingTest, WithinABurstEachFrameKnowsWhatTheOneBeforeTaught) {
  burst(0, {"a all", "d a"});
  skip({1, 2, 3});
  EXPECT_EQ(drops(0, DropReason::same_port), 1u);
}

// effect: set_fdb_aging_time - unheard addresses are flooded again after it; 0 keeps them
TEST_F(FdbForwardingTest, AgesWhatIsNotHeard) {
  hear("ab");
  warp(200);
  hear("b");
  warp(101);
  EXPECT_TRUE(flooded('a'));
  EXPECT_FALSE(flooded('b'));
  ok(sdk.set_fdb_aging_time(10));
  card.clock().warp_ns(11 * kNanosecondsPerSecond);  // without a round of the card in between
  EXPECT_TRUE(flooded('b'));
  hear("a");
  ok(sdk.set_fdb_aging_time(0));
  warp(1e6);
  EXPECT_FALSE(flooded('a'));
  int seconds = -1;
  ok(sdk.get_fdb_aging_time(seconds));
  EXPECT_EQ(seconds, 0);
}

TEST_F(FdbForwardingTest, MovesToWhereItIsHeard) {
  hear("a");
  in(1, "a c");
  skip({0, 2, 3});
  in(3, "d a");
  out(1, "d a");
}

// effect: add_mac_to_port - frames to the address go there, and the entry neither moves nor ages
// effect: delete_mac - they are flooded again
TEST_F(FdbForwardingTest, StaticEntryStaysPut) {
  ok(sdk.add_mac_to_port(mp(0), mac('a'), 10, false));
  in(1, "a d");
  skip({0, 2, 3});
  warp(1000);
  EXPECT_FALSE(flooded('a'));
  ok(sdk.delete_mac(mac('a'), 10));
  EXPECT_TRUE(flooded('a'));
}

// effect: add_system_mac - frames to the address go to the CPU alone
TEST_F(FdbForwardingTest, SystemEntryLeadsToTheCpu) {
  ok(sdk.add_system_mac(mac('s'), 10));
  in(0, "a s payload=01");
  const CpuPacket packet = cpu(RX_REASON_SYSTEM_MAC, "a s payload=01");
  EXPECT_EQ(packet.port, AddressPlan::usp_of(0));
  EXPECT_EQ(packet.vlan, 10u);
  in(0, "a s vlan=20");  // in another VLAN it is anybody's
  out(1, "a s");
}

// effect: add_system_mac_vlan_bitmap - the same in every VLAN named
// effect: delete_mac_vlan_bitmap - the entries of every VLAN named are gone
// effect: delete_mac_by_mac - the entries of all VLANs are gone
TEST_F(FdbForwardingTest, SystemEntriesByBitmap) {
  unsigned char bitmap[512] = {};
  bitmap[10 / 8] |= 1 << 10 % 8;
  bitmap[20 / 8] |= 1 << 20 % 8;
  const auto both = [&](bool system) {
    in(0, "a s");
    in(0, "a s vlan=20");
    if (system) {
      cpu(RX_REASON_SYSTEM_MAC, "a s untagged");
      cpu(RX_REASON_SYSTEM_MAC, "a s vlan=20");
    } else {
      skip({1, 2, 3});
      skip({1});
    }
  };
  ok(sdk.add_system_mac_vlan_bitmap(mac('s'), bitmap));
  both(true);
  ok(sdk.delete_mac_vlan_bitmap(mac('s'), bitmap));
  both(false);
  ok(sdk.add_system_mac_vlan_bitmap(mac('s'), bitmap));
  ok(sdk.delete_mac_by_mac(mac('s')));
  both(false);
}

// effect: clear_fdb_by_port - what was learned there is flooded again, with the flag static too
// effect: clear_fdb_by_vlan - the same by VLAN
// effect: clear_fdb_table - the same for all
TEST_F(FdbForwardingTest, Flushes) {
  const auto fill = [&] {
    hear("b");
    ok(sdk.add_mac_to_port(mp(0), mac('a'), 10, false));
  };
  fill();
  ok(sdk.clear_fdb_by_port(mp(2), false, true));
  EXPECT_FALSE(flooded('a') || flooded('b'));
  ok(sdk.clear_fdb_by_port(mp(1), false, false));
  EXPECT_TRUE(flooded('b'));
  ok(sdk.clear_fdb_by_port(mp(0), false, false));
  EXPECT_FALSE(flooded('a'));
  ok(sdk.clear_fdb_by_port(mp(0), false, true));
  EXPECT_TRUE(flooded('a'));
  fill();
  ok(sdk.clear_fdb_by_vlan(20, true));
  EXPECT_FALSE(flooded('a') || flooded('b'));
  ok(sdk.clear_fdb_by_vlan(10, false));
  EXPECT_TRUE(flooded('b') && !flooded('a'));
  ok(sdk.clear_fdb_by_vlan(10, true));
  EXPECT_TRUE(flooded('a'));
  fill();
  ok(sdk.clear_fdb_table(false));
  EXPECT_TRUE(flooded('b') && !flooded('a'));
  ok(sdk.clear_fdb_table(true));
  EXPECT_TRUE(flooded('a'));
}

// effect: set_port_mac_lock - no new address is learned, frames from unknown ones are dropped
// effect: set_port_mac_lock_ext - without drop they pass unlearned
TEST_F(FdbForwardingTest, MacLock) {
  hear("a");
  ok(sdk.set_port_mac_lock(mp(0), true));
  in(0, "a d");
  skip({1, 2, 3});
  in(0, "x d");
  EXPECT_EQ(drops(0, DropReason::mac_lock), 1u);
  EXPECT_EQ(stat(0, STAT_IN_MAC_LOCK_DISCARDS), 1u);
  in(1, "b d");  // another station's address is no better
  skip({0, 2, 3});
  in(0, "b d");
  EXPECT_EQ(drops(0, DropReason::mac_lock), 2u);

  ok(sdk.set_port_mac_lock_ext(mp(0), true, false));
  in(0, "x d");
  skip({1, 2, 3});
  in(1, "b x");
  skip({0, 2, 3});  // still unknown
  bool on = false, drop = true;
  ok(sdk.get_port_mac_lock(mp(0), on));
  EXPECT_TRUE(on);
  ok(sdk.get_port_mac_lock_ext(mp(0), on, drop));
  EXPECT_FALSE(drop);
  ok(sdk.set_port_mac_lock(mp(0), false));
  in(0, "x d");
  skip({1, 2, 3});
  in(1, "b x");
  out(0, "b x");
}

// effect: set_system_mac_limit - addresses beyond it stay unlearned and their frames are flooded
TEST_F(FdbForwardingTest, LimitsOfPortVlanAndSwitch) {
  const struct {
    Mp mp;
    unsigned kind;
  } kRows[] = {
      {mp(0), PORT_KIND_PHYSICAL}, {Mp(0, 10), PORT_KIND_VLAN}, {Mp(0, 0), PORT_KIND_SYSTEM}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.kind);
    ok(sdk.clear_fdb_table(true));
    ok(sdk.set_system_mac_limit(row.mp, 2, row.kind));
    int limit = 0;
    ok(sdk.get_system_mac_limit(row.mp, limit, row.kind));
    EXPECT_EQ(limit, 2);
    for (const char* frame : {"x x", "y y", "z z"}) {
      in(0, frame);
      for (const PortIndex port : card.tables().ports.all()) cable(port).clear();
    }
    EXPECT_EQ(card.tables().fdb.learned(), 2u);
    in(0, "x d");  // a known one is not affected
    skip({1, 2, 3});
    ok(sdk.set_system_mac_limit(row.mp, -1, row.kind));
    in(0, "z z");
    EXPECT_EQ(card.tables().fdb.learned(), 3u);
    for (const PortIndex port : card.tables().ports.all()) cable(port).clear();
  }
}

TEST_F(FdbForwardingTest, LimitCountsMovesToThePortOnly) {
  ok(sdk.set_system_mac_limit(mp(1), 0, PORT_KIND_PHYSICAL));
  ok(sdk.set_system_mac_limit(Mp(0, 0), 1, PORT_KIND_SYSTEM));
  hear("a");
  in(1, "a d");
  skip({0, 2, 3});
  EXPECT_FALSE(flooded('a'));  // it did not move to the port that learns nothing
  in(2, "a d");
  skip({0, 1, 3});
  in(3, "d a");
  out(2, "d a");
}

// effect: traverse_mac_table - lists where frames go
TEST_F(FdbForwardingTest, TableShowsWhatFramesTaught) {
  hear("ab");
  ok(sdk.add_system_mac(mac('s'), 20));
  ok(sdk.add_mac_to_port(mp(2), mac('c'), 10, false));
  std::vector<std::pair<unsigned, unsigned>> seen;
  mac_traverse_s walk = {
      [](const ctype_l2_addr_s* entry, void* list) {
        static_cast<std::vector<std::pair<unsigned, unsigned>>*>(list)->emplace_back(
            entry->mac[5], entry->flags << 8 | entry->port.port);
        return 1;
      },
      &seen};
  ok(sdk.traverse_mac_table(&walk));
  std::sort(seen.begin(), seen.end());
  EXPECT_EQ(seen,
            (std::vector<std::pair<unsigned, unsigned>>{
                {'a', 0}, {'b', 1}, {'c', L2_ADDR_STATIC << 8 | 2}, {'s', L2_ADDR_SYSTEM << 8}}));
}

TEST_F(FdbForwardingTest, GroupAndZeroAreNoSources) {
  in(0, "01:00:5e:00:00:05 b");
  in(0, "00:00:00:00:00:00 b");
  skip({1, 2, 3}, 2);
  EXPECT_EQ(card.tables().fdb.learned(), 0u);
}

}  // namespace
}  // namespace softcard
