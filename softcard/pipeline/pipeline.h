// SPDX-License-Identifier: Apache-2.0
//
// The forwarding pipeline: what becomes of a frame. pipeline.cpp reads from top to bottom as the
// way of a frame; here stands what the rest of the card calls.
//
// Frames come in bursts, so that the memory that their lookups need is fetched for all of them
// together; each frame is nevertheless handled after the one before it, with all that that one
// learned. Nothing is allocated and a unicast frame is never copied: it moves to its egress cable.
#ifndef SOFTCARD_PIPELINE_PIPELINE_H_
#define SOFTCARD_PIPELINE_PIPELINE_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "softcard/base/net_types.h"
#include "softcard/base/port_set.h"
#include "softcard/frames/frame.h"
#include "softcard/frames/parser.h"
#include "softcard/pipeline/trace.h"
#include "softcard/tables/flow_table.h"
#include "softcard/tables/l3_table.h"
#include "softcard/tables/lag_table.h"
#include "softcard/tables/storm_meter.h"
#include "softcard/tables/traffic_table.h"

namespace softcard {

class Card;

class Pipeline {
 public:
  // The pipeline of `card`, which outlives it and whose ports are there already.
  explicit Pipeline(Card& card);
  Pipeline(const Pipeline&) = delete;
  Pipeline& operator=(const Pipeline&) = delete;

  // Takes frames that came in at `port`, in their order; every pointer is null afterwards.
  void receive(PortIndex port, FramePtr* frames, std::size_t count);

  // Sends a frame from the CPU out of each port listed, with a tag (its own, else one of the port's
  // PVID) or without. `type` is PACKET_TYPE_...: only data is subject to the spanning tree. False
  // when it is no Ethernet frame, and when not one of the ports could send it.
  bool send_by_port(const std::vector<PortIndex>& tagged, const std::vector<PortIndex>& untagged,
                    const std::uint8_t* data, std::size_t bytes, unsigned type);

  // Forwards a frame from the CPU as if it had come in through a port of its VLAN: that of its tag,
  // else VLAN 1. False when it is no Ethernet frame or its VLAN does not exist. A frame whose way
  // leads to the CPU is dropped.
  bool send_from_cpu(const std::uint8_t* data, std::size_t bytes, unsigned type);

  // Records the way of every frame in `trace` until it is set to null.
  void set_trace(Trace* trace) { trace_ = trace; }

  // Frames and copies dropped at a port for a reason; trace.h says at which port which reason
  // counts. kNoPort: frames that came from the CPU.
  std::uint64_t drops(PortIndex port, DropReason reason) const;
  // The sum over all ports and the CPU.
  std::uint64_t drops(DropReason reason) const;
  // Counts frames that the port's cable lost.
  void add_drops(PortIndex port, DropReason reason, std::uint64_t frames) {
    states_[port].drops[static_cast<std::size_t>(reason)] += frames;
  }
  void clear_drops();
  void clear_drops(PortIndex port);

 private:
  // Frames whose lookups wait for memory together, and most frames handed to a cable at a time.
  static constexpr std::size_t kBurst = 32;

  // How a frame leaves a port.
  enum class Tagging : std::uint8_t {
    by_membership,  // as the VLAN's tagged or untagged member
    as_it_is,       // with the tag that it has, whatever the VLAN
    tagged,         // with a tag, whatever the VLAN
    untagged,       // without its tag, whatever the VLAN
  };

  // A frame on its way, with all that was found out about it.
  struct Passage {
    FramePtr frame;               // null once it has gone on, or was dropped
    PortIndex ingress = kNoPort;  // kNoPort: from the CPU
    Destination source;           // what the FDB learns: the ingress port, or its LAG
    std::uint16_t vlan = 0;
    std::uint8_t priority = 0;
    bool control = false;    // passes whatever the spanning tree says
    bool bridged = false;    // leaves by the FDB
    std::int8_t queue = -1;  // egress queue set by a flow; -1: by the port's CoS mapping
    const L3Interface* router = nullptr;  // the router interface that it is addressed to
    const NextHop* next_hop = nullptr;    // found ahead; null: not looked for, or not found
    Headers headers;

    // Puts a frame and its ingress into a passage that is used again.
    void begin(FramePtr new_frame, PortIndex port) {
      frame = std::move(new_frame);
      ingress = port;
      control = false;
      bridged = false;
      queue = -1;
      next_hop = nullptr;
      headers = Headers();
    }
  };

  // What waits for the cable of an egress port.
  struct Staged {
    std::size_t count = 0;
    std::array<FramePtr, kBurst> frames;
  };

  // What a port remembers from frame to frame.
  struct PortState {
    std::array<StormMeter, kStormKinds> meters;
    std::uint64_t pause_until_ns = 0;  // how long the last pause frame that it sent holds
    std::array<std::uint64_t, kDropReasons> drops{};
  };

  // The stages, in the order in which a frame meets them; those that are bool say whether the frame
  // goes on to the next one.
  bool arrive(Passage& passage);
  bool classify(Passage& passage);
  void pass(Passage& passage);
  bool trap_reserved(Passage& passage);
  bool check_vlan(Passage& passage);
  bool check_lock(Passage& passage);
  bool check_storm(Passage& passage, StormKind kind);
  bool check_stp(Passage& passage);
  bool trap_filtered(Passage& passage);
  bool apply_flow(Passage& passage);
  void output(Passage& passage, FramePtr frame, const FlowAction& action);
  void rewrite(Passage& passage, const FlowAction& action);
  void forward(Passage& passage);
  void learn(const Passage& passage);
  void route(Passage& passage);
  void bridge(Passage& passage);
  void flood(Passage& passage, FramePtr frame, flood_block_type_t kind);

  // The ways out.
  void send(Passage& passage, FramePtr frame, Destination destination, Tagging tagging);
  PortIndex choose_member(const Passage& passage, const Frame& frame, const Lag& lag,
                          const PortSet& ready);
  PortSet able(const Passage& passage, Tagging tagging) const;
  bool refused(const Passage& passage, PortIndex egress, Tagging tagging, DropReason& reason) const;
  bool emit(const Passage& passage, FramePtr frame, PortIndex egress, Tagging tagging);
  void mirror(const Frame& frame, PortIndex mirrored, const char* direction);
  void transmit(FramePtr frame, PortIndex egress, unsigned queue);
  void stage(FramePtr frame, PortIndex egress);
  void flush(PortIndex egress);
  void flush_all();
  void push_back(PortIndex port);
  bool to_cpu(const Passage& passage, FramePtr frame, unsigned reason);

  bool read_cpu_frame(const std::uint8_t* data, std::size_t bytes, unsigned type, Passage& passage);
  static std::uint64_t balance(const Headers& headers, const Frame& frame, lag_psc_t criterion);
  PortSet own_ports(const Passage& passage) const;
  const L3Interface* router_of(const Passage& passage) const;
  void find_next_hops(std::size_t count);
  template <class Address>
  void find_next_hops(std::size_t count, Layer3 protocol, const L3HostTable<Address>& all_hosts,
                      const L3RouteTable<Address>& all_routes);
  const NextHop* next_hop_of(const Passage& passage) const;

  // Drops a whole frame on its way in or to its destination, or one copy on its way out.
  void drop(Passage& passage, DropReason reason);
  void refuse(PortIndex egress, DropReason reason);

  template <class... Parts>
  void note(const char* stage, const Parts&... parts) const {
    if (trace_ != nullptr) add_note(stage, parts...);
  }
  template <class... Parts>
  void add_note(const char* stage, const Parts&... parts) const;

  Card& card_;
  Trace* trace_ = nullptr;
  std::uint64_t now_ns_ = 0;  // of the burst in hand
  std::array<Passage, kBurst> passages_;
  std::vector<Staged> staged_;  // by port
  PortSet staged_ports_;
  std::vector<PortState> states_;  // by port
  std::array<std::uint64_t, kDropReasons> cpu_drops_{};
};

}  // namespace softcard

#endif  // SOFTCARD_PIPELINE_PIPELINE_H_
