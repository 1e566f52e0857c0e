// SPDX-License-Identifier: Apache-2.0
//
// VLANs: their members, and what puts frames into them.

#include "softcard/sdk/sdk.h"

#include "softcard/base/refusal.h"
#include "softcard/base/text.h"
#include "softcard/frames/parser.h"
#include "softcard/sdk/conversions.h"

namespace softcard {

bool SoftSdk::create_vlan(unsigned int vlan) { return tables_.vlans.create(vlan); }

bool SoftSdk::delete_vlan(unsigned int vlan) { return card_.delete_vlan(vlan); }

bool SoftSdk::add_ports_to_vlan(unsigned int vlan, std::list<Mp>& tagged, std::list<Mp>& untagged) {
  PortSet tagged_ports;
  PortSet untagged_ports;
  return set_of(card_.addresses(), tagged, tagged_ports) &&
         set_of(card_.addresses(), untagged, untagged_ports) &&
         tables_.vlans.add_members(vlan, tagged_ports, untagged_ports);
}

bool SoftSdk::delete_ports_from_vlan(unsigned int vlan, std::list<Mp>& ports) {
  PortSet set;
  return set_of(card_.addresses(), ports, set) && card_.remove_vlan_members(vlan, set);
}

bool SoftSdk::get_vlan_info(unsigned int vlan, std::list<Mp>& tagged, std::list<Mp>& untagged) {
  if (!tables_.vlans.require(vlan)) return false;
  std::list<Mp> tagged_mps = mps_of(tables_.vlans.tagged(vlan));
  std::list<Mp> untagged_mps = mps_of(tables_.vlans.untagged(vlan));
  tagged.splice(tagged.end(), tagged_mps);
  untagged.splice(untagged.end(), untagged_mps);
  return true;
}

bool SoftSdk::set_port_pvid(const Mp& mp, unsigned int vlan) {
  return on_port(mp, [&](PortIndex port) { return tables_.port_vlans.set_pvid(port, vlan); });
}

bool SoftSdk::get_port_pvid(const Mp& mp, unsigned int& vlan) {
  return on_port(mp, [&](PortIndex port) { vlan = tables_.port_vlans.pvid(port); });
}

bool SoftSdk::set_port_vlan_priority(const Mp& mp, unsigned int vlan, unsigned int priority) {
  return on_port(
      mp, [&](PortIndex port) { return tables_.port_vlans.set_priority(port, vlan, priority); });
}

bool SoftSdk::get_port_vlan_priority(const Mp& mp, unsigned int vlan, unsigned int& priority) {
  return in_range("VLAN", vlan, 0, kMaxVlan) &&
         on_port(mp, [&](PortIndex port) { priority = tables_.port_vlans.priority(port, vlan); });
}

bool SoftSdk::set_port_vlan_accept_frame(const Mp& mp, bool all) {
  return on_port(mp, [&](PortIndex port) { tables_.port_vlans.set_accepts_untagged(port, all); });
}

bool SoftSdk::get_port_vlan_accept_frame(const Mp& mp, bool& all) {
  return on_port(mp, [&](PortIndex port) { all = tables_.port_vlans.accepts_untagged(port); });
}

bool SoftSdk::set_port_protocol_vlan(const Mp& mp, frame_type_t type, unsigned short protocol,
                                     unsigned int vlan) {
  if (type == FRAME_TYPE_ETHERNET && (protocol < kFirstEtherType || is_tag(protocol))) {
    return refuse("Ethernet type ", hex_text(protocol), ": a length or a tag, no frame has it");
  }
  return on_port(mp, [&](PortIndex port) {
    return tables_.port_vlans.set_protocol_vlan(port, type, protocol, vlan);
  });
}

bool SoftSdk::delete_port_protocol_vlan(const Mp& mp, frame_type_t type, unsigned short protocol) {
  return on_port(mp, [&](PortIndex port) {
    return tables_.port_vlans.remove_protocol_vlan(port, type, protocol);
  });
}

bool SoftSdk::delete_port_protocol_vlan_all(const Mp& mp) {
  return on_port(mp, [&](PortIndex port) { tables_.port_vlans.clear_protocol_vlans(port); });
}

bool SoftSdk::set_mac_vlan(const unsigned char* mac, unsigned int vlan, unsigned int priority) {
  return tables_.vlan_classes.set_mac(mac_of(mac), vlan, priority);
}

bool SoftSdk::set_ipv4_subnet_vlan(unsigned int ip, unsigned int mask, unsigned int vlan,
                                   unsigned int priority) {
  return tables_.vlan_classes.set_ipv4(ip, mask, vlan, priority);
}

bool SoftSdk::set_ipv6_subnet_vlan(const unsigned char* ip6, unsigned int prefix_length,
                                   unsigned int vlan, unsigned int priority) {
  return tables_.vlan_classes.set_ipv6(ip6_of(ip6), prefix_length, vlan, priority);
}

}  // namespace softcard
