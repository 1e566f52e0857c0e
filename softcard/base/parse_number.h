// SPDX-License-Identifier: Apache-2.0
//
// Reads numbers and addresses out of text, strictly: the whole text or nothing.
#ifndef SOFTCARD_BASE_PARSE_NUMBER_H_
#define SOFTCARD_BASE_PARSE_NUMBER_H_

#include <charconv>
#include <string_view>

#include "softcard/base/net_types.h"

namespace softcard {

// Reads a decimal number from `lowest` to `highest`; false, and `number` untouched, for anything
// else.
template <class Number>
bool parse_number(std::string_view text, Number lowest, Number highest, Number& number) {
  Number value{};
  const char* const end = text.data() + text.size();
  const auto [stop, failure] = std::from_chars(text.data(), end, value);
  if (failure != std::errc() || stop != end || value < lowest || value > highest) return false;
  number = value;
  return true;
}

// Reads an address of the form 02:00:5e:00:10:01; false, and `mac` untouched, for anything else.
inline bool parse_mac(std::string_view text, MacAddress& mac) {
  if (text.size() != 17) return false;
  MacAddress read;
  for (std::size_t i = 0; i < read.bytes.size(); ++i) {
    const char* const digits = text.data() + 3 * i;
    const auto [stop, failure] = std::from_chars(digits, digits + 2, read.bytes[i], 16);
    if (failure != std::errc() || stop != digits + 2 || (i < 5 && digits[2] != ':')) return false;
  }
  mac = read;
  return true;
}

}  // namespace softcard

#endif  // SOFTCARD_BASE_PARSE_NUMBER_H_
