// SPDX-License-Identifier: Apache-2.0
//
// Where an event loop reads the time. Internal to the loop.

#ifndef LIBXORP_CLOCK_HH_
#define LIBXORP_CLOCK_HH_

#include "libxorp/timeval.hh"

class ClockBase {
 public:
  virtual ~ClockBase();

  // Reads the time anew.
  virtual void advance_time() = 0;

  // Gives the time as last read.
  virtual void current_time(TimeVal& now) = 0;
};

// The system's monotonic clock: setting the date does not move it.
class SystemClock : public ClockBase {
 public:
  SystemClock();
  void advance_time() override;
  void current_time(TimeVal& now) override;

 private:
  TimeVal _now;
};

#endif  // LIBXORP_CLOCK_HH_
