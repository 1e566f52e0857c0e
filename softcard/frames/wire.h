// SPDX-License-Identifier: Apache-2.0
//
// Numbers in network order, read and written byte by byte: at any address, on any processor.
#ifndef SOFTCARD_FRAMES_WIRE_H_
#define SOFTCARD_FRAMES_WIRE_H_

#include <cstdint>

namespace softcard {

inline std::uint16_t load16(const std::uint8_t* at) {
  return static_cast<std::uint16_t>(at[0] << 8 | at[1]);
}
inline std::uint32_t load32(const std::uint8_t* at) {
  return std::uint32_t{at[0]} << 24 | std::uint32_t{at[1]} << 16 | std::uint32_t{at[2]} << 8 |
         std::uint32_t{at[3]};
}
inline std::uint64_t load64(const std::uint8_t* at) {
  return std::uint64_t{load32(at)} << 32 | load32(at + 4);
}
// An Ethernet address as MacAddress::to_number() gives it.
inline std::uint64_t load48(const std::uint8_t* at) {
  return std::uint64_t{load32(at)} << 16 | load16(at + 4);
}

inline void store16(std::uint8_t* at, std::uint16_t value) {
  at[0] = static_cast<std::uint8_t>(value >> 8);
  at[1] = static_cast<std::uint8_t>(value);
}
inline void store32(std::uint8_t* at, std::uint32_t value) {
  store16(at, static_cast<std::uint16_t>(value >> 16));
  store16(at + 2, static_cast<std::uint16_t>(value));
}
// Takes the low 48 bits.
inline void store48(std::uint8_t* at, std::uint64_t value) {
  store32(at, static_cast<std::uint32_t>(value >> 16));
  store16(at + 4, static_cast<std::uint16_t>(value));
}

}  // namespace softcard

#endif  // SOFTCARD_FRAMES_WIRE_H_
