// SPDX-License-Identifier: Apache-2.0
//
// The fast path: what most frames need, and nothing else. A plain port receives a frame whose
// source is known there; a flow with one output, the FDB, a flood or the IPv4 router leads it to
// plain ports. The fast path does what the whole way of a frame does for such frames; every other
// frame goes the whole way, which pipeline.cpp tells from top to bottom.
//
// What concerns the port that a burst came in at, or a VLAN, is settled once for the burst, since
// settings change between bursts only. What a frame of the burst may change (addresses, links) is
// asked for at each frame.
#ifndef SOFTCARD_PIPELINE_FAST_PATH_H_
#define SOFTCARD_PIPELINE_FAST_PATH_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "softcard/base/net_types.h"
#include "softcard/base/port_set.h"
#include "softcard/frames/frame.h"
#include "softcard/frames/parser.h"
#include "softcard/frames/rewrite.h"
#include "softcard/frames/wire.h"
#include "softcard/pipeline/cpu_queue.h"
#include "softcard/pipeline/egress.h"
#include "softcard/tables/tables.h"

namespace softcard {

class FastPath {
 public:
  // Most frames of a burst.
  static constexpr std::size_t kBurst = 32;

  // All are kept and outlive the object.
  FastPath(Tables& tables, FramePool& pool, const CpuQueue& cpu, Egress& egress)
      : tables_(tables), pool_(pool), cpu_(cpu), egress_(egress) {}

  // Settles what holds for the frames that come in at `port` now. False when each of them has to go
  // the whole way.
  bool begin(PortIndex port, std::uint64_t now_seconds);

  // A batch of the burst's frames is next; their places count from 0.
  void begin_batch() { routed_count_ = 0; }

  // Whether the frame at a place, whose bytes are in memory already, may take the fast path as far
  // as they tell. If so, starts to load what forward() reads.
  bool admits(std::size_t place, const Frame& frame);

  // Finds the next hops of the batch's frames that are to be routed, all together.
  void find_next_hops() {
    if (routed_count_ != 0) find_routes();
  }

  // Sends a frame that admits() took, in its turn. False, and nothing done, when it must go the
  // whole way after all.
  bool forward(std::size_t place, FramePtr& frame);

 private:
  // What holds for the frames of a VLAN.
  struct Lane {
    std::uint64_t settled = 0;            // for which VLAN of which burst: see lane_of()
    bool open = false;                    // frames from the port may take the fast path
    bool floods = false;                  // and floods as well, to `flood`
    bool routers = false;                 // the VLAN has router interfaces
    std::uint8_t priority = 0;            // of frames that have no tag
    const L3Interface* router = nullptr;  // one of the VLAN's that a frame was addressed to
    std::uint64_t router_mac = 0;         // and its address
    std::uint32_t flood_mtu = 0;          // the smallest of the ports in `flood`, in bytes
    PortSet sends;                        // ports that may send frames of the VLAN, members or not
    PortSet members;                      // of these, the members
    PortSet bridged;                      // of these, where the FDB may lead
    PortSet flood;                        // where a flood leads
    PortSet untagged;                     // the ports that send the VLAN's frames without a tag
  };
  // A frame of the batch.
  struct Place {
    std::uint16_t vlan;
    std::uint16_t tag_control;  // 0 without a tag
    std::uint8_t priority;
    bool group;
    std::uint32_t mtu_bytes;    // its bytes that count against an MTU
    const L3Interface* router;  // that it is addressed to
    const NextHop* next_hop;    // of a frame to the router
    const Flow* flow;           // that the frame has; where it has none:
    FdbTable::Probe source;
    FdbTable::Probe destination;

    std::size_t tag_bytes() const { return tag_control != 0 ? kTagBytes : 0; }
  };

  // VLANs of one burst that have a lane each, by their lowest bits.
  static constexpr std::size_t kLanes = 32;

  Lane* lane_of(std::uint16_t vlan) {
    Lane& lane = lanes_[vlan % kLanes];
    return lane.settled == (burst_ | vlan) || settle(lane, vlan) ? &lane : nullptr;
  }
  bool settle(Lane& lane, std::uint16_t vlan);
  const L3Interface* router_of(Lane& lane, const Place& place, std::uint64_t destination) {
    if (!lane.routers || place.group) return nullptr;
    if (lane.router != nullptr && lane.router_mac == destination) return lane.router;
    const L3Interface* const found = tables_.l3.interfaces.find(place.vlan, destination);
    if (found != nullptr) {
      lane.router = found;
      lane.router_mac = destination;
    }
    return found;
  }
  bool admits_to_router(std::size_t place, const Frame& frame);
  void find_routes();

  bool find_flow(Place& place, const Frame& frame) const;
  bool apply_flow(const Place& place, const Lane& lane, FramePtr& frame);
  bool flood(const Place& place, const Lane& lane, FramePtr& frame);
  bool bridge(const Place& place, const Lane& lane, FramePtr& frame, Destination destination);
  bool route(const Place& place, FramePtr& frame);

  // Counts the frame as received and puts it into its VLAN.
  void receive(const Place& place, Frame& frame, CastKind cast);

  Tables& tables_;
  FramePool& pool_;
  const CpuQueue& cpu_;
  Egress& egress_;

  // Of the burst in hand.
  std::uint64_t burst_ = 0;  // its number, in units of 2^16
  PortIndex port_ = 0;
  Destination source_;
  bool untagged_ = false;     // frames without a tag are the PVID's
  bool flows_asked_ = false;  // the flow table comes first
  bool flow_needed_ = false;  // and a frame without a flow is dropped
  std::uint16_t pvid_ = 0;
  std::uint32_t mtu_bytes_ = 0;
  bool groups_ = false;  // no storm limit counts broadcasts and multicasts
  unsigned floods_ = 0;  // the kinds of floods, FLOOD_BLOCK_..., that nothing holds back
  std::uint64_t now_seconds_ = 0;
  std::array<Lane, kLanes> lanes_;
  std::array<Place, kBurst> places_;
  std::size_t routed_count_ = 0;
  std::array<std::uint8_t, kBurst> routed_;  // places of frames to the router
  std::array<Ipv4, kBurst> routed_to_;       // and where they go
};

// ---- Frames in ----------------------------------------------------------------------------------

__attribute__((always_inline)) inline bool FastPath::admits(std::size_t place, const Frame& frame) {
  if (frame.size() < kEthernetBytes + kTagBytes || frame.offload.pending()) return false;
  const std::uint8_t* const data = frame.data();

  const std::uint64_t destination = load64(data) >> 16;
  const std::uint64_t source = load64(data + 6) >> 16;
  Place& here = places_[place];
  here.group = (destination >> 40 & 1) != 0;
  if ((source >> 40 & 1) != 0) return false;
  if (here.group && (!groups_ || (destination & ~std::uint64_t{0xF}) == kReservedGroup)) {
    return false;
  }

  std::uint16_t type = load16(data + 12);
  here.tag_control = 0;
  here.mtu_bytes = static_cast<std::uint32_t>(frame.size());
  here.vlan = pvid_;
  if (type == kTypeCustomerTag) {
    here.tag_control = load16(data + 14);
    here.vlan = here.tag_control & 0xFFF;
    here.priority = static_cast<std::uint8_t>(here.tag_control >> 13);
    here.mtu_bytes = static_cast<std::uint32_t>(frame.size() - kTagBytes);
    type = load16(data + 16);
  } else if (!untagged_) {
    return false;
  }
  if (type < kFirstEtherType || is_tag(type) || here.mtu_bytes > mtu_bytes_) return false;

  Lane* const lane = lane_of(here.vlan);
  if (lane == nullptr || !lane->open) return false;
  if (here.tag_control == 0) here.priority = lane->priority;
  here.flow = nullptr;
  if (flows_asked_ && find_flow(here, frame)) return true;
  if (flow_needed_) return false;
  here.source = tables_.fdb.probe(fdb_key(here.vlan, source));
  here.router = router_of(*lane, here, destination);
  if (here.router == nullptr) {
    here.destination = tables_.fdb.probe(fdb_key(here.vlan, destination));
  } else if (type != kTypeIpv4 || !admits_to_router(place, frame)) {
    return false;
  }
  return true;
}

// ---- Frames out ---------------------------------------------------------------------------------

inline void FastPath::receive(const Place& place, Frame& frame, CastKind cast) {
  tables_.counters.received(port_, frame.size(), cast);
  frame.ingress = port_;
  frame.vlan = place.vlan;
  frame.priority = place.priority;
}

inline bool FastPath::forward(std::size_t place, FramePtr& frame) {
  const Place& here = places_[place];
  const Lane& lane = lanes_[here.vlan % kLanes];
  if (here.flow != nullptr) return apply_flow(here, lane, frame);

  const FdbTable& fdb = tables_.fdb;
  const FdbEntry* const source = fdb.find(here.source);
  if (source == nullptr || tables_.lags.resolve(source->destination()) != source_) return false;
  bool sent = false;
  if (here.router != nullptr) {
    sent = route(here, frame);
  } else if (const FdbEntry* const entry = fdb.find(here.destination)) {
    sent = bridge(here, lane, frame, entry->destination());
  } else {
    sent = flood(here, lane, frame);
  }
  if (sent) tables_.fdb.touch(*source, now_seconds_);
  return sent;
}

inline bool FastPath::bridge(const Place& place, const Lane& lane, FramePtr& frame,
                             Destination destination) {
  const PortIndex egress = destination.number;
  if (!destination.is_port() || place.group || !lane.bridged.contains(egress) ||
      !tables_.ports.is_up(egress) || place.mtu_bytes > tables_.ports.mtu_bytes(egress)) {
    return false;
  }
  receive(place, *frame, CastKind::unicast);
  const unsigned priority = place.priority;
  const bool tagged = !lane.untagged.contains(egress);
  if (tagged && place.tag_control == 0) {
    push_tag(*frame, tag_control(place.vlan, priority, false));
  } else if (!tagged && place.tag_control != 0) {
    strip_tag(*frame);
  }
  egress_.transmit_plain(std::move(frame), egress, tables_.cos.queue(egress, priority),
                         CastKind::unicast);
  return true;
}

}  // namespace softcard

#endif  // SOFTCARD_PIPELINE_FAST_PATH_H_
