// SPDX-License-Identifier: Apache-2.0
//
// Ports: what makes a link, how long frames may be, and what is counted.
//
//      a    b    c
//      |    |    |        VLAN 10: 0, 1, 2 untagged
//    +-0----1----2--6===7-+   6 and 7 are patched together in some tests
//    +--------------------+

#include <list>
#include <numeric>

#include "softcard/sdk/sdk.h"
#include "tests/softcard/switch_fixture.h"

namespace softcard {
namespace {

class PortTest : public SwitchTest {
 protected:
  PortTest() {
    vlan(10, {}, mps({0, 1, 2}));
    for (const PortIndex port : card.tables().ports.all()) {
      ok(sdk.set_port_flood_blocking_cpu(mp(port), FLOOD_BLOCK_ALL));
    }
    ok(sdk.add_mac_to_port(mp(1), mac('b'), 10, false));
  }
  bool up(PortIndex port) {
    phy_state_t state = PHY_STATE_DOWN;
    ok(sdk.get_port_link_state(mp(port), state));
    return state == PHY_STATE_UP;
  }
};

// effect: set_port_state - off: no link, nothing goes in or out
// effect: get_port_link_state - tells whether it sends and receives
TEST_F(PortTest, PortThatIsOff) {
  ok(sdk.set_port_state(mp(1), false));
  bool on = true;
  ok(sdk.get_port_state(mp(1), on));
  EXPECT_FALSE(on || up(1));
  in(0, "a b");
  EXPECT_EQ(stat(1, STAT_OUT_DISCARDS), 1u);
  in(0, "a all");
  out(2, "a all");
  in(1, "b a");
  EXPECT_EQ(drops(1, DropReason::link_down), 1u);
  EXPECT_EQ(stat(1, STAT_IN_UNICAST_PACKETS), 0u);
  ok(sdk.set_port_state(mp(1), true));
  in(0, "a b");
  out(1, "a b");
}

// effect: set_port_speed - an end fixed to what the other does not do has no link, so no frames
// effect: set_port_duplex - the same
// effect: set_port_autoneg - negotiates a mode that both have, so frames pass
// effect: set_port_advertising_ability - what is not offered cannot be agreed on
// effect: get_port_speed - tells the mode in force
// effect: get_port_duplex - tells the mode in force
// effect: get_port_ability - tells what can be agreed on
// effect: get_port_current_ability - tells what was agreed on
// effect: get_port_peer_ability - tells what the other end offers
TEST_F(PortTest, BothEndsMustAgree) {
  vlan(30, {}, mps({3, 6}));
  vlan(40, {}, mps({4, 7}));
  auto ends = PatchCable::make();
  card.plug(6, std::move(ends.first));
  card.plug(7, std::move(ends.second));
  const auto passes = [&] {
    in(3, "d x");  // 3 to 6, over the patch to 7, to 4
    card.run_once();
    const bool came = cable(4).waiting() == 1;
    cable(4).clear();
    EXPECT_EQ(came, up(6) && up(7));
    return came;
  };
  EXPECT_TRUE(passes());
  ok(sdk.set_port_speed(mp(6), SPEED_TYPE_100));
  EXPECT_TRUE(passes());  // the other end follows
  speed_type_t speed = SPEED_TYPE_UNKNOWN;
  ok(sdk.get_port_speed(mp(7), speed));
  EXPECT_EQ(speed, SPEED_TYPE_100);
  ok(sdk.set_port_speed(mp(7), SPEED_TYPE_1000));
  EXPECT_FALSE(passes());
  ok(sdk.set_port_autoneg(mp(7), true));
  EXPECT_TRUE(passes());
  ok(sdk.set_port_duplex(mp(6), DUPLEX_TYPE_HALF));
  EXPECT_TRUE(passes());
  duplex_type_t duplex = DUPLEX_TYPE_FULL;
  ok(sdk.get_port_duplex(mp(7), duplex));
  EXPECT_EQ(duplex, DUPLEX_TYPE_HALF);
  ok(sdk.set_port_advertising_ability(mp(7), PORT_ABILITY_1000_FULL));
  EXPECT_FALSE(passes());
  port_ability_type_t offered = PORT_ABILITY_NONE, own = PORT_ABILITY_NONE;
  ok(sdk.get_port_peer_ability(mp(6), offered));
  ok(sdk.get_port_advertising_ability(mp(7), own));
  EXPECT_TRUE((own & PORT_ABILITY_1000_FULL) != 0 && (offered & PORT_ABILITY_1000_FULL) != 0);
  ok(sdk.set_port_autoneg(mp(6), true));
  EXPECT_TRUE(passes());
  ok(sdk.get_port_current_ability(mp(6), own));
  EXPECT_NE(own & PORT_ABILITY_1000_FULL, 0u);
  ok(sdk.get_port_ability(mp(6), own));
  EXPECT_EQ(own & PORT_ABILITY_10000_FULL, 0u);
  EXPECT_FALSE(sdk.set_port_speed(mp(6), SPEED_TYPE_10000));
  bool autoneg = false;
  ok(sdk.get_port_autoneg(mp(6), autoneg));
  EXPECT_TRUE(autoneg);
  card.plug(6, nullptr);
  EXPECT_FALSE(up(6) || up(7));
  card.plug(7, nullptr);
}

// effect: set_port_mtu - longer frames are errors on the way in and discards on the way out
TEST_F(PortTest, MtuBothWays) {
  ok(sdk.set_port_mtu(mp(0), 200));
  ok(sdk.set_port_mtu(mp(1), 100));
  unsigned bytes = 0;
  ok(sdk.get_port_mtu(mp(0), bytes));
  EXPECT_EQ(bytes, 200u);
  ok(sdk.add_mac_to_port(mp(2), mac('c'), 10, false));
  const struct {
    const char* frame;
    const char* counted;
  } kRows[] = {
      {"a b size=100", "0 in; 1 out q0"},
      {"a b size=101", "0 in; 1 out-discards !egress-mtu"},
      {"a b vlan=10 size=104", "0 in; 1 out q0"},  // the outermost tag does not count
      {"a b vlan=10 size=105", "0 in; 1 out-discards !egress-mtu"},
      {"a b vlan=10 vlan=7 size=104", "0 in; 1 out q0"},
      {"a b vlan=10 vlan=7 size=105", "0 in; 1 out-discards !egress-mtu"},
      {"a c size=200", "0 in; 2 out q0"},
      {"a c size=201", "0 in-errors oversize !oversize"},
      {"a c vlan=10 size=204", "0 in; 2 out q0"},
      {"a c vlan=10 size=205", "0 in-errors oversize !oversize"},
      {"a c vlan=10 vlan=7 size=204", "0 in; 2 out q0"},
      {"a c vlan=10 vlan=7 size=205", "0 in-errors oversize !oversize"},
  };
  counted();
  for (const auto& row : kRows) {
    in(0, row.frame);
    EXPECT_EQ(counted(), row.counted) << row.frame;
  }
  cable(1).clear();
  cable(2).clear();
}

// ---- Bursts -------------------------------------------------------------------------------------

TEST_F(PortTest, BurstsOfAnyLengthArriveWholeAndInOrder) {
  ok(sdk.add_mac_to_port(mp(2), mac('c'), 10, false));
  for (const unsigned length : {1u, 31u, 32u, 33u, 64u, 97u}) {
    SCOPED_TRACE(length);
    std::vector<std::string> frames;
    const auto frame = [](char to, unsigned n) {
      return std::string("a ") + to + " payload=" + std::to_string(1000 + n);
    };
    for (unsigned n = 0; n < length; ++n) frames.push_back(frame(n % 5 == 0 ? 'c' : 'b', n));
    burst(0, frames);
    for (unsigned n = 0; n < length; ++n) out(n % 5 == 0 ? 2 : 1, frames[n]);
    frames.clear();
    for (unsigned n = 0; n < length; ++n) frames.push_back(frame('b', n));
    burst(0, frames);  // all to one port, whose own burst fills up
    for (unsigned n = 0; n < length; ++n) out(1, frames[n]);
    none();
  }
}

// A frame that is dropped on its way in leaves no hole among the frames that came with it.
TEST_F(PortTest, BurstsWithFramesThatAreDropped) {
  std::vector<std::string> frames;
  for (unsigned n = 0; n < 40; ++n) {
    frames.push_back(n % 3 == 0 ? "a b size=1515" : "a b payload=" + std::to_string(10 + n));
  }
  burst(0, frames);
  for (unsigned n = 0; n < 40; ++n) {
    if (n % 3 != 0) out(1, frames[n]);
  }
  EXPECT_EQ(drops(0, DropReason::oversize), 14u);
}

// The pool hands the same frame out again: without the room and the marks of its last way.
TEST_F(PortTest, FramesStartAfresh) {
  vlan(10, mps({2}), {});
  ok(sdk.add_mac_to_port(mp(2), mac('c'), 10, false));
  for (int i = 0; i < 100; ++i) {
    in(0, "a b vlan=10 prio=3");
    out(1, "a b untagged");
  }
  for (int i = 0; i < 100; ++i) {
    in(0, "a c payload=01");
    out(2, "a c vlan=10 prio=0 payload=01");
  }
  std::list<Mp> none_of_them, untagged = mps({1});
  ok(sdk.set_port_mirror(mp(6), mp(1), MIRROR_TYPE_EGRESS));
  in(0, "a b vlan=10 prio=7");
  counted();
  Packet packet;
  packet.set_data(bytes_of("x b"));
  ok(sdk.send_packet_by_port(none_of_them, untagged, packet));
  EXPECT_EQ(counted(), "1 out q0; 6 out q0");
  skip({1, 6}, 2);
}

TEST_F(PortTest, BrokenFramesAreErrors) {
  in(0, std::vector<std::uint8_t>(13, 0));
  std::vector<std::uint8_t> frame = bytes_of("a b vlan=10");
  frame.resize(15);
  in(0, frame);
  in(0, "a b type=0x100 payload=01");  // an 802.3 length beyond the end
  EXPECT_EQ(stat(0, STAT_IN_UNDERSIZE), 1u);
  EXPECT_EQ(stat(0, STAT_IN_ERRORS), 3u);
  EXPECT_EQ(drops(0, DropReason::malformed), 2u);
  EXPECT_EQ(stat(0, STAT_IN_UNICAST_PACKETS), 0u);
}

// ---- Counters -----------------------------------------------------------------------------------

// effect: get_port_stat_counter - counts frames by kind, size and queue, and octets
// effect: get_port_stat_counter32 - the same
// effect: get_port_stat_counter_all64 - the same
// effect: get_port_stat_counter_all32 - the same
// effect: get_port_stat_counter_all64_ext - the same
// effect: get_port_stat_counter_all32_ext - the same
// effect: get_port_brief_stat_counter64 - sums of them
// effect: get_port_brief_stat_counter32 - sums of them
// effect: get_port_brief_stat_counter_all64 - sums of them
TEST_F(PortTest, CountsByFrames) {
  const unsigned sizes[] = {60, 61, 123, 124, 251, 252, 507, 508, 1019, 1020, 1514};
  for (const unsigned size : sizes) in(0, "a b size=" + std::to_string(size));
  in(0, "a 01:00:5e:00:00:05 size=60");
  in(0, "a all size=60");
  skip({1}, 13);
  skip({2}, 2);
  const std::uint64_t octets = std::accumulate(std::begin(sizes), std::end(sizes), 120u);
  const struct {
    PortIndex port;
    stat_type_t type;
    std::uint64_t value;
  } kRows[] = {
      {0, STAT_IN_OCTETS, octets},        {0, STAT_IN_UNICAST_PACKETS, 11},
      {0, STAT_IN_MULTICAST_PACKETS, 1},  {0, STAT_IN_BROADCAST_PACKETS, 1},
      {0, STAT_IN_PACKETS_64, 3},         {0, STAT_IN_PACKETS_65_127, 2},
      {0, STAT_IN_PACKETS_128_255, 2},    {0, STAT_IN_PACKETS_256_511, 2},
      {0, STAT_IN_PACKETS_512_1023, 2},   {0, STAT_IN_PACKETS_1024_1518, 2},
      {1, STAT_OUT_OCTETS, octets},       {1, STAT_OUT_UNICAST_PACKETS, 11},
      {2, STAT_OUT_MULTICAST_PACKETS, 1}, {2, STAT_OUT_BROADCAST_PACKETS, 1},
      {1, STAT_OUT_QUEUE_0, 13},          {0, STAT_OUT_OCTETS, 0},
  };
  std::list<StatCounter64> all64;
  std::list<StatCounter32> all32;
  StatCounter64 array64[STAT_TYPE_COUNT];
  StatCounter32 array32[STAT_TYPE_COUNT];
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.type);
    EXPECT_EQ(stat(row.port, row.type), row.value);
    unsigned low = 0;
    ok(sdk.get_port_stat_counter32(mp(row.port), row.type, low));
    EXPECT_EQ(low, row.value);
    unsigned room = STAT_TYPE_COUNT;
    all64.clear();
    all32.clear();
    ok(sdk.get_port_stat_counter_all64(mp(row.port), all64));
    ok(sdk.get_port_stat_counter_all32(mp(row.port), all32));
    ok(sdk.get_port_stat_counter_all64_ext(mp(row.port), array64, room));
    ok(sdk.get_port_stat_counter_all32_ext(mp(row.port), array32, room));
    EXPECT_EQ(std::next(all64.begin(), row.type)->value, row.value);
    EXPECT_EQ(std::next(all32.begin(), row.type)->value, row.value);
    EXPECT_EQ(array64[row.type].value, row.value);
    EXPECT_EQ(array32[row.type].value, row.value);
  }
  unsigned long long in_packets = 0;
  unsigned low = 0;
  ok(sdk.get_port_brief_stat_counter64(mp(0), BRIEF_STAT_IN_PACKETS, in_packets));
  ok(sdk.get_port_brief_stat_counter32(mp(1), BRIEF_STAT_OUT_PACKETS, low));
  EXPECT_TRUE(in_packets == 13 && low == 13);
  std::list<BriefStatCounter64> brief;
  ok(sdk.get_port_brief_stat_counter_all64(mp(0), brief));
  ASSERT_EQ(brief.size(), static_cast<std::size_t>(BRIEF_STAT_TYPE_COUNT));
  EXPECT_EQ(std::next(brief.begin(), BRIEF_STAT_IN_PACKETS)->value, 13u);
}

// effect: set_port_stat_enable - off: frames pass uncounted
// effect: clear_port_stat_counter - counting starts again from 0
TEST_F(PortTest, CountersStopAndStartAgain) {
  in(0, "a b");
  ok(sdk.set_port_stat_enable(mp(0), false));
  bool on = true;
  ok(sdk.get_port_stat_enabled(mp(0), on));
  EXPECT_FALSE(on);
  in(0, "a b");
  EXPECT_EQ(stat(0, STAT_IN_UNICAST_PACKETS), 1u);
  ok(sdk.set_port_stat_enable(mp(0), true));
  ok(sdk.clear_port_stat_counter(mp(0)));
  in(0, "a b");
  EXPECT_EQ(stat(0, STAT_IN_UNICAST_PACKETS), 1u);
  skip({1}, 3);
}

// effect: free_call - clears the counters of all ports
TEST_F(PortTest, FreeCallClearsAllCounters) {
  in(0, "a b");
  skip({1});
  ok(sdk.free_call(kFreeCallClearCounters));
  EXPECT_EQ(stat(0, STAT_IN_OCTETS) + stat(1, STAT_OUT_OCTETS), 0u);
}

// A cable that sends every second frame only.
TEST_F(PortTest, WhatTheCableRefusesIsAnError) {
  class HalfCable : public Cable {
    void plug(CableSink&, PortIndex) override {}
    std::size_t transmit(FramePtr* frames, std::size_t count) override {
      for (std::size_t i = 0; i < count; ++i) frames[i].reset();
      return (count + 1) / 2;
    }
    bool carrier() const override { return true; }
    std::string describe() const override { return "half"; }
  };
  card.plug(1, std::make_unique<HalfCable>());
  counted();
  burst(0, std::vector<std::string>(10, "a b"));
  EXPECT_EQ(counted(), "0 in x10; 1 out x10 out-errors x5 q0 x10 !cable-refused x5");
}

}  // namespace
}  // namespace softcard
