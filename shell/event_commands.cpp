// SPDX-License-Identifier: Apache-2.0
#include "entry_point.h"
#include "vornlcapi/api/event.h"
#include "vornlcapi/capi/event.h"

namespace shell {

void add_event_commands(CommandTable& table) {
  Family family(table, "event");
  family.add(VORN_API(register_rx_packet_callback), {"callback", "user_data?"},
             "prints each packet for the CPU");
  family.add(VORN_API(register_rx_packet_callback_c), {"callback", "user_data?"},
             "the same with the C record");
  family.add(VORN_C(register_rx_packet_callback), {"callback", "user_data?"},
             "prints each packet for the CPU");
  family.add(VORN_API(register_link_change_callback), {"callback"},
             "prints each link that goes up or down");
  family.add(VORN_API(register_link_change_callback_c), {"callback"}, "the same with the C record");
  family.add(VORN_C(register_link_change_callback), {"callback"},
             "prints each link that goes up or down");
  family.add(VORN_API(register_mac_update_callback), {"callback", "user_data?"},
             "prints each change of the MAC table");
  family.add(VORN_API(register_mac_update_callback_c), {"callback", "user_data?"},
             "the same with the C record");
  family.add(VORN_C(register_mac_update_callback), {"callback", "user_data?"},
             "prints each change of the MAC table");
  family.add(VORN_BOTH(deregister_event_callback), {"event", "callback", "user_data?"},
             "withdraws a callback, such as rx_packet or rx_packet_c");
}

}  // namespace shell
