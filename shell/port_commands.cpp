// SPDX-License-Identifier: Apache-2.0
#include "entry_point.h"
#include "vornlcapi/api/port.h"
#include "vornlcapi/capi/port.h"

namespace shell {

void add_port_commands(CommandTable& table) {
  Family family(table, "port");
  family.add(VORN_BOTH(get_port_speed), {"port", "out speed"}, "speed in force, in Mbit/s");
  family.add(VORN_BOTH(set_port_speed), {"port", "speed"}, "fixes the speed, in Mbit/s");
  family.add(VORN_BOTH(get_port_duplex), {"port", "out duplex"},
             "duplex mode in force: half, full");
  family.add(VORN_BOTH(set_port_duplex), {"port", "duplex"}, "fixes the duplex mode: half, full");
  family.add(VORN_BOTH(get_port_autoneg), {"port", "out on"},
             "whether speed and duplex are negotiated");
  family.add(VORN_BOTH(set_port_autoneg), {"port", "on"}, "switches autonegotiation");
  family.add(VORN_BOTH(get_port_link_state), {"port", "out state"},
             "whether there is a link: up, down");
  family.add(VORN_BOTH(set_port_link_state), {"port", "state"},
             "forces the PHY down, or lets it come up");
  family.add(VORN_API(get_port_mtu), {"port", "out bytes"}, "largest frame");
  family.add(VORN_BOTH(set_port_mtu), {"port", "bytes"}, "largest frame, without tag and checksum");
  family.add(VORN_API(set_ports_mtu), {"ports[]", "bytes"}, "largest frame of every port listed");
  family.add(VORN_BOTH(get_port_state), {"port", "out on"}, "whether the port is switched on");
  family.add(VORN_BOTH(set_port_state), {"port", "on"}, "switches the port on or off");
  family.add(VORN_API(set_ports_state), {"ports[]", "on"}, "switches every port listed on or off");
  family.add(VORN_BOTH(get_port_ability), {"port", "out ability"}, "what the port can do");
  family.add(VORN_BOTH(set_port_advertising_ability), {"port", "ability"},
             "what negotiation offers, such as 1000_full+pause_rx");
  family.add(VORN_BOTH(get_port_advertising_ability), {"port", "out ability"},
             "what negotiation offers");
  family.add(VORN_BOTH(get_port_current_ability), {"port", "out ability"}, "what is in force");
  family.add(VORN_BOTH(get_port_peer_ability), {"port", "out ability"},
             "what the link partner offers");
  family.add(VORN_BOTH(get_port_flow_control_8023x), {"port", "out receive", "out transmit"},
             "whether pause frames are honoured and sent");
  family.add(VORN_BOTH(set_port_flow_control_8023x), {"port", "receive", "transmit"},
             "whether pause frames are honoured and sent");
  family.add(VORN_API(set_ports_flow_control_8023x), {"ports[]", "transmit", "receive"},
             "the same for every port listed, flags the other way round");
  family.add(VORN_BOTH(get_port_jaming_control), {"port", "out on"},
             "whether a half-duplex port jams");
  family.add(VORN_BOTH(set_port_jaming_control), {"port", "on"}, "whether a half-duplex port jams");
}

}  // namespace shell
