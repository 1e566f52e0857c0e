// SPDX-License-Identifier: Apache-2.0

#include "vornlcapi/api/flow.h"

#include <cstring>

#include "tests/api/rows.h"

namespace vorn::test {
namespace {

const of_flow_qualify_udf_s kUdf = {1, 14, 15, 16};
const std::string kMatch =  // the 44 bytes in front of the flags
    "0102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f202122232425262728292a2b2c";

// A flow whose match bytes all differ, on the_port.
of_flow_s flow(unsigned int flags) {
  of_flow_s made;
  unsigned char bytes[44];
  for (std::size_t i = 0; i < sizeof bytes; ++i) bytes[i] = static_cast<unsigned char>(i + 1);
  std::memcpy(static_cast<void*>(&made.match), bytes, sizeof bytes);
  made.in_port = the_port;
  made.match.flags = flags;
  return made;
}

// Flags as the bytes of this processor's order.
std::string flags_text(unsigned int flags) {
  of_match_s match = {};
  match.flags = flags;
  return text(match).substr(88);
}

std::vector<Case> with_in_port(const std::string& name, const std::string& rest) {
  return {{kPort,
           {"get_sdk()", "usp_to_mp(1/1/3)",
            name + "(2:7 " + kMatch + flags_text(0x801) + "," + rest + ")"}},
          {kLag, {"get_sdk()", "usp_to_mp(1/20/5) no"}, false}};
}
std::vector<Case> without_in_port(const std::string& name, const std::string& rest) {
  return {{kUnknown,
           {"get_sdk()", name + "(0:0 " + kMatch + flags_text(0xfffffffe) + "," + rest + ")"}}};
}

template <int word>
bool add_action() {
  return vorn_add_of_flow_action(31, OF_ACTION_OUTPUT, {{static_cast<unsigned int>(word), 32, 33}});
}
template <int word>
bool delete_action() {
  return vorn_delete_of_flow_action(31, OF_ACTION_OUTPUT,
                                    {{static_cast<unsigned int>(word), 32, 33}});
}

std::vector<Row> rows() {
  // clang-format off
  return {
      {"add_of_flow", [] { return vorn_add_of_flow(flow(0x801), output<unsigned int>(), kUdf); },
       {125}, with_in_port("add_of_flow", "out0,1 14 15 16")},
      {"add_of_flow_without_in_port",
       [] { return vorn_add_of_flow(flow(0xfffffffe), output<unsigned int>(), kUdf); },
       {125}, without_in_port("add_of_flow", "out0,1 14 15 16")},
      {"add_of_flow_with_id", [] { return vorn_add_of_flow_with_id(flow(0x801), 41); },
       {126}, with_in_port("add_of_flow_with_id", "41")},
      {"add_of_flow_with_id_without_in_port",
       [] { return vorn_add_of_flow_with_id(flow(0xfffffffe), 42); },
       {126}, without_in_port("add_of_flow_with_id", "42")},
      {"delete_of_flow", [] { return vorn_delete_of_flow(43); }, {127}, call("delete_of_flow(43)")},
      {"clear_of_flow_table", [] { return vorn_clear_of_flow_table(); },
       {128}, call("clear_of_flow_table()")},
      {"add_of_flow_action", add_action<10>, {129},
       {{kPort, {"get_sdk()", "usp_to_mp(1/1/3)", "add_of_flow_action(31,0,10 32 33,2:7)"}}}},
      {"add_of_flow_action_to_port_7", add_action<7>, {129},
       {{kPort, {"get_sdk()", "usp_to_mp(1/1/0)", "add_of_flow_action(31,0,7 32 33,2:4)"}}}},
      {"add_of_flow_action_to_port_6", add_action<6>,
       {129}, call("add_of_flow_action(31,0,6 32 33,0:0)")},
      {"add_of_flow_action_to_a_negative_port", add_action<-1>,
       {129}, call("add_of_flow_action(31,0,4294967295 32 33,0:0)")},
      {"add_of_flow_action_of_another_kind",
       [] {
         return vorn_add_of_flow_action(31, of_action_t(1), {{10, 32, 33}});
       },
       {129}, call("add_of_flow_action(31,1,10 32 33,0:0)")},
      {"delete_of_flow_action", delete_action<10>, {130},
       {{kPort, {"get_sdk()", "usp_to_mp(1/1/3)", "delete_of_flow_action(31,0,10 32 33,2:7)"}}}},
      {"delete_of_flow_action_of_port_6", delete_action<6>,
       {130}, call("delete_of_flow_action(31,0,6 32 33,0:0)")},
      {"clear_of_flow_action", [] { return vorn_clear_of_flow_action(44); },
       {131}, call("clear_of_flow_action(44)")},
      {"set_of_flow_priority", [] { return vorn_set_of_flow_priority(45, -46); },
       {132}, call("set_of_flow_priority(45,-46)")},
      {"get_of_flow_priority", [] { return vorn_get_of_flow_priority(47, output<int>()); },
       {133}, call("get_of_flow_priority(47,out0)")},
      {"get_of_flow_stat_counter64",
       [] { return vorn_get_of_flow_stat_counter64(48, output<unsigned long long>()); },
       {134}, call("get_of_flow_stat_counter64(48,out0)")},
      {"get_of_flow_stat_counter32",
       [] { return vorn_get_of_flow_stat_counter32(49, output<unsigned int>()); },
       {135}, call("get_of_flow_stat_counter32(49,out0)")},
  };
  // clang-format on
}
INSTANTIATE_TEST_SUITE_P(Flow, EntryPoint, testing::ValuesIn(rows()), row_name);

}  // namespace
}  // namespace vorn::test
