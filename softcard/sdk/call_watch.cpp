// SPDX-License-Identifier: Apache-2.0

#include "softcard/sdk/call_watch.h"

#include <algorithm>
#include <iostream>

#include "softcard/base/refusal.h"

namespace softcard {
namespace {

struct Module {
  std::string_view name;
  std::vector<std::string_view> operations;
};

const std::vector<Module>& modules() {
  // clang-format off
  static const std::vector<Module> kModules = {
      {"lcmgr",
       {"send_packet_by_port", "send_packet_from_cpu", "get_line_card_usp", "free_call",
        "register_mac_update_callback", "register_mac_update_callback_c",
        "register_link_change_callback", "register_link_change_callback_c",
        "register_rx_packet_callback", "register_rx_packet_callback_c", "deregister_event_callback",
        "set_lcmgr_trace"}},
      {"sif",
       {"set_port_state", "get_port_state", "set_port_autoneg", "get_port_autoneg",
        "set_port_speed", "get_port_speed", "set_port_duplex", "get_port_duplex",
        "set_port_flow_control_8023x", "get_port_flow_control_8023x", "set_port_jaming_control",
        "get_port_jaming_control", "set_port_mtu", "get_port_mtu", "set_port_link_state",
        "get_port_link_state", "get_port_ability", "set_port_advertising_ability",
        "get_port_advertising_ability", "get_port_current_ability", "get_port_peer_ability",
        "create_l3_interface", "create_l3_interface_with_id", "get_l3_interface",
        "delete_l3_interface", "delete_l3_interface_by_id", "delete_l3_interface_all",
        "add_l3_host_ip4", "add_l3_host_ip6", "get_l3_host_ip4", "get_l3_host_ip6",
        "get_l3_route_by_subnet_ip4", "get_l3_route_by_subnet_ip6", "delete_l3_host_by_interface",
        "delete_l3_host_by_network_ip4", "delete_l3_host_by_network_ip6",
        "delete_l3_host_by_addr_ip4", "delete_l3_host_by_addr_ip6", "clear_l3_host_table",
        "add_l3_route_ip4", "add_l3_route_ip6", "delete_l3_route_by_interface",
        "delete_l3_route_by_subnet_ip4", "delete_l3_route_by_subnet_ip6", "clear_l3_route_table"}},
      {"rstp",
       {"set_port_mstp_state", "get_port_mstp_state", "set_port_stp_state", "get_port_stp_state",
        "set_port_bpdu_processing", "get_port_bpdu_processing"}},
      {"stat",
       {"set_port_stat_enable", "get_port_stat_enabled", "get_port_stat_counter",
        "get_port_stat_counter32", "get_port_stat_counter_all64", "get_port_stat_counter_all32",
        "get_port_stat_counter_all64_ext", "get_port_stat_counter_all32_ext",
        "get_port_brief_stat_counter64", "get_port_brief_stat_counter32",
        "get_port_brief_stat_counter_all64", "clear_port_stat_counter"}},
      {"policy",
       {"set_port_broadcast_control", "get_port_broadcast_control", "set_port_multicast_control",
        "get_port_multicast_control", "set_port_unicast_control", "get_port_unicast_control",
        "set_port_egress_admin_state", "get_port_egress_admin_state", "set_port_ingress_discarding",
        "get_port_ingress_discarding", "set_port_flood_blocking", "get_port_flood_blocking",
        "set_port_flood_blocking_cpu", "get_port_flood_blocking_cpu", "set_port_cos_mapping",
        "get_port_cos_mapping", "set_switch_forward_mode", "get_switch_forward_mode",
        "add_arp_filter", "delete_arp_filter", "delete_arp_filter_all", "add_ip_protocol_filter",
        "delete_ip_protocol_filter", "delete_ip_protocol_filter_all",
        "add_l4_destination_port_filter", "delete_l4_destination_port_filter",
        "delete_l4_destination_port_filter_all", "set_port_l2_enable",
        "set_port_switch_unknown_unicast_to_cpu", "get_port_switch_unknown_unicast_to_cpu",
        "set_switch_unknown_unicast_to_cpu", "get_switch_unknown_unicast_to_cpu", "add_of_flow",
        "add_of_flow_with_id", "delete_of_flow", "clear_of_flow_table", "add_of_flow_action",
        "delete_of_flow_action", "clear_of_flow_action", "set_of_flow_priority",
        "get_of_flow_priority", "get_of_flow_stat_counter64", "get_of_flow_stat_counter32"}},
      {"switch_mirror",
       {"set_port_mirror", "get_port_mirror"}},
      {"vlan",
       {"create_vlan", "delete_vlan", "add_ports_to_vlan", "delete_ports_from_vlan",
        "get_vlan_info", "set_port_pvid", "get_port_pvid", "set_port_vlan_priority",
        "get_port_vlan_priority", "set_port_vlan_accept_frame", "get_port_vlan_accept_frame",
        "set_port_protocol_vlan", "delete_port_protocol_vlan", "delete_port_protocol_vlan_all",
        "set_mac_vlan", "set_ipv4_subnet_vlan", "set_ipv6_subnet_vlan"}},
      {"lacp",
       {"create_lag", "delete_lag", "add_ports_to_lag", "delete_ports_from_lag",
        "set_lag_balancing_strategy", "get_lag_balancing_strategy"}},
      {"fdb",
       {"add_mac_to_port", "add_system_mac", "add_system_mac_vlan_bitmap", "delete_mac",
        "delete_mac_vlan_bitmap", "delete_mac_by_mac", "clear_fdb_by_port", "clear_fdb_by_vlan",
        "clear_fdb_table", "set_fdb_aging_time", "get_fdb_aging_time", "set_port_mac_lock",
        "get_port_mac_lock", "set_port_mac_lock_ext", "get_port_mac_lock_ext",
        "set_system_mac_limit", "get_system_mac_limit", "traverse_mac_table"}},
  };
  // clang-format on
  return kModules;
}

// The bit of the first module that `fits`, 0 when none does.
template <class Fits>
unsigned module_bit(const Fits& fits) {
  const auto module = std::find_if(modules().begin(), modules().end(), fits);
  return module == modules().end() ? 0 : 1u << (module - modules().begin());
}

unsigned module_bit_of(std::string_view operation) {
  return module_bit([&](const Module& module) {
    return std::find(module.operations.begin(), module.operations.end(), operation) !=
           module.operations.end();
  });
}

}  // namespace

std::vector<std::string_view> CallWatch::operations() {
  std::vector<std::string_view> all;
  for (const Module& module : modules()) {
    all.insert(all.end(), module.operations.begin(), module.operations.end());
  }
  return all;
}

bool CallWatch::set_trace(const std::string& target, bool on) {
  if (target == "trace_level_sdk" || target == "trace_level_all") {
    trace_all_ = on;
    if (!on) traced_modules_ = 0;
    return true;
  }
  const unsigned bit = module_bit([&](const Module& module) { return module.name == target; });
  if (bit == 0) return refuse("there is no trace target '", target, "'");
  traced_modules_ = on ? traced_modules_ | bit : traced_modules_ & ~bit;
  return true;
}

bool CallWatch::fail(const std::string& operation, unsigned nth) {
  if (nth == 0) return refuse("nth 0: 1 is the next call");
  if (module_bit_of(operation) == 0) {
    return refuse("'", operation, "' is no operation of the SDK");
  }
  failures_.emplace(operation, nth);
  return true;
}

bool CallWatch::fails(std::string_view operation) {
  bool fails_now = false;
  auto [failure, end] = failures_.equal_range(operation);
  while (failure != end) {
    if (--failure->second != 0) {
      ++failure;
      continue;
    }
    failure = failures_.erase(failure);
    fails_now = true;
  }
  if (fails_now) refuse(operation, ": refused on purpose");
  return fails_now;
}

bool CallWatch::traces(std::string_view operation) const {
  return trace_all_ || (traced_modules_ & module_bit_of(operation)) != 0;
}

void CallWatch::write(const std::string& line) const {
  if (sink_) {
    sink_(line);
  } else {
    std::cerr << line << '\n';
  }
}

}  // namespace softcard
