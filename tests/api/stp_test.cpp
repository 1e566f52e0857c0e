// SPDX-License-Identifier: Apache-2.0

#include "vornlcapi/api/stp.h"

#include "tests/api/rows.h"

namespace vorn::test {
namespace {

const Steps kLagFlush{"is_port_physical(1/20/5) no", "is_port_logical_lag(1/20/5)",
                      "lag_usp_to_lag_id(1/20/5)", "clear_fdb_by_port(0:33,true,false)"};
const Steps kVlanFlush{"is_port_physical(1/30/10) no", "is_port_logical_lag(1/30/10) no"};

std::vector<Row> rows() {
  // clang-format off
  return {
      {"get_port_stp_state",
       [] { return vorn_get_port_stp_state(the_port, output<stp_state_t>()); },
       {50}, translate_lookup("get_port_stp_state(@,out0)")},
      {"set_port_stp_state", [] { return vorn_set_port_stp_state(the_port, STP_STATE_LEARNING); },
       {49}, members("set_port_stp_state(@,2)")},
      // A member that refuses state 0 does not keep the flush from being made, nor show.
      {"set_port_stp_state_0_flushes",
       [] { return vorn_set_port_stp_state(the_port, stp_state_t(0)); }, {49, 59},
       {{kPort,
         {"usp_to_mp_list(1/1/3)", "get_sdk()", "set_port_stp_state(2:7,0)",
          "is_port_physical(1/1/3)", "clear_fdb_by_port(2:7,false,false)"},
         true,
         {{3, true, {"is_port_physical(1/1/3)", "clear_fdb_by_port(2:7,false,false)"}},
          {4, false, {"is_port_logical_lag(1/1/3)"}}}},
        {kLag,
         {"usp_to_mp_list(1/20/5)", "get_sdk()", "set_port_stp_state(2:1,0)",
          "set_port_stp_state(2:2,0)", "set_port_stp_state(2:3,0)", kLagFlush[0], kLagFlush[1],
          kLagFlush[2], kLagFlush[3]},
         true,
         {{3, true, kLagFlush}, {4, true, kLagFlush}, {5, true, kLagFlush}}},
        {kEmptyLag,
         {"usp_to_mp_list(1/20/6)", "get_sdk()", "is_port_physical(1/20/6) no",
          "is_port_logical_lag(1/20/6)", "lag_usp_to_lag_id(1/20/6)",
          "clear_fdb_by_port(0:34,true,false)"}},
        {kVlan,
         {"usp_to_mp_list(1/30/10)", "get_sdk()", "set_port_stp_state(2:5,0)",
          "set_port_stp_state(2:6,0)", kVlanFlush[0], kVlanFlush[1]},
         false,
         {{3, false, kVlanFlush}, {4, false, kVlanFlush}}}}},
      {"set_ports_stp_state",  // no flush
       [] { return vorn_set_ports_stp_state(the_ports, stp_state_t(0)); },
       {49}, ports("set_port_stp_state(@,0)")},
      {"get_port_mstp_state",
       [] { return vorn_get_port_mstp_state(the_port, output<mstp_state_t>(), 5); },
       {8}, translate_lookup("get_port_mstp_state(5,@,out0)")},
      {"set_port_mstp_state", [] { return vorn_set_port_mstp_state(the_port, mstp_state_t(0), 6); },
       {7}, members("set_port_mstp_state(6,@,0)")},
      {"set_ports_mstp_state",
       [] { return vorn_set_ports_mstp_state(the_ports, mstp_state_t(3), 7); },
       {7}, ports("set_port_mstp_state(7,@,3)")},
      {"get_port_bpdu_processing",
       [] { return vorn_get_port_bpdu_processing(the_port, output<bool>()); },
       {52}, lookup_translate("get_port_bpdu_processing(@,out0)")},
      {"set_port_bpdu_processing", [] { return vorn_set_port_bpdu_processing(the_port, true); },
       {51}, lookup_translate("set_port_bpdu_processing(@,true)")},
  };
  // clang-format on
}
INSTANTIATE_TEST_SUITE_P(Stp, EntryPoint, testing::ValuesIn(rows()), row_name);

}  // namespace
}  // namespace vorn::test
