// SPDX-License-Identifier: Apache-2.0
//
// The card: its description, clock, tables, cables, pipeline and events, and the operations that
// concern more than one of them.
//
// A fresh card is like a switch that nobody configured: all ports are on and have a link, VLAN 1
// holds all of them untagged and is their PVID, every spanning-tree state is forwarding. Each port
// is plugged into memory: scripts and tests put frames in there and find those that came out.
//
// Tables change and events are delivered at different times: whatever happens is queued, and the
// registered callbacks are called by deliver_events() alone, when every table is whole. A callback
// may call anything of the card. All calls come on one thread.
//
// A callback may also end the card. Whoever owns it then calls end() and lets it go, and it is
// destroyed when its last call is over: keep_alive() holds it for as long as one runs. For that the
// card needs an owner by std::shared_ptr, who names himself with set_owner(); a card without one
// must not be destroyed by a callback.
#ifndef SOFTCARD_CARD_H_
#define SOFTCARD_CARD_H_

#include <cstdint>
#include <memory>
#include <vector>

#include "softcard/base/address_plan.h"
#include "softcard/base/clock.h"
#include "softcard/cables/cable.h"
#include "softcard/card_description.h"
#include "softcard/events.h"
#include "softcard/frames/frame.h"
#include "softcard/pipeline/pipeline.h"
#include "softcard/tables/tables.h"

namespace softcard {

class Card final : public CableSink, private PortCables {
 public:
  // `clock` is shared with whoever moves it.
  Card(const CardDescription& description, std::shared_ptr<Clock> clock);
  ~Card();
  Card(const Card&) = delete;
  Card& operator=(const Card&) = delete;

  // `owner` is what holds the card, and whatever else must last as long as a call of it.
  void set_owner(std::weak_ptr<const void> owner) { owner_ = std::move(owner); }
  // Holds the card while somebody calls functions that may end it; null without an owner.
  std::shared_ptr<const void> keep_alive() const { return owner_.lock(); }

  // Ends the card: pulls all cables, forgets the events and who listens for them.
  void end();
  bool ended() const { return ended_; }

  const CardDescription& description() const { return description_; }
  const AddressPlan& addresses() const { return addresses_; }
  Clock& clock() const { return *clock_; }

  // Each table takes part in what the card does from the moment it is changed. What concerns
  // several of them is below.
  Tables& tables() { return tables_; }
  const Tables& tables() const { return tables_; }

  EventQueue& events() { return events_; }
  Pipeline& pipeline() { return pipeline_; }

  // ---- VLANs ------------------------------------------------------------------------------------

  // False when it does not exist. Its FDB entries of every kind and its members go with it; PVIDs
  // and rules that name it stay, and their frames are dropped until it exists again.
  bool delete_vlan(unsigned vlan);
  // False, and nothing changed, when the VLAN does not exist or a port is no member. What was
  // learned in the VLAN on these ports goes.
  bool remove_vlan_members(unsigned vlan, const PortSet& ports);

  // ---- LAGs -------------------------------------------------------------------------------------

  // Deletes a LAG: its FDB entries of every kind, and the hosts and routes through it, go with it.
  // False when it does not exist.
  bool delete_lag(unsigned id);
  // LagTable::add_members(). What was learned on a port that joins goes: the LAG learns it anew.
  bool add_lag_members(unsigned id, const std::vector<PortIndex>& ports);
  // LagTable::remove_members(). What was learned on the LAG goes when no member is left.
  bool remove_lag_members(unsigned id, const std::vector<PortIndex>& ports);

  // ---- MAC table --------------------------------------------------------------------------------

  // Makes an address the switch's own in every VLAN of a bitmap as VornSdkBase has it. False, and
  // nothing changed, when the bitmap is empty or names a VLAN that does not exist, and when the
  // table has no room for all.
  bool add_system_mac(const MacAddress& mac, const unsigned char* vlan_bitmap);

  // ---- Layer 3 ----------------------------------------------------------------------------------

  // Whether a host or route leads through the interface; reads all of them.
  bool l3_interface_in_use(std::uint32_t id);
  // Deletes an interface; false when it does not exist or is in use.
  bool delete_l3_interface(std::uint32_t id);
  // Deletes all interfaces; false, and nothing changed, when one is in use.
  bool delete_all_l3_interfaces();

  // ---- Cables -----------------------------------------------------------------------------------

  // Plugs a cable into a port in place of what was there; null leaves the port without any, and
  // so without a link.
  void plug(PortIndex port, std::unique_ptr<Cable> cable);
  // The cable that the port is plugged into; null for none. `port` is a port of the card.
  Cable* cable(PortIndex port) { return cables_[port].get(); }

  // Cuts a port's carrier whatever the cable says, as if somebody pulled it out, or lets it be
  // again.
  void cut_carrier(PortIndex port, bool cut);
  bool carrier_cut(PortIndex port) const { return cut_.contains(port); }

  void frames_arrived(PortIndex port, FramePtr* frames, std::size_t count) override;
  void frames_lost(PortIndex port, std::uint64_t count) override;
  void frames_forgotten(PortIndex port, std::uint64_t count) override;
  void carrier_changed(PortIndex port) override;
  unsigned advertised_ability(PortIndex port) const override;
  FramePool& frame_pool() override { return frame_pool_; }

  // ---- Time and events --------------------------------------------------------------------------

  // Calls the registered callbacks for all that is queued and returns how many events those were.
  std::size_t deliver_events();

  // One round of the card: ages the FDB, takes in what waits in the cables (about `budget` frames
  // of each) and delivers the events. Returns how much was done: 0 when nothing was waiting.
  std::size_t run_once(std::size_t budget = 256);

  // When run_once() next has something to do though nothing came in, nanoseconds of the clock: an
  // address that may be too old, a move that was held back. Nothing is due before. UINT64_MAX:
  // never, as things are.
  std::uint64_t next_due_ns() const;

  // Seconds of the clock when the last round or burst of frames began: good enough for what ages.
  std::uint64_t now_seconds() const { return now_seconds_; }

  // Sets the counters of all ports, and the drops by reason, to 0.
  void clear_counters();

 private:
  void report_link(PortIndex port);
  void tell_far_end(PortIndex port);
  void update_carrier(PortIndex port);
  void flush(Destination destination, FdbKind up_to);

  bool plugged(PortIndex port) const override { return cables_[port] != nullptr; }
  bool takes_offloads(PortIndex port) const override;
  std::size_t transmit(PortIndex port, FramePtr* frames, std::size_t count) override;

  CardDescription description_;
  std::weak_ptr<const void> owner_;
  bool ended_ = false;
  std::shared_ptr<Clock> clock_;
  KeyedHash hash_;
  AddressPlan addresses_;
  Tables tables_;
  std::uint64_t now_seconds_ = 0;
  FramePool frame_pool_;  // outlives everything that holds frames
  EventQueue events_;
  Pipeline pipeline_;
  std::vector<std::unique_ptr<Cable>> cables_;  // by port
  PortSet cut_;
};

}  // namespace softcard

#endif  // SOFTCARD_CARD_H_
