// SPDX-License-Identifier: Apache-2.0
//
// The tables through the library: what each operation leaves behind, and what is refused without
// changing anything. Frames are tested elsewhere.

#include <cstring>
#include <functional>

#include "softcard/sdk/sdk.h"
#include "tests/softcard/host_fixture.h"
#include "vorn_lag_list.h"
#include "vorn_port_mapping.h"
#include "vorn_sdk.h"

namespace softcard {
namespace {

using Tables = HostTest;

constexpr unsigned kIp = 0xc0000201;  // 192.0.2.1
struct Mac {
  explicit Mac(unsigned char last, unsigned char first = 2)
      : bytes{first, 0, 0x5e, 0, 0x53, last} {}
  operator const unsigned char*() const { return bytes; }
  unsigned char bytes[6];
};
struct Ip6 {
  explicit Ip6(unsigned char last) : bytes{0x20, 1, 0x0d, 0xb8} { bytes[15] = last; }
  // A mask.
  static Ip6 mask(unsigned bits) {
    Ip6 ip(0);
    for (unsigned i = 0; i < 128; ++i) {
      const auto bit = static_cast<unsigned char>(0x80 >> i % 8);
      ip.bytes[i / 8] =
          static_cast<unsigned char>(i < bits ? ip.bytes[i / 8] | bit : ip.bytes[i / 8] & ~bit);
    }
    return ip;
  }
  operator const unsigned char*() const { return bytes; }
  unsigned char bytes[16];
};

// "tagged; untagged" of a VLAN, "-" when it is refused.
std::string members(unsigned number) {
  std::list<Usp> tagged, untagged;
  if (!vorn_get_vlan_info(number, tagged, untagged)) return "-";
  return text(tagged) + "; " + text(untagged);
}

std::string expansion(const Usp& usp) {
  std::list<Mp> mps;
  std::list<Usp> usps;
  if (!vorn_usp_to_mp_list(usp, mps)) return "-";
  EXPECT_TRUE(vorn_mp_list_to_usp_list(mps, usps));
  return text(usps);
}

// ---- VLANs --------------------------------------------------------------------------------------

TEST_F(Tables, VlanMembership) {
  EXPECT_EQ(members(10), "-");
  EXPECT_EQ(expansion(vlan(10)), "-");
  for (const unsigned bad : {0u, 4095u, 4096u + 10u, 1u})
    EXPECT_FALSE(vorn_create_vlan(bad)) << bad;
  EXPECT_TRUE(vorn_create_vlan(10));
  EXPECT_FALSE(vorn_create_vlan(10));
  EXPECT_EQ(members(10), "; ");
  EXPECT_EQ(expansion(vlan(10)), "");
  EXPECT_TRUE(vorn_add_ports_to_vlan(10, {port(9), port(2)}, {port(3)}));
  EXPECT_EQ(members(10), "1/1/2 1/1/9; 1/1/3");
  EXPECT_TRUE(vorn_add_ports_to_vlan(10, {port(3)}, {port(2), port(2)}));
  EXPECT_EQ(members(10), "1/1/3 1/1/9; 1/1/2") << "the kind given last";
  std::list<Mp> tagged = {Mp(9, 9)}, untagged = tagged;
  EXPECT_TRUE(SoftSdk(card(), host::call_watch()).get_vlan_info(10, tagged, untagged));
  EXPECT_TRUE(tagged.front() == Mp(9, 9) && untagged.front() == Mp(9, 9)) << "appended";
  EXPECT_FALSE(vorn_delete_ports_from_vlan(10, {port(3), port(4)})) << "4 is no member";
  EXPECT_FALSE(vorn_add_ports_to_vlan(10, {port(5)}, {kNowhere}));
  EXPECT_FALSE(vorn_add_ports_to_vlan(11, {port(5)}, {}));
  EXPECT_EQ(members(10), "1/1/3 1/1/9; 1/1/2") << "refused as a whole";
  EXPECT_EQ(expansion(vlan(10)), "1/1/2 1/1/3 1/1/9");
  EXPECT_TRUE(vorn_delete_ports_from_vlan(10, {port(3)}));
  EXPECT_EQ(members(10), "1/1/9; 1/1/2");
  EXPECT_TRUE(vorn_add_ports_to_vlan(10, {}, {port(7)}) &&
              vorn_delete_ports_from_vlan(10, {port(7)}));
  EXPECT_EQ(members(10), "1/1/9; 1/1/2") << "an untagged one";
  EXPECT_TRUE(vorn_set_port_mtu(vlan(10), 2000)) << "a VLAN interface stands for its members";
  unsigned bytes = 0;
  EXPECT_TRUE(vorn_get_port_mtu(port(9), bytes) && bytes == 2000);
  EXPECT_TRUE(vorn_delete_vlan(10));
  EXPECT_FALSE(vorn_delete_vlan(10));
  EXPECT_TRUE(vorn_create_vlan(10));
  EXPECT_EQ(members(10), "; ") << "a new one starts without members";
}

TEST_F(Tables, VlanRulesBySource) {
  VlanClassTable& rules = card().tables().vlan_classes;
  EXPECT_FALSE(vorn_set_mac_vlan(Mac(1), 4095, 0));
  EXPECT_TRUE(vorn_set_mac_vlan(Mac(1), 10, 3));
  const VlanClass* rule = rules.by_mac(MacAddress::from_bytes(Mac(1)));
  ASSERT_NE(rule, nullptr);
  EXPECT_EQ(rule->vlan * 10 + rule->priority, 103);
  EXPECT_TRUE(vorn_set_mac_vlan(Mac(1), 0, 0));
  EXPECT_FALSE(rules.has_mac_rules());

  const auto vlan_of = [&](unsigned ip) {
    const VlanClass* found = rules.by_ipv4(ip);
    return found == nullptr ? 0u : found->vlan;
  };
  EXPECT_TRUE(vorn_set_ipv4_subnet_vlan(kIp, 0xffffff00, 24, 0));
  EXPECT_TRUE(vorn_set_ipv4_subnet_vlan(kIp, 0xfffffff0, 28, 0));
  EXPECT_TRUE(vorn_set_ipv4_subnet_vlan(kIp + 64, 0xfffffff0, 29, 0));
  EXPECT_TRUE(vorn_set_ipv4_subnet_vlan(0, 0, 99, 0));
  EXPECT_EQ(vlan_of(kIp), 28u) << "the longest wins";
  EXPECT_EQ(vlan_of(kIp + 32), 24u);
  EXPECT_EQ(vlan_of(0xcb007101), 99u);
  EXPECT_TRUE(vorn_set_ipv4_subnet_vlan(kIp + 3, 0xfffffff0, 0, 0)) << "the same subnet";
  EXPECT_EQ(vlan_of(kIp), 24u);
  EXPECT_EQ(vlan_of(kIp + 64), 29u) << "another of the same length";

  EXPECT_TRUE(vorn_set_ipv6_subnet_vlan(Ip6(1), 128, 11, 0));
  EXPECT_TRUE(vorn_set_ipv6_subnet_vlan(Ip6(1), 32, 12, 0));
  EXPECT_EQ(rules.by_ipv6(Ipv6Address::from_bytes(Ip6(1)))->vlan, 11);
  EXPECT_EQ(rules.by_ipv6(Ipv6Address::from_bytes(Ip6(2)))->vlan, 12);
  EXPECT_EQ(rules.by_ipv6(Ipv6Address()), nullptr);
}

// ---- LAGs ---------------------------------------------------------------------------------------

TEST_F(Tables, LagLife) {
  unsigned id = 99;
  lag_psc_t psc{};
  EXPECT_EQ(expansion(lag(1)), "-") << "unknown";
  EXPECT_FALSE(vorn_lag_usp_to_lag_id(lag(1), id));
  EXPECT_TRUE(vorn_create_lag(lag(1)));
  EXPECT_TRUE(vorn_create_lag(lag(2)));
  EXPECT_TRUE(vorn_create_lag(lag(1))) << "there already";
  EXPECT_TRUE(vorn_lag_usp_to_lag_id(lag(1), id) && id == 0);
  EXPECT_TRUE(vorn_lag_usp_to_lag_id(lag(2), id) && id == 1);
  EXPECT_EQ(lag_list.size(), 2u);
  EXPECT_EQ(expansion(lag(1)), "");
  EXPECT_TRUE(vorn_add_ports_to_lag(lag(1), {port(7), port(4)}));
  EXPECT_TRUE(vorn_add_ports_to_lag(lag(1), {port(4), port(1)}));
  EXPECT_EQ(expansion(lag(1)), "1/1/7 1/1/4 1/1/1") << "in the order they were added";
  EXPECT_FALSE(vorn_add_ports_to_lag(lag(2), {port(9), port(4)})) << "4 is in lag/1";
  EXPECT_EQ(expansion(lag(2)), "");
  EXPECT_EQ(card().tables().lags.lag_of(9), LagTable::kNoLag) << "refused as a whole";
  EXPECT_FALSE(vorn_delete_ports_from_lag(lag(1), {port(4), port(9)}));
  EXPECT_TRUE(vorn_delete_ports_from_lag(lag(1), {port(4)}));
  EXPECT_EQ(expansion(lag(1)), "1/1/7 1/1/1");
  EXPECT_EQ(card().tables().lags[0].size, 2);
  EXPECT_EQ(card().tables().lags[0].members[1], 1);
  EXPECT_TRUE(vorn_add_ports_to_lag(lag(2), {port(4)})) << "free again";

  EXPECT_TRUE(vorn_set_lag_balancing_strategy(lag(1), LAG_PSC_DST_IP));
  EXPECT_TRUE(vorn_get_lag_balancing_strategy(lag(1), psc) && psc == LAG_PSC_DST_IP);
  EXPECT_TRUE(vorn_get_lag_balancing_strategy(lag(2), psc) && psc == LAG_PSC_SRC_DST_MAC);

  EXPECT_TRUE(vorn_delete_lag(lag(1)));
  EXPECT_TRUE(vorn_delete_lag(lag(1))) << "nothing to delete";
  EXPECT_EQ(expansion(lag(1)), "-");
  EXPECT_EQ(card().tables().lags.lag_of(7), LagTable::kNoLag);
  EXPECT_TRUE(vorn_create_lag(lag(128)));
  Usp usp(0, 0, 0);
  EXPECT_TRUE(vorn_lag_id_to_lag_usp(0, usp) && usp == lag(128)) << "the lowest free id";
  EXPECT_FALSE(vorn_lag_id_to_lag_usp(2, usp));
  EXPECT_TRUE(vorn_get_lag_balancing_strategy(lag(128), psc) && psc == LAG_PSC_SRC_DST_MAC);
}

TEST_F(Tables, LagThatNobodyCouldReachIsTakenBack) {
  EXPECT_FALSE(vorn_create_lag(port(3)));
  EXPECT_TRUE(lag_list.empty());
  EXPECT_FALSE(card().tables().lags.exists(0));
}

TEST_F(Tables, LagHasRoomFor32) {
  std::list<Usp> ports;
  for (unsigned i = 0; i < 33; ++i) ports.push_back(port(i));
  EXPECT_FALSE(vorn_add_ports_to_lag(lag(3), ports));
  EXPECT_EQ(expansion(lag(3)), "");
  ports.pop_back();
  EXPECT_TRUE(vorn_add_ports_to_lag(lag(3), ports));
}

// ---- MAC table ----------------------------------------------------------------------------------

TEST_F(Tables, MacEntriesOfEachKind) {
  EXPECT_TRUE(vorn_create_vlan(10));
  EXPECT_FALSE(vorn_add_mac_to_port(port(3), Mac(1), 11)) << "no such VLAN";
  EXPECT_FALSE(vorn_add_system_mac(Mac(1), 11));
  EXPECT_TRUE(vorn_create_lag(lag(5)));
  EXPECT_TRUE(vorn_add_mac_to_port(port(3), Mac(1), 10));
  EXPECT_TRUE(vorn_add_mac_to_port(lag(5), Mac(2), 10));
  EXPECT_TRUE(vorn_add_system_mac(Mac(3), 1));
  card().tables().fdb.learn(10, MacAddress::from_bytes(Mac(4)), Destination::port(3), 0);
  const Lines all = {"1 :3 0/0/0 2", "10 :1 1/1/3 1", "10 :2 lag/5 1", "10 :4 1/1/3 0"};
  EXPECT_EQ(mac_table(), all);
  EXPECT_FALSE(vorn_delete_mac(1, Mac(1)));
  EXPECT_FALSE(vorn_delete_mac(4096 + 10, Mac(1))) << "no VLAN number";
  EXPECT_EQ(mac_table(), all);

  EXPECT_TRUE(vorn_clear_fdb_table(false));
  EXPECT_EQ(mac_table(), (Lines{"1 :3 0/0/0 2", "10 :1 1/1/3 1", "10 :2 lag/5 1"}));
  EXPECT_TRUE(vorn_clear_fdb_by_port(port(3), true));
  EXPECT_EQ(mac_table(), (Lines{"1 :3 0/0/0 2", "10 :2 lag/5 1"}));
  EXPECT_TRUE(vorn_clear_fdb_by_port(lag(1), true)) << "reaches LAG id 0";
  EXPECT_EQ(mac_table(), (Lines{"1 :3 0/0/0 2"}));
  EXPECT_TRUE(vorn_clear_fdb_by_vlan(1, true));
  EXPECT_TRUE(vorn_clear_fdb_table(true));
  EXPECT_EQ(mac_table(), (Lines{"1 :3 0/0/0 2"})) << "system entries stay";
  EXPECT_TRUE(vorn_delete_mac_by_mac(Mac(3)));
  EXPECT_FALSE(vorn_delete_mac_by_mac(Mac(3)));

  EXPECT_TRUE(vorn_add_mac_to_port(port(3), Mac(1), 10) && vorn_add_system_mac(Mac(2), 10));
  int visits = 0;
  mac_traverse_s first{[](const ctype_l2_addr_s*, void* count) {
                         ++*static_cast<int*>(count);
                         return 0;
                       },
                       &visits};
  EXPECT_TRUE(vorn_traverse_mac_table(&first));
  EXPECT_EQ(visits, 1) << "the visitor ends the walk";
}

TEST_F(Tables, MacBitmapsAreAppliedWholly) {
  unsigned char bitmap[512] = {};
  EXPECT_FALSE(vorn_add_system_mac_vlan_bitmap(Mac(1), bitmap)) << "no VLAN at all";
  bitmap[0] = 2;        // VLAN 1
  bitmap[20 / 8] = 16;  // VLAN 20
  EXPECT_FALSE(vorn_add_system_mac_vlan_bitmap(Mac(1), bitmap)) << "20 does not exist";
  EXPECT_EQ(mac_table(), Lines());
  EXPECT_TRUE(vorn_create_vlan(20));
  EXPECT_TRUE(vorn_add_system_mac_vlan_bitmap(Mac(1), bitmap));
  EXPECT_EQ(mac_table(), (Lines{"1 :1 0/0/0 2", "20 :1 0/0/0 2"}));
  for (const unsigned none : {0u, 4095u, 19u}) {
    bitmap[none / 8] = static_cast<unsigned char>(bitmap[none / 8] | 1u << none % 8);
    EXPECT_FALSE(vorn_add_system_mac_vlan_bitmap(Mac(2), bitmap)) << none;
    bitmap[none / 8] = static_cast<unsigned char>(bitmap[none / 8] & ~(1u << none % 8));
  }
  bitmap[0] = 0;
  EXPECT_TRUE(vorn_delete_mac_vlan_bitmap(Mac(1), bitmap));
  EXPECT_FALSE(vorn_delete_mac_vlan_bitmap(Mac(1), bitmap));
  EXPECT_EQ(mac_table(), (Lines{"1 :1 0/0/0 2"}));
  bitmap[0] = 2;
  EXPECT_TRUE(vorn_delete_mac_vlan_bitmap(Mac(1), bitmap)) << "in VLAN 1, but not in 20";
  EXPECT_TRUE(vorn_add_system_mac(Mac(1), 1) && vorn_create_vlan(4094) &&
              vorn_add_system_mac(Mac(1), 4094));
  std::memset(bitmap, 0, sizeof bitmap);
  bitmap[511] = 0x40;  // VLAN 4094
  EXPECT_TRUE(vorn_delete_mac_vlan_bitmap(Mac(1), bitmap));
  EXPECT_TRUE(vorn_add_system_mac_vlan_bitmap(Mac(1), bitmap));
  EXPECT_EQ(mac_table().size(), 2u);
  std::memset(bitmap, 0xff, sizeof bitmap);
  EXPECT_TRUE(vorn_delete_mac_vlan_bitmap(Mac(1), bitmap)) << "where it is not, none is deleted";
  EXPECT_EQ(mac_table(), Lines());
}

TEST_F(Tables, DependentEntriesGoWithVlanLagAndLink) {
  const auto learn = [&](unsigned char last, Destination where, std::uint16_t in = 10) {
    card().tables().fdb.learn(in, MacAddress::from_bytes(Mac(last)), where, 0);
  };
  EXPECT_TRUE(vorn_create_vlan(10));
  EXPECT_TRUE(vorn_add_ports_to_vlan(10, {port(1), port(2), port(3)}, {}));
  learn(1, Destination::port(1));
  learn(2, Destination::port(2));
  learn(3, Destination::port(2), 1);
  EXPECT_TRUE(vorn_delete_ports_from_vlan(10, {port(2)}));
  EXPECT_EQ(mac_table(), (Lines{"1 :3 1/1/2 0", "10 :1 1/1/1 0"}));
  EXPECT_TRUE(vorn_add_ports_to_lag(lag(1), {port(1), port(3)}));
  EXPECT_EQ(mac_table(), (Lines{"1 :3 1/1/2 0"})) << "1/1/1 is a port of its own no more";
  learn(4, Destination::lag(0));
  EXPECT_TRUE(vorn_delete_ports_from_vlan(10, {port(3)}));
  EXPECT_TRUE(vorn_set_port_state(port(3), false));
  EXPECT_EQ(mac_table().size(), 2u) << "the LAG has another member";
  EXPECT_TRUE(vorn_delete_ports_from_vlan(10, {port(1)}));
  EXPECT_EQ(mac_table(), (Lines{"1 :3 1/1/2 0"})) << "none of them is in the VLAN now";
  EXPECT_TRUE(vorn_add_mac_to_port(lag(1), Mac(5), 1));
  EXPECT_TRUE(vorn_delete_lag(lag(1)));
  EXPECT_EQ(mac_table(), (Lines{"1 :3 1/1/2 0"}));
  EXPECT_TRUE(vorn_add_mac_to_port(port(2), Mac(6), 1));
  EXPECT_TRUE(vorn_set_port_state(port(2), false));
  EXPECT_EQ(mac_table(), (Lines{"1 :6 1/1/2 1"})) << "a link that goes takes what was learned";
  EXPECT_TRUE(vorn_add_system_mac(Mac(7), 10));
  EXPECT_TRUE(vorn_add_mac_to_port(port(2), Mac(8), 10));
  EXPECT_TRUE(vorn_delete_vlan(10));
  EXPECT_EQ(mac_table(), (Lines{"1 :6 1/1/2 1"}));
}

TEST_F(Tables, AgeingAndLimits) {
  int value = 0;
  EXPECT_TRUE(vorn_get_fdb_aging_time(value) && value == 300);
  EXPECT_TRUE(vorn_set_fdb_aging_time(20));
  card().tables().fdb.learn(1, MacAddress::from_bytes(Mac(1)), Destination::port(3), 0);
  clock_->warp_ns(19 * kNanosecondsPerSecond);
  card().run_once();
  EXPECT_EQ(mac_table().size(), 1u);
  clock_->warp_ns(1 * kNanosecondsPerSecond);
  card().run_once();
  EXPECT_EQ(mac_table().size(), 0u);

  EXPECT_FALSE(vorn_set_system_mac_limit(-2));
  EXPECT_TRUE(vorn_set_system_mac_limit(77));
  EXPECT_FALSE(vorn_get_system_mac_limit(value)) << "by its contract";
  EXPECT_EQ(value, 77);
  EXPECT_FALSE(vorn_get_port_mac_limit(lag(1), value)) << "no such LAG";
  EXPECT_TRUE(vorn_create_vlan(10));
  SoftSdk sdk(card(), host::call_watch());
  EXPECT_TRUE(sdk.set_system_mac_limit(Mp(0, 10), 6, PORT_KIND_VLAN));
  EXPECT_TRUE(vorn_get_port_mac_limit(vlan(10), value) && value == 6);
  EXPECT_TRUE(vorn_delete_vlan(10) && vorn_create_vlan(10));
  EXPECT_TRUE(vorn_get_port_mac_limit(vlan(10), value) && value == -1) << "a new VLAN";
  EXPECT_TRUE(vorn_create_lag(lag(1)) && vorn_create_lag(lag(2)));
  EXPECT_TRUE(sdk.set_system_mac_limit(Mp(0, 1), 5, PORT_KIND_LAG));
  EXPECT_TRUE(vorn_get_port_mac_limit(lag(2), value) && value == 5);
  EXPECT_TRUE(vorn_delete_lag(lag(2)) && vorn_create_lag(lag(2)));
  EXPECT_TRUE(vorn_get_port_mac_limit(lag(2), value) && value == -1) << "a new LAG";
  EXPECT_TRUE(card().tables().mac_locks.set_system_limit(-1));
  EXPECT_TRUE(card().tables().mac_locks.unlimited());
  EXPECT_TRUE(vorn_set_system_mac_limit(77));
  EXPECT_TRUE(sdk.get_system_mac_limit(Mp(0, 0), value, 0xdead) && value == 77)
      << "whatever the kind";
  EXPECT_FALSE(sdk.set_system_mac_limit(Mp(0, 11), 6, PORT_KIND_VLAN));
  EXPECT_FALSE(sdk.set_system_mac_limit(Mp(1, 1), 6, PORT_KIND_SYSTEM));
  EXPECT_FALSE(sdk.set_system_mac_limit(Mp(1, 1), 6, 5));
}

// ---- Layer 3 ------------------------------------------------------------------------------------

TEST_F(Tables, L3InterfacesHostsAndRoutes) {
  unsigned id = 0, in = 0, metric = 0;
  unsigned char mac[6] = {};
  EXPECT_FALSE(vorn_create_l3_interface(Mac(1), 0, id));
  EXPECT_TRUE(vorn_create_l3_interface(Mac(1), 10, id));
  EXPECT_FALSE(vorn_create_l3_interface(Mac(1), 10, in)) << "there already";
  EXPECT_EQ(in, 0u);
  EXPECT_TRUE(vorn_create_l3_interface_with_id(Mac(2), 11, 500, false));
  EXPECT_TRUE(vorn_create_l3_interface_with_id(Mac(3), 12, 500, true));
  EXPECT_TRUE(vorn_create_l3_interface_with_id(Mac(3), 12, 500, true)) << "by itself";
  EXPECT_TRUE(vorn_get_l3_interface(500, in, mac) && in == 12 && mac[5] == 3);

  EXPECT_FALSE(vorn_add_l3_host_ip4(lag(1), kIp, Mac(9), 500)) << "no such LAG";
  EXPECT_TRUE(vorn_create_lag(lag(1)));
  EXPECT_TRUE(vorn_add_l3_host_ip4(lag(1), kIp, Mac(9), 500));
  EXPECT_TRUE(vorn_add_l3_host_ip6(port(2), Ip6(1), Mac(8), id));
  EXPECT_TRUE(vorn_get_l3_host_ip4(kIp, lag(1), mac, in) && in == 500 && mac[5] == 9);
  EXPECT_TRUE(vorn_get_l3_host_ip6(Ip6(1), port(2), mac, in) && in == id && mac[5] == 8);
  EXPECT_TRUE(vorn_delete_l3_host_by_network_ip4(kIp + 90));
  EXPECT_FALSE(vorn_get_l3_host_ip4(kIp, lag(1), mac, in));
  EXPECT_TRUE(vorn_delete_l3_interface(Mac(3), 12));
  EXPECT_TRUE(vorn_delete_l3_host_by_interface(id, false)) << "the IPv4 ones";
  EXPECT_TRUE(vorn_get_l3_host_ip6(Ip6(1), port(2), mac, in));
  EXPECT_TRUE(vorn_delete_l3_host_by_interface(id, true));
  EXPECT_FALSE(vorn_delete_l3_host_by_addr_ip6(Ip6(1), port(2))) << "gone";

  EXPECT_TRUE(vorn_add_l3_route_ip4(port(2), kIp, 0xffffff00, Mac(7), id, 5));
  EXPECT_TRUE(
      vorn_get_l3_route_by_subnet_ip4(kIp & 0xffffff00, 0xffffff00, port(2), mac, in, metric));
  EXPECT_EQ(in * 100 + metric * 10 + mac[5], id * 100 + 57);
  EXPECT_FALSE(vorn_add_l3_route_ip6(lag(1), Ip6(0), Ip6::mask(64), Mac(6), id))
      << "arrives with the LAG's number 1, which is no LAG's id";
  EXPECT_TRUE(vorn_create_lag(lag(2)));
  EXPECT_TRUE(vorn_add_l3_route_ip6(lag(1), Ip6(0), Ip6::mask(64), Mac(6), id)) << "lag/2's id";
  EXPECT_TRUE(vorn_add_l3_route_ip6(port(4), Ip6(0), Ip6::mask(64), Mac(5), id));
  EXPECT_TRUE(vorn_get_l3_route_by_subnet_ip6(Ip6(0), Ip6::mask(64), port(4), in, mac) &&
              mac[5] == 5);
  EXPECT_TRUE(vorn_delete_l3_route_by_subnet_ip6(Ip6(0), Ip6::mask(64), port(4)));
  EXPECT_TRUE(vorn_delete_lag(lag(2))) << "takes its routes along";
  EXPECT_TRUE(vorn_delete_l3_route_by_subnet_ip4(kIp, 0xffffff00, port(2)));
  EXPECT_TRUE(vorn_delete_l3_interface_by_id(id));
  EXPECT_TRUE(vorn_delete_l3_interface_all() && vorn_clear_l3_host_table() &&
              vorn_clear_l3_route_table());
}

// A host or route through an interface keeps it, whatever its kind.
TEST_F(Tables, L3InterfaceInUse) {
  unsigned id = 0;
  EXPECT_TRUE(vorn_create_l3_interface(Mac(1), 10, id));
  const Ip6 mask = Ip6::mask(64);
  const struct {
    const char* what;
    std::function<bool()> add, remove;
  } rows[] = {
      {"IPv4 host", [&] { return vorn_add_l3_host_ip4(port(1), kIp, Mac(2), id); },
       [] { return vorn_delete_l3_host_by_addr_ip4(kIp, port(1)); }},
      {"IPv6 host", [&] { return vorn_add_l3_host_ip6(port(1), Ip6(1), Mac(2), id); },
       [] { return vorn_delete_l3_host_by_addr_ip6(Ip6(1), port(1)); }},
      {"IPv4 route", [&] { return vorn_add_l3_route_ip4(port(1), kIp, ~0u, Mac(2), id, 0); },
       [] { return vorn_delete_l3_route_by_subnet_ip4(kIp, ~0u, port(1)); }},
      {"IPv6 route", [&] { return vorn_add_l3_route_ip6(port(1), Ip6(1), mask, Mac(2), id); },
       [&] { return vorn_delete_l3_route_by_subnet_ip6(Ip6(1), mask, port(1)); }},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    EXPECT_TRUE(row.add());
    EXPECT_FALSE(vorn_delete_l3_interface(Mac(1), 10) || vorn_delete_l3_interface_by_id(id) ||
                 vorn_delete_l3_interface_all());
    unsigned in = 0;
    unsigned char mac[6];
    EXPECT_TRUE(vorn_get_l3_interface(id, in, mac));
    EXPECT_TRUE(row.remove());
    EXPECT_FALSE(row.remove());
  }
  EXPECT_TRUE(vorn_delete_l3_interface(Mac(1), 10));
}

TEST_F(Tables, L3DeletionsEndAtTheirEdges) {
  unsigned a = 0, b = 0;
  EXPECT_TRUE(vorn_create_l3_interface(Mac(1), 10, a) && vorn_create_l3_interface(Mac(1), 11, b));
  // The /24 of 192.0.2.x, and the address before and behind it; two ways to one of them.
  for (const unsigned ip : {kIp - 2, kIp - 1, kIp + 99, kIp + 254, kIp + 255}) {
    EXPECT_TRUE(vorn_add_l3_host_ip4(port(1), ip, Mac(2), a));
  }
  EXPECT_TRUE(vorn_add_l3_host_ip4(port(2), kIp + 99, Mac(2), a));
  EXPECT_TRUE(vorn_delete_l3_host_by_network_ip4(kIp + 7));
  std::vector<Ipv4> left4;
  card().tables().l3.ipv4_hosts.for_each(
      [&](const L3Host<Ipv4>& host) { left4.push_back(host.ip); });
  std::sort(left4.begin(), left4.end());
  EXPECT_EQ(left4, (std::vector<Ipv4>{kIp - 2, kIp + 255}));

  // The /64 ends between bytes 7 and 8.
  const auto host6 = [&](unsigned char seventh, unsigned char eighth, unsigned interface) {
    Ip6 ip(1);
    ip.bytes[7] = seventh;
    ip.bytes[8] = eighth;
    EXPECT_TRUE(vorn_add_l3_host_ip6(port(1), ip, Mac(2), interface));
  };
  host6(0, 0, a);
  host6(0, 0xff, a);
  host6(1, 0, a);
  host6(2, 0, b);
  EXPECT_TRUE(vorn_delete_l3_host_by_network_ip6(Ip6(77)));
  EXPECT_EQ(card().tables().l3.ipv6_hosts.size(), 2u);
  EXPECT_TRUE(vorn_delete_l3_host_by_interface(b, true));
  EXPECT_EQ(card().tables().l3.ipv6_hosts.size(), 1u);
  EXPECT_TRUE(vorn_delete_l3_host_by_interface(a, false));
  EXPECT_EQ(card().tables().l3.ipv6_hosts.size(), 1u) << "the IPv4 ones";
  EXPECT_EQ(card().tables().l3.ipv4_hosts.size(), 0u);

  for (const unsigned interface : {a, b}) {
    EXPECT_TRUE(vorn_add_l3_route_ip4(port(interface), kIp, 0xffffff00, Mac(2), interface, 0));
    EXPECT_TRUE(vorn_add_l3_route_ip6(port(interface), Ip6(1), Ip6::mask(64), Mac(2), interface));
  }
  EXPECT_TRUE(vorn_delete_l3_route_by_interface(a, false));
  EXPECT_EQ(card().tables().l3.ipv4_routes.size(), 1u);
  EXPECT_EQ(card().tables().l3.ipv6_routes.size(), 2u);
  EXPECT_TRUE(vorn_delete_l3_route_by_interface(b, true));
  EXPECT_EQ(card().tables().l3.ipv6_routes.size(), 1u);
  EXPECT_TRUE(vorn_clear_l3_route_table() && vorn_clear_l3_host_table());
  EXPECT_EQ(card().tables().l3.ipv4_routes.size() + card().tables().l3.ipv6_routes.size() +
                card().tables().l3.ipv6_hosts.size(),
            0u);
}

// ---- Flows and filters --------------------------------------------------------------------------

TEST_F(Tables, FlowsAreCheckedFieldByField) {
  const struct {
    const char* name;
    unsigned flags;
    Usp in_port;
    unsigned short vlan, priority, ip_protocol, tos;
    bool good;
  } rows[] = {
      {"everything", 0, port(0), 0, 0, 0, 0, true},
      {"in port", OF_MATCH_IN_PORT, port(3), 0, 0, 0, 0, true},
      {"no port", OF_MATCH_IN_PORT, kNowhere, 0, 0, 0, 0, false},
      {"not asked for", 0, kNowhere, 4095, 9, 256, 256, true},
      {"VLAN 4095", OF_MATCH_VLAN_ID, port(0), 4095, 0, 0, 0, false},
      {"priority 8", OF_MATCH_VLAN_PRIORITY, port(0), 0, 8, 0, 0, false},
      {"protocol 256", OF_MATCH_IP_PROTOCOL, port(0), 0, 0, 256, 0, false},
      {"TOS 256", OF_MATCH_TOS, port(0), 0, 0, 0, 256, false},
      {"an unknown bit", 0x1000, port(0), 0, 0, 0, 0, false},
  };
  const of_flow_qualify_udf_s none{};
  for (const auto& row : rows) {
    of_flow_s flow;
    std::memset(&flow.match, 0, sizeof flow.match);
    flow.in_port = row.in_port;
    flow.match.flags = row.flags;
    flow.match.vlan_id = row.vlan;
    flow.match.vlan_priority = row.priority;
    flow.match.ip_protocol = row.ip_protocol;
    flow.match.tos = row.tos;
    unsigned id = 0;
    EXPECT_EQ(vorn_add_of_flow(flow, id, none), row.good) << row.name;
    EXPECT_EQ(id != 0, row.good) << row.name;
  }
  of_flow_s flow;
  std::memset(&flow.match, 0, sizeof flow.match);
  unsigned id = 0;
  EXPECT_TRUE(vorn_add_of_flow(flow, id, {OF_UDF_L3, 12, 0xc0000200, 0xffffff00}));
  EXPECT_EQ(card().tables().flows.get(id)->match.udf.base, FlowUdfBase::l3);
}

TEST_F(Tables, FlowLifeAndActions) {
  of_flow_s flow;
  std::memset(&flow.match, 0, sizeof flow.match);
  int priority = 0;
  unsigned long long packets = 1;
  EXPECT_TRUE(vorn_add_of_flow_with_id(flow, 7));
  EXPECT_FALSE(vorn_add_of_flow_with_id(flow, 7));
  EXPECT_TRUE(vorn_get_of_flow_priority(7, priority) && priority == 32768);
  EXPECT_TRUE(vorn_set_of_flow_priority(7, -5));
  EXPECT_TRUE(vorn_get_of_flow_priority(7, priority) && priority == -5);
  EXPECT_FALSE(vorn_set_of_flow_priority(8, 1) || vorn_get_of_flow_priority(8, priority));
  EXPECT_TRUE(vorn_get_of_flow_stat_counter64(7, packets) && packets == 0);
  EXPECT_FALSE(vorn_get_of_flow_stat_counter64(8, packets));

  struct Row {
    of_action_t kind;
    of_action_param_s param;
    bool good;
  };
  const Row rows[] = {
      {OF_ACTION_OUTPUT, {{7 + 51, 0, 0}}, true},
      {OF_ACTION_OUTPUT, {{7 + 52, 0, 0}}, false},
      {OF_ACTION_OUTPUT, {{OF_PORT_FLOOD, 0, 0}}, true},
      {OF_ACTION_OUTPUT, {{~0u, 0, 0}}, false},
      {OF_ACTION_SET_VLAN_ID, {{4094, 5, 5}}, true},
      {OF_ACTION_SET_VLAN_ID, {{0, 0, 0}}, false},
      {OF_ACTION_SET_VLAN_PRIORITY, {{8, 0, 0}}, false},
      {OF_ACTION_STRIP_VLAN, {{1, 2, 3}}, true},
      {OF_ACTION_SET_DST_MAC, {{0x02005e00, 0xffff, 0}}, true},
      {OF_ACTION_SET_DST_IP, {{kIp, 0, 0}}, true},
      {OF_ACTION_SET_DST_L4_PORT, {{65536, 0, 0}}, false},
  };
  SoftSdk sdk(card(), host::call_watch());
  EXPECT_FALSE(sdk.add_of_flow_action(7, OF_ACTION_OUTPUT, {{7 + 51, 0, 0}}, Mp(1, 51)))
      << "the flow port and the port differ";
  unsigned added = 0;
  for (const Row& row : rows) {
    EXPECT_EQ(vorn_add_of_flow_action(7, row.kind, row.param), row.good)
        << row.kind << ' ' << row.param.word[0];
    EXPECT_FALSE(vorn_add_of_flow_action(8, row.kind, row.param)) << "no such flow";
    added += row.good;
  }
  const auto actions = [&] {
    return card().tables().flows.actions(*card().tables().flows.get(7)).count;
  };
  EXPECT_EQ(actions(), added);
  EXPECT_TRUE(vorn_delete_of_flow_action(7, OF_ACTION_SET_VLAN_ID, {{4094, 0, 0}}))
      << "words that the action does not name do not count";
  EXPECT_TRUE(vorn_delete_of_flow_action(7, OF_ACTION_STRIP_VLAN, {{9, 9, 9}})) << "nor here";
  EXPECT_FALSE(vorn_delete_of_flow_action(7, OF_ACTION_SET_VLAN_ID, {{4094, 0, 0}}));
  EXPECT_TRUE(vorn_delete_of_flow_action(7, OF_ACTION_OUTPUT, {{7 + 51, 0, 0}}));
  EXPECT_EQ(actions(), added - 3);
  EXPECT_TRUE(vorn_clear_of_flow_action(7));
  EXPECT_EQ(actions(), 0u);
  EXPECT_TRUE(vorn_delete_of_flow(7));
  EXPECT_FALSE(vorn_delete_of_flow(7) || vorn_clear_of_flow_action(7));
  EXPECT_TRUE(vorn_clear_of_flow_table());
}

TEST_F(Tables, Filters) {
  FilterTable& filters = card().tables().filters;
  EXPECT_TRUE(vorn_add_arp_filter(kIp, 0xffffff00) && vorn_add_arp_filter(kIp + 1, 0xffffff00));
  EXPECT_EQ(filters.arp().size(), 1u) << "the same filter";
  EXPECT_TRUE(filters.matches_arp_target(kIp + 7) && !filters.matches_arp_target(kIp + 256));
  EXPECT_FALSE(vorn_delete_arp_filter(kIp, 0xffffffff));
  EXPECT_TRUE(vorn_delete_arp_filter(kIp, 0xffffff00));
  EXPECT_FALSE(vorn_add_ip_protocol_filter(256) || vorn_add_l4_destination_port_filter(65536));
  EXPECT_FALSE(filters.any());
  EXPECT_TRUE(vorn_add_ip_protocol_filter(255) && vorn_add_l4_destination_port_filter(65535));
  EXPECT_TRUE(filters.matches_ip_protocol(255) && filters.matches_l4_port(65535));
  EXPECT_FALSE(vorn_delete_ip_protocol_filter(254) || vorn_delete_l4_destination_port_filter(0));
  EXPECT_TRUE(vorn_delete_ip_protocol_filter(255) && vorn_delete_l4_destination_port_filter_all());
  EXPECT_FALSE(filters.any());
  for (unsigned i = 0; i < 64; ++i) EXPECT_TRUE(vorn_add_arp_filter(kIp + i, 0xffffffff));
  EXPECT_FALSE(vorn_add_arp_filter(kIp + 64, 0xffffffff)) << "full";
  EXPECT_TRUE(vorn_delete_arp_filter_all() && vorn_delete_ip_protocol_filter_all());
  EXPECT_FALSE(filters.any());
}

TEST_F(Tables, TheSwitchAsAWhole) {
  unsigned mode = 9;
  bool on = false;
  Usp usp(0, 0, 0);
  EXPECT_TRUE(vorn_get_switch_forward_mode(mode) && mode == SWITCH_FORWARD_MODE_HYBRID);
  EXPECT_TRUE(vorn_set_switch_forward_mode(SWITCH_FORWARD_MODE_FLOW));
  EXPECT_TRUE(vorn_get_switch_forward_mode(mode) && mode == SWITCH_FORWARD_MODE_FLOW);
  EXPECT_TRUE(vorn_set_switch_unknown_unicast_to_cpu(true));
  EXPECT_TRUE(vorn_get_switch_unknown_unicast_to_cpu(on) && on);
  EXPECT_TRUE(vorn_get_port_switch_unknown_unicast_to_cpu(port(3), on) && !on) << "its own";
  EXPECT_TRUE(vorn_get_line_card_usp(usp) && usp == Usp(1, 1, 0));
  EXPECT_TRUE(vorn_set_port_l2_enable(port(3), false));
  EXPECT_FALSE(card().tables().traffic.l2_on(3));
  Packet packet;
  EXPECT_FALSE(vorn_send_packet_from_cpu(packet)) << "no frame";
  packet.set_data(std::vector<unsigned char>(60, 0xff));
  packet.set_type(2);
  EXPECT_FALSE(vorn_send_packet_by_port({}, {port(3)}, packet)) << "no such type";
}

// ---- Settings that could have no effect ---------------------------------------------------------

TEST_F(Tables, RefuseWhatCouldHaveNoEffect) {
  unsigned id = 0;
  EXPECT_TRUE(vorn_create_l3_interface(Mac(1), 10, id));
  const auto protocol = [](unsigned short type, frame_type_t format = FRAME_TYPE_ETHERNET) {
    return vorn_set_port_protocol_vlan(port(1), format, type, 10);
  };
  const auto host4 = [&](unsigned ip) { return vorn_add_l3_host_ip4(port(1), ip, Mac(2), id); };
  const auto route4 = [&](unsigned ip, unsigned mask) {
    return vorn_add_l3_route_ip4(port(1), ip, mask, Mac(2), id, 0);
  };
  const auto host6 = [&](unsigned char first, unsigned char second, unsigned char last) {
    Ip6 ip(last);
    std::memset(ip.bytes, 0, 15);
    ip.bytes[0] = first;
    ip.bytes[1] = second;
    return vorn_add_l3_host_ip6(port(1), ip, Mac(2), id);
  };
  const auto route6 = [&](unsigned char first, unsigned char second, unsigned bits) {
    Ip6 ip(0);
    ip.bytes[0] = first;
    ip.bytes[1] = second;
    return vorn_add_l3_route_ip6(port(1), ip, Ip6::mask(bits), Mac(2), id);
  };
  const auto flow = [&](unsigned flags, unsigned short type, unsigned short ip_protocol = 0,
                        of_flow_qualify_udf_s udf = {}) {
    of_flow_s made;
    std::memset(&made.match, 0, sizeof made.match);
    made.match.flags = flags;
    made.match.ether_type = type;
    made.match.ip_protocol = ip_protocol;
    return vorn_add_of_flow(made, id, udf);
  };
  constexpr unsigned kType = OF_MATCH_ETHER_TYPE;
  const struct {
    const char* what;
    bool done;
    bool good;
  } rows[] = {
      {"type 0x5ff", protocol(0x5ff), false},
      {"type 0x600", protocol(0x600), true},
      {"type 0x5ff in SNAP", protocol(0x5ff, FRAME_TYPE_SNAP), true},
      {"customer tag", protocol(0x8100), false},
      {"service tag", protocol(0x88a8), false},
      {"flood to itself", vorn_set_port_flood_blocking({port(1)}, port(1), FLOOD_BLOCK_BROADCAST),
       false},
      {"end of it", vorn_set_port_flood_blocking({port(1)}, port(1), FLOOD_BLOCK_NONE), true},
      {"flood to another", vorn_set_port_flood_blocking({port(1)}, port(2), FLOOD_BLOCK_ALL), true},
      {"0.0.0.0", host4(0), false},
      {"0.0.0.1", host4(1), true},
      {"127.0.0.1", host4(0x7f000001), false},
      {"128.0.0.0", host4(0x80000000), true},
      {"169.254.1.1", host4(0xa9fe0101), false},
      {"224.0.0.1", host4(0xe0000001), false},
      {"223.255.255.255", host4(0xdfffffff), true},
      {"255.255.255.255", host4(0xffffffff), false},
      {"240.0.0.1", host4(0xf0000001), true},
      {"0/0", route4(0, 0), true},
      {"0/1", route4(0, 0x80000000), true},
      {"126/7", route4(0x7e000000, 0xfe000000), true},
      {"127/8", route4(0x7f000000, 0xff000000), false},
      {"169.254/17", route4(0xa9fe0000, 0xffff8000), false},
      {"224/4", route4(0xe0000000, 0xf0000000), false},
      {"::", host6(0, 0, 0), false},
      {"::1", host6(0, 0, 1), false},
      {"::2", host6(0, 0, 2), true},
      {"fe80::1", host6(0xfe, 0x80, 1), false},
      {"febf::1", host6(0xfe, 0xbf, 1), false},
      {"fec0::1", host6(0xfe, 0xc0, 1), true},
      {"ff02::1", host6(0xff, 2, 1), false},
      {"::/0", route6(0, 0, 0), true},
      {"fe80::/9", route6(0xfe, 0x80, 9), true},
      {"fe80::/10", route6(0xfe, 0x80, 10), false},
      {"ff00::/8", route6(0xff, 0, 8), false},
      {"flow of tag", flow(kType, 0x8100), false},
      {"flow of length", flow(kType, 0x5ff), true},
      {"IPv4 address in IPv6", flow(kType | OF_MATCH_SRC_IP, 0x86dd), false},
      {"IPv4 address in ARP", flow(kType | OF_MATCH_DST_IP, 0x0806), true},
      {"protocol in ARP", flow(kType | OF_MATCH_IP_PROTOCOL, 0x0806), true},
      {"protocol in LLDP", flow(kType | OF_MATCH_IP_PROTOCOL, 0x88cc), false},
      {"TOS in ARP", flow(kType | OF_MATCH_TOS, 0x0806), false},
      {"TOS in IPv6", flow(kType | OF_MATCH_TOS, 0x86dd), true},
      {"ports in ARP", flow(kType | OF_MATCH_DST_L4_PORT, 0x0806), false},
      {"ports of OSPF", flow(OF_MATCH_IP_PROTOCOL | OF_MATCH_SRC_L4_PORT, 0, 89), false},
      {"ports of ICMPv6", flow(OF_MATCH_IP_PROTOCOL | OF_MATCH_SRC_L4_PORT, 0, 58), true},
      {"qualifier far out", flow(0, 0, 0, {OF_UDF_FRAME, 65536, 0, 1}), false},
      {"qualifier within", flow(0, 0, 0, {OF_UDF_FRAME, 65535, 0, 1}), true},
  };
  for (const auto& row : rows) EXPECT_EQ(row.done, row.good) << row.what;
}

// ---- Full tables --------------------------------------------------------------------------------

TEST(SmallCard, FullTablesRefuseAndChangeNothing) {
  CardDescription small;
  small.capacity.vlans = 2;
  small.capacity.lags = 1;
  small.capacity.fdb = 2;
  small.capacity.mac_vlans = 1;
  small.capacity.subnet_vlans = 1;
  small.capacity.flows = 1;
  small.capacity.l3_interfaces = 1;
  small.capacity.ipv4_hosts = 1;
  host::use_description(small);
  int ports = 0;
  ASSERT_TRUE(vorn_lcmgr_api_init(ports));
  EXPECT_TRUE(vorn_create_vlan(2));
  EXPECT_FALSE(vorn_create_vlan(3));
  EXPECT_TRUE(vorn_delete_vlan(2) && vorn_create_vlan(3)) << "room again";
  EXPECT_TRUE(vorn_create_lag(lag(1)));
  EXPECT_FALSE(vorn_create_lag(lag(2)));
  EXPECT_EQ(lag_list.size(), 1u);
  EXPECT_TRUE(vorn_add_system_mac(Mac(1), 1));
  unsigned char bitmap[512] = {10};  // VLANs 1 and 3
  EXPECT_FALSE(vorn_add_system_mac_vlan_bitmap(Mac(2), bitmap)) << "room for one only";
  EXPECT_EQ(host::card()->tables().fdb.size(), 1u);
  EXPECT_TRUE(vorn_add_system_mac_vlan_bitmap(Mac(1), bitmap)) << "one is there already";
  EXPECT_FALSE(vorn_add_mac_to_port(port(1), Mac(3), 1));
  EXPECT_TRUE(vorn_add_mac_to_port(port(1), Mac(1), 1)) << "in place of what was there";
  EXPECT_TRUE(vorn_set_mac_vlan(Mac(1), 5, 0) && vorn_set_mac_vlan(Mac(1), 6, 0));
  EXPECT_FALSE(vorn_set_mac_vlan(Mac(2), 5, 0));
  EXPECT_TRUE(vorn_set_ipv4_subnet_vlan(kIp, 0xffffff00, 5, 0));
  EXPECT_FALSE(vorn_set_ipv4_subnet_vlan(kIp, 0xffff0000, 5, 0));
  unsigned id = 0;
  EXPECT_TRUE(vorn_create_l3_interface(Mac(1), 1, id));
  EXPECT_FALSE(vorn_create_l3_interface(Mac(2), 1, id));
  EXPECT_TRUE(vorn_add_l3_host_ip4(port(1), kIp, Mac(5), id));
  EXPECT_FALSE(vorn_add_l3_host_ip4(port(1), kIp + 1, Mac(5), id));
  of_flow_s flow;
  std::memset(&flow.match, 0, sizeof flow.match);
  EXPECT_TRUE(vorn_add_of_flow_with_id(flow, 1));
  EXPECT_FALSE(vorn_add_of_flow_with_id(flow, 2));
  EXPECT_TRUE(vorn_lcmgr_api_terminate());
}

}  // namespace
}  // namespace softcard
