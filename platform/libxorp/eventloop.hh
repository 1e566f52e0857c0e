// SPDX-License-Identifier: Apache-2.0
//
// EventLoop: one thread's timers, tasks and descriptors.
//
//   EventLoop loop;
//   bool done = false;
//   XorpTimer limit = loop.set_flag_after_ms(1000, &done);
//   while (!done) loop.run();

#ifndef LIBXORP_EVENTLOOP_HH_
#define LIBXORP_EVENTLOOP_HH_

#include <ctime>

#include "libxorp/clock.hh"
#include "libxorp/ioevents.hh"
#include "libxorp/selector.hh"
#include "libxorp/task.hh"
#include "libxorp/timer.hh"
#include "libxorp/xorp.h"

// A process has one loop at a time: making a second while the first lives aborts. The
// constructor makes the process ignore SIGPIPE. Whatever uses the loop (readers, writers, sockets,
// timers) goes before it does: a destroyed loop tells nobody.
class EventLoop : private NONCOPYABLE {
 public:
  EventLoop();
  virtual ~EventLoop();

  // One pass: fires at most one timer, runs at most one task, waits, and serves at most one
  // ready descriptor.
  //
  // The wait lasts until the next timer is due; not at all when a timer has just fired or tasks
  // remain; for ever when no timer is scheduled. Of the ready descriptors the most urgent
  // priority is served, equals in turn; later passes serve the others without asking the kernel
  // again, so a callback may come for a descriptor that has been emptied since.
  void run();

  // Calls `cb` whenever `fd` is ready for `type` (not IOT_ANY). False if the descriptor has a
  // callback for that kind, which stays.
  bool add_ioevent_cb(XorpFd fd, IoEventType type, const IoEventCb& cb,
                      int priority = XorpTask::PRIORITY_DEFAULT);

  // Always true; a descriptor without callbacks is fine. Remove the callbacks of a descriptor
  // before closing it.
  bool remove_ioevent_cb(XorpFd fd, IoEventType type = IOT_ANY);

  // Descriptors with at least one callback.
  size_t descriptor_count() const;

  bool timers_pending() const { return !_timer_list.empty(); }
  bool events_pending() const { return timers_pending() || !_task_list.empty(); }
  size_t timer_list_length() const { return _timer_list.size(); }

  // ---- Timers: keep the result, see XorpTimer ---------------------------------------------------

  XorpTimer new_oneoff_at(const TimeVal& when, const OneoffTimerCallback& cb,
                          int priority = XorpTask::PRIORITY_DEFAULT) {
    return _timer_list.new_oneoff_at(when, cb, priority);
  }
  XorpTimer new_oneoff_after(const TimeVal& wait, const OneoffTimerCallback& cb,
                             int priority = XorpTask::PRIORITY_DEFAULT) {
    return _timer_list.new_oneoff_after(wait, cb, priority);
  }
  XorpTimer new_oneoff_after_ms(int ms, const OneoffTimerCallback& cb,
                                int priority = XorpTask::PRIORITY_DEFAULT) {
    return new_oneoff_after(TimeVal::from_ms(ms), cb, priority);
  }
  XorpTimer new_periodic(const TimeVal& interval, const PeriodicTimerCallback& cb,
                         int priority = XorpTask::PRIORITY_DEFAULT) {
    return _timer_list.new_periodic(interval, cb, priority);
  }
  XorpTimer new_periodic_ms(int ms, const PeriodicTimerCallback& cb,
                            int priority = XorpTask::PRIORITY_DEFAULT) {
    return new_periodic(TimeVal::from_ms(ms), cb, priority);
  }

  // Sets *flag to false at once, whatever `to_value` is, and to `to_value` on expiry.
  XorpTimer set_flag_at(const TimeVal& when, bool* flag, bool to_value = true) {
    *flag = false;
    return new_oneoff_at(when, callback(&EventLoop::set_flag, flag, to_value));
  }
  XorpTimer set_flag_after(const TimeVal& wait, bool* flag, bool to_value = true) {
    *flag = false;
    return new_oneoff_after(wait, callback(&EventLoop::set_flag, flag, to_value));
  }
  XorpTimer set_flag_after_ms(int ms, bool* flag, bool to_value = true) {
    return set_flag_after(TimeVal::from_ms(ms), flag, to_value);
  }

  // A timer that is not scheduled yet.
  XorpTimer new_timer(const BasicTimerCallback& cb) { return _timer_list.new_timer(cb); }

  // Unschedules the timer and lets go of it.
  void remove_timer(XorpTimer& timer);

  // ---- Tasks: keep the result, see XorpTask -----------------------------------------------------

  XorpTask new_oneoff_task(const OneoffTaskCallback& cb, int priority = XorpTask::PRIORITY_DEFAULT,
                           int weight = XorpTask::WEIGHT_DEFAULT);
  XorpTask new_task(const RepeatedTaskCallback& cb, int priority = XorpTask::PRIORITY_DEFAULT,
                    int weight = XorpTask::WEIGHT_DEFAULT);

  // The loop's idea of now, which moves only when the loop reads its clock: once a pass, and
  // when a wait is over.
  void current_time(TimeVal& now) const { _timer_list.current_time(now); }

  TimerList& timer_list() { return _timer_list; }
  SelectorList& selector_list() { return _selector_list; }

  // Kept for hosts that set them; they change nothing.
  void set_debug(bool on) { _is_debug = on; }
  bool is_debug() const { return _is_debug; }
  void set_aggressiveness(int value) { _aggressiveness = value; }

 protected:
  static void set_flag(bool* flag, bool value) { *flag = value; }

  friend class EventLoopDriver;  // a host's own way to run its loop, where it has one

  // The members and their order are XORP's, those that this loop does not use included.
  ClockBase* _clock;
  TimerList _timer_list;
  TaskList _task_list;
  int _aggressiveness;
  time_t _last_ev_run;
  time_t _last_warned;
  bool _is_debug;
  bool _last_ev_type[255];
  SelectorList _selector_list;
};

#endif  // LIBXORP_EVENTLOOP_HH_
