// SPDX-License-Identifier: Apache-2.0
//
// Storage for the entries of a table, addressed by position. Entries do not move while they are in
// use, and growing copies nothing; a position that is given back is the next to be taken. Taking
// may run out of memory and has no effect then; giving back never does.
#ifndef SOFTCARD_BASE_POOL_H_
#define SOFTCARD_BASE_POOL_H_

#include <algorithm>
#include <array>
#include <bitset>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace softcard {

template <class Value>
class Pool {
 public:
  Value& operator[](std::uint32_t position) {
    return blocks_[position / kBlock]->values[position % kBlock];
  }
  const Value& operator[](std::uint32_t position) const {
    return blocks_[position / kBlock]->values[position % kBlock];
  }

  // Returns the position of a fresh value.
  std::uint32_t take() {
    std::uint32_t position = end_;
    if (free_.empty()) {
      if (end_ % kBlock == 0) add_block();
      ++end_;
    } else {
      position = free_.back();
      free_.pop_back();
    }
    blocks_[position / kBlock]->used.set(position % kBlock);
    return position;
  }

  // Takes the value at `position` back; it must be in use.
  void give(std::uint32_t position) {
    (*this)[position] = Value();
    blocks_[position / kBlock]->used.reset(position % kBlock);
    free_.push_back(position);
  }

  // The number of values in use.
  std::size_t size() const { return end_ - free_.size(); }

  // Calls visit(position) for each position in use, in ascending order; `visit` may give back the
  // position that it is called with.
  template <class Visit>
  void for_each(Visit&& visit) const {
    for (std::uint32_t position = 0; position < end_; ++position) {
      if (blocks_[position / kBlock]->used[position % kBlock]) visit(position);
    }
  }

 private:
  static constexpr std::uint32_t kBlock = 256;

  struct Block {
    std::array<Value, kBlock> values{};
    std::bitset<kBlock> used;
  };

  // Makes room for the values, and for their positions once they are given back.
  void add_block() {
    const std::size_t positions = std::size_t{end_} + kBlock;
    if (positions > free_.capacity()) free_.reserve(std::max(positions, 2 * free_.capacity()));
    blocks_.push_back(std::make_unique<Block>());
  }

  std::vector<std::unique_ptr<Block>> blocks_;
  std::vector<std::uint32_t> free_;  // has room for all positions
  std::uint32_t end_ = 0;            // no position from here on was ever taken
};

}  // namespace softcard

#endif  // SOFTCARD_BASE_POOL_H_
