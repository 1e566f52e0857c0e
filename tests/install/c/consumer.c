/* SPDX-License-Identifier: Apache-2.0 */
/* A C program on an installed copy: sets something through the C binding and reads it back. */

#include <stdio.h>

#include "vornlcapi/capi.h"

int main(void) {
  int out = 0;
  unsigned int pvid = 0;
  usp_s port = {1, 1, 3};
  const int ok = ctype_vorn_lcmgr_api_init(&out) && ctype_vorn_create_vlan(10) &&
                 ctype_vorn_set_port_pvid(&port, 10) && ctype_vorn_get_port_pvid(&port, &pvid) &&
                 ctype_vorn_lcmgr_api_terminate();
  const int gone = !ctype_vorn_get_port_pvid(&port, &pvid);
  printf("C: PVID %u\n", pvid);
  return ok && gone && pvid == 10 ? 0 : 1;
}
