// SPDX-License-Identifier: Apache-2.0
//
// Links the library that was built as a subproject, and hosts it with the minimal host.

#include "vornlcapi/api.h"

#ifdef __OPTIMIZE__
#error "the subproject's flags reached this project"
#endif

int main() {
  int ports = 0;
  unsigned int pvid = 0;
  return vorn_lcmgr_api_init(ports) && ports == 8 && vorn_set_port_pvid(Usp(1, 1, 3), 10) &&
                 vorn_get_port_pvid(Usp(1, 1, 3), pvid) && pvid == 10 && vorn_lcmgr_api_terminate()
             ? 0
             : 1;
}
