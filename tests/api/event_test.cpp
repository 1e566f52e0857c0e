// SPDX-License-Identifier: Apache-2.0

#include "vornlcapi/api/event.h"

#include "tests/api/rows.h"

namespace vorn::test {
namespace {

int user_data;

void on_packet(RxPacket*, void*) {}
void on_packet_c(ctype_rx_packet_s*, void*) {}
void on_link(LinkStatus*, Usp*) {}
void on_link_c(ctype_link_status_s*, usp_s*) {}
void on_mac(L2Addr*, int, void*) {}
void on_mac_c(ctype_l2_addr_s*, int, void*) {}

// Names the callback and the user data, and gives the callback.
template <class Callback>
Callback* named(Callback* callback) {
  host().names[reinterpret_cast<const void*>(callback)] = "callback";
  host().names[&user_data] = "user_data";
  return callback;
}

std::vector<Row> rows() {
  // clang-format off
  return {
      {"register_rx_packet_callback",
       [] { return vorn_register_rx_packet_callback(named(on_packet), &user_data); },
       {140}, call("register_rx_packet_callback(callback,user_data)")},
      {"register_rx_packet_callback_c",
       [] { return vorn_register_rx_packet_callback_c(named(on_packet_c), &user_data); },
       {141}, call("register_rx_packet_callback_c(callback,user_data)")},
      {"register_link_change_callback",
       [] { return vorn_register_link_change_callback(named(on_link)); },
       {138}, call("register_link_change_callback(callback,null)")},
      {"register_link_change_callback_c",
       [] { return vorn_register_link_change_callback_c(named(on_link_c)); },
       {139}, call("register_link_change_callback_c(callback,null)")},
      {"register_mac_update_callback",
       [] { return vorn_register_mac_update_callback(named(on_mac), &user_data); },
       {136}, call("register_mac_update_callback(callback,user_data)")},
      {"register_mac_update_callback_c",
       [] { return vorn_register_mac_update_callback_c(named(on_mac_c), &user_data); },
       {137}, call("register_mac_update_callback_c(callback,user_data)")},
      {"deregister_event_callback",
       [] {
         return vorn_deregister_event_callback(LCMGR_REPORT_MAC_UPDATE,
                                               reinterpret_cast<void*>(named(on_mac)), &user_data);
       },
       {142}, call("deregister_event_callback(2,callback,user_data)")},
  };
  // clang-format on
}
INSTANTIATE_TEST_SUITE_P(Event, EntryPoint, testing::ValuesIn(rows()), row_name);

}  // namespace
}  // namespace vorn::test
