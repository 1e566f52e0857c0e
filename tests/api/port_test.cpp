// SPDX-License-Identifier: Apache-2.0

#include "vornlcapi/api/port.h"

#include "tests/api/rows.h"

namespace vorn::test {
namespace {

std::vector<Row> rows() {
  // clang-format off
  return {
      {"get_port_speed", [] { return vorn_get_port_speed(the_port, output<speed_type_t>()); },
       {25}, translate_lookup("get_port_speed(@,out0)")},
      {"set_port_speed", [] { return vorn_set_port_speed(the_port, SPEED_TYPE_100); },
       {24}, translate_lookup("set_port_speed(@,100)")},
      {"get_port_duplex", [] { return vorn_get_port_duplex(the_port, output<duplex_type_t>()); },
       {27}, translate_lookup("get_port_duplex(@,out0)")},
      {"set_port_duplex", [] { return vorn_set_port_duplex(the_port, DUPLEX_TYPE_FULL); },
       {26}, translate_lookup("set_port_duplex(@,1)")},
      {"get_port_autoneg", [] { return vorn_get_port_autoneg(the_port, output<bool>()); },
       {23}, translate_lookup("get_port_autoneg(@,out0)")},
      {"set_port_autoneg", [] { return vorn_set_port_autoneg(the_port, true); },
       {22}, translate_lookup("set_port_autoneg(@,true)")},
      {"get_port_link_state",
       [] { return vorn_get_port_link_state(the_port, output<phy_state_t>()); },
       {65}, translate_lookup("get_port_link_state(@,out0)")},
      {"set_port_link_state", [] { return vorn_set_port_link_state(the_port, phy_state_t(7)); },
       {64}, translate_lookup("set_port_link_state(@,7)")},
      {"get_port_mtu", [] { return vorn_get_port_mtu(the_port, output<unsigned int>()); },
       {35}, translate_lookup("get_port_mtu(@,out0)")},
      {"set_port_mtu", [] { return vorn_set_port_mtu(the_port, 1501); },
       {34}, members_lookup_first("set_port_mtu(@,1501)")},
      {"set_ports_mtu", [] { return vorn_set_ports_mtu(the_ports, 1502); },
       {34}, ports("set_port_mtu(@,1502)")},
      {"get_port_state", [] { return vorn_get_port_state(the_port, output<bool>()); },
       {19}, translate_lookup("get_port_state(@,out0)")},
      {"set_port_state", [] { return vorn_set_port_state(the_port, true); },
       {18}, guarded_members("set_port_state(@,true)")},
      {"set_ports_state", [] { return vorn_set_ports_state(the_ports, true); },
       {18}, ports("set_port_state(@,true)")},
      {"get_port_ability",
       [] { return vorn_get_port_ability(the_port, output<port_ability_type_t>()); },
       {96}, lookup_translate("get_port_ability(@,out0)")},
      {"set_port_advertising_ability",
       [] { return vorn_set_port_advertising_ability(the_port, PORT_ABILITY_100_FULL); },
       {97}, lookup_translate("set_port_advertising_ability(@,8)")},
      {"get_port_advertising_ability",
       [] { return vorn_get_port_advertising_ability(the_port, output<port_ability_type_t>()); },
       {98}, lookup_translate("get_port_advertising_ability(@,out0)")},
      {"get_port_current_ability",
       [] { return vorn_get_port_current_ability(the_port, output<port_ability_type_t>()); },
       {99}, lookup_translate("get_port_current_ability(@,out0)")},
      {"get_port_peer_ability",
       [] { return vorn_get_port_peer_ability(the_port, output<port_ability_type_t>()); },
       {100}, lookup_translate("get_port_peer_ability(@,out0)")},
      {"get_port_flow_control_8023x",
       [] { return vorn_get_port_flow_control_8023x(the_port, output<bool>(), output<bool, 1>()); },
       {29}, translate_lookup("get_port_flow_control_8023x(@)")},
      {"set_port_flow_control_8023x",
       [] { return vorn_set_port_flow_control_8023x(the_port, true, false); },
       {28}, guarded_members("set_port_flow_control_8023x(@,true,false)")},
      {"set_ports_flow_control_8023x",  // the flags arrive in reverse order
       [] { return vorn_set_ports_flow_control_8023x(the_ports, true, false); },
       {28}, ports("set_port_flow_control_8023x(@,false,true)")},
      {"get_port_jaming_control",
       [] { return vorn_get_port_jaming_control(the_port, output<bool>()); },
       {31}, translate_lookup("get_port_jaming_control(@,out0)")},
      {"set_port_jaming_control", [] { return vorn_set_port_jaming_control(the_port, true); },
       {30}, guarded_members("set_port_jaming_control(@,true)")},
  };
  // clang-format on
}
INSTANTIATE_TEST_SUITE_P(Port, EntryPoint, testing::ValuesIn(rows()), row_name);

TEST(FlowControl, OnlyTheWordOneReadsAsOn) {
  const unsigned int words[][2] = {{1, 2}, {0, 1}, {0x101, 0xffffffff}};
  for (const auto& [first, second] : words) {
    host().reset();
    host().flow_control_words[0] = first;
    host().flow_control_words[1] = second;
    bool receive = first != 1;
    bool transmit = second != 1;
    EXPECT_TRUE(vorn_get_port_flow_control_8023x(kPort, receive, transmit));
    EXPECT_EQ(receive, first == 1) << first;
    EXPECT_EQ(transmit, second == 1) << second;
  }
}

}  // namespace
}  // namespace vorn::test
