// SPDX-License-Identifier: Apache-2.0
//
// Storm control: how many frames a second of a kind a port lets in.
#ifndef SOFTCARD_TABLES_STORM_METER_H_
#define SOFTCARD_TABLES_STORM_METER_H_

#include <cstdint>

namespace softcard {

// A token bucket that holds one second's worth of frames. It starts full and is filled by the
// clock alone, without rounding: what it lets through depends on the times of the frames and on
// nothing else.
class StormMeter {
 public:
  // Frames a second; 0 lets everything through. A new rate starts with a full bucket.
  void set_rate(std::uint32_t frames_per_second) {
    rate_ = frames_per_second;
    tokens_ = frames_per_second;
    part_ = 0;
    started_ = false;
  }
  std::uint32_t rate() const { return rate_; }

  // Whether a frame at `now_ns`, nanoseconds of a clock that never goes back, may pass.
  bool admit(std::uint64_t now_ns) {
    if (rate_ == 0) return true;
    refill(now_ns);
    if (tokens_ == 0) return false;
    --tokens_;
    return true;
  }

 private:
  static constexpr std::uint64_t kSecondNs = 1000000000;

  void refill(std::uint64_t now_ns) {
    if (!started_) {
      started_ = true;
      filled_to_ns_ = now_ns;
    }
    if (now_ns <= filled_to_ns_) return;
    const std::uint64_t elapsed_ns = now_ns - filled_to_ns_;
    filled_to_ns_ = now_ns;
    if (elapsed_ns >= kSecondNs) {
      tokens_ = rate_;
      part_ = 0;
      return;
    }
    // Less than 2^30 times 2^32, plus less than one second.
    part_ += elapsed_ns * rate_;
    const std::uint64_t frames = part_ / kSecondNs;
    part_ %= kSecondNs;
    if (frames >= rate_ - tokens_) {
      tokens_ = rate_;
      part_ = 0;
    } else {
      tokens_ += static_cast<std::uint32_t>(frames);
    }
  }

  std::uint32_t rate_ = 0;
  std::uint32_t tokens_ = 0;
  std::uint64_t filled_to_ns_ = 0;
  std::uint64_t part_ = 0;  // of the next token, in frame-nanoseconds per second
  bool started_ = false;
};

}  // namespace softcard

#endif  // SOFTCARD_TABLES_STORM_METER_H_
