// SPDX-License-Identifier: Apache-2.0
//
// Spanning-tree states.
#include "vornlcapi/capi/stp.h"

#include "tests/capi/rows.h"

namespace vorn::test {
namespace {

const Row kRows[] = {
    {"get_port_stp_state", call(ctype_vorn_get_port_stp_state, &port, out0),
     "get_port_stp_state(2:7,&)", "101"},
    {"set_port_stp_state", call(ctype_vorn_set_port_stp_state, &port, 15),
     "set_port_stp_state(2:7,15)"},
    {"get_port_mstp_state", call(ctype_vorn_get_port_mstp_state, &port, out0, 6),
     "get_port_mstp_state(6,2:7,&)", "101"},
    {"set_port_mstp_state", call(ctype_vorn_set_port_mstp_state, &port, 16, 6),
     "set_port_mstp_state(6,2:7,16)"},
    {"get_port_bpdu_processing", call(ctype_vorn_get_port_bpdu_processing, &port, out0),
     "get_port_bpdu_processing(2:7,&)", "1"},
    {"set_port_bpdu_processing", call(ctype_vorn_set_port_bpdu_processing, &port, kOn),
     "set_port_bpdu_processing(2:7,true)"},
    {"set_port_bpdu_processing", call(ctype_vorn_set_port_bpdu_processing, &port, kOff),
     "set_port_bpdu_processing(2:7,false)"},
};

INSTANTIATE_TEST_SUITE_P(stp, Rows, testing::ValuesIn(kRows), row_name);

}  // namespace
}  // namespace vorn::test
