// SPDX-License-Identifier: Apache-2.0

#include "vornlcapi/api/stat.h"

#include "tests/api/rows.h"

namespace vorn::test {
namespace {

// The caller's lists hold a counter beforehand, which must stay.
template <class Counter>
std::list<Counter>& list_output() {
  static std::list<Counter> list;
  list.assign(1, Counter());
  host().names[&list] = "out0";
  return list;
}

std::vector<Row> rows() {
  // clang-format off
  return {
      {"get_port_stat_counter",
       [] {
         return vorn_get_port_stat_counter(the_port, stat_type_t(9), output<unsigned long long>());
       },
       {38}, lookup_translate("get_port_stat_counter(@,9,out0)")},
      {"get_port_stat_counter32",
       [] {
         return vorn_get_port_stat_counter32(the_port, stat_type_t(8), output<unsigned int>());
       },
       {39}, lookup_translate("get_port_stat_counter32(@,8,out0)")},
      {"get_port_stat_counter_all64",
       [] { return vorn_get_port_stat_counter_all64(the_port, list_output<StatCounter64>()); },
       {40}, lookup_translate("get_port_stat_counter_all64(@,out0)")},
      {"get_port_stat_counter_all32",
       [] { return vorn_get_port_stat_counter_all32(the_port, list_output<StatCounter32>()); },
       {41}, lookup_translate("get_port_stat_counter_all32(@,out0)")},
      {"get_port_stat_counter_all64_ext",
       [] {
         return vorn_get_port_stat_counter_all64_ext(the_port, &output<StatCounter64>(),
                                                     output<unsigned int, 1>());
       },
       {42}, lookup_translate("get_port_stat_counter_all64_ext(@,out0,out1)")},
      {"get_port_stat_counter_all32_ext",
       [] {
         return vorn_get_port_stat_counter_all32_ext(the_port, &output<StatCounter32>(),
                                                     output<unsigned int, 1>());
       },
       {43}, lookup_translate("get_port_stat_counter_all32_ext(@,out0,out1)")},
      {"get_port_brief_stat_counter64",
       [] {
         return vorn_get_port_brief_stat_counter64(the_port, brief_stat_type_t(7),
                                                   output<unsigned long long>());
       },
       {44}, translate_lookup("get_port_brief_stat_counter64(@,7,out0)")},
      {"get_port_brief_stat_counter32",
       [] {
         return vorn_get_port_brief_stat_counter32(the_port, brief_stat_type_t(6),
                                                   output<unsigned int>());
       },
       {45}, translate_lookup("get_port_brief_stat_counter32(@,6,out0)")},
      {"get_port_brief_stat_counter_all64",  // the list that arrives is not the caller's
       [] {
         return vorn_get_port_brief_stat_counter_all64(the_port, list_output<BriefStatCounter64>());
       },
       {46}, translate_lookup("get_port_brief_stat_counter_all64(@,&)")},
      {"get_port_brief_stat_counter_all32",  // clears
       [] {
         return vorn_get_port_brief_stat_counter_all32(the_port, list_output<BriefStatCounter32>());
       },
       {48}, translate_lookup("clear_port_stat_counter(@)")},
      {"clear_port_stat_counter", [] { return vorn_clear_port_stat_counter(the_port); },
       {48}, translate_lookup("clear_port_stat_counter(@)")},
      {"get_port_stat_enabled", [] { return vorn_get_port_stat_enabled(the_port, output<bool>()); },
       {37}, translate_lookup("get_port_stat_enabled(@,out0)")},
      {"set_port_stat_enable", [] { return vorn_set_port_stat_enable(the_port, true); },
       {36}, members("set_port_stat_enable(@,true)")},
  };
  // clang-format on
}
INSTANTIATE_TEST_SUITE_P(Stat, EntryPoint, testing::ValuesIn(rows()), row_name);

TEST(CounterLists, GrowAndAreNotClearedFirst) {
  host().reset();
  host().answers = true;
  std::list<StatCounter64> all64(1);
  std::list<StatCounter32> all32(1);
  std::list<BriefStatCounter64> by_value(1);
  EXPECT_TRUE(vorn_get_port_stat_counter_all64(kPort, all64));
  EXPECT_TRUE(vorn_get_port_stat_counter_all32(kPort, all32));
  EXPECT_TRUE(vorn_get_port_brief_stat_counter_all64(kPort, by_value));
  EXPECT_EQ(all64.size(), 2U);
  EXPECT_EQ(all32.size(), 2U);
  EXPECT_EQ(by_value.size(), 1U);
}

}  // namespace
}  // namespace vorn::test
