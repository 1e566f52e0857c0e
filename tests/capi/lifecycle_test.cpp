// SPDX-License-Identifier: Apache-2.0
//
// Start-up and shut-down.
#include "vornlcapi/capi/lifecycle.h"

#include "tests/capi/rows.h"

namespace vorn::test {
namespace {

const Row kRows[] = {
    {"lcmgr_api_init", call(ctype_vorn_lcmgr_api_init, out0), "create_sdk()", "52"},
    {"lcmgr_api_terminate", call(ctype_vorn_lcmgr_api_terminate), "delete_sdk(true)"},
    {"init_line_card", call(ctype_vorn_init_line_card, out0), "init_line_card(&)", "52", {}, "52"},
};

INSTANTIATE_TEST_SUITE_P(lifecycle, Rows, testing::ValuesIn(kRows), row_name);

}  // namespace
}  // namespace vorn::test
