// SPDX-License-Identifier: Apache-2.0
//
// Bit arithmetic that the tables share, and the hash function of their keys. All of it is plain
// integer arithmetic, so it gives the same on every target.
#ifndef SOFTCARD_BASE_HASH_H_
#define SOFTCARD_BASE_HASH_H_

#include <cstdint>

namespace softcard {

// Spreads the bits of `value` over the whole result; different values give different results.
constexpr std::uint64_t mix64(std::uint64_t value) {
  value ^= value >> 32;
  value *= 0x9E3779B97F4A7C15u;
  value ^= value >> 29;
  value *= 0xBF58476D1CE4E5B9u;
  return value ^ value >> 32;
}

// The hash function of a table. Addresses come from the network, and whoever knows the function can
// choose them so that they all collide; so each card draws one of 2^64 functions. Whatever keys are
// chosen without knowing the seed, two of them share one of n buckets with a chance of at most 2/n:
// the last multiplication is by a secret odd number, and the bucket comes from the upper bits.
class KeyedHash {
 public:
  // The function of a seed, the same at all times.
  explicit constexpr KeyedHash(std::uint64_t seed)
      : first_(mix64(seed + 0x9E3779B97F4A7C15u) | 1),
        second_(mix64(seed + 0x3C6EF372FE94F82Au) | 1) {}

  // The function of a seed that the system draws.
  static KeyedHash drawn();

  // Spreads the bits of `key` over the whole result, the upper ones best; different keys give
  // different results.
  constexpr std::uint64_t spread(std::uint64_t key) const {
    key ^= key >> 32;
    key *= first_;
    key ^= key >> 29;
    key *= second_;
    return key ^ key >> 32;
  }
  // The 32-bit hash of a key that fits 64 bits.
  constexpr std::uint32_t operator()(std::uint64_t key) const {
    return static_cast<std::uint32_t>(spread(key) >> 32);
  }

 private:
  std::uint64_t first_;
  std::uint64_t second_;
};

// The number of set bits; without a call, which the target and plain x86-64 would make.
constexpr unsigned count_bits(std::uint64_t bits) {
  bits -= bits >> 1 & 0x5555555555555555u;
  bits = (bits & 0x3333333333333333u) + (bits >> 2 & 0x3333333333333333u);
  bits = (bits + (bits >> 4)) & 0x0F0F0F0F0F0F0F0Fu;
  return static_cast<unsigned>(bits * 0x0101010101010101u >> 56);
}

constexpr unsigned count_bits(std::uint32_t bits) {
  bits -= bits >> 1 & 0x55555555u;
  bits = (bits & 0x33333333u) + (bits >> 2 & 0x33333333u);
  bits = (bits + (bits >> 4)) & 0x0F0F0F0Fu;
  return bits * 0x01010101u >> 24;
}

// The smallest n with 2^n >= value; value is at least 1.
constexpr unsigned ceil_log2(std::uint64_t value) {
  return value <= 1 ? 0 : 64 - static_cast<unsigned>(__builtin_clzll(value - 1));
}

// Starts to load the cache line at `address`; any address may be given.
inline void prefetch(const void* address) { __builtin_prefetch(address); }

}  // namespace softcard

#endif  // SOFTCARD_BASE_HASH_H_
