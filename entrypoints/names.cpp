// SPDX-License-Identifier: Apache-2.0
#include "entrypoints/names.h"

namespace entrypoints {

namespace {

const NameTable kSpanningTreeStates{{{"blocking", STP_STATE_BLOCKING},
                                     {"listening", STP_STATE_LISTENING},
                                     {"learning", STP_STATE_LEARNING},
                                     {"forwarding", STP_STATE_FORWARDING},
                                     {"disabled", STP_STATE_DISABLED}}};

const NameTable kFlowActions{{{"output", OF_ACTION_OUTPUT},
                              {"set_vlan_id", OF_ACTION_SET_VLAN_ID},
                              {"set_vlan_priority", OF_ACTION_SET_VLAN_PRIORITY},
                              {"strip_vlan", OF_ACTION_STRIP_VLAN},
                              {"set_src_mac", OF_ACTION_SET_SRC_MAC},
                              {"set_dst_mac", OF_ACTION_SET_DST_MAC},
                              {"set_src_ip", OF_ACTION_SET_SRC_IP},
                              {"set_dst_ip", OF_ACTION_SET_DST_IP},
                              {"set_tos", OF_ACTION_SET_TOS},
                              {"set_src_l4_port", OF_ACTION_SET_SRC_L4_PORT},
                              {"set_dst_l4_port", OF_ACTION_SET_DST_L4_PORT},
                              {"set_queue", OF_ACTION_SET_QUEUE}}};

}  // namespace

template <>
const NameTable& names_of<stp_state_t>() {
  return kSpanningTreeStates;
}

template <>
const NameTable& names_of<mstp_state_t>() {
  return kSpanningTreeStates;
}

template <>
const NameTable& names_of<phy_state_t>() {
  static const NameTable names{{{"down", PHY_STATE_DOWN}, {"up", PHY_STATE_UP}}};
  return names;
}

// A speed is its number.
template <>
const NameTable& names_of<speed_type_t>() {
  static const NameTable names{{{"unknown", SPEED_TYPE_UNKNOWN}}};
  return names;
}

template <>
const NameTable& names_of<duplex_type_t>() {
  static const NameTable names{{{"half", DUPLEX_TYPE_HALF}, {"full", DUPLEX_TYPE_FULL}}};
  return names;
}

template <>
const NameTable& names_of<port_ability_type_t>() {
  static const NameTable names{{{"none", PORT_ABILITY_NONE},
                                {"10_half", PORT_ABILITY_10_HALF},
                                {"10_full", PORT_ABILITY_10_FULL},
                                {"100_half", PORT_ABILITY_100_HALF},
                                {"100_full", PORT_ABILITY_100_FULL},
                                {"1000_half", PORT_ABILITY_1000_HALF},
                                {"1000_full", PORT_ABILITY_1000_FULL},
                                {"2500_full", PORT_ABILITY_2500_FULL},
                                {"10000_full", PORT_ABILITY_10000_FULL},
                                {"25000_full", PORT_ABILITY_25000_FULL},
                                {"40000_full", PORT_ABILITY_40000_FULL},
                                {"100000_full", PORT_ABILITY_100000_FULL},
                                {"pause_rx", PORT_ABILITY_PAUSE_RX},
                                {"pause_tx", PORT_ABILITY_PAUSE_TX}},
                               true};
  return names;
}

template <>
const NameTable& names_of<mirror_type_t>() {
  static const NameTable names{{{"none", MIRROR_TYPE_NONE},
                                {"ingress", MIRROR_TYPE_INGRESS},
                                {"egress", MIRROR_TYPE_EGRESS},
                                {"both", MIRROR_TYPE_BOTH}}};
  return names;
}

template <>
const NameTable& names_of<flood_block_type_t>() {
  static const NameTable names{{{"none", FLOOD_BLOCK_NONE},
                                {"all", FLOOD_BLOCK_ALL},
                                {"unknown_unicast", FLOOD_BLOCK_UNKNOWN_UNICAST},
                                {"multicast", FLOOD_BLOCK_MULTICAST},
                                {"broadcast", FLOOD_BLOCK_BROADCAST}},
                               true};
  return names;
}

template <>
const NameTable& names_of<ingress_discard_type_t>() {
  static const NameTable names{{{"none", INGRESS_DISCARD_NONE},
                                {"untagged", INGRESS_DISCARD_UNTAGGED},
                                {"tagged", INGRESS_DISCARD_TAGGED},
                                {"all", INGRESS_DISCARD_ALL}}};
  return names;
}

template <>
const NameTable& names_of<frame_type_t>() {
  static const NameTable names{
      {{"ethernet", FRAME_TYPE_ETHERNET}, {"snap", FRAME_TYPE_SNAP}, {"llc", FRAME_TYPE_LLC}}};
  return names;
}

template <>
const NameTable& names_of<lag_psc_t>() {
  static const NameTable names{{{"src_mac", LAG_PSC_SRC_MAC},
                                {"dst_mac", LAG_PSC_DST_MAC},
                                {"src_dst_mac", LAG_PSC_SRC_DST_MAC},
                                {"src_ip", LAG_PSC_SRC_IP},
                                {"dst_ip", LAG_PSC_DST_IP},
                                {"src_dst_ip", LAG_PSC_SRC_DST_IP},
                                {"src_dst_ip_port", LAG_PSC_SRC_DST_IP_PORT}}};
  return names;
}

template <>
const NameTable& names_of<of_action_t>() {
  return kFlowActions;
}

template <>
const NameTable& names_of<ctype_of_action_t>() {
  return kFlowActions;
}

template <>
const NameTable& names_of<lcmgr_report_event_t>() {
  static const NameTable names{{{"rx_packet", LCMGR_REPORT_RX_PACKET},
                                {"link_change", LCMGR_REPORT_LINK_CHANGE},
                                {"mac_update", LCMGR_REPORT_MAC_UPDATE}}};
  return names;
}

template <>
const NameTable& names_of<stat_type_t>() {
  static const NameTable names{{{"in_octets", STAT_IN_OCTETS},
                                {"in_unicast_packets", STAT_IN_UNICAST_PACKETS},
                                {"in_multicast_packets", STAT_IN_MULTICAST_PACKETS},
                                {"in_broadcast_packets", STAT_IN_BROADCAST_PACKETS},
                                {"in_discards", STAT_IN_DISCARDS},
                                {"in_errors", STAT_IN_ERRORS},
                                {"out_octets", STAT_OUT_OCTETS},
                                {"out_unicast_packets", STAT_OUT_UNICAST_PACKETS},
                                {"out_multicast_packets", STAT_OUT_MULTICAST_PACKETS},
                                {"out_broadcast_packets", STAT_OUT_BROADCAST_PACKETS},
                                {"out_discards", STAT_OUT_DISCARDS},
                                {"out_errors", STAT_OUT_ERRORS},
                                {"in_packets_64", STAT_IN_PACKETS_64},
                                {"in_packets_65_127", STAT_IN_PACKETS_65_127},
                                {"in_packets_128_255", STAT_IN_PACKETS_128_255},
                                {"in_packets_256_511", STAT_IN_PACKETS_256_511},
                                {"in_packets_512_1023", STAT_IN_PACKETS_512_1023},
                                {"in_packets_1024_1518", STAT_IN_PACKETS_1024_1518},
                                {"in_packets_1519_max", STAT_IN_PACKETS_1519_MAX},
                                {"in_undersize", STAT_IN_UNDERSIZE},
                                {"in_oversize", STAT_IN_OVERSIZE},
                                {"in_pause_frames", STAT_IN_PAUSE_FRAMES},
                                {"out_pause_frames", STAT_OUT_PAUSE_FRAMES},
                                {"out_jams", STAT_OUT_JAMS},
                                {"in_storm_discards", STAT_IN_STORM_DISCARDS},
                                {"in_vlan_discards", STAT_IN_VLAN_DISCARDS},
                                {"in_stp_discards", STAT_IN_STP_DISCARDS},
                                {"in_mac_lock_discards", STAT_IN_MAC_LOCK_DISCARDS},
                                {"out_queue_0", STAT_OUT_QUEUE_0},
                                {"out_queue_1", STAT_OUT_QUEUE_1},
                                {"out_queue_2", STAT_OUT_QUEUE_2},
                                {"out_queue_3", STAT_OUT_QUEUE_3},
                                {"out_queue_4", STAT_OUT_QUEUE_4},
                                {"out_queue_5", STAT_OUT_QUEUE_5},
                                {"out_queue_6", STAT_OUT_QUEUE_6},
                                {"out_queue_7", STAT_OUT_QUEUE_7}}};
  return names;
}

template <>
const NameTable& names_of<brief_stat_type_t>() {
  static const NameTable names{{{"in_octets", BRIEF_STAT_IN_OCTETS},
                                {"in_packets", BRIEF_STAT_IN_PACKETS},
                                {"in_discards", BRIEF_STAT_IN_DISCARDS},
                                {"in_errors", BRIEF_STAT_IN_ERRORS},
                                {"out_octets", BRIEF_STAT_OUT_OCTETS},
                                {"out_packets", BRIEF_STAT_OUT_PACKETS},
                                {"out_discards", BRIEF_STAT_OUT_DISCARDS},
                                {"out_errors", BRIEF_STAT_OUT_ERRORS}}};
  return names;
}

const NameTable& forward_mode_names() {
  static const NameTable names{{{"hybrid", SWITCH_FORWARD_MODE_HYBRID},
                                {"flow", SWITCH_FORWARD_MODE_FLOW},
                                {"normal", SWITCH_FORWARD_MODE_NORMAL}}};
  return names;
}

const NameTable& rx_reason_names() {
  static const NameTable names{{{"reserved", RX_REASON_RESERVED},
                                {"arp_filter", RX_REASON_ARP_FILTER},
                                {"ip_protocol_filter", RX_REASON_IP_PROTOCOL_FILTER},
                                {"l4_port_filter", RX_REASON_L4_PORT_FILTER},
                                {"system_mac", RX_REASON_SYSTEM_MAC},
                                {"unknown_unicast", RX_REASON_UNKNOWN_UNICAST},
                                {"flood", RX_REASON_FLOOD},
                                {"flow", RX_REASON_FLOW},
                                {"local", RX_REASON_LOCAL},
                                {"router", RX_REASON_ROUTER},
                                {"ttl", RX_REASON_TTL},
                                {"no_route", RX_REASON_NO_ROUTE},
                                {"options", RX_REASON_OPTIONS},
                                {"mtu", RX_REASON_MTU}}};
  return names;
}

const NameTable& mac_update_names() {
  static const NameTable names{{{"learned", MAC_UPDATE_LEARNED},
                                {"moved", MAC_UPDATE_MOVED},
                                {"removed", MAC_UPDATE_REMOVED}}};
  return names;
}

const NameTable& flow_port_names() {
  static const NameTable names{{{"drop", OF_PORT_DROP},
                                {"in_port", OF_PORT_IN_PORT},
                                {"controller", OF_PORT_CONTROLLER},
                                {"normal", OF_PORT_NORMAL},
                                {"flood", OF_PORT_FLOOD},
                                {"all", OF_PORT_ALL},
                                {"local", OF_PORT_LOCAL}}};
  return names;
}

const NameTable& udf_base_names() {
  static const NameTable names{
      {{"none", OF_UDF_NONE}, {"frame", OF_UDF_FRAME}, {"l3", OF_UDF_L3}, {"l4", OF_UDF_L4}}};
  return names;
}

const NameTable& packet_type_names() {
  static const NameTable names{{{"data", PACKET_TYPE_DATA}, {"control", PACKET_TYPE_CONTROL}}};
  return names;
}

}  // namespace entrypoints
