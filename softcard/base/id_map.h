// SPDX-License-Identifier: Apache-2.0
//
// Which entry of a table has which id, for tables that hand out the lowest free id and take ids of
// the caller's choice, too. Ids up to the table's capacity, which are all that are ever handed
// out, are looked up in an array that grows with the highest one; the rest in a hash index.
#ifndef SOFTCARD_BASE_ID_MAP_H_
#define SOFTCARD_BASE_ID_MAP_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "softcard/base/flat_index.h"

namespace softcard {

class IdMap {
 public:
  static constexpr std::uint32_t kNone = FlatIndex::kNone;

  // For a table that never has more than `capacity` entries.
  explicit IdMap(std::size_t capacity) : capacity_(capacity) {}

  // Returns the position of the entry of `id`, or kNone.
  std::uint32_t find(std::uint32_t id) const {
    if (id <= capacity_) return id < positions_.size() ? positions_[id] : kNone;
    // Different ids have different hashes.
    return others_.find(hash_of(id), [](std::uint32_t) { return true; });
  }

  // Returns the lowest free id from 1 up; the table must not be full.
  std::uint32_t lowest_free() const {
    std::size_t group = 0;
    while (group < full_.size() && full_[group] == UINT64_MAX) ++group;
    if (group == full_.size()) return static_cast<std::uint32_t>(group * 4096 + 1);
    const std::size_t word = group * 64 + trailing_ones(full_[group]);
    const unsigned bit = word < used_.size() ? trailing_ones(used_[word]) : 0;
    return static_cast<std::uint32_t>(word * 64 + bit + 1);
  }

  // Gives a free id to an entry. No effect when memory runs out.
  void insert(std::uint32_t id, std::uint32_t position) {
    if (id > capacity_) {
      others_.insert(hash_of(id), position);
      return;
    }
    if (id >= positions_.size()) positions_.resize(id + std::size_t{1}, kNone);
    if (id != 0) {
      const std::size_t word = (id - 1) / 64;
      if (word >= used_.size()) used_.resize(word + 1);
      if (word / 64 >= full_.size()) full_.resize(word / 64 + 1);
      mark(id, true);
    }
    positions_[id] = position;
  }

  // Frees an id, which must be in use.
  void erase(std::uint32_t id) {
    if (id > capacity_) {
      others_.erase(hash_of(id), find(id));
      return;
    }
    positions_[id] = kNone;
    if (id != 0) mark(id, false);
  }

 private:
  // Every step of it can be undone.
  static std::uint32_t hash_of(std::uint32_t id) {
    id = (id ^ id >> 16) * 0x7FEB352Du;
    id = (id ^ id >> 15) * 0x846CA68Bu;
    return id ^ id >> 16;
  }

  static unsigned trailing_ones(std::uint64_t bits) {
    return static_cast<unsigned>(__builtin_ctzll(~bits));
  }

  void mark(std::uint32_t id, bool used) {
    const std::size_t word = (id - 1) / 64;
    set_bit(used_, id - 1, used);
    set_bit(full_, word, used_[word] == UINT64_MAX);
  }
  static void set_bit(std::vector<std::uint64_t>& words, std::size_t index, bool value) {
    const std::uint64_t bit = std::uint64_t{1} << index % 64;
    words[index / 64] = value ? words[index / 64] | bit : words[index / 64] & ~bit;
  }

  std::size_t capacity_;
  std::vector<std::uint32_t> positions_;  // by id
  std::vector<std::uint64_t> used_;       // a bit for each id from 1 up
  std::vector<std::uint64_t> full_;       // a bit for each word of used_: all its ids are in use
  FlatIndex others_;
};

}  // namespace softcard

#endif  // SOFTCARD_BASE_ID_MAP_H_
