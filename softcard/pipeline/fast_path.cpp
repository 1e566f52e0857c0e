// SPDX-License-Identifier: Apache-2.0

#include "softcard/pipeline/fast_path.h"

#include <algorithm>
#include <utility>

#include "softcard/frames/checksum.h"
#include "softcard/frames/rewrite.h"
#include "softcard/frames/wire.h"
#include "softcard/pipeline/flow_key.h"
#include "softcard/pipeline/routable.h"

namespace softcard {

namespace {

constexpr std::size_t kIpv4Bytes = 20;  // of a header without options

}  // namespace

// ---- What holds for a burst ---------------------------------------------------------------------

bool FastPath::begin(PortIndex port, std::uint64_t now_seconds) {
  const TrafficTable& traffic = tables_.traffic;
  if (!tables_.ports.is_up(port) || traffic.ingress_discard(port) != INGRESS_DISCARD_NONE ||
      tables_.mirrors.ingress().contains(port) || tables_.stp.disabled(port) ||
      tables_.mac_locks.drops_unknown(port) || !traffic.l2_on(port) || tables_.filters.any()) {
    return false;
  }
  port_ = port;
  source_ = tables_.lags.resolve(Destination::port(port));
  mtu_bytes_ = tables_.ports.mtu_bytes(port);
  now_seconds_ = now_seconds;

  const VlanClassTable& classes = tables_.vlan_classes;
  const PortVlanTable& port_vlans = tables_.port_vlans;
  untagged_ = port_vlans.accepts_untagged(port) && !port_vlans.has_protocol_vlans(port) &&
              !classes.has_mac_rules() && !classes.has_ipv4_rules() && !classes.has_ipv6_rules();
  pvid_ = port_vlans.pvid(port);

  flow_needed_ = traffic.forward_mode() == SWITCH_FORWARD_MODE_FLOW;
  flows_asked_ = flow_needed_ || (traffic.forward_mode() == SWITCH_FORWARD_MODE_HYBRID &&
                                  tables_.flows.size() != 0);

  groups_ = traffic.storm_limit(port, StormKind::broadcast) == 0 &&
            traffic.storm_limit(port, StormKind::multicast) == 0;
  floods_ = 0;
  const bool cpu_listens = cpu_.wants_packets();
  const auto nothing_holds = [&](flood_block_type_t kind, StormKind storm, bool cpu_copy) {
    const FloodBlockTable& blocks = tables_.flood_blocks;
    return traffic.storm_limit(port, storm) == 0 && blocks.blocked(port, kind).empty() &&
           !(cpu_copy && cpu_listens && !blocks.blocked_to_cpu(port, kind));
  };
  if (nothing_holds(FLOOD_BLOCK_BROADCAST, StormKind::broadcast, true)) {
    floods_ |= FLOOD_BLOCK_BROADCAST;
  }
  if (nothing_holds(FLOOD_BLOCK_MULTICAST, StormKind::multicast, true)) {
    floods_ |= FLOOD_BLOCK_MULTICAST;
  }
  if (nothing_holds(FLOOD_BLOCK_UNKNOWN_UNICAST, StormKind::unknown_unicast,
                    traffic.copies_unknown_unicast_to_cpu(port))) {
    floods_ |= FLOOD_BLOCK_UNKNOWN_UNICAST;
  }
  burst_ += 1 << 16;
  return true;
}

// Settles a lane for a VLAN; false when another VLAN of the burst has it.
bool FastPath::settle(Lane& lane, std::uint16_t vlan) {
  if (lane.settled >= burst_ || vlan == 0) return false;
  const VlanTable& vlans = tables_.vlans;
  const TrafficTable& traffic = tables_.traffic;
  const PortSet& forwarding = tables_.stp.forwarding(vlans.mstp_instance(vlan));
  const PortSet& members = vlans.members(vlan);
  lane.settled = burst_ | vlan;
  lane.routers = tables_.l3.interfaces.any_in(vlan);
  lane.router = nullptr;
  lane.open = vlans.exists(vlan) && members.contains(port_) && forwarding.contains(port_);
  lane.priority = static_cast<std::uint8_t>(tables_.port_vlans.priority(port_, vlan));
  lane.untagged = vlans.untagged(vlan);
  lane.sends = (forwarding & traffic.egress_on()) - tables_.mirrors.egress();
  lane.members = lane.sends & members;
  lane.bridged = (lane.members & traffic.l2_on()) - tables_.lags.members();
  lane.bridged.erase(port_);

  // A flood is plain where each member that is up may send it. The port that it came in at is in a
  // LAG where any member is.
  lane.flood = members & tables_.ports.up();
  lane.flood.erase(port_);
  lane.floods = !lane.flood.empty() && (lane.flood - lane.bridged).empty() && !source_.is_lag();
  lane.flood_mtu = UINT32_MAX;
  for (const PortIndex port : lane.flood) {
    lane.flood_mtu = std::min(lane.flood_mtu, std::uint32_t{tables_.ports.mtu_bytes(port)});
  }
  return true;
}

// ---- Frames in ----------------------------------------------------------------------------------

// Whether the router passes an IPv4 packet on if it knows where to, which is found out with the
// rest of the batch.
bool FastPath::admits_to_router(std::size_t place, const Frame& frame) {
  const std::size_t offset = kEthernetBytes + places_[place].tag_bytes();
  const std::uint8_t* const header = frame.data() + offset;
  if (frame.size() < offset + kIpv4Bytes || header[0] != 0x45) return false;
  const std::size_t total = load16(header + 2);
  const Ipv4 destination = load32(header + 16);
  if (total < kIpv4Bytes || total > frame.size() - offset || header[8] <= 1 ||
      fold(sum_words(header, kIpv4Bytes)) != 0xFFFF ||
      why_not_routed(load32(header + 12), destination)) {
    return false;
  }
  if (tables_.l3.ipv4_hosts.size() != 0) tables_.l3.ipv4_hosts.prefetch(destination);
  tables_.l3.ipv4_routes.prefetch(destination);
  routed_[routed_count_] = static_cast<std::uint8_t>(place);
  routed_to_[routed_count_++] = destination;
  return true;
}

// Flows do not depend on the frames before, so their turn may come this early.
bool FastPath::find_flow(Place& place, const Frame& frame) const {
  Headers headers;
  parse(frame.data(), frame.size(), headers);
  place.flow = tables_.flows.lookup(flow_key(port_, place.vlan, place.priority, headers),
                                    udf_reader(frame, headers));
  return place.flow != nullptr;
}

// Hosts come before routes.
void FastPath::find_routes() {
  std::array<const NextHop*, kBurst> found;
  std::size_t count = routed_count_;
  if (tables_.l3.ipv4_hosts.size() != 0) {
    count = 0;
    for (std::size_t i = 0; i < routed_count_; ++i) {
      if (const L3Host<Ipv4>* const host = tables_.l3.ipv4_hosts.find(routed_to_[i])) {
        places_[routed_[i]].next_hop = &host->next_hop;
      } else {
        routed_[count] = routed_[i];
        routed_to_[count++] = routed_to_[i];
      }
    }
  }
  tables_.l3.ipv4_routes.lookup_batch(routed_to_.data(), count, found.data());
  for (std::size_t i = 0; i < count; ++i) places_[routed_[i]].next_hop = found[i];
}

// ---- Frames out ---------------------------------------------------------------------------------

// A flow that does nothing but send the frame out of one port.
bool FastPath::apply_flow(const Place& place, const Lane& lane, FramePtr& frame) {
  FlowTable& flows = tables_.flows;
  const FlowActions& actions = flows.actions(*place.flow);
  const FlowAction& output = actions.items[0];
  if (actions.count != 1 || output.kind != OF_ACTION_OUTPUT || !output.destination.is_port()) {
    return false;
  }
  const PortIndex egress = output.destination.number;
  if (egress == port_ || !lane.sends.contains(egress) || !tables_.ports.is_up(egress) ||
      place.mtu_bytes > tables_.ports.mtu_bytes(egress)) {
    return false;
  }
  const CastKind cast = cast_of(load48(frame->data()));
  flows.count(*place.flow, static_cast<std::uint32_t>(frame->size()));
  receive(place, *frame, cast);
  egress_.transmit_plain(std::move(frame), egress, tables_.cos.queue(egress, place.priority), cast);
  return true;
}

bool FastPath::flood(const Place& place, const Lane& lane, FramePtr& frame) {
  const CastKind cast = cast_of(place.destination.key & kBroadcast);
  const flood_block_type_t kind = cast == CastKind::unicast     ? FLOOD_BLOCK_UNKNOWN_UNICAST
                                  : cast == CastKind::multicast ? FLOOD_BLOCK_MULTICAST
                                                                : FLOOD_BLOCK_BROADCAST;
  if (!lane.floods || (floods_ & kind) == 0 || !(lane.flood - tables_.ports.up()).empty() ||
      place.mtu_bytes > lane.flood_mtu) {
    return false;
  }
  receive(place, *frame, cast);
  const unsigned priority = place.priority;
  const auto send = [&](FramePtr copy, PortIndex egress) {
    if (copy == nullptr) {
      egress_.drop(egress, DropReason::no_buffer);
    } else {
      egress_.transmit_plain(std::move(copy), egress, tables_.cos.queue(egress, priority), cast);
    }
  };
  // First out of the ports that send it as it came, then out of the others.
  const PortSet untagged = lane.flood & lane.untagged;
  const PortSet same = place.tag_control == 0 ? untagged : lane.flood - untagged;
  const PortSet other = lane.flood - same;
  PortIndex last = kNoPort;
  for (const PortIndex egress : same) {
    if (last != kNoPort) send(pool_.copy(*frame), last);
    last = egress;
  }
  if (!other.empty()) {
    if (last != kNoPort) send(pool_.copy(*frame), last);
    last = kNoPort;
    if (place.tag_control == 0) {
      push_tag(*frame, tag_control(place.vlan, priority, false));
    } else {
      strip_tag(*frame);
    }
    for (const PortIndex egress : other) {
      if (last != kNoPort) send(pool_.copy(*frame), last);
      last = egress;
    }
  }
  send(std::move(frame), last);
  return true;
}

bool FastPath::route(const Place& place, FramePtr& frame) {
  const NextHop* const hop = place.next_hop;
  if (hop == nullptr) return false;
  const L3Interface* const out = tables_.l3.interfaces.get(hop->interface_id);
  if (out == nullptr) return false;
  const Destination way = tables_.lags.resolve(hop->destination);
  const Lane* const lane = lane_of(out->vlan);

  if (!way.is_port() || (hop->mac.bytes[0] & 1) != 0 || lane == nullptr ||
      !lane->members.contains(way.number) || !tables_.ports.is_up(way.number) ||
      place.mtu_bytes > tables_.ports.mtu_bytes(way.number)) {
    return false;
  }
  const PortIndex egress = way.number;
  const unsigned priority = place.priority;
  receive(place, *frame, CastKind::unicast);
  frame->vlan = out->vlan;
  std::uint8_t* const data = frame->data();
  std::copy(hop->mac.bytes.begin(), hop->mac.bytes.end(), data);
  std::copy(out->mac.bytes.begin(), out->mac.bytes.end(), data + 6);
  decrement_ipv4_ttl(data + kEthernetBytes + place.tag_bytes());
  const std::uint16_t control = tag_control(out->vlan, priority, (place.tag_control & 0x1000) != 0);
  if (lane->untagged.contains(egress)) {
    if (place.tag_control != 0) strip_tag(*frame);
  } else if (place.tag_control == 0) {
    push_tag(*frame, control);
  } else if (control != place.tag_control) {
    write_tag(*frame, control);
  }
  egress_.transmit_plain(std::move(frame), egress, tables_.cos.queue(egress, priority),
                         CastKind::unicast);
  return true;
}

}  // namespace softcard
