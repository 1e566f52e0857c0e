// SPDX-License-Identifier: Apache-2.0
//
// Registration of callbacks. The SDK keeps the registrations.

#include "vornlcapi/api/event.h"

#include "api/frame.h"

using namespace vorn::detail;

namespace {

// Link-change callbacks take no user data, but the SDK's operations have a place for it.
constexpr void* kNoUserData = nullptr;

}  // namespace

bool vorn_register_rx_packet_callback(void (*callback)(RxPacket*, void*), void* user_data) {
  return call<&VornSdkBase::register_rx_packet_callback>(callback, user_data);
}

bool vorn_register_rx_packet_callback_c(void (*callback)(ctype_rx_packet_s*, void*),
                                        void* user_data) {
  return call<&VornSdkBase::register_rx_packet_callback_c>(callback, user_data);
}

bool vorn_register_link_change_callback(void (*callback)(LinkStatus*, Usp*)) {
  return call<&VornSdkBase::register_link_change_callback>(callback, kNoUserData);
}

bool vorn_register_link_change_callback_c(void (*callback)(ctype_link_status_s*, usp_s*)) {
  return call<&VornSdkBase::register_link_change_callback_c>(callback, kNoUserData);
}

bool vorn_register_mac_update_callback(void (*callback)(L2Addr*, int, void*), void* user_data) {
  return call<&VornSdkBase::register_mac_update_callback>(callback, user_data);
}

bool vorn_register_mac_update_callback_c(void (*callback)(ctype_l2_addr_s*, int, void*),
                                         void* user_data) {
  return call<&VornSdkBase::register_mac_update_callback_c>(callback, user_data);
}

bool vorn_deregister_event_callback(lcmgr_report_event_t event, void* callback, void* user_data) {
  return call<&VornSdkBase::deregister_event_callback>(event, callback, user_data);
}
