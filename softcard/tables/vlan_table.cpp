// SPDX-License-Identifier: Apache-2.0

#include "softcard/tables/vlan_table.h"

#include "softcard/base/address_plan.h"
#include "softcard/base/refusal.h"

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
  if (!in_range("VLAN", vlan, 1, kMaxVlan)) return false;
  if (vlans_[vlan].exists) return refuse("create_vlan: VLAN ", vlan, " exists");
  if (size_ >= capacity_) return refuse_full("vlans", capacity_);
  vlans_[vlan].exists = true;
  ++size_;
  return true;
}

bool VlanTable::require(unsigned vlan) const {
  if (!in_range("VLAN", vlan, 1, kMaxVlan)) return false;
  return exists(vlan) || refuse("VLAN ", vlan, " does not exist");
}

bool VlanTable::remove(unsigned vlan) {
  if (!require(vlan)) return false;
  vlans_[vlan].exists = false;
  vlans_[vlan].members.clear();
  vlans_[vlan].untagged.clear();
  --size_;
  return true;
}

bool VlanTable::add_members(unsigned vlan, const PortSet& tagged, const PortSet& untagged) {
  if (!require(vlan)) return false;
  vlans_[vlan].members |= tagged | untagged;
  vlans_[vlan].untagged -= tagged;
  vlans_[vlan].untagged |= untagged;
  return true;
}

bool VlanTable::remove_members(unsigned vlan, const PortSet& ports) {
  if (!require(vlan)) return false;
  for (const PortIndex stranger : ports - vlans_[vlan].members) {
    return refuse(AddressPlan::usp_of(stranger), " is no member of VLAN ", vlan);
  }
  vlans_[vlan].members -= ports;
  vlans_[vlan].untagged -= ports;
  return true;
}

}  // namespace softcard
