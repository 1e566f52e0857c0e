// SPDX-License-Identifier: Apache-2.0
//
// The MAC table (FDB): entries, walk, ageing, flushes, locks and limits. api.h has the
// conventions.
#ifndef VORNLCAPI_API_FDB_H_
#define VORNLCAPI_API_FDB_H_

#include "vornlcapi/export.h"
#include "vornlcapi/types.h"

// ---- Entries ------------------------------------------------------------------------------------

// Makes an address the switch's own: frames to it go to the CPU. The entry does not age.
VORN_EXPORT bool vorn_add_system_mac(const unsigned char* mac, unsigned int vlan);

// Makes an address the switch's own in every VLAN of a bitmap.
//   bitmap   512 bytes: VLAN v is bit v % 8 (bit 0 the lowest) of byte v / 8.
VORN_EXPORT bool vorn_add_system_mac_vlan_bitmap(const unsigned char* mac,
                                                 const unsigned char* bitmap);

// Deletes the entry of an address, of whatever kind; false when there is none. The VLAN comes
// first, unlike in its siblings.
VORN_EXPORT bool vorn_delete_mac(unsigned int vlan, const unsigned char* mac);

// Deletes an address in every VLAN of a bitmap as in vorn_add_system_mac_vlan_bitmap(). VLANs
// without it are passed over; false when none of them has it.
VORN_EXPORT bool vorn_delete_mac_vlan_bitmap(const unsigned char* mac, unsigned char* bitmap);

// Deletes an address in all VLANs; false when none has it.
VORN_EXPORT bool vorn_delete_mac_by_mac(const unsigned char* mac);

// Binds an address to a physical port or a LAG; the entry does not age.
// False for a LAG that has no id or is not in the LAG list, and for a VLAN interface.
VORN_EXPORT bool vorn_add_mac_to_port(const Usp& port, const unsigned char* mac, unsigned int vlan);

// Does nothing and returns true, with or without an SDK object.
VORN_EXPORT bool vorn_delete_mac_from_port_all(const Usp& port, unsigned int vlan);

// Walks the MAC table, up to the entry where the visitor says that it has seen enough; that is a
// success. False, and nobody is called, when the SDK refuses the walk.
//   arg   points at a mac_traverse_s, whose function is called for every entry.
VORN_EXPORT bool vorn_traverse_mac_table(void* arg);

// ---- Ageing and flushes: `and_static` removes static entries too, system entries stay -----------

// Gets the time after which a learned entry that no frame has used is removed.
//   seconds   0: never.
VORN_EXPORT bool vorn_get_fdb_aging_time(int& seconds);

// Sets the time after which a learned entry that no frame has used is removed.
//   seconds   0: never.
VORN_EXPORT bool vorn_set_fdb_aging_time(int seconds);

// Removes the learned entries of the whole table.
VORN_EXPORT bool vorn_clear_fdb_table(bool and_static);

// Removes the learned entries of a VLAN.
VORN_EXPORT bool vorn_clear_fdb_by_vlan(unsigned int vlan, bool and_static);

// Removes the learned entries of a physical port, or of the LAG whose number is the port number
// of the LAG interface less 1: the LAG's id is not looked up, unlike everywhere else.
// False for a VLAN interface and an unknown port.
VORN_EXPORT bool vorn_clear_fdb_by_port(const Usp& port, bool and_static);

// ---- Locks --------------------------------------------------------------------------------------

// Gets whether the addresses of a physical port are locked.
VORN_EXPORT bool vorn_get_port_mac_lock(const Usp& port, bool& on);

// Locks the addresses of every member of `port`: it learns no more of them and drops frames from
// unknown ones.
VORN_EXPORT bool vorn_set_port_mac_lock(const Usp& port, bool on);

// Gets whether the addresses of a physical port are locked and whether it drops frames from
// unknown ones.
VORN_EXPORT bool vorn_get_port_mac_lock_ext(const Usp& port, bool& on, bool& drop);

// Locks the addresses of a physical port, and says whether frames from unknown ones are dropped or
// pass, still without being learned.
// It does not reach the members of a LAG, unlike vorn_set_port_mac_lock().
VORN_EXPORT bool vorn_set_port_mac_lock_ext(const Usp& port, bool on, bool drop);

// ---- Limits on learning: numbers of addresses, -1 for no limit ----------------------------------

// Gets the limit of a physical port, a LAG or a VLAN interface. False for a LAG that has no id.
VORN_EXPORT bool vorn_get_port_mac_limit(const Usp& port, int& limit);

// Sets the limit of a physical port. Every other port reaches the SDK as hardware port Mp(0, 0): a
// LAG, a VLAN interface and an unknown port are not refused here, and the result is the SDK's.
VORN_EXPORT bool vorn_set_port_mac_limit(const Usp& port, int limit);

// Always returns false, though it gets the limit of the whole switch: go by `limit`, which is
// written when the SDK answers.
VORN_EXPORT bool vorn_get_system_mac_limit(int& limit);

// Sets the limit of the whole switch.
VORN_EXPORT bool vorn_set_system_mac_limit(int limit);

#endif  // VORNLCAPI_API_FDB_H_
