// SPDX-License-Identifier: Apache-2.0

#include "softcard/tables/vlan_table.h"

namespace softcard {

VlanTable::VlanTable(std::size_t capacity, const PortSet& ports,
                     const std::array<std::uint8_t, kVlanCount>& mstp_instance)
    : vlans_(kVlanCount), capacity_(capacity) {
  for (unsigned vlan = 0; vlan < kVlanCount; ++vlan) {
    vlans_[vlan].mstp_instance = mstp_instance[vlan];
  }
  create(1);
  add_members(1, PortSet(), ports);
}

bool VlanTable::create(unsigned vlan) {
  if (!valid_vlan(vlan) || vlans_[vlan].exists || size_ >= capacity_) return false;
  vlans_[vlan].exists = true;
  ++size_;
  return true;
}

bool VlanTable::remove(unsigned vlan) {
  if (!known(vlan)) return false;
  vlans_[vlan].exists = false;
  vlans_[vlan].members.clear();
  vlans_[vlan].untagged.clear();
  --size_;
  return true;
}

bool VlanTable::add_members(unsigned vlan, const PortSet& tagged, const PortSet& untagged) {
  if (!known(vlan)) return false;
  vlans_[vlan].members |= tagged | untagged;
  vlans_[vlan].untagged -= tagged;
  vlans_[vlan].untagged |= untagged;
  return true;
}

bool VlanTable::remove_members(unsigned vlan, const PortSet& ports) {
  if (!known(vlan) || !(ports - vlans_[vlan].members).empty()) return false;
  vlans_[vlan].members -= ports;
  vlans_[vlan].untagged -= ports;
  return true;
}

}  // namespace softcard
