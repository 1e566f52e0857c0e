// SPDX-License-Identifier: Apache-2.0
//
// One pass of the event loop: a timer, a task, a wait, a descriptor.

#include "libxorp/eventloop.hh"

#include <algorithm>
#include <climits>
#include <csignal>
#include <cstdint>

#include "softcard/eventloop/fatal.h"
#include "softcard/eventloop/loop_time.h"
#include "softcard/eventloop/loop_watch.h"

int xorp_do_run = 1;
int eventloop_instance_count = 0;

namespace {

const int kForever = -1;
const int kLongestWaitOnTheWayOutMs = 1000;

EventLoop* the_loop = nullptr;
int watched_fd = -1;
void (*watched_ready)() = nullptr;

void watched_is_ready(XorpFd, IoEventType) { watched_ready(); }

void watch_in(EventLoop& loop) {
  if (watched_fd >= 0) loop.add_ioevent_cb(watched_fd, IOT_READ, callback(&watched_is_ready));
}

std::uint64_t to_ns(const TimeVal& time) {
  return static_cast<std::uint64_t>(time.sec()) * 1000000000 +
         static_cast<std::uint64_t>(time.usec()) * 1000;
}

// In milliseconds for poll(2), rounded up so that the timer is due when the wait is over.
int wait_ms(const TimeVal& wait) {
  const int64_t ms = wait.to_ms() + (wait.usec() % TimeVal::ONE_THOUSAND != 0 ? 1 : 0);
  return static_cast<int>(std::min<int64_t>(ms, INT_MAX));
}

}  // namespace

// Lets the host look into a loop and run it without waiting.
class EventLoopDriver {
 public:
  static bool next_timer(EventLoop& loop, std::uint64_t& at_ns) {
    TimeVal delay;
    if (!loop._timer_list.get_next_delay(delay)) return false;
    TimeVal now;
    loop.current_time(now);
    at_ns = to_ns(now + delay);
    return true;
  }

  static bool run_once(EventLoop& loop) {
    loop._clock->advance_time();
    bool done = loop._timer_list.run();
    if (!loop._task_list.empty()) {
      loop._task_list.run();
      done = true;
    }
    if (loop._selector_list.serve_ready()) return true;
    loop._selector_list.wait(0);
    return loop._selector_list.serve_ready() || done;
  }
};

namespace softcard {

bool next_timer(std::uint64_t& at_ns) {
  return the_loop != nullptr && EventLoopDriver::next_timer(*the_loop, at_ns);
}

void watch_in_loop(int fd, void (*ready)()) {
  if (the_loop != nullptr && watched_fd >= 0) the_loop->remove_ioevent_cb(watched_fd);
  watched_fd = fd;
  watched_ready = ready;
  if (the_loop != nullptr) watch_in(*the_loop);
}

bool run_loop_once() { return the_loop != nullptr && EventLoopDriver::run_once(*the_loop); }

}  // namespace softcard

EventLoop::EventLoop()
    : _clock(new SystemClock),
      _timer_list(_clock),
      _aggressiveness(0),
      _last_ev_run(0),
      _last_warned(0),
      _is_debug(false),
      _last_ev_type() {
  softcard::require(eventloop_instance_count == 0, "a process has one loop at a time");
  ++eventloop_instance_count;
  the_loop = this;
  watch_in(*this);
  std::signal(SIGPIPE, SIG_IGN);
}

EventLoop::~EventLoop() {
  --eventloop_instance_count;
  the_loop = nullptr;
  delete _clock;
}

void EventLoop::run() {
  _clock->advance_time();
  const bool fired = _timer_list.run();
  _task_list.run();

  int timeout_ms = kForever;
  TimeVal delay;
  if (fired || !_task_list.empty()) {
    timeout_ms = 0;
  } else if (_timer_list.get_next_delay(delay)) {
    timeout_ms = wait_ms(delay);
  }
  if (xorp_do_run == 0 && (timeout_ms == kForever || timeout_ms > kLongestWaitOnTheWayOutMs)) {
    timeout_ms = kLongestWaitOnTheWayOutMs;
  }
  if (_selector_list.serve_ready()) return;
  if (softcard::loop_time() != nullptr && timeout_ms > 0 && !_timer_list.empty()) {
    _selector_list.wait(0);
    if (_selector_list.serve_ready()) return;
    softcard::loop_time()->advance(to_ns(delay));
    _clock->advance_time();
    return;
  }
  _selector_list.wait(timeout_ms);
  // A callback counts its timers from the end of the wait.
  _clock->advance_time();
  _selector_list.serve_ready();
}

bool EventLoop::add_ioevent_cb(XorpFd fd, IoEventType type, const IoEventCb& cb, int priority) {
  return _selector_list.add_ioevent_cb(fd, type, cb, priority);
}

bool EventLoop::remove_ioevent_cb(XorpFd fd, IoEventType type) {
  _selector_list.remove_ioevent_cb(fd, type);
  return true;
}

size_t EventLoop::descriptor_count() const { return _selector_list.descriptor_count(); }

void EventLoop::remove_timer(XorpTimer& timer) {
  timer.unschedule();
  timer.clear();
}

XorpTask EventLoop::new_oneoff_task(const OneoffTaskCallback& cb, int priority, int weight) {
  return _task_list.new_oneoff_task(cb, priority, weight);
}

XorpTask EventLoop::new_task(const RepeatedTaskCallback& cb, int priority, int weight) {
  return _task_list.new_task(cb, priority, weight);
}
