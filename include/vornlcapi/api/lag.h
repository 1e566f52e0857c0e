// SPDX-License-Identifier: Apache-2.0
//
// Link aggregation groups. api.h has the conventions.
//
// A LAG stands in three places, all of them the host's: the SDK's table, the host's LAG list, and
// the mapping between LAG interfaces and LAG ids. Each function changes them in that order, stops
// at the first step that fails and undoes nothing, so that after false they may be out of step.
#ifndef VORNLCAPI_API_LAG_H_
#define VORNLCAPI_API_LAG_H_

#include <list>

#include "vornlcapi/export.h"
#include "vornlcapi/types.h"

// ---- LAGs and their members ---------------------------------------------------------------------

// Makes a LAG without members for `lag`. True without doing anything when `lag` has an id
// already. It does not test that `lag` is a LAG interface.
VORN_EXPORT bool vorn_create_lag(const Usp& lag);

// Deletes a LAG. True without doing anything when `lag` has no id or its id is not in the LAG
// list; false when `lag` is not a LAG interface.
VORN_EXPORT bool vorn_delete_lag(const Usp& lag);

// Adds members to a LAG, which is made first if need be. SDK and LAG list are given the
// present members followed by the new ones.
// False when `lag` is not a LAG interface, and when one of the ports does not translate; the LAG
// may have been made by then.
VORN_EXPORT bool vorn_add_ports_to_lag(const Usp& lag, const std::list<Usp>& ports);

// Removes members from a LAG. True without doing anything when `lag` has no id, as long as the
// ports translate; false when `lag` is not a LAG interface or one of the ports does not
// translate.
VORN_EXPORT bool vorn_delete_ports_from_lag(const Usp& lag, const std::list<Usp>& ports);

// ---- Balancing ----------------------------------------------------------------------------------

// Sets what of a frame chooses the member that it leaves through.
// False when `lag` is not a LAG interface or has no id.
VORN_EXPORT bool vorn_set_lag_balancing_strategy(const Usp& lag, lag_psc_t psc);

// Gets what of a frame chooses the member that it leaves through.
// False when `lag` is not a LAG interface or has no id.
VORN_EXPORT bool vorn_get_lag_balancing_strategy(const Usp& lag, lag_psc_t& psc);

// ---- Mapping: neither function needs an SDK object ----------------------------------------------

// Gets the id of a LAG interface. False, with `id` untouched, when it has none.
VORN_EXPORT bool vorn_lag_usp_to_lag_id(const Usp& lag, unsigned int& id);

// Gets the LAG interface that has an id. False, with `lag` untouched, when there is none.
VORN_EXPORT bool vorn_lag_id_to_lag_usp(unsigned int id, Usp& lag);

#endif  // VORNLCAPI_API_LAG_H_
