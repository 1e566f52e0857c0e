// SPDX-License-Identifier: Apache-2.0
//
// The entry points of the family `flow`, a row each; row.h says what stands in a row.
#ifndef ENTRYPOINTS_FLOW_H_
#define ENTRYPOINTS_FLOW_H_

#include "entrypoints/row.h"
#include "vornlcapi/api/flow.h"
#include "vornlcapi/capi/flow.h"

namespace entrypoints {

template <class Rows>
void add_flow(Rows& rows) {
  rows.add(VORN_BOTH(add_of_flow), {"flow", "out id", "udf?"},
           "adds a flow: any, or fields such as in_port=1/1/0 dst_ip=192.0.2.0/24");
  rows.add(VORN_BOTH(add_of_flow_with_id), {"flow", "id"}, "adds a flow under an id of its own");
  rows.add(VORN_BOTH(delete_of_flow), {"id"}, "deletes a flow");
  rows.add(VORN_BOTH(clear_of_flow_table), {}, "deletes all flows");
  rows.add(VORN_BOTH(add_of_flow_action), {"id", "kind", "param"},
           "appends an action, such as output 1/1/3 or set_vlan_id 10");
  rows.add(VORN_BOTH(delete_of_flow_action), {"id", "kind", "param"}, "removes an action");
  rows.add(VORN_BOTH(clear_of_flow_action), {"id"}, "removes all actions of a flow");
  rows.add(VORN_BOTH(set_of_flow_priority), {"id", "priority"}, "the highest priority wins");
  rows.add(VORN_BOTH(get_of_flow_priority), {"id", "out priority"}, "the highest priority wins");
  rows.add(VORN_BOTH(get_of_flow_stat_counter64), {"id", "out packets"},
           "packets that the flow has handled");
  rows.add(VORN_BOTH(get_of_flow_stat_counter32), {"id", "out packets"}, "the low 32 bits of it");
}

}  // namespace entrypoints

#endif  // ENTRYPOINTS_FLOW_H_
