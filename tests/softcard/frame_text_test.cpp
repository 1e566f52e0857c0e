// SPDX-License-Identifier: Apache-2.0
//
// Frames as text: what lines mean byte by byte, that printing and reading are inverse, and what is
// said about lines that are wrong.

#include "softcard/frames/frame_text.h"

#include <gtest/gtest.h>

#include <iterator>
#include <random>

namespace softcard {
namespace {

std::vector<std::uint8_t> frame_of(const std::string& text) {
  std::vector<std::uint8_t> frame;
  std::string error;
  EXPECT_TRUE(parse_frame(text, frame, error)) << text << ": " << error;
  return frame;
}

// Bytes written out by hand, so that builder and printer cannot agree on something wrong.
TEST(FrameText, MeansTheseBytes) {
  const struct {
    const char* text;
    const char* bytes;
  } kRows[] = {
      {"eth src=00:00:5e:00:53:01 dst=ff:ff:ff:ff:ff:ff vlan=10 prio=3 dei=1 arp spa=192.0.2.1 "
       "tpa=192.0.2.2",
       "ffffffffffff 00005e005301 8100 700a 0806 0001 0800 06 04 0001 00005e005301 c0000201 "
       "000000000000 c0000202"},
      {"eth src=00:00:5e:00:53:01 dst=00:00:5e:00:53:02 ipv4 src=192.0.2.1 dst=192.0.2.2 id=7 "
       "df=1 udp sport=1 dport=2 payload=aa",
       "00005e005302 00005e005301 0800 4500001d 00074000 4011b6c5 c0000201 c0000202 "
       "00010002 0009d1d4 aa"},
      {"eth src=00:00:5e:00:53:01 dst=00:00:5e:00:53:02 ipv6 src=2001:db8::1 dst=2001:db8::2 "
       "tc=0xab flow=0x12345 hops=1 frag id=9 offset=8 next=17 payload=00",
       "00005e005302 00005e005301 86dd 6ab12345 0009 2c 01 20010db8000000000000000000000001 "
       "20010db8000000000000000000000002 11 00 0008 00000009 00"},
      {"eth src=00:00:5e:00:53:01 dst=01:80:c2:00:00:00 llc dsap=0x42 ssap=0x42 payload=0000 "
       "size=20",
       "0180c2000000 00005e005301 0005 42 42 03 0000 00"},
      {"eth src=00:00:5e:00:53:01 dst=00:00:5e:00:53:02 arp op=9 sha=00:00:5e:00:53:03 "
       "tha=00:00:5e:00:53:04 size=44",
       "00005e005302 00005e005301 0806 0001 0800 06 04 0009 00005e005303 00000000 00005e005304 "
       "00000000 0000"},
      {"eth src=00:00:5e:00:53:01 dst=00:00:5e:00:53:02 ipv4 src=192.0.2.1 dst=192.0.2.2 tos=0xb8 "
       "ttl=1 mf=1 frag=64 options=0101 proto=6 checksum=0xabcd length=99 payload=aa",
       "00005e005302 00005e005301 0800 46b80063 00002008 0106abcd c0000201 c0000202 01010000 aa"},
      {"eth src=00:00:5e:00:53:01 dst=00:00:5e:00:53:02 ipv4 src=192.0.2.1 dst=192.0.2.2 tcp "
       "sport=1 dport=2 seq=3 ack=4 flags=FSRPAUEC window=5 options=01 checksum=7",
       "00005e005302 00005e005301 0800 4500002c 00000000 4006f6c8 c0000201 c0000202 "
       "00010002 00000003 00000004 60ff0005 00070000 01000000"},
      {"eth src=00:00:5e:00:53:01 dst=00:00:5e:00:53:02 ipv6 src=2001:db8::1 dst=2001:db8::2 "
       "length=5 hopopts data=0102 routing dstopts next=59 data=00000000000000",
       "00005e005302 00005e005301 86dd 60000000 0005 00 40 20010db8000000000000000000000001 "
       "20010db8000000000000000000000002 2b 00 010200000000 3c 00 000000000000 "
       "3b 01 0000000000000000000000000000"},
      {"eth src=00:00:5e:00:53:01 dst=00:00:5e:00:53:02 ipv6 src=2001:db8::1 dst=2001:db8::2 "
       "icmp6 type=128 code=1 id=2 seq=3",
       "00005e005302 00005e005301 86dd 60000000 0008 3a 40 20010db8000000000000000000000001 "
       "20010db8000000000000000000000002 8001 2442 0002 0003"},
      {"eth src=00:00:5e:00:53:01 dst=00:00:5e:00:53:02 vlan=5 tpid=0x88a8 vlan=6 snap "
       "proto=0x809b trailer=01",
       "00005e005302 00005e005301 88a8 0005 8100 0006 0008 aaaa03 000000 809b 01"},
  };
  for (const auto& row : kRows) EXPECT_EQ(frame_of(row.text), frame_of(row.bytes)) << row.text;
}

TEST(FrameText, PrintsWhatItReads) {
  const std::string kEth = "eth src=00:00:5e:00:53:01 dst=00:00:5e:00:53:02";
  const char* const kRest[] = {
      "",
      " type=0x88cc payload=0102",
      " vlan=10 prio=3 vlan=20 ipv4 src=192.0.2.1 dst=192.0.2.2 ttl=1 icmp type=8 id=1 seq=2",
      " arp op=reply spa=192.0.2.1 tpa=192.0.2.2 size=60",
      (" ipv4 src=192.0.2.1 dst=192.0.2.2 ttl=64 options=94040000 tcp sport=1 dport=2 flags=FSU "
       "options=020405b4 payload=00"),
      " ipv4 src=192.0.2.1 dst=192.0.2.2 ttl=64 udp sport=1 dport=2 checksum=0x1234",
      " ipv4 src=192.0.2.1 dst=192.0.2.2 ttl=64 frag=64 proto=17 payload=0102",
      " ipv6 src=2001:db8::1 dst=ff02::1 hops=255 hopopts data=050200000000 icmp6 type=135",
      " ipv6 src=2001:db8::1 dst=2001:db8::2 hops=64 routing dstopts udp sport=1 dport=2",
      " llc dsap=0xf0 ssap=0xf0 payload=01",
  };
  for (const char* rest : kRest) {
    const std::string text = kEth + rest;
    const std::vector<std::uint8_t> frame = frame_of(text);
    EXPECT_EQ(print_frame(frame.data(), frame.size()), text);
  }
}

// Printing loses nothing for any bytes, and the text is a pattern of the frame:
// cut, damaged and random frames.
TEST(FrameText, PrintingIsTheInverseOfReadingForAnyBytes) {
  const char* const kSeeds[] = {
      "eth src=00:00:5e:00:53:01 dst=00:00:5e:00:53:02 vlan=10 ipv4 src=192.0.2.1 dst=192.0.2.2 "
      "options=94040000 tcp sport=1 dport=2 options=020405b4 payload=0011223344 size=100",
      "eth src=00:00:5e:00:53:01 dst=00:00:5e:00:53:02 ipv6 src=2001:db8::1 dst=2001:db8::2 "
      "hopopts "
      "frag dstopts udp sport=1 dport=2 payload=001122 trailer=ffff",
      "eth src=00:00:5e:00:53:01 dst=00:00:5e:00:53:02 arp",
      "eth src=00:00:5e:00:53:01 dst=00:00:5e:00:53:02 snap proto=0x800 payload=01",
      "eth src=00:00:5e:00:53:01 dst=00:00:5e:00:53:02 ipv6 src=2001:db8::1 dst=2001:db8::2 "
      "routing icmp6 type=1 payload=00",
  };
  std::mt19937 random(1);
  for (int round = 0; round < 1000; ++round) {
    std::vector<std::uint8_t> frame = frame_of(kSeeds[random() % std::size(kSeeds)]);
    for (unsigned damage = random() % 4; damage > 0; --damage) {
      frame[random() % frame.size()] = static_cast<std::uint8_t>(random());
    }
    if (random() % 2 == 0) frame.resize(1 + random() % frame.size());
    const std::string text = print_frame(frame.data(), frame.size());
    ASSERT_EQ(frame_of(text), frame) << text;
    std::string error;
    ASSERT_TRUE(frame_matches(text, frame.data(), frame.size(), error)) << text << ": " << error;
  }
}

TEST(FrameText, PatternsNameWhatMustBeThere) {
  const std::vector<std::uint8_t> frame = frame_of(
      "eth src=00:00:5e:00:53:01 dst=00:00:5e:00:53:02 vlan=10 prio=3 ipv4 src=192.0.2.1 "
      "dst=192.0.2.2 udp sport=1 dport=2 payload=aabb");
  const struct {
    const char* pattern;
    bool matches;
  } kRows[] = {
      {"eth", true},
      {"eth vlan=10", true},
      {"eth vlan=0xA prio=3 ipv4 ttl=64 udp dport=2 payload=AABB", true},
      {"eth SRC", false},
      {"eth ipv4 src=192.0.2.1", true},
      {"eth ipv4 src=192.0.2.2", false},
      {"eth udp sport=1", true},
      {"eth tcp", false},
      {"eth vlan=11", false},
      {"eth vlan=10 vlan=10", false},
      {"eth untagged", false},
      {"eth type=0x800", true},
      {"eth size=48", true},
      {"eth payload=aa", false},
      {"00005e005302", false},
  };
  for (const auto& row : kRows) {
    std::string error;
    const bool matches = frame_matches(row.pattern, frame.data(), frame.size(), error);
    EXPECT_EQ(matches, row.matches) << row.pattern;
    EXPECT_EQ(error.empty(), std::string(row.pattern) != "eth SRC") << error;
  }
}

// The reserved bits of a TCP header have no text, so the frame is printed as an Ethernet payload.
TEST(FrameText, FramesWithoutATextOfTheirOwnMatchByHeadersAndByBytes) {
  std::vector<std::uint8_t> frame = frame_of(
      "eth src=00:00:5e:00:53:01 dst=00:00:5e:00:53:02 ipv4 src=192.0.2.1 dst=192.0.2.2 tcp "
      "sport=1 "
      "dport=2 size=60");
  frame[46] |= 1;
  const std::string text = print_frame(frame.data(), frame.size());
  EXPECT_EQ(text.substr(0, 80),
            "eth src=00:00:5e:00:53:01 dst=00:00:5e:00:53:02 type=0x800 payload=4500002800000");
  const std::pair<std::string, bool> kPatterns[] = {
      {text, true},
      {"eth untagged ipv4 tcp dport=2 size=60", true},
      {"eth type=0x800", true},
      {"eth vlan=1", false},
      {"eth ipv4 tcp dport=3", false},
      {text + " trailer=00", false},
      {text.substr(0, text.find(" size")) + "00", false},
  };
  for (const auto& [pattern, matches] : kPatterns) {
    std::string error;
    EXPECT_EQ(frame_matches(pattern, frame.data(), frame.size(), error), matches) << pattern;
    EXPECT_EQ(error, "");
  }
}

TEST(FrameText, SaysWhatIsWrongAndWhere) {
  const struct {
    const char* text;
    const char* error;
  } kRows[] = {
      {"", "column 1: there is no frame"},
      {"ipv4", "column 1: a frame begins with eth, and has it once"},
      {"eth src=00:00:5e:00:53:01", "eth needs dst="},
      {"eth src=5", "column 9: '5' is not an Ethernet address"},
      {"eth vlan=4096", "column 10: '4096' is not a number from 0 to 4095"},
      {"eth ttl=5", "column 5: 'ttl' is no field of eth"},
      {"eth foo", "column 5: 'foo' is neither a header nor key=value"},
      {"eth src=00:00:5e:00:53:01 src=00:00:5e:00:53:01", "column 27: 'src' is there twice"},
      {"eth src=00:00:5e:00:53:01 dst=00:00:5e:00:53:02 arp udp sport=1 dport=2",
       "udp cannot follow arp"},
      {"eth src=00:00:5e:00:53:01 dst=00:00:5e:00:53:02 payload=0",
       "column 57: '0' is not an even number of hexadecimal digits"},
      {"eth src=00:00:5e:00:53:01 dst=00:00:5e:00:53:02 size=10",
       "the frame is longer than its size= of 10 bytes"},
      {"eth untagged src=00:00:5e:00:53:01 dst=00:00:5e:00:53:02",
       "untagged asks for something: it belongs into a pattern"},
  };
  for (const auto& row : kRows) {
    std::vector<std::uint8_t> frame = {1};
    std::string error;
    EXPECT_FALSE(parse_frame(row.text, frame, error)) << row.text;
    EXPECT_EQ(error, row.error) << row.text;
    EXPECT_EQ(frame, std::vector<std::uint8_t>{1});
  }
}

}  // namespace
}  // namespace softcard
