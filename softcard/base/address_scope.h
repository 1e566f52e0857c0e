// SPDX-License-Identifier: Apache-2.0
//
// IP addresses that no router passes packets to: those of one link and those of one host. Each
// function gives the length in bits of the subnet of that kind that `ip` is in, 0 when it is in
// none.
#ifndef SOFTCARD_BASE_ADDRESS_SCOPE_H_
#define SOFTCARD_BASE_ADDRESS_SCOPE_H_

#include <algorithm>

#include "softcard/base/net_types.h"

namespace softcard {

// Link-local addresses, groups and limited broadcast.
inline unsigned link_subnet(Ipv4 ip) {
  if (ip >> 16 == 0xA9FE) return 16;
  if (ip >> 28 == 0xE) return 4;
  return ip == 0xFFFFFFFF ? 32 : 0;
}
inline unsigned link_subnet(const Ipv6Address& ip) {
  if (ip.bytes[0] == 0xFF) return 8;
  return ip.bytes[0] == 0xFE && (ip.bytes[1] & 0xC0) == 0x80 ? 10 : 0;
}

// Loopback, and the unspecified address.
inline unsigned host_subnet(Ipv4 ip) {
  if (ip >> 24 == 127) return 8;
  return ip == 0 ? 32 : 0;
}
inline unsigned host_subnet(const Ipv6Address& ip) {
  const bool zeros =
      std::all_of(ip.bytes.begin(), ip.bytes.end() - 1, [](std::uint8_t b) { return b == 0; });
  return zeros && ip.bytes.back() <= 1 ? 128 : 0;
}

}  // namespace softcard

#endif  // SOFTCARD_BASE_ADDRESS_SCOPE_H_
