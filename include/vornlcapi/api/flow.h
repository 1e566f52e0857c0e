// SPDX-License-Identifier: Apache-2.0
//
// The flow table: flows, their actions, priorities and counters. api.h has the conventions.
#ifndef VORNLCAPI_API_FLOW_H_
#define VORNLCAPI_API_FLOW_H_

#include "vornlcapi/export.h"
#include "vornlcapi/types.h"

// ---- Flows --------------------------------------------------------------------------------------

// Adds a flow with priority 32768 and no action: it drops what it matches.
//   flow   its in_port is translated and must be a physical port when OF_MATCH_IN_PORT is set
//          in match.flags; otherwise it is not looked at.
//   id     out: what the SDK chose.
//   udf    one more condition; OF_UDF_NONE for none.
VORN_EXPORT bool vorn_add_of_flow(const of_flow_s& flow, unsigned int& id,
                                  const of_flow_qualify_udf_s& udf);

// Adds a flow, as vorn_add_of_flow(), under an id of the caller's choice and without a further
// condition. False when the id is in use.
VORN_EXPORT bool vorn_add_of_flow_with_id(const of_flow_s& flow, unsigned int id);

// Deletes a flow with its actions.
VORN_EXPORT bool vorn_delete_of_flow(unsigned int id);

// Deletes all flows.
VORN_EXPORT bool vorn_clear_of_flow_table();

// ---- Actions ------------------------------------------------------------------------------------

// Appends an action to a flow.
//   kind    with OF_ACTION_OUTPUT (0) the first word of `param` is a flow port number.
//   param   flow port n above 6, taken as a signed number, stands for the port 1/1/(n - 7), which
//           must be a physical port; the numbers up to 6 go to the SDK as they are.
VORN_EXPORT bool vorn_add_of_flow_action(unsigned int id, of_action_t kind,
                                         of_action_param_s param);

// Removes the action with that kind and parameter, which are as in vorn_add_of_flow_action().
VORN_EXPORT bool vorn_delete_of_flow_action(unsigned int id, of_action_t kind,
                                            of_action_param_s param);

// Removes all actions of a flow.
VORN_EXPORT bool vorn_clear_of_flow_action(unsigned int id);

// ---- Priorities and counters --------------------------------------------------------------------

// Sets the priority of a flow: of those that match a frame the one with the highest wins, and of
// equal ones that with the lowest id.
VORN_EXPORT bool vorn_set_of_flow_priority(unsigned int id, int priority);

// Gets the priority of a flow.
VORN_EXPORT bool vorn_get_of_flow_priority(unsigned int id, int& priority);

// Gets how many packets a flow has handled.
VORN_EXPORT bool vorn_get_of_flow_stat_counter64(unsigned int id, unsigned long long& packets);

// Gets the low 32 bits of how many packets a flow has handled.
VORN_EXPORT bool vorn_get_of_flow_stat_counter32(unsigned int id, unsigned int& packets);

#endif  // VORNLCAPI_API_FLOW_H_
