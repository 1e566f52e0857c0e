// SPDX-License-Identifier: Apache-2.0
//
// The host around the card: its life cycle, its description, and the watch over the SDK's calls.

#include <cstdio>
#include <fstream>

#include "tests/softcard/host_fixture.h"
#include "vorn_lag_list.h"
#include "vorn_port_mapping.h"
#include "vorn_sdk.h"

namespace softcard {
namespace {

TEST(Host, CardLivesFromInitToTerminate) {
  int ports = 0;
  bool on = false;
  host::use_description(CardDescription());
  EXPECT_EQ(host::card(), nullptr);
  EXPECT_FALSE(vorn_get_port_state(port(0), on));
  EXPECT_FALSE(vorn_lcmgr_api_terminate());
  ASSERT_TRUE(vorn_lcmgr_api_init(ports));
  EXPECT_TRUE(vorn_create_lag(lag(1)));
  EXPECT_FALSE(vorn_lcmgr_api_init(ports)) << "there is one already";
  EXPECT_EQ(host::error(), "the line card is in use already");
  EXPECT_TRUE(vorn_init_line_card(ports) && ports == 52) << "leaves the card alone";
  EXPECT_EQ(lag_list.size(), 1u);
  EXPECT_TRUE(vorn_lcmgr_api_terminate());
  EXPECT_EQ(host::card(), nullptr);
  EXPECT_TRUE(lag_list.empty());
  std::list<Mp> members;
  EXPECT_FALSE(vorn_usp_to_mp_list(lag(1), members) || vorn_usp_to_mp_list(vlan(1), members));
  ASSERT_TRUE(vorn_lcmgr_api_init(ports));
  unsigned id = 0;
  EXPECT_FALSE(vorn_lag_usp_to_lag_id(lag(1), id)) << "a fresh card";
  EXPECT_TRUE(vorn_lcmgr_api_terminate());
}

TEST(Host, DescriptionFile) {
  const std::string path = testing::TempDir() + "host_test.card";
  int ports = -1;
  std::ofstream(path) << "ports 2 speed 100\nports 1 sped 100\n";
  host::use_description_file(path);
  EXPECT_FALSE(vorn_lcmgr_api_init(ports));
  EXPECT_EQ(host::error(), path + ":2: usage: ports <count> speed <Mbit/s>");
  EXPECT_EQ(ports, -1);
  EXPECT_EQ(host::card(), nullptr);
  std::ofstream(path) << "ports 256 speed 100\n";
  EXPECT_TRUE(vorn_lcmgr_api_init(ports)) << host::error();
  EXPECT_EQ(ports, 256);
  EXPECT_EQ(host::error(), "");
  EXPECT_TRUE(is_port_physical(port(255)) && !is_port_physical(Usp(1, 1, 256)));
  EXPECT_TRUE(vorn_set_port_pvid(port(255), 5));
  EXPECT_TRUE(vorn_lcmgr_api_terminate());
  std::remove(path.c_str());
  host::use_description(CardDescription());
}

using PortMapping = HostTest;

TEST_F(PortMapping, ListsAppendAndStopAtTheFirstUnknown) {
  std::list<Mp> mps = {Mp(7, 7)};
  EXPECT_TRUE(vorn_create_vlan(10) && vorn_create_lag(lag(1)));
  EXPECT_FALSE(vorn_usp_list_to_mp_list({port(1), vlan(10)}, mps)) << "expands to nothing";
  EXPECT_TRUE(vorn_add_ports_to_vlan(10, {port(2)}, {port(3)}));
  mps = {Mp(7, 7)};
  EXPECT_TRUE(vorn_usp_list_to_mp_list({port(1), vlan(10), port(1)}, mps));
  EXPECT_TRUE(mps == (std::list<Mp>{Mp(7, 7), Mp(1, 2), Mp(1, 3), Mp(1, 4), Mp(1, 2)}));
  Mp mp(3, 4);
  for (const Usp& usp : {lag(1), vlan(10), kNowhere}) {
    EXPECT_FALSE(vorn_usp_to_mp(usp, mp));
    EXPECT_TRUE(mp == Mp(3, 4)) << "left as it was";
  }
  Usp usp = kNowhere;
  EXPECT_FALSE(vorn_mp_to_usp(Mp(0, 0), usp) || vorn_mp_to_usp(Mp(1, 53), usp));
  EXPECT_TRUE(vorn_mp_to_usp(Mp(1, 52), usp) && usp == port(51));
  // The three kinds exclude each other, whether or not the interface exists.
  for (const Usp& any : {port(0), lag(1), lag(9), vlan(10), vlan(4094), kNowhere, Usp(1, 2, 0)}) {
    EXPECT_LE(is_port_physical(any) + is_port_logical_lag(any) + is_port_logical_vlan(any), 1);
  }
  EXPECT_TRUE(is_port_logical_lag(lag(9)) && is_port_logical_vlan(vlan(4094)));
}

TEST_F(PortMapping, LagListKeepsEachMemberOnce) {
  std::list<LagNode> list;
  std::list<Mp> members = {Mp(1, 1), Mp(1, 2)};
  EXPECT_FALSE(add_lag_member(4, list, members) || delete_lag_member(4, list, members));
  EXPECT_TRUE(add_lag_to_list(4, list));
  EXPECT_FALSE(add_lag_to_list(4, list));
  EXPECT_TRUE(is_lag_exist(4, list) && !is_lag_exist(5, list));
  EXPECT_TRUE(add_lag_member(4, list, members) && add_lag_member(4, list, members));
  EXPECT_EQ(list.front().members().size(), 2u);
  members.pop_front();
  EXPECT_TRUE(delete_lag_member(4, list, members));
  EXPECT_TRUE(list.front().members() == std::list<Mp>{Mp(1, 1)});
  EXPECT_FALSE(get_lag_member(4, members)) << "not in the process's own list";
  EXPECT_TRUE(delete_lag_from_list(4, list));
  EXPECT_FALSE(delete_lag_from_list(4, list));
}

using Registrations = HostTest;

TEST_F(Registrations, AreKeptOncePerFunctionAndUserData) {
  static int calls = 0;
  calls = 0;
  int a = 0, b = 0;
  const auto on_mac = [](L2Addr*, int, void*) { ++calls; };
  const auto on_mac_c = [](ctype_l2_addr_s*, int, void*) { ++calls; };
  void (*const mac)(L2Addr*, int, void*) = on_mac;
  void* const untyped = reinterpret_cast<void*>(mac);
  const unsigned char address[6] = {2, 0, 0x5e, 0, 0x53, 1};
  EXPECT_FALSE(vorn_register_mac_update_callback(nullptr, &a) ||
               vorn_register_rx_packet_callback_c(nullptr, &a) ||
               vorn_register_link_change_callback(nullptr));
  EXPECT_TRUE(vorn_register_mac_update_callback(mac, &a));
  EXPECT_FALSE(vorn_register_mac_update_callback(mac, &a)) << "the same pair";
  EXPECT_TRUE(vorn_register_mac_update_callback(mac, &b));
  EXPECT_TRUE(vorn_register_mac_update_callback_c(on_mac_c, &a)) << "the other form";
  EXPECT_TRUE(vorn_add_system_mac(address, 1));
  EXPECT_EQ(calls, 0) << "not from within the operation";
  card().run_once();
  EXPECT_EQ(calls, 3);
  EXPECT_FALSE(vorn_deregister_event_callback(LCMGR_REPORT_LINK_CHANGE, untyped, &a));
  EXPECT_FALSE(vorn_deregister_event_callback(LCMGR_REPORT_MAC_UPDATE, untyped, nullptr));
  EXPECT_TRUE(vorn_deregister_event_callback(LCMGR_REPORT_MAC_UPDATE, untyped, &a));
  EXPECT_FALSE(vorn_deregister_event_callback(LCMGR_REPORT_MAC_UPDATE, untyped, &a)) << "gone";
  EXPECT_TRUE(vorn_delete_mac_by_mac(address));
  card().run_once();
  EXPECT_EQ(calls, 5);
}

using Watch = HostTest;

TEST_F(Watch, TracesTheModulesThatWereSwitchedOn) {
  Lines lines;
  CallWatch& watch = host::call_watch();
  watch.set_sink([&](const std::string& line) { lines.push_back(line); });
  const unsigned char mac[6] = {2, 0, 0x5e, 0, 0x53, 0xa};
  const auto run = [&] {
    lines.clear();
    vorn_create_vlan(10);
    vorn_add_ports_to_vlan(10, {port(1), port(2)}, {});
    vorn_add_mac_to_port(port(1), mac, 10);
    unsigned pvid = 0;
    vorn_get_port_pvid(port(3), pvid);
    vorn_add_arp_filter(0xc0000201, 0xffffff00);
    vorn_delete_vlan(10);
    return lines;
  };
  EXPECT_EQ(run(), Lines());
  for (const char* name : {"trace_level_xrl", "snmp", "", "VLAN", "vlan "}) {
    EXPECT_FALSE(vorn_set_lcmgr_trace(name, true)) << name;
  }
  EXPECT_TRUE(vorn_set_lcmgr_trace("fdb", true));
  EXPECT_EQ(run(), Lines{"add_mac_to_port(1:2, 02:00:5e:00:53:0a, 10, false) = true"});
  EXPECT_TRUE(vorn_set_lcmgr_trace("vlan", true) && vorn_set_lcmgr_trace("fdb", false));
  EXPECT_EQ(run(), (Lines{"create_vlan(10) = true", "add_ports_to_vlan(10, [1:2 1:3], []) = true",
                          "get_port_pvid(1:4, 1) = true", "delete_vlan(10) = true"}));
  EXPECT_TRUE(vorn_set_lcmgr_trace("trace_level_sdk", true));
  EXPECT_EQ(run().size(), 6u);
  EXPECT_EQ(lines[4], "add_arp_filter(192.0.2.1, 255.255.255.0) = true");
  EXPECT_TRUE(vorn_set_lcmgr_trace("trace_level_all", false));
  EXPECT_EQ(run(), Lines());
  watch.set_sink(nullptr);
}

TEST_F(Watch, RefusesTheCallsThatWereChosen) {
  CallWatch& watch = host::call_watch();
  EXPECT_FALSE(watch.fail("creat_vlan", 1) || watch.fail("reserved_3", 1) ||
               watch.fail("create_vlan", 0));
  EXPECT_TRUE(watch.fail("create_vlan", 2) && watch.fail("create_vlan", 3));
  EXPECT_TRUE(watch.fail("traverse_mac_table", 1));
  EXPECT_TRUE(vorn_create_vlan(10));
  EXPECT_FALSE(vorn_create_vlan(11));
  EXPECT_FALSE(card().tables().vlans.known(11)) << "without any effect";
  EXPECT_FALSE(vorn_create_vlan(12));
  EXPECT_TRUE(vorn_create_vlan(11));
  EXPECT_EQ(watch.pending_failures(), 1u);
  // A LAG whose creation the SDK refuses appears nowhere.
  EXPECT_TRUE(watch.fail("create_lag", 1));
  EXPECT_FALSE(vorn_create_lag(lag(1)));
  EXPECT_TRUE(lag_list.empty());
  EXPECT_TRUE(vorn_create_lag(lag(1)));
}

}  // namespace
}  // namespace softcard
