// SPDX-License-Identifier: Apache-2.0
//
// Addresses of the MAC table reach the SDK as the caller's own bytes; those of layer 3 and of the
// VLAN rules as copies.
#include "tests/capi/rows.h"
#include "vornlcapi/capi.h"

namespace vorn::test {
namespace {

// Keeps the pointers of the last operation.
class Pointers final : public Recorder {
 public:
  using Bytes = const unsigned char*;
  std::list<Bytes> seen;

 private:
  template <class... All>
  bool see(All... all) {
    seen = {all...};
    return true;
  }

  bool add_system_mac(Bytes m, unsigned) override { return see(m); }
  bool add_system_mac_vlan_bitmap(Bytes m, Bytes bitmap) override { return see(m, bitmap); }
  bool delete_mac(Bytes m, unsigned) override { return see(m); }
  bool delete_mac_vlan_bitmap(Bytes m, unsigned char* bitmap) override {
    return see(m, Bytes(bitmap));
  }
  bool delete_mac_by_mac(Bytes m) override { return see(m); }
  bool add_mac_to_port(const Mp&, Bytes m, unsigned, bool) override { return see(m); }

  bool set_mac_vlan(Bytes m, unsigned, unsigned) override { return see(m); }
  bool set_ipv6_subnet_vlan(Bytes ip, unsigned, unsigned, unsigned) override { return see(ip); }
  bool create_l3_interface(Bytes m, unsigned, unsigned&) override { return see(m); }
  bool create_l3_interface_with_id(Bytes m, unsigned, unsigned, bool) override { return see(m); }
  bool delete_l3_interface(Bytes m, unsigned) override { return see(m); }
  bool add_l3_host_ip4(Mp, bool, unsigned, Bytes m, unsigned) override { return see(m); }
  bool add_l3_host_ip6(Mp, bool, Bytes ip, Bytes m, unsigned) override { return see(ip, m); }
  bool delete_l3_host_by_network_ip6(Bytes ip) override { return see(ip); }
  bool delete_l3_host_by_addr_ip6(Bytes ip, const Mp&, bool) override { return see(ip); }
  bool add_l3_route_ip4(const Mp&, bool, unsigned, unsigned, Bytes m, unsigned, unsigned) override {
    return see(m);
  }
  bool add_l3_route_ip6(const Mp&, bool, Bytes ip, Bytes mask, Bytes m, unsigned) override {
    return see(ip, mask, m);
  }
  bool get_l3_route_by_subnet_ip6(Bytes ip, Bytes mask, const Mp&, bool, unsigned&,
                                  unsigned char* out) override {
    return see(ip, mask, Bytes(out));
  }
  bool delete_l3_route_by_subnet_ip6(Bytes ip, Bytes mask, const Mp&, bool) override {
    return see(ip, mask);
  }
};

bool is_callers(const unsigned char* bytes) {
  return bytes == mac || bytes == ip6 || bytes == mask6;
}

// Expects that all bytes which the SDK sees in these calls are the caller's own, or none of them.
void expect_seen(const std::vector<std::function<int(Outputs&)>>& calls, bool callers) {
  Pointers sdk;
  Outputs outputs;
  for (std::size_t i = 0; i < calls.size(); ++i) {
    SCOPED_TRACE(i);
    host().reset();
    host().sdk = &sdk;
    sdk.seen.clear();
    EXPECT_EQ(1, calls[i](outputs));
    EXPECT_FALSE(sdk.seen.empty());
    for (const unsigned char* bytes : sdk.seen) EXPECT_EQ(callers, is_callers(bytes));
  }
}

TEST(Bytes, OfTheMacTableAreHandedOn) {
  const std::vector<std::function<int(Outputs&)>> calls = {
      call(ctype_vorn_add_system_mac, mac, 10),
      call(ctype_vorn_add_system_mac_vlan_bitmap, mac, ip6),
      call(ctype_vorn_delete_mac, 10, mac),
      call(ctype_vorn_delete_mac_vlan_bitmap, mac, ip6),
      call(ctype_vorn_delete_mac_by_mac, mac),
      call(ctype_vorn_add_mac_to_port, &port, mac, 10),
  };
  expect_seen(calls, true);
}

TEST(Bytes, OfLayer3AndVlanRulesAreCopied) {
  const std::vector<std::function<int(Outputs&)>> calls = {
      call(ctype_vorn_set_mac_vlan, mac, 10, 5),
      call(ctype_vorn_set_ipv6_subnet_vlan, ip6, 64, 10, 5),
      call(ctype_vorn_create_l3_interface, mac, 10, out0),
      call(ctype_vorn_create_l3_interface_with_id, mac, 10, 41, kOn),
      call(ctype_vorn_delete_l3_interface, mac, 10),
      call(ctype_vorn_add_l3_host_ip4, &port, 71, mac, 41),
      call(ctype_vorn_add_l3_host_ip6, &port, ip6, mac, 41),
      call(ctype_vorn_delete_l3_host_by_network_ip6, ip6),
      call(ctype_vorn_delete_l3_host_by_addr_ip6, ip6, &port),
      call(ctype_vorn_add_l3_route_ip4, &port, 71, 72, mac, 41, 9),
      call(ctype_vorn_add_l3_route_ip6, &port, ip6, mask6, mac, 41),
      call(ctype_vorn_get_l3_route_by_subnet_ip6, ip6, mask6, &port, out0, out1),
      call(ctype_vorn_delete_l3_route_by_subnet_ip6, ip6, mask6, &port),
  };
  expect_seen(calls, false);
}

// The sanitizer guards both ends of local arrays.
TEST(Bytes, BeyondAnAddressAreNotRead) {
  unsigned char local_mac[6] = {2};
  unsigned char local_ip6[16] = {0x20};
  host().reset();
  EXPECT_EQ(1, ctype_vorn_set_mac_vlan(local_mac, 10, 5));
  EXPECT_EQ(1, ctype_vorn_set_ipv6_subnet_vlan(local_ip6, 64, 10, 5));
}

}  // namespace
}  // namespace vorn::test
