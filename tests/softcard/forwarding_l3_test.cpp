// SPDX-License-Identifier: Apache-2.0
//
// Routing between VLANs.
//
//    a 192.0.2.1    c 198.51.100.1       VLAN 10: 0, 1 untagged, 3 tagged; router interface r
//      |              |                  VLAN 20: 2 untagged, 3 tagged; router interface s
//    +-0----1---------2----3-+           LAG z: 4, 5 in VLAN 20
//    |          card         |
//    +-----------------------+

#include <cstring>

#include "tests/softcard/switch_fixture.h"

namespace softcard {
namespace {

constexpr unsigned kC4 = 0xc6336401;  // 198.51.100.1
const unsigned char kC6[16] = {0x20, 0x01, 0x0d, 0xb8, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
const unsigned char kMask6[16] = {0xff, 0xff, 0xff, 0xff, 0xff, 0xff};
constexpr char kPing[] = "a r ipv4 src=192.0.2.1 dst=198.51.100.1 ttl=9 icmp type=8 payload=0102";
constexpr char kPing6[] = "a r ipv6 src=2001:db8:1::1 dst=2001:db8:2::1 hops=9 icmp6 type=128";

class L3ForwardingTest : public SwitchTest {
 protected:
  L3ForwardingTest() {
    vlan(10, mps({3}), mps({0, 1}));
    vlan(20, mps({3}), mps({2, 4, 5}));
    z = lag({4, 5});
    for (const PortIndex port : card.tables().ports.all()) {
      ok(sdk.set_port_flood_blocking_cpu(mp(port), FLOOD_BLOCK_ALL));
    }
    ok(sdk.create_l3_interface(mac('r'), 10, r));
    ok(sdk.create_l3_interface(mac('s'), 20, s));
  }
  bool route(PortIndex port, unsigned ip, unsigned mask, char next_hop, unsigned metric = 0) {
    return sdk.add_l3_route_ip4(mp(port), false, ip, mask, mac(next_hop), s, metric);
  }
  unsigned r = 0, s = 0, z = 0;
};

// effect: create_l3_interface - frames to its address in its VLAN are routed
// effect: add_l3_host_ip4 - to the host: new addresses, VLAN and TTL
// effect: get_l3_host_ip4 - tells the way
TEST_F(L3ForwardingTest, RoutesToAHost) {
  in(0, kPing);
  cpu(RX_REASON_NO_ROUTE, kPing);
  ok(sdk.add_l3_host_ip4(mp(2), false, kC4, mac('c'), s));
  in(0, kPing);
  out(2, "s c untagged ipv4 src=192.0.2.1 dst=198.51.100.1 ttl=8 icmp type=8 payload=0102");
  in(3, "a r vlan=10 prio=5 ipv4 src=192.0.2.1 dst=198.51.100.1 ttl=9");
  out(2, "s c untagged ipv4 ttl=8");
  Packet of_cpu;
  of_cpu.set_data(bytes_of("a r vlan=10 ipv4 src=192.0.2.1 dst=198.51.100.1 ttl=9"));
  ok(sdk.send_packet_from_cpu(of_cpu));
  out(2, "s c untagged ipv4 ttl=8");
  in(0, "a r vlan=20 ipv4 src=192.0.2.1 dst=198.51.100.1");  // not the router's address there
  EXPECT_EQ(drops(0, DropReason::not_member), 1u);
  in(3, "a r vlan=10 vlan=5 ipv4 src=192.0.2.1 dst=198.51.100.1");  // another network's packet
  out({0, 1}, "a r vlan=5 ipv4 ttl=64");
  unsigned char hop[6] = {};
  unsigned interface = 0;
  ok(sdk.get_l3_host_ip4(kC4, mp(2), hop, interface, false));
  EXPECT_TRUE(std::memcmp(hop, mac('c'), 6) == 0 && interface == s);
}

TEST_F(L3ForwardingTest, ChecksumFitsAfterwards) {
  ok(sdk.add_l3_host_ip4(mp(2), false, kC4, mac('c'), s));
  for (const char* ttl : {"2", "255", "128"}) {
    in(0,
       std::string("a r ipv4 src=192.0.2.1 dst=198.51.100.1 ttl=") + ttl + " udp sport=1 dport=2");
    std::vector<std::uint8_t> frame;
    ASSERT_TRUE(cable(2).take(frame));
    EXPECT_EQ(print_frame(frame.data(), frame.size()).find("checksum"), std::string::npos);
  }
}

TEST_F(L3ForwardingTest, WhatTheRouterHandsToTheCpu) {
  ok(sdk.add_l3_host_ip4(mp(2), false, kC4, mac('c'), s));
  ok(sdk.add_l3_host_ip6(mp(2), false, kC6, mac('c'), s));
  ok(sdk.set_port_mtu(mp(2), 100));
  const struct {
    unsigned reason;
    const char* frame;
  } kRows[] = {
      {RX_REASON_TTL, "a r ipv4 src=192.0.2.1 dst=198.51.100.1 ttl=1"},
      {RX_REASON_TTL, "a r ipv6 src=2001:db8:1::1 dst=2001:db8:2::1 hops=1"},
      {RX_REASON_OPTIONS, "a r ipv4 src=192.0.2.1 dst=198.51.100.1 options=94040000"},
      {RX_REASON_OPTIONS, "a r ipv6 src=2001:db8:1::1 dst=2001:db8:2::1 hopopts"},
      {RX_REASON_ROUTER, "a r arp op=request spa=192.0.2.1 tpa=192.0.2.254"},
      {RX_REASON_ROUTER, "a r type=0x88cc"},
      {RX_REASON_NO_ROUTE, "a r ipv4 src=192.0.2.1 dst=203.0.113.1"},
      {RX_REASON_NO_ROUTE, "a r ipv6 src=2001:db8:1::1 dst=2001:db8:3::1"},
      {RX_REASON_MTU, "a r ipv4 src=192.0.2.1 dst=198.51.100.1 size=101"},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.frame);
    in(0, row.frame);
    EXPECT_EQ(cpu(row.reason, "").vlan, 10u);
  }
  in(0, "a r ipv4 src=192.0.2.1 dst=198.51.100.1 checksum=0x1234");
  in(0, "a r ipv4 src=192.0.2.1 dst=198.51.100.1 length=9");
  EXPECT_EQ(drops(0, DropReason::bad_ip), 2u);
}

// Where default routes are there: what a router answers itself goes to the CPU, and what no router
// may pass on goes nowhere. The neighbours of these addresses are routed like any.
TEST_F(L3ForwardingTest, Martians) {
  const unsigned char any[16] = {};
  ok(route(2, 0, 0, 'c'));
  ok(sdk.add_l3_route_ip6(mp(2), false, any, any, mac('c'), s));
  enum Scope { kGlobal, kLink, kHost };
  const struct {
    const char* address;
    Scope scope;
  } kRows[] = {{"0.0.0.0", kHost},
               {"0.0.0.1", kGlobal},
               {"126.255.255.255", kGlobal},
               {"127.0.0.1", kHost},
               {"127.255.255.255", kHost},
               {"128.0.0.0", kGlobal},
               {"169.253.255.255", kGlobal},
               {"169.254.0.0", kLink},
               {"169.254.255.255", kLink},
               {"169.255.0.0", kGlobal},
               {"223.255.255.255", kGlobal},
               {"224.0.0.5", kLink},
               {"239.255.255.255", kLink},
               {"240.0.0.0", kGlobal},
               {"255.255.255.254", kGlobal},
               {"255.255.255.255", kLink},
               {"::", kHost},
               {"::1", kHost},
               {"::2", kGlobal},
               {"100::1", kGlobal},
               {"0:1::", kGlobal},
               {"fe7f::1", kGlobal},
               {"fe80::1", kLink},
               {"febf::1", kLink},
               {"fec0::1", kGlobal},
               {"feff::1", kGlobal},
               {"ff00::", kLink},
               {"ff02::1", kLink}};
  const std::string routed = "0 in; 2 out q0", dropped = "0 in in-discards !martian";
  counted();
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.address);
    const bool v6 = std::strchr(row.address, ':') != nullptr;
    const std::string ip = v6 ? "ipv6" : "ipv4", peer = v6 ? "2001:db8::9" : "203.0.113.9";
    in(0, "a r " + ip + " src=" + peer + " dst=" + row.address + " payload=01");
    if (row.scope == kLink) cpu(RX_REASON_ROUTER, "a r " + ip + " dst=" + row.address);
    if (row.scope == kGlobal) out(2, "s c " + ip + " dst=" + row.address);
    EXPECT_EQ(counted(), row.scope == kGlobal ? routed : row.scope == kHost ? dropped : "0 in");
    in(0, "a r " + ip + " src=" + row.address + " dst=" + peer + " payload=01");
    if (row.scope == kGlobal) out(2, "s c " + ip + " src=" + row.address);
    EXPECT_EQ(counted(), row.scope == kGlobal ? routed : dropped);
  }
  // The link's own addresses come before TTL, options and source.
  for (const char* frame : {"a r ipv4 src=0.0.0.0 dst=255.255.255.255 udp sport=68 dport=67",
                            "a r ipv6 src=fe80::1 dst=fe80::2 hops=255 icmp6 type=135",
                            "a r ipv4 src=192.0.2.1 dst=224.0.0.9 ttl=1 udp sport=520 dport=520",
                            "a r ipv6 src=fe80::1 dst=ff02::16 hops=1 hopopts icmp6 type=143"}) {
    in(0, frame);
    cpu(RX_REASON_ROUTER, frame);
  }
}

// effect: add_l3_route_ip4 - the longest prefix, then the lowest metric, then the earliest
// effect: delete_l3_route_by_subnet_ip4 - the next best takes over
// effect: clear_l3_route_table - no way is left
// effect: get_l3_route_by_subnet_ip4 - tells the way
TEST_F(L3ForwardingTest, LongestPrefixThenMetric) {
  ok(route(2, 0, 0, 'd'));
  ok(route(2, 0xc6330000, 0xffff0000, 'e'));
  ok(route(2, 0xc6336400, 0xffffff00, 'f', 5));
  ok(route(3, 0xc6336400, 0xffffff00, 'g', 3));
  in(0, kPing);
  out(3, "s g vlan=20 ipv4 ttl=8");
  unsigned char hop[6] = {};
  unsigned interface = 0, metric = 0;
  ok(sdk.get_l3_route_by_subnet_ip4(0xc6336400, 0xffffff00, mp(3), false, hop, interface, metric));
  EXPECT_TRUE(std::memcmp(hop, mac('g'), 6) == 0 && interface == s && metric == 3);
  const auto gone = [&](unsigned ip, unsigned mask, PortIndex port) {
    ok(sdk.delete_l3_route_by_subnet_ip4(ip, mask, mp(port), false));
    in(0, kPing);
  };
  gone(0xc6336400, 0xffffff00, 3);
  out(2, "s f");
  gone(0xc6336400, 0xffffff00, 2);
  out(2, "s e");
  gone(0xc6330000, 0xffff0000, 2);
  out(2, "s d");
  ok(sdk.add_l3_host_ip4(mp(2), false, kC4, mac('c'), s));  // a host before any route
  in(0, kPing);
  out(2, "s c");
  ok(sdk.clear_l3_host_table());
  ok(sdk.clear_l3_route_table());
  in(0, kPing);
  cpu(RX_REASON_NO_ROUTE, "");
}

// effect: add_l3_host_ip6 - to the host: new addresses, VLAN and hop limit
// effect: add_l3_route_ip6 - the same by subnet
// effect: get_l3_host_ip6 - tells the way
// effect: get_l3_route_by_subnet_ip6 - tells the way
// effect: delete_l3_route_by_subnet_ip6 - no way is left
// effect: delete_l3_host_by_addr_ip6 - the route takes over
TEST_F(L3ForwardingTest, Ipv6Alike) {
  ok(sdk.add_l3_route_ip6(mp(2), false, kC6, kMask6, mac('d'), s));
  in(0, kPing6);
  out(2, "s d ipv6 src=2001:db8:1::1 hops=8 icmp6 type=128");
  ok(sdk.add_l3_host_ip6(mp(3), false, kC6, mac('c'), s));
  in(0, kPing6);
  out(3, "s c vlan=20 ipv6 hops=8");
  unsigned char hop[6] = {};
  unsigned interface = 0;
  ok(sdk.get_l3_host_ip6(kC6, mp(3), hop, interface, false));
  EXPECT_TRUE(std::memcmp(hop, mac('c'), 6) == 0 && interface == s);
  ok(sdk.get_l3_route_by_subnet_ip6(kC6, kMask6, mp(2), false, interface, hop));
  EXPECT_EQ(std::memcmp(hop, mac('d'), 6), 0);
  ok(sdk.delete_l3_host_by_addr_ip6(kC6, mp(3), false));
  in(0, kPing6);
  out(2, "s d");
  ok(sdk.delete_l3_route_by_subnet_ip6(kC6, kMask6, mp(2), false));
  in(0, kPing6);
  cpu(RX_REASON_NO_ROUTE, kPing6);
}

// effect: delete_l3_host_by_addr_ip4 - packets to the host have no way
// effect: delete_l3_host_by_network_ip4 - nor those to the hosts of the /24
// effect: delete_l3_host_by_network_ip6 - nor those to the hosts of the /64
// effect: delete_l3_host_by_interface - nor those to the hosts behind the interface
// effect: clear_l3_host_table - nor those to any host
// effect: delete_l3_route_by_interface - nor those by routes over the interface
TEST_F(L3ForwardingTest, EveryDeletionTakesTheWayAway) {
  const auto add4 = [&] { ok(sdk.add_l3_host_ip4(mp(2), false, kC4, mac('c'), s)); };
  const auto add6 = [&] { ok(sdk.add_l3_host_ip6(mp(2), false, kC6, mac('c'), s)); };
  const auto gone = [&](const char* ping, bool result) {
    ok(result);
    in(0, ping);
    cpu(RX_REASON_NO_ROUTE, ping);
  };
  add4();
  gone(kPing, sdk.delete_l3_host_by_addr_ip4(kC4, mp(2), false));
  add4();
  gone(kPing, sdk.delete_l3_host_by_network_ip4(0xc63364ff));
  add6();
  gone(kPing6, sdk.delete_l3_host_by_network_ip6(kC6));
  add4();
  add6();
  gone(kPing, sdk.delete_l3_host_by_interface(s, false));
  gone(kPing6, sdk.delete_l3_host_by_interface(s, true));
  add4();
  add6();
  gone(kPing, sdk.clear_l3_host_table());
  gone(kPing6, true);
  ok(route(2, 0, 0, 'c'));
  gone(kPing, sdk.delete_l3_route_by_interface(s, false));
}

// effect: create_l3_interface_with_id - as create_l3_interface; replacing moves the address
// effect: get_l3_interface - tells the address
// effect: delete_l3_interface - frames to the address are switched again
// effect: delete_l3_interface_by_id - the same
// effect: delete_l3_interface_all - the same
TEST_F(L3ForwardingTest, InterfacesComeAndGo) {
  ok(sdk.add_l3_host_ip4(mp(2), false, kC4, mac('c'), s));
  ok(sdk.create_l3_interface_with_id(mac('t'), 10, r, true));
  unsigned vlan_id = 0;
  unsigned char address[6] = {};
  ok(sdk.get_l3_interface(r, vlan_id, address));
  EXPECT_TRUE(vlan_id == 10 && std::memcmp(address, mac('t'), 6) == 0);
  const std::string to_t = std::string(kPing).replace(2, 1, "t");
  const auto switched = [&](const std::string& frame) {
    in(0, frame);
    out(1, frame);
    skip({3});
  };
  switched(kPing);
  in(0, to_t);
  out(2, "s c");
  ok(sdk.delete_l3_interface(mac('t'), 10));
  switched(to_t);
  EXPECT_FALSE(sdk.delete_l3_interface_by_id(s)) << "a host leads through it";
  ok(sdk.clear_l3_host_table());
  ok(sdk.create_l3_interface(mac('t'), 10, r));
  ok(sdk.delete_l3_interface_by_id(r));
  switched(to_t);
  ok(sdk.create_l3_interface(mac('t'), 10, r));
  ok(sdk.delete_l3_interface_all());
  switched(to_t);
}

TEST_F(L3ForwardingTest, OutOfALagAndBackOutOfTheSamePort) {
  ok(sdk.add_l3_host_ip4(Mp(0, z), true, kC4, mac('c'), s));
  ok(sdk.set_port_link_state(mp(5), PHY_STATE_DOWN));
  in(0, kPing);
  out(4, "s c untagged ipv4 ttl=8");
  ok(sdk.set_port_link_state(mp(4), PHY_STATE_DOWN));
  in(0, kPing);
  EXPECT_EQ(drops(0, DropReason::lag_empty), 1u);
  ok(sdk.clear_l3_host_table());
  ok(sdk.add_l3_host_ip4(mp(3), false, kC4, mac('c'), s));
  in(3, "a r vlan=10 ipv4 src=192.0.2.1 dst=198.51.100.1");  // one arm, two VLANs
  out(3, "s c vlan=20 ipv4 ttl=63");
}

// A way through a port that is, or becomes, a member of a LAG is the LAG's.
TEST_F(L3ForwardingTest, HostsAndRoutesOnAMemberAreTheLags) {
  const unsigned char far6[16] = {0x20, 0x01, 0x0d, 0xb8, 0, 9};
  std::list<Mp> member = mps({5});
  ok(sdk.delete_ports_from_lag(z, member));
  ok(sdk.add_l3_host_ip4(mp(5), false, kC4, mac('c'), s));  // it becomes one
  ok(sdk.add_ports_to_lag(z, member));
  ok(sdk.add_l3_host_ip6(mp(5), false, kC6, mac('c'), s));
  ok(route(5, 0xcb007100, 0xffffff00, 'd'));
  ok(sdk.add_l3_route_ip6(mp(5), false, far6, kMask6, mac('d'), s));
  const char* const kFrames[] = {kPing, kPing6, "a r ipv4 src=192.0.2.1 dst=203.0.113.1",
                                 "a r ipv6 src=2001:db8:1::1 dst=2001:db8:9::1"};
  for (const PortIndex left : {PortIndex{4}, PortIndex{5}}) {
    ok(sdk.set_port_link_state(mp(left == 4 ? 5 : 4), PHY_STATE_DOWN));
    for (const char* frame : kFrames) in(0, frame);
    out(left, "s c ipv4");
    out(left, "s c ipv6");
    out(left, "s d ipv4");
    out(left, "s d ipv6");
    ok(sdk.set_port_link_state(mp(left == 4 ? 5 : 4), PHY_STATE_UP));
  }
  unsigned char hop[6] = {};
  unsigned interface = 0;
  ok(sdk.get_l3_host_ip4(kC4, mp(5), hop, interface, false));  // it reads as it was set
  EXPECT_FALSE(sdk.get_l3_host_ip4(kC4, Mp(0, z), hop, interface, true));
  ok(sdk.delete_ports_from_lag(z, member));
  ok(sdk.set_port_link_state(mp(5), PHY_STATE_DOWN));
  counted();
  in(0, kPing);
  EXPECT_EQ(counted(), "0 in; 5 out-discards !egress-down");
}

TEST_F(L3ForwardingTest, BurstsAreRoutedFrameByFrame) {
  ok(sdk.add_l3_host_ip4(mp(2), false, kC4, mac('c'), s));
  ok(route(3, 0xcb007100, 0xffffff00, 'd'));
  ok(route(3, 0xcb007106, 0xffffffff, 'e'));
  ok(sdk.add_l3_host_ip6(mp(2), false, kC6, mac('f'), s));
  ok(sdk.add_l3_route_ip6(mp(3), false, kC6, kMask6, mac('g'), s));
  const char* const kFrames[] = {kPing,
                                 "a r ipv4 src=192.0.2.1 dst=203.0.113.5",
                                 "a b",
                                 "a r ipv4 src=192.0.2.1 dst=192.0.0.1",
                                 kPing6,
                                 "a r ipv4 src=192.0.2.1 dst=203.0.113.6",
                                 "a r ipv6 src=2001:db8:1::1 dst=2001:db8:2::7",
                                 "a r ipv6 src=2001:db8:1::1 dst=2001:db9::1"};
  burst(0, {std::begin(kFrames), std::end(kFrames)});
  out(2, "s c ipv4 dst=198.51.100.1");
  out(3, "s d ipv4 dst=203.0.113.5");
  out({1, 3}, "a b");
  out(2, "s f ipv6 dst=2001:db8:2::1");
  out(3, "s e ipv4 dst=203.0.113.6");
  out(3, "s g ipv6 dst=2001:db8:2::7");
  cpu(RX_REASON_NO_ROUTE, kFrames[3]);
  cpu(RX_REASON_NO_ROUTE, kFrames[7]);
}

}  // namespace
}  // namespace softcard
