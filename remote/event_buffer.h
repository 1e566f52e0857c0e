// SPDX-License-Identifier: Apache-2.0
//
// Events that wait for somebody who may never come: as messages, bounded by their number and by
// their bytes. Beyond that packets and MAC updates are lost; a link change takes the place of the
// port's last one that waits, so that the last state is told. What was lost is counted by kind.
#ifndef REMOTE_EVENT_BUFFER_H_
#define REMOTE_EVENT_BUFFER_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <tuple>

#include "remote/protocol.h"
#include "vornlcapi/types.h"

namespace vorn::remote {

inline constexpr unsigned kEventKinds = LCMGR_REPORT_MAC_UPDATE + 1;

// One event: its kind, its whole message, and the port of a link change.
struct Event {
  lcmgr_report_event_t kind;
  Usp port;
  std::shared_ptr<const Bytes> message;
};

class EventBuffer {
 public:
  struct Room {
    std::size_t events = 65536;
    std::size_t bytes = std::size_t{16} << 20;
  };
  EventBuffer() = default;
  explicit EventBuffer(const Room& room) : room_(room) {}

  void push(Event event);
  bool empty() const { return events_.empty(); }
  std::size_t size() const { return events_.size(); }
  const Event& front() const { return events_.front(); }
  void pop();
  void clear();

  std::uint64_t lost(lcmgr_report_event_t kind) const { return lost_[kind]; }
  // Counts events that somebody else lost.
  void set_lost(lcmgr_report_event_t kind, std::uint64_t count) { lost_[kind] = count; }

 private:
  using PortKey = std::tuple<unsigned, unsigned, unsigned>;
  static PortKey key_of(const Usp& port) { return {port.unit(), port.slot(), port.port()}; }

  Room room_;
  std::deque<Event> events_;
  std::size_t bytes_ = 0;
  std::uint64_t popped_ = 0;
  std::map<PortKey, std::uint64_t> last_link_;  // by port: how many events came before it
  std::array<std::uint64_t, kEventKinds> lost_{};
};

}  // namespace vorn::remote

#endif  // REMOTE_EVENT_BUFFER_H_
