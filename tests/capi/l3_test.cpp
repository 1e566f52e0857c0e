// SPDX-License-Identifier: Apache-2.0
//
// Layer 3.
#include "vornlcapi/capi/l3.h"

#include "tests/capi/rows.h"

namespace vorn::test {
namespace {

const Row kRows[] = {
    {"create_l3_interface", call(ctype_vorn_create_l3_interface, mac, 10, out0),
     "create_l3_interface(02005e005311,10,&)", "101"},
    {"create_l3_interface_with_id", call(ctype_vorn_create_l3_interface_with_id, mac, 10, 41, kOn),
     "create_l3_interface_with_id(02005e005311,10,41,true)"},
    {"create_l3_interface_with_id", call(ctype_vorn_create_l3_interface_with_id, mac, 10, 41, kOff),
     "create_l3_interface_with_id(02005e005311,10,41,false)"},
    {"get_l3_interface", call(ctype_vorn_get_l3_interface, 41, out0, out1),
     "get_l3_interface(41,&,&)", "* *"},
    {"delete_l3_interface", call(ctype_vorn_delete_l3_interface, mac, 10),
     "delete_l3_interface(02005e005311,10)"},
    {"delete_l3_interface_by_id", call(ctype_vorn_delete_l3_interface_by_id, 41),
     "delete_l3_interface_by_id(41)"},
    {"delete_l3_interface_all", call(ctype_vorn_delete_l3_interface_all),
     "delete_l3_interface_all()"},
    {"add_l3_host_ip4", call(ctype_vorn_add_l3_host_ip4, &port, 71, mac, 41),
     "add_l3_host_ip4(2:7,false,71,02005e005311,41)"},
    {"add_l3_host_ip6", call(ctype_vorn_add_l3_host_ip6, &port, ip6, mac, 41),
     "add_l3_host_ip6(2:7,false,20010db8000000010000000000000011,02005e005311,41)"},
    {"delete_l3_host_by_interface", call(ctype_vorn_delete_l3_host_by_interface, 41, kOn),
     "delete_l3_host_by_interface(41,true)"},
    {"delete_l3_host_by_interface", call(ctype_vorn_delete_l3_host_by_interface, 41, kOff),
     "delete_l3_host_by_interface(41,false)"},
    {"delete_l3_host_by_network_ip4", call(ctype_vorn_delete_l3_host_by_network_ip4, 71),
     "delete_l3_host_by_network_ip4(71)"},
    {"delete_l3_host_by_network_ip6", call(ctype_vorn_delete_l3_host_by_network_ip6, ip6),
     "delete_l3_host_by_network_ip6(20010db8000000010000000000000011)"},
    {"delete_l3_host_by_addr_ip4", call(ctype_vorn_delete_l3_host_by_addr_ip4, 71, &port),
     "delete_l3_host_by_addr_ip4(71,2:7,false)"},
    {"delete_l3_host_by_addr_ip6", call(ctype_vorn_delete_l3_host_by_addr_ip6, ip6, &port),
     "delete_l3_host_by_addr_ip6(20010db8000000010000000000000011,2:7,false)"},
    {"clear_l3_host_table", call(ctype_vorn_clear_l3_host_table), "clear_l3_host_table()"},
    {"add_l3_route_ip4", call(ctype_vorn_add_l3_route_ip4, &port, 71, 72, mac, 41, 9),
     "add_l3_route_ip4(2:7,false,71,72,02005e005311,41,9)"},
    {"add_l3_route_ip6", call(ctype_vorn_add_l3_route_ip6, &port, ip6, mask6, mac, 41),
     "add_l3_route_ip6(2:7,false,20010db8000000010000000000000011,ffffffff000000020000000000000022,"
     "02005e005311,41)"},
    {"get_l3_route_by_subnet_ip4",
     call(ctype_vorn_get_l3_route_by_subnet_ip4, 71, 72, &port, out0, out1, out2),
     "get_l3_route_by_subnet_ip4(71,72,2:7,false,&,&,&)",
     "* * *",
     {2}},
    {"get_l3_route_by_subnet_ip6",
     call(ctype_vorn_get_l3_route_by_subnet_ip6, ip6, mask6, &port, out0, out1),
     "get_l3_route_by_subnet_ip6(20010db8000000010000000000000011,ffffffff000000020000000000000022,"
     "2:7,false,&,&)",
     "* *",
     {3}},
    {"delete_l3_route_by_interface", call(ctype_vorn_delete_l3_route_by_interface, 41, kOn),
     "delete_l3_route_by_interface(41,true)"},
    {"delete_l3_route_by_interface", call(ctype_vorn_delete_l3_route_by_interface, 41, kOff),
     "delete_l3_route_by_interface(41,false)"},
    {"delete_l3_route_by_subnet_ip4", call(ctype_vorn_delete_l3_route_by_subnet_ip4, 71, 72, &port),
     "delete_l3_route_by_subnet_ip4(71,72,2:7,false)"},
    {"delete_l3_route_by_subnet_ip6",
     call(ctype_vorn_delete_l3_route_by_subnet_ip6, ip6, mask6, &port),
     "delete_l3_route_by_subnet_ip6(20010db8000000010000000000000011,"
     "ffffffff000000020000000000000022,2:7,false)"},
    {"clear_l3_route_table", call(ctype_vorn_clear_l3_route_table), "clear_l3_route_table()"},
};

INSTANTIATE_TEST_SUITE_P(l3, Rows, testing::ValuesIn(kRows), row_name);

class Answers final : public Recorder {
  static void write_mac(unsigned char* to) { std::memcpy(to, "abcdef", 6); }

  bool get_l3_interface(unsigned int, unsigned int& vlan, unsigned char* to) override {
    vlan = 10;
    write_mac(to);
    return true;
  }
  bool get_l3_route_by_subnet_ip4(unsigned int, unsigned int, const Mp&, bool,
                                  unsigned char (&to)[6], unsigned int& interface,
                                  unsigned int& metric) override {
    write_mac(to);
    interface = 41;
    metric = 9;
    return true;
  }
  bool get_l3_route_by_subnet_ip6(const unsigned char*, const unsigned char*, const Mp&, bool,
                                  unsigned int& interface, unsigned char* to) override {
    interface = 42;
    write_mac(to);
    return true;
  }
};

TEST(L3, GettersKeepTheirOutputsApart) {
  Answers sdk;
  host().reset();
  host().sdk = &sdk;
  Outputs interface, ip4, ip6_route;
  EXPECT_EQ(1, ctype_vorn_get_l3_interface(41, interface[0], interface[1]));
  EXPECT_EQ("10 616263646566", interface.text());
  EXPECT_EQ(1, ctype_vorn_get_l3_route_by_subnet_ip4(71, 72, &port, ip4[0], ip4[1], ip4[2]));
  EXPECT_EQ("616263646566 41 9", ip4.text());
  EXPECT_EQ(1,
            ctype_vorn_get_l3_route_by_subnet_ip6(ip6, mask6, &port, ip6_route[0], ip6_route[1]));
  EXPECT_EQ("42 616263646566", ip6_route.text());
}

}  // namespace
}  // namespace vorn::test
