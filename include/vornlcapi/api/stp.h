// SPDX-License-Identifier: Apache-2.0
//
// Spanning-tree states of ports, single and multiple, and BPDU processing. api.h has the
// conventions.
#ifndef VORNLCAPI_API_STP_H_
#define VORNLCAPI_API_STP_H_

#include <list>

#include "vornlcapi/export.h"
#include "vornlcapi/types.h"

// ---- Single spanning tree -----------------------------------------------------------------------

// Gets the spanning-tree state of a physical port.
VORN_EXPORT bool vorn_get_port_stp_state(const Usp& port, stp_state_t& state);

// Sets the spanning-tree state of every member of `port`; with state 0 (blocking) also flushes
// the addresses learned there, and then returns the flush's result whether or not the states
// could be set: a member that refused does not show.
// With state 0 the flush is made for a physical port and for a LAG. A LAG without id, a VLAN
// interface and any other port give false without a flush although the states have been set.
VORN_EXPORT bool vorn_set_port_stp_state(const Usp& port, stp_state_t state);

// Sets the spanning-tree state of every port listed. Flushes nothing, with state 0 either,
// unlike vorn_set_port_stp_state().
VORN_EXPORT bool vorn_set_ports_stp_state(const std::list<Usp>& ports, stp_state_t state);

// ---- Multiple spanning tree: the instance comes last --------------------------------------------

// Gets the state of a physical port in a spanning-tree instance.
VORN_EXPORT bool vorn_get_port_mstp_state(const Usp& port, mstp_state_t& state,
                                          unsigned int instance);

// Sets the state of every member of `port` in a spanning-tree instance. Flushes nothing.
VORN_EXPORT bool vorn_set_port_mstp_state(const Usp& port, mstp_state_t state,
                                          unsigned int instance);

// Sets the state of every port listed in a spanning-tree instance. Flushes nothing.
VORN_EXPORT bool vorn_set_ports_mstp_state(const std::list<Usp>& ports, mstp_state_t state,
                                           unsigned int instance);

// ---- BPDUs --------------------------------------------------------------------------------------

// Gets whether BPDUs that a physical port receives are handed to the CPU.
VORN_EXPORT bool vorn_get_port_bpdu_processing(const Usp& port, bool& on);

// Sets whether BPDUs that a physical port receives are handed to the CPU (on) or treated as
// ordinary multicast (off).
VORN_EXPORT bool vorn_set_port_bpdu_processing(const Usp& port, bool on);

#endif  // VORNLCAPI_API_STP_H_
