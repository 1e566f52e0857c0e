// SPDX-License-Identifier: Apache-2.0
//
// LAGs.
#include "vornlcapi/capi/lag.h"

#include "tests/capi/rows.h"

namespace vorn::test {
namespace {

const Row kRows[] = {
    {"create_lag", call(ctype_vorn_create_lag, &new_lag), "add_lag_mapping(1/20/9,35)", "", {2}},
    {"delete_lag", call(ctype_vorn_delete_lag, &lag), "delete_lag_mapping(1/20/5,33)", "", {3, 4}},
    {"add_ports_to_lag", call(ctype_vorn_add_ports_to_lag, &lag, pair, 2),
     "add_lag_member(33,lag_list,[2:1 2:2 2:3 2:6 2:5])"},
    {"delete_ports_from_lag",
     call(ctype_vorn_delete_ports_from_lag, &lag, pair, 2),
     "delete_lag_member(33,lag_list,[2:6 2:5])",
     "",
     {4}},
    {"set_lag_balancing_strategy", call(ctype_vorn_set_lag_balancing_strategy, &lag, 28),
     "set_lag_balancing_strategy(33,28)"},
    {"get_lag_balancing_strategy", call(ctype_vorn_get_lag_balancing_strategy, &lag, out0),
     "get_lag_balancing_strategy(33,&)", "101"},
    {"lag_usp_to_lag_id", call(ctype_vorn_lag_usp_to_lag_id, &lag, out0),
     "lag_usp_to_lag_id(1/20/5)", "33"},
    {"lag_id_to_lag_usp", call(ctype_vorn_lag_id_to_lag_usp, 33, out0), "lag_id_to_lag_usp(33,&)",
     "1/20/5"},
};

INSTANTIATE_TEST_SUITE_P(lag, Rows, testing::ValuesIn(kRows), row_name);

}  // namespace
}  // namespace vorn::test
