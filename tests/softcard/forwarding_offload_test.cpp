// SPDX-License-Identifier: Apache-2.0
//
// Frames whose checksum or segmentation was left to others, on their way through a card.
//
//      a    b    c    d
//      |    |    |    |      VLAN 10: 0, 1, 2 untagged, 3 tagged; b, c, d known there
//    +-0----1----2----3-+    VLAN 20: 4, 5 untagged; 5 is a way out of the router
//    +------------------+    the cable of 2 takes offloads over, the others leave them to the card

#include <algorithm>

#include "softcard/frames/checksum.h"
#include "softcard/frames/parser.h"
#include "softcard/frames/wire.h"
#include "tests/softcard/switch_fixture.h"

namespace softcard {
namespace {

constexpr unsigned kFar = 0xc6336401;  // 198.51.100.1

// Takes frames with what is left to do.
class OffloadCable : public Cable {
 public:
  struct Sent {
    std::vector<std::uint8_t> bytes;
    Offload offload;
  };
  void plug(CableSink&, PortIndex) override {}
  std::size_t transmit(FramePtr* frames, std::size_t count) override {
    for (std::size_t i = 0; i < count; ++i) {
      sent.push_back(
          {{frames[i]->data(), frames[i]->data() + frames[i]->size()}, frames[i]->offload});
      frames[i].reset();
    }
    return count;
  }
  bool carrier() const override { return true; }
  bool takes_offloads() const override { return true; }
  std::string describe() const override { return "offload"; }

  std::vector<Sent> sent;
};

class OffloadTest : public SwitchTest {
 protected:
  OffloadTest() {
    vlan(10, mps({3}), mps({0, 1, 2}));
    vlan(20, {}, mps({4, 5}));
    for (const PortIndex port : {PortIndex{0}, PortIndex{3}}) {
      ok(sdk.set_port_flood_blocking_cpu(mp(port), FLOOD_BLOCK_ALL));
    }
    for (const char station : {'b', 'c', 'd'}) {
      ok(sdk.add_mac_to_port(mp(static_cast<PortIndex>(station - 'a')), mac(station), 10, false));
    }
    auto plugged = std::make_unique<OffloadCable>();
    taker = plugged.get();
    card.plug(2, std::move(plugged));
    counted();
  }

  // The frame that `words` describe with its transport checksum left open; returns its bytes.
  std::vector<std::uint8_t> open(const std::string& words, Offload& offload) {
    std::vector<std::uint8_t> frame = bytes_of(words);
    Headers headers;
    EXPECT_EQ(parse(frame.data(), frame.size(), headers), FrameFault::none);
    const bool v4 = headers.l3 == Layer3::ipv4;
    const std::uint8_t* l3 = frame.data() + headers.l3_offset;
    const std::size_t end = headers.l3_offset + std::size_t{headers.l3_bytes};
    offload.checksum_partial = true;
    offload.checksum_start = headers.l4_offset;
    offload.checksum_offset = headers.l4 == Layer4::tcp ? 16 : 6;
    store16(frame.data() + headers.l4_offset + offload.checksum_offset,
            fold(sum_words(l3 + (v4 ? 12 : 8), v4 ? 8 : 32) + headers.ip_protocol +
                 (end - headers.l4_offset)));
    return frame;
  }
  void in_open(PortIndex port, const std::string& words,
               Segmentation segmentation = Segmentation::none, std::uint16_t segment_bytes = 0) {
    Offload offload;
    const std::vector<std::uint8_t> bytes = open(words, offload);
    offload.segmentation = segmentation;
    offload.segment_bytes = segment_bytes;
    FramePtr frame = card.frame_pool().make(bytes.data(), bytes.size());
    frame->offload = offload;
    card.frames_arrived(port, &frame, 1);
  }
  // The next frame of a port is exactly this one, checksums and all.
  void out_exactly(PortIndex port, const std::string& words) {
    std::vector<std::uint8_t> frame;
    ASSERT_TRUE(cable(port).take(frame)) << "port " << port << " sent nothing: " << words;
    const auto wanted = bytes_of(words);
    EXPECT_EQ(print_frame(frame.data(), frame.size()), print_frame(wanted.data(), wanted.size()));
  }

  OffloadCable* taker = nullptr;
};

constexpr const char* kOpen[] = {
    "ipv4 src=192.0.2.1 dst=192.0.2.2 udp sport=1 dport=2 payload=010203",
    "ipv4 src=192.0.2.1 dst=192.0.2.2 tcp sport=1 dport=2 payload=0102",
    "ipv6 src=2001:db8::1 dst=2001:db8::2 udp sport=1 dport=2 payload=01",
    "ipv6 src=2001:db8::1 dst=2001:db8::2 tcp sport=1 dport=2"};

TEST_F(OffloadTest, OpenChecksumIsCompletedWhereTheCableDoesNot) {
  for (const std::string rest : kOpen) {
    SCOPED_TRACE(rest);
    in_open(0, "a b " + rest);
    out_exactly(1, "a b " + rest);
    in_open(0, "a d " + rest);
    out_exactly(3, "a d vlan=10 " + rest);
    in_open(3, "d b vlan=10 " + rest);
    out_exactly(1, "d b " + rest);
    in_open(0, "a all " + rest);
    out_exactly(1, "a all " + rest);
    out_exactly(3, "a all vlan=10 " + rest);
    ASSERT_EQ(taker->sent.size(), 1u);
    taker->sent.clear();
  }
}

TEST_F(OffloadTest, OpenChecksumGoesOnWhereTheCableTakesIt) {
  for (const std::string rest : kOpen) {
    SCOPED_TRACE(rest);
    in_open(0, "a c " + rest);
    in_open(3, "d c vlan=10 " + rest);
    ASSERT_EQ(taker->sent.size(), 2u);
    for (const char* source : {"a", "d"}) {
      const OffloadCable::Sent& sent = taker->sent[source[0] == 'a' ? 0 : 1];
      Offload wanted;
      EXPECT_EQ(sent.bytes, open(source + (" c " + rest), wanted));
      EXPECT_TRUE(sent.offload.checksum_partial);
      EXPECT_EQ(sent.offload.checksum_start, wanted.checksum_start) << "follows the tag";
      EXPECT_EQ(sent.offload.checksum_offset, wanted.checksum_offset);
    }
    taker->sent.clear();
  }
}

TEST_F(OffloadTest, TheCpuAndMirrorsGetWholeChecksums) {
  ok(sdk.add_system_mac(mac('s'), 10));
  ok(sdk.set_port_mirror(mp(6), mp(0), MIRROR_TYPE_INGRESS));
  const std::string frame = std::string("a s ") + kOpen[1];
  in_open(0, frame);
  EXPECT_EQ(cpu(RX_REASON_SYSTEM_MAC, "").frame, bytes_of(frame));
  out_exactly(6, frame);
  ok(sdk.set_port_flood_blocking_cpu(mp(0), FLOOD_BLOCK_NONE));
  const std::string flood = std::string("a all ") + kOpen[0];
  in_open(0, flood);
  EXPECT_EQ(cpu(RX_REASON_FLOOD, "").frame, bytes_of(flood));
  out_exactly(1, flood);
  skip({3, 6});
  ASSERT_EQ(taker->sent.size(), 1u);
  EXPECT_TRUE(taker->sent[0].offload.checksum_partial) << "a copy is completed, not the frame";
}

TEST_F(OffloadTest, ReusedFramesHaveNothingLeftToDo) {
  for (int i = 0; i < 3; ++i) in_open(0, std::string("a c ") + kOpen[0]);
  in(0, std::string("a c ") + kOpen[1]);
  ASSERT_EQ(taker->sent.size(), 4u);
  EXPECT_FALSE(taker->sent[3].offload.pending());
  EXPECT_EQ(taker->sent[3].bytes, bytes_of(std::string("a c ") + kOpen[1]));
}

// 2,500 bytes of TCP in pieces of 1,000.
struct Segments {
  static std::string payload(std::size_t from, std::size_t bytes) {
    std::string hex;
    for (std::size_t i = from; i < from + bytes; ++i) {
      constexpr char kDigits[] = "0123456789abcdef";
      hex += kDigits[i * 7 >> 4 & 0xf];
      hex += kDigits[i * 7 & 0xf];
    }
    return hex;
  }
  static std::string whole(const std::string& ip) {
    return ip + " tcp sport=1 dport=2 seq=4294966900 flags=PAF payload=" + payload(0, 2500);
  }
  // The pieces of whole(), in their order.
  static std::vector<std::string> pieces(const std::string& ip, bool ids) {
    const char* const kSeq[] = {"4294966900", "604", "1604"};
    const char* const kFlags[] = {"A", "A", "PAF"};
    std::vector<std::string> lines;
    for (std::size_t i = 0; i < 3; ++i) {
      lines.push_back(ip + (ids ? " id=" + std::to_string(7 + i) : "") +
                      " tcp sport=1 dport=2 seq=" + kSeq[i] + " flags=" + kFlags[i] +
                      " payload=" + payload(i * 1000, i == 2 ? 500 : 1000));
    }
    return lines;
  }
};
constexpr char kIp4[] = "ipv4 src=192.0.2.1 dst=192.0.2.2";
constexpr char kIp6[] = "ipv6 src=2001:db8::1 dst=2001:db8::2";

TEST_F(OffloadTest, SegmentsWhereTheCableDoesNot) {
  in_open(0, "a b " + Segments::whole(std::string(kIp4) + " id=7"), Segmentation::tcp4, 1000);
  for (const std::string& piece : Segments::pieces(kIp4, true)) out_exactly(1, "a b " + piece);
  EXPECT_EQ(counted(), "0 in; 1 out x3 q0 x3");
  EXPECT_EQ(stat(0, STAT_IN_OCTETS), 2554u);
  EXPECT_EQ(stat(1, STAT_OUT_OCTETS), 2500u + 3 * 54);
  in_open(0, "a d " + Segments::whole(kIp6), Segmentation::tcp6, 1000);
  for (const std::string& piece : Segments::pieces(kIp6, false)) {
    out_exactly(3, "a d vlan=10 " + piece);
  }
  in_open(0, "a all " + Segments::whole(kIp6), Segmentation::tcp6, 1000);
  for (const std::string& piece : Segments::pieces(kIp6, false)) {
    out_exactly(1, "a all " + piece);
    out_exactly(3, "a all vlan=10 " + piece);
  }
  ASSERT_EQ(taker->sent.size(), 1u);
  EXPECT_EQ(taker->sent[0].bytes.size(), 2574u);
  EXPECT_EQ(taker->sent[0].offload.segmentation, Segmentation::tcp6);
  EXPECT_EQ(taker->sent[0].offload.segment_bytes, 1000);
}

TEST_F(OffloadTest, TheCpuGetsSegments) {
  ok(sdk.add_system_mac(mac('s'), 10));
  in_open(0, "a s " + Segments::whole(std::string(kIp4) + " id=7"), Segmentation::tcp4, 1000);
  for (const std::string& piece : Segments::pieces(kIp4, true)) {
    EXPECT_EQ(cpu(RX_REASON_SYSTEM_MAC, "").frame, bytes_of("a s " + piece));
  }
}

// The longest piece counts: 54 bytes of headers and 1,000 of payload.
TEST_F(OffloadTest, MtuOfTheLongestPiece) {
  const std::string frame = "a b " + Segments::whole(kIp4);
  const struct {
    PortIndex port;
    unsigned mtu;
    const char* frame;
    const char* counted;
  } kRows[] = {
      {1, 1054, "a b ", "0 in; 1 out x3 q0 x3"},
      {1, 1053, "a b ", "0 in; 1 out-discards !egress-mtu"},
      {2, 1054, "a c ", "0 in; 2 out q0"},
      {2, 1053, "a c ", "0 in; 2 out-discards !egress-mtu"},
      {3, 1054, "a d ", "0 in; 3 out x3 q0 x3"},
      {0, 1054, "a b vlan=10 ", "0 in; 1 out x3 q0 x3"},
      {0, 1053, "a b vlan=10 ", "0 in-errors oversize !oversize"},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(std::string(row.frame) + std::to_string(row.mtu));
    ok(sdk.set_port_mtu(mp(row.port), row.mtu));
    in_open(0, row.frame + Segments::whole(kIp4), Segmentation::tcp4, 1000);
    EXPECT_EQ(counted(), row.counted);
    ok(sdk.set_port_mtu(mp(row.port), 1514));
  }
  cable(1).clear();
  cable(3).clear();
}

TEST_F(OffloadTest, RoutedInPieces) {
  unsigned r = 0, s = 0;
  ok(sdk.create_l3_interface(mac('r'), 10, r));
  ok(sdk.create_l3_interface(mac('s'), 20, s));
  ok(sdk.add_l3_host_ip4(mp(5), false, kFar, mac('f'), s));
  const std::string ip = "ipv4 src=192.0.2.1 dst=198.51.100.1";
  const std::string whole = "a r " + Segments::whole(ip + " ttl=9 id=7");
  in_open(0, whole, Segmentation::tcp4, 1000);
  for (const std::string& piece : Segments::pieces(ip + " ttl=8", true)) {
    out_exactly(5, "s f " + piece);
  }
  ok(sdk.set_port_mtu(mp(5), 1053));
  in_open(0, whole, Segmentation::tcp4, 1000);
  for (int piece = 0; piece < 3; ++piece) cpu(RX_REASON_MTU, "a r ipv4 ttl=9");
}

// A flow's changes are under the checksums that are still open.
TEST_F(OffloadTest, RewrittenByAFlow) {
  const unsigned id = flow_of_all_frames();
  ok(sdk.add_of_flow_action(id, OF_ACTION_SET_DST_IP, {{kFar, 0, 0}}, Mp(0, 0)));
  ok(sdk.add_of_flow_action(id, OF_ACTION_SET_DST_L4_PORT, {{99, 0, 0}}, Mp(0, 0)));
  ok(sdk.add_of_flow_action(id, OF_ACTION_SET_VLAN_ID, {{77, 0, 0}}, Mp(0, 0)));
  ok(sdk.add_of_flow_action(id, OF_ACTION_OUTPUT, {{OF_PORT_FIRST_PHYSICAL + 1, 0, 0}}, mp(1)));
  in_open(0, std::string("a b ") + kOpen[0]);
  out_exactly(1,
              "a b vlan=77 ipv4 src=192.0.2.1 dst=198.51.100.1 udp sport=1 dport=99 "
              "payload=010203");
}

}  // namespace
}  // namespace softcard
