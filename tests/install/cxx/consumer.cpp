// SPDX-License-Identifier: Apache-2.0
//
// A C++ program on an installed copy: sets something through the library and reads it back.

#include <cstdio>

#include "vornlcapi/api.h"

int main() {
  int out = 0;
  unsigned int pvid = 0;
  const Usp port(1, 1, 3);
  const bool ok = vorn_lcmgr_api_init(out) && vorn_create_vlan(10) &&
                  vorn_set_port_pvid(port, 10) && vorn_get_port_pvid(port, pvid) &&
                  vorn_lcmgr_api_terminate();
  const bool gone = !vorn_get_port_pvid(port, pvid);
  std::printf("C++: PVID %u\n", pvid);
  return ok && gone && pvid == 10 ? 0 : 1;
}
