// SPDX-License-Identifier: Apache-2.0
//
// The last step out of the card: frames are counted, completed where the cable does not do that
// itself, and staged until a port has a burst of them. Backpressure, which goes back to the sender
// of too much, leaves the card here too.
#ifndef SOFTCARD_PIPELINE_EGRESS_H_
#define SOFTCARD_PIPELINE_EGRESS_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "softcard/base/net_types.h"
#include "softcard/base/port_set.h"
#include "softcard/frames/frame.h"
#include "softcard/frames/wire.h"
#include "softcard/pipeline/observer.h"
#include "softcard/pipeline/trace.h"
#include "softcard/tables/tables.h"

namespace softcard {

// The cables of the card as the pipeline sees them; every PortIndex is a port of the card.
class PortCables {
 public:
  // Whether the port is plugged into anything.
  virtual bool plugged(PortIndex port) const = 0;
  // Whether the port's cable completes checksums and segments frames itself (frame.h's Offload).
  virtual bool takes_offloads(PortIndex port) const = 0;
  // Sends frames in their order and takes all of them: every pointer is null afterwards. Returns
  // how many were sent; a port that is plugged into nothing sends none.
  virtual std::size_t transmit(PortIndex port, FramePtr* frames, std::size_t count) = 0;

 protected:
  ~PortCables() = default;
};

class Egress {
 public:
  // Most frames handed to a cable at a time.
  static constexpr std::size_t kBurst = 32;

  // All are kept and outlive the object; the ports are there already.
  Egress(Tables& tables, FramePool& pool, PortCables& cables, const TraceWriter& note,
         Witness& witness);
  Egress(const Egress&) = delete;
  Egress& operator=(const Egress&) = delete;

  // Sends a frame as it is out of a port, at the latest with the next flush(). Each frame that
  // goes to the cable is counted in `queue`.
  void transmit(FramePtr frame, PortIndex egress, unsigned queue) {
    if (frame->offload.pending() && !cables_.takes_offloads(egress)) {
      complete(std::move(frame), egress, queue);
    } else {
      count_and_stage(std::move(frame), egress, queue);
    }
  }

  // The same for a frame without offloads whose kind is known.
  void transmit_plain(FramePtr frame, PortIndex egress, unsigned queue, CastKind cast) {
    tables_.counters.sent(egress, frame->size(), cast, queue);
    stage(std::move(frame), egress);
  }

  // Hands what is staged to the cables.
  void flush();

  // Gives back what is staged and sends none of it; it counts as the ports' errors.
  void discard();

  // Tells the sender of more than the port lets in to slow down: by a pause frame, not again
  // before the one before it has run out, or by jamming a half-duplex link.
  void backpressure(PortIndex port, std::uint64_t now_ns);

  // Counts one copy of a frame that is dropped on its way out.
  void drop(PortIndex egress, DropReason reason);

 private:
  // Frames that wait for the cable of a port.
  struct Staged {
    std::size_t count = 0;
    std::array<FramePtr, kBurst> frames;
  };

  void complete(FramePtr frame, PortIndex egress, unsigned queue);
  void count_and_stage(FramePtr frame, PortIndex egress, unsigned queue) {
    tables_.counters.sent(egress, frame->size(), cast_of(load48(frame->data())), queue);
    witness_.sent(egress, *frame, false);
    stage(std::move(frame), egress);
  }
  void stage(FramePtr frame, PortIndex egress) {
    Staged& staged = staged_[egress];
    staged.frames[staged.count++] = std::move(frame);
    staged_ports_.insert(egress);
    if (staged.count == kBurst) flush(egress);
  }
  void flush(PortIndex egress);
  // Counts frames that were sent as far as the card is concerned.
  void count_errors(PortIndex egress, DropReason reason, std::size_t frames);

  Tables& tables_;
  FramePool& pool_;
  PortCables& cables_;
  const TraceWriter& note_;
  Witness& witness_;
  std::vector<Staged> staged_;  // by port
  PortSet staged_ports_;
  std::vector<std::uint64_t> paused_until_ns_;  // by port: until when its last pause frame holds
};

}  // namespace softcard

#endif  // SOFTCARD_PIPELINE_EGRESS_H_
