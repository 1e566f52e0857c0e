// SPDX-License-Identifier: Apache-2.0
//
// The host's bookkeeping of LAGs. The host process defines the list and all of these functions,
// with C++ linkage, and exports them to the libraries that it loads.
//
// The library changes the list only through these functions. Creating and deleting a LAG touches
// the SDK first, then this list, then the mapping of vorn_sdk.h; a step that fails ends the
// operation and undoes nothing. Callers serialise LAG changes: nobody takes a lock.
//
// All return true on success.
#ifndef PLATFORM_VORN_LAG_LIST_H_
#define PLATFORM_VORN_LAG_LIST_H_

#include <list>

#include "vornlcapi/types.h"

// One node for each LAG. REQUIRES: alive from before the first call into the library to after the
// last.
extern std::list<LagNode> lag_list;

// Adds a node without members for the id.
bool add_lag_to_list(unsigned int id, std::list<LagNode>& list);

// Removes the id's node.
bool delete_lag_from_list(unsigned int id, std::list<LagNode>& list);

// Whether the list has a node with the id. The list comes by value: each call copies it whole.
bool is_lag_exist(unsigned int id, std::list<LagNode> list);

// Records `members` in the id's node. `members` begins with the present members: one that is
// recorded already is not recorded twice.
bool add_lag_member(unsigned int id, std::list<LagNode>& list, std::list<Mp>& members);

// Removes `members` from the id's node.
bool delete_lag_member(unsigned int id, std::list<LagNode>& list, std::list<Mp>& members);

// Appends the present members of the id's node, in the order they were added.
bool get_lag_member(unsigned int id, std::list<Mp>& members);

#endif  // PLATFORM_VORN_LAG_LIST_H_
