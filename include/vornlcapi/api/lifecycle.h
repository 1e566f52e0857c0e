// SPDX-License-Identifier: Apache-2.0
//
// Start and end of the line card, its address, and tracing. api.h has the conventions.
#ifndef VORNLCAPI_API_LIFECYCLE_H_
#define VORNLCAPI_API_LIFECYCLE_H_

#include <string>

#include "vornlcapi/export.h"
#include "vornlcapi/types.h"

// Starts the line card, then makes the SDK object. Comes before anything else, and after
// vorn_lcmgr_api_terminate() for a new start.
//   out   the host's own value, such as the number of ports; the host may write it even when it
//         then fails.
// False when the host cannot start the line card, in which case no SDK object is made, or when
// it cannot make the object.
VORN_EXPORT bool vorn_lcmgr_api_init(int& out);

// Destroys the SDK object: from then on every entry point that needs it gives false, up to the next
// vorn_lcmgr_api_init(). False when there is no SDK object.
VORN_EXPORT bool vorn_lcmgr_api_terminate();

// Gets the address of the line card: its unit and slot, port 0.
VORN_EXPORT bool vorn_get_line_card_usp(Usp& usp);

// Asks the host for a service of its own, chosen by `number`.
VORN_EXPORT bool vorn_free_call(int number);

// Switches tracing on or off.
//   target   "trace_level_api": this library's own flag, and nothing else: true without asking
//            the SDK. "trace_level_all": the flag and the SDK's tracing. Every other name, such
//            as "trace_level_sdk", "trace_level_xrl", "fdb" or "vlan": the SDK's tracing alone.
//            Names are compared exactly.
// False without an SDK object, whatever `target` is, and the flag keeps its value. When the SDK
// refuses "trace_level_all" the flag has changed already.
VORN_EXPORT bool vorn_set_lcmgr_trace(const std::string& target, bool on);

#endif  // VORNLCAPI_API_LIFECYCLE_H_
