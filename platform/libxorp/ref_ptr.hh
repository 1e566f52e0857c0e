// SPDX-License-Identifier: Apache-2.0
//
// ref_ptr: a counted pointer whose counts live in one pool of the process.

#ifndef LIBXORP_REF_PTR_HH_
#define LIBXORP_REF_PTR_HH_

#include "libxorp/xorp.h"

// The counters behind every ref_ptr of the process. ref_ptr calls these functions from whatever
// object file it is used in, so they belong to the binary interface.
class ref_counter_pool {
 public:
  // The one pool. Real libxorp constructs it among its own static objects: make no ref_ptr
  // before those.
  static ref_counter_pool& instance();

  // Takes a free slot, sets it to 1 and returns its index.
  int32_t new_counter();

  // Each returns the new count; a slot that reaches 0 becomes free. `index` is of a counter in
  // use.
  int32_t incr_counter(int32_t index);
  int32_t decr_counter(int32_t index);

  int32_t count(int32_t index);

  // Puts the slot on the free list, whatever its count.
  void recycle(int32_t index);
  bool on_free_list(int32_t index);

  // Aborts when the free list does not hold together.
  void check();

  // Prints every slot to standard output.
  void dump();

  // Counters in use.
  int32_t balance() const { return _balance; }

 private:
  ref_counter_pool();

  // A counter in use is 1 or more; a free slot refers to the next free one below zero.
  std::vector<int32_t> _counters;
  int32_t _free_index;  // the first free slot, or -1
  int32_t _balance;
};

// Shares one object: the last ref_ptr to go deletes it. Not for use from several threads. There
// is no conversion between ref_ptr<A> and ref_ptr<B>.
template <class T>
class ref_ptr {
 public:
  // Takes ownership of `p`, the result of new, or holds nothing.
  ref_ptr(T* p = 0)  // NOLINT: the result of new is meant to convert
      : _M_ptr(p), _M_index(0) {
    if (_M_ptr != 0) _M_index = ref_counter_pool::instance().new_counter();
  }

  // Joins the owners that share the counter `index`.
  ref_ptr(T* p, int32_t index) : _M_ptr(p), _M_index(index) {
    if (_M_ptr != 0) ref_counter_pool::instance().incr_counter(_M_index);
  }

  ref_ptr(const ref_ptr& other) : _M_ptr(other._M_ptr), _M_index(other._M_index) {
    if (_M_ptr != 0) ref_counter_pool::instance().incr_counter(_M_index);
  }

  ref_ptr& operator=(const ref_ptr& other) {
    if (this == &other) return *this;
    // The new share is taken first: dropping the old one may destroy `other`.
    T* const ptr = other._M_ptr;
    const int32_t index = other._M_index;
    if (ptr != 0) ref_counter_pool::instance().incr_counter(index);
    release();
    _M_ptr = ptr;
    _M_index = index;
    return *this;
  }

  ~ref_ptr() { release(); }

  T& operator*() const { return *_M_ptr; }
  T* operator->() const { return _M_ptr; }
  T* get() const { return _M_ptr; }

  bool operator==(const ref_ptr& other) const { return _M_ptr == other._M_ptr; }
  bool operator!=(const ref_ptr& other) const { return _M_ptr != other._M_ptr; }

  bool is_empty() const { return _M_ptr == 0; }
  bool is_only() const { return ref_counter_pool::instance().count(_M_index) == 1; }
  bool at_least(int32_t n) const { return ref_counter_pool::instance().count(_M_index) >= n; }

  // Both drop this share and leave the pointer null.
  void release() const {
    T* const ptr = _M_ptr;
    const int32_t index = _M_index;
    _M_ptr = 0;
    _M_index = 0;
    if (ptr != 0 && ref_counter_pool::instance().decr_counter(index) == 0) delete ptr;
  }
  void reset() const { release(); }

 protected:
  mutable T* _M_ptr;
  mutable int32_t _M_index;  // into the pool; meaningless while the pointer is null
};

#endif  // LIBXORP_REF_PTR_HH_
