// SPDX-License-Identifier: Apache-2.0
//
// The entry points of the family `traffic`, a row each; row.h says what stands in a row.
#ifndef ENTRYPOINTS_TRAFFIC_H_
#define ENTRYPOINTS_TRAFFIC_H_

#include "entrypoints/row.h"
#include "vornlcapi/api/traffic.h"
#include "vornlcapi/capi/traffic.h"

namespace entrypoints {

template <class Rows>
void add_traffic(Rows& rows) {
  rows.add(VORN_BOTH(get_port_unicast_control), {"port", "out frames_per_second"},
           "limit of unknown unicast; 0 is none");
  rows.add(VORN_BOTH(set_port_unicast_control), {"port", "frames_per_second"},
           "limit of unknown unicast; 0 is none");
  rows.add(VORN_BOTH(get_port_multicast_control), {"port", "out frames_per_second"},
           "limit of multicast; 0 is none");
  rows.add(VORN_BOTH(set_port_multicast_control), {"port", "frames_per_second"},
           "limit of multicast; 0 is none");
  rows.add(VORN_BOTH(get_port_broadcast_control), {"port", "out frames_per_second"},
           "limit of broadcast; 0 is none");
  rows.add(VORN_BOTH(set_port_broadcast_control), {"port", "frames_per_second"},
           "limit of broadcast; 0 is none");
  rows.add(VORN_BOTH(get_port_mirror), {"out mirror_to", "mirrored", "out type"},
           "where a port is mirrored to");
  rows.add(VORN_BOTH(set_port_mirror), {"mirror_to", "mirrored", "type"},
           "copies frames to another port: none, ingress, egress, both");
  rows.add(VORN_BOTH(get_port_flood_blocking_cpu), {"port", "out type"},
           "floods that are kept from the CPU");
  rows.add(VORN_BOTH(set_port_flood_blocking_cpu), {"ports[]", "type"},
           "keeps floods from the CPU, such as multicast+broadcast");
  rows.add(VORN_BOTH(get_port_flood_blocking), {"from", "to", "out type"},
           "floods that are kept from a port");
  rows.add(VORN_BOTH(set_port_flood_blocking), {"ports[]", "to", "type"},
           "keeps floods of the ports listed from a port");
  rows.add(VORN_BOTH(get_port_switch_unknown_unicast_to_cpu), {"port", "out enabled"},
           "whether unknown unicast goes to the CPU");
  rows.add(VORN_BOTH(set_port_switch_unknown_unicast_to_cpu), {"port", "enable"},
           "whether unknown unicast goes to the CPU");
  rows.add(VORN_BOTH(get_switch_unknown_unicast_to_cpu), {"out enabled"}, "the same for all ports");
  rows.add(VORN_BOTH(set_switch_unknown_unicast_to_cpu), {"enable"}, "the same for all ports");
  rows.add(VORN_BOTH(get_port_cos_mapping), {"port", "priority", "out queue"},
           "egress queue of a priority");
  rows.add(VORN_BOTH(set_port_cos_mapping), {"port", "priority", "queue"},
           "egress queue of a priority");
  rows.add(VORN_BOTH(get_port_ingress_discarding), {"port", "out type"},
           "frames thrown away as they come in");
  rows.add(VORN_BOTH(set_port_ingress_discarding), {"port", "type"},
           "throws frames away as they come in: none, untagged, tagged, all");
  rows.add(VORN_BOTH(get_port_egress_admin_state), {"port", "out on"}, "whether the port sends");
  rows.add(VORN_BOTH(set_port_egress_admin_state), {"port", "on"}, "whether the port sends");
  rows.add(VORN_BOTH(set_port_l2_enable), {"port", "enable"},
           "whether the port forwards by the MAC table");
  rows.add(VORN_BOTH(get_switch_forward_mode), {"out mode"},
           "part of the flow table in forwarding");
  rows.add(VORN_BOTH(set_switch_forward_mode), {"mode"},
           "part of the flow table in forwarding: hybrid, flow, normal");
}

}  // namespace entrypoints

#endif  // ENTRYPOINTS_TRAFFIC_H_
