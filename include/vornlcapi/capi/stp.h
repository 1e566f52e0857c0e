/* SPDX-License-Identifier: Apache-2.0 */
/* Spanning-tree states. The conventions are in capi.h. */
#ifndef VORNLCAPI_CAPI_STP_H_
#define VORNLCAPI_CAPI_STP_H_

#include <stdbool.h>

#include "vornlcapi/export.h"
#include "vornlcapi/records.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Gets the state of a physical port in the single spanning tree. */
VORN_EXPORT int ctype_vorn_get_port_stp_state(usp_s* port, stp_state_t* state);
/* Sets the state of every member of a port. STP_STATE_BLOCKING then flushes the addresses learned
 * there and the result is the flush's: 0 for a VLAN interface, although the states were set. */
VORN_EXPORT int ctype_vorn_set_port_stp_state(usp_s* port, stp_state_t state);

/* The state of a physical port in one instance of the multiple spanning tree; the setter acts on
 * every member of a port and flushes nothing. */
VORN_EXPORT int ctype_vorn_get_port_mstp_state(usp_s* port, mstp_state_t* state,
                                               unsigned int instance);
VORN_EXPORT int ctype_vorn_set_port_mstp_state(usp_s* port, mstp_state_t state,
                                               unsigned int instance);

/* Whether BPDUs that come in through a physical port are handed to the CPU; off treats them as
 * ordinary multicast. */
VORN_EXPORT int ctype_vorn_get_port_bpdu_processing(usp_s* port, bool* on);
VORN_EXPORT int ctype_vorn_set_port_bpdu_processing(usp_s* port, int on);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* VORNLCAPI_CAPI_STP_H_ */
