// SPDX-License-Identifier: Apache-2.0
//
// Physical settings.
#include "vornlcapi/capi/port.h"

#include "tests/capi/rows.h"

namespace vorn::test {
namespace {

const Row kRows[] = {
    {"get_port_speed", call(ctype_vorn_get_port_speed, &port, out0), "get_port_speed(2:7,&)",
     "101"},
    {"set_port_speed", call(ctype_vorn_set_port_speed, &port, 0x80000011),
     "set_port_speed(2:7,2147483665)"},
    {"get_port_duplex", call(ctype_vorn_get_port_duplex, &port, out0), "get_port_duplex(2:7,&)",
     "101"},
    {"set_port_duplex", call(ctype_vorn_set_port_duplex, &port, 12), "set_port_duplex(2:7,12)"},
    {"get_port_autoneg", call(ctype_vorn_get_port_autoneg, &port, out0), "get_port_autoneg(2:7,&)",
     "1"},
    {"set_port_autoneg", call(ctype_vorn_set_port_autoneg, &port, kOn),
     "set_port_autoneg(2:7,true)"},
    {"set_port_autoneg", call(ctype_vorn_set_port_autoneg, &port, kOff),
     "set_port_autoneg(2:7,false)"},
    {"get_port_link_state", call(ctype_vorn_get_port_link_state, &port, out0),
     "get_port_link_state(2:7,&)", "1"},
    {"set_port_link_state", call(ctype_vorn_set_port_link_state, &port, 13),
     "set_port_link_state(2:7,13)"},
    {"set_port_mtu", call(ctype_vorn_set_port_mtu, &port, 1514), "set_port_mtu(2:7,1514)"},
    {"get_port_state", call(ctype_vorn_get_port_state, &port, out0), "get_port_state(2:7,&)", "1"},
    {"set_port_state", call(ctype_vorn_set_port_state, &port, kOn), "set_port_state(2:7,true)"},
    {"set_port_state", call(ctype_vorn_set_port_state, &port, kOff), "set_port_state(2:7,false)"},
    {"get_port_ability", call(ctype_vorn_get_port_ability, &port, out0), "get_port_ability(2:7,&)",
     "101"},
    {"set_port_advertising_ability", call(ctype_vorn_set_port_advertising_ability, &port, 14),
     "set_port_advertising_ability(2:7,14)"},
    {"get_port_advertising_ability", call(ctype_vorn_get_port_advertising_ability, &port, out0),
     "get_port_advertising_ability(2:7,&)", "101"},
    {"get_port_current_ability", call(ctype_vorn_get_port_current_ability, &port, out0),
     "get_port_current_ability(2:7,&)", "101"},
    {"get_port_peer_ability", call(ctype_vorn_get_port_peer_ability, &port, out0),
     "get_port_peer_ability(2:7,&)", "101"},
    {"get_port_flow_control_8023x", call(ctype_vorn_get_port_flow_control_8023x, &port, out0, out1),
     "get_port_flow_control_8023x(2:7)", "1 0"},
    {"set_port_flow_control_8023x", call(ctype_vorn_set_port_flow_control_8023x, &port, kOn, kOff),
     "set_port_flow_control_8023x(2:7,true,false)"},
    {"set_port_flow_control_8023x", call(ctype_vorn_set_port_flow_control_8023x, &port, kOff, kOn),
     "set_port_flow_control_8023x(2:7,false,true)"},
    {"get_port_jaming_control", call(ctype_vorn_get_port_jaming_control, &port, out0),
     "get_port_jaming_control(2:7,&)", "1"},
    {"set_port_jaming_control", call(ctype_vorn_set_port_jaming_control, &port, kOn),
     "set_port_jaming_control(2:7,true)"},
    {"set_port_jaming_control", call(ctype_vorn_set_port_jaming_control, &port, kOff),
     "set_port_jaming_control(2:7,false)"},
};

INSTANTIATE_TEST_SUITE_P(port, Rows, testing::ValuesIn(kRows), row_name);

}  // namespace
}  // namespace vorn::test
