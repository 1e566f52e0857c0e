// SPDX-License-Identifier: Apache-2.0

#include "softcard/frames/frame.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace softcard {

namespace {

constexpr std::size_t kLine = alignof(Frame);

constexpr std::size_t in_lines(std::size_t bytes) { return (bytes + kLine - 1) / kLine * kLine; }

}  // namespace

void Frame::insert(std::size_t at, std::size_t bytes) {
  begin_ -= static_cast<std::uint32_t>(bytes);
  size_ += static_cast<std::uint32_t>(bytes);
  std::memmove(data(), data() + bytes, at);
  if (offload.pending()) {
    offload.checksum_start = static_cast<std::uint16_t>(offload.checksum_start + bytes);
  }
}

void Frame::erase(std::size_t at, std::size_t bytes) {
  std::memmove(data() + bytes, data(), at);
  begin_ += static_cast<std::uint32_t>(bytes);
  size_ -= static_cast<std::uint32_t>(bytes);
  if (offload.pending()) {
    offload.checksum_start = static_cast<std::uint16_t>(offload.checksum_start - bytes);
  }
}

FramePool::FramePool(std::size_t small_frames, std::size_t large_frames)
    : small_{kSmallBytes, small_frames, 256}, large_{kLargeBytes, large_frames, 8} {
  // So that growing never fails for want of a place to keep the slab.
  blocks_.reserve(small_frames / small_.slab + large_frames / large_.slab + 2);
}

void FramePool::BlockDeleter::operator()(std::uint8_t* block) const {
  ::operator delete(block, std::align_val_t(kLine));
}

bool FramePool::stock(Shelf& shelf) {
  if (shelf.made == shelf.limit) return false;
  const std::size_t count = std::min(shelf.slab, shelf.limit - shelf.made);
  const std::size_t capacity = Frame::kHeadroom + shelf.frame_bytes;
  const std::size_t stride = in_lines(sizeof(Frame) + capacity);
  try {
    blocks_.emplace_back(
        static_cast<std::uint8_t*>(::operator new(count* stride, std::align_val_t(kLine))));
  } catch (const std::bad_alloc&) {
    return false;
  }
  std::uint8_t* place = blocks_.back().get();
  for (std::size_t i = 0; i < count; ++i, place += stride) {
    Frame* frame = new (place) Frame(*this, capacity);
    frame->next_free_ = shelf.free;
    shelf.free = frame;
  }
  shelf.made += count;
  return true;
}

}  // namespace softcard
