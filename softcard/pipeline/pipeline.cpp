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
#include <optional>
#include <utility>

#include "softcard/base/address_plan.h"
#include "softcard/base/address_scope.h"
#include "softcard/base/refusal.h"
#include "softcard/frames/checksum.h"
#include "softcard/frames/offload.h"
#include "softcard/frames/rewrite.h"
#include "softcard/frames/wire.h"
#include "softcard/pipeline/flow_key.h"
#include "softcard/pipeline/load_balance.h"
#include "softcard/pipeline/routable.h"

namespace softcard {

namespace {

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

}  // namespace

Pipeline::Pipeline(Tables& tables, const Clock& clock, FramePool& pool, CpuQueue& cpu,
                   PortCables& cables)
    : tables_(tables),
      clock_(clock),
      pool_(pool),
      cpu_(cpu),
      note_(tables),
      witness_(tables),
      egress_(tables, pool, cables, note_, witness_),
      fast_path_(tables, pool, cpu, egress_),
      meters_(tables.ports.count()) {}

// ---- A burst of frames --------------------------------------------------------------------------

// Frames on their way together. What an exception leaves of them goes nowhere: neither what waits
// for its turn nor what is staged may leave with later frames.
class Pipeline::Burst {
 public:
  explicit Burst(Pipeline& pipeline) : pipeline_(pipeline) {}
  Burst(const Burst&) = delete;
  Burst& operator=(const Burst&) = delete;
  ~Burst() {
    if (!sent_) pipeline_.abandon();
  }
  void send() {
    pipeline_.egress_.flush();
    pipeline_.witness_.finish();
    pipeline_.witness_.burst_over();
    sent_ = true;
  }

 private:
  Pipeline& pipeline_;
  bool sent_ = false;
};

void Pipeline::abandon() {
  egress_.discard();
  witness_.forget();
  for (Passage& passage : passages_) {
    if (passage.frame == nullptr) continue;
    passage.frame.reset();
    count_drop(passage, DropReason::no_buffer);
  }
}

void Pipeline::receive(PortIndex port, FramePtr* frames, std::size_t count) {
  Burst frames_in_hand(*this);
  now_ns_ = clock_.now_ns();
  now_seconds_ = now_ns_ / kNanosecondsPerSecond;
  tables_.fdb.age(now_seconds_);
  const bool fast =
      fast_path_on_ && !note_.on() && !witness_.looks() && fast_path_.begin(port, now_seconds_);
  while (count != 0) {
    // What an observer sees of a frame ends before the next one begins.
    const std::size_t burst = std::min(count, witness_.looks() ? 1 : kBurst);
    for (std::size_t i = 0; i < burst; ++i) prefetch(frames[i]->data());
    fast_path_.begin_batch();
    std::size_t waiting = 0;
    std::size_t routed = 0;
    for (std::size_t i = 0; i < burst; ++i) {
      Passage& passage = passages_[waiting];
      passage.frame = std::move(frames[i]);
      passage.ingress = port;
      passage.fast = fast && fast_path_.admits(waiting, *passage.frame);
      if (!passage.fast) {
        if (!enter(passage)) continue;
        if (passage.router != nullptr) ++routed;
      }
      ++waiting;
    }
    if (fast) fast_path_.find_next_hops();
    if (routed != 0) find_next_hops(waiting);
    for (std::size_t i = 0; i < waiting; ++i) {
      Passage& passage = passages_[i];
      if (passage.fast) {
        if (fast_path_.forward(i, passage.frame)) continue;
        if (!enter(passage)) continue;
      }
      pass(passage);
    }
    if (witness_.looks()) {
      egress_.flush();
      witness_.finish();
    }
    frames += burst;
    count -= burst;
  }
  frames_in_hand.send();
}

// Lets a frame in and finds its VLAN; false when it goes no further.
bool Pipeline::enter(Passage& passage) {
  passage.begin();
  if (!arrive(passage)) return false;
  classify(passage);
  return true;
}

// ---- In at a port -------------------------------------------------------------------------------

bool Pipeline::arrive(Passage& passage) {
  const PortIndex port = passage.ingress;
  Frame& frame = *passage.frame;
  Headers& headers = passage.headers;
  frame.ingress = port;
  note_("port", Destination::port(port), " received ", frame.size(), " bytes");
  witness_.begin(port, frame, now_ns_);

  if (!tables_.ports.is_up(port)) {
    // A frame that does not arrive is not counted as received either.
    tables_.drops.add(port, DropReason::link_down);
    note_("port", DropReason::link_down);
    witness_.dropped(DropReason::link_down);
    passage.frame.reset();
    return false;
  }

  const FrameFault fault = parse(frame.data(), frame.size(), headers);
  const bool oversize = fault == FrameFault::none &&
                        mtu_bytes(frame, headers.tags != 0) > tables_.ports.mtu_bytes(port);
  if (fault != FrameFault::none || oversize) {
    Counters& counters = tables_.counters;
    counters.add(port, STAT_IN_ERRORS);
    if (oversize) counters.add(port, STAT_IN_OVERSIZE);
    if (fault == FrameFault::runt) counters.add(port, STAT_IN_UNDERSIZE);
    const DropReason reason = oversize                    ? DropReason::oversize
                              : fault == FrameFault::runt ? DropReason::runt
                                                          : DropReason::malformed;
    tables_.drops.add(port, reason);
    note_("port", reason);
    witness_.dropped(reason);
    passage.frame.reset();
    return false;
  }
  note_("parse", MacText{headers.source}, " to ", MacText{headers.destination}, ", type ",
        HexText{headers.ether_type}, ", ", headers.tags, " tag(s)");

  if (headers.destination == kPauseGroup && headers.ether_type == kTypePause) {
    // MAC control stays between the two ends of a link: it is neither counted as traffic, mirrored
    // nor forwarded.
    if (tables_.ports.receives_pause(port)) tables_.counters.add(port, STAT_IN_PAUSE_FRAMES);
    tables_.drops.add(port, DropReason::pause);
    note_("port", DropReason::pause);
    witness_.dropped(DropReason::pause);
    passage.frame.reset();
    return false;
  }

  tables_.counters.received(port, frame.size(), cast_of(headers.destination));
  if (tables_.mirrors.ingress().contains(port)) mirror(frame, port, "ingress");

  const bool untagged = headers.tags == 0 || headers.tag_vlan() == 0;
  const ingress_discard_type_t discards = tables_.traffic.ingress_discard(port);
  if ((discards & (untagged ? INGRESS_DISCARD_UNTAGGED : INGRESS_DISCARD_TAGGED)) != 0) {
    drop(passage, DropReason::ingress_discard);
    return false;
  }
  return true;
}

// ---- Into a VLAN --------------------------------------------------------------------------------

// Gives the frame its VLAN and priority: by its tag, else by its source address, source subnet,
// protocol or port. Starts to load what the lookups to come will read.
void Pipeline::classify(Passage& passage) {
  const PortIndex port = passage.ingress;
  const Headers& headers = passage.headers;
  passage.source = tables_.lags.resolve(Destination::port(port));

  const VlanClassTable& classes = tables_.vlan_classes;
  const PortVlanTable& settings = tables_.port_vlans;
  const VlanClass* rule = nullptr;
  if (headers.tag_vlan() != 0) {
    passage.vlan = headers.tag_vlan();
    passage.priority = headers.tag_priority();
    note_("vlan", "tag: VLAN ", passage.vlan, ", priority ", passage.priority);
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
    note_("vlan", by, ": VLAN ", passage.vlan, ", priority ", passage.priority);
  }
  passage.frame->vlan = passage.vlan;
  passage.frame->priority = passage.priority;

  tables_.fdb.prefetch(fdb_key(passage.vlan, headers.source));
  passage.router = router_of(passage);
  if (passage.router == nullptr) {
    tables_.fdb.prefetch(fdb_key(passage.vlan, headers.destination));
  } else if (headers.l3 == Layer3::ipv4) {
    tables_.l3.ipv4_hosts.prefetch(headers.ipv4_destination);
    tables_.l3.ipv4_routes.prefetch(headers.ipv4_destination);
  } else if (headers.l3 == Layer3::ipv6) {
    const auto address = destination_ip<Ipv6Address>(*passage.frame, headers);
    tables_.l3.ipv6_hosts.prefetch(address);
    tables_.l3.ipv6_routes.prefetch(address);
  }
}

// Finds the next hops of the first `count` passages that are addressed to a router, all together.
void Pipeline::find_next_hops(std::size_t count) {
  const L3Table& l3 = tables_.l3;
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
    if (passage.fast || passage.router == nullptr || passage.headers.l3 != protocol) continue;
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
  return tables_.l3.interfaces.find(passage.vlan, passage.headers.destination);
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
  if (tables_.stp.disabled(port)) {
    drop(passage, DropReason::stp_ingress);
    return false;
  }
  if (!passage.headers.reserved_group()) return true;
  if (passage.headers.destination == kReservedGroup && !tables_.stp.bpdu_processing(port)) {
    note_("reserved", "BPDU, and BPDU processing is off: as any multicast");
    return true;
  }
  note_("reserved", "reserved group address");
  const bool member =
      tables_.vlans.exists(passage.vlan) && tables_.vlans.members(passage.vlan).contains(port);
  if (!member) passage.frame->vlan = 0;
  if (!to_cpu(passage, std::move(passage.frame), RX_REASON_RESERVED)) {
    drop(passage, DropReason::cpu_queue);
  }
  return false;
}

bool Pipeline::check_vlan(Passage& passage) {
  const PortIndex port = passage.ingress;
  if (passage.headers.tag_vlan() == 0 && !tables_.port_vlans.accepts_untagged(port)) {
    drop(passage, DropReason::accept_frame);
    return false;
  }
  if (!tables_.vlans.exists(passage.vlan)) {
    drop(passage, DropReason::no_vlan);
    return false;
  }
  if (!tables_.vlans.members(passage.vlan).contains(port)) {
    drop(passage, DropReason::not_member);
    return false;
  }
  note_("vlan", Destination::port(port), " is a member of VLAN ", passage.vlan);
  return true;
}

bool Pipeline::check_lock(Passage& passage) {
  if (!tables_.mac_locks.drops_unknown(passage.ingress)) return true;
  const FdbEntry* entry = tables_.fdb.find(fdb_key(passage.vlan, passage.headers.source));
  if (entry != nullptr && tables_.lags.leads_to(entry->destination(), passage.source)) {
    note_("lock", "locked, and ", MacText{passage.headers.source}, " is known here");
    return true;
  }
  drop(passage, DropReason::mac_lock);
  return false;
}

bool Pipeline::check_storm(Passage& passage, StormKind kind) {
  const PortIndex port = passage.ingress;
  if (port == kNoPort) return true;
  const std::uint32_t limit = tables_.traffic.storm_limit(port, kind);
  if (limit == 0) return true;
  StormMeter& meter = meters_[port][static_cast<std::size_t>(kind)];
  if (meter.rate() != limit) meter.set_rate(limit);
  if (meter.admit(now_ns_)) {
    note_("storm", "within ", limit, " frames/s");
    return true;
  }
  egress_.backpressure(port, now_ns_);
  drop(passage, kind == StormKind::broadcast   ? DropReason::storm_broadcast
                : kind == StormKind::multicast ? DropReason::storm_multicast
                                               : DropReason::storm_unicast);
  return false;
}

bool Pipeline::check_stp(Passage& passage) {
  const unsigned instance = tables_.vlans.mstp_instance(passage.vlan);
  if (tables_.stp.forwards(passage.ingress, instance)) {
    note_("stp", "instance ", instance, ": forwarding");
    return true;
  }
  if (tables_.stp.learns(passage.ingress, instance)) learn(passage);
  drop(passage, DropReason::stp_ingress);
  return false;
}

// ---- To the CPU by filter -----------------------------------------------------------------------

bool Pipeline::trap_filtered(Passage& passage) {
  const FilterTable& filters = tables_.filters;
  if (!filters.any()) {
    note_("filter", "no filters");
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
    note_("filter", "none matches");
    return true;
  }
  note_("filter", "matches");
  if (!to_cpu(passage, std::move(passage.frame), reason)) drop(passage, DropReason::cpu_queue);
  return false;
}

// ---- The flow table -----------------------------------------------------------------------------

bool Pipeline::apply_flow(Passage& passage) {
  const unsigned mode = tables_.traffic.forward_mode();
  FlowTable& flows = tables_.flows;
  if (mode == SWITCH_FORWARD_MODE_NORMAL ||
      (flows.size() == 0 && mode == SWITCH_FORWARD_MODE_HYBRID)) {
    note_("flow",
          mode == SWITCH_FORWARD_MODE_NORMAL ? "not asked: forward mode normal" : "no flows");
    return true;
  }

  const Headers& headers = passage.headers;
  const Flow* flow =
      flows.lookup(flow_key(passage.ingress, passage.vlan, passage.priority, headers),
                   udf_reader(*passage.frame, headers));
  if (flow == nullptr) {
    note_("flow", "none matches");
    if (mode == SWITCH_FORWARD_MODE_HYBRID) return true;
    drop(passage, DropReason::flow_miss);
    return false;
  }
  note_("flow", "flow ", flow->id, ", priority ", flow->priority, ", ", flows.actions(*flow).count,
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
      output(passage, std::move(passage.frame), action);
      return false;
    } else if (action.words[0] != OF_PORT_DROP) {
      output(passage, pool_.copy(*passage.frame), action);
    }
  }
  return false;
}

// One output of a flow. A physical port sends the frame with the tag that it has by now; the ways
// that know VLANs tag as always.
void Pipeline::output(Passage& passage, FramePtr frame, const FlowAction& action) {
  if (frame == nullptr) {
    count_drop(passage, DropReason::no_buffer);
    return;
  }
  switch (action.words[0]) {
    case OF_PORT_IN_PORT:
      note_("flow", "back to the ingress port");
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
      note_("flow", "the ordinary way");
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
      const PortSet ready = eligible(passage, Tagging::as_it_is);
      for (const PortIndex egress : ready - split_horizon(passage)) {
        const std::uint16_t lag = tables_.lags.lag_of(egress);
        if (lag != LagTable::kNoLag &&
            choose_member(passage.headers, *frame, tables_.lags[lag], ready) != egress) {
          continue;
        }
        FramePtr copy = pool_.copy(*frame);
        if (copy == nullptr) {
          egress_.drop(egress, DropReason::no_buffer);
        } else {
          emit(passage, std::move(copy), tables_.lags.resolve(Destination::port(egress)), egress,
               Tagging::as_it_is);
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
  note_("flow", flow_action_text(action.kind), " ", HexText{word}, " ", HexText{action.words[1]});
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
  FdbTable& fdb = tables_.fdb;
  const std::uint64_t mac = passage.headers.source;
  const FdbEntry* entry = fdb.find(fdb_key(passage.vlan, mac));
  if (entry != nullptr && tables_.lags.leads_to(entry->destination(), passage.source)) {
    fdb.touch(*entry, now_seconds_);
    note_("learn", MacText{mac}, " is known here");
    return;
  }
  if (!tables_.traffic.l2_on(port)) return;
  if ((mac >> 40 & 1) != 0 || mac == 0) {
    note_("learn", MacText{mac}, " is no source");
    return;
  }
  if (entry != nullptr && entry->kind() != FdbKind::learned) {
    note_("learn", MacText{mac}, " is static elsewhere");
    return;
  }
  const MacLockTable& locks = tables_.mac_locks;
  if (locks.locked(port)) {
    note_("learn", "the port is locked");
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
      note_("learn", "a limit is reached");
      return;
    }
  }
  const FdbLearn result =
      fdb.learn(passage.vlan, MacAddress::from_number(mac), passage.source, now_seconds_);
  note_("learn", MacText{mac}, result == FdbLearn::full ? ": the table is full" : " learned");
}

// ---- Layer 3 or the FDB -------------------------------------------------------------------------

void Pipeline::forward(Passage& passage) {
  learn(passage);
  if (passage.router != nullptr) {
    route(passage);
  } else {
    note_("l3", "not to a router interface");
    bridge(passage);
  }
}

void Pipeline::route(Passage& passage) {
  note_("l3", "to router interface ", passage.router->id);
  if (const auto why = why_not_routed(*passage.frame, passage.headers)) {
    keep_from_routing(passage, why->reason, why->cpu_reason);
    return;
  }
  const NextHop* const hop = passage.next_hop != nullptr ? passage.next_hop : next_hop_of(passage);
  if (hop == nullptr) {
    keep_from_routing(passage, DropReason::no_route, RX_REASON_NO_ROUTE);
    return;
  }
  const L3Interface* const out = tables_.l3.interfaces.get(hop->interface_id);
  if (out == nullptr) {
    drop(passage, DropReason::no_interface);
    return;
  }
  passage.vlan = out->vlan;

  const Destination way = tables_.lags.resolve(hop->destination);
  PortIndex egress = way.number;
  if (way.is_lag()) {
    egress = choose_member(passage.headers, *passage.frame, tables_.lags[way.number],
                           eligible(passage, Tagging::by_membership));
    if (egress == kNoPort) {
      drop(passage, DropReason::lag_empty);
      return;
    }
  }
  if (mtu_bytes(*passage.frame, passage.headers.tags != 0) > tables_.ports.mtu_bytes(egress)) {
    keep_from_routing(passage, DropReason::router_mtu, RX_REASON_MTU);
    return;
  }

  note_("l3", "next hop ", MacText{hop->mac.to_number()}, " through interface ", out->id, ", VLAN ",
        out->vlan, ", ", way);
  FramePtr frame = std::move(passage.frame);
  set_source_mac(*frame, passage.headers, out->mac.to_number());
  set_destination_mac(*frame, passage.headers, hop->mac.to_number());
  decrement_ttl(*frame, passage.headers);
  frame->vlan = passage.vlan;
  leave(passage, std::move(frame), way, egress, Tagging::by_membership);
}

// Hands a packet that came to the router to the CPU as it came in, where `cpu_reason` is a reason
// for that (RX_REASON_...) and the CPU takes it; else drops it.
void Pipeline::keep_from_routing(Passage& passage, DropReason reason, unsigned cpu_reason) {
  if (cpu_reason != 0) {
    note_("l3", text(reason));
    if (to_cpu(passage, std::move(passage.frame), cpu_reason)) return;
  }
  drop(passage, reason);
}

// The host of the destination address, else the route; null when there is neither.
const NextHop* Pipeline::next_hop_of(const Passage& passage) const {
  const auto find = [](const auto& ip, const auto& hosts, const auto& routes) -> const NextHop* {
    if (const auto* host = hosts.find(ip)) return &host->next_hop;
    return routes.lookup(ip);
  };
  const L3Table& l3 = tables_.l3;
  const Frame& frame = *passage.frame;
  return passage.headers.l3 == Layer3::ipv4
             ? find(destination_ip<Ipv4>(frame, passage.headers), l3.ipv4_hosts, l3.ipv4_routes)
             : find(destination_ip<Ipv6Address>(frame, passage.headers), l3.ipv6_hosts,
                    l3.ipv6_routes);
}

void Pipeline::bridge(Passage& passage) {
  const Headers& headers = passage.headers;
  const bool from_port = passage.ingress != kNoPort;
  // Where layer 2 is off only the CPU gets frames.
  const bool cpu_only = from_port && !tables_.traffic.l2_on(passage.ingress);
  passage.bridged = true;

  const FdbEntry* entry = tables_.fdb.find(fdb_key(passage.vlan, headers.destination));
  if (entry != nullptr) {
    const Destination destination = tables_.lags.resolve(entry->destination());
    if (destination.kind == DestinationKind::cpu) {
      note_("fdb", MacText{headers.destination}, " is the switch's own");
      if (!to_cpu(passage, std::move(passage.frame), RX_REASON_SYSTEM_MAC)) {
        drop(passage, DropReason::cpu_queue);
      }
      return;
    }
    note_("fdb", MacText{headers.destination}, " is at ", destination);
    if (cpu_only) {
      drop(passage, DropReason::l2_disabled);
    } else if (from_port && destination == passage.source) {
      drop(passage, DropReason::same_port);
    } else {
      send(passage, std::move(passage.frame), destination, Tagging::by_membership);
    }
    return;
  }

  const flood_block_type_t kind = flood_kind(headers);
  bool cpu_copy = from_port;
  unsigned reason = RX_REASON_FLOOD;
  if (kind == FLOOD_BLOCK_UNKNOWN_UNICAST) {
    note_("fdb", MacText{headers.destination}, " is unknown");
    if (!check_storm(passage, StormKind::unknown_unicast)) return;
    cpu_copy = from_port && tables_.traffic.copies_unknown_unicast_to_cpu(passage.ingress);
    reason = RX_REASON_UNKNOWN_UNICAST;
  }
  if (cpu_copy) {
    if (tables_.flood_blocks.blocked_to_cpu(passage.ingress, kind)) {
      note_("flood", "kept from the CPU");
    } else {
      copy_to_cpu(passage, reason);
    }
  }
  if (cpu_only) {
    drop(passage, DropReason::l2_disabled);
    return;
  }
  flood(passage, std::move(passage.frame), kind);
}

// Sends the frame out of every other port of its VLAN that has a link and may send it.
void Pipeline::flood(Passage& passage, FramePtr frame, flood_block_type_t kind) {
  const PortSet reach =
      (tables_.vlans.members(passage.vlan) & tables_.ports.up()) - split_horizon(passage);
  PortSet blocked;
  if (passage.ingress != kNoPort) {
    blocked = tables_.flood_blocks.blocked(passage.ingress, kind) & reach;
  }
  const PortSet ready = (reach & eligible(passage, Tagging::by_membership)) - blocked;
  for (const PortIndex egress : reach - ready) {
    // One member of a LAG that cannot send leaves its frames to the others.
    const std::uint16_t lag = tables_.lags.lag_of(egress);
    if (lag != LagTable::kNoLag && !(tables_.lags[lag].set & ready).empty()) continue;
    DropReason reason = DropReason::flood_blocked;
    if (blocked.contains(egress) || ineligible(passage, egress, Tagging::by_membership, reason)) {
      egress_.drop(egress, reason);
    }
  }

  std::array<PortIndex, kMaxPorts> targets;
  std::size_t count = 0;
  for (const PortIndex egress : ready) {
    const std::uint16_t lag = tables_.lags.lag_of(egress);
    if (lag != LagTable::kNoLag &&
        choose_member(passage.headers, *frame, tables_.lags[lag], ready) != egress) {
      continue;
    }
    targets[count++] = egress;
  }
  note_("flood", "VLAN ", passage.vlan, " to ", count, " port(s)");
  if (count == 0) {
    passage.frame = std::move(frame);
    drop(passage, DropReason::flood_nowhere);
    return;
  }
  for (std::size_t i = 0; i + 1 < count; ++i) {
    FramePtr copy = pool_.copy(*frame);
    if (copy == nullptr) {
      egress_.drop(targets[i], DropReason::no_buffer);
    } else {
      emit(passage, std::move(copy), tables_.lags.resolve(Destination::port(targets[i])),
           targets[i], Tagging::by_membership);
    }
  }
  const PortIndex last = targets[count - 1];
  emit(passage, std::move(frame), tables_.lags.resolve(Destination::port(last)), last,
       Tagging::by_membership);
}

// Split horizon: the ports that a frame came in through, its LAG's among them, are no way out for
// it.
PortSet Pipeline::split_horizon(const Passage& passage) const {
  if (passage.ingress == kNoPort) return PortSet();
  if (passage.source.is_lag()) return tables_.lags[passage.source.number].set;
  return PortSet::of(passage.ingress);
}

// ---- Out of a port or a LAG ---------------------------------------------------------------------

void Pipeline::send(Passage& passage, FramePtr frame, Destination destination, Tagging tagging) {
  PortIndex egress = destination.number;
  if (destination.is_lag()) {
    egress = choose_member(passage.headers, *frame, tables_.lags[destination.number],
                           eligible(passage, tagging));
    if (egress == kNoPort) {
      passage.frame = std::move(frame);
      drop(passage, DropReason::lag_empty);
      return;
    }
    note_("lag", destination, " by ", Destination::port(egress));
  } else if (!destination.is_port()) {
    passage.frame = std::move(frame);
    drop(passage, DropReason::flow_drop);
    return;
  }
  leave(passage, std::move(frame), destination, egress, tagging);
}

// Sends the frame out of a port, which is its way or the member of a LAG that is.
void Pipeline::leave(const Passage& passage, FramePtr frame, Destination way, PortIndex egress,
                     Tagging tagging) {
  DropReason reason;
  if (ineligible(passage, egress, tagging, reason)) {
    egress_.drop(egress, reason);
    return;
  }
  emit(passage, std::move(frame), way, egress, tagging);
}

// The ports that may send the frame as far as ineligible() is concerned.
PortSet Pipeline::eligible(const Passage& passage, Tagging tagging) const {
  PortSet ports = tables_.ports.up() & tables_.traffic.egress_on();
  if (tagging == Tagging::by_membership) ports &= tables_.vlans.members(passage.vlan);
  if (passage.bridged) ports &= tables_.traffic.l2_on();
  if (!passage.control) {
    ports &= tables_.stp.forwarding(tables_.vlans.mstp_instance(passage.vlan));
  }
  return ports;
}

// Whether a port may not send the frame, and why.
bool Pipeline::ineligible(const Passage& passage, PortIndex egress, Tagging tagging,
                          DropReason& reason) const {
  if (!tables_.ports.is_up(egress)) {
    reason = DropReason::egress_down;
  } else if (!tables_.traffic.egress_on(egress)) {
    reason = DropReason::egress_state;
  } else if (tagging == Tagging::by_membership &&
             !tables_.vlans.members(passage.vlan).contains(egress)) {
    reason = DropReason::egress_not_member;
  } else if (passage.bridged && !tables_.traffic.l2_on(egress)) {
    reason = DropReason::egress_l2_disabled;
  } else if (!passage.control &&
             !tables_.stp.forwards(egress, tables_.vlans.mstp_instance(passage.vlan))) {
    reason = DropReason::stp_egress;
  } else {
    return false;
  }
  return true;
}

// Gives the frame the tag that it leaves the port with, or none, and sends it.
bool Pipeline::emit(const Passage& passage, FramePtr frame, Destination way, PortIndex egress,
                    Tagging tagging) {
  if (mtu_bytes(*frame, passage.headers.tags != 0) > tables_.ports.mtu_bytes(egress)) {
    egress_.drop(egress, DropReason::egress_mtu);
    return false;
  }
  const Headers& headers = passage.headers;
  bool tagged = headers.tags != 0;
  std::uint16_t control = headers.tag_control;
  switch (tagging) {
    case Tagging::by_membership:
      tagged = !tables_.vlans.untagged(passage.vlan).contains(egress);
      control = tag_control(passage.vlan, passage.priority, (control & 0x1000) != 0);
      break;
    case Tagging::tagged:
      if (!tagged) control = tag_control(tables_.port_vlans.pvid(egress), 0, false);
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
                                            : tables_.cos.queue(egress, passage.priority);
  note_("out", Destination::port(egress), tagged ? " tagged" : " untagged", ", queue ", queue);
  if (tables_.mirrors.egress().contains(egress)) mirror(*frame, egress, "egress");
  witness_.took(way, egress);
  egress_.transmit(std::move(frame), egress, queue);
  return true;
}

// Copies the frame as it is to the mirror-to port, past VLANs and the spanning tree.
void Pipeline::mirror(const Frame& frame, PortIndex mirrored, const char* direction) {
  const PortIndex to = tables_.mirrors[mirrored].to;
  note_("mirror", direction, " of ", Destination::port(mirrored), " to ", Destination::port(to));
  const std::uint16_t type = load16(frame.data() + 12);
  const bool tagged = type == kTypeCustomerTag || type == kTypeServiceTag;
  DropReason reason = DropReason::no_buffer;
  if (!tables_.ports.is_up(to)) {
    reason = DropReason::egress_down;
  } else if (!tables_.traffic.egress_on(to)) {
    reason = DropReason::egress_state;
  } else if (mtu_bytes(frame, tagged) > tables_.ports.mtu_bytes(to)) {
    reason = DropReason::egress_mtu;
  } else if (FramePtr copy = pool_.copy(frame)) {
    witness_.mirrored(to);
    egress_.transmit(std::move(copy), to, tables_.cos.queue(to, frame.priority));
    return;
  }
  egress_.drop(to, reason);
}

// ---- To the CPU ---------------------------------------------------------------------------------

// Whether the CPU takes packets that came the way of this one.
bool Pipeline::cpu_takes(const Passage& passage) const {
  const bool from_cpu = passage.ingress == kNoPort;
  if (!from_cpu && cpu_.wants_packets()) return true;
  note_("cpu", from_cpu ? "came from there" : "nobody listens for packets");
  return false;
}

// Queues the frame for the CPU. False when it does not take it or has no room.
bool Pipeline::to_cpu(const Passage& passage, FramePtr frame, unsigned reason) {
  if (!cpu_takes(passage)) return false;
  if (frame->offload.segmentation == Segmentation::none) {
    complete_checksum(*frame);
    return queue_for_cpu(std::move(frame), reason);
  }
  bool queued = false;
  std::size_t taken = 0;
  while (frame != nullptr) {
    FramePtr piece = next_segment(frame, pool_, taken);
    if (piece == nullptr) {
      count_drop(passage, DropReason::no_buffer);
    } else if (queue_for_cpu(std::move(piece), reason)) {
      queued = true;
    }
  }
  return queued;
}

bool Pipeline::queue_for_cpu(FramePtr frame, unsigned reason) {
  SeenFrame seen = witness_.copy_of(*frame);
  const bool queued = cpu_.post_packet(std::move(frame), reason);
  if (queued) witness_.queued(std::move(seen), reason);
  note_("cpu", queued ? "to the CPU: " : "the queue is full: ", rx_reason_text(reason));
  return queued;
}

// Queues a copy for the CPU; the frame itself goes on.
void Pipeline::copy_to_cpu(const Passage& passage, unsigned reason) {
  if (!cpu_takes(passage)) return;
  FramePtr copy = pool_.copy(*passage.frame);
  if (copy == nullptr) {
    count_drop(passage, DropReason::no_buffer);
  } else {
    to_cpu(passage, std::move(copy), reason);
  }
}

// ---- From the CPU -------------------------------------------------------------------------------

bool Pipeline::read_cpu_frame(const std::uint8_t* data, std::size_t bytes, unsigned type,
                              Passage& passage) {
  now_ns_ = clock_.now_ns();
  passage.frame = pool_.make(data, bytes);
  if (passage.frame == nullptr) return refuse("packet of ", bytes, " bytes: no frame has room");
  const FrameFault fault = parse(passage.frame->data(), bytes, passage.headers);
  if (fault != FrameFault::none) {
    return refuse("packet of ", bytes, " bytes: ",
                  text(fault == FrameFault::runt ? DropReason::runt : DropReason::malformed));
  }
  passage.control = type == PACKET_TYPE_CONTROL;
  passage.priority = passage.headers.tag_priority();
  witness_.begin(kNoPort, *passage.frame, now_ns_);
  note_("cpu", MacText{passage.headers.source}, " to ", MacText{passage.headers.destination}, ", ",
        bytes, " bytes from the CPU");
  return true;
}

bool Pipeline::send_by_port(const std::vector<PortIndex>& tagged,
                            const std::vector<PortIndex>& untagged, const std::uint8_t* data,
                            std::size_t bytes, unsigned type) {
  Burst burst(*this);
  Passage passage;
  if (!read_cpu_frame(data, bytes, type, passage)) return false;
  bool sent = false;
  PortIndex kept_from = kNoPort;  // the last port that the packet does not leave, and why
  DropReason why = DropReason::no_buffer;
  const auto send_copy = [&](PortIndex egress, Tagging tagging) {
    const std::uint16_t own = passage.headers.tag_vlan();
    passage.vlan = own != 0 ? own : tables_.port_vlans.pvid(egress);
    DropReason reason = DropReason::no_buffer;
    FramePtr copy;
    if (!ineligible(passage, egress, tagging, reason)) copy = pool_.copy(*passage.frame);
    if (copy == nullptr) {
      egress_.drop(egress, reason);
    } else {
      copy->vlan = passage.vlan;
      copy->priority = passage.priority;
      if (emit(passage, std::move(copy), Destination::port(egress), egress, tagging)) {
        sent = true;
        return;
      }
      reason = DropReason::egress_mtu;  // the one thing that emit() refuses
    }
    kept_from = egress;
    why = reason;
  };
  for (const PortIndex egress : tagged) send_copy(egress, Tagging::tagged);
  for (const PortIndex egress : untagged) send_copy(egress, Tagging::untagged);
  burst.send();
  if (sent) return true;
  if (kept_from == kNoPort) return refuse("packet: there is no port to send it to");
  return refuse(AddressPlan::usp_of(kept_from), ": ", text(why));
}

bool Pipeline::send_from_cpu(const std::uint8_t* data, std::size_t bytes, unsigned type) {
  constexpr std::uint16_t kDefaultVlan = 1;
  Burst burst(*this);
  Passage passage;
  if (!read_cpu_frame(data, bytes, type, passage)) return false;
  passage.vlan = passage.headers.tag_vlan() != 0 ? passage.headers.tag_vlan() : kDefaultVlan;
  if (!tables_.vlans.exists(passage.vlan)) {
    return refuse("VLAN ", passage.vlan, " does not exist");
  }
  passage.frame->vlan = passage.vlan;
  passage.frame->priority = passage.priority;
  passage.router = router_of(passage);
  if (apply_flow(passage)) forward(passage);
  burst.send();
  return true;
}

// ---- Drops --------------------------------------------------------------------------------------

void Pipeline::drop(Passage& passage, DropReason reason) {
  passage.frame.reset();
  note_("verdict", reason);
  count_drop(passage, reason);
}

void Pipeline::count_drop(const Passage& passage, DropReason reason) {
  witness_.dropped(reason);
  tables_.drops.add(passage.ingress, reason);
  if (passage.ingress == kNoPort) return;
  tables_.counters.add(passage.ingress, STAT_IN_DISCARDS);
  const stat_type_t own = counter_of(reason);
  if (own != STAT_IN_DISCARDS) tables_.counters.add(passage.ingress, own);
}

}  // namespace softcard
