// SPDX-License-Identifier: Apache-2.0

#include "softcard/base/text.h"

#include <arpa/inet.h>

#include <utility>

namespace softcard {
namespace {

constexpr char kDigits[] = "0123456789abcdef";

void append_byte(std::string& text, std::uint8_t byte) {
  text += kDigits[byte >> 4];
  text += kDigits[byte & 0xF];
}

// As inet_pton(), which would take what stands in front of a null character.
bool read_address(int family, std::string_view text, void* address) {
  return text.find('\0') == std::string_view::npos &&
         inet_pton(family, std::string(text).c_str(), address) == 1;
}

}  // namespace

// ---- Numbers ------------------------------------------------------------------------------------

std::string hex_text(std::uint64_t number) {
  unsigned digits = 1;
  while (digits < 16 && number >> 4 * digits != 0) ++digits;
  std::string text = "0x";
  while (digits-- != 0) text += kDigits[number >> 4 * digits & 0xF];
  return text;
}

bool parse_bytes(std::string_view text, std::vector<std::uint8_t>& bytes) {
  if (text.size() % 2 != 0) return false;
  std::vector<std::uint8_t> read(text.size() / 2);
  for (std::size_t i = 0; i < read.size(); ++i) {
    if (!detail::parse_digits<std::uint8_t>(text.substr(2 * i, 2), 16, 0, 255, read[i])) {
      return false;
    }
  }
  bytes = std::move(read);
  return true;
}

std::string bytes_text(const std::uint8_t* data, std::size_t bytes, std::size_t group) {
  std::string text;
  for (std::size_t i = 0; i < bytes; ++i) {
    if (group != 0 && i != 0 && i % group == 0) text += ':';
    append_byte(text, data[i]);
  }
  return text;
}

// ---- Addresses ----------------------------------------------------------------------------------

bool parse_mac(std::string_view text, MacAddress& mac) {
  MacAddress read;
  const std::size_t first_end = text.find_first_of(":-");
  if (first_end == std::string_view::npos) return false;
  const char separator = text[first_end];
  for (std::size_t i = 0; i < read.bytes.size(); ++i) {
    const std::size_t end = text.find(separator);
    const bool last = i + 1 == read.bytes.size();
    const std::string_view part = text.substr(0, end);
    if (part.size() > 2 || (end == std::string_view::npos) != last ||
        !detail::parse_digits<std::uint8_t>(part, 16, 0, 255, read.bytes[i])) {
      return false;
    }
    if (!last) text.remove_prefix(end + 1);
  }
  mac = read;
  return true;
}

std::string mac_text(const MacAddress& mac) {
  return bytes_text(mac.bytes.data(), mac.bytes.size(), 1);
}

bool parse_ipv4(std::string_view text, Ipv4& ip) {
  in_addr address{};
  if (!read_address(AF_INET, text, &address)) return false;
  ip = ntohl(address.s_addr);
  return true;
}

std::string ipv4_text(Ipv4 ip) {
  return std::to_string(ip >> 24) + '.' + std::to_string(ip >> 16 & 255) + '.' +
         std::to_string(ip >> 8 & 255) + '.' + std::to_string(ip & 255);
}

bool parse_ipv6(std::string_view text, Ipv6Address& ip) {
  Ipv6Address read;
  if (!read_address(AF_INET6, text, read.bytes.data())) return false;
  ip = read;
  return true;
}

std::string ipv6_text(const Ipv6Address& ip) {
  char text[INET6_ADDRSTRLEN] = "";
  inet_ntop(AF_INET6, ip.bytes.data(), text, sizeof text);
  return text;
}

}  // namespace softcard
