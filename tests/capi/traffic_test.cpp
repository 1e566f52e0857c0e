// SPDX-License-Identifier: Apache-2.0
//
// Traffic.
#include "vornlcapi/capi/traffic.h"

#include "tests/capi/rows.h"

namespace vorn::test {
namespace {

const Row kRows[] = {
    {"get_port_unicast_control", call(ctype_vorn_get_port_unicast_control, &port, out0),
     "get_port_unicast_control(2:7,&)", "101"},
    {"set_port_unicast_control", call(ctype_vorn_set_port_unicast_control, &port, 500),
     "set_port_unicast_control(2:7,500)"},
    {"get_port_multicast_control", call(ctype_vorn_get_port_multicast_control, &port, out0),
     "get_port_multicast_control(2:7,&)", "101"},
    {"set_port_multicast_control", call(ctype_vorn_set_port_multicast_control, &port, 501),
     "set_port_multicast_control(2:7,501)"},
    {"get_port_broadcast_control", call(ctype_vorn_get_port_broadcast_control, &port, out0),
     "get_port_broadcast_control(2:7,&)", "101"},
    {"set_port_broadcast_control", call(ctype_vorn_set_port_broadcast_control, &port, 502),
     "set_port_broadcast_control(2:7,502)"},
    {"get_port_mirror", call(ctype_vorn_get_port_mirror, out0, &port, out1),
     "get_port_mirror(0:0,2:7,&)", "1/1/4 101"},
    {"set_port_mirror", call(ctype_vorn_set_port_mirror, &other, &port, 21),
     "set_port_mirror(2:8,2:7,21)"},
    {"get_port_flood_blocking_cpu", call(ctype_vorn_get_port_flood_blocking_cpu, &port, out0),
     "get_port_flood_blocking_cpu(2:7,&)", "101"},
    {"set_port_flood_blocking_cpu", call(ctype_vorn_set_port_flood_blocking_cpu, &other, 1, 22),
     "set_port_flood_blocking_cpu(2:8,22)"},
    {"set_port_flood_blocking_cpu", call(ctype_vorn_set_port_flood_blocking_cpu, &other, 0, 22),
     "usp_list_to_mp_list([])"},
    {"get_port_flood_blocking", call(ctype_vorn_get_port_flood_blocking, &other, &port, out0),
     "get_port_flood_blocking(2:8,2:7,&)", "101"},
    {"set_port_flood_blocking", call(ctype_vorn_set_port_flood_blocking, &other, 1, &port, 23),
     "set_port_flood_blocking(2:8,2:7,23)"},
    {"get_port_switch_unknown_unicast_to_cpu",
     call(ctype_vorn_get_port_switch_unknown_unicast_to_cpu, &port, out0),
     "get_port_switch_unknown_unicast_to_cpu(2:7,&)", "1"},
    {"set_port_switch_unknown_unicast_to_cpu",
     call(ctype_vorn_set_port_switch_unknown_unicast_to_cpu, &port, kOn),
     "set_port_switch_unknown_unicast_to_cpu(2:7,true)"},
    {"set_port_switch_unknown_unicast_to_cpu",
     call(ctype_vorn_set_port_switch_unknown_unicast_to_cpu, &port, kOff),
     "set_port_switch_unknown_unicast_to_cpu(2:7,false)"},
    {"get_switch_unknown_unicast_to_cpu", call(ctype_vorn_get_switch_unknown_unicast_to_cpu, out0),
     "get_switch_unknown_unicast_to_cpu(&)", "1"},
    {"set_switch_unknown_unicast_to_cpu", call(ctype_vorn_set_switch_unknown_unicast_to_cpu, kOn),
     "set_switch_unknown_unicast_to_cpu(true)"},
    {"set_switch_unknown_unicast_to_cpu", call(ctype_vorn_set_switch_unknown_unicast_to_cpu, kOff),
     "set_switch_unknown_unicast_to_cpu(false)"},
    {"get_port_cos_mapping", call(ctype_vorn_get_port_cos_mapping, &port, 3, out0),
     "get_port_cos_mapping(2:7,3,&)", "101"},
    {"set_port_cos_mapping", call(ctype_vorn_set_port_cos_mapping, &port, 3, 4),
     "set_port_cos_mapping(2:7,3,4)"},
    {"get_port_ingress_discarding", call(ctype_vorn_get_port_ingress_discarding, &port, out0),
     "get_port_ingress_discarding(2:7,&)", "101"},
    {"set_port_ingress_discarding", call(ctype_vorn_set_port_ingress_discarding, &port, 24),
     "set_port_ingress_discarding(2:7,24)"},
    {"get_port_egress_admin_state", call(ctype_vorn_get_port_egress_admin_state, &port, out0),
     "get_port_egress_admin_state(2:7,&)", "1"},
    {"set_port_egress_admin_state", call(ctype_vorn_set_port_egress_admin_state, &port, kOn),
     "set_port_egress_admin_state(2:7,true)"},
    {"set_port_egress_admin_state", call(ctype_vorn_set_port_egress_admin_state, &port, kOff),
     "set_port_egress_admin_state(2:7,false)"},
    {"set_port_l2_enable", call(ctype_vorn_set_port_l2_enable, &port, kOn),
     "set_port_l2_enable(2:7,true)"},
    {"set_port_l2_enable", call(ctype_vorn_set_port_l2_enable, &port, kOff),
     "set_port_l2_enable(2:7,false)"},
    {"get_switch_forward_mode", call(ctype_vorn_get_switch_forward_mode, out0),
     "get_switch_forward_mode(&)", "101"},
    {"set_switch_forward_mode", call(ctype_vorn_set_switch_forward_mode, 25),
     "set_switch_forward_mode(25)"},
};

INSTANTIATE_TEST_SUITE_P(traffic, Rows, testing::ValuesIn(kRows), row_name);

}  // namespace
}  // namespace vorn::test
