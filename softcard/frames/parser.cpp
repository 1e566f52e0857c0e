// SPDX-License-Identifier: Apache-2.0

#include "softcard/frames/parser.h"

#include "softcard/frames/wire.h"

namespace softcard {

namespace {

// Values of the IPv6 next header that stand for extension headers.
constexpr std::uint8_t kHopByHop = 0;
constexpr std::uint8_t kRouting = 43;
constexpr std::uint8_t kFragment = 44;
constexpr std::uint8_t kAuthentication = 51;
constexpr std::uint8_t kDestinationOptions = 60;
constexpr std::uint8_t kMobility = 135;
constexpr std::uint8_t kHostIdentity = 139;
constexpr std::uint8_t kShim6 = 140;

// Reads the transport header at `offset`; `end` is where the packet ends by its own length.
void parse_l4(const std::uint8_t* data, std::size_t offset, std::size_t end, Headers& headers) {
  if (offset >= end) return;
  headers.l4_offset = static_cast<std::uint16_t>(offset);
  const std::uint8_t* at = data + offset;
  const std::size_t rest = end - offset;
  switch (headers.ip_protocol) {
    case kProtocolTcp:
      if (rest < 20) return;
      headers.l4 = Layer4::tcp;
      break;
    case kProtocolUdp:
      if (rest < 8) return;
      headers.l4 = Layer4::udp;
      break;
    case kProtocolIcmp:
    case kProtocolIcmp6:
      if (rest < 4) return;
      headers.l4 = Layer4::icmp;
      headers.l4_source = at[0];
      headers.l4_destination = at[1];
      return;
    default:
      return;
  }
  headers.l4_source = load16(at);
  headers.l4_destination = load16(at + 2);
}

void parse_arp(const std::uint8_t* at, std::size_t rest, Headers& headers) {
  // Ethernet and IPv4, with addresses of 6 and 4 bytes.
  if (rest < 28 || load32(at) != 0x00010800 || load16(at + 4) != 0x0604) {
    headers.l3_damaged = true;
    return;
  }
  headers.l3 = Layer3::arp;
  headers.arp_operation = load16(at + 6);
  headers.ipv4_source = load32(at + 14);
  headers.ipv4_destination = load32(at + 24);
}

void parse_ipv4(const std::uint8_t* data, std::size_t offset, std::size_t bytes, Headers& headers) {
  const std::uint8_t* at = data + offset;
  const std::size_t rest = bytes - offset;
  const std::size_t header_bytes = rest < 20 ? 0 : (at[0] & 0xFu) * 4u;
  const std::size_t total_bytes = rest < 20 ? 0 : load16(at + 2);
  if (header_bytes < 20 || at[0] >> 4 != 4 || total_bytes < header_bytes || total_bytes > rest) {
    headers.l3_damaged = true;
    return;
  }
  headers.l3 = Layer3::ipv4;
  headers.l3_bytes = static_cast<std::uint32_t>(total_bytes);
  headers.options = header_bytes > 20;
  headers.tos = at[1];
  headers.ttl = at[8];
  headers.ip_protocol = at[9];
  headers.ipv4_source = load32(at + 12);
  headers.ipv4_destination = load32(at + 16);
  const unsigned fragment = load16(at + 6) & 0x3FFF;  // more fragments, and the offset
  headers.fragment = fragment != 0;
  if ((fragment & 0x1FFF) == 0) {
    parse_l4(data, offset + header_bytes, offset + total_bytes, headers);
  }
}

void parse_ipv6(const std::uint8_t* data, std::size_t offset, std::size_t bytes, Headers& headers) {
  const std::uint8_t* at = data + offset;
  const std::size_t rest = bytes - offset;
  const std::size_t total_bytes = rest < 40 ? 0 : std::size_t{40} + load16(at + 4);
  if (rest < 40 || at[0] >> 4 != 6 || total_bytes > rest) {
    headers.l3_damaged = true;
    return;
  }
  headers.l3 = Layer3::ipv6;
  headers.l3_bytes = static_cast<std::uint32_t>(total_bytes);
  headers.tos = static_cast<std::uint8_t>(load16(at) >> 4);
  headers.ttl = at[7];

  // Every extension header is 8 bytes long at least, so the walk comes to the packet's end.
  std::uint8_t next = at[6];
  headers.options = next == kHopByHop;
  std::size_t here = offset + 40;
  const std::size_t end = offset + total_bytes;
  for (;;) {
    headers.ip_protocol = next;
    std::size_t header_bytes = 0;
    switch (next) {
      case kHopByHop:
      case kRouting:
      case kDestinationOptions:
      case kMobility:
      case kHostIdentity:
      case kShim6:
        if (end - here < 8) return;
        header_bytes = (data[here + 1] + std::size_t{1}) * 8;
        break;
      case kAuthentication:
        if (end - here < 8) return;
        header_bytes = (data[here + 1] + std::size_t{2}) * 4;
        break;
      case kFragment:
        if (end - here < 8) return;
        header_bytes = 8;
        headers.fragment = (load16(data + here + 2) & 0xFFF9) != 0;
        if ((load16(data + here + 2) & 0xFFF8) != 0) {
          // Behind it lies the middle of something.
          headers.ip_protocol = data[here];
          return;
        }
        break;
      default:
        parse_l4(data, here, end, headers);
        return;
    }
    if (end - here < header_bytes) return;
    next = data[here];
    here += header_bytes;
  }
}

}  // namespace

FrameFault parse(const std::uint8_t* data, std::size_t bytes, Headers& headers) {
  if (bytes < kEthernetBytes) return FrameFault::runt;
  headers.destination = load48(data);
  headers.source = load48(data + 6);
  std::uint16_t type = load16(data + 12);
  std::size_t offset = kEthernetBytes;
  if (is_tag(type)) {
    headers.tag_type = type;
    if (bytes - offset < kTagBytes) return FrameFault::malformed;
    headers.tag_control = load16(data + offset);
    do {
      if (bytes - offset < kTagBytes) return FrameFault::malformed;
      type = load16(data + offset + 2);
      offset += kTagBytes;
      ++headers.tags;
    } while (is_tag(type) && headers.tags < UINT8_MAX);
  }
  headers.ether_type = type;
  headers.protocol = type;

  if (type < kFirstEtherType) {
    if (type > bytes - offset) return FrameFault::malformed;
    headers.format = FRAME_TYPE_LLC;
    headers.protocol = type < 3 ? std::uint16_t{0} : load16(data + offset);
    // SNAP with the organisation code of EtherTypes.
    if (type >= 8 && headers.protocol == 0xAAAA && load32(data + offset + 2) == 0x03000000) {
      headers.format = FRAME_TYPE_SNAP;
      headers.protocol = load16(data + offset + 6);
    }
    return FrameFault::none;
  }

  switch (type) {
    case kTypeIpv4:
      headers.l3_offset = static_cast<std::uint16_t>(offset);
      parse_ipv4(data, offset, bytes, headers);
      break;
    case kTypeIpv6:
      headers.l3_offset = static_cast<std::uint16_t>(offset);
      parse_ipv6(data, offset, bytes, headers);
      break;
    case kTypeArp:
      headers.l3_offset = static_cast<std::uint16_t>(offset);
      parse_arp(data + offset, bytes - offset, headers);
      break;
    default:
      break;
  }
  return FrameFault::none;
}

}  // namespace softcard
