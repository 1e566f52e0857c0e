// SPDX-License-Identifier: Apache-2.0

#include "vornlcapi/api/lifecycle.h"

#include "api/trace.h"
#include "tests/api/rows.h"

namespace vorn::test {
namespace {

bool init() {
  static int out;  // the host writes it even when it fails
  host().names[&out] = "out";
  return vorn_lcmgr_api_init(out);
}

std::vector<Row> rows() {
  // clang-format off
  return {
      {"lcmgr_api_init", init, {}, {{kPort, {"init_line_card(out)", "create_sdk()"}}}},
      {"lcmgr_api_terminate", [] { return vorn_lcmgr_api_terminate(); }, {},
       {{kPort, {"get_sdk()", "delete_sdk(true)"}}}},
      {"get_line_card_usp", [] { return vorn_get_line_card_usp(output<Usp>()); },
       {107}, call("get_line_card_usp(out0)")},
      {"free_call", [] { return vorn_free_call(-17); }, {108}, call("free_call(-17)")},
      {"set_lcmgr_trace", [] { return vorn_set_lcmgr_trace("trace_level_sdk", true); },
       {178}, call("set_lcmgr_trace(trace_level_sdk,true)")},
      {"set_lcmgr_trace_all", [] { return vorn_set_lcmgr_trace("trace_level_all", true); },
       {178}, call("set_lcmgr_trace(trace_level_all,true)")},
      {"set_lcmgr_trace_api", [] { return vorn_set_lcmgr_trace("trace_level_api", true); }, {},
       {{kPort, {"get_sdk()"}}}},
  };
  // clang-format on
}
INSTANTIATE_TEST_SUITE_P(Lifecycle, EntryPoint, testing::ValuesIn(rows()), row_name);

// Which targets set the library's own flag, and what of a failure.
TEST(Trace, SetsTheFlag) {
  const struct {
    const char* target;
    std::size_t refuse;
    bool sets;
  } rows[] = {
      {"trace_level_api", 0, true},  {"trace_level_all", 0, true},   {"trace_level_all", 2, true},
      {"trace_level_all", 1, false}, {"trace_level_api", 1, false},  {"trace_level_sdk", 0, false},
      {"trace_level_xrl", 0, false}, {"trace_level_apis", 0, false}, {"", 0, false}};
  for (const auto& row : rows) {
    for (const bool on : {true, false}) {
      host().reset();
      host().refuse = row.refuse;
      api_trace_enabled = !on;
      EXPECT_EQ(vorn_set_lcmgr_trace(row.target, on), row.refuse == 0) << row.target;
      EXPECT_EQ(api_trace_enabled, row.sets ? on : !on) << row.target << " " << row.refuse;
    }
  }
  api_trace_enabled = false;
}

TEST(Lifecycle, WorksFromInitToTerminate) {
  host().reset();
  host().has_sdk = false;
  EXPECT_FALSE(vorn_free_call(1));
  EXPECT_FALSE(vorn_lcmgr_api_terminate());
  int out = 0;
  EXPECT_TRUE(vorn_lcmgr_api_init(out));
  EXPECT_EQ(out, 52);
  EXPECT_TRUE(vorn_free_call(2));
  EXPECT_TRUE(vorn_lcmgr_api_terminate());
  EXPECT_FALSE(vorn_free_call(3));
  EXPECT_EQ(host().steps,
            (Steps{"get_sdk()", "get_sdk()", "init_line_card(&)", "create_sdk()", "get_sdk()",
                   "free_call(2)", "get_sdk()", "delete_sdk(true)", "get_sdk()"}));
}

}  // namespace
}  // namespace vorn::test
