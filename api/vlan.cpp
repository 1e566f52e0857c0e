// SPDX-License-Identifier: Apache-2.0
//
// The VLAN table, classification rules, and the VLAN settings of ports.

#include "vornlcapi/api/vlan.h"

#include "api/ports.h"

using namespace vorn::detail;

// ---- VLANs and their members --------------------------------------------------------------------

bool vorn_create_vlan(unsigned int vlan) { return call<&VornSdkBase::create_vlan>(vlan); }

bool vorn_delete_vlan(unsigned int vlan) { return call<&VornSdkBase::delete_vlan>(vlan); }

// Whole lists go to the SDK, translated completely first.
bool vorn_add_ports_to_vlan(unsigned int vlan, const std::list<Usp>& tagged,
                            const std::list<Usp>& untagged) {
  VornSdkBase* const sdk = find_sdk();
  std::list<Mp> tagged_mps;
  std::list<Mp> untagged_mps;
  return sdk != nullptr && vorn_usp_list_to_mp_list(tagged, tagged_mps) &&
         vorn_usp_list_to_mp_list(untagged, untagged_mps) &&
         sdk->add_ports_to_vlan(vlan, tagged_mps, untagged_mps);
}

bool vorn_delete_ports_from_vlan(unsigned int vlan, const std::list<Usp>& ports) {
  VornSdkBase* const sdk = find_sdk();
  std::list<Mp> mps;
  return sdk != nullptr && vorn_usp_list_to_mp_list(ports, mps) &&
         sdk->delete_ports_from_vlan(vlan, mps);
}

// Whole lists come from the SDK and are translated after it succeeded.
bool vorn_get_vlan_info(unsigned int vlan, std::list<Usp>& tagged, std::list<Usp>& untagged) {
  VornSdkBase* const sdk = find_sdk();
  std::list<Mp> tagged_mps;
  std::list<Mp> untagged_mps;
  return sdk != nullptr && sdk->get_vlan_info(vlan, tagged_mps, untagged_mps) &&
         vorn_mp_list_to_usp_list(tagged_mps, tagged) &&
         vorn_mp_list_to_usp_list(untagged_mps, untagged);
}

// ---- Classification of untagged frames ----------------------------------------------------------

bool vorn_set_mac_vlan(const unsigned char* mac, unsigned int vlan, unsigned int priority) {
  return call<&VornSdkBase::set_mac_vlan>(mac, vlan, priority);
}

bool vorn_set_ipv4_subnet_vlan(unsigned int ip, unsigned int mask, unsigned int vlan,
                               unsigned int priority) {
  return call<&VornSdkBase::set_ipv4_subnet_vlan>(ip, mask, vlan, priority);
}

bool vorn_set_ipv6_subnet_vlan(const unsigned char* ip6, unsigned int prefix_length,
                               unsigned int vlan, unsigned int priority) {
  return call<&VornSdkBase::set_ipv6_subnet_vlan>(ip6, prefix_length, vlan, priority);
}

// ---- VLAN settings of a port --------------------------------------------------------------------

bool vorn_get_port_pvid(const Usp& port, unsigned int& pvid) {
  return on_port<TranslateLookup, &VornSdkBase::get_port_pvid>(port, pvid);
}

bool vorn_set_port_pvid(const Usp& port, unsigned int pvid) {
  return on_members<TranslateLookup, &VornSdkBase::set_port_pvid>(port, pvid);
}

bool vorn_set_ports_pvid(const std::list<Usp>& ports, unsigned int pvid) {
  return on_ports<&VornSdkBase::set_port_pvid>(ports, pvid);
}

bool vorn_get_port_vlan_priority(const Usp& port, unsigned int vlan, unsigned int& priority) {
  return on_port<TranslateLookup, &VornSdkBase::get_port_vlan_priority>(port, vlan, priority);
}

bool vorn_set_port_vlan_priority(const Usp& port, unsigned int vlan, unsigned int priority) {
  return on_members<TranslateLookup, &VornSdkBase::set_port_vlan_priority>(port, vlan, priority);
}

bool vorn_get_port_vlan_accept_frame(const Usp& port, bool& all) {
  return on_port<TranslateLookup, &VornSdkBase::get_port_vlan_accept_frame>(port, all);
}

bool vorn_set_port_vlan_accept_frame(const Usp& port, bool all) {
  return on_members<TranslateLookup, &VornSdkBase::set_port_vlan_accept_frame>(port, all);
}

bool vorn_set_port_protocol_vlan(const Usp& port, frame_type_t type, unsigned short protocol,
                                 unsigned int vlan) {
  return on_members<TranslateLookup, &VornSdkBase::set_port_protocol_vlan>(port, type, protocol,
                                                                           vlan);
}

bool vorn_delete_port_protocol_vlan(const Usp& port, frame_type_t type, unsigned short protocol) {
  return on_members<TranslateLookup, &VornSdkBase::delete_port_protocol_vlan>(port, type, protocol);
}

bool vorn_delete_port_protocol_vlan_all(const Usp& port) {
  return on_members<TranslateLookup, &VornSdkBase::delete_port_protocol_vlan_all>(port);
}
