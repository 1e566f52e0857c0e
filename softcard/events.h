// SPDX-License-Identifier: Apache-2.0
//
// What the card has to tell its control plane: received packets, link changes and MAC updates.
//
// The pipeline and the tables post events while they work; nothing is called then.  deliver(), run
// from the event loop, calls the registered functions: events in the order in which they happened,
// whatever their kind, and each event to its functions in the order of their registration.  So a
// callback finds every table whole, and it may call anything: what it causes is queued for the next
// deliver(), a registration takes effect at once, and a function that it removes is not called any
// more.
//
// An entry of the MAC table that moves to and fro causes a settled number of events a second, 1
// unless set otherwise: moves beyond it are held back, and when the second is over the last one is
// reported, so that the control plane always ends up with the port that is right.
#ifndef SOFTCARD_EVENTS_H_
#define SOFTCARD_EVENTS_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <unordered_map>
#include <vector>

#include "softcard/base/net_types.h"
#include "softcard/frames/frame.h"
#include "softcard/tables/fdb_table.h"
#include "vornlcapi/types.h"

namespace softcard {

class EventQueue {
 public:
  // `usp_of` gives the logical port of a destination: physical ports and LAGs, 0/0/0 for the rest.
  explicit EventQueue(std::function<Usp(Destination)> usp_of) : usp_of_(std::move(usp_of)) {}
  EventQueue(const EventQueue&) = delete;
  EventQueue& operator=(const EventQueue&) = delete;

  // --- Registrations --------------------------------------------------------------------------
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

  // --- Settings -------------------------------------------------------------------------------

  // Most move events that one entry causes in a second; 0 reports every move.
  void set_mac_moves_per_second(unsigned moves) { mac_moves_per_second_ = moves; }
  unsigned mac_moves_per_second() const { return mac_moves_per_second_; }

  // Most received packets that wait; further ones are lost and counted.
  void set_packet_room(std::size_t packets) { packet_room_ = packets; }
  std::size_t packet_room() const { return packet_room_; }

  // --- Posting --------------------------------------------------------------------------------

  // Whether anybody listens for packets: without, there is no need to make a copy for one.
  bool wants_packets() const { return listeners_[LCMGR_REPORT_RX_PACKET] != 0; }
  // Likewise for changes of the MAC table: without, their time need not be asked for.
  bool wants_mac_changes() const { return listeners_[LCMGR_REPORT_MAC_UPDATE] != 0; }

  // A packet for the CPU: ingress, VLAN and priority are the frame's.  `reason` is RX_REASON_....
  // False when it was not queued, for want of room or of a listener.
  bool post_packet(FramePtr frame, unsigned reason);

  void post_link_change(PortIndex port, const LinkStatus& status);

  // A change of the MAC table at `now`, nanoseconds of the card's clock.
  void post_mac_change(const FdbChange& change, std::uint64_t now_ns);

  // --- Delivery -------------------------------------------------------------------------------

  // Delivers the events that are queued, and the moves that were held back for long enough, and
  // returns how many those were.  Called from within a callback it does nothing.  An exception of
  // a callback passes through; the events behind are delivered by the next call.
  std::size_t deliver(std::uint64_t now_ns);

  // Whether deliver() has anything to do now, and when the first move held back is due; UINT64_MAX
  // when none is.
  bool pending() const { return !queue_.empty() || next_ < delivering_.size(); }
  std::uint64_t next_due_ns() const;

  // --- Counts ---------------------------------------------------------------------------------

  std::uint64_t packets_lost() const { return packets_lost_; }
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

  bool add(lcmgr_report_event_t kind, Form form, void* callback, void* user_data);
  void post_mac(const MacRecord& record);
  void release_moves(std::uint64_t now_ns);
  void call_all(Event& event);
  void call(const Registration& registration, Event& event) const;

  std::function<Usp(Destination)> usp_of_;
  std::vector<Registration> registrations_;
  std::uint64_t registrations_made_ = 0;
  unsigned listeners_[3] = {0, 0, 0};  // registrations by kind

  std::vector<Event> queue_;
  std::vector<Event> delivering_;  // those before next_ are done
  std::size_t next_ = 0;
  std::size_t packets_waiting_ = 0;
  bool in_delivery_ = false;

  std::unordered_map<std::uint64_t, Moves> moves_;  // by fdb_key()
  std::uint64_t next_due_ns_ = UINT64_MAX;          // no entry of moves_ is over before
  unsigned mac_moves_per_second_ = 1;
  std::size_t packet_room_ = 4096;
  std::uint64_t packets_lost_ = 0;
  std::uint64_t mac_moves_held_back_ = 0;
};

}  // namespace softcard

#endif  // SOFTCARD_EVENTS_H_
