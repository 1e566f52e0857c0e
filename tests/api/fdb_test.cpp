// SPDX-License-Identifier: Apache-2.0

#include "vornlcapi/api/fdb.h"

#include "tests/api/rows.h"

namespace vorn::test {
namespace {

const unsigned char kMac[6] = {0x02, 0, 0, 0, 0, 0x21};
unsigned char bitmap[512] = {0x0c, 0x40};

std::vector<Row> rows() {
  // clang-format off
  return {
      {"add_system_mac", [] { return vorn_add_system_mac(kMac, 10); },
       {54}, call("add_system_mac(020000000021,10)")},
      {"add_system_mac_vlan_bitmap", [] { return vorn_add_system_mac_vlan_bitmap(kMac, bitmap); },
       {55}, call("add_system_mac_vlan_bitmap(020000000021,0c40)")},
      {"delete_mac", [] { return vorn_delete_mac(11, kMac); },
       {56}, call("delete_mac(020000000021,11)")},
      {"delete_mac_vlan_bitmap", [] { return vorn_delete_mac_vlan_bitmap(kMac, bitmap); },
       {57}, call("delete_mac_vlan_bitmap(020000000021,0c40)")},
      {"delete_mac_by_mac", [] { return vorn_delete_mac_by_mac(kMac); },
       {58}, call("delete_mac_by_mac(020000000021)")},
      {"add_mac_to_port", [] { return vorn_add_mac_to_port(the_port, kMac, 12); }, {53},
       {{kPort,
         {"get_sdk()", "is_port_physical(1/1/3)", "usp_to_mp(1/1/3)",
          "add_mac_to_port(2:7,020000000021,12,false)"},
         true,
         {{2, false, {"is_port_logical_lag(1/1/3)"}}}},
        {kLag,
         {"get_sdk()", "is_port_physical(1/20/5) no", "is_port_logical_lag(1/20/5)",
          "lag_usp_to_lag_id(1/20/5)", "is_lag_exist(33,copy)",
          "add_mac_to_port(0:33,020000000021,12,true)"}},
        {kVlan,
         {"get_sdk()", "is_port_physical(1/30/10) no", "is_port_logical_lag(1/30/10) no"},
         false}}},
      {"delete_mac_from_port_all", [] { return vorn_delete_mac_from_port_all(the_port, 13); }, {},
       {{kPort, {}}, {kUnknown, {}}}},
      {"traverse_mac_table",
       [] {
         host().names[bitmap] = "argument";
         return vorn_traverse_mac_table(bitmap);
       },
       {145}, call("traverse_mac_table(argument)")},
      {"get_fdb_aging_time", [] { return vorn_get_fdb_aging_time(output<int>()); },
       {63}, call("get_fdb_aging_time(out0)")},
      {"set_fdb_aging_time", [] { return vorn_set_fdb_aging_time(-300); },
       {62}, call("set_fdb_aging_time(-300)")},
      {"clear_fdb_table", [] { return vorn_clear_fdb_table(true); },
       {61}, call("clear_fdb_table(true)")},
      {"clear_fdb_by_vlan", [] { return vorn_clear_fdb_by_vlan(14, true); },
       {60}, call("clear_fdb_by_vlan(14,true)")},
      {"clear_fdb_by_port", [] { return vorn_clear_fdb_by_port(the_port, true); }, {59},
       {{kPort,
         {"usp_to_mp(1/1/3)", "get_sdk()", "clear_fdb_by_port(2:7,false,true)"},
         true,
         {{1, false, {"is_port_logical_lag(1/1/3)"}}}},
        {kLag,  // port number 5 gives LAG number 4, whatever the id
         {"usp_to_mp(1/20/5) no", "is_port_logical_lag(1/20/5)", "get_sdk()",
          "clear_fdb_by_port(0:4,true,true)"}},
        {kVlan, {"usp_to_mp(1/30/10) no", "is_port_logical_lag(1/30/10) no"}, false}}},
      {"get_port_mac_lock", [] { return vorn_get_port_mac_lock(the_port, output<bool>()); },
       {67}, translate_lookup("get_port_mac_lock(@,out0)")},
      {"set_port_mac_lock", [] { return vorn_set_port_mac_lock(the_port, true); },
       {66}, members("set_port_mac_lock(@,true)")},
      {"get_port_mac_lock_ext",
       [] { return vorn_get_port_mac_lock_ext(the_port, output<bool>(), output<bool, 1>()); },
       {69}, lookup_translate("get_port_mac_lock_ext(@,out0,out1)")},
      {"set_port_mac_lock_ext", [] { return vorn_set_port_mac_lock_ext(the_port, true, false); },
       {68}, lookup_translate("set_port_mac_lock_ext(@,true,false)")},
      {"get_port_mac_limit", [] { return vorn_get_port_mac_limit(the_port, output<int>()); }, {87},
       {{kPort,
         {"get_sdk()", "usp_to_mp(1/1/3)", "get_system_mac_limit(2:7,out0,1)"},
         true,
         {{2, false, {"is_port_logical_lag(1/1/3)", "is_port_logical_vlan(1/1/3)"}}}},
        {kLag,
         {"get_sdk()", "usp_to_mp(1/20/5) no", "is_port_logical_lag(1/20/5)",
          "lag_usp_to_lag_id(1/20/5)", "get_system_mac_limit(0:33,out0,2)"},
         true,
         {{3, false, {"is_port_logical_vlan(1/20/5)"}}}},
        {kVlan,
         {"get_sdk()", "usp_to_mp(1/30/10) no", "is_port_logical_lag(1/30/10) no",
          "is_port_logical_vlan(1/30/10)", "get_system_mac_limit(0:10,out0,3)"}},
        {kUnknown,
         {"get_sdk()", "usp_to_mp(1/40/2) no", "is_port_logical_lag(1/40/2) no",
          "is_port_logical_vlan(1/40/2) no"},
         false}}},
      // A port that does not translate goes on as hardware port 0:0.
      {"set_port_mac_limit", [] { return vorn_set_port_mac_limit(the_port, -1); }, {86},
       {{kPort,
         {"get_sdk()", "usp_to_mp(1/1/3)", "set_system_mac_limit(2:7,-1,1)"},
         true,
         {{2, true, {"set_system_mac_limit(0:0,-1,1)"}}}},
        {kLag, {"get_sdk()", "usp_to_mp(1/20/5) no", "set_system_mac_limit(0:0,-1,1)"}},
        {kUnknown, {"get_sdk()", "usp_to_mp(1/40/2) no", "set_system_mac_limit(0:0,-1,1)"}}}},
      {"get_system_mac_limit", [] { return vorn_get_system_mac_limit(output<int>()); }, {87},
       {{kPort, {"get_sdk()", "get_system_mac_limit(0:0,out0,4)"}, false}}},
      {"set_system_mac_limit", [] { return vorn_set_system_mac_limit(8192); },
       {86}, call("set_system_mac_limit(0:0,8192,4)")},
  };
  // clang-format on
}
INSTANTIATE_TEST_SUITE_P(Fdb, EntryPoint, testing::ValuesIn(rows()), row_name);

TEST(SystemMacLimit, IsWrittenThoughTheResultIsFalse) {
  host().reset();
  host().answers = true;
  int limit = 0;
  EXPECT_FALSE(vorn_get_system_mac_limit(limit));
  EXPECT_EQ(limit, 101);
}

}  // namespace
}  // namespace vorn::test
