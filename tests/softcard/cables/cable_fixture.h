// SPDX-License-Identifier: Apache-2.0
//
// The card's side of a cable in tests: keeps what arrives, and an event loop to let it come.
#ifndef TESTS_SOFTCARD_CABLES_CABLE_FIXTURE_H_
#define TESTS_SOFTCARD_CABLES_CABLE_FIXTURE_H_

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "libxorp/eventloop.hh"
#include "softcard/cables/cable.h"

namespace softcard {

using Bytes = std::vector<std::uint8_t>;

// A frame of `bytes` bytes that depend on `seed`, from one station to another.
inline Bytes some_frame(std::size_t bytes, unsigned seed = 0) {
  Bytes frame = {0x02, 0, 0, 0, 0, 2, 0x02, 0, 0, 0, 0, 1, 0x88, 0xB5};
  for (std::size_t i = frame.size(); i < bytes; ++i) {
    frame.push_back(static_cast<std::uint8_t>(i * 31 + seed));
  }
  frame.resize(bytes);
  return frame;
}

class KeepingSink final : public CableSink {
 public:
  explicit KeepingSink(std::size_t small_frames = FramePool::kDefaultSmallFrames)
      : pool_(small_frames) {}

  void frames_arrived(PortIndex, FramePtr* frames, std::size_t count) override {
    for (std::size_t i = 0; i < count; ++i) arrived.push_back(std::move(frames[i]));
    ++bursts;
  }
  void frames_lost(PortIndex, std::uint64_t count) override { lost += count; }
  void frames_forgotten(PortIndex, std::uint64_t count) override { forgotten += count; }
  void carrier_changed(PortIndex) override {
    ++carrier_changes;
    arrived_before_change = arrived.size();
  }
  unsigned advertised_ability(PortIndex) const override { return on ? 1 : 0; }
  FramePool& frame_pool() override { return pool_; }

  // Has `cable` send the frames in one call; the result of that.
  std::size_t send(Cable& cable, const std::vector<Bytes>& frames) {
    std::vector<FramePtr> burst;
    for (const Bytes& bytes : frames) burst.push_back(pool_.make(bytes.data(), bytes.size()));
    const std::size_t sent = cable.transmit(burst.data(), burst.size());
    for (const FramePtr& frame : burst) EXPECT_EQ(frame, nullptr) << "transmit() takes all";
    return sent;
  }

  // The frames that have arrived since the last call.
  std::vector<Bytes> take() {
    std::vector<Bytes> frames;
    for (const FramePtr& frame : arrived) {
      frames.emplace_back(frame->data(), frame->data() + frame->size());
    }
    arrived.clear();
    return frames;
  }

 private:
  FramePool pool_;

 public:
  std::vector<FramePtr> arrived;
  int bursts = 0;
  int carrier_changes = 0;
  std::size_t arrived_before_change = 0;
  std::uint64_t lost = 0;
  std::uint64_t forgotten = 0;
  bool on = true;  // the port
};

class CableTest : public testing::Test {
 protected:
  // Runs the loop until `done` says so; a failure after a minute.
  void run_until(const std::function<bool()>& done) {
    bool late = false;
    const XorpTimer limit = loop_.set_flag_after_ms(60000, &late);
    while (!done() && !late) loop_.run();
    EXPECT_FALSE(late) << "nothing more happens";
  }
  // Passes of the loop, none of which waits.
  void pump(int passes = 32) {
    while (passes-- > 0) {
      bool due;
      const XorpTimer timer = loop_.set_flag_after_ms(0, &due);
      loop_.run();
    }
  }

  EventLoop loop_;
  std::string error_;
};

}  // namespace softcard

#endif  // TESTS_SOFTCARD_CABLES_CABLE_FIXTURE_H_
