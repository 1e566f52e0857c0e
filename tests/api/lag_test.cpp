// SPDX-License-Identifier: Apache-2.0

#include "vornlcapi/api/lag.h"

#include "tests/api/rows.h"

namespace vorn::test {
namespace {

std::vector<Row> rows() {
  // clang-format off
  return {
      {"create_lag", [] { return vorn_create_lag(the_port); }, {9},
       {{kNewLag,
         {"get_sdk()", "lag_usp_to_lag_id(1/20/9) no", "create_lag(&)",
          "add_lag_to_list(35,lag_list)", "add_lag_mapping(1/20/9,35)"}},
        {kLag,
         {"get_sdk()", "lag_usp_to_lag_id(1/20/5)"},
         true,
         {{2,
           false,
           {"create_lag(&)", "add_lag_to_list(35,lag_list)", "add_lag_mapping(1/20/5,35)"}}}},
        {kPort,  // no LAG interface, and not asked
         {"get_sdk()", "lag_usp_to_lag_id(1/1/3) no", "create_lag(&)",
          "add_lag_to_list(35,lag_list)", "add_lag_mapping(1/1/3,35)"}}}},
      {"delete_lag", [] { return vorn_delete_lag(the_port); }, {10},
       {{kLag,
         {"get_sdk()", "is_port_logical_lag(1/20/5)", "lag_usp_to_lag_id(1/20/5)",
          "is_lag_exist(33,copy)", "delete_lag(33)", "delete_lag_from_list(33,lag_list)",
          "delete_lag_mapping(1/20/5,33)"},
         true,
         {{3, true, {}}, {4, true, {}}}},
        {kPort, {"get_sdk()", "is_port_logical_lag(1/1/3) no"}, false}}},
      {"add_ports_to_lag",
       [] {
         return vorn_add_ports_to_lag(the_port, {kPort, kOtherPort});
       }, {11},
       {{kLag,
         {"get_sdk()", "is_port_logical_lag(1/20/5)", "get_sdk()", "lag_usp_to_lag_id(1/20/5)",
          "lag_usp_to_lag_id(1/20/5)", "get_lag_member(33)", "usp_list_to_mp_list([1/1/3 1/1/4])",
          "add_ports_to_lag(33,[2:1 2:2 2:3 2:7 2:8])",
          "add_lag_member(33,lag_list,[2:1 2:2 2:3 2:7 2:8])"},
         true,
         {{4,
           false,
           {"create_lag(&)", "add_lag_to_list(35,lag_list)", "add_lag_mapping(1/20/5,35)"}}}},
        {kNewLag,
         {"get_sdk()", "is_port_logical_lag(1/20/9)", "get_sdk()", "lag_usp_to_lag_id(1/20/9) no",
          "create_lag(&)", "add_lag_to_list(35,lag_list)", "add_lag_mapping(1/20/9,35)",
          "lag_usp_to_lag_id(1/20/9)", "get_lag_member(35)", "usp_list_to_mp_list([1/1/3 1/1/4])",
          "add_ports_to_lag(35,[2:7 2:8])", "add_lag_member(35,lag_list,[2:7 2:8])"}},
        {kVlan, {"get_sdk()", "is_port_logical_lag(1/30/10) no"}, false}}},
      {"delete_ports_from_lag",
       [] {
         return vorn_delete_ports_from_lag(the_port, {kPort, kOtherPort});
       }, {12},
       {{kLag,
         {"get_sdk()", "is_port_logical_lag(1/20/5)", "usp_list_to_mp_list([1/1/3 1/1/4])",
          "lag_usp_to_lag_id(1/20/5)", "delete_ports_from_lag(33,[2:7 2:8])",
          "delete_lag_member(33,lag_list,[2:7 2:8])"},
         true,
         {{4, true, {}}}},
        {kNewLag,
         {"get_sdk()", "is_port_logical_lag(1/20/9)", "usp_list_to_mp_list([1/1/3 1/1/4])",
          "lag_usp_to_lag_id(1/20/9) no"}},
        {kPort, {"get_sdk()", "is_port_logical_lag(1/1/3) no"}, false}}},
      {"set_lag_balancing_strategy",
       [] { return vorn_set_lag_balancing_strategy(the_port, lag_psc_t(6)); }, {13},
       {{kLag,
         {"is_port_logical_lag(1/20/5)", "get_sdk()", "lag_usp_to_lag_id(1/20/5)",
          "set_lag_balancing_strategy(33,6)"}},
        {kPort, {"is_port_logical_lag(1/1/3) no"}, false}}},
      {"get_lag_balancing_strategy",
       [] { return vorn_get_lag_balancing_strategy(the_port, output<lag_psc_t>()); }, {14},
       {{kLag,
         {"is_port_logical_lag(1/20/5)", "get_sdk()", "lag_usp_to_lag_id(1/20/5)",
          "get_lag_balancing_strategy(33,out0)"}},
        {kNewLag,
         {"is_port_logical_lag(1/20/9)", "get_sdk()", "lag_usp_to_lag_id(1/20/9) no"},
         false}}},
      {"lag_usp_to_lag_id", [] { return vorn_lag_usp_to_lag_id(the_port, output<unsigned int>()); },
       {},
       {{kLag, {"lag_usp_to_lag_id(1/20/5)"}}, {kPort, {"lag_usp_to_lag_id(1/1/3) no"}, false}}},
      {"lag_id_to_lag_usp", [] { return vorn_lag_id_to_lag_usp(33, output<Usp>()); }, {},
       {{kPort, {"lag_id_to_lag_usp(33,out0)"}}}},
  };
  // clang-format on
}
INSTANTIATE_TEST_SUITE_P(Lag, EntryPoint, testing::ValuesIn(rows()), row_name);

// ---- Stories: how SDK, list and mapping stay in step or fall out of it --------------------------

std::size_t times(const std::string& step) {
  std::size_t count = 0;
  for (const std::string& taken : host().steps) count += taken == step;
  return count;
}

class LagStory : public testing::Test {
 protected:
  LagStory() { host().reset(); }

  // Has the host refuse the n-th call from here on.
  static void refuse_after(std::size_t n) { host().refuse = host().steps.size() + n; }
};

TEST_F(LagStory, CreatedTwiceIsCreatedOnce) {
  EXPECT_TRUE(vorn_create_lag(kNewLag));
  EXPECT_TRUE(vorn_create_lag(kNewLag));
  EXPECT_EQ(times("create_lag(&)"), 1U);
  unsigned int id = 0;
  EXPECT_TRUE(vorn_lag_usp_to_lag_id(kNewLag, id));
  EXPECT_EQ(id, 35U);
  Usp lag(0, 0, 0);
  EXPECT_TRUE(vorn_lag_id_to_lag_usp(35, lag));
  EXPECT_EQ(lag, kNewLag);
}

TEST_F(LagStory, PortsGoInAndOut) {
  EXPECT_TRUE(vorn_add_ports_to_lag(kNewLag, {kPort}));
  EXPECT_TRUE(vorn_add_ports_to_lag(kNewLag, {kOtherPort}));
  EXPECT_EQ(lag_list.back().members(), (std::list<Mp>{Mp(2, 7), Mp(2, 8)}));
  EXPECT_TRUE(vorn_delete_ports_from_lag(kNewLag, {kPort}));
  EXPECT_EQ(lag_list.back().members(), (std::list<Mp>{Mp(2, 8)}));
  EXPECT_TRUE(vorn_delete_lag(kNewLag));
  EXPECT_TRUE(vorn_delete_lag(kNewLag)) << "there is nothing left to delete";
  EXPECT_EQ(times("delete_lag(35)"), 1U);
  EXPECT_EQ(lag_list.size(), 2U);
}

TEST_F(LagStory, RemovingFromAnUnmappedLagStillTranslatesThePorts) {
  EXPECT_TRUE(vorn_delete_ports_from_lag(kNewLag, {kPort}));
  EXPECT_FALSE(vorn_delete_ports_from_lag(kNewLag, {kUnknown}));
}

// The mapping was not recorded: the list has the LAG, yet the next creation makes another.
TEST_F(LagStory, CreationThatFailsHalfWayIsNotUndone) {
  refuse_after(5);
  EXPECT_FALSE(vorn_create_lag(kNewLag));
  EXPECT_EQ(lag_list.size(), 3U);
  EXPECT_TRUE(vorn_create_lag(kNewLag));
  EXPECT_EQ(times("create_lag(&)"), 2U);
  EXPECT_EQ(lag_list.size(), 4U);
}

// The list entry is gone and the mapping is not: that counts as deleted, and creating it again
// does nothing.
TEST_F(LagStory, DeletionThatFailsHalfWayIsNotUndone) {
  refuse_after(7);
  EXPECT_FALSE(vorn_delete_lag(kLag));
  EXPECT_TRUE(vorn_delete_lag(kLag));
  EXPECT_TRUE(vorn_create_lag(kLag));
  EXPECT_EQ(times("delete_lag(33)"), 1U);
  EXPECT_EQ(times("create_lag(&)"), 0U);
}

}  // namespace
}  // namespace vorn::test
