// SPDX-License-Identifier: Apache-2.0
//
// The MAC table.
#include "vornlcapi/capi/fdb.h"

#include "tests/capi/rows.h"

namespace vorn::test {
namespace {

const Row kRows[] = {
    {"add_system_mac", call(ctype_vorn_add_system_mac, mac, 10), "add_system_mac(02005e005311,10)"},
    {"add_system_mac_vlan_bitmap", call(ctype_vorn_add_system_mac_vlan_bitmap, mac, ip6),
     "add_system_mac_vlan_bitmap(02005e005311,2001)"},
    {"delete_mac", call(ctype_vorn_delete_mac, 10, mac), "delete_mac(02005e005311,10)"},
    {"delete_mac_vlan_bitmap", call(ctype_vorn_delete_mac_vlan_bitmap, mac, ip6),
     "delete_mac_vlan_bitmap(02005e005311,2001)"},
    {"delete_mac_by_mac", call(ctype_vorn_delete_mac_by_mac, mac),
     "delete_mac_by_mac(02005e005311)"},
    {"add_mac_to_port", call(ctype_vorn_add_mac_to_port, &port, mac, 10),
     "add_mac_to_port(2:7,02005e005311,10,false)"},
    {"traverse_mac_table", call(ctype_vorn_traverse_mac_table, nullptr),
     "traverse_mac_table(null)"},
    {"get_fdb_aging_time", call(ctype_vorn_get_fdb_aging_time, out0), "get_fdb_aging_time(&)",
     "101"},
    {"set_fdb_aging_time", call(ctype_vorn_set_fdb_aging_time, -300), "set_fdb_aging_time(-300)"},
    {"clear_fdb_table", call(ctype_vorn_clear_fdb_table, kOn), "clear_fdb_table(true)"},
    {"clear_fdb_table", call(ctype_vorn_clear_fdb_table, kOff), "clear_fdb_table(false)"},
    {"clear_fdb_by_vlan", call(ctype_vorn_clear_fdb_by_vlan, 10, kOn),
     "clear_fdb_by_vlan(10,true)"},
    {"clear_fdb_by_vlan", call(ctype_vorn_clear_fdb_by_vlan, 10, kOff),
     "clear_fdb_by_vlan(10,false)"},
    {"clear_fdb_by_port", call(ctype_vorn_clear_fdb_by_port, &port, kOn),
     "clear_fdb_by_port(2:7,false,true)"},
    {"clear_fdb_by_port", call(ctype_vorn_clear_fdb_by_port, &port, kOff),
     "clear_fdb_by_port(2:7,false,false)"},
    {"get_port_mac_lock", call(ctype_vorn_get_port_mac_lock, &port, out0),
     "get_port_mac_lock(2:7,&)", "1"},
    {"set_port_mac_lock", call(ctype_vorn_set_port_mac_lock, &port, kOn),
     "set_port_mac_lock(2:7,true)"},
    {"set_port_mac_lock", call(ctype_vorn_set_port_mac_lock, &port, kOff),
     "set_port_mac_lock(2:7,false)"},
    {"get_port_mac_lock_ext", call(ctype_vorn_get_port_mac_lock_ext, &port, out0, out1),
     "get_port_mac_lock_ext(2:7,&,&)", "* *"},
    {"set_port_mac_lock_ext", call(ctype_vorn_set_port_mac_lock_ext, &port, kOn, kOff),
     "set_port_mac_lock_ext(2:7,true,false)"},
    {"set_port_mac_lock_ext", call(ctype_vorn_set_port_mac_lock_ext, &port, kOff, kOn),
     "set_port_mac_lock_ext(2:7,false,true)"},
    {"get_port_mac_limit", call(ctype_vorn_get_port_mac_limit, &port, out0),
     "get_system_mac_limit(2:7,&,1)", "101"},
    {"set_port_mac_limit",
     call(ctype_vorn_set_port_mac_limit, &port, -9),
     "set_system_mac_limit(2:7,-9,1)",
     "",
     {2}},
    {"get_system_mac_limit",
     call(ctype_vorn_get_system_mac_limit, out0),
     "get_system_mac_limit(0:0,&,",
     "",
     {},
     "",
     0},
    {"set_system_mac_limit", call(ctype_vorn_set_system_mac_limit, -8),
     "set_system_mac_limit(0:0,-8,4)"},
};

INSTANTIATE_TEST_SUITE_P(fdb, Rows, testing::ValuesIn(kRows), row_name);

class Answers final : public Recorder {
  bool get_port_mac_lock_ext(const Mp&, bool& on, bool& drop) override {
    on = false;
    drop = true;
    return true;
  }
};

TEST(MacLockExt, KeepsItsOutputsApart) {
  Answers sdk;
  host().reset();
  host().sdk = &sdk;
  Outputs outputs;
  EXPECT_EQ(1, ctype_vorn_get_port_mac_lock_ext(&port, outputs[0], outputs[1]));
  EXPECT_EQ("0 1", outputs.text());
}

}  // namespace
}  // namespace vorn::test
