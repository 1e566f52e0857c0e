// SPDX-License-Identifier: Apache-2.0
//
// The forwarding pipeline: what becomes of a frame. pipeline.cpp reads from top to bottom as the
// way of a frame; here stands what the rest of the card calls.
//
// Frames come in bursts, so that the memory that their lookups need is fetched for all of them
// together; each frame is nevertheless handled after the one before it, with all that that one
// learned. Nothing is allocated and a unicast frame is never copied: it moves to its egress cable.
#ifndef SOFTCARD_PIPELINE_H_
#define SOFTCARD_PIPELINE_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "softcard/frame.h"
#include "softcard/net_types.h"
#include "softcard/port_set.h"
#include "softcard/trace.h"

namespace softcard {

class Card;

class Pipeline {
 public:
  // The pipeline of `card`, which outlives it and is whole before the first frame comes.
  explicit Pipeline(Card& card);
  ~Pipeline();
  Pipeline(const Pipeline&) = delete;
  Pipeline& operator=(const Pipeline&) = delete;

  // Takes frames that came in at `port`, in their order; every pointer is null afterwards.
  void receive(PortIndex port, FramePtr* frames, std::size_t count);

  // Sends a frame from the CPU out of each port listed, with a tag (its own, else one of the port's
  // PVID) or without. `type` is PACKET_TYPE_...: only data is subject to the spanning tree. False
  // when the frame is no Ethernet frame or no port is listed; what the ports make of it shows in
  // their counters.
  bool send_by_port(const std::vector<PortIndex>& tagged, const std::vector<PortIndex>& untagged,
                    const std::uint8_t* data, std::size_t bytes, unsigned type);

  // Forwards a frame from the CPU as if it had come in through a port of its VLAN: that of its tag,
  // else VLAN 1. False when it is no Ethernet frame or its VLAN does not exist.
  bool send_from_cpu(const std::uint8_t* data, std::size_t bytes, unsigned type);

  // Records the way of every frame in `trace` until it is set to null.
  void set_trace(Trace* trace) { trace_ = trace; }

  // Frames and copies dropped at a port for a reason, ingress or egress; kNoPort counts what came
  // from the CPU.
  std::uint64_t drops(PortIndex port, DropReason reason) const;
  // The sum over all ports.
  std::uint64_t drops(DropReason reason) const;
  void clear_drops();

 private:
  struct Passage;
  struct Staged;

  Card& card_;
  Trace* trace_ = nullptr;
};

}  // namespace softcard

#endif  // SOFTCARD_PIPELINE_H_
