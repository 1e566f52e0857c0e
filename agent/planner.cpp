// SPDX-License-Identifier: Apache-2.0
#include "planner.h"

#include <algorithm>
#include <optional>

#include "route_plan.h"

namespace agent {

namespace {

constexpr unsigned kEthernetHeaderBytes = 14;

stp_state_t stp_state(BridgePortState state) {
  switch (state) {
    case BridgePortState::listening:
      return STP_STATE_LISTENING;
    case BridgePortState::learning:
      return STP_STATE_LEARNING;
    case BridgePortState::forwarding:
      return STP_STATE_FORWARDING;
    case BridgePortState::blocking:
      return STP_STATE_BLOCKING;
    case BridgePortState::disabled:
      break;
  }
  return STP_STATE_DISABLED;
}

// One plan in the making.
class Draft {
 public:
  Draft(const LinuxState& linux_state, const PortLinks& ports, const LearnedStations& learned,
        const std::map<int, unsigned>& bridge_vlans)
      : linux_(linux_state), learned_(learned), bridge_vlans_(bridge_vlans) {
    for (const auto& [port, index] : ports) port_of_[index] = port;
  }

  Plan make() {
    for (const auto& [index, vlan] : bridge_vlans_) {
      plan_.bridges[vlan] = index;
      plan_.card.vlans[vlan] = linux_.link(index)->bridge.topology_changes;
    }
    for (const auto& [index, port] : port_of_) {
      if (const Link* const link = linux_.link(index)) add_port(port, index, *link);
    }
    add_ageing();
    add_bridge_addresses();
    add_routers();
    add_neighbours_and_routes();
    return std::move(plan_);
  }

 private:
  // The bridge that an interface is a port of; null for none.
  const Link* bridge_of(const Link& link) const {
    const Link* const master = linux_.link(link.master);
    return master != nullptr && master->is_bridge ? master : nullptr;
  }

  // The VLAN of a front-panel port or bridge; 0 for other interfaces, and for a bridge port, whose
  // packets are the bridge's.
  unsigned vlan_of(int index) const {
    const auto bridge = bridge_vlans_.find(index);
    if (bridge != bridge_vlans_.end()) return bridge->second;
    const auto port = port_of_.find(index);
    const Link* const link = linux_.link(index);
    if (port == port_of_.end() || link == nullptr || bridge_of(*link) != nullptr) return 0;
    return Planner::port_vlan(port->second);
  }

  void add_port(unsigned number, int index, const Link& link) {
    PortModel& port = plan_.card.ports[number];
    port.on = link.up;
    port.mtu_bytes = link.mtu + kEthernetHeaderBytes;
    const Link* const bridge = bridge_of(link);
    if (bridge == nullptr) {
      port.vlan = Planner::port_vlan(number);
      plan_.card.vlans[port.vlan] = 0;
      plan_.card.own_addresses.insert({port.vlan, link.mac});
      return;
    }
    port.vlan = bridge_vlans_.at(link.master);
    port.stp = stp_state(link.port_state);
    port.bpdus_to_cpu = bridge->bridge.stp;
    port.unknown_to_cpu = has_other_ports(link.master);
    if (!link.isolated) plan_.to_isolate.push_back(index);
  }

  // Whether a bridge has ports that are not the switch's.
  bool has_other_ports(int bridge) const {
    return std::any_of(linux_.links.begin(), linux_.links.end(), [&](const auto& entry) {
      return entry.second.master == bridge && port_of_.count(entry.first) == 0;
    });
  }

  // The card has one time for all addresses: the shortest that a bridge asks for.
  void add_ageing() {
    std::optional<unsigned> shortest;
    for (const auto& [index, vlan] : bridge_vlans_) {
      const Bridge& bridge = linux_.link(index)->bridge;
      const unsigned seconds =
          bridge.topology_change ? bridge.forward_delay_seconds : bridge.ageing_seconds;
      if (seconds != 0) shortest = std::min(shortest.value_or(seconds), seconds);
    }
    // Addresses of ports without a bridge mean nothing.
    const bool never = !bridge_vlans_.empty() && !shortest;
    plan_.card.ageing_seconds = never ? 0 : static_cast<int>(shortest.value_or(300));
  }

  // Frames to the bridge itself, and to stations behind ports that the card does not have, are for
  // Linux; static addresses are the card's, too.
  void add_bridge_addresses() {
    for (const auto& [key, kind] : linux_.fdb) {
      const auto& [index, mac] = key;
      const Link* const link = linux_.link(index);
      if (link == nullptr || kind == FdbKind::from_card || is_group(mac)) continue;
      const auto vlan = bridge_vlans_.find(link->is_bridge ? index : link->master);
      if (vlan == bridge_vlans_.end()) continue;
      const auto port = port_of_.find(index);
      if (kind == FdbKind::local || port == port_of_.end()) {
        plan_.card.own_addresses.insert({vlan->second, mac});
      } else if (kind == FdbKind::fixed) {
        plan_.card.stations[{vlan->second, mac}] = port->second;
      }
    }
    for (const auto& [index, vlan] : bridge_vlans_) {
      plan_.card.own_addresses.insert({vlan, linux_.link(index)->mac});
    }
    for (const auto& own : plan_.card.own_addresses) plan_.card.stations.erase(own);
  }

  // Where Linux routes packets the card does.
  void add_routers() {
    for (const auto& [index, link] : linux_.links) {
      const unsigned vlan = vlan_of(index);
      const auto addresses = linux_.addresses.find(index);
      if (vlan == 0 || !link.up || addresses == linux_.addresses.end()) continue;
      const bool routes = std::any_of(
          addresses->second.begin(), addresses->second.end(), [&link = link](const Ip& ip) {
            return ip.family == Family::v4 ? link.forwards_v4 : link.forwards_v6;
          });
      if (routes) plan_.card.routers[vlan] = link.mac;
    }
  }

  // The way to a neighbour that Linux has resolved and that a router interface of the card reaches.
  std::optional<Hop> hop_to(int index, const Ip& ip) const {
    const Link* const link = linux_.link(index);
    const auto neighbour = linux_.neighbours.find({index, ip});
    const unsigned vlan = vlan_of(index);
    if (link == nullptr || !link->carrier || plan_.card.routers.count(vlan) == 0 ||
        !(ip.family == Family::v4 ? link->forwards_v4 : link->forwards_v6) ||
        neighbour == linux_.neighbours.end() || !neighbour->second.resolved) {
      return std::nullopt;
    }
    const Mac& mac = neighbour->second.mac;
    const auto port = port_of_.find(index);
    if (port != port_of_.end()) return Hop{port->second, vlan, mac};
    const auto fixed = plan_.card.stations.find({vlan, mac});
    if (fixed != plan_.card.stations.end()) return Hop{fixed->second, vlan, mac};
    const auto learned = learned_.find({vlan, mac});
    if (learned == learned_.end()) return std::nullopt;
    return Hop{learned->second, vlan, mac};
  }

  // Many routes share few gateways.
  const std::optional<Hop>& hop_of_gateway(const LinuxState::NeighbourKey& gateway) {
    const auto [entry, fresh] = gateway_hops_.try_emplace(gateway);
    if (fresh) {
      entry->second = hop_to(gateway.first, gateway.second);
      if (plan_.card.routers.count(vlan_of(gateway.first)) != 0) plan_.gateways.insert(gateway);
    }
    return entry->second;
  }

  void add_neighbours_and_routes() {
    std::vector<PlannedRoute> routes;
    routes.reserve(linux_.routes.size());
    // By prefix, the lowest metric first: that is the one that counts.
    const Prefix* last = nullptr;
    for (const auto& [key, alternatives] : linux_.routes) {
      if (last != nullptr && *last == key.prefix) continue;
      last = &key.prefix;
      routes.push_back(planned(key.prefix, alternatives.front()));
    }
    for (const auto& [key, neighbour] : linux_.neighbours) {
      const auto& [index, ip] = key;
      if (stays_on_link(ip) || link_of(routes, ip) != index) continue;
      if (const auto hop = hop_to(index, ip)) plan_.card.hosts[ip] = *hop;
    }
    plan_.left_to_linux = cover(routes, plan_.card.routes);
  }

  // The card sends packets to the first next hop that is alive; Linux has the rest of them.
  PlannedRoute planned(const Prefix& prefix, const Route& route) {
    PlannedRoute result;
    result.prefix = prefix;
    if (route.kind != RouteKind::unicast) return result;
    if (route.legs.size() > 1) ++plan_.several_next_hops;
    for (const RouteLeg& leg : route.legs) {
      const Link* const link = linux_.link(leg.interface);
      if (link == nullptr || !link->up || !link->carrier) continue;
      if (!leg.has_gateway) {
        result.on_link = leg.interface;
        break;
      }
      result.hop = hop_of_gateway({leg.interface, leg.gateway});
      break;
    }
    return result;
  }

  const LinuxState& linux_;
  const LearnedStations& learned_;
  const std::map<int, unsigned>& bridge_vlans_;
  std::map<int, unsigned> port_of_;  // the front-panel port of a tap
  std::map<LinuxState::NeighbourKey, std::optional<Hop>> gateway_hops_;
  Plan plan_;
};

}  // namespace

Plan Planner::plan(const LinuxState& linux_state, const PortLinks& ports,
                   const LearnedStations& learned) {
  for (auto entry = bridge_vlans_.begin(); entry != bridge_vlans_.end();) {
    const Link* const link = linux_state.link(entry->first);
    entry = link != nullptr && link->is_bridge ? std::next(entry) : bridge_vlans_.erase(entry);
  }
  for (const auto& [index, link] : linux_state.links) {
    if (!link.is_bridge || bridge_vlans_.count(index) != 0) continue;
    unsigned vlan = kFirstBridgeVlan;
    const auto taken = [&](const auto& entry) { return entry.second == vlan; };
    while (std::any_of(bridge_vlans_.begin(), bridge_vlans_.end(), taken)) ++vlan;
    bridge_vlans_[index] = vlan;
  }
  return Draft(linux_state, ports, learned, bridge_vlans_).make();
}

}  // namespace agent
