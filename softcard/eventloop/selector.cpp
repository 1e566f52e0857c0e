// SPDX-License-Identifier: Apache-2.0
//
// Watching descriptors with poll(2), which unlike select(2) takes any descriptor number.

#include "libxorp/selector.hh"

#include <poll.h>

#include <algorithm>
#include <array>
#include <cstdio>

#include "softcard/eventloop/fatal.h"

namespace {

// A descriptor has one callback for each of these.
enum Group { kRead, kWrite, kException, kGroups };

Group group_of(IoEventType type) {
  switch (type) {
    case IOT_WRITE:
    case IOT_CONNECT:
      return kWrite;
    case IOT_EXCEPTION:
    case IOT_DISCONNECT:
      return kException;
    default:
      return kRead;
  }
}

// Errors and hang-ups wake reader and writer: their next system call learns what happened.
constexpr std::array<short, kGroups> kAsked = {POLLIN, POLLOUT, POLLPRI};
constexpr std::array<short, kGroups> kAnswers = {POLLIN | POLLHUP | POLLERR,
                                                 POLLOUT | POLLHUP | POLLERR, POLLPRI};

}  // namespace

class SelectorList::State {
 public:
  bool add(int fd, IoEventType type, const IoEventCb& cb, int priority) {
    softcard::require(type != IOT_ANY, "a callback needs one kind of event");
    Watch& watch = watches_[fd][group_of(type)];
    if (!watch.cb.is_empty()) return false;
    watch = Watch{cb, type, priority};
    return true;
  }

  void remove(int fd, IoEventType type) {
    const auto found = watches_.find(fd);
    if (found == watches_.end()) return;
    Watches& watches = found->second;
    if (type == IOT_ANY) {
      // Dropping a callback may bring us back here, so the entry goes first.
      const Watches dropped = watches;
      watches_.erase(found);
      return;
    }
    Watch& watch = watches[group_of(type)];
    const Watch dropped = watch;
    watch = Watch();
    if (std::all_of(watches.begin(), watches.end(),
                    [](const Watch& w) { return w.cb.is_empty(); })) {
      watches_.erase(found);
    }
  }

  size_t count() const { return watches_.size(); }

  bool serve_ready() {
    while (!ready_.empty()) {
      const auto next =
          std::min_element(ready_.begin(), ready_.end(),
                           [](const Ready& a, const Ready& b) { return a.priority < b.priority; });
      const Ready ready = *next;
      ready_.erase(next);
      const auto found = watches_.find(ready.fd);
      if (found == watches_.end()) continue;
      const Watch watch = found->second[ready.group];  // a copy: the callback may remove it
      if (watch.cb.is_empty()) continue;
      last_served_ = ready.fd;
      watch.cb->dispatch(XorpFd(ready.fd), watch.type);
      return true;
    }
    return false;
  }

  void wait(int timeout_ms) {
    polled_.clear();
    for (const auto& entry : watches_) {
      short events = 0;
      for (size_t group = 0; group < kGroups; ++group) {
        if (!entry.second[group].cb.is_empty()) events = static_cast<short>(events | kAsked[group]);
      }
      polled_.push_back(pollfd{entry.first, events, 0});
    }
    if (poll(polled_.data(), polled_.size(), timeout_ms) <= 0) return;
    // Equals are served in the order of this answer, so it starts behind the one served last.
    std::rotate(polled_.begin(),
                std::find_if(polled_.begin(), polled_.end(),
                             [this](const pollfd& p) { return p.fd > last_served_; }),
                polled_.end());
    for (const pollfd& answer : polled_) {
      if ((answer.revents & POLLNVAL) != 0) {
        std::fprintf(stderr, "event loop: descriptor %d was closed while it was watched\n",
                     answer.fd);
        remove(answer.fd, IOT_ANY);
        continue;
      }
      const auto found = watches_.find(answer.fd);
      if (answer.revents == 0 || found == watches_.end()) continue;
      const size_t before = ready_.size();
      for (size_t group = 0; group < kGroups; ++group) {
        const Watch& watch = found->second[group];
        if (!watch.cb.is_empty() && (answer.revents & kAnswers[group]) != 0) {
          ready_.push_back(Ready{answer.fd, static_cast<Group>(group), watch.priority});
        }
      }
      // poll(2) tells of errors and hang-ups unasked and goes on doing so until somebody looks.
      if (ready_.size() == before) {
        ready_.push_back(Ready{answer.fd, kException, found->second[kException].priority});
      }
    }
  }

 private:
  struct Watch {
    IoEventCb cb;
    IoEventType type = IOT_ANY;
    int priority = 0;
  };
  typedef std::array<Watch, kGroups> Watches;
  struct Ready {
    int fd;
    Group group;
    int priority;
  };

  std::map<int, Watches> watches_;  // each with at least one callback
  std::vector<Ready> ready_;        // what is left of the kernel's last answer
  std::vector<pollfd> polled_;
  int last_served_ = -1;
};

SelectorList::SelectorList() : _state(new State), _unused_words(), _unused_bytes() {}

SelectorList::~SelectorList() { delete _state; }

bool SelectorList::add_ioevent_cb(XorpFd fd, IoEventType type, const IoEventCb& cb, int priority) {
  return _state->add(fd, type, cb, priority);
}

void SelectorList::remove_ioevent_cb(XorpFd fd, IoEventType type) { _state->remove(fd, type); }

size_t SelectorList::descriptor_count() const { return _state->count(); }

bool SelectorList::serve_ready() { return _state->serve_ready(); }

void SelectorList::wait(int timeout_ms) { _state->wait(timeout_ms); }
