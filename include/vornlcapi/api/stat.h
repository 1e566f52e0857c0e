// SPDX-License-Identifier: Apache-2.0
//
// Port counters. api.h has the conventions. There is a full set (stat_type_t) and a brief set
// (brief_stat_type_t).
#ifndef VORNLCAPI_API_STAT_H_
#define VORNLCAPI_API_STAT_H_

#include <list>

#include "vornlcapi/export.h"
#include "vornlcapi/types.h"

// ---- The full set -------------------------------------------------------------------------------

// Gets one counter of a physical port as 64 bits.
VORN_EXPORT bool vorn_get_port_stat_counter(const Usp& port, stat_type_t type,
                                            unsigned long long& value);

// Gets the low 32 bits of one counter of a physical port.
VORN_EXPORT bool vorn_get_port_stat_counter32(const Usp& port, stat_type_t type,
                                              unsigned int& value);

// Appends all counters of a physical port to `counters`, which is not cleared.
VORN_EXPORT bool vorn_get_port_stat_counter_all64(const Usp& port,
                                                  std::list<StatCounter64>& counters);

// Appends all counters of a physical port, low 32 bits, to `counters`, which is not cleared.
VORN_EXPORT bool vorn_get_port_stat_counter_all32(const Usp& port,
                                                  std::list<StatCounter32>& counters);

// Fills an array with the counters of a physical port, as far as it goes.
//   counters   the caller's array.
//   count      in: how many it has room for, which nobody can check; out: how many were filled.
VORN_EXPORT bool vorn_get_port_stat_counter_all64_ext(const Usp& port, StatCounter64* counters,
                                                      unsigned int& count);

// The same with the low 32 bits of each counter.
VORN_EXPORT bool vorn_get_port_stat_counter_all32_ext(const Usp& port, StatCounter32* counters,
                                                      unsigned int& count);

// ---- The brief set ------------------------------------------------------------------------------

// Gets one brief counter of a physical port as 64 bits.
VORN_EXPORT bool vorn_get_port_brief_stat_counter64(const Usp& port, brief_stat_type_t type,
                                                    unsigned long long& value);

// Gets the low 32 bits of one brief counter of a physical port.
VORN_EXPORT bool vorn_get_port_brief_stat_counter32(const Usp& port, brief_stat_type_t type,
                                                    unsigned int& value);

// Tells only whether all brief counters of a physical port can be read: `counters` comes by
// value, so what the SDK puts there never reaches the caller. Read them one at a time instead.
VORN_EXPORT bool vorn_get_port_brief_stat_counter_all64(const Usp& port,
                                                        std::list<BriefStatCounter64> counters);

// Clears all counters of a physical port, as vorn_clear_port_stat_counter() does, and gets none:
// `counters` is not looked at.
VORN_EXPORT bool vorn_get_port_brief_stat_counter_all32(const Usp& port,
                                                        std::list<BriefStatCounter32> counters);

// ---- Clearing and collection --------------------------------------------------------------------

// Sets all counters of a physical port to 0.
VORN_EXPORT bool vorn_clear_port_stat_counter(const Usp& port);

// Gets whether the counters of a physical port count.
VORN_EXPORT bool vorn_get_port_stat_enabled(const Usp& port, bool& enabled);

// Sets whether the counters of every member of `port` count; off keeps their values.
VORN_EXPORT bool vorn_set_port_stat_enable(const Usp& port, bool enable);

#endif  // VORNLCAPI_API_STAT_H_
