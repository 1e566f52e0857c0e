// SPDX-License-Identifier: Apache-2.0

#include "softcard/card.h"

#include <utility>

#include "softcard/cables/memory_cable.h"

namespace softcard {
namespace {

constexpr unsigned kUnpaired = UINT32_MAX;

L3Capacity l3_capacity(const CardCapacity& capacity) {
  L3Capacity l3;
  l3.interfaces = capacity.l3_interfaces;
  l3.ipv4_hosts = capacity.ipv4_hosts;
  l3.ipv6_hosts = capacity.ipv6_hosts;
  l3.ipv4_routes = capacity.ipv4_routes;
  l3.ipv6_routes = capacity.ipv6_routes;
  return l3;
}

// Removes the hosts that lead to `destination`.
template <class Address>
void remove_hosts(L3HostTable<Address>& hosts, Destination destination) {
  std::vector<Address> found;
  hosts.for_each([&](const L3Host<Address>& host) {
    if (host.next_hop.destination == destination) found.push_back(host.ip);
  });
  for (const Address& ip : found) hosts.remove(ip, destination);
}

// Removes the routes that lead to `destination`.
template <class Address>
void remove_routes(L3RouteTable<Address>& routes, Destination destination) {
  std::vector<std::pair<Address, unsigned>> found;
  routes.for_each([&](const L3Route<Address>& route) {
    if (route.next_hop.destination == destination) found.emplace_back(route.prefix, route.length);
  });
  for (const auto& [prefix, length] : found) routes.remove(prefix, length, destination);
}

}  // namespace

Card::Card(const CardDescription& description, std::shared_ptr<Clock> clock)
    : description_(description),
      clock_(std::move(clock)),
      hash_(description.hash_seed ? KeyedHash(*description.hash_seed) : KeyedHash::drawn()),
      addresses_(static_cast<PortIndex>(description.ports.size())),
      ports_(description.ports),
      vlans_(description.capacity.vlans, ports_.all(), description.mstp_instance),
      port_vlans_(ports_.count(), description.capacity.protocol_vlans),
      vlan_classes_(description.capacity.mac_vlans, description.capacity.subnet_vlans, hash_),
      stp_(ports_.all()),
      lags_(description.capacity.lags),
      fdb_(description.capacity.fdb, hash_),
      traffic_(ports_.all()),
      filters_(description.capacity.arp_filters),
      flows_(description.capacity.flows, hash_),
      l3_(l3_capacity(description.capacity), hash_),
      counters_(ports_.count()),
      lag_number_by_id_(description.capacity.lags),
      events_(
          [this](Destination destination) {
            if (destination.is_port()) return AddressPlan::usp_of(destination.number);
            if (destination.is_lag()) return lag_usp(destination.number);
            return Usp(0, 0, 0);
          },
          hash_),
      pipeline_(*this),
      cables_(ports_.count()) {
  lag_id_by_number_.fill(kUnpaired);
  now_seconds_ = clock_->now_seconds();
  events_.set_mac_moves_per_second(description.mac_moves_per_second);
  for (const PortIndex port : ports_.all()) plug(port, std::make_unique<MemoryCable>());
  ports_.set_observer([this](PortIndex port, bool link_changed, bool offer_changed) {
    if (link_changed) report_link(port);
    if (offer_changed) tell_far_end(port);
  });
  fdb_.set_observer([this](const FdbChange& change) {
    if (events_.wants_mac_changes()) events_.post_mac_change(change, clock_->now_ns());
  });
}

Card::~Card() { end(); }

void Card::end() {
  ended_ = true;
  ports_.set_observer(nullptr);
  fdb_.set_observer(nullptr);
  // A cable that goes may tell the port at its other end.
  for (auto& cable : cables_) cable.reset();
  events_.end();
}

// ---- VLANs --------------------------------------------------------------------------------------

bool Card::delete_vlan(unsigned vlan) {
  if (!vlans_.remove(vlan)) return false;
  const auto number = static_cast<std::uint16_t>(vlan);
  FdbFilter filter;
  filter.vlan = number;
  filter.up_to = FdbKind::system_entry;
  fdb_.flush(filter);
  mac_locks_.set_vlan_limit(vlan, kNoMacLimit);
  return true;
}

bool Card::remove_vlan_members(unsigned vlan, const PortSet& ports) {
  if (!vlans_.remove_members(vlan, ports)) return false;
  for (const PortIndex port : ports) {
    const std::uint16_t lag = lags_.lag_of(port);
    FdbFilter filter;
    filter.vlan = static_cast<std::uint16_t>(vlan);
    filter.destination = Destination::port(port);
    if (lag != LagTable::kNoLag && (lags_[lag].set & vlans_.members(vlan)).empty()) {
      filter.destination = Destination::lag(lag);
    }
    fdb_.flush(filter);
  }
  return true;
}

// ---- LAGs ---------------------------------------------------------------------------------------

bool Card::delete_lag(unsigned id) {
  if (!lags_.remove(id)) return false;
  const Destination lag = Destination::lag(static_cast<std::uint16_t>(id));
  flush(lag, FdbKind::static_entry);
  remove_hosts(l3_.ipv4_hosts, lag);
  remove_hosts(l3_.ipv6_hosts, lag);
  remove_routes(l3_.ipv4_routes, lag);
  remove_routes(l3_.ipv6_routes, lag);
  mac_locks_.set_lag_limit(id, kNoMacLimit);
  return true;
}

bool Card::add_lag_members(unsigned id, const std::vector<PortIndex>& ports) {
  const PortSet before = lags_.exists(id) ? lags_[id].set : PortSet();
  if (!lags_.add_members(id, ports)) return false;
  for (const PortIndex port : lags_[id].set - before) {
    flush(Destination::port(port), FdbKind::learned);
  }
  return true;
}

bool Card::remove_lag_members(unsigned id, const std::vector<PortIndex>& ports) {
  if (!lags_.remove_members(id, ports)) return false;
  if (lags_[id].size == 0) {
    flush(Destination::lag(static_cast<std::uint16_t>(id)), FdbKind::learned);
  }
  return true;
}

Usp Card::lag_usp(unsigned id) const {
  const bool paired = id < lag_number_by_id_.size() && lag_number_by_id_[id] != 0;
  return paired ? AddressPlan::lag_usp(lag_number_by_id_[id]) : Usp(0, 0, 0);
}

bool Card::lag_id(const Usp& lag, unsigned& id) const {
  if (!AddressPlan::is_lag(lag) || lag_id_by_number_[lag.port()] == kUnpaired) return false;
  id = lag_id_by_number_[lag.port()];
  return true;
}

bool Card::pair_lag(const Usp& lag, unsigned id) {
  unsigned present = 0;
  if (!AddressPlan::is_lag(lag) || lag_id(lag, present) || !lags_.exists(id) ||
      lag_number_by_id_[id] != 0) {
    return false;
  }
  lag_id_by_number_[lag.port()] = id;
  lag_number_by_id_[id] = lag.port();
  return true;
}

bool Card::unpair_lag(const Usp& lag, unsigned id) {
  unsigned present = 0;
  if (!lag_id(lag, present) || present != id) return false;
  lag_id_by_number_[lag.port()] = kUnpaired;
  lag_number_by_id_[id] = 0;
  return true;
}

// ---- MAC table ----------------------------------------------------------------------------------

bool Card::add_system_mac(const MacAddress& mac, const unsigned char* vlan_bitmap) {
  std::vector<std::uint16_t> named;
  std::size_t fresh = 0;
  for (unsigned vlan = 0; vlan < kVlanCount; ++vlan) {
    if ((vlan_bitmap[vlan / 8] >> (vlan % 8) & 1) == 0) continue;
    if (!vlans_.known(vlan)) return false;
    named.push_back(static_cast<std::uint16_t>(vlan));
    if (fdb_.find(named.back(), mac) == nullptr) ++fresh;
  }
  if (named.empty() || fresh > fdb_.capacity() - fdb_.size()) return false;
  for (const std::uint16_t vlan : named) fdb_.add_system(vlan, mac, now_seconds_);
  return true;
}

// ---- Layer 3 ------------------------------------------------------------------------------------

bool Card::l3_interface_in_use(std::uint32_t id) {
  bool used = false;
  const auto note = [&](const auto& entry) { used |= entry.next_hop.interface_id == id; };
  l3_.ipv4_hosts.for_each(note);
  l3_.ipv6_hosts.for_each(note);
  l3_.ipv4_routes.for_each(note);
  l3_.ipv6_routes.for_each(note);
  return used;
}

bool Card::delete_l3_interface(std::uint32_t id) {
  return l3_.interfaces.get(id) != nullptr && !l3_interface_in_use(id) && l3_.interfaces.remove(id);
}

bool Card::delete_all_l3_interfaces() {
  // Every host and route leads through an interface that exists.
  if (l3_.ipv4_hosts.size() + l3_.ipv6_hosts.size() + l3_.ipv4_routes.size() +
          l3_.ipv6_routes.size() !=
      0) {
    return false;
  }
  l3_.interfaces.clear();
  return true;
}

// ---- Cables -------------------------------------------------------------------------------------

void Card::plug(PortIndex port, std::unique_ptr<Cable> cable) {
  // The old cable goes first: it may lead to the place of the new one.
  cables_[port].reset();
  cables_[port] = std::move(cable);
  if (cables_[port] != nullptr) cables_[port]->plug(*this, port);
  settle_signal(port);
}

void Card::cut_signal(PortIndex port, bool cut) {
  cut_.assign(port, cut);
  settle_signal(port);
  tell_far_end(port);
}

void Card::frames_arrived(PortIndex port, FramePtr* frames, std::size_t count) {
  now_seconds_ = clock_->now_seconds();
  pipeline_.receive(port, frames, count);
}

void Card::frames_lost(PortIndex port, std::uint64_t count) {
  counters_.add(port, STAT_IN_ERRORS, count);
  pipeline_.add_drops(port, DropReason::cable_lost, count);
}

void Card::frames_forgotten(PortIndex port, std::uint64_t count) {
  pipeline_.add_drops(port, DropReason::cable_forgot, count);
}

void Card::carrier_changed(PortIndex port) { settle_signal(port); }

unsigned Card::offered_ability(PortIndex port) const {
  return cut_.contains(port) ? 0 : ports_.offer(port);
}

void Card::settle_signal(PortIndex port) {
  const Cable* const cable = cables_[port].get();
  bool signal = cable != nullptr && cable->carrier() && !cut_.contains(port);
  PortIndex far_port = 0;
  const CableSink* const far_card = signal ? cable->far_end(far_port) : nullptr;
  if (far_card == nullptr) {
    ports_.set_signal(port, signal, nullptr);
    return;
  }
  const AbilitySet offer = far_card->offered_ability(far_port);
  signal = offer != 0;
  ports_.set_signal(port, signal, &offer);
}

void Card::tell_far_end(PortIndex port) {
  if (cables_[port] != nullptr) cables_[port]->offer_changed();
}

void Card::report_link(PortIndex port) {
  const bool up = ports_.is_up(port);
  const LinkMode mode = ports_.mode(port);
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
  std::size_t done = fdb_.age(now_seconds_);
  for (const auto& cable : cables_) {
    if (cable != nullptr) done += cable->poll(budget);
  }
  return done + deliver_events();
}

void Card::clear_counters() {
  for (const PortIndex port : ports_.all()) counters_.clear(port);
  pipeline_.clear_drops();
}

void Card::flush(Destination destination, FdbKind up_to) {
  FdbFilter filter;
  filter.destination = destination;
  filter.up_to = up_to;
  fdb_.flush(filter);
}

}  // namespace softcard
