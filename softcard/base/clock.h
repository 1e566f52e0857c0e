// SPDX-License-Identifier: Apache-2.0
//
// The card's time. Everything in the card that depends on time (ageing, meters, event rates) asks
// the card's clock and nothing else, so that a test or a script on a virtual clock is exact.
#ifndef SOFTCARD_BASE_CLOCK_H_
#define SOFTCARD_BASE_CLOCK_H_

#include <cstdint>

namespace softcard {

inline constexpr std::uint64_t kNanosecondsPerSecond = 1000000000;

// Time since the clock was made; it never goes back.
class Clock {
 public:
  virtual ~Clock() = default;

  virtual std::uint64_t now_ns() const = 0;

  // Moves the time on by `ns`; false, and nothing changed, for a clock that runs by itself, and
  // where the time would go beyond 2^64 ns, which is 584 years.
  virtual bool warp_ns(std::uint64_t ns) = 0;

  std::uint64_t now_seconds() const { return now_ns() / kNanosecondsPerSecond; }
};

// When a clock was 0, in nanoseconds since 1970: 0 for one that stands still until it is moved,
// else by the time of day.
std::uint64_t ns_since_1970(Clock& clock);

// The machine's steady clock.
class RealClock : public Clock {
 public:
  RealClock();
  std::uint64_t now_ns() const override;
  bool warp_ns(std::uint64_t) override { return false; }

 private:
  std::uint64_t start_ns_;
};

// Stands still until it is told to move.
class VirtualClock : public Clock {
 public:
  std::uint64_t now_ns() const override { return now_ns_; }
  bool warp_ns(std::uint64_t ns) override {
    if (ns > UINT64_MAX - now_ns_) return false;
    now_ns_ += ns;
    return true;
  }

 private:
  std::uint64_t now_ns_ = 0;
};

}  // namespace softcard

#endif  // SOFTCARD_BASE_CLOCK_H_
