// SPDX-License-Identifier: Apache-2.0
//
// Changes to a frame on its way: VLAN tags, addresses, ports, TTL. Checksums follow by the
// difference alone, so one that was wrong before stays wrong; `headers` follows as well. What asks
// for a header that the frame does not have changes nothing.
#ifndef SOFTCARD_FRAMES_REWRITE_H_
#define SOFTCARD_FRAMES_REWRITE_H_

#include <cstdint>

#include "softcard/base/net_types.h"
#include "softcard/frames/frame.h"
#include "softcard/frames/parser.h"

namespace softcard {

// ---- VLAN tags ----------------------------------------------------------------------------------

// The tag's 16 bits of priority (0 to 7), drop eligibility and VLAN.
constexpr std::uint16_t tag_control(unsigned vlan, unsigned priority, bool drop_eligible) {
  return static_cast<std::uint16_t>(priority << 13 | (drop_eligible ? 0x1000u : 0u) | vlan);
}

// On the bytes alone. REQUIRES: headroom for a push, a tag for the others.
void push_tag(Frame& frame, std::uint16_t control);
void write_tag(Frame& frame, std::uint16_t control);  // its type stays
void strip_tag(Frame& frame);

// Gives the frame an outermost 802.1Q tag, or sets the one that it has, whose type stays.
void set_tag(Frame& frame, Headers& headers, std::uint16_t control);

// Takes the outermost tag away.
void pop_tag(Frame& frame, Headers& headers);

// ---- Addresses and fields -----------------------------------------------------------------------

void set_source_mac(Frame& frame, Headers& headers, std::uint64_t mac);
void set_destination_mac(Frame& frame, Headers& headers, std::uint64_t mac);

// IPv4 only.
void set_ipv4_source(Frame& frame, Headers& headers, Ipv4 ip);
void set_ipv4_destination(Frame& frame, Headers& headers, Ipv4 ip);

// IPv4 TOS or IPv6 traffic class.
void set_tos(Frame& frame, Headers& headers, std::uint8_t tos);

// The TTL of an IPv4 header alone, down by one. REQUIRES: it is above 0.
void decrement_ipv4_ttl(std::uint8_t* header);

// IPv4 TTL or IPv6 hop limit, down by one. REQUIRES: it is above 0.
void decrement_ttl(Frame& frame, Headers& headers);

// TCP and UDP only.
void set_l4_source(Frame& frame, Headers& headers, std::uint16_t port);
void set_l4_destination(Frame& frame, Headers& headers, std::uint16_t port);

}  // namespace softcard

#endif  // SOFTCARD_FRAMES_REWRITE_H_
