// SPDX-License-Identifier: Apache-2.0

#include "softcard/capture/pcapng_writer.h"

#include <algorithm>

#include "softcard/frames/frame.h"
#include "softcard/frames/wire.h"

namespace softcard::pcapng {
namespace {

constexpr std::uint32_t kSectionHeader = 0x0A0D0D0A;
constexpr std::uint32_t kInterfaceDescription = 1;
constexpr std::uint32_t kInterfaceStatistics = 5;
constexpr std::uint32_t kEnhancedPacket = 6;
constexpr std::uint32_t kByteOrderMagic = 0x1A2B3C4D;
constexpr std::uint16_t kEthernet = 1;

// What an option's length can say.
constexpr std::size_t kMostOptionBytes = 65535;

// A block that grows from its type on; end() gives it its lengths.
class Builder {
 public:
  explicit Builder(std::uint32_t type) {
    number(type);
    number(std::uint32_t{0});
  }

  template <class Number>
  void number(Number value) {
    for (unsigned i = 0; i < sizeof value; ++i) {
      block_.push_back(static_cast<std::uint8_t>(value >> 8 * i));
    }
  }
  void bytes(const std::uint8_t* data, std::size_t count) {
    block_.insert(block_.end(), data, data + count);
    block_.resize((block_.size() + 3) / 4 * 4);
  }
  // A time is written as two halves, the upper one first.
  void time(std::uint64_t time_ns) {
    number(static_cast<std::uint32_t>(time_ns >> 32));
    number(static_cast<std::uint32_t>(time_ns));
  }

  void option(std::uint16_t code, const std::uint8_t* value, std::size_t count) {
    count = std::min(count, kMostOptionBytes);
    number(code);
    number(static_cast<std::uint16_t>(count));
    bytes(value, count);
  }
  void option(std::uint16_t code, const std::string& text) {
    option(code, reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
  }
  template <class Number>
  void number_option(std::uint16_t code, Number value) {
    number(code);
    number(static_cast<std::uint16_t>(sizeof value));
    number(value);
  }

  Block end() {
    number(std::uint32_t{0});  // the end of the options
    const auto length = static_cast<std::uint32_t>(block_.size() + 4);
    number(length);
    for (unsigned i = 0; i < 4; ++i) block_[4 + i] = block_[block_.size() - 4 + i];
    return std::move(block_);
  }

 private:
  Block block_;
};

// Direction and kind of reception, in the bits of epb_flags.
std::uint32_t flags_of(const Packet& packet) {
  const std::uint32_t direction = packet.outbound ? 2 : 1;
  if (packet.bytes < 6) return direction;
  const std::uint64_t destination = load48(packet.data);
  const bool group = (destination >> 40 & 1) != 0;
  const std::uint32_t reception = !group ? 1 : destination == 0xFFFFFFFFFFFF ? 3 : 2;
  return direction | reception << 2;
}

}  // namespace

Block section_header(const std::string& application) {
  Builder block(kSectionHeader);
  block.number(kByteOrderMagic);
  block.number(std::uint16_t{1});   // version 1.0
  block.number(std::uint16_t{0});   //
  block.number(~std::uint64_t{0});  // as long as it turns out to be
  block.option(4, application);
  return block.end();
}

Block interface_description(const std::string& name, const std::string& description,
                            const std::uint8_t* mac) {
  const std::uint8_t nanoseconds = 9;
  Builder block(kInterfaceDescription);
  block.number(kEthernet);
  block.number(std::uint16_t{0});
  block.number(static_cast<std::uint32_t>(FramePool::kLargeBytes));  // frames are written whole
  block.option(2, name);
  block.option(3, description);
  if (mac != nullptr) block.option(6, mac, 6);
  block.option(9, &nanoseconds, 1);
  return block.end();
}

Block enhanced_packet(const Packet& packet) {
  Builder block(kEnhancedPacket);
  const auto bytes = static_cast<std::uint32_t>(packet.bytes);
  block.number(packet.interface_id);
  block.time(packet.time_ns);
  block.number(bytes);
  block.number(bytes);
  block.bytes(packet.data, packet.bytes);
  for (const std::string& comment : packet.comments) block.option(1, comment);
  block.number_option(2, flags_of(packet));
  if (packet.lost_before != 0) block.number_option(4, packet.lost_before);
  block.number_option(5, packet.id);
  // A verdict of the hardware kind is in words of its own.
  block.option(7, std::string(1, '\0') + packet.verdict);
  return block.end();
}

Block interface_statistics(std::uint32_t interface_id, std::uint64_t time_ns,
                           std::uint64_t received, std::uint64_t lost) {
  Builder block(kInterfaceStatistics);
  block.number(interface_id);
  block.time(time_ns);
  block.number_option(4, received);
  block.number_option(5, lost);
  return block.end();
}

}  // namespace softcard::pcapng
