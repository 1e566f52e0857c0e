// SPDX-License-Identifier: Apache-2.0
//
// The entry points of the family `event`, a row each; row.h says what stands in a row.
#ifndef ENTRYPOINTS_EVENT_H_
#define ENTRYPOINTS_EVENT_H_

#include "entrypoints/row.h"
#include "vornlcapi/api/event.h"
#include "vornlcapi/capi/event.h"

namespace entrypoints {

template <class Rows>
void add_event(Rows& rows) {
  rows.add(VORN_API(register_rx_packet_callback), {"callback", "user_data?"},
           "prints each packet for the CPU");
  rows.add(VORN_API(register_rx_packet_callback_c), {"callback", "user_data?"},
           "the same with the C record");
  rows.add(VORN_C(register_rx_packet_callback), {"callback", "user_data?"},
           "prints each packet for the CPU");
  rows.add(VORN_API(register_link_change_callback), {"callback"},
           "prints each link that goes up or down");
  rows.add(VORN_API(register_link_change_callback_c), {"callback"}, "the same with the C record");
  rows.add(VORN_C(register_link_change_callback), {"callback"},
           "prints each link that goes up or down");
  rows.add(VORN_API(register_mac_update_callback), {"callback", "user_data?"},
           "prints each change of the MAC table");
  rows.add(VORN_API(register_mac_update_callback_c), {"callback", "user_data?"},
           "the same with the C record");
  rows.add(VORN_C(register_mac_update_callback), {"callback", "user_data?"},
           "prints each change of the MAC table");
  rows.add(VORN_BOTH(deregister_event_callback), {"event", "callback", "user_data?"},
           "withdraws a callback, such as rx_packet or rx_packet_c");
}

}  // namespace entrypoints

#endif  // ENTRYPOINTS_EVENT_H_
