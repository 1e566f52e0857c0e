// SPDX-License-Identifier: Apache-2.0
//
// Timers and their handles.

#include "libxorp/timer.hh"

#include <algorithm>

namespace {

class OneoffTimerNode final : public TimerNode {
 public:
  OneoffTimerNode(TimerList* list, const OneoffTimerCallback& cb)
      : TimerNode(list, BasicTimerCallback()), cb_(cb) {}
  void expire(XorpTimer& /*self*/) override { cb_->dispatch(); }

 private:
  OneoffTimerCallback cb_;
};

class PeriodicTimerNode final : public TimerNode {
 public:
  PeriodicTimerNode(TimerList* list, const TimeVal& interval, const PeriodicTimerCallback& cb)
      : TimerNode(list, BasicTimerCallback()), interval_(interval), cb_(cb) {}

  // A callback that has scheduled the timer itself is left with its own time.
  void expire(XorpTimer& self) override {
    if (cb_->dispatch() && !self.scheduled()) self.reschedule_after(interval_);
  }

 private:
  TimeVal interval_;
  PeriodicTimerCallback cb_;
};

}  // namespace

// ---- XorpTimer ----------------------------------------------------------------------------------

XorpTimer::XorpTimer() : _node(nullptr) {}

XorpTimer::XorpTimer(TimerList* list, const BasicTimerCallback& cb)
    : XorpTimer(new TimerNode(list, cb)) {}

XorpTimer::XorpTimer(TimerNode* node) : _node(node) {
  if (_node != nullptr) _node->add_ref();
}

XorpTimer::XorpTimer(const XorpTimer& other) : XorpTimer(other._node) {}

XorpTimer& XorpTimer::operator=(const XorpTimer& other) {
  XorpTimer copy(other);
  std::swap(_node, copy._node);
  return *this;
}

XorpTimer::~XorpTimer() { clear(); }

bool XorpTimer::scheduled() const { return _node != nullptr && _node->scheduled(); }

void XorpTimer::schedule_at(const TimeVal& when, int /*priority*/) { _node->schedule_at(when); }

void XorpTimer::schedule_after(const TimeVal& wait, int /*priority*/) {
  _node->schedule_after(wait);
}

void XorpTimer::schedule_after_ms(int ms, int priority) {
  schedule_after(TimeVal::from_ms(ms), priority);
}

void XorpTimer::schedule_now(int priority) { schedule_after(TimeVal::ZERO(), priority); }

void XorpTimer::reschedule_after(const TimeVal& wait) { _node->reschedule_after(wait); }
void XorpTimer::reschedule_after_ms(int ms) { reschedule_after(TimeVal::from_ms(ms)); }

void XorpTimer::unschedule() {
  if (_node != nullptr) _node->unschedule();
}

void XorpTimer::clear() {
  TimerNode* const node = _node;
  _node = nullptr;
  if (node != nullptr) node->release_ref();
}

const TimeVal& XorpTimer::expiry() const { return _node->expiry(); }

bool XorpTimer::time_remaining(TimeVal& remaining) const {
  remaining = TimeVal::ZERO();
  return _node != nullptr && _node->time_remaining(remaining);
}

// ---- TimerNode ----------------------------------------------------------------------------------

TimerNode::TimerNode(TimerList* list, const BasicTimerCallback& cb)
    : _references(0), _scheduled(false), _list(list), _cb(cb) {}

TimerNode::~TimerNode() { unschedule(); }

void TimerNode::add_ref() { ++_references; }

void TimerNode::release_ref() {
  if (--_references == 0) delete this;
}

void TimerNode::schedule_at(const TimeVal& when) {
  unschedule();
  _expires = when;
  _position = _list->_queue.insert({when, this});
  _scheduled = true;
}

void TimerNode::schedule_after(const TimeVal& wait) {
  TimeVal now;
  _list->current_time(now);
  schedule_at(now + wait);
}

void TimerNode::reschedule_after(const TimeVal& wait) { schedule_at(_expires + wait); }

void TimerNode::unschedule() {
  if (!_scheduled) return;
  _list->_queue.erase(_position);
  _scheduled = false;
}

bool TimerNode::time_remaining(TimeVal& remaining) const {
  if (!_scheduled) return false;
  TimeVal now;
  _list->current_time(now);
  remaining = std::max(_expires - now, TimeVal::ZERO());
  return true;
}

void TimerNode::expire(XorpTimer& self) {
  if (!_cb.is_empty()) _cb->dispatch(self);
}

// ---- TimerList ----------------------------------------------------------------------------------

TimerList::TimerList(ClockBase* clock) : _clock(clock), _unused(nullptr) {}

TimerList::~TimerList() {
  for (auto& entry : _queue) entry.second->_scheduled = false;
}

XorpTimer TimerList::new_timer(const BasicTimerCallback& cb) { return XorpTimer(this, cb); }

XorpTimer TimerList::new_oneoff_at(const TimeVal& when, const OneoffTimerCallback& cb,
                                   int priority) {
  XorpTimer timer(new OneoffTimerNode(this, cb));
  timer.schedule_at(when, priority);
  return timer;
}

XorpTimer TimerList::new_oneoff_after(const TimeVal& wait, const OneoffTimerCallback& cb,
                                      int priority) {
  XorpTimer timer(new OneoffTimerNode(this, cb));
  timer.schedule_after(wait, priority);
  return timer;
}

XorpTimer TimerList::new_periodic(const TimeVal& interval, const PeriodicTimerCallback& cb,
                                  int priority) {
  XorpTimer timer(new PeriodicTimerNode(this, interval, cb));
  timer.schedule_after(interval, priority);
  return timer;
}

bool TimerList::get_next_delay(TimeVal& delay) const {
  return !_queue.empty() && _queue.begin()->second->time_remaining(delay);
}

bool TimerList::run() {
  TimeVal delay;
  if (!get_next_delay(delay) || delay > TimeVal::ZERO()) return false;
  XorpTimer self(_queue.begin()->second);  // the callback may let the last handle go
  TimerNode* const node = _queue.begin()->second;
  node->unschedule();
  node->expire(self);
  return true;
}
