// SPDX-License-Identifier: Apache-2.0
#include "entrypoints/binder.h"

#include <stdexcept>

namespace entrypoints {

Bound Binder::take(Direction direction, bool array, const char* kind) {
  if (next_ == row_.size()) throw std::logic_error("a parameter has no name");
  Parameter& parameter = row_[next_++];
  if (kind != nullptr) parameter.kind = kind;
  if (parameter.array != array) {
    throw std::logic_error(parameter.name + (array ? " is an array" : " is no array"));
  }
  if (direction != Direction::kEither && parameter.out != (direction == Direction::kOut)) {
    throw std::logic_error(parameter.name + (parameter.out ? " is read" : " is printed"));
  }
  return {parameter, parameter.out ? Role::kOut : Role::kIn};
}

Bound Binder::take_count() {
  count_due_ = false;
  return {row_[next_ - 1], Role::kCount};
}

void Binder::finish() const {
  if (next_ != row_.size()) throw std::logic_error(row_[next_].name + " belongs to no parameter");
  if (count_due_) throw std::logic_error(row_.back().name + " has no count");
}

}  // namespace entrypoints
