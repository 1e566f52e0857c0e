// SPDX-License-Identifier: Apache-2.0

#include "softcard/l3_table.h"

#include <algorithm>
#include <array>

namespace softcard {

namespace {

// Calls erase(position) for each place for which matches(place) holds; returns how many.
template <class Place, class Matches, class Erase>
std::size_t erase_where(const Pool<Place>& places, Matches&& matches, Erase&& erase) {
  std::size_t erased = 0;
  places.for_each([&](std::uint32_t position) {
    if (!matches(places[position])) return;
    erase(position);
    ++erased;
  });
  return erased;
}

Ipv6Address ipv6_from_halves(std::uint64_t high, std::uint64_t low) {
  Ipv6Address ip;
  for (unsigned i = 0; i < 8; ++i) {
    ip.bytes[i] = static_cast<std::uint8_t>(high >> (56 - 8 * i));
    ip.bytes[i + 8] = static_cast<std::uint8_t>(low >> (56 - 8 * i));
  }
  return ip;
}

// A 64-bit number whose first `length` bits (0 to 64) are ones.
std::uint64_t leading_ones(unsigned length) {
  return length == 0 ? 0 : UINT64_MAX << (64 - length);
}

}  // namespace

// ---- Masks -------------------------------------------------------------------------------------

int mask_length(Ipv4 mask) {
  const Ipv4 zeros = ~mask;
  return (zeros & (zeros + 1)) == 0 ? static_cast<int>(count_bits(mask)) : -1;
}

int mask_length(const Ipv6Address& mask) {
  const AddressBits<Ipv6Address> bits(mask);
  const unsigned length = count_bits(bits.high()) + count_bits(bits.low());
  const bool contiguous = bits.high() == leading_ones(std::min(length, 64u)) &&
                          bits.low() == leading_ones(length > 64 ? length - 64 : 0);
  return contiguous ? static_cast<int>(length) : -1;
}

Ipv4 masked(Ipv4 ip, unsigned length) { return ip & static_cast<Ipv4>(leading_ones(length) >> 32); }

Ipv6Address masked(const Ipv6Address& ip, unsigned length) {
  const AddressBits<Ipv6Address> bits(ip);
  return ipv6_from_halves(bits.high() & leading_ones(std::min(length, 64u)),
                          bits.low() & leading_ones(length > 64 ? length - 64 : 0));
}

// ---- Interfaces --------------------------------------------------------------------------------

namespace {

std::uint32_t pair_hash(std::uint16_t vlan, const MacAddress& mac) {
  return FlatIndex::hash_of(std::uint64_t{vlan} << 48 | mac.to_number());
}

}  // namespace

L3InterfaceTable::L3InterfaceTable(std::size_t capacity)
    : capacity_(capacity), ids_(capacity), per_vlan_(4096) {}

L3Add L3InterfaceTable::create(const MacAddress& mac, std::uint16_t vlan, std::uint32_t& id) {
  if (vlan > 4095) return L3Add::invalid;
  if (const L3Interface* existing = find(vlan, mac)) {
    id = existing->id;
    return L3Add::exists;
  }
  if (size() == capacity_) return L3Add::full;
  id = ids_.lowest_free();
  put(places_.take(), {id, vlan, mac});
  return L3Add::added;
}

L3Add L3InterfaceTable::create_with_id(const MacAddress& mac, std::uint16_t vlan, std::uint32_t id,
                                       bool replace) {
  if (vlan > 4095) return L3Add::invalid;
  const std::uint32_t position = ids_.find(id);
  const bool id_taken = position != FlatIndex::kNone;
  if (id_taken && !replace) return L3Add::exists;
  const L3Interface* owner = find(vlan, mac);
  if (owner != nullptr && owner->id != id) return L3Add::exists;
  if (id_taken) {
    take(position);
    put(position, {id, vlan, mac});
    return L3Add::replaced;
  }
  if (size() == capacity_) return L3Add::full;
  put(places_.take(), {id, vlan, mac});
  return L3Add::added;
}

const L3Interface* L3InterfaceTable::get(std::uint32_t id) const {
  const std::uint32_t position = ids_.find(id);
  return position == FlatIndex::kNone ? nullptr : &places_[position];
}

bool L3InterfaceTable::remove(std::uint16_t vlan, const MacAddress& mac) {
  const L3Interface* found = find(vlan, mac);
  return found != nullptr && remove(found->id);
}

bool L3InterfaceTable::remove(std::uint32_t id) {
  const std::uint32_t position = ids_.find(id);
  if (position == FlatIndex::kNone) return false;
  take(position);
  places_.give(position);
  return true;
}

void L3InterfaceTable::clear() { *this = L3InterfaceTable(capacity_); }

const L3Interface* L3InterfaceTable::find_pair(std::uint16_t vlan, const MacAddress& mac) const {
  const std::uint32_t position = by_pair_.find(pair_hash(vlan, mac), [&](std::uint32_t p) {
    return places_[p].vlan == vlan && places_[p].mac == mac;
  });
  return position == FlatIndex::kNone ? nullptr : &places_[position];
}

// Fills a place and enters it everywhere.
void L3InterfaceTable::put(std::uint32_t position, const L3Interface& interface) {
  places_[position] = interface;
  by_pair_.insert(pair_hash(interface.vlan, interface.mac), position);
  ids_.insert(interface.id, position);
  ++per_vlan_[interface.vlan];
}

// Undoes put(); the place stays the caller's.
void L3InterfaceTable::take(std::uint32_t position) {
  const L3Interface& interface = places_[position];
  by_pair_.erase(pair_hash(interface.vlan, interface.mac), position);
  ids_.erase(interface.id);
  --per_vlan_[interface.vlan];
}

// ---- Hosts -------------------------------------------------------------------------------------

template <class Address>
L3Add L3HostTable<Address>::add(const Address& ip, const NextHop& next_hop) {
  const std::uint32_t first = first_of(ip);
  std::uint32_t last = kNil;
  for (std::uint32_t p = first; p != kNil; last = p, p = places_[p].next) {
    if (places_[p].host.next_hop.destination != next_hop.destination) continue;
    places_[p].host.next_hop = next_hop;
    return L3Add::replaced;
  }
  if (size() == capacity_) return L3Add::full;
  const std::uint32_t position = places_.take();
  places_[position].host = {ip, next_hop};
  if (last == kNil) {
    index_.insert(hash_of(ip), position);
  } else {
    places_[last].next = position;
  }
  return L3Add::added;
}

template <class Address>
const L3Host<Address>* L3HostTable<Address>::find(const Address& ip,
                                                  Destination destination) const {
  for (std::uint32_t p = first_of(ip); p != kNil; p = places_[p].next) {
    if (places_[p].host.next_hop.destination == destination) return &places_[p].host;
  }
  return nullptr;
}

template <class Address>
bool L3HostTable<Address>::remove(const Address& ip, Destination destination) {
  std::uint32_t previous = kNil;
  std::uint32_t position = first_of(ip);
  while (position != kNil && places_[position].host.next_hop.destination != destination) {
    previous = position;
    position = places_[position].next;
  }
  if (position == kNil) return false;
  const std::uint32_t next = places_[position].next;
  if (previous != kNil) {
    places_[previous].next = next;
  } else if (next != kNil) {
    index_.replace(hash_of(ip), position, next);
  } else {
    index_.erase(hash_of(ip), position);
  }
  places_.give(position);
  return true;
}

// The /24 of an IPv4 address is small enough to ask for each address in it.
template <>
std::size_t L3HostTable<Ipv4>::remove_network(const Ipv4& ip) {
  std::size_t removed = 0;
  for (Ipv4 last_byte = 0; last_byte < 256; ++last_byte) {
    const Ipv4 neighbour = (ip & 0xFFFFFF00u) | last_byte;
    for (const Host* host = find(neighbour); host != nullptr; host = find(neighbour)) {
      removed += remove(neighbour, host->next_hop.destination);
    }
  }
  return removed;
}

template <>
std::size_t L3HostTable<Ipv6Address>::remove_network(const Ipv6Address& ip) {
  const std::uint64_t network = AddressBits<Ipv6Address>(ip).high();
  return remove_where([&](const Place& place) {
    return AddressBits<Ipv6Address>(place.host.ip).high() == network;
  });
}

template <class Address>
std::size_t L3HostTable<Address>::remove_by_interface(std::uint32_t interface_id) {
  return remove_where(
      [&](const Place& place) { return place.host.next_hop.interface_id == interface_id; });
}

template <class Address>
template <class Matches>
std::size_t L3HostTable<Address>::remove_where(Matches&& matches) {
  return erase_where(places_, matches, [&](std::uint32_t position) {
    const Host host = places_[position].host;
    remove(host.ip, host.next_hop.destination);
  });
}

template <class Address>
void L3HostTable<Address>::clear() {
  *this = L3HostTable(capacity_);
}

// ---- Routes ------------------------------------------------------------------------------------

template <class Address>
L3Add L3RouteTable<Address>::add(const Address& ip, unsigned length, const NextHop& next_hop,
                                 std::uint32_t metric) {
  if (length > PrefixTrie<Address>::kWidth) return L3Add::invalid;
  const std::uint32_t first = trie_.get(ip, length);
  const std::uint32_t existing = find_by_destination(first, next_hop.destination);
  if (existing != kNil) {
    Route& route = places_[existing].route;
    route.next_hop = next_hop;
    if (route.metric != metric) {
      unlink(existing);
      route.metric = metric;
      link(existing);
    }
    return L3Add::replaced;
  }
  if (size() == capacity_) return L3Add::full;
  const std::uint32_t position = places_.take();
  places_[position].route = {masked(ip, length), length, metric, next_hop};
  link(position);
  return L3Add::added;
}

template <class Address>
void L3RouteTable<Address>::lookup_batch(const Address* ips, std::size_t count,
                                         const Route** routes) const {
  std::array<std::uint32_t, kBatch> positions;
  trie_.lookup_batch(ips, count, positions.data());
  for (std::size_t i = 0; i < count; ++i) {
    routes[i] = positions[i] == kNil ? nullptr : &places_[positions[i]].route;
    if (routes[i] != nullptr) softcard::prefetch(routes[i]);
  }
}

template <class Address>
const L3Route<Address>* L3RouteTable<Address>::find(const Address& ip, unsigned length) const {
  if (length > PrefixTrie<Address>::kWidth) return nullptr;
  const std::uint32_t position = trie_.get(ip, length);
  return position == kNil ? nullptr : &places_[position].route;
}

template <class Address>
const L3Route<Address>* L3RouteTable<Address>::find(const Address& ip, unsigned length,
                                                    Destination destination) const {
  if (length > PrefixTrie<Address>::kWidth) return nullptr;
  const std::uint32_t position = find_by_destination(trie_.get(ip, length), destination);
  return position == kNil ? nullptr : &places_[position].route;
}

template <class Address>
bool L3RouteTable<Address>::remove(const Address& ip, unsigned length, Destination destination) {
  if (length > PrefixTrie<Address>::kWidth) return false;
  const std::uint32_t position = find_by_destination(trie_.get(ip, length), destination);
  if (position == kNil) return false;
  erase(position);
  return true;
}

template <class Address>
std::size_t L3RouteTable<Address>::remove_by_interface(std::uint32_t interface_id) {
  return erase_where(
      places_,
      [&](const Place& place) { return place.route.next_hop.interface_id == interface_id; },
      [&](std::uint32_t position) { erase(position); });
}

template <class Address>
void L3RouteTable<Address>::clear() {
  *this = L3RouteTable(capacity_);
}

// The position of the route by `destination` among the routes of a prefix, the best of which is
// `first` (kNil: there are none).
template <class Address>
std::uint32_t L3RouteTable<Address>::find_by_destination(std::uint32_t first,
                                                         Destination destination) const {
  std::uint32_t position = first;
  while (position != kNil && places_[position].route.next_hop.destination != destination) {
    position = places_[position].next;
  }
  return position;
}

// Enters a route behind all routes of its prefix that are not worse.
template <class Address>
void L3RouteTable<Address>::link(std::uint32_t position) {
  const Route& route = places_[position].route;
  std::uint32_t previous = kNil;
  std::uint32_t next = trie_.get(route.prefix, route.length);
  while (next != kNil && places_[next].route.metric <= route.metric) {
    previous = next;
    next = places_[next].next;
  }
  places_[position].next = next;
  if (previous == kNil) {
    trie_.set(route.prefix, route.length, position);
  } else {
    places_[previous].next = position;
  }
}

// Takes a route out of the routes of its prefix.
template <class Address>
void L3RouteTable<Address>::unlink(std::uint32_t position) {
  const Route& route = places_[position].route;
  const std::uint32_t next = places_[position].next;
  std::uint32_t other = trie_.get(route.prefix, route.length);
  if (other != position) {
    while (places_[other].next != position) other = places_[other].next;
    places_[other].next = next;
  } else if (next != kNil) {
    trie_.set(route.prefix, route.length, next);
  } else {
    trie_.erase(route.prefix, route.length);
  }
}

template <class Address>
void L3RouteTable<Address>::erase(std::uint32_t position) {
  unlink(position);
  places_.give(position);
}

template class L3HostTable<Ipv4>;
template class L3HostTable<Ipv6Address>;
template class L3RouteTable<Ipv4>;
template class L3RouteTable<Ipv6Address>;

}  // namespace softcard
