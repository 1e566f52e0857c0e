// SPDX-License-Identifier: Apache-2.0
#include "card_writer.h"

#include <algorithm>
#include <list>
#include <utility>
#include <vector>

#include "vornlcapi/api.h"

namespace agent {

namespace {

constexpr unsigned kFreshVlan = 1;  // holds all ports of a fresh card

std::array<std::uint8_t, 16> mask_of(unsigned length) {
  Ip mask;
  for (unsigned bit = 0; bit < length; ++bit) mask.set_bit(bit);
  return mask.bytes;
}

std::uint32_t ipv4_mask(unsigned length) {
  return length == 0 ? 0 : ~std::uint32_t{0} << (32 - length);
}

std::string name(const CardModel::Address& address) {
  return text(address.second) + " in VLAN " + std::to_string(address.first);
}

std::string name(unsigned port) { return "port " + std::to_string(port); }

}  // namespace

bool CardWriter::begin(unsigned ports) {
  Usp line_card(0, 0, 0);
  if (!vorn_get_line_card_usp(line_card)) return false;
  unit_ = line_card.unit();
  slot_ = line_card.slot();
  card_ = CardModel();
  vorn_clear_l3_route_table();
  vorn_clear_l3_host_table();
  vorn_delete_l3_interface_all();
  vorn_clear_fdb_table(true);
  std::list<Usp> all;
  for (unsigned port = 0; port < ports; ++port) all.push_back(usp(port));
  // Other VLANs than that of a fresh card may be in use, too.
  for (unsigned vlan = 1; vlan <= 4094; ++vlan) {
    std::list<Usp> tagged;
    std::list<Usp> untagged;
    if (!vorn_get_vlan_info(vlan, tagged, untagged)) continue;
    tagged.splice(tagged.end(), untagged);
    if (!tagged.empty()) vorn_delete_ports_from_vlan(vlan, tagged);
    if (vlan != kFreshVlan) vorn_delete_vlan(vlan);
  }
  int seconds = 0;
  if (vorn_get_fdb_aging_time(seconds)) card_.ageing_seconds = seconds;
  // A tag would take a frame into another port's VLAN.
  for (const Usp& port : all) vorn_set_port_ingress_discarding(port, INGRESS_DISCARD_TAGGED);
  return true;
}

void CardWriter::apply(const CardModel& model) {
  refused_.clear();
  remove_hosts_and_routes(model);
  for (const auto& [vlan, flushes] : model.vlans) {
    const auto there = card_.vlans.find(vlan);
    if (there == card_.vlans.end()) {
      if (!check("VLANs", vorn_create_vlan(vlan), std::to_string(vlan))) continue;
    } else if (there->second != flushes) {
      vorn_clear_fdb_by_vlan(vlan, false);
    }
    card_.vlans[vlan] = flushes;
  }
  for (const auto& [number, port] : model.ports) apply_port(number, port);
  if (model.ageing_seconds != card_.ageing_seconds &&
      check("settings", vorn_set_fdb_aging_time(model.ageing_seconds), "the ageing time")) {
    card_.ageing_seconds = model.ageing_seconds;
  }
  apply_routers(model);
  apply_addresses(model);
  apply_hosts(model);
  apply_routes(model);
  // What others led to is free only then.
  for (auto router = card_.routers.begin(); router != card_.routers.end();) {
    const bool goes = model.routers.count(router->first) == 0 &&
                      check("router interfaces", vorn_delete_l3_interface_by_id(router->first),
                            "the end of VLAN " + std::to_string(router->first));
    router = goes ? card_.routers.erase(router) : std::next(router);
  }
  for (auto vlan = card_.vlans.begin(); vlan != card_.vlans.end();) {
    const bool goes = model.vlans.count(vlan->first) == 0 &&
                      check("VLANs", vorn_delete_vlan(vlan->first), std::to_string(vlan->first));
    vlan = goes ? card_.vlans.erase(vlan) : std::next(vlan);
  }
  tell();
}

std::size_t CardWriter::missing() const {
  std::size_t count = 0;
  for (const auto& [kind, refused] : refused_) count += refused.count;
  return count;
}

// ---- Ports --------------------------------------------------------------------------------------

void CardWriter::apply_port(unsigned number, const PortModel& model) {
  const auto found = card_.ports.find(number);
  const bool fresh = found == card_.ports.end();
  PortModel& port = card_.ports[number];
  if (!fresh && port == model) return;
  const Usp at = usp(number);
  const auto set = [&](const char* setting, auto PortModel::*field, auto&& call) {
    if (!fresh && port.*field == model.*field) return;
    if (check("settings", call(), std::string(setting) + " of " + name(number))) {
      port.*field = model.*field;
    }
  };
  // Before the port is in another VLAN it lets in nothing that the new one would not.
  if (fresh || port.vlan != model.vlan) {
    if (!fresh) vorn_delete_ports_from_vlan(port.vlan, {at});
    set("the VLAN", &PortModel::vlan, [&] {
      return vorn_add_ports_to_vlan(model.vlan, {}, {at}) && vorn_set_port_pvid(at, model.vlan);
    });
  }
  set("the spanning-tree state", &PortModel::stp, [&] {
    // The result with `blocking` is that of the flush.
    stp_state_t state = STP_STATE_DISABLED;
    vorn_set_port_stp_state(at, model.stp);
    return vorn_get_port_stp_state(at, state) && state == model.stp;
  });
  set("the way of BPDUs", &PortModel::bpdus_to_cpu,
      [&] { return vorn_set_port_bpdu_processing(at, model.bpdus_to_cpu); });
  set("the way of unknown addresses", &PortModel::unknown_to_cpu,
      [&] { return vorn_set_port_switch_unknown_unicast_to_cpu(at, model.unknown_to_cpu); });
  set("the MTU", &PortModel::mtu_bytes, [&] { return vorn_set_port_mtu(at, model.mtu_bytes); });
  set("the state", &PortModel::on, [&] { return vorn_set_port_state(at, model.on); });
}

// ---- Addresses of layer 2 -----------------------------------------------------------------------

void CardWriter::apply_addresses(const CardModel& model) {
  for (auto own = card_.own_addresses.begin(); own != card_.own_addresses.end();) {
    const bool stays = model.own_addresses.count(*own) != 0;
    if (!stays) vorn_delete_mac(own->first, own->second.data());
    own = stays ? std::next(own) : card_.own_addresses.erase(own);
  }
  for (auto station = card_.stations.begin(); station != card_.stations.end();) {
    const bool stays = model.stations.count(station->first) != 0;
    if (!stays) vorn_delete_mac(station->first.first, station->first.second.data());
    station = stays ? std::next(station) : card_.stations.erase(station);
  }
  for (const auto& own : model.own_addresses) {
    if (card_.own_addresses.count(own) == 0 &&
        check("addresses", vorn_add_system_mac(own.second.data(), own.first), name(own))) {
      card_.own_addresses.insert(own);
    }
  }
  for (const auto& [address, port] : model.stations) {
    const auto there = card_.stations.find(address);
    if (there != card_.stations.end() && there->second == port) continue;
    if (check("addresses", vorn_add_mac_to_port(usp(port), address.second.data(), address.first),
              name(address))) {
      card_.stations[address] = port;
    }
  }
}

// ---- Layer 3 ------------------------------------------------------------------------------------

bool CardWriter::add(const Ip& ip, const Hop& hop) const {
  return ip.family == Family::v4
             ? vorn_add_l3_host_ip4(usp(hop.port), number(ip), hop.mac.data(), hop.vlan)
             : vorn_add_l3_host_ip6(usp(hop.port), ip.bytes.data(), hop.mac.data(), hop.vlan);
}

bool CardWriter::remove(const Ip& ip, const Hop& hop) const {
  return ip.family == Family::v4 ? vorn_delete_l3_host_by_addr_ip4(number(ip), usp(hop.port))
                                 : vorn_delete_l3_host_by_addr_ip6(ip.bytes.data(), usp(hop.port));
}

bool CardWriter::add(const Prefix& prefix, const Hop& hop) const {
  if (prefix.ip.family == Family::v4) {
    return vorn_add_l3_route_ip4(usp(hop.port), number(prefix.ip), ipv4_mask(prefix.length),
                                 hop.mac.data(), hop.vlan, 0);
  }
  return vorn_add_l3_route_ip6(usp(hop.port), prefix.ip.bytes.data(), mask_of(prefix.length).data(),
                               hop.mac.data(), hop.vlan);
}

bool CardWriter::remove(const Prefix& prefix, const Hop& hop) const {
  if (prefix.ip.family == Family::v4) {
    return vorn_delete_l3_route_by_subnet_ip4(number(prefix.ip), ipv4_mask(prefix.length),
                                              usp(hop.port));
  }
  return vorn_delete_l3_route_by_subnet_ip6(prefix.ip.bytes.data(), mask_of(prefix.length).data(),
                                            usp(hop.port));
}

// The card knows hosts and routes by their port, too: one that changes it is another one.
void CardWriter::remove_hosts_and_routes(const CardModel& model) {
  for (auto host = card_.hosts.begin(); host != card_.hosts.end();) {
    const auto stays = model.hosts.find(host->first);
    if (stays != model.hosts.end() && stays->second.port == host->second.port) {
      ++host;
      continue;
    }
    remove(host->first, host->second);
    host = card_.hosts.erase(host);
  }
  auto wanted = model.routes.begin();
  const auto goes = [&](const auto& route) {
    while (wanted != model.routes.end() && wanted->first < route.first) ++wanted;
    const bool stays = wanted != model.routes.end() && wanted->first == route.first &&
                       wanted->second.port == route.second.port;
    if (!stays) remove(route.first, route.second);
    return !stays;
  };
  card_.routes.erase(std::remove_if(card_.routes.begin(), card_.routes.end(), goes),
                     card_.routes.end());
}

void CardWriter::apply_routers(const CardModel& model) {
  for (const auto& [vlan, mac] : model.routers) {
    const auto there = card_.routers.find(vlan);
    if (there != card_.routers.end() && there->second == mac) continue;
    if (check("router interfaces",
              vorn_create_l3_interface_with_id(mac.data(), vlan, vlan, /*replace=*/true),
              name({vlan, mac}))) {
      card_.routers[vlan] = mac;
    }
  }
}

void CardWriter::apply_hosts(const CardModel& model) {
  for (const auto& [ip, hop] : model.hosts) {
    const auto there = card_.hosts.find(ip);
    if (there != card_.hosts.end() && there->second == hop) continue;
    if (check("hosts", add(ip, hop), text(ip))) {
      card_.hosts[ip] = hop;
    } else if (there != card_.hosts.end()) {
      remove(ip, there->second);
      card_.hosts.erase(there);
    }
  }
}

void CardWriter::apply_routes(const CardModel& model) {
  struct Change {
    const std::pair<Prefix, Hop>* route;
    bool there;  // with another next hop
  };
  std::vector<Change> changes;
  auto there = card_.routes.begin();
  for (const auto& route : model.routes) {
    while (there != card_.routes.end() && there->first < route.first) ++there;
    const bool found = there != card_.routes.end() && there->first == route.first;
    if (!found || !(there->second == route.second)) changes.push_back({&route, found});
  }
  if (changes.empty()) return;
  // What is more specific is there first.
  std::stable_sort(changes.begin(), changes.end(), [](const Change& a, const Change& b) {
    return a.route->first.length > b.route->first.length;
  });
  std::set<Prefix> gaps;
  for (const auto& [route, replaces] : changes) {
    if (add(route->first, route->second)) continue;
    gaps.insert(route->first);
    if (replaces) remove(route->first, route->second);
  }
  card_.routes = model.routes;
  if (gaps.empty()) return;
  // Whatever lies within a prefix stands behind it.
  const auto is_around_a_gap = [&](const Prefix& prefix) {
    const auto gap = gaps.lower_bound(prefix);
    return gap != gaps.end() && contains(prefix, *gap);
  };
  const auto goes = [&](const auto& route) {
    if (!is_around_a_gap(route.first)) return false;
    if (gaps.count(route.first) == 0) remove(route.first, route.second);
    check("routes", false, text(route.first));
    return true;
  };
  card_.routes.erase(std::remove_if(card_.routes.begin(), card_.routes.end(), goes),
                     card_.routes.end());
}

// ---- What the card refuses ----------------------------------------------------------------------

bool CardWriter::check(const char* kind, bool done, const std::string& what) {
  if (done) return true;
  Refused& refused = refused_[kind];
  if (refused.count++ == 0) refused.first = what;
  return false;
}

void CardWriter::tell() {
  for (const auto& [kind, refused] : refused_) {
    const auto told = told_.find(kind);
    if (told != told_.end() && told->second.first == refused.first) continue;
    report_("the card refuses " + std::to_string(refused.count) + " of the " + kind + ", " +
            refused.first + " first; Linux handles what they are for");
  }
  for (const auto& [kind, told] : told_) {
    if (refused_.count(kind) == 0) report_("the card has taken all " + kind);
  }
  told_ = refused_;
}

}  // namespace agent
