// SPDX-License-Identifier: Apache-2.0
//
// How each port puts the frames that it receives into VLANs: PVID, the priority of untagged frames,
// the accepted frames, and protocol VLANs.
//
// Conventions: a PortIndex given is a port of the card. Setters return false for a value out of
// range and then change nothing. A VLAN named here need not exist: frames put into one that does
// not are dropped until it does.
#ifndef SOFTCARD_TABLES_PORT_VLAN_TABLE_H_
#define SOFTCARD_TABLES_PORT_VLAN_TABLE_H_

#include <cstdint>
#include <vector>

#include "softcard/base/limits.h"
#include "softcard/base/net_types.h"
#include "vornlcapi/enums.h"

namespace softcard {

struct ProtocolVlan {
  frame_type_t type;
  std::uint16_t protocol;
  std::uint16_t vlan;
};

class PortVlanTable {
 public:
  PortVlanTable(PortIndex ports, std::size_t protocol_vlans_per_port);

  // ---- What the pipeline asks -------------------------------------------------------------------

  std::uint16_t pvid(PortIndex port) const { return ports_[port].pvid; }
  bool accepts_untagged(PortIndex port) const { return ports_[port].accepts_untagged; }
  // The priority of frames that come in untagged and are put into `vlan`, below kVlanCount.
  unsigned priority(PortIndex port, unsigned vlan) const {
    const std::uint8_t own = own_priority_[port * std::size_t{kVlanCount} + vlan];
    return own != 0 ? own - 1u : ports_[port].default_priority;
  }
  bool has_protocol_vlans(PortIndex port) const { return !ports_[port].protocol_vlans.empty(); }
  // The VLAN of untagged frames of a protocol; 0 when there is no rule for it.
  unsigned protocol_vlan(PortIndex port, frame_type_t type, std::uint16_t protocol) const {
    for (const ProtocolVlan& rule : ports_[port].protocol_vlans) {
      if (rule.protocol == protocol && rule.type == type) return rule.vlan;
    }
    return 0;
  }

  // ---- Settings ---------------------------------------------------------------------------------

  bool set_pvid(PortIndex port, unsigned vlan);
  void set_accepts_untagged(PortIndex port, bool accepts) {
    ports_[port].accepts_untagged = accepts;
  }
  // Whether a priority was set for the VLAN, though it be the one of all others.
  bool has_own_priority(PortIndex port, unsigned vlan) const {
    return own_priority_[port * std::size_t{kVlanCount} + vlan] != 0;
  }
  // VLAN 0 sets the priority for all VLANs that have none of their own.
  bool set_priority(PortIndex port, unsigned vlan, unsigned priority);
  // Sets or changes the rule for a protocol; false when the port's rules are full.
  bool set_protocol_vlan(PortIndex port, frame_type_t type, std::uint16_t protocol, unsigned vlan);
  // False when there is no such rule.
  bool remove_protocol_vlan(PortIndex port, frame_type_t type, std::uint16_t protocol);
  void clear_protocol_vlans(PortIndex port) { ports_[port].protocol_vlans.clear(); }
  const std::vector<ProtocolVlan>& protocol_vlans(PortIndex port) const {
    return ports_[port].protocol_vlans;
  }

 private:
  struct Port {
    std::uint16_t pvid = 1;
    std::uint8_t default_priority = 0;
    bool accepts_untagged = true;
    std::vector<ProtocolVlan> protocol_vlans;
  };

  std::vector<Port> ports_;
  std::vector<std::uint8_t> own_priority_;  // by port and VLAN; 0: none, else priority + 1
  std::size_t protocol_vlans_per_port_;
};

}  // namespace softcard

#endif  // SOFTCARD_TABLES_PORT_VLAN_TABLE_H_
