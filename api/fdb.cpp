// SPDX-License-Identifier: Apache-2.0
//
// The MAC table.

#include "vornlcapi/api/fdb.h"

#include "api/ports.h"
#include "vorn_lag_list.h"

using namespace vorn::detail;

// ---- Entries ------------------------------------------------------------------------------------

bool vorn_add_system_mac(const unsigned char* mac, unsigned int vlan) {
  return call<&VornSdkBase::add_system_mac>(mac, vlan);
}

bool vorn_add_system_mac_vlan_bitmap(const unsigned char* mac, const unsigned char* bitmap) {
  return call<&VornSdkBase::add_system_mac_vlan_bitmap>(mac, bitmap);
}

bool vorn_delete_mac(unsigned int vlan, const unsigned char* mac) {
  return call<&VornSdkBase::delete_mac>(mac, vlan);
}

bool vorn_delete_mac_vlan_bitmap(const unsigned char* mac, unsigned char* bitmap) {
  return call<&VornSdkBase::delete_mac_vlan_bitmap>(mac, bitmap);
}

bool vorn_delete_mac_by_mac(const unsigned char* mac) {
  return call<&VornSdkBase::delete_mac_by_mac>(mac);
}

// A LAG must be known to the mapping and to the LAG list.
bool vorn_add_mac_to_port(const Usp& port, const unsigned char* mac, unsigned int vlan) {
  VornSdkBase* const sdk = find_sdk();
  if (sdk == nullptr) return false;
  if (is_port_physical(port)) {
    Mp mp(0, 0);
    return vorn_usp_to_mp(port, mp) && sdk->add_mac_to_port(mp, mac, vlan, false);
  }
  unsigned int lag_id = 0;
  return is_port_logical_lag(port) && vornsdk_lag_usp_to_lag_id(port, lag_id) &&
         is_lag_exist(lag_id, lag_list) && sdk->add_mac_to_port(Mp(0, lag_id), mac, vlan, true);
}

// Kept for the programs that are linked against it.
bool vorn_delete_mac_from_port_all(const Usp& /*port*/, unsigned int /*vlan*/) { return true; }

bool vorn_traverse_mac_table(void* arg) { return call<&VornSdkBase::traverse_mac_table>(arg); }

// ---- Ageing and flushes -------------------------------------------------------------------------

bool vorn_get_fdb_aging_time(int& seconds) {
  return call<&VornSdkBase::get_fdb_aging_time>(seconds);
}

bool vorn_set_fdb_aging_time(int seconds) {
  return call<&VornSdkBase::set_fdb_aging_time>(seconds);
}

bool vorn_clear_fdb_table(bool and_static) {
  return call<&VornSdkBase::clear_fdb_table>(and_static);
}

bool vorn_clear_fdb_by_vlan(unsigned int vlan, bool and_static) {
  return call<&VornSdkBase::clear_fdb_by_vlan>(vlan, and_static);
}

// The LAG's number comes from its interface by arithmetic; the mapping is not asked. The lookup
// comes last.
bool vorn_clear_fdb_by_port(const Usp& port, bool and_static) {
  Mp mp(0, 0);
  bool trunk = false;
  if (!vorn_usp_to_mp(port, mp)) {
    if (!is_port_logical_lag(port)) return false;
    trunk = true;
    mp.set_port(port.port() - 1);
  }
  VornSdkBase* const sdk = find_sdk();
  return sdk != nullptr && sdk->clear_fdb_by_port(mp, trunk, and_static);
}

// ---- Locks --------------------------------------------------------------------------------------

bool vorn_get_port_mac_lock(const Usp& port, bool& on) {
  return on_port<TranslateLookup, &VornSdkBase::get_port_mac_lock>(port, on);
}

bool vorn_set_port_mac_lock(const Usp& port, bool on) {
  return on_members<TranslateLookup, &VornSdkBase::set_port_mac_lock>(port, on);
}

bool vorn_get_port_mac_lock_ext(const Usp& port, bool& on, bool& drop) {
  return on_port<LookupTranslate, &VornSdkBase::get_port_mac_lock_ext>(port, on, drop);
}

bool vorn_set_port_mac_lock_ext(const Usp& port, bool on, bool drop) {
  return on_port<LookupTranslate, &VornSdkBase::set_port_mac_lock_ext>(port, on, drop);
}

// ---- Limits on learning: the SDK has one pair of operations, told apart by a port kind code -----

bool vorn_get_port_mac_limit(const Usp& port, int& limit) {
  VornSdkBase* const sdk = find_sdk();
  if (sdk == nullptr) return false;
  Mp mp(0, 0);
  unsigned int kind = PORT_KIND_PHYSICAL;
  if (!vorn_usp_to_mp(port, mp)) {
    if (is_port_logical_lag(port)) {
      unsigned int lag_id = 0;
      if (!vornsdk_lag_usp_to_lag_id(port, lag_id)) return false;
      mp.set_port(lag_id);
      kind = PORT_KIND_LAG;
    } else if (is_port_logical_vlan(port)) {
      mp.set_port(port.port());
      kind = PORT_KIND_VLAN;
    } else {
      return false;
    }
  }
  return sdk->get_system_mac_limit(mp, limit, kind);
}

// Goes on with Mp(0, 0) as a physical port when the translation fails, where the getter would
// look at the kind of port.
bool vorn_set_port_mac_limit(const Usp& port, int limit) {
  VornSdkBase* const sdk = find_sdk();
  if (sdk == nullptr) return false;
  Mp mp(0, 0);
  static_cast<void>(vorn_usp_to_mp(port, mp));
  return sdk->set_system_mac_limit(mp, limit, PORT_KIND_PHYSICAL);
}

// False whatever the SDK answers: its answer is in `limit`.
bool vorn_get_system_mac_limit(int& limit) {
  VornSdkBase* const sdk = find_sdk();
  if (sdk != nullptr) sdk->get_system_mac_limit(Mp(0, 0), limit, PORT_KIND_SYSTEM);
  return false;
}

bool vorn_set_system_mac_limit(int limit) {
  VornSdkBase* const sdk = find_sdk();
  return sdk != nullptr && sdk->set_system_mac_limit(Mp(0, 0), limit, PORT_KIND_SYSTEM);
}
