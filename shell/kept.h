// SPDX-License-Identifier: Apache-2.0
//
// Keeps the latest things that wait for an `expect`, as many as fit.
#ifndef SHELL_KEPT_H_
#define SHELL_KEPT_H_

#include <cstddef>
#include <cstdint>
#include <deque>
#include <utility>

namespace shell {

// A row of things, oldest first, bounded in bytes. The oldest go when there is no room for one
// more, and are counted.
template <class Thing>
class Kept {
 public:
  explicit Kept(std::size_t most_bytes) : most_bytes_(most_bytes) {}

  // `bytes` is what it takes.
  void add(Thing thing, std::size_t bytes) {
    bytes_ += bytes;
    things_.emplace_back(std::move(thing), bytes);
    for (; bytes_ > most_bytes_ && things_.size() > 1; ++forgotten_) drop_first();
  }
  // The oldest. REQUIRES: not empty.
  const Thing& first() const { return things_.front().first; }
  Thing take() {
    Thing thing = std::move(things_.front().first);
    drop_first();
    return thing;
  }
  // Calls visit(thing) for each, oldest first.
  template <class Visit>
  void for_each(Visit&& visit) const {
    for (const auto& thing : things_) visit(thing.first);
  }
  bool empty() const { return things_.empty(); }
  std::size_t size() const { return things_.size(); }
  // So many are gone that nobody has asked for, since the last clear().
  std::uint64_t forgotten() const { return forgotten_; }
  void clear() {
    things_.clear();
    bytes_ = 0;
    forgotten_ = 0;
  }

 private:
  void drop_first() {
    bytes_ -= things_.front().second;
    things_.pop_front();
  }

  std::deque<std::pair<Thing, std::size_t>> things_;
  std::size_t bytes_ = 0;
  std::size_t most_bytes_;
  std::uint64_t forgotten_ = 0;
};

}  // namespace shell

#endif  // SHELL_KEPT_H_
