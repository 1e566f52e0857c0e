// SPDX-License-Identifier: Apache-2.0
//
// The entry points of the family `vlan`, a row each; row.h says what stands in a row.
#ifndef ENTRYPOINTS_VLAN_H_
#define ENTRYPOINTS_VLAN_H_

#include "entrypoints/row.h"
#include "vornlcapi/api/vlan.h"
#include "vornlcapi/capi/vlan.h"

namespace entrypoints {

template <class Rows>
void add_vlan(Rows& rows) {
  rows.add(VORN_BOTH(create_vlan), {"vlan"}, "makes a VLAN without members");
  rows.add(VORN_BOTH(delete_vlan), {"vlan"}, "deletes a VLAN");
  rows.add(VORN_BOTH(add_ports_to_vlan), {"vlan", "tagged[]", "untagged[]"},
           "adds members; - is none");
  rows.add(VORN_BOTH(delete_ports_from_vlan), {"vlan", "ports[]"}, "removes members");
  rows.add(VORN_BOTH(get_vlan_info), {"vlan", "out tagged[]", "out untagged[]"}, "the members");
  rows.add(VORN_BOTH(set_mac_vlan), {"mac", "vlan", "priority"},
           "VLAN of untagged frames from an address; VLAN 0 ends it");
  rows.add(VORN_BOTH(set_ipv4_subnet_vlan), {"ip", "mask", "vlan", "priority"},
           "VLAN of untagged frames from a subnet; VLAN 0 ends it");
  rows.add(VORN_BOTH(set_ipv6_subnet_vlan), {"ip6", "prefix_length", "vlan", "priority"},
           "VLAN of untagged frames from a subnet; VLAN 0 ends it");
  rows.add(VORN_BOTH(get_port_pvid), {"port", "out pvid"}, "VLAN of untagged frames");
  rows.add(VORN_BOTH(set_port_pvid), {"port", "pvid"}, "VLAN of untagged frames");
  rows.add(VORN_API(set_ports_pvid), {"ports[]", "pvid"},
           "VLAN of untagged frames of every port listed");
  rows.add(VORN_BOTH(get_port_vlan_priority), {"port", "vlan", "out priority"},
           "priority of untagged frames put into a VLAN");
  rows.add(VORN_BOTH(set_port_vlan_priority), {"port", "vlan", "priority"},
           "priority of untagged frames put into a VLAN; 0 is all");
  rows.add(VORN_BOTH(get_port_vlan_accept_frame), {"port", "out all"},
           "accepted frames: on is all, off only tagged");
  rows.add(VORN_BOTH(set_port_vlan_accept_frame), {"port", "all"},
           "accepted frames: on is all, off only tagged");
  rows.add(VORN_BOTH(set_port_protocol_vlan), {"port", "type", "protocol:hex", "vlan"},
           "VLAN of untagged frames of a protocol");
  rows.add(VORN_BOTH(delete_port_protocol_vlan), {"port", "type", "protocol:hex"},
           "ends the rule for a protocol");
  rows.add(VORN_BOTH(delete_port_protocol_vlan_all), {"port"}, "ends the rules for all protocols");
}

}  // namespace entrypoints

#endif  // ENTRYPOINTS_VLAN_H_
