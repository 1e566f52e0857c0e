// SPDX-License-Identifier: Apache-2.0
//
// Start-up and shut-down. capi.h has the conventions. The strings that the C interface builds at
// load are in this file.
#include "vornlcapi/capi/lifecycle.h"

#include "api/module_names.h"
#include "capi/conversions.h"
#include "vorn_port_mapping.h"
#include "vornlcapi/api/lifecycle.h"

using namespace vorn::detail;

int ctype_vorn_lcmgr_api_init(int* value) { return fetch<vorn_lcmgr_api_init>(out(value)); }

int ctype_vorn_lcmgr_api_terminate() { return vorn_lcmgr_api_terminate(); }

// Calls the host itself, and stores its output whatever the result is.
int ctype_vorn_init_line_card(int* value) {
  int local = 0;
  const bool ok = vorn_init_line_card(local);
  *value = local;
  return ok;
}
