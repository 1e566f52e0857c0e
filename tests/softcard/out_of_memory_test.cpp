// SPDX-License-Identifier: Apache-2.0
//
// A call that runs out of memory throws and changes nothing, wherever that happens; afterwards the
// same call works. In a program of its own, whose operator new fails when told to.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <new>
#include <sstream>

#include "softcard/sdk/flow_fields.h"
#include "tests/softcard/host_fixture.h"
#include "tests/softcard/own_new.h"
#include "vorn_lag_list.h"

namespace softcard {

namespace {

// Allocations to go until one fails, and all behind it; 0: none fails.
std::size_t allocations_left = 0;
bool failed = false;

}  // namespace

void before_allocation() {
  if (!failed && (allocations_left == 0 || --allocations_left != 0)) return;
  failed = true;
  throw std::bad_alloc();
}

namespace {

// Memory runs out at the `nth` allocation of its scope; 1: at once.
class Shortage {
 public:
  explicit Shortage(std::size_t nth) { allocations_left = nth; }
  ~Shortage() { end(); }
  Shortage(const Shortage&) = delete;
  Shortage& operator=(const Shortage&) = delete;

  // Gives the memory back and returns whether anybody missed it.
  static bool end() {
    const bool was_felt = failed;
    allocations_left = 0;
    failed = false;
    return was_felt;
  }
};

constexpr unsigned kIp = 0xc0000200;  // 192.0.2.0
const unsigned char kMac[6] = {2, 0, 0x5e, 0, 0x53, 1};
const unsigned char kNewMac[6] = {2, 0, 0x5e, 0, 0x53, 2};
const unsigned char kIp6[16] = {0x20, 1, 0x0d, 0xb8, 0, 0, 0, 1};
const unsigned char kNewIp6[16] = {0x20, 1, 0x0d, 0xb8, 0, 0, 0, 2};
const unsigned char kMask6[16] = {255, 255, 255, 255, 255, 255, 255, 255};
constexpr unsigned kFlow = 5;

of_flow_s flow_of(unsigned flags, unsigned short ether_type) {
  of_flow_s flow;
  std::memset(&flow.match, 0, sizeof flow.match);
  flow.match.flags = flags;
  flow.match.ether_type = ether_type;
  return flow;
}

// ---- A card as text -----------------------------------------------------------------------------

std::string hex(const std::uint8_t* data, std::size_t bytes) {
  std::ostringstream out;
  for (std::size_t i = 0; i < bytes; ++i) out << std::hex << unsigned{data[i]} << '.';
  return out.str();
}
std::string text(const MacAddress& mac) { return hex(mac.bytes.data(), mac.bytes.size()); }
std::string text(Ipv4 ip) { return std::to_string(ip); }
std::string text(const Ipv6Address& ip) { return hex(ip.bytes.data(), ip.bytes.size()); }
std::string text(Destination destination) {
  return std::to_string(static_cast<unsigned>(destination.kind)) + '-' +
         std::to_string(destination.number);
}
std::string text(const NextHop& hop) {
  return text(hop.destination) + ' ' + text(hop.mac) + std::to_string(hop.interface_id);
}
std::string text(const PortSet& ports) {
  std::string all = "{";
  for (const PortIndex port : ports) all += std::to_string(port) + ' ';
  return all + '}';
}

// Everything that the tables hold, a line for each entry, sorted.
class Dump {
 public:
  explicit Dump(Card& card) {
    for (const PortIndex port : card.tables().ports.all()) add_port(card, port);
    for (unsigned vlan = 1; vlan <= kMaxVlan; ++vlan) {
      if (!card.tables().vlans.exists(vlan)) continue;
      add("vlan", vlan, text(card.tables().vlans.members(vlan)),
          text(card.tables().vlans.untagged(vlan)), card.tables().mac_locks.vlan_limit(vlan),
          card.tables().fdb.learned_in(static_cast<std::uint16_t>(vlan)));
    }
    for (unsigned id = 0; id < card.tables().lags.id_count(); ++id) {
      const Lag& lag = card.tables().lags[id];
      if (!lag.exists) continue;
      std::string members;
      for (unsigned i = 0; i < lag.size; ++i) members += std::to_string(lag.members[i]) + ' ';
      const Destination destination = Destination::lag(static_cast<std::uint16_t>(id));
      add("lag", id, lag.psc, members, text(lag.set),
          AddressPlan::text(card.tables().usp_of(destination)),
          card.tables().mac_locks.lag_limit(id), card.tables().fdb.learned_on(destination));
    }
    for (const LagNode& node : lag_list) {
      std::string members;
      for (const Mp& mp : node.members()) members += std::to_string(mp.port()) + ' ';
      add("list", node.id(), members);
    }
    card.tables().fdb.for_each([&](const FdbEntry& entry) {
      add("address", entry.vlan(), text(entry.mac()), text(entry.destination()), entry.kind());
    });
    add("fdb", card.tables().fdb.size(), card.tables().fdb.learned(),
        card.tables().fdb.ageing_seconds());
    add_classes(card.tables().vlan_classes);
    for (const auto& filter : card.tables().filters.arp()) add("arp", filter.ip, filter.mask);
    for (unsigned i = 0; i < 65536; ++i) {
      if (i < 256 && card.tables().filters.matches_ip_protocol(static_cast<std::uint8_t>(i))) {
        add("protocol", i);
      }
      if (card.tables().filters.matches_l4_port(static_cast<std::uint16_t>(i))) add("l4", i);
    }
    add_flows(card.tables().flows);
    card.tables().l3.interfaces.for_each([&](const L3Interface& interface) {
      const bool found =
          card.tables().l3.interfaces.find(interface.vlan, interface.mac) == &interface;
      add("interface", interface.id, interface.vlan, text(interface.mac), found);
    });
    add_l3(card.tables().l3.ipv4_hosts, card.tables().l3.ipv4_routes, {kIp + 7, 0xc6336407});
    add_l3(card.tables().l3.ipv6_hosts, card.tables().l3.ipv6_routes,
           {Ipv6Address::from_bytes(kIp6), Ipv6Address::from_bytes(kNewIp6)});
    add("switch", card.tables().mac_locks.system_limit(), card.tables().traffic.forward_mode(),
        card.tables().traffic.switch_unknown_to_cpu(), card.events().wants_packets(),
        card.events().wants_mac_changes(), card.tables().mac_locks.unlimited(),
        card.tables().filters.any());
    std::sort(lines_.begin(), lines_.end());
  }

  const Lines& lines() const { return lines_; }

 private:
  void add_port(Card& card, PortIndex port) {
    const PortTable& ports = card.tables().ports;
    add("port", port, ports.admin(port), ports.phy_forced_down(port), ports.autoneg(port),
        ports.mode(port).speed, ports.mode(port).duplex, ports.advertised(port),
        ports.current(port), ports.pause_receive(port), ports.pause_transmit(port),
        ports.jamming(port), ports.mtu_bytes(port), ports.is_up(port), ports.offer(port));
    std::string stp, queues, limits, counters;
    for (unsigned i = 0; i < kMstpInstances; ++i) {
      stp += std::to_string(card.tables().stp.mstp(i, port)) +
             (card.tables().stp.forwards(port, i) ? "+" : "-");
    }
    for (unsigned i = 0; i < kPriorities; ++i) {
      queues += std::to_string(card.tables().cos.queue(port, i)) + ' ';
    }
    for (unsigned i = 0; i < kStormKinds; ++i) {
      const auto kind = static_cast<StormKind>(i);
      limits += std::to_string(card.tables().traffic.storm_limit(port, kind)) + ' ';
    }
    for (unsigned i = 0; i < STAT_TYPE_COUNT; ++i) {
      counters +=
          std::to_string(card.tables().counters.value(port, static_cast<stat_type_t>(i))) + ' ';
    }
    add("spanning tree", port, card.tables().stp.stp(port), card.tables().stp.bpdu_processing(port),
        stp);
    add("traffic", port, queues, limits, card.tables().traffic.ingress_discard(port),
        card.tables().traffic.egress_on(port), card.tables().traffic.l2_on(port),
        card.tables().traffic.unknown_to_cpu(port), card.tables().mirrors[port].type,
        card.tables().mirrors[port].to);
    add("counters", port, card.tables().counters.enabled(port), counters);
    add("locks", port, card.tables().mac_locks.locked(port),
        card.tables().mac_locks.drop_setting(port), card.tables().mac_locks.port_limit(port),
        card.tables().lags.lag_of(port), card.tables().fdb.learned_on(Destination::port(port)));
    std::string blocks;
    for (const PortIndex to : ports.all()) {
      blocks += std::to_string(card.tables().flood_blocks.get(port, to)) + ' ';
    }
    add("blocks", port, card.tables().flood_blocks.get_to_cpu(port), blocks);
    add("pvid", port, card.tables().port_vlans.pvid(port),
        card.tables().port_vlans.accepts_untagged(port),
        card.tables().port_vlans.priority(port, 10), card.tables().port_vlans.priority(port, 11));
    for (const ProtocolVlan& rule : card.tables().port_vlans.protocol_vlans(port)) {
      add("protocol vlan", port, rule.type, rule.protocol, rule.vlan);
    }
  }

  // The rules, and what is found by them.
  void add_classes(const VlanClassTable& classes) {
    const auto found = [](const VlanClass* rule) { return rule == nullptr ? 0 : rule->vlan; };
    classes.for_each_mac([&](const MacAddress& mac, const VlanClass& rule) {
      add("mac vlan", text(mac), rule.vlan, rule.priority, found(classes.by_mac(mac)));
    });
    classes.for_each_ipv4([&](Ipv4 ip, unsigned length, const VlanClass& rule) {
      add("subnet", ip, length, rule.vlan, rule.priority, found(classes.by_ipv4(ip)));
    });
    classes.for_each_ipv6([&](const Ipv6Address& ip, unsigned length, const VlanClass& rule) {
      add("subnet", text(ip), length, rule.vlan, rule.priority, found(classes.by_ipv6(ip)));
    });
  }

  void add_flows(FlowTable& flows) {
    flows.for_each([&](const Flow& flow) {
      std::string actions;
      for (const FlowAction& action : flows.actions(flow)) {
        actions += std::to_string(action.kind) + ':' + std::to_string(action.words[0]) + ' ';
      }
      add("flow", flow.id, flow.priority, flow.packets, flow.match.fields, actions,
          flows.get(flow.id) == &flow);
    });
    for (const std::uint16_t ether_type : {std::uint16_t{0x88b5}, std::uint16_t{0x88b6}}) {
      FlowKey key;
      key.set_ethernet(1, 2, 3, 4, 5, ether_type);
      const Flow* const flow = flows.lookup(key, UdfReader());
      add("flow of", ether_type, flow == nullptr ? 0 : flow->id);
    }
    add("flows", flows.size(), flows.subtables());
  }

  template <class Hosts, class Routes, class Address>
  void add_l3(const Hosts& hosts, const Routes& routes, std::initializer_list<Address> ips) {
    hosts.for_each([&](const auto& host) { add("host", text(host.ip), text(host.next_hop)); });
    routes.for_each([&](const auto& route) {
      add("route", text(route.prefix), route.length, route.metric, text(route.next_hop));
    });
    for (const Address& ip : ips) {
      const NextHop* const hop = routes.lookup(ip);
      const auto* const host = hosts.find(ip);
      add("way to", text(ip), hop == nullptr ? "-" : text(*hop),
          host == nullptr ? "-" : text(host->next_hop));
    }
    add("l3", hosts.size(), routes.size());
  }

  template <class... Parts>
  void add(const char* what, const Parts&... parts) {
    std::string line = what;
    ((line += ' ' + shown(parts)), ...);
    lines_.push_back(line);
  }
  static std::string shown(const std::string& part) { return part; }
  static std::string shown(const char* part) { return part; }
  template <class Part>
  static std::string shown(const Part& part) {
    return std::to_string(static_cast<long long>(part));
  }

  Lines lines_;
};

// ---- One call at a time -------------------------------------------------------------------------

struct Row {
  const char* name;
  std::function<bool()> call;
  std::function<bool()> prepare = [] { return true; };
};
std::ostream& operator<<(std::ostream& out, const Row& row) { return out << row.name; }

void on_mac_update(L2Addr*, int, void*) {}

// A card with an entry of each kind, and somebody who listens.
class SmallHost {
 public:
  SmallHost() {
    CardDescription small;
    small.ports.resize(6);
    small.capacity.fdb = 64;
    host::use_description(small);
    host::use_clock(std::make_shared<VirtualClock>());
    int ports = 0;
    EXPECT_TRUE(vorn_lcmgr_api_init(ports)) << host::error();
    unsigned id = 0;
    const of_flow_s flow = flow_of(OF_MATCH_ETHER_TYPE, 0x88b5);
    EXPECT_TRUE(vorn_create_vlan(10));
    EXPECT_TRUE(vorn_add_ports_to_vlan(10, {port(1), port(2)}, {port(3)}));
    EXPECT_TRUE(vorn_add_ports_to_lag(lag(1), {port(4), port(5)}));
    EXPECT_TRUE(vorn_create_l3_interface(kMac, 10, id) && vorn_create_l3_interface(kMac, 11, id));
    EXPECT_TRUE(vorn_add_l3_host_ip4(port(1), kIp + 7, kMac, 1));
    EXPECT_TRUE(vorn_add_l3_host_ip6(lag(1), kIp6, kMac, 1));
    EXPECT_TRUE(vorn_add_l3_route_ip4(port(1), kIp, 0xffffff00, kMac, 1, 5));
    EXPECT_TRUE(vorn_add_l3_route_ip6(port(1), kIp6, kMask6, kMac, 1));
    EXPECT_TRUE(vorn_add_of_flow_with_id(flow, kFlow));
    EXPECT_TRUE(vorn_add_of_flow_action(kFlow, OF_ACTION_SET_TOS, {{1, 0, 0}}));
    EXPECT_TRUE(vorn_add_mac_to_port(port(1), kMac, 10) && vorn_add_system_mac(kMac, 1));
    EXPECT_TRUE(vorn_set_mac_vlan(kMac, 10, 1) && vorn_set_ipv6_subnet_vlan(kIp6, 64, 10, 1));
    EXPECT_TRUE(vorn_set_ipv4_subnet_vlan(kIp, 0xffffff00, 10, 1));
    EXPECT_TRUE(vorn_set_port_protocol_vlan(port(1), FRAME_TYPE_ETHERNET, 0x88b5, 10));
    EXPECT_TRUE(vorn_add_arp_filter(kIp, 0xffffff00) && vorn_add_ip_protocol_filter(89));
    EXPECT_TRUE(vorn_add_l4_destination_port_filter(179));
    EXPECT_TRUE(vorn_register_mac_update_callback(on_mac_update, nullptr));
    EXPECT_TRUE(vorn_register_link_change_callback([](LinkStatus*, Usp*) {}));
    const auto learned = MacAddress::from_bytes(kNewMac);
    card().tables().fdb.learn(10, learned, Destination::port(2), 0);
    card().tables().fdb.learn(1, learned, Destination::lag(0), 0);
    card().tables().counters.received(1, 60, CastKind::unicast);
  }
  ~SmallHost() { EXPECT_TRUE(vorn_lcmgr_api_terminate()); }
  SmallHost(const SmallHost&) = delete;
  SmallHost& operator=(const SmallHost&) = delete;

  static Card& card() { return *host::card(); }
  static Lines dump() { return Dump(card()).lines(); }
};

std::vector<Row> rows() {
  static unsigned id;
  static unsigned char bitmap[512];
  std::memset(bitmap, 0, sizeof bitmap);
  bitmap[0] = 2;  // VLAN 1
  bitmap[1] = 4;  // VLAN 10
  const of_flow_qualify_udf_s no_udf{};
  // clang-format off
  return {
      {"create_vlan", [] { return vorn_create_vlan(20); }},
      {"delete_vlan", [] { return vorn_delete_vlan(10); }},
      {"add_ports_to_vlan", [] { return vorn_add_ports_to_vlan(10, {port(4)}, {port(1), port(5)}); }},
      {"delete_ports_from_vlan", [] { return vorn_delete_ports_from_vlan(10, {port(1), port(2)}); }},
      {"set_mac_vlan", [] { return vorn_set_mac_vlan(kNewMac, 10, 2); }},
      {"set_mac_vlan changed", [] { return vorn_set_mac_vlan(kMac, 11, 2); }},
      {"set_mac_vlan deleted", [] { return vorn_set_mac_vlan(kMac, 0, 0); }},
      {"set_ipv4_subnet_vlan", [] { return vorn_set_ipv4_subnet_vlan(kIp, 0xffff0000, 10, 2); }},
      {"set_ipv4_subnet_vlan deleted", [] { return vorn_set_ipv4_subnet_vlan(kIp, 0xffffff00, 0, 0); }},
      {"set_ipv6_subnet_vlan", [] { return vorn_set_ipv6_subnet_vlan(kIp6, 65, 10, 2); }},
      {"set_ipv6_subnet_vlan deleted", [] { return vorn_set_ipv6_subnet_vlan(kIp6, 64, 0, 0); }},
      {"set_port_pvid", [] { return vorn_set_port_pvid(port(1), 10); }},
      {"set_port_vlan_priority", [] { return vorn_set_port_vlan_priority(port(1), 10, 5); }},
      {"set_port_vlan_accept_frame", [] { return vorn_set_port_vlan_accept_frame(port(1), false); }},
      {"set_port_protocol_vlan", [] { return vorn_set_port_protocol_vlan(port(1), FRAME_TYPE_LLC, 0x88b6, 10); }},
      {"delete_port_protocol_vlan", [] { return vorn_delete_port_protocol_vlan(port(1), FRAME_TYPE_ETHERNET, 0x88b5); }},
      {"delete_port_protocol_vlan_all", [] { return vorn_delete_port_protocol_vlan_all(port(1)); }},

      {"set_ports_pvid", [] { return vorn_set_ports_pvid({port(2)}, 10); }},

      {"create_lag", [] { return vorn_create_lag(lag(7)); }},
      {"delete_lag", [] { return vorn_delete_lag(lag(1)); }},
      {"add_ports_to_lag", [] { return vorn_add_ports_to_lag(lag(1), {port(2), port(1)}); }},
      {"delete_ports_from_lag", [] { return vorn_delete_ports_from_lag(lag(1), {port(4)}); }},
      {"delete_ports_from_lag all", [] { return vorn_delete_ports_from_lag(lag(1), {port(5), port(4)}); }},
      {"set_lag_balancing_strategy", [] { return vorn_set_lag_balancing_strategy(lag(1), LAG_PSC_DST_IP); }},

      {"set_port_state", [] { return vorn_set_port_state(port(2), false); }},
      {"set_port_autoneg", [] { return vorn_set_port_autoneg(port(2), false); }},
      {"set_port_speed", [] { return vorn_set_port_speed(port(2), SPEED_TYPE_100); }},
      {"set_port_duplex", [] { return vorn_set_port_duplex(port(2), DUPLEX_TYPE_HALF); }},
      {"set_port_flow_control_8023x", [] { return vorn_set_port_flow_control_8023x(port(2), true, true); }},
      {"set_port_jaming_control", [] { return vorn_set_port_jaming_control(port(2), true); }},
      {"set_port_mtu", [] { return vorn_set_port_mtu(port(2), 2000); }},
      {"set_port_link_state", [] { return vorn_set_port_link_state(port(2), PHY_STATE_DOWN); }},
      {"set_port_advertising_ability", [] { return vorn_set_port_advertising_ability(port(2), PORT_ABILITY_100_FULL); }},
      {"set_ports_state", [] { return vorn_set_ports_state({port(2)}, false); }},
      {"set_ports_mtu", [] { return vorn_set_ports_mtu({port(2)}, 2000); }},
      {"set_ports_flow_control_8023x", [] { return vorn_set_ports_flow_control_8023x({port(2)}, true, false); }},
      {"set_port_stat_enable", [] { return vorn_set_port_stat_enable(port(1), false); }},
      {"clear_port_stat_counter", [] { return vorn_clear_port_stat_counter(port(1)); }},
      {"free_call", [] { return vorn_free_call(1); }},
      {"set_port_stp_state", [] { return vorn_set_port_stp_state(port(2), STP_STATE_BLOCKING); }},
      {"set_port_mstp_state", [] { return vorn_set_port_mstp_state(port(2), MSTP_STATE_BLOCKING, 3); }},
      {"set_ports_stp_state", [] { return vorn_set_ports_stp_state({port(2)}, STP_STATE_BLOCKING); }},
      {"set_ports_mstp_state", [] { return vorn_set_ports_mstp_state({port(2)}, MSTP_STATE_BLOCKING, 3); }},
      {"set_port_bpdu_processing", [] { return vorn_set_port_bpdu_processing(port(2), false); }},

      {"set_port_mirror", [] { return vorn_set_port_mirror(port(1), port(2), MIRROR_TYPE_BOTH); }},
      {"set_port_broadcast_control", [] { return vorn_set_port_broadcast_control(port(2), 9); }},
      {"set_port_multicast_control", [] { return vorn_set_port_multicast_control(port(2), 9); }},
      {"set_port_unicast_control", [] { return vorn_set_port_unicast_control(port(2), 9); }},
      {"set_port_egress_admin_state", [] { return vorn_set_port_egress_admin_state(port(2), false); }},
      {"set_port_ingress_discarding", [] { return vorn_set_port_ingress_discarding(port(2), INGRESS_DISCARD_ALL); }},
      {"set_port_flood_blocking", [] { return vorn_set_port_flood_blocking({port(2)}, port(1), FLOOD_BLOCK_ALL); }},
      {"set_port_flood_blocking_cpu", [] { return vorn_set_port_flood_blocking_cpu({port(2)}, FLOOD_BLOCK_ALL); }},
      {"set_port_cos_mapping", [] { return vorn_set_port_cos_mapping(port(2), 3, 7); }},
      {"set_port_l2_enable", [] { return vorn_set_port_l2_enable(port(2), false); }},
      {"set_port_switch_unknown_unicast_to_cpu", [] { return vorn_set_port_switch_unknown_unicast_to_cpu(port(2), true); }},
      {"set_switch_unknown_unicast_to_cpu", [] { return vorn_set_switch_unknown_unicast_to_cpu(true); }},
      {"set_switch_forward_mode", [] { return vorn_set_switch_forward_mode(SWITCH_FORWARD_MODE_FLOW); }},

      {"add_mac_to_port", [] { return vorn_add_mac_to_port(port(3), kNewMac, 1); }},
      {"add_mac_to_port on a LAG", [] { return vorn_add_mac_to_port(lag(1), kMac, 10); }},
      {"add_system_mac", [] { return vorn_add_system_mac(kNewMac, 10); }},
      {"add_system_mac_vlan_bitmap", [] { return vorn_add_system_mac_vlan_bitmap(kNewMac, bitmap); }},
      {"delete_mac", [] { return vorn_delete_mac(10, kMac); }},
      {"delete_mac_vlan_bitmap", [] { return vorn_delete_mac_vlan_bitmap(kMac, bitmap); }},
      {"delete_mac_by_mac", [] { return vorn_delete_mac_by_mac(kMac); }},
      {"clear_fdb_by_port", [] { return vorn_clear_fdb_by_port(port(1), true); }},
      {"clear_fdb_by_vlan", [] { return vorn_clear_fdb_by_vlan(10, true); }},
      {"clear_fdb_table", [] { return vorn_clear_fdb_table(true); }},
      {"set_fdb_aging_time", [] { return vorn_set_fdb_aging_time(77); }},
      {"set_port_mac_lock", [] { return vorn_set_port_mac_lock(port(2), true); }},
      {"set_port_mac_lock_ext", [] { return vorn_set_port_mac_lock_ext(port(2), true, false); }},
      {"set_port_mac_limit", [] { return vorn_set_port_mac_limit(port(2), 3); }},
      {"set_system_mac_limit", [] { return vorn_set_system_mac_limit(3); }},

      {"create_l3_interface", [] { return vorn_create_l3_interface(kNewMac, 10, id); }},
      {"create_l3_interface_with_id", [] { return vorn_create_l3_interface_with_id(kNewMac, 10, 70, false); }},
      {"create_l3_interface_with_id far", [] { return vorn_create_l3_interface_with_id(kNewMac, 10, 1u << 31, false); }},
      {"create_l3_interface_with_id replaced", [] { return vorn_create_l3_interface_with_id(kNewMac, 10, 1, true); }},
      {"delete_l3_interface", [] { return vorn_delete_l3_interface(kMac, 11); }},
      {"delete_l3_interface_by_id", [] { return vorn_delete_l3_interface_by_id(2); }},
      {"delete_l3_interface_all", [] { return vorn_delete_l3_interface_all(); },
       [] { return vorn_clear_l3_host_table() && vorn_clear_l3_route_table(); }},
      {"add_l3_host_ip4", [] { return vorn_add_l3_host_ip4(port(1), kIp + 8, kMac, 1); }},
      {"add_l3_host_ip4 elsewhere", [] { return vorn_add_l3_host_ip4(port(2), kIp + 7, kMac, 1); }},
      {"add_l3_host_ip6", [] { return vorn_add_l3_host_ip6(port(1), kNewIp6, kMac, 1); }},
      {"delete_l3_host_by_addr_ip4", [] { return vorn_delete_l3_host_by_addr_ip4(kIp + 7, port(1)); }},
      {"delete_l3_host_by_addr_ip6", [] { return vorn_delete_l3_host_by_addr_ip6(kIp6, lag(1)); }},
      {"delete_l3_host_by_network_ip4", [] { return vorn_delete_l3_host_by_network_ip4(kIp); }},
      {"delete_l3_host_by_network_ip6", [] { return vorn_delete_l3_host_by_network_ip6(kIp6); }},
      {"delete_l3_host_by_interface", [] { return vorn_delete_l3_host_by_interface(1, true); }},
      {"clear_l3_host_table", [] { return vorn_clear_l3_host_table(); }},
      {"add_l3_route_ip4", [] { return vorn_add_l3_route_ip4(port(2), 0xc6336400, 0xfffffff0, kNewMac, 1, 0); }},
      {"add_l3_route_ip4 short", [] { return vorn_add_l3_route_ip4(port(2), 0, 0, kMac, 1, 0); }},
      {"add_l3_route_ip4 beside", [] { return vorn_add_l3_route_ip4(port(2), kIp, 0xffffff00, kNewMac, 1, 0); }},
      {"add_l3_route_ip4 within", [] { return vorn_add_l3_route_ip4(port(2), kIp, 0xffffff80, kNewMac, 1, 0); }},
      {"add_l3_route_ip4 changed", [] { return vorn_add_l3_route_ip4(port(1), kIp, 0xffffff00, kNewMac, 2, 3); }},
      {"add_l3_route_ip6", [] { return vorn_add_l3_route_ip6(port(2), kNewIp6, kMask6, kNewMac, 1); }},
      {"delete_l3_route_by_subnet_ip4", [] { return vorn_delete_l3_route_by_subnet_ip4(kIp, 0xffffff00, port(1)); }},
      {"delete_l3_route_by_subnet_ip6", [] { return vorn_delete_l3_route_by_subnet_ip6(kIp6, kMask6, port(1)); }},
      {"delete_l3_route_by_interface", [] { return vorn_delete_l3_route_by_interface(1, false); }},
      {"clear_l3_route_table", [] { return vorn_clear_l3_route_table(); }},

      {"add_of_flow", [=] { return vorn_add_of_flow(flow_of(OF_MATCH_ETHER_TYPE, 0x88b6), id, no_udf); }},
      {"add_of_flow of another mask", [=] { return vorn_add_of_flow(flow_of(0, 0), id, no_udf); }},
      {"add_of_flow_with_id", [] { return vorn_add_of_flow_with_id(flow_of(OF_MATCH_ETHER_TYPE, 0x88b6), 70); }},
      {"add_of_flow_with_id far", [] { return vorn_add_of_flow_with_id(flow_of(OF_MATCH_IP_PROTOCOL, 0), 1u << 31); }},
      {"delete_of_flow", [] { return vorn_delete_of_flow(kFlow); }},
      {"clear_of_flow_table", [] { return vorn_clear_of_flow_table(); }},
      {"add_of_flow_action", [] { return vorn_add_of_flow_action(kFlow, OF_ACTION_SET_TOS, {{2, 0, 0}}); }},
      {"delete_of_flow_action", [] { return vorn_delete_of_flow_action(kFlow, OF_ACTION_SET_TOS, {{1, 0, 0}}); }},
      {"clear_of_flow_action", [] { return vorn_clear_of_flow_action(kFlow); }},
      {"set_of_flow_priority", [] { return vorn_set_of_flow_priority(kFlow, 9); }},
      {"add_arp_filter", [] { return vorn_add_arp_filter(kIp, 0xffff0000); }},
      {"delete_arp_filter", [] { return vorn_delete_arp_filter(kIp, 0xffffff00); }},
      {"delete_arp_filter_all", [] { return vorn_delete_arp_filter_all(); }},
      {"add_ip_protocol_filter", [] { return vorn_add_ip_protocol_filter(6); }},
      {"delete_ip_protocol_filter", [] { return vorn_delete_ip_protocol_filter(89); }},
      {"delete_ip_protocol_filter_all", [] { return vorn_delete_ip_protocol_filter_all(); }},
      {"add_l4_destination_port_filter", [] { return vorn_add_l4_destination_port_filter(22); }},
      {"delete_l4_destination_port_filter", [] { return vorn_delete_l4_destination_port_filter(179); }},
      {"delete_l4_destination_port_filter_all", [] { return vorn_delete_l4_destination_port_filter_all(); }},
      {"register_rx_packet_callback", [] { return vorn_register_rx_packet_callback([](RxPacket*, void*) {}, nullptr); }},
      {"deregister_event_callback", [] { return vorn_deregister_event_callback(LCMGR_REPORT_MAC_UPDATE, reinterpret_cast<void*>(&on_mac_update), nullptr); }},
  };
  // clang-format on
}

class OutOfMemory : public testing::TestWithParam<Row> {};

TEST_P(OutOfMemory, LeavesTheCardAsItWas) {
  const auto& [name, call, prepare] = GetParam();
  Lines before, after;
  {
    SmallHost fresh;
    ASSERT_TRUE(prepare());
    before = fresh.dump();
    ASSERT_TRUE(call());
    after = fresh.dump();
  }
  ASSERT_NE(before, after) << "the call changes nothing that the dump shows";
  bool felt = true;
  for (std::size_t nth = 1; felt; ++nth) {
    SCOPED_TRACE(nth);
    SmallHost host;
    ASSERT_TRUE(prepare());
    ASSERT_EQ(host.dump(), before);
    bool thrown = false;
    {
      Shortage shortage(nth);
      try {
        call();
      } catch (const std::bad_alloc&) {
        thrown = true;
      }
      felt = Shortage::end();
    }
    if (thrown) {
      ASSERT_EQ(host.dump(), before);
      ASSERT_TRUE(call());
    }
    ASSERT_EQ(host.dump(), after);
  }
}
INSTANTIATE_TEST_SUITE_P(Rows, OutOfMemory, testing::ValuesIn(rows()),
                         [](const testing::TestParamInfo<Row>& row) {
                           std::string name = row.param.name;
                           std::replace(name.begin(), name.end(), ' ', '_');
                           return name;
                         });

TEST(OutOfMemory, ACardThatIsNotMadeLeavesNothing) {
  CardDescription small;
  small.ports.resize(2);
  small.capacity.fdb = 64;
  host::use_description(small);
  host::use_clock(std::make_shared<VirtualClock>());
  bool felt = true;
  for (std::size_t nth = 1; felt; ++nth) {
    int ports = -1;
    bool done = false;
    {
      const Shortage shortage(nth);
      try {
        done = vorn_lcmgr_api_init(ports);
      } catch (const std::bad_alloc&) {
        ASSERT_EQ(host::card(), nullptr) << nth;
      }
      felt = Shortage::end();
    }
    ASSERT_EQ(done, !felt) << nth;
    if (!done) {
      ASSERT_TRUE(vorn_lcmgr_api_init(ports)) << nth;
    }
    ASSERT_TRUE(vorn_lcmgr_api_terminate()) << nth;
  }
}

// ---- Tables that grow ---------------------------------------------------------------------------

// Adds entries one by one, each at first with too little memory, past the places where a table
// grows; then removes them with none at all.
struct Growth {
  std::function<bool(unsigned)> add;
  std::function<bool(unsigned)> has;
  std::function<bool(unsigned)> remove;
  std::function<std::size_t()> size;
};

void expect_whole(const Growth& table, unsigned entries) {
  for (unsigned i = 0; i < entries; ++i) {
    bool felt = true;
    for (std::size_t nth = 1; felt; ++nth) {
      Shortage shortage(nth);
      bool thrown = false;
      try {
        table.add(i);
      } catch (const std::bad_alloc&) {
        thrown = true;
      }
      felt = Shortage::end();
      ASSERT_EQ(thrown, felt);
      ASSERT_EQ(table.has(i), !thrown) << i;
      ASSERT_EQ(table.size(), i + !thrown) << i;
    }
  }
  for (unsigned i = 0; i < entries; ++i) ASSERT_TRUE(table.has(i)) << i;
  const Shortage shortage(1);
  for (unsigned i = 0; i < entries; ++i) {
    ASSERT_TRUE(table.remove(i) && !table.has(i)) << i;
  }
  ASSERT_EQ(table.size(), 0u);
  ASSERT_FALSE(Shortage::end()) << "removing asks for no memory";
}

constexpr unsigned kEntries = 600;  // more than two blocks of a pool

// Subnets that differ from each other, of one length and of several.
Ipv4 subnet(unsigned i) { return i % 3 == 0 ? i / 3 << 16 : i << 8; }
unsigned length_of(unsigned i) { return i % 3 == 0 ? 16 : 24 + i % 9; }
Ipv6Address address6(unsigned i) {
  Ipv6Address ip = Ipv6Address::from_bytes(kIp6);
  ip.bytes[i % 9 + 4] = static_cast<std::uint8_t>(~i);
  ip.bytes[14] = static_cast<std::uint8_t>(i);
  ip.bytes[15] = static_cast<std::uint8_t>(i >> 8);
  return ip;
}
NextHop hop(unsigned i) {
  return {Destination::port(static_cast<PortIndex>(i % 5)), MacAddress::from_number(i / 3), 1};
}

TEST(OutOfMemoryGrowth, Flows) {
  FlowTable flows;
  // One mask for two of three, and one of its own for the others.
  const auto match = [](unsigned i) {
    FlowMatch wanted;
    wanted.fields = kFlowIpv4Source;
    wanted.ipv4_source = i;
    wanted.ipv4_source_mask = i % 3 != 0 ? ~0u : 0xffff0000u | i;
    return wanted;
  };
  expect_whole({[&](unsigned i) {
                  return flows.add_with_id(match(i), i % 2 != 0 ? i : ~i,
                                           static_cast<std::int32_t>(i % 17)) == FlowResult::done;
                },
                [&](unsigned i) {
                  const Flow* const flow = flows.get(i % 2 != 0 ? i : ~i);
                  return flow != nullptr && flow->match.ipv4_source == i;
                },
                [&](unsigned i) { return flows.remove(i % 2 != 0 ? i : ~i) == FlowResult::done; },
                [&] { return flows.size(); }},
               kEntries);
  EXPECT_EQ(flows.subtables(), 0u);
}

TEST(OutOfMemoryGrowth, Routes) {
  L3RouteTable<Ipv4> ipv4(4096);
  expect_whole(
      {[&](unsigned i) { return succeeded(ipv4.add(subnet(i), length_of(i), hop(i), i % 4)); },
       [&](unsigned i) {
         return ipv4.find(subnet(i), length_of(i), hop(i).destination).has_value() &&
                ipv4.lookup(subnet(i)) != nullptr;
       },
       [&](unsigned i) { return ipv4.remove(subnet(i), length_of(i), hop(i).destination); },
       [&] { return ipv4.size(); }},
      kEntries);
  EXPECT_EQ(ipv4.lookup(subnet(1)), nullptr);
  L3RouteTable<Ipv6Address> ipv6(4096);
  expect_whole(
      {[&](unsigned i) { return succeeded(ipv6.add(address6(i), 128, hop(i), i % 4)); },
       [&](unsigned i) { return ipv6.find(address6(i), 128, hop(i).destination).has_value(); },
       [&](unsigned i) { return ipv6.remove(address6(i), 128, hop(i).destination); },
       [&] { return ipv6.size(); }},
      kEntries);
}

TEST(OutOfMemoryGrowth, HostsAndInterfaces) {
  L3HostTable<Ipv4> hosts(4096);
  expect_whole({[&](unsigned i) { return succeeded(hosts.add(i / 2, hop(i))); },
                [&](unsigned i) { return hosts.find(i / 2, hop(i).destination) != nullptr; },
                [&](unsigned i) { return hosts.remove(i / 2, hop(i).destination); },
                [&] { return hosts.size(); }},
               kEntries);
  L3InterfaceTable interfaces(4096);
  const auto id_of = [](unsigned i) { return i % 2 != 0 ? i : ~i; };
  expect_whole(
      {[&](unsigned i) {
         return succeeded(interfaces.create_with_id(
             MacAddress::from_number(i), static_cast<std::uint16_t>(i % 9), id_of(i), false));
       },
       [&](unsigned i) {
         return interfaces.get(id_of(i)) != nullptr &&
                interfaces.find(static_cast<std::uint16_t>(i % 9), MacAddress::from_number(i)) !=
                    nullptr;
       },
       [&](unsigned i) { return interfaces.remove(id_of(i)); }, [&] { return interfaces.size(); }},
      kEntries);
}

TEST(OutOfMemoryGrowth, MacEntriesAndVlanRules) {
  FdbTable fdb(4096);
  const auto mac = [](unsigned i) { return MacAddress::from_number(i); };
  expect_whole({[&](unsigned i) {
                  const auto number = static_cast<std::uint16_t>(i * 7 % 200);
                  return fdb.add_static(
                      1, mac(i), i % 2 != 0 ? Destination::port(number) : Destination::lag(number));
                },
                [&](unsigned i) { return fdb.find(1, mac(i)) != nullptr; },
                [&](unsigned i) { return fdb.remove(1, mac(i)); }, [&] { return fdb.size(); }},
               kEntries);
  // An entry that moves to a port never seen before.
  ASSERT_TRUE(fdb.add_static(1, mac(1), Destination::port(1)));
  {
    const Shortage shortage(1);
    EXPECT_THROW(fdb.add_static(1, mac(1), Destination::port(5000)), std::bad_alloc);
  }
  EXPECT_EQ(fdb.find(1, mac(1))->destination(), Destination::port(1));
  FdbFilter on_port;
  on_port.destination = Destination::port(1);
  on_port.up_to = FdbKind::static_entry;
  EXPECT_EQ(fdb.flush(on_port), 1u);

  VlanClassTable rules(4096, 4096);
  std::size_t count = 0;
  expect_whole({[&](unsigned i) {
                  const bool done = rules.set_ipv4(i << 8, i % 2 != 0 ? 0xffffff00 : ~0u, 5, 0);
                  return count += done, done;
                },
                [&](unsigned i) { return rules.by_ipv4(i << 8) != nullptr; },
                [&](unsigned i) {
                  --count;
                  return rules.set_ipv4(i << 8, i % 2 != 0 ? 0xffffff00 : ~0u, 0, 0);
                },
                [&] { return count; }},
               kEntries);
}

}  // namespace
}  // namespace softcard
