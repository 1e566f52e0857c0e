// SPDX-License-Identifier: Apache-2.0
//
// The built library in the minimal host, which shares no header with it but the public ones: it
// loads with every symbol bound at once, offers what abi/ records, and hides the rest.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <fstream>
#include <string>

int minimal_host_main(int argc, char** argv);

namespace {

struct Library {
  Library() : handle(dlopen(VORN_LIBRARY, RTLD_NOW | RTLD_LOCAL)) {}
  ~Library() {
    if (handle != nullptr) dlclose(handle);
  }
  void* handle;
};

TEST(Exports, MinimalHostConfiguresAPort) {
  char name[] = "minimal_host";
  char library[] = VORN_LIBRARY;
  char* argv[] = {name, library, nullptr};
  EXPECT_EQ(0, minimal_host_main(2, argv));
}

TEST(Exports, EveryRecordedSymbolIsFound) {
  Library library;
  ASSERT_NE(nullptr, library.handle) << dlerror();
  std::ifstream record(VORN_ABI_RECORD);
  ASSERT_TRUE(record) << VORN_ABI_RECORD;
  int symbols = 0;
  for (std::string line; std::getline(record, line);) {
    if (line.empty() || line[0] == ' ') continue;  // the demangled form
    const std::string name = line.substr(line.find(' ') + 1);
    EXPECT_NE(nullptr, dlsym(library.handle, name.c_str())) << name;
    ++symbols;
  }
  EXPECT_GT(symbols, 300);
}

TEST(Exports, PrivateNamesAreHidden) {
  Library library;
  ASSERT_NE(nullptr, library.handle) << dlerror();
  for (const char* name : {"api_trace_enabled", "_ZN4vorn6detail17api_trace_enabledE"}) {
    EXPECT_EQ(nullptr, dlsym(library.handle, name)) << name;
  }
}

}  // namespace
