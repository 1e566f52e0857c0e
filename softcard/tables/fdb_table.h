// SPDX-License-Identifier: Apache-2.0
//
// The layer-2 forwarding database: which destination owns a MAC address in a VLAN.
//
// Entries live in buckets of one cache line, four entries each, and never move while they exist.
// At most half of all places are used, so a lookup reads one line in nearly every case. Beside
// each place stand the links of two lists, one per VLAN and one per destination, so that a flush
// costs what it removes. Nothing is allocated after construction, except when a port or LAG number
// larger than any before is seen.
//
// Conventions: VLAN ids are below kVlanCount; times are seconds of the card's clock, which never
// goes back. A full table refuses a new entry and changes nothing; one that runs out of memory
// throws and changes nothing.
#ifndef SOFTCARD_TABLES_FDB_TABLE_H_
#define SOFTCARD_TABLES_FDB_TABLE_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "softcard/base/hash.h"
#include "softcard/base/net_types.h"
#include "softcard/tables/capacity.h"

namespace softcard {

// How an entry came into being; it decides what may change or remove it.
enum class FdbKind : std::uint8_t {
  learned,       // from a frame; moves, ages and is flushed
  static_entry,  // set on a port or LAG; stays until it is deleted or flushed with the static ones
  system_entry,  // set for the control plane; stays until it is deleted
};

// The result of FdbTable::learn().
enum class FdbLearn {
  known,      // the entry stood as it is; at most its time was brought up to date
  refreshed,  // as known, and at least a second had passed since it was last seen
  moved,      // a learned entry now points to the new destination
  added,      // a new learned entry
  pinned,     // a static or system entry owns the address elsewhere; nothing changed
  full,       // no room; nothing changed
};

// The key of an entry as one number that is never 0. `mac` is MacAddress::to_number().
constexpr std::uint64_t fdb_key(std::uint16_t vlan, std::uint64_t mac) {
  return std::uint64_t{1} << 63 | std::uint64_t{vlan} << 48 | mac;
}

// One entry, 16 bytes. Only FdbTable changes it.
class FdbEntry {
 public:
  std::uint16_t vlan() const { return static_cast<std::uint16_t>((key_ >> 48) % kVlanCount); }
  MacAddress mac() const { return MacAddress::from_number(key_); }
  Destination destination() const {
    return {static_cast<DestinationKind>(flags_ >> kDestinationShift & 7), number_};
  }
  FdbKind kind() const { return static_cast<FdbKind>(flags_ & kKindMask); }
  // When a frame from this address was last seen; when the entry was made, if never.
  std::uint64_t last_seen_seconds() const {
    return std::uint64_t{last_seen_high_} << 32 | last_seen_;
  }
  // True once a frame from this address came after the one, or the call, that made the entry.
  bool hit() const { return (flags_ & kHit) != 0; }

 private:
  friend class FdbTable;

  static constexpr std::uint8_t kKindMask = 0x03;
  static constexpr unsigned kDestinationShift = 2;
  static constexpr std::uint8_t kHit = 0x80;

  void set(Destination destination, FdbKind kind) {
    number_ = destination.number;
    flags_ =
        static_cast<std::uint8_t>((flags_ & kHit) | static_cast<unsigned>(kind) |
                                  static_cast<unsigned>(destination.kind) << kDestinationShift);
  }
  void set_last_seen(std::uint64_t seconds) {
    last_seen_ = static_cast<std::uint32_t>(seconds);
    last_seen_high_ = static_cast<std::uint8_t>(seconds >> 32);
  }

  std::uint64_t key_ = 0;  // 0: the place is free
  std::uint32_t last_seen_ = 0;
  std::uint16_t number_ = 0;
  std::uint8_t last_seen_high_ = 0;
  std::uint8_t flags_ = 0;  // a FdbKind, the DestinationKind, and kHit
};

// One change of the table, reported when it is complete.
struct FdbChange {
  enum class What : std::uint8_t { added, moved, removed };
  enum class Cause : std::uint8_t {
    learned,     // a frame
    configured,  // add_static, add_system
    deleted,     // remove, remove_mac
    flushed,     // flush
    aged,        // age
  };
  What what;
  Cause cause;
  FdbKind kind;             // after the change; of the entry that was, when removed
  std::uint16_t vlan;       //
  MacAddress mac;           //
  Destination destination;  // after the change; of the entry that was, when removed
  Destination previous;     // before the change when moved, else none
};

// Which entries a flush removes: those that fit every part that is given.
struct FdbFilter {
  std::optional<std::uint16_t> vlan;
  std::optional<Destination> destination;
  FdbKind up_to = FdbKind::learned;  // this kind and those before it
};

class FdbTable {
 public:
  static constexpr std::size_t kDefaultCapacity = CardCapacity().fdb;
  static constexpr std::uint32_t kDefaultAgeingSeconds = 300;

  // Makes room for `capacity` entries, at least 1 and at most 2^28.
  explicit FdbTable(std::size_t capacity = kDefaultCapacity, KeyedHash hash = KeyedHash::drawn());

  // ---- Lookup -----------------------------------------------------------------------------------

  // Starts to load what find(key) reads.
  void prefetch(std::uint64_t key) const { softcard::prefetch(&buckets_[home(key)]); }

  // A lookup that is under way.
  struct Probe {
    std::uint64_t key;
    std::size_t bucket;
  };

  // Starts a lookup, as prefetch() does, for find() to end.
  Probe probe(std::uint64_t key) const {
    const std::size_t bucket = home(key);
    softcard::prefetch(&buckets_[bucket]);
    return {key, bucket};
  }

  // Returns the entry of `key` (see fdb_key), or null. It stays where it is until it is removed.
  const FdbEntry* find(std::uint64_t key) const { return find(Probe{key, home(key)}); }
  const FdbEntry* find(const Probe& probe) const {
    const FdbEntry& entry = buckets_[probe.bucket].candidate(probe.key);
    if (entry.key_ == probe.key) return &entry;
    return overflow_[probe.bucket] == 0 ? nullptr : find_behind(probe.bucket, probe.key);
  }
  const FdbEntry* find(std::uint16_t vlan, const MacAddress& mac) const {
    return find(fdb_key(vlan, mac.to_number()));
  }

  // Notes that a frame from the entry's address came at `now` where it was expected.
  void touch(const FdbEntry& entry, std::uint64_t now) {
    if (entry.last_seen_seconds() == now && entry.hit()) return;
    FdbEntry& own = const_cast<FdbEntry&>(entry);
    own.set_last_seen(now);
    own.flags_ |= FdbEntry::kHit;
  }

  // ---- Entries ----------------------------------------------------------------------------------

  // Learns from a frame that `mac` is reached in `vlan` through `destination` at time `now`.
  // Limits are the caller's: find() tells beforehand whether the address is new or moves.
  FdbLearn learn(std::uint16_t vlan, const MacAddress& mac, Destination destination,
                 std::uint64_t now);

  // Binds `mac` in `vlan` to a port or LAG, in place of any entry it had. False when full.
  bool add_static(std::uint16_t vlan, const MacAddress& mac, Destination destination,
                  std::uint64_t now = 0);

  // Sends `mac` in `vlan` to the control plane, in place of any entry it had. False when full.
  bool add_system(std::uint16_t vlan, const MacAddress& mac, std::uint64_t now = 0);

  // Removes the entry of any kind of `mac` in `vlan`; false when there is none.
  bool remove(std::uint16_t vlan, const MacAddress& mac);

  // Removes the entries of `mac` in all VLANs and returns how many there were. Asks once in each
  // VLAN that has entries at all: at most kVlanCount lookups, and no list per address to keep.
  std::size_t remove_mac(const MacAddress& mac);

  // Removes what fits `filter` and returns how many entries that was.
  std::size_t flush(const FdbFilter& filter);

  // ---- Ageing -----------------------------------------------------------------------------------

  // Learned entries not seen for `seconds` are removed by age(); 0 keeps them for ever.
  void set_ageing_seconds(std::uint32_t seconds) { ageing_seconds_ = seconds; }
  std::uint32_t ageing_seconds() const { return ageing_seconds_; }

  // When age() may next find an entry to remove, in seconds; no entry is due before. UINT64_MAX:
  // never, as things are.
  std::uint64_t next_due_seconds() const {
    return ageing_seconds_ == 0 || learned_ == 0 ? UINT64_MAX : oldest_seen_ + ageing_seconds_;
  }

  // Removes the learned entries whose time is over at `now` and returns how many those were. May
  // be called at any rate: the table is read through only when an entry may be due, at most once a
  // second, and the result depends on `now` alone.
  std::size_t age(std::uint64_t now);

  // ---- Counts -----------------------------------------------------------------------------------

  std::size_t capacity() const { return capacity_; }
  std::size_t size() const { return size_; }
  std::size_t learned() const { return learned_; }
  // The learned entries that point to `destination`.
  std::size_t learned_on(Destination destination) const;
  // The learned entries in `vlan`.
  std::size_t learned_in(std::uint16_t vlan) const {
    return vlan_lists_[vlan % kVlanCount].learned;
  }

  // Calls visit(const FdbEntry&) for each entry, by VLAN and address from the lowest up. `visit`
  // may change the table: each entry that stays is visited exactly once, and one that is added
  // meanwhile is not.
  template <class Visit>
  void for_each(Visit&& visit) const {
    for (const std::uint64_t key : sorted_keys()) {
      const FdbEntry* const entry = find(key);
      if (entry != nullptr) visit(*entry);
    }
  }

  // Returns the most buckets that looking up an entry reads; reads all of them itself.
  std::size_t longest_search() const;

  // Has every addition, move and removal reported to `observer` as it happens; an empty function
  // ends that. The observer may read the table and must not change it.
  void set_observer(std::function<void(const FdbChange&)> observer) {
    observer_ = std::move(observer);
  }

 private:
  static constexpr std::size_t kPlacesPerBucket = 4;
  static constexpr std::uint32_t kNil = UINT32_MAX;

  struct alignas(64) Bucket {
    FdbEntry places[kPlacesPerBucket];

    // The place of `key` if it is here at all, else place 0. Which one it is cannot be foreseen,
    // so it is computed rather than searched for: a wrong guess would wait for the line to arrive.
    const FdbEntry& candidate(std::uint64_t key) const {
      const bool third = places[3].key_ == key;
      const unsigned odd = static_cast<unsigned>((places[1].key_ == key) | third);
      const unsigned upper = static_cast<unsigned>((places[2].key_ == key) | third);
      const unsigned index = odd | upper << 1;
      return places[index];
    }
  };
  // The neighbours of a place in its lists: [kVlanList] and [kDestinationList].
  enum : unsigned { kVlanList, kDestinationList };
  struct Links {
    std::uint32_t next[2] = {kNil, kNil};
    std::uint32_t previous[2] = {kNil, kNil};
  };
  struct List {
    std::uint32_t first = kNil;
    std::uint32_t size = 0;
    std::uint32_t learned = 0;
  };

  std::size_t home(std::uint64_t key) const {
    return static_cast<std::size_t>(hash_.spread(key) >> home_shift_);
  }
  FdbEntry& at(std::uint32_t place) {
    return buckets_[place / kPlacesPerBucket].places[place % kPlacesPerBucket];
  }
  std::vector<std::uint64_t> sorted_keys() const;
  const FdbEntry* find_behind(std::size_t bucket, std::uint64_t key) const;
  std::uint32_t place_of(const FdbEntry& entry) const;
  // The list that holds the entries of a destination; null where a number was never seen.
  const List* find_list(Destination destination) const;
  List& list_of(Destination destination);
  void link(unsigned which, List& list, std::uint32_t place);
  void unlink(unsigned which, List& list, std::uint32_t place);
  FdbEntry* insert(std::uint64_t key, Destination destination, FdbKind kind, std::uint64_t now);
  void redirect(FdbEntry& entry, Destination destination, FdbKind kind);
  void erase(FdbEntry& entry, FdbChange::Cause cause);
  std::size_t flush_list(unsigned which, const List& list, const FdbFilter& filter);
  bool configure(std::uint64_t key, Destination destination, FdbKind kind, std::uint64_t now);
  void report(FdbChange::What what, FdbChange::Cause cause, const FdbEntry& entry,
              Destination previous) const;

  KeyedHash hash_;
  std::size_t capacity_;
  std::size_t bucket_mask_;
  unsigned home_shift_;
  std::vector<Bucket> buckets_;
  std::vector<std::uint8_t> overflow_;  // per bucket: entries that found it full and went on; 255
                                        // stands for 255 or more and stays
  std::vector<Links> links_;            // per place
  std::vector<List> vlan_lists_;        // by VLAN id
  std::vector<List> port_lists_;        // by port
  std::vector<List> lag_lists_;         // by LAG id
  std::array<List, 5> other_lists_;     // by DestinationKind, for kinds without numbers
  std::size_t size_ = 0;
  std::size_t learned_ = 0;
  std::uint32_t ageing_seconds_ = kDefaultAgeingSeconds;
  std::uint64_t oldest_seen_ = UINT64_MAX;  // no learned entry was last seen before this
  std::function<void(const FdbChange&)> observer_;
};

}  // namespace softcard

#endif  // SOFTCARD_TABLES_FDB_TABLE_H_
