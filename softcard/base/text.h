// SPDX-License-Identifier: Apache-2.0
//
// Numbers and addresses as text, the same in scripts, traces, frames and card descriptions.
//
// Conventions: reading is strict, the whole text or nothing; false leaves the result as it was.
// Every text that is printed here is read here, too.
#ifndef SOFTCARD_BASE_TEXT_H_
#define SOFTCARD_BASE_TEXT_H_

#include <charconv>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "softcard/base/net_types.h"

namespace softcard {

// ---- Numbers ------------------------------------------------------------------------------------

namespace detail {

template <class Number>
bool parse_digits(std::string_view digits, int base, Number lowest, Number highest,
                  Number& number) {
  Number value{};
  const char* const end = digits.data() + digits.size();
  const auto [stop, failure] = std::from_chars(digits.data(), end, value, base);
  if (failure != std::errc() || stop != end || value < lowest || value > highest) return false;
  number = value;
  return true;
}

}  // namespace detail

// Reads a decimal number from `lowest` to `highest`.
template <class Number>
bool parse_decimal(std::string_view text, Number lowest, Number highest, Number& number) {
  return detail::parse_digits(text, 10, lowest, highest, number);
}

// Reads a number from `lowest` to `highest`: decimal, or hexadecimal behind 0x.
template <class Number>
bool parse_number(std::string_view text, Number lowest, Number highest, Number& number) {
  if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
    return text[2] != '-' && detail::parse_digits(text.substr(2), 16, lowest, highest, number);
  }
  return parse_decimal(text, lowest, highest, number);
}

// 0x88b5
std::string hex_text(std::uint64_t number);

// Reads an even number of hexadecimal digits, two a byte.
bool parse_bytes(std::string_view text, std::vector<std::uint8_t>& bytes);
// The digits of parse_bytes(), with a colon in front of each further `group` bytes unless it is 0.
std::string bytes_text(const std::uint8_t* data, std::size_t bytes, std::size_t group = 0);

// ---- Addresses ----------------------------------------------------------------------------------

// Reads 02:00:5e:00:10:01. A part may have one digit, and all separators may be hyphens.
bool parse_mac(std::string_view text, MacAddress& mac);
std::string mac_text(const MacAddress& mac);

// Reads 192.0.2.1.
bool parse_ipv4(std::string_view text, Ipv4& ip);
std::string ipv4_text(Ipv4 ip);

// Reads 2001:db8::1, in any form of RFC 4291; printed is the shortest, that of RFC 5952.
bool parse_ipv6(std::string_view text, Ipv6Address& ip);
std::string ipv6_text(const Ipv6Address& ip);

}  // namespace softcard

#endif  // SOFTCARD_BASE_TEXT_H_
