// SPDX-License-Identifier: Apache-2.0
//
// Addresses as Linux and the card both know them, as bytes in network order.
#ifndef AGENT_NET_H_
#define AGENT_NET_H_

#include <array>
#include <cstdint>
#include <string>
#include <tuple>

namespace agent {

using Mac = std::array<std::uint8_t, 6>;

// The lowest bit of the first byte.
inline bool is_group(const Mac& mac) { return (mac[0] & 1) != 0; }

enum class Family : std::uint8_t { v4, v6 };

// The bits of an address of a family.
constexpr unsigned bits(Family family) { return family == Family::v4 ? 32 : 128; }

struct Ip {
  Family family = Family::v4;
  std::array<std::uint8_t, 16> bytes{};  // of IPv4 the first four, the rest is 0

  bool bit(unsigned number) const { return (bytes[number / 8] >> (7 - number % 8) & 1) != 0; }
  void set_bit(unsigned number) {
    bytes[number / 8] = static_cast<std::uint8_t>(bytes[number / 8] | 0x80U >> number % 8);
  }
};
inline bool operator==(const Ip& a, const Ip& b) {
  return a.family == b.family && a.bytes == b.bytes;
}
inline bool operator!=(const Ip& a, const Ip& b) { return !(a == b); }
inline bool operator<(const Ip& a, const Ip& b) {
  return std::tie(a.family, a.bytes) < std::tie(b.family, b.bytes);
}

// 192.0.2.1 as the number 0xc0000201.
std::uint32_t number(const Ip& ipv4);

// The addresses that begin with `length` bits of `ip`, whose other bits are 0.
struct Prefix {
  Ip ip;
  unsigned length = 0;
};
inline bool operator==(const Prefix& a, const Prefix& b) {
  return a.length == b.length && a.ip == b.ip;
}
// Each prefix stands in front of those within it.
inline bool operator<(const Prefix& a, const Prefix& b) {
  return std::tie(a.ip, a.length) < std::tie(b.ip, b.length);
}

// The prefix of `length` bits that an address lies in.
Prefix prefix_of(Ip ip, unsigned length);
bool contains(const Prefix& prefix, const Ip& ip);
inline bool contains(const Prefix& outer, const Prefix& inner) {
  return outer.length <= inner.length && contains(outer, inner.ip);
}

// Whether no router passes on packets to any of the addresses: unspecified, loopback, link-local
// and group addresses.
bool stays_on_link(const Prefix& prefix);
inline bool stays_on_link(const Ip& ip) { return stays_on_link({ip, bits(ip.family)}); }

std::string text(const Mac& mac);
std::string text(const Ip& ip);
std::string text(const Prefix& prefix);

// Reads 192.0.2.1 or 2001:db8::1, and 192.0.2.0/24, whose further bits must be 0. False, and the
// result untouched, for anything else.
bool parse(const std::string& text, Ip& ip);
bool parse(const std::string& text, Prefix& prefix);

}  // namespace agent

#endif  // AGENT_NET_H_
