// SPDX-License-Identifier: Apache-2.0
//
// VLANs.
#include "vornlcapi/capi/vlan.h"

#include "tests/capi/rows.h"

namespace vorn::test {
namespace {

const Row kRows[] = {
    {"create_vlan", call(ctype_vorn_create_vlan, 10), "create_vlan(10)"},
    {"delete_vlan", call(ctype_vorn_delete_vlan, 10), "delete_vlan(10)"},
    {"add_ports_to_vlan", call(ctype_vorn_add_ports_to_vlan, 10, unsorted, 4, pair, 2),
     "add_ports_to_vlan(10,[2:13 2:7 2:10 2:7],[2:6 2:5])"},
    {"add_ports_to_vlan", call(ctype_vorn_add_ports_to_vlan, 10, unsorted, 0, twice, 2),
     "add_ports_to_vlan(10,[],[2:6 2:6])"},
    {"delete_ports_from_vlan", call(ctype_vorn_delete_ports_from_vlan, 10, unsorted, 3),
     "delete_ports_from_vlan(10,[2:13 2:7 2:10])"},
    {"get_vlan_info", call(ctype_vorn_get_vlan_info, 10, out0, out1, out2, out3),
     "get_vlan_info(10,[],[])", "- 0 - 0"},
    {"set_mac_vlan", call(ctype_vorn_set_mac_vlan, mac, 10, 5), "set_mac_vlan(02005e005311,10,5)"},
    {"set_ipv4_subnet_vlan", call(ctype_vorn_set_ipv4_subnet_vlan, 71, 72, 10, 5),
     "set_ipv4_subnet_vlan(71,72,10,5)"},
    {"set_ipv6_subnet_vlan", call(ctype_vorn_set_ipv6_subnet_vlan, ip6, 64, 10, 5),
     "set_ipv6_subnet_vlan(20010db8000000010000000000000011,64,10,5)"},
    {"get_port_pvid", call(ctype_vorn_get_port_pvid, &port, out0), "get_port_pvid(2:7,&)", "101"},
    {"set_port_pvid", call(ctype_vorn_set_port_pvid, &port, 77), "set_port_pvid(2:7,77)"},
    {"get_port_vlan_priority", call(ctype_vorn_get_port_vlan_priority, &port, 10, out0),
     "get_port_vlan_priority(2:7,10,&)", "101"},
    {"set_port_vlan_priority", call(ctype_vorn_set_port_vlan_priority, &port, 10, 5),
     "set_port_vlan_priority(2:7,10,5)"},
    {"get_port_vlan_accept_frame", call(ctype_vorn_get_port_vlan_accept_frame, &port, out0),
     "get_port_vlan_accept_frame(2:7,&)", "1"},
    {"set_port_vlan_accept_frame", call(ctype_vorn_set_port_vlan_accept_frame, &port, kOn),
     "set_port_vlan_accept_frame(2:7,true)"},
    {"set_port_vlan_accept_frame", call(ctype_vorn_set_port_vlan_accept_frame, &port, kOff),
     "set_port_vlan_accept_frame(2:7,false)"},
    {"set_port_protocol_vlan", call(ctype_vorn_set_port_protocol_vlan, &port, 26, 0x8808, 10),
     "set_port_protocol_vlan(2:7,26,34824,10)"},
    {"delete_port_protocol_vlan", call(ctype_vorn_delete_port_protocol_vlan, &port, 27, 0x8808),
     "delete_port_protocol_vlan(2:7,27,34824)"},
    {"delete_port_protocol_vlan_all", call(ctype_vorn_delete_port_protocol_vlan_all, &port),
     "delete_port_protocol_vlan_all(2:7)"},
};

INSTANTIATE_TEST_SUITE_P(vlan, Rows, testing::ValuesIn(kRows), row_name);

struct VlanInfo {
  unsigned int tagged_count, untagged_count;        // in
  bool refused;                                     // the SDK's answer
  unsigned int tagged_reported, untagged_reported;  // out
  int written;                                      // members in each array
};

// Three tagged and four untagged members: the counts are bounded, the arrays are not.
TEST(GetVlanInfo, WritesEveryMemberAndReportsTheSmallerCount) {
  for (const VlanInfo& row : {VlanInfo{9, 9, false, 3, 4, 1}, VlanInfo{3, 4, false, 3, 4, 1},
                              VlanInfo{2, 1, false, 2, 1, 1}, VlanInfo{0, 0, false, 0, 0, 1},
                              VlanInfo{9, 2, true, 9, 2, 0}}) {
    SCOPED_TRACE(testing::Message() << row.tagged_count << " " << row.untagged_count);
    host().reset();
    host().vlan_members[0] = {Mp(2, 9), Mp(2, 7), Mp(2, 8)};
    host().vlan_members[1] = {Mp(2, 4), Mp(2, 6), Mp(2, 5), Mp(2, 14)};
    host().refuse = row.refused ? 2 : 0;
    usp_s tagged[5], untagged[5];
    std::memset(tagged, 0xa5, sizeof(tagged));
    std::memset(untagged, 0xa5, sizeof(untagged));
    unsigned int tagged_count = row.tagged_count, untagged_count = row.untagged_count;
    EXPECT_EQ(row.written,
              ctype_vorn_get_vlan_info(10, tagged, &tagged_count, untagged, &untagged_count));
    EXPECT_EQ(row.tagged_reported, tagged_count);
    EXPECT_EQ(row.untagged_reported, untagged_count);
    std::list<Usp> tagged_ports, untagged_ports;
    for (const usp_s& p : tagged) tagged_ports.emplace_back(p.unit, p.slot, p.port);
    for (const usp_s& p : untagged) untagged_ports.emplace_back(p.unit, p.slot, p.port);
    const Usp blank(0xa5a5a5a5, 0xa5a5a5a5, 0xa5a5a5a5);
    std::list<Usp> tagged_expected(5, blank), untagged_expected(5, blank);
    if (row.written) {
      tagged_expected = {Usp(1, 1, 5), Usp(1, 1, 3), Usp(1, 1, 4), blank, blank};
      untagged_expected = {Usp(1, 1, 0), Usp(1, 1, 2), Usp(1, 1, 1), Usp(1, 1, 10), blank};
    }
    EXPECT_EQ(tagged_expected, tagged_ports);
    EXPECT_EQ(untagged_expected, untagged_ports);
  }
}

}  // namespace
}  // namespace vorn::test
