// SPDX-License-Identifier: Apache-2.0
//
// Bit arithmetic that the tables share.  All of it is plain integer arithmetic, so every table has
// the same order on every target.
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
