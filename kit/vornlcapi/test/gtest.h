// SPDX-License-Identifier: Apache-2.0
//
// switch.h under GoogleTest: a fixture, and failures that GoogleTest reports at their place.
#ifndef VORNLCAPI_TEST_GTEST_H_
#define VORNLCAPI_TEST_GTEST_H_

#include <gtest/gtest.h>

#include <string>

#include "vornlcapi/test/switch.h"

namespace vorn::test {

inline void report_to_googletest(const char* file, int line, const std::string& message) {
  ADD_FAILURE_AT(file, line) << message;
}

// A fresh switch for each test. At the end no frame may be left that nobody expected.
class SwitchTest : public testing::Test, public Switch {
 public:
  explicit SwitchTest(const std::string& description = "ports 8 speed 1000\n")
      : Switch(description), reporter_(set_reporter(&report_to_googletest)) {}
  explicit SwitchTest(const softcard::CardDescription& description)
      : Switch(description), reporter_(set_reporter(&report_to_googletest)) {}
  ~SwitchTest() override { set_reporter(reporter_); }

 protected:
  void TearDown() override { EXPECT_NO_FRAMES(); }

 private:
  Reporter reporter_;
};

}  // namespace vorn::test

#endif  // VORNLCAPI_TEST_GTEST_H_
