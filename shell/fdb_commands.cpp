// SPDX-License-Identifier: Apache-2.0
#include "entry_point.h"
#include "vornlcapi/api/fdb.h"
#include "vornlcapi/capi/fdb.h"

namespace shell {

void add_fdb_commands(CommandTable& table) {
  Family family(table, "fdb");
  family.add(VORN_BOTH(add_system_mac), {"mac", "vlan"}, "makes an address the switch's own");
  family.add(VORN_BOTH(add_system_mac_vlan_bitmap), {"mac", "bitmap"},
             "the same in each VLAN listed, such as 1,10-19");
  family.add(VORN_BOTH(delete_mac), {"vlan", "mac"}, "deletes an entry");
  family.add(VORN_BOTH(delete_mac_vlan_bitmap), {"mac", "bitmap"},
             "deletes an address in each VLAN listed");
  family.add(VORN_BOTH(delete_mac_by_mac), {"mac"}, "deletes an address in all VLANs");
  family.add(VORN_BOTH(add_mac_to_port), {"port", "mac", "vlan"},
             "binds an address to a port or LAG");
  family.add(VORN_API(delete_mac_from_port_all), {"port", "vlan"}, "does nothing and succeeds");
  family.add(VORN_BOTH(traverse_mac_table), {"out entry"}, "walks the MAC table");
  family.add(VORN_BOTH(get_fdb_aging_time), {"out seconds"}, "when unused entries go; 0 is never");
  family.add(VORN_BOTH(set_fdb_aging_time), {"seconds"}, "when unused entries go; 0 is never");
  family.add(VORN_BOTH(clear_fdb_table), {"and_static"}, "removes learned entries");
  family.add(VORN_BOTH(clear_fdb_by_vlan), {"vlan", "and_static"},
             "removes learned entries of a VLAN");
  family.add(VORN_BOTH(clear_fdb_by_port), {"port", "and_static"},
             "removes learned entries of a port");
  family.add(VORN_BOTH(get_port_mac_lock), {"port", "out on"}, "whether the addresses are locked");
  family.add(VORN_BOTH(set_port_mac_lock), {"port", "on"}, "locks the addresses");
  family.add(VORN_BOTH(get_port_mac_lock_ext), {"port", "out on", "out drop"},
             "lock, and whether unknown addresses are dropped");
  family.add(VORN_BOTH(set_port_mac_lock_ext), {"port", "on", "drop"},
             "lock, and whether unknown addresses are dropped");
  family.add(VORN_BOTH(get_port_mac_limit), {"port", "out limit"},
             "most addresses learned; -1 is no limit");
  family.add(VORN_BOTH(set_port_mac_limit), {"port", "limit"},
             "most addresses learned; -1 is no limit");
  family.add(VORN_API(get_system_mac_limit), {"always limit"},
             "most addresses learned by the switch; always fails, yet writes");
  family.add(VORN_C(get_system_mac_limit), {"out limit"}, "always fails and writes nothing");
  family.add(VORN_BOTH(set_system_mac_limit), {"limit"},
             "most addresses learned by the switch; -1 is no limit");
}

}  // namespace shell
