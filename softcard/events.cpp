// SPDX-License-Identifier: Apache-2.0

#include "softcard/events.h"

#include <algorithm>
#include <new>
#include <utility>

#include "softcard/base/address_plan.h"
#include "softcard/base/clock.h"
#include "softcard/base/refusal.h"
#include "softcard/tables/fdb_record.h"

namespace softcard {

namespace {

usp_s record_of(const Usp& usp) { return {usp.unit(), usp.slot(), usp.port()}; }

}  // namespace

// ---- Registrations ------------------------------------------------------------------------------

bool EventQueue::add(lcmgr_report_event_t kind, Form form, void* callback, void* user_data) {
  if (callback == nullptr) return refuse("the callback is null");
  for (const Registration& other : registrations_) {
    if (other.kind == kind && other.form == form && other.callback == callback &&
        other.user_data == user_data) {
      return refuse("the callback is registered already");
    }
  }
  registrations_.push_back({kind, form, callback, user_data, ++registrations_made_});
  ++listeners_[kind];
  return true;
}

bool EventQueue::add(void (*callback)(RxPacket*, void*), void* user_data) {
  return add(LCMGR_REPORT_RX_PACKET, Form::cpp, reinterpret_cast<void*>(callback), user_data);
}
bool EventQueue::add(void (*callback)(ctype_rx_packet_s*, void*), void* user_data) {
  return add(LCMGR_REPORT_RX_PACKET, Form::c, reinterpret_cast<void*>(callback), user_data);
}
bool EventQueue::add(void (*callback)(LinkStatus*, Usp*)) {
  return add(LCMGR_REPORT_LINK_CHANGE, Form::cpp, reinterpret_cast<void*>(callback), nullptr);
}
bool EventQueue::add(void (*callback)(ctype_link_status_s*, usp_s*)) {
  return add(LCMGR_REPORT_LINK_CHANGE, Form::c, reinterpret_cast<void*>(callback), nullptr);
}
bool EventQueue::add(void (*callback)(L2Addr*, int, void*), void* user_data) {
  return add(LCMGR_REPORT_MAC_UPDATE, Form::cpp, reinterpret_cast<void*>(callback), user_data);
}
bool EventQueue::add(void (*callback)(ctype_l2_addr_s*, int, void*), void* user_data) {
  return add(LCMGR_REPORT_MAC_UPDATE, Form::c, reinterpret_cast<void*>(callback), user_data);
}

bool EventQueue::remove(lcmgr_report_event_t kind, void* callback, void* user_data) {
  const auto gone = std::remove_if(
      registrations_.begin(), registrations_.end(), [&](const Registration& registration) {
        return registration.kind == kind && registration.callback == callback &&
               registration.user_data == user_data;
      });
  if (gone == registrations_.end()) return refuse("no such callback is registered");
  listeners_[kind] -= static_cast<unsigned>(registrations_.end() - gone);
  registrations_.erase(gone, registrations_.end());
  return true;
}

// ---- Posting ------------------------------------------------------------------------------------

bool EventQueue::post_packet(FramePtr frame, unsigned reason) {
  if (!wants_packets()) return false;
  const PortIndex port = frame->ingress;
  if (has_room(LCMGR_REPORT_RX_PACKET) &&
      push({LCMGR_REPORT_RX_PACKET, reason, port, std::move(frame), LinkStatus(), {}})) {
    return true;
  }
  ++lost_[LCMGR_REPORT_RX_PACKET];
  return false;
}

void EventQueue::post_link_change(PortIndex port, const LinkStatus& status) {
  if (listeners_[LCMGR_REPORT_LINK_CHANGE] == 0) return;
  std::size_t& last = last_link_[port];
  if ((has_room(LCMGR_REPORT_LINK_CHANGE) || last == 0) &&
      push({LCMGR_REPORT_LINK_CHANGE, 0, port, nullptr, status, {}})) {
    last = queue_.size();
    return;
  }
  if (last != 0) queue_[last - 1].link = status;
  ++lost_[LCMGR_REPORT_LINK_CHANGE];
}

void EventQueue::post_mac(const MacRecord& record) {
  if (!has_room(LCMGR_REPORT_MAC_UPDATE) ||
      !push({LCMGR_REPORT_MAC_UPDATE, 0, kNoPort, nullptr, LinkStatus(), record})) {
    ++lost_[LCMGR_REPORT_MAC_UPDATE];
  }
}

// An event tells of something that has happened already, so running out of memory must not undo it.
bool EventQueue::push(Event event) {
  const lcmgr_report_event_t kind = event.kind;
  try {
    queue_.push_back(std::move(event));
  } catch (const std::bad_alloc&) {
    return false;
  }
  ++waiting_[kind];
  return true;
}

void EventQueue::post_mac_change(const FdbChange& change, std::uint64_t now_ns) {
  if (listeners_[LCMGR_REPORT_MAC_UPDATE] == 0) return;
  MacRecord record{change.vlan, change.mac, change.destination, change.kind, 0};
  if (change.what == FdbChange::What::added) {
    record.what = MAC_UPDATE_LEARNED;
    post_mac(record);
    return;
  }
  const std::uint64_t key = fdb_key(change.vlan, change.mac.to_number());
  if (change.what == FdbChange::What::removed) {
    // A move that was held back is overtaken: the entry goes from where it really was.
    moves_.erase(key);
    record.what = MAC_UPDATE_REMOVED;
    post_mac(record);
    return;
  }
  record.what = MAC_UPDATE_MOVED;
  if (mac_moves_per_second_ == 0 || change.cause != FdbChange::Cause::learned) {
    moves_.erase(key);
    post_mac(record);
    return;
  }
  Moves* of_entry = nullptr;
  try {
    of_entry = &moves_.try_emplace(key, Moves{now_ns, 0, false, record}).first->second;
  } catch (const std::bad_alloc&) {
    ++lost_[LCMGR_REPORT_MAC_UPDATE];
    return;
  }
  Moves& moves = *of_entry;
  if (now_ns - moves.since_ns >= kNanosecondsPerSecond && !moves.held_back) {
    moves.since_ns = now_ns;
    moves.reported = 0;
  }
  earliest_since_ns_ = std::min(earliest_since_ns_, moves.since_ns);
  if (moves.reported < mac_moves_per_second_) {
    ++moves.reported;
    post_mac(record);
    return;
  }
  ++mac_moves_held_back_;
  moves.held_back = true;
  moves.last = record;
}

// Posts the last move of each entry whose second is over, in the order of their keys, and forgets
// the entries that have been quiet.
void EventQueue::release_moves(std::uint64_t now_ns) {
  if (moves_.empty() || now_ns - earliest_since_ns_ < kNanosecondsPerSecond) return;
  earliest_since_ns_ = now_ns;
  std::vector<std::uint64_t> due;
  for (auto at = moves_.begin(); at != moves_.end();) {
    Moves& moves = at->second;
    if (now_ns - moves.since_ns < kNanosecondsPerSecond) {
      earliest_since_ns_ = std::min(earliest_since_ns_, moves.since_ns);
      ++at;
    } else if (!moves.held_back) {
      at = moves_.erase(at);
    } else {
      due.push_back(at->first);
      ++at;
    }
  }
  std::sort(due.begin(), due.end());
  for (const std::uint64_t key : due) {
    Moves& moves = moves_.at(key);
    if (!has_room(LCMGR_REPORT_MAC_UPDATE)) {  // it stays held back, and comes with a later one
      earliest_since_ns_ = std::min(earliest_since_ns_, moves.since_ns);
      continue;
    }
    post_mac(moves.last);
    moves = {now_ns, 1, false, moves.last};
  }
}

// ---- Delivery -----------------------------------------------------------------------------------

std::size_t EventQueue::deliver(std::uint64_t now_ns) {
  if (in_delivery_) return 0;
  struct Guard {
    bool& flag;
    explicit Guard(bool& set) : flag(set) { flag = true; }
    ~Guard() { flag = false; }
  } guard(in_delivery_);

  release_moves(now_ns);
  if (next_ == delivering_.size()) {
    delivering_.clear();
    next_ = 0;
    delivering_.swap(queue_);
    last_link_ = {};
  }
  std::size_t delivered = 0;
  while (next_ < delivering_.size()) {
    Event event = std::move(delivering_[next_++]);
    --waiting_[event.kind];
    ++delivered;
    call_all(event);
  }
  delivering_.clear();
  next_ = 0;
  return delivered;
}

void EventQueue::end() {
  registrations_.clear();
  listeners_ = {};
  queue_.clear();
  delivering_.clear();
  next_ = 0;
  waiting_ = {};
  last_link_ = {};
  moves_.clear();
}

// Calls every function of the event's kind that is registered when its turn comes, but none that
// was registered by one of them for this very event.
void EventQueue::call_all(Event& event) {
  const std::uint64_t last = registrations_made_;
  std::uint64_t done = 0;
  for (;;) {
    const auto next = std::find_if(
        registrations_.begin(), registrations_.end(), [&](const Registration& registration) {
          return registration.kind == event.kind && registration.number > done &&
                 registration.number <= last;
        });
    if (next == registrations_.end()) return;
    done = next->number;
    call(Registration(*next), event);
  }
}

void EventQueue::call(const Registration& registration, Event& event) const {
  const bool c = registration.form == Form::c;
  switch (event.kind) {
    case LCMGR_REPORT_RX_PACKET: {
      const Frame& frame = *event.frame;
      const Usp port =
          event.port == kNoPort ? Usp(0, 0, 0) : usp_of_(Destination::port(event.port));
      const auto length = static_cast<unsigned>(frame.size());
      if (c) {
        ctype_rx_packet_s packet = {length,     event.reason,   record_of(port),
                                    frame.vlan, frame.priority, frame.data()};
        reinterpret_cast<void (*)(ctype_rx_packet_s*, void*)>(registration.callback)(
            &packet, registration.user_data);
      } else {
        RxPacket packet = {length, event.reason, port, frame.vlan, frame.priority, frame.data()};
        reinterpret_cast<void (*)(RxPacket*, void*)>(registration.callback)(&packet,
                                                                            registration.user_data);
      }
      return;
    }
    case LCMGR_REPORT_LINK_CHANGE: {
      Usp port = usp_of_(Destination::port(event.port));
      if (c) {
        ctype_link_status_s status = {event.link.state, event.link.speed, event.link.duplex};
        usp_s record = record_of(port);
        reinterpret_cast<void (*)(ctype_link_status_s*, usp_s*)>(registration.callback)(&status,
                                                                                        &record);
      } else {
        LinkStatus status = event.link;
        reinterpret_cast<void (*)(LinkStatus*, Usp*)>(registration.callback)(&status, &port);
      }
      return;
    }
    case LCMGR_REPORT_MAC_UPDATE: {
      const MacRecord& mac = event.mac;
      const Usp port = usp_of_(mac.destination);
      if (c) {
        auto record = fdb_record<ctype_l2_addr_s>(mac.vlan, mac.mac, record_of(port), mac.kind);
        reinterpret_cast<void (*)(ctype_l2_addr_s*, int, void*)>(registration.callback)(
            &record, mac.what, registration.user_data);
      } else {
        auto record = fdb_record<L2Addr>(mac.vlan, mac.mac, port, mac.kind);
        reinterpret_cast<void (*)(L2Addr*, int, void*)>(registration.callback)(
            &record, mac.what, registration.user_data);
      }
      return;
    }
  }
}

}  // namespace softcard
