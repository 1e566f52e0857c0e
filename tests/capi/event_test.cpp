// SPDX-License-Identifier: Apache-2.0
//
// Callbacks.
#include "vornlcapi/capi/event.h"

#include "tests/capi/rows.h"

namespace vorn::test {
namespace {

void packet_arrived(ctype_rx_packet_s*, void*) {}
void link_changed(ctype_link_status_s*, usp_s*) {}
void mac_updated(ctype_l2_addr_s*, int, void*) {}
int user_data;

const Row kRows[] = {
    {"register_rx_packet_callback",
     call(ctype_vorn_register_rx_packet_callback, packet_arrived, &user_data),
     "register_rx_packet_callback_c(&,&)"},
    {"register_link_change_callback", call(ctype_vorn_register_link_change_callback, link_changed),
     "register_link_change_callback_c(&,null)"},
    {"register_mac_update_callback",
     call(ctype_vorn_register_mac_update_callback, mac_updated, &user_data),
     "register_mac_update_callback_c(&,&)"},
    {"deregister_event_callback",
     call(ctype_vorn_deregister_event_callback, LCMGR_REPORT_MAC_UPDATE, mac, &user_data),
     "deregister_event_callback(2,&,&)"},
};

INSTANTIATE_TEST_SUITE_P(event, Rows, testing::ValuesIn(kRows), row_name);

// The SDK gets the caller's own function and user data.
TEST(Callbacks, AreHandedOn) {
  host().reset();
  host().names = {{reinterpret_cast<const void*>(packet_arrived), "packet_arrived"},
                  {reinterpret_cast<const void*>(link_changed), "link_changed"},
                  {reinterpret_cast<const void*>(mac_updated), "mac_updated"},
                  {&user_data, "user_data"}};
  ctype_vorn_register_rx_packet_callback(packet_arrived, &user_data);
  EXPECT_EQ("register_rx_packet_callback_c(packet_arrived,user_data)", host().steps.back());
  ctype_vorn_register_link_change_callback(link_changed);
  EXPECT_EQ("register_link_change_callback_c(link_changed,null)", host().steps.back());
  ctype_vorn_register_mac_update_callback(mac_updated, &user_data);
  EXPECT_EQ("register_mac_update_callback_c(mac_updated,user_data)", host().steps.back());
  ctype_vorn_deregister_event_callback(LCMGR_REPORT_LINK_CHANGE,
                                       reinterpret_cast<void*>(link_changed), &user_data);
  EXPECT_EQ("deregister_event_callback(1,link_changed,user_data)", host().steps.back());
}

}  // namespace
}  // namespace vorn::test
