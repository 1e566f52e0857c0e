// SPDX-License-Identifier: Apache-2.0
//
// Callbacks: registrations for packets, links and the MAC table.

#include "softcard/sdk/sdk.h"

namespace softcard {

bool SoftSdk::register_mac_update_callback(void (*callback)(L2Addr*, int, void*), void* user_data) {
  return card_.events().add(callback, user_data);
}

bool SoftSdk::register_mac_update_callback_c(void (*callback)(ctype_l2_addr_s*, int, void*),
                                             void* user_data) {
  return card_.events().add(callback, user_data);
}

bool SoftSdk::register_link_change_callback(void (*callback)(LinkStatus*, Usp*), void*) {
  return card_.events().add(callback);
}

bool SoftSdk::register_link_change_callback_c(void (*callback)(ctype_link_status_s*, usp_s*),
                                              void*) {
  return card_.events().add(callback);
}

bool SoftSdk::register_rx_packet_callback(void (*callback)(RxPacket*, void*), void* user_data) {
  return card_.events().add(callback, user_data);
}

bool SoftSdk::register_rx_packet_callback_c(void (*callback)(ctype_rx_packet_s*, void*),
                                            void* user_data) {
  return card_.events().add(callback, user_data);
}

bool SoftSdk::deregister_event_callback(lcmgr_report_event_t event, void* callback,
                                        void* user_data) {
  return card_.events().remove(event, callback, user_data);
}

}  // namespace softcard
