// SPDX-License-Identifier: Apache-2.0
//
// MAC locks of ports, and the limits on how many addresses may be learned: by port, by LAG, by
// VLAN, and in the whole switch. What was learned before a lock or a lower limit stays.
//
// Conventions: numbers given are those of a port, LAG id or VLAN that the card can have.
#ifndef SOFTCARD_TABLES_MAC_LOCK_TABLE_H_
#define SOFTCARD_TABLES_MAC_LOCK_TABLE_H_

#include <array>
#include <vector>

#include "softcard/base/limits.h"
#include "softcard/base/net_types.h"
#include "softcard/base/port_set.h"

namespace softcard {

inline constexpr int kNoMacLimit = -1;

class MacLockTable {
 public:
  MacLockTable();

  // ---- Locks ------------------------------------------------------------------------------------

  // A locked port learns nothing. A locking port drops frames from addresses it has not learned.
  bool locked(PortIndex port) const { return locked_.contains(port); }
  bool drops_unknown(PortIndex port) const {
    return locked_.contains(port) && drop_.contains(port);
  }
  void set_lock(PortIndex port, bool on, bool drop) {
    locked_.assign(port, on);
    drop_.assign(port, drop);
  }
  bool drop_setting(PortIndex port) const { return drop_.contains(port); }

  // ---- Limits -----------------------------------------------------------------------------------

  // Whether one more address may be learned where `learned` are. kNoMacLimit: always.
  static bool room(int limit, std::size_t learned) {
    return limit < 0 || learned < static_cast<std::size_t>(limit);
  }
  // True while no limit is set anywhere: then nothing needs counting.
  bool unlimited() const { return limits_set_ == 0; }
  int port_limit(PortIndex port) const { return port_limits_[port]; }
  int lag_limit(std::size_t id) const { return lag_limits_[id]; }
  int vlan_limit(std::size_t vlan) const { return vlan_limits_[vlan]; }
  int system_limit() const { return system_limit_; }

  // False for a limit below kNoMacLimit.
  bool set_port_limit(PortIndex port, int limit) { return set(port_limits_[port], limit); }
  bool set_lag_limit(std::size_t id, int limit) { return set(lag_limits_[id], limit); }
  bool set_vlan_limit(std::size_t vlan, int limit) { return set(vlan_limits_[vlan], limit); }
  bool set_system_limit(int limit) { return set(system_limit_, limit); }

 private:
  bool set(int& limit, int value);

  PortSet locked_;
  PortSet drop_;
  std::array<int, kMaxPorts> port_limits_;
  std::vector<int> lag_limits_;
  std::vector<int> vlan_limits_;
  int system_limit_ = kNoMacLimit;
  unsigned limits_set_ = 0;
};

}  // namespace softcard

#endif  // SOFTCARD_TABLES_MAC_LOCK_TABLE_H_
