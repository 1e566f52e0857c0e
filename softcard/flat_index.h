// SPDX-License-Identifier: Apache-2.0
//
// A hash index from keys to positions in a table of the caller's.  It keeps hashes and positions
// only, 8 bytes a slot, and asks the caller to compare keys; so any key serves, and the keys stay
// in one place.  It grows by doubling and stays at most 5/8 full.
#ifndef SOFTCARD_FLAT_INDEX_H_
#define SOFTCARD_FLAT_INDEX_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "softcard/hash.h"

namespace softcard {

class FlatIndex {
 public:
  static constexpr std::uint32_t kNone = UINT32_MAX;

  // The 32-bit hash of a key that fits 64 bits.
  static constexpr std::uint32_t hash_of(std::uint64_t key) {
    return static_cast<std::uint32_t>(mix64(key) >> 32);
  }

  // Starts to load what find(hash, ...) reads first.
  void prefetch(std::uint32_t hash) const {
    if (!slots_.empty()) softcard::prefetch(&slots_[home(hash)]);
  }

  // Returns the position with this hash for which same(position) holds, or kNone.
  template <class Same>
  std::uint32_t find(std::uint32_t hash, Same&& same) const {
    if (slots_.empty()) return kNone;
    for (std::size_t i = home(hash); slots_[i].position != kNone; i = (i + 1) & mask()) {
      if (slots_[i].hash == hash && same(slots_[i].position)) return slots_[i].position;
    }
    return kNone;
  }

  // Adds a position, which must not be in the index and not be kNone.
  void insert(std::uint32_t hash, std::uint32_t position) {
    if ((size_ + 1) * 8 > slots_.size() * 5) grow();
    place(hash, position);
    ++size_;
  }

  // Puts `to` in the place of `from`, which must be in the index under `hash`.
  void replace(std::uint32_t hash, std::uint32_t from, std::uint32_t to) {
    slots_[slot_of(hash, from)].position = to;
  }

  // Removes a position, which must be in the index under `hash`.
  void erase(std::uint32_t hash, std::uint32_t position) {
    std::size_t hole = slot_of(hash, position);
    for (std::size_t i = (hole + 1) & mask(); slots_[i].position != kNone; i = (i + 1) & mask()) {
      // A slot may fill the hole when its way from home leads past it.
      if (((i - home(slots_[i].hash)) & mask()) >= ((i - hole) & mask())) {
        slots_[hole] = slots_[i];
        hole = i;
      }
    }
    slots_[hole].position = kNone;
    --size_;
  }

  // Calls visit(position) for each position; `visit` must not change the index.
  template <class Visit>
  void for_each(Visit&& visit) const {
    for (const Slot& slot : slots_) {
      if (slot.position != kNone) visit(slot.position);
    }
  }

  // Empties the index and gives its memory back.
  void clear() {
    std::vector<Slot>().swap(slots_);
    size_ = 0;
  }

  std::size_t size() const { return size_; }
  // The number of slots: what for_each reads.
  std::size_t slots() const { return slots_.size(); }

 private:
  struct Slot {
    std::uint32_t hash = 0;
    std::uint32_t position = kNone;
  };

  std::size_t mask() const { return slots_.size() - 1; }
  std::size_t home(std::uint32_t hash) const { return hash >> shift_; }

  std::size_t slot_of(std::uint32_t hash, std::uint32_t position) const {
    std::size_t i = home(hash);
    while (slots_[i].position != position) i = (i + 1) & mask();
    return i;
  }

  void place(std::uint32_t hash, std::uint32_t position) {
    std::size_t i = home(hash);
    while (slots_[i].position != kNone) i = (i + 1) & mask();
    slots_[i].hash = hash;
    slots_[i].position = position;
  }

  void grow() {
    std::vector<Slot> old(slots_.empty() ? 8 : slots_.size() * 2);
    old.swap(slots_);
    shift_ = 32 - ceil_log2(slots_.size());
    for (const Slot& slot : old) {
      if (slot.position != kNone) place(slot.hash, slot.position);
    }
  }

  std::vector<Slot> slots_;  // empty, or a power of two
  std::size_t size_ = 0;
  unsigned shift_ = 32;
};

}  // namespace softcard

#endif  // SOFTCARD_FLAT_INDEX_H_
