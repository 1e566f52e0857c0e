// SPDX-License-Identifier: Apache-2.0
//
// The entry points of the family `lifecycle`, a row each; row.h says what stands in a row.
#ifndef ENTRYPOINTS_LIFECYCLE_H_
#define ENTRYPOINTS_LIFECYCLE_H_

#include "entrypoints/row.h"
#include "vornlcapi/api/lifecycle.h"
#include "vornlcapi/capi/lifecycle.h"

namespace entrypoints {

template <class Rows>
void add_lifecycle(Rows& rows) {
  rows.add(VORN_BOTH(lcmgr_api_init), {"out out"}, "starts the line card");
  rows.add(VORN_BOTH(lcmgr_api_terminate), {}, "ends it");
  rows.add(VORN_C(init_line_card), {"always out"}, "starts the host's side of the line card alone");
  rows.add(VORN_API(get_line_card_usp), {"out usp"}, "address of the line card");
  rows.add(VORN_API(free_call), {"number"}, "a service of the host's own");
  rows.add(VORN_API(set_lcmgr_trace), {"target", "on"},
           "switches tracing, such as fdb or trace_level_all");
}

}  // namespace entrypoints

#endif  // ENTRYPOINTS_LIFECYCLE_H_
