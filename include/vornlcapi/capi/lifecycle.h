/* SPDX-License-Identifier: Apache-2.0 */
/* Start-up and shut-down. The conventions are in capi.h. */
#ifndef VORNLCAPI_CAPI_LIFECYCLE_H_
#define VORNLCAPI_CAPI_LIFECYCLE_H_

#include "vornlcapi/export.h"
#include "vornlcapi/records.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Prepares the line card, then makes the SDK object. Comes before everything else, and after
 * ctype_vorn_lcmgr_api_terminate() for a new start.
 *   value   receives the host's own value of ctype_vorn_init_line_card */
VORN_EXPORT int ctype_vorn_lcmgr_api_init(int* value);

/* Deletes the SDK object; 0 when there is none. Every later call fails, up to the next
 * ctype_vorn_lcmgr_api_init(). */
VORN_EXPORT int ctype_vorn_lcmgr_api_terminate(void);

/* Writes its output always: after a failure `value` holds what the host's operation left, 0 if it
 * wrote nothing. Prepares the line card and its port mapping, without making the SDK object:
 * clients call ctype_vorn_lcmgr_api_init instead.
 *   value   receives a value of the host's own, such as the number of ports */
VORN_EXPORT int ctype_vorn_init_line_card(int* value);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* VORNLCAPI_CAPI_LIFECYCLE_H_ */
