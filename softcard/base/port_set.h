// SPDX-License-Identifier: Apache-2.0
//
// A set of physical ports, as large as the largest card: a plain value of 32 bytes whose operations
// are a few word operations each, so that the pipeline can use it for every frame.
#ifndef SOFTCARD_BASE_PORT_SET_H_
#define SOFTCARD_BASE_PORT_SET_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>

#include "softcard/base/hash.h"
#include "softcard/base/limits.h"

namespace softcard {

// Conventions: every PortIndex given is below kMaxPorts. Iteration goes from the lowest port up.
class PortSet {
 public:
  constexpr PortSet() = default;

  // The ports 0 to count - 1.
  static constexpr PortSet first(PortIndex count) {
    PortSet set;
    for (PortIndex port = 0; port < count; ++port) set.insert(port);
    return set;
  }
  static constexpr PortSet of(PortIndex port) {
    PortSet set;
    set.insert(port);
    return set;
  }

  constexpr bool contains(PortIndex port) const {
    return (words_[port / 64] >> (port % 64) & 1) != 0;
  }
  constexpr void insert(PortIndex port) { words_[port / 64] |= bit(port); }
  constexpr void erase(PortIndex port) { words_[port / 64] &= ~bit(port); }
  constexpr void assign(PortIndex port, bool member) { member ? insert(port) : erase(port); }
  constexpr void clear() { words_ = {}; }

  constexpr bool empty() const { return (words_[0] | words_[1] | words_[2] | words_[3]) == 0; }
  constexpr unsigned size() const {
    return count_bits(words_[0]) + count_bits(words_[1]) + count_bits(words_[2]) +
           count_bits(words_[3]);
  }

  constexpr PortSet& operator|=(const PortSet& other) {
    for (std::size_t i = 0; i < words_.size(); ++i) words_[i] |= other.words_[i];
    return *this;
  }
  constexpr PortSet& operator&=(const PortSet& other) {
    for (std::size_t i = 0; i < words_.size(); ++i) words_[i] &= other.words_[i];
    return *this;
  }
  // Takes the ports of `other` out.
  constexpr PortSet& operator-=(const PortSet& other) {
    for (std::size_t i = 0; i < words_.size(); ++i) words_[i] &= ~other.words_[i];
    return *this;
  }
  friend constexpr PortSet operator|(PortSet a, const PortSet& b) { return a |= b; }
  friend constexpr PortSet operator&(PortSet a, const PortSet& b) { return a &= b; }
  friend constexpr PortSet operator-(PortSet a, const PortSet& b) { return a -= b; }
  friend constexpr bool operator==(const PortSet& a, const PortSet& b) {
    for (std::size_t i = 0; i < a.words_.size(); ++i) {
      if (a.words_[i] != b.words_[i]) return false;
    }
    return true;
  }
  friend constexpr bool operator!=(const PortSet& a, const PortSet& b) { return !(a == b); }

  // Calls visit(PortIndex) for each port. `visit` may change the set: it is called for the ports
  // that were in the set at the start.
  template <class Visit>
  void for_each(Visit&& visit) const {
    for (std::size_t i = 0; i < words_.size(); ++i) {
      for (std::uint64_t rest = words_[i]; rest != 0; rest &= rest - 1) {
        visit(static_cast<PortIndex>(i * 64 + static_cast<unsigned>(__builtin_ctzll(rest))));
      }
    }
  }

  // A forward iterator over a copy of the set, for range-based loops.
  class Iterator {
   public:
    using iterator_category = std::input_iterator_tag;
    using value_type = PortIndex;
    using difference_type = std::ptrdiff_t;
    using pointer = const PortIndex*;
    using reference = PortIndex;

    constexpr Iterator() = default;
    constexpr explicit Iterator(const std::array<std::uint64_t, 4>& words) : rest_(words) {
      skip_empty_words();
    }
    constexpr PortIndex operator*() const {
      return static_cast<PortIndex>(word_ * 64 +
                                    static_cast<unsigned>(__builtin_ctzll(rest_[word_])));
    }
    constexpr Iterator& operator++() {
      rest_[word_] &= rest_[word_] - 1;
      skip_empty_words();
      return *this;
    }
    friend constexpr bool operator==(const Iterator& a, const Iterator& b) {
      return a.word_ == b.word_ && (a.word_ == 4 || a.rest_[a.word_] == b.rest_[b.word_]);
    }
    friend constexpr bool operator!=(const Iterator& a, const Iterator& b) { return !(a == b); }

   private:
    constexpr void skip_empty_words() {
      while (word_ < 4 && rest_[word_] == 0) ++word_;
    }
    std::array<std::uint64_t, 4> rest_{};
    unsigned word_ = 0;
  };
  constexpr Iterator begin() const { return Iterator(words_); }
  constexpr Iterator end() const { return Iterator(std::array<std::uint64_t, 4>{}); }

 private:
  static constexpr std::uint64_t bit(PortIndex port) { return std::uint64_t{1} << (port % 64); }

  std::array<std::uint64_t, 4> words_{};
};

}  // namespace softcard

#endif  // SOFTCARD_BASE_PORT_SET_H_
