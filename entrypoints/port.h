// SPDX-License-Identifier: Apache-2.0
//
// The entry points of the family `port`, a row each; row.h says what stands in a row.
#ifndef ENTRYPOINTS_PORT_H_
#define ENTRYPOINTS_PORT_H_

#include "entrypoints/row.h"
#include "vornlcapi/api/port.h"
#include "vornlcapi/capi/port.h"

namespace entrypoints {

template <class Rows>
void add_port(Rows& rows) {
  rows.add(VORN_BOTH(get_port_speed), {"port", "out speed"}, "speed in force, in Mbit/s");
  rows.add(VORN_BOTH(set_port_speed), {"port", "speed"}, "fixes the speed, in Mbit/s");
  rows.add(VORN_BOTH(get_port_duplex), {"port", "out duplex"}, "duplex mode in force: half, full");
  rows.add(VORN_BOTH(set_port_duplex), {"port", "duplex"}, "fixes the duplex mode: half, full");
  rows.add(VORN_BOTH(get_port_autoneg), {"port", "out on"},
           "whether speed and duplex are negotiated");
  rows.add(VORN_BOTH(set_port_autoneg), {"port", "on"}, "switches autonegotiation");
  rows.add(VORN_BOTH(get_port_link_state), {"port", "out state"},
           "whether there is a link: up, down");
  rows.add(VORN_BOTH(set_port_link_state), {"port", "state"},
           "forces the PHY down, or lets it come up");
  rows.add(VORN_API(get_port_mtu), {"port", "out bytes"}, "largest frame");
  rows.add(VORN_BOTH(set_port_mtu), {"port", "bytes"}, "largest frame, without tag and checksum");
  rows.add(VORN_API(set_ports_mtu), {"ports[]", "bytes"}, "largest frame of every port listed");
  rows.add(VORN_BOTH(get_port_state), {"port", "out on"}, "whether the port is switched on");
  rows.add(VORN_BOTH(set_port_state), {"port", "on"}, "switches the port on or off");
  rows.add(VORN_API(set_ports_state), {"ports[]", "on"}, "switches every port listed on or off");
  rows.add(VORN_BOTH(get_port_ability), {"port", "out ability"}, "what the port can do");
  rows.add(VORN_BOTH(set_port_advertising_ability), {"port", "ability"},
           "what negotiation offers, such as 1000_full+pause_rx");
  rows.add(VORN_BOTH(get_port_advertising_ability), {"port", "out ability"},
           "what negotiation offers");
  rows.add(VORN_BOTH(get_port_current_ability), {"port", "out ability"}, "what is in force");
  rows.add(VORN_BOTH(get_port_peer_ability), {"port", "out ability"},
           "what the link partner offers");
  rows.add(VORN_BOTH(get_port_flow_control_8023x), {"port", "out receive", "out transmit"},
           "whether pause frames are honoured and sent");
  rows.add(VORN_BOTH(set_port_flow_control_8023x), {"port", "receive", "transmit"},
           "whether pause frames are honoured and sent");
  rows.add(VORN_API(set_ports_flow_control_8023x), {"ports[]", "transmit", "receive"},
           "the same for every port listed, flags the other way round");
  rows.add(VORN_BOTH(get_port_jaming_control), {"port", "out on"},
           "whether a half-duplex port jams");
  rows.add(VORN_BOTH(set_port_jaming_control), {"port", "on"}, "whether a half-duplex port jams");
}

}  // namespace entrypoints

#endif  // ENTRYPOINTS_PORT_H_
