// SPDX-License-Identifier: Apache-2.0
//
// Time that event loops run on instead of the system's: a card on a virtual clock has its loop,
// timers and timeouts on that clock too, so that all of them advance together.
//
// A loop on such a time never waits for a timer. When it has nothing else to do it has the time
// moved on to its next timer, at once; with no timer it waits for its descriptors, as ever.
#ifndef SOFTCARD_EVENTLOOP_LOOP_TIME_H_
#define SOFTCARD_EVENTLOOP_LOOP_TIME_H_

#include <cstdint>

namespace softcard {

class LoopTime {
 public:
  virtual std::uint64_t now_ns() const = 0;

  // Moves the time on by at least 1 and at most `most_ns`: no further than to what else is due.
  virtual void advance(std::uint64_t most_ns) = 0;

 protected:
  ~LoopTime() = default;
};

// Has the process's loops run on `time`, which outlives them; null, as at the start: the system's.
void set_loop_time(LoopTime* time);
LoopTime* loop_time();

// Whether the process's loop has a timer, and when it is due.
bool next_timer(std::uint64_t& at_ns);

// One pass of the process's loop without any wait: a timer that is due, a task, a descriptor that
// is ready. False when there is no loop or it had nothing to do.
bool run_loop_once();

}  // namespace softcard

#endif  // SOFTCARD_EVENTLOOP_LOOP_TIME_H_
