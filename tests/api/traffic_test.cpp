// SPDX-License-Identifier: Apache-2.0

#include "vornlcapi/api/traffic.h"

#include "tests/api/rows.h"

namespace vorn::test {
namespace {

const Usp kThirdPort(1, 1, 5);  // hardware port 2:9

std::vector<Row> rows() {
  // clang-format off
  return {
      {"get_port_unicast_control",
       [] { return vorn_get_port_unicast_control(the_port, output<unsigned int>()); },
       {75}, translate_lookup("get_port_unicast_control(@,out0)")},
      {"set_port_unicast_control", [] { return vorn_set_port_unicast_control(the_port, 21); },
       {74}, members("set_port_unicast_control(@,21)")},
      {"get_port_multicast_control",
       [] { return vorn_get_port_multicast_control(the_port, output<unsigned int>()); },
       {73}, translate_lookup("get_port_multicast_control(@,out0)")},
      {"set_port_multicast_control", [] { return vorn_set_port_multicast_control(the_port, 22); },
       {72}, members("set_port_multicast_control(@,22)")},
      {"get_port_broadcast_control",
       [] { return vorn_get_port_broadcast_control(the_port, output<unsigned int>()); },
       {71}, translate_lookup("get_port_broadcast_control(@,out0)")},
      {"set_port_broadcast_control", [] { return vorn_set_port_broadcast_control(the_port, 23); },
       {70}, members("set_port_broadcast_control(@,23)")},
      {"get_port_mirror",
       [] { return vorn_get_port_mirror(output<Usp>(), the_port, output<mirror_type_t, 1>()); },
       {17},
       {{kPort,
         {"get_sdk()", "usp_to_mp(1/1/3)", "get_port_mirror(0:0,2:7,out1)", "mp_to_usp(2:8,out0)"}},
        {kLag, {"get_sdk()", "usp_to_mp(1/20/5) no"}, false}}},
      {"set_port_mirror",
       [] { return vorn_set_port_mirror(the_port, kOtherPort, mirror_type_t(3)); }, {16},
       {{kPort,
         {"usp_to_mp(1/1/3)", "usp_to_mp(1/1/4)", "get_sdk()", "set_port_mirror(2:7,2:8,3)"}},
        {kLag, {"usp_to_mp(1/20/5) no"}, false}}},
      {"get_port_flood_blocking_cpu",
       [] { return vorn_get_port_flood_blocking_cpu(the_port, output<flood_block_type_t>()); },
       {104}, lookup_translate("get_port_flood_blocking_cpu(@,out0)")},
      {"set_port_flood_blocking_cpu",
       [] { return vorn_set_port_flood_blocking_cpu(the_ports, flood_block_type_t(5)); },
       {103}, ports("set_port_flood_blocking_cpu(@,5)")},
      {"get_port_flood_blocking",
       [] {
         return vorn_get_port_flood_blocking(kOtherPort, the_port, output<flood_block_type_t>());
       }, {102},
       {{kPort,
         {"get_sdk()", "usp_to_mp(1/1/4)", "usp_to_mp(1/1/3)",
          "get_port_flood_blocking(2:8,2:7,out0)"}},
        {kLag, {"get_sdk()", "usp_to_mp(1/1/4)", "usp_to_mp(1/20/5) no"}, false}}},
      {"set_port_flood_blocking",
       [] { return vorn_set_port_flood_blocking(the_ports, kThirdPort, flood_block_type_t(6)); },
       {101},
       {{kPort,
         {"get_sdk()", "usp_to_mp(1/1/5)", "usp_list_to_mp_list([1/1/3 1/1/4])",
          "set_port_flood_blocking(2:7,2:9,6)", "set_port_flood_blocking(2:8,2:9,6)"},
         true,
         {},
         {kPort, kOtherPort}},
        {kPort, {"get_sdk()", "usp_to_mp(1/1/5)", "usp_list_to_mp_list([])"}}}},
      {"get_port_switch_unknown_unicast_to_cpu",
       [] { return vorn_get_port_switch_unknown_unicast_to_cpu(the_port, output<bool>()); },
       {122}, lookup_translate("get_port_switch_unknown_unicast_to_cpu(@,out0)")},
      {"set_port_switch_unknown_unicast_to_cpu",
       [] { return vorn_set_port_switch_unknown_unicast_to_cpu(the_port, true); },
       {121}, lookup_translate("set_port_switch_unknown_unicast_to_cpu(@,true)")},
      {"get_switch_unknown_unicast_to_cpu",
       [] { return vorn_get_switch_unknown_unicast_to_cpu(output<bool>()); },
       {124}, call("get_switch_unknown_unicast_to_cpu(out0)")},
      {"set_switch_unknown_unicast_to_cpu",
       [] { return vorn_set_switch_unknown_unicast_to_cpu(true); },
       {123}, call("set_switch_unknown_unicast_to_cpu(true)")},
      {"get_port_cos_mapping",
       [] { return vorn_get_port_cos_mapping(the_port, 4, output<unsigned int>()); },
       {106}, translate_lookup("get_port_cos_mapping(@,4,out0)")},
      {"set_port_cos_mapping", [] { return vorn_set_port_cos_mapping(the_port, 4, 6); },
       {105}, members("set_port_cos_mapping(@,4,6)")},
      {"get_port_ingress_discarding",
       [] { return vorn_get_port_ingress_discarding(the_port, output<ingress_discard_type_t>()); },
       {79}, lookup_translate("get_port_ingress_discarding(@,out0)")},
      {"set_port_ingress_discarding",
       [] { return vorn_set_port_ingress_discarding(the_port, ingress_discard_type_t(2)); },
       {78}, lookup_translate("set_port_ingress_discarding(@,2)")},
      {"get_port_egress_admin_state",
       [] { return vorn_get_port_egress_admin_state(the_port, output<bool>()); },
       {77}, lookup_translate("get_port_egress_admin_state(@,out0)")},
      {"set_port_egress_admin_state",
       [] { return vorn_set_port_egress_admin_state(the_port, true); },
       {76}, lookup_translate("set_port_egress_admin_state(@,true)")},
      {"set_port_l2_enable", [] { return vorn_set_port_l2_enable(the_port, true); },
       {120}, lookup_translate("set_port_l2_enable(@,true)")},
      {"get_switch_forward_mode",
       [] { return vorn_get_switch_forward_mode(output<unsigned int>()); },
       {110}, call("get_switch_forward_mode(out0)")},
      {"set_switch_forward_mode", [] { return vorn_set_switch_forward_mode(2); },
       {109}, call("set_switch_forward_mode(2)")},
  };
  // clang-format on
}
INSTANTIATE_TEST_SUITE_P(Traffic, EntryPoint, testing::ValuesIn(rows()), row_name);

}  // namespace
}  // namespace vorn::test
