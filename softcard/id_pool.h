// SPDX-License-Identifier: Apache-2.0
//
// Which ids of 1 to a limit are free, for tables that hand out the lowest free id.
#ifndef SOFTCARD_ID_POOL_H_
#define SOFTCARD_ID_POOL_H_

#include <cstddef>
#include <cstdint>
#include <vector>

namespace softcard {

class IdPool {
 public:
  // Higher ids are not kept: a table with fewer entries than this never hands them out.
  static constexpr std::uint32_t kLimit = 1u << 24;

  // Returns the lowest free id, at least 1, without taking it.
  std::uint32_t lowest_free() const {
    std::size_t word = first_word_;
    while (word < used_.size() && used_[word] == UINT64_MAX) ++word;
    const unsigned bit = word < used_.size() ? count_trailing_ones(used_[word]) : 0;
    return static_cast<std::uint32_t>(word * 64 + bit + 1);
  }

  // Marks `id` as used.
  void take(std::uint32_t id) {
    if (id == 0 || id > kLimit) return;
    const std::size_t word = (id - 1) / 64;
    if (word >= used_.size()) used_.resize(word + 1);
    used_[word] |= std::uint64_t{1} << (id - 1) % 64;
    while (first_word_ < used_.size() && used_[first_word_] == UINT64_MAX) ++first_word_;
  }

  // Marks `id` as free.
  void release(std::uint32_t id) {
    if (id == 0 || id > kLimit) return;
    const std::size_t word = (id - 1) / 64;
    used_[word] &= ~(std::uint64_t{1} << (id - 1) % 64);
    if (word < first_word_) first_word_ = word;
  }

  void clear() {
    used_.clear();
    first_word_ = 0;
  }

 private:
  static unsigned count_trailing_ones(std::uint64_t bits) {
    return static_cast<unsigned>(__builtin_ctzll(~bits));
  }

  std::vector<std::uint64_t> used_;
  std::size_t first_word_ = 0;  // all words before it are full
};

}  // namespace softcard

#endif  // SOFTCARD_ID_POOL_H_
