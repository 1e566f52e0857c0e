// SPDX-License-Identifier: Apache-2.0
//
// The flow table.
#include "vornlcapi/capi/flow.h"

#include "tests/capi/rows.h"

namespace vorn::test {
namespace {

ctype_of_flow_s flow = {
    {1, 1, 3}, {1, 2, 3, 4, 5, 6}, {7, 8, 9, 10, 11, 12}, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22,
    23,        OF_MATCH_IN_PORT};
ctype_of_flow_qualify_udf_s udf = {31, 32, 33, 34};
const ctype_of_action_param_s param = {{91, 92, 93}};
const ctype_of_action_param_s to_port = {{10, 92, 93}};  // flow port 10 is 1/1/3

const Row kRows[] = {
    {"add_of_flow", call(ctype_vorn_add_of_flow, &flow, out0, &udf), "add_of_flow(2:7 ", "101"},
    {"add_of_flow_with_id", call(ctype_vorn_add_of_flow_with_id, &flow, 81),
     "add_of_flow_with_id(2:7 "},
    {"delete_of_flow", call(ctype_vorn_delete_of_flow, 81), "delete_of_flow(81)"},
    {"clear_of_flow_table", call(ctype_vorn_clear_of_flow_table), "clear_of_flow_table()"},
    {"add_of_flow_action", call(ctype_vorn_add_of_flow_action, 81, 0x80000009, param),
     "add_of_flow_action(81,2147483657,91 92 93,0:0)"},
    {"delete_of_flow_action",
     call(ctype_vorn_delete_of_flow_action, 81, CTYPE_OF_ACTION_OUTPUT, to_port),
     "delete_of_flow_action(81,0,10 92 93,2:7)"},
    {"clear_of_flow_action", call(ctype_vorn_clear_of_flow_action, 81), "clear_of_flow_action(81)"},
    {"set_of_flow_priority", call(ctype_vorn_set_of_flow_priority, 81, -5),
     "set_of_flow_priority(81,-5)"},
    {"get_of_flow_priority", call(ctype_vorn_get_of_flow_priority, 81, out0),
     "get_of_flow_priority(81,&)", "101"},
    {"get_of_flow_stat_counter64", call(ctype_vorn_get_of_flow_stat_counter64, 81, out0),
     "get_of_flow_stat_counter64(81,&)", "101"},
    {"get_of_flow_stat_counter32", call(ctype_vorn_get_of_flow_stat_counter32, 81, out0),
     "get_of_flow_stat_counter32(81,&)", "101"},
};

INSTANTIATE_TEST_SUITE_P(flow, Rows, testing::ValuesIn(kRows), row_name);

class FlowKeeper final : public Recorder {
 public:
  of_flow_mp_s flow;
  of_flow_qualify_udf_s qualifier;

 private:
  bool add_of_flow(of_flow_mp_s& added, unsigned int&,
                   const of_flow_qualify_udf_s& added_qualifier) override {
    flow = added;
    qualifier = added_qualifier;
    return true;
  }
  bool add_of_flow_with_id(of_flow_mp_s& added, unsigned int) override {
    flow = added;
    return true;
  }
  bool get_of_flow_stat_counter64(unsigned int, unsigned long long& packets) override {
    packets = 0x1122334455667788;
    return true;
  }
};

TEST(Flow, EveryByteOfTheMatchButItsGapArrives) {
  FlowKeeper sdk;
  host().reset();
  host().sdk = &sdk;
  unsigned int id = 0;
  int gaps_followed = 0;
  for (int round = 0; round < 4; ++round) {
    unsigned char bytes[60];
    for (int i = 0; i < 60; ++i) bytes[i] = static_cast<unsigned char>(60 * (round / 2) + i + 1);
    ctype_of_flow_s record;
    std::memcpy(&record, bytes, sizeof(record));
    record.in_port = port;
    record.flags |= OF_MATCH_IN_PORT;
    std::memcpy(bytes, &record, sizeof(record));
    EXPECT_TRUE(round % 2 == 0 ? ctype_vorn_add_of_flow(&record, &id, &udf)
                               : ctype_vorn_add_of_flow_with_id(&record, 81));
    EXPECT_EQ(Mp(2, 7), sdk.flow.in_port);
    const auto* const match = reinterpret_cast<const unsigned char*>(&sdk.flow.match);
    EXPECT_EQ(0, std::memcmp(bytes + 12, match, 18));
    EXPECT_EQ(0, std::memcmp(bytes + 32, match + 20, 28));
    gaps_followed += std::memcmp(bytes + 30, match + 18, 2) == 0;
  }
  EXPECT_EQ("31 32 33 34", text(sdk.qualifier));
  EXPECT_LT(gaps_followed, 4);  // bytes 30 and 31 of the record are not read
}

TEST(Flow, All64BitsOfTheCounterArrive) {
  FlowKeeper sdk;
  host().reset();
  host().sdk = &sdk;
  unsigned long long packets = 0;
  EXPECT_TRUE(ctype_vorn_get_of_flow_stat_counter64(81, &packets));
  EXPECT_EQ(0x1122334455667788u, packets);
}

}  // namespace
}  // namespace vorn::test
