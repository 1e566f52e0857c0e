// SPDX-License-Identifier: Apache-2.0
#include "entry_point.h"
#include "vornlcapi/api/stp.h"
#include "vornlcapi/capi/stp.h"

namespace shell {

void add_stp_commands(CommandTable& table) {
  Family family(table, "stp");
  family.add(VORN_BOTH(get_port_stp_state), {"port", "out state"}, "spanning-tree state");
  family.add(VORN_BOTH(set_port_stp_state), {"port", "state"},
             "spanning-tree state; blocking also flushes the port");
  family.add(VORN_API(set_ports_stp_state), {"ports[]", "state"},
             "spanning-tree state of every port listed; flushes nothing");
  family.add(VORN_BOTH(get_port_mstp_state), {"port", "out state", "instance"},
             "state in a spanning-tree instance");
  family.add(VORN_BOTH(set_port_mstp_state), {"port", "state", "instance"},
             "state in a spanning-tree instance");
  family.add(VORN_API(set_ports_mstp_state), {"ports[]", "state", "instance"},
             "state of every port listed in an instance");
  family.add(VORN_BOTH(get_port_bpdu_processing), {"port", "out on"},
             "whether BPDUs go to the CPU");
  family.add(VORN_BOTH(set_port_bpdu_processing), {"port", "on"}, "whether BPDUs go to the CPU");
}

}  // namespace shell
