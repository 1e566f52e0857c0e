// SPDX-License-Identifier: Apache-2.0
#include "entry_point.h"
#include "vornlcapi/api/lifecycle.h"
#include "vornlcapi/capi/lifecycle.h"

namespace shell {

void add_lifecycle_commands(CommandTable& table) {
  Family family(table, "lifecycle");
  family.add(VORN_BOTH(lcmgr_api_init), {"out out"}, "starts the line card");
  family.add(VORN_BOTH(lcmgr_api_terminate), {}, "ends it");
  family.add(VORN_C(init_line_card), {"always out"},
             "starts the host's side of the line card alone");
  family.add(VORN_API(get_line_card_usp), {"out usp"}, "address of the line card");
  family.add(VORN_API(free_call), {"number"}, "a service of the host's own");
  family.add(VORN_API(set_lcmgr_trace), {"target", "on"},
             "switches tracing, such as fdb or trace_level_all");
}

}  // namespace shell
