// SPDX-License-Identifier: Apache-2.0
//
// An SDK that refuses every operation and leaves all outputs alone. A host derives its class from
// this one instead of from VornSdkBase and overrides what its hardware can do:
//
//   class Sdk final : public VornSdkRefusing {
//    public:
//     bool create_vlan(unsigned int vlan) override;
//   };
//
// It adds neither a slot nor a member, so every operation keeps its position.
#ifndef PLATFORM_VORN_SDK_REFUSING_H_
#define PLATFORM_VORN_SDK_REFUSING_H_

#include "vorn_sdk_base.h"

class VornSdkRefusing : public VornSdkBase {
 public:
  // ---- VLANs ------------------------------------------------------------------------------------
  bool create_vlan(unsigned int) override { return false; }
  bool delete_vlan(unsigned int) override { return false; }
  bool add_ports_to_vlan(unsigned int, std::list<Mp>&, std::list<Mp>&) override { return false; }
  bool delete_ports_from_vlan(unsigned int, std::list<Mp>&) override { return false; }
  bool get_vlan_info(unsigned int, std::list<Mp>&, std::list<Mp>&) override { return false; }

  // ---- Multiple spanning tree -------------------------------------------------------------------
  bool set_port_mstp_state(unsigned int, const Mp&, mstp_state_t) override { return false; }
  bool get_port_mstp_state(unsigned int, const Mp&, mstp_state_t&) override { return false; }

  // ---- Link aggregation -------------------------------------------------------------------------
  bool create_lag(unsigned int&) override { return false; }
  bool delete_lag(unsigned int) override { return false; }
  bool add_ports_to_lag(unsigned int, std::list<Mp>&) override { return false; }
  bool delete_ports_from_lag(unsigned int, std::list<Mp>&) override { return false; }
  bool set_lag_balancing_strategy(unsigned int, lag_psc_t) override { return false; }
  bool get_lag_balancing_strategy(unsigned int, lag_psc_t&) override { return false; }

  // ---- Mirroring and port settings --------------------------------------------------------------
  bool set_port_mirror(const Mp&, const Mp&, mirror_type_t) override { return false; }
  bool get_port_mirror(Mp&, const Mp&, mirror_type_t&) override { return false; }
  bool set_port_state(const Mp&, bool) override { return false; }
  bool get_port_state(const Mp&, bool&) override { return false; }
  bool set_port_autoneg(const Mp&, bool) override { return false; }
  bool get_port_autoneg(const Mp&, bool&) override { return false; }
  bool set_port_speed(const Mp&, speed_type_t) override { return false; }
  bool get_port_speed(const Mp&, speed_type_t&) override { return false; }
  bool set_port_duplex(const Mp&, duplex_type_t) override { return false; }
  bool get_port_duplex(const Mp&, duplex_type_t&) override { return false; }
  bool set_port_flow_control_8023x(const Mp&, bool, bool) override { return false; }
  bool get_port_flow_control_8023x(const Mp&, unsigned int&, unsigned int&) override {
    return false;
  }
  bool set_port_jaming_control(const Mp&, bool) override { return false; }
  bool get_port_jaming_control(const Mp&, bool&) override { return false; }
  bool set_port_mtu(const Mp&, unsigned int) override { return false; }
  bool get_port_mtu(const Mp&, unsigned int&) override { return false; }

  // ---- Port statistics --------------------------------------------------------------------------
  bool set_port_stat_enable(const Mp&, bool) override { return false; }
  bool get_port_stat_enabled(const Mp&, bool&) override { return false; }
  bool get_port_stat_counter(const Mp&, stat_type_t, unsigned long long&) override { return false; }
  bool get_port_stat_counter32(const Mp&, stat_type_t, unsigned int&) override { return false; }
  bool get_port_stat_counter_all64(const Mp&, std::list<StatCounter64>&) override { return false; }
  bool get_port_stat_counter_all32(const Mp&, std::list<StatCounter32>&) override { return false; }
  bool get_port_stat_counter_all64_ext(const Mp&, StatCounter64*, unsigned int&) override {
    return false;
  }
  bool get_port_stat_counter_all32_ext(const Mp&, StatCounter32*, unsigned int&) override {
    return false;
  }
  bool get_port_brief_stat_counter64(const Mp&, brief_stat_type_t, unsigned long long&) override {
    return false;
  }
  bool get_port_brief_stat_counter32(const Mp&, brief_stat_type_t, unsigned int&) override {
    return false;
  }
  bool get_port_brief_stat_counter_all64(const Mp&, std::list<BriefStatCounter64>&) override {
    return false;
  }
  bool clear_port_stat_counter(const Mp&) override { return false; }

  // ---- Spanning tree ----------------------------------------------------------------------------
  bool set_port_stp_state(const Mp&, stp_state_t) override { return false; }
  bool get_port_stp_state(const Mp&, stp_state_t&) override { return false; }
  bool set_port_bpdu_processing(const Mp&, bool) override { return false; }
  bool get_port_bpdu_processing(const Mp&, bool&) override { return false; }

  // ---- MAC table --------------------------------------------------------------------------------
  bool add_mac_to_port(const Mp&, const unsigned char*, unsigned int, bool) override {
    return false;
  }
  bool add_system_mac(const unsigned char*, unsigned int) override { return false; }
  bool add_system_mac_vlan_bitmap(const unsigned char*, const unsigned char*) override {
    return false;
  }
  bool delete_mac(const unsigned char*, unsigned int) override { return false; }
  bool delete_mac_vlan_bitmap(const unsigned char*, unsigned char*) override { return false; }
  bool delete_mac_by_mac(const unsigned char*) override { return false; }
  bool clear_fdb_by_port(const Mp&, bool, bool) override { return false; }
  bool clear_fdb_by_vlan(unsigned int, bool) override { return false; }
  bool clear_fdb_table(bool) override { return false; }
  bool set_fdb_aging_time(int) override { return false; }
  bool get_fdb_aging_time(int&) override { return false; }

  // ---- Links and MAC locks ----------------------------------------------------------------------
  bool set_port_link_state(const Mp&, phy_state_t) override { return false; }
  bool get_port_link_state(const Mp&, phy_state_t&) override { return false; }
  bool set_port_mac_lock(const Mp&, bool) override { return false; }
  bool get_port_mac_lock(const Mp&, bool&) override { return false; }
  bool set_port_mac_lock_ext(const Mp&, bool, bool) override { return false; }
  bool get_port_mac_lock_ext(const Mp&, bool&, bool&) override { return false; }

  // ---- Storm control ----------------------------------------------------------------------------
  bool set_port_broadcast_control(const Mp&, unsigned int) override { return false; }
  bool get_port_broadcast_control(const Mp&, unsigned int&) override { return false; }
  bool set_port_multicast_control(const Mp&, unsigned int) override { return false; }
  bool get_port_multicast_control(const Mp&, unsigned int&) override { return false; }
  bool set_port_unicast_control(const Mp&, unsigned int) override { return false; }
  bool get_port_unicast_control(const Mp&, unsigned int&) override { return false; }

  // ---- What a port lets in and out --------------------------------------------------------------
  bool set_port_egress_admin_state(const Mp&, bool) override { return false; }
  bool get_port_egress_admin_state(const Mp&, bool&) override { return false; }
  bool set_port_ingress_discarding(const Mp&, ingress_discard_type_t) override { return false; }
  bool get_port_ingress_discarding(const Mp&, ingress_discard_type_t&) override { return false; }

  // ---- VLAN settings of a port ------------------------------------------------------------------
  bool set_port_pvid(const Mp&, unsigned int) override { return false; }
  bool get_port_pvid(const Mp&, unsigned int&) override { return false; }
  bool set_port_vlan_priority(const Mp&, unsigned int, unsigned int) override { return false; }
  bool get_port_vlan_priority(const Mp&, unsigned int, unsigned int&) override { return false; }
  bool set_port_vlan_accept_frame(const Mp&, bool) override { return false; }
  bool get_port_vlan_accept_frame(const Mp&, bool&) override { return false; }

  // ---- MAC limits -------------------------------------------------------------------------------
  bool set_system_mac_limit(const Mp&, int, unsigned int) override { return false; }
  bool get_system_mac_limit(const Mp&, int&, unsigned int) override { return false; }

  // ---- Protocol, MAC and subnet VLANs -----------------------------------------------------------
  bool set_port_protocol_vlan(const Mp&, frame_type_t, unsigned short, unsigned int) override {
    return false;
  }
  bool delete_port_protocol_vlan(const Mp&, frame_type_t, unsigned short) override { return false; }
  bool delete_port_protocol_vlan_all(const Mp&) override { return false; }
  bool set_mac_vlan(const unsigned char*, unsigned int, unsigned int) override { return false; }
  bool set_ipv4_subnet_vlan(unsigned int, unsigned int, unsigned int, unsigned int) override {
    return false;
  }
  bool set_ipv6_subnet_vlan(const unsigned char*, unsigned int, unsigned int,
                            unsigned int) override {
    return false;
  }

  // ---- Packets from the CPU ---------------------------------------------------------------------
  bool send_packet_by_port(std::list<Mp>&, std::list<Mp>&, const Packet&) override { return false; }
  bool send_packet_from_cpu(const Packet&) override { return false; }

  // ---- Port abilities ---------------------------------------------------------------------------
  bool get_port_ability(const Mp&, port_ability_type_t&) override { return false; }
  bool set_port_advertising_ability(const Mp&, port_ability_type_t) override { return false; }
  bool get_port_advertising_ability(const Mp&, port_ability_type_t&) override { return false; }
  bool get_port_current_ability(const Mp&, port_ability_type_t&) override { return false; }
  bool get_port_peer_ability(Mp, port_ability_type_t&) override { return false; }

  // ---- Flood blocking ---------------------------------------------------------------------------
  bool set_port_flood_blocking(const Mp&, const Mp&, flood_block_type_t) override { return false; }
  bool get_port_flood_blocking(const Mp&, const Mp&, flood_block_type_t&) override { return false; }
  bool set_port_flood_blocking_cpu(const Mp&, flood_block_type_t) override { return false; }
  bool get_port_flood_blocking_cpu(const Mp&, flood_block_type_t&) override { return false; }

  // ---- Class of service -------------------------------------------------------------------------
  bool set_port_cos_mapping(const Mp&, unsigned int, unsigned int) override { return false; }
  bool get_port_cos_mapping(const Mp&, unsigned int, unsigned int&) override { return false; }

  // ---- The switch as a whole --------------------------------------------------------------------
  bool get_line_card_usp(Usp&) override { return false; }
  bool free_call(int) override { return false; }
  bool set_switch_forward_mode(unsigned int) override { return false; }
  bool get_switch_forward_mode(unsigned int&) override { return false; }

  // ---- Packet filters: frames that go to the CPU and nowhere else -------------------------------
  bool add_arp_filter(unsigned int, unsigned int) override { return false; }
  bool delete_arp_filter(unsigned int, unsigned int) override { return false; }
  bool delete_arp_filter_all() override { return false; }
  bool add_ip_protocol_filter(unsigned int) override { return false; }
  bool delete_ip_protocol_filter(unsigned int) override { return false; }
  bool delete_ip_protocol_filter_all() override { return false; }
  bool add_l4_destination_port_filter(unsigned int) override { return false; }
  bool delete_l4_destination_port_filter(unsigned int) override { return false; }
  bool delete_l4_destination_port_filter_all() override { return false; }

  // ---- Layer 2 and unknown unicast --------------------------------------------------------------
  bool set_port_l2_enable(const Mp&, bool) override { return false; }
  bool set_port_switch_unknown_unicast_to_cpu(const Mp&, bool) override { return false; }
  bool get_port_switch_unknown_unicast_to_cpu(const Mp&, bool&) override { return false; }
  bool set_switch_unknown_unicast_to_cpu(bool) override { return false; }
  bool get_switch_unknown_unicast_to_cpu(bool&) override { return false; }

  // ---- Flow table -------------------------------------------------------------------------------
  bool add_of_flow(of_flow_mp_s&, unsigned int&, const of_flow_qualify_udf_s&) override {
    return false;
  }
  bool add_of_flow_with_id(of_flow_mp_s&, unsigned int) override { return false; }
  bool delete_of_flow(unsigned int) override { return false; }
  bool clear_of_flow_table() override { return false; }
  bool add_of_flow_action(unsigned int, of_action_t, of_action_param_s, const Mp&) override {
    return false;
  }
  bool delete_of_flow_action(unsigned int, of_action_t, of_action_param_s, const Mp&) override {
    return false;
  }
  bool clear_of_flow_action(unsigned int) override { return false; }
  bool set_of_flow_priority(unsigned int, int) override { return false; }
  bool get_of_flow_priority(unsigned int, int&) override { return false; }
  bool get_of_flow_stat_counter64(unsigned int, unsigned long long&) override { return false; }
  bool get_of_flow_stat_counter32(unsigned int, unsigned int&) override { return false; }

  // ---- Callbacks --------------------------------------------------------------------------------
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

  // ---- Layer-3 interfaces -----------------------------------------------------------------------
  bool create_l3_interface(const unsigned char*, unsigned int, unsigned int&) override {
    return false;
  }
  bool create_l3_interface_with_id(const unsigned char*, unsigned int, unsigned int,
                                   bool) override {
    return false;
  }
  bool get_l3_interface(unsigned int, unsigned int&, unsigned char*) override { return false; }
  bool delete_l3_interface(const unsigned char*, unsigned int) override { return false; }
  bool delete_l3_interface_by_id(unsigned int) override { return false; }
  bool delete_l3_interface_all() override { return false; }

  // ---- Layer-3 hosts and routes -----------------------------------------------------------------
  bool add_l3_host_ip4(Mp, bool, unsigned int, const unsigned char*, unsigned int) override {
    return false;
  }
  bool add_l3_host_ip6(Mp, bool, const unsigned char*, const unsigned char*,
                       unsigned int) override {
    return false;
  }
  bool get_l3_host_ip4(unsigned int, Mp, unsigned char*, unsigned int&, bool) override {
    return false;
  }
  bool get_l3_host_ip6(const unsigned char*, Mp, unsigned char*, unsigned int&, bool) override {
    return false;
  }
  bool get_l3_route_by_subnet_ip4(unsigned int, unsigned int, const Mp&, bool, unsigned char (&)[6],
                                  unsigned int&, unsigned int&) override {
    return false;
  }
  bool get_l3_route_by_subnet_ip6(const unsigned char*, const unsigned char*, const Mp&, bool,
                                  unsigned int&, unsigned char*) override {
    return false;
  }
  bool delete_l3_host_by_interface(unsigned int, bool) override { return false; }
  bool delete_l3_host_by_network_ip4(unsigned int) override { return false; }
  bool delete_l3_host_by_network_ip6(const unsigned char*) override { return false; }
  bool delete_l3_host_by_addr_ip4(unsigned int, const Mp&, bool) override { return false; }
  bool delete_l3_host_by_addr_ip6(const unsigned char*, const Mp&, bool) override { return false; }
  bool clear_l3_host_table() override { return false; }
  bool add_l3_route_ip4(const Mp&, bool, unsigned int, unsigned int, const unsigned char*,
                        unsigned int, unsigned int) override {
    return false;
  }
  bool add_l3_route_ip6(const Mp&, bool, const unsigned char*, const unsigned char*,
                        const unsigned char*, unsigned int) override {
    return false;
  }
  bool delete_l3_route_by_interface(unsigned int, bool) override { return false; }
  bool delete_l3_route_by_subnet_ip4(unsigned int, unsigned int, const Mp&, bool) override {
    return false;
  }
  bool delete_l3_route_by_subnet_ip6(const unsigned char*, const unsigned char*, const Mp&,
                                     bool) override {
    return false;
  }
  bool clear_l3_route_table() override { return false; }

  // ---- Tracing ----------------------------------------------------------------------------------
  bool set_lcmgr_trace(const std::string&, bool) override { return false; }

 protected:
  VornSdkRefusing() = default;
  VornSdkRefusing(const VornSdkRefusing&) = default;
  VornSdkRefusing& operator=(const VornSdkRefusing&) = default;
  // As VornSdkBase has it: the host deletes the object as the class that it made.
  ~VornSdkRefusing() = default;
};

#endif  // PLATFORM_VORN_SDK_REFUSING_H_
