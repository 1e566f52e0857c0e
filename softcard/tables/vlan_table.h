// SPDX-License-Identifier: Apache-2.0
//
// The VLANs and their member ports. A member is either tagged or untagged: that decides how the
// VLAN's frames leave it.
//
// Conventions: functions that take any number as a VLAN refuse what is no VLAN; those that the
// pipeline uses want one below kVlanCount.
#ifndef SOFTCARD_TABLES_VLAN_TABLE_H_
#define SOFTCARD_TABLES_VLAN_TABLE_H_

#include <array>
#include <cstdint>
#include <vector>

#include "softcard/base/limits.h"
#include "softcard/base/port_set.h"

namespace softcard {

class VlanTable {
 public:
  // VLAN 1 exists with all `ports` as untagged members, like in a switch that nobody configured.
  VlanTable(std::size_t capacity, const PortSet& ports,
            const std::array<std::uint8_t, kVlanCount>& mstp_instance);

  // ---- What the pipeline asks -------------------------------------------------------------------

  bool exists(unsigned vlan) const { return vlans_[vlan].exists; }
  const PortSet& members(unsigned vlan) const { return vlans_[vlan].members; }
  const PortSet& untagged(unsigned vlan) const { return vlans_[vlan].untagged; }
  PortSet tagged(unsigned vlan) const { return members(vlan) - untagged(vlan); }
  unsigned mstp_instance(unsigned vlan) const { return vlans_[vlan].mstp_instance; }

  // ---- Settings ---------------------------------------------------------------------------------

  bool known(unsigned vlan) const { return valid_vlan(vlan) && exists(vlan); }
  // known(), and the reason of a refusal when it is not.
  bool require(unsigned vlan) const;
  std::size_t size() const { return size_; }

  // False when it exists, is no VLAN number, or the table is full.
  bool create(unsigned vlan);
  // False when it does not exist. Its members leave it.
  bool remove(unsigned vlan);
  // Makes ports members; one that is a member already changes its kind. A port in both sets
  // becomes untagged. False when the VLAN does not exist.
  bool add_members(unsigned vlan, const PortSet& tagged, const PortSet& untagged);
  // Takes ports out. False, and nothing changed, when one is not a member.
  bool remove_members(unsigned vlan, const PortSet& ports);

 private:
  struct Vlan {
    PortSet members;
    PortSet untagged;
    std::uint8_t mstp_instance = 0;
    bool exists = false;
  };

  std::vector<Vlan> vlans_;
  std::size_t capacity_;
  std::size_t size_ = 0;
};

}  // namespace softcard

#endif  // SOFTCARD_TABLES_VLAN_TABLE_H_
