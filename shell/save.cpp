// SPDX-License-Identifier: Apache-2.0
#include "save.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <map>
#include <memory>
#include <tuple>
#include <utility>

#include "card_text.h"
#include "codec.h"
#include "names.h"
#include "shell.h"
#include "softcard/base/text.h"
#include "softcard/cables/linux_cable.h"
#include "softcard/cables/memory_cable.h"
#include "softcard/cables/pcap_cable.h"
#include "softcard/cables/unix_cable.h"

namespace shell {

namespace {

using softcard::Card;
using softcard::PortIndex;
using softcard::PortSet;
using softcard::Tables;

std::string word(const std::string& text) { return quoted(text); }
std::string word(const char* text) { return text; }
std::string word(bool on) { return flag_value(on).text; }
std::string word(int number) { return std::to_string(number); }
std::string word(unsigned number) { return std::to_string(number); }
std::string word(const PortSet& ports) { return ports_value(ports).text; }
std::string word(const Usp& port) { return port_value(port).text; }
std::string word(const softcard::MacAddress& mac) { return mac_value(mac).text; }
std::string word(softcard::Ipv6Address ip) { return address_value(ip).text; }
template <class Enumeration, class = std::enable_if_t<std::is_enum_v<Enumeration>>>
std::string word(Enumeration value) {
  return enum_value(value).text;
}

class Config {
 public:
  explicit Config(Card& card)
      : card_(card),
        now_(card.tables()),
        fresh_card_(card.description(), std::make_shared<softcard::VirtualClock>()),
        fresh_(fresh_card_.tables()) {}

  std::vector<std::string> lines() {
    lines_ = {
        "# The configuration of a card of " + std::to_string(now_.ports.count()) +
            " ports: what leads there from a fresh one.",
        "# No call makes these, and they are not here: learned addresses, counters, frames and",
        "# events that wait, callbacks, traces, failures on purpose, the time."};
    family("Ports", [this] { ports(); });
    family("VLANs", [this] { vlans(); });
    family("What puts frames into VLANs", [this] { vlan_rules(); });
    family("LAGs", [this] { lags(); });
    family("Spanning tree", [this] { stp(); });
    family("Traffic", [this] { traffic(); });
    family("MAC table", [this] { mac_table(); });
    family("Layer 3", [this] { l3(); });
    family("Flows", [this] { flows(); });
    family("Filters", [this] { filters(); });
    family("Cables", [this] { cables(); });
    return std::move(lines_);
  }

 private:
  // ---- Lines ------------------------------------------------------------------------------------

  template <class Write>
  void family(const char* name, Write&& write) {
    const std::size_t before = lines_.size();
    write();
    if (lines_.size() == before) return;
    lines_.insert(lines_.begin() + static_cast<std::ptrdiff_t>(before),
                  {"", std::string("# ") + name});
  }
  template <class... Words>
  void call(const std::string& name, const Words&... words) {
    std::string line = name;
    ((line += ' ' + word(words)), ...);
    lines_.push_back(std::move(line));
  }
  void remark(const std::string& text) { lines_.push_back("# " + text); }

  static Usp usp(PortIndex port) { return softcard::AddressPlan::usp_of(port); }
  Usp usp(softcard::Destination destination) const { return now_.usp_of(destination); }
  const PortSet& all() const { return now_.ports.all(); }

  // Calls write(ports, value) for each value that ports have and that a fresh card does not have
  // there; get(tables, port) reads it.
  template <class Get, class Write>
  void by_value(Get&& get, Write&& write) {
    using Setting = decltype(get(now_, PortIndex{}));
    std::vector<std::pair<Setting, PortSet>> settings;
    for (const PortIndex port : all()) {
      const Setting value = get(now_, port);
      if (value == get(fresh_, port)) continue;
      auto same = std::find_if(settings.begin(), settings.end(),
                               [&](const auto& setting) { return setting.first == value; });
      if (same == settings.end()) same = settings.insert(settings.end(), {value, PortSet()});
      same->second.insert(port);
    }
    for (const auto& [value, ports] : settings) write(ports, value);
  }
  // The same for an entry point that takes a list of ports, and for one that takes one.
  template <class Get>
  void list_setting(const char* name, Get&& get) {
    by_value(get, [&](const PortSet& ports, const auto& value) { call(name, ports, value); });
  }
  template <class Get>
  void setting(const char* name, Get&& get) {
    by_value(get, [&](const PortSet& ports, const auto& value) {
      for (const PortIndex port : ports) call(name, usp(port), value);
    });
  }

  // ---- Families ---------------------------------------------------------------------------------

  void ports() {
    by_value(
        [](const Tables& tables, PortIndex port) {
          const softcard::LinkMode fixed = tables.ports.fixed(port);
          return std::make_tuple(fixed.speed, fixed.duplex, tables.ports.autoneg(port));
        },
        [this](const PortSet& ports, const auto& mode) {
          // Either call ends autonegotiation, and fixes a mode for the time without.
          for (const PortIndex port : ports) {
            call("vorn_set_port_speed", usp(port), std::get<0>(mode));
            call("vorn_set_port_duplex", usp(port), std::get<1>(mode));
            if (std::get<2>(mode)) call("vorn_set_port_autoneg", usp(port), true);
          }
        });
    setting("vorn_set_port_advertising_ability", [](const Tables& tables, PortIndex port) {
      return static_cast<port_ability_type_t>(tables.ports.advertised(port));
    });
    by_value(
        [](const Tables& tables, PortIndex port) {
          return std::make_pair(tables.ports.pause_transmit(port),
                                tables.ports.pause_receive(port));
        },
        [this](const PortSet& ports, const auto& pause) {
          call("vorn_set_ports_flow_control_8023x", ports, pause.first, pause.second);
        });
    setting("vorn_set_port_jaming_control",
            [](const Tables& tables, PortIndex port) { return tables.ports.jamming(port); });
    list_setting("vorn_set_ports_mtu",
                 [](const Tables& tables, PortIndex port) { return tables.ports.mtu_bytes(port); });
    setting("vorn_set_port_stat_enable",
            [](const Tables& tables, PortIndex port) { return tables.counters.enabled(port); });
    setting("vorn_set_port_link_state", [](const Tables& tables, PortIndex port) {
      return tables.ports.phy_forced_down(port) ? PHY_STATE_DOWN : PHY_STATE_UP;
    });
    list_setting("vorn_set_ports_state",
                 [](const Tables& tables, PortIndex port) { return tables.ports.admin(port); });
  }

  void vlans() {
    for (unsigned vlan = 1; vlan <= softcard::kMaxVlan; ++vlan) {
      if (fresh_.vlans.exists(vlan) && !now_.vlans.exists(vlan)) call("vorn_delete_vlan", vlan);
    }
    for (unsigned vlan = 1; vlan <= softcard::kMaxVlan; ++vlan) {
      if (!now_.vlans.exists(vlan)) continue;
      const bool is_new = !fresh_.vlans.exists(vlan);
      if (is_new) call("vorn_create_vlan", vlan);
      const PortSet before = is_new ? PortSet() : fresh_.vlans.members(vlan);
      const PortSet untagged_before = is_new ? PortSet() : fresh_.vlans.untagged(vlan);
      const PortSet gone = before - now_.vlans.members(vlan);
      if (!gone.empty()) call("vorn_delete_ports_from_vlan", vlan, gone);
      const PortSet tagged = now_.vlans.tagged(vlan) - (before - untagged_before);
      const PortSet untagged = now_.vlans.untagged(vlan) - untagged_before;
      if (!tagged.empty() || !untagged.empty()) {
        call("vorn_add_ports_to_vlan", vlan, tagged, untagged);
      }
    }
  }

  void vlan_rules() {
    list_setting("vorn_set_ports_pvid", [](const Tables& tables, PortIndex port) {
      return unsigned{tables.port_vlans.pvid(port)};
    });
    setting("vorn_set_port_vlan_accept_frame", [](const Tables& tables, PortIndex port) {
      return tables.port_vlans.accepts_untagged(port);
    });
    // VLAN 0 stands for all that have no priority of their own.
    by_value(
        [](const Tables& tables, PortIndex port) { return tables.port_vlans.priority(port, 0); },
        [this](const PortSet& ports, unsigned priority) {
          for (const PortIndex port : ports) {
            call("vorn_set_port_vlan_priority", usp(port), 0, priority);
          }
        });
    for (const PortIndex port : all()) {
      for (unsigned vlan = 1; vlan <= softcard::kMaxVlan; ++vlan) {
        if (!now_.port_vlans.has_own_priority(port, vlan)) continue;
        call("vorn_set_port_vlan_priority", usp(port), vlan, now_.port_vlans.priority(port, vlan));
      }
    }
    for (const PortIndex port : all()) {
      for (const softcard::ProtocolVlan& rule : now_.port_vlans.protocol_vlans(port)) {
        call("vorn_set_port_protocol_vlan", usp(port), rule.type, softcard::hex_text(rule.protocol),
             unsigned{rule.vlan});
      }
    }
    const auto rule_words = [](softcard::VlanClass rule) {
      return std::make_pair(unsigned{rule.vlan}, unsigned{rule.priority});
    };
    now_.vlan_classes.for_each_mac([&](const softcard::MacAddress& mac, softcard::VlanClass rule) {
      const auto [vlan, priority] = rule_words(rule);
      call("vorn_set_mac_vlan", mac, vlan, priority);
    });
    now_.vlan_classes.for_each_ipv4(
        [&](softcard::Ipv4 ip, unsigned length, softcard::VlanClass rule) {
          const auto [vlan, priority] = rule_words(rule);
          call("vorn_set_ipv4_subnet_vlan", ip4_text(ip), slash(length), vlan, priority);
        });
    now_.vlan_classes.for_each_ipv6(
        [&](const softcard::Ipv6Address& ip, unsigned length, softcard::VlanClass rule) {
          const auto [vlan, priority] = rule_words(rule);
          call("vorn_set_ipv6_subnet_vlan", ip, length, vlan, priority);
        });
  }

  // A new LAG gets the lowest free id. Ids that are free below others are kept by LAGs that are
  // deleted at the end.
  void lags() {
    const softcard::LagTable& lags = now_.lags;
    PortSet used;  // numbers of LAG interfaces
    std::size_t count = 0;
    for (std::size_t id = 0; id < lags.id_count(); ++id) {
      if (!lags[id].exists) continue;
      count = id + 1;
      const Usp lag = lags.usp_of(static_cast<unsigned>(id));
      if (softcard::AddressPlan::is_lag(lag)) used.insert(static_cast<PortIndex>(lag.port()));
    }
    std::vector<Usp> placeholders;
    PortIndex spare = 1;
    for (unsigned id = 0; id < count; ++id) {
      const Usp lag = lags.usp_of(id);
      if (lags[id].exists && softcard::AddressPlan::is_lag(lag)) {
        call("vorn_create_lag", lag);
        continue;
      }
      if (lags[id].exists) remark(lags.text(id) + " has no interface, and no call makes it");
      while (used.contains(spare)) ++spare;
      placeholders.push_back(softcard::AddressPlan::lag_usp(spare++));
      call("vorn_create_lag", placeholders.back());
    }
    for (const Usp& lag : placeholders) call("vorn_delete_lag", lag);
    for (unsigned id = 0; id < count; ++id) {
      const softcard::Lag& lag = lags[id];
      const Usp interface = lags.usp_of(id);
      if (!lag.exists || !softcard::AddressPlan::is_lag(interface)) continue;
      if (lag.psc != softcard::Lag().psc) {
        call("vorn_set_lag_balancing_strategy", interface, lag.psc);
      }
      if (lag.size == 0) continue;
      // Their order chooses among them.
      std::vector<std::string> members;
      for (unsigned i = 0; i < lag.size; ++i) members.push_back(port_text(lag.members[i]));
      call("vorn_add_ports_to_lag", interface, joined(members, ","));
    }
  }

  void stp() {
    list_setting("vorn_set_ports_stp_state",
                 [](const Tables& tables, PortIndex port) { return tables.stp.stp(port); });
    for (unsigned instance = 0; instance < softcard::kMstpInstances; ++instance) {
      by_value([instance](const Tables& tables,
                          PortIndex port) { return tables.stp.mstp(instance, port); },
               [&](const PortSet& ports, mstp_state_t state) {
                 call("vorn_set_ports_mstp_state", ports, state, instance);
               });
    }
    setting("vorn_set_port_bpdu_processing",
            [](const Tables& tables, PortIndex port) { return tables.stp.bpdu_processing(port); });
  }

  void traffic() {
    const std::pair<const char*, softcard::StormKind> kStorms[] = {
        {"vorn_set_port_unicast_control", softcard::StormKind::unknown_unicast},
        {"vorn_set_port_multicast_control", softcard::StormKind::multicast},
        {"vorn_set_port_broadcast_control", softcard::StormKind::broadcast}};
    for (const auto& [name, kind] : kStorms) {
      setting(name, [kind = kind](const Tables& tables, PortIndex port) {
        return unsigned{tables.traffic.storm_limit(port, kind)};
      });
    }
    for (const PortIndex port : all()) {
      const auto& session = now_.mirrors[port];
      if (session.type == MIRROR_TYPE_NONE) continue;
      call("vorn_set_port_mirror", usp(session.to), usp(port), session.type);
    }
    list_setting("vorn_set_port_flood_blocking_cpu", [](const Tables& tables, PortIndex port) {
      return tables.flood_blocks.get_to_cpu(port);
    });
    for (const PortIndex to : all()) {
      by_value(
          [to](const Tables& tables, PortIndex from) { return tables.flood_blocks.get(from, to); },
          [&](const PortSet& from, flood_block_type_t kinds) {
            call("vorn_set_port_flood_blocking", from, usp(to), kinds);
          });
    }
    setting(
        "vorn_set_port_switch_unknown_unicast_to_cpu",
        [](const Tables& tables, PortIndex port) { return tables.traffic.unknown_to_cpu(port); });
    if (now_.traffic.switch_unknown_to_cpu() != fresh_.traffic.switch_unknown_to_cpu()) {
      call("vorn_set_switch_unknown_unicast_to_cpu", now_.traffic.switch_unknown_to_cpu());
    }
    for (unsigned priority = 0; priority < softcard::kPriorities; ++priority) {
      by_value([priority](const Tables& tables,
                          PortIndex port) { return tables.cos.queue(port, priority); },
               [&](const PortSet& ports, unsigned queue) {
                 for (const PortIndex port : ports) {
                   call("vorn_set_port_cos_mapping", usp(port), priority, queue);
                 }
               });
    }
    setting("vorn_set_port_ingress_discarding", [](const Tables& tables, PortIndex port) {
      return tables.traffic.ingress_discard(port);
    });
    setting("vorn_set_port_egress_admin_state",
            [](const Tables& tables, PortIndex port) { return tables.traffic.egress_on(port); });
    setting("vorn_set_port_l2_enable",
            [](const Tables& tables, PortIndex port) { return tables.traffic.l2_on(port); });
    if (now_.traffic.forward_mode() != fresh_.traffic.forward_mode()) {
      call("vorn_set_switch_forward_mode",
           name_value(forward_mode_names(), now_.traffic.forward_mode()).text);
    }
  }

  void mac_table() {
    if (now_.fdb.ageing_seconds() != fresh_.fdb.ageing_seconds()) {
      call("vorn_set_fdb_aging_time", unsigned{now_.fdb.ageing_seconds()});
    }
    now_.fdb.for_each([this](const softcard::FdbEntry& entry) {
      if (entry.kind() == softcard::FdbKind::static_entry) {
        call("vorn_add_mac_to_port", usp(entry.destination()), entry.mac(), unsigned{entry.vlan()});
      } else if (entry.kind() == softcard::FdbKind::system_entry) {
        call("vorn_add_system_mac", entry.mac(), unsigned{entry.vlan()});
      }
    });
    const softcard::MacLockTable& locks = now_.mac_locks;
    by_value(
        [](const Tables& tables, PortIndex port) {
          return std::make_pair(tables.mac_locks.locked(port), tables.mac_locks.drop_setting(port));
        },
        [this](const PortSet& ports, const auto& lock) {
          for (const PortIndex port : ports) {
            call("vorn_set_port_mac_lock_ext", usp(port), lock.first, lock.second);
          }
        });
    setting("vorn_set_port_mac_limit",
            [](const Tables& tables, PortIndex port) { return tables.mac_locks.port_limit(port); });
    if (locks.system_limit() != fresh_.mac_locks.system_limit()) {
      call("vorn_set_system_mac_limit", locks.system_limit());
    }
    const auto lost = [this](const Usp& of, int limit) {
      if (limit == softcard::kNoMacLimit) return;
      remark("no call sets the limit of " + std::to_string(limit) + " addresses of " +
             port_value(of).text);
    };
    for (unsigned id = 0; id < now_.lags.id_count(); ++id) {
      lost(now_.lags.usp_of(id), locks.lag_limit(id));
    }
    for (unsigned vlan = 1; vlan <= softcard::kMaxVlan; ++vlan) {
      lost(softcard::AddressPlan::vlan_usp(vlan), locks.vlan_limit(vlan));
    }
  }

  static std::string slash(unsigned length) { return '/' + std::to_string(length); }

  void l3() {
    for_each_in_order(now_.l3.interfaces, [this](const softcard::L3Interface& interface) {
      call("vorn_create_l3_interface_with_id", interface.mac, unsigned{interface.vlan},
           unsigned{interface.id}, false);
    });
    const auto hosts = [this](const char* name) {
      return [this, name](const auto& host) {
        call(name, usp(host.next_hop.destination), address_value(host.ip).text, host.next_hop.mac,
             unsigned{host.next_hop.interface_id});
      };
    };
    for_each_in_order(now_.l3.ipv4_hosts, hosts("vorn_add_l3_host_ip4"));
    for_each_in_order(now_.l3.ipv6_hosts, hosts("vorn_add_l3_host_ip6"));
    for_each_in_order(now_.l3.ipv4_routes, [this](const auto& route) {
      call("vorn_add_l3_route_ip4", usp(route.next_hop.destination),
           address_value(route.prefix).text, slash(route.length), route.next_hop.mac,
           unsigned{route.next_hop.interface_id}, unsigned{route.metric});
    });
    for_each_in_order(now_.l3.ipv6_routes, [this](const auto& route) {
      Usp way = usp(route.next_hop.destination);
      if (route.next_hop.destination.is_lag()) {
        const std::uint16_t id = route.next_hop.destination.number;
        if (way != softcard::AddressPlan::lag_usp(id)) {
          remark("by " + port_value(way).text + ", which has the id " + std::to_string(id) +
                 ": the number in this call is the id");
        }
        way = softcard::AddressPlan::lag_usp(id);
      }
      call("vorn_add_l3_route_ip6", way, route.prefix, slash(route.length), route.next_hop.mac,
           unsigned{route.next_hop.interface_id});
    });
  }

  // A flow with a user-defined qualifier gets the lowest free id. Ids that are free below are kept
  // by flows that are deleted when the last of those is made.
  void flows() {
    std::map<std::uint32_t, const softcard::Flow*> flows;
    std::uint32_t last_chosen = 0;
    now_.flows.for_each([&](const softcard::Flow& flow) {
      flows[flow.id] = &flow;
      if (flow.match.udf.mask != 0) last_chosen = std::max(last_chosen, flow.id);
    });
    std::vector<std::uint32_t> placeholders;
    for (std::uint32_t id = 1; id <= last_chosen; ++id) {
      const auto found = flows.find(id);
      if (found != flows.end()) {
        add_flow(*found->second);
      } else {
        placeholders.push_back(id);
        call("vorn_add_of_flow_with_id", "any", unsigned{id});
      }
    }
    for (const std::uint32_t id : placeholders) call("vorn_delete_of_flow", unsigned{id});
    for (const auto& [id, flow] : flows) {
      if (id == 0 || id > last_chosen) add_flow(*flow);
    }
    for (const auto& [id, flow] : flows) {
      if (flow->priority != softcard::FlowTable::kDefaultPriority) {
        call("vorn_set_of_flow_priority", unsigned{id}, int{flow->priority});
      }
      for (const softcard::FlowAction& action : now_.flows.actions(*flow)) {
        const auto kind = static_cast<of_action_t>(action.kind);
        const std::string parameter =
            action_text(kind, {{action.words[0], action.words[1], action.words[2]}});
        call("vorn_add_of_flow_action", unsigned{id}, kind);
        if (!parameter.empty()) lines_.back() += ' ' + parameter;
      }
    }
  }
  void add_flow(const softcard::Flow& flow) {
    // The text of a match is several words.
    const std::string match = flow_match_text(flow.match);
    if (flow.match.udf.mask != 0) {
      lines_.push_back("vorn_add_of_flow " + match);
    } else {
      lines_.push_back("vorn_add_of_flow_with_id " + match + ' ' + std::to_string(flow.id));
    }
  }

  void filters() {
    for (const auto& filter : now_.filters.arp()) {
      call("vorn_add_arp_filter", ip4_text(filter.ip), ip4_text(filter.mask));
    }
    for (unsigned protocol = 0; protocol <= 255; ++protocol) {
      if (now_.filters.matches_ip_protocol(static_cast<std::uint8_t>(protocol))) {
        call("vorn_add_ip_protocol_filter", protocol);
      }
    }
    for (unsigned port = 0; port <= 65535; ++port) {
      if (now_.filters.matches_l4_port(static_cast<std::uint16_t>(port))) {
        call("vorn_add_l4_destination_port_filter", port);
      }
    }
  }

  // A fresh card's ports are plugged into memory.
  void cables() {
    PortSet loose;
    for (const PortIndex port : all()) {
      const auto* const patch = dynamic_cast<const softcard::PatchCable*>(card_.cable(port));
      if (patch != nullptr && !patch->carrier()) loose.insert(port);
    }
    // A cable whose other end is loose had that end in a port; any that has none of them will do.
    for (const PortIndex port : loose) {
      const PortSet others = all() - loose;
      if (others.empty()) break;
      const PortIndex other = *others.begin();
      call("cable", usp(port), "patch", usp(other));
      call("cable", usp(other), "memory");
    }
    for (const PortIndex port : all() - loose) {
      const softcard::Cable* const cable = card_.cable(port);
      PortIndex other = 0;
      if (cable == nullptr) {
        call("cable", usp(port), "none");
      } else if (const softcard::CableSink* const far_card = cable->far_end(other)) {
        if (far_card != &card_) {
          remark("the cable of " + port_text(port) + " leads to another card");
        } else if (other > port) {
          call("cable", usp(port), "patch", usp(other));
        }
      } else if (const auto* unix_cable = dynamic_cast<const softcard::UnixCable*>(cable)) {
        call("cable", usp(port), "unix", unix_cable->path());
      } else if (const auto* linux_cable = dynamic_cast<const softcard::LinuxCable*>(cable)) {
        call("cable", usp(port), "linux", linux_cable->interface());
      } else if (dynamic_cast<const softcard::PcapCable*>(cable) != nullptr) {
        remark("the capture files of " + port_text(port) + " are not opened again");
      } else if (dynamic_cast<const softcard::MemoryCable*>(cable) == nullptr) {
        remark("the cable of " + port_text(port) + " cannot be plugged by a command");
      }
    }
    for (const PortIndex port : all()) {
      if (card_.carrier_cut(port)) call("link", usp(port), "down");
    }
  }

  Card& card_;
  const Tables& now_;
  Card fresh_card_;
  const Tables& fresh_;
  std::vector<std::string> lines_;
};

// Closes and removes a file that is not wanted.
class Unfinished {
 public:
  // `path` ends in XXXXXX, for which something else comes.
  explicit Unfinished(std::string path) : path_(std::move(path)), fd_(mkstemp(path_.data())) {}
  ~Unfinished() {
    close_it();
    if (!path_.empty()) unlink(path_.c_str());
  }
  Unfinished(const Unfinished&) = delete;
  Unfinished& operator=(const Unfinished&) = delete;

  // Each is false, and errno says why, when the system refuses.
  bool open() const { return fd_ >= 0; }
  bool write_all(const std::string& text) {
    for (std::size_t at = 0; at < text.size();) {
      const ssize_t count = write(fd_, text.data() + at, text.size() - at);
      if (count < 0 && errno != EINTR) return false;
      if (count > 0) at += static_cast<std::size_t>(count);
    }
    return true;
  }
  // Gives it its name, when all of it is on the disk.
  bool finish(const std::string& path, mode_t mode) {
    if (fchmod(fd_, mode) != 0 || fsync(fd_) != 0 || !close_it() ||
        rename(path_.c_str(), path.c_str()) != 0) {
      return false;
    }
    path_.clear();
    return true;
  }

 private:
  bool close_it() {
    const int fd = std::exchange(fd_, -1);
    return fd < 0 || close(fd) == 0;
  }

  std::string path_;
  int fd_;
};

// What a new file may be: what the process lets it.
mode_t mode_of_new_files() {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

void write_whole(const std::string& name, const std::string& text) {
  const auto fail = [&name] { throw Error("cannot write " + name + ": " + std::strerror(errno)); };
  // A link stays, and what it names is written.
  std::string path = name;
  if (char* const real = realpath(name.c_str(), nullptr)) {
    path = real;
    std::free(real);
  }
  struct stat status {};
  const bool there = stat(path.c_str(), &status) == 0;
  if (there && !S_ISREG(status.st_mode)) throw Error(name + " is no regular file");
  Unfinished file(path + ".XXXXXX");
  if (!file.open() || !file.write_all(text) ||
      !file.finish(path, there ? status.st_mode & 07777 : mode_of_new_files())) {
    fail();
  }
}

}  // namespace

std::vector<std::string> config_lines(softcard::Card& card) { return Config(card).lines(); }

void save(Shell& shell, Arguments& arguments, Reply& reply) {
  const std::string path = arguments.take("file");
  arguments.finish();
  const std::vector<std::string> lines = config_lines(shell.card());
  write_whole(path, joined(lines, "\n") + '\n');
  const auto calls = static_cast<std::uint64_t>(
      std::count_if(lines.begin(), lines.end(),
                    [](const std::string& line) { return !line.empty() && line[0] != '#'; }));
  reply.data.emplace_back("commands", number_value(calls));
  reply.note = std::to_string(calls) + " commands";
}

}  // namespace shell
