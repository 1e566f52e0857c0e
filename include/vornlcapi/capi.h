/* SPDX-License-Identifier: Apache-2.0 */
/*
 * The C interface of libvornlcapi, for C99 and for C++11 and later: every C entry point.
 *
 * A process on the line card, from its start to its end:
 *
 *   #include <stdio.h>
 *   #include "vornlcapi/capi.h"
 *
 *   int main(void) {
 *     usp_s port = {1, 1, 3}; // unit, slot, port
 *     unsigned int pvid = 0;
 *     int ports = 0;
 *     if (!ctype_vorn_lcmgr_api_init(&ports)) return 1; // the host could not start the line card
 *
 *     if (!ctype_vorn_create_vlan(10) || !ctype_vorn_add_ports_to_vlan(10, NULL, 0, &port, 1) ||
 *         !ctype_vorn_set_port_pvid(&port, 10)) {
 *       return 1; // 0: what was done before the refusal stays
 *     }
 *     if (ctype_vorn_get_port_pvid(&port, &pvid)) printf("%d ports, PVID %u\n", ports, pvid);
 *     if (!ctype_vorn_set_port_pvid(&port, 4095)) puts("refused: there is no VLAN 4095");
 *     port.slot = 9;
 *     if (!ctype_vorn_get_port_pvid(&port, &pvid)) puts("refused: there is no port 1/9/3");
 *     return ctype_vorn_lcmgr_api_terminate() ? 0 : 1; // the end: from here on all is refused
 *   }
 *
 * It prints "52 ports, PVID 10" on the software line card, and the two refusals. Programs in
 * examples/ go on from here.
 *
 * Each entry point calls the C++ entry point of the same name without ctype_ (see api.h), and
 * does what that one does. Where it does something else, its comment says so first.
 *
 * Conventions, for all of them:
 *
 *  - The result is 1 when the C++ entry point succeeded and 0 when it did not. Causes of failure
 *    are not told apart: no SDK object yet, an address that does not translate, an SDK refusal.
 *  - Arguments stand in the order of the C++ entry point. A port is a pointer to a usp_s; a list
 *    of ports is a pointer to the first of several usp_s and their number, which may be 0 (the
 *    pointer is not looked at then) but not negative. Order and duplicates are kept.
 *  - Outputs are written on success only. Pointers to outputs are named after what they receive.
 *  - A flag that goes in is an int: its low 8 bits count, 0 is off and everything else is on.
 *    256 is therefore off. A flag that comes out is one byte, 0 or 1.
 *  - A MAC address is 6 bytes, an IPv6 address or mask 16 bytes, first byte on the wire first.
 *    An IPv4 address or mask is a number in the processor's order: 192.0.2.1 is 0xc0000201.
 *  - Nothing is checked here: no pointer against NULL, no number against a range. What is
 *    refused, the SDK refuses.
 *  - All memory is the caller's, and is used during the call only. What a callback receives
 *    belongs to the SDK and is valid during the callback.
 *  - Nothing is kept and no lock is taken: callers serialise their calls. When callbacks come,
 *    capi/event.h says.
 *  - An exception of the host process passes through to the caller.
 */
#ifndef VORNLCAPI_CAPI_H_
#define VORNLCAPI_CAPI_H_

#include "vornlcapi/capi/event.h"
#include "vornlcapi/capi/fdb.h"
#include "vornlcapi/capi/filter.h"
#include "vornlcapi/capi/flow.h"
#include "vornlcapi/capi/l3.h"
#include "vornlcapi/capi/lag.h"
#include "vornlcapi/capi/lifecycle.h"
#include "vornlcapi/capi/packet.h"
#include "vornlcapi/capi/port.h"
#include "vornlcapi/capi/stat.h"
#include "vornlcapi/capi/stp.h"
#include "vornlcapi/capi/traffic.h"
#include "vornlcapi/capi/vlan.h"

#endif /* VORNLCAPI_CAPI_H_ */
