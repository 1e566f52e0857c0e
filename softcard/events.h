// SPDX-License-Identifier: Apache-2.0
//
// The events that the card reports to its control plane: received packets, link changes and MAC
// updates.
//
// The pipeline and the tables post events while they work; nothing is called then. deliver(), run
// from the event loop, calls the registered functions: events in the order in which they happened,
// whatever their kind, and each event to its functions in the order of their registration. So a
// callback finds every table whole, and it may call anything: what it causes is queued for the next
// deliver(), a registration takes effect at once, and a function that it removes is not called any
// more. It may end the card, too; the host keeps the queue until deliver() is back (Card::end()).
//
// The events that wait while nobody delivers are bounded for each kind. Beyond that, and when
// memory runs out, a packet and a change of the MAC table are lost, and a link change takes the
// place of the port's last one, so that the last state is told; lost() counts either. Posting never
// throws.
//
// An entry of the MAC table that moves to and fro causes a given number of events a second, 1
// unless set otherwise: moves beyond it are held back, and when the second is over the last one is
// reported, so that the control plane always ends up with the port that is right.
#ifndef SOFTCARD_EVENTS_H_
#define SOFTCARD_EVENTS_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <unordered_map>
#include <vector>

#include "softcard/base/clock.h"
#include "softcard/base/hash.h"
#include "softcard/base/limits.h"
#include "softcard/base/net_types.h"
#include "softcard/frames/frame.h"
#include "softcard/pipeline/cpu_queue.h"
#include "softcard/tables/fdb_table.h"
#include "vornlcapi/types.h"

namespace softcard {

class EventQueue final : public CpuQueue {
 public:
  // `usp_of` gives the logical port of a destination: physical ports and LAGs, 0/0/0 for the rest.
  explicit EventQueue(std::function<Usp(Destination)> usp_of, KeyedHash hash = KeyedHash::drawn())
      : usp_of_(std::move(usp_of)), moves_(0, hash) {
    room_[LCMGR_REPORT_RX_PACKET] = 4096;
    room_[LCMGR_REPORT_LINK_CHANGE] = 4096;
    room_[LCMGR_REPORT_MAC_UPDATE] = 262144;
  }
  EventQueue(const EventQueue&) = delete;
  EventQueue& operator=(const EventQueue&) = delete;

  // ---- Registrations ----------------------------------------------------------------------------
  // All are false for a null function and for a pair that is registered already.

  bool add(void (*callback)(RxPacket*, void*), void* user_data);
  bool add(void (*callback)(ctype_rx_packet_s*, void*), void* user_data);
  bool add(void (*callback)(LinkStatus*, Usp*));
  bool add(void (*callback)(ctype_link_status_s*, usp_s*));
  bool add(void (*callback)(L2Addr*, int, void*), void* user_data);
  bool add(void (*callback)(ctype_l2_addr_s*, int, void*), void* user_data);

  // Removes every registration of the kind with this function and user data, in either form.
  // False when there is none.
  bool remove(lcmgr_report_event_t kind, void* callback, void* user_data);

  // ---- Settings ---------------------------------------------------------------------------------

  // Most move events that one entry causes in a second; 0 reports every move.
  void set_mac_moves_per_second(unsigned moves) { mac_moves_per_second_ = moves; }
  unsigned mac_moves_per_second() const { return mac_moves_per_second_; }

  // Most events of a kind that wait.
  void set_room(lcmgr_report_event_t kind, std::size_t events) { room_[kind] = events; }
  std::size_t room(lcmgr_report_event_t kind) const { return room_[kind]; }

  // ---- Posting ----------------------------------------------------------------------------------

  bool wants_packets() const override { return listeners_[LCMGR_REPORT_RX_PACKET] != 0; }
  // Whether anybody listens for changes of the MAC table: without, their time need not be asked
  // for.
  bool wants_mac_changes() const { return listeners_[LCMGR_REPORT_MAC_UPDATE] != 0; }

  bool post_packet(FramePtr frame, unsigned reason) override;

  void post_link_change(PortIndex port, const LinkStatus& status);

  // A change of the MAC table at `now`, nanoseconds of the card's clock.
  void post_mac_change(const FdbChange& change, std::uint64_t now_ns);

  // ---- Delivery ---------------------------------------------------------------------------------

  // Delivers the events that are queued, and the moves that were held back for long enough, and
  // returns how many those were. Called from within a callback it does nothing. An exception of
  // a callback passes through; the events behind are delivered by the next call.
  std::size_t deliver(std::uint64_t now_ns);

  // When a move that is held back is next due, nanoseconds; none is before. UINT64_MAX: never.
  std::uint64_t next_due_ns() const {
    return moves_.empty() ? UINT64_MAX : earliest_since_ns_ + kNanosecondsPerSecond;
  }

  // Whether events are queued.
  bool pending() const { return !queue_.empty() || next_ < delivering_.size(); }

  // Forgets every registration and every event, those that deliver() is about to deliver too.
  void end();

  // ---- Counts -----------------------------------------------------------------------------------

  // Events of a kind that wait, and that were lost for want of room.
  std::size_t waiting(lcmgr_report_event_t kind) const { return waiting_[kind]; }
  std::uint64_t lost(lcmgr_report_event_t kind) const { return lost_[kind]; }
  std::uint64_t mac_moves_held_back() const { return mac_moves_held_back_; }

 private:
  enum class Form : std::uint8_t { cpp, c };

  struct Registration {
    lcmgr_report_event_t kind;
    Form form;
    void* callback;
    void* user_data;
    std::uint64_t number;  // counts all registrations; tells one from a later one of the same pair
  };

  struct MacRecord {
    std::uint16_t vlan;
    MacAddress mac;
    Destination destination;
    FdbKind kind;
    int what;  // MAC_UPDATE_...
  };

  // One event; which members count depends on the kind.
  struct Event {
    lcmgr_report_event_t kind;
    unsigned reason;
    PortIndex port;
    FramePtr frame;
    LinkStatus link;
    MacRecord mac;
  };

  // The moves of one entry in the second that began at `since_ns`.
  struct Moves {
    std::uint64_t since_ns;
    unsigned reported;
    bool held_back;
    MacRecord last;
  };

  static constexpr unsigned kKinds = LCMGR_REPORT_MAC_UPDATE + 1;

  bool add(lcmgr_report_event_t kind, Form form, void* callback, void* user_data);
  bool has_room(lcmgr_report_event_t kind) const { return waiting_[kind] < room_[kind]; }
  // False when memory runs out.
  bool push(Event event);
  void post_mac(const MacRecord& record);
  void release_moves(std::uint64_t now_ns);
  void call_all(Event& event);
  void call(const Registration& registration, Event& event) const;

  std::function<Usp(Destination)> usp_of_;
  std::vector<Registration> registrations_;
  std::uint64_t registrations_made_ = 0;
  std::array<unsigned, kKinds> listeners_{};  // registrations

  std::vector<Event> queue_;
  std::vector<Event> delivering_;  // those before next_ are done
  std::size_t next_ = 0;
  // By port: where its last change is in queue_, and one more.
  std::array<std::size_t, kMaxPorts> last_link_{};
  bool in_delivery_ = false;

  std::unordered_map<std::uint64_t, Moves, KeyedHash> moves_;  // by fdb_key()
  std::uint64_t earliest_since_ns_ = UINT64_MAX;               // no entry of moves_ began before
  unsigned mac_moves_per_second_ = 1;
  std::uint64_t mac_moves_held_back_ = 0;

  // By kind. The MAC table's room is that of a whole table learned and removed again.
  std::array<std::size_t, kKinds> room_;
  std::array<std::size_t, kKinds> waiting_{};
  std::array<std::uint64_t, kKinds> lost_{};
};

}  // namespace softcard

#endif  // SOFTCARD_EVENTS_H_
