// SPDX-License-Identifier: Apache-2.0

#include "softcard/sdk/sdk.h"

#include <type_traits>
#include <vector>

namespace softcard {
namespace {

// ---- From the interface's values to the card's ------------------------------------------------

MacAddress mac_of(const unsigned char* mac) { return MacAddress::from_bytes(mac); }
Ipv6Address ip6_of(const unsigned char* ip6) { return Ipv6Address::from_bytes(ip6); }
void write_mac(const MacAddress& mac, unsigned char* out) {
  std::memcpy(out, mac.bytes.data(), mac.bytes.size());
}

// False, for each of these, when a port is none of the card's.
bool ports_of(const AddressPlan& addresses, const std::list<Mp>& mps,
              std::vector<PortIndex>& ports) {
  ports.reserve(mps.size());
  for (const Mp& mp : mps) {
    PortIndex port = 0;
    if (!addresses.port_of(mp, port)) return false;
    ports.push_back(port);
  }
  return true;
}

bool set_of(const AddressPlan& addresses, const std::list<Mp>& mps, PortSet& ports) {
  for (const Mp& mp : mps) {
    PortIndex port = 0;
    if (!addresses.port_of(mp, port)) return false;
    ports.insert(port);
  }
  return true;
}

// A port or, with `trunk`, a LAG that exists.
bool destination_of(Card& card, const Mp& mp, bool trunk, Destination& destination) {
  if (trunk) {
    if (mp.module() != 0 || !card.lags().exists(mp.port())) return false;
    destination = Destination::lag(static_cast<std::uint16_t>(mp.port()));
    return true;
  }
  PortIndex port = 0;
  if (!card.addresses().port_of(mp, port)) return false;
  destination = Destination::port(port);
  return true;
}

// The way to a neighbour through a port or LAG and a router interface that exist.
bool next_hop_of(Card& card, const Mp& mp, bool trunk, const unsigned char* mac, unsigned interface,
                 NextHop& next_hop) {
  next_hop.mac = mac_of(mac);
  next_hop.interface_id = interface;
  return destination_of(card, mp, trunk, next_hop.destination) && !next_hop.mac.is_group() &&
         card.l3().interfaces.get(interface) != nullptr;
}

bool bit_of(const unsigned char* bitmap, unsigned vlan) {
  return (bitmap[vlan / 8] >> (vlan % 8) & 1) != 0;
}

bool flow_match_of(const AddressPlan& addresses, const of_flow_mp_s& flow, FlowMatch& match) {
  const of_match_s& from = flow.match;
  const auto has = [&](unsigned bit) { return (from.flags & bit) != 0; };
  if ((from.flags & ~static_cast<unsigned>(OF_MATCH_ALL)) != 0 ||
      (has(OF_MATCH_IN_PORT) && !addresses.port_of(flow.in_port, match.in_port)) ||
      (has(OF_MATCH_VLAN_ID) && !valid_vlan(from.vlan_id)) ||
      (has(OF_MATCH_VLAN_PRIORITY) && from.vlan_priority >= kPriorities) ||
      (has(OF_MATCH_IP_PROTOCOL) && from.ip_protocol > 255) ||
      (has(OF_MATCH_TOS) && from.tos > 255)) {
    return false;
  }
  constexpr struct {
    unsigned flag;
    FlowField field;
  } kFields[] = {
      {OF_MATCH_IN_PORT, kFlowInPort},         {OF_MATCH_SRC_MAC, kFlowSourceMac},
      {OF_MATCH_DST_MAC, kFlowDestinationMac}, {OF_MATCH_VLAN_ID, kFlowVlan},
      {OF_MATCH_VLAN_PRIORITY, kFlowPriority}, {OF_MATCH_ETHER_TYPE, kFlowEtherType},
      {OF_MATCH_SRC_IP, kFlowIpv4Source},      {OF_MATCH_DST_IP, kFlowIpv4Destination},
      {OF_MATCH_SRC_L4_PORT, kFlowL4Source},   {OF_MATCH_DST_L4_PORT, kFlowL4Destination},
      {OF_MATCH_IP_PROTOCOL, kFlowIpProtocol}, {OF_MATCH_TOS, kFlowTos}};
  for (const auto& [flag, field] : kFields) {
    if (has(flag)) match.fields |= field;
  }
  // What is in a field that does not count is undefined, and so may be out of range.
  match.source_mac = mac_of(from.src_mac);
  match.destination_mac = mac_of(from.dst_mac);
  if (has(OF_MATCH_VLAN_ID)) match.vlan = from.vlan_id;
  if (has(OF_MATCH_VLAN_PRIORITY)) match.priority = static_cast<std::uint8_t>(from.vlan_priority);
  match.ether_type = from.ether_type;
  match.ipv4_source = from.src_ip;
  match.ipv4_source_mask = from.src_ip_mask;
  match.ipv4_destination = from.dst_ip;
  match.ipv4_destination_mask = from.dst_ip_mask;
  match.l4_source = from.src_l4_port;
  match.l4_destination = from.dst_l4_port;
  match.ip_protocol = static_cast<std::uint8_t>(from.ip_protocol);
  match.tos = static_cast<std::uint8_t>(from.tos);
  return true;
}

// False for a base that there is not, and for a qualifier of no bits, which would take every frame
// that is long enough: the flow table has no such condition.
bool flow_udf_of(const of_flow_qualify_udf_s& from, FlowUdf& udf) {
  if (from.base == OF_UDF_NONE) return true;
  if (from.base > OF_UDF_L4 || from.mask == 0) return false;
  udf = {static_cast<FlowUdfBase>(from.base - OF_UDF_FRAME), from.offset, from.value, from.mask};
  return true;
}

// The words that the action does not name become 0.
bool flow_action_of(const AddressPlan& addresses, of_action_t kind, const of_action_param_s& param,
                    const Mp& mp, FlowAction& action) {
  const unsigned word = param.word[0];
  action.kind = kind;
  action.words = {word, 0, 0};
  switch (kind) {
    case OF_ACTION_OUTPUT: {
      if (word < OF_PORT_FIRST_PHYSICAL) return true;
      PortIndex port = 0;
      if (!addresses.port_of(mp, port) || word - OF_PORT_FIRST_PHYSICAL != port) return false;
      action.destination = Destination::port(port);
      return true;
    }
    case OF_ACTION_SET_VLAN_ID:
      return valid_vlan(word);
    case OF_ACTION_SET_VLAN_PRIORITY:
      return word < kPriorities;
    case OF_ACTION_STRIP_VLAN:
      action.words[0] = 0;
      return true;
    case OF_ACTION_SET_SRC_MAC:
    case OF_ACTION_SET_DST_MAC:
      action.words[1] = param.word[1];
      return param.word[1] <= 0xffff;
    case OF_ACTION_SET_SRC_IP:
    case OF_ACTION_SET_DST_IP:
      return true;
    case OF_ACTION_SET_TOS:
      return word <= 255;
    case OF_ACTION_SET_SRC_L4_PORT:
    case OF_ACTION_SET_DST_L4_PORT:
      return word <= 65535;
    case OF_ACTION_SET_QUEUE:
      return word < kQueues;
    default:
      return false;
  }
}

template <class Work, class... Arguments>
bool carry_out(Work& work, const Arguments&... arguments) {
  if constexpr (std::is_void_v<decltype(work(arguments...))>) {
    work(arguments...);
    return true;
  } else {
    return work(arguments...);
  }
}

}  // namespace

template <class Work, class... Arguments>
bool SoftSdk::on_card(Module module, const char* operation, Work&& work,
                      const Arguments&... arguments) {
  return watch_.call(
      module, operation, [&] { return carry_out(work); }, arguments...);
}

template <class Work, class... Arguments>
bool SoftSdk::on_port(Module module, const char* operation, const Mp& mp, Work&& work,
                      const Arguments&... arguments) {
  return watch_.call(
      module, operation,
      [&] {
        PortIndex port = 0;
        return card_.addresses().port_of(mp, port) && carry_out(work, port);
      },
      mp, arguments...);
}

// ---- VLANs --------------------------------------------------------------------------------------

bool SoftSdk::create_vlan(unsigned int vlan) {
  return on_card(
      Module::vlan, __func__, [&] { return card_.vlans().create(vlan); }, vlan);
}

bool SoftSdk::delete_vlan(unsigned int vlan) {
  return on_card(
      Module::vlan, __func__, [&] { return card_.delete_vlan(vlan); }, vlan);
}

bool SoftSdk::add_ports_to_vlan(unsigned int vlan, std::list<Mp>& tagged, std::list<Mp>& untagged) {
  const auto add = [&] {
    PortSet tagged_set;
    PortSet untagged_set;
    return set_of(card_.addresses(), tagged, tagged_set) &&
           set_of(card_.addresses(), untagged, untagged_set) &&
           card_.vlans().add_members(vlan, tagged_set, untagged_set);
  };
  return on_card(Module::vlan, __func__, add, vlan, tagged, untagged);
}

bool SoftSdk::delete_ports_from_vlan(unsigned int vlan, std::list<Mp>& ports) {
  const auto remove = [&] {
    PortSet set;
    return set_of(card_.addresses(), ports, set) && card_.remove_vlan_members(vlan, set);
  };
  return on_card(Module::vlan, __func__, remove, vlan, ports);
}

bool SoftSdk::get_vlan_info(unsigned int vlan, std::list<Mp>& tagged, std::list<Mp>& untagged) {
  const auto get = [&] {
    if (!card_.vlans().known(vlan)) return false;
    for (const PortIndex port : card_.vlans().tagged(vlan)) {
      tagged.push_back(AddressPlan::mp_of(port));
    }
    for (const PortIndex port : card_.vlans().untagged(vlan)) {
      untagged.push_back(AddressPlan::mp_of(port));
    }
    return true;
  };
  return on_card(Module::vlan, __func__, get, vlan, tagged, untagged);
}

// ---- Multiple spanning tree ---------------------------------------------------------------------

bool SoftSdk::set_port_mstp_state(unsigned int instance, const Mp& mp, mstp_state_t state) {
  return on_port(
      Module::rstp, __func__, mp,
      [&](PortIndex port) { return card_.stp().set_mstp(instance, port, state); }, instance, state);
}

bool SoftSdk::get_port_mstp_state(unsigned int instance, const Mp& mp, mstp_state_t& state) {
  const auto get = [&](PortIndex port) {
    if (instance >= kMstpInstances) return false;
    state = card_.stp().mstp(instance, port);
    return true;
  };
  return on_port(Module::rstp, __func__, mp, get, instance, state);
}

// ---- Link aggregation ---------------------------------------------------------------------------

bool SoftSdk::create_lag(unsigned int& id) {
  return on_card(
      Module::lacp, __func__, [&] { return card_.lags().create(id); }, id);
}

bool SoftSdk::delete_lag(unsigned int id) {
  return on_card(
      Module::lacp, __func__, [&] { return card_.delete_lag(id); }, id);
}

bool SoftSdk::add_ports_to_lag(unsigned int id, std::list<Mp>& ports) {
  const auto add = [&] {
    std::vector<PortIndex> members;
    return ports_of(card_.addresses(), ports, members) && card_.add_lag_members(id, members);
  };
  return on_card(Module::lacp, __func__, add, id, ports);
}

bool SoftSdk::delete_ports_from_lag(unsigned int id, std::list<Mp>& ports) {
  const auto remove = [&] {
    std::vector<PortIndex> members;
    return ports_of(card_.addresses(), ports, members) && card_.remove_lag_members(id, members);
  };
  return on_card(Module::lacp, __func__, remove, id, ports);
}

bool SoftSdk::set_lag_balancing_strategy(unsigned int id, lag_psc_t psc) {
  return on_card(
      Module::lacp, __func__, [&] { return card_.lags().set_psc(id, psc); }, id, psc);
}

bool SoftSdk::get_lag_balancing_strategy(unsigned int id, lag_psc_t& psc) {
  const auto get = [&] {
    if (!card_.lags().exists(id)) return false;
    psc = card_.lags()[id].psc;
    return true;
  };
  return on_card(Module::lacp, __func__, get, id, psc);
}

// ---- Mirroring and port settings ----------------------------------------------------------------

bool SoftSdk::set_port_mirror(const Mp& mirror_to, const Mp& mirrored, mirror_type_t type) {
  const auto set = [&](PortIndex port) {
    PortIndex to = 0;
    return card_.addresses().port_of(mirror_to, to) && card_.mirrors().set(to, port, type);
  };
  return on_port(Module::switch_mirror, __func__, mirrored, set, mirror_to, type);
}

bool SoftSdk::get_port_mirror(Mp& mirror_to, const Mp& mirrored, mirror_type_t& type) {
  const auto get = [&](PortIndex port) {
    const MirrorTable::Session& session = card_.mirrors()[port];
    if (session.type == MIRROR_TYPE_NONE) return false;
    mirror_to = AddressPlan::mp_of(session.to);
    type = session.type;
    return true;
  };
  return on_port(Module::switch_mirror, __func__, mirrored, get, mirror_to, type);
}

bool SoftSdk::set_port_state(const Mp& mp, bool on) {
  return on_port(
      Module::sif, __func__, mp, [&](PortIndex port) { card_.ports().set_admin(port, on); }, on);
}

bool SoftSdk::get_port_state(const Mp& mp, bool& on) {
  return on_port(
      Module::sif, __func__, mp, [&](PortIndex port) { on = card_.ports().admin(port); }, on);
}

bool SoftSdk::set_port_autoneg(const Mp& mp, bool on) {
  return on_port(
      Module::sif, __func__, mp, [&](PortIndex port) { card_.ports().set_autoneg(port, on); }, on);
}

bool SoftSdk::get_port_autoneg(const Mp& mp, bool& on) {
  return on_port(
      Module::sif, __func__, mp, [&](PortIndex port) { on = card_.ports().autoneg(port); }, on);
}

bool SoftSdk::set_port_speed(const Mp& mp, speed_type_t speed) {
  return on_port(
      Module::sif, __func__, mp,
      [&](PortIndex port) { return card_.ports().set_speed(port, speed); }, speed);
}

bool SoftSdk::get_port_speed(const Mp& mp, speed_type_t& speed) {
  return on_port(
      Module::sif, __func__, mp, [&](PortIndex port) { speed = card_.ports().mode(port).speed; },
      speed);
}

bool SoftSdk::set_port_duplex(const Mp& mp, duplex_type_t duplex) {
  return on_port(
      Module::sif, __func__, mp,
      [&](PortIndex port) { return card_.ports().set_duplex(port, duplex); }, duplex);
}

bool SoftSdk::get_port_duplex(const Mp& mp, duplex_type_t& duplex) {
  return on_port(
      Module::sif, __func__, mp, [&](PortIndex port) { duplex = card_.ports().mode(port).duplex; },
      duplex);
}

bool SoftSdk::set_port_flow_control_8023x(const Mp& mp, bool receive, bool transmit) {
  return on_port(
      Module::sif, __func__, mp,
      [&](PortIndex port) { card_.ports().set_pause(port, receive, transmit); }, receive, transmit);
}

bool SoftSdk::get_port_flow_control_8023x(const Mp& mp, unsigned int& receive,
                                          unsigned int& transmit) {
  const auto get = [&](PortIndex port) {
    receive = card_.ports().pause_receive(port) ? 1 : 0;
    transmit = card_.ports().pause_transmit(port) ? 1 : 0;
  };
  return on_port(Module::sif, __func__, mp, get, receive, transmit);
}

bool SoftSdk::set_port_jaming_control(const Mp& mp, bool on) {
  return on_port(
      Module::sif, __func__, mp,
      [&](PortIndex port) { return card_.ports().set_jamming(port, on); }, on);
}

bool SoftSdk::get_port_jaming_control(const Mp& mp, bool& on) {
  return on_port(
      Module::sif, __func__, mp, [&](PortIndex port) { on = card_.ports().jamming(port); }, on);
}

bool SoftSdk::set_port_mtu(const Mp& mp, unsigned int bytes) {
  return on_port(
      Module::sif, __func__, mp, [&](PortIndex port) { return card_.ports().set_mtu(port, bytes); },
      bytes);
}

bool SoftSdk::get_port_mtu(const Mp& mp, unsigned int& bytes) {
  return on_port(
      Module::sif, __func__, mp, [&](PortIndex port) { bytes = card_.ports().mtu_bytes(port); },
      bytes);
}

// ---- Port statistics ----------------------------------------------------------------------------

bool SoftSdk::set_port_stat_enable(const Mp& mp, bool on) {
  return on_port(
      Module::stat, __func__, mp, [&](PortIndex port) { card_.counters().set_enabled(port, on); },
      on);
}

bool SoftSdk::get_port_stat_enabled(const Mp& mp, bool& on) {
  return on_port(
      Module::stat, __func__, mp, [&](PortIndex port) { on = card_.counters().enabled(port); }, on);
}

bool SoftSdk::get_port_stat_counter(const Mp& mp, stat_type_t type, unsigned long long& value) {
  const auto get = [&](PortIndex port) {
    if (type >= STAT_TYPE_COUNT) return false;
    value = card_.counters().value(port, type);
    return true;
  };
  return on_port(Module::stat, __func__, mp, get, type, value);
}

bool SoftSdk::get_port_stat_counter32(const Mp& mp, stat_type_t type, unsigned int& value) {
  const auto get = [&](PortIndex port) {
    if (type >= STAT_TYPE_COUNT) return false;
    value = static_cast<unsigned>(card_.counters().value(port, type));
    return true;
  };
  return on_port(Module::stat, __func__, mp, get, type, value);
}

bool SoftSdk::get_port_stat_counter_all64(const Mp& mp, std::list<StatCounter64>& counters) {
  const auto get = [&](PortIndex port) {
    for (unsigned i = 0; i < STAT_TYPE_COUNT; ++i) {
      const auto type = static_cast<stat_type_t>(i);
      counters.push_back({type, card_.counters().value(port, type)});
    }
  };
  return on_port(Module::stat, __func__, mp, get);
}

bool SoftSdk::get_port_stat_counter_all32(const Mp& mp, std::list<StatCounter32>& counters) {
  const auto get = [&](PortIndex port) {
    for (unsigned i = 0; i < STAT_TYPE_COUNT; ++i) {
      const auto type = static_cast<stat_type_t>(i);
      counters.push_back({type, static_cast<unsigned>(card_.counters().value(port, type))});
    }
  };
  return on_port(Module::stat, __func__, mp, get);
}

bool SoftSdk::get_port_stat_counter_all64_ext(const Mp& mp, StatCounter64* counters,
                                              unsigned int& count) {
  const auto get = [&](PortIndex port) {
    if (count > STAT_TYPE_COUNT) count = STAT_TYPE_COUNT;
    for (unsigned i = 0; i < count; ++i) {
      const auto type = static_cast<stat_type_t>(i);
      counters[i] = {type, card_.counters().value(port, type)};
    }
  };
  return on_port(Module::stat, __func__, mp, get, count);
}

bool SoftSdk::get_port_stat_counter_all32_ext(const Mp& mp, StatCounter32* counters,
                                              unsigned int& count) {
  const auto get = [&](PortIndex port) {
    if (count > STAT_TYPE_COUNT) count = STAT_TYPE_COUNT;
    for (unsigned i = 0; i < count; ++i) {
      const auto type = static_cast<stat_type_t>(i);
      counters[i] = {type, static_cast<unsigned>(card_.counters().value(port, type))};
    }
  };
  return on_port(Module::stat, __func__, mp, get, count);
}

bool SoftSdk::get_port_brief_stat_counter64(const Mp& mp, brief_stat_type_t type,
                                            unsigned long long& value) {
  const auto get = [&](PortIndex port) {
    if (type >= BRIEF_STAT_TYPE_COUNT) return false;
    value = card_.counters().brief(port, type);
    return true;
  };
  return on_port(Module::stat, __func__, mp, get, type, value);
}

bool SoftSdk::get_port_brief_stat_counter32(const Mp& mp, brief_stat_type_t type,
                                            unsigned int& value) {
  const auto get = [&](PortIndex port) {
    if (type >= BRIEF_STAT_TYPE_COUNT) return false;
    value = static_cast<unsigned>(card_.counters().brief(port, type));
    return true;
  };
  return on_port(Module::stat, __func__, mp, get, type, value);
}

bool SoftSdk::get_port_brief_stat_counter_all64(const Mp& mp,
                                                std::list<BriefStatCounter64>& counters) {
  const auto get = [&](PortIndex port) {
    for (unsigned i = 0; i < BRIEF_STAT_TYPE_COUNT; ++i) {
      const auto type = static_cast<brief_stat_type_t>(i);
      counters.push_back({type, card_.counters().brief(port, type)});
    }
  };
  return on_port(Module::stat, __func__, mp, get);
}

bool SoftSdk::clear_port_stat_counter(const Mp& mp) {
  return on_port(Module::stat, __func__, mp, [&](PortIndex port) { card_.counters().clear(port); });
}

// ---- Spanning tree ------------------------------------------------------------------------------

bool SoftSdk::set_port_stp_state(const Mp& mp, stp_state_t state) {
  return on_port(
      Module::rstp, __func__, mp, [&](PortIndex port) { return card_.stp().set_stp(port, state); },
      state);
}

bool SoftSdk::get_port_stp_state(const Mp& mp, stp_state_t& state) {
  return on_port(
      Module::rstp, __func__, mp, [&](PortIndex port) { state = card_.stp().stp(port); }, state);
}

bool SoftSdk::set_port_bpdu_processing(const Mp& mp, bool on) {
  return on_port(
      Module::rstp, __func__, mp,
      [&](PortIndex port) { card_.stp().set_bpdu_processing(port, on); }, on);
}

bool SoftSdk::get_port_bpdu_processing(const Mp& mp, bool& on) {
  return on_port(
      Module::rstp, __func__, mp, [&](PortIndex port) { on = card_.stp().bpdu_processing(port); },
      on);
}

// ---- MAC table ----------------------------------------------------------------------------------

bool SoftSdk::add_mac_to_port(const Mp& mp, const unsigned char* mac, unsigned int vlan,
                              bool trunk) {
  const auto add = [&] {
    Destination destination;
    return card_.vlans().known(vlan) && destination_of(card_, mp, trunk, destination) &&
           card_.fdb().add_static(static_cast<std::uint16_t>(vlan), mac_of(mac), destination,
                                  card_.now_seconds());
  };
  return on_card(Module::fdb, __func__, add, mp, shown_mac(mac), vlan, trunk);
}

bool SoftSdk::add_system_mac(const unsigned char* mac, unsigned int vlan) {
  const auto add = [&] {
    return card_.vlans().known(vlan) && card_.fdb().add_system(static_cast<std::uint16_t>(vlan),
                                                               mac_of(mac), card_.now_seconds());
  };
  return on_card(Module::fdb, __func__, add, shown_mac(mac), vlan);
}

bool SoftSdk::add_system_mac_vlan_bitmap(const unsigned char* mac, const unsigned char* bitmap) {
  const auto add = [&] { return card_.add_system_mac(mac_of(mac), bitmap); };
  return on_card(Module::fdb, __func__, add, shown_mac(mac));
}

bool SoftSdk::delete_mac(const unsigned char* mac, unsigned int vlan) {
  const auto remove = [&] {
    return valid_vlan(vlan) && card_.fdb().remove(static_cast<std::uint16_t>(vlan), mac_of(mac));
  };
  return on_card(Module::fdb, __func__, remove, shown_mac(mac), vlan);
}

bool SoftSdk::delete_mac_vlan_bitmap(const unsigned char* mac, unsigned char* bitmap) {
  const auto remove = [&] {
    bool removed = false;
    for (unsigned vlan = 1; vlan <= kMaxVlan; ++vlan) {
      if (!bit_of(bitmap, vlan)) continue;
      removed |= card_.fdb().remove(static_cast<std::uint16_t>(vlan), mac_of(mac));
    }
    return removed;
  };
  return on_card(Module::fdb, __func__, remove, shown_mac(mac));
}

bool SoftSdk::delete_mac_by_mac(const unsigned char* mac) {
  const auto remove = [&] { return card_.fdb().remove_mac(mac_of(mac)) != 0; };
  return on_card(Module::fdb, __func__, remove, shown_mac(mac));
}

bool SoftSdk::clear_fdb_by_port(const Mp& mp, bool trunk, bool and_static) {
  const auto clear = [&] {
    Destination destination;
    if (!destination_of(card_, mp, trunk, destination)) return false;
    FdbFilter filter;
    filter.destination = destination;
    filter.up_to = and_static ? FdbKind::static_entry : FdbKind::learned;
    card_.fdb().flush(filter);
    return true;
  };
  return on_card(Module::fdb, __func__, clear, mp, trunk, and_static);
}

bool SoftSdk::clear_fdb_by_vlan(unsigned int vlan, bool and_static) {
  const auto clear = [&] {
    if (!card_.vlans().known(vlan)) return false;
    FdbFilter filter;
    filter.vlan = static_cast<std::uint16_t>(vlan);
    filter.up_to = and_static ? FdbKind::static_entry : FdbKind::learned;
    card_.fdb().flush(filter);
    return true;
  };
  return on_card(Module::fdb, __func__, clear, vlan, and_static);
}

bool SoftSdk::clear_fdb_table(bool and_static) {
  const auto clear = [&] {
    FdbFilter filter;
    filter.up_to = and_static ? FdbKind::static_entry : FdbKind::learned;
    card_.fdb().flush(filter);
  };
  return on_card(Module::fdb, __func__, clear, and_static);
}

bool SoftSdk::set_fdb_aging_time(int seconds) {
  const auto set = [&] {
    if (seconds < 0) return false;
    card_.fdb().set_ageing_seconds(static_cast<std::uint32_t>(seconds));
    return true;
  };
  return on_card(Module::fdb, __func__, set, seconds);
}

bool SoftSdk::get_fdb_aging_time(int& seconds) {
  const auto get = [&] { seconds = static_cast<int>(card_.fdb().ageing_seconds()); };
  return on_card(Module::fdb, __func__, get, seconds);
}

// ---- Links and MAC locks ------------------------------------------------------------------------

bool SoftSdk::set_port_link_state(const Mp& mp, phy_state_t state) {
  const auto set = [&](PortIndex port) {
    if (state != PHY_STATE_DOWN && state != PHY_STATE_UP) return false;
    card_.ports().set_phy_forced_down(port, state == PHY_STATE_DOWN);
    return true;
  };
  return on_port(Module::sif, __func__, mp, set, state);
}

bool SoftSdk::get_port_link_state(const Mp& mp, phy_state_t& state) {
  const auto get = [&](PortIndex port) {
    state = card_.ports().is_up(port) ? PHY_STATE_UP : PHY_STATE_DOWN;
  };
  return on_port(Module::sif, __func__, mp, get, state);
}

bool SoftSdk::set_port_mac_lock(const Mp& mp, bool on) {
  return on_port(
      Module::fdb, __func__, mp,
      [&](PortIndex port) { card_.mac_locks().set_lock(port, on, true); }, on);
}

bool SoftSdk::get_port_mac_lock(const Mp& mp, bool& on) {
  return on_port(
      Module::fdb, __func__, mp, [&](PortIndex port) { on = card_.mac_locks().locked(port); }, on);
}

bool SoftSdk::set_port_mac_lock_ext(const Mp& mp, bool on, bool drop) {
  return on_port(
      Module::fdb, __func__, mp,
      [&](PortIndex port) { card_.mac_locks().set_lock(port, on, drop); }, on, drop);
}

bool SoftSdk::get_port_mac_lock_ext(const Mp& mp, bool& on, bool& drop) {
  const auto get = [&](PortIndex port) {
    on = card_.mac_locks().locked(port);
    drop = card_.mac_locks().drop_setting(port);
  };
  return on_port(Module::fdb, __func__, mp, get, on, drop);
}

// ---- Storm control ------------------------------------------------------------------------------

bool SoftSdk::set_port_broadcast_control(const Mp& mp, unsigned int frames_per_second) {
  const auto set = [&](PortIndex port) {
    card_.traffic().set_storm_limit(port, StormKind::broadcast, frames_per_second);
  };
  return on_port(Module::policy, __func__, mp, set, frames_per_second);
}

bool SoftSdk::get_port_broadcast_control(const Mp& mp, unsigned int& frames_per_second) {
  const auto get = [&](PortIndex port) {
    frames_per_second = card_.traffic().storm_limit(port, StormKind::broadcast);
  };
  return on_port(Module::policy, __func__, mp, get, frames_per_second);
}

bool SoftSdk::set_port_multicast_control(const Mp& mp, unsigned int frames_per_second) {
  const auto set = [&](PortIndex port) {
    card_.traffic().set_storm_limit(port, StormKind::multicast, frames_per_second);
  };
  return on_port(Module::policy, __func__, mp, set, frames_per_second);
}

bool SoftSdk::get_port_multicast_control(const Mp& mp, unsigned int& frames_per_second) {
  const auto get = [&](PortIndex port) {
    frames_per_second = card_.traffic().storm_limit(port, StormKind::multicast);
  };
  return on_port(Module::policy, __func__, mp, get, frames_per_second);
}

bool SoftSdk::set_port_unicast_control(const Mp& mp, unsigned int frames_per_second) {
  const auto set = [&](PortIndex port) {
    card_.traffic().set_storm_limit(port, StormKind::unknown_unicast, frames_per_second);
  };
  return on_port(Module::policy, __func__, mp, set, frames_per_second);
}

bool SoftSdk::get_port_unicast_control(const Mp& mp, unsigned int& frames_per_second) {
  const auto get = [&](PortIndex port) {
    frames_per_second = card_.traffic().storm_limit(port, StormKind::unknown_unicast);
  };
  return on_port(Module::policy, __func__, mp, get, frames_per_second);
}

// ---- What a port lets in and out ----------------------------------------------------------------

bool SoftSdk::set_port_egress_admin_state(const Mp& mp, bool on) {
  return on_port(
      Module::policy, __func__, mp, [&](PortIndex port) { card_.traffic().set_egress(port, on); },
      on);
}

bool SoftSdk::get_port_egress_admin_state(const Mp& mp, bool& on) {
  return on_port(
      Module::policy, __func__, mp, [&](PortIndex port) { on = card_.traffic().egress_on(port); },
      on);
}

bool SoftSdk::set_port_ingress_discarding(const Mp& mp, ingress_discard_type_t type) {
  return on_port(
      Module::policy, __func__, mp,
      [&](PortIndex port) { return card_.traffic().set_ingress_discard(port, type); }, type);
}

bool SoftSdk::get_port_ingress_discarding(const Mp& mp, ingress_discard_type_t& type) {
  return on_port(
      Module::policy, __func__, mp,
      [&](PortIndex port) { type = card_.traffic().ingress_discard(port); }, type);
}

// ---- VLAN settings of a port --------------------------------------------------------------------

bool SoftSdk::set_port_pvid(const Mp& mp, unsigned int vlan) {
  return on_port(
      Module::vlan, __func__, mp,
      [&](PortIndex port) { return card_.port_vlans().set_pvid(port, vlan); }, vlan);
}

bool SoftSdk::get_port_pvid(const Mp& mp, unsigned int& vlan) {
  return on_port(
      Module::vlan, __func__, mp, [&](PortIndex port) { vlan = card_.port_vlans().pvid(port); },
      vlan);
}

bool SoftSdk::set_port_vlan_priority(const Mp& mp, unsigned int vlan, unsigned int priority) {
  return on_port(
      Module::vlan, __func__, mp,
      [&](PortIndex port) { return card_.port_vlans().set_priority(port, vlan, priority); }, vlan,
      priority);
}

bool SoftSdk::get_port_vlan_priority(const Mp& mp, unsigned int vlan, unsigned int& priority) {
  const auto get = [&](PortIndex port) {
    if (vlan > kMaxVlan) return false;
    priority = card_.port_vlans().priority(port, vlan);
    return true;
  };
  return on_port(Module::vlan, __func__, mp, get, vlan, priority);
}

bool SoftSdk::set_port_vlan_accept_frame(const Mp& mp, bool all) {
  return on_port(
      Module::vlan, __func__, mp,
      [&](PortIndex port) { card_.port_vlans().set_accepts_untagged(port, all); }, all);
}

bool SoftSdk::get_port_vlan_accept_frame(const Mp& mp, bool& all) {
  return on_port(
      Module::vlan, __func__, mp,
      [&](PortIndex port) { all = card_.port_vlans().accepts_untagged(port); }, all);
}

// ---- MAC limits ---------------------------------------------------------------------------------

bool SoftSdk::set_system_mac_limit(const Mp& mp, int limit, unsigned int kind) {
  const auto set = [&] {
    MacLockTable& limits = card_.mac_locks();
    PortIndex port = 0;
    switch (kind) {
      case PORT_KIND_PHYSICAL:
        return card_.addresses().port_of(mp, port) && limits.set_port_limit(port, limit);
      case PORT_KIND_LAG:
        return mp.module() == 0 && card_.lags().exists(mp.port()) &&
               limits.set_lag_limit(mp.port(), limit);
      case PORT_KIND_VLAN:
        return mp.module() == 0 && card_.vlans().known(mp.port()) &&
               limits.set_vlan_limit(mp.port(), limit);
      case PORT_KIND_SYSTEM:
        return mp == Mp(0, 0) && limits.set_system_limit(limit);
      default:
        return false;
    }
  };
  return on_card(Module::fdb, __func__, set, mp, limit, kind);
}

bool SoftSdk::get_system_mac_limit(const Mp& mp, int& limit, unsigned int kind) {
  const auto get = [&] {
    const MacLockTable& limits = card_.mac_locks();
    PortIndex port = 0;
    if (mp == Mp(0, 0)) {
      limit = limits.system_limit();
    } else if (kind == PORT_KIND_PHYSICAL && card_.addresses().port_of(mp, port)) {
      limit = limits.port_limit(port);
    } else if (kind == PORT_KIND_LAG && mp.module() == 0 && card_.lags().exists(mp.port())) {
      limit = limits.lag_limit(mp.port());
    } else if (kind == PORT_KIND_VLAN && mp.module() == 0 && card_.vlans().known(mp.port())) {
      limit = limits.vlan_limit(mp.port());
    } else {
      return false;
    }
    return true;
  };
  return on_card(Module::fdb, __func__, get, mp, limit, kind);
}

// ---- Protocol, MAC and subnet VLANs -------------------------------------------------------------

bool SoftSdk::set_port_protocol_vlan(const Mp& mp, frame_type_t type, unsigned short protocol,
                                     unsigned int vlan) {
  const auto set = [&](PortIndex port) {
    return card_.port_vlans().set_protocol_vlan(port, type, protocol, vlan);
  };
  return on_port(Module::vlan, __func__, mp, set, type, protocol, vlan);
}

bool SoftSdk::delete_port_protocol_vlan(const Mp& mp, frame_type_t type, unsigned short protocol) {
  const auto remove = [&](PortIndex port) {
    return card_.port_vlans().remove_protocol_vlan(port, type, protocol);
  };
  return on_port(Module::vlan, __func__, mp, remove, type, protocol);
}

bool SoftSdk::delete_port_protocol_vlan_all(const Mp& mp) {
  return on_port(Module::vlan, __func__, mp,
                 [&](PortIndex port) { card_.port_vlans().clear_protocol_vlans(port); });
}

bool SoftSdk::set_mac_vlan(const unsigned char* mac, unsigned int vlan, unsigned int priority) {
  const auto set = [&] { return card_.vlan_classes().set_mac(mac_of(mac), vlan, priority); };
  return on_card(Module::vlan, __func__, set, shown_mac(mac), vlan, priority);
}

bool SoftSdk::set_ipv4_subnet_vlan(unsigned int ip, unsigned int mask, unsigned int vlan,
                                   unsigned int priority) {
  const auto set = [&] { return card_.vlan_classes().set_ipv4(ip, mask, vlan, priority); };
  return on_card(Module::vlan, __func__, set, ShownIpv4{ip}, ShownIpv4{mask}, vlan, priority);
}

bool SoftSdk::set_ipv6_subnet_vlan(const unsigned char* ip6, unsigned int prefix_length,
                                   unsigned int vlan, unsigned int priority) {
  const auto set = [&] {
    return card_.vlan_classes().set_ipv6(ip6_of(ip6), prefix_length, vlan, priority);
  };
  return on_card(Module::vlan, __func__, set, shown_ip6(ip6), prefix_length, vlan, priority);
}

// ---- Packets from the CPU -----------------------------------------------------------------------

bool SoftSdk::send_packet_by_port(std::list<Mp>& tagged, std::list<Mp>& untagged,
                                  const Packet& packet) {
  const auto send = [&] {
    std::vector<PortIndex> tagged_ports;
    std::vector<PortIndex> untagged_ports;
    return packet.type() <= PACKET_TYPE_CONTROL &&
           ports_of(card_.addresses(), tagged, tagged_ports) &&
           ports_of(card_.addresses(), untagged, untagged_ports) &&
           card_.pipeline().send_by_port(tagged_ports, untagged_ports, packet.data().data(),
                                         packet.data().size(), packet.type());
  };
  return on_card(Module::lcmgr, __func__, send, tagged, untagged, packet.length(), packet.type());
}

bool SoftSdk::send_packet_from_cpu(const Packet& packet) {
  const auto send = [&] {
    return packet.type() <= PACKET_TYPE_CONTROL &&
           card_.pipeline().send_from_cpu(packet.data().data(), packet.data().size(),
                                          packet.type());
  };
  return on_card(Module::lcmgr, __func__, send, packet.length(), packet.type());
}

// ---- Port abilities -----------------------------------------------------------------------------

bool SoftSdk::get_port_ability(const Mp& mp, port_ability_type_t& ability) {
  const auto get = [&](PortIndex port) {
    ability = static_cast<port_ability_type_t>(card_.ports().ability(port));
  };
  return on_port(Module::sif, __func__, mp, get, ability);
}

bool SoftSdk::set_port_advertising_ability(const Mp& mp, port_ability_type_t ability) {
  return on_port(
      Module::sif, __func__, mp,
      [&](PortIndex port) { return card_.ports().set_advertised(port, ability); }, ability);
}

bool SoftSdk::get_port_advertising_ability(const Mp& mp, port_ability_type_t& ability) {
  const auto get = [&](PortIndex port) {
    ability = static_cast<port_ability_type_t>(card_.ports().advertised(port));
  };
  return on_port(Module::sif, __func__, mp, get, ability);
}

bool SoftSdk::get_port_current_ability(const Mp& mp, port_ability_type_t& ability) {
  const auto get = [&](PortIndex port) {
    ability = static_cast<port_ability_type_t>(card_.ports().current(port));
  };
  return on_port(Module::sif, __func__, mp, get, ability);
}

bool SoftSdk::get_port_peer_ability(Mp mp, port_ability_type_t& ability) {
  const auto get = [&](PortIndex port) {
    ability = static_cast<port_ability_type_t>(card_.ports().peer_offer(port));
  };
  return on_port(Module::sif, __func__, mp, get, ability);
}

// ---- Flood blocking -----------------------------------------------------------------------------

bool SoftSdk::set_port_flood_blocking(const Mp& from, const Mp& to, flood_block_type_t type) {
  const auto set = [&](PortIndex port) {
    PortIndex to_port = 0;
    return card_.addresses().port_of(to, to_port) && card_.flood_blocks().set(port, to_port, type);
  };
  return on_port(Module::policy, __func__, from, set, to, type);
}

bool SoftSdk::get_port_flood_blocking(const Mp& from, const Mp& to, flood_block_type_t& type) {
  const auto get = [&](PortIndex port) {
    PortIndex to_port = 0;
    if (!card_.addresses().port_of(to, to_port)) return false;
    type = card_.flood_blocks().get(port, to_port);
    return true;
  };
  return on_port(Module::policy, __func__, from, get, to, type);
}

bool SoftSdk::set_port_flood_blocking_cpu(const Mp& from, flood_block_type_t type) {
  return on_port(
      Module::policy, __func__, from,
      [&](PortIndex port) { return card_.flood_blocks().set_to_cpu(port, type); }, type);
}

bool SoftSdk::get_port_flood_blocking_cpu(const Mp& from, flood_block_type_t& type) {
  return on_port(
      Module::policy, __func__, from,
      [&](PortIndex port) { type = card_.flood_blocks().get_to_cpu(port); }, type);
}

// ---- Class of service ---------------------------------------------------------------------------

bool SoftSdk::set_port_cos_mapping(const Mp& mp, unsigned int priority, unsigned int queue) {
  return on_port(
      Module::policy, __func__, mp,
      [&](PortIndex port) { return card_.cos().set_queue(port, priority, queue); }, priority,
      queue);
}

bool SoftSdk::get_port_cos_mapping(const Mp& mp, unsigned int priority, unsigned int& queue) {
  const auto get = [&](PortIndex port) {
    if (priority >= kPriorities) return false;
    queue = card_.cos().queue(port, priority);
    return true;
  };
  return on_port(Module::policy, __func__, mp, get, priority, queue);
}

// ---- The switch as a whole ----------------------------------------------------------------------

bool SoftSdk::get_line_card_usp(Usp& usp) {
  return on_card(
      Module::lcmgr, __func__, [&] { usp = Usp(kUnit, kPortSlot, 0); }, usp);
}

bool SoftSdk::free_call(int number) {
  const auto serve = [&] {
    if (number != kFreeCallClearCounters) return false;
    card_.clear_counters();
    return true;
  };
  return on_card(Module::lcmgr, __func__, serve, number);
}

bool SoftSdk::set_switch_forward_mode(unsigned int mode) {
  return on_card(
      Module::policy, __func__, [&] { return card_.traffic().set_forward_mode(mode); }, mode);
}

bool SoftSdk::get_switch_forward_mode(unsigned int& mode) {
  return on_card(
      Module::policy, __func__, [&] { mode = card_.traffic().forward_mode(); }, mode);
}

// ---- Packet filters: frames that go to the CPU and nowhere else ---------------------------------

bool SoftSdk::add_arp_filter(unsigned int ip, unsigned int mask) {
  return on_card(
      Module::policy, __func__, [&] { return card_.filters().add_arp(ip, mask); }, ShownIpv4{ip},
      ShownIpv4{mask});
}

bool SoftSdk::delete_arp_filter(unsigned int ip, unsigned int mask) {
  return on_card(
      Module::policy, __func__, [&] { return card_.filters().remove_arp(ip, mask); }, ShownIpv4{ip},
      ShownIpv4{mask});
}

bool SoftSdk::delete_arp_filter_all() {
  return on_card(Module::policy, __func__, [&] { card_.filters().clear_arp(); });
}

bool SoftSdk::add_ip_protocol_filter(unsigned int protocol) {
  return on_card(
      Module::policy, __func__, [&] { return card_.filters().add_ip_protocol(protocol); },
      protocol);
}

bool SoftSdk::delete_ip_protocol_filter(unsigned int protocol) {
  return on_card(
      Module::policy, __func__, [&] { return card_.filters().remove_ip_protocol(protocol); },
      protocol);
}

bool SoftSdk::delete_ip_protocol_filter_all() {
  return on_card(Module::policy, __func__, [&] { card_.filters().clear_ip_protocols(); });
}

bool SoftSdk::add_l4_destination_port_filter(unsigned int port) {
  return on_card(
      Module::policy, __func__, [&] { return card_.filters().add_l4_port(port); }, port);
}

bool SoftSdk::delete_l4_destination_port_filter(unsigned int port) {
  return on_card(
      Module::policy, __func__, [&] { return card_.filters().remove_l4_port(port); }, port);
}

bool SoftSdk::delete_l4_destination_port_filter_all() {
  return on_card(Module::policy, __func__, [&] { card_.filters().clear_l4_ports(); });
}

// ---- Layer 2 and unknown unicast ----------------------------------------------------------------

bool SoftSdk::set_port_l2_enable(const Mp& mp, bool on) {
  return on_port(
      Module::policy, __func__, mp, [&](PortIndex port) { card_.traffic().set_l2(port, on); }, on);
}

bool SoftSdk::set_port_switch_unknown_unicast_to_cpu(const Mp& mp, bool on) {
  return on_port(
      Module::policy, __func__, mp,
      [&](PortIndex port) { card_.traffic().set_unknown_to_cpu(port, on); }, on);
}

bool SoftSdk::get_port_switch_unknown_unicast_to_cpu(const Mp& mp, bool& on) {
  return on_port(
      Module::policy, __func__, mp,
      [&](PortIndex port) { on = card_.traffic().unknown_to_cpu(port); }, on);
}

bool SoftSdk::set_switch_unknown_unicast_to_cpu(bool on) {
  return on_card(
      Module::policy, __func__, [&] { card_.traffic().set_switch_unknown_to_cpu(on); }, on);
}

bool SoftSdk::get_switch_unknown_unicast_to_cpu(bool& on) {
  return on_card(
      Module::policy, __func__, [&] { on = card_.traffic().switch_unknown_to_cpu(); }, on);
}

// ---- Flow table ---------------------------------------------------------------------------------

bool SoftSdk::add_of_flow(of_flow_mp_s& flow, unsigned int& id, const of_flow_qualify_udf_s& udf) {
  const auto add = [&] {
    FlowMatch match;
    std::uint32_t chosen = 0;
    if (!flow_match_of(card_.addresses(), flow, match) || !flow_udf_of(udf, match.udf) ||
        card_.flows().add(match, chosen) != FlowResult::done) {
      return false;
    }
    id = chosen;
    return true;
  };
  return on_card(Module::policy, __func__, add, flow.match.flags, id);
}

bool SoftSdk::add_of_flow_with_id(of_flow_mp_s& flow, unsigned int id) {
  const auto add = [&] {
    FlowMatch match;
    return flow_match_of(card_.addresses(), flow, match) &&
           card_.flows().add_with_id(match, id) == FlowResult::done;
  };
  return on_card(Module::policy, __func__, add, flow.match.flags, id);
}

bool SoftSdk::delete_of_flow(unsigned int id) {
  return on_card(
      Module::policy, __func__, [&] { return card_.flows().remove(id) == FlowResult::done; }, id);
}

bool SoftSdk::clear_of_flow_table() {
  return on_card(Module::policy, __func__, [&] { card_.flows().clear(); });
}

bool SoftSdk::add_of_flow_action(unsigned int id, of_action_t kind, of_action_param_s param,
                                 const Mp& mp) {
  const auto add = [&] {
    FlowAction action;
    return flow_action_of(card_.addresses(), kind, param, mp, action) &&
           card_.flows().add_action(id, action) == FlowResult::done;
  };
  return on_card(Module::policy, __func__, add, id, kind, param.word[0], param.word[1], mp);
}

bool SoftSdk::delete_of_flow_action(unsigned int id, of_action_t kind, of_action_param_s param,
                                    const Mp& mp) {
  const auto remove = [&] {
    FlowAction action;
    return flow_action_of(card_.addresses(), kind, param, mp, action) &&
           card_.flows().remove_action(id, action) == FlowResult::done;
  };
  return on_card(Module::policy, __func__, remove, id, kind, param.word[0], param.word[1], mp);
}

bool SoftSdk::clear_of_flow_action(unsigned int id) {
  return on_card(
      Module::policy, __func__, [&] { return card_.flows().clear_actions(id) == FlowResult::done; },
      id);
}

bool SoftSdk::set_of_flow_priority(unsigned int id, int priority) {
  return on_card(
      Module::policy, __func__,
      [&] { return card_.flows().set_priority(id, priority) == FlowResult::done; }, id, priority);
}

bool SoftSdk::get_of_flow_priority(unsigned int id, int& priority) {
  const auto get = [&] {
    const Flow* const flow = card_.flows().get(id);
    if (flow == nullptr) return false;
    priority = flow->priority;
    return true;
  };
  return on_card(Module::policy, __func__, get, id, priority);
}

bool SoftSdk::get_of_flow_stat_counter64(unsigned int id, unsigned long long& packets) {
  const auto get = [&] {
    const Flow* const flow = card_.flows().get(id);
    if (flow == nullptr) return false;
    packets = flow->packets;
    return true;
  };
  return on_card(Module::policy, __func__, get, id, packets);
}

bool SoftSdk::get_of_flow_stat_counter32(unsigned int id, unsigned int& packets) {
  const auto get = [&] {
    const Flow* const flow = card_.flows().get(id);
    if (flow == nullptr) return false;
    packets = static_cast<unsigned>(flow->packets);
    return true;
  };
  return on_card(Module::policy, __func__, get, id, packets);
}

// ---- Callbacks ----------------------------------------------------------------------------------

bool SoftSdk::register_mac_update_callback(void (*callback)(L2Addr*, int, void*), void* user_data) {
  return on_card(Module::lcmgr, __func__, [&] { return card_.events().add(callback, user_data); });
}

bool SoftSdk::register_mac_update_callback_c(void (*callback)(ctype_l2_addr_s*, int, void*),
                                             void* user_data) {
  return on_card(Module::lcmgr, __func__, [&] { return card_.events().add(callback, user_data); });
}

bool SoftSdk::register_link_change_callback(void (*callback)(LinkStatus*, Usp*), void*) {
  return on_card(Module::lcmgr, __func__, [&] { return card_.events().add(callback); });
}

bool SoftSdk::register_link_change_callback_c(void (*callback)(ctype_link_status_s*, usp_s*),
                                              void*) {
  return on_card(Module::lcmgr, __func__, [&] { return card_.events().add(callback); });
}

bool SoftSdk::register_rx_packet_callback(void (*callback)(RxPacket*, void*), void* user_data) {
  return on_card(Module::lcmgr, __func__, [&] { return card_.events().add(callback, user_data); });
}

bool SoftSdk::register_rx_packet_callback_c(void (*callback)(ctype_rx_packet_s*, void*),
                                            void* user_data) {
  return on_card(Module::lcmgr, __func__, [&] { return card_.events().add(callback, user_data); });
}

bool SoftSdk::deregister_event_callback(lcmgr_report_event_t event, void* callback,
                                        void* user_data) {
  return on_card(
      Module::lcmgr, __func__, [&] { return card_.events().remove(event, callback, user_data); },
      event);
}

bool SoftSdk::traverse_mac_table(void* arg) {
  const auto traverse = [&] {
    const auto* const request = static_cast<const mac_traverse_s*>(arg);
    if (request == nullptr || request->visit == nullptr) return false;
    bool more = true;
    const std::shared_ptr<const void> alive = card_.keep_alive();
    card_.fdb().for_each([&](const FdbEntry& entry) {
      if (!more) return;
      const Destination destination = entry.destination();
      Usp usp(0, 0, 0);
      if (destination.is_port()) usp = AddressPlan::usp_of(destination.number);
      if (destination.is_lag()) usp = card_.lags().usp_of(destination.number);
      ctype_l2_addr_s record{};
      write_mac(entry.mac(), record.mac);
      record.vlan = entry.vlan();
      record.port = {usp.unit(), usp.slot(), usp.port()};
      if (entry.kind() == FdbKind::static_entry) record.flags = L2_ADDR_STATIC;
      if (entry.kind() == FdbKind::system_entry) record.flags = L2_ADDR_SYSTEM;
      more = request->visit(&record, request->user_data) != 0 && !card_.ended();
    });
    return true;
  };
  return on_card(Module::fdb, __func__, traverse);
}

// ---- Layer-3 interfaces -------------------------------------------------------------------------

bool SoftSdk::create_l3_interface(const unsigned char* mac, unsigned int vlan, unsigned int& id) {
  const auto create = [&] {
    std::uint32_t chosen = 0;
    if (!valid_vlan(vlan) || mac_of(mac).is_group() ||
        card_.l3().interfaces.create(mac_of(mac), static_cast<std::uint16_t>(vlan), chosen) !=
            L3Add::added) {
      return false;
    }
    id = chosen;
    return true;
  };
  return on_card(Module::sif, __func__, create, shown_mac(mac), vlan, id);
}

bool SoftSdk::create_l3_interface_with_id(const unsigned char* mac, unsigned int vlan,
                                          unsigned int id, bool replace) {
  const auto create = [&] {
    return valid_vlan(vlan) && !mac_of(mac).is_group() &&
           succeeded(card_.l3().interfaces.create_with_id(
               mac_of(mac), static_cast<std::uint16_t>(vlan), id, replace));
  };
  return on_card(Module::sif, __func__, create, shown_mac(mac), vlan, id, replace);
}

bool SoftSdk::get_l3_interface(unsigned int id, unsigned int& vlan, unsigned char* mac) {
  const auto get = [&] {
    const L3Interface* const found = card_.l3().interfaces.get(id);
    if (found == nullptr) return false;
    vlan = found->vlan;
    write_mac(found->mac, mac);
    return true;
  };
  return on_card(Module::sif, __func__, get, id, vlan);
}

bool SoftSdk::delete_l3_interface(const unsigned char* mac, unsigned int vlan) {
  const auto remove = [&] {
    if (!valid_vlan(vlan)) return false;
    const L3Interface* const found =
        card_.l3().interfaces.find(static_cast<std::uint16_t>(vlan), mac_of(mac));
    return found != nullptr && card_.delete_l3_interface(found->id);
  };
  return on_card(Module::sif, __func__, remove, shown_mac(mac), vlan);
}

bool SoftSdk::delete_l3_interface_by_id(unsigned int id) {
  return on_card(
      Module::sif, __func__, [&] { return card_.delete_l3_interface(id); }, id);
}

bool SoftSdk::delete_l3_interface_all() {
  return on_card(Module::sif, __func__, [&] { return card_.delete_all_l3_interfaces(); });
}

// ---- Layer-3 hosts and routes -------------------------------------------------------------------

bool SoftSdk::add_l3_host_ip4(Mp mp, bool trunk, unsigned int ip, const unsigned char* mac,
                              unsigned int interface) {
  const auto add = [&] {
    NextHop next_hop;
    return next_hop_of(card_, mp, trunk, mac, interface, next_hop) &&
           succeeded(card_.l3().ipv4_hosts.add(ip, next_hop));
  };
  return on_card(Module::sif, __func__, add, mp, trunk, ShownIpv4{ip}, shown_mac(mac), interface);
}

bool SoftSdk::add_l3_host_ip6(Mp mp, bool trunk, const unsigned char* ip6, const unsigned char* mac,
                              unsigned int interface) {
  const auto add = [&] {
    NextHop next_hop;
    return next_hop_of(card_, mp, trunk, mac, interface, next_hop) &&
           succeeded(card_.l3().ipv6_hosts.add(ip6_of(ip6), next_hop));
  };
  return on_card(Module::sif, __func__, add, mp, trunk, shown_ip6(ip6), shown_mac(mac), interface);
}

bool SoftSdk::get_l3_host_ip4(unsigned int ip, Mp mp, unsigned char* mac, unsigned int& interface,
                              bool trunk) {
  const auto get = [&] {
    Destination destination;
    if (!destination_of(card_, mp, trunk, destination)) return false;
    const auto* const host = card_.l3().ipv4_hosts.find(ip, destination);
    if (host == nullptr) return false;
    write_mac(host->next_hop.mac, mac);
    interface = host->next_hop.interface_id;
    return true;
  };
  return on_card(Module::sif, __func__, get, ShownIpv4{ip}, mp, interface, trunk);
}

bool SoftSdk::get_l3_host_ip6(const unsigned char* ip6, Mp mp, unsigned char* mac,
                              unsigned int& interface, bool trunk) {
  const auto get = [&] {
    Destination destination;
    if (!destination_of(card_, mp, trunk, destination)) return false;
    const auto* const host = card_.l3().ipv6_hosts.find(ip6_of(ip6), destination);
    if (host == nullptr) return false;
    write_mac(host->next_hop.mac, mac);
    interface = host->next_hop.interface_id;
    return true;
  };
  return on_card(Module::sif, __func__, get, shown_ip6(ip6), mp, interface, trunk);
}

bool SoftSdk::get_l3_route_by_subnet_ip4(unsigned int ip, unsigned int mask, const Mp& mp,
                                         bool trunk, unsigned char (&mac)[6],
                                         unsigned int& interface, unsigned int& metric) {
  const auto get = [&] {
    const int length = mask_length(mask);
    Destination destination;
    if (length < 0 || !destination_of(card_, mp, trunk, destination)) return false;
    const auto route = card_.l3().ipv4_routes.find(ip, static_cast<unsigned>(length), destination);
    if (!route) return false;
    write_mac(route->next_hop.mac, mac);
    interface = route->next_hop.interface_id;
    metric = route->metric;
    return true;
  };
  return on_card(Module::sif, __func__, get, ShownIpv4{ip}, ShownIpv4{mask}, mp, trunk, interface,
                 metric);
}

bool SoftSdk::get_l3_route_by_subnet_ip6(const unsigned char* ip6, const unsigned char* mask6,
                                         const Mp& mp, bool trunk, unsigned int& interface,
                                         unsigned char* mac) {
  const auto get = [&] {
    const int length = mask_length(ip6_of(mask6));
    Destination destination;
    if (length < 0 || !destination_of(card_, mp, trunk, destination)) return false;
    const auto route =
        card_.l3().ipv6_routes.find(ip6_of(ip6), static_cast<unsigned>(length), destination);
    if (!route) return false;
    write_mac(route->next_hop.mac, mac);
    interface = route->next_hop.interface_id;
    return true;
  };
  return on_card(Module::sif, __func__, get, shown_ip6(ip6), shown_ip6(mask6), mp, trunk,
                 interface);
}

bool SoftSdk::delete_l3_host_by_interface(unsigned int interface, bool ip6) {
  const auto remove = [&] {
    if (card_.l3().interfaces.get(interface) == nullptr) return false;
    if (ip6) {
      card_.l3().ipv6_hosts.remove_by_interface(interface);
    } else {
      card_.l3().ipv4_hosts.remove_by_interface(interface);
    }
    return true;
  };
  return on_card(Module::sif, __func__, remove, interface, ip6);
}

bool SoftSdk::delete_l3_host_by_network_ip4(unsigned int ip) {
  return on_card(
      Module::sif, __func__, [&] { card_.l3().ipv4_hosts.remove_network(ip); }, ShownIpv4{ip});
}

bool SoftSdk::delete_l3_host_by_network_ip6(const unsigned char* ip6) {
  return on_card(
      Module::sif, __func__, [&] { card_.l3().ipv6_hosts.remove_network(ip6_of(ip6)); },
      shown_ip6(ip6));
}

bool SoftSdk::delete_l3_host_by_addr_ip4(unsigned int ip, const Mp& mp, bool trunk) {
  const auto remove = [&] {
    Destination destination;
    return destination_of(card_, mp, trunk, destination) &&
           card_.l3().ipv4_hosts.remove(ip, destination);
  };
  return on_card(Module::sif, __func__, remove, ShownIpv4{ip}, mp, trunk);
}

bool SoftSdk::delete_l3_host_by_addr_ip6(const unsigned char* ip6, const Mp& mp, bool trunk) {
  const auto remove = [&] {
    Destination destination;
    return destination_of(card_, mp, trunk, destination) &&
           card_.l3().ipv6_hosts.remove(ip6_of(ip6), destination);
  };
  return on_card(Module::sif, __func__, remove, shown_ip6(ip6), mp, trunk);
}

bool SoftSdk::clear_l3_host_table() {
  const auto clear = [&] {
    card_.l3().ipv4_hosts.clear();
    card_.l3().ipv6_hosts.clear();
  };
  return on_card(Module::sif, __func__, clear);
}

bool SoftSdk::add_l3_route_ip4(const Mp& mp, bool trunk, unsigned int ip, unsigned int mask,
                               const unsigned char* mac, unsigned int interface,
                               unsigned int metric) {
  const auto add = [&] {
    const int length = mask_length(mask);
    NextHop next_hop;
    return length >= 0 && next_hop_of(card_, mp, trunk, mac, interface, next_hop) &&
           succeeded(
               card_.l3().ipv4_routes.add(ip, static_cast<unsigned>(length), next_hop, metric));
  };
  return on_card(Module::sif, __func__, add, mp, trunk, ShownIpv4{ip}, ShownIpv4{mask},
                 shown_mac(mac), interface, metric);
}

bool SoftSdk::add_l3_route_ip6(const Mp& mp, bool trunk, const unsigned char* ip6,
                               const unsigned char* mask6, const unsigned char* mac,
                               unsigned int interface) {
  const auto add = [&] {
    const int length = mask_length(ip6_of(mask6));
    NextHop next_hop;
    return length >= 0 && next_hop_of(card_, mp, trunk, mac, interface, next_hop) &&
           succeeded(
               card_.l3().ipv6_routes.add(ip6_of(ip6), static_cast<unsigned>(length), next_hop));
  };
  return on_card(Module::sif, __func__, add, mp, trunk, shown_ip6(ip6), shown_ip6(mask6),
                 shown_mac(mac), interface);
}

bool SoftSdk::delete_l3_route_by_interface(unsigned int interface, bool ip6) {
  const auto remove = [&] {
    if (card_.l3().interfaces.get(interface) == nullptr) return false;
    if (ip6) {
      card_.l3().ipv6_routes.remove_by_interface(interface);
    } else {
      card_.l3().ipv4_routes.remove_by_interface(interface);
    }
    return true;
  };
  return on_card(Module::sif, __func__, remove, interface, ip6);
}

bool SoftSdk::delete_l3_route_by_subnet_ip4(unsigned int ip, unsigned int mask, const Mp& mp,
                                            bool trunk) {
  const auto remove = [&] {
    const int length = mask_length(mask);
    Destination destination;
    return length >= 0 && destination_of(card_, mp, trunk, destination) &&
           card_.l3().ipv4_routes.remove(ip, static_cast<unsigned>(length), destination);
  };
  return on_card(Module::sif, __func__, remove, ShownIpv4{ip}, ShownIpv4{mask}, mp, trunk);
}

bool SoftSdk::delete_l3_route_by_subnet_ip6(const unsigned char* ip6, const unsigned char* mask6,
                                            const Mp& mp, bool trunk) {
  const auto remove = [&] {
    const int length = mask_length(ip6_of(mask6));
    Destination destination;
    return length >= 0 && destination_of(card_, mp, trunk, destination) &&
           card_.l3().ipv6_routes.remove(ip6_of(ip6), static_cast<unsigned>(length), destination);
  };
  return on_card(Module::sif, __func__, remove, shown_ip6(ip6), shown_ip6(mask6), mp, trunk);
}

bool SoftSdk::clear_l3_route_table() {
  const auto clear = [&] {
    card_.l3().ipv4_routes.clear();
    card_.l3().ipv6_routes.clear();
  };
  return on_card(Module::sif, __func__, clear);
}

// ---- Tracing ------------------------------------------------------------------------------------

bool SoftSdk::set_lcmgr_trace(const std::string& target, bool on) {
  return on_card(
      Module::lcmgr, __func__, [&] { return watch_.set_trace(target, on); }, target, on);
}

}  // namespace softcard
