// SPDX-License-Identifier: Apache-2.0

#include "softcard/frames/offload.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "softcard/frames/checksum.h"
#include "softcard/frames/parser.h"
#include "softcard/frames/wire.h"

namespace softcard {

namespace {

constexpr std::uint8_t kTcpFin = 0x01;
constexpr std::uint8_t kTcpPush = 0x08;
constexpr std::uint8_t kTcpCongestionReduced = 0x80;

// Where the parts of a frame to be segmented are.
struct Plan {
  Headers headers;
  std::size_t header_bytes = 0;   // up to the payload
  std::size_t payload_bytes = 0;  // of the whole frame
};

bool plan(const Frame& frame, Plan& plan) {
  if (frame.offload.segment_bytes == 0 ||
      parse(frame.data(), frame.size(), plan.headers) != FrameFault::none) {
    return false;
  }
  const bool tcp = frame.offload.segmentation != Segmentation::udp;
  if (plan.headers.l4 != (tcp ? Layer4::tcp : Layer4::udp)) return false;
  const std::size_t l4_bytes =
      tcp ? (frame.data()[plan.headers.l4_offset + 12] >> 4) * std::size_t{4} : 8;
  const std::size_t end = plan.headers.l3_offset + std::size_t{plan.headers.l3_bytes};
  plan.header_bytes = plan.headers.l4_offset + l4_bytes;
  if ((tcp && l4_bytes < 20) || plan.header_bytes >= end) return false;
  plan.payload_bytes = end - plan.header_bytes;
  return true;
}

// The sum of the pseudo header over the transport packet from `l4` to the frame's end.
std::uint64_t pseudo_header(const Frame& frame, const Headers& headers) {
  const std::uint8_t* l3 = frame.data() + headers.l3_offset;
  const std::uint64_t sum =
      headers.l3 == Layer3::ipv4 ? sum_words(l3 + 12, 8) : sum_words(l3 + 8, 32);
  return sum + headers.ip_protocol + (frame.size() - headers.l4_offset);
}

}  // namespace

void complete_checksum(Frame& frame) {
  if (!frame.offload.checksum_partial) return;
  frame.offload.checksum_partial = false;
  const std::size_t start = frame.offload.checksum_start;
  const std::size_t field = start + frame.offload.checksum_offset;
  if (start >= frame.size() || field + 2 > frame.size()) return;
  // The field is under the sum with what it holds: the pseudo header.
  const std::uint16_t sum = checksum(frame.data() + start, frame.size() - start);
  store16(frame.data() + field, sum == 0 ? std::uint16_t{0xFFFF} : sum);
}

std::size_t longest_segment(const Frame& frame) {
  Plan parts;
  if (!plan(frame, parts)) return frame.size();
  return parts.header_bytes +
         std::min<std::size_t>(parts.payload_bytes, frame.offload.segment_bytes);
}

FramePtr next_segment(FramePtr& frame, FramePool& pool, std::size_t& taken) {
  Plan parts;
  FramePtr whole = std::move(frame);
  if (!plan(*whole, parts) || taken >= parts.payload_bytes) return nullptr;
  const Headers& headers = parts.headers;
  const std::size_t bytes =
      std::min<std::size_t>(parts.payload_bytes - taken, whole->offload.segment_bytes);
  const bool last = taken + bytes == parts.payload_bytes;

  FramePtr piece = pool.make(parts.header_bytes + bytes);
  if (piece == nullptr) return nullptr;
  piece->ingress = whole->ingress;
  piece->vlan = whole->vlan;
  piece->priority = whole->priority;
  std::memcpy(piece->data(), whole->data(), parts.header_bytes);
  std::memcpy(piece->data() + parts.header_bytes, whole->data() + parts.header_bytes + taken,
              bytes);

  std::uint8_t* l3 = piece->data() + headers.l3_offset;
  const std::size_t l3_bytes = piece->size() - headers.l3_offset;
  if (headers.l3 == Layer3::ipv4) {
    const std::size_t number = taken / whole->offload.segment_bytes;
    store16(l3 + 2, static_cast<std::uint16_t>(l3_bytes));
    store16(l3 + 4, static_cast<std::uint16_t>(load16(l3 + 4) + number));
    store16(l3 + 10, 0);
    store16(l3 + 10, checksum(l3, (l3[0] & 0xFu) * std::size_t{4}));
  } else {
    store16(l3 + 4, static_cast<std::uint16_t>(l3_bytes - 40));
  }

  std::uint8_t* l4 = piece->data() + headers.l4_offset;
  const std::size_t l4_bytes = piece->size() - headers.l4_offset;
  std::uint8_t* field = l4 + 16;
  if (headers.l4 == Layer4::tcp) {
    store32(l4 + 4, load32(l4 + 4) + static_cast<std::uint32_t>(taken));
    if (!last) l4[13] = static_cast<std::uint8_t>(l4[13] & ~(kTcpFin | kTcpPush));
    if (taken != 0) l4[13] = static_cast<std::uint8_t>(l4[13] & ~kTcpCongestionReduced);
  } else {
    field = l4 + 6;
    store16(l4 + 4, static_cast<std::uint16_t>(l4_bytes));
  }
  store16(field, 0);
  const std::uint16_t sum = checksum(l4, l4_bytes, pseudo_header(*piece, headers));
  store16(field, sum == 0 ? std::uint16_t{0xFFFF} : sum);

  taken += bytes;
  if (!last) frame = std::move(whole);
  return piece;
}

}  // namespace softcard
