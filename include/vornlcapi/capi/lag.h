/* SPDX-License-Identifier: Apache-2.0 */
/* Link aggregation groups. A LAG is named by the port of its LAG interface. The conventions are
 * in capi.h. */
#ifndef VORNLCAPI_CAPI_LAG_H_
#define VORNLCAPI_CAPI_LAG_H_

#include "vornlcapi/export.h"
#include "vornlcapi/records.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Makes a LAG without members. Succeeds and does nothing when it exists. */
VORN_EXPORT int ctype_vorn_create_lag(usp_s* lag);
/* Deletes a LAG. Succeeds and does nothing when it does not exist. */
VORN_EXPORT int ctype_vorn_delete_lag(usp_s* lag);

/* Makes ports members, behind the present ones. A LAG that does not exist is created first, and
 * stays when a port then does not translate. */
VORN_EXPORT int ctype_vorn_add_ports_to_lag(usp_s* lag, usp_s* ports, int count);
/* Removes members. Succeeds and does nothing when the LAG does not exist. */
VORN_EXPORT int ctype_vorn_delete_ports_from_lag(usp_s* lag, usp_s* ports, int count);

/* What of a frame chooses the member that it leaves through. Fails when the LAG does not exist. */
VORN_EXPORT int ctype_vorn_set_lag_balancing_strategy(usp_s* lag, lag_psc_t psc);
VORN_EXPORT int ctype_vorn_get_lag_balancing_strategy(usp_s* lag, lag_psc_t* psc);

/* The SDK's id of a LAG, and back. Neither needs an SDK object. */
VORN_EXPORT int ctype_vorn_lag_usp_to_lag_id(usp_s* lag, unsigned int* id);
VORN_EXPORT int ctype_vorn_lag_id_to_lag_usp(unsigned int id, usp_s* lag);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* VORNLCAPI_CAPI_LAG_H_ */
