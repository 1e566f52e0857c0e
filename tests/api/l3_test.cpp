// SPDX-License-Identifier: Apache-2.0

#include "vornlcapi/api/l3.h"

#include "tests/api/rows.h"

namespace vorn::test {
namespace {

const unsigned char kMac[6] = {0x02, 0, 0, 0, 0, 0x31};
const unsigned char kIp6[16] = {0x20, 0x01, 0x0d, 0xb8};
const unsigned char kMask6[16] = {0xff, 0xff};
const std::string kMacText = "020000000031";
const std::string kIp6Text = "20010db8000000000000000000000000";
const std::string kMask6Text = "ffff0000000000000000000000000000";

// ---- The five ways to an egress. In `operation`, "@" is the hardware port and "#" the flag ------

std::string through(const std::string& operation, const std::string& mp, const char* trunk) {
  std::string all;
  for (const char c : at(operation, mp)) all += c == '#' ? trunk : std::string(1, c);
  return all;
}

std::vector<Case> by_kind(const std::string& operation) {
  return {{kPort,
           {"get_sdk()", "is_port_physical(1/1/3)", "usp_to_mp(1/1/3)",
            through(operation, "2:7", "false")},
           true,
           {{2, false, {"is_port_logical_lag(1/1/3)"}}}},
          {kLag,
           {"get_sdk()", "is_port_physical(1/20/5) no", "is_port_logical_lag(1/20/5)",
            "lag_usp_to_lag_id(1/20/5)", through(operation, "0:33", "true")}},
          {kVlan,
           {"get_sdk()", "is_port_physical(1/30/10) no", "is_port_logical_lag(1/30/10) no"},
           false}};
}

std::vector<Case> translated_or_lag(const std::string& operation, const char* number, bool by_id) {
  std::vector<Case> cases{
      {kPort,
       {"get_sdk()", "usp_to_mp(1/1/3)", through(operation, "2:7", "false")},
       true,
       {{2, false, {"is_port_logical_lag(1/1/3)"}}}},
      {kLag,
       {"get_sdk()", "usp_to_mp(1/20/5) no", "is_port_logical_lag(1/20/5)",
        through(operation, number, "true")}},
      {kVlan, {"get_sdk()", "usp_to_mp(1/30/10) no", "is_port_logical_lag(1/30/10) no"}, false}};
  Steps& lag_steps = cases[1].steps;
  if (by_id) lag_steps.insert(lag_steps.end() - 1, "lag_usp_to_lag_id(1/20/5)");
  return cases;
}
std::vector<Case> translated_or_lag_id(const std::string& operation) {
  return translated_or_lag(operation, "0:33", true);
}
std::vector<Case> translated_or_lag_port(const std::string& operation) {
  return translated_or_lag(operation, "0:5", false);
}

std::vector<Case> lag_id_or_translated(const std::string& operation) {
  return {
      {kPort,
       {"get_sdk()", "is_port_logical_lag(1/1/3) no", "usp_to_mp(1/1/3)",
        through(operation, "2:7", "false")}},
      {kLag,
       {"get_sdk()", "is_port_logical_lag(1/20/5)", "lag_usp_to_lag_id(1/20/5)",
        through(operation, "0:33", "true")},
       true,
       {{2, false, {"usp_to_mp(1/20/5)"}}}},
      {kVlan, {"get_sdk()", "is_port_logical_lag(1/30/10) no", "usp_to_mp(1/30/10) no"}, false}};
}

std::vector<Case> translated(const std::string& operation) {
  return {{kPort,
           {"get_sdk()", "usp_to_mp(1/1/3)", "is_port_logical_lag(1/1/3) no",
            through(operation, "2:7", "false")}},
          {kLag, {"get_sdk()", "usp_to_mp(1/20/5) no"}, false}};
}

std::vector<Row> rows() {
  // clang-format off
  return {
      {"create_l3_interface",
       [] { return vorn_create_l3_interface(kMac, 10, output<unsigned int>()); },
       {152}, call("create_l3_interface(" + kMacText + ",10,out0)")},
      {"create_l3_interface_with_id",
       [] { return vorn_create_l3_interface_with_id(kMac, 10, 3, true); },
       {153}, call("create_l3_interface_with_id(" + kMacText + ",10,3,true)")},
      {"get_l3_interface",
       [] { return vorn_get_l3_interface(3, output<unsigned int>(), output_bytes(1)); },
       {154}, call("get_l3_interface(3,out0,out1)")},
      {"delete_l3_interface", [] { return vorn_delete_l3_interface(kMac, 11); },
       {155}, call("delete_l3_interface(" + kMacText + ",11)")},
      {"delete_l3_interface_by_id", [] { return vorn_delete_l3_interface_by_id(4); },
       {156}, call("delete_l3_interface_by_id(4)")},
      {"delete_l3_interface_all", [] { return vorn_delete_l3_interface_all(); },
       {157}, call("delete_l3_interface_all()")},
      {"add_l3_host_ip4", [] { return vorn_add_l3_host_ip4(the_port, 1001, kMac, 5); },
       {158}, translated_or_lag_id("add_l3_host_ip4(@,#,1001," + kMacText + ",5)")},
      {"add_l3_host_ip6", [] { return vorn_add_l3_host_ip6(the_port, kIp6, kMac, 6); },
       {159}, translated_or_lag_id("add_l3_host_ip6(@,#," + kIp6Text + "," + kMacText + ",6)")},
      {"get_l3_host_ip4",
       [] {
         return vorn_get_l3_host_ip4(1002, the_port, output_bytes(0), output<unsigned int, 1>());
       },
       {160}, lag_id_or_translated("get_l3_host_ip4(1002,@,out0,out1,#)")},
      {"get_l3_host_ip6",
       [] {
         return vorn_get_l3_host_ip6(kIp6, the_port, output_bytes(0), output<unsigned int, 1>());
       },
       {161}, lag_id_or_translated("get_l3_host_ip6(" + kIp6Text + ",@,out0,out1,#)")},
      {"delete_l3_host_by_interface", [] { return vorn_delete_l3_host_by_interface(7, true); },
       {164}, call("delete_l3_host_by_interface(7,true)")},
      {"delete_l3_host_by_network_ip4", [] { return vorn_delete_l3_host_by_network_ip4(1003); },
       {165}, call("delete_l3_host_by_network_ip4(1003)")},
      {"delete_l3_host_by_network_ip6", [] { return vorn_delete_l3_host_by_network_ip6(kIp6); },
       {166}, call("delete_l3_host_by_network_ip6(" + kIp6Text + ")")},
      {"delete_l3_host_by_addr_ip4", [] { return vorn_delete_l3_host_by_addr_ip4(1004, the_port); },
       {167}, by_kind("delete_l3_host_by_addr_ip4(1004,@,#)")},
      {"delete_l3_host_by_addr_ip6", [] { return vorn_delete_l3_host_by_addr_ip6(kIp6, the_port); },
       {168}, by_kind("delete_l3_host_by_addr_ip6(" + kIp6Text + ",@,#)")},
      {"clear_l3_host_table", [] { return vorn_clear_l3_host_table(); },
       {169}, call("clear_l3_host_table()")},
      {"add_l3_route_ip4", [] { return vorn_add_l3_route_ip4(the_port, 1005, 1006, kMac, 8, 9); },
       {172}, translated_or_lag_id("add_l3_route_ip4(@,#,1005,1006," + kMacText + ",8,9)")},
      {"add_l3_route_ip6", [] { return vorn_add_l3_route_ip6(the_port, kIp6, kMask6, kMac, 8); },
       {173},
       translated_or_lag_port("add_l3_route_ip6(@,#," + kIp6Text + "," + kMask6Text + "," +
                              kMacText + ",8)")},
      {"get_l3_route_by_subnet_ip4",
       [] {
         return vorn_get_l3_route_by_subnet_ip4(1007, 1008, the_port, output<unsigned char[6]>(),
                                                output<unsigned int, 1>(),
                                                output<unsigned int, 2>());
       },
       {162}, lag_id_or_translated("get_l3_route_by_subnet_ip4(1007,1008,@,#,out0,out1,out2)")},
      {"get_l3_route_by_subnet_ip6",
       [] {
         return vorn_get_l3_route_by_subnet_ip6(kIp6, kMask6, the_port, output<unsigned int>(),
                                                output_bytes(1));
       }, {163},
       translated("get_l3_route_by_subnet_ip6(" + kIp6Text + "," + kMask6Text + ",@,#,out0,out1)")},
      {"delete_l3_route_by_interface", [] { return vorn_delete_l3_route_by_interface(9, true); },
       {174}, call("delete_l3_route_by_interface(9,true)")},
      {"delete_l3_route_by_subnet_ip4",
       [] { return vorn_delete_l3_route_by_subnet_ip4(1009, 1010, the_port); },
       {175}, by_kind("delete_l3_route_by_subnet_ip4(1009,1010,@,#)")},
      {"delete_l3_route_by_subnet_ip6",
       [] { return vorn_delete_l3_route_by_subnet_ip6(kIp6, kMask6, the_port); },
       {176}, by_kind("delete_l3_route_by_subnet_ip6(" + kIp6Text + "," + kMask6Text + ",@,#)")},
      {"clear_l3_route_table", [] { return vorn_clear_l3_route_table(); },
       {177}, call("clear_l3_route_table()")},
  };
  // clang-format on
}
INSTANTIATE_TEST_SUITE_P(L3, EntryPoint, testing::ValuesIn(rows()), row_name);

}  // namespace
}  // namespace vorn::test
