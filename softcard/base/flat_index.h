// SPDX-License-Identifier: Apache-2.0
//
// A hash index from keys to positions in a table of the caller's. It keeps hashes and positions
// only and asks the caller to compare keys; so any key serves, and the keys stay in one place. The
// caller makes the hashes with a KeyedHash.
//
// Entries stand in groups of seven, each group one cache line with a byte of the hash of each entry
// in its last word. A lookup compares these bytes all at once, so that it takes no branch that
// depends on where in the group an entry stands. Entries do not move but when the index grows, by
// doubling, at four entries a group, where about one group in twenty was passed.
#ifndef SOFTCARD_BASE_FLAT_INDEX_H_
#define SOFTCARD_BASE_FLAT_INDEX_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "softcard/base/hash.h"

namespace softcard {

class FlatIndex {
 public:
  static constexpr std::uint32_t kNone = UINT32_MAX;

  // Starts to load what find(hash, ...) reads first.
  void prefetch(std::uint32_t hash) const {
    if (!groups_.empty()) softcard::prefetch(&groups_[home(hash)]);
  }

  // Returns the position with this hash for which same(position) holds, or kNone.
  template <class Same>
  std::uint32_t find(std::uint32_t hash, Same&& same) const {
    if (groups_.empty()) return kNone;
    std::size_t at = home(hash);
    std::size_t probes = 0;
    while (true) {
      const Group& group = groups_[at];
      for (std::uint64_t bits = group.matches(tag_of(hash)); bits != 0; bits &= bits - 1) {
        const Slot& slot = group.slots[lowest_byte(bits)];
        if (slot.hash == hash && same(slot.position)) return slot.position;
      }
      if (group.passed() == 0 || ++probes == groups_.size()) return kNone;
      at = next(at);
    }
  }

  // Adds a position, which must not be in the index and not be kNone. No effect when memory runs
  // out; right after a position was erased none is asked for.
  void insert(std::uint32_t hash, std::uint32_t position) {
    if (size_ >= groups_.size() * kGrowAt) grow();
    place(hash, position);
    ++size_;
  }

  // Puts `to` in the place of `from`, which must be in the index under `hash`.
  void replace(std::uint32_t hash, std::uint32_t from, std::uint32_t to) {
    const Found found = find_slot(hash, from);
    groups_[found.group].slots[found.slot].position = to;
  }

  // Removes a position, which must be in the index under `hash`.
  void erase(std::uint32_t hash, std::uint32_t position) {
    const Found found = find_slot(hash, position);
    groups_[found.group].set_tag(found.slot, 0);
    for (std::size_t at = home(hash); at != found.group; at = next(at)) groups_[at].count_back();
    --size_;
  }

  // Calls visit(position) for each position; `visit` must not change the index.
  template <class Visit>
  void for_each(Visit&& visit) const {
    for (const Group& group : groups_) {
      for (unsigned i = 0; i < kSlots; ++i) {
        if (group.tag(i) != 0) visit(group.slots[i].position);
      }
    }
  }

  // Empties the index and gives its memory back.
  void clear() {
    std::vector<Group>().swap(groups_);
    size_ = 0;
  }

  // Returns the most groups that looking up an entry reads; reads all of them itself.
  std::size_t longest_search() const {
    std::size_t longest = 0;
    for (std::size_t at = 0; at < groups_.size(); ++at) {
      for (unsigned i = 0; i < kSlots; ++i) {
        if (groups_[at].tag(i) == 0) continue;
        const std::size_t passed = (at - home(groups_[at].slots[i].hash)) & (groups_.size() - 1);
        longest = passed + 1 > longest ? passed + 1 : longest;
      }
    }
    return longest;
  }

  std::size_t size() const { return size_; }
  // The number of slots: what for_each reads.
  std::size_t slots() const { return groups_.size() * kSlots; }

 private:
  static constexpr unsigned kSlots = 7;
  static constexpr unsigned kGrowAt = 4;

  struct Slot {
    std::uint32_t hash = 0;
    std::uint32_t position = kNone;
  };
  struct alignas(64) Group {
    Slot slots[kSlots];
    // Byte i is the tag of slot i, 0 when it is free. Byte 7 counts the entries that found the
    // group full and went on; 255 stands for 255 or more and stays.
    std::uint64_t control = 0;

    // The top bit of byte i is set when slot i has this tag; bits above the lowest set one may be
    // set wrongly.
    std::uint64_t matches(std::uint64_t tag) const {
      constexpr std::uint64_t kOnes = 0x0001010101010101;
      const std::uint64_t differences = control ^ tag * kOnes;
      return (differences - kOnes) & ~differences & kOnes << 7;
    }
    unsigned tag(unsigned slot) const { return control >> 8 * slot & 0xFF; }
    void set_tag(unsigned slot, std::uint64_t tag) {
      control = (control & ~(std::uint64_t{0xFF} << 8 * slot)) | tag << 8 * slot;
    }
    unsigned passed() const { return static_cast<unsigned>(control >> 56); }
    void count() {
      if (passed() != 255) control += std::uint64_t{1} << 56;
    }
    void count_back() {
      if (passed() != 255) control -= std::uint64_t{1} << 56;
    }
  };
  struct Found {
    std::size_t group;
    unsigned slot;
  };

  // The group comes from the upper bits of the hash, the tag from the lower.
  std::size_t home(std::uint32_t hash) const {
    return static_cast<std::size_t>(std::uint64_t{hash} >> shift_);
  }
  std::size_t next(std::size_t group) const { return (group + 1) & (groups_.size() - 1); }
  static std::uint64_t tag_of(std::uint32_t hash) { return 0x80 | (hash & 0x7F); }
  static unsigned lowest_byte(std::uint64_t bits) {
    return static_cast<unsigned>(__builtin_ctzll(bits)) / 8;
  }

  Found find_slot(std::uint32_t hash, std::uint32_t position) const {
    for (std::size_t at = home(hash);; at = next(at)) {
      for (std::uint64_t bits = groups_[at].matches(tag_of(hash)); bits != 0; bits &= bits - 1) {
        const unsigned slot = lowest_byte(bits);
        if (groups_[at].slots[slot].position == position) return {at, slot};
      }
    }
  }

  void place(std::uint32_t hash, std::uint32_t position) {
    std::size_t at = home(hash);
    for (; groups_[at].matches(0) == 0; at = next(at)) groups_[at].count();
    const unsigned slot = lowest_byte(groups_[at].matches(0));
    groups_[at].slots[slot] = {hash, position};
    groups_[at].set_tag(slot, tag_of(hash));
  }

  void grow() {
    std::vector<Group> old(groups_.empty() ? 1 : groups_.size() * 2);
    old.swap(groups_);
    shift_ = 32 - ceil_log2(groups_.size());
    for (const Group& group : old) {
      for (unsigned i = 0; i < kSlots; ++i) {
        if (group.tag(i) != 0) place(group.slots[i].hash, group.slots[i].position);
      }
    }
  }

  std::vector<Group> groups_;  // empty, or a power of two
  std::size_t size_ = 0;
  unsigned shift_ = 32;
};

}  // namespace softcard

#endif  // SOFTCARD_BASE_FLAT_INDEX_H_
