// SPDX-License-Identifier: Apache-2.0
#include "entry_point.h"
#include "vornlcapi/api/vlan.h"
#include "vornlcapi/capi/vlan.h"

namespace shell {

void add_vlan_commands(CommandTable& table) {
  Family family(table, "vlan");
  family.add(VORN_BOTH(create_vlan), {"vlan"}, "makes a VLAN without members");
  family.add(VORN_BOTH(delete_vlan), {"vlan"}, "deletes a VLAN");
  family.add(VORN_BOTH(add_ports_to_vlan), {"vlan", "tagged[]", "untagged[]"},
             "adds members; - is none");
  family.add(VORN_BOTH(delete_ports_from_vlan), {"vlan", "ports[]"}, "removes members");
  family.add(VORN_BOTH(get_vlan_info), {"vlan", "out tagged[]", "out untagged[]"}, "the members");
  family.add(VORN_BOTH(set_mac_vlan), {"mac", "vlan", "priority"},
             "VLAN of untagged frames from an address; VLAN 0 ends it");
  family.add(VORN_BOTH(set_ipv4_subnet_vlan), {"ip", "mask", "vlan", "priority"},
             "VLAN of untagged frames from a subnet; VLAN 0 ends it");
  family.add(VORN_BOTH(set_ipv6_subnet_vlan), {"ip6", "prefix_length", "vlan", "priority"},
             "VLAN of untagged frames from a subnet; VLAN 0 ends it");
  family.add(VORN_BOTH(get_port_pvid), {"port", "out pvid"}, "VLAN of untagged frames");
  family.add(VORN_BOTH(set_port_pvid), {"port", "pvid"}, "VLAN of untagged frames");
  family.add(VORN_API(set_ports_pvid), {"ports[]", "pvid"},
             "VLAN of untagged frames of every port listed");
  family.add(VORN_BOTH(get_port_vlan_priority), {"port", "vlan", "out priority"},
             "priority of untagged frames put into a VLAN");
  family.add(VORN_BOTH(set_port_vlan_priority), {"port", "vlan", "priority"},
             "priority of untagged frames put into a VLAN; 0 is all");
  family.add(VORN_BOTH(get_port_vlan_accept_frame), {"port", "out all"},
             "accepted frames: on is all, off only tagged");
  family.add(VORN_BOTH(set_port_vlan_accept_frame), {"port", "all"},
             "accepted frames: on is all, off only tagged");
  family.add(VORN_BOTH(set_port_protocol_vlan), {"port", "type", "protocol:hex", "vlan"},
             "VLAN of untagged frames of a protocol");
  family.add(VORN_BOTH(delete_port_protocol_vlan), {"port", "type", "protocol:hex"},
             "ends the rule for a protocol");
  family.add(VORN_BOTH(delete_port_protocol_vlan_all), {"port"},
             "ends the rules for all protocols");
}

}  // namespace shell
