// SPDX-License-Identifier: Apache-2.0
//
// A frame on its way through the card: its bytes and the little that travels beside them.
//
// Frames come out of a pool and go back to it, so a frame's way allocates nothing. In front of the
// bytes lies headroom: a VLAN tag is pushed by moving the two addresses, never the payload.
//
// A frame belongs to the pool of one card and must not outlive it; what leaves for another card is
// copied into a frame of that card's pool. A pool and its frames are used by one thread.
#ifndef SOFTCARD_FRAMES_FRAME_H_
#define SOFTCARD_FRAMES_FRAME_H_

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <vector>

#include "softcard/base/net_types.h"

namespace softcard {

class Frame;
class FramePool;

// Gives a frame back to its pool.
struct FrameReturner {
  void operator()(Frame* frame) const;
};
using FramePtr = std::unique_ptr<Frame, FrameReturner>;

// The ingress of a frame that the card itself made or that came from the control plane.
constexpr PortIndex kNoPort = UINT16_MAX;

// How a frame that is longer than the wire allows is to be cut when it leaves the host.
enum class Segmentation : std::uint8_t { none, tcp4, tcp6, udp };

// Work on the bytes that was left to whoever takes the frame off the card. Offsets count from
// the first byte of the frame and follow it when a tag is pushed or popped.
struct Offload {
  // The checksum field holds the sum over the pseudo header only.
  bool checksum_partial = false;
  Segmentation segmentation = Segmentation::none;
  std::uint16_t checksum_start = 0;   // first byte that the checksum covers
  std::uint16_t checksum_offset = 0;  // from checksum_start to the checksum field
  std::uint16_t segment_bytes = 0;    // payload bytes of each segment

  bool pending() const { return checksum_partial || segmentation != Segmentation::none; }
};

// A frame and its bytes stand in a block of whole cache lines, so that the bytes of a fresh frame
// begin on one.
class alignas(64) Frame {
 public:
  // Bytes that can be pushed in front of a fresh frame: VLAN tags, and a header that a cable's
  // kernel interface wants in front of the frame.
  static constexpr std::size_t kHeadroom = 64;

  Frame(const Frame&) = delete;
  Frame& operator=(const Frame&) = delete;

  std::uint8_t* data() { return storage() + begin_; }
  const std::uint8_t* data() const { return storage() + begin_; }
  std::size_t size() const { return size_; }

  std::size_t headroom() const { return begin_; }
  // The largest size that set_size() takes.
  std::size_t capacity() const { return capacity_ - begin_; }

  // Cuts or lengthens at the end. New bytes are whatever was there. REQUIRES: <= capacity().
  void set_size(std::size_t bytes) { size_ = static_cast<std::uint32_t>(bytes); }

  // Makes room for `bytes` new bytes behind the first `at` bytes, which move towards the front.
  // The new bytes are undefined. REQUIRES: bytes <= headroom(), at <= size().
  void insert(std::size_t at, std::size_t bytes);

  // Takes `bytes` bytes away from behind the first `at` bytes. REQUIRES: at + bytes <= size().
  void erase(std::size_t at, std::size_t bytes);

  // Puts the frame into its first state: empty, all headroom, no metadata.
  void reset();

  PortIndex ingress = kNoPort;
  // The VLAN and the 802.1p priority that the card put the frame into; 0 before classification.
  std::uint16_t vlan = 0;
  std::uint8_t priority = 0;
  Offload offload;

 private:
  friend class FramePool;

  Frame(FramePool& pool, std::size_t capacity)
      : pool_(&pool), capacity_(static_cast<std::uint32_t>(capacity)) {}

  // The bytes follow the object in the same block.
  std::uint8_t* storage() { return reinterpret_cast<std::uint8_t*>(this + 1); }
  const std::uint8_t* storage() const { return reinterpret_cast<const std::uint8_t*>(this + 1); }

  FramePool* pool_;
  Frame* next_free_ = nullptr;
  std::uint32_t capacity_;  // of the storage, headroom included
  std::uint32_t begin_ = kHeadroom;
  std::uint32_t size_ = 0;

  friend struct FrameReturner;
};

// Frames in two sizes: small ones for what fits a usual wire, large ones for jumbo frames and for
// frames that are still to be segmented. Memory grows in slabs up to a limit and is kept.
class FramePool {
 public:
  static constexpr std::size_t kSmallBytes = 2048;   // largest small frame
  static constexpr std::size_t kLargeBytes = 65600;  // largest frame of all
  static constexpr std::size_t kDefaultSmallFrames = 32768;
  static constexpr std::size_t kDefaultLargeFrames = 512;

  explicit FramePool(std::size_t small_frames = kDefaultSmallFrames,
                     std::size_t large_frames = kDefaultLargeFrames);
  FramePool(const FramePool&) = delete;
  FramePool& operator=(const FramePool&) = delete;

  // A fresh frame of `bytes` undefined bytes; null when it is too long, the pool is used up or no
  // memory is left.
  FramePtr make(std::size_t bytes) {
    if (bytes > kLargeBytes) return nullptr;
    Shelf& shelf = bytes <= kSmallBytes ? small_ : large_;
    if (shelf.free == nullptr && !stock(shelf)) return nullptr;
    Frame* frame = shelf.free;
    shelf.free = frame->next_free_;
    ++shelf.in_use;
    frame->set_size(bytes);
    return FramePtr(frame);
  }

  // A frame with a copy of `bytes` bytes at `data`; null as make().
  FramePtr make(const std::uint8_t* data, std::size_t bytes) {
    FramePtr frame = make(bytes);
    if (frame != nullptr && bytes != 0) std::memcpy(frame->data(), data, bytes);
    return frame;
  }

  // A copy with all metadata; null as make().
  FramePtr copy(const Frame& frame) {
    FramePtr copy = make(frame.data(), frame.size());
    if (copy != nullptr) {
      copy->ingress = frame.ingress;
      copy->vlan = frame.vlan;
      copy->priority = frame.priority;
      copy->offload = frame.offload;
    }
    return copy;
  }

  std::size_t in_use() const { return small_.in_use + large_.in_use; }

 private:
  friend struct FrameReturner;

  struct Shelf {
    std::size_t frame_bytes;
    std::size_t limit;  // most frames that are ever made
    std::size_t slab;   // how many are made at a time
    std::size_t made = 0;
    std::size_t in_use = 0;
    Frame* free = nullptr;

    Shelf(std::size_t bytes, std::size_t most, std::size_t at_a_time)
        : frame_bytes(bytes), limit(most), slab(at_a_time) {}
  };
  struct Block;
  struct BlockDeleter {
    void operator()(std::uint8_t* block) const;
  };

  // Makes more frames for `shelf`; false when it has reached its limit or no memory is left.
  bool stock(Shelf& shelf);
  void take_back(Frame* frame) {
    frame->reset();
    Shelf& shelf = frame->capacity_ <= kSmallBytes + Frame::kHeadroom ? small_ : large_;
    frame->next_free_ = shelf.free;
    shelf.free = frame;
    --shelf.in_use;
  }

  Shelf small_;
  Shelf large_;
  std::vector<std::unique_ptr<std::uint8_t, BlockDeleter>> blocks_;
};

inline void Frame::reset() {
  ingress = kNoPort;
  vlan = 0;
  priority = 0;
  offload = Offload();
  begin_ = kHeadroom;
  size_ = 0;
}

inline void FrameReturner::operator()(Frame* frame) const { frame->pool_->take_back(frame); }

}  // namespace softcard

#endif  // SOFTCARD_FRAMES_FRAME_H_
