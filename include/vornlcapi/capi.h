/* SPDX-License-Identifier: Apache-2.0 */
/*
 * The C interface of libvornlcapi, for C99 and for C++11 and later: every C entry point.
 *
 * Each entry point calls the C++ entry point of the same name without ctype_ (see api.h), and
 * does what that one does. Where it does something else, its comment says so first.
 *
 * Conventions, for all of them:
 *
 *  - The result is 1 when the C++ entry point succeeded and 0 when it did not. Causes of failure
 *    are not told apart: no SDK object yet, an address that does not translate, an SDK refusal.
 *  - Arguments stand in the order of the C++ entry point. A port is a pointer to a usp_s; a list
 *    of ports is a pointer to the first of several usp_s and their number, which may be 0 but not
 *    negative. Order and duplicates are kept.
 *  - Outputs are written on success only. Pointers to outputs are named after what they receive.
 *  - A flag that goes in is an int: its low 8 bits count, 0 is off and everything else is on.
 *    256 is therefore off. A flag that comes out is one byte, 0 or 1.
 *  - A MAC address is 6 bytes, an IPv6 address or mask 16 bytes, first byte on the wire first.
 *    An IPv4 address or mask is a number in the processor's order: 192.0.2.1 is 0xc0000201.
 *  - Nothing is checked here: no pointer against NULL, no number against a range. What is
 *    refused, the SDK refuses.
 *  - All memory is the caller's, and is used during the call only. What a callback receives
 *    belongs to the SDK and is valid during the callback.
 *  - Nothing is kept and no lock is taken: callers serialise their calls. Callbacks come on the
 *    SDK's thread.
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
