// SPDX-License-Identifier: Apache-2.0
#include "net.h"

#include <arpa/inet.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <initializer_list>
#include <iterator>

namespace agent {

std::uint32_t number(const Ip& ipv4) {
  std::uint32_t value = 0;
  for (unsigned i = 0; i < 4; ++i) value = value << 8 | ipv4.bytes[i];
  return value;
}

namespace {

Prefix made(Family family, std::initializer_list<std::uint8_t> bytes, unsigned length) {
  Prefix prefix;
  prefix.ip.family = family;
  std::copy(bytes.begin(), bytes.end(), prefix.ip.bytes.begin());
  prefix.length = length;
  return prefix;
}

}  // namespace

bool stays_on_link(const Prefix& prefix) {
  static const Prefix kOfLinks[] = {
      made(Family::v4, {0}, 8),
      made(Family::v4, {127}, 8),
      made(Family::v4, {169, 254}, 16),
      made(Family::v4, {224}, 4),
      made(Family::v4, {255, 255, 255, 255}, 32),
      made(Family::v6, {}, 127),
      made(Family::v6, {0xfe, 0x80}, 10),
      made(Family::v6, {0xff}, 8),
  };
  return std::any_of(std::begin(kOfLinks), std::end(kOfLinks),
                     [&](const Prefix& of_link) { return contains(of_link, prefix); });
}

Prefix prefix_of(Ip ip, unsigned length) {
  for (unsigned i = 0; i < ip.bytes.size(); ++i) {
    const unsigned kept = length > 8 * i ? length - 8 * i : 0;
    if (kept < 8) ip.bytes[i] = static_cast<std::uint8_t>(ip.bytes[i] & (0xff00U >> kept));
  }
  return {ip, length};
}

bool contains(const Prefix& prefix, const Ip& ip) {
  return prefix.ip.family == ip.family && prefix_of(ip, prefix.length).ip == prefix.ip;
}

std::string text(const Mac& mac) {
  char buffer[18];
  std::snprintf(buffer, sizeof buffer, "%02x:%02x:%02x:%02x:%02x:%02x", mac[0], mac[1], mac[2],
                mac[3], mac[4], mac[5]);
  return buffer;
}

std::string text(const Ip& ip) {
  char buffer[INET6_ADDRSTRLEN] = "";
  inet_ntop(ip.family == Family::v4 ? AF_INET : AF_INET6, ip.bytes.data(), buffer, sizeof buffer);
  return buffer;
}

std::string text(const Prefix& prefix) {
  return text(prefix.ip) + '/' + std::to_string(prefix.length);
}

bool parse(const std::string& text, Ip& ip) {
  Ip read;
  read.family = text.find(':') == std::string::npos ? Family::v4 : Family::v6;
  const int family = read.family == Family::v4 ? AF_INET : AF_INET6;
  if (inet_pton(family, text.c_str(), read.bytes.data()) != 1) return false;
  ip = read;
  return true;
}

bool parse(const std::string& text, Prefix& prefix) {
  const std::size_t slash = text.find('/');
  Ip ip;
  if (slash == std::string::npos || !parse(text.substr(0, slash), ip)) return false;
  unsigned length = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, failure] = std::from_chars(text.data() + slash + 1, end, length);
  if (failure != std::errc() || stop != end || length > bits(ip.family)) return false;
  if (prefix_of(ip, length).ip != ip) return false;
  prefix = {ip, length};
  return true;
}

}  // namespace agent
