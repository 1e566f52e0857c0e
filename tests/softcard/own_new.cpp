// SPDX-License-Identifier: Apache-2.0

#include "tests/softcard/own_new.h"

#include <cstdlib>
#include <new>

namespace {

void* allocate(std::size_t bytes, std::size_t alignment) {
  softcard::before_allocation();
  void* block = std::aligned_alloc(alignment, (bytes + alignment - 1) / alignment * alignment);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

}  // namespace

void* operator new(std::size_t bytes) { return allocate(bytes, 16); }
void* operator new(std::size_t bytes, std::align_val_t alignment) {
  return allocate(bytes, static_cast<std::size_t>(alignment));
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }
void operator delete(void* block, std::align_val_t) noexcept { std::free(block); }
void operator delete(void* block, std::size_t, std::align_val_t) noexcept { std::free(block); }
