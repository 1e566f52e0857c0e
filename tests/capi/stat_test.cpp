// SPDX-License-Identifier: Apache-2.0
//
// Counters.
#include "vornlcapi/capi/stat.h"

#include "tests/capi/rows.h"

namespace vorn::test {
namespace {

const Row kRows[] = {
    {"get_port_stat_counter", call(ctype_vorn_get_port_stat_counter, &port, 17, out0),
     "get_port_stat_counter(2:7,17,&)", "101"},
    {"get_port_stat_counter32", call(ctype_vorn_get_port_stat_counter32, &port, 18, out0),
     "get_port_stat_counter32(2:7,18,&)", "101"},
    {"get_port_stat_counter_all64", call(ctype_vorn_get_port_stat_counter_all64, &port, out0, out1),
     "get_port_stat_counter_all64(2:7,&)"},
    {"get_port_stat_counter_all32", call(ctype_vorn_get_port_stat_counter_all32, &port, out0, out1),
     "get_port_stat_counter_all32(2:7,&)"},
    {"get_port_brief_stat_counter64",
     call(ctype_vorn_get_port_brief_stat_counter64, &port, 19, out0),
     "get_port_brief_stat_counter64(2:7,19,&)", "101"},
    {"get_port_brief_stat_counter32",
     call(ctype_vorn_get_port_brief_stat_counter32, &port, 20, out0),
     "get_port_brief_stat_counter32(2:7,20,&)", "101"},
    {"get_port_brief_stat_counter_all64",
     call(ctype_vorn_get_port_brief_stat_counter_all64, &port, out0, out1),
     "get_port_brief_stat_counter_all64(2:7,&)"},
    {"get_port_brief_stat_counter_all32",
     call(ctype_vorn_get_port_brief_stat_counter_all32, &port, out0, out1),
     "clear_port_stat_counter(2:7)"},
    {"clear_port_stat_counter", call(ctype_vorn_clear_port_stat_counter, &port),
     "clear_port_stat_counter(2:7)"},
    {"get_port_stat_enabled", call(ctype_vorn_get_port_stat_enabled, &port, out0),
     "get_port_stat_enabled(2:7,&)", "1"},
    {"set_port_stat_enable", call(ctype_vorn_set_port_stat_enable, &port, kOn),
     "set_port_stat_enable(2:7,true)"},
    {"set_port_stat_enable", call(ctype_vorn_set_port_stat_enable, &port, kOff),
     "set_port_stat_enable(2:7,false)"},
};

INSTANTIATE_TEST_SUITE_P(stat, Rows, testing::ValuesIn(kRows), row_name);

class WideCounters final : public Recorder {
  bool get_port_stat_counter(const Mp&, stat_type_t, unsigned long long& value) override {
    value = 0x1122334455667788;
    return true;
  }
  bool get_port_brief_stat_counter64(const Mp&, brief_stat_type_t,
                                     unsigned long long& value) override {
    value = 0x8877665544332211;
    return true;
  }
};

TEST(Counters, All64BitsArrive) {
  WideCounters sdk;
  host().reset();
  host().sdk = &sdk;
  unsigned long long value = 0;
  EXPECT_TRUE(ctype_vorn_get_port_stat_counter(&port, STAT_IN_OCTETS, &value));
  EXPECT_EQ(0x1122334455667788u, value);
  EXPECT_TRUE(ctype_vorn_get_port_brief_stat_counter64(&port, BRIEF_STAT_IN_OCTETS, &value));
  EXPECT_EQ(0x8877665544332211u, value);
}

}  // namespace
}  // namespace vorn::test
