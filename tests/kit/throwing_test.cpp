// SPDX-License-Identifier: Apache-2.0
//
// The test kit as a program without GoogleTest uses it: expectations that do not hold are thrown.

#include <gtest/gtest.h>

#include "vornlcapi/test/switch.h"

namespace vorn::test {
namespace {

std::string thrown_by(void (*work)()) {
  try {
    work();
  } catch (const Failure& failure) {
    return failure.what();
  }
  return "";
}

TEST(ThrowingKit, FailuresNameTheirPlace) {
  Switch net("ports 2 speed 1000\n");
  const Station a = Switch::station(0);
  const Station b = Switch::station(1);
  net.inject(a, a.to_all());
  EXPECT_FRAME(b, a.to_all());
  EXPECT_NO_FRAMES();
  const std::string message = thrown_by([] { EXPECT_FRAME(Switch::port(1), "eth"); });
  EXPECT_NE(message.find("throwing_test.cpp:"), std::string::npos) << message;
  EXPECT_NE(message.find("1/1/1 sent nothing"), std::string::npos) << message;
}

TEST(ThrowingKit, BadInputIsNamed) {
  EXPECT_NE(thrown_by([] { Switch net("ports 2 sped 1000\n"); }).find("description:1: "),
            std::string::npos);
  Switch net;
  EXPECT_NE(thrown_by([] { Switch second; }), "");
  EXPECT_NE(thrown_by([] { frame_of("eth src=1"); }).find("eth src=1"), std::string::npos);
  EXPECT_NE(thrown_by([] { Switch::current().inject(Switch::port(99), Bytes(60)); }), "");
  EXPECT_NE(thrown_by([] { Switch::current().inject(Switch::port(0), Bytes()); }), "");
  EXPECT_NE(thrown_by([] { Switch::current().fail("make_vlan"); }), "");
  EXPECT_EQ(thrown_by([] { Switch::current().fail("create_vlan"); }), "");
}

}  // namespace
}  // namespace vorn::test
