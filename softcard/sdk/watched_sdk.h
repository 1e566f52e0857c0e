// SPDX-License-Identifier: Apache-2.0
//
// Any SDK with a watch over its calls: the watch may trace a call, or have it fail before the SDK
// sees it. A host hands the wrapper to the library only while watching() says so; the library
// asks for the SDK at each call, and so calls that nobody watches cost nothing:
//
//   bool vornsdk_get_sdk_instance(VornSdkBase*& sdk) {
//     sdk = watch.watching() ? static_cast<VornSdkBase*>(&watched) : &the_sdk;
//     return true;
//   }
//
// It needs the platform headers alone, and so serves hosts on real hardware as well.
#ifndef SOFTCARD_SDK_WATCHED_SDK_H_
#define SOFTCARD_SDK_WATCHED_SDK_H_

#include <list>
#include <string>
#include <type_traits>
#include <utility>

#include "softcard/base/refusal.h"
#include "softcard/sdk/call_text.h"
#include "softcard/sdk/call_watch.h"
#include "vorn_sdk_base.h"

namespace softcard {

class WatchedSdk final : public VornSdkBase {
  using Sdk = VornSdkBase;

 public:
  // Both outlive the object.
  WatchedSdk(VornSdkBase& sdk, CallWatch& watch) : sdk_(sdk), watch_(watch) {}

  // ---- VLANs ------------------------------------------------------------------------------------
  bool create_vlan(unsigned int vlan) override { return call(__func__, &Sdk::create_vlan, vlan); }
  bool delete_vlan(unsigned int vlan) override { return call(__func__, &Sdk::delete_vlan, vlan); }
  bool add_ports_to_vlan(unsigned int vlan, std::list<Mp>& tagged,
                         std::list<Mp>& untagged) override {
    return call(__func__, &Sdk::add_ports_to_vlan, vlan, tagged, untagged);
  }
  bool delete_ports_from_vlan(unsigned int vlan, std::list<Mp>& ports) override {
    return call(__func__, &Sdk::delete_ports_from_vlan, vlan, ports);
  }
  bool get_vlan_info(unsigned int vlan, std::list<Mp>& tagged, std::list<Mp>& untagged) override {
    return call(__func__, &Sdk::get_vlan_info, vlan, tagged, untagged);
  }

  // ---- Multiple spanning tree -------------------------------------------------------------------
  bool set_port_mstp_state(unsigned int instance, const Mp& mp, mstp_state_t state) override {
    return call(__func__, &Sdk::set_port_mstp_state, instance, mp, state);
  }
  bool get_port_mstp_state(unsigned int instance, const Mp& mp, mstp_state_t& state) override {
    return call(__func__, &Sdk::get_port_mstp_state, instance, mp, state);
  }

  // ---- Link aggregation -------------------------------------------------------------------------
  bool create_lag(unsigned int& id) override { return call(__func__, &Sdk::create_lag, id); }
  bool delete_lag(unsigned int id) override { return call(__func__, &Sdk::delete_lag, id); }
  bool add_ports_to_lag(unsigned int id, std::list<Mp>& ports) override {
    return call(__func__, &Sdk::add_ports_to_lag, id, ports);
  }
  bool delete_ports_from_lag(unsigned int id, std::list<Mp>& ports) override {
    return call(__func__, &Sdk::delete_ports_from_lag, id, ports);
  }
  bool set_lag_balancing_strategy(unsigned int id, lag_psc_t psc) override {
    return call(__func__, &Sdk::set_lag_balancing_strategy, id, psc);
  }
  bool get_lag_balancing_strategy(unsigned int id, lag_psc_t& psc) override {
    return call(__func__, &Sdk::get_lag_balancing_strategy, id, psc);
  }

  // ---- Mirroring and port settings --------------------------------------------------------------
  bool set_port_mirror(const Mp& mirror_to, const Mp& mirrored, mirror_type_t type) override {
    return call(__func__, &Sdk::set_port_mirror, mirror_to, mirrored, type);
  }
  bool get_port_mirror(Mp& mirror_to, const Mp& mirrored, mirror_type_t& type) override {
    return call(__func__, &Sdk::get_port_mirror, mirror_to, mirrored, type);
  }
  bool set_port_state(const Mp& mp, bool on) override {
    return call(__func__, &Sdk::set_port_state, mp, on);
  }
  bool get_port_state(const Mp& mp, bool& on) override {
    return call(__func__, &Sdk::get_port_state, mp, on);
  }
  bool set_port_autoneg(const Mp& mp, bool on) override {
    return call(__func__, &Sdk::set_port_autoneg, mp, on);
  }
  bool get_port_autoneg(const Mp& mp, bool& on) override {
    return call(__func__, &Sdk::get_port_autoneg, mp, on);
  }
  bool set_port_speed(const Mp& mp, speed_type_t speed) override {
    return call(__func__, &Sdk::set_port_speed, mp, speed);
  }
  bool get_port_speed(const Mp& mp, speed_type_t& speed) override {
    return call(__func__, &Sdk::get_port_speed, mp, speed);
  }
  bool set_port_duplex(const Mp& mp, duplex_type_t duplex) override {
    return call(__func__, &Sdk::set_port_duplex, mp, duplex);
  }
  bool get_port_duplex(const Mp& mp, duplex_type_t& duplex) override {
    return call(__func__, &Sdk::get_port_duplex, mp, duplex);
  }
  bool set_port_flow_control_8023x(const Mp& mp, bool receive, bool transmit) override {
    return call(__func__, &Sdk::set_port_flow_control_8023x, mp, receive, transmit);
  }
  bool get_port_flow_control_8023x(const Mp& mp, unsigned int& receive,
                                   unsigned int& transmit) override {
    return call(__func__, &Sdk::get_port_flow_control_8023x, mp, receive, transmit);
  }
  bool set_port_jaming_control(const Mp& mp, bool on) override {
    return call(__func__, &Sdk::set_port_jaming_control, mp, on);
  }
  bool get_port_jaming_control(const Mp& mp, bool& on) override {
    return call(__func__, &Sdk::get_port_jaming_control, mp, on);
  }
  bool set_port_mtu(const Mp& mp, unsigned int bytes) override {
    return call(__func__, &Sdk::set_port_mtu, mp, bytes);
  }
  bool get_port_mtu(const Mp& mp, unsigned int& bytes) override {
    return call(__func__, &Sdk::get_port_mtu, mp, bytes);
  }

  // ---- Port statistics --------------------------------------------------------------------------
  bool set_port_stat_enable(const Mp& mp, bool on) override {
    return call(__func__, &Sdk::set_port_stat_enable, mp, on);
  }
  bool get_port_stat_enabled(const Mp& mp, bool& on) override {
    return call(__func__, &Sdk::get_port_stat_enabled, mp, on);
  }
  bool get_port_stat_counter(const Mp& mp, stat_type_t type, unsigned long long& value) override {
    return call(__func__, &Sdk::get_port_stat_counter, mp, type, value);
  }
  bool get_port_stat_counter32(const Mp& mp, stat_type_t type, unsigned int& value) override {
    return call(__func__, &Sdk::get_port_stat_counter32, mp, type, value);
  }
  bool get_port_stat_counter_all64(const Mp& mp, std::list<StatCounter64>& counters) override {
    return call(__func__, &Sdk::get_port_stat_counter_all64, mp, counters);
  }
  bool get_port_stat_counter_all32(const Mp& mp, std::list<StatCounter32>& counters) override {
    return call(__func__, &Sdk::get_port_stat_counter_all32, mp, counters);
  }
  bool get_port_stat_counter_all64_ext(const Mp& mp, StatCounter64* counters,
                                       unsigned int& count) override {
    return call(__func__, &Sdk::get_port_stat_counter_all64_ext, mp, counters, count);
  }
  bool get_port_stat_counter_all32_ext(const Mp& mp, StatCounter32* counters,
                                       unsigned int& count) override {
    return call(__func__, &Sdk::get_port_stat_counter_all32_ext, mp, counters, count);
  }
  bool get_port_brief_stat_counter64(const Mp& mp, brief_stat_type_t type,
                                     unsigned long long& value) override {
    return call(__func__, &Sdk::get_port_brief_stat_counter64, mp, type, value);
  }
  bool get_port_brief_stat_counter32(const Mp& mp, brief_stat_type_t type,
                                     unsigned int& value) override {
    return call(__func__, &Sdk::get_port_brief_stat_counter32, mp, type, value);
  }
  bool get_port_brief_stat_counter_all64(const Mp& mp,
                                         std::list<BriefStatCounter64>& counters) override {
    return call(__func__, &Sdk::get_port_brief_stat_counter_all64, mp, counters);
  }
  bool clear_port_stat_counter(const Mp& mp) override {
    return call(__func__, &Sdk::clear_port_stat_counter, mp);
  }

  // ---- Spanning tree ----------------------------------------------------------------------------
  bool set_port_stp_state(const Mp& mp, stp_state_t state) override {
    return call(__func__, &Sdk::set_port_stp_state, mp, state);
  }
  bool get_port_stp_state(const Mp& mp, stp_state_t& state) override {
    return call(__func__, &Sdk::get_port_stp_state, mp, state);
  }
  bool set_port_bpdu_processing(const Mp& mp, bool on) override {
    return call(__func__, &Sdk::set_port_bpdu_processing, mp, on);
  }
  bool get_port_bpdu_processing(const Mp& mp, bool& on) override {
    return call(__func__, &Sdk::get_port_bpdu_processing, mp, on);
  }

  // ---- MAC table --------------------------------------------------------------------------------
  bool add_mac_to_port(const Mp& mp, const unsigned char* mac, unsigned int vlan,
                       bool trunk) override {
    return call(__func__, &Sdk::add_mac_to_port, mp, ShownMac{mac}, vlan, trunk);
  }
  bool add_system_mac(const unsigned char* mac, unsigned int vlan) override {
    return call(__func__, &Sdk::add_system_mac, ShownMac{mac}, vlan);
  }
  bool add_system_mac_vlan_bitmap(const unsigned char* mac, const unsigned char* bitmap) override {
    return call(__func__, &Sdk::add_system_mac_vlan_bitmap, ShownMac{mac}, ShownVlans{bitmap});
  }
  bool delete_mac(const unsigned char* mac, unsigned int vlan) override {
    return call(__func__, &Sdk::delete_mac, ShownMac{mac}, vlan);
  }
  bool delete_mac_vlan_bitmap(const unsigned char* mac, unsigned char* bitmap) override {
    return call(__func__, &Sdk::delete_mac_vlan_bitmap, ShownMac{mac}, ShownVlans{bitmap});
  }
  bool delete_mac_by_mac(const unsigned char* mac) override {
    return call(__func__, &Sdk::delete_mac_by_mac, ShownMac{mac});
  }
  bool clear_fdb_by_port(const Mp& mp, bool trunk, bool and_static) override {
    return call(__func__, &Sdk::clear_fdb_by_port, mp, trunk, and_static);
  }
  bool clear_fdb_by_vlan(unsigned int vlan, bool and_static) override {
    return call(__func__, &Sdk::clear_fdb_by_vlan, vlan, and_static);
  }
  bool clear_fdb_table(bool and_static) override {
    return call(__func__, &Sdk::clear_fdb_table, and_static);
  }
  bool set_fdb_aging_time(int seconds) override {
    return call(__func__, &Sdk::set_fdb_aging_time, seconds);
  }
  bool get_fdb_aging_time(int& seconds) override {
    return call(__func__, &Sdk::get_fdb_aging_time, seconds);
  }

  // ---- Links and MAC locks ----------------------------------------------------------------------
  bool set_port_link_state(const Mp& mp, phy_state_t state) override {
    return call(__func__, &Sdk::set_port_link_state, mp, state);
  }
  bool get_port_link_state(const Mp& mp, phy_state_t& state) override {
    return call(__func__, &Sdk::get_port_link_state, mp, state);
  }
  bool set_port_mac_lock(const Mp& mp, bool on) override {
    return call(__func__, &Sdk::set_port_mac_lock, mp, on);
  }
  bool get_port_mac_lock(const Mp& mp, bool& on) override {
    return call(__func__, &Sdk::get_port_mac_lock, mp, on);
  }
  bool set_port_mac_lock_ext(const Mp& mp, bool on, bool drop) override {
    return call(__func__, &Sdk::set_port_mac_lock_ext, mp, on, drop);
  }
  bool get_port_mac_lock_ext(const Mp& mp, bool& on, bool& drop) override {
    return call(__func__, &Sdk::get_port_mac_lock_ext, mp, on, drop);
  }

  // ---- Storm control ----------------------------------------------------------------------------
  bool set_port_broadcast_control(const Mp& mp, unsigned int frames_per_second) override {
    return call(__func__, &Sdk::set_port_broadcast_control, mp, frames_per_second);
  }
  bool get_port_broadcast_control(const Mp& mp, unsigned int& frames_per_second) override {
    return call(__func__, &Sdk::get_port_broadcast_control, mp, frames_per_second);
  }
  bool set_port_multicast_control(const Mp& mp, unsigned int frames_per_second) override {
    return call(__func__, &Sdk::set_port_multicast_control, mp, frames_per_second);
  }
  bool get_port_multicast_control(const Mp& mp, unsigned int& frames_per_second) override {
    return call(__func__, &Sdk::get_port_multicast_control, mp, frames_per_second);
  }
  bool set_port_unicast_control(const Mp& mp, unsigned int frames_per_second) override {
    return call(__func__, &Sdk::set_port_unicast_control, mp, frames_per_second);
  }
  bool get_port_unicast_control(const Mp& mp, unsigned int& frames_per_second) override {
    return call(__func__, &Sdk::get_port_unicast_control, mp, frames_per_second);
  }

  // ---- What a port lets in and out --------------------------------------------------------------
  bool set_port_egress_admin_state(const Mp& mp, bool on) override {
    return call(__func__, &Sdk::set_port_egress_admin_state, mp, on);
  }
  bool get_port_egress_admin_state(const Mp& mp, bool& on) override {
    return call(__func__, &Sdk::get_port_egress_admin_state, mp, on);
  }
  bool set_port_ingress_discarding(const Mp& mp, ingress_discard_type_t type) override {
    return call(__func__, &Sdk::set_port_ingress_discarding, mp, type);
  }
  bool get_port_ingress_discarding(const Mp& mp, ingress_discard_type_t& type) override {
    return call(__func__, &Sdk::get_port_ingress_discarding, mp, type);
  }

  // ---- VLAN settings of a port ------------------------------------------------------------------
  bool set_port_pvid(const Mp& mp, unsigned int vlan) override {
    return call(__func__, &Sdk::set_port_pvid, mp, vlan);
  }
  bool get_port_pvid(const Mp& mp, unsigned int& vlan) override {
    return call(__func__, &Sdk::get_port_pvid, mp, vlan);
  }
  bool set_port_vlan_priority(const Mp& mp, unsigned int vlan, unsigned int priority) override {
    return call(__func__, &Sdk::set_port_vlan_priority, mp, vlan, priority);
  }
  bool get_port_vlan_priority(const Mp& mp, unsigned int vlan, unsigned int& priority) override {
    return call(__func__, &Sdk::get_port_vlan_priority, mp, vlan, priority);
  }
  bool set_port_vlan_accept_frame(const Mp& mp, bool all) override {
    return call(__func__, &Sdk::set_port_vlan_accept_frame, mp, all);
  }
  bool get_port_vlan_accept_frame(const Mp& mp, bool& all) override {
    return call(__func__, &Sdk::get_port_vlan_accept_frame, mp, all);
  }

  // ---- MAC limits -------------------------------------------------------------------------------
  bool set_system_mac_limit(const Mp& mp, int limit, unsigned int kind) override {
    return call(__func__, &Sdk::set_system_mac_limit, mp, limit, kind);
  }
  bool get_system_mac_limit(const Mp& mp, int& limit, unsigned int kind) override {
    return call(__func__, &Sdk::get_system_mac_limit, mp, limit, kind);
  }

  // ---- Protocol, MAC and subnet VLANs -----------------------------------------------------------
  bool set_port_protocol_vlan(const Mp& mp, frame_type_t type, unsigned short protocol,
                              unsigned int vlan) override {
    return call(__func__, &Sdk::set_port_protocol_vlan, mp, type, protocol, vlan);
  }
  bool delete_port_protocol_vlan(const Mp& mp, frame_type_t type,
                                 unsigned short protocol) override {
    return call(__func__, &Sdk::delete_port_protocol_vlan, mp, type, protocol);
  }
  bool delete_port_protocol_vlan_all(const Mp& mp) override {
    return call(__func__, &Sdk::delete_port_protocol_vlan_all, mp);
  }
  bool set_mac_vlan(const unsigned char* mac, unsigned int vlan, unsigned int priority) override {
    return call(__func__, &Sdk::set_mac_vlan, ShownMac{mac}, vlan, priority);
  }
  bool set_ipv4_subnet_vlan(unsigned int ip, unsigned int mask, unsigned int vlan,
                            unsigned int priority) override {
    return call(__func__, &Sdk::set_ipv4_subnet_vlan, ShownIp4{ip}, ShownIp4{mask}, vlan, priority);
  }
  bool set_ipv6_subnet_vlan(const unsigned char* ip6, unsigned int prefix_length, unsigned int vlan,
                            unsigned int priority) override {
    return call(__func__, &Sdk::set_ipv6_subnet_vlan, ShownIp6{ip6}, prefix_length, vlan, priority);
  }

  // ---- Packets from the CPU ---------------------------------------------------------------------
  bool send_packet_by_port(std::list<Mp>& tagged, std::list<Mp>& untagged,
                           const Packet& packet) override {
    return call(__func__, &Sdk::send_packet_by_port, tagged, untagged, packet);
  }
  bool send_packet_from_cpu(const Packet& packet) override {
    return call(__func__, &Sdk::send_packet_from_cpu, packet);
  }

  // ---- Port abilities ---------------------------------------------------------------------------
  bool get_port_ability(const Mp& mp, port_ability_type_t& ability) override {
    return call(__func__, &Sdk::get_port_ability, mp, ability);
  }
  bool set_port_advertising_ability(const Mp& mp, port_ability_type_t ability) override {
    return call(__func__, &Sdk::set_port_advertising_ability, mp, ability);
  }
  bool get_port_advertising_ability(const Mp& mp, port_ability_type_t& ability) override {
    return call(__func__, &Sdk::get_port_advertising_ability, mp, ability);
  }
  bool get_port_current_ability(const Mp& mp, port_ability_type_t& ability) override {
    return call(__func__, &Sdk::get_port_current_ability, mp, ability);
  }
  bool get_port_peer_ability(Mp mp, port_ability_type_t& ability) override {
    return call(__func__, &Sdk::get_port_peer_ability, mp, ability);
  }

  // ---- Flood blocking ---------------------------------------------------------------------------
  bool set_port_flood_blocking(const Mp& from, const Mp& to, flood_block_type_t type) override {
    return call(__func__, &Sdk::set_port_flood_blocking, from, to, type);
  }
  bool get_port_flood_blocking(const Mp& from, const Mp& to, flood_block_type_t& type) override {
    return call(__func__, &Sdk::get_port_flood_blocking, from, to, type);
  }
  bool set_port_flood_blocking_cpu(const Mp& from, flood_block_type_t type) override {
    return call(__func__, &Sdk::set_port_flood_blocking_cpu, from, type);
  }
  bool get_port_flood_blocking_cpu(const Mp& from, flood_block_type_t& type) override {
    return call(__func__, &Sdk::get_port_flood_blocking_cpu, from, type);
  }

  // ---- Class of service -------------------------------------------------------------------------
  bool set_port_cos_mapping(const Mp& mp, unsigned int priority, unsigned int queue) override {
    return call(__func__, &Sdk::set_port_cos_mapping, mp, priority, queue);
  }
  bool get_port_cos_mapping(const Mp& mp, unsigned int priority, unsigned int& queue) override {
    return call(__func__, &Sdk::get_port_cos_mapping, mp, priority, queue);
  }

  // ---- The switch as a whole --------------------------------------------------------------------
  bool get_line_card_usp(Usp& usp) override { return call(__func__, &Sdk::get_line_card_usp, usp); }
  bool free_call(int number) override { return call(__func__, &Sdk::free_call, number); }
  bool set_switch_forward_mode(unsigned int mode) override {
    return call(__func__, &Sdk::set_switch_forward_mode, mode);
  }
  bool get_switch_forward_mode(unsigned int& mode) override {
    return call(__func__, &Sdk::get_switch_forward_mode, mode);
  }

  // ---- Packet filters: frames that go to the CPU and nowhere else -------------------------------
  bool add_arp_filter(unsigned int ip, unsigned int mask) override {
    return call(__func__, &Sdk::add_arp_filter, ShownIp4{ip}, ShownIp4{mask});
  }
  bool delete_arp_filter(unsigned int ip, unsigned int mask) override {
    return call(__func__, &Sdk::delete_arp_filter, ShownIp4{ip}, ShownIp4{mask});
  }
  bool delete_arp_filter_all() override { return call(__func__, &Sdk::delete_arp_filter_all); }
  bool add_ip_protocol_filter(unsigned int protocol) override {
    return call(__func__, &Sdk::add_ip_protocol_filter, protocol);
  }
  bool delete_ip_protocol_filter(unsigned int protocol) override {
    return call(__func__, &Sdk::delete_ip_protocol_filter, protocol);
  }
  bool delete_ip_protocol_filter_all() override {
    return call(__func__, &Sdk::delete_ip_protocol_filter_all);
  }
  bool add_l4_destination_port_filter(unsigned int port) override {
    return call(__func__, &Sdk::add_l4_destination_port_filter, port);
  }
  bool delete_l4_destination_port_filter(unsigned int port) override {
    return call(__func__, &Sdk::delete_l4_destination_port_filter, port);
  }
  bool delete_l4_destination_port_filter_all() override {
    return call(__func__, &Sdk::delete_l4_destination_port_filter_all);
  }

  // ---- Layer 2 and unknown unicast --------------------------------------------------------------
  bool set_port_l2_enable(const Mp& mp, bool on) override {
    return call(__func__, &Sdk::set_port_l2_enable, mp, on);
  }
  bool set_port_switch_unknown_unicast_to_cpu(const Mp& mp, bool on) override {
    return call(__func__, &Sdk::set_port_switch_unknown_unicast_to_cpu, mp, on);
  }
  bool get_port_switch_unknown_unicast_to_cpu(const Mp& mp, bool& on) override {
    return call(__func__, &Sdk::get_port_switch_unknown_unicast_to_cpu, mp, on);
  }
  bool set_switch_unknown_unicast_to_cpu(bool on) override {
    return call(__func__, &Sdk::set_switch_unknown_unicast_to_cpu, on);
  }
  bool get_switch_unknown_unicast_to_cpu(bool& on) override {
    return call(__func__, &Sdk::get_switch_unknown_unicast_to_cpu, on);
  }

  // ---- Flow table -------------------------------------------------------------------------------
  bool add_of_flow(of_flow_mp_s& flow, unsigned int& id,
                   const of_flow_qualify_udf_s& udf) override {
    return call(__func__, &Sdk::add_of_flow, flow, id, udf);
  }
  bool add_of_flow_with_id(of_flow_mp_s& flow, unsigned int id) override {
    return call(__func__, &Sdk::add_of_flow_with_id, flow, id);
  }
  bool delete_of_flow(unsigned int id) override { return call(__func__, &Sdk::delete_of_flow, id); }
  bool clear_of_flow_table() override { return call(__func__, &Sdk::clear_of_flow_table); }
  bool add_of_flow_action(unsigned int id, of_action_t kind, of_action_param_s param,
                          const Mp& mp) override {
    return call(__func__, &Sdk::add_of_flow_action, id, kind, param, mp);
  }
  bool delete_of_flow_action(unsigned int id, of_action_t kind, of_action_param_s param,
                             const Mp& mp) override {
    return call(__func__, &Sdk::delete_of_flow_action, id, kind, param, mp);
  }
  bool clear_of_flow_action(unsigned int id) override {
    return call(__func__, &Sdk::clear_of_flow_action, id);
  }
  bool set_of_flow_priority(unsigned int id, int priority) override {
    return call(__func__, &Sdk::set_of_flow_priority, id, priority);
  }
  bool get_of_flow_priority(unsigned int id, int& priority) override {
    return call(__func__, &Sdk::get_of_flow_priority, id, priority);
  }
  bool get_of_flow_stat_counter64(unsigned int id, unsigned long long& packets) override {
    return call(__func__, &Sdk::get_of_flow_stat_counter64, id, packets);
  }
  bool get_of_flow_stat_counter32(unsigned int id, unsigned int& packets) override {
    return call(__func__, &Sdk::get_of_flow_stat_counter32, id, packets);
  }

  // ---- Callbacks --------------------------------------------------------------------------------
  bool register_mac_update_callback(void (*callback)(L2Addr*, int, void*),
                                    void* user_data) override {
    return call(__func__, &Sdk::register_mac_update_callback, callback, user_data);
  }
  bool register_mac_update_callback_c(void (*callback)(ctype_l2_addr_s*, int, void*),
                                      void* user_data) override {
    return call(__func__, &Sdk::register_mac_update_callback_c, callback, user_data);
  }
  bool register_link_change_callback(void (*callback)(LinkStatus*, Usp*),
                                     void* user_data) override {
    return call(__func__, &Sdk::register_link_change_callback, callback, user_data);
  }
  bool register_link_change_callback_c(void (*callback)(ctype_link_status_s*, usp_s*),
                                       void* user_data) override {
    return call(__func__, &Sdk::register_link_change_callback_c, callback, user_data);
  }
  bool register_rx_packet_callback(void (*callback)(RxPacket*, void*), void* user_data) override {
    return call(__func__, &Sdk::register_rx_packet_callback, callback, user_data);
  }
  bool register_rx_packet_callback_c(void (*callback)(ctype_rx_packet_s*, void*),
                                     void* user_data) override {
    return call(__func__, &Sdk::register_rx_packet_callback_c, callback, user_data);
  }
  bool deregister_event_callback(lcmgr_report_event_t event, void* callback,
                                 void* user_data) override {
    return call(__func__, &Sdk::deregister_event_callback, event, callback, user_data);
  }
  bool traverse_mac_table(void* arg) override {
    return call(__func__, &Sdk::traverse_mac_table, arg);
  }

  // ---- Layer-3 interfaces -----------------------------------------------------------------------
  bool create_l3_interface(const unsigned char* mac, unsigned int vlan, unsigned int& id) override {
    return call(__func__, &Sdk::create_l3_interface, ShownMac{mac}, vlan, id);
  }
  bool create_l3_interface_with_id(const unsigned char* mac, unsigned int vlan, unsigned int id,
                                   bool replace) override {
    return call(__func__, &Sdk::create_l3_interface_with_id, ShownMac{mac}, vlan, id, replace);
  }
  bool get_l3_interface(unsigned int id, unsigned int& vlan, unsigned char* mac) override {
    return call(__func__, &Sdk::get_l3_interface, id, vlan, ShownMac{mac});
  }
  bool delete_l3_interface(const unsigned char* mac, unsigned int vlan) override {
    return call(__func__, &Sdk::delete_l3_interface, ShownMac{mac}, vlan);
  }
  bool delete_l3_interface_by_id(unsigned int id) override {
    return call(__func__, &Sdk::delete_l3_interface_by_id, id);
  }
  bool delete_l3_interface_all() override { return call(__func__, &Sdk::delete_l3_interface_all); }

  // ---- Layer-3 hosts and routes -----------------------------------------------------------------
  bool add_l3_host_ip4(Mp mp, bool trunk, unsigned int ip, const unsigned char* mac,
                       unsigned int interface) override {
    return call(__func__, &Sdk::add_l3_host_ip4, mp, trunk, ShownIp4{ip}, ShownMac{mac}, interface);
  }
  bool add_l3_host_ip6(Mp mp, bool trunk, const unsigned char* ip6, const unsigned char* mac,
                       unsigned int interface) override {
    return call(__func__, &Sdk::add_l3_host_ip6, mp, trunk, ShownIp6{ip6}, ShownMac{mac},
                interface);
  }
  bool get_l3_host_ip4(unsigned int ip, Mp mp, unsigned char* mac, unsigned int& interface,
                       bool trunk) override {
    return call(__func__, &Sdk::get_l3_host_ip4, ShownIp4{ip}, mp, ShownMac{mac}, interface, trunk);
  }
  bool get_l3_host_ip6(const unsigned char* ip6, Mp mp, unsigned char* mac, unsigned int& interface,
                       bool trunk) override {
    return call(__func__, &Sdk::get_l3_host_ip6, ShownIp6{ip6}, mp, ShownMac{mac}, interface,
                trunk);
  }
  bool get_l3_route_by_subnet_ip4(unsigned int ip, unsigned int mask, const Mp& mp, bool trunk,
                                  unsigned char (&mac)[6], unsigned int& interface,
                                  unsigned int& metric) override {
    return call(__func__, &Sdk::get_l3_route_by_subnet_ip4, ShownIp4{ip}, ShownIp4{mask}, mp, trunk,
                mac, interface, metric);
  }
  bool get_l3_route_by_subnet_ip6(const unsigned char* ip6, const unsigned char* mask6,
                                  const Mp& mp, bool trunk, unsigned int& interface,
                                  unsigned char* mac) override {
    return call(__func__, &Sdk::get_l3_route_by_subnet_ip6, ShownIp6{ip6}, ShownIp6{mask6}, mp,
                trunk, interface, ShownMac{mac});
  }
  bool delete_l3_host_by_interface(unsigned int interface, bool ip6) override {
    return call(__func__, &Sdk::delete_l3_host_by_interface, interface, ip6);
  }
  bool delete_l3_host_by_network_ip4(unsigned int ip) override {
    return call(__func__, &Sdk::delete_l3_host_by_network_ip4, ShownIp4{ip});
  }
  bool delete_l3_host_by_network_ip6(const unsigned char* ip6) override {
    return call(__func__, &Sdk::delete_l3_host_by_network_ip6, ShownIp6{ip6});
  }
  bool delete_l3_host_by_addr_ip4(unsigned int ip, const Mp& mp, bool trunk) override {
    return call(__func__, &Sdk::delete_l3_host_by_addr_ip4, ShownIp4{ip}, mp, trunk);
  }
  bool delete_l3_host_by_addr_ip6(const unsigned char* ip6, const Mp& mp, bool trunk) override {
    return call(__func__, &Sdk::delete_l3_host_by_addr_ip6, ShownIp6{ip6}, mp, trunk);
  }
  bool clear_l3_host_table() override { return call(__func__, &Sdk::clear_l3_host_table); }
  bool add_l3_route_ip4(const Mp& mp, bool trunk, unsigned int ip, unsigned int mask,
                        const unsigned char* mac, unsigned int interface,
                        unsigned int metric) override {
    return call(__func__, &Sdk::add_l3_route_ip4, mp, trunk, ShownIp4{ip}, ShownIp4{mask},
                ShownMac{mac}, interface, metric);
  }
  bool add_l3_route_ip6(const Mp& mp, bool trunk, const unsigned char* ip6,
                        const unsigned char* mask6, const unsigned char* mac,
                        unsigned int interface) override {
    return call(__func__, &Sdk::add_l3_route_ip6, mp, trunk, ShownIp6{ip6}, ShownIp6{mask6},
                ShownMac{mac}, interface);
  }
  bool delete_l3_route_by_interface(unsigned int interface, bool ip6) override {
    return call(__func__, &Sdk::delete_l3_route_by_interface, interface, ip6);
  }
  bool delete_l3_route_by_subnet_ip4(unsigned int ip, unsigned int mask, const Mp& mp,
                                     bool trunk) override {
    return call(__func__, &Sdk::delete_l3_route_by_subnet_ip4, ShownIp4{ip}, ShownIp4{mask}, mp,
                trunk);
  }
  bool delete_l3_route_by_subnet_ip6(const unsigned char* ip6, const unsigned char* mask6,
                                     const Mp& mp, bool trunk) override {
    return call(__func__, &Sdk::delete_l3_route_by_subnet_ip6, ShownIp6{ip6}, ShownIp6{mask6}, mp,
                trunk);
  }
  bool clear_l3_route_table() override { return call(__func__, &Sdk::clear_l3_route_table); }

  // ---- Tracing ----------------------------------------------------------------------------------
  bool set_lcmgr_trace(const std::string& target, bool on) override {
    return call(__func__, &Sdk::set_lcmgr_trace, target, on);
  }

 private:
  // Calls `function` of the SDK unless the watch has it fail, and traces the call when it is done.
  template <class... Parameters, class... Arguments>
  bool call(const char* operation, bool (Sdk::*function)(Parameters...), Arguments&&... arguments) {
    CallWatch& watch = watch_;  // a callback may end whoever holds this object
    forget_answer();
    const std::uint64_t refused_before = refusals();
    const bool result =
        !watch.fails(operation) && (sdk_.*function)(std::forward<Arguments>(arguments)...);
    if (!watch.traces(operation)) return result;
    CallText text(operation);
    (show<Parameters>(text, result, arguments), ...);
    const bool has_reason = !result && refusals() != refused_before;
    watch.write(text.finish(result, has_reason ? last_refusal() : ""));
    return result;
  }

  // Shows an argument. What a call that failed did not write may be anything, and is not read.
  template <class Parameter, class Argument>
  static void show(CallText& text, bool result, const Argument& argument) {
    if (is_output<Parameter, Argument>() && !result) {
      text.add_unknown();
    } else {
      text.add(argument);
    }
  }
  template <class Parameter, class Argument>
  static constexpr bool is_output() {
    using Value = std::remove_reference_t<Parameter>;
    return std::is_same_v<Argument, ShownMac<unsigned char>> ||
           (std::is_lvalue_reference_v<Parameter> && !std::is_const_v<Value> &&
            !std::is_same_v<Value, std::list<Mp>> && !std::is_same_v<Value, of_flow_mp_s>);
  }

  VornSdkBase& sdk_;
  CallWatch& watch_;
};

}  // namespace softcard

#endif  // SOFTCARD_SDK_WATCHED_SDK_H_
