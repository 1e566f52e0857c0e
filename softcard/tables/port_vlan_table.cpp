// SPDX-License-Identifier: Apache-2.0

#include "softcard/tables/port_vlan_table.h"

#include <algorithm>

namespace softcard {

PortVlanTable::PortVlanTable(PortIndex ports, std::size_t protocol_vlans_per_port)
    : ports_(ports),
      own_priority_(std::size_t{ports} * kVlanCount),
      protocol_vlans_per_port_(protocol_vlans_per_port) {}

bool PortVlanTable::set_pvid(PortIndex port, unsigned vlan) {
  if (!valid_vlan(vlan)) return false;
  ports_[port].pvid = static_cast<std::uint16_t>(vlan);
  return true;
}

bool PortVlanTable::set_priority(PortIndex port, unsigned vlan, unsigned priority) {
  if (vlan > kMaxVlan || priority >= kPriorities) return false;
  if (vlan == 0) {
    ports_[port].default_priority = static_cast<std::uint8_t>(priority);
  } else {
    own_priority_[port * std::size_t{kVlanCount} + vlan] = static_cast<std::uint8_t>(priority + 1);
  }
  return true;
}

bool PortVlanTable::set_protocol_vlan(PortIndex port, frame_type_t type, std::uint16_t protocol,
                                      unsigned vlan) {
  if (type > FRAME_TYPE_LLC || !valid_vlan(vlan)) return false;
  std::vector<ProtocolVlan>& rules = ports_[port].protocol_vlans;
  for (ProtocolVlan& rule : rules) {
    if (rule.type == type && rule.protocol == protocol) {
      rule.vlan = static_cast<std::uint16_t>(vlan);
      return true;
    }
  }
  if (rules.size() >= protocol_vlans_per_port_) return false;
  rules.push_back({type, protocol, static_cast<std::uint16_t>(vlan)});
  return true;
}

bool PortVlanTable::remove_protocol_vlan(PortIndex port, frame_type_t type,
                                         std::uint16_t protocol) {
  std::vector<ProtocolVlan>& rules = ports_[port].protocol_vlans;
  const auto rule = std::find_if(rules.begin(), rules.end(), [&](const ProtocolVlan& candidate) {
    return candidate.type == type && candidate.protocol == protocol;
  });
  if (rule == rules.end()) return false;
  rules.erase(rule);
  return true;
}

}  // namespace softcard
