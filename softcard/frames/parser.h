// SPDX-License-Identifier: Apache-2.0
//
// The headers of a frame, found in one pass. No read goes beyond the frame, whatever its bytes say.
#ifndef SOFTCARD_FRAMES_PARSER_H_
#define SOFTCARD_FRAMES_PARSER_H_

#include <cstddef>
#include <cstdint>

#include "softcard/base/net_types.h"
#include "vornlcapi/enums.h"

namespace softcard {

inline constexpr std::size_t kEthernetBytes = 14;
inline constexpr std::size_t kTagBytes = 4;

// Values of fields that the card knows by name.
inline constexpr std::uint16_t kTypeIpv4 = 0x0800;
inline constexpr std::uint16_t kTypeArp = 0x0806;
inline constexpr std::uint16_t kTypeCustomerTag = 0x8100;  // 802.1Q
inline constexpr std::uint16_t kTypeIpv6 = 0x86DD;
inline constexpr std::uint16_t kTypePause = 0x8808;
inline constexpr std::uint16_t kTypeServiceTag = 0x88A8;  // 802.1ad
// An EtherType below is the length of an 802.3 frame.
inline constexpr std::uint16_t kFirstEtherType = 1536;
// Whether a VLAN tag begins there: the frame's own EtherType comes behind.
constexpr bool is_tag(std::uint16_t type) {
  return type == kTypeCustomerTag || type == kTypeServiceTag;
}

inline constexpr std::uint8_t kProtocolIcmp = 1;
inline constexpr std::uint8_t kProtocolTcp = 6;
inline constexpr std::uint8_t kProtocolUdp = 17;
inline constexpr std::uint8_t kProtocolIcmp6 = 58;

// The reserved group addresses end in 0x0 to 0xF; BPDUs go to the first, pause frames to the next.
inline constexpr std::uint64_t kReservedGroup = 0x0180C2000000;
inline constexpr std::uint64_t kPauseGroup = 0x0180C2000001;
inline constexpr std::uint64_t kBroadcast = 0xFFFFFFFFFFFF;

enum class FrameFault : std::uint8_t {
  none,
  runt,       // shorter than an Ethernet header
  malformed,  // ends within a VLAN tag, or before its 802.3 length
};

enum class Layer3 : std::uint8_t { none, arp, ipv4, ipv6 };
enum class Layer4 : std::uint8_t { none, tcp, udp, icmp };

// The fields of a frame. Members of a header that is not there are 0.
struct Headers {
  // Ethernet; addresses as MacAddress::to_number().
  std::uint64_t destination = 0;
  std::uint64_t source = 0;
  std::uint16_t tag_type = 0;     // of the outermost tag; 0 without a tag
  std::uint16_t tag_control = 0;  // its priority, drop eligibility and VLAN
  std::uint16_t ether_type = 0;   // behind all tags; the length of an 802.3 frame
  std::uint16_t protocol = 0;     // EtherType, SNAP type, or DSAP << 8 | SSAP
  frame_type_t format = FRAME_TYPE_ETHERNET;
  std::uint8_t tags = 0;

  // Layer 3 and 4. A header that is cut off or contradicts itself is marked and otherwise not
  // there.
  Layer3 l3 = Layer3::none;
  Layer4 l4 = Layer4::none;
  bool l3_damaged = false;           // by its EtherType there should be an IP or ARP header
  bool options = false;              // IPv4 options, or an IPv6 hop-by-hop header
  bool fragment = false;             // any fragment of a larger packet
  std::uint8_t ip_protocol = 0;      // behind IPv6 extension headers
  std::uint8_t tos = 0;              // IPv6: traffic class
  std::uint8_t ttl = 0;              // IPv6: hop limit
  std::uint16_t l3_offset = 0;       // from the first byte of the frame
  std::uint16_t l4_offset = 0;       // behind all IP headers; 0 where there is no such byte, and in
                                     // fragments but the first
  std::uint16_t l4_source = 0;       // TCP or UDP port; ICMP type
  std::uint16_t l4_destination = 0;  // TCP or UDP port; ICMP code
  std::uint16_t arp_operation = 0;
  Ipv4 ipv4_source = 0;        // ARP: sender
  Ipv4 ipv4_destination = 0;   // ARP: target
  std::uint32_t l3_bytes = 0;  // of the whole IP packet, by its own length

  // Which fields the frame has; where it lacks them they are 0 without meaning it.
  bool has_ip() const {  // protocol, TOS and TTL
    return l3 == Layer3::ipv4 || l3 == Layer3::ipv6;
  }
  bool has_ipv4_addresses() const { return l3 == Layer3::ipv4 || l3 == Layer3::arp; }
  bool has_ports() const { return l4 == Layer4::tcp || l4 == Layer4::udp; }
  bool has_icmp_type() const { return l4 == Layer4::icmp; }

  bool group() const { return (destination >> 40 & 1) != 0; }
  bool broadcast() const { return destination == kBroadcast; }
  bool reserved_group() const { return (destination & ~std::uint64_t{0xF}) == kReservedGroup; }
  std::uint16_t tag_vlan() const { return tag_control & 0xFFF; }
  std::uint8_t tag_priority() const { return static_cast<std::uint8_t>(tag_control >> 13); }
};

// Reads the headers of a frame into `headers`, which is fresh.
FrameFault parse(const std::uint8_t* data, std::size_t bytes, Headers& headers);

}  // namespace softcard

#endif  // SOFTCARD_FRAMES_PARSER_H_
