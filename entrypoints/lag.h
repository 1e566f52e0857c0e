// SPDX-License-Identifier: Apache-2.0
//
// The entry points of the family `lag`, a row each; row.h says what stands in a row.
#ifndef ENTRYPOINTS_LAG_H_
#define ENTRYPOINTS_LAG_H_

#include "entrypoints/row.h"
#include "vornlcapi/api/lag.h"
#include "vornlcapi/capi/lag.h"

namespace entrypoints {

template <class Rows>
void add_lag(Rows& rows) {
  rows.add(VORN_BOTH(create_lag), {"lag"}, "makes a LAG without members");
  rows.add(VORN_BOTH(delete_lag), {"lag"}, "deletes a LAG");
  rows.add(VORN_BOTH(add_ports_to_lag), {"lag", "ports[]"},
           "adds members; makes the LAG if need be");
  rows.add(VORN_BOTH(delete_ports_from_lag), {"lag", "ports[]"}, "removes members");
  rows.add(VORN_BOTH(set_lag_balancing_strategy), {"lag", "psc"},
           "what of a frame chooses its member, such as src_dst_mac");
  rows.add(VORN_BOTH(get_lag_balancing_strategy), {"lag", "out psc"},
           "what of a frame chooses its member");
  rows.add(VORN_BOTH(lag_usp_to_lag_id), {"lag", "out id"}, "id of a LAG interface");
  rows.add(VORN_BOTH(lag_id_to_lag_usp), {"id", "out lag"}, "LAG interface of an id");
}

}  // namespace entrypoints

#endif  // ENTRYPOINTS_LAG_H_
