// SPDX-License-Identifier: Apache-2.0
//
// XorpTimer: calls back once or periodically at a time of the event loop's clock.

#ifndef LIBXORP_TIMER_HH_
#define LIBXORP_TIMER_HH_

#include "libxorp/callback.hh"
#include "libxorp/clock.hh"
#include "libxorp/task.hh"
#include "libxorp/timeval.hh"

class TimerList;
class TimerNode;
class XorpTimer;

typedef XorpCallback0<void>::RefPtr OneoffTimerCallback;

// Returns true to go on.
typedef XorpCallback0<bool>::RefPtr PeriodicTimerCallback;

typedef XorpCallback1<void, XorpTimer&>::RefPtr BasicTimerCallback;

// A handle on a timer; copies share the timer. The timer runs only while some handle refers to
// it: one whose handle is not kept never fires.
//
// `priority` is accepted for every timer and orders nothing: timers fire in the order in which
// they expire.
class XorpTimer {
 public:
  XorpTimer();
  XorpTimer(TimerList* list, const BasicTimerCallback& cb);
  explicit XorpTimer(TimerNode* node);
  XorpTimer(const XorpTimer& other);
  XorpTimer& operator=(const XorpTimer& other);
  ~XorpTimer();

  bool scheduled() const;

  // All of these need a handle that refers to a timer, and replace an earlier time.
  void schedule_at(const TimeVal& when, int priority = XorpTask::PRIORITY_DEFAULT);
  void schedule_after(const TimeVal& wait, int priority = XorpTask::PRIORITY_DEFAULT);
  void schedule_after_ms(int ms, int priority = XorpTask::PRIORITY_DEFAULT);
  void schedule_now(int priority = XorpTask::PRIORITY_DEFAULT);

  // Counts from the time the timer was last due, so that a periodic use does not drift.
  void reschedule_after(const TimeVal& wait);
  void reschedule_after_ms(int ms);

  void unschedule();

  // Lets go of the timer: the handle refers to none afterwards.
  void clear();

  // When the timer is or was last due.
  const TimeVal& expiry() const;

  // False if it is not scheduled, and `remaining` is zero. Zero also when it is due.
  bool time_remaining(TimeVal& remaining) const;

 private:
  TimerNode* _node;
};

// One timer. Owned by its handles.
class TimerNode {
 public:
  TimerNode(TimerList* list, const BasicTimerCallback& cb);
  virtual ~TimerNode();

  void add_ref();
  void release_ref();

  void schedule_at(const TimeVal& when);
  void schedule_after(const TimeVal& wait);
  void reschedule_after(const TimeVal& wait);
  void unschedule();
  bool scheduled() const { return _scheduled; }
  const TimeVal& expiry() const { return _expires; }
  bool time_remaining(TimeVal& remaining) const;

  // Calls the owner back; `self` keeps the node alive meanwhile.
  virtual void expire(XorpTimer& self);

 private:
  friend class TimerList;
  typedef std::multimap<TimeVal, TimerNode*>::iterator Position;

  TimerNode(const TimerNode&);
  TimerNode& operator=(const TimerNode&);

  int _references;
  bool _scheduled;
  TimerList* _list;
  TimeVal _expires;
  Position _position;  // meaningful while scheduled
  BasicTimerCallback _cb;
};

// The timers of one loop in the order in which they expire. Internal to the loop.
class TimerList : private NONCOPYABLE {
 public:
  explicit TimerList(ClockBase* clock);

  // Handles may outlive the list; their timers are then no longer scheduled.
  ~TimerList();

  void current_time(TimeVal& now) const { _clock->current_time(now); }

  XorpTimer new_timer(const BasicTimerCallback& cb);
  XorpTimer new_oneoff_at(const TimeVal& when, const OneoffTimerCallback& cb,
                          int priority = XorpTask::PRIORITY_DEFAULT);
  XorpTimer new_oneoff_after(const TimeVal& wait, const OneoffTimerCallback& cb,
                             int priority = XorpTask::PRIORITY_DEFAULT);
  XorpTimer new_periodic(const TimeVal& interval, const PeriodicTimerCallback& cb,
                         int priority = XorpTask::PRIORITY_DEFAULT);

  bool empty() const { return _queue.empty(); }
  size_t size() const { return _queue.size(); }

  // False if nothing is scheduled; else `delay` is the time until the first is due, or zero.
  bool get_next_delay(TimeVal& delay) const;

  // Fires the first timer that is due; false if none is.
  bool run();

 private:
  friend class TimerNode;

  ClockBase* _clock;
  std::multimap<TimeVal, TimerNode*> _queue;
  void* _unused;  // XORP's list is this much larger
};

#endif  // LIBXORP_TIMER_HH_
