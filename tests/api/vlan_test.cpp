// SPDX-License-Identifier: Apache-2.0

#include "vornlcapi/api/vlan.h"

#include "tests/api/rows.h"

namespace vorn::test {
namespace {

const unsigned char kMac[6] = {0x02, 0, 0, 0, 0, 0x11};
const unsigned char kIp6[16] = {0x20, 0x01, 0x0d, 0xb8};

std::list<Usp> tagged;
std::list<Usp> untagged;

bool get_vlan_info() {
  host().vlan_members[0] = {Mp(2, 7), Mp(2, 8)};
  host().vlan_members[1] = {Mp(2, 9)};
  host().names[&tagged] = "tagged";
  host().names[&untagged] = "untagged";
  tagged.assign(1, kUnknown);  // stays, since the lists are not cleared
  untagged.assign(1, kUnknown);
  return vorn_get_vlan_info(10, tagged, untagged);
}

std::vector<Row> rows() {
  // clang-format off
  return {
      {"create_vlan", [] { return vorn_create_vlan(0); }, {0}, call("create_vlan(0)")},
      {"delete_vlan", [] { return vorn_delete_vlan(4097); }, {1}, call("delete_vlan(4097)")},
      {"add_ports_to_vlan",
       [] {
         return vorn_add_ports_to_vlan(10, {kPort, kOtherPort}, the_ports);
       }, {2},
       {{kPort,
         {"get_sdk()", "usp_list_to_mp_list([1/1/3 1/1/4])", "usp_list_to_mp_list([1/20/5])",
          "add_ports_to_vlan(10,[2:7 2:8],[2:1 2:2 2:3])"},
         true,
         {},
         {kLag}},
        {kPort,
         {"get_sdk()", "usp_list_to_mp_list([1/1/3 1/1/4])", "usp_list_to_mp_list([])",
          "add_ports_to_vlan(10,[2:7 2:8],[])"}}}},
      {"delete_ports_from_vlan", [] { return vorn_delete_ports_from_vlan(11, the_ports); }, {4},
       {{kPort,
         {"get_sdk()", "usp_list_to_mp_list([1/1/3 1/1/4])",
          "delete_ports_from_vlan(11,[2:7 2:8])"},
         true,
         {},
         {kPort, kOtherPort}}}},
      {"get_vlan_info", get_vlan_info, {6},
       {{kPort,
         {"get_sdk()", "get_vlan_info(10,[],[])", "mp_list_to_usp_list([2:7 2:8],tagged)",
          "mp_list_to_usp_list([2:9],untagged)"}}}},
      {"set_mac_vlan", [] { return vorn_set_mac_vlan(kMac, 12, 5); },
       {91}, call("set_mac_vlan(020000000011,12,5)")},
      {"set_ipv4_subnet_vlan", [] { return vorn_set_ipv4_subnet_vlan(1001, 1002, 13, 6); },
       {92}, call("set_ipv4_subnet_vlan(1001,1002,13,6)")},
      {"set_ipv6_subnet_vlan", [] { return vorn_set_ipv6_subnet_vlan(kIp6, 64, 14, 7); },
       {93}, call("set_ipv6_subnet_vlan(20010db8000000000000000000000000,64,14,7)")},
      {"get_port_pvid", [] { return vorn_get_port_pvid(the_port, output<unsigned int>()); },
       {81}, translate_lookup("get_port_pvid(@,out0)")},
      {"set_port_pvid", [] { return vorn_set_port_pvid(the_port, 15); },
       {80}, members("set_port_pvid(@,15)")},
      {"set_ports_pvid", [] { return vorn_set_ports_pvid(the_ports, 16); },
       {80}, ports("set_port_pvid(@,16)")},
      {"get_port_vlan_priority",
       [] { return vorn_get_port_vlan_priority(the_port, 17, output<unsigned int>()); },
       {83}, translate_lookup("get_port_vlan_priority(@,17,out0)")},
      {"set_port_vlan_priority", [] { return vorn_set_port_vlan_priority(the_port, 17, 4); },
       {82}, members("set_port_vlan_priority(@,17,4)")},
      {"get_port_vlan_accept_frame",
       [] { return vorn_get_port_vlan_accept_frame(the_port, output<bool>()); },
       {85}, translate_lookup("get_port_vlan_accept_frame(@,out0)")},
      {"set_port_vlan_accept_frame", [] { return vorn_set_port_vlan_accept_frame(the_port, true); },
       {84}, members("set_port_vlan_accept_frame(@,true)")},
      {"set_port_protocol_vlan",
       [] { return vorn_set_port_protocol_vlan(the_port, frame_type_t(2), 0xfffe, 18); },
       {88}, members("set_port_protocol_vlan(@,2,65534,18)")},
      {"delete_port_protocol_vlan",
       [] { return vorn_delete_port_protocol_vlan(the_port, frame_type_t(1), 0x86dd); },
       {89}, members("delete_port_protocol_vlan(@,1,34525)")},
      {"delete_port_protocol_vlan_all", [] { return vorn_delete_port_protocol_vlan_all(the_port); },
       {90}, members("delete_port_protocol_vlan_all(@)")},
  };
  // clang-format on
}
INSTANTIATE_TEST_SUITE_P(Vlan, EntryPoint, testing::ValuesIn(rows()), row_name);

TEST(VlanInfo, ListsAreAppendedToAsFarAsTheTranslationsGo) {
  const std::size_t sizes[][3] = {{0, 3, 2}, {2, 1, 1}, {3, 1, 1}, {4, 3, 1}};
  for (const auto& [refuse, tagged_size, untagged_size] : sizes) {
    host().reset();
    host().refuse = refuse;
    EXPECT_EQ(get_vlan_info(), refuse == 0);
    EXPECT_EQ(tagged.size(), tagged_size) << refuse;
    EXPECT_EQ(untagged.size(), untagged_size) << refuse;
  }
}

}  // namespace
}  // namespace vorn::test
