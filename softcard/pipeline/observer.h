// SPDX-License-Identifier: Apache-2.0
//
// What becomes of frames, for those who look on: monitors and captures. A trace tells why one frame
// went where it went, step by step; an observer gets every frame, with its bytes as they came in
// and as they left, and the verdict.
//
// Nobody pays for it while nobody looks. While somebody does, the pipeline copies bytes and hands
// each frame to its egress cables before it takes up the next one.
#ifndef SOFTCARD_PIPELINE_OBSERVER_H_
#define SOFTCARD_PIPELINE_OBSERVER_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "softcard/base/net_types.h"
#include "softcard/frames/frame.h"
#include "softcard/tables/tables.h"

namespace softcard {

// A frame as it was at one point of its way.
struct SeenFrame {
  std::vector<std::uint8_t> bytes;
  Offload offload;  // what its bytes still lack
};

// All that became of one frame that came in at a port or from the CPU.
struct Sighting {
  struct Sent {
    PortIndex port;
    bool made_here;  // by the card itself, as pause frames are
    SeenFrame frame;
  };
  struct ToCpu {
    unsigned reason;  // RX_REASON_...
    SeenFrame frame;
  };
  // A way that the frame took.
  struct Way {
    std::string to;  // "1/1/3", or "lag/2" where a member was chosen
    PortIndex port;  // that it left through
  };
  struct Drop {
    PortIndex egress;  // of a copy that was to leave there; kNoPort: of the whole frame
    DropReason reason;
  };

  std::uint64_t number = 0;     // counts the frames that were looked at, from 1
  std::uint64_t time_ns = 0;    // of the card's clock
  PortIndex ingress = kNoPort;  // kNoPort: it came from the CPU
  SeenFrame in;
  std::vector<Sent> sent;  // in their order, mirrored copies and segments among them
  std::vector<ToCpu> to_cpu;
  std::vector<Way> ways;
  std::vector<PortIndex> mirrored_to;
  std::vector<Drop> drops;

  // Whether it went nowhere; copies for mirrors do not count.
  bool dropped() const { return ways.empty() && to_cpu.empty(); }
  // The reason's name for a frame that was dropped; "no-port" when there was none to send it to.
  std::string drop_reason() const;
  // "dropped: stp-ingress", "to 1/1/3, lag/2, CPU".
  std::string verdict() const;
  // What else is to be said, in lines of a few words: why the CPU got it, where it was mirrored to,
  // where a copy of it was dropped and why.
  std::vector<std::string> details() const;
};

class FrameObserver {
 public:
  virtual ~FrameObserver() = default;

  // The way of a frame is over. Other frames wait meanwhile: an observer does not call the card.
  virtual void saw(const Sighting& sighting) = 0;
  // The burst that the last frames came in is over: time to hand on what was gathered of them.
  virtual void burst_over() {}
};

// Follows the frames of a pipeline for its observers. Every function but add() and looks() does
// nothing while no frame is followed.
class Witness {
 public:
  // `tables`, which the witness keeps, know the names of LAGs.
  explicit Witness(const Tables& tables) : tables_(tables) {}

  // Shows every frame from the next one on to `observer`, until its owner lets go of it.
  void add(std::weak_ptr<FrameObserver> observer) { observers_.push_back(std::move(observer)); }
  bool looks() const { return !observers_.empty(); }

  // Follows a frame from here to finish(), if anybody looks.
  void begin(PortIndex ingress, const Frame& frame, std::uint64_t time_ns) {
    if (looks()) open(ingress, frame, time_ns);
  }
  // What became of it, in any order.
  void sent(PortIndex port, const Frame& frame, bool made_here) {
    if (open_) sighting_.sent.push_back({port, made_here, seen(frame)});
  }
  void took(Destination way, PortIndex port) {
    if (open_) sighting_.ways.push_back({text(way), port});
  }
  void mirrored(PortIndex to) {
    if (open_) sighting_.mirrored_to.push_back(to);
  }
  void dropped(DropReason reason, PortIndex egress = kNoPort) {
    if (open_) sighting_.drops.push_back({egress, reason});
  }
  // The cable took all but the last `count` of the frames sent out of `port`.
  void refused(PortIndex port, std::size_t count, DropReason reason) {
    if (open_) take_back(port, count, reason);
  }
  // The bytes of a frame that goes out of hand before it is known whether the CPU takes it.
  SeenFrame copy_of(const Frame& frame) const { return open_ ? seen(frame) : SeenFrame(); }
  void queued(SeenFrame frame, unsigned reason) {
    if (open_) sighting_.to_cpu.push_back({reason, std::move(frame)});
  }
  // Shows the frame to the observers.
  void finish() {
    if (open_) show();
  }
  // Forgets the frame: something threw while it was on its way.
  void forget() { open_ = false; }
  void burst_over() {
    if (looks()) tell_burst_over();
  }

 private:
  static SeenFrame seen(const Frame& frame) {
    return {{frame.data(), frame.data() + frame.size()}, frame.offload};
  }
  std::string text(Destination way) const;
  void open(PortIndex ingress, const Frame& frame, std::uint64_t time_ns);
  void take_back(PortIndex port, std::size_t count, DropReason reason);
  void show();
  void tell_burst_over();
  template <class Tell>
  void for_each_observer(Tell&& tell);

  const Tables& tables_;
  std::vector<std::weak_ptr<FrameObserver>> observers_;
  std::uint64_t count_ = 0;
  bool open_ = false;  // a frame is followed
  Sighting sighting_;
};

}  // namespace softcard

#endif  // SOFTCARD_PIPELINE_OBSERVER_H_
