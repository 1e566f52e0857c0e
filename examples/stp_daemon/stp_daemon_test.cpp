// SPDX-License-Identifier: Apache-2.0
//
// The daemon on the software line card, in virtual time. The other bridges are the test itself: it
// sends their BPDUs into the ports.

#include "stp_daemon.h"

#include "vornlcapi/test/gtest.h"

namespace {

using namespace std::chrono_literals;
using stp::Role;
using vorn::test::Bytes;

constexpr stp::Mac kOwnMac = {0x00, 0x00, 0x5e, 0x00, 0x53, 0xf0};
constexpr stp::Mac kOtherMac = {0x00, 0x00, 0x5e, 0x00, 0x53, 0xf1};

//   1/1/0, 1/1/1: towards other bridges;  1/1/2: a station
class StpDaemonTest : public vorn::test::SwitchTest {
 protected:
  StpDaemonTest() : SwitchTest("ports 3 speed 1000\n") { EXPECT_TRUE(daemon.start()); }
  void TearDown() override {
    drain();
    SwitchTest::TearDown();
  }

  // A configuration BPDU of a bridge with this priority that is the root.
  static std::string bpdu(std::uint16_t priority, unsigned port, unsigned age_ticks = 0) {
    const auto hex = [](std::uint64_t number, unsigned bytes) {
      static const char kDigits[] = "0123456789abcdef";
      std::string text;
      for (unsigned shift = bytes * 8; shift > 0; shift -= 4) {
        text += kDigits[number >> (shift - 4) & 0xf];
      }
      return text;
    };
    const std::uint64_t id = stp::bridge_id(priority, kOtherMac);
    return "eth src=00:00:5e:00:53:f1 dst=01:80:c2:00:00:00 llc dsap=0x42 ssap=0x42 payload=" +
           hex(0, 5) + hex(id, 8) + hex(0, 4) + hex(id, 8) + hex(port, 2) + hex(age_ticks, 2) +
           hex(0x1400, 2) + hex(0x0200, 2) + hex(0x0f00, 2);
  }
  // The other bridge says hello every two seconds, so that its word does not age.
  void pass(std::chrono::seconds time, std::uint16_t priority, std::initializer_list<unsigned> at) {
    for (; time > 0s; time -= 2s) {
      for (const unsigned number : at) inject(port(number), bpdu(priority, number + 1));
      warp(2s);
      drain();
    }
  }
  void drain() {
    Bytes frame;
    for (unsigned number = 0; number < 3; ++number) {
      while (take(port(number), frame)) continue;
    }
  }
  std::vector<stp_state_t> states() const {
    std::vector<stp_state_t> all;
    for (unsigned number = 0; number < 3; ++number) {
      stp_state_t state = STP_STATE_DISABLED;
      EXPECT_OK(vorn_get_port_stp_state(port(number), state));
      EXPECT_EQ(state, daemon.state(number));
      all.push_back(state);
    }
    return all;
  }

  static constexpr auto kBlocking = STP_STATE_BLOCKING;
  static constexpr auto kForwarding = STP_STATE_FORWARDING;

  EventLoop loop;
  stp::Daemon daemon{loop, stp::Settings{kOwnMac}, {port(0), port(1), port(2)}};
};

using States = std::vector<stp_state_t>;

TEST_F(StpDaemonTest, AloneItIsTheRootAndForwardsAfterTwoDelays) {
  EXPECT_TRUE(daemon.is_root());
  EXPECT_EQ(states(), States(3, STP_STATE_LISTENING));
  warp(15s);
  EXPECT_EQ(states(), States(3, STP_STATE_LEARNING));
  warp(14999ms);
  EXPECT_EQ(states(), States(3, STP_STATE_LEARNING));
  warp(1ms);
  EXPECT_EQ(states(), States(3, kForwarding));
}

TEST_F(StpDaemonTest, TheRootSaysHelloOnEachPortEveryTwoSeconds) {
  drain();
  warp(2s);
  // Root and bridge are this one; maximum age 20 s, hello 2 s, forward delay 15 s.
  const std::string own = "800000005e0053f0";
  const std::string head =
      "eth untagged src=00:00:5e:00:53:f0 dst=01:80:c2:00:00:00 llc dsap=0x42 ssap=0x42 "
      "payload=0000000000" +
      own + "00000000" + own;
  EXPECT_FRAME(port(0), head + "80010000140002000f00");
  EXPECT_FRAME(port(1), head + "80020000140002000f00");
  EXPECT_FRAME(port(2), head + "80030000140002000f00");
  EXPECT_NO_FRAMES();
}

TEST_F(StpDaemonTest, ABetterBridgeBecomesTheRoot) {
  pass(30s, 4096, {0});
  EXPECT_FALSE(daemon.is_root());
  EXPECT_EQ(daemon.root(), stp::bridge_id(4096, kOtherMac));
  EXPECT_EQ(daemon.root_cost(), 4u);
  EXPECT_EQ(daemon.role(0), Role::root);
  EXPECT_EQ(daemon.role(1), Role::designated);
  inject(port(0), bpdu(4096, 1));  // is relayed to the ports away from the root, a second older
  EXPECT_FRAME(port(1), "eth src=00:00:5e:00:53:f0 dst=01:80:c2:00:00:00 llc");
  EXPECT_FRAME(port(2), "eth src=00:00:5e:00:53:f0 dst=01:80:c2:00:00:00 llc");
  EXPECT_NO_FRAMES();
}

TEST_F(StpDaemonTest, AWorseBridgeChangesNothing) {
  pass(30s, 61440, {0});
  EXPECT_TRUE(daemon.is_root());
  EXPECT_EQ(states(), States(3, kForwarding));
}

TEST_F(StpDaemonTest, OneOfTwoWaysToTheRootIsBlocked) {
  pass(40s, 4096, {0, 1});
  EXPECT_EQ(daemon.role(1), Role::alternate);
  EXPECT_EQ(states(), (States{kForwarding, kBlocking, kForwarding}));
  inject(port(2), station(2).to_all());
  EXPECT_FRAME(port(0), station(2).to_all());
  EXPECT_NO_FRAMES();  // not on the blocked way
}

TEST_F(StpDaemonTest, TheOtherWayOpensWhenTheRootPortsLinkGoes) {
  pass(40s, 4096, {0, 1});
  cut(port(0));
  EXPECT_EQ(daemon.role(0), Role::disabled);
  EXPECT_EQ(daemon.role(1), Role::root);
  pass(30s, 4096, {1});
  EXPECT_EQ(states(), (States{kBlocking, kForwarding, kForwarding}));
}

TEST_F(StpDaemonTest, WithoutTheRootsWordItTakesOverAfterMaxAge) {
  pass(40s, 4096, {0});
  inject(port(0), bpdu(4096, 1, 5 * 256));  // five seconds old already
  drain();
  warp(14999ms);
  EXPECT_FALSE(daemon.is_root());
  warp(1ms);
  EXPECT_TRUE(daemon.is_root());
  EXPECT_EQ(daemon.role(0), Role::designated);
}

TEST_F(StpDaemonTest, AStateThatIsRefusedIsTriedAgain) {
  fail("set_port_stp_state");
  warp(15s);  // listening to learning: the first port is refused
  EXPECT_EQ(states(), (States{STP_STATE_LISTENING, STP_STATE_LEARNING, STP_STATE_LEARNING}));
  warp(1s);  // the next hello
  EXPECT_EQ(states(), States(3, STP_STATE_LEARNING));
}

TEST_F(StpDaemonTest, MalformedBpdusAreIgnored) {
  for (const char* const frame :
       {"eth src=00:00:5e:00:53:f1 dst=01:80:c2:00:00:00 llc dsap=0x42 ssap=0x42 payload=00",
        "eth src=00:00:5e:00:53:f1 dst=01:80:c2:00:00:00 type=0x88b5 size=60",
        "eth src=00:00:5e:00:53:f1 dst=01:80:c2:00:00:00 llc dsap=0x42 ssap=0x42 "
        "payload=000000ff size=60"}) {
    inject(port(0), frame);
  }
  inject(port(0), bpdu(4096, 1, 20 * 256));  // too old
  EXPECT_TRUE(daemon.is_root());
}

}  // namespace
