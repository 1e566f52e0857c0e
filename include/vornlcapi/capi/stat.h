/* SPDX-License-Identifier: Apache-2.0 */
/* Port counters: a full set (stat_type_t) and a brief set (brief_stat_type_t). All but the last
 * function act on one physical port. The conventions are in capi.h. */
#ifndef VORNLCAPI_CAPI_STAT_H_
#define VORNLCAPI_CAPI_STAT_H_

#include <stdbool.h>

#include "vornlcapi/export.h"
#include "vornlcapi/records.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- The full set ---------------------------------------------------------------------------- */

/* One counter, 64 bits. */
VORN_EXPORT int ctype_vorn_get_port_stat_counter(usp_s* port, stat_type_t type,
                                                 unsigned long long* value);
/* One counter, its low 32 bits. */
VORN_EXPORT int ctype_vorn_get_port_stat_counter32(usp_s* port, stat_type_t type,
                                                   unsigned int* value);

/* These two deliver nothing: all counters are read and thrown away, and neither `counters` nor
 * `count` is used. Read one counter at a time instead. */
VORN_EXPORT int ctype_vorn_get_port_stat_counter_all64(usp_s* port, void* counters,
                                                       unsigned int* count);
VORN_EXPORT int ctype_vorn_get_port_stat_counter_all32(usp_s* port, void* counters,
                                                       unsigned int* count);

/* ---- The brief set --------------------------------------------------------------------------- */

/* One counter, 64 bits. */
VORN_EXPORT int ctype_vorn_get_port_brief_stat_counter64(usp_s* port, brief_stat_type_t type,
                                                         unsigned long long* value);
/* One counter, its low 32 bits. */
VORN_EXPORT int ctype_vorn_get_port_brief_stat_counter32(usp_s* port, brief_stat_type_t type,
                                                         unsigned int* value);

/* Delivers nothing: neither `counters` nor `count` is used. Read one counter at a time. */
VORN_EXPORT int ctype_vorn_get_port_brief_stat_counter_all64(usp_s* port, void* counters,
                                                             unsigned int* count);
/* Delivers nothing and sets all counters of the port to 0. Read one counter at a time. */
VORN_EXPORT int ctype_vorn_get_port_brief_stat_counter_all32(usp_s* port, void* counters,
                                                             unsigned int* count);

/* ---- Clearing and collection ----------------------------------------------------------------- */

/* Sets all counters of the port to 0. */
VORN_EXPORT int ctype_vorn_clear_port_stat_counter(usp_s* port);

/* Whether the counters of a port count; off keeps their values. The getter reads a physical port,
 * the setter acts on every member of a port. */
VORN_EXPORT int ctype_vorn_get_port_stat_enabled(usp_s* port, bool* on);
VORN_EXPORT int ctype_vorn_set_port_stat_enable(usp_s* port, int on);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* VORNLCAPI_CAPI_STAT_H_ */
