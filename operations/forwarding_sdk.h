// SPDX-License-Identifier: Apache-2.0
//
// An SDK that hands every operation to one function template of the class that derives from it:
//
//   class MySdk final : public vorn::operations::ForwardingSdk<MySdk> {
//    public:
//     template <unsigned slot, class... Arguments>
//     bool carry(Arguments&... arguments);  // kOperation<slot> says what they are
//   };
//
// The arguments come in their order and by reference.
#ifndef OPERATIONS_FORWARDING_SDK_H_
#define OPERATIONS_FORWARDING_SDK_H_

#include <list>
#include <string>

#include "vorn_sdk_base.h"

namespace vorn::operations {

template <class Carrier>
class ForwardingSdk : public VornSdkBase {
 public:
  // ---- VLANs ------------------------------------------------------------------------------------
  bool create_vlan(unsigned int vlan) override { return pass<0>(vlan); }
  bool delete_vlan(unsigned int vlan) override { return pass<1>(vlan); }
  bool add_ports_to_vlan(unsigned int vlan, std::list<Mp>& tagged,
                         std::list<Mp>& untagged) override {
    return pass<2>(vlan, tagged, untagged);
  }
  bool delete_ports_from_vlan(unsigned int vlan, std::list<Mp>& ports) override {
    return pass<4>(vlan, ports);
  }
  bool get_vlan_info(unsigned int vlan, std::list<Mp>& tagged, std::list<Mp>& untagged) override {
    return pass<6>(vlan, tagged, untagged);
  }
  // ---- Multiple spanning tree -------------------------------------------------------------------
  bool set_port_mstp_state(unsigned int instance, const Mp& mp, mstp_state_t state) override {
    return pass<7>(instance, mp, state);
  }
  bool get_port_mstp_state(unsigned int instance, const Mp& mp, mstp_state_t& state) override {
    return pass<8>(instance, mp, state);
  }
  // ---- Link aggregation -------------------------------------------------------------------------
  bool create_lag(unsigned int& id) override { return pass<9>(id); }
  bool delete_lag(unsigned int id) override { return pass<10>(id); }
  bool add_ports_to_lag(unsigned int id, std::list<Mp>& ports) override {
    return pass<11>(id, ports);
  }
  bool delete_ports_from_lag(unsigned int id, std::list<Mp>& ports) override {
    return pass<12>(id, ports);
  }
  bool set_lag_balancing_strategy(unsigned int id, lag_psc_t psc) override {
    return pass<13>(id, psc);
  }
  bool get_lag_balancing_strategy(unsigned int id, lag_psc_t& psc) override {
    return pass<14>(id, psc);
  }
  // ---- Mirroring and port settings --------------------------------------------------------------
  bool set_port_mirror(const Mp& mirror_to, const Mp& mirrored, mirror_type_t type) override {
    return pass<16>(mirror_to, mirrored, type);
  }
  bool get_port_mirror(Mp& mirror_to, const Mp& mirrored, mirror_type_t& type) override {
    return pass<17>(mirror_to, mirrored, type);
  }
  bool set_port_state(const Mp& mp, bool on) override { return pass<18>(mp, on); }
  bool get_port_state(const Mp& mp, bool& on) override { return pass<19>(mp, on); }
  bool set_port_autoneg(const Mp& mp, bool on) override { return pass<22>(mp, on); }
  bool get_port_autoneg(const Mp& mp, bool& on) override { return pass<23>(mp, on); }
  bool set_port_speed(const Mp& mp, speed_type_t speed) override { return pass<24>(mp, speed); }
  bool get_port_speed(const Mp& mp, speed_type_t& speed) override { return pass<25>(mp, speed); }
  bool set_port_duplex(const Mp& mp, duplex_type_t duplex) override { return pass<26>(mp, duplex); }
  bool get_port_duplex(const Mp& mp, duplex_type_t& duplex) override {
    return pass<27>(mp, duplex);
  }
  bool set_port_flow_control_8023x(const Mp& mp, bool receive, bool transmit) override {
    return pass<28>(mp, receive, transmit);
  }
  bool get_port_flow_control_8023x(const Mp& mp, unsigned int& receive,
                                   unsigned int& transmit) override {
    return pass<29>(mp, receive, transmit);
  }
  bool set_port_jaming_control(const Mp& mp, bool on) override { return pass<30>(mp, on); }
  bool get_port_jaming_control(const Mp& mp, bool& on) override { return pass<31>(mp, on); }
  bool set_port_mtu(const Mp& mp, unsigned int bytes) override { return pass<34>(mp, bytes); }
  bool get_port_mtu(const Mp& mp, unsigned int& bytes) override { return pass<35>(mp, bytes); }
  // ---- Port statistics --------------------------------------------------------------------------
  bool set_port_stat_enable(const Mp& mp, bool on) override { return pass<36>(mp, on); }
  bool get_port_stat_enabled(const Mp& mp, bool& on) override { return pass<37>(mp, on); }
  bool get_port_stat_counter(const Mp& mp, stat_type_t type, unsigned long long& value) override {
    return pass<38>(mp, type, value);
  }
  bool get_port_stat_counter32(const Mp& mp, stat_type_t type, unsigned int& value) override {
    return pass<39>(mp, type, value);
  }
  bool get_port_stat_counter_all64(const Mp& mp, std::list<StatCounter64>& counters) override {
    return pass<40>(mp, counters);
  }
  bool get_port_stat_counter_all32(const Mp& mp, std::list<StatCounter32>& counters) override {
    return pass<41>(mp, counters);
  }
  bool get_port_stat_counter_all64_ext(const Mp& mp, StatCounter64* counters,
                                       unsigned int& count) override {
    return pass<42>(mp, counters, count);
  }
  bool get_port_stat_counter_all32_ext(const Mp& mp, StatCounter32* counters,
                                       unsigned int& count) override {
    return pass<43>(mp, counters, count);
  }
  bool get_port_brief_stat_counter64(const Mp& mp, brief_stat_type_t type,
                                     unsigned long long& value) override {
    return pass<44>(mp, type, value);
  }
  bool get_port_brief_stat_counter32(const Mp& mp, brief_stat_type_t type,
                                     unsigned int& value) override {
    return pass<45>(mp, type, value);
  }
  bool get_port_brief_stat_counter_all64(const Mp& mp,
                                         std::list<BriefStatCounter64>& counters) override {
    return pass<46>(mp, counters);
  }
  bool clear_port_stat_counter(const Mp& mp) override { return pass<48>(mp); }
  // ---- Spanning tree ----------------------------------------------------------------------------
  bool set_port_stp_state(const Mp& mp, stp_state_t state) override { return pass<49>(mp, state); }
  bool get_port_stp_state(const Mp& mp, stp_state_t& state) override { return pass<50>(mp, state); }
  bool set_port_bpdu_processing(const Mp& mp, bool on) override { return pass<51>(mp, on); }
  bool get_port_bpdu_processing(const Mp& mp, bool& on) override { return pass<52>(mp, on); }
  // ---- MAC table --------------------------------------------------------------------------------
  bool add_mac_to_port(const Mp& mp, const unsigned char* mac, unsigned int vlan,
                       bool trunk) override {
    return pass<53>(mp, mac, vlan, trunk);
  }
  bool add_system_mac(const unsigned char* mac, unsigned int vlan) override {
    return pass<54>(mac, vlan);
  }
  bool add_system_mac_vlan_bitmap(const unsigned char* mac, const unsigned char* bitmap) override {
    return pass<55>(mac, bitmap);
  }
  bool delete_mac(const unsigned char* mac, unsigned int vlan) override {
    return pass<56>(mac, vlan);
  }
  bool delete_mac_vlan_bitmap(const unsigned char* mac, unsigned char* bitmap) override {
    return pass<57>(mac, bitmap);
  }
  bool delete_mac_by_mac(const unsigned char* mac) override { return pass<58>(mac); }
  bool clear_fdb_by_port(const Mp& mp, bool trunk, bool and_static) override {
    return pass<59>(mp, trunk, and_static);
  }
  bool clear_fdb_by_vlan(unsigned int vlan, bool and_static) override {
    return pass<60>(vlan, and_static);
  }
  bool clear_fdb_table(bool and_static) override { return pass<61>(and_static); }
  bool set_fdb_aging_time(int seconds) override { return pass<62>(seconds); }
  bool get_fdb_aging_time(int& seconds) override { return pass<63>(seconds); }
  // ---- Links and MAC locks ----------------------------------------------------------------------
  bool set_port_link_state(const Mp& mp, phy_state_t state) override { return pass<64>(mp, state); }
  bool get_port_link_state(const Mp& mp, phy_state_t& state) override {
    return pass<65>(mp, state);
  }
  bool set_port_mac_lock(const Mp& mp, bool on) override { return pass<66>(mp, on); }
  bool get_port_mac_lock(const Mp& mp, bool& on) override { return pass<67>(mp, on); }
  bool set_port_mac_lock_ext(const Mp& mp, bool on, bool drop) override {
    return pass<68>(mp, on, drop);
  }
  bool get_port_mac_lock_ext(const Mp& mp, bool& on, bool& drop) override {
    return pass<69>(mp, on, drop);
  }
  // ---- Storm control ----------------------------------------------------------------------------
  bool set_port_broadcast_control(const Mp& mp, unsigned int frames_per_second) override {
    return pass<70>(mp, frames_per_second);
  }
  bool get_port_broadcast_control(const Mp& mp, unsigned int& frames_per_second) override {
    return pass<71>(mp, frames_per_second);
  }
  bool set_port_multicast_control(const Mp& mp, unsigned int frames_per_second) override {
    return pass<72>(mp, frames_per_second);
  }
  bool get_port_multicast_control(const Mp& mp, unsigned int& frames_per_second) override {
    return pass<73>(mp, frames_per_second);
  }
  bool set_port_unicast_control(const Mp& mp, unsigned int frames_per_second) override {
    return pass<74>(mp, frames_per_second);
  }
  bool get_port_unicast_control(const Mp& mp, unsigned int& frames_per_second) override {
    return pass<75>(mp, frames_per_second);
  }
  // ---- What a port lets in and out --------------------------------------------------------------
  bool set_port_egress_admin_state(const Mp& mp, bool on) override { return pass<76>(mp, on); }
  bool get_port_egress_admin_state(const Mp& mp, bool& on) override { return pass<77>(mp, on); }
  bool set_port_ingress_discarding(const Mp& mp, ingress_discard_type_t type) override {
    return pass<78>(mp, type);
  }
  bool get_port_ingress_discarding(const Mp& mp, ingress_discard_type_t& type) override {
    return pass<79>(mp, type);
  }
  // ---- VLAN settings of a port ------------------------------------------------------------------
  bool set_port_pvid(const Mp& mp, unsigned int vlan) override { return pass<80>(mp, vlan); }
  bool get_port_pvid(const Mp& mp, unsigned int& vlan) override { return pass<81>(mp, vlan); }
  bool set_port_vlan_priority(const Mp& mp, unsigned int vlan, unsigned int priority) override {
    return pass<82>(mp, vlan, priority);
  }
  bool get_port_vlan_priority(const Mp& mp, unsigned int vlan, unsigned int& priority) override {
    return pass<83>(mp, vlan, priority);
  }
  bool set_port_vlan_accept_frame(const Mp& mp, bool all) override { return pass<84>(mp, all); }
  bool get_port_vlan_accept_frame(const Mp& mp, bool& all) override { return pass<85>(mp, all); }
  // ---- MAC limits -------------------------------------------------------------------------------
  bool set_system_mac_limit(const Mp& mp, int limit, unsigned int kind) override {
    return pass<86>(mp, limit, kind);
  }
  bool get_system_mac_limit(const Mp& mp, int& limit, unsigned int kind) override {
    return pass<87>(mp, limit, kind);
  }
  // ---- Protocol, MAC and subnet VLANs -----------------------------------------------------------
  bool set_port_protocol_vlan(const Mp& mp, frame_type_t type, unsigned short protocol,
                              unsigned int vlan) override {
    return pass<88>(mp, type, protocol, vlan);
  }
  bool delete_port_protocol_vlan(const Mp& mp, frame_type_t type,
                                 unsigned short protocol) override {
    return pass<89>(mp, type, protocol);
  }
  bool delete_port_protocol_vlan_all(const Mp& mp) override { return pass<90>(mp); }
  bool set_mac_vlan(const unsigned char* mac, unsigned int vlan, unsigned int priority) override {
    return pass<91>(mac, vlan, priority);
  }
  bool set_ipv4_subnet_vlan(unsigned int ip, unsigned int mask, unsigned int vlan,
                            unsigned int priority) override {
    return pass<92>(ip, mask, vlan, priority);
  }
  bool set_ipv6_subnet_vlan(const unsigned char* ip6, unsigned int prefix_length, unsigned int vlan,
                            unsigned int priority) override {
    return pass<93>(ip6, prefix_length, vlan, priority);
  }
  // ---- Packets from the CPU ---------------------------------------------------------------------
  bool send_packet_by_port(std::list<Mp>& tagged, std::list<Mp>& untagged,
                           const Packet& packet) override {
    return pass<94>(tagged, untagged, packet);
  }
  bool send_packet_from_cpu(const Packet& packet) override { return pass<95>(packet); }
  // ---- Port abilities ---------------------------------------------------------------------------
  bool get_port_ability(const Mp& mp, port_ability_type_t& ability) override {
    return pass<96>(mp, ability);
  }
  bool set_port_advertising_ability(const Mp& mp, port_ability_type_t ability) override {
    return pass<97>(mp, ability);
  }
  bool get_port_advertising_ability(const Mp& mp, port_ability_type_t& ability) override {
    return pass<98>(mp, ability);
  }
  bool get_port_current_ability(const Mp& mp, port_ability_type_t& ability) override {
    return pass<99>(mp, ability);
  }
  bool get_port_peer_ability(Mp mp, port_ability_type_t& ability) override {
    return pass<100>(mp, ability);
  }
  // ---- Flood blocking ---------------------------------------------------------------------------
  bool set_port_flood_blocking(const Mp& from, const Mp& to, flood_block_type_t type) override {
    return pass<101>(from, to, type);
  }
  bool get_port_flood_blocking(const Mp& from, const Mp& to, flood_block_type_t& type) override {
    return pass<102>(from, to, type);
  }
  bool set_port_flood_blocking_cpu(const Mp& from, flood_block_type_t type) override {
    return pass<103>(from, type);
  }
  bool get_port_flood_blocking_cpu(const Mp& from, flood_block_type_t& type) override {
    return pass<104>(from, type);
  }
  // ---- Class of service -------------------------------------------------------------------------
  bool set_port_cos_mapping(const Mp& mp, unsigned int priority, unsigned int queue) override {
    return pass<105>(mp, priority, queue);
  }
  bool get_port_cos_mapping(const Mp& mp, unsigned int priority, unsigned int& queue) override {
    return pass<106>(mp, priority, queue);
  }
  // ---- The switch as a whole --------------------------------------------------------------------
  bool get_line_card_usp(Usp& usp) override { return pass<107>(usp); }
  bool free_call(int number) override { return pass<108>(number); }
  bool set_switch_forward_mode(unsigned int mode) override { return pass<109>(mode); }
  bool get_switch_forward_mode(unsigned int& mode) override { return pass<110>(mode); }
  // ---- Packet filters: frames that go to the CPU and nowhere else -------------------------------
  bool add_arp_filter(unsigned int ip, unsigned int mask) override { return pass<111>(ip, mask); }
  bool delete_arp_filter(unsigned int ip, unsigned int mask) override {
    return pass<112>(ip, mask);
  }
  bool delete_arp_filter_all() override { return pass<113>(); }
  bool add_ip_protocol_filter(unsigned int protocol) override { return pass<114>(protocol); }
  bool delete_ip_protocol_filter(unsigned int protocol) override { return pass<115>(protocol); }
  bool delete_ip_protocol_filter_all() override { return pass<116>(); }
  bool add_l4_destination_port_filter(unsigned int port) override { return pass<117>(port); }
  bool delete_l4_destination_port_filter(unsigned int port) override { return pass<118>(port); }
  bool delete_l4_destination_port_filter_all() override { return pass<119>(); }
  // ---- Layer 2 and unknown unicast --------------------------------------------------------------
  bool set_port_l2_enable(const Mp& mp, bool on) override { return pass<120>(mp, on); }
  bool set_port_switch_unknown_unicast_to_cpu(const Mp& mp, bool on) override {
    return pass<121>(mp, on);
  }
  bool get_port_switch_unknown_unicast_to_cpu(const Mp& mp, bool& on) override {
    return pass<122>(mp, on);
  }
  bool set_switch_unknown_unicast_to_cpu(bool on) override { return pass<123>(on); }
  bool get_switch_unknown_unicast_to_cpu(bool& on) override { return pass<124>(on); }
  // ---- Flow table -------------------------------------------------------------------------------
  bool add_of_flow(of_flow_mp_s& flow, unsigned int& id,
                   const of_flow_qualify_udf_s& udf) override {
    return pass<125>(flow, id, udf);
  }
  bool add_of_flow_with_id(of_flow_mp_s& flow, unsigned int id) override {
    return pass<126>(flow, id);
  }
  bool delete_of_flow(unsigned int id) override { return pass<127>(id); }
  bool clear_of_flow_table() override { return pass<128>(); }
  bool add_of_flow_action(unsigned int id, of_action_t kind, of_action_param_s param,
                          const Mp& mp) override {
    return pass<129>(id, kind, param, mp);
  }
  bool delete_of_flow_action(unsigned int id, of_action_t kind, of_action_param_s param,
                             const Mp& mp) override {
    return pass<130>(id, kind, param, mp);
  }
  bool clear_of_flow_action(unsigned int id) override { return pass<131>(id); }
  bool set_of_flow_priority(unsigned int id, int priority) override {
    return pass<132>(id, priority);
  }
  bool get_of_flow_priority(unsigned int id, int& priority) override {
    return pass<133>(id, priority);
  }
  bool get_of_flow_stat_counter64(unsigned int id, unsigned long long& packets) override {
    return pass<134>(id, packets);
  }
  bool get_of_flow_stat_counter32(unsigned int id, unsigned int& packets) override {
    return pass<135>(id, packets);
  }
  // ---- Callbacks --------------------------------------------------------------------------------
  bool register_mac_update_callback(void (*callback)(L2Addr*, int, void*),
                                    void* user_data) override {
    return pass<136>(callback, user_data);
  }
  bool register_mac_update_callback_c(void (*callback)(ctype_l2_addr_s*, int, void*),
                                      void* user_data) override {
    return pass<137>(callback, user_data);
  }
  bool register_link_change_callback(void (*callback)(LinkStatus*, Usp*),
                                     void* user_data) override {
    return pass<138>(callback, user_data);
  }
  bool register_link_change_callback_c(void (*callback)(ctype_link_status_s*, usp_s*),
                                       void* user_data) override {
    return pass<139>(callback, user_data);
  }
  bool register_rx_packet_callback(void (*callback)(RxPacket*, void*), void* user_data) override {
    return pass<140>(callback, user_data);
  }
  bool register_rx_packet_callback_c(void (*callback)(ctype_rx_packet_s*, void*),
                                     void* user_data) override {
    return pass<141>(callback, user_data);
  }
  bool deregister_event_callback(lcmgr_report_event_t event, void* callback,
                                 void* user_data) override {
    return pass<142>(event, callback, user_data);
  }
  bool traverse_mac_table(void* arg) override { return pass<145>(arg); }
  bool create_l3_interface(const unsigned char* mac, unsigned int vlan, unsigned int& id) override {
    return pass<152>(mac, vlan, id);
  }
  bool create_l3_interface_with_id(const unsigned char* mac, unsigned int vlan, unsigned int id,
                                   bool replace) override {
    return pass<153>(mac, vlan, id, replace);
  }
  bool get_l3_interface(unsigned int id, unsigned int& vlan, unsigned char* mac) override {
    return pass<154>(id, vlan, mac);
  }
  bool delete_l3_interface(const unsigned char* mac, unsigned int vlan) override {
    return pass<155>(mac, vlan);
  }
  bool delete_l3_interface_by_id(unsigned int id) override { return pass<156>(id); }
  bool delete_l3_interface_all() override { return pass<157>(); }
  bool add_l3_host_ip4(Mp mp, bool trunk, unsigned int ip, const unsigned char* mac,
                       unsigned int interface) override {
    return pass<158>(mp, trunk, ip, mac, interface);
  }
  bool add_l3_host_ip6(Mp mp, bool trunk, const unsigned char* ip6, const unsigned char* mac,
                       unsigned int interface) override {
    return pass<159>(mp, trunk, ip6, mac, interface);
  }
  bool get_l3_host_ip4(unsigned int ip, Mp mp, unsigned char* mac, unsigned int& interface,
                       bool trunk) override {
    return pass<160>(ip, mp, mac, interface, trunk);
  }
  bool get_l3_host_ip6(const unsigned char* ip6, Mp mp, unsigned char* mac, unsigned int& interface,
                       bool trunk) override {
    return pass<161>(ip6, mp, mac, interface, trunk);
  }
  bool get_l3_route_by_subnet_ip4(unsigned int ip, unsigned int mask, const Mp& mp, bool trunk,
                                  unsigned char (&mac)[6], unsigned int& interface,
                                  unsigned int& metric) override {
    return pass<162>(ip, mask, mp, trunk, mac, interface, metric);
  }
  bool get_l3_route_by_subnet_ip6(const unsigned char* ip6, const unsigned char* mask6,
                                  const Mp& mp, bool trunk, unsigned int& interface,
                                  unsigned char* mac) override {
    return pass<163>(ip6, mask6, mp, trunk, interface, mac);
  }
  bool delete_l3_host_by_interface(unsigned int interface, bool ip6) override {
    return pass<164>(interface, ip6);
  }
  bool delete_l3_host_by_network_ip4(unsigned int ip) override { return pass<165>(ip); }
  bool delete_l3_host_by_network_ip6(const unsigned char* ip6) override { return pass<166>(ip6); }
  bool delete_l3_host_by_addr_ip4(unsigned int ip, const Mp& mp, bool trunk) override {
    return pass<167>(ip, mp, trunk);
  }
  bool delete_l3_host_by_addr_ip6(const unsigned char* ip6, const Mp& mp, bool trunk) override {
    return pass<168>(ip6, mp, trunk);
  }
  bool clear_l3_host_table() override { return pass<169>(); }
  bool add_l3_route_ip4(const Mp& mp, bool trunk, unsigned int ip, unsigned int mask,
                        const unsigned char* mac, unsigned int interface,
                        unsigned int metric) override {
    return pass<172>(mp, trunk, ip, mask, mac, interface, metric);
  }
  bool add_l3_route_ip6(const Mp& mp, bool trunk, const unsigned char* ip6,
                        const unsigned char* mask6, const unsigned char* mac,
                        unsigned int interface) override {
    return pass<173>(mp, trunk, ip6, mask6, mac, interface);
  }
  bool delete_l3_route_by_interface(unsigned int interface, bool ip6) override {
    return pass<174>(interface, ip6);
  }
  bool delete_l3_route_by_subnet_ip4(unsigned int ip, unsigned int mask, const Mp& mp,
                                     bool trunk) override {
    return pass<175>(ip, mask, mp, trunk);
  }
  bool delete_l3_route_by_subnet_ip6(const unsigned char* ip6, const unsigned char* mask6,
                                     const Mp& mp, bool trunk) override {
    return pass<176>(ip6, mask6, mp, trunk);
  }
  bool clear_l3_route_table() override { return pass<177>(); }
  // ---- Tracing ----------------------------------------------------------------------------------
  bool set_lcmgr_trace(const std::string& target, bool on) override {
    return pass<178>(target, on);
  }

 protected:
  ForwardingSdk() = default;
  ForwardingSdk(const ForwardingSdk&) = default;
  ForwardingSdk& operator=(const ForwardingSdk&) = default;
  // As VornSdkBase has it: whoever made the object destroys it as what it is.
  ~ForwardingSdk() = default;

 private:
  template <unsigned slot, class... Arguments>
  bool pass(Arguments&... arguments) {
    return static_cast<Carrier&>(*this).template carry<slot>(arguments...);
  }
};

}  // namespace vorn::operations

#endif  // OPERATIONS_FORWARDING_SDK_H_
