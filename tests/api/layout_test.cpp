// SPDX-License-Identifier: Apache-2.0
//
// The order of private fields, which headers cannot assert, and the few things that value classes
// do. Sizes and offsets of the public ones are asserted in types.h.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>

#include "vorn_sdk_refusing.h"
#include "vornlcapi/types.h"

namespace {

// The n-th 32-bit word of an object.
template <class T>
unsigned int word(const T& object, std::size_t n) {
  unsigned int value = 0;
  std::memcpy(&value, reinterpret_cast<const unsigned char*>(&object) + 4 * n, sizeof value);
  return value;
}

TEST(Layout, AddressesAreTheirWordsInOrder) {
  const Usp usp(1, 2, 3);
  const Mp mp(4, 5);
  for (unsigned int i = 0; i < 3; ++i) EXPECT_EQ(word(usp, i), i + 1);
  for (unsigned int i = 0; i < 2; ++i) EXPECT_EQ(word(mp, i), i + 4);
}

TEST(Layout, ListAndVectorStandBehindTheWords) {
  LagNode lag(6);
  EXPECT_EQ(word(lag, 0), 6U);
  EXPECT_EQ(
      reinterpret_cast<unsigned char*>(&lag.members()) - reinterpret_cast<unsigned char*>(&lag),
      static_cast<std::ptrdiff_t>(sizeof(void*)));
  Packet packet;
  packet.set_type(7);
  packet.set_data({1, 2});
  packet.set_data({1, 2, 3});
  EXPECT_EQ(packet.data().size(), 3U);
  EXPECT_EQ(word(packet, 0), 3U);
  EXPECT_EQ(word(packet, 1), 7U);
  EXPECT_EQ(reinterpret_cast<const unsigned char*>(&packet.data()) -
                reinterpret_cast<const unsigned char*>(&packet),
            8);
  packet.set_data({});
  EXPECT_EQ(packet.length(), 0U);
}

// Operations of the refusing SDK have the positions that the library calls.
TEST(Layout, TheRefusingSdkMovesNoSlot) {
  static_assert(sizeof(VornSdkRefusing) == sizeof(VornSdkBase), "no data member");
  const auto same = [](const auto base, const auto derived) {
    static_assert(sizeof base == sizeof derived, "");
    return std::memcmp(&base, &derived, sizeof base) == 0;
  };
  EXPECT_TRUE(same(&VornSdkBase::create_vlan, &VornSdkRefusing::create_vlan));
  EXPECT_TRUE(same(&VornSdkBase::get_port_mtu, &VornSdkRefusing::get_port_mtu));
  EXPECT_TRUE(same(&VornSdkBase::set_port_pvid, &VornSdkRefusing::set_port_pvid));
  EXPECT_TRUE(same(&VornSdkBase::traverse_mac_table, &VornSdkRefusing::traverse_mac_table));
  EXPECT_TRUE(same(&VornSdkBase::set_lcmgr_trace, &VornSdkRefusing::set_lcmgr_trace));
  EXPECT_FALSE(same(&VornSdkBase::create_vlan, &VornSdkRefusing::delete_vlan));
}

TEST(ValueClasses, CopiesAreIndependent) {
  LagNode lag(6);
  lag.members().emplace_back(2, 7);
  LagNode copy(lag);
  copy.members().clear();
  EXPECT_EQ(lag.members().size(), 1U);
}

TEST(ValueClasses, FlowsStartWithoutAPort) {
  EXPECT_EQ(of_flow_s().in_port, Usp(0, 0, 0));
  EXPECT_EQ(of_flow_mp_s().in_port, Mp(0, 0));
}

}  // namespace
