// SPDX-License-Identifier: Apache-2.0
//
// The forwarding pipeline: what becomes of a frame. pipeline.cpp reads from top to bottom as the
// way of a frame; here stands what the rest of the card calls, and what the pipeline asks of it.
//
// Frames come in bursts, so that the memory that their lookups need is fetched for all of them
// together; each frame is nevertheless handled after the one before it, with all that that one
// learned. Nothing is allocated and a unicast frame is never copied: it moves to its egress cable.
#ifndef SOFTCARD_PIPELINE_PIPELINE_H_
#define SOFTCARD_PIPELINE_PIPELINE_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "softcard/base/clock.h"
#include "softcard/base/net_types.h"
#include "softcard/base/port_set.h"
#include "softcard/frames/frame.h"
#include "softcard/frames/parser.h"
#include "softcard/pipeline/cpu_queue.h"
#include "softcard/pipeline/egress.h"
#include "softcard/pipeline/fast_path.h"
#include "softcard/pipeline/observer.h"
#include "softcard/pipeline/trace.h"
#include "softcard/tables/storm_meter.h"
#include "softcard/tables/tables.h"

namespace softcard {

class Pipeline {
 public:
  // All are kept and outlive the pipeline; the ports are there already.
  Pipeline(Tables& tables, const Clock& clock, FramePool& pool, CpuQueue& cpu, PortCables& cables);
  Pipeline(const Pipeline&) = delete;
  Pipeline& operator=(const Pipeline&) = delete;

  // Takes frames that came in at `port`, in their order; every pointer is null afterwards. Where
  // memory runs out, or a cable throws, the exception passes through: what was under way is lost
  // and counted, and pointers that are not null yet stay the caller's.
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
  void set_trace(Trace* trace) { note_.set(trace); }

  // Shows the way of every frame to `observer`, until its owner lets go of it.
  void observe(std::weak_ptr<FrameObserver> observer) { witness_.add(std::move(observer)); }
  // Whether plain frames take the fast path, as they do unless told otherwise, and unless a trace
  // or an observer looks. What becomes of a frame is the same with and without it.
  void set_fast_path(bool on) { fast_path_on_ = on; }

 private:
  // Frames whose lookups wait for memory together.
  static constexpr std::size_t kBurst = FastPath::kBurst;

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
    bool fast = false;       // the fast path has it
    std::int8_t queue = -1;  // egress queue set by a flow; -1: by the port's CoS mapping
    const L3Interface* router = nullptr;  // the router interface that it is addressed to
    const NextHop* next_hop = nullptr;    // found ahead; null: not looked for, or not found
    Headers headers;

    // Forgets what was found out about the frame before.
    void begin() {
      control = false;
      bridged = false;
      fast = false;
      queue = -1;
      next_hop = nullptr;
      headers = Headers();
    }
  };

  class Burst;

  // The stages, in the order in which a frame meets them; those that are bool say whether the frame
  // goes on to the next one.
  bool enter(Passage& passage);
  bool arrive(Passage& passage);
  void classify(Passage& passage);
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
  void keep_from_routing(Passage& passage, DropReason reason, unsigned cpu_reason);
  void bridge(Passage& passage);
  void flood(Passage& passage, FramePtr frame, flood_block_type_t kind);

  // The ways out.
  void send(Passage& passage, FramePtr frame, Destination destination, Tagging tagging);
  void leave(const Passage& passage, FramePtr frame, Destination way, PortIndex egress,
             Tagging tagging);
  PortSet eligible(const Passage& passage, Tagging tagging) const;
  bool ineligible(const Passage& passage, PortIndex egress, Tagging tagging,
                  DropReason& reason) const;
  bool emit(const Passage& passage, FramePtr frame, Destination way, PortIndex egress,
            Tagging tagging);
  void mirror(const Frame& frame, PortIndex mirrored, const char* direction);
  bool cpu_takes(const Passage& passage) const;
  bool to_cpu(const Passage& passage, FramePtr frame, unsigned reason);
  bool queue_for_cpu(FramePtr frame, unsigned reason);
  void copy_to_cpu(const Passage& passage, unsigned reason);

  bool read_cpu_frame(const std::uint8_t* data, std::size_t bytes, unsigned type, Passage& passage);
  PortSet split_horizon(const Passage& passage) const;
  const L3Interface* router_of(const Passage& passage) const;
  void find_next_hops(std::size_t count);
  template <class Address>
  void find_next_hops(std::size_t count, Layer3 protocol, const L3HostTable<Address>& all_hosts,
                      const L3RouteTable<Address>& all_routes);
  const NextHop* next_hop_of(const Passage& passage) const;

  // Drops a whole frame, on its way in or to its destination.
  void drop(Passage& passage, DropReason reason);
  void count_drop(const Passage& passage, DropReason reason);
  void abandon();

  Tables& tables_;
  const Clock& clock_;
  FramePool& pool_;
  CpuQueue& cpu_;
  TraceWriter note_;
  Witness witness_;
  Egress egress_;
  FastPath fast_path_;
  bool fast_path_on_ = true;
  std::uint64_t now_ns_ = 0;       // of the burst in hand
  std::uint64_t now_seconds_ = 0;  // the same, for what ages
  std::array<Passage, kBurst> passages_;
  std::vector<std::array<StormMeter, kStormKinds>> meters_;  // by port
};

}  // namespace softcard

#endif  // SOFTCARD_PIPELINE_PIPELINE_H_
