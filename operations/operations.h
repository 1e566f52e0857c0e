// SPDX-License-Identifier: Apache-2.0
//
// Every operation of VornSdkBase as a row of one table: its slot, its name, whether it changes the
// switch, and what its parameters mean where their types do not tell. What is done alike with all
// operations, such as tracing them or carrying them to another process, is derived from it.
#ifndef OPERATIONS_OPERATIONS_H_
#define OPERATIONS_OPERATIONS_H_

#include <type_traits>
#include <utility>

#include "vorn_sdk_base.h"

namespace vorn::operations {

// What a parameter means beyond its type. Bytes of an address have a fixed number.
struct Plain {};  // what its type says
struct Mac {
  static constexpr unsigned kBytes = 6;
};
struct Ip6 {
  static constexpr unsigned kBytes = 16;
};
struct VlanBitmap {
  static constexpr unsigned kBytes = 512;
};
struct Ip4 {};  // a number: 192.0.2.1 is 0xc0000201

enum class Effect {
  kReads,
  kChanges,
  kCallsBack,  // takes functions of its caller, and so works within one process; reads
};

namespace detail {

template <unsigned index, class... Meanings>
struct MeaningAt {
  using type = Plain;
};
template <class First, class... Others>
struct MeaningAt<0, First, Others...> {
  using type = First;
};
template <unsigned index, class First, class... Others>
struct MeaningAt<index, First, Others...> : MeaningAt<index - 1, Others...> {};

}  // namespace detail

// `Meanings` are those of the first parameters; the others are plain.
template <auto function, class... Meanings>
struct Operation {
  static constexpr auto kFunction = function;
  template <unsigned parameter>
  using Meaning = typename detail::MeaningAt<parameter, Meanings...>::type;

  const char* name;
  Effect effect;
};

// The row of a slot that the library does not call.
struct Reserved {};

template <auto function, class... Meanings>
constexpr Operation<function, Meanings...> reads(const char* name) {
  return {name, Effect::kReads};
}
template <auto function, class... Meanings>
constexpr Operation<function, Meanings...> changes(const char* name) {
  return {name, Effect::kChanges};
}
template <auto function>
constexpr Operation<function> calls_back(const char* name) {
  return {name, Effect::kCallsBack};
}

// ---- The table ----------------------------------------------------------------------------------

inline constexpr unsigned kSlots = 179;

template <unsigned slot>
inline constexpr Reserved kOperation{};

using Sdk = VornSdkBase;

// clang-format off
// ---- VLANs ------------------------------------------------------------------------------------
template <> inline constexpr auto kOperation<0> = changes<&Sdk::create_vlan>("create_vlan");
template <> inline constexpr auto kOperation<1> = changes<&Sdk::delete_vlan>("delete_vlan");
template <> inline constexpr auto kOperation<2> = changes<&Sdk::add_ports_to_vlan>("add_ports_to_vlan");
template <> inline constexpr auto kOperation<4> = changes<&Sdk::delete_ports_from_vlan>("delete_ports_from_vlan");
template <> inline constexpr auto kOperation<6> = reads<&Sdk::get_vlan_info>("get_vlan_info");
// ---- Multiple spanning tree -------------------------------------------------------------------
template <> inline constexpr auto kOperation<7> = changes<&Sdk::set_port_mstp_state>("set_port_mstp_state");
template <> inline constexpr auto kOperation<8> = reads<&Sdk::get_port_mstp_state>("get_port_mstp_state");
// ---- Link aggregation -------------------------------------------------------------------------
template <> inline constexpr auto kOperation<9> = changes<&Sdk::create_lag>("create_lag");
template <> inline constexpr auto kOperation<10> = changes<&Sdk::delete_lag>("delete_lag");
template <> inline constexpr auto kOperation<11> = changes<&Sdk::add_ports_to_lag>("add_ports_to_lag");
template <> inline constexpr auto kOperation<12> = changes<&Sdk::delete_ports_from_lag>("delete_ports_from_lag");
template <> inline constexpr auto kOperation<13> = changes<&Sdk::set_lag_balancing_strategy>("set_lag_balancing_strategy");
template <> inline constexpr auto kOperation<14> = reads<&Sdk::get_lag_balancing_strategy>("get_lag_balancing_strategy");
// ---- Mirroring and port settings --------------------------------------------------------------
template <> inline constexpr auto kOperation<16> = changes<&Sdk::set_port_mirror>("set_port_mirror");
template <> inline constexpr auto kOperation<17> = reads<&Sdk::get_port_mirror>("get_port_mirror");
template <> inline constexpr auto kOperation<18> = changes<&Sdk::set_port_state>("set_port_state");
template <> inline constexpr auto kOperation<19> = reads<&Sdk::get_port_state>("get_port_state");
template <> inline constexpr auto kOperation<22> = changes<&Sdk::set_port_autoneg>("set_port_autoneg");
template <> inline constexpr auto kOperation<23> = reads<&Sdk::get_port_autoneg>("get_port_autoneg");
template <> inline constexpr auto kOperation<24> = changes<&Sdk::set_port_speed>("set_port_speed");
template <> inline constexpr auto kOperation<25> = reads<&Sdk::get_port_speed>("get_port_speed");
template <> inline constexpr auto kOperation<26> = changes<&Sdk::set_port_duplex>("set_port_duplex");
template <> inline constexpr auto kOperation<27> = reads<&Sdk::get_port_duplex>("get_port_duplex");
template <> inline constexpr auto kOperation<28> = changes<&Sdk::set_port_flow_control_8023x>("set_port_flow_control_8023x");
template <> inline constexpr auto kOperation<29> = reads<&Sdk::get_port_flow_control_8023x>("get_port_flow_control_8023x");
template <> inline constexpr auto kOperation<30> = changes<&Sdk::set_port_jaming_control>("set_port_jaming_control");
template <> inline constexpr auto kOperation<31> = reads<&Sdk::get_port_jaming_control>("get_port_jaming_control");
template <> inline constexpr auto kOperation<34> = changes<&Sdk::set_port_mtu>("set_port_mtu");
template <> inline constexpr auto kOperation<35> = reads<&Sdk::get_port_mtu>("get_port_mtu");
// ---- Port statistics --------------------------------------------------------------------------
template <> inline constexpr auto kOperation<36> = changes<&Sdk::set_port_stat_enable>("set_port_stat_enable");
template <> inline constexpr auto kOperation<37> = reads<&Sdk::get_port_stat_enabled>("get_port_stat_enabled");
template <> inline constexpr auto kOperation<38> = reads<&Sdk::get_port_stat_counter>("get_port_stat_counter");
template <> inline constexpr auto kOperation<39> = reads<&Sdk::get_port_stat_counter32>("get_port_stat_counter32");
template <> inline constexpr auto kOperation<40> = reads<&Sdk::get_port_stat_counter_all64>("get_port_stat_counter_all64");
template <> inline constexpr auto kOperation<41> = reads<&Sdk::get_port_stat_counter_all32>("get_port_stat_counter_all32");
template <> inline constexpr auto kOperation<42> = reads<&Sdk::get_port_stat_counter_all64_ext>("get_port_stat_counter_all64_ext");
template <> inline constexpr auto kOperation<43> = reads<&Sdk::get_port_stat_counter_all32_ext>("get_port_stat_counter_all32_ext");
template <> inline constexpr auto kOperation<44> = reads<&Sdk::get_port_brief_stat_counter64>("get_port_brief_stat_counter64");
template <> inline constexpr auto kOperation<45> = reads<&Sdk::get_port_brief_stat_counter32>("get_port_brief_stat_counter32");
template <> inline constexpr auto kOperation<46> = reads<&Sdk::get_port_brief_stat_counter_all64>("get_port_brief_stat_counter_all64");
template <> inline constexpr auto kOperation<48> = changes<&Sdk::clear_port_stat_counter>("clear_port_stat_counter");
// ---- Spanning tree ----------------------------------------------------------------------------
template <> inline constexpr auto kOperation<49> = changes<&Sdk::set_port_stp_state>("set_port_stp_state");
template <> inline constexpr auto kOperation<50> = reads<&Sdk::get_port_stp_state>("get_port_stp_state");
template <> inline constexpr auto kOperation<51> = changes<&Sdk::set_port_bpdu_processing>("set_port_bpdu_processing");
template <> inline constexpr auto kOperation<52> = reads<&Sdk::get_port_bpdu_processing>("get_port_bpdu_processing");
// ---- MAC table --------------------------------------------------------------------------------
template <> inline constexpr auto kOperation<53> = changes<&Sdk::add_mac_to_port, Plain, Mac>("add_mac_to_port");
template <> inline constexpr auto kOperation<54> = changes<&Sdk::add_system_mac, Mac>("add_system_mac");
template <> inline constexpr auto kOperation<55> = changes<&Sdk::add_system_mac_vlan_bitmap, Mac, VlanBitmap>("add_system_mac_vlan_bitmap");
template <> inline constexpr auto kOperation<56> = changes<&Sdk::delete_mac, Mac>("delete_mac");
template <> inline constexpr auto kOperation<57> = changes<&Sdk::delete_mac_vlan_bitmap, Mac, VlanBitmap>("delete_mac_vlan_bitmap");
template <> inline constexpr auto kOperation<58> = changes<&Sdk::delete_mac_by_mac, Mac>("delete_mac_by_mac");
template <> inline constexpr auto kOperation<59> = changes<&Sdk::clear_fdb_by_port>("clear_fdb_by_port");
template <> inline constexpr auto kOperation<60> = changes<&Sdk::clear_fdb_by_vlan>("clear_fdb_by_vlan");
template <> inline constexpr auto kOperation<61> = changes<&Sdk::clear_fdb_table>("clear_fdb_table");
template <> inline constexpr auto kOperation<62> = changes<&Sdk::set_fdb_aging_time>("set_fdb_aging_time");
template <> inline constexpr auto kOperation<63> = reads<&Sdk::get_fdb_aging_time>("get_fdb_aging_time");
// ---- Links and MAC locks ----------------------------------------------------------------------
template <> inline constexpr auto kOperation<64> = changes<&Sdk::set_port_link_state>("set_port_link_state");
template <> inline constexpr auto kOperation<65> = reads<&Sdk::get_port_link_state>("get_port_link_state");
template <> inline constexpr auto kOperation<66> = changes<&Sdk::set_port_mac_lock>("set_port_mac_lock");
template <> inline constexpr auto kOperation<67> = reads<&Sdk::get_port_mac_lock>("get_port_mac_lock");
template <> inline constexpr auto kOperation<68> = changes<&Sdk::set_port_mac_lock_ext>("set_port_mac_lock_ext");
template <> inline constexpr auto kOperation<69> = reads<&Sdk::get_port_mac_lock_ext>("get_port_mac_lock_ext");
// ---- Storm control ----------------------------------------------------------------------------
template <> inline constexpr auto kOperation<70> = changes<&Sdk::set_port_broadcast_control>("set_port_broadcast_control");
template <> inline constexpr auto kOperation<71> = reads<&Sdk::get_port_broadcast_control>("get_port_broadcast_control");
template <> inline constexpr auto kOperation<72> = changes<&Sdk::set_port_multicast_control>("set_port_multicast_control");
template <> inline constexpr auto kOperation<73> = reads<&Sdk::get_port_multicast_control>("get_port_multicast_control");
template <> inline constexpr auto kOperation<74> = changes<&Sdk::set_port_unicast_control>("set_port_unicast_control");
template <> inline constexpr auto kOperation<75> = reads<&Sdk::get_port_unicast_control>("get_port_unicast_control");
// ---- What a port lets in and out --------------------------------------------------------------
template <> inline constexpr auto kOperation<76> = changes<&Sdk::set_port_egress_admin_state>("set_port_egress_admin_state");
template <> inline constexpr auto kOperation<77> = reads<&Sdk::get_port_egress_admin_state>("get_port_egress_admin_state");
template <> inline constexpr auto kOperation<78> = changes<&Sdk::set_port_ingress_discarding>("set_port_ingress_discarding");
template <> inline constexpr auto kOperation<79> = reads<&Sdk::get_port_ingress_discarding>("get_port_ingress_discarding");
// ---- VLAN settings of a port ------------------------------------------------------------------
template <> inline constexpr auto kOperation<80> = changes<&Sdk::set_port_pvid>("set_port_pvid");
template <> inline constexpr auto kOperation<81> = reads<&Sdk::get_port_pvid>("get_port_pvid");
template <> inline constexpr auto kOperation<82> = changes<&Sdk::set_port_vlan_priority>("set_port_vlan_priority");
template <> inline constexpr auto kOperation<83> = reads<&Sdk::get_port_vlan_priority>("get_port_vlan_priority");
template <> inline constexpr auto kOperation<84> = changes<&Sdk::set_port_vlan_accept_frame>("set_port_vlan_accept_frame");
template <> inline constexpr auto kOperation<85> = reads<&Sdk::get_port_vlan_accept_frame>("get_port_vlan_accept_frame");
// ---- MAC limits -------------------------------------------------------------------------------
template <> inline constexpr auto kOperation<86> = changes<&Sdk::set_system_mac_limit>("set_system_mac_limit");
template <> inline constexpr auto kOperation<87> = reads<&Sdk::get_system_mac_limit>("get_system_mac_limit");
// ---- Protocol, MAC and subnet VLANs -----------------------------------------------------------
template <> inline constexpr auto kOperation<88> = changes<&Sdk::set_port_protocol_vlan>("set_port_protocol_vlan");
template <> inline constexpr auto kOperation<89> = changes<&Sdk::delete_port_protocol_vlan>("delete_port_protocol_vlan");
template <> inline constexpr auto kOperation<90> = changes<&Sdk::delete_port_protocol_vlan_all>("delete_port_protocol_vlan_all");
template <> inline constexpr auto kOperation<91> = changes<&Sdk::set_mac_vlan, Mac>("set_mac_vlan");
template <> inline constexpr auto kOperation<92> = changes<&Sdk::set_ipv4_subnet_vlan, Ip4, Ip4>("set_ipv4_subnet_vlan");
template <> inline constexpr auto kOperation<93> = changes<&Sdk::set_ipv6_subnet_vlan, Ip6>("set_ipv6_subnet_vlan");
// ---- Packets from the CPU ---------------------------------------------------------------------
template <> inline constexpr auto kOperation<94> = changes<&Sdk::send_packet_by_port>("send_packet_by_port");
template <> inline constexpr auto kOperation<95> = changes<&Sdk::send_packet_from_cpu>("send_packet_from_cpu");
// ---- Port abilities ---------------------------------------------------------------------------
template <> inline constexpr auto kOperation<96> = reads<&Sdk::get_port_ability>("get_port_ability");
template <> inline constexpr auto kOperation<97> = changes<&Sdk::set_port_advertising_ability>("set_port_advertising_ability");
template <> inline constexpr auto kOperation<98> = reads<&Sdk::get_port_advertising_ability>("get_port_advertising_ability");
template <> inline constexpr auto kOperation<99> = reads<&Sdk::get_port_current_ability>("get_port_current_ability");
template <> inline constexpr auto kOperation<100> = reads<&Sdk::get_port_peer_ability>("get_port_peer_ability");
// ---- Flood blocking ---------------------------------------------------------------------------
template <> inline constexpr auto kOperation<101> = changes<&Sdk::set_port_flood_blocking>("set_port_flood_blocking");
template <> inline constexpr auto kOperation<102> = reads<&Sdk::get_port_flood_blocking>("get_port_flood_blocking");
template <> inline constexpr auto kOperation<103> = changes<&Sdk::set_port_flood_blocking_cpu>("set_port_flood_blocking_cpu");
template <> inline constexpr auto kOperation<104> = reads<&Sdk::get_port_flood_blocking_cpu>("get_port_flood_blocking_cpu");
// ---- Class of service -------------------------------------------------------------------------
template <> inline constexpr auto kOperation<105> = changes<&Sdk::set_port_cos_mapping>("set_port_cos_mapping");
template <> inline constexpr auto kOperation<106> = reads<&Sdk::get_port_cos_mapping>("get_port_cos_mapping");
// ---- The switch as a whole --------------------------------------------------------------------
template <> inline constexpr auto kOperation<107> = reads<&Sdk::get_line_card_usp>("get_line_card_usp");
template <> inline constexpr auto kOperation<108> = changes<&Sdk::free_call>("free_call");
template <> inline constexpr auto kOperation<109> = changes<&Sdk::set_switch_forward_mode>("set_switch_forward_mode");
template <> inline constexpr auto kOperation<110> = reads<&Sdk::get_switch_forward_mode>("get_switch_forward_mode");
// ---- Packet filters: frames that go to the CPU and nowhere else -------------------------------
template <> inline constexpr auto kOperation<111> = changes<&Sdk::add_arp_filter, Ip4, Ip4>("add_arp_filter");
template <> inline constexpr auto kOperation<112> = changes<&Sdk::delete_arp_filter, Ip4, Ip4>("delete_arp_filter");
template <> inline constexpr auto kOperation<113> = changes<&Sdk::delete_arp_filter_all>("delete_arp_filter_all");
template <> inline constexpr auto kOperation<114> = changes<&Sdk::add_ip_protocol_filter>("add_ip_protocol_filter");
template <> inline constexpr auto kOperation<115> = changes<&Sdk::delete_ip_protocol_filter>("delete_ip_protocol_filter");
template <> inline constexpr auto kOperation<116> = changes<&Sdk::delete_ip_protocol_filter_all>("delete_ip_protocol_filter_all");
template <> inline constexpr auto kOperation<117> = changes<&Sdk::add_l4_destination_port_filter>("add_l4_destination_port_filter");
template <> inline constexpr auto kOperation<118> = changes<&Sdk::delete_l4_destination_port_filter>("delete_l4_destination_port_filter");
template <> inline constexpr auto kOperation<119> = changes<&Sdk::delete_l4_destination_port_filter_all>("delete_l4_destination_port_filter_all");
// ---- Layer 2 and unknown unicast --------------------------------------------------------------
template <> inline constexpr auto kOperation<120> = changes<&Sdk::set_port_l2_enable>("set_port_l2_enable");
template <> inline constexpr auto kOperation<121> = changes<&Sdk::set_port_switch_unknown_unicast_to_cpu>("set_port_switch_unknown_unicast_to_cpu");
template <> inline constexpr auto kOperation<122> = reads<&Sdk::get_port_switch_unknown_unicast_to_cpu>("get_port_switch_unknown_unicast_to_cpu");
template <> inline constexpr auto kOperation<123> = changes<&Sdk::set_switch_unknown_unicast_to_cpu>("set_switch_unknown_unicast_to_cpu");
template <> inline constexpr auto kOperation<124> = reads<&Sdk::get_switch_unknown_unicast_to_cpu>("get_switch_unknown_unicast_to_cpu");
// ---- Flow table -------------------------------------------------------------------------------
template <> inline constexpr auto kOperation<125> = changes<&Sdk::add_of_flow>("add_of_flow");
template <> inline constexpr auto kOperation<126> = changes<&Sdk::add_of_flow_with_id>("add_of_flow_with_id");
template <> inline constexpr auto kOperation<127> = changes<&Sdk::delete_of_flow>("delete_of_flow");
template <> inline constexpr auto kOperation<128> = changes<&Sdk::clear_of_flow_table>("clear_of_flow_table");
template <> inline constexpr auto kOperation<129> = changes<&Sdk::add_of_flow_action>("add_of_flow_action");
template <> inline constexpr auto kOperation<130> = changes<&Sdk::delete_of_flow_action>("delete_of_flow_action");
template <> inline constexpr auto kOperation<131> = changes<&Sdk::clear_of_flow_action>("clear_of_flow_action");
template <> inline constexpr auto kOperation<132> = changes<&Sdk::set_of_flow_priority>("set_of_flow_priority");
template <> inline constexpr auto kOperation<133> = reads<&Sdk::get_of_flow_priority>("get_of_flow_priority");
template <> inline constexpr auto kOperation<134> = reads<&Sdk::get_of_flow_stat_counter64>("get_of_flow_stat_counter64");
template <> inline constexpr auto kOperation<135> = reads<&Sdk::get_of_flow_stat_counter32>("get_of_flow_stat_counter32");
// ---- Callbacks --------------------------------------------------------------------------------
template <> inline constexpr auto kOperation<136> = calls_back<&Sdk::register_mac_update_callback>("register_mac_update_callback");
template <> inline constexpr auto kOperation<137> = calls_back<&Sdk::register_mac_update_callback_c>("register_mac_update_callback_c");
template <> inline constexpr auto kOperation<138> = calls_back<&Sdk::register_link_change_callback>("register_link_change_callback");
template <> inline constexpr auto kOperation<139> = calls_back<&Sdk::register_link_change_callback_c>("register_link_change_callback_c");
template <> inline constexpr auto kOperation<140> = calls_back<&Sdk::register_rx_packet_callback>("register_rx_packet_callback");
template <> inline constexpr auto kOperation<141> = calls_back<&Sdk::register_rx_packet_callback_c>("register_rx_packet_callback_c");
template <> inline constexpr auto kOperation<142> = calls_back<&Sdk::deregister_event_callback>("deregister_event_callback");
template <> inline constexpr auto kOperation<145> = calls_back<&Sdk::traverse_mac_table>("traverse_mac_table");
template <> inline constexpr auto kOperation<152> = changes<&Sdk::create_l3_interface, Mac>("create_l3_interface");
template <> inline constexpr auto kOperation<153> = changes<&Sdk::create_l3_interface_with_id, Mac>("create_l3_interface_with_id");
template <> inline constexpr auto kOperation<154> = reads<&Sdk::get_l3_interface, Plain, Plain, Mac>("get_l3_interface");
template <> inline constexpr auto kOperation<155> = changes<&Sdk::delete_l3_interface, Mac>("delete_l3_interface");
template <> inline constexpr auto kOperation<156> = changes<&Sdk::delete_l3_interface_by_id>("delete_l3_interface_by_id");
template <> inline constexpr auto kOperation<157> = changes<&Sdk::delete_l3_interface_all>("delete_l3_interface_all");
template <> inline constexpr auto kOperation<158> = changes<&Sdk::add_l3_host_ip4, Plain, Plain, Ip4, Mac>("add_l3_host_ip4");
template <> inline constexpr auto kOperation<159> = changes<&Sdk::add_l3_host_ip6, Plain, Plain, Ip6, Mac>("add_l3_host_ip6");
template <> inline constexpr auto kOperation<160> = reads<&Sdk::get_l3_host_ip4, Ip4, Plain, Mac>("get_l3_host_ip4");
template <> inline constexpr auto kOperation<161> = reads<&Sdk::get_l3_host_ip6, Ip6, Plain, Mac>("get_l3_host_ip6");
template <> inline constexpr auto kOperation<162> = reads<&Sdk::get_l3_route_by_subnet_ip4, Ip4, Ip4>("get_l3_route_by_subnet_ip4");
template <> inline constexpr auto kOperation<163> = reads<&Sdk::get_l3_route_by_subnet_ip6, Ip6, Ip6, Plain, Plain, Plain, Mac>("get_l3_route_by_subnet_ip6");
template <> inline constexpr auto kOperation<164> = changes<&Sdk::delete_l3_host_by_interface>("delete_l3_host_by_interface");
template <> inline constexpr auto kOperation<165> = changes<&Sdk::delete_l3_host_by_network_ip4, Ip4>("delete_l3_host_by_network_ip4");
template <> inline constexpr auto kOperation<166> = changes<&Sdk::delete_l3_host_by_network_ip6, Ip6>("delete_l3_host_by_network_ip6");
template <> inline constexpr auto kOperation<167> = changes<&Sdk::delete_l3_host_by_addr_ip4, Ip4>("delete_l3_host_by_addr_ip4");
template <> inline constexpr auto kOperation<168> = changes<&Sdk::delete_l3_host_by_addr_ip6, Ip6>("delete_l3_host_by_addr_ip6");
template <> inline constexpr auto kOperation<169> = changes<&Sdk::clear_l3_host_table>("clear_l3_host_table");
template <> inline constexpr auto kOperation<172> = changes<&Sdk::add_l3_route_ip4, Plain, Plain, Ip4, Ip4, Mac>("add_l3_route_ip4");
template <> inline constexpr auto kOperation<173> = changes<&Sdk::add_l3_route_ip6, Plain, Plain, Ip6, Ip6, Mac>("add_l3_route_ip6");
template <> inline constexpr auto kOperation<174> = changes<&Sdk::delete_l3_route_by_interface>("delete_l3_route_by_interface");
template <> inline constexpr auto kOperation<175> = changes<&Sdk::delete_l3_route_by_subnet_ip4, Ip4, Ip4>("delete_l3_route_by_subnet_ip4");
template <> inline constexpr auto kOperation<176> = changes<&Sdk::delete_l3_route_by_subnet_ip6, Ip6, Ip6>("delete_l3_route_by_subnet_ip6");
template <> inline constexpr auto kOperation<177> = changes<&Sdk::clear_l3_route_table>("clear_l3_route_table");
// ---- Tracing ----------------------------------------------------------------------------------
template <> inline constexpr auto kOperation<178> = changes<&Sdk::set_lcmgr_trace>("set_lcmgr_trace");
// clang-format on

template <unsigned slot>
using OperationAt = std::remove_const_t<decltype(kOperation<slot>)>;

template <unsigned slot>
inline constexpr bool kIsReserved = std::is_same_v<OperationAt<slot>, Reserved>;

// Calls `visit(std::integral_constant<unsigned, slot>())` for each operation, in the order of the
// slots.
template <class Visit, unsigned... slots>
void for_each_slot(const Visit& visit, std::integer_sequence<unsigned, slots...>) {
  const auto visit_one = [&](auto slot) {
    if constexpr (!kIsReserved<slot()>) visit(slot);
  };
  (visit_one(std::integral_constant<unsigned, slots>()), ...);
}
template <class Visit>
void for_each_operation(const Visit& visit) {
  for_each_slot(visit, std::make_integer_sequence<unsigned, kSlots>());
}

}  // namespace vorn::operations

#endif  // OPERATIONS_OPERATIONS_H_
