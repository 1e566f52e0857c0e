// SPDX-License-Identifier: Apache-2.0
//
// A host for tests: everything that platform/ declares for the SDK, the port mapping and the LAG
// list, written so that it records what the library asks of it.
//
// Each call becomes one line in `host().steps`: the name without its vorn_ or vornsdk_ prefix and
// the arguments as text. What is passed by reference for the host to write appears as the name
// that the test gave its address, "&" without one, so that a test sees whether it was the
// caller's own variable. The n-th call can be made to refuse or to throw.
//
// The world: slot 1 has physical ports (1/1/p is hardware port 2:p+4), slot 20 LAG interfaces,
// slot 30 VLAN interfaces; every other port is unknown. reset() gives kLag three members.
#ifndef TESTS_SUPPORT_RECORDER_H_
#define TESTS_SUPPORT_RECORDER_H_

#include <cstddef>
#include <list>
#include <map>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "vorn_lag_list.h"
#include "vorn_port_mapping.h"
#include "vorn_sdk.h"

namespace vorn::test {

const Usp kPort(1, 1, 3);       // hardware port 2:7
const Usp kOtherPort(1, 1, 4);  // hardware port 2:8
const Usp kLag(1, 20, 5);       // id 33, members 2:1, 2:2 and 2:3
const Usp kEmptyLag(1, 20, 6);  // id 34, no members
const Usp kNewLag(1, 20, 9);    // no id yet; the SDK's next LAG is 35
const Usp kVlan(1, 30, 10);     // members 2:5 and 2:6
const Usp kUnknown(1, 40, 2);

// The exception of a step that was told to throw.
struct Thrown {};

// ---- Text of arguments --------------------------------------------------------------------------

std::string text(const Usp& port);
std::string text(const Mp& mp);
std::string text(const of_match_s& match);  // all 48 bytes, in hexadecimal
std::string text(const of_flow_mp_s& flow);
std::string text(const of_flow_qualify_udf_s& udf);
std::string text(const of_action_param_s& param);
std::string text(const Packet& packet);
inline std::string text(const char* words) { return words; }
inline std::string text(const std::string& words) { return words; }
inline std::string text(bool value) { return value ? "true" : "false"; }
template <class Number, class = std::enable_if_t<std::is_arithmetic_v<Number>>>
std::string text(Number number) {
  return std::to_string(number);
}
template <class Enum, class = std::enable_if_t<std::is_enum_v<Enum>>, class = void>
std::string text(Enum value) {
  return std::to_string(static_cast<unsigned int>(value));
}
template <class Item>
std::string text(const std::list<Item>& items) {
  std::string all;
  for (const Item& item : items) all += (all.empty() ? "" : " ") + text(item);
  return "[" + all + "]";
}
std::string mac_text(const unsigned char* mac);        // 6 bytes
std::string ip6_text(const unsigned char* ip6);        // 16 bytes
std::string bitmap_text(const unsigned char* bitmap);  // the first 2 bytes

// ---- The host -----------------------------------------------------------------------------------

class Host {
 public:
  std::vector<std::string> steps;
  std::size_t refuse = 0;  // number of the step, from 1, that returns false; 0: none
  std::size_t throws = 0;  // number of the step that throws Thrown; 0: none
  bool answers = false;    // whether outputs are written; refused operations write too
  bool has_sdk = true;
  VornSdkBase* sdk = nullptr;

  std::map<unsigned int, unsigned int> lag_ids;  // by the port number of the LAG interface
  unsigned int next_lag_id = 35;
  std::map<unsigned int, phy_state_t> links;  // by hardware port number; the others are up
  unsigned int flow_control_words[2] = {1, 0};
  std::list<Mp> vlan_members[2];             // tagged and untagged
  std::map<const void*, std::string> names;  // of the test's own variables and functions

  // Back to the start: no steps, nothing told, the world as above.
  void reset();

  template <class... Arguments>
  bool step(const char* name, const Arguments&... arguments) {
    std::string all;
    ((all += (all.empty() ? "" : ",") + text(arguments)), ...);
    return count(name + ("(" + all + ")"));
  }

 private:
  bool count(const std::string& line);
};

Host& host();

// The name that the test gave an address.
std::string name_of(const void* address);
template <class... Arguments>
std::string name_of(void (*function)(Arguments...)) {
  return name_of(reinterpret_cast<const void*>(function));
}

// An output: its name as an argument, and with Host::answers a value that differs from one
// answer to the next.
unsigned int next_answer();
inline void answer(bool& value) { value = next_answer() % 2 == 1; }
inline void answer(Usp& port) { port = kOtherPort; }
inline void answer(Mp& mp) { mp = Mp(2, 8); }
inline void answer(unsigned char (&mac)[6]) {
  for (unsigned char& byte : mac) byte = static_cast<unsigned char>(next_answer());
}
template <class Counter>
void answer(std::list<Counter>& counters) {
  counters.push_back({static_cast<decltype(Counter::type)>(1), next_answer()});
}
inline void answer(StatCounter32& counter) { counter = {STAT_IN_UNICAST_PACKETS, next_answer()}; }
inline void answer(StatCounter64& counter) { counter = {STAT_IN_UNICAST_PACKETS, next_answer()}; }
template <class Number>
void answer(Number& number) {
  number = static_cast<Number>(next_answer());
}
template <class Output>
std::string out(Output& output) {
  if (host().answers) answer(output);
  return name_of(&output);
}
inline std::string out(unsigned char* mac) {
  if (host().answers) answer(*reinterpret_cast<unsigned char(*)[6]>(mac));
  return name_of(mac);
}

// ---- The SDK object -----------------------------------------------------------------------------

// One line a slot: its arguments, and what is recorded of them. Slots that answer with more than
// out() are in recorder.cpp.
// A test that needs other answers derives from it and puts its object into Host::sdk.
class Recorder : public VornSdkBase {
  using u16 = unsigned short;
  using u32 = unsigned int;
  using u64 = unsigned long long;
  using Ports = std::list<Mp>;
  using Bytes = const unsigned char*;  // a MAC address, an IPv6 address or a bitmap

 public:
  // clang-format off
  bool create_vlan(u32 vlan) override { return step(__func__, vlan); }
  bool delete_vlan(u32 vlan) override { return step(__func__, vlan); }
  bool add_ports_to_vlan(u32 vlan, Ports& tagged, Ports& untagged) override { return step(__func__, vlan, tagged, untagged); }
  bool delete_ports_from_vlan(u32 vlan, Ports& ports) override { return step(__func__, vlan, ports); }
  bool get_vlan_info(u32 vlan, Ports& tagged, Ports& untagged) override;
  bool set_port_mstp_state(u32 instance, const Mp& mp, mstp_state_t state) override { return step(__func__, instance, mp, state); }
  bool get_port_mstp_state(u32 instance, const Mp& mp, mstp_state_t& state) override { return step(__func__, instance, mp, out(state)); }
  bool create_lag(u32& id) override;
  bool delete_lag(u32 id) override { return step(__func__, id); }
  bool add_ports_to_lag(u32 id, Ports& ports) override { return step(__func__, id, ports); }
  bool delete_ports_from_lag(u32 id, Ports& ports) override { return step(__func__, id, ports); }
  bool set_lag_balancing_strategy(u32 id, lag_psc_t psc) override { return step(__func__, id, psc); }
  bool get_lag_balancing_strategy(u32 id, lag_psc_t& psc) override { return step(__func__, id, out(psc)); }
  bool set_port_mirror(const Mp& to, const Mp& from, mirror_type_t type) override { return step(__func__, to, from, type); }
  bool get_port_mirror(Mp& to, const Mp& from, mirror_type_t& type) override;
  bool set_port_state(const Mp& mp, bool on) override { return step(__func__, mp, on); }
  bool get_port_state(const Mp& mp, bool& on) override { return step(__func__, mp, out(on)); }
  bool set_port_autoneg(const Mp& mp, bool on) override { return step(__func__, mp, on); }
  bool get_port_autoneg(const Mp& mp, bool& on) override { return step(__func__, mp, out(on)); }
  bool set_port_speed(const Mp& mp, speed_type_t speed) override { return step(__func__, mp, speed); }
  bool get_port_speed(const Mp& mp, speed_type_t& speed) override { return step(__func__, mp, out(speed)); }
  bool set_port_duplex(const Mp& mp, duplex_type_t duplex) override { return step(__func__, mp, duplex); }
  bool get_port_duplex(const Mp& mp, duplex_type_t& duplex) override { return step(__func__, mp, out(duplex)); }
  bool set_port_flow_control_8023x(const Mp& mp, bool receive, bool transmit) override { return step(__func__, mp, receive, transmit); }
  bool get_port_flow_control_8023x(const Mp& mp, u32& receive, u32& transmit) override;
  bool set_port_jaming_control(const Mp& mp, bool on) override { return step(__func__, mp, on); }
  bool get_port_jaming_control(const Mp& mp, bool& on) override { return step(__func__, mp, out(on)); }
  bool set_port_mtu(const Mp& mp, u32 bytes) override { return step(__func__, mp, bytes); }
  bool get_port_mtu(const Mp& mp, u32& bytes) override { return step(__func__, mp, out(bytes)); }
  bool set_port_stat_enable(const Mp& mp, bool on) override { return step(__func__, mp, on); }
  bool get_port_stat_enabled(const Mp& mp, bool& on) override { return step(__func__, mp, out(on)); }
  bool get_port_stat_counter(const Mp& mp, stat_type_t type, u64& value) override { return step(__func__, mp, type, out(value)); }
  bool get_port_stat_counter32(const Mp& mp, stat_type_t type, u32& value) override { return step(__func__, mp, type, out(value)); }
  bool get_port_stat_counter_all64(const Mp& mp, std::list<StatCounter64>& counters) override { return step(__func__, mp, out(counters)); }
  bool get_port_stat_counter_all32(const Mp& mp, std::list<StatCounter32>& counters) override { return step(__func__, mp, out(counters)); }
  bool get_port_stat_counter_all64_ext(const Mp& mp, StatCounter64* counters, u32& count) override { return step(__func__, mp, out(*counters), out(count)); }
  bool get_port_stat_counter_all32_ext(const Mp& mp, StatCounter32* counters, u32& count) override { return step(__func__, mp, out(*counters), out(count)); }
  bool get_port_brief_stat_counter64(const Mp& mp, brief_stat_type_t type, u64& value) override { return step(__func__, mp, type, out(value)); }
  bool get_port_brief_stat_counter32(const Mp& mp, brief_stat_type_t type, u32& value) override { return step(__func__, mp, type, out(value)); }
  bool get_port_brief_stat_counter_all64(const Mp& mp, std::list<BriefStatCounter64>& counters) override { return step(__func__, mp, out(counters)); }
  bool clear_port_stat_counter(const Mp& mp) override { return step(__func__, mp); }
  bool set_port_stp_state(const Mp& mp, stp_state_t state) override { return step(__func__, mp, state); }
  bool get_port_stp_state(const Mp& mp, stp_state_t& state) override { return step(__func__, mp, out(state)); }
  bool set_port_bpdu_processing(const Mp& mp, bool on) override { return step(__func__, mp, on); }
  bool get_port_bpdu_processing(const Mp& mp, bool& on) override { return step(__func__, mp, out(on)); }
  bool add_mac_to_port(const Mp& mp, Bytes mac, u32 vlan, bool trunk) override { return step(__func__, mp, mac_text(mac), vlan, trunk); }
  bool add_system_mac(Bytes mac, u32 vlan) override { return step(__func__, mac_text(mac), vlan); }
  bool add_system_mac_vlan_bitmap(Bytes mac, Bytes bitmap) override { return step(__func__, mac_text(mac), bitmap_text(bitmap)); }
  bool delete_mac(Bytes mac, u32 vlan) override { return step(__func__, mac_text(mac), vlan); }
  bool delete_mac_vlan_bitmap(Bytes mac, unsigned char* bitmap) override { return step(__func__, mac_text(mac), bitmap_text(bitmap)); }
  bool delete_mac_by_mac(Bytes mac) override { return step(__func__, mac_text(mac)); }
  bool clear_fdb_by_port(const Mp& mp, bool trunk, bool and_static) override { return step(__func__, mp, trunk, and_static); }
  bool clear_fdb_by_vlan(u32 vlan, bool and_static) override { return step(__func__, vlan, and_static); }
  bool clear_fdb_table(bool and_static) override { return step(__func__, and_static); }
  bool set_fdb_aging_time(int seconds) override { return step(__func__, seconds); }
  bool get_fdb_aging_time(int& seconds) override { return step(__func__, out(seconds)); }
  bool set_port_link_state(const Mp& mp, phy_state_t state) override { return step(__func__, mp, state); }
  bool get_port_link_state(const Mp& mp, phy_state_t& state) override;
  bool set_port_mac_lock(const Mp& mp, bool on) override { return step(__func__, mp, on); }
  bool get_port_mac_lock(const Mp& mp, bool& on) override { return step(__func__, mp, out(on)); }
  bool set_port_mac_lock_ext(const Mp& mp, bool on, bool drop) override { return step(__func__, mp, on, drop); }
  bool get_port_mac_lock_ext(const Mp& mp, bool& on, bool& drop) override { return step(__func__, mp, out(on), out(drop)); }
  bool set_port_broadcast_control(const Mp& mp, u32 rate) override { return step(__func__, mp, rate); }
  bool get_port_broadcast_control(const Mp& mp, u32& rate) override { return step(__func__, mp, out(rate)); }
  bool set_port_multicast_control(const Mp& mp, u32 rate) override { return step(__func__, mp, rate); }
  bool get_port_multicast_control(const Mp& mp, u32& rate) override { return step(__func__, mp, out(rate)); }
  bool set_port_unicast_control(const Mp& mp, u32 rate) override { return step(__func__, mp, rate); }
  bool get_port_unicast_control(const Mp& mp, u32& rate) override { return step(__func__, mp, out(rate)); }
  bool set_port_egress_admin_state(const Mp& mp, bool on) override { return step(__func__, mp, on); }
  bool get_port_egress_admin_state(const Mp& mp, bool& on) override { return step(__func__, mp, out(on)); }
  bool set_port_ingress_discarding(const Mp& mp, ingress_discard_type_t type) override { return step(__func__, mp, type); }
  bool get_port_ingress_discarding(const Mp& mp, ingress_discard_type_t& type) override { return step(__func__, mp, out(type)); }
  bool set_port_pvid(const Mp& mp, u32 vlan) override { return step(__func__, mp, vlan); }
  bool get_port_pvid(const Mp& mp, u32& vlan) override { return step(__func__, mp, out(vlan)); }
  bool set_port_vlan_priority(const Mp& mp, u32 vlan, u32 priority) override { return step(__func__, mp, vlan, priority); }
  bool get_port_vlan_priority(const Mp& mp, u32 vlan, u32& priority) override { return step(__func__, mp, vlan, out(priority)); }
  bool set_port_vlan_accept_frame(const Mp& mp, bool all) override { return step(__func__, mp, all); }
  bool get_port_vlan_accept_frame(const Mp& mp, bool& all) override { return step(__func__, mp, out(all)); }
  bool set_system_mac_limit(const Mp& mp, int limit, u32 kind) override { return step(__func__, mp, limit, kind); }
  bool get_system_mac_limit(const Mp& mp, int& limit, u32 kind) override { return step(__func__, mp, out(limit), kind); }
  bool set_port_protocol_vlan(const Mp& mp, frame_type_t type, u16 protocol, u32 vlan) override { return step(__func__, mp, type, protocol, vlan); }
  bool delete_port_protocol_vlan(const Mp& mp, frame_type_t type, u16 protocol) override { return step(__func__, mp, type, protocol); }
  bool delete_port_protocol_vlan_all(const Mp& mp) override { return step(__func__, mp); }
  bool set_mac_vlan(Bytes mac, u32 vlan, u32 priority) override { return step(__func__, mac_text(mac), vlan, priority); }
  bool set_ipv4_subnet_vlan(u32 ip, u32 mask, u32 vlan, u32 priority) override { return step(__func__, ip, mask, vlan, priority); }
  bool set_ipv6_subnet_vlan(Bytes ip6, u32 prefix_length, u32 vlan, u32 priority) override { return step(__func__, ip6_text(ip6), prefix_length, vlan, priority); }
  bool send_packet_by_port(Ports& tagged, Ports& untagged, const Packet& packet) override { return step(__func__, tagged, untagged, packet); }
  bool send_packet_from_cpu(const Packet& packet) override { return step(__func__, packet); }
  bool get_port_ability(const Mp& mp, port_ability_type_t& ability) override { return step(__func__, mp, out(ability)); }
  bool set_port_advertising_ability(const Mp& mp, port_ability_type_t ability) override { return step(__func__, mp, ability); }
  bool get_port_advertising_ability(const Mp& mp, port_ability_type_t& ability) override { return step(__func__, mp, out(ability)); }
  bool get_port_current_ability(const Mp& mp, port_ability_type_t& ability) override { return step(__func__, mp, out(ability)); }
  bool get_port_peer_ability(Mp mp, port_ability_type_t& ability) override { return step(__func__, mp, out(ability)); }
  bool set_port_flood_blocking(const Mp& from, const Mp& to, flood_block_type_t type) override { return step(__func__, from, to, type); }
  bool get_port_flood_blocking(const Mp& from, const Mp& to, flood_block_type_t& type) override { return step(__func__, from, to, out(type)); }
  bool set_port_flood_blocking_cpu(const Mp& from, flood_block_type_t type) override { return step(__func__, from, type); }
  bool get_port_flood_blocking_cpu(const Mp& from, flood_block_type_t& type) override { return step(__func__, from, out(type)); }
  bool set_port_cos_mapping(const Mp& mp, u32 priority, u32 queue) override { return step(__func__, mp, priority, queue); }
  bool get_port_cos_mapping(const Mp& mp, u32 priority, u32& queue) override { return step(__func__, mp, priority, out(queue)); }
  bool get_line_card_usp(Usp& usp) override { return step(__func__, out(usp)); }
  bool free_call(int number) override { return step(__func__, number); }
  bool set_switch_forward_mode(u32 mode) override { return step(__func__, mode); }
  bool get_switch_forward_mode(u32& mode) override { return step(__func__, out(mode)); }
  bool add_arp_filter(u32 ip, u32 mask) override { return step(__func__, ip, mask); }
  bool delete_arp_filter(u32 ip, u32 mask) override { return step(__func__, ip, mask); }
  bool delete_arp_filter_all() override { return step(__func__); }
  bool add_ip_protocol_filter(u32 protocol) override { return step(__func__, protocol); }
  bool delete_ip_protocol_filter(u32 protocol) override { return step(__func__, protocol); }
  bool delete_ip_protocol_filter_all() override { return step(__func__); }
  bool add_l4_destination_port_filter(u32 port) override { return step(__func__, port); }
  bool delete_l4_destination_port_filter(u32 port) override { return step(__func__, port); }
  bool delete_l4_destination_port_filter_all() override { return step(__func__); }
  bool set_port_l2_enable(const Mp& mp, bool on) override { return step(__func__, mp, on); }
  bool set_port_switch_unknown_unicast_to_cpu(const Mp& mp, bool on) override { return step(__func__, mp, on); }
  bool get_port_switch_unknown_unicast_to_cpu(const Mp& mp, bool& on) override { return step(__func__, mp, out(on)); }
  bool set_switch_unknown_unicast_to_cpu(bool on) override { return step(__func__, on); }
  bool get_switch_unknown_unicast_to_cpu(bool& on) override { return step(__func__, out(on)); }
  bool add_of_flow(of_flow_mp_s& flow, u32& id, const of_flow_qualify_udf_s& udf) override { return step(__func__, flow, out(id), udf); }
  bool add_of_flow_with_id(of_flow_mp_s& flow, u32 id) override { return step(__func__, flow, id); }
  bool delete_of_flow(u32 id) override { return step(__func__, id); }
  bool clear_of_flow_table() override { return step(__func__); }
  bool add_of_flow_action(u32 id, of_action_t kind, of_action_param_s param, const Mp& mp) override { return step(__func__, id, kind, param, mp); }
  bool delete_of_flow_action(u32 id, of_action_t kind, of_action_param_s param, const Mp& mp) override { return step(__func__, id, kind, param, mp); }
  bool clear_of_flow_action(u32 id) override { return step(__func__, id); }
  bool set_of_flow_priority(u32 id, int priority) override { return step(__func__, id, priority); }
  bool get_of_flow_priority(u32 id, int& priority) override { return step(__func__, id, out(priority)); }
  bool get_of_flow_stat_counter64(u32 id, u64& packets) override { return step(__func__, id, out(packets)); }
  bool get_of_flow_stat_counter32(u32 id, u32& packets) override { return step(__func__, id, out(packets)); }
  bool register_mac_update_callback(void (*f)(L2Addr*, int, void*), void* data) override { return step(__func__, name_of(f), name_of(data)); }
  bool register_mac_update_callback_c(void (*f)(ctype_l2_addr_s*, int, void*), void* data) override { return step(__func__, name_of(f), name_of(data)); }
  bool register_link_change_callback(void (*f)(LinkStatus*, Usp*), void* data) override { return step(__func__, name_of(f), name_of(data)); }
  bool register_link_change_callback_c(void (*f)(ctype_link_status_s*, usp_s*), void* data) override { return step(__func__, name_of(f), name_of(data)); }
  bool register_rx_packet_callback(void (*f)(RxPacket*, void*), void* data) override { return step(__func__, name_of(f), name_of(data)); }
  bool register_rx_packet_callback_c(void (*f)(ctype_rx_packet_s*, void*), void* data) override { return step(__func__, name_of(f), name_of(data)); }
  bool deregister_event_callback(lcmgr_report_event_t event, void* callback, void* data) override { return step(__func__, event, name_of(callback), name_of(data)); }
  bool traverse_mac_table(void* arg) override { return step(__func__, name_of(arg)); }
  bool create_l3_interface(Bytes mac, u32 vlan, u32& id) override { return step(__func__, mac_text(mac), vlan, out(id)); }
  bool create_l3_interface_with_id(Bytes mac, u32 vlan, u32 id, bool replace) override { return step(__func__, mac_text(mac), vlan, id, replace); }
  bool get_l3_interface(u32 id, u32& vlan, unsigned char* mac) override { return step(__func__, id, out(vlan), out(mac)); }
  bool delete_l3_interface(Bytes mac, u32 vlan) override { return step(__func__, mac_text(mac), vlan); }
  bool delete_l3_interface_by_id(u32 id) override { return step(__func__, id); }
  bool delete_l3_interface_all() override { return step(__func__); }
  bool add_l3_host_ip4(Mp mp, bool trunk, u32 ip, Bytes mac, u32 id) override { return step(__func__, mp, trunk, ip, mac_text(mac), id); }
  bool add_l3_host_ip6(Mp mp, bool trunk, Bytes ip6, Bytes mac, u32 id) override { return step(__func__, mp, trunk, ip6_text(ip6), mac_text(mac), id); }
  bool get_l3_host_ip4(u32 ip, Mp mp, unsigned char* mac, u32& id, bool trunk) override { return step(__func__, ip, mp, out(mac), out(id), trunk); }
  bool get_l3_host_ip6(Bytes ip6, Mp mp, unsigned char* mac, u32& id, bool trunk) override { return step(__func__, ip6_text(ip6), mp, out(mac), out(id), trunk); }
  bool get_l3_route_by_subnet_ip4(u32 ip, u32 mask, const Mp& mp, bool trunk, unsigned char (&mac)[6], u32& id, u32& metric) override { return step(__func__, ip, mask, mp, trunk, out(mac), out(id), out(metric)); }
  bool get_l3_route_by_subnet_ip6(Bytes ip6, Bytes mask6, const Mp& mp, bool trunk, u32& id, unsigned char* mac) override { return step(__func__, ip6_text(ip6), ip6_text(mask6), mp, trunk, out(id), out(mac)); }
  bool delete_l3_host_by_interface(u32 id, bool ip6) override { return step(__func__, id, ip6); }
  bool delete_l3_host_by_network_ip4(u32 ip) override { return step(__func__, ip); }
  bool delete_l3_host_by_network_ip6(Bytes ip6) override { return step(__func__, ip6_text(ip6)); }
  bool delete_l3_host_by_addr_ip4(u32 ip, const Mp& mp, bool trunk) override { return step(__func__, ip, mp, trunk); }
  bool delete_l3_host_by_addr_ip6(Bytes ip6, const Mp& mp, bool trunk) override { return step(__func__, ip6_text(ip6), mp, trunk); }
  bool clear_l3_host_table() override { return step(__func__); }
  bool add_l3_route_ip4(const Mp& mp, bool trunk, u32 ip, u32 mask, Bytes mac, u32 id, u32 metric) override { return step(__func__, mp, trunk, ip, mask, mac_text(mac), id, metric); }
  bool add_l3_route_ip6(const Mp& mp, bool trunk, Bytes ip6, Bytes mask6, Bytes mac, u32 id) override { return step(__func__, mp, trunk, ip6_text(ip6), ip6_text(mask6), mac_text(mac), id); }
  bool delete_l3_route_by_interface(u32 id, bool ip6) override { return step(__func__, id, ip6); }
  bool delete_l3_route_by_subnet_ip4(u32 ip, u32 mask, const Mp& mp, bool trunk) override { return step(__func__, ip, mask, mp, trunk); }
  bool delete_l3_route_by_subnet_ip6(Bytes ip6, Bytes mask6, const Mp& mp, bool trunk) override { return step(__func__, ip6_text(ip6), ip6_text(mask6), mp, trunk); }
  bool clear_l3_route_table() override { return step(__func__); }
  bool set_lcmgr_trace(const std::string& target, bool on) override { return step(__func__, target, on); }
  // clang-format on

 protected:
  ~Recorder() = default;

 private:
  template <class... Arguments>
  static bool step(const char* name, const Arguments&... arguments) {
    return host().step(name, arguments...);
  }
};

}  // namespace vorn::test

#endif  // TESTS_SUPPORT_RECORDER_H_
