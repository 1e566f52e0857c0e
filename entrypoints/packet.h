// SPDX-License-Identifier: Apache-2.0
//
// The entry points of the family `packet`, a row each; row.h says what stands in a row.
#ifndef ENTRYPOINTS_PACKET_H_
#define ENTRYPOINTS_PACKET_H_

#include "entrypoints/row.h"
#include "vornlcapi/api/packet.h"
#include "vornlcapi/capi/packet.h"

namespace entrypoints {

template <class Rows>
void add_packet(Rows& rows) {
  rows.add(VORN_BOTH(send_packet_from_cpu), {"packet"},
           "has the switch forward a frame; control in front passes the spanning tree");
  rows.add(VORN_BOTH(send_packet_by_port), {"tagged[]", "untagged[]", "packet"},
           "sends a frame out of the ports listed");
}

}  // namespace entrypoints

#endif  // ENTRYPOINTS_PACKET_H_
