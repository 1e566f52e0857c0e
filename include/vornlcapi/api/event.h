// SPDX-License-Identifier: Apache-2.0
//
// Callbacks for received packets, link changes and MAC table updates. api.h has the conventions.
//
// The SDK keeps each registration. The host calls the functions when it delivers events, on the
// thread that makes the calls into the library and while no table is half changed: a callback may
// call any entry point. The records that it receives belong to the SDK and are valid during that
// call only. Each kind has a form with the value classes and a form with the C records (`_c`); they
// are separate registrations, and both may be in force.
#ifndef VORNLCAPI_API_EVENT_H_
#define VORNLCAPI_API_EVENT_H_

#include "vornlcapi/export.h"
#include "vornlcapi/types.h"

// Has `callback` called for each packet that is handed to the CPU.
//   user_data   reaches the callback as its last argument, unchanged; may be null.
VORN_EXPORT bool vorn_register_rx_packet_callback(void (*callback)(RxPacket*, void*),
                                                  void* user_data);

// The same with the C record.
VORN_EXPORT bool vorn_register_rx_packet_callback_c(void (*callback)(ctype_rx_packet_s*, void*),
                                                    void* user_data);

// Has `callback` called with the new state of a link and with its port, each time that the link
// comes up or goes down, or changes its speed or duplex mode. There is no user data.
VORN_EXPORT bool vorn_register_link_change_callback(void (*callback)(LinkStatus*, Usp*));

// The same with the C records.
VORN_EXPORT bool vorn_register_link_change_callback_c(void (*callback)(ctype_link_status_s*,
                                                                       usp_s*));

// Has `callback` called for each change of the MAC table; its int is a MAC_UPDATE_... value.
//   user_data   reaches the callback as its last argument, unchanged; may be null.
VORN_EXPORT bool vorn_register_mac_update_callback(void (*callback)(L2Addr*, int, void*),
                                                   void* user_data);

// The same with the C record.
VORN_EXPORT bool vorn_register_mac_update_callback_c(void (*callback)(ctype_l2_addr_s*, int, void*),
                                                     void* user_data);

// Withdraws a callback of either form. False when no such registration is in force.
//   callback    the function that was registered, cast to void*.
//   user_data   as it was registered; null for a link-change callback.
VORN_EXPORT bool vorn_deregister_event_callback(lcmgr_report_event_t event, void* callback,
                                                void* user_data);

#endif  // VORNLCAPI_API_EVENT_H_
