// SPDX-License-Identifier: Apache-2.0

#include "softcard/base/clock.h"

#include <chrono>

namespace softcard {
namespace {

template <class SystemClock>
std::uint64_t ns_of() {
  const auto time = SystemClock::now().time_since_epoch();
  return static_cast<std::uint64_t>(
      std::chrono::duration_cast<std::chrono::nanoseconds>(time).count());
}

std::uint64_t steady_ns() { return ns_of<std::chrono::steady_clock>(); }

}  // namespace

std::uint64_t ns_since_1970(Clock& clock) {
  const bool stands_still = clock.warp_ns(0);
  return stands_still ? 0 : ns_of<std::chrono::system_clock>() - clock.now_ns();
}

RealClock::RealClock() : start_ns_(steady_ns()) {}

std::uint64_t RealClock::now_ns() const { return steady_ns() - start_ns_; }

}  // namespace softcard
