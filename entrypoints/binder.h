// SPDX-License-Identifier: Apache-2.0
//
// Binds the names of a row to the parameters of its function, in order: a part of what the shell
// and the Python module have in common when they derive their calls.
#ifndef ENTRYPOINTS_BINDER_H_
#define ENTRYPOINTS_BINDER_H_

#include <cstddef>
#include <vector>

#include "entrypoints/row.h"

namespace entrypoints {

// How one C++ parameter takes part in a call.
enum class Role {
  kIn,      // the caller gives it
  kOut,     // the caller is given it
  kCount,   // the size of the array in front of it
  kHidden,  // neither: what nothing is read from or written to
};

struct Bound {
  Parameter parameter;
  Role role;
};

// Hands the names of a row to the parameters of a function, in order. Throws std::logic_error for a
// row that does not fit.
class Binder {
 public:
  explicit Binder(std::vector<Parameter>& row) : row_(row) {}

  // The next name. The type says which direction it can have, whether it is an array, and may
  // give it a kind, which the row then keeps.
  enum class Direction { kIn, kOut, kEither };
  Bound take(Direction direction, bool array, const char* kind = nullptr);
  // Whether the next name is that of an array.
  bool array_next() const { return next_ < row_.size() && row_[next_].array; }
  // Notes that a pointer to an array was bound: its count follows.
  void expect_count() { count_due_ = true; }
  bool count_due() const { return count_due_; }
  Bound take_count();
  void finish() const;  // throws when a name is left

 private:
  std::vector<Parameter>& row_;
  std::size_t next_ = 0;
  bool count_due_ = false;
};

}  // namespace entrypoints

#endif  // ENTRYPOINTS_BINDER_H_
