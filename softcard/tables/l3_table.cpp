// SPDX-License-Identifier: Apache-2.0

#include "softcard/tables/l3_table.h"

#include <algorithm>
#include <array>
#include <utility>

#include "softcard/base/limits.h"
#include "softcard/base/refusal.h"
#include "softcard/base/text.h"
#include "softcard/base/undo.h"

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

// ---- Masks --------------------------------------------------------------------------------------

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

bool mask_length(Ipv4 mask, unsigned& length) {
  const int bits = mask_length(mask);
  if (bits < 0) return refuse("mask ", ipv4_text(mask), " has holes");
  length = static_cast<unsigned>(bits);
  return true;
}

bool mask_length(const Ipv6Address& mask, unsigned& length) {
  const int bits = mask_length(mask);
  if (bits < 0) return refuse("mask ", mask, " has holes");
  length = static_cast<unsigned>(bits);
  return true;
}

Ipv4 masked(Ipv4 ip, unsigned length) { return ip & static_cast<Ipv4>(leading_ones(length) >> 32); }

Ipv6Address masked(const Ipv6Address& ip, unsigned length) {
  const AddressBits<Ipv6Address> bits(ip);
  return ipv6_from_halves(bits.high() & leading_ones(std::min(length, 64u)),
                          bits.low() & leading_ones(length > 64 ? length - 64 : 0));
}

// ---- Interfaces ---------------------------------------------------------------------------------

L3InterfaceTable::L3InterfaceTable(std::size_t capacity, KeyedHash hash)
    : hash_(hash), capacity_(capacity), ids_(capacity), per_vlan_(kVlanCount) {}

L3Add L3InterfaceTable::create(const MacAddress& mac, std::uint16_t vlan, std::uint32_t& id) {
  if (vlan >= kVlanCount) return L3Add::invalid;
  if (const L3Interface* existing = find(vlan, mac)) {
    id = existing->id;
    return L3Add::exists;
  }
  if (size() == capacity_) return L3Add::full;
  const std::uint32_t chosen = ids_.lowest_free();
  add({chosen, vlan, mac});
  id = chosen;
  return L3Add::added;
}

L3Add L3InterfaceTable::create_with_id(const MacAddress& mac, std::uint16_t vlan, std::uint32_t id,
                                       bool replace) {
  if (vlan >= kVlanCount) return L3Add::invalid;
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
  add({id, vlan, mac});
  return L3Add::added;
}

void L3InterfaceTable::add(const L3Interface& interface) {
  const std::uint32_t position = places_.take();
  Undo give_back([&] { places_.give(position); });
  put(position, interface);
  give_back.dismiss();
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

void L3InterfaceTable::clear() { *this = L3InterfaceTable(capacity_, hash_); }

std::uint32_t L3InterfaceTable::pair_hash(std::uint16_t vlan, const MacAddress& mac) const {
  return hash_(std::uint64_t{vlan} << 48 | mac.to_number());
}

const L3Interface* L3InterfaceTable::find_pair(std::uint16_t vlan, const MacAddress& mac) const {
  const std::uint32_t position = by_pair_.find(pair_hash(vlan, mac), [&](std::uint32_t p) {
    return places_[p].vlan == vlan && places_[p].mac == mac;
  });
  return position == FlatIndex::kNone ? nullptr : &places_[position];
}

// Fills a place and enters it everywhere.
void L3InterfaceTable::put(std::uint32_t position, const L3Interface& interface) {
  places_[position] = interface;
  ids_.insert(interface.id, position);
  Undo free_id([&] { ids_.erase(interface.id); });
  by_pair_.insert(pair_hash(interface.vlan, interface.mac), position);
  free_id.dismiss();
  ++per_vlan_[interface.vlan];
  ++per_last_byte_[interface.mac.bytes[5]];
}

// Undoes put(); the place stays the caller's.
void L3InterfaceTable::take(std::uint32_t position) {
  const L3Interface& interface = places_[position];
  by_pair_.erase(pair_hash(interface.vlan, interface.mac), position);
  ids_.erase(interface.id);
  --per_vlan_[interface.vlan];
  --per_last_byte_[interface.mac.bytes[5]];
}

// ---- Hosts --------------------------------------------------------------------------------------

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
  Undo give_back([&] { places_.give(position); });
  places_[position].host = {ip, next_hop};
  if (last == kNil) {
    index_.insert(address_hash(hash_, ip), position);
  } else {
    places_[last].next = position;
  }
  give_back.dismiss();
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
    index_.replace(address_hash(hash_, ip), position, next);
  } else {
    index_.erase(address_hash(hash_, ip), position);
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
std::size_t L3HostTable<Address>::remove_by_destination(Destination destination) {
  return remove_where(
      [&](const Place& place) { return place.host.next_hop.destination == destination; });
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
  *this = L3HostTable(capacity_, hash_);
}

// ---- Next hops ----------------------------------------------------------------------------------

std::uint32_t NextHopTable::hash_of(const NextHop& next_hop) const {
  const auto kind = static_cast<std::uint64_t>(next_hop.destination.kind);
  const std::uint64_t out = kind << 48 | std::uint64_t{next_hop.destination.number} << 32;
  return hash_(hash_.spread(out | next_hop.interface_id) + next_hop.mac.to_number());
}

std::uint32_t NextHopTable::keep(const NextHop& next_hop) {
  const std::uint32_t hash = hash_of(next_hop);
  std::uint32_t id =
      index_.find(hash, [&](std::uint32_t p) { return places_[p].next_hop == next_hop; });
  if (id == FlatIndex::kNone) {
    id = places_.take();
    Undo give_back([&] { places_.give(id); });
    places_[id].next_hop = next_hop;
    index_.insert(hash, id);
    give_back.dismiss();
  }
  ++places_[id].users;
  return id;
}

void NextHopTable::drop(std::uint32_t id) {
  if (--places_[id].users != 0) return;
  index_.erase(hash_of(places_[id].next_hop), id);
  places_.give(id);
}

// ---- Routes -------------------------------------------------------------------------------------

template <class Address>
L3Add L3RouteTable<Address>::add(const Address& ip, unsigned length, const NextHop& next_hop,
                                 std::uint32_t metric) {
  if (length > PrefixTrie<Address>::kWidth) return L3Add::invalid;
  prefetch(ip);  // for the trie, while the index is asked
  const Address prefix = masked(ip, length);
  const std::uint32_t first = first_of(prefix, length);
  const std::uint32_t existing = by_destination(first, next_hop.destination);
  if (existing == kNil && size() == capacity_) return L3Add::full;
  const std::uint32_t id = next_hops_.keep(next_hop);
  if (existing == kNil) {
    Undo drop([&] { next_hops_.drop(id); });
    const std::uint32_t position = places_.take();
    Undo give_back([&] { places_.give(position); });
    places_[position] = {prefix, metric, id, kNil, static_cast<std::uint8_t>(length)};
    link(position, first);
    give_back.dismiss();
    drop.dismiss();
    return L3Add::added;
  }
  // From here on nothing asks for memory: the prefix keeps its place in the index and the trie.
  Place& place = places_[existing];
  next_hops_.drop(std::exchange(place.next_hop, id));
  const bool alone = existing == first && place.next == kNil;
  if (place.metric != metric && !alone) {
    unlink(existing, first);
    place.metric = metric;
    link(existing, first_of(prefix, length));
  } else {
    place.metric = metric;
    if (existing == first) trie_.set(prefix, length, id);
  }
  return L3Add::replaced;
}

template <class Address>
void L3RouteTable<Address>::lookup_batch(const Address* ips, std::size_t count,
                                         const NextHop** next_hops) const {
  std::array<std::uint32_t, kBatch> found;
  trie_.lookup_batch(ips, count, found.data());
  for (std::size_t i = 0; i < count; ++i) {
    next_hops[i] = next_hop_of(found[i]);
    if (next_hops[i] != nullptr) softcard::prefetch(next_hops[i]);
  }
}

template <class Address>
std::optional<L3Route<Address>> L3RouteTable<Address>::find(const Address& ip, unsigned length,
                                                            Destination destination) const {
  if (length > PrefixTrie<Address>::kWidth) return std::nullopt;
  const std::uint32_t position = by_destination(first_of(masked(ip, length), length), destination);
  if (position == kNil) return std::nullopt;
  return route_at(position);
}

template <class Address>
bool L3RouteTable<Address>::remove(const Address& ip, unsigned length, Destination destination) {
  if (length > PrefixTrie<Address>::kWidth) return false;
  prefetch(ip);  // for the trie, while the index is asked
  const std::uint32_t first = first_of(masked(ip, length), length);
  const std::uint32_t position = by_destination(first, destination);
  if (position == kNil) return false;
  erase(position, first);
  return true;
}

template <class Address>
std::size_t L3RouteTable<Address>::remove_by_interface(std::uint32_t interface_id) {
  return remove_where(
      [&](const NextHop& next_hop) { return next_hop.interface_id == interface_id; });
}

template <class Address>
std::size_t L3RouteTable<Address>::remove_by_destination(Destination destination) {
  return remove_where([&](const NextHop& next_hop) { return next_hop.destination == destination; });
}

template <class Address>
template <class Matches>
std::size_t L3RouteTable<Address>::remove_where(Matches&& matches) {
  return erase_where(
      places_, [&](const Place& place) { return matches(next_hops_[place.next_hop]); },
      [&](std::uint32_t position) {
        erase(position, first_of(places_[position].prefix, places_[position].length));
      });
}

template <class Address>
void L3RouteTable<Address>::clear() {
  *this = L3RouteTable(capacity_, hash_);
}

template <class Address>
L3Route<Address> L3RouteTable<Address>::route_at(std::uint32_t position) const {
  const Place& place = places_[position];
  return {place.prefix, place.length, place.metric, next_hops_[place.next_hop]};
}

// The position of the route in use among those of a prefix, or kNil.
template <class Address>
std::uint32_t L3RouteTable<Address>::first_of(const Address& prefix, unsigned length) const {
  return index_.find(address_hash(hash_, prefix, length), [&](std::uint32_t p) {
    return places_[p].prefix == prefix && places_[p].length == length;
  });
}

// The position of the route by `destination` among those of a prefix, the one in use of which is
// `first` (kNil: there are none).
template <class Address>
std::uint32_t L3RouteTable<Address>::by_destination(std::uint32_t first,
                                                    Destination destination) const {
  std::uint32_t position = first;
  while (position != kNil && next_hops_[places_[position].next_hop].destination != destination) {
    position = places_[position].next;
  }
  return position;
}

// Enters a route behind all routes of its prefix, `first` and so on, that are not worse.
template <class Address>
void L3RouteTable<Address>::link(std::uint32_t position, std::uint32_t first) {
  Place& place = places_[position];
  std::uint32_t previous = kNil;
  std::uint32_t next = first;
  while (next != kNil && places_[next].metric <= place.metric) {
    previous = next;
    next = places_[next].next;
  }
  place.next = next;
  if (previous != kNil) {
    places_[previous].next = position;
    return;
  }
  const std::uint32_t hash = address_hash(hash_, place.prefix, place.length);
  trie_.set(place.prefix, place.length, place.next_hop);
  if (next != kNil) {
    index_.replace(hash, next, position);
    return;
  }
  Undo erase_from_trie([&] { trie_.erase(place.prefix, place.length); });
  index_.insert(hash, position);
  erase_from_trie.dismiss();
}

// Takes a route out of the routes of its prefix, `first` and so on.
template <class Address>
void L3RouteTable<Address>::unlink(std::uint32_t position, std::uint32_t first) {
  const Place& place = places_[position];
  if (first != position) {
    std::uint32_t previous = first;
    while (places_[previous].next != position) previous = places_[previous].next;
    places_[previous].next = place.next;
    return;
  }
  const std::uint32_t hash = address_hash(hash_, place.prefix, place.length);
  if (place.next == kNil) {
    index_.erase(hash, position);
    trie_.erase(place.prefix, place.length);
  } else {
    index_.replace(hash, position, place.next);
    trie_.set(place.prefix, place.length, places_[place.next].next_hop);
  }
}

template <class Address>
void L3RouteTable<Address>::erase(std::uint32_t position, std::uint32_t first) {
  unlink(position, first);
  next_hops_.drop(places_[position].next_hop);
  places_.give(position);
}

template class L3HostTable<Ipv4>;
template class L3HostTable<Ipv6Address>;
template class L3RouteTable<Ipv4>;
template class L3RouteTable<Ipv6Address>;

}  // namespace softcard
