// SPDX-License-Identifier: Apache-2.0
//
// Callbacks. capi.h has the conventions.
#include "vornlcapi/capi/event.h"

#include "vornlcapi/api/event.h"

int ctype_vorn_register_rx_packet_callback(void (*callback)(ctype_rx_packet_s*, void*),
                                           void* user_data) {
  return vorn_register_rx_packet_callback_c(callback, user_data);
}

int ctype_vorn_register_link_change_callback(void (*callback)(ctype_link_status_s*, usp_s*)) {
  return vorn_register_link_change_callback_c(callback);
}

int ctype_vorn_register_mac_update_callback(void (*callback)(ctype_l2_addr_s*, int, void*),
                                            void* user_data) {
  return vorn_register_mac_update_callback_c(callback, user_data);
}

int ctype_vorn_deregister_event_callback(lcmgr_report_event_t event, void* callback,
                                         void* user_data) {
  return vorn_deregister_event_callback(event, callback, user_data);
}
