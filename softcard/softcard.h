/* SPDX-License-Identifier: Apache-2.0 */
/*
 * The software line card as C drives it, for C99 and for C++11 and later: what a test of a control
 * plane does at the far ends of the card's cables, while the program under test calls the entry
 * points of vornlcapi/capi.h.
 *
 *   softcard_use_virtual_time();
 *   softcard_use_description("ports 8 speed 1000\n");
 *   ctype_vorn_lcmgr_api_init(&ports);                                  the card is there
 *   softcard_inject_text(one, "eth src=00:00:5e:00:53:01 dst=ff:ff:ff:ff:ff:ff arp tpa=192.0.2.2");
 *   softcard_run();
 *   bytes = softcard_take(two, frame, sizeof frame);                    came out of port two
 *   softcard_warp(300 * 1000000000ULL);                                 five minutes pass
 *   if (!ctype_vorn_create_vlan(5000)) puts(softcard_last_refusal());   VLAN 5000: above 4094
 *   ctype_vorn_lcmgr_api_terminate();
 *
 * The library that defines these functions, libvornsoftcard.so.0, is the host of libvornlcapi.so.0:
 * a program links both, or loads this one first and with RTLD_GLOBAL.
 *
 * Conventions, for all of them:
 *
 *  - An int result is 1 when it was done and 0 when it was not; softcard_last_refusal() says why.
 *    Nothing is done by halves.
 *  - There is one card a process, from vorn_lcmgr_api_init() to vorn_lcmgr_api_terminate(). Without
 *    a card, functions that need one give 0.
 *  - Ports are logical ports: 1/1/0 is {1, 1, 0}. They are physical unless it is said otherwise.
 *  - Times are nanoseconds. Frames begin with the destination address and have no checksum.
 *  - Texts that are returned belong to the card and hold until the next call of a function here or
 *    of an entry point. Null pointers are not allowed except where it is said.
 *  - All calls come on one thread. Callbacks come from softcard_run(), softcard_warp() and the
 *    event loop, and may call anything.
 */
#ifndef SOFTCARD_SOFTCARD_H_
#define SOFTCARD_SOFTCARD_H_

#include <stddef.h>
#include <stdint.h>

#include "vornlcapi/records.h"

#ifdef __cplusplus
extern "C" {
#endif

#ifndef SOFTCARD_EXPORT
#define SOFTCARD_EXPORT
#endif

/* ---- Before vorn_lcmgr_api_init(); a card that is there already stays as it is ------------------
 */

/* Describes the next card: the text of a card description. 0 when it is malformed; the description
 * set before stays. */
SOFTCARD_EXPORT int softcard_use_description(const char* text);

/* The same from a file. */
SOFTCARD_EXPORT int softcard_use_description_file(const char* path);

/* Has the next cards stand still in time until softcard_warp() moves them on. */
SOFTCARD_EXPORT int softcard_use_virtual_time(void);

/* Has the next cards follow the machine's clock, as they do unless told otherwise. */
SOFTCARD_EXPORT int softcard_use_real_time(void);

/* ---- The card -------------------------------------------------------------------------------- */

/* How many physical ports the card has: 1/1/0 and on. 0 while there is no card. */
SOFTCARD_EXPORT unsigned int softcard_port_count(void);

/* Why something was refused last, by an entry point or by a function here: "VLAN 5000: above 4094".
 * Empty before the first refusal; a success leaves it as it is. */
SOFTCARD_EXPORT const char* softcard_last_refusal(void);

/* How many refusals there have been: tells a new reason from an old one. */
SOFTCARD_EXPORT uint64_t softcard_refusals(void);

/* ---- Time ------------------------------------------------------------------------------------ */

/* Lets the card do all that waits: frames in its cables, ageing, callbacks. Returns how many frames
 * and events that were; 0 without a card. Frames that go round in a loop of cables end it after
 * 1,000 rounds. */
SOFTCARD_EXPORT size_t softcard_run(void);

/* Moves a virtual clock on and lets the card do what becomes due. 0 for a card in real time. */
SOFTCARD_EXPORT int softcard_warp(uint64_t ns);

/* The card's time: nanoseconds since its clock was made; 0 without a card. */
SOFTCARD_EXPORT uint64_t softcard_now(void);

/* ---- Frames: ports that are plugged into memory, as all are at the start ------------------------
 */

/* Sends a frame into a port. 0 when the port is plugged into something else, and for a frame that
 * is empty or longer than any frame. What becomes of it is the card's answer, not this one's. */
SOFTCARD_EXPORT int softcard_inject(usp_s port, const void* frame, size_t bytes);

/* The same with a frame as one line of text, as the shell reads it:
 * "eth src=00:00:5e:00:53:01 dst=00:00:5e:00:53:02 vlan=10 ipv4 src=192.0.2.1 dst=192.0.2.2". */
SOFTCARD_EXPORT int softcard_inject_text(usp_s port, const char* frame);

/* Takes the frame that came out of a port first and returns its size in bytes; 0 when there is
 * none. A frame larger than `room` is not taken: its size is returned and `frame` is untouched. */
SOFTCARD_EXPORT size_t softcard_take(usp_s port, void* frame, size_t room);

/* How many frames came out of a port and were not taken; 0 for what is no such port. */
SOFTCARD_EXPORT size_t softcard_waiting(usp_s port);

/* Whether a frame shows what a pattern asks for: a frame's text in which everything that is left
 * out may be anything. 0 also for a pattern that is none. */
SOFTCARD_EXPORT int softcard_frame_matches(const void* frame, size_t bytes, const char* pattern);

/* A frame as one line of text. Returns its length without the final zero; at most `room` bytes,
 * the zero included, are written to `text`. */
SOFTCARD_EXPORT size_t softcard_frame_text(const void* frame, size_t bytes, char* text,
                                           size_t room);

/* ---- Links ----------------------------------------------------------------------------------- */

/* Pulls the plug of a port: its link and that of its link partner go down. */
SOFTCARD_EXPORT int softcard_cut(usp_s port);

/* Puts the plug back. */
SOFTCARD_EXPORT int softcard_restore(usp_s port);

/* Joins two ports by a cable. What is sent into one comes in at the other in softcard_run(). */
SOFTCARD_EXPORT int softcard_patch(usp_s port, usp_s other);

/* Plugs a port into memory again. */
SOFTCARD_EXPORT int softcard_unpatch(usp_s port);

/* ---- Why a frame went where it went -------------------------------------------------------------
 */

/* The way of the last frame that was injected, one line for each thing that the card found or
 * decided: "vlan      PVID: VLAN 10, priority 0\n...". Empty before the first. */
SOFTCARD_EXPORT const char* softcard_last_trace(void);

/* Gets how many frames were dropped at a port for a reason, such as "stp-ingress": the names are
 * those of softcard_drop_reason(). 0 for a name that is none. */
SOFTCARD_EXPORT int softcard_drops(usp_s port, const char* reason, uint64_t* frames);

/* The name of the n-th reason for dropping frames, n counting from 0; null when there are no more.
 */
SOFTCARD_EXPORT const char* softcard_drop_reason(unsigned int n);

/* ---- Failures on purpose ------------------------------------------------------------------------
 */

/* Has the `nth` call from now of an SDK operation refused, 1 being the next: the operation's name
 * is that of the entry point without vorn_, such as "create_vlan". 0 for a name that is none and
 * for nth 0. */
SOFTCARD_EXPORT int softcard_fail(const char* operation, unsigned int nth);

/* Forgets the failures that have not come yet. */
SOFTCARD_EXPORT void softcard_fail_none(void);

/* ---- Callbacks with user data -------------------------------------------------------------------
 * As many as one likes of each kind. They hold for the card that is there, and end with it. */

/* Frames that come out of ports plugged into memory, in softcard_run() and softcard_warp(), instead
 * of waiting for softcard_take(). */
typedef void (*softcard_frame_callback)(usp_s port, const unsigned char* frame, size_t bytes,
                                        void* user_data);
SOFTCARD_EXPORT int softcard_on_frame(softcard_frame_callback callback, void* user_data);

/* Links that change. */
typedef void (*softcard_link_callback)(usp_s port, const ctype_link_status_s* status,
                                       void* user_data);
SOFTCARD_EXPORT int softcard_on_link_change(softcard_link_callback callback, void* user_data);

/* Packets for the CPU, beside whoever registered for them through the library. */
typedef void (*softcard_cpu_callback)(const ctype_rx_packet_s* packet, void* user_data);
SOFTCARD_EXPORT int softcard_on_cpu_packet(softcard_cpu_callback callback, void* user_data);

/* Ends the registration of a callback with this user data. 0 when there is none. */
SOFTCARD_EXPORT int softcard_remove_frame_callback(softcard_frame_callback callback,
                                                   void* user_data);
SOFTCARD_EXPORT int softcard_remove_link_callback(softcard_link_callback callback, void* user_data);
SOFTCARD_EXPORT int softcard_remove_cpu_callback(softcard_cpu_callback callback, void* user_data);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* SOFTCARD_SOFTCARD_H_ */
