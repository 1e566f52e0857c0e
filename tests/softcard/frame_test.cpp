// SPDX-License-Identifier: Apache-2.0
//
// The parts that frames pass through, each alone: pool, parser, rewriting with checksums, offloads,
// storm meter.

#include "softcard/frames/frame.h"

#include <gtest/gtest.h>

#include <random>

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
  std::vector<FramePtr> frames;
  while (FramePtr frame = pool.make(100)) frames.push_back(std::move(frame));
  EXPECT_EQ(frames.size(), 512u);
  EXPECT_EQ(pool.make(FramePool::kLargeBytes)->size(), FramePool::kLargeBytes);
  EXPECT_EQ(pool.make(FramePool::kLargeBytes + 1), nullptr);
  frames.front()->vlan = 7;
  frames.front()->insert(0, 4);
  frames.clear();
  const FramePtr again = pool.make(100);
  EXPECT_TRUE(again->vlan == 0 && again->headroom() == Frame::kHeadroom);
}

// ---- Parser -------------------------------------------------------------------------------------

TEST_F(FrameTest, ParserFindsTheHeaders) {
  const struct {
    const char* text;
    unsigned tags, l3_offset, l4_offset, source, destination;
    Layer3 l3;
    Layer4 l4;
  } kRows[] = {
      {"ipv4 src=192.0.2.1 dst=192.0.2.2 udp sport=5 dport=6", 0, 14, 34, 5, 6, Layer3::ipv4,
       Layer4::udp},
      {"vlan=1 vlan=2 tpid=0x88a8 vlan=3 ipv4 src=192.0.2.1 dst=192.0.2.2 options=94040000 tcp "
       "sport=5 dport=6",
       3, 26, 50, 5, 6, Layer3::ipv4, Layer4::tcp},
      {"ipv6 src=2001:db8::1 dst=2001:db8::2 hopopts routing frag id=1 dstopts udp sport=5 dport=6",
       0, 14, 86, 5, 6, Layer3::ipv6, Layer4::udp},
      {"ipv6 src=2001:db8::1 dst=2001:db8::2 frag offset=8 next=17 payload=0005000600080000", 0, 14,
       0, 0, 0, Layer3::ipv6, Layer4::none},
      {"ipv4 src=192.0.2.1 dst=192.0.2.2 frag=8 proto=17 payload=0005000600080000", 0, 14, 0, 0, 0,
       Layer3::ipv4, Layer4::none},
      {"ipv4 src=192.0.2.1 dst=192.0.2.2 icmp type=8 code=3", 0, 14, 34, 8, 3, Layer3::ipv4,
       Layer4::icmp},
      {"ipv6 src=2001:db8::1 dst=2001:db8::2 icmp6 type=135", 0, 14, 54, 135, 0, Layer3::ipv6,
       Layer4::icmp},
      {"ipv4 src=192.0.2.1 dst=192.0.2.2 proto=17 payload=0005", 0, 14, 34, 0, 0, Layer3::ipv4,
       Layer4::none},
      {"vlan=1 arp spa=192.0.2.1", 1, 18, 0, 0, 0, Layer3::arp, Layer4::none},
      {"llc dsap=0x42 ssap=0x42", 0, 0, 0, 0, 0, Layer3::none, Layer4::none},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.text);
    const Headers headers = headers_of(*make(row.text));
    EXPECT_EQ(headers.tags, row.tags);
    EXPECT_EQ(headers.l3, row.l3);
    EXPECT_EQ(headers.l4, row.l4);
    EXPECT_EQ(headers.l3_offset, row.l3_offset);
    EXPECT_EQ(headers.l4_offset, row.l4_offset);
    EXPECT_EQ(headers.l4_source, row.source);
    EXPECT_EQ(headers.l4_destination, row.destination);
    EXPECT_FALSE(headers.l3_damaged);
  }
}

TEST_F(FrameTest, ParserSeesDamage) {
  for (const char* text :
       {"type=0x800", "type=0x806 payload=0001", "type=0x86dd payload=60",
        "ipv4 src=192.0.2.1 dst=192.0.2.2 length=99", "ipv4 src=192.0.2.1 dst=192.0.2.2 length=19",
        "ipv6 src=2001:db8::1 dst=2001:db8::2 length=9",
        "type=0x800 payload=6500001400000000401100"
        "00c0000201c0000202"}) {
    const Headers headers = headers_of(*make(text));
    EXPECT_TRUE(headers.l3_damaged && headers.l3 == Layer3::none) << text;
  }
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

TEST_F(FrameTest, SegmentsCarryTheWholePayload) {
  std::string payload;
  for (int i = 0; i < 2500; ++i)
    payload += "0123456789abcdef"[i % 16], payload += "0123456789abcdef"[i / 16 % 16];
  const struct {
    const char* headers;
    Segmentation segmentation;
  } kRows[] = {
      {"vlan=5 ipv4 src=192.0.2.1 dst=192.0.2.2 id=9 tcp sport=1 dport=2 seq=4294967000 flags=FPA",
       Segmentation::tcp4},
      {"ipv6 src=2001:db8::1 dst=2001:db8::2 tcp sport=1 dport=2 seq=5 flags=FPA",
       Segmentation::tcp6},
      {"ipv4 src=192.0.2.1 dst=192.0.2.2 udp sport=1 dport=2", Segmentation::udp},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.headers);
    FramePtr frame = make(std::string(row.headers) + " payload=" + payload);
    frame->offload.segmentation = row.segmentation;
    frame->offload.segment_bytes = 1000;
    leave_checksum(*frame);
    const std::size_t longest = longest_segment(*frame);
    std::string joined;
    std::size_t taken = 0;
    for (unsigned number = 0; frame != nullptr; ++number) {
      const FramePtr piece = next_segment(frame, pool, taken);
      ASSERT_NE(piece, nullptr);
      const std::string text = print(*piece);
      EXPECT_EQ(text.find("checksum"), std::string::npos) << text.substr(0, 200);
      EXPECT_EQ(text.find("length"), std::string::npos);
      EXPECT_LE(piece->size(), longest);
      EXPECT_EQ(text.find("flags=FPA") != std::string::npos,
                row.segmentation != Segmentation::udp && frame == nullptr);
      if (row.segmentation == Segmentation::tcp4) {
        const std::string id = " id=" + std::to_string(9 + number) + " ";
        EXPECT_NE(text.find(id), std::string::npos) << text.substr(0, 200);
      }
      joined += text.substr(text.find("payload=") + 8);
    }
    EXPECT_EQ(joined, payload);
  }
}

TEST_F(FrameTest, SegmentationThatDoesNotFitTheFrameDropsIt) {
  for (const char* text : {"arp", "ipv4 src=192.0.2.1 dst=192.0.2.2 udp sport=1 dport=2"}) {
    FramePtr frame = make(text);
    frame->offload.segmentation = Segmentation::tcp4;
    frame->offload.segment_bytes = 10;
    std::size_t taken = 0;
    EXPECT_EQ(longest_segment(*frame), frame->size());
    EXPECT_EQ(next_segment(frame, pool, taken), nullptr);
    EXPECT_EQ(frame, nullptr);
  }
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
