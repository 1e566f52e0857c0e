// SPDX-License-Identifier: Apache-2.0
//
// Every operation of VornSdkBase, in its order there.
#ifndef TESTS_SUPPORT_SDK_OPERATIONS_H_
#define TESTS_SUPPORT_SDK_OPERATIONS_H_

#include <vector>

#include "vorn_sdk_base.h"

namespace vorn::test {

// o(pointer to member) for each operation.
// clang-format off
template <class Operation, class Make>
std::vector<Operation> sdk_operations(const Make& o) {
  using Sdk = VornSdkBase;
  return {
      o(&Sdk::create_vlan), o(&Sdk::delete_vlan), o(&Sdk::add_ports_to_vlan),
      o(&Sdk::delete_ports_from_vlan), o(&Sdk::get_vlan_info), o(&Sdk::set_port_mstp_state),
      o(&Sdk::get_port_mstp_state), o(&Sdk::create_lag), o(&Sdk::delete_lag),
      o(&Sdk::add_ports_to_lag), o(&Sdk::delete_ports_from_lag),
      o(&Sdk::set_lag_balancing_strategy), o(&Sdk::get_lag_balancing_strategy),
      o(&Sdk::set_port_mirror), o(&Sdk::get_port_mirror), o(&Sdk::set_port_state),
      o(&Sdk::get_port_state), o(&Sdk::set_port_autoneg), o(&Sdk::get_port_autoneg),
      o(&Sdk::set_port_speed), o(&Sdk::get_port_speed), o(&Sdk::set_port_duplex),
      o(&Sdk::get_port_duplex), o(&Sdk::set_port_flow_control_8023x),
      o(&Sdk::get_port_flow_control_8023x), o(&Sdk::set_port_jaming_control),
      o(&Sdk::get_port_jaming_control), o(&Sdk::set_port_mtu), o(&Sdk::get_port_mtu),
      o(&Sdk::set_port_stat_enable), o(&Sdk::get_port_stat_enabled), o(&Sdk::get_port_stat_counter),
      o(&Sdk::get_port_stat_counter32), o(&Sdk::get_port_stat_counter_all64),
      o(&Sdk::get_port_stat_counter_all32), o(&Sdk::get_port_stat_counter_all64_ext),
      o(&Sdk::get_port_stat_counter_all32_ext), o(&Sdk::get_port_brief_stat_counter64),
      o(&Sdk::get_port_brief_stat_counter32), o(&Sdk::get_port_brief_stat_counter_all64),
      o(&Sdk::clear_port_stat_counter), o(&Sdk::set_port_stp_state), o(&Sdk::get_port_stp_state),
      o(&Sdk::set_port_bpdu_processing), o(&Sdk::get_port_bpdu_processing),
      o(&Sdk::add_mac_to_port), o(&Sdk::add_system_mac), o(&Sdk::add_system_mac_vlan_bitmap),
      o(&Sdk::delete_mac), o(&Sdk::delete_mac_vlan_bitmap), o(&Sdk::delete_mac_by_mac),
      o(&Sdk::clear_fdb_by_port), o(&Sdk::clear_fdb_by_vlan), o(&Sdk::clear_fdb_table),
      o(&Sdk::set_fdb_aging_time), o(&Sdk::get_fdb_aging_time), o(&Sdk::set_port_link_state),
      o(&Sdk::get_port_link_state), o(&Sdk::set_port_mac_lock), o(&Sdk::get_port_mac_lock),
      o(&Sdk::set_port_mac_lock_ext), o(&Sdk::get_port_mac_lock_ext),
      o(&Sdk::set_port_broadcast_control), o(&Sdk::get_port_broadcast_control),
      o(&Sdk::set_port_multicast_control), o(&Sdk::get_port_multicast_control),
      o(&Sdk::set_port_unicast_control), o(&Sdk::get_port_unicast_control),
      o(&Sdk::set_port_egress_admin_state), o(&Sdk::get_port_egress_admin_state),
      o(&Sdk::set_port_ingress_discarding), o(&Sdk::get_port_ingress_discarding),
      o(&Sdk::set_port_pvid), o(&Sdk::get_port_pvid), o(&Sdk::set_port_vlan_priority),
      o(&Sdk::get_port_vlan_priority), o(&Sdk::set_port_vlan_accept_frame),
      o(&Sdk::get_port_vlan_accept_frame), o(&Sdk::set_system_mac_limit),
      o(&Sdk::get_system_mac_limit), o(&Sdk::set_port_protocol_vlan),
      o(&Sdk::delete_port_protocol_vlan), o(&Sdk::delete_port_protocol_vlan_all),
      o(&Sdk::set_mac_vlan), o(&Sdk::set_ipv4_subnet_vlan), o(&Sdk::set_ipv6_subnet_vlan),
      o(&Sdk::send_packet_by_port), o(&Sdk::send_packet_from_cpu), o(&Sdk::get_port_ability),
      o(&Sdk::set_port_advertising_ability), o(&Sdk::get_port_advertising_ability),
      o(&Sdk::get_port_current_ability), o(&Sdk::get_port_peer_ability),
      o(&Sdk::set_port_flood_blocking), o(&Sdk::get_port_flood_blocking),
      o(&Sdk::set_port_flood_blocking_cpu), o(&Sdk::get_port_flood_blocking_cpu),
      o(&Sdk::set_port_cos_mapping), o(&Sdk::get_port_cos_mapping), o(&Sdk::get_line_card_usp),
      o(&Sdk::free_call), o(&Sdk::set_switch_forward_mode), o(&Sdk::get_switch_forward_mode),
      o(&Sdk::add_arp_filter), o(&Sdk::delete_arp_filter), o(&Sdk::delete_arp_filter_all),
      o(&Sdk::add_ip_protocol_filter), o(&Sdk::delete_ip_protocol_filter),
      o(&Sdk::delete_ip_protocol_filter_all), o(&Sdk::add_l4_destination_port_filter),
      o(&Sdk::delete_l4_destination_port_filter), o(&Sdk::delete_l4_destination_port_filter_all),
      o(&Sdk::set_port_l2_enable), o(&Sdk::set_port_switch_unknown_unicast_to_cpu),
      o(&Sdk::get_port_switch_unknown_unicast_to_cpu), o(&Sdk::set_switch_unknown_unicast_to_cpu),
      o(&Sdk::get_switch_unknown_unicast_to_cpu), o(&Sdk::add_of_flow),
      o(&Sdk::add_of_flow_with_id), o(&Sdk::delete_of_flow), o(&Sdk::clear_of_flow_table),
      o(&Sdk::add_of_flow_action), o(&Sdk::delete_of_flow_action), o(&Sdk::clear_of_flow_action),
      o(&Sdk::set_of_flow_priority), o(&Sdk::get_of_flow_priority),
      o(&Sdk::get_of_flow_stat_counter64), o(&Sdk::get_of_flow_stat_counter32),
      o(&Sdk::register_mac_update_callback), o(&Sdk::register_mac_update_callback_c),
      o(&Sdk::register_link_change_callback), o(&Sdk::register_link_change_callback_c),
      o(&Sdk::register_rx_packet_callback), o(&Sdk::register_rx_packet_callback_c),
      o(&Sdk::deregister_event_callback), o(&Sdk::traverse_mac_table), o(&Sdk::create_l3_interface),
      o(&Sdk::create_l3_interface_with_id), o(&Sdk::get_l3_interface), o(&Sdk::delete_l3_interface),
      o(&Sdk::delete_l3_interface_by_id), o(&Sdk::delete_l3_interface_all),
      o(&Sdk::add_l3_host_ip4), o(&Sdk::add_l3_host_ip6), o(&Sdk::get_l3_host_ip4),
      o(&Sdk::get_l3_host_ip6), o(&Sdk::get_l3_route_by_subnet_ip4),
      o(&Sdk::get_l3_route_by_subnet_ip6), o(&Sdk::delete_l3_host_by_interface),
      o(&Sdk::delete_l3_host_by_network_ip4), o(&Sdk::delete_l3_host_by_network_ip6),
      o(&Sdk::delete_l3_host_by_addr_ip4), o(&Sdk::delete_l3_host_by_addr_ip6),
      o(&Sdk::clear_l3_host_table), o(&Sdk::add_l3_route_ip4), o(&Sdk::add_l3_route_ip6),
      o(&Sdk::delete_l3_route_by_interface), o(&Sdk::delete_l3_route_by_subnet_ip4),
      o(&Sdk::delete_l3_route_by_subnet_ip6), o(&Sdk::clear_l3_route_table),
      o(&Sdk::set_lcmgr_trace),
  };
}
// clang-format on

}  // namespace vorn::test

#endif  // TESTS_SUPPORT_SDK_OPERATIONS_H_
