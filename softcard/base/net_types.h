// SPDX-License-Identifier: Apache-2.0
//
// The small values that every table of the software line card and its pipeline share: addresses,
// port numbers and where a frame goes. They are plain values in host byte order, never laid over
// the bytes of a frame, so they mean the same on every target.
#ifndef SOFTCARD_BASE_NET_TYPES_H_
#define SOFTCARD_BASE_NET_TYPES_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace softcard {

// A physical port of the card, counted from 0 in the order of the card description.
using PortIndex = std::uint16_t;

// An IPv4 address as a number: 192.0.2.1 is 0xC0000201.
using Ipv4 = std::uint32_t;

// An Ethernet address in the order of its bytes on the wire.
struct MacAddress {
  std::array<std::uint8_t, 6> bytes{};

  // Reads six bytes at `wire`.
  static MacAddress from_bytes(const std::uint8_t* wire) {
    MacAddress mac;
    std::memcpy(mac.bytes.data(), wire, mac.bytes.size());
    return mac;
  }

  // Takes the low 48 bits of `number`; the first byte on the wire is the most significant.
  static constexpr MacAddress from_number(std::uint64_t number) {
    MacAddress mac{};
    mac.bytes = {static_cast<std::uint8_t>(number >> 40), static_cast<std::uint8_t>(number >> 32),
                 static_cast<std::uint8_t>(number >> 24), static_cast<std::uint8_t>(number >> 16),
                 static_cast<std::uint8_t>(number >> 8),  static_cast<std::uint8_t>(number)};
    return mac;
  }

  // The address as a number below 2^48; the first byte on the wire is the most significant.
  constexpr std::uint64_t to_number() const {
    return std::uint64_t{bytes[0]} << 40 | std::uint64_t{bytes[1]} << 32 |
           std::uint64_t{bytes[2]} << 24 | std::uint64_t{bytes[3]} << 16 |
           std::uint64_t{bytes[4]} << 8 | std::uint64_t{bytes[5]};
  }

  // True for multicast and broadcast: the group bit is set.
  constexpr bool is_group() const { return (bytes[0] & 1) != 0; }

  friend bool operator==(const MacAddress& a, const MacAddress& b) { return a.bytes == b.bytes; }
  friend bool operator!=(const MacAddress& a, const MacAddress& b) { return a.bytes != b.bytes; }
  friend bool operator<(const MacAddress& a, const MacAddress& b) { return a.bytes < b.bytes; }
};

// An IPv6 address in the order of its bytes on the wire.
struct Ipv6Address {
  std::array<std::uint8_t, 16> bytes{};

  // Reads sixteen bytes at `wire`.
  static Ipv6Address from_bytes(const std::uint8_t* wire) {
    Ipv6Address ip;
    std::memcpy(ip.bytes.data(), wire, ip.bytes.size());
    return ip;
  }

  friend bool operator==(const Ipv6Address& a, const Ipv6Address& b) { return a.bytes == b.bytes; }
  friend bool operator!=(const Ipv6Address& a, const Ipv6Address& b) { return a.bytes != b.bytes; }
  friend bool operator<(const Ipv6Address& a, const Ipv6Address& b) { return a.bytes < b.bytes; }
};

// Where an entry of a table sends a frame.
enum class DestinationKind : std::uint8_t {
  none,  // nowhere known
  port,  // a physical port; the number is its PortIndex
  lag,   // a LAG; the number is its id
  cpu,   // the control plane; the number is 0
  drop,  // discard; the number is 0
};

// A destination: its kind and, for a port or a LAG, which one.
struct Destination {
  DestinationKind kind = DestinationKind::none;
  std::uint16_t number = 0;

  static constexpr Destination none() { return {DestinationKind::none, 0}; }
  static constexpr Destination port(PortIndex index) { return {DestinationKind::port, index}; }
  static constexpr Destination lag(std::uint16_t id) { return {DestinationKind::lag, id}; }
  static constexpr Destination cpu() { return {DestinationKind::cpu, 0}; }
  static constexpr Destination drop() { return {DestinationKind::drop, 0}; }

  constexpr bool is_port() const { return kind == DestinationKind::port; }
  constexpr bool is_lag() const { return kind == DestinationKind::lag; }

  friend constexpr bool operator==(Destination a, Destination b) {
    return a.kind == b.kind && a.number == b.number;
  }
  friend constexpr bool operator!=(Destination a, Destination b) { return !(a == b); }
  friend constexpr bool operator<(Destination a, Destination b) {
    return a.kind != b.kind ? a.kind < b.kind : a.number < b.number;
  }

  constexpr Destination() = default;
  constexpr Destination(DestinationKind destination_kind, std::uint16_t destination_number)
      : kind(destination_kind), number(destination_number) {}
};

}  // namespace softcard

#endif  // SOFTCARD_BASE_NET_TYPES_H_
