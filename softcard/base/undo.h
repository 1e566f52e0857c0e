// SPDX-License-Identifier: Apache-2.0
//
// Takes a step of a change back unless the whole change comes about: a table that is out of memory
// half way stands as it stood.
//
//   const std::uint32_t position = places_.take();
//   Undo give_back([&] { places_.give(position); });
//   index_.insert(hash, position);  // may throw
//   give_back.dismiss();
#ifndef SOFTCARD_BASE_UNDO_H_
#define SOFTCARD_BASE_UNDO_H_

#include <utility>

namespace softcard {

// `Step` is called once at the end of the scope unless dismissed, and must not throw.
template <class Step>
class Undo {
 public:
  explicit Undo(Step step) : step_(std::move(step)) {}
  ~Undo() {
    if (armed_) step_();
  }
  Undo(const Undo&) = delete;
  Undo& operator=(const Undo&) = delete;

  void dismiss() { armed_ = false; }

 private:
  Step step_;
  bool armed_ = true;
};

}  // namespace softcard

#endif  // SOFTCARD_BASE_UNDO_H_
