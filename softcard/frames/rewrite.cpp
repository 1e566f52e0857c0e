// SPDX-License-Identifier: Apache-2.0

#include "softcard/frames/rewrite.h"

#include "softcard/frames/checksum.h"
#include "softcard/frames/wire.h"

namespace softcard {

namespace {

constexpr std::size_t kAddressesBytes = 12;

// The transport checksum field; null when there is none in this frame.
std::uint8_t* l4_checksum(Frame& frame, const Headers& headers) {
  switch (headers.l4) {
    case Layer4::tcp:
      return frame.data() + headers.l4_offset + 16;
    case Layer4::udp:
      return frame.data() + headers.l4_offset + 6;
    case Layer4::none:
    case Layer4::icmp:
      break;
  }
  return nullptr;
}

// Lets the transport checksum follow a change under it. While the checksum is partial its field
// holds the plain sum over the pseudo header, and what is outside of that is summed up later.
void follow_l4(Frame& frame, const Headers& headers, std::uint64_t before, std::uint64_t after,
               bool pseudo_header) {
  std::uint8_t* field = l4_checksum(frame, headers);
  if (field == nullptr) return;
  const std::uint16_t old = load16(field);
  if (frame.offload.checksum_partial) {
    if (!pseudo_header) return;
    store16(field, static_cast<std::uint16_t>(
                       ~update_checksum(static_cast<std::uint16_t>(~old), before, after)));
    return;
  }
  // A UDP checksum of 0 says that there is none.
  if (headers.l4 == Layer4::udp && old == 0) return;
  const std::uint16_t now = update_checksum(old, before, after);
  store16(field, headers.l4 == Layer4::udp && now == 0 ? std::uint16_t{0xFFFF} : now);
}

void follow_ipv4(std::uint8_t* header, std::uint64_t before, std::uint64_t after) {
  store16(header + 10, update_checksum(load16(header + 10), before, after));
}

void set_ipv4(Frame& frame, const Headers& headers, std::size_t offset, Ipv4 ip) {
  std::uint8_t* header = frame.data() + headers.l3_offset;
  const Ipv4 before = load32(header + offset);
  store32(header + offset, ip);
  follow_ipv4(header, before, ip);
  follow_l4(frame, headers, before, ip, true);
}

void set_l4_port(Frame& frame, const Headers& headers, std::size_t offset, std::uint16_t port) {
  std::uint8_t* at = frame.data() + headers.l4_offset + offset;
  const std::uint16_t before = load16(at);
  store16(at, port);
  follow_l4(frame, headers, before, port, false);
}

void shift(Headers& headers, int bytes) {
  if (headers.l3_offset != 0) {
    headers.l3_offset = static_cast<std::uint16_t>(headers.l3_offset + bytes);
  }
  if (headers.l4_offset != 0) {
    headers.l4_offset = static_cast<std::uint16_t>(headers.l4_offset + bytes);
  }
}

}  // namespace

// ---- VLAN tags ----------------------------------------------------------------------------------

void push_tag(Frame& frame, std::uint16_t control) {
  frame.insert(kAddressesBytes, kTagBytes);
  store16(frame.data() + kAddressesBytes, kTypeCustomerTag);
  write_tag(frame, control);
}

void write_tag(Frame& frame, std::uint16_t control) {
  store16(frame.data() + kAddressesBytes + 2, control);
}

void strip_tag(Frame& frame) { frame.erase(kAddressesBytes, kTagBytes); }

void set_tag(Frame& frame, Headers& headers, std::uint16_t control) {
  if (headers.tags != 0) {
    write_tag(frame, control);
  } else {
    if (frame.headroom() < kTagBytes) return;
    push_tag(frame, control);
    headers.tag_type = kTypeCustomerTag;
    headers.tags = 1;
    shift(headers, kTagBytes);
  }
  headers.tag_control = control;
}

void pop_tag(Frame& frame, Headers& headers) {
  if (headers.tags == 0) return;
  strip_tag(frame);
  --headers.tags;
  const std::uint8_t* type = frame.data() + kAddressesBytes;
  headers.tag_type = headers.tags == 0 ? std::uint16_t{0} : load16(type);
  headers.tag_control = headers.tags == 0 ? std::uint16_t{0} : load16(type + 2);
  shift(headers, -static_cast<int>(kTagBytes));
}

// ---- Addresses and fields -----------------------------------------------------------------------

void set_source_mac(Frame& frame, Headers& headers, std::uint64_t mac) {
  store48(frame.data() + 6, mac);
  headers.source = mac;
}

void set_destination_mac(Frame& frame, Headers& headers, std::uint64_t mac) {
  store48(frame.data(), mac);
  headers.destination = mac;
}

void set_ipv4_source(Frame& frame, Headers& headers, Ipv4 ip) {
  if (headers.l3 != Layer3::ipv4) return;
  set_ipv4(frame, headers, 12, ip);
  headers.ipv4_source = ip;
}

void set_ipv4_destination(Frame& frame, Headers& headers, Ipv4 ip) {
  if (headers.l3 != Layer3::ipv4) return;
  set_ipv4(frame, headers, 16, ip);
  headers.ipv4_destination = ip;
}

void set_tos(Frame& frame, Headers& headers, std::uint8_t tos) {
  std::uint8_t* header = frame.data() + headers.l3_offset;
  if (headers.l3 == Layer3::ipv4) {
    const std::uint16_t before = load16(header);
    header[1] = tos;
    follow_ipv4(header, before, load16(header));
  } else if (headers.l3 == Layer3::ipv6) {
    header[0] = static_cast<std::uint8_t>(0x60 | tos >> 4);
    header[1] = static_cast<std::uint8_t>((header[1] & 0x0F) | (tos & 0x0F) << 4);
  } else {
    return;
  }
  headers.tos = tos;
}

void decrement_ipv4_ttl(std::uint8_t* header) {
  const std::uint16_t before = load16(header + 8);
  --header[8];
  follow_ipv4(header, before, load16(header + 8));
}

void decrement_ttl(Frame& frame, Headers& headers) {
  std::uint8_t* header = frame.data() + headers.l3_offset;
  if (headers.l3 == Layer3::ipv4) {
    decrement_ipv4_ttl(header);
  } else if (headers.l3 == Layer3::ipv6) {
    --header[7];
  } else {
    return;
  }
  --headers.ttl;
}

void set_l4_source(Frame& frame, Headers& headers, std::uint16_t port) {
  if (!headers.has_ports()) return;
  set_l4_port(frame, headers, 0, port);
  headers.l4_source = port;
}

void set_l4_destination(Frame& frame, Headers& headers, std::uint16_t port) {
  if (!headers.has_ports()) return;
  set_l4_port(frame, headers, 2, port);
  headers.l4_destination = port;
}

}  // namespace softcard
