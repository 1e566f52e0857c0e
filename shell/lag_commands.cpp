// SPDX-License-Identifier: Apache-2.0
#include "entry_point.h"
#include "vornlcapi/api/lag.h"
#include "vornlcapi/capi/lag.h"

namespace shell {

void add_lag_commands(CommandTable& table) {
  Family family(table, "lag");
  family.add(VORN_BOTH(create_lag), {"lag"}, "makes a LAG without members");
  family.add(VORN_BOTH(delete_lag), {"lag"}, "deletes a LAG");
  family.add(VORN_BOTH(add_ports_to_lag), {"lag", "ports[]"},
             "adds members; makes the LAG if need be");
  family.add(VORN_BOTH(delete_ports_from_lag), {"lag", "ports[]"}, "removes members");
  family.add(VORN_BOTH(set_lag_balancing_strategy), {"lag", "psc"},
             "what of a frame chooses its member, such as src_dst_mac");
  family.add(VORN_BOTH(get_lag_balancing_strategy), {"lag", "out psc"},
             "what of a frame chooses its member");
  family.add(VORN_BOTH(lag_usp_to_lag_id), {"lag", "out id"}, "id of a LAG interface");
  family.add(VORN_BOTH(lag_id_to_lag_usp), {"id", "out lag"}, "LAG interface of an id");
}

}  // namespace shell
