// SPDX-License-Identifier: Apache-2.0
//
// The smallest process that libvornlcapi loads into: eight ports whose PVID is kept, and
// every other operation refused. Written from the platform headers alone; docs/host.md goes
// through it. A host without XORP adds no_event_loop.cpp.
//
//   minimal_host [library]       (libvornlcapi.so.0 where the loader finds it by default)

#include <dlfcn.h>

#include <cstdio>

#include "vorn_lag_list.h"
#include "vorn_port_mapping.h"
#include "vorn_sdk.h"
#include "vornlcapi/records.h"

namespace {

const unsigned int kPorts = 8;  // 1/1/0 to 1/1/7, hardware ports 0:1 to 0:8

typedef unsigned int u32;
typedef const Mp& Port;
typedef std::list<Mp>& Ports;
typedef const unsigned char* Bytes;
typedef unsigned char* Buffer;

class Sdk final : public VornSdkBase {
 public:
  // What this hardware can do.
  bool get_line_card_usp(Usp& usp) override { return usp = Usp(1, 1, 0), true; }
  bool get_port_pvid(Port mp, u32& vlan) override { return vlan = pvid_[mp.port() - 1], true; }
  bool set_port_pvid(Port mp, u32 vlan) override {
    return vlan >= 1 && vlan <= 4094 && (pvid_[mp.port() - 1] = vlan, true);
  }
  bool set_lcmgr_trace(const std::string&, bool) override { return true; }

  // What it cannot do is refused, never pretended.
  bool create_vlan(u32) override { return false; }
  bool delete_vlan(u32) override { return false; }
  bool add_ports_to_vlan(u32, Ports, Ports) override { return false; }
  bool delete_ports_from_vlan(u32, Ports) override { return false; }
  bool get_vlan_info(u32, Ports, Ports) override { return false; }
  bool set_port_mstp_state(u32, Port, mstp_state_t) override { return false; }
  bool get_port_mstp_state(u32, Port, mstp_state_t&) override { return false; }
  bool create_lag(u32&) override { return false; }
  bool delete_lag(u32) override { return false; }
  bool add_ports_to_lag(u32, Ports) override { return false; }
  bool delete_ports_from_lag(u32, Ports) override { return false; }
  bool set_lag_balancing_strategy(u32, lag_psc_t) override { return false; }
  bool get_lag_balancing_strategy(u32, lag_psc_t&) override { return false; }
  bool set_port_mirror(Port, Port, mirror_type_t) override { return false; }
  bool get_port_mirror(Mp&, Port, mirror_type_t&) override { return false; }
  bool set_port_state(Port, bool) override { return false; }
  bool get_port_state(Port, bool&) override { return false; }
  bool set_port_autoneg(Port, bool) override { return false; }
  bool get_port_autoneg(Port, bool&) override { return false; }
  bool set_port_speed(Port, speed_type_t) override { return false; }
  bool get_port_speed(Port, speed_type_t&) override { return false; }
  bool set_port_duplex(Port, duplex_type_t) override { return false; }
  bool get_port_duplex(Port, duplex_type_t&) override { return false; }
  bool set_port_flow_control_8023x(Port, bool, bool) override { return false; }
  bool get_port_flow_control_8023x(Port, u32&, u32&) override { return false; }
  bool set_port_jaming_control(Port, bool) override { return false; }
  bool get_port_jaming_control(Port, bool&) override { return false; }
  bool set_port_stat_enable(Port, bool) override { return false; }
  bool get_port_stat_enabled(Port, bool&) override { return false; }
  bool get_port_stat_counter(Port, stat_type_t, unsigned long long&) override { return false; }
  bool get_port_stat_counter32(Port, stat_type_t, u32&) override { return false; }
  bool get_port_stat_counter_all64(Port, std::list<StatCounter64>&) override { return false; }
  bool get_port_stat_counter_all32(Port, std::list<StatCounter32>&) override { return false; }
  bool get_port_stat_counter_all64_ext(Port, StatCounter64*, u32&) override { return false; }
  bool get_port_stat_counter_all32_ext(Port, StatCounter32*, u32&) override { return false; }
  bool get_port_brief_stat_counter64(Port, brief_stat_type_t, unsigned long long&) override {
    return false;
  }
  bool get_port_brief_stat_counter32(Port, brief_stat_type_t, u32&) override { return false; }
  bool get_port_brief_stat_counter_all64(Port, std::list<BriefStatCounter64>&) override {
    return false;
  }
  bool clear_port_stat_counter(Port) override { return false; }
  bool set_port_stp_state(Port, stp_state_t) override { return false; }
  bool get_port_stp_state(Port, stp_state_t&) override { return false; }
  bool set_port_bpdu_processing(Port, bool) override { return false; }
  bool get_port_bpdu_processing(Port, bool&) override { return false; }
  bool add_mac_to_port(Port, Bytes, u32, bool) override { return false; }
  bool add_system_mac(Bytes, u32) override { return false; }
  bool add_system_mac_vlan_bitmap(Bytes, Bytes) override { return false; }
  bool delete_mac(Bytes, u32) override { return false; }
  bool delete_mac_vlan_bitmap(Bytes, Buffer) override { return false; }
  bool delete_mac_by_mac(Bytes) override { return false; }
  bool clear_fdb_by_port(Port, bool, bool) override { return false; }
  bool clear_fdb_by_vlan(u32, bool) override { return false; }
  bool clear_fdb_table(bool) override { return false; }
  bool set_fdb_aging_time(int) override { return false; }
  bool get_fdb_aging_time(int&) override { return false; }
  bool set_port_link_state(Port, phy_state_t) override { return false; }
  bool set_port_mac_lock(Port, bool) override { return false; }
  bool get_port_mac_lock(Port, bool&) override { return false; }
  bool set_port_mac_lock_ext(Port, bool, bool) override { return false; }
  bool get_port_mac_lock_ext(Port, bool&, bool&) override { return false; }
  bool set_port_broadcast_control(Port, u32) override { return false; }
  bool get_port_broadcast_control(Port, u32&) override { return false; }
  bool set_port_multicast_control(Port, u32) override { return false; }
  bool get_port_multicast_control(Port, u32&) override { return false; }
  bool set_port_unicast_control(Port, u32) override { return false; }
  bool get_port_unicast_control(Port, u32&) override { return false; }
  bool set_port_egress_admin_state(Port, bool) override { return false; }
  bool get_port_egress_admin_state(Port, bool&) override { return false; }
  bool set_port_ingress_discarding(Port, ingress_discard_type_t) override { return false; }
  bool get_port_ingress_discarding(Port, ingress_discard_type_t&) override { return false; }
  bool set_port_vlan_priority(Port, u32, u32) override { return false; }
  bool get_port_vlan_priority(Port, u32, u32&) override { return false; }
  bool set_port_vlan_accept_frame(Port, bool) override { return false; }
  bool get_port_vlan_accept_frame(Port, bool&) override { return false; }
  bool set_system_mac_limit(Port, int, u32) override { return false; }
  bool get_system_mac_limit(Port, int&, u32) override { return false; }
  bool set_port_protocol_vlan(Port, frame_type_t, unsigned short, u32) override { return false; }
  bool delete_port_protocol_vlan(Port, frame_type_t, unsigned short) override { return false; }
  bool delete_port_protocol_vlan_all(Port) override { return false; }
  bool set_mac_vlan(Bytes, u32, u32) override { return false; }
  bool set_ipv4_subnet_vlan(u32, u32, u32, u32) override { return false; }
  bool set_ipv6_subnet_vlan(Bytes, u32, u32, u32) override { return false; }
  bool send_packet_by_port(Ports, Ports, const Packet&) override { return false; }
  bool get_port_ability(Port, port_ability_type_t&) override { return false; }
  bool set_port_advertising_ability(Port, port_ability_type_t) override { return false; }
  bool get_port_advertising_ability(Port, port_ability_type_t&) override { return false; }
  bool get_port_current_ability(Port, port_ability_type_t&) override { return false; }
  bool get_port_peer_ability(Mp, port_ability_type_t&) override { return false; }
  bool set_port_flood_blocking(Port, Port, flood_block_type_t) override { return false; }
  bool get_port_flood_blocking(Port, Port, flood_block_type_t&) override { return false; }
  bool set_port_flood_blocking_cpu(Port, flood_block_type_t) override { return false; }
  bool get_port_flood_blocking_cpu(Port, flood_block_type_t&) override { return false; }
  bool set_port_cos_mapping(Port, u32, u32) override { return false; }
  bool get_port_cos_mapping(Port, u32, u32&) override { return false; }
  bool free_call(int) override { return false; }
  bool set_switch_forward_mode(u32) override { return false; }
  bool get_switch_forward_mode(u32&) override { return false; }
  bool add_arp_filter(u32, u32) override { return false; }
  bool delete_arp_filter(u32, u32) override { return false; }
  bool delete_arp_filter_all() override { return false; }
  bool add_ip_protocol_filter(u32) override { return false; }
  bool delete_ip_protocol_filter(u32) override { return false; }
  bool delete_ip_protocol_filter_all() override { return false; }
  bool add_l4_destination_port_filter(u32) override { return false; }
  bool delete_l4_destination_port_filter(u32) override { return false; }
  bool delete_l4_destination_port_filter_all() override { return false; }
  bool set_port_l2_enable(Port, bool) override { return false; }
  bool set_port_switch_unknown_unicast_to_cpu(Port, bool) override { return false; }
  bool get_port_switch_unknown_unicast_to_cpu(Port, bool&) override { return false; }
  bool set_switch_unknown_unicast_to_cpu(bool) override { return false; }
  bool get_switch_unknown_unicast_to_cpu(bool&) override { return false; }
  bool add_of_flow(of_flow_mp_s&, u32&, const of_flow_qualify_udf_s&) override { return false; }
  bool add_of_flow_with_id(of_flow_mp_s&, u32) override { return false; }
  bool delete_of_flow(u32) override { return false; }
  bool clear_of_flow_table() override { return false; }
  bool add_of_flow_action(u32, of_action_t, of_action_param_s, Port) override { return false; }
  bool delete_of_flow_action(u32, of_action_t, of_action_param_s, Port) override { return false; }
  bool clear_of_flow_action(u32) override { return false; }
  bool set_of_flow_priority(u32, int) override { return false; }
  bool get_of_flow_priority(u32, int&) override { return false; }
  bool get_of_flow_stat_counter64(u32, unsigned long long&) override { return false; }
  bool get_of_flow_stat_counter32(u32, u32&) override { return false; }
  bool register_mac_update_callback(void (*)(L2Addr*, int, void*), void*) override { return false; }
  bool register_mac_update_callback_c(void (*)(ctype_l2_addr_s*, int, void*), void*) override {
    return false;
  }
  bool register_link_change_callback(void (*)(LinkStatus*, Usp*), void*) override { return false; }
  bool register_link_change_callback_c(void (*)(ctype_link_status_s*, usp_s*), void*) override {
    return false;
  }
  bool register_rx_packet_callback(void (*)(RxPacket*, void*), void*) override { return false; }
  bool register_rx_packet_callback_c(void (*)(ctype_rx_packet_s*, void*), void*) override {
    return false;
  }
  bool deregister_event_callback(lcmgr_report_event_t, void*, void*) override { return false; }
  bool traverse_mac_table(void*) override { return false; }
  bool create_l3_interface(Bytes, u32, u32&) override { return false; }
  bool create_l3_interface_with_id(Bytes, u32, u32, bool) override { return false; }
  bool get_l3_interface(u32, u32&, Buffer) override { return false; }
  bool delete_l3_interface(Bytes, u32) override { return false; }
  bool delete_l3_interface_by_id(u32) override { return false; }
  bool delete_l3_interface_all() override { return false; }
  bool add_l3_host_ip4(Mp, bool, u32, Bytes, u32) override { return false; }
  bool add_l3_host_ip6(Mp, bool, Bytes, Bytes, u32) override { return false; }
  bool get_l3_host_ip4(u32, Mp, Buffer, u32&, bool) override { return false; }
  bool get_l3_host_ip6(Bytes, Mp, Buffer, u32&, bool) override { return false; }
  bool get_l3_route_by_subnet_ip4(u32, u32, Port, bool, unsigned char (&)[6], u32&, u32&) override {
    return false;
  }
  bool get_l3_route_by_subnet_ip6(Bytes, Bytes, Port, bool, u32&, Buffer) override { return false; }
  bool delete_l3_host_by_interface(u32, bool) override { return false; }
  bool delete_l3_host_by_network_ip4(u32) override { return false; }
  bool delete_l3_host_by_network_ip6(Bytes) override { return false; }
  bool delete_l3_host_by_addr_ip4(u32, Port, bool) override { return false; }
  bool delete_l3_host_by_addr_ip6(Bytes, Port, bool) override { return false; }
  bool clear_l3_host_table() override { return false; }
  bool add_l3_route_ip4(Port, bool, u32, u32, Bytes, u32, u32) override { return false; }
  bool add_l3_route_ip6(Port, bool, Bytes, Bytes, Bytes, u32) override { return false; }
  bool delete_l3_route_by_interface(u32, bool) override { return false; }
  bool delete_l3_route_by_subnet_ip4(u32, u32, Port, bool) override { return false; }
  bool delete_l3_route_by_subnet_ip6(Bytes, Bytes, Port, bool) override { return false; }
  bool clear_l3_route_table() override { return false; }
  bool send_packet_from_cpu(const Packet&) override { return false; }
  bool set_port_mtu(Port, u32) override { return false; }
  bool get_port_mtu(Port, u32&) override { return false; }
  bool get_port_link_state(Port, phy_state_t&) override { return false; }

 private:
  u32 pvid_[kPorts] = {1, 1, 1, 1, 1, 1, 1, 1};
};

Sdk* sdk_object = nullptr;

}  // namespace

// ---- The SDK object and the LAG mapping ------------------------------------------------------

bool vornsdk_get_sdk_instance(VornSdkBase*& sdk) { return (sdk = sdk_object) != nullptr; }
bool vornsdk_create_sdk_instance() { return (sdk_object = new Sdk) != nullptr; }
bool vornsdk_delete_sdk_instance(VornSdkBase* sdk) {
  delete static_cast<Sdk*>(sdk);
  sdk_object = nullptr;
  return true;
}
bool vornsdk_lag_usp_to_lag_id(const Usp&, unsigned&) { return false; }
bool vornsdk_lag_id_to_lag_usp(unsigned, Usp&) { return false; }
bool vornsdk_add_lag_mapping(const Usp&, unsigned) { return false; }
bool vornsdk_delete_lag_mapping(const Usp&, unsigned) { return false; }

// ---- Port mapping ----------------------------------------------------------------------------

bool vorn_init_line_card(int& out) { return out = kPorts, true; }
bool is_port_physical(const Usp& p) { return p.unit() == 1 && p.slot() == 1 && p.port() < kPorts; }
bool is_port_logical_lag(const Usp&) { return false; }
bool is_port_logical_vlan(const Usp&) { return false; }
bool vorn_usp_to_mp(const Usp& port, Mp& mp) {
  return is_port_physical(port) && (mp = Mp(0, port.port() + 1), true);
}
bool vorn_usp_to_mp_list(const Usp& port, std::list<Mp>& mps) {
  Mp mp(0, 0);
  return vorn_usp_to_mp(port, mp) && (mps.push_back(mp), true);
}
bool vorn_usp_list_to_mp_list(const std::list<Usp>& ports, std::list<Mp>& mps) {
  for (const Usp& port : ports) {
    if (!vorn_usp_to_mp_list(port, mps)) return false;
  }
  return true;
}
bool vorn_mp_to_usp(const Mp& mp, Usp& port) {
  return mp.port() >= 1 && mp.port() <= kPorts && (port = Usp(1, 1, mp.port() - 1), true);
}
bool vorn_mp_list_to_usp_list(const std::list<Mp>& mps, std::list<Usp>& ports) {
  for (const Mp& mp : mps) {
    ports.emplace_back(0, 0, 0);
    if (!vorn_mp_to_usp(mp, ports.back())) return false;
  }
  return true;
}

// ---- LAG list: this card has no LAGs -----------------------------------------------------------

std::list<LagNode> lag_list;
bool add_lag_to_list(unsigned, std::list<LagNode>&) { return false; }
bool delete_lag_from_list(unsigned, std::list<LagNode>&) { return false; }
bool is_lag_exist(unsigned, std::list<LagNode>) { return false; }
bool add_lag_member(unsigned, std::list<LagNode>&, std::list<Mp>&) { return false; }
bool delete_lag_member(unsigned, std::list<LagNode>&, std::list<Mp>&) { return false; }
bool get_lag_member(unsigned, std::list<Mp>&) { return false; }

// ---- The process -----------------------------------------------------------------------------

int main(int argc, char** argv) {
  void* const library = dlopen(argc > 1 ? argv[1] : "libvornlcapi.so.0", RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) return std::fprintf(stderr, "%s\n", dlerror()), 1;
  const auto init = reinterpret_cast<int (*)(int*)>(dlsym(library, "ctype_vorn_lcmgr_api_init"));
  const auto terminate =
      reinterpret_cast<int (*)()>(dlsym(library, "ctype_vorn_lcmgr_api_terminate"));
  const auto set_pvid =
      reinterpret_cast<int (*)(usp_s*, unsigned)>(dlsym(library, "ctype_vorn_set_port_pvid"));
  const auto get_pvid =
      reinterpret_cast<int (*)(usp_s*, unsigned*)>(dlsym(library, "ctype_vorn_get_port_pvid"));

  usp_s port = {1, 1, 3};
  unsigned pvid = 0;
  int ports = 0;
  const bool early = get_pvid(&port, &pvid) != 0;
  const bool ok = !early && init(&ports) && set_pvid(&port, 10) && get_pvid(&port, &pvid);
  const bool refused = !set_pvid(&port, 4095);
  std::printf("%d ports; 1/1/3 has PVID %u\n", ports, pvid);
  return ok && refused && pvid == 10 && terminate() && !get_pvid(&port, &pvid) ? 0 : 1;
}
