// SPDX-License-Identifier: Apache-2.0
//
// What Linux knows of the switch: interfaces, bridges, addresses, neighbours and routes of one
// network namespace. netlink.h fills it; the planner reads it. Interfaces are named by the kernel's
// index, which stays when they are renamed.
#ifndef AGENT_LINUX_STATE_H_
#define AGENT_LINUX_STATE_H_

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "net.h"

namespace agent {

// State of a bridge port, with the kernel's numbers.
enum class BridgePortState : std::uint8_t { disabled, listening, learning, forwarding, blocking };

struct Bridge {
  bool stp = false;
  unsigned ageing_seconds = 300;  // 0: addresses do not age
  unsigned forward_delay_seconds = 15;
  bool topology_change = false;
  unsigned topology_changes = 0;  // how many have begun
};

struct Link {
  std::string name;
  bool up = false;       // switched on by the user
  bool carrier = false;  // and has a link
  unsigned mtu = 1500;   // bytes of an IP packet
  Mac mac{};
  int master = 0;  // the bridge that it is a port of
  bool is_bridge = false;
  Bridge bridge;                                           // of a bridge
  BridgePortState port_state = BridgePortState::disabled;  // of a bridge port
  bool isolated = false;                                   // of a bridge port
  bool forwards_v4 = false;                                // routing is on
  bool forwards_v6 = false;
};

// An address of a bridge's forwarding table.
enum class FdbKind : std::uint8_t {
  local,      // the bridge's own: frames to it go to the kernel
  fixed,      // static: set by the user
  learned,    // by the kernel, or set as if it were
  from_card,  // learned by the card
};

struct Neighbour {
  Mac mac{};
  bool resolved = false;  // `mac` is right
  bool managed = false;   // the kernel keeps it alive by itself
};

inline bool operator==(const Neighbour& a, const Neighbour& b) {
  return a.mac == b.mac && a.resolved == b.resolved && a.managed == b.managed;
}

enum class RouteKind : std::uint8_t {
  unicast,
  local,  // to this machine itself, and everything else that only the kernel can do
};

// One of the ways of a route.
struct RouteLeg {
  int interface = 0;
  bool has_gateway = false;  // else the destinations are on the interface's own link
  Ip gateway;
};
inline bool operator==(const RouteLeg& a, const RouteLeg& b) {
  return a.interface == b.interface && a.has_gateway == b.has_gateway && a.gateway == b.gateway;
}

struct Route {
  RouteKind kind = RouteKind::unicast;
  std::vector<RouteLeg> legs;
};

// Routes with the same key are alternatives: the first of them is used.
struct RouteKey {
  Prefix prefix;
  std::uint32_t metric = 0;
  std::uint32_t table = 0;
};
inline bool operator<(const RouteKey& a, const RouteKey& b) {
  return std::tie(a.prefix, a.metric, a.table) < std::tie(b.prefix, b.metric, b.table);
}

enum class RouteChange : std::uint8_t { add, append, replace };

class LinuxState {
 public:
  using FdbKey = std::pair<int, Mac>;       // the bridge port, and the address
  using NeighbourKey = std::pair<int, Ip>;  // the interface, and the address

  std::map<int, Link> links;
  std::map<FdbKey, FdbKind> fdb;
  std::map<int, std::set<Ip>> addresses;
  std::map<NeighbourKey, Neighbour> neighbours;
  std::map<RouteKey, std::vector<Route>> routes;

  const Link* link(int index) const {
    const auto found = links.find(index);
    return found == links.end() ? nullptr : &found->second;
  }

  // Removes an interface with all that hangs on it.
  void remove_link(int index);

  // IPv4 keeps alternatives apart: `replace` changes the first of them and `append` adds one
  // behind. An IPv6 message always carries the whole route.
  void add_route(const RouteKey& key, const Route& route, RouteChange change);
  // IPv4 removes an alternative. IPv6 removes the legs given from the route.
  void remove_route(const RouteKey& key, const Route& route);
};

}  // namespace agent

#endif  // AGENT_LINUX_STATE_H_
