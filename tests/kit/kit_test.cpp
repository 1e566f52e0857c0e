// SPDX-License-Identifier: Apache-2.0
//
// The test kit under GoogleTest: what its expectations accept, and what they say when they do not
// hold.

#include <gtest/gtest-spi.h>

#include "libxorp/eventloop.hh"
#include "vornlcapi/test/gtest.h"

namespace vorn::test {
namespace {

using namespace std::chrono_literals;

//   a at 1/1/0, b at 1/1/1: VLAN 10;  c at 1/1/2: VLAN 1
class KitTest : public SwitchTest {
 protected:
  KitTest() {
    EXPECT_OK(vorn_create_vlan(10));
    EXPECT_OK(vorn_add_ports_to_vlan(10, {}, {a.port, b.port}));
    EXPECT_OK(vorn_delete_ports_from_vlan(1, {a.port, b.port}));
    EXPECT_OK(vorn_set_ports_pvid({a.port, b.port}, 10));
  }
  Station a = station(0), b = station(1), c = station(2);
};

TEST_F(KitTest, FramesAreExpectedByStationAndByPort) {
  inject(a, a.to_all() + " arp tpa=" + b.ipv4);
  EXPECT_FRAME(b, "eth untagged src=00:00:5e:00:53:01 arp tpa=192.0.2.2");
  EXPECT_NO_FRAMES();
  inject(b.port, frame_of(b.to(a)));
  EXPECT_FRAME(port(0), b.to(a));
  EXPECT_NE(why().find("fdb"), std::string::npos) << why();
}

TEST_F(KitTest, WhatDoesNotHoldSaysWhatCame) {
  inject(a, a.to(b) + " vlan=10 ipv4 src=192.0.2.1 dst=192.0.2.2 ttl=9");
  EXPECT_NONFATAL_FAILURE(EXPECT_FRAME(c, "eth"), "1/1/2 sent nothing; wanted eth");
  EXPECT_NONFATAL_FAILURE(EXPECT_FRAME(b, "eth ipv4 ttl=8"), "ttl=9");
  inject(a, a.to(b));
  EXPECT_NONFATAL_FAILURE(EXPECT_NO_FRAMES(), "1/1/1: eth src=00:00:5e:00:53:01");
  EXPECT_NO_FRAMES();  // told once
  inject(a, a.to(b));
  EXPECT_NONFATAL_FAILURE(EXPECT_FRAME(b, "eht"), "pattern 'eht'");
}

TEST_F(KitTest, ARefusalHasItsReason) {
  fail("create_vlan", 2);
  EXPECT_OK(vorn_create_vlan(20));
  EXPECT_NONFATAL_FAILURE(EXPECT_OK(vorn_create_vlan(30)), "vorn_create_vlan(30) was refused");
  EXPECT_OK(vorn_create_vlan(30));
  EXPECT_NONFATAL_FAILURE(EXPECT_REFUSED(vorn_create_vlan(40), ""), "was not refused");
  EXPECT_FALSE(softcard::host::warp_ns(UINT64_MAX) && softcard::host::warp_ns(1));
  EXPECT_REFUSED(false, "beyond 2^64 ns");
  EXPECT_NONFATAL_FAILURE(EXPECT_REFUSED(false, "above 4094"), "wanted: above 4094");
}

TEST_F(KitTest, PacketsForTheCpuAreExpectedWithTheirReason) {
  const std::string lldp = "eth src=00:00:5e:00:53:01 dst=01:80:c2:00:00:0e type=0x88cc";
  inject(a, lldp);
  EXPECT_NONFATAL_FAILURE(EXPECT_CPU_PACKET(RX_REASON_RESERVED, lldp), "the CPU got nothing");
  listen_to_cpu();
  inject(a, lldp);
  EXPECT_CPU_PACKET(RX_REASON_RESERVED, lldp);
  inject(a, lldp);
  EXPECT_NONFATAL_FAILURE(EXPECT_CPU_PACKET(RX_REASON_FLOW, lldp), "reserved group address");
  inject(a, lldp);
  EXPECT_NONFATAL_FAILURE(EXPECT_NO_FRAMES(), "CPU, for reserved group address");
}

TEST_F(KitTest, LinksAreCutAndPatched) {
  phy_state_t state = PHY_STATE_UP;
  cut(b.port);
  EXPECT_OK(vorn_get_port_link_state(b.port, state));
  EXPECT_EQ(state, PHY_STATE_DOWN);
  restore(b.port);
  EXPECT_OK(vorn_get_port_link_state(b.port, state));
  EXPECT_EQ(state, PHY_STATE_UP);
  //  c -- 1/1/2 [VLAN 1] 1/1/7 ==== 1/1/1 [VLAN 10] 1/1/0 -- a
  patch(port(7), b.port);
  for (const unsigned other : {3u, 4u, 5u, 6u}) cut(port(other));
  inject(c, c.to_all());
  EXPECT_FRAME(a, c.to_all());
  EXPECT_THROW(patch(b.port, b.port), Failure);
  EXPECT_THROW(inject(b, b.to(a)), Failure);
}

TEST_F(KitTest, ADaemonsTimersLiveOnTheSwitchsTime) {
  EventLoop loop;
  bool fired = false;
  const XorpTimer timer = loop.set_flag_after_ms(2000, &fired);
  warp(1999ms);
  EXPECT_FALSE(fired);
  warp(1ms);
  EXPECT_TRUE(fired);
  EXPECT_EQ(now(), 2s);
}

TEST_F(KitTest, ATestMayEndTheCardItself) {
  EXPECT_OK(vorn_lcmgr_api_terminate());
  EXPECT_THROW(card(), Failure);
  EXPECT_NO_FRAMES();
}

}  // namespace
}  // namespace vorn::test
