// SPDX-License-Identifier: Apache-2.0
#include "entry_point.h"
#include "vornlcapi/api/packet.h"
#include "vornlcapi/capi/packet.h"

namespace shell {

void add_packet_commands(CommandTable& table) {
  Family family(table, "packet");
  family.add(VORN_BOTH(send_packet_from_cpu), {"packet"},
             "has the switch forward a frame; control in front passes the spanning tree");
  family.add(VORN_BOTH(send_packet_by_port), {"tagged[]", "untagged[]", "packet"},
             "sends a frame out of the ports listed");
}

}  // namespace shell
