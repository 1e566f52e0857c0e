// SPDX-License-Identifier: Apache-2.0
//
// A process with the minimal host in it: loads the library, which finds the host's functions here,
// and makes a few calls.
//
//   minimal_host [library]       (libvornlcapi.so.0 where the loader finds it by default)

#include <dlfcn.h>

#include <cstdio>

#include "vornlcapi/records.h"

namespace {

// The library's function of that name; null, and a message, when there is none.
template <class Function>
Function* find(void* library, const char* name) {
  void* const symbol = dlsym(library, name);
  if (symbol == nullptr) std::fprintf(stderr, "%s\n", dlerror());
  return reinterpret_cast<Function*>(symbol);
}

}  // namespace

int main(int argc, char** argv) {
  void* const library = dlopen(argc > 1 ? argv[1] : "libvornlcapi.so.0", RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) {
    std::fprintf(stderr, "%s\n", dlerror());
    return 1;
  }
  const auto init = find<int(int*)>(library, "ctype_vorn_lcmgr_api_init");
  const auto terminate = find<int()>(library, "ctype_vorn_lcmgr_api_terminate");
  const auto set_pvid = find<int(usp_s*, unsigned int)>(library, "ctype_vorn_set_port_pvid");
  const auto get_pvid = find<int(usp_s*, unsigned int*)>(library, "ctype_vorn_get_port_pvid");
  if (init == nullptr || terminate == nullptr || set_pvid == nullptr || get_pvid == nullptr) {
    return 1;
  }

  usp_s port = {1, 1, 3};
  unsigned int pvid = 0;
  int ports = 0;
  const bool early = get_pvid(&port, &pvid) != 0;
  const bool ok = !early && init(&ports) && set_pvid(&port, 10) && get_pvid(&port, &pvid);
  const bool refused = !set_pvid(&port, 4095);
  std::printf("%d ports; 1/1/3 has PVID %u\n", ports, pvid);
  return ok && refused && pvid == 10 && terminate() && !get_pvid(&port, &pvid) ? 0 : 1;
}
