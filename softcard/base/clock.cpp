// SPDX-License-Identifier: Apache-2.0

#include "softcard/base/clock.h"

#include <chrono>

namespace softcard {
namespace {

std::uint64_t steady_ns() {
  return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::nanoseconds>(
                                        std::chrono::steady_clock::now().time_since_epoch())
                                        .count());
}

}  // namespace

RealClock::RealClock() : start_ns_(steady_ns()) {}

std::uint64_t RealClock::now_ns() const { return steady_ns() - start_ns_; }

}  // namespace softcard
