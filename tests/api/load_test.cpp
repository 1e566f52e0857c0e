// SPDX-License-Identifier: Apache-2.0
//
// The shared library in a process that hosts it: what loading it builds, in order, and that it
// works on this process's functions and LAG list. The library is loaded once for all tests here.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "tests/support/recorder.h"

namespace {

// What registered a destructor while `recording`: the text of a string, "stream" for a
// standard-stream initialiser.
bool recording = false;
std::vector<std::string>& registered() {
  static auto* const all = new std::vector<std::string>;
  return *all;
}

void record(void (*destroy)(void*), const void* object) {
  Dl_info info = {};
  if (dladdr(reinterpret_cast<void*>(destroy), &info) == 0 || info.dli_sname == nullptr) return;
  if (std::strstr(info.dli_sname, "basic_string") != nullptr) {
    registered().push_back(*static_cast<const std::string*>(object));
  } else if (std::strstr(info.dli_sname, "ios_base4Init") != nullptr) {
    registered().emplace_back("stream");
  }
}

}  // namespace

// Stands in front of the runtime's function for this whole process.
extern "C" int __cxa_atexit(void (*destroy)(void*), void* object, void* library) {
  using Function = int (*)(void (*)(void*), void*, void*);
  static const auto next = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "__cxa_atexit"));
  if (recording) record(destroy, object);
  return next(destroy, object, library);
}

namespace vorn::test {
namespace {

void* library() {
  static void* const handle = [] {
    recording = true;
    void* const opened = dlopen(VORN_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    recording = false;
    return opened;
  }();
  return handle;
}

template <class Function>
Function* entry_point(const char* mangled_name) {
  return reinterpret_cast<Function*>(dlsym(library(), mangled_name));
}

TEST(Load, BuildsTheNamesOfTheCBindingFirstAndOfTheApiLast) {
  ASSERT_NE(library(), nullptr) << dlerror();
  const std::vector<std::string> names{"trace_level_xrl",
                                       "trace_level_api",
                                       "trace_level_sdk",
                                       "trace_level_all",
                                       "finder",
                                       "card_manager",
                                       "lcmgr",
                                       "fdb",
                                       "vlan",
                                       "sif",
                                       "switch_mirror",
                                       "policy",
                                       "stat",
                                       "lldp",
                                       "rstp",
                                       "snmp",
                                       "lacp",
                                       "tuntap"};
  std::vector<std::string> expected;
  const auto unit = [&expected](const std::vector<std::string>& strings) {
#if !defined(_GLIBCXX_RELEASE) || _GLIBCXX_RELEASE < 13  // newer ones build it in the runtime
    expected.emplace_back("stream");
#endif
    expected.insert(expected.end(), strings.begin(), strings.end());
  };
  unit(names);  // C binding
  unit({});     // socket
  unit(names);  // API
  EXPECT_EQ(registered(), expected);
}

TEST(Load, WorksOnTheHostsFunctionsAndList) {
  ASSERT_NE(library(), nullptr) << dlerror();
  auto* const init = entry_point<bool(int&)>("_Z19vorn_lcmgr_api_initRi");
  auto* const terminate = entry_point<bool()>("_Z24vorn_lcmgr_api_terminatev");
  auto* const delete_lag = entry_point<bool(const Usp&)>("_Z15vorn_delete_lagRK3Usp");
  ASSERT_TRUE(init != nullptr && terminate != nullptr && delete_lag != nullptr);
  host().reset();
  host().has_sdk = false;
  int out = 0;
  EXPECT_FALSE(delete_lag(kLag));
  EXPECT_TRUE(init(out));
  EXPECT_TRUE(delete_lag(kLag));
  EXPECT_EQ(lag_list.size(), 1U);
  EXPECT_TRUE(terminate());
  EXPECT_FALSE(delete_lag(kEmptyLag));
  EXPECT_EQ(host().steps.size(), 13U);

  // Not the library's to catch.
  host().reset();
  host().throws = 4;
  EXPECT_THROW(delete_lag(kLag), Thrown);
}

}  // namespace
}  // namespace vorn::test
