// SPDX-License-Identifier: Apache-2.0
//
// The counters behind every ref_ptr.

#include <cstdio>

#include "libxorp/ref_ptr.hh"
#include "softcard/eventloop/fatal.h"

namespace {

const int32_t kEndOfList = -1;

// A free slot holds its successor on the free list below zero, where no count is. The mapping is
// its own inverse.
int32_t link(int32_t index) { return -2 - index; }

}  // namespace

ref_counter_pool::ref_counter_pool() : _free_index(kEndOfList), _balance(0) {}

ref_counter_pool& ref_counter_pool::instance() {
  // Never destroyed: static ref_ptrs may go after every other static object.
  static ref_counter_pool* const pool = new ref_counter_pool;
  return *pool;
}

int32_t ref_counter_pool::new_counter() {
  if (_free_index == kEndOfList) {
    _counters.push_back(link(kEndOfList));
    _free_index = static_cast<int32_t>(_counters.size()) - 1;
  }
  const int32_t index = _free_index;
  int32_t& counter = _counters[static_cast<size_t>(index)];
  _free_index = link(counter);
  counter = 1;
  ++_balance;
  return index;
}

int32_t ref_counter_pool::incr_counter(int32_t index) {
  return ++_counters[static_cast<size_t>(index)];
}

int32_t ref_counter_pool::decr_counter(int32_t index) {
  const int32_t left = --_counters[static_cast<size_t>(index)];
  if (left == 0) recycle(index);
  return left;
}

int32_t ref_counter_pool::count(int32_t index) { return _counters[static_cast<size_t>(index)]; }

void ref_counter_pool::recycle(int32_t index) {
  _counters[static_cast<size_t>(index)] = link(_free_index);
  _free_index = index;
  --_balance;
}

bool ref_counter_pool::on_free_list(int32_t index) {
  return _counters[static_cast<size_t>(index)] < 0;
}

void ref_counter_pool::check() {
  int32_t free_slots = 0;
  for (int32_t i = _free_index; i != kEndOfList; i = link(_counters[static_cast<size_t>(i)])) {
    softcard::require(on_free_list(i), "a counter in use is on the free list");
    ++free_slots;
  }
  softcard::require(free_slots + _balance == static_cast<int32_t>(_counters.size()),
                    "a counter is lost");
}

void ref_counter_pool::dump() {
  for (size_t i = 0; i < _counters.size(); ++i) {
    std::printf("counter %zu: %s %d\n", i, _counters[i] < 0 ? "free, next" : "count",
                static_cast<int>(_counters[i] < 0 ? link(_counters[i]) : _counters[i]));
  }
}
