// SPDX-License-Identifier: Apache-2.0
//
// The command `show`: the card's tables as a person wants to read them. It reads the card itself,
// not the library, so it shows what the library's calls have made of it.
#include <algorithm>
#include <tuple>
#include <utility>

#include "cables.h"
#include "card_text.h"
#include "codec.h"
#include "monitor.h"
#include "save.h"
#include "shell.h"
#include "softcard/frames/frame_text.h"
#include "softcard/pipeline/trace.h"

namespace shell {

namespace {

using softcard::Card;
using softcard::PortIndex;

// A limit, or a rate, where one number stands for none: that number in JSON, as the entry points
// have it.
Value limit_value(int limit) {
  const Value value = number_value(std::int64_t{limit});
  return limit < 0 ? Value{"-", value.json} : value;
}
Value rate_value(std::uint32_t rate) { return rate == 0 ? Value{"-", "0"} : count_value(rate); }

void show_card(Card& card, Arguments& arguments, Reply& reply) {
  arguments.finish();
  const softcard::CardDescription& description = card.description();
  Table table({"table", "entries", "capacity"});
  const auto row = [&table](const char* name, std::size_t entries, std::size_t capacity) {
    table.add({text_value(name), count_value(entries), count_value(capacity)});
  };
  std::size_t lags = 0;
  for (std::size_t id = 0; id < card.tables().lags.id_count(); ++id)
    lags += card.tables().lags[id].exists;
  row("vlans", card.tables().vlans.size(), description.capacity.vlans);
  row("lags", lags, description.capacity.lags);
  row("fdb", card.tables().fdb.size(), card.tables().fdb.capacity());
  row("l3-interfaces", card.tables().l3.interfaces.size(), card.tables().l3.interfaces.capacity());
  row("l3-hosts-ip4", card.tables().l3.ipv4_hosts.size(), card.tables().l3.ipv4_hosts.capacity());
  row("l3-hosts-ip6", card.tables().l3.ipv6_hosts.size(), card.tables().l3.ipv6_hosts.capacity());
  row("l3-routes-ip4", card.tables().l3.ipv4_routes.size(),
      card.tables().l3.ipv4_routes.capacity());
  row("l3-routes-ip6", card.tables().l3.ipv6_routes.size(),
      card.tables().l3.ipv6_routes.capacity());
  row("flows", card.tables().flows.size(), card.tables().flows.capacity());
  const std::string mac = mac_text(description.base_mac.bytes.data());
  reply.say(std::to_string(description.ports.size()) + " ports, address " + mac);
  reply.data.emplace_back("ports", count_value(description.ports.size()));
  reply.data.emplace_back("mac", text_value(mac));
  reply.show("tables", table);
}

void show_port(Card& card, Arguments& arguments, Reply& reply) {
  Table table({"port", "on", "link", "speed", "duplex", "autoneg", "mtu", "pvid", "lag", "cable"});
  const softcard::PortTable& ports = card.tables().ports;
  for (const PortIndex port : take_physical_ports(card, arguments)) {
    const softcard::LinkMode mode = ports.mode(port);
    const std::uint16_t lag = card.tables().lags.lag_of(port);
    softcard::Cable* const cable = card.cable(port);
    table.add({port_value(port), flag_value(ports.admin(port)),
               text_value(ports.is_up(port) ? "up" : "down"), enum_value(mode.speed),
               enum_value(mode.duplex), flag_value(ports.autoneg(port)),
               count_value(ports.mtu_bytes(port)), count_value(card.tables().port_vlans.pvid(port)),
               lag == softcard::LagTable::kNoLag ? no_value()
                                                 : port_value(card.tables().lags.usp_of(lag)),
               text_value((cable == nullptr ? "none" : cable->describe()) +
                          (card.carrier_cut(port) ? " (pulled)" : ""))});
  }
  reply.show("ports", table);
}

void show_vlan(Card& card, Arguments& arguments, Reply& reply) {
  const auto only =
      arguments.empty() ? 0 : parse_number(arguments.take("vlan"), "vlan", 1, softcard::kMaxVlan);
  arguments.finish();
  Table table({"vlan", "instance", "tagged", "untagged"});
  for (unsigned vlan = 1; vlan <= softcard::kMaxVlan; ++vlan) {
    if (!card.tables().vlans.exists(vlan) || (only != 0 && only != vlan)) continue;
    table.add({count_value(vlan), count_value(card.tables().vlans.mstp_instance(vlan)),
               ports_value(card.tables().vlans.tagged(vlan)),
               ports_value(card.tables().vlans.untagged(vlan))});
  }
  reply.show("vlans", table);
}

// The rules that put untagged frames into VLANs.
void show_class(Card& card, Arguments& arguments, Reply& reply) {
  arguments.finish();
  std::vector<std::vector<Value>> rows;
  const auto add = [&rows](const char* kind, const std::string& what, softcard::VlanClass rule) {
    rows.push_back(
        {text_value(kind), text_value(what), count_value(rule.vlan), count_value(rule.priority)});
  };
  card.tables().vlan_classes.for_each_mac(
      [&](const softcard::MacAddress& mac, softcard::VlanClass rule) {
        add("mac", mac_value(mac).text, rule);
      });
  card.tables().vlan_classes.for_each_ipv4(
      [&](softcard::Ipv4 ip, unsigned length, softcard::VlanClass rule) {
        add("subnet", ip4_text(ip) + '/' + std::to_string(length), rule);
      });
  card.tables().vlan_classes.for_each_ipv6(
      [&](const softcard::Ipv6Address& ip, unsigned length, softcard::VlanClass rule) {
        add("subnet", address_value(ip).text + '/' + std::to_string(length), rule);
      });
  // The rules come in the order of a hash, which says nothing.
  std::sort(rows.begin(), rows.end(), [](const auto& a, const auto& b) {
    return std::make_pair(a[0].text, a[1].text) < std::make_pair(b[0].text, b[1].text);
  });
  for (PortIndex port = 0; port < card.tables().ports.count(); ++port) {
    for (const softcard::ProtocolVlan& rule : card.tables().port_vlans.protocol_vlans(port)) {
      char protocol[8];
      std::snprintf(protocol, sizeof protocol, "0x%04x", rule.protocol);
      rows.push_back(
          {text_value("protocol"),
           text_value(port_text(port) + ' ' + enum_value(rule.type).text + ' ' + protocol),
           count_value(rule.vlan), no_value()});
    }
  }
  Table table({"rule", "of", "vlan", "priority"});
  for (auto& row : rows) table.add(std::move(row));
  reply.show("rules", table);
}

void show_lag(Card& card, Arguments& arguments, Reply& reply) {
  arguments.finish();
  Table table({"lag", "id", "strategy", "members", "up"});
  for (unsigned id = 0; id < card.tables().lags.id_count(); ++id) {
    const softcard::Lag& lag = card.tables().lags[id];
    if (!lag.exists) continue;
    std::vector<Value> members;
    for (unsigned i = 0; i < lag.size; ++i) members.push_back(port_value(lag.members[i]));
    table.add({port_value(card.tables().lags.usp_of(id)), count_value(id), enum_value(lag.psc),
               list_value(members), ports_value(lag.set & card.tables().ports.up())});
  }
  reply.show("lags", table);
}

void show_fdb(Card& card, Arguments& arguments, Reply& reply) {
  const auto only =
      arguments.empty() ? 0 : parse_number(arguments.take("vlan"), "vlan", 1, softcard::kMaxVlan);
  arguments.finish();
  std::vector<const softcard::FdbEntry*> entries;
  card.tables().fdb.for_each([&](const softcard::FdbEntry& entry) {
    if (only == 0 || entry.vlan() == only) entries.push_back(&entry);
  });
  std::sort(entries.begin(), entries.end(), [](const auto* a, const auto* b) {
    return std::make_pair(a->vlan(), a->mac()) < std::make_pair(b->vlan(), b->mac());
  });
  Table table({"vlan", "mac", "port", "kind", "age"});
  for (const softcard::FdbEntry* entry : entries) {
    const bool learned = entry->kind() == softcard::FdbKind::learned;
    table.add({count_value(entry->vlan()), mac_value(entry->mac()),
               destination_value(card, entry->destination()),
               text_value(learned                                            ? "learned"
                          : entry->kind() == softcard::FdbKind::static_entry ? "static"
                                                                             : "system"),
               learned ? count_value(card.clock().now_seconds() - entry->last_seen_seconds())
                       : no_value()});
  }
  reply.show("fdb", table);
}

template <class Hosts>
void add_hosts(const Card& card, const Hosts& hosts, Table& table) {
  for_each_in_order(hosts, [&](const auto& host) {
    table.add({address_value(host.ip), destination_value(card, host.next_hop.destination),
               mac_value(host.next_hop.mac), count_value(host.next_hop.interface_id)});
  });
}

template <class Routes>
void add_routes(const Card& card, const Routes& routes, Table& table) {
  for_each_in_order(routes, [&](const auto& route) {
    table.add({text_value(address_value(route.prefix).text + '/' + std::to_string(route.length)),
               count_value(route.metric), destination_value(card, route.next_hop.destination),
               mac_value(route.next_hop.mac), count_value(route.next_hop.interface_id)});
  });
}

void show_l3(Card& card, Arguments& arguments, Reply& reply) {
  arguments.finish();
  const softcard::L3Table& l3 = card.tables().l3;
  Table interfaces({"interface", "vlan", "mac"});
  for_each_in_order(l3.interfaces, [&](const softcard::L3Interface& interface) {
    interfaces.add(
        {count_value(interface.id), count_value(interface.vlan), mac_value(interface.mac)});
  });
  Table hosts({"host", "port", "mac", "interface"});
  add_hosts(card, l3.ipv4_hosts, hosts);
  add_hosts(card, l3.ipv6_hosts, hosts);
  Table routes({"route", "metric", "port", "next hop", "interface"});
  add_routes(card, l3.ipv4_routes, routes);
  add_routes(card, l3.ipv6_routes, routes);
  reply.show("interfaces", interfaces);
  reply.show("hosts", hosts);
  reply.show("routes", routes);
}

void show_flow(Card& card, Arguments& arguments, Reply& reply) {
  arguments.finish();
  std::vector<const softcard::Flow*> flows;
  card.tables().flows.for_each([&](const softcard::Flow& flow) { flows.push_back(&flow); });
  std::sort(flows.begin(), flows.end(), [](const auto* a, const auto* b) {
    return std::make_pair(-std::int64_t{a->priority}, a->id) <
           std::make_pair(-std::int64_t{b->priority}, b->id);
  });
  Table table({"id", "priority", "packets", "actions", "match"});
  for (const softcard::Flow* flow : flows) {
    std::vector<std::string> actions;
    std::vector<Value> list;
    for (const softcard::FlowAction& action : card.tables().flows.actions(*flow)) {
      const auto kind = static_cast<of_action_t>(action.kind);
      const std::string param =
          action_text(kind, {{action.words[0], action.words[1], action.words[2]}});
      actions.push_back(enum_value(kind).text + (param.empty() ? "" : ' ' + param));
      list.push_back(text_value(actions.back()));
    }
    table.add({count_value(flow->id),
               number_value(std::int64_t{flow->priority}),
               count_value(flow->packets),
               {actions.empty() ? "drop" : joined(actions, ", "), list_value(list).json},
               text_value(flow_match_text(flow->match))});
  }
  reply.show("flows", table);
}

void show_filter(Card& card, Arguments& arguments, Reply& reply) {
  arguments.finish();
  Table table({"filter", "what"});
  for (const auto& filter : card.tables().filters.arp()) {
    table.add({text_value("arp"), text_value(ip4_subnet_text(filter.ip, filter.mask))});
  }
  for (unsigned protocol = 0; protocol <= 255; ++protocol) {
    if (card.tables().filters.matches_ip_protocol(static_cast<std::uint8_t>(protocol))) {
      table.add({text_value("ip_protocol"), count_value(protocol)});
    }
  }
  for (unsigned port = 0; port <= 65535; ++port) {
    if (card.tables().filters.matches_l4_port(static_cast<std::uint16_t>(port))) {
      table.add({text_value("l4_destination_port"), count_value(port)});
    }
  }
  reply.show("filters", table);
}

// The counters that are not 0.
void show_counters(Card& card, Arguments& arguments, Reply& reply) {
  Table table({"port", "counter", "value"});
  for (const PortIndex port : take_physical_ports(card, arguments)) {
    for (unsigned type = 0; type < STAT_TYPE_COUNT; ++type) {
      const auto stat = static_cast<stat_type_t>(type);
      const std::uint64_t value = card.tables().counters.value(port, stat);
      if (value != 0) table.add({port_value(port), enum_value(stat), number_value(value)});
    }
  }
  reply.show("counters", table);
}

// The reasons for which something was dropped, and the events that were lost.
void show_drops(Card& card, Arguments& arguments, Reply& reply) {
  Table table({"port", "reason", "frames", "because"});
  const bool of_cpu = arguments.empty();
  std::vector<PortIndex> ports = take_physical_ports(card, arguments);
  if (of_cpu) ports.push_back(softcard::kNoPort);
  for (const PortIndex port : ports) {
    for (std::size_t i = 0; i < softcard::kDropReasons; ++i) {
      const auto reason = static_cast<softcard::DropReason>(i);
      const std::uint64_t frames = card.tables().drops.count(port, reason);
      if (frames == 0) continue;
      table.add({port == softcard::kNoPort ? text_value("cpu") : port_value(port),
                 text_value(softcard::name(reason)), number_value(frames),
                 text_value(softcard::text(reason))});
    }
  }
  const std::tuple<lcmgr_report_event_t, const char*, const char*> kEvents[] = {
      {LCMGR_REPORT_RX_PACKET, "rx-packet", "packets for the CPU for which the queue had no room"},
      {LCMGR_REPORT_LINK_CHANGE, "link-change", "link changes that later ones took the place of"},
      {LCMGR_REPORT_MAC_UPDATE, "mac-update", "MAC updates for which the queue had no room"}};
  for (const auto& [kind, event, because] : kEvents) {
    const std::uint64_t lost = of_cpu ? card.events().lost(kind) : 0;
    if (lost == 0) continue;
    table.add({text_value("events"), text_value(event), number_value(lost), text_value(because)});
  }
  reply.show("drops", table);
}

void show_mirror(Card& card, Arguments& arguments, Reply& reply) {
  arguments.finish();
  Table table({"mirrored", "to", "type"});
  for (PortIndex port = 0; port < card.tables().ports.count(); ++port) {
    const auto& session = card.tables().mirrors[port];
    if (session.type == MIRROR_TYPE_NONE) continue;
    table.add({port_value(port), port_value(session.to), enum_value(session.type)});
  }
  reply.show("mirrors", table);
}

// The states of the ports asked for; without ports those that do not forward.
void show_stp(Card& card, Arguments& arguments, Reply& reply) {
  const bool all = !arguments.empty();
  Table table({"port", "instance", "state", "bpdu"});
  for (const PortIndex port : take_physical_ports(card, arguments)) {
    const Value bpdu = text_value(card.tables().stp.bpdu_processing(port) ? "cpu" : "forward");
    const stp_state_t state = card.tables().stp.stp(port);
    if (all || state != STP_STATE_FORWARDING || !card.tables().stp.bpdu_processing(port)) {
      table.add({port_value(port), {"port", "null"}, enum_value(state), bpdu});
    }
    for (unsigned instance = 0; instance < softcard::kMstpInstances; ++instance) {
      const mstp_state_t own = card.tables().stp.mstp(instance, port);
      if (own == MSTP_STATE_FORWARDING) continue;
      table.add({port_value(port), count_value(instance), enum_value(own), bpdu});
    }
  }
  reply.show("states", table);
}

// Shows the traffic settings of the ports asked for; without ports, of those where any is set.
void show_traffic(Card& card, Arguments& arguments, Reply& reply) {
  const bool all = !arguments.empty();
  softcard::TrafficTable& traffic = card.tables().traffic;
  Table table(
      {"port", "broadcast", "multicast", "unicast", "discards", "egress", "l2", "unknown to cpu"});
  for (const PortIndex port : take_physical_ports(card, arguments)) {
    const auto storm = [&](softcard::StormKind kind) { return traffic.storm_limit(port, kind); };
    const std::uint32_t broadcast = storm(softcard::StormKind::broadcast);
    const std::uint32_t multicast = storm(softcard::StormKind::multicast);
    const std::uint32_t unicast = storm(softcard::StormKind::unknown_unicast);
    const bool plain = broadcast == 0 && multicast == 0 && unicast == 0 &&
                       traffic.ingress_discard(port) == INGRESS_DISCARD_NONE &&
                       traffic.egress_on(port) && traffic.l2_on(port) &&
                       !traffic.unknown_to_cpu(port);
    if (plain && !all) continue;
    table.add({port_value(port), rate_value(broadcast), rate_value(multicast), rate_value(unicast),
               enum_value(traffic.ingress_discard(port)), flag_value(traffic.egress_on(port)),
               flag_value(traffic.l2_on(port)), flag_value(traffic.unknown_to_cpu(port))});
  }
  const Value mode = name_value(forward_mode_names(), traffic.forward_mode());
  const Value unknown = flag_value(traffic.switch_unknown_to_cpu());
  reply.say("forward mode " + mode.text + ", unknown unicast to cpu " + unknown.text);
  reply.data.emplace_back("forward_mode", mode);
  reply.data.emplace_back("unknown_unicast_to_cpu", unknown);
  reply.show("ports", table);
}

void show_flood(Card& card, Arguments& arguments, Reply& reply) {
  arguments.finish();
  Table table({"from", "to", "blocked"});
  for (PortIndex from = 0; from < card.tables().ports.count(); ++from) {
    for (PortIndex to = 0; to < card.tables().ports.count(); ++to) {
      const flood_block_type_t kinds = card.tables().flood_blocks.get(from, to);
      if (kinds != 0) table.add({port_value(from), port_value(to), enum_value(kinds)});
    }
    const flood_block_type_t kinds = card.tables().flood_blocks.get_to_cpu(from);
    if (kinds != 0) table.add({port_value(from), text_value("cpu"), enum_value(kinds)});
  }
  reply.show("blocked", table);
}

// Locks and limits on learning.
void show_lock(Card& card, Arguments& arguments, Reply& reply) {
  arguments.finish();
  const softcard::MacLockTable& locks = card.tables().mac_locks;
  Table table({"of", "locked", "drops unknown", "limit", "learned"});
  const Value none = no_value();
  const auto add_limit = [&](const Value& of, int limit, std::size_t learned) {
    if (limit >= 0) table.add({of, none, none, limit_value(limit), count_value(learned)});
  };
  add_limit(text_value("switch"), locks.system_limit(), card.tables().fdb.learned());
  for (PortIndex port = 0; port < card.tables().ports.count(); ++port) {
    if (!locks.locked(port) && locks.port_limit(port) < 0) continue;
    table.add({port_value(port), flag_value(locks.locked(port)),
               flag_value(locks.drops_unknown(port)), limit_value(locks.port_limit(port)),
               count_value(card.tables().fdb.learned_on(softcard::Destination::port(port)))});
  }
  const auto lags = static_cast<std::uint16_t>(card.tables().lags.id_count());
  for (std::uint16_t id = 0; id < lags; ++id) {
    add_limit(port_value(card.tables().lags.usp_of(id)), locks.lag_limit(id),
              card.tables().fdb.learned_on(softcard::Destination::lag(id)));
  }
  for (std::uint16_t vlan = 1; vlan <= softcard::kMaxVlan; ++vlan) {
    add_limit(port_value(softcard::AddressPlan::vlan_usp(vlan)), locks.vlan_limit(vlan),
              card.tables().fdb.learned_in(vlan));
  }
  reply.show("locks", table);
}

// Egress queues by priority.
void show_cos(Card& card, Arguments& arguments, Reply& reply) {
  const bool all = !arguments.empty();
  Table table({"port", "queues of priorities 0 to 7"});
  for (const PortIndex port : take_physical_ports(card, arguments)) {
    std::vector<Value> queues;
    bool plain = true;
    for (unsigned priority = 0; priority < softcard::kPriorities; ++priority) {
      const unsigned queue = card.tables().cos.queue(port, priority);
      queues.push_back(count_value(queue));
      plain = plain && queue == priority;
    }
    if (all || !plain) table.add({port_value(port), list_value(queues)});
  }
  reply.show("cos", table);
}

// The frames that came out and that nobody has asked for yet; they stay.
void show_frames(Shell& shell, Arguments& arguments, Reply& reply) {
  Card& card = shell.card();
  Table table({"port", "bytes", "frame"});
  const auto add = [&table](const Value& port, const std::vector<unsigned char>& frame) {
    table.add({port, count_value(frame.size()),
               text_value(softcard::print_frame(frame.data(), frame.size()))});
  };
  // Ports that are named must be plugged into memory.
  const bool all = arguments.empty();
  const Places places = take_places(card, arguments);
  for (const PortIndex port : places.ports) {
    const softcard::MemoryCable* const cable = find_memory_cable(card, port);
    if (cable == nullptr && !all) memory_cable(card, port);
    if (cable == nullptr) continue;
    for (const auto& frame : cable->frames()) add(port_value(port), frame);
  }
  if (places.cpu) {
    shell.cpu_packets().for_each(
        [&add](const CpuPacket& packet) { add(text_value("cpu"), packet.frame); });
  }
  reply.show("frames", table);
}

// What `save` writes.
void show_config(Shell& shell, Arguments& arguments, Reply& reply) {
  arguments.finish();
  reply.lines = config_lines(shell.card());
  std::vector<Value> lines;
  for (const std::string& line : reply.lines) lines.push_back(text_value(line));
  reply.data.emplace_back("config", list_value(lines));
}

struct Topic {
  const char* name;
  void (*show)(Card& card, Arguments& arguments, Reply& reply);
};

constexpr Topic kTopics[] = {
    {"card", show_card},         {"port", show_port},
    {"vlan", show_vlan},         {"class", show_class},
    {"lag", show_lag},           {"fdb", show_fdb},
    {"lock", show_lock},         {"l3", show_l3},
    {"flow", show_flow},         {"filter", show_filter},
    {"counters", show_counters}, {"drops", show_drops},
    {"mirror", show_mirror},     {"stp", show_stp},
    {"traffic", show_traffic},   {"flood", show_flood},
    {"cos", show_cos},
};

void show(Shell& shell, Arguments& arguments, Reply& reply) {
  const std::string name = arguments.take("table");
  if (name == "frames") return show_frames(shell, arguments, reply);
  if (name == "config") return show_config(shell, arguments, reply);
  std::vector<std::string> names;
  for (const Topic& topic : kTopics) {
    if (name == topic.name) return topic.show(shell.card(), arguments, reply);
    names.emplace_back(topic.name);
  }
  names.insert(names.end(), {"frames", "config"});
  throw Error("table: '" + name + "' is none of " + joined(names, ", "));
}

}  // namespace

void add_show_commands(CommandTable& table) {
  table.add({"show", "card",
             "card|port|vlan|class|lag|fdb|lock|l3|flow|filter|counters|drops|mirror|stp|traffic|"
             "flood|cos|frames|config [PORTS|VLAN]",
             "prints a table of the card", show});
}

}  // namespace shell
