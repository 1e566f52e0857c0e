// SPDX-License-Identifier: Apache-2.0
//
// The port mapping between logical ports (Usp) and hardware ports (Mp). The host process defines
// all of these functions, with C++ linkage, and exports them to the libraries that it loads.
//
// All return true on success. A translation that fails may leave its output as it likes, but the
// library relies on one thing: vorn_usp_to_mp() that fails leaves the Mp as it was.
#ifndef PLATFORM_VORN_PORT_MAPPING_H_
#define PLATFORM_VORN_PORT_MAPPING_H_

#include <list>

#include "vornlcapi/types.h"

// Prepares the line card and its port mapping, and writes a value of the host's own, such as the
// number of ports. Called first of all, by vorn_lcmgr_api_init().
bool vorn_init_line_card(int& out);

// ---- Kinds of port ------------------------------------------------------------------------------
// At most one of the three is true for an address. They go by the address alone: a LAG interface
// is one before and after its LAG exists.

bool is_port_physical(const Usp& port);
bool is_port_logical_lag(const Usp& port);
bool is_port_logical_vlan(const Usp& port);

// ---- Translations -------------------------------------------------------------------------------

// Writes the hardware port of a physical port. False for LAG and VLAN interfaces and for unknown
// ports; callers take that as the cue to ask for the kind of port.
bool vorn_usp_to_mp(const Usp& port, Mp& mp);

// Appends the hardware ports behind `port`, in a fixed order: one for a physical port, every
// member for a LAG or VLAN interface. A LAG or VLAN without members gives none and true.
// REQUIRES: a physical port gives exactly one; the library takes the first without a look.
bool vorn_usp_to_mp_list(const Usp& port, std::list<Mp>& mps);

// Appends the hardware ports behind each port in turn, keeping what `mps` holds. False as soon as
// one is unknown or expands to nothing.
// REQUIRES: appends; adding ports to a LAG puts the present members into `mps` first.
bool vorn_usp_list_to_mp_list(const std::list<Usp>& ports, std::list<Mp>& mps);

// The inverse of vorn_usp_to_mp().
bool vorn_mp_to_usp(const Mp& mp, Usp& port);

// Appends the physical port of each hardware port in turn, keeping what `ports` holds. False as
// soon as one is unknown.
bool vorn_mp_list_to_usp_list(const std::list<Mp>& mps, std::list<Usp>& ports);

#endif  // PLATFORM_VORN_PORT_MAPPING_H_
