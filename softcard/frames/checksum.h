// SPDX-License-Identifier: Apache-2.0
//
// The Internet checksum: over bytes, and brought up to date when a 16-bit word under it changes.
#ifndef SOFTCARD_FRAMES_CHECKSUM_H_
#define SOFTCARD_FRAMES_CHECKSUM_H_

#include <cstddef>
#include <cstdint>

#include "softcard/frames/wire.h"

namespace softcard {

// The one's complement sum of 16-bit words in network order, an odd last byte filled up with 0,
// added to `sum`. The result is folded by fold().
inline std::uint64_t sum_words(const std::uint8_t* data, std::size_t bytes, std::uint64_t sum = 0) {
  for (; bytes >= 4; data += 4, bytes -= 4) sum += load32(data);
  if (bytes >= 2) {
    sum += load16(data);
    data += 2;
    bytes -= 2;
  }
  if (bytes != 0) sum += static_cast<unsigned>(data[0]) << 8;
  return sum;
}

// Folds a sum of words (or of pairs of words) to one word.
inline std::uint16_t fold(std::uint64_t sum) {
  sum = (sum & 0xFFFFFFFF) + (sum >> 32);
  sum = (sum & 0xFFFF) + (sum >> 16);
  sum = (sum & 0xFFFF) + (sum >> 16);
  sum = (sum & 0xFFFF) + (sum >> 16);
  return static_cast<std::uint16_t>(sum);
}

// The checksum of bytes, with `sum` for what precedes them.
inline std::uint16_t checksum(const std::uint8_t* data, std::size_t bytes, std::uint64_t sum = 0) {
  return static_cast<std::uint16_t>(~fold(sum_words(data, bytes, sum)));
}

// The checksum after the words under it changed from a sum of `before` to one of `after`. Sums of
// any number of words will do.
inline std::uint16_t update_checksum(std::uint16_t old, std::uint64_t before, std::uint64_t after) {
  const std::uint64_t kept = static_cast<std::uint16_t>(~old);
  const std::uint64_t removed = static_cast<std::uint16_t>(~fold(before));
  return static_cast<std::uint16_t>(~fold(kept + removed + fold(after)));
}

}  // namespace softcard

#endif  // SOFTCARD_FRAMES_CHECKSUM_H_
