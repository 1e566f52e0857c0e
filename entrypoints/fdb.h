// SPDX-License-Identifier: Apache-2.0
//
// The entry points of the family `fdb`, a row each; row.h says what stands in a row.
#ifndef ENTRYPOINTS_FDB_H_
#define ENTRYPOINTS_FDB_H_

#include "entrypoints/row.h"
#include "vornlcapi/api/fdb.h"
#include "vornlcapi/capi/fdb.h"

namespace entrypoints {

template <class Rows>
void add_fdb(Rows& rows) {
  rows.add(VORN_BOTH(add_system_mac), {"mac", "vlan"}, "makes an address the switch's own");
  rows.add(VORN_BOTH(add_system_mac_vlan_bitmap), {"mac", "bitmap"},
           "the same in each VLAN listed, such as 1,10-19");
  rows.add(VORN_BOTH(delete_mac), {"vlan", "mac"}, "deletes an entry");
  rows.add(VORN_BOTH(delete_mac_vlan_bitmap), {"mac", "bitmap"},
           "deletes an address in each VLAN listed");
  rows.add(VORN_BOTH(delete_mac_by_mac), {"mac"}, "deletes an address in all VLANs");
  rows.add(VORN_BOTH(add_mac_to_port), {"port", "mac", "vlan"},
           "binds an address to a port or LAG");
  rows.add(VORN_API(delete_mac_from_port_all), {"port", "vlan"}, "does nothing and succeeds");
  rows.add(VORN_BOTH(traverse_mac_table), {"out entry"}, "walks the MAC table");
  rows.add(VORN_BOTH(get_fdb_aging_time), {"out seconds"}, "when unused entries go; 0 is never");
  rows.add(VORN_BOTH(set_fdb_aging_time), {"seconds"}, "when unused entries go; 0 is never");
  rows.add(VORN_BOTH(clear_fdb_table), {"and_static"}, "removes learned entries");
  rows.add(VORN_BOTH(clear_fdb_by_vlan), {"vlan", "and_static"},
           "removes learned entries of a VLAN");
  rows.add(VORN_BOTH(clear_fdb_by_port), {"port", "and_static"},
           "removes learned entries of a port");
  rows.add(VORN_BOTH(get_port_mac_lock), {"port", "out on"}, "whether the addresses are locked");
  rows.add(VORN_BOTH(set_port_mac_lock), {"port", "on"}, "locks the addresses");
  rows.add(VORN_BOTH(get_port_mac_lock_ext), {"port", "out on", "out drop"},
           "lock, and whether unknown addresses are dropped");
  rows.add(VORN_BOTH(set_port_mac_lock_ext), {"port", "on", "drop"},
           "lock, and whether unknown addresses are dropped");
  rows.add(VORN_BOTH(get_port_mac_limit), {"port", "out limit"},
           "most addresses learned; -1 is no limit");
  rows.add(VORN_BOTH(set_port_mac_limit), {"port", "limit"},
           "most addresses learned; -1 is no limit");
  rows.add(VORN_API(get_system_mac_limit), {"always limit"},
           "most addresses learned by the switch; always fails, yet writes");
  rows.add(VORN_C(get_system_mac_limit), {"out limit"}, "always fails and writes nothing");
  rows.add(VORN_BOTH(set_system_mac_limit), {"limit"},
           "most addresses learned by the switch; -1 is no limit");
}

}  // namespace entrypoints

#endif  // ENTRYPOINTS_FDB_H_
