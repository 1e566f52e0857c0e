/* SPDX-License-Identifier: Apache-2.0 */
/* The flow table. The conventions are in capi.h. */
#ifndef VORNLCAPI_CAPI_FLOW_H_
#define VORNLCAPI_CAPI_FLOW_H_

#include "vornlcapi/export.h"
#include "vornlcapi/records.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Flows ----------------------------------------------------------------------------------- */

/* Adds a flow with priority 32768 and no action: it drops what it matches. Receives the id that
 * the SDK chose.
 *   flow   in_port counts only with OF_MATCH_IN_PORT, and is a physical port then
 *   udf    one more condition; OF_UDF_NONE for none */
VORN_EXPORT int ctype_vorn_add_of_flow(ctype_of_flow_s* flow, unsigned int* id,
                                       ctype_of_flow_qualify_udf_s* udf);
/* The same under an id of the caller's choice, without a qualifier. 0 when the id is in use. */
VORN_EXPORT int ctype_vorn_add_of_flow_with_id(ctype_of_flow_s* flow, unsigned int id);
/* Deletes a flow with its actions. */
VORN_EXPORT int ctype_vorn_delete_of_flow(unsigned int id);
/* Deletes all flows. */
VORN_EXPORT int ctype_vorn_clear_of_flow_table(void);

/* ---- Actions --------------------------------------------------------------------------------- */

/* Appends an action to a flow. An output to flow port n above 6 goes to the physical port
 * 1/1/(n - 7); 0 when there is none. */
VORN_EXPORT int ctype_vorn_add_of_flow_action(unsigned int id, ctype_of_action_t kind,
                                              ctype_of_action_param_s param);
#ifdef __cplusplus
/* Removes the action with the same kind and parameter. It has C++ linkage: C programs cannot
 * link it, and remove all actions with the next one instead. */
extern "C++" VORN_EXPORT int ctype_vorn_delete_of_flow_action(unsigned int id,
                                                              ctype_of_action_t kind,
                                                              ctype_of_action_param_s param);
#endif
/* Removes all actions of a flow. */
VORN_EXPORT int ctype_vorn_clear_of_flow_action(unsigned int id);

/* ---- Priorities and counters ----------------------------------------------------------------- */

/* The matching flow with the highest priority wins; of equal ones that with the lowest id. */
VORN_EXPORT int ctype_vorn_set_of_flow_priority(unsigned int id, int priority);
VORN_EXPORT int ctype_vorn_get_of_flow_priority(unsigned int id, int* priority);

/* Packets that the flow has handled: 64 bits, and the low 32 of them. */
VORN_EXPORT int ctype_vorn_get_of_flow_stat_counter64(unsigned int id, unsigned long long* packets);
VORN_EXPORT int ctype_vorn_get_of_flow_stat_counter32(unsigned int id, unsigned int* packets);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* VORNLCAPI_CAPI_FLOW_H_ */
