// SPDX-License-Identifier: Apache-2.0

#include "softcard/tables/fdb_table.h"

#include <algorithm>

#include "softcard/base/limits.h"

namespace softcard {

static_assert(sizeof(FdbEntry) == 16, "four entries fill a cache line");

FdbTable::FdbTable(std::size_t capacity, KeyedHash hash)
    : hash_(hash), capacity_(std::max<std::size_t>(capacity, 1)) {
  // Places for twice the capacity; at least two buckets, so that home() shifts by less than 64.
  const unsigned bucket_bits =
      std::max(1u, ceil_log2((capacity_ * 2 + kPlacesPerBucket - 1) / kPlacesPerBucket));
  const std::size_t buckets = std::size_t{1} << bucket_bits;
  bucket_mask_ = buckets - 1;
  home_shift_ = 64 - bucket_bits;
  buckets_.resize(buckets);
  overflow_.resize(buckets);
  links_.resize(buckets * kPlacesPerBucket);
  vlan_lists_.resize(kVlanCount);
}

// ---- Entries ------------------------------------------------------------------------------------

FdbLearn FdbTable::learn(std::uint16_t vlan, const MacAddress& mac, Destination destination,
                         std::uint64_t now) {
  const std::uint64_t key = fdb_key(vlan, mac.to_number());
  const FdbEntry* found = find(key);
  if (found == nullptr) {
    const FdbEntry* entry = insert(key, destination, FdbKind::learned, now);
    if (entry == nullptr) return FdbLearn::full;
    report(FdbChange::What::added, FdbChange::Cause::learned, *entry, Destination::none());
    return FdbLearn::added;
  }
  const Destination previous = found->destination();
  if (previous == destination) {
    const bool time_passed = found->last_seen_seconds() != now;
    touch(*found, now);
    return time_passed ? FdbLearn::refreshed : FdbLearn::known;
  }
  if (found->kind() != FdbKind::learned) return FdbLearn::pinned;
  redirect(at(place_of(*found)), destination, FdbKind::learned);
  touch(*found, now);
  report(FdbChange::What::moved, FdbChange::Cause::learned, *found, previous);
  return FdbLearn::moved;
}

bool FdbTable::add_static(std::uint16_t vlan, const MacAddress& mac, Destination destination,
                          std::uint64_t now) {
  return configure(fdb_key(vlan, mac.to_number()), destination, FdbKind::static_entry, now);
}

bool FdbTable::add_system(std::uint16_t vlan, const MacAddress& mac, std::uint64_t now) {
  return configure(fdb_key(vlan, mac.to_number()), Destination::cpu(), FdbKind::system_entry, now);
}

bool FdbTable::remove(std::uint16_t vlan, const MacAddress& mac) {
  const FdbEntry* found = find(vlan, mac);
  if (found == nullptr) return false;
  erase(at(place_of(*found)), FdbChange::Cause::deleted);
  return true;
}

std::size_t FdbTable::remove_mac(const MacAddress& mac) {
  std::size_t removed = 0;
  for (std::size_t vlan = 0; vlan < vlan_lists_.size(); ++vlan) {
    if (vlan_lists_[vlan].size != 0) removed += remove(static_cast<std::uint16_t>(vlan), mac);
  }
  return removed;
}

std::size_t FdbTable::flush(const FdbFilter& filter) {
  const List* by_vlan = filter.vlan ? &vlan_lists_[*filter.vlan % kVlanCount] : nullptr;
  const List* by_destination = nullptr;
  if (filter.destination) {
    by_destination = find_list(*filter.destination);
    if (by_destination == nullptr) return 0;
  }
  if (by_destination != nullptr && (by_vlan == nullptr || by_destination->size < by_vlan->size)) {
    return flush_list(kDestinationList, *by_destination, filter);
  }
  if (by_vlan != nullptr) return flush_list(kVlanList, *by_vlan, filter);
  std::size_t removed = 0;
  for (const List& list : vlan_lists_) removed += flush_list(kVlanList, list, filter);
  return removed;
}

// Removes what fits `filter` from one of its lists; `which` is the list's kind.
std::size_t FdbTable::flush_list(unsigned which, const List& list, const FdbFilter& filter) {
  std::size_t removed = 0;
  for (std::uint32_t place = list.first; place != kNil;) {
    if (filter.up_to == FdbKind::learned && list.learned == 0) break;
    FdbEntry& entry = at(place);
    place = links_[place].next[which];
    if (entry.kind() > filter.up_to) continue;
    if (filter.vlan && entry.vlan() != *filter.vlan) continue;
    if (filter.destination && entry.destination() != *filter.destination) continue;
    erase(entry, FdbChange::Cause::flushed);
    ++removed;
  }
  return removed;
}

// Goes on with a lookup behind a full bucket.
const FdbEntry* FdbTable::find_behind(std::size_t bucket, std::uint64_t key) const {
  for (std::size_t probes = 0; probes < bucket_mask_ && overflow_[bucket] != 0; ++probes) {
    bucket = (bucket + 1) & bucket_mask_;
    const FdbEntry& entry = buckets_[bucket].candidate(key);
    if (entry.key_ == key) return &entry;
  }
  return nullptr;
}

// ---- Ageing and counts --------------------------------------------------------------------------

std::size_t FdbTable::age(std::uint64_t now) {
  if (ageing_seconds_ == 0 || learned_ == 0) return 0;
  if (now < oldest_seen_ || now - oldest_seen_ < ageing_seconds_) return 0;
  // Those that go are reported in the order of their keys, which no hash decides.
  std::vector<std::uint64_t> due;
  std::uint64_t oldest = UINT64_MAX;
  for (const Bucket& bucket : buckets_) {
    for (const FdbEntry& entry : bucket.places) {
      if (entry.key_ == 0 || entry.kind() != FdbKind::learned) continue;
      const std::uint64_t seen = entry.last_seen_seconds();
      if (now >= seen && now - seen >= ageing_seconds_) {
        due.push_back(entry.key_);
      } else {
        oldest = std::min(oldest, seen);
      }
    }
  }
  oldest_seen_ = oldest;
  std::sort(due.begin(), due.end());
  for (const std::uint64_t key : due) erase(at(place_of(*find(key))), FdbChange::Cause::aged);
  return due.size();
}

std::vector<std::uint64_t> FdbTable::sorted_keys() const {
  std::vector<std::uint64_t> keys;
  keys.reserve(size_);
  for (const Bucket& bucket : buckets_) {
    for (const FdbEntry& entry : bucket.places) {
      if (entry.key_ != 0) keys.push_back(entry.key_);
    }
  }
  std::sort(keys.begin(), keys.end());
  return keys;
}

std::size_t FdbTable::longest_search() const {
  std::size_t longest = 0;
  for (std::size_t bucket = 0; bucket <= bucket_mask_; ++bucket) {
    for (const FdbEntry& entry : buckets_[bucket].places) {
      if (entry.key_ == 0) continue;
      longest = std::max(longest, ((bucket - home(entry.key_)) & bucket_mask_) + 1);
    }
  }
  return longest;
}

std::size_t FdbTable::learned_on(Destination destination) const {
  const List* list = find_list(destination);
  return list == nullptr ? 0 : list->learned;
}

// ---- Lists --------------------------------------------------------------------------------------

std::uint32_t FdbTable::place_of(const FdbEntry& entry) const {
  const auto distance_bytes =
      reinterpret_cast<const char*>(&entry) - reinterpret_cast<const char*>(buckets_.data());
  return static_cast<std::uint32_t>(static_cast<std::size_t>(distance_bytes) / sizeof(FdbEntry));
}

const FdbTable::List* FdbTable::find_list(Destination destination) const {
  if (!destination.is_port() && !destination.is_lag()) {
    return &other_lists_[static_cast<std::size_t>(destination.kind)];
  }
  const std::vector<List>& lists = destination.is_port() ? port_lists_ : lag_lists_;
  return destination.number < lists.size() ? &lists[destination.number] : nullptr;
}

FdbTable::List& FdbTable::list_of(Destination destination) {
  if (!destination.is_port() && !destination.is_lag()) {
    return other_lists_[static_cast<std::size_t>(destination.kind)];
  }
  std::vector<List>& lists = destination.is_port() ? port_lists_ : lag_lists_;
  if (destination.number >= lists.size()) lists.resize(destination.number + std::size_t{1});
  return lists[destination.number];
}

// Puts a place at the front of a list and counts its entry there.
void FdbTable::link(unsigned which, List& list, std::uint32_t place) {
  links_[place].next[which] = list.first;
  links_[place].previous[which] = kNil;
  if (list.first != kNil) links_[list.first].previous[which] = place;
  list.first = place;
  ++list.size;
  if (at(place).kind() == FdbKind::learned) ++list.learned;
}

// Takes a place out of its list; the entry's kind must still be the one it was linked with.
void FdbTable::unlink(unsigned which, List& list, std::uint32_t place) {
  const Links& links = links_[place];
  if (links.previous[which] == kNil) {
    list.first = links.next[which];
  } else {
    links_[links.previous[which]].next[which] = links.next[which];
  }
  if (links.next[which] != kNil) links_[links.next[which]].previous[which] = links.previous[which];
  --list.size;
  if (at(place).kind() == FdbKind::learned) --list.learned;
}

// ---- Changes ------------------------------------------------------------------------------------

// Makes an entry for a key that has none; null when the table is full.
FdbEntry* FdbTable::insert(std::uint64_t key, Destination destination, FdbKind kind,
                           std::uint64_t now) {
  if (size_ == capacity_) return nullptr;
  List& destination_list = list_of(destination);  // may run out of memory
  std::size_t bucket = home(key);
  const auto is_free = [](const FdbEntry& entry) { return entry.key_ == 0; };
  FdbEntry* place = nullptr;
  while (true) {
    FdbEntry* const places = buckets_[bucket].places;
    place = std::find_if(places, places + kPlacesPerBucket, is_free);
    if (place != places + kPlacesPerBucket) break;
    if (overflow_[bucket] != UINT8_MAX) ++overflow_[bucket];
    bucket = (bucket + 1) & bucket_mask_;
  }
  FdbEntry& entry = *place;
  entry.key_ = key;
  entry.set_last_seen(now);
  entry.set(destination, kind);
  link(kVlanList, vlan_lists_[entry.vlan()], place_of(entry));
  link(kDestinationList, destination_list, place_of(entry));
  ++size_;
  if (kind == FdbKind::learned) {
    ++learned_;
    oldest_seen_ = std::min(oldest_seen_, now);
  }
  return &entry;
}

// Gives an entry another destination or kind; it is not seen by that.
void FdbTable::redirect(FdbEntry& entry, Destination destination, FdbKind kind) {
  const std::uint32_t place = place_of(entry);
  List& vlan_list = vlan_lists_[entry.vlan()];
  List& destination_list = list_of(destination);  // may run out of memory, and moves the others
  unlink(kDestinationList, list_of(entry.destination()), place);
  if (entry.kind() == FdbKind::learned) {
    --vlan_list.learned;
    --learned_;
  }
  entry.set(destination, kind);
  if (kind == FdbKind::learned) {
    ++vlan_list.learned;
    ++learned_;
  }
  link(kDestinationList, destination_list, place);
}

void FdbTable::erase(FdbEntry& entry, FdbChange::Cause cause) {
  const FdbEntry old = entry;
  const std::uint32_t place = place_of(entry);
  unlink(kVlanList, vlan_lists_[entry.vlan()], place);
  unlink(kDestinationList, list_of(entry.destination()), place);
  const std::size_t bucket = place / kPlacesPerBucket;
  for (std::size_t passed = home(entry.key_); passed != bucket;
       passed = (passed + 1) & bucket_mask_) {
    if (overflow_[passed] != UINT8_MAX) --overflow_[passed];
  }
  entry = FdbEntry();
  --size_;
  if (old.kind() == FdbKind::learned) --learned_;
  report(FdbChange::What::removed, cause, old, Destination::none());
}

// Makes or replaces an entry that is set rather than learned; false when the table is full.
bool FdbTable::configure(std::uint64_t key, Destination destination, FdbKind kind,
                         std::uint64_t now) {
  const FdbEntry* found = find(key);
  if (found == nullptr) {
    const FdbEntry* entry = insert(key, destination, kind, now);
    if (entry == nullptr) return false;
    report(FdbChange::What::added, FdbChange::Cause::configured, *entry, Destination::none());
    return true;
  }
  if (found->destination() == destination && found->kind() == kind) return true;
  const Destination previous = found->destination();
  redirect(at(place_of(*found)), destination, kind);
  report(FdbChange::What::moved, FdbChange::Cause::configured, *found, previous);
  return true;
}

void FdbTable::report(FdbChange::What what, FdbChange::Cause cause, const FdbEntry& entry,
                      Destination previous) const {
  if (!observer_) return;
  observer_({what, cause, entry.kind(), entry.vlan(), entry.mac(), entry.destination(), previous});
}

}  // namespace softcard
