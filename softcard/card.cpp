// SPDX-License-Identifier: Apache-2.0

#include "softcard/card.h"

#include <algorithm>
#include <utility>

#include "softcard/base/refusal.h"
#include "softcard/cables/memory_cable.h"

namespace softcard {
Card::Card(const CardDescription& description, std::shared_ptr<Clock> clock)
    : description_(description),
      clock_(std::move(clock)),
      hash_(description.hash_seed ? KeyedHash(*description.hash_seed) : KeyedHash::drawn()),
      addresses_(static_cast<PortIndex>(description.ports.size())),
      tables_(description.ports, description.capacity, description.mstp_instance, hash_),
      events_([this](Destination destination) { return tables_.usp_of(destination); }, hash_),
      pipeline_(tables_, *clock_, frame_pool_, events_, *this),
      cables_(tables_.ports.count()) {
  now_seconds_ = clock_->now_seconds();
  events_.set_mac_moves_per_second(description.mac_moves_per_second);
  for (const PortIndex port : tables_.ports.all()) plug(port, std::make_unique<MemoryCable>());
  tables_.ports.set_observer([this](PortIndex port, bool link_changed, bool advertisement_changed) {
    if (link_changed) report_link(port);
    if (advertisement_changed) tell_far_end(port);
  });
  tables_.fdb.set_observer([this](const FdbChange& change) {
    if (events_.wants_mac_changes()) events_.post_mac_change(change, clock_->now_ns());
  });
}

Card::~Card() { end(); }

void Card::end() {
  ended_ = true;
  tables_.ports.set_observer(nullptr);
  tables_.fdb.set_observer(nullptr);
  // A cable that goes may tell the port at its other end.
  for (auto& cable : cables_) cable.reset();
  events_.end();
}

// ---- VLANs --------------------------------------------------------------------------------------

bool Card::delete_vlan(unsigned vlan) {
  if (!tables_.vlans.remove(vlan)) return false;
  const auto number = static_cast<std::uint16_t>(vlan);
  FdbFilter filter;
  filter.vlan = number;
  filter.up_to = FdbKind::system_entry;
  tables_.fdb.flush(filter);
  tables_.mac_locks.set_vlan_limit(vlan, kNoMacLimit);
  return true;
}

bool Card::remove_vlan_members(unsigned vlan, const PortSet& ports) {
  if (!tables_.vlans.remove_members(vlan, ports)) return false;
  for (const PortIndex port : ports) {
    const std::uint16_t lag = tables_.lags.lag_of(port);
    FdbFilter filter;
    filter.vlan = static_cast<std::uint16_t>(vlan);
    filter.destination = Destination::port(port);
    if (lag != LagTable::kNoLag && (tables_.lags[lag].set & tables_.vlans.members(vlan)).empty()) {
      filter.destination = Destination::lag(lag);
    }
    tables_.fdb.flush(filter);
  }
  return true;
}

// ---- LAGs ---------------------------------------------------------------------------------------

bool Card::delete_lag(unsigned id) {
  if (!tables_.lags.remove(id)) return false;
  const Destination lag = Destination::lag(static_cast<std::uint16_t>(id));
  flush(lag, FdbKind::static_entry);
  tables_.l3.ipv4_hosts.remove_by_destination(lag);
  tables_.l3.ipv6_hosts.remove_by_destination(lag);
  tables_.l3.ipv4_routes.remove_by_destination(lag);
  tables_.l3.ipv6_routes.remove_by_destination(lag);
  tables_.mac_locks.set_lag_limit(id, kNoMacLimit);
  return true;
}

bool Card::add_lag_members(unsigned id, const std::vector<PortIndex>& ports) {
  const PortSet before = tables_.lags.exists(id) ? tables_.lags[id].set : PortSet();
  if (!tables_.lags.add_members(id, ports)) return false;
  for (const PortIndex port : tables_.lags[id].set - before) {
    flush(Destination::port(port), FdbKind::learned);
  }
  return true;
}

bool Card::remove_lag_members(unsigned id, const std::vector<PortIndex>& ports) {
  if (!tables_.lags.remove_members(id, ports)) return false;
  if (tables_.lags[id].size == 0) {
    flush(Destination::lag(static_cast<std::uint16_t>(id)), FdbKind::learned);
  }
  return true;
}

// ---- MAC table ----------------------------------------------------------------------------------

bool Card::add_system_mac(const MacAddress& mac, const unsigned char* vlan_bitmap) {
  std::vector<std::uint16_t> named;
  std::size_t fresh = 0;
  for (unsigned vlan = 0; vlan < kVlanCount; ++vlan) {
    if ((vlan_bitmap[vlan / 8] >> (vlan % 8) & 1) == 0) continue;
    if (!tables_.vlans.require(vlan)) return false;
    named.push_back(static_cast<std::uint16_t>(vlan));
    if (tables_.fdb.find(named.back(), mac) == nullptr) ++fresh;
  }
  if (named.empty()) return refuse("the bitmap names no VLAN");
  const std::size_t capacity = tables_.fdb.capacity();
  if (const std::size_t room = capacity - tables_.fdb.size(); fresh > room) {
    return room == 0 ? refuse_full("fdb", capacity)
                     : refuse("fdb: room for ", room, " of ", fresh, " more entries");
  }
  for (const std::uint16_t vlan : named) tables_.fdb.add_system(vlan, mac, now_seconds_);
  return true;
}

// ---- Layer 3 ------------------------------------------------------------------------------------

bool Card::l3_interface_in_use(std::uint32_t id) {
  bool used = false;
  const auto note = [&](const auto& entry) { used |= entry.next_hop.interface_id == id; };
  tables_.l3.ipv4_hosts.for_each(note);
  tables_.l3.ipv6_hosts.for_each(note);
  tables_.l3.ipv4_routes.for_each(note);
  tables_.l3.ipv6_routes.for_each(note);
  return used;
}

bool Card::delete_l3_interface(std::uint32_t id) {
  if (tables_.l3.interfaces.get(id) == nullptr) {
    return refuse("L3 interface ", id, " does not exist");
  }
  if (l3_interface_in_use(id)) {
    return refuse("L3 interface ", id, " is in use by hosts or routes");
  }
  return tables_.l3.interfaces.remove(id);
}

bool Card::delete_all_l3_interfaces() {
  // Every host and route leads through an interface that exists.
  const std::size_t users = tables_.l3.ipv4_hosts.size() + tables_.l3.ipv6_hosts.size() +
                            tables_.l3.ipv4_routes.size() + tables_.l3.ipv6_routes.size();
  if (users != 0) return refuse("L3 interfaces are in use by ", users, " hosts and routes");
  tables_.l3.interfaces.clear();
  return true;
}

// ---- Cables -------------------------------------------------------------------------------------

void Card::plug(PortIndex port, std::unique_ptr<Cable> cable) {
  // The old cable goes first: it may lead to the place of the new one.
  cables_[port].reset();
  cables_[port] = std::move(cable);
  if (cables_[port] != nullptr) cables_[port]->plug(*this, port);
  update_carrier(port);
}

void Card::cut_carrier(PortIndex port, bool cut) {
  cut_.assign(port, cut);
  update_carrier(port);
  tell_far_end(port);
}

void Card::frames_arrived(PortIndex port, FramePtr* frames, std::size_t count) {
  now_seconds_ = clock_->now_seconds();
  pipeline_.receive(port, frames, count);
}

void Card::frames_lost(PortIndex port, std::uint64_t count) {
  tables_.counters.add(port, STAT_IN_ERRORS, count);
  tables_.drops.add(port, DropReason::cable_lost, count);
}

void Card::frames_forgotten(PortIndex port, std::uint64_t count) {
  tables_.drops.add(port, DropReason::cable_forgot, count);
}

void Card::carrier_changed(PortIndex port) { update_carrier(port); }

unsigned Card::advertised_ability(PortIndex port) const {
  return cut_.contains(port) ? 0 : tables_.ports.offer(port);
}

bool Card::takes_offloads(PortIndex port) const {
  return cables_[port] != nullptr && cables_[port]->takes_offloads();
}

std::size_t Card::transmit(PortIndex port, FramePtr* frames, std::size_t count) {
  if (cables_[port] != nullptr) return cables_[port]->transmit(frames, count);
  for (std::size_t i = 0; i < count; ++i) frames[i].reset();
  return 0;
}

void Card::update_carrier(PortIndex port) {
  const Cable* const cable = cables_[port].get();
  bool carrier = cable != nullptr && cable->carrier() && !cut_.contains(port);
  PortIndex far_port = 0;
  const CableSink* const far_card = carrier ? cable->far_end(far_port) : nullptr;
  if (far_card == nullptr) {
    tables_.ports.set_carrier(port, carrier, nullptr);
    return;
  }
  const AbilitySet offer = far_card->advertised_ability(far_port);
  carrier = offer != 0;
  tables_.ports.set_carrier(port, carrier, &offer);
}

void Card::tell_far_end(PortIndex port) {
  if (cables_[port] != nullptr) cables_[port]->advertisement_changed();
}

void Card::report_link(PortIndex port) {
  const bool up = tables_.ports.is_up(port);
  const LinkMode mode = tables_.ports.mode(port);
  LinkStatus status;
  status.state = up ? PHY_STATE_UP : PHY_STATE_DOWN;
  status.speed = up ? mode.speed : SPEED_TYPE_UNKNOWN;
  status.duplex = mode.duplex;
  events_.post_link_change(port, status);
  if (!up) flush(Destination::port(port), FdbKind::learned);
}

// ---- Time and events ----------------------------------------------------------------------------

std::size_t Card::deliver_events() {
  const std::shared_ptr<const void> alive = keep_alive();
  return events_.deliver(clock_->now_ns());
}

std::size_t Card::run_once(std::size_t budget) {
  now_seconds_ = clock_->now_seconds();
  std::size_t done = tables_.fdb.age(now_seconds_);
  for (const auto& cable : cables_) {
    if (cable != nullptr) done += cable->poll(budget);
  }
  return done + deliver_events();
}

std::uint64_t Card::next_due_ns() const {
  const std::uint64_t seconds = tables_.fdb.next_due_seconds();
  const std::uint64_t ageing =
      seconds > UINT64_MAX / kNanosecondsPerSecond ? UINT64_MAX : seconds * kNanosecondsPerSecond;
  return std::min(ageing, events_.next_due_ns());
}

void Card::clear_counters() {
  for (const PortIndex port : tables_.ports.all()) tables_.counters.clear(port);
  tables_.drops.clear();
}

void Card::flush(Destination destination, FdbKind up_to) {
  FdbFilter filter;
  filter.destination = destination;
  filter.up_to = up_to;
  tables_.fdb.flush(filter);
}

}  // namespace softcard
