// SPDX-License-Identifier: Apache-2.0
//
// Values as they stand in messages between a process and the card's: numbers of 8, 16, 32 and 64
// bits, the highest byte first, and bytes with their count in front. Nothing depends on the
// machine.
#ifndef REMOTE_WIRE_H_
#define REMOTE_WIRE_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace vorn::remote {

using Bytes = std::vector<std::uint8_t>;

// Appends to a message.
class Writer {
 public:
  explicit Writer(Bytes& bytes) : bytes_(bytes) {}

  // An unsigned number of its type's width.
  template <class Number>
  void number(Number value) {
    static_assert(std::is_unsigned_v<Number> && !std::is_same_v<Number, bool>);
    std::uint8_t bytes[sizeof(Number)];
    for (std::size_t i = 0; i < sizeof(Number); ++i) {
      bytes[i] = static_cast<std::uint8_t>(value >> (8 * (sizeof(Number) - 1 - i)));
    }
    raw(bytes, sizeof bytes);
  }
  void u8(unsigned value) { number(static_cast<std::uint8_t>(value)); }
  void u32(std::uint32_t value) { number(value); }
  void u64(std::uint64_t value) { number(value); }

  void raw(const void* data, std::size_t count) {
    const auto* const from = static_cast<const std::uint8_t*>(data);
    bytes_.insert(bytes_.end(), from, from + count);
  }
  // A count of 32 bits and so many bytes.
  void text(std::string_view words) {
    u32(static_cast<std::uint32_t>(words.size()));
    raw(words.data(), words.size());
  }

  std::size_t size() const { return bytes_.size(); }
  Bytes& bytes() { return bytes_; }

 private:
  Bytes& bytes_;
};

// Reads a message, which may hold anything: what goes beyond its end gives zeros and makes good()
// false for ever.
class Reader {
 public:
  Reader() = default;
  Reader(const std::uint8_t* data, std::size_t count) : at_(data), left_(count) {}

  template <class Number>
  Number number() {
    static_assert(std::is_unsigned_v<Number> && !std::is_same_v<Number, bool>);
    const std::uint8_t* const from = take(sizeof(Number));
    Number value = 0;
    if (from == nullptr) return value;
    for (std::size_t i = 0; i < sizeof(Number); ++i) {
      value = static_cast<Number>(static_cast<std::uint64_t>(value) << 8 | from[i]);
    }
    return value;
  }
  std::uint8_t u8() { return number<std::uint8_t>(); }
  std::uint32_t u32() { return number<std::uint32_t>(); }
  std::uint64_t u64() { return number<std::uint64_t>(); }

  void raw(void* data, std::size_t count) {
    const std::uint8_t* const from = take(count);
    if (from != nullptr) std::copy_n(from, count, static_cast<std::uint8_t*>(data));
  }
  // The bytes of a text, inside the message.
  std::string_view text() {
    const std::size_t count = u32();
    const std::uint8_t* const from = take(count);
    return from == nullptr ? std::string_view()
                           : std::string_view(reinterpret_cast<const char*>(from), count);
  }
  // A count of items that take at least `least_bytes` each: no more than the rest can hold.
  std::size_t count(std::size_t least_bytes) {
    const std::size_t items = u32();
    if (items <= left_ / least_bytes) return items;
    bad_ = true;
    return 0;
  }

  bool good() const { return !bad_; }
  // Whether the message was read whole and had nothing behind.
  bool done() const { return !bad_ && left_ == 0; }

 private:
  const std::uint8_t* take(std::size_t count) {
    if (bad_ || count > left_) {
      bad_ = true;
      return nullptr;
    }
    const std::uint8_t* const from = at_;
    at_ += count;
    left_ -= count;
    return from;
  }

  const std::uint8_t* at_ = nullptr;
  std::size_t left_ = 0;
  bool bad_ = false;
};

}  // namespace vorn::remote

#endif  // REMOTE_WIRE_H_
