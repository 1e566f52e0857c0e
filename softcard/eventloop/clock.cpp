// SPDX-License-Identifier: Apache-2.0
//
// The system's monotonic clock as an event loop reads it.

#include "libxorp/clock.hh"

#include <ctime>

ClockBase::~ClockBase() = default;

SystemClock::SystemClock() { SystemClock::advance_time(); }

void SystemClock::advance_time() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  _now = TimeVal(static_cast<int32_t>(now.tv_sec), static_cast<int32_t>(now.tv_nsec / 1000));
}

void SystemClock::current_time(TimeVal& now) { now = _now; }
