// SPDX-License-Identifier: Apache-2.0

#include "softcard/tables/port_vlan_table.h"

#include <algorithm>

#include "softcard/base/address_plan.h"
#include "softcard/base/refusal.h"
#include "softcard/base/text.h"

namespace softcard {

PortVlanTable::PortVlanTable(PortIndex ports, std::size_t protocol_vlans_per_port)
    : ports_(ports),
      own_priority_(std::size_t{ports} * kVlanCount),
      protocol_vlans_per_port_(protocol_vlans_per_port) {}

bool PortVlanTable::set_pvid(PortIndex port, unsigned vlan) {
  if (!in_range("VLAN", vlan, 1, kMaxVlan)) return false;
  ports_[port].pvid = static_cast<std::uint16_t>(vlan);
  return true;
}

bool PortVlanTable::set_priority(PortIndex port, unsigned vlan, unsigned priority) {
  if (!in_range("VLAN", vlan, 0, kMaxVlan) || !in_range("priority", priority, 0, kPriorities - 1)) {
    return false;
  }
  if (vlan == 0) {
    ports_[port].default_priority = static_cast<std::uint8_t>(priority);
  } else {
    own_priority_[port * std::size_t{kVlanCount} + vlan] = static_cast<std::uint8_t>(priority + 1);
  }
  return true;
}

bool PortVlanTable::set_protocol_vlan(PortIndex port, frame_type_t type, std::uint16_t protocol,
                                      unsigned vlan) {
  if (!in_range("frame type", unsigned{type}, 0, FRAME_TYPE_LLC) ||
      !in_range("VLAN", vlan, 1, kMaxVlan)) {
    return false;
  }
  std::vector<ProtocolVlan>& rules = ports_[port].protocol_vlans;
  for (ProtocolVlan& rule : rules) {
    if (rule.type == type && rule.protocol == protocol) {
      rule.vlan = static_cast<std::uint16_t>(vlan);
      return true;
    }
  }
  if (rules.size() >= protocol_vlans_per_port_) {
    return refuse("protocol-vlans of ", AddressPlan::usp_of(port), ": full, ",
                  protocol_vlans_per_port_, " entries");
  }
  rules.push_back({type, protocol, static_cast<std::uint16_t>(vlan)});
  return true;
}

bool PortVlanTable::remove_protocol_vlan(PortIndex port, frame_type_t type,
                                         std::uint16_t protocol) {
  std::vector<ProtocolVlan>& rules = ports_[port].protocol_vlans;
  const auto rule = std::find_if(rules.begin(), rules.end(), [&](const ProtocolVlan& candidate) {
    return candidate.type == type && candidate.protocol == protocol;
  });
  if (rule == rules.end()) {
    return refuse(AddressPlan::usp_of(port), " has no rule for protocol ", hex_text(protocol),
                  " of frame type ", type);
  }
  rules.erase(rule);
  return true;
}

}  // namespace softcard
