// SPDX-License-Identifier: Apache-2.0
//
// The parts that frames pass through, each alone: pool, parser, rewriting with checksums, offloads,
// storm meter.

#include "softcard/frames/frame.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>

#include "softcard/base/text.h"
#include "softcard/frames/checksum.h"
#include "softcard/frames/frame_text.h"
#include "softcard/frames/offload.h"
#include "softcard/frames/parser.h"
#include "softcard/frames/rewrite.h"
#include "softcard/frames/wire.h"
#include "softcard/tables/storm_meter.h"

namespace softcard {
namespace {

const std::string kEth = "eth src=00:00:5e:00:53:01 dst=00:00:5e:00:53:02 ";

class FrameTest : public ::testing::Test {
 protected:
  ~FrameTest() override { EXPECT_EQ(pool.in_use(), 0u); }
  FramePtr make(const std::string& rest) {
    std::vector<std::uint8_t> bytes;
    std::string error;
    EXPECT_TRUE(parse_frame(kEth + rest, bytes, error)) << error;
    return pool.make(bytes.data(), bytes.size());
  }
  static std::string print(const Frame& frame) { return print_frame(frame.data(), frame.size()); }
  static Headers headers_of(const Frame& frame) {
    Headers headers;
    EXPECT_EQ(parse(frame.data(), frame.size(), headers), FrameFault::none);
    return headers;
  }

  FramePool pool{512, 8};
};

TEST_F(FrameTest, PoolGivesAllItHasAndTakesItBack) {
  for (int round = 0; round < 2; ++round) {
    std::vector<FramePtr> frames;
    while (FramePtr frame = pool.make(FramePool::kSmallBytes)) frames.push_back(std::move(frame));
    EXPECT_EQ(frames.size(), 512u);
    while (FramePtr frame = pool.make(FramePool::kSmallBytes + 1))
      frames.push_back(std::move(frame));
    EXPECT_EQ(frames.size(), 520u);
    EXPECT_EQ(pool.in_use(), 520u);
    for (const FramePtr& frame : frames) EXPECT_EQ(frame->headroom(), Frame::kHeadroom);
  }
  EXPECT_EQ(pool.make(FramePool::kLargeBytes)->size(), FramePool::kLargeBytes);
  EXPECT_EQ(pool.make(FramePool::kLargeBytes + 1), nullptr);
}

TEST_F(FrameTest, FramesComeBackFreshAndAreCopiedWhole) {
  FramePtr frame = pool.make(100);
  const Frame* const place = frame.get();
  frame->ingress = 3;
  frame->vlan = 7;
  frame->priority = 5;
  frame->insert(50, 4);
  frame->offload.checksum_partial = true;
  frame->offload.checksum_start = 34;
  frame->offload.segmentation = Segmentation::udp;
  frame->offload.segment_bytes = 9;
  frame->insert(12, 4);
  EXPECT_EQ(frame->offload.checksum_start, 38) << "it follows a tag";
  frame->erase(12, 8);
  EXPECT_EQ(frame->offload.checksum_start, 30);
  EXPECT_EQ(frame->size(), 100u);
  EXPECT_EQ(frame->headroom(), Frame::kHeadroom);
  frame->data()[99] = 0xAB;

  const FramePtr copy = pool.copy(*frame);
  EXPECT_TRUE(copy->ingress == 3 && copy->vlan == 7 && copy->priority == 5);
  EXPECT_TRUE(copy->size() == 100 && copy->data()[99] == 0xAB);
  EXPECT_TRUE(copy->offload.checksum_partial && copy->offload.checksum_start == 30 &&
              copy->offload.segmentation == Segmentation::udp && copy->offload.segment_bytes == 9);

  frame->insert(0, 8);
  frame.reset();
  frame = pool.make(60);
  ASSERT_EQ(frame.get(), place) << "the last one back is the first one out";
  EXPECT_TRUE(frame->ingress == kNoPort && frame->vlan == 0 && frame->priority == 0);
  EXPECT_TRUE(!frame->offload.pending() && frame->offload.segment_bytes == 0);
  EXPECT_EQ(frame->headroom(), Frame::kHeadroom);
  EXPECT_EQ(frame->size(), 60u);
}

// ---- Parser -------------------------------------------------------------------------------------

// All that the parser found, in one line.
std::string summary(const Headers& headers) {
  std::string line;
  const auto add = [&](const std::string& words) { line += (line.empty() ? "" : " ") + words; };
  const auto number = [&](const char* name, std::uint64_t value) {
    if (value != 0) add(name + std::to_string(value));
  };
  number("tags ", headers.tags);
  add(headers.format == FRAME_TYPE_LLC    ? "llc"
      : headers.format == FRAME_TYPE_SNAP ? "snap"
                                          : "ethernet");
  add(hex_text(headers.protocol));
  if (headers.l3_damaged) add("damaged");
  if (headers.l3 == Layer3::arp) add("arp " + std::to_string(headers.arp_operation));
  if (headers.l3 == Layer3::ipv4) add("ipv4");
  if (headers.l3 == Layer3::ipv6) add("ipv6");
  number("at ", headers.l3_offset);
  if (headers.has_ipv4_addresses()) {
    add(ipv4_text(headers.ipv4_source) + ">" + ipv4_text(headers.ipv4_destination));
  }
  if (headers.has_ip()) {
    add("proto " + std::to_string(headers.ip_protocol) + " tos " + std::to_string(headers.tos) +
        " ttl " + std::to_string(headers.ttl) + " bytes " + std::to_string(headers.l3_bytes));
  }
  if (headers.options) add("options");
  if (headers.fragment) add("fragment");
  if (headers.l4 == Layer4::tcp) add("tcp");
  if (headers.l4 == Layer4::udp) add("udp");
  if (headers.has_icmp_type()) add("icmp");
  number("at ", headers.l4_offset);
  if (headers.l4 != Layer4::none) {
    EXPECT_EQ(headers.has_ports(), !headers.has_icmp_type());
    add(std::to_string(headers.l4_source) + ">" + std::to_string(headers.l4_destination));
  } else {
    EXPECT_TRUE(headers.l4_source == 0 && headers.l4_destination == 0);
  }
  return line;
}

TEST_F(FrameTest, ParserReadsTheHeaders) {
  const std::string kV4 = "ipv4 src=192.0.2.1 dst=192.0.2.2 ";
  const std::string kV6 = "ipv6 src=2001:db8::1 dst=2001:db8::2 ";
  const std::string kUdp = "0005000600080000";
  const struct {
    std::string text;
    const char* found;
  } kRows[] = {
      {kV4 + "tos=3 ttl=9 udp sport=5 dport=6",
       "ethernet 0x800 ipv4 at 14 192.0.2.1>192.0.2.2 proto 17 tos 3 ttl 9 bytes 28 udp at 34 5>6"},
      {"vlan=1 vlan=2 tpid=0x88a8 vlan=3 " + kV4 + "options=94040000 tcp sport=5 dport=6",
       "tags 3 ethernet 0x800 ipv4 at 26 192.0.2.1>192.0.2.2 proto 6 tos 0 ttl 64 bytes 44 "
       "options tcp at 50 5>6"},
      {kV4 + "mf=1 udp sport=5 dport=6 size=60",
       "ethernet 0x800 ipv4 at 14 192.0.2.1>192.0.2.2 proto 17 tos 0 ttl 64 bytes 28 fragment "
       "udp at 34 5>6"},
      {kV4 + "frag=8 proto=17 payload=" + kUdp,
       "ethernet 0x800 ipv4 at 14 192.0.2.1>192.0.2.2 proto 17 tos 0 ttl 64 bytes 28 fragment"},
      {kV4 + "icmp type=8 code=3",
       "ethernet 0x800 ipv4 at 14 192.0.2.1>192.0.2.2 proto 1 tos 0 ttl 64 bytes 28 icmp at 34 "
       "8>3"},
      // A transport header that is cut off by the end of the packet, whatever follows it.
      {kV4 + "proto=17 payload=00050006000800 trailer=00000000",
       "ethernet 0x800 ipv4 at 14 192.0.2.1>192.0.2.2 proto 17 tos 0 ttl 64 bytes 27 at 34"},
      {kV4 + "proto=6 payload=00050006000000000000000050000000000000 trailer=0102",
       "ethernet 0x800 ipv4 at 14 192.0.2.1>192.0.2.2 proto 6 tos 0 ttl 64 bytes 39 at 34"},
      {kV4 + "proto=6 payload=0005000600000000000000005000000000000000",
       "ethernet 0x800 ipv4 at 14 192.0.2.1>192.0.2.2 proto 6 tos 0 ttl 64 bytes 40 tcp at 34 "
       "5>6"},
      {kV4 + "proto=1 payload=080300",
       "ethernet 0x800 ipv4 at 14 192.0.2.1>192.0.2.2 proto 1 tos 0 ttl 64 bytes 23 at 34"},
      {kV4 + "proto=1 payload=08030000",
       "ethernet 0x800 ipv4 at 14 192.0.2.1>192.0.2.2 proto 1 tos 0 ttl 64 bytes 24 icmp at 34 "
       "8>3"},
      {kV4, "ethernet 0x800 ipv4 at 14 192.0.2.1>192.0.2.2 proto 253 tos 0 ttl 64 bytes 20"},
      {kV6 + "tc=171 flow=0x12345 hops=7 hopopts routing frag id=1 dstopts udp sport=5 dport=6",
       "ethernet 0x86dd ipv6 at 14 proto 17 tos 171 ttl 7 bytes 80 options udp at 86 5>6"},
      {kV6 + "dstopts tcp sport=5 dport=6",
       "ethernet 0x86dd ipv6 at 14 proto 6 tos 0 ttl 64 bytes 68 tcp at 62 5>6"},
      {kV6 + "icmp6 type=135",
       "ethernet 0x86dd ipv6 at 14 proto 58 tos 0 ttl 64 bytes 48 icmp at 54 135>0"},
      {kV6 + "frag more=1 id=1 udp sport=5 dport=6",
       "ethernet 0x86dd ipv6 at 14 proto 17 tos 0 ttl 64 bytes 56 fragment udp at 62 5>6"},
      {kV6 + "frag offset=8 next=17 payload=" + kUdp,
       "ethernet 0x86dd ipv6 at 14 proto 17 tos 0 ttl 64 bytes 56 fragment"},
      // An authentication header counts its length in another way than the others.
      {kV6 +
           "next=51 payload=11040000000000010000000200010203040506070809"
           "0a0b" +
           kUdp,
       "ethernet 0x86dd ipv6 at 14 proto 17 tos 0 ttl 64 bytes 72 udp at 78 5>6"},
      {kV6 + "next=51 payload=1104000000000001000000020001020304050607080900",
       "ethernet 0x86dd ipv6 at 14 proto 51 tos 0 ttl 64 bytes 63"},
      {kV6 + "next=135 payload=1100000000000000" + kUdp,
       "ethernet 0x86dd ipv6 at 14 proto 17 tos 0 ttl 64 bytes 56 udp at 62 5>6"},
      {kV6 + "next=139 payload=1100000000000000" + kUdp,
       "ethernet 0x86dd ipv6 at 14 proto 17 tos 0 ttl 64 bytes 56 udp at 62 5>6"},
      {kV6 + "next=140 payload=1100000000000000" + kUdp,
       "ethernet 0x86dd ipv6 at 14 proto 17 tos 0 ttl 64 bytes 56 udp at 62 5>6"},
      {kV6 +
           "next=60 payload=11010000000000"
           "00" +
           kUdp,
       "ethernet 0x86dd ipv6 at 14 proto 17 tos 0 ttl 64 bytes 56"},
      {kV6 + "next=60 payload=11000000000000",
       "ethernet 0x86dd ipv6 at 14 proto 60 tos 0 ttl 64 bytes 47"},
      {"vlan=1 arp op=reply spa=192.0.2.1 tpa=192.0.2.2",
       "tags 1 ethernet 0x806 arp 2 at 18 192.0.2.1>192.0.2.2"},
      {"llc dsap=0x42 ssap=0x43", "llc 0x4243"},
      {"llc dsap=0x42 ssap=0x43 length=2", "llc 0x0"},
      {"snap proto=0x800 payload=45", "snap 0x800"},
      {"snap oui=0x1 proto=0x800", "llc 0xaaaa"},
      {"type=0x600", "ethernet 0x600"},
      {"type=0 payload=aaaa030000000800", "llc 0x0"},
      // Damage.
      {"type=0x800", "ethernet 0x800 damaged at 14"},
      {"type=0x806 payload=0001", "ethernet 0x806 damaged at 14"},
      {"type=0x86dd payload=60", "ethernet 0x86dd damaged at 14"},
      {kV4 + "length=21", "ethernet 0x800 damaged at 14"},
      {kV4 + "length=19", "ethernet 0x800 damaged at 14"},
      {kV6 + "length=1", "ethernet 0x86dd damaged at 14"},
      {"type=0x800 payload=650000140000000040110000c0000201c0000202",
       "ethernet 0x800 damaged at 14"},
      {"type=0x800 payload=440000140000000040110000c0000201c0000202",
       "ethernet 0x800 damaged at 14"},
      {"arp payload=00", "ethernet 0x806 arp 1 at 14 0.0.0.0>0.0.0.0"},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(summary(headers_of(*make(row.text))), row.found) << row.text;
  }
}

TEST_F(FrameTest, ParserRefusesWhatIsNoFrame) {
  const struct {
    const char* bytes;
    FrameFault fault;
  } kRows[] = {
      {"00005e005302 00005e005301 08", FrameFault::runt},
      {"00005e005302 00005e005301 0600", FrameFault::none},
      {"00005e005302 00005e005301 05ff", FrameFault::malformed},
      {"00005e005302 00005e005301 0001", FrameFault::malformed},
      {"00005e005302 00005e005301 0001 00", FrameFault::none},
      {"00005e005302 00005e005301 8100 0001 08", FrameFault::malformed},
      {"00005e005302 00005e005301 8100 0001 8100 0001", FrameFault::malformed},
      {"00005e005302 00005e005301 8100 0001 88a8 0001 88cc", FrameFault::none},
  };
  for (const auto& row : kRows) {
    std::vector<std::uint8_t> frame;
    std::string error;
    ASSERT_TRUE(parse_frame(row.bytes, frame, error)) << error;
    Headers headers;
    EXPECT_EQ(parse(frame.data(), frame.size(), headers), row.fault) << row.bytes;
  }
  Headers headers = headers_of(*make("vlan=2748 prio=6 dei=1 tpid=0x88a8 vlan=1"));
  EXPECT_TRUE(headers.tag_type == 0x88a8 && headers.tag_vlan() == 2748 &&
              headers.tag_priority() == 6 && headers.tag_control == 0xdabc);
  EXPECT_TRUE(headers.destination == 0x5e005302 && headers.source == 0x5e005301);
  EXPECT_FALSE(headers.group() || headers.broadcast() || headers.reserved_group());
  headers.destination = 0x0180c200000f;
  EXPECT_TRUE(headers.group() && headers.reserved_group() && !headers.broadcast());
  headers.destination = 0x0180c2000010;
  EXPECT_FALSE(headers.reserved_group());
  headers.destination = 0xffffffffffff;
  EXPECT_TRUE(headers.group() && headers.broadcast());
}

// Run under the address sanitizer this finds any read beyond the frame: each has its own block.
TEST_F(FrameTest, ParserStaysWithinAnyFrame) {
  std::vector<std::uint8_t> seed;
  std::string error;
  std::mt19937 random(2);
  for (const char* text : {"vlan=1 vlan=2 ipv4 src=192.0.2.1 dst=192.0.2.2 tcp sport=1 dport=2",
                           "ipv6 src=2001:db8::1 dst=2001:db8::2 hopopts routing frag dstopts udp "
                           "sport=1 dport=2",
                           "snap proto=1", "arp"}) {
    ASSERT_TRUE(parse_frame(kEth + text, seed, error));
    for (std::size_t bytes = 0; bytes <= seed.size(); ++bytes) {
      for (int round = 0; round < 30; ++round) {
        const std::unique_ptr<std::uint8_t[]> frame(new std::uint8_t[bytes]);
        std::copy_n(seed.begin(), bytes, frame.get());
        if (round != 0 && bytes > 12) {
          frame[12 + random() % (bytes - 12)] = static_cast<std::uint8_t>(random());
        }
        Headers headers;
        parse(frame.get(), bytes, headers);
        EXPECT_TRUE(headers.l3_offset <= bytes && headers.l4_offset <= bytes);
      }
    }
  }
}

// ---- Rewriting ----------------------------------------------------------------------------------

// After each change the frame is what the text with the change would have made, checksums included.
TEST_F(FrameTest, RewritingKeepsChecksumsRight) {
  const auto rewritten = [&](const std::string& before, const std::string& after, auto change) {
    const FramePtr frame = make(before);
    Headers headers = headers_of(*frame);
    change(*frame, headers);
    EXPECT_EQ(print(*frame), print(*make(after))) << before;
    const Headers fresh = headers_of(*frame);
    EXPECT_TRUE(fresh.l3_offset == headers.l3_offset && fresh.l4_offset == headers.l4_offset &&
                fresh.tags == headers.tags && fresh.tag_control == headers.tag_control &&
                fresh.ttl == headers.ttl && fresh.tos == headers.tos &&
                fresh.ipv4_source == headers.ipv4_source &&
                fresh.ipv4_destination == headers.ipv4_destination &&
                fresh.l4_source == headers.l4_source &&
                fresh.l4_destination == headers.l4_destination);
  };
  std::mt19937 random(3);
  const auto ip = [](std::uint32_t number) {
    return std::to_string(number >> 24) + "." + std::to_string(number >> 16 & 255) + "." +
           std::to_string(number >> 8 & 255) + "." + std::to_string(number & 255);
  };
  for (int round = 0; round < 200; ++round) {
    const std::uint32_t a = static_cast<std::uint32_t>(random()),
                        b = static_cast<std::uint32_t>(random());
    const auto port = static_cast<std::uint16_t>(random());
    const auto ttl = static_cast<unsigned>(1 + random() % 255);
    const auto tos = static_cast<unsigned>(random() % 256);
    const std::string l4 = std::string(random() % 2 == 0 ? "udp" : "tcp") + " sport=1 dport=";
    const std::string tail = " payload=" + std::string(random() % 2 == 0 ? "01" : "0102");
    const auto text = [&](std::uint32_t source, unsigned t, unsigned s, unsigned dport) {
      return "ipv4 src=" + ip(source) + " dst=192.0.2.9 ttl=" + std::to_string(t) +
             " tos=" + std::to_string(s) + " " + l4 + std::to_string(dport) + tail;
    };
    rewritten(text(a, ttl, 0, 2), text(b, ttl - 1, tos, port), [&](Frame& frame, Headers& headers) {
      set_ipv4_source(frame, headers, b);
      decrement_ttl(frame, headers);
      set_tos(frame, headers, static_cast<std::uint8_t>(tos));
      set_l4_destination(frame, headers, port);
    });
  }
  const std::string rest = "ipv6 src=2001:db8::1 dst=2001:db8::2 udp sport=1 dport=2";
  rewritten(rest, "vlan=7 prio=5 " + rest, [](Frame& frame, Headers& headers) {
    set_tag(frame, headers, tag_control(7, 5, false));
  });
  rewritten("vlan=9 tpid=0x88a8 vlan=8 " + rest, "vlan=7 tpid=0x88a8 vlan=8 " + rest,
            [](Frame& frame, Headers& headers) { set_tag(frame, headers, 7); });
  rewritten("vlan=9 vlan=8 prio=1 " + rest, "vlan=8 prio=1 " + rest, pop_tag);
  rewritten("ipv4 src=192.0.2.1 dst=192.0.2.2 udp sport=1 dport=2 checksum=0",
            "ipv4 src=192.0.2.1 dst=192.0.2.2 udp sport=9 dport=2 checksum=0",
            [](Frame& frame, Headers& headers) { set_l4_source(frame, headers, 9); });
  rewritten("ipv6 src=2001:db8::1 dst=2001:db8::2 tc=0x5a flow=0x12345 hops=9 tcp sport=1 dport=2",
            "ipv6 src=2001:db8::1 dst=2001:db8::2 tc=0xc3 flow=0x12345 hops=8 tcp sport=7 dport=2",
            [](Frame& frame, Headers& headers) {
              set_tos(frame, headers, 0xc3);
              decrement_ttl(frame, headers);
              set_l4_source(frame, headers, 7);
            });
  // The end that the destination's address is, and of a fragment the first alone.
  rewritten(
      "ipv4 src=192.0.2.1 dst=192.0.2.2 tcp sport=1 dport=2",
      "ipv4 src=192.0.2.1 dst=203.0.113.7 tcp sport=1 dport=2",
      [](Frame& frame, Headers& headers) { set_ipv4_destination(frame, headers, 0xcb007107); });
  // What asks for a header that is not there.
  for (const char* text : {"arp spa=192.0.2.1", "type=0x88cc payload=01020304", "llc dsap=1 ssap=2",
                           "ipv6 src=2001:db8::1 dst=2001:db8::2 icmp6 type=1 code=2"}) {
    rewritten(text, text, [&](Frame& frame, Headers& headers) {
      set_ipv4_source(frame, headers, 1);
      set_ipv4_destination(frame, headers, 1);
      set_l4_source(frame, headers, 1);
      set_l4_destination(frame, headers, 1);
      pop_tag(frame, headers);
      if (!headers.has_ip()) {
        set_tos(frame, headers, 1);
        decrement_ttl(frame, headers);
      }
    });
  }
  const FramePtr frame = make(rest);
  Headers headers = headers_of(*frame);
  set_source_mac(*frame, headers, 0x020000000001);
  set_destination_mac(*frame, headers, 0x020000000002);
  EXPECT_TRUE(headers.source == 0x020000000001 && headers.destination == 0x020000000002);
  EXPECT_EQ(print(*frame).substr(0, 48), "eth src=02:00:00:00:00:01 dst=02:00:00:00:00:02 ");
  frame->insert(0, frame->headroom() - 2);  // no room for a tag is left
  const std::size_t size = frame->size();
  set_tag(*frame, headers, 5);
  EXPECT_TRUE(frame->size() == size && headers.tags == 0);
}

// A UDP checksum that comes out as 0 is sent as 0xFFFF, since 0 says that there is none.
TEST_F(FrameTest, UdpChecksumIsNeverLost) {
  const FramePtr frame =
      make("ipv4 src=192.0.2.1 dst=192.0.2.2 udp sport=1 dport=2 payload=010203");
  Headers headers = headers_of(*frame);
  const std::uint8_t* const l4 = frame->data() + headers.l4_offset;
  unsigned ends = 0;
  for (unsigned port = 0; port <= UINT16_MAX; ++port) {
    set_l4_destination(*frame, headers, static_cast<std::uint16_t>(port));
    const std::uint64_t pseudo = sum_words(frame->data() + headers.l3_offset + 12, 8) + 17 + 11;
    ASSERT_EQ(fold(sum_words(l4, 11, pseudo)), 0xFFFF) << port;
    ASSERT_NE(load16(l4 + 6), 0) << port;
    ends += load16(l4 + 6) == 0xFFFF;
  }
  EXPECT_EQ(ends, 1u);
}

// ---- Offloads -----------------------------------------------------------------------------------

// Makes the checksum of a frame what a sender leaves to the network card.
void leave_checksum(Frame& frame) {
  Headers headers;
  parse(frame.data(), frame.size(), headers);
  const std::uint8_t* l3 = frame.data() + headers.l3_offset;
  const bool v4 = headers.l3 == Layer3::ipv4;
  const bool tcp = headers.l4 == Layer4::tcp;
  frame.offload.checksum_partial = true;
  frame.offload.checksum_start = headers.l4_offset;
  frame.offload.checksum_offset = tcp ? 16 : 6;
  store16(frame.data() + headers.l4_offset + frame.offload.checksum_offset,
          fold((v4 ? sum_words(l3 + 12, 8) : sum_words(l3 + 8, 32)) + headers.ip_protocol +
               (frame.size() - headers.l4_offset)));
}

TEST_F(FrameTest, PartialChecksumFollowsRewritingAndTags) {
  for (const char* l4 : {"udp sport=1 dport=2", "tcp sport=1 dport=2"}) {
    const FramePtr frame =
        make("ipv4 src=192.0.2.1 dst=192.0.2.2 " + std::string(l4) + " payload=010203");
    leave_checksum(*frame);
    Headers headers = headers_of(*frame);
    set_tag(*frame, headers, 5);
    set_ipv4_destination(*frame, headers, 0xcb007107);
    set_l4_source(*frame, headers, 77);
    complete_checksum(*frame);
    EXPECT_EQ(print(*frame).find("checksum"), std::string::npos) << print(*frame);
    EXPECT_FALSE(frame->offload.pending());
  }
}

TEST_F(FrameTest, PartialChecksumOutsideOfTheFrameIsDropped) {
  for (const unsigned start : {0u, 20u, 26u, 27u, 28u, 60u, 65535u}) {
    const FramePtr frame = make("type=0x88cc payload=000000000000000000000000000f");
    const std::string before = print(*frame);
    ASSERT_EQ(frame->size(), 28u);
    frame->offload.checksum_partial = true;
    frame->offload.checksum_start = static_cast<std::uint16_t>(start);
    complete_checksum(*frame);
    EXPECT_FALSE(frame->offload.pending());
    EXPECT_EQ(print(*frame) == before, start > 26) << start;
    if (start == 26) {
      EXPECT_EQ(load16(frame->data() + 26), 0xfff0);
    }
  }
}

std::string hex_payload(unsigned bytes) {
  std::vector<std::uint8_t> payload(bytes);
  for (unsigned i = 0; i < bytes; ++i) payload[i] = static_cast<std::uint8_t>(i * 7 + i / 256);
  return bytes_text(payload.data(), payload.size());
}

// Each segment is the frame that its text makes, byte by byte: sequence numbers, identifications,
// flags, lengths and checksums.
TEST_F(FrameTest, SegmentsAreFramesOfTheirOwn) {
  const std::string kV4 = "vlan=5 ipv4 src=192.0.2.1 dst=192.0.2.2 ttl=9 id=";
  const std::string kTcp = " tcp sport=1 dport=2 ack=77 window=9 options=0204ffff seq=";
  const std::string kUdp4 = "ipv4 src=192.0.2.1 dst=192.0.2.2 options=94040000 id=";
  const std::string kV6 = "ipv6 src=2001:db8::1 dst=2001:db8::2 dstopts";
  const struct {
    const char* name;
    Segmentation segmentation;
    unsigned payload_bytes, segment_bytes, header_bytes;
    std::function<std::string(unsigned number, const char* flags)> text;
  } kRows[] = {
      {"TCP over IPv4, numbers that run over", Segmentation::tcp4, 2500, 1000, 62,
       [&](unsigned n, const char* flags) {
         return kV4 + std::to_string((65535 + n) % 65536) + kTcp +
                std::to_string((4294967000 + 1000ull * n) & UINT32_MAX) + " flags=" + flags;
       }},
      {"TCP over IPv6, no rest", Segmentation::tcp6, 2000, 1000, 86,
       [&](unsigned n, const char* flags) {
         return kV6 + kTcp + std::to_string(5 + 1000 * n) + " flags=" + flags;
       }},
      {"UDP", Segmentation::udp, 2001, 1000, 46,
       [&](unsigned n, const char*) {
         return kUdp4 + std::to_string(9 + n) + " udp sport=1 dport=2";
       }},
      {"a single one", Segmentation::tcp4, 700, 1000, 62,
       [&](unsigned, const char* flags) { return kV4 + "1" + kTcp + "5 flags=" + flags; }},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    const std::string payload = hex_payload(row.payload_bytes);
    const unsigned count = (row.payload_bytes + row.segment_bytes - 1) / row.segment_bytes;
    FramePtr frame = make(row.text(0, "FPAC") + " payload=" + payload + " trailer=ff01");
    frame->ingress = 4;
    frame->vlan = 5;
    frame->priority = 6;
    frame->offload.segmentation = row.segmentation;
    frame->offload.segment_bytes = static_cast<std::uint16_t>(row.segment_bytes);
    EXPECT_EQ(longest_segment(*frame),
              row.header_bytes + std::min(row.segment_bytes, row.payload_bytes));
    std::size_t taken = 0;
    for (unsigned number = 0; number < count; ++number) {
      const FramePtr piece = next_segment(frame, pool, taken);
      ASSERT_NE(piece, nullptr);
      const bool last = number + 1 == count;
      const char* const flags = count == 1 ? "FPAC" : number == 0 ? "AC" : last ? "FPA" : "A";
      const FramePtr wanted =
          make(row.text(number, flags) +
               " payload=" + payload.substr(2 * number * row.segment_bytes, 2 * row.segment_bytes));
      if (!std::equal(piece->data(), piece->data() + piece->size(), wanted->data(),
                      wanted->data() + wanted->size())) {
        ADD_FAILURE() << "wanted: " << print(*wanted) << "\ncame:   " << print(*piece);
      }
      EXPECT_TRUE(piece->ingress == 4 && piece->vlan == 5 && piece->priority == 6);
      EXPECT_FALSE(piece->offload.pending());
      EXPECT_EQ(frame == nullptr, last);
    }
    EXPECT_EQ(taken, row.payload_bytes);
  }
}

TEST_F(FrameTest, SegmentationThatDoesNotFitTheFrameDropsIt) {
  const std::string kV4 = "ipv4 src=192.0.2.1 dst=192.0.2.2 ";
  const struct {
    std::string text;
    Segmentation segmentation;
    std::uint16_t segment_bytes;
  } kRows[] = {
      {"arp", Segmentation::tcp4, 10},
      {kV4 + "udp sport=1 dport=2 payload=0102", Segmentation::tcp4, 10},
      {kV4 + "tcp sport=1 dport=2 payload=0102", Segmentation::udp, 10},
      {kV4 + "tcp sport=1 dport=2 payload=0102", Segmentation::tcp4, 0},
      {kV4 + "tcp sport=1 dport=2", Segmentation::tcp4, 10},
      {kV4 + "tcp sport=1 dport=2 trailer=01020304", Segmentation::tcp4, 10},
      {kV4 + "udp sport=1 dport=2", Segmentation::udp, 10},
      // TCP headers of 16 bytes, and of 60 where 40 are there.
      {kV4 + "proto=6 payload=0001000200000000000000004000000000000000"
             "01020304",
       Segmentation::tcp4, 2},
      {kV4 + "proto=6 payload=000100020000000000000000f000000000000000"
             "01020304",
       Segmentation::tcp4, 2},
  };
  for (const auto& row : kRows) {
    FramePtr frame = make(row.text);
    frame->offload.segmentation = row.segmentation;
    frame->offload.segment_bytes = row.segment_bytes;
    std::size_t taken = 0;
    EXPECT_EQ(longest_segment(*frame), frame->size()) << row.text;
    EXPECT_EQ(next_segment(frame, pool, taken), nullptr) << row.text;
    EXPECT_EQ(frame, nullptr) << row.text;
  }
  // Without a frame for the piece the whole goes back.
  FramePtr frame = make(kV4 + "udp sport=1 dport=2 payload=0102");
  frame->offload.segmentation = Segmentation::udp;
  frame->offload.segment_bytes = 1;
  std::vector<FramePtr> others;
  while (FramePtr other = pool.make(10)) others.push_back(std::move(other));
  std::size_t taken = 0;
  EXPECT_EQ(next_segment(frame, pool, taken), nullptr);
  EXPECT_EQ(frame, nullptr);
}

// ---- Storm meter --------------------------------------------------------------------------------

TEST(StormMeter, LetsExactlyTheRateThroughHoweverTimePasses) {
  constexpr std::uint64_t kSecond = 1000000000;
  for (const std::uint32_t rate : {3u, 7u, 1000u, 999983u}) {
    for (const std::uint64_t step : {kSecond / 1000, std::uint64_t{333333333}, 7 * kSecond / 10}) {
      StormMeter meter;
      meter.set_rate(rate);
      std::uint64_t now = 5;
      while (meter.admit(now)) {
      }
      // A drained meter: what comes in each step is what the step is worth, nothing lost.
      std::uint64_t admitted = 0;
      const std::uint64_t start = now;
      while (now - start < 3 * kSecond) {
        now += step;
        while (meter.admit(now)) ++admitted;
      }
      EXPECT_EQ(admitted, (now - start) * rate / kSecond) << rate << " every " << step;
    }
  }
  StormMeter meter;
  for (int i = 0; i < 1000; ++i) EXPECT_TRUE(meter.admit(0)) << "no limit";
}

}  // namespace
}  // namespace softcard
