// SPDX-License-Identifier: Apache-2.0
//
// The descriptors that one loop watches. Internal to the loop.

#ifndef LIBXORP_SELECTOR_HH_
#define LIBXORP_SELECTOR_HH_

#include "libxorp/ioevents.hh"
#include "libxorp/task.hh"

class SelectorList : private NONCOPYABLE {
 public:
  SelectorList();
  ~SelectorList();

  // See EventLoop.
  bool add_ioevent_cb(XorpFd fd, IoEventType type, const IoEventCb& cb, int priority);
  void remove_ioevent_cb(XorpFd fd, IoEventType type);
  size_t descriptor_count() const;

  // Serves one descriptor of the kernel's last answer; false if it is used up.
  bool serve_ready();

  // Asks the kernel what is ready, and waits for that up to `timeout_ms` (-1: for ever).
  void wait(int timeout_ms);

 protected:
  class State;
  State* _state;

  // XORP's list is this much larger, and the objects that hold one by value with it.
  void* _unused_words[9];
  unsigned char _unused_bytes[784];
};

#endif  // LIBXORP_SELECTOR_HH_
