// SPDX-License-Identifier: Apache-2.0
#include "linux_state.h"

#include <algorithm>

namespace agent {

namespace {

// Removes the entries whose key begins with `index`.
template <class Map>
void remove_of(Map& map, int index) {
  for (auto entry = map.begin(); entry != map.end();) {
    entry = entry->first.first == index ? map.erase(entry) : std::next(entry);
  }
}

}  // namespace

void LinuxState::remove_link(int index) {
  links.erase(index);
  addresses.erase(index);
  remove_of(fdb, index);
  remove_of(neighbours, index);
}

void LinuxState::add_route(const RouteKey& key, const Route& route, RouteChange change) {
  std::vector<Route>& alternatives = routes[key];
  if (key.prefix.ip.family == Family::v6) {
    alternatives.assign(1, route);
  } else if (change == RouteChange::replace && !alternatives.empty()) {
    alternatives.front() = route;
  } else {
    const bool there = std::any_of(
        alternatives.begin(), alternatives.end(),
        [&](const Route& other) { return other.kind == route.kind && other.legs == route.legs; });
    if (!there) alternatives.push_back(route);
  }
}

void LinuxState::remove_route(const RouteKey& key, const Route& route) {
  const auto found = routes.find(key);
  if (found == routes.end()) return;
  std::vector<Route>& alternatives = found->second;
  if (key.prefix.ip.family == Family::v6) {
    std::vector<RouteLeg>& legs = alternatives.front().legs;
    const auto gone = [&](const RouteLeg& leg) {
      return std::find(route.legs.begin(), route.legs.end(), leg) != route.legs.end();
    };
    legs.erase(std::remove_if(legs.begin(), legs.end(), gone), legs.end());
    if (legs.empty()) alternatives.clear();
  } else {
    const auto same = std::find_if(
        alternatives.begin(), alternatives.end(),
        [&](const Route& other) { return other.kind == route.kind && other.legs == route.legs; });
    alternatives.erase(same == alternatives.end() ? alternatives.begin() : same);
  }
  if (alternatives.empty()) routes.erase(found);
}

}  // namespace agent
