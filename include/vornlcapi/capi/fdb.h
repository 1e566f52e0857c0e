/* SPDX-License-Identifier: Apache-2.0 */
/* The MAC table: entries, ageing, flushes, locks and limits. The conventions are in capi.h. */
#ifndef VORNLCAPI_CAPI_FDB_H_
#define VORNLCAPI_CAPI_FDB_H_

#include <stdbool.h>

#include "vornlcapi/export.h"
#include "vornlcapi/records.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Entries. They do not age ---------------------------------------------------------------- */

/* Makes an address the switch's own: frames to it go to the CPU. */
VORN_EXPORT int ctype_vorn_add_system_mac(unsigned char* mac, unsigned int vlan);
/* The same in every VLAN of a bitmap of 512 bytes: VLAN v is bit v % 8, bit 0 the lowest, of
 * byte v / 8. */
VORN_EXPORT int ctype_vorn_add_system_mac_vlan_bitmap(unsigned char* mac, unsigned char* bitmap);

/* Deletes an entry of any kind; 0 when there is none. The VLAN comes first here. */
VORN_EXPORT int ctype_vorn_delete_mac(unsigned int vlan, unsigned char* mac);
/* Deletes an address in every VLAN of a bitmap. VLANs without it are passed over; 0 when none of
 * them has it. */
VORN_EXPORT int ctype_vorn_delete_mac_vlan_bitmap(unsigned char* mac, unsigned char* bitmap);
/* Deletes an address in all VLANs; 0 when none has it. */
VORN_EXPORT int ctype_vorn_delete_mac_by_mac(unsigned char* mac);

/* Binds an address to a physical port or a LAG. 0 for a LAG that does not exist and for a VLAN
 * interface. */
VORN_EXPORT int ctype_vorn_add_mac_to_port(usp_s* port, unsigned char* mac, unsigned int vlan);

/* Walks the MAC table, up to the entry where the visitor says that it has seen enough; that is a
 * success. 0, and nobody is called, when the SDK refuses the walk.
 *   arg   points at a mac_traverse_s */
VORN_EXPORT int ctype_vorn_traverse_mac_table(void* arg);

/* ---- Ageing and flushes ---------------------------------------------------------------------- */

/* Seconds after which a learned entry that no frame has used is removed; 0 for never. */
VORN_EXPORT int ctype_vorn_get_fdb_aging_time(int* seconds);
VORN_EXPORT int ctype_vorn_set_fdb_aging_time(int seconds);

/* Remove the learned entries of the whole table or of a VLAN, with `and_static` the static ones
 * too. System entries stay. */
VORN_EXPORT int ctype_vorn_clear_fdb_table(int and_static);
VORN_EXPORT int ctype_vorn_clear_fdb_by_vlan(unsigned int vlan, int and_static);
/* Removes those of a physical port; for a LAG interface, those of the LAG with the id
 * `port->port - 1`. 0 for a VLAN interface. */
VORN_EXPORT int ctype_vorn_clear_fdb_by_port(usp_s* port, int and_static);

/* ---- MAC lock -------------------------------------------------------------------------------- */

/* On: the port learns no more addresses and drops frames from unknown ones. The getter reads a
 * physical port, the setter acts on every member of a port. */
VORN_EXPORT int ctype_vorn_get_port_mac_lock(usp_s* port, bool* on);
VORN_EXPORT int ctype_vorn_set_port_mac_lock(usp_s* port, int on);

/* The same for physical ports only; `drop` off lets frames from unknown addresses pass, still
 * without learning them. */
VORN_EXPORT int ctype_vorn_get_port_mac_lock_ext(usp_s* port, bool* on, bool* drop);
VORN_EXPORT int ctype_vorn_set_port_mac_lock_ext(usp_s* port, int on, int drop);

/* ---- MAC limit: most addresses that may be learned, -1 for no limit -------------------------- */

/* Reads the limit of a physical port, a LAG or a VLAN interface. */
VORN_EXPORT int ctype_vorn_get_port_mac_limit(usp_s* port, int* limit);
/* Limits physical ports only: every other port reaches the SDK as hardware port 0/0, and the
 * result is what the SDK says to that. */
VORN_EXPORT int ctype_vorn_set_port_mac_limit(usp_s* port, int limit);

/* Always returns 0 and never writes. */
VORN_EXPORT int ctype_vorn_get_system_mac_limit(int* limit);
/* Limits the whole switch. */
VORN_EXPORT int ctype_vorn_set_system_mac_limit(int limit);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* VORNLCAPI_CAPI_FDB_H_ */
