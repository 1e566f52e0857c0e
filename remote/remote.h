/* SPDX-License-Identifier: Apache-2.0 */
/*
 * A host of libvornlcapi.so.0 whose card is in another process, for C99 and for C++11 and later.
 * A program that links or preloads it, libvornremote.so.0 or the CMake target vornlcapi::remote,
 * calls the entry points as ever; they are carried out by whoever serves the socket that the
 * environment variable VORN_CARD names, such as vornd.
 *
 *   VORN_CARD=/run/vornd/card my_daemon
 *
 * A program need not call anything of this header. With it, a program chooses the socket itself,
 * learns why something was refused, and takes events without XORP's event loop:
 *
 *   struct pollfd card;
 *   vornremote_use("/run/vornd/card");
 *   if (!ctype_vorn_lcmgr_api_init(&ports)) puts(vornremote_last_refusal());
 *   ctype_vorn_register_link_change_callback(&link_changed);
 *   card.fd = vornremote_descriptor();
 *   card.events = POLLIN;
 *   while (poll(&card, 1, -1) >= 0) vornremote_dispatch();
 *
 * vorn_lcmgr_api_init() connects, vorn_lcmgr_api_terminate() ends the connection: the card goes on
 * without this client, as it is. When the card's process dies every call fails, and every link that
 * is listened for is reported down; vorn_lcmgr_api_init() then connects anew, and what was
 * registered has to be registered again.
 *
 * All calls come on one thread.
 */
#ifndef REMOTE_REMOTE_H_
#define REMOTE_REMOTE_H_

#include <stddef.h>
#include <stdint.h>

#include "vornlcapi/enums.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifndef VORNREMOTE_EXPORT
#define VORNREMOTE_EXPORT
#endif

/* Names the socket for the next vorn_lcmgr_api_init(), in place of VORN_CARD. */
VORNREMOTE_EXPORT void vornremote_use(const char* path);

/* How long the card's process has for each answer, milliseconds; 10,000 unless set otherwise. After
 * that it counts as dead. For the next vorn_lcmgr_api_init(). */
VORNREMOTE_EXPORT void vornremote_set_timeout_ms(int timeout_ms);

/* Whether there is a connection: 1 or 0. That of a process that has just died is found out by the
 * next call. */
VORNREMOTE_EXPORT int vornremote_connected(void);

/* Whether the connection is read-only: what changes the card is refused then. */
VORNREMOTE_EXPORT int vornremote_read_only(void);

/* Why something was refused last: by the card, "VLAN 5000: above 4094", or because there is no
 * connection. Valid until the next call. Empty before the first refusal; a success leaves it as it
 * is. */
VORNREMOTE_EXPORT const char* vornremote_last_refusal(void);

/* How many refusals there have been: tells a new reason from an old one. */
VORNREMOTE_EXPORT uint64_t vornremote_refusals(void);

/* A descriptor that is readable while events wait; the same for the life of the process. The event
 * loop of this library watches it by itself. */
VORNREMOTE_EXPORT int vornremote_descriptor(void);

/* Calls the registered functions for the events that wait. Returns how many events those were. */
VORNREMOTE_EXPORT size_t vornremote_dispatch(void);

/* How many events of a kind were lost since the connection was made, because this process did not
 * take them in time. */
VORNREMOTE_EXPORT uint64_t vornremote_lost(lcmgr_report_event_t kind);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* REMOTE_REMOTE_H_ */
