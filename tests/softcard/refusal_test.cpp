// SPDX-License-Identifier: Apache-2.0
//
// Why the card refuses: the reason of each refusal in docs/softcard.md, and that no refusal is
// without its reason.

#include "softcard/base/refusal.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <random>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "softcard/sdk/sdk.h"
#include "tests/softcard/host_fixture.h"
#include "tests/support/sdk_operations.h"
#include "vorn_lag_list.h"
#include "vorn_port_mapping.h"
#include "vorn_sdk.h"

namespace softcard {
namespace {

using Sdk = VornSdkBase;

const unsigned char kMac[6] = {2, 0, 0x5e, 0, 0x53, 1};
const unsigned char kGroup[6] = {1, 0, 0x5e, 0, 0x53, 1};
const unsigned char kIp6[16] = {0x20, 1, 0xd, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
const unsigned char kIp6Mask[16] = {0xff, 0xff};
const unsigned char kHoles6[16] = {0xff, 0, 0xff};
const unsigned char kLowHoles6[16] = {255, 255, 255, 255, 255, 255, 255, 255, 15};
constexpr unsigned kIp = 0xc0000201;    // 192.0.2.1
constexpr unsigned kMask = 0xffffff00;  // /24

template <class Enum>
Enum value(unsigned number) {
  return static_cast<Enum>(number);
}

void take_packet(RxPacket*, void*) {}

of_flow_s flow(unsigned flags, unsigned short vlan = 1) {
  of_flow_s made;
  std::memset(&made.match, 0, sizeof made.match);
  made.match.vlan_id = vlan;
  made.match.flags = flags;
  return made;
}

bool add_flow(unsigned id) { return vorn_add_of_flow_with_id(flow(OF_MATCH_ETHER_TYPE), id); }

bool act(unsigned id, unsigned kind, unsigned word, unsigned second = 0) {
  return vorn_add_of_flow_action(id, value<of_action_t>(kind), {{word, second, 0}});
}

Packet packet_of(std::size_t bytes, unsigned type) {
  Packet packet;
  packet.set_data(std::vector<unsigned char>(bytes, 0xff));
  packet.set_type(type);
  return packet;
}

// ---- A reason for each row ----------------------------------------------------------------------

struct Row {
  std::function<bool()> call;
  const char* reason;
};

class RefusalTest : public HostTest {
 protected:
  static void expect(const std::vector<Row>& rows) {
    std::size_t number = 0;
    for (const Row& row : rows) {
      ++number;
      const std::uint64_t before = refusals();
      EXPECT_FALSE(row.call()) << "row " << number << ": " << row.reason;
      EXPECT_EQ(host::last_refusal(), row.reason) << "row " << number;
      EXPECT_EQ(refusals() - before, 1u) << row.reason;
    }
  }

  unsigned out_ = 0;
  unsigned char mac_out_[6] = {};
};

TEST_F(RefusalTest, SaysWhatIsWrongWithAPort) {
  bool on = false;
  expect({
      {[&] { return vorn_get_port_autoneg(port(99), on); }, "1/1/99: the card has 52 ports"},
      {[&] { return vorn_set_port_autoneg(kNowhere, on); }, "9/9/9 is no address of the card"},
      {[&] { return vorn_get_port_autoneg(lag(2), on); }, "lag/2 is a LAG interface"},
      {[&] { return vorn_get_port_autoneg(vlan(10), on); }, "vlan/10 is a VLAN interface"},
      {[&] { return vorn_set_port_mtu(lag(2), 64); }, "lag/2 does not exist"},
      {[&] { return vorn_set_port_mtu(vlan(10), 64); }, "VLAN 10 does not exist"},
      {[&] { return vorn_set_port_autoneg(Usp(1, 2, 129), on); },
       "1/2/129: LAG interfaces are 1 to 128"},
      {[&] { return vorn_set_port_autoneg(Usp(1, 3, 5000), on); }, "1/3/5000: VLANs are 1 to 4094"},
      {[&] { return vorn_set_port_state(port(99), on); }, "1/1/99: the card has 52 ports"},
      {[&] { return vorn_set_port_state(vlan(1), on); }, "vlan/1 is a VLAN interface"},
      {[&] { return vorn_delete_lag(port(3)); }, "1/1/3 is a port"},
      // Nothing but a question about the address is answered no.
      {[] { return vorn_add_mac_to_port(port(99), kMac, 1); }, "1/1/99: the card has 52 ports"},
      {[] { return vorn_set_port_stp_state(vlan(1), value<stp_state_t>(0)); },
       "vlan/1 is a VLAN interface"},
      {[] { return vorn_set_lag_balancing_strategy(kNowhere, value<lag_psc_t>(1)); },
       "9/9/9 is no address of the card"},
      {[] { return vorn_add_l3_host_ip4(vlan(1), kIp, kMac, 1); }, "vlan/1 is a VLAN interface"},
      {[&] {
         return vorn_set_ports_pvid({port(1), port(60)}, 1);
       },
       "1/1/60: the card has 52 ports"},
      {[&] {
         return card().cable(0) != nullptr &&
                SoftSdk(card(), host::call_watch()).set_port_mtu(Mp(1, 53), 64);
       },
       "1/1/52: the card has 52 ports"},
      {[&] { return SoftSdk(card(), host::call_watch()).set_port_mtu(Mp(0, 0), 64); },
       "0:0 is no port"},
  });
}

TEST_F(RefusalTest, SaysWhatIsWrongWithASettingOfAPort) {
  mstp_state_t state = MSTP_STATE_BLOCKING;
  Usp to(0, 0, 0);
  mirror_type_t mirror = MIRROR_TYPE_NONE;
  unsigned long long count = 0;
  const auto set_mstp = [](unsigned instance, unsigned state_number) {
    return SoftSdk(card(), host::call_watch())
        .set_port_mstp_state(instance, Mp(1, 1), value<mstp_state_t>(state_number));
  };
  expect({
      {[&] { return vorn_set_port_speed(port(3), SPEED_TYPE_10000); },
       "1/1/3 has no ability for 10000 Mbit/s"},
      {[&] { return vorn_set_port_duplex(port(48), DUPLEX_TYPE_HALF); },
       "1/1/48 has no ability for half duplex"},
      {[&] { return vorn_set_port_duplex(port(3), value<duplex_type_t>(2)); },
       "duplex mode 2: above 1"},
      {[&] {
         return vorn_set_port_advertising_ability(port(48),
                                                  value<port_ability_type_t>(PORT_ABILITY_10_HALF));
       },
       "1/1/48 does not have the abilities 0x1"},
      {[&] { return vorn_set_port_jaming_control(port(48), true); },
       "1/1/48 has no ability for half duplex"},
      {[&] { return vorn_set_port_mtu(port(3), 63); }, "MTU 63: below 64"},
      {[&] { return vorn_set_port_mtu(port(3), 9217); }, "MTU 9217: above 9216"},
      {[&] { return vorn_set_port_link_state(port(3), value<phy_state_t>(7)); },
       "link state 7: above 1"},
      {[&] { return vorn_set_port_stp_state(port(3), value<stp_state_t>(9)); },
       "STP state 9: above 4"},
      {[&] { return set_mstp(64, 0); }, "instance 64: above 63"},
      {[&] { return set_mstp(0, 9); }, "MSTP state 9: above 4"},
      {[&] { return vorn_get_port_mstp_state(port(3), state, 64); }, "instance 64: above 63"},
      {[&] { return vorn_set_port_mirror(port(3), port(3), MIRROR_TYPE_BOTH); },
       "1/1/3 cannot be mirrored to itself"},
      {[&] { return vorn_set_port_mirror(port(2), port(3), value<mirror_type_t>(4)); },
       "mirror type 4: above 3"},
      {[&] { return vorn_get_port_mirror(to, port(3), mirror); }, "1/1/3 is not mirrored"},
      {[&] { return vorn_set_port_ingress_discarding(port(3), value<ingress_discard_type_t>(4)); },
       "ingress discarding 4: above 3"},
      {[&] {
         return vorn_set_port_flood_blocking({port(3)}, port(4), value<flood_block_type_t>(8));
       },
       "kinds of floods 8: above 7"},
      {[&] { return vorn_set_port_flood_blocking_cpu({port(3)}, value<flood_block_type_t>(9)); },
       "kinds of floods 9: above 7"},
      {[&] { return vorn_set_port_cos_mapping(port(3), 8, 0); }, "priority 8: above 7"},
      {[&] { return vorn_set_port_cos_mapping(port(3), 0, 9); }, "queue 9: above 7"},
      {[&] { return vorn_get_port_cos_mapping(port(3), 8, out_); }, "priority 8: above 7"},
      {[&] { return vorn_set_switch_forward_mode(7); }, "forward mode 7: above 2"},
      {[&] { return vorn_get_port_stat_counter(port(3), value<stat_type_t>(36), count); },
       "counter 36: above 35"},
      {[&] {
         return vorn_get_port_brief_stat_counter64(port(3), value<brief_stat_type_t>(8), count);
       },
       "brief counter 8: above 7"},
  });
}

TEST_F(RefusalTest, SaysWhatIsWrongWithAVlan) {
  std::list<Usp> members;
  ASSERT_TRUE(vorn_create_vlan(10));
  for (unsigned protocol = 0; protocol < 16; ++protocol) {
    ASSERT_TRUE(vorn_set_port_protocol_vlan(port(3), FRAME_TYPE_ETHERNET,
                                            static_cast<unsigned short>(0x8000 + protocol), 10));
  }
  expect({
      {[] { return vorn_create_vlan(5000); }, "VLAN 5000: above 4094"},
      {[] { return vorn_create_vlan(0); }, "VLAN 0: below 1"},
      {[] { return vorn_create_vlan(10); }, "create_vlan: VLAN 10 exists"},
      {[] { return vorn_delete_vlan(11); }, "VLAN 11 does not exist"},
      {[] { return vorn_add_ports_to_vlan(11, {}, {port(3)}); }, "VLAN 11 does not exist"},
      {[] { return vorn_delete_ports_from_vlan(10, {port(3)}); }, "1/1/3 is no member of VLAN 10"},
      {[&] { return vorn_get_vlan_info(4095, members, members); }, "VLAN 4095: above 4094"},
      {[] { return vorn_set_port_pvid(port(3), 0); }, "VLAN 0: below 1"},
      {[] { return vorn_set_port_vlan_priority(port(3), 4095, 1); }, "VLAN 4095: above 4094"},
      {[] { return vorn_set_port_vlan_priority(port(3), 10, 8); }, "priority 8: above 7"},
      {[&] { return vorn_get_port_vlan_priority(port(3), 4095, out_); }, "VLAN 4095: above 4094"},
      {[] { return vorn_set_port_protocol_vlan(port(3), value<frame_type_t>(3), 1, 10); },
       "frame type 3: above 2"},
      {[] { return vorn_set_port_protocol_vlan(port(3), FRAME_TYPE_ETHERNET, 0x800, 4095); },
       "VLAN 4095: above 4094"},
      {[] { return vorn_set_port_protocol_vlan(port(3), FRAME_TYPE_ETHERNET, 0x800, 10); },
       "protocol-vlans of 1/1/3: full, 16 entries"},
      {[] { return vorn_delete_port_protocol_vlan(port(3), FRAME_TYPE_SNAP, 0x800); },
       "1/1/3 has no rule for protocol 0x800 of frame type 1"},
      {[] { return vorn_set_mac_vlan(kGroup, 10, 0); }, "01:00:5e:00:53:01 is a group address"},
      {[] { return vorn_set_mac_vlan(kMac, 10, 8); }, "priority 8: above 7"},
      {[] { return vorn_set_mac_vlan(kMac, 0, 0); }, "there is no VLAN rule for 02:00:5e:00:53:01"},
      {[] { return vorn_set_ipv4_subnet_vlan(kIp, 0xff00ff00, 10, 0); },
       "mask 255.0.255.0 has holes"},
      {[] { return vorn_set_ipv4_subnet_vlan(kIp, kMask, 0, 0); },
       "there is no VLAN rule for 192.0.2.0/24"},
      {[] { return vorn_set_ipv6_subnet_vlan(kIp6, 129, 10, 0); }, "prefix length 129: above 128"},
      {[] { return vorn_set_ipv6_subnet_vlan(kIp6, 64, 5000, 0); }, "VLAN 5000: above 4094"},
  });
}

TEST_F(RefusalTest, SaysWhatIsWrongWithALag) {
  Usp usp(0, 0, 0);
  ASSERT_TRUE(vorn_add_ports_to_lag(lag(1), {port(4)}) && vorn_create_lag(lag(2)));
  std::list<Usp> many;
  for (unsigned i = 5; i < 38; ++i) many.push_back(port(i));
  SoftSdk sdk(card(), host::call_watch());
  std::list<Mp> first = {Mp(1, 1)};
  unsigned bare = 0;
  ASSERT_TRUE(sdk.create_lag(bare) && sdk.add_ports_to_lag(bare, first));
  expect({
      {[] { return vorn_add_ports_to_lag(lag(2), {port(4)}); }, "1/1/4 is a member of lag/1"},
      {[] { return vorn_add_ports_to_lag(lag(2), {port(0)}); }, "1/1/0 is a member of LAG id 2"},
      {[&] { return vorn_add_ports_to_lag(lag(2), many); }, "lag/2: 32 members are the most"},
      {[] { return vorn_delete_ports_from_lag(lag(1), {port(9)}); }, "1/1/9 is no member of lag/1"},
      {[] { return vorn_set_lag_balancing_strategy(lag(1), value<lag_psc_t>(8)); },
       "balancing strategy 8: above 7"},
      {[] { return vorn_set_lag_balancing_strategy(lag(1), value<lag_psc_t>(0)); },
       "balancing strategy 0: below 1"},
      {[&] { return vorn_lag_usp_to_lag_id(lag(7), out_); }, "lag/7 does not exist"},
      {[&] { return vorn_lag_id_to_lag_usp(9, usp); }, "LAG id 9 has no LAG interface"},
      {[] { return vorn_create_lag(port(3)); }, "1/1/3 is no LAG interface"},
      {[&] { return sdk.delete_lag(9); }, "LAG id 9 does not exist"},
      {[&] { return sdk.add_mac_to_port(Mp(1, 1), kMac, 1, true); }, "1/1/0 is no LAG"},
      {[] { return vornsdk_add_lag_mapping(lag(1), 2); }, "lag/1 has the id 0"},
      {[] { return vornsdk_add_lag_mapping(lag(5), 1); }, "LAG id 1 is lag/2"},
      {[] { return vornsdk_add_lag_mapping(lag(5), 77); }, "LAG id 77 does not exist"},
      {[] { return vornsdk_delete_lag_mapping(lag(2), 0); }, "lag/2 does not have the id 0"},
      {[] { return add_lag_to_list(0, lag_list); }, "LAG id 0 is in the list"},
      {[] { return delete_lag_from_list(5, lag_list); }, "LAG id 5 is not in the list"},
      {[&] { return add_lag_member(5, lag_list, first); }, "LAG id 5 is not in the list"},
      {[&] { return delete_lag_member(5, lag_list, first); }, "LAG id 5 is not in the list"},
      {[&] { return get_lag_member(5, first); }, "LAG id 5 is not in the list"},
      {[&] {
         return vorn_usp_list_to_mp_list({port(1), lag(2)}, first);
       },
       "lag/2 has no members"},
      {[&] { return vorn_mp_to_usp(Mp(1, 60), usp); }, "1/1/59: the card has 52 ports"},
  });
}

TEST_F(RefusalTest, SaysWhatIsWrongWithTheMacTable) {
  unsigned char bitmap[512] = {0, 4};  // VLAN 10
  unsigned char none[512] = {};
  expect({
      {[] { return vorn_add_mac_to_port(port(3), kMac, 10); }, "VLAN 10 does not exist"},
      {[] { return vorn_add_mac_to_port(lag(3), kMac, 1); }, "lag/3 does not exist"},
      {[] { return vorn_add_system_mac(kMac, 0); }, "VLAN 0: below 1"},
      {[&] { return vorn_add_system_mac_vlan_bitmap(kMac, bitmap); }, "VLAN 10 does not exist"},
      {[&] { return vorn_add_system_mac_vlan_bitmap(kMac, none); }, "the bitmap names no VLAN"},
      {[] { return vorn_delete_mac(1, kMac); }, "there is no 02:00:5e:00:53:01 in VLAN 1"},
      {[] { return vorn_delete_mac(4095, kMac); }, "VLAN 4095: above 4094"},
      {[&] { return vorn_delete_mac_vlan_bitmap(kMac, bitmap); },
       "there is no 02:00:5e:00:53:01 in any VLAN of the bitmap"},
      {[] { return vorn_delete_mac_by_mac(kMac); }, "there is no 02:00:5e:00:53:01"},
      {[] { return vorn_clear_fdb_by_vlan(10, true); }, "VLAN 10 does not exist"},
      {[] { return vorn_clear_fdb_by_port(lag(3), true); }, "LAG id 2 does not exist"},
      {[] { return vorn_set_fdb_aging_time(-1); }, "ageing time -1: below 0"},
      {[] { return vorn_set_port_mac_limit(lag(3), 5); }, "0:0 is no port"},
      {[] { return vorn_set_port_mac_limit(port(3), -2); }, "limit -2: below -1"},
      {[] { return vorn_traverse_mac_table(nullptr); }, "the walk has no function to call"},
  });
}

TEST_F(RefusalTest, SaysWhatIsWrongWithLayerThree) {
  unsigned id = 0;
  ASSERT_TRUE(vorn_create_l3_interface(kMac, 1, id) && id == 1);
  ASSERT_TRUE(vorn_add_l3_host_ip4(port(3), kIp, kMac, 1));
  ASSERT_TRUE(vorn_create_lag(lag(1)));
  unsigned metric = 0;
  expect({
      {[&] { return vorn_create_l3_interface(kMac, 1, id); },
       "create_l3_interface: L3 interface 1 exists"},
      {[&] { return vorn_create_l3_interface(kGroup, 1, id); },
       "01:00:5e:00:53:01 is a group address"},
      {[&] { return vorn_create_l3_interface(kMac, 4095, id); }, "VLAN 4095: above 4094"},
      {[] { return vorn_create_l3_interface_with_id(kMac, 2, 1, false); },
       "create_l3_interface: L3 interface 1 exists"},
      {[] { return vorn_create_l3_interface_with_id(kMac, 1, 8, true); },
       "create_l3_interface: L3 interface 1 exists"},
      {[&] { return vorn_get_l3_interface(7, out_, mac_out_); }, "L3 interface 7 does not exist"},
      {[] { return vorn_delete_l3_interface(kMac, 2); },
       "there is no L3 interface 02:00:5e:00:53:01 in VLAN 2"},
      {[] { return vorn_delete_l3_interface(kMac, 65537); }, "VLAN 65537: above 4094"},
      {[] { return vorn_delete_l3_interface_by_id(7); }, "L3 interface 7 does not exist"},
      {[] { return vorn_delete_l3_interface_by_id(1); },
       "L3 interface 1 is in use by hosts or routes"},
      {[] { return vorn_delete_l3_interface_all(); },
       "L3 interfaces are in use by 1 hosts and routes"},
      {[] { return vorn_add_l3_host_ip4(port(3), kIp, kMac, 7); }, "L3 interface 7 does not exist"},
      {[] { return vorn_add_l3_host_ip4(port(3), kIp, kGroup, 1); },
       "01:00:5e:00:53:01 is a group address"},
      {[] { return vorn_add_l3_host_ip4(port(60), kIp, kMac, 1); },
       "1/1/60: the card has 52 ports"},
      {[] { return vorn_add_l3_route_ip4(port(3), kIp, 0xff00ff00, kMac, 1, 0); },
       "mask 255.0.255.0 has holes"},
      {[] { return vorn_add_l3_route_ip6(port(3), kIp6, kHoles6, kMac, 1); },
       "mask ff00:ff00:: has holes"},
      {[] { return vorn_add_l3_route_ip6(port(3), kIp6, kLowHoles6, kMac, 1); },
       "mask ffff:ffff:ffff:ffff:f00:: has holes"},
      {[&] { return vorn_get_l3_host_ip4(kIp, port(4), mac_out_, out_); },
       "there is no host 192.0.2.1 at 1/1/4"},
      {[] { return vorn_delete_l3_host_by_addr_ip6(kIp6, port(3)); },
       "there is no host 2001:db8::1 at 1/1/3"},
      {[&] { return vorn_get_l3_route_by_subnet_ip4(kIp, kMask, port(4), mac_out_, out_, metric); },
       "there is no route 192.0.2.0/24 by 1/1/4"},
      {[] { return vorn_delete_l3_route_by_subnet_ip4(kIp, kMask, lag(1)); },
       "there is no route 192.0.2.0/24 by lag/1"},
      {[] { return vorn_delete_l3_host_by_interface(7, false); }, "L3 interface 7 does not exist"},
  });
}

TEST_F(RefusalTest, SaysWhatIsWrongWithFlowsAndFilters) {
  unsigned id = 0;
  ASSERT_TRUE(add_flow(1));
  for (unsigned kind = OF_ACTION_SET_VLAN_ID; kind <= OF_ACTION_SET_TOS; ++kind) {
    ASSERT_TRUE(act(1, kind, 1));
  }
  expect({
      {[] { return add_flow(1); }, "add_of_flow_with_id: flow 1 exists"},
      {[] { return vorn_add_of_flow_with_id(flow(0x80000000), 2); },
       "there are no match flags 0x80000000"},
      {[] { return vorn_add_of_flow_with_id(flow(OF_MATCH_VLAN_ID, 4095), 2); },
       "VLAN 4095: above 4094"},
      {[&] {
         return vorn_add_of_flow(flow(OF_MATCH_ETHER_TYPE), id, {4, 0, 0, 1});
       },
       "base of the qualifier 4: above 3"},
      {[&] {
         return vorn_add_of_flow(flow(OF_MATCH_ETHER_TYPE), id, {1, 0, 0, 0});
       },
       "the qualifier's mask has no bits"},
      {[] { return vorn_delete_of_flow(9); }, "flow 9 does not exist"},
      {[&] { return vorn_get_of_flow_stat_counter32(9, out_); }, "flow 9 does not exist"},
      {[] { return act(1, OF_ACTION_OUTPUT, 7 + 60); }, "1/1/60: the card has 52 ports"},
      {[] { return act(1, 12, 0); }, "action 12: above 11"},
      {[] { return act(1, OF_ACTION_SET_QUEUE, 8); }, "queue 8: above 7"},
      {[] { return act(1, OF_ACTION_SET_TOS, 256); }, "ToS 256: above 255"},
      {[] { return act(1, OF_ACTION_SET_SRC_MAC, 0, 0x10000); },
       "the address has more than six bytes"},
      {[] { return act(1, OF_ACTION_SET_VLAN_ID, 1); }, "flow 1 has that action 1"},
      {[] { return act(1, OF_ACTION_SET_QUEUE, 1); }, "flow 1: 8 actions are the most"},
      {[] {
         return vorn_delete_of_flow_action(1, OF_ACTION_SET_QUEUE, {{1, 0, 0}});
       },
       "flow 1 has no such action 11"},
      {[] { return vorn_delete_arp_filter(kIp, kMask); },
       "there is no ARP filter 192.0.2.1 mask 255.255.255.0"},
      {[] { return vorn_add_ip_protocol_filter(256); }, "IP protocol 256: above 255"},
      {[] { return vorn_delete_ip_protocol_filter(6); }, "there is no filter of IP protocol 6"},
      {[] { return vorn_add_l4_destination_port_filter(65536); }, "L4 port 65536: above 65535"},
      {[] { return vorn_delete_l4_destination_port_filter(80); },
       "there is no filter of L4 port 80"},
  });
}

TEST_F(RefusalTest, SaysWhatIsWrongWithPacketsCallbacksAndTheRest) {
  ASSERT_TRUE(vorn_register_rx_packet_callback(take_packet, nullptr));
  ASSERT_TRUE(vorn_set_port_state(port(5), false) && vorn_set_port_mtu(port(6), 64));
  int ports = 0;
  const auto deregister = [](void* user_data) {
    return vorn_deregister_event_callback(LCMGR_REPORT_RX_PACKET,
                                          reinterpret_cast<void*>(take_packet), user_data);
  };
  const auto send = [](const std::list<Mp>& to, std::size_t bytes) {
    std::list<Mp> tagged;
    std::list<Mp> untagged = to;
    return SoftSdk(card(), host::call_watch())
        .send_packet_by_port(tagged, untagged, packet_of(bytes, PACKET_TYPE_DATA));
  };
  ASSERT_TRUE(deregister(nullptr) && vorn_register_rx_packet_callback(take_packet, nullptr));
  ASSERT_TRUE(host::call_watch().fail("create_vlan", 1));
  expect({
      {[] { return vorn_create_vlan(20); }, "create_vlan: refused on purpose"},
      {[] { return vorn_send_packet_from_cpu(packet_of(60, 2)); }, "packet type 2: above 1"},
      {[] { return vorn_send_packet_from_cpu(packet_of(13, 0)); },
       "packet of 13 bytes: shorter than an Ethernet header"},
      {[&] { return send({}, 60); }, "packet: there is no port to send it to"},
      {[&] { return send({Mp(1, 6)}, 60); }, "1/1/5: the egress port has no link"},
      {[&] { return send({Mp(1, 7)}, 100); }, "1/1/6: longer than the egress port's MTU"},
      {[] { return vorn_register_rx_packet_callback(nullptr, nullptr); }, "the callback is null"},
      {[] { return vorn_register_rx_packet_callback(take_packet, nullptr); },
       "the callback is registered already"},
      {[&] { return deregister(&ports); }, "no such callback is registered"},
      {[] { return vorn_free_call(2); }, "there is no free call 2"},
      {[] { return vorn_set_lcmgr_trace("trace_level_xrl", true); },
       "there is no trace target 'trace_level_xrl'"},
      {[] { return host::call_watch().fail("create_vlan", 0); }, "nth 0: 1 is the next call"},
      {[] { return host::call_watch().fail("make_vlan", 1); },
       "'make_vlan' is no operation of the SDK"},
      {[&] { return vorn_lcmgr_api_init(ports); }, "the line card is in use already"},
      {[] { return vornsdk_delete_sdk_instance(nullptr); }, "the SDK object is not the card's"},
  });
  ASSERT_TRUE(vorn_lcmgr_api_terminate());
  host::use_description_file("missing.card");
  expect({{[] { return vorn_create_vlan(20); }, "there is no card: vorn_lcmgr_api_init() makes it"},
          {[&] { return vorn_lcmgr_api_init(ports); }, "missing.card: cannot be opened"}});
  host::use_description(CardDescription());
  ASSERT_TRUE(vorn_lcmgr_api_init(ports));
}

// A success says nothing, whatever the library asked on its way, and leaves the reason of the
// refusal before it.
TEST_F(RefusalTest, OutlivesASuccess) {
  unsigned id = 0;
  const std::function<bool()> successes[] = {
      [] { return vorn_create_vlan(10); },
      [] { return vorn_set_port_pvid(port(3), 10); },
      [] { return vorn_set_port_state(lag(2), true); },
      [] { return vorn_create_lag(lag(1)); },
      [] { return vorn_add_ports_to_lag(lag(2), {port(4)}); },
      [] { return vorn_add_mac_to_port(lag(2), kMac, 1); },
      [] { return vorn_clear_fdb_by_port(lag(2), true); },
      [] { return vorn_set_port_stp_state(lag(2), value<stp_state_t>(0)); },
      [&] { return vorn_create_l3_interface(kMac, 1, id); },
      [&] { return vorn_add_l3_host_ip4(port(3), kIp, kMac, id); },
      [&] { return vorn_add_l3_host_ip4(lag(2), kIp + 1, kMac, id); },
      [&] { return vorn_add_l3_host_ip6(lag(2), kIp6, kMac, id); },
      [&] { return vorn_add_l3_route_ip4(lag(2), kIp, kMask, kMac, id, 0); },
      [&] { return vorn_add_l3_route_ip6(port(3), kIp6, kIp6Mask, kMac, id); },
      [] { return vorn_delete_l3_route_by_subnet_ip6(kIp6, kIp6Mask, port(3)); },
      [&] { return vorn_delete_l3_route_by_subnet_ip4(kIp, kMask, lag(2)); },
      [] {
        return vorn_send_packet_by_port({kNowhere, vlan(10), lag(2)}, {port(3)},
                                        packet_of(60, PACKET_TYPE_DATA));
      },
  };
  ASSERT_TRUE(vorn_add_ports_to_lag(lag(2), {port(5)}));
  EXPECT_FALSE(vorn_create_vlan(0));
  const std::uint64_t before = refusals();
  std::size_t number = 0;
  for (const auto& success : successes) {
    EXPECT_TRUE(success()) << number;
    EXPECT_EQ(refusals(), before) << number << ": " << host::last_refusal();
    ++number;
  }
  EXPECT_EQ(host::last_refusal(), "VLAN 0: below 1");
}

TEST_F(RefusalTest, EndsTheLineOfATrace) {
  Lines traced;
  host::call_watch().set_sink([&](const std::string& line) { traced.push_back(line); });
  ASSERT_TRUE(vorn_set_lcmgr_trace("vlan", true) && host::call_watch().fail("delete_vlan", 1));
  EXPECT_FALSE(vorn_create_vlan(5000));
  EXPECT_TRUE(vorn_create_vlan(10));
  EXPECT_FALSE(vorn_delete_vlan(10));
  host::call_watch().set_sink(nullptr);
  EXPECT_EQ(traced,
            (Lines{"create_vlan(5000) = false: VLAN 5000: above 4094", "create_vlan(10) = true",
                   "delete_vlan(10) = false: delete_vlan: refused on purpose"}));
}

// ---- Full tables --------------------------------------------------------------------------------

TEST(RefusalOfFullTablesTest, NamesTheTableAndItsEntries) {
  CardDescription description;
  CardCapacity& capacity = description.capacity;
  for (std::size_t* entries :
       {&capacity.vlans, &capacity.lags, &capacity.fdb, &capacity.l3_interfaces,
        &capacity.ipv4_hosts, &capacity.ipv6_hosts, &capacity.ipv4_routes, &capacity.ipv6_routes,
        &capacity.flows, &capacity.mac_vlans, &capacity.subnet_vlans, &capacity.arp_filters}) {
    *entries = 2;
  }
  Card card(description, std::make_shared<VirtualClock>());
  CallWatch watch;
  SoftSdk sdk(card, watch);
  unsigned char mac[6] = {2, 0, 0, 0, 0, 0};
  unsigned char ip6[16] = {0x20, 1};
  const unsigned char mask6[16] = {0xff, 0xff};
  unsigned id = 0;
  of_flow_mp_s flow_mp;
  std::memset(&flow_mp.match, 0, sizeof flow_mp.match);
  const struct {
    const char* reason;
    std::function<bool()> add;
  } rows[] = {
      {"vlans: full, 2 entries", [&] { return sdk.create_vlan(mac[5] + 1u); }},
      {"lags: full, 2 entries", [&] { return sdk.create_lag(id); }},
      {"fdb: full, 2 entries", [&] { return sdk.add_mac_to_port(Mp(1, 1), mac, 1, false); }},
      {"fdb: full, 2 entries", [&] { return sdk.add_system_mac(mac, 1); }},
      {"l3-interfaces: full, 2 entries", [&] { return sdk.create_l3_interface(mac, 1, id); }},
      {"ipv4-hosts: full, 2 entries",
       [&] { return sdk.add_l3_host_ip4(Mp(1, 1), false, mac[5], mac, 1); }},
      {"ipv6-hosts: full, 2 entries",
       [&] { return sdk.add_l3_host_ip6(Mp(1, 1), false, ip6, mac, 1); }},
      {"ipv4-routes: full, 2 entries",
       [&] { return sdk.add_l3_route_ip4(Mp(1, 1), false, mac[5], UINT32_MAX, mac, 1, 0); }},
      {"ipv6-routes: full, 2 entries",
       [&] {
         ip6[0] = mac[5];
         return sdk.add_l3_route_ip6(Mp(1, 1), false, ip6, mask6, mac, 1);
       }},
      {"flows: full, 2 entries",
       [&] {
         return sdk.add_of_flow(flow_mp, id, {0, 0, 0, 0});
       }},
      {"flows: full, 2 entries", [&] { return sdk.add_of_flow_with_id(flow_mp, mac[5] + 9u); }},
      {"mac-vlans: full, 2 entries", [&] { return sdk.set_mac_vlan(mac, 1, 0); }},
      {"subnet-vlans: full, 2 entries",
       [&] { return sdk.set_ipv4_subnet_vlan(mac[5], UINT32_MAX, 1, 0); }},
      {"arp-filters: full, 2 entries", [&] { return sdk.add_arp_filter(mac[5], UINT32_MAX); }},
  };
  for (const auto& row : rows) {
    const std::uint64_t before = refusals();
    for (mac[5] = 1; mac[5] < 4 && refusals() == before; ++mac[5]) {
      ip6[15] = mac[5];
      row.add();
    }
    EXPECT_EQ(last_refusal(), row.reason);
    EXPECT_EQ(refusals(), before + 1) << row.reason;
  }
  unsigned char bitmap[512] = {2};  // VLAN 1
  card.tables().fdb.flush(FdbFilter());
  mac[5] = 9;
  EXPECT_FALSE(sdk.add_system_mac_vlan_bitmap(mac, bitmap));
  EXPECT_EQ(last_refusal(), "fdb: full, 2 entries");
}

// ---- Every refusal has one reason ---------------------------------------------------------------

// Arguments of every type: often good ones, often not.
class Arguments {
 public:
  std::uint32_t number() {
    static constexpr std::uint32_t kOdd[] = {64,   255,   1514,       4094,
                                             4095, 65536, 0xffffff00, UINT32_MAX};
    const std::uint32_t drawn = draw();
    return drawn % 8 == 0 ? kOdd[drawn / 8 % 8] : drawn / 8 % 9;
  }

  template <class T>
  T make() {
    if constexpr (std::is_same_v<T, unsigned char*> || std::is_same_v<T, const unsigned char*>) {
      unsigned char* const bytes = buffers_[draw() % 4];
      std::fill_n(bytes, sizeof buffers_[0], static_cast<unsigned char>(0));
      bytes[draw() % 2 == 0 ? 0 : draw() % 16] = static_cast<unsigned char>(number());
      if (draw() % 8 == 0) std::fill_n(bytes, 16, static_cast<unsigned char>(0xff));
      return bytes;
    } else if constexpr (std::is_same_v<T, void*>) {
      return draw() % 2 == 0 ? nullptr : &walk_;
    } else if constexpr (std::is_pointer_v<T>) {
      if constexpr (std::is_function_v<std::remove_pointer_t<T>>) {
        return draw() % 4 == 0 ? nullptr : function(T());
      } else {
        static std::remove_pointer_t<T> records[STAT_TYPE_COUNT];
        return records;
      }
    } else if constexpr (std::is_same_v<T, bool>) {
      return draw() % 2 == 0;
    } else if constexpr (std::is_arithmetic_v<T> || std::is_enum_v<T>) {
      return static_cast<T>(number());
    } else if constexpr (std::is_same_v<T, Mp>) {
      return Mp(draw() % 16 == 0 ? number() : draw() % 4 == 0 ? 0 : 1, number());
    } else if constexpr (std::is_same_v<T, Usp>) {
      return Usp(draw() % 16 == 0 ? number() : 1, 1 + draw() % 4, number());
    } else if constexpr (std::is_same_v<T, std::list<Mp>>) {
      std::list<Mp> mps;
      for (std::uint32_t i = draw() % 3; i > 0; --i) mps.push_back(make<Mp>());
      return mps;
    } else if constexpr (std::is_same_v<T, std::string>) {
      return draw() % 2 == 0 ? "trace_level_xrl" : "vlan";
    } else if constexpr (std::is_same_v<T, Packet>) {
      return packet_of(number() % 2000 * 10, draw() % 3);
    } else if constexpr (std::is_same_v<T, of_flow_mp_s>) {
      of_flow_mp_s made;
      made.in_port = make<Mp>();
      made.match = flow(1u << draw() % 16, static_cast<unsigned short>(number())).match;
      made.match.tos = made.match.ip_protocol = static_cast<unsigned short>(number());
      return made;
    } else if constexpr (std::is_same_v<T, of_action_param_s>) {
      return {{number(), number(), number()}};
    } else if constexpr (std::is_same_v<T, of_flow_qualify_udf_s>) {
      return {number(), number(), number(), number()};
    } else {
      return T();  // lists of counters
    }
  }

 private:
  std::uint32_t draw() { return static_cast<std::uint32_t>(engine_()); }

  template <class... Parameters>
  static auto function(void (*)(Parameters...)) {
    return +[](Parameters...) {};
  }

  std::mt19937 engine_{7};
  unsigned char buffers_[4][512] = {};
  mac_traverse_s walk_{[](const ctype_l2_addr_s*, void*) { return 1; }, nullptr};
};

template <class T>
struct Held {
  explicit Held(Arguments& arguments) : value(arguments.make<T>()) {}
  T& get() { return value; }
  T value;
};
template <>
struct Held<unsigned char[6]> {
  explicit Held(Arguments&) {}
  unsigned char (&get())[6] { return value; }
  unsigned char value[6] = {};
};

using Step = std::function<bool(Sdk&, Arguments&)>;

template <class... Parameters, std::size_t... number>
bool call_with(Sdk& sdk, Arguments& arguments, bool (Sdk::*operation)(Parameters...),
               std::index_sequence<number...>) {
  std::tuple<Held<std::remove_cv_t<std::remove_reference_t<Parameters>>>...> held{
      ((void)number, arguments)...};
  return (sdk.*operation)(std::get<number>(held).get()...);
}

struct StepOf {
  template <class... Parameters>
  Step operator()(bool (Sdk::*operation)(Parameters...)) const {
    return [operation](Sdk& sdk, Arguments& arguments) {
      return call_with(sdk, arguments, operation, std::index_sequence_for<Parameters...>());
    };
  }
};

TEST_F(RefusalTest, IsGivenOnceForEachFalseOfSdkAndMapping) {
  std::vector<Step> steps = vorn::test::sdk_operations<Step>(StepOf());
  const std::size_t operations = steps.size();
  unsigned id = 0;
  Usp usp(0, 0, 0);
  Mp mp(0, 0);
  std::list<Mp> mps;
  std::list<Usp> usps;
  const std::vector<Step> mapping = {
      [](Sdk&, Arguments& a) { return is_port_physical(a.make<Usp>()); },
      [](Sdk&, Arguments& a) { return is_port_logical_lag(a.make<Usp>()); },
      [](Sdk&, Arguments& a) { return is_port_logical_vlan(a.make<Usp>()); },
      [&](Sdk&, Arguments& a) { return vorn_usp_to_mp(a.make<Usp>(), mp); },
      [&](Sdk&, Arguments& a) { return vorn_usp_to_mp_list(a.make<Usp>(), mps); },
      [&](Sdk&, Arguments& a) {
        return vorn_usp_list_to_mp_list({a.make<Usp>(), a.make<Usp>()}, mps);
      },
      [&](Sdk&, Arguments& a) { return vorn_mp_to_usp(a.make<Mp>(), usp); },
      [&](Sdk&, Arguments& a) { return vorn_mp_list_to_usp_list(a.make<std::list<Mp>>(), usps); },
      [&](Sdk&, Arguments& a) { return vornsdk_lag_usp_to_lag_id(a.make<Usp>(), id); },
      [&](Sdk&, Arguments& a) { return vornsdk_lag_id_to_lag_usp(a.number(), usp); },
      [](Sdk&, Arguments& a) { return vornsdk_add_lag_mapping(a.make<Usp>(), a.number()); },
      [](Sdk&, Arguments& a) { return vornsdk_delete_lag_mapping(a.make<Usp>(), a.number()); },
      [](Sdk&, Arguments& a) { return add_lag_to_list(a.number(), lag_list); },
      [](Sdk&, Arguments& a) { return delete_lag_from_list(a.number(), lag_list); },
      [&](Sdk&, Arguments& a) { return add_lag_member(a.number(), lag_list, mps); },
      [&](Sdk&, Arguments& a) { return delete_lag_member(a.number(), lag_list, mps); },
      [&](Sdk&, Arguments& a) { return get_lag_member(a.number(), mps); },
  };
  steps.insert(steps.end(), mapping.begin(), mapping.end());

  SoftSdk sdk(card(), host::call_watch());
  Arguments arguments;
  std::set<std::size_t> done;
  std::set<std::size_t> refused;
  std::mt19937 draw(1);
  constexpr unsigned kCalls = 40000;
  for (unsigned call = 0; call < kCalls; ++call) {
    const std::size_t step = draw() % steps.size();
    if (call % 16 == 0) mps.clear();
    const std::uint64_t before = refusals();
    const bool result = steps[step](sdk, arguments);
    (result ? done : refused).insert(step);
    ASSERT_EQ(refusals() - before, result ? 0u : 1u)
        << (step < operations ? "operation " : "mapping ") << step << ", " << last_refusal();
    ASSERT_TRUE(result || !last_refusal().empty()) << step;
  }
  // Most have been both done and refused, and the rest are the 16 that refuse nothing.
  EXPECT_GE(done.size(), 160u);
  EXPECT_EQ(steps.size() - refused.size(), 16u);
}

}  // namespace
}  // namespace softcard
