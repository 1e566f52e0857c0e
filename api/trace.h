// SPDX-License-Identifier: Apache-2.0
//
// The library's trace flag. The library itself does not read it; debuggers and tests do.
#ifndef API_TRACE_H_
#define API_TRACE_H_

// Whether tracing of the API was asked for. False when the library is loaded; only
// vorn_set_lcmgr_trace() writes it.
extern __attribute__((visibility("hidden"))) bool api_trace_enabled;

#endif  // API_TRACE_H_
