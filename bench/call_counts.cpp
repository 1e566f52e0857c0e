// SPDX-License-Identifier: Apache-2.0
//
// Makes one kind of call through the library again and again, in the process of
// examples/minimal_host, so that bench/call_counts.sh can count what the library executes for it.
//
//   call_counts <library> <call> <times>

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "vornlcapi/types.h"

namespace {

void* library = nullptr;

template <class Function>
Function* entry_point(const char* symbol) {
  void* const found = dlsym(library, symbol);
  if (found == nullptr) {
    std::fprintf(stderr, "call_counts: %s\n", dlerror());
    std::exit(2);
  }
  return reinterpret_cast<Function*>(found);
}

[[noreturn]] void fail(const char* what) {
  std::fprintf(stderr, "call_counts: %s\n", what);
  std::exit(2);
}

using Init = bool(int&);

// The calls. Each finds its entry point, then makes it `times` times; a call that does not answer
// as the minimal host does ends the program.

void get(long times) {
  auto* const call = entry_point<bool(const Usp&, unsigned int&)>("_Z18vorn_get_port_pvidRK3UspRj");
  unsigned int pvid = 0;
  for (const Usp port(1, 1, 3); times > 0; --times) {
    if (!call(port, pvid)) fail("vorn_get_port_pvid");
  }
}

void set(long times) {
  auto* const call = entry_point<bool(const Usp&, unsigned int)>("_Z18vorn_set_port_pvidRK3Uspj");
  for (const Usp port(1, 1, 3); times > 0; --times) {
    if (!call(port, 10)) fail("vorn_set_port_pvid");
  }
}

// The minimal host has no VLANs: what is counted is the way there and back.
void no_port(long times) {
  auto* const call = entry_point<bool(unsigned int)>("_Z16vorn_create_vlanj");
  for (; times > 0; --times) {
    if (call(10)) fail("vorn_create_vlan");
  }
}

void c_get(long times) {
  auto* const call = entry_point<int(usp_s*, unsigned int*)>("ctype_vorn_get_port_pvid");
  unsigned int pvid = 0;
  for (usp_s port = {1, 1, 3}; times > 0; --times) {
    if (call(&port, &pvid) != 1) fail("ctype_vorn_get_port_pvid");
  }
}

void c_set(long times) {
  auto* const call = entry_point<int(usp_s*, unsigned int)>("ctype_vorn_set_port_pvid");
  for (usp_s port = {1, 1, 3}; times > 0; --times) {
    if (call(&port, 10) != 1) fail("ctype_vorn_set_port_pvid");
  }
}

const struct {
  const char* name;
  void (*run)(long times);
} kCalls[] = {{"get", get}, {"set", set}, {"no_port", no_port}, {"c_get", c_get}, {"c_set", c_set}};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) fail("usage: call_counts <library> <call> <times>");
  library = dlopen(argv[1], RTLD_NOW);
  if (library == nullptr) fail(dlerror());
  int ports = 0;
  if (!entry_point<bool(int&)>("_Z19vorn_lcmgr_api_initRi")(ports)) fail("vorn_lcmgr_api_init");
  for (const auto& call : kCalls) {
    if (std::strcmp(call.name, argv[2]) != 0) continue;
    call.run(std::atol(argv[3]));
    return 0;
  }
  fail("there is no such call");
}
