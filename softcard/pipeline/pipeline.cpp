// SPDX-License-Identifier: Apache-2.0
//
// The way of a frame, from top to bottom: in at a port, past the ingress checks and into a VLAN,
// past the spanning tree, to the CPU if it must, through the flow table, then by layer 3 or the FDB
// to its egress ports and out. Frames from the CPU join at the end of the file.
//
// Three things stand in another order than one might expect. Reserved addresses reach the CPU
// before the VLAN is looked at, so that LACP or LLDP works on a port that is in no VLAN. The MAC
// lock comes behind the VLAN, since addresses are known by VLAN. Learning comes behind the flow
// table: a frame that a flow takes elsewhere says nothing about where the FDB should send to.

#include "softcard/pipeline/pipeline.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "softcard/base/text.h"
#include "softcard/card.h"
#include "softcard/frames/checksum.h"
#include "softcard/frames/offload.h"
#include "softcard/frames/rewrite.h"
#include "softcard/frames/wire.h"

namespace softcard {

namespace {

CastKind cast_of(std::uint64_t destination) {
  if ((destination >> 40 & 1) == 0) return CastKind::unicast;
  return destination == kBroadcast ? CastKind::broadcast : CastKind::multicast;
}

flood_block_type_t flood_kind(const Headers& headers) {
  if (!headers.group()) return FLOOD_BLOCK_UNKNOWN_UNICAST;
  return headers.broadcast() ? FLOOD_BLOCK_BROADCAST : FLOOD_BLOCK_MULTICAST;
}

// The counter that goes with a reason, besides the discards of every kind; STAT_IN_DISCARDS when
// there is none of its own.
stat_type_t counter_of(DropReason reason) {
  switch (reason) {
    case DropReason::no_vlan:
    case DropReason::not_member:
    case DropReason::accept_frame:
      return STAT_IN_VLAN_DISCARDS;
    case DropReason::stp_ingress:
      return STAT_IN_STP_DISCARDS;
    case DropReason::mac_lock:
      return STAT_IN_MAC_LOCK_DISCARDS;
    case DropReason::storm_broadcast:
    case DropReason::storm_multicast:
    case DropReason::storm_unicast:
      return STAT_IN_STORM_DISCARDS;
    default:
      return STAT_IN_DISCARDS;
  }
}

// The address that an IP frame goes to.
template <class Address>
Address destination_ip(const Frame& frame, const Headers& headers);
template <>
Ipv4 destination_ip(const Frame&, const Headers& headers) {
  return headers.ipv4_destination;
}
template <>
Ipv6Address destination_ip(const Frame& frame, const Headers& headers) {
  return Ipv6Address::from_bytes(frame.data() + headers.l3_offset + 24);
}

// A frame's bytes that count against an MTU: those of its longest piece, without the outermost tag.
std::size_t mtu_bytes(const Frame& frame, bool tagged) {
  const std::size_t bytes =
      frame.offload.segmentation == Segmentation::none ? frame.size() : longest_segment(frame);
  return tagged ? bytes - kTagBytes : bytes;
}

const char* action_text(std::uint32_t kind) {
  constexpr const char* kTexts[] = {"output",
                                    "set VLAN",
                                    "set priority",
                                    "strip VLAN",
                                    "set source MAC",
                                    "set destination MAC",
                                    "set source IP",
                                    "set destination IP",
                                    "set TOS",
                                    "set source port",
                                    "set destination port",
                                    "set queue"};
  return kind < std::size(kTexts) ? kTexts[kind] : "?";
}

// ---- The parts of a trace line ------------------------------------------------------------------

struct Mac {
  std::uint64_t number;
};
struct Hex {
  std::uint64_t number;
};

void append(std::string& line, const char* words) { line += words; }
void append(std::string& line, DropReason reason) {
  line += std::string("drop: ") + text(reason) + " (" + name(reason) + ")";
}
void append(std::string& line, Hex hex) { line += hex_text(hex.number); }
void append(std::string& line, Mac mac) { line += mac_text(MacAddress::from_number(mac.number)); }
template <class Number, class = std::enable_if_t<std::is_integral_v<Number>>>
void append(std::string& line, Number number) {
  line += std::to_string(number);
}

}  // namespace

template <class... Parts>
void Pipeline::add_note(const char* stage, const Parts&... parts) const {
  std::string line;
  const auto add = [&](const auto& part) {
    using Part = std::decay_t<decltype(part)>;
    if constexpr (std::is_same_v<Part, Destination>) {
      switch (part.kind) {
        case DestinationKind::port:
          line += AddressPlan::text(AddressPlan::usp_of(part.number));
          break;
        case DestinationKind::lag:
          line += AddressPlan::text(card_.lag_usp(part.number));
          break;
        case DestinationKind::cpu:
          line += "CPU";
          break;
        case DestinationKind::none:
        case DestinationKind::drop:
          line += "nowhere";
          break;
      }
    } else {
      append(line, part);
    }
  };
  (add(parts), ...);
  trace_->add(stage, std::move(line));
}

Pipeline::Pipeline(Card& card)
    : card_(card), staged_(card.ports().count()), states_(card.ports().count()) {}

// ---- A burst of frames --------------------------------------------------------------------------

void Pipeline::receive(PortIndex port, FramePtr* frames, std::size_t count) {
  now_ns_ = card_.clock().now_ns();
  card_.fdb().age(card_.now_seconds());
  while (count != 0) {
    const std::size_t burst = std::min(count, kBurst);
    for (std::size_t i = 0; i < burst; ++i) prefetch(frames[i]->data());
    std::size_t waiting = 0;
    for (std::size_t i = 0; i < burst; ++i) {
      Passage& passage = passages_[waiting];
      passage.begin(std::move(frames[i]), port);
      if (arrive(passage) && classify(passage)) ++waiting;
    }
    find_next_hops(waiting);
    for (std::size_t i = 0; i < waiting; ++i) pass(passages_[i]);
    frames += burst;
    count -= burst;
  }
  flush_all();
}

// ---- In at a port -------------------------------------------------------------------------------

bool Pipeline::arrive(Passage& passage) {
  const PortIndex port = passage.ingress;
  Frame& frame = *passage.frame;
  Headers& headers = passage.headers;
  frame.ingress = port;
  note("port", Destination::port(port), " received ", frame.size(), " bytes");

  if (!card_.ports().is_up(port)) {
    // What does not arrive is not counted as received either.
    ++states_[port].drops[static_cast<std::size_t>(DropReason::link_down)];
    note("port", DropReason::link_down);
    passage.frame.reset();
    return false;
  }

  const FrameFault fault = parse(frame.data(), frame.size(), headers);
  const bool oversize = fault == FrameFault::none &&
                        mtu_bytes(frame, headers.tags != 0) > card_.ports().mtu_bytes(port);
  if (fault != FrameFault::none || oversize) {
    Counters& counters = card_.counters();
    counters.add(port, STAT_IN_ERRORS);
    if (oversize) counters.add(port, STAT_IN_OVERSIZE);
    if (fault == FrameFault::runt) counters.add(port, STAT_IN_UNDERSIZE);
    const DropReason reason = oversize                    ? DropReason::oversize
                              : fault == FrameFault::runt ? DropReason::runt
                                                          : DropReason::malformed;
    ++states_[port].drops[static_cast<std::size_t>(reason)];
    note("port", reason);
    passage.frame.reset();
    return false;
  }
  note("parse", Mac{headers.source}, " to ", Mac{headers.destination}, ", type ",
       Hex{headers.ether_type}, ", ", headers.tags, " tag(s)");

  if (headers.destination == kPauseGroup && headers.ether_type == kTypePause) {
    // MAC control stays between the two ends of a link: it is neither counted as traffic, mirrored
    // nor forwarded.
    if (card_.ports().receives_pause(port)) card_.counters().add(port, STAT_IN_PAUSE_FRAMES);
    ++states_[port].drops[static_cast<std::size_t>(DropReason::pause)];
    note("port", DropReason::pause);
    passage.frame.reset();
    return false;
  }

  card_.counters().received(port, frame.size(), cast_of(headers.destination));
  if (card_.mirrors().ingress().contains(port)) mirror(frame, port, "ingress");

  const bool untagged = headers.tags == 0 || headers.tag_vlan() == 0;
  const ingress_discard_type_t discards = card_.traffic().ingress_discard(port);
  if ((discards & (untagged ? INGRESS_DISCARD_UNTAGGED : INGRESS_DISCARD_TAGGED)) != 0) {
    drop(passage, DropReason::ingress_discard);
    return false;
  }
  return true;
}

// ---- Into a VLAN --------------------------------------------------------------------------------

// Gives the frame its VLAN and priority: by its tag, else by its source address, source subnet,
// protocol or port. Starts to load what the lookups to come will read.
bool Pipeline::classify(Passage& passage) {
  const PortIndex port = passage.ingress;
  const Headers& headers = passage.headers;
  const std::uint16_t lag = card_.lags().lag_of(port);
  passage.source = lag == LagTable::kNoLag ? Destination::port(port) : Destination::lag(lag);

  const VlanClassTable& classes = card_.vlan_classes();
  const PortVlanTable& settings = card_.port_vlans();
  const VlanClass* rule = nullptr;
  if (headers.tag_vlan() != 0) {
    passage.vlan = headers.tag_vlan();
    passage.priority = headers.tag_priority();
    note("vlan", "tag: VLAN ", passage.vlan, ", priority ", passage.priority);
  } else {
    const char* by = "";
    if (classes.has_mac_rules()) {
      rule = classes.by_mac(MacAddress::from_number(headers.source));
      by = "MAC VLAN";
    }
    if (rule == nullptr && classes.has_ipv4_rules() &&
        (headers.l3 == Layer3::ipv4 || headers.l3 == Layer3::arp)) {
      rule = classes.by_ipv4(headers.ipv4_source);
      by = "IPv4 subnet VLAN";
    }
    if (rule == nullptr && classes.has_ipv6_rules() && headers.l3 == Layer3::ipv6) {
      rule =
          classes.by_ipv6(Ipv6Address::from_bytes(passage.frame->data() + headers.l3_offset + 8));
      by = "IPv6 subnet VLAN";
    }
    if (rule != nullptr) {
      passage.vlan = rule->vlan;
      passage.priority = rule->priority;
    } else {
      by = "PVID";
      passage.vlan = settings.pvid(port);
      if (settings.has_protocol_vlans(port)) {
        const unsigned vlan = settings.protocol_vlan(port, headers.format, headers.protocol);
        if (vlan != 0) {
          passage.vlan = static_cast<std::uint16_t>(vlan);
          by = "protocol VLAN";
        }
      }
      passage.priority = static_cast<std::uint8_t>(settings.priority(port, passage.vlan));
    }
    // A tag with VLAN 0 says nothing but the priority.
    if (headers.tags != 0) passage.priority = headers.tag_priority();
    note("vlan", by, ": VLAN ", passage.vlan, ", priority ", passage.priority);
  }
  passage.frame->vlan = passage.vlan;
  passage.frame->priority = passage.priority;

  card_.fdb().prefetch(fdb_key(passage.vlan, headers.source));
  passage.router = router_of(passage);
  if (passage.router == nullptr) {
    card_.fdb().prefetch(fdb_key(passage.vlan, headers.destination));
  } else if (headers.l3 == Layer3::ipv4) {
    card_.l3().ipv4_hosts.prefetch(headers.ipv4_destination);
    card_.l3().ipv4_routes.prefetch(headers.ipv4_destination);
  } else if (headers.l3 == Layer3::ipv6) {
    const auto address = destination_ip<Ipv6Address>(*passage.frame, headers);
    card_.l3().ipv6_hosts.prefetch(address);
    card_.l3().ipv6_routes.prefetch(address);
  }
  return true;
}

// Finds the next hops of the first `count` passages that are addressed to a router, all together.
void Pipeline::find_next_hops(std::size_t count) {
  const L3Table& l3 = card_.l3();
  find_next_hops(count, Layer3::ipv4, l3.ipv4_hosts, l3.ipv4_routes);
  find_next_hops(count, Layer3::ipv6, l3.ipv6_hosts, l3.ipv6_routes);
}

template <class Address>
void Pipeline::find_next_hops(std::size_t count, Layer3 protocol,
                              const L3HostTable<Address>& all_hosts,
                              const L3RouteTable<Address>& all_routes) {
  static_assert(kBurst <= L3RouteTable<Address>::kBatch, "a burst is looked up at once");
  std::array<Passage*, kBurst> routed;
  std::array<Address, kBurst> addresses;
  std::array<const NextHop*, kBurst> found;
  std::size_t missing = 0;
  for (std::size_t i = 0; i < count; ++i) {
    Passage& passage = passages_[i];
    if (passage.router == nullptr || passage.headers.l3 != protocol) continue;
    const auto address = destination_ip<Address>(*passage.frame, passage.headers);
    if (const auto* host = all_hosts.find(address)) {
      passage.next_hop = &host->next_hop;
      continue;
    }
    routed[missing] = &passage;
    addresses[missing++] = address;
  }
  if (missing == 0) return;
  all_routes.lookup_batch(addresses.data(), missing, found.data());
  for (std::size_t i = 0; i < missing; ++i) routed[i]->next_hop = found[i];
}

const L3Interface* Pipeline::router_of(const Passage& passage) const {
  // With one tag at most: what stands behind two is another network's.
  if (passage.headers.tags > 1 || passage.headers.group()) return nullptr;
  return card_.l3().interfaces.find(passage.vlan,
                                    MacAddress::from_number(passage.headers.destination));
}

// ---- The rest of the way ------------------------------------------------------------------------

void Pipeline::pass(Passage& passage) {
  if (!trap_reserved(passage) || !check_vlan(passage) || !check_lock(passage)) return;
  const Headers& headers = passage.headers;
  if (headers.group() &&
      !check_storm(passage, headers.broadcast() ? StormKind::broadcast : StormKind::multicast)) {
    return;
  }
  if (!check_stp(passage) || !trap_filtered(passage) || !apply_flow(passage)) return;
  forward(passage);
}

// Frames to the reserved group addresses concern this switch and nobody behind it.
bool Pipeline::trap_reserved(Passage& passage) {
  const PortIndex port = passage.ingress;
  if (card_.stp().disabled(port)) {
    drop(passage, DropReason::stp_ingress);
    return false;
  }
  if (!passage.headers.reserved_group()) return true;
  if (passage.headers.destination == kReservedGroup && !card_.stp().bpdu_processing(port)) {
    note("reserved", "BPDU, and BPDU processing is off: as any multicast");
    return true;
  }
  note("reserved", "reserved group address");
  const bool member =
      card_.vlans().exists(passage.vlan) && card_.vlans().members(passage.vlan).contains(port);
  if (!member) passage.frame->vlan = 0;
  FramePtr frame = std::move(passage.frame);
  if (!to_cpu(passage, std::move(frame), RX_REASON_RESERVED)) drop(passage, DropReason::cpu_queue);
  return false;
}

bool Pipeline::check_vlan(Passage& passage) {
  const PortIndex port = passage.ingress;
  if (passage.headers.tag_vlan() == 0 && !card_.port_vlans().accepts_untagged(port)) {
    drop(passage, DropReason::accept_frame);
    return false;
  }
  if (!card_.vlans().exists(passage.vlan)) {
    drop(passage, DropReason::no_vlan);
    return false;
  }
  if (!card_.vlans().members(passage.vlan).contains(port)) {
    drop(passage, DropReason::not_member);
    return false;
  }
  note("vlan", Destination::port(port), " is a member of VLAN ", passage.vlan);
  return true;
}

bool Pipeline::check_lock(Passage& passage) {
  if (!card_.mac_locks().drops_unknown(passage.ingress)) return true;
  const FdbEntry* entry = card_.fdb().find(fdb_key(passage.vlan, passage.headers.source));
  if (entry != nullptr && entry->destination() == passage.source) {
    note("lock", "locked, and ", Mac{passage.headers.source}, " is known here");
    return true;
  }
  drop(passage, DropReason::mac_lock);
  return false;
}

bool Pipeline::check_storm(Passage& passage, StormKind kind) {
  const PortIndex port = passage.ingress;
  if (port == kNoPort) return true;
  const std::uint32_t limit = card_.traffic().storm_limit(port, kind);
  if (limit == 0) return true;
  StormMeter& meter = states_[port].meters[static_cast<std::size_t>(kind)];
  if (meter.rate() != limit) meter.set_rate(limit);
  if (meter.admit(now_ns_)) {
    note("storm", "within ", limit, " frames/s");
    return true;
  }
  push_back(port);
  drop(passage, kind == StormKind::broadcast   ? DropReason::storm_broadcast
                : kind == StormKind::multicast ? DropReason::storm_multicast
                                               : DropReason::storm_unicast);
  return false;
}

// Tells the sender of more than the port lets in to slow down: by a pause frame, not again before
// the one before it has run out, or by jamming a half-duplex link.
void Pipeline::push_back(PortIndex port) {
  const PortTable& ports = card_.ports();
  if (ports.jams(port)) card_.counters().add(port, STAT_OUT_JAMS);
  if (!ports.sends_pause(port) || now_ns_ < states_[port].pause_until_ns) return;
  constexpr std::size_t kPauseBytes = 60;
  constexpr std::uint16_t kLongest = 0xFFFF;  // in units of 512 bit times
  FramePtr frame = card_.frame_pool().make(kPauseBytes);
  if (frame == nullptr) return;
  std::uint8_t* at = frame->data();
  std::fill_n(at, kPauseBytes, std::uint8_t{0});
  store48(at, kPauseGroup);
  store48(at + 6, ports.mac(port).to_number());
  store16(at + 12, kTypePause);
  store16(at + 14, 0x0001);
  store16(at + 16, kLongest);
  const std::uint64_t mbps = std::max<std::uint64_t>(ports.mode(port).speed, 1);
  states_[port].pause_until_ns = now_ns_ + std::uint64_t{kLongest} * 512 * 1000 / mbps;
  card_.counters().add(port, STAT_OUT_PAUSE_FRAMES);
  note("port", Destination::port(port), " sends a pause frame");
  stage(std::move(frame), port);
}

bool Pipeline::check_stp(Passage& passage) {
  const unsigned instance = card_.vlans().mstp_instance(passage.vlan);
  if (card_.stp().forwards(passage.ingress, instance)) {
    note("stp", "instance ", instance, ": forwarding");
    return true;
  }
  if (card_.stp().learns(passage.ingress, instance)) learn(passage);
  drop(passage, DropReason::stp_ingress);
  return false;
}

// ---- To the CPU by filter -----------------------------------------------------------------------

bool Pipeline::trap_filtered(Passage& passage) {
  const FilterTable& filters = card_.filters();
  if (!filters.any()) {
    note("filter", "no filters");
    return true;
  }
  const Headers& headers = passage.headers;
  unsigned reason = 0;
  if (headers.l3 == Layer3::arp) {
    if (filters.matches_arp_target(headers.ipv4_destination)) reason = RX_REASON_ARP_FILTER;
  } else if (headers.l3 != Layer3::none) {
    if (filters.matches_ip_protocol(headers.ip_protocol)) {
      reason = RX_REASON_IP_PROTOCOL_FILTER;
    } else if ((headers.l4 == Layer4::tcp || headers.l4 == Layer4::udp) &&
               filters.matches_l4_port(headers.l4_destination)) {
      reason = RX_REASON_L4_PORT_FILTER;
    }
  }
  if (reason == 0) {
    note("filter", "none matches");
    return true;
  }
  note("filter", "matches");
  FramePtr frame = std::move(passage.frame);
  if (!to_cpu(passage, std::move(frame), reason)) drop(passage, DropReason::cpu_queue);
  return false;
}

// ---- The flow table -----------------------------------------------------------------------------

bool Pipeline::apply_flow(Passage& passage) {
  const unsigned mode = card_.traffic().forward_mode();
  FlowTable& flows = card_.flows();
  if (mode == SWITCH_FORWARD_MODE_NORMAL ||
      (flows.size() == 0 && mode == SWITCH_FORWARD_MODE_HYBRID)) {
    note("flow",
         mode == SWITCH_FORWARD_MODE_NORMAL ? "not asked: forward mode normal" : "no flows");
    return true;
  }

  const Headers& headers = passage.headers;
  FlowKey key;
  key.set_ethernet(passage.ingress, headers.source, headers.destination, passage.vlan,
                   passage.priority, headers.ether_type);
  switch (headers.l3) {
    case Layer3::arp:
      key.set_ip(static_cast<std::uint8_t>(headers.arp_operation), 0);
      key.set_ipv4(headers.ipv4_source, headers.ipv4_destination);
      break;
    case Layer3::ipv4:
      key.set_ipv4(headers.ipv4_source, headers.ipv4_destination);
      key.set_ip(headers.ip_protocol, headers.tos);
      break;
    case Layer3::ipv6:
      key.set_ip(headers.ip_protocol, headers.tos);
      break;
    case Layer3::none:
      break;
  }
  if (headers.l4 != Layer4::none) key.set_l4_ports(headers.l4_source, headers.l4_destination);
  const UdfReader bytes{passage.frame->data(), static_cast<std::uint32_t>(passage.frame->size()),
                        headers.l3_offset, headers.l4_offset};

  const Flow* flow = flows.lookup(key, bytes);
  if (flow == nullptr) {
    note("flow", "none matches");
    if (mode == SWITCH_FORWARD_MODE_HYBRID) return true;
    drop(passage, DropReason::flow_miss);
    return false;
  }
  note("flow", "flow ", flow->id, ", priority ", flow->priority, ", ", flows.actions(*flow).count,
       " action(s)");
  flows.count(*flow, static_cast<std::uint32_t>(passage.frame->size()));

  // The actions change the frame and send it in their order; the last output takes the frame
  // itself, the ones before it copies.
  const FlowActions& actions = flows.actions(*flow);
  const FlowAction* last = nullptr;
  for (const FlowAction& action : actions) {
    if (action.kind == OF_ACTION_OUTPUT && action.words[0] != OF_PORT_DROP) last = &action;
  }
  if (last == nullptr) {
    drop(passage, DropReason::flow_drop);
    return false;
  }
  for (const FlowAction& action : actions) {
    if (action.kind != OF_ACTION_OUTPUT) {
      rewrite(passage, action);
    } else if (&action == last) {
      FramePtr frame = std::move(passage.frame);
      output(passage, std::move(frame), action);
      return false;
    } else if (action.words[0] != OF_PORT_DROP) {
      output(passage, card_.frame_pool().copy(*passage.frame), action);
    }
  }
  return false;
}

// One output of a flow. A physical port sends the frame with the tag that it has by now; the ways
// that know VLANs tag as always.
void Pipeline::output(Passage& passage, FramePtr frame, const FlowAction& action) {
  if (frame == nullptr) {
    if (passage.ingress != kNoPort) refuse(passage.ingress, DropReason::no_buffer);
    return;
  }
  switch (action.words[0]) {
    case OF_PORT_IN_PORT:
      note("flow", "back to the ingress port");
      if (passage.ingress == kNoPort) {
        passage.frame = std::move(frame);
        drop(passage, DropReason::same_port);
      } else {
        send(passage, std::move(frame), Destination::port(passage.ingress), Tagging::as_it_is);
      }
      return;
    case OF_PORT_CONTROLLER:
    case OF_PORT_LOCAL: {
      const bool local = action.words[0] == OF_PORT_LOCAL;
      if (!to_cpu(passage, std::move(frame), local ? RX_REASON_LOCAL : RX_REASON_FLOW)) {
        drop(passage, DropReason::cpu_queue);
      }
      return;
    }
    case OF_PORT_NORMAL: {
      note("flow", "the ordinary way");
      Passage ordinary;
      ordinary.frame = std::move(frame);
      ordinary.ingress = passage.ingress;
      ordinary.source = passage.source;
      ordinary.vlan = passage.vlan;
      ordinary.priority = passage.priority;
      ordinary.control = passage.control;
      ordinary.queue = passage.queue;
      ordinary.headers = passage.headers;
      ordinary.router = router_of(ordinary);
      forward(ordinary);
      return;
    }
    case OF_PORT_FLOOD:
      flood(passage, std::move(frame), flood_kind(passage.headers));
      return;
    case OF_PORT_ALL: {
      const PortSet ready = able(passage, Tagging::as_it_is);
      for (const PortIndex egress : ready - own_ports(passage)) {
        const std::uint16_t lag = card_.lags().lag_of(egress);
        if (lag != LagTable::kNoLag &&
            choose_member(passage, *frame, card_.lags()[lag], ready) != egress) {
          continue;
        }
        FramePtr copy = card_.frame_pool().copy(*frame);
        if (copy == nullptr) {
          refuse(egress, DropReason::no_buffer);
        } else {
          emit(passage, std::move(copy), egress, Tagging::as_it_is);
        }
      }
      return;
    }
    default:
      if (action.destination == Destination::port(passage.ingress)) {
        passage.frame = std::move(frame);
        drop(passage, DropReason::same_port);
      } else {
        send(passage, std::move(frame), action.destination, Tagging::as_it_is);
      }
      return;
  }
}

void Pipeline::rewrite(Passage& passage, const FlowAction& action) {
  Frame& frame = *passage.frame;
  Headers& headers = passage.headers;
  const std::uint32_t word = action.words[0];
  const std::uint64_t mac = std::uint64_t{word} << 16 | (action.words[1] & 0xFFFF);
  const bool drop_eligible = (headers.tag_control & 0x1000) != 0;
  note("flow", action_text(action.kind), " ", Hex{word}, " ", Hex{action.words[1]});
  switch (action.kind) {
    case OF_ACTION_SET_VLAN_ID:
      passage.vlan = static_cast<std::uint16_t>(word);
      set_tag(frame, headers, tag_control(word, passage.priority, drop_eligible));
      break;
    case OF_ACTION_SET_VLAN_PRIORITY:
      passage.priority = static_cast<std::uint8_t>(word);
      set_tag(frame, headers, tag_control(headers.tag_vlan(), word, drop_eligible));
      break;
    case OF_ACTION_STRIP_VLAN:
      pop_tag(frame, headers);
      break;
    case OF_ACTION_SET_SRC_MAC:
      set_source_mac(frame, headers, mac);
      break;
    case OF_ACTION_SET_DST_MAC:
      set_destination_mac(frame, headers, mac);
      break;
    case OF_ACTION_SET_SRC_IP:
      set_ipv4_source(frame, headers, word);
      break;
    case OF_ACTION_SET_DST_IP:
      set_ipv4_destination(frame, headers, word);
      break;
    case OF_ACTION_SET_TOS:
      set_tos(frame, headers, static_cast<std::uint8_t>(word));
      break;
    case OF_ACTION_SET_SRC_L4_PORT:
      set_l4_source(frame, headers, static_cast<std::uint16_t>(word));
      break;
    case OF_ACTION_SET_DST_L4_PORT:
      set_l4_destination(frame, headers, static_cast<std::uint16_t>(word));
      break;
    case OF_ACTION_SET_QUEUE:
      passage.queue = static_cast<std::int8_t>(word);
      break;
    default:
      break;
  }
  frame.vlan = passage.vlan;
  frame.priority = passage.priority;
}

// ---- Learning -----------------------------------------------------------------------------------

void Pipeline::learn(const Passage& passage) {
  const PortIndex port = passage.ingress;
  if (port == kNoPort) return;
  FdbTable& fdb = card_.fdb();
  const std::uint64_t mac = passage.headers.source;
  const FdbEntry* entry = fdb.find(fdb_key(passage.vlan, mac));
  if (entry != nullptr && entry->destination() == passage.source) {
    fdb.touch(*entry, card_.now_seconds());
    note("learn", Mac{mac}, " is known here");
    return;
  }
  if (!card_.traffic().l2_on(port)) return;
  if ((mac >> 40 & 1) != 0 || mac == 0) {
    note("learn", Mac{mac}, " is no source");
    return;
  }
  if (entry != nullptr && entry->kind() != FdbKind::learned) {
    note("learn", Mac{mac}, " is static elsewhere");
    return;
  }
  const MacLockTable& locks = card_.mac_locks();
  if (locks.locked(port)) {
    note("learn", "the port is locked");
    return;
  }
  if (!locks.unlimited()) {
    // An entry that moves is new to its port only. A LAG's addresses count for its members too.
    const bool lag = passage.source.is_lag();
    const std::size_t here = fdb.learned_on(passage.source);
    const bool room =
        MacLockTable::room(locks.port_limit(port), here) &&
        (!lag || MacLockTable::room(locks.lag_limit(passage.source.number), here)) &&
        (entry != nullptr ||
         (MacLockTable::room(locks.vlan_limit(passage.vlan), fdb.learned_in(passage.vlan)) &&
          MacLockTable::room(locks.system_limit(), fdb.learned())));
    if (!room) {
      note("learn", "a limit is reached");
      return;
    }
  }
  const FdbLearn result =
      fdb.learn(passage.vlan, MacAddress::from_number(mac), passage.source, card_.now_seconds());
  note("learn", Mac{mac}, result == FdbLearn::full ? ": the table is full" : " learned");
}

// ---- Layer 3 or the FDB -------------------------------------------------------------------------

void Pipeline::forward(Passage& passage) {
  learn(passage);
  if (passage.router != nullptr) {
    route(passage);
  } else {
    note("l3", "not to a router interface");
    bridge(passage);
  }
}

void Pipeline::route(Passage& passage) {
  const Headers& headers = passage.headers;
  L3Table& l3 = card_.l3();
  note("l3", "to router interface ", passage.router->id);

  // What the router hands to the CPU instead of passing it on.
  unsigned reason = 0;
  DropReason lost = DropReason::router_local;
  const NextHop* hop = nullptr;
  const L3Interface* out = nullptr;
  PortIndex egress = kNoPort;
  if (headers.l3_damaged) {
    drop(passage, DropReason::bad_ip);
    return;
  }
  if (headers.l3 != Layer3::ipv4 && headers.l3 != Layer3::ipv6) {
    reason = RX_REASON_ROUTER;
  } else if (headers.l3 == Layer3::ipv4 &&
             fold(sum_words(passage.frame->data() + headers.l3_offset,
                            (passage.frame->data()[headers.l3_offset] & 0xFu) * std::size_t{4})) !=
                 0xFFFF) {
    drop(passage, DropReason::bad_ip);
    return;
  } else if (headers.options) {
    reason = RX_REASON_OPTIONS;
  } else if (headers.ttl <= 1) {
    reason = RX_REASON_TTL;
    lost = DropReason::ttl;
  } else {
    hop = passage.next_hop != nullptr ? passage.next_hop : next_hop_of(passage);
    if (hop == nullptr) {
      reason = RX_REASON_NO_ROUTE;
      lost = DropReason::no_route;
    }
  }
  if (hop != nullptr) {
    out = l3.interfaces.get(hop->interface_id);
    if (out == nullptr) {
      drop(passage, DropReason::no_interface);
      return;
    }
    passage.vlan = out->vlan;
    egress = hop->destination.number;
    if (hop->destination.is_lag()) {
      egress = choose_member(passage, *passage.frame, card_.lags()[hop->destination.number],
                             able(passage, Tagging::by_membership));
      if (egress == kNoPort) {
        drop(passage, DropReason::lag_empty);
        return;
      }
    }
    if (mtu_bytes(*passage.frame, headers.tags != 0) > card_.ports().mtu_bytes(egress)) {
      reason = RX_REASON_MTU;
      lost = DropReason::router_mtu;
    }
  }
  if (reason != 0) {
    note("l3", text(lost));
    FramePtr frame = std::move(passage.frame);
    if (!to_cpu(passage, std::move(frame), reason)) drop(passage, lost);
    return;
  }

  note("l3", "next hop ", Mac{hop->mac.to_number()}, " through interface ", out->id, ", VLAN ",
       out->vlan, ", ", hop->destination);
  FramePtr frame = std::move(passage.frame);
  set_source_mac(*frame, passage.headers, out->mac.to_number());
  set_destination_mac(*frame, passage.headers, hop->mac.to_number());
  decrement_ttl(*frame, passage.headers);
  frame->vlan = passage.vlan;
  send(passage, std::move(frame), Destination::port(egress), Tagging::by_membership);
}

// The host of the destination address, else the route; null when there is neither.
const NextHop* Pipeline::next_hop_of(const Passage& passage) const {
  const auto find = [](const auto& ip, const auto& hosts, const auto& routes) -> const NextHop* {
    if (const auto* host = hosts.find(ip)) return &host->next_hop;
    return routes.lookup(ip);
  };
  const L3Table& l3 = card_.l3();
  const Frame& frame = *passage.frame;
  return passage.headers.l3 == Layer3::ipv4
             ? find(destination_ip<Ipv4>(frame, passage.headers), l3.ipv4_hosts, l3.ipv4_routes)
             : find(destination_ip<Ipv6Address>(frame, passage.headers), l3.ipv6_hosts,
                    l3.ipv6_routes);
}

void Pipeline::bridge(Passage& passage) {
  const Headers& headers = passage.headers;
  if (passage.ingress != kNoPort && !card_.traffic().l2_on(passage.ingress)) {
    // The CPU still gets its copies of floods.
    const flood_block_type_t kind = flood_kind(headers);
    if (headers.group() && !card_.flood_blocks().blocked_to_cpu(passage.ingress, kind)) {
      to_cpu(passage, card_.frame_pool().copy(*passage.frame), RX_REASON_FLOOD);
    }
    drop(passage, DropReason::l2_disabled);
    return;
  }
  passage.bridged = true;

  const FdbEntry* entry = card_.fdb().find(fdb_key(passage.vlan, headers.destination));
  const Destination destination = entry == nullptr ? Destination::none() : entry->destination();
  switch (destination.kind) {
    case DestinationKind::port:
    case DestinationKind::lag: {
      note("fdb", Mac{headers.destination}, " is at ", destination);
      if (destination == passage.source || destination == Destination::port(passage.ingress)) {
        drop(passage, DropReason::same_port);
        return;
      }
      FramePtr frame = std::move(passage.frame);
      send(passage, std::move(frame), destination, Tagging::by_membership);
      return;
    }
    case DestinationKind::cpu: {
      note("fdb", Mac{headers.destination}, " is the switch's own");
      FramePtr frame = std::move(passage.frame);
      if (!to_cpu(passage, std::move(frame), RX_REASON_SYSTEM_MAC)) {
        drop(passage, DropReason::cpu_queue);
      }
      return;
    }
    case DestinationKind::none:
    case DestinationKind::drop:
      break;
  }

  const flood_block_type_t kind = flood_kind(headers);
  bool copy_to_cpu = true;
  unsigned reason = RX_REASON_FLOOD;
  if (kind == FLOOD_BLOCK_UNKNOWN_UNICAST) {
    note("fdb", Mac{headers.destination}, " is unknown");
    if (!check_storm(passage, StormKind::unknown_unicast)) return;
    copy_to_cpu = passage.ingress != kNoPort &&
                  card_.traffic().copies_unknown_unicast_to_cpu(passage.ingress);
    reason = RX_REASON_UNKNOWN_UNICAST;
  }
  if (copy_to_cpu && passage.ingress != kNoPort) {
    if (card_.flood_blocks().blocked_to_cpu(passage.ingress, kind)) {
      note("flood", "kept from the CPU");
    } else {
      to_cpu(passage, card_.frame_pool().copy(*passage.frame), reason);
    }
  }
  FramePtr frame = std::move(passage.frame);
  flood(passage, std::move(frame), kind);
}

// Sends the frame out of every other port of its VLAN that has a link and may send it.
void Pipeline::flood(Passage& passage, FramePtr frame, flood_block_type_t kind) {
  const PortSet reach =
      (card_.vlans().members(passage.vlan) & card_.ports().up()) - own_ports(passage);
  PortSet blocked;
  if (passage.ingress != kNoPort) {
    blocked = card_.flood_blocks().blocked(passage.ingress, kind) & reach;
  }
  const PortSet ready = (reach & able(passage, Tagging::by_membership)) - blocked;
  for (const PortIndex egress : reach - ready) {
    // One member of a LAG that cannot send leaves its frames to the others.
    const std::uint16_t lag = card_.lags().lag_of(egress);
    if (lag != LagTable::kNoLag && !(card_.lags()[lag].set & ready).empty()) continue;
    DropReason reason = DropReason::flood_blocked;
    if (blocked.contains(egress) || refused(passage, egress, Tagging::by_membership, reason)) {
      refuse(egress, reason);
    }
  }

  std::array<PortIndex, kMaxPorts> targets;
  std::size_t count = 0;
  for (const PortIndex egress : ready) {
    const std::uint16_t lag = card_.lags().lag_of(egress);
    if (lag != LagTable::kNoLag &&
        choose_member(passage, *frame, card_.lags()[lag], ready) != egress) {
      continue;
    }
    targets[count++] = egress;
  }
  note("flood", "VLAN ", passage.vlan, " to ", count, " port(s)");
  if (count == 0) {
    passage.frame = std::move(frame);
    drop(passage, DropReason::flood_nowhere);
    return;
  }
  for (std::size_t i = 0; i + 1 < count; ++i) {
    FramePtr copy = card_.frame_pool().copy(*frame);
    if (copy == nullptr) {
      refuse(targets[i], DropReason::no_buffer);
    } else {
      emit(passage, std::move(copy), targets[i], Tagging::by_membership);
    }
  }
  emit(passage, std::move(frame), targets[count - 1], Tagging::by_membership);
}

// The ports that a frame came in through and so does not leave through by itself.
PortSet Pipeline::own_ports(const Passage& passage) const {
  if (passage.ingress == kNoPort) return PortSet();
  if (passage.source.is_lag()) return card_.lags()[passage.source.number].set;
  return PortSet::of(passage.ingress);
}

// ---- Out of a port or a LAG ---------------------------------------------------------------------

void Pipeline::send(Passage& passage, FramePtr frame, Destination destination, Tagging tagging) {
  PortIndex egress = destination.number;
  if (destination.is_lag()) {
    egress =
        choose_member(passage, *frame, card_.lags()[destination.number], able(passage, tagging));
    if (egress == kNoPort) {
      passage.frame = std::move(frame);
      drop(passage, DropReason::lag_empty);
      return;
    }
    note("lag", destination, " by ", Destination::port(egress));
  } else if (!destination.is_port()) {
    passage.frame = std::move(frame);
    drop(passage, DropReason::flow_drop);
    return;
  }
  DropReason reason;
  if (refused(passage, egress, tagging, reason)) {
    refuse(egress, reason);
    return;
  }
  emit(passage, std::move(frame), egress, tagging);
}

// The ports that may send the frame as far as refused() is concerned.
PortSet Pipeline::able(const Passage& passage, Tagging tagging) const {
  PortSet ports = card_.ports().up() & card_.traffic().egress_on();
  if (tagging == Tagging::by_membership) ports &= card_.vlans().members(passage.vlan);
  if (passage.bridged) ports &= card_.traffic().l2_on();
  if (!passage.control) {
    ports &= card_.stp().forwarding(card_.vlans().mstp_instance(passage.vlan));
  }
  return ports;
}

// Whether a port may not send the frame, and why.
bool Pipeline::refused(const Passage& passage, PortIndex egress, Tagging tagging,
                       DropReason& reason) const {
  if (!card_.ports().is_up(egress)) {
    reason = DropReason::egress_down;
  } else if (!card_.traffic().egress_on(egress)) {
    reason = DropReason::egress_state;
  } else if (tagging == Tagging::by_membership &&
             !card_.vlans().members(passage.vlan).contains(egress)) {
    reason = DropReason::egress_not_member;
  } else if (passage.bridged && !card_.traffic().l2_on(egress)) {
    reason = DropReason::egress_l2_disabled;
  } else if (!passage.control &&
             !card_.stp().forwards(egress, card_.vlans().mstp_instance(passage.vlan))) {
    reason = DropReason::stp_egress;
  } else {
    return false;
  }
  return true;
}

// The member of a LAG that a frame leaves through, of those that are able; kNoPort when none is. A
// frame whose member is able leaves through it whatever the others do.
PortIndex Pipeline::choose_member(const Passage& passage, const Frame& frame, const Lag& lag,
                                  const PortSet& ready) {
  if (lag.size == 0) return kNoPort;
  const std::uint64_t hash = balance(passage.headers, frame, lag.psc);
  const PortIndex favourite = lag.members[static_cast<std::uint32_t>(hash >> 32) % lag.size];
  if (ready.contains(favourite)) return favourite;
  const PortSet rest = lag.set & ready;
  const unsigned count = rest.size();
  if (count == 0) return kNoPort;
  unsigned place = static_cast<std::uint32_t>(hash) % count;
  for (std::size_t i = 0; i < lag.size; ++i) {
    if (rest.contains(lag.members[i]) && place-- == 0) return lag.members[i];
  }
  return kNoPort;
}

// A number that is equal for frames that are equal in what the criterion names.
std::uint64_t Pipeline::balance(const Headers& headers, const Frame& frame, lag_psc_t criterion) {
  const bool ip = headers.l3 == Layer3::ipv4 || headers.l3 == Layer3::ipv6;
  const bool source = criterion != LAG_PSC_DST_MAC && criterion != LAG_PSC_DST_IP;
  const bool destination = criterion != LAG_PSC_SRC_MAC && criterion != LAG_PSC_SRC_IP;
  std::uint64_t sum = 0;
  const auto add = [&sum](std::uint64_t part) { sum = mix64(sum + part); };
  if (!ip || criterion <= LAG_PSC_SRC_DST_MAC) {
    if (source) add(headers.source);
    if (destination) add(headers.destination + 1);
    return sum;
  }
  if (headers.l3 == Layer3::ipv4) {
    if (source) add(headers.ipv4_source);
    if (destination) add(headers.ipv4_destination + std::uint64_t{1});
  } else {
    const std::uint8_t* addresses = frame.data() + headers.l3_offset + 8;
    const auto add_words = [&](const std::uint8_t* at) {
      for (std::size_t i = 0; i < 16; i += 4) add(load32(at + i));
    };
    if (source) add_words(addresses);
    if (destination) add_words(addresses + 16);
  }
  // Only the first fragment of a packet has ports: without them all fragments stay together.
  if (criterion == LAG_PSC_SRC_DST_IP_PORT && !headers.fragment && headers.l4 != Layer4::none &&
      headers.l4 != Layer4::icmp) {
    add(std::uint64_t{headers.l4_source} << 16 | headers.l4_destination);
  }
  return sum;
}

// Gives the frame the tag that it leaves the port with, or none, and sends it.
bool Pipeline::emit(const Passage& passage, FramePtr frame, PortIndex egress, Tagging tagging) {
  if (mtu_bytes(*frame, passage.headers.tags != 0) > card_.ports().mtu_bytes(egress)) {
    refuse(egress, DropReason::egress_mtu);
    return false;
  }
  const Headers& headers = passage.headers;
  bool tagged = headers.tags != 0;
  std::uint16_t control = headers.tag_control;
  switch (tagging) {
    case Tagging::by_membership:
      tagged = !card_.vlans().untagged(passage.vlan).contains(egress);
      control = tag_control(passage.vlan, passage.priority, (control & 0x1000) != 0);
      break;
    case Tagging::tagged:
      if (!tagged) control = tag_control(card_.port_vlans().pvid(egress), 0, false);
      tagged = true;
      break;
    case Tagging::untagged:
      tagged = false;
      break;
    case Tagging::as_it_is:
      break;
  }
  if (!tagged) {
    if (headers.tags != 0) strip_tag(*frame);
  } else if (headers.tags == 0) {
    push_tag(*frame, control);
  } else if (control != headers.tag_control) {
    write_tag(*frame, control);
  }

  const unsigned queue = passage.queue >= 0 ? static_cast<unsigned>(passage.queue)
                                            : card_.cos().queue(egress, passage.priority);
  note("out", Destination::port(egress), tagged ? " tagged" : " untagged", ", queue ", queue);
  if (card_.mirrors().egress().contains(egress)) mirror(*frame, egress, "egress");
  transmit(std::move(frame), egress, queue);
  return true;
}

// Copies the frame as it is to the mirror-to port, past VLANs and the spanning tree.
void Pipeline::mirror(const Frame& frame, PortIndex mirrored, const char* direction) {
  const PortIndex to = card_.mirrors()[mirrored].to;
  note("mirror", direction, " of ", Destination::port(mirrored), " to ", Destination::port(to));
  const std::uint16_t type = load16(frame.data() + 12);
  const bool tagged = type == kTypeCustomerTag || type == kTypeServiceTag;
  DropReason reason = DropReason::no_buffer;
  if (!card_.ports().is_up(to)) {
    reason = DropReason::egress_down;
  } else if (!card_.traffic().egress_on(to)) {
    reason = DropReason::egress_state;
  } else if (mtu_bytes(frame, tagged) > card_.ports().mtu_bytes(to)) {
    reason = DropReason::egress_mtu;
  } else if (FramePtr copy = card_.frame_pool().copy(frame)) {
    transmit(std::move(copy), to, card_.cos().queue(to, frame.priority));
    return;
  }
  refuse(to, reason);
}

void Pipeline::transmit(FramePtr frame, PortIndex egress, unsigned queue) {
  const auto count = [&](const Frame& sent) {
    card_.counters().sent(egress, sent.size(), cast_of(load48(sent.data())), queue);
  };
  const Cable* cable = card_.cable(egress);
  if (!frame->offload.pending() || (cable != nullptr && cable->takes_offloads())) {
    count(*frame);
    stage(std::move(frame), egress);
  } else if (frame->offload.segmentation == Segmentation::none) {
    complete_checksum(*frame);
    count(*frame);
    stage(std::move(frame), egress);
  } else {
    std::size_t taken = 0;
    while (frame != nullptr) {
      FramePtr piece = next_segment(frame, card_.frame_pool(), taken);
      if (piece == nullptr) {
        refuse(egress, DropReason::no_buffer);
      } else {
        count(*piece);
        stage(std::move(piece), egress);
      }
    }
  }
}

void Pipeline::stage(FramePtr frame, PortIndex egress) {
  Staged& staged = staged_[egress];
  staged.frames[staged.count++] = std::move(frame);
  staged_ports_.insert(egress);
  if (staged.count == kBurst) flush(egress);
}

void Pipeline::flush(PortIndex egress) {
  Staged& staged = staged_[egress];
  const std::size_t count = staged.count;
  staged.count = 0;
  staged_ports_.erase(egress);
  Cable* cable = card_.cable(egress);
  std::size_t sent = 0;
  if (cable != nullptr) {
    sent = cable->transmit(staged.frames.data(), count);
  } else {
    for (std::size_t i = 0; i < count; ++i) staged.frames[i].reset();
  }
  if (sent == count) return;
  const DropReason reason = cable == nullptr ? DropReason::unplugged : DropReason::cable_refused;
  states_[egress].drops[static_cast<std::size_t>(reason)] += count - sent;
  card_.counters().add(egress, STAT_OUT_ERRORS, count - sent);
  note("out", Destination::port(egress), ": ", reason);
}

void Pipeline::flush_all() {
  for (const PortIndex egress : staged_ports_) flush(egress);
}

// ---- To the CPU ---------------------------------------------------------------------------------

// Queues the frame for the CPU. False when it has no room, nobody listens, or the frame came from
// there.
bool Pipeline::to_cpu(const Passage& passage, FramePtr frame, unsigned reason) {
  EventQueue& events = card_.events();
  if (frame == nullptr || passage.ingress == kNoPort || !events.wants_packets()) {
    note("cpu", frame == nullptr             ? "no frame for the copy is left"
                : passage.ingress == kNoPort ? "came from there"
                                             : "nobody listens for packets");
    return false;
  }
  complete_checksum(*frame);
  const bool queued = events.post_packet(std::move(frame), reason);
  note("cpu", queued ? "to the CPU: " : "the queue is full: ", rx_reason_text(reason));
  return queued;
}

// ---- From the CPU -------------------------------------------------------------------------------

bool Pipeline::read_cpu_frame(const std::uint8_t* data, std::size_t bytes, unsigned type,
                              Passage& passage) {
  now_ns_ = card_.clock().now_ns();
  passage.frame = card_.frame_pool().make(data, bytes);
  if (passage.frame == nullptr ||
      parse(passage.frame->data(), bytes, passage.headers) != FrameFault::none) {
    return false;
  }
  passage.control = type == PACKET_TYPE_CONTROL;
  passage.priority = passage.headers.tag_priority();
  note("cpu", Mac{passage.headers.source}, " to ", Mac{passage.headers.destination}, ", ", bytes,
       " bytes from the CPU");
  return true;
}

bool Pipeline::send_by_port(const std::vector<PortIndex>& tagged,
                            const std::vector<PortIndex>& untagged, const std::uint8_t* data,
                            std::size_t bytes, unsigned type) {
  Passage passage;
  if (!read_cpu_frame(data, bytes, type, passage)) return false;
  bool sent = false;
  const auto send_copy = [&](PortIndex egress, Tagging tagging) {
    const std::uint16_t own = passage.headers.tag_vlan();
    passage.vlan = own != 0 ? own : card_.port_vlans().pvid(egress);
    DropReason reason = DropReason::no_buffer;
    FramePtr copy;
    if (!refused(passage, egress, tagging, reason)) copy = card_.frame_pool().copy(*passage.frame);
    if (copy == nullptr) {
      refuse(egress, reason);
      return;
    }
    copy->vlan = passage.vlan;
    copy->priority = passage.priority;
    sent |= emit(passage, std::move(copy), egress, tagging);
  };
  for (const PortIndex egress : tagged) send_copy(egress, Tagging::tagged);
  for (const PortIndex egress : untagged) send_copy(egress, Tagging::untagged);
  flush_all();
  return sent;
}

bool Pipeline::send_from_cpu(const std::uint8_t* data, std::size_t bytes, unsigned type) {
  constexpr std::uint16_t kDefaultVlan = 1;
  Passage passage;
  if (!read_cpu_frame(data, bytes, type, passage)) return false;
  passage.vlan = passage.headers.tag_vlan() != 0 ? passage.headers.tag_vlan() : kDefaultVlan;
  if (!card_.vlans().exists(passage.vlan)) return false;
  passage.frame->vlan = passage.vlan;
  passage.frame->priority = passage.priority;
  passage.router = router_of(passage);
  if (apply_flow(passage)) forward(passage);
  flush_all();
  return true;
}

// ---- Drops --------------------------------------------------------------------------------------

void Pipeline::drop(Passage& passage, DropReason reason) {
  passage.frame.reset();
  note("verdict", reason);
  if (passage.ingress == kNoPort) {
    ++cpu_drops_[static_cast<std::size_t>(reason)];
    return;
  }
  ++states_[passage.ingress].drops[static_cast<std::size_t>(reason)];
  Counters& counters = card_.counters();
  counters.add(passage.ingress, STAT_IN_DISCARDS);
  const stat_type_t own = counter_of(reason);
  if (own != STAT_IN_DISCARDS) counters.add(passage.ingress, own);
}

void Pipeline::refuse(PortIndex egress, DropReason reason) {
  note("out", Destination::port(egress), ": ", reason);
  ++states_[egress].drops[static_cast<std::size_t>(reason)];
  card_.counters().add(egress, STAT_OUT_DISCARDS);
}

std::uint64_t Pipeline::drops(PortIndex port, DropReason reason) const {
  const auto place = static_cast<std::size_t>(reason);
  return port == kNoPort ? cpu_drops_[place] : states_[port].drops[place];
}

std::uint64_t Pipeline::drops(DropReason reason) const {
  std::uint64_t sum = drops(kNoPort, reason);
  for (const PortState& state : states_) sum += state.drops[static_cast<std::size_t>(reason)];
  return sum;
}

void Pipeline::clear_drops() {
  cpu_drops_ = {};
  for (PortState& state : states_) state.drops = {};
}

void Pipeline::clear_drops(PortIndex port) { states_[port].drops = {}; }

}  // namespace softcard
