// SPDX-License-Identifier: Apache-2.0
//
// The SDK of the software line card: each operation of VornSdkBase carried out on the card's
// tables. What an operation means is said in vorn_sdk_base.h; what this card refuses, in
// docs/softcard.md.
//
// An operation that is refused changes nothing and gives one reason (softcard/base/refusal.h). The
// operations of a family stand in the file of its name.
#ifndef SOFTCARD_SDK_SDK_H_
#define SOFTCARD_SDK_SDK_H_

#include <list>
#include <string>
#include <type_traits>

#include "softcard/card.h"
#include "softcard/sdk/call_watch.h"
#include "softcard/sdk/conversions.h"
#include "vorn_sdk_base.h"

namespace softcard {

// The one service that vorn_free_call() has with this card: set all counters of all ports to 0.
inline constexpr int kFreeCallClearCounters = 1;

class SoftSdk final : public VornSdkBase {
 public:
  // Both outlive the object. `watch` is what set_lcmgr_trace() switches.
  SoftSdk(Card& card, CallWatch& watch) : card_(card), tables_(card.tables()), watch_(watch) {}

  // ---- VLANs ------------------------------------------------------------------------------------
  bool create_vlan(unsigned int vlan) override;
  bool delete_vlan(unsigned int vlan) override;
  bool add_ports_to_vlan(unsigned int vlan, std::list<Mp>& tagged,
                         std::list<Mp>& untagged) override;
  bool delete_ports_from_vlan(unsigned int vlan, std::list<Mp>& ports) override;
  bool get_vlan_info(unsigned int vlan, std::list<Mp>& tagged, std::list<Mp>& untagged) override;

  // ---- Multiple spanning tree -------------------------------------------------------------------
  bool set_port_mstp_state(unsigned int instance, const Mp& mp, mstp_state_t state) override;
  bool get_port_mstp_state(unsigned int instance, const Mp& mp, mstp_state_t& state) override;

  // ---- Link aggregation -------------------------------------------------------------------------
  bool create_lag(unsigned int& id) override;
  bool delete_lag(unsigned int id) override;
  bool add_ports_to_lag(unsigned int id, std::list<Mp>& ports) override;
  bool delete_ports_from_lag(unsigned int id, std::list<Mp>& ports) override;
  bool set_lag_balancing_strategy(unsigned int id, lag_psc_t psc) override;
  bool get_lag_balancing_strategy(unsigned int id, lag_psc_t& psc) override;

  // ---- Mirroring and port settings --------------------------------------------------------------
  bool set_port_mirror(const Mp& mirror_to, const Mp& mirrored, mirror_type_t type) override;
  bool get_port_mirror(Mp& mirror_to, const Mp& mirrored, mirror_type_t& type) override;
  bool set_port_state(const Mp& mp, bool on) override;
  bool get_port_state(const Mp& mp, bool& on) override;
  bool set_port_autoneg(const Mp& mp, bool on) override;
  bool get_port_autoneg(const Mp& mp, bool& on) override;
  bool set_port_speed(const Mp& mp, speed_type_t speed) override;
  bool get_port_speed(const Mp& mp, speed_type_t& speed) override;
  bool set_port_duplex(const Mp& mp, duplex_type_t duplex) override;
  bool get_port_duplex(const Mp& mp, duplex_type_t& duplex) override;
  bool set_port_flow_control_8023x(const Mp& mp, bool receive, bool transmit) override;
  bool get_port_flow_control_8023x(const Mp& mp, unsigned int& receive,
                                   unsigned int& transmit) override;
  bool set_port_jaming_control(const Mp& mp, bool on) override;
  bool get_port_jaming_control(const Mp& mp, bool& on) override;
  bool set_port_mtu(const Mp& mp, unsigned int bytes) override;
  bool get_port_mtu(const Mp& mp, unsigned int& bytes) override;

  // ---- Port statistics --------------------------------------------------------------------------
  bool set_port_stat_enable(const Mp& mp, bool on) override;
  bool get_port_stat_enabled(const Mp& mp, bool& on) override;
  bool get_port_stat_counter(const Mp& mp, stat_type_t type, unsigned long long& value) override;
  bool get_port_stat_counter32(const Mp& mp, stat_type_t type, unsigned int& value) override;
  bool get_port_stat_counter_all64(const Mp& mp, std::list<StatCounter64>& counters) override;
  bool get_port_stat_counter_all32(const Mp& mp, std::list<StatCounter32>& counters) override;
  bool get_port_stat_counter_all64_ext(const Mp& mp, StatCounter64* counters,
                                       unsigned int& count) override;
  bool get_port_stat_counter_all32_ext(const Mp& mp, StatCounter32* counters,
                                       unsigned int& count) override;
  bool get_port_brief_stat_counter64(const Mp& mp, brief_stat_type_t type,
                                     unsigned long long& value) override;
  bool get_port_brief_stat_counter32(const Mp& mp, brief_stat_type_t type,
                                     unsigned int& value) override;
  bool get_port_brief_stat_counter_all64(const Mp& mp,
                                         std::list<BriefStatCounter64>& counters) override;
  bool clear_port_stat_counter(const Mp& mp) override;

  // ---- Spanning tree ----------------------------------------------------------------------------
  bool set_port_stp_state(const Mp& mp, stp_state_t state) override;
  bool get_port_stp_state(const Mp& mp, stp_state_t& state) override;
  bool set_port_bpdu_processing(const Mp& mp, bool on) override;
  bool get_port_bpdu_processing(const Mp& mp, bool& on) override;

  // ---- MAC table --------------------------------------------------------------------------------
  bool add_mac_to_port(const Mp& mp, const unsigned char* mac, unsigned int vlan,
                       bool trunk) override;
  bool add_system_mac(const unsigned char* mac, unsigned int vlan) override;
  bool add_system_mac_vlan_bitmap(const unsigned char* mac, const unsigned char* bitmap) override;
  bool delete_mac(const unsigned char* mac, unsigned int vlan) override;
  bool delete_mac_vlan_bitmap(const unsigned char* mac, unsigned char* bitmap) override;
  bool delete_mac_by_mac(const unsigned char* mac) override;
  bool clear_fdb_by_port(const Mp& mp, bool trunk, bool and_static) override;
  bool clear_fdb_by_vlan(unsigned int vlan, bool and_static) override;
  bool clear_fdb_table(bool and_static) override;
  bool set_fdb_aging_time(int seconds) override;
  bool get_fdb_aging_time(int& seconds) override;

  // ---- Links and MAC locks ----------------------------------------------------------------------
  bool set_port_link_state(const Mp& mp, phy_state_t state) override;
  bool get_port_link_state(const Mp& mp, phy_state_t& state) override;
  bool set_port_mac_lock(const Mp& mp, bool on) override;
  bool get_port_mac_lock(const Mp& mp, bool& on) override;
  bool set_port_mac_lock_ext(const Mp& mp, bool on, bool drop) override;
  bool get_port_mac_lock_ext(const Mp& mp, bool& on, bool& drop) override;

  // ---- Storm control ----------------------------------------------------------------------------
  bool set_port_broadcast_control(const Mp& mp, unsigned int frames_per_second) override;
  bool get_port_broadcast_control(const Mp& mp, unsigned int& frames_per_second) override;
  bool set_port_multicast_control(const Mp& mp, unsigned int frames_per_second) override;
  bool get_port_multicast_control(const Mp& mp, unsigned int& frames_per_second) override;
  bool set_port_unicast_control(const Mp& mp, unsigned int frames_per_second) override;
  bool get_port_unicast_control(const Mp& mp, unsigned int& frames_per_second) override;

  // ---- What a port lets in and out --------------------------------------------------------------
  bool set_port_egress_admin_state(const Mp& mp, bool on) override;
  bool get_port_egress_admin_state(const Mp& mp, bool& on) override;
  bool set_port_ingress_discarding(const Mp& mp, ingress_discard_type_t type) override;
  bool get_port_ingress_discarding(const Mp& mp, ingress_discard_type_t& type) override;

  // ---- VLAN settings of a port ------------------------------------------------------------------
  bool set_port_pvid(const Mp& mp, unsigned int vlan) override;
  bool get_port_pvid(const Mp& mp, unsigned int& vlan) override;
  bool set_port_vlan_priority(const Mp& mp, unsigned int vlan, unsigned int priority) override;
  bool get_port_vlan_priority(const Mp& mp, unsigned int vlan, unsigned int& priority) override;
  bool set_port_vlan_accept_frame(const Mp& mp, bool all) override;
  bool get_port_vlan_accept_frame(const Mp& mp, bool& all) override;

  // ---- MAC limits -------------------------------------------------------------------------------
  bool set_system_mac_limit(const Mp& mp, int limit, unsigned int kind) override;
  bool get_system_mac_limit(const Mp& mp, int& limit, unsigned int kind) override;

  // ---- Protocol, MAC and subnet VLANs -----------------------------------------------------------
  bool set_port_protocol_vlan(const Mp& mp, frame_type_t type, unsigned short protocol,
                              unsigned int vlan) override;
  bool delete_port_protocol_vlan(const Mp& mp, frame_type_t type, unsigned short protocol) override;
  bool delete_port_protocol_vlan_all(const Mp& mp) override;
  bool set_mac_vlan(const unsigned char* mac, unsigned int vlan, unsigned int priority) override;
  bool set_ipv4_subnet_vlan(unsigned int ip, unsigned int mask, unsigned int vlan,
                            unsigned int priority) override;
  bool set_ipv6_subnet_vlan(const unsigned char* ip6, unsigned int prefix_length, unsigned int vlan,
                            unsigned int priority) override;

  // ---- Packets from the CPU ---------------------------------------------------------------------
  bool send_packet_by_port(std::list<Mp>& tagged, std::list<Mp>& untagged,
                           const Packet& packet) override;
  bool send_packet_from_cpu(const Packet& packet) override;

  // ---- Port abilities ---------------------------------------------------------------------------
  bool get_port_ability(const Mp& mp, port_ability_type_t& ability) override;
  bool set_port_advertising_ability(const Mp& mp, port_ability_type_t ability) override;
  bool get_port_advertising_ability(const Mp& mp, port_ability_type_t& ability) override;
  bool get_port_current_ability(const Mp& mp, port_ability_type_t& ability) override;
  bool get_port_peer_ability(Mp mp, port_ability_type_t& ability) override;

  // ---- Flood blocking ---------------------------------------------------------------------------
  bool set_port_flood_blocking(const Mp& from, const Mp& to, flood_block_type_t type) override;
  bool get_port_flood_blocking(const Mp& from, const Mp& to, flood_block_type_t& type) override;
  bool set_port_flood_blocking_cpu(const Mp& from, flood_block_type_t type) override;
  bool get_port_flood_blocking_cpu(const Mp& from, flood_block_type_t& type) override;

  // ---- Class of service -------------------------------------------------------------------------
  bool set_port_cos_mapping(const Mp& mp, unsigned int priority, unsigned int queue) override;
  bool get_port_cos_mapping(const Mp& mp, unsigned int priority, unsigned int& queue) override;

  // ---- The switch as a whole --------------------------------------------------------------------
  bool get_line_card_usp(Usp& usp) override;
  bool free_call(int number) override;
  bool set_switch_forward_mode(unsigned int mode) override;
  bool get_switch_forward_mode(unsigned int& mode) override;

  // ---- Packet filters: frames that go to the CPU and nowhere else -------------------------------
  bool add_arp_filter(unsigned int ip, unsigned int mask) override;
  bool delete_arp_filter(unsigned int ip, unsigned int mask) override;
  bool delete_arp_filter_all() override;
  bool add_ip_protocol_filter(unsigned int protocol) override;
  bool delete_ip_protocol_filter(unsigned int protocol) override;
  bool delete_ip_protocol_filter_all() override;
  bool add_l4_destination_port_filter(unsigned int port) override;
  bool delete_l4_destination_port_filter(unsigned int port) override;
  bool delete_l4_destination_port_filter_all() override;

  // ---- Layer 2 and unknown unicast --------------------------------------------------------------
  bool set_port_l2_enable(const Mp& mp, bool on) override;
  bool set_port_switch_unknown_unicast_to_cpu(const Mp& mp, bool on) override;
  bool get_port_switch_unknown_unicast_to_cpu(const Mp& mp, bool& on) override;
  bool set_switch_unknown_unicast_to_cpu(bool on) override;
  bool get_switch_unknown_unicast_to_cpu(bool& on) override;

  // ---- Flow table -------------------------------------------------------------------------------
  bool add_of_flow(of_flow_mp_s& flow, unsigned int& id, const of_flow_qualify_udf_s& udf) override;
  bool add_of_flow_with_id(of_flow_mp_s& flow, unsigned int id) override;
  bool delete_of_flow(unsigned int id) override;
  bool clear_of_flow_table() override;
  bool add_of_flow_action(unsigned int id, of_action_t kind, of_action_param_s param,
                          const Mp& mp) override;
  bool delete_of_flow_action(unsigned int id, of_action_t kind, of_action_param_s param,
                             const Mp& mp) override;
  bool clear_of_flow_action(unsigned int id) override;
  bool set_of_flow_priority(unsigned int id, int priority) override;
  bool get_of_flow_priority(unsigned int id, int& priority) override;
  bool get_of_flow_stat_counter64(unsigned int id, unsigned long long& packets) override;
  bool get_of_flow_stat_counter32(unsigned int id, unsigned int& packets) override;

  // ---- Callbacks --------------------------------------------------------------------------------
  bool register_mac_update_callback(void (*callback)(L2Addr*, int, void*),
                                    void* user_data) override;
  bool register_mac_update_callback_c(void (*callback)(ctype_l2_addr_s*, int, void*),
                                      void* user_data) override;
  bool register_link_change_callback(void (*callback)(LinkStatus*, Usp*), void* user_data) override;
  bool register_link_change_callback_c(void (*callback)(ctype_link_status_s*, usp_s*),
                                       void* user_data) override;
  bool register_rx_packet_callback(void (*callback)(RxPacket*, void*), void* user_data) override;
  bool register_rx_packet_callback_c(void (*callback)(ctype_rx_packet_s*, void*),
                                     void* user_data) override;
  bool deregister_event_callback(lcmgr_report_event_t event, void* callback,
                                 void* user_data) override;
  bool traverse_mac_table(void* arg) override;

  // ---- Layer-3 interfaces -----------------------------------------------------------------------
  bool create_l3_interface(const unsigned char* mac, unsigned int vlan, unsigned int& id) override;
  bool create_l3_interface_with_id(const unsigned char* mac, unsigned int vlan, unsigned int id,
                                   bool replace) override;
  bool get_l3_interface(unsigned int id, unsigned int& vlan, unsigned char* mac) override;
  bool delete_l3_interface(const unsigned char* mac, unsigned int vlan) override;
  bool delete_l3_interface_by_id(unsigned int id) override;
  bool delete_l3_interface_all() override;

  // ---- Layer-3 hosts and routes -----------------------------------------------------------------
  bool add_l3_host_ip4(Mp mp, bool trunk, unsigned int ip, const unsigned char* mac,
                       unsigned int interface) override;
  bool add_l3_host_ip6(Mp mp, bool trunk, const unsigned char* ip6, const unsigned char* mac,
                       unsigned int interface) override;
  bool get_l3_host_ip4(unsigned int ip, Mp mp, unsigned char* mac, unsigned int& interface,
                       bool trunk) override;
  bool get_l3_host_ip6(const unsigned char* ip6, Mp mp, unsigned char* mac, unsigned int& interface,
                       bool trunk) override;
  bool get_l3_route_by_subnet_ip4(unsigned int ip, unsigned int mask, const Mp& mp, bool trunk,
                                  unsigned char (&mac)[6], unsigned int& interface,
                                  unsigned int& metric) override;
  bool get_l3_route_by_subnet_ip6(const unsigned char* ip6, const unsigned char* mask6,
                                  const Mp& mp, bool trunk, unsigned int& interface,
                                  unsigned char* mac) override;
  bool delete_l3_host_by_interface(unsigned int interface, bool ip6) override;
  bool delete_l3_host_by_network_ip4(unsigned int ip) override;
  bool delete_l3_host_by_network_ip6(const unsigned char* ip6) override;
  bool delete_l3_host_by_addr_ip4(unsigned int ip, const Mp& mp, bool trunk) override;
  bool delete_l3_host_by_addr_ip6(const unsigned char* ip6, const Mp& mp, bool trunk) override;
  bool clear_l3_host_table() override;
  bool add_l3_route_ip4(const Mp& mp, bool trunk, unsigned int ip, unsigned int mask,
                        const unsigned char* mac, unsigned int interface,
                        unsigned int metric) override;
  bool add_l3_route_ip6(const Mp& mp, bool trunk, const unsigned char* ip6,
                        const unsigned char* mask6, const unsigned char* mac,
                        unsigned int interface) override;
  bool delete_l3_route_by_interface(unsigned int interface, bool ip6) override;
  bool delete_l3_route_by_subnet_ip4(unsigned int ip, unsigned int mask, const Mp& mp,
                                     bool trunk) override;
  bool delete_l3_route_by_subnet_ip6(const unsigned char* ip6, const unsigned char* mask6,
                                     const Mp& mp, bool trunk) override;
  bool clear_l3_route_table() override;

  // ---- Tracing ----------------------------------------------------------------------------------
  bool set_lcmgr_trace(const std::string& target, bool on) override;

 private:
  // Calls work(PortIndex) for a port of the card, false for any other. `work` returns a bool, or
  // nothing when it cannot fail.
  template <class Work>
  bool on_port(const Mp& mp, Work&& work) {
    PortIndex port = 0;
    if (!port_of(card_.addresses(), mp, port)) return false;
    if constexpr (std::is_void_v<decltype(work(port))>) {
      work(port);
      return true;
    } else {
      return work(port);
    }
  }

  bool set_storm_limit(const Mp& mp, StormKind kind, unsigned int frames_per_second);
  bool get_storm_limit(const Mp& mp, StormKind kind, unsigned int& frames_per_second);

  Card& card_;
  Tables& tables_;  // the card's
  CallWatch& watch_;
};

}  // namespace softcard

#endif  // SOFTCARD_SDK_SDK_H_
