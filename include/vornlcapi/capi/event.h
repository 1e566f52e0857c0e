/* SPDX-License-Identifier: Apache-2.0 */
/* Callbacks: received packets, link changes, MAC table updates. The conventions are in capi.h.
 *
 * The host calls them when it delivers events, on the thread that makes the calls into the library
 * and while no table is half changed: a callback may call any entry point. */
#ifndef VORNLCAPI_CAPI_EVENT_H_
#define VORNLCAPI_CAPI_EVENT_H_

#include "vornlcapi/export.h"
#include "vornlcapi/records.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Calls `callback` with `user_data`, which may be NULL, for each packet that is handed to the
 * CPU. */
VORN_EXPORT int ctype_vorn_register_rx_packet_callback(void (*callback)(ctype_rx_packet_s* packet,
                                                                        void* user_data),
                                                       void* user_data);

/* Calls `callback` with the new state of a port's link each time that the link comes up or goes
 * down, or changes its speed or duplex mode. It has no user data. */
VORN_EXPORT int ctype_vorn_register_link_change_callback(
    void (*callback)(ctype_link_status_s* status, usp_s* port));

/* Calls `callback` with `user_data`, which may be NULL, for each change of the MAC table; `update`
 * is one of MAC_UPDATE_... */
VORN_EXPORT int ctype_vorn_register_mac_update_callback(
    void (*callback)(ctype_l2_addr_s* entry, int update, void* user_data), void* user_data);

/* Ends a registration. Function and user data are those that were registered; the user data of
 * a link-change callback is NULL. 0 when no such registration is in force. */
VORN_EXPORT int ctype_vorn_deregister_event_callback(lcmgr_report_event_t event, void* callback,
                                                     void* user_data);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* VORNLCAPI_CAPI_EVENT_H_ */
