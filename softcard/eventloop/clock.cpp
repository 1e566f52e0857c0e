// SPDX-License-Identifier: Apache-2.0
//
// The clock of an event loop: the system's monotonic one, or the time that set_loop_time() gave.

#include "libxorp/clock.hh"

#include <ctime>

#include "softcard/eventloop/loop_time.h"

namespace softcard {
namespace {

LoopTime* the_time = nullptr;

}  // namespace

void set_loop_time(LoopTime* time) { the_time = time; }

LoopTime* loop_time() { return the_time; }

}  // namespace softcard

ClockBase::~ClockBase() = default;

SystemClock::SystemClock() { SystemClock::advance_time(); }

void SystemClock::advance_time() {
  if (const softcard::LoopTime* const time = softcard::loop_time()) {
    const std::uint64_t us = time->now_ns() / 1000;
    _now = TimeVal(static_cast<int32_t>(us / 1000000), static_cast<int32_t>(us % 1000000));
    return;
  }
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  _now = TimeVal(static_cast<int32_t>(now.tv_sec), static_cast<int32_t>(now.tv_nsec / 1000));
}

// A card's time is read at each question: it also moves while the loop does not run.
void SystemClock::current_time(TimeVal& now) {
  if (softcard::loop_time() != nullptr) advance_time();
  now = _now;
}
