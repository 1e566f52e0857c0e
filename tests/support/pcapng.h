// SPDX-License-Identifier: Apache-2.0
//
// Reads little-endian pcapng as strictly as its description has it: whatever does not fit to the
// byte is a failure of the test.
#ifndef TESTS_SUPPORT_PCAPNG_H_
#define TESTS_SUPPORT_PCAPNG_H_

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace pcapng_test {

struct Option {
  unsigned code;
  std::string value;
};

struct Packet {
  std::size_t interface_id;
  std::uint64_t time_ns;
  std::string bytes;
  unsigned direction;  // 1 in, 2 out
  unsigned reception;  // 1 unicast, 2 multicast, 3 broadcast
  std::vector<std::string> comments;
  std::uint64_t lost_before = 0;
  std::uint64_t id = 0;
  std::string verdict;
};

struct Interface {
  std::string name;
  std::string mac;
  bool has_statistics = false;
  std::uint64_t received = 0, lost = 0;
};

struct Capture {
  std::vector<Interface> interfaces;
  std::vector<Packet> packets;

  // A line for each packet: "1/1/0 in #1: to 1/1/1 | CPU: copy of a flood".
  std::string text() const {
    std::string lines;
    for (const Packet& packet : packets) {
      lines += interfaces[packet.interface_id].name + (packet.direction == 1 ? " in #" : " out #") +
               std::to_string(packet.id) + ":";
      const char* between = " ";
      for (const std::string& comment : packet.comments) {
        lines += between + comment;
        between = " | ";
      }
      lines += "\n";
    }
    return lines;
  }
};

class Reader {
 public:
  explicit Reader(const std::string& bytes) : bytes_(bytes) {}

  Capture read() {
    Capture capture;
    while (at_ < bytes_.size() && !testing::Test::HasFatalFailure()) read_block(capture);
    EXPECT_NE(at_, 0u) << "an empty capture";
    return capture;
  }

 private:
  std::uint64_t number(std::size_t at, unsigned bytes) const {
    std::uint64_t value = 0;
    for (unsigned i = bytes; i-- != 0;) {
      value = value << 8 | static_cast<unsigned char>(bytes_.at(at + i));
    }
    return value;
  }
  std::size_t size(std::size_t at, unsigned bytes) const {
    return static_cast<std::size_t>(number(at, bytes));
  }
  std::uint64_t time(std::size_t at) const { return number(at, 4) << 32 | number(at + 4, 4); }
  static std::uint64_t number(const std::string& value, unsigned bytes) {
    EXPECT_EQ(value.size(), bytes);
    return value.size() == bytes ? Reader(value).number(0, bytes) : 0;
  }

  std::vector<Option> options(std::size_t at, std::size_t end) const {
    std::vector<Option> all;
    while (at < end) {
      const auto code = static_cast<unsigned>(number(at, 2));
      const std::size_t length = size(at + 2, 2);
      at += 4;
      if (code == 0) {
        EXPECT_EQ(length, 0u);
        EXPECT_EQ(at, end) << "something stands behind the end of the options";
        return all;
      }
      all.push_back({code, bytes_.substr(at, length)});
      for (std::size_t i = length; i % 4 != 0; ++i) EXPECT_EQ(number(at + i, 1), 0u);
      at += (length + 3) / 4 * 4;
    }
    ADD_FAILURE() << "the options have no end";
    return all;
  }

  void read_block(Capture& capture) {
    ASSERT_GE(bytes_.size() - at_, 12u) << "byte " << at_;
    const std::uint64_t type = number(at_, 4);
    const std::size_t length = size(at_ + 4, 4);
    ASSERT_EQ(length % 4, 0u) << "byte " << at_;
    ASSERT_LE(length, bytes_.size() - at_) << "byte " << at_;
    ASSERT_EQ(number(at_ + length - 4, 4), length) << "byte " << at_;
    const std::size_t body = at_ + 8;
    const std::size_t end = at_ + length - 4;
    if (at_ == 0) {
      ASSERT_EQ(type, 0x0A0D0D0Au);
      EXPECT_EQ(number(body, 4), 0x1A2B3C4Du);
      EXPECT_EQ(number(body + 4, 4), 1u);
      EXPECT_EQ(number(body + 8, 8), ~std::uint64_t{0});
      EXPECT_FALSE(options(body + 16, end).empty());
    } else if (type == 1) {
      read_interface(body, end, capture);
    } else if (type == 5) {
      Interface& interface = capture.interfaces.at(size(body, 4));
      EXPECT_FALSE(interface.has_statistics);
      interface.has_statistics = true;
      for (const Option& option : options(body + 12, end)) {
        if (option.code == 4) interface.received = number(option.value, 8);
        if (option.code == 5) interface.lost = number(option.value, 8);
      }
    } else {
      ASSERT_EQ(type, 6u) << "byte " << at_;
      read_packet(body, end, capture);
    }
    at_ += length;
  }

  void read_interface(std::size_t body, std::size_t end, Capture& capture) {
    EXPECT_TRUE(capture.packets.empty());
    EXPECT_EQ(number(body, 2), 1u);
    Interface interface;
    bool nanoseconds = false;
    for (const Option& option : options(body + 8, end)) {
      if (option.code == 2) interface.name = option.value;
      if (option.code == 6) interface.mac = option.value;
      if (option.code == 9) nanoseconds = option.value == "\x09";
    }
    EXPECT_TRUE(nanoseconds);
    capture.interfaces.push_back(interface);
  }

  void read_packet(std::size_t body, std::size_t end, Capture& capture) {
    Packet packet;
    packet.interface_id = size(body, 4);
    ASSERT_LT(packet.interface_id, capture.interfaces.size());
    packet.time_ns = time(body + 4);
    const std::size_t kept = size(body + 12, 4);
    EXPECT_EQ(number(body + 16, 4), kept);
    packet.bytes = bytes_.substr(body + 20, kept);
    std::uint64_t flags = 0;
    for (const Option& option : options(body + 20 + (kept + 3) / 4 * 4, end)) {
      switch (option.code) {
        case 1:
          packet.comments.push_back(option.value);
          break;
        case 2:
          flags = number(option.value, 4);
          break;
        case 4:
          packet.lost_before = number(option.value, 8);
          break;
        case 5:
          packet.id = number(option.value, 8);
          break;
        case 7:
          EXPECT_EQ(option.value.substr(0, 1), std::string(1, '\0'));
          packet.verdict = option.value.substr(1);
          break;
        default:
          ADD_FAILURE() << "an option " << option.code;
      }
    }
    packet.direction = flags & 3;
    packet.reception = flags >> 2 & 7;
    EXPECT_EQ(flags >> 5, 0u);
    capture.packets.push_back(packet);
  }

  std::string bytes_;
  std::size_t at_ = 0;
};

inline Capture read(const std::string& bytes) { return Reader(bytes).read(); }

}  // namespace pcapng_test

#endif  // TESTS_SUPPORT_PCAPNG_H_
