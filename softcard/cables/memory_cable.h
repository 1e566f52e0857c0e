// SPDX-License-Identifier: Apache-2.0
//
// Cables that need nothing but memory: one whose far end is the program itself, as tests and the
// shell use it, and one that joins two ports.
#ifndef SOFTCARD_CABLES_MEMORY_CABLE_H_
#define SOFTCARD_CABLES_MEMORY_CABLE_H_

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "softcard/cables/cable.h"

namespace softcard {

// The program holds the far end: it sends frames into the port and reads what the port sent.
class MemoryCable : public Cable {
 public:
  // Most bytes that the memory cables of the process keep together unless keep_at_most() says
  // otherwise.
  static constexpr std::size_t kDefaultRoomBytes = std::size_t{128} << 20;
  // The memory that a frame takes besides its own bytes.
  static constexpr std::size_t kOverheadBytes = 48;

  ~MemoryCable() override { clear(); }

  // Bounds what the memory cables of the process keep together. A cable that has no room for a
  // frame forgets the oldest of its own; the latest one it always keeps. What is forgotten is
  // counted, here and by the card.
  static void keep_at_most(std::size_t bytes) { room_bytes_ = bytes; }

  void plug(CableSink& sink, PortIndex port) override;
  std::size_t transmit(FramePtr* frames, std::size_t count) override;
  bool carrier() const override { return carrier_; }
  std::string describe() const override;

  // ---- The far end ------------------------------------------------------------------------------

  // Sends a frame into the port, at once. False when it is empty or longer than any frame.
  bool send(const std::uint8_t* data, std::size_t bytes);
  bool send(const std::vector<std::uint8_t>& frame) { return send(frame.data(), frame.size()); }

  // Takes the frame that the port sent first; false when there is none.
  bool take(std::vector<std::uint8_t>& frame);

  std::size_t waiting() const { return sent_.size(); }
  // What waits, the frame that take() would take first.
  const std::deque<std::vector<std::uint8_t>>& frames() const { return sent_; }
  // The frame that take() would take; there is one.
  const std::vector<std::uint8_t>& first() const { return sent_.front(); }
  void clear();
  // Frames that were forgotten since the cable was plugged.
  std::uint64_t forgotten() const { return forgotten_; }

  // Pulls the far end out, or puts it back in.
  void set_carrier(bool on);

 private:
  void drop_first();

  static std::atomic<std::size_t> room_bytes_;
  static std::atomic<std::size_t> kept_bytes_;  // by all memory cables

  std::deque<std::vector<std::uint8_t>> sent_;  // bytes alone: what waits here holds no frame
  std::uint64_t forgotten_ = 0;
  CableSink* sink_ = nullptr;
  PortIndex port_ = kNoPort;
  bool carrier_ = true;
};

// One end of a cable between two ports, of one card or of two that the same thread runs. A frame
// sent into it waits at the other end until that card polls, so a loop of cables goes round once a
// poll instead of for ever.
class PatchCable : public Cable {
 public:
  // The two ends of a new cable. Each end has a carrier while the other one is plugged in.
  static std::pair<std::unique_ptr<PatchCable>, std::unique_ptr<PatchCable>> make(
      std::size_t room = 4096);
  ~PatchCable() override;

  void plug(CableSink& sink, PortIndex port) override;
  std::size_t transmit(FramePtr* frames, std::size_t count) override;
  bool carrier() const override { return peer_ != nullptr && peer_->sink_ != nullptr; }
  void advertisement_changed() override;
  CableSink* far_end(PortIndex& port) const override;
  std::size_t poll(std::size_t budget) override;
  std::string describe() const override;

 private:
  explicit PatchCable(std::size_t room) : room_(room) {}

  std::size_t room_;              // most frames that wait
  std::deque<FramePtr> arrived_;  // out of the pool of the card at this end
  PatchCable* peer_ = nullptr;    // null once the other end is gone
  CableSink* sink_ = nullptr;
  PortIndex port_ = kNoPort;
};

}  // namespace softcard

#endif  // SOFTCARD_CABLES_MEMORY_CABLE_H_
