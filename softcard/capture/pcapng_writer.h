// SPDX-License-Identifier: Apache-2.0
//
// The blocks of a pcapng capture: little-endian, Ethernet, timestamps in nanoseconds. A capture is
// one section_header(), an interface_description() for each interface, which counts from 0 in this
// order, packets, and at the end interface_statistics().
#ifndef SOFTCARD_CAPTURE_PCAPNG_WRITER_H_
#define SOFTCARD_CAPTURE_PCAPNG_WRITER_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace softcard::pcapng {

using Block = std::vector<std::uint8_t>;

// `application` is what wrote the capture.
Block section_header(const std::string& application);

// `mac` are six bytes, null for none.
Block interface_description(const std::string& name, const std::string& description,
                            const std::uint8_t* mac);

struct Packet {
  std::uint32_t interface_id;
  std::uint64_t time_ns;  // since 1970
  const std::uint8_t* data;
  std::size_t bytes;
  bool outbound;
  std::uint64_t lost_before;  // packets of this interface since the one before
  std::uint64_t id;           // equal for one packet seen at several places
  std::string verdict;
  std::vector<std::string> comments;
};
Block enhanced_packet(const Packet& packet);

// How many packets there were, and how many of them are not in the capture.
Block interface_statistics(std::uint32_t interface_id, std::uint64_t time_ns,
                           std::uint64_t received, std::uint64_t lost);

}  // namespace softcard::pcapng

#endif  // SOFTCARD_CAPTURE_PCAPNG_WRITER_H_
