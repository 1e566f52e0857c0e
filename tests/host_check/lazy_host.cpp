// SPDX-License-Identifier: Apache-2.0
//
// A process that defines nothing of a host but the LAG list: the library is refused when every
// symbol is bound at once, and loads when functions are bound as they are called.

#include <dlfcn.h>

#include <cstdio>

#include "vorn_lag_list.h"

std::list<LagNode> lag_list;

int main(int, char** argv) {
  if (dlopen(argv[1], RTLD_NOW | RTLD_LOCAL) != nullptr) {
    std::puts("bound at once although functions are missing");
    return 1;
  }
  if (dlopen(argv[1], RTLD_LAZY | RTLD_LOCAL) == nullptr) {
    std::puts(dlerror());
    return 1;
  }
  return 0;
}
