// SPDX-License-Identifier: Apache-2.0

#include "softcard/pipeline/load_balance.h"

#include <cstdint>

#include "softcard/base/hash.h"
#include "softcard/frames/wire.h"

namespace softcard {
namespace {

// A number that is equal for frames that are equal in what the criterion names.
std::uint64_t balance(const Headers& headers, const Frame& frame, lag_psc_t criterion) {
  const bool ip = headers.l3 == Layer3::ipv4 || headers.l3 == Layer3::ipv6;
  const bool source = criterion != LAG_PSC_DST_MAC && criterion != LAG_PSC_DST_IP;
  const bool destination = criterion != LAG_PSC_SRC_MAC && criterion != LAG_PSC_SRC_IP;
  std::uint64_t sum = 0;
  const auto add = [&sum](std::uint64_t part) { sum = mix64(sum + part); };
  if (!ip || criterion <= LAG_PSC_SRC_DST_MAC) {
    if (source) add(headers.source);
    if (destination) add(headers.destination + 1);
    return sum;
  }
  if (headers.l3 == Layer3::ipv4) {
    if (source) add(headers.ipv4_source);
    if (destination) add(headers.ipv4_destination + std::uint64_t{1});
  } else {
    const std::uint8_t* addresses = frame.data() + headers.l3_offset + 8;
    const auto add_words = [&](const std::uint8_t* at) {
      for (std::size_t i = 0; i < 16; i += 4) add(load32(at + i));
    };
    if (source) add_words(addresses);
    if (destination) add_words(addresses + 16);
  }
  // Only the first fragment of a packet has ports: without them all fragments stay together.
  if (criterion == LAG_PSC_SRC_DST_IP_PORT && !headers.fragment && headers.l4 != Layer4::none &&
      headers.l4 != Layer4::icmp) {
    add(std::uint64_t{headers.l4_source} << 16 | headers.l4_destination);
  }
  return sum;
}

}  // namespace

PortIndex choose_member(const Headers& headers, const Frame& frame, const Lag& lag,
                        const PortSet& eligible) {
  if (lag.size == 0) return kNoPort;
  const std::uint64_t hash = balance(headers, frame, lag.psc);
  const PortIndex usual = lag.members[static_cast<std::uint32_t>(hash >> 32) % lag.size];
  if (eligible.contains(usual)) return usual;
  const PortSet rest = lag.set & eligible;
  const unsigned count = rest.size();
  if (count == 0) return kNoPort;
  unsigned place = static_cast<std::uint32_t>(hash) % count;
  for (std::size_t i = 0; i < lag.size; ++i) {
    if (rest.contains(lag.members[i]) && place-- == 0) return lag.members[i];
  }
  return kNoPort;
}

}  // namespace softcard
