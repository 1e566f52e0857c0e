// SPDX-License-Identifier: Apache-2.0
//
// The entry points of the family `stp`, a row each; row.h says what stands in a row.
#ifndef ENTRYPOINTS_STP_H_
#define ENTRYPOINTS_STP_H_

#include "entrypoints/row.h"
#include "vornlcapi/api/stp.h"
#include "vornlcapi/capi/stp.h"

namespace entrypoints {

template <class Rows>
void add_stp(Rows& rows) {
  rows.add(VORN_BOTH(get_port_stp_state), {"port", "out state"}, "spanning-tree state");
  rows.add(VORN_BOTH(set_port_stp_state), {"port", "state"},
           "spanning-tree state; blocking also flushes the port");
  rows.add(VORN_API(set_ports_stp_state), {"ports[]", "state"},
           "spanning-tree state of every port listed; flushes nothing");
  rows.add(VORN_BOTH(get_port_mstp_state), {"port", "out state", "instance"},
           "state in a spanning-tree instance");
  rows.add(VORN_BOTH(set_port_mstp_state), {"port", "state", "instance"},
           "state in a spanning-tree instance");
  rows.add(VORN_API(set_ports_mstp_state), {"ports[]", "state", "instance"},
           "state of every port listed in an instance");
  rows.add(VORN_BOTH(get_port_bpdu_processing), {"port", "out on"}, "whether BPDUs go to the CPU");
  rows.add(VORN_BOTH(set_port_bpdu_processing), {"port", "on"}, "whether BPDUs go to the CPU");
}

}  // namespace entrypoints

#endif  // ENTRYPOINTS_STP_H_
