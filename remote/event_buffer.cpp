// SPDX-License-Identifier: Apache-2.0

#include "remote/event_buffer.h"

#include <utility>

namespace vorn::remote {

void EventBuffer::push(Event event) {
  const bool is_link = event.kind == LCMGR_REPORT_LINK_CHANGE;
  if (events_.size() >= room_.events || bytes_ + event.message->size() > room_.bytes) {
    const auto last = last_link_.find(key_of(event.port));
    if (!is_link || last != last_link_.end()) {
      ++lost_[event.kind];
      // Both messages have the same size.
      if (is_link) events_[static_cast<std::size_t>(last->second - popped_)] = std::move(event);
      return;
    }
  }
  if (is_link) last_link_[key_of(event.port)] = popped_ + events_.size();
  bytes_ += event.message->size();
  events_.push_back(std::move(event));
}

void EventBuffer::pop() {
  const Event& event = events_.front();
  bytes_ -= event.message->size();
  if (event.kind == LCMGR_REPORT_LINK_CHANGE) {
    const auto last = last_link_.find(key_of(event.port));
    if (last != last_link_.end() && last->second == popped_) last_link_.erase(last);
  }
  events_.pop_front();
  ++popped_;
}

void EventBuffer::clear() {
  popped_ += events_.size();
  events_.clear();
  last_link_.clear();
  bytes_ = 0;
}

}  // namespace vorn::remote
