// SPDX-License-Identifier: Apache-2.0
//
// The pipeline alone, on bare tables, with a CPU queue and cables that fail: what becomes of the
// frames under way when memory runs out or something throws.
//
//      a    b    c
//      |    |    |     VLAN 1: all; b is known at 1
//    +-0----1----2-+

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <vector>

#include "softcard/base/clock.h"
#include "softcard/frames/frame_text.h"
#include "softcard/pipeline/pipeline.h"

namespace softcard {
namespace {

class FailingQueue final : public CpuQueue {
 public:
  bool wants_packets() const override { return wants; }
  bool post_packet(FramePtr, unsigned) override { throw std::bad_alloc(); }

  bool wants = false;
};

class Cables final : public PortCables {
 public:
  bool plugged(PortIndex port) const override { return port != unplugged; }
  bool takes_offloads(PortIndex) const override { return false; }
  std::size_t transmit(PortIndex port, FramePtr* frames, std::size_t count) override {
    if (port == throws) throw std::bad_alloc();
    EXPECT_GT(count, 0u) << "port " << port << " has nothing to send";
    for (std::size_t i = 0; i < count; ++i) {
      if (port != unplugged) sent.push_back({port, frames[i]->data()[14]});
      frames[i].reset();
    }
    return port == unplugged ? 0 : count;
  }

  struct Sent {
    PortIndex port;
    unsigned payload;
    friend bool operator==(const Sent& a, const Sent& b) {
      return a.port == b.port && a.payload == b.payload;
    }
  };
  std::vector<Sent> sent;
  PortIndex throws = kNoPort;
  PortIndex unplugged = kNoPort;
};

class ShortOfMemoryTest : public ::testing::Test {
 protected:
  static constexpr std::uint64_t kB = 0x00005e005362;

  ShortOfMemoryTest() {
    tables.fdb.add_static(1, MacAddress::from_number(kB), Destination::port(1));
    for (const PortIndex port : tables.ports.all()) {
      tables.ports.set_carrier(port, true, nullptr);
      tables.flood_blocks.set_to_cpu(port, FLOOD_BLOCK_NONE);
    }
  }
  FramePtr frame(const std::string& destination, unsigned payload) {
    std::vector<std::uint8_t> bytes;
    std::string error;
    EXPECT_TRUE(parse_frame(
        "eth src=00:00:5e:00:53:61 dst=" + destination + " payload=" + std::to_string(10 + payload),
        bytes, error));
    bytes[14] = static_cast<std::uint8_t>(payload);
    return pool.make(bytes.data(), bytes.size());
  }
  FramePtr to_b(unsigned payload) { return frame("00:00:5e:00:53:62", payload); }
  FramePtr flood(unsigned payload) { return frame("ff:ff:ff:ff:ff:ff", payload); }
  void receive(std::vector<FramePtr> frames) { pipeline.receive(0, frames.data(), frames.size()); }
  template <class... Frames>
  static std::vector<FramePtr> all(Frames... frames) {
    std::vector<FramePtr> list;
    (list.push_back(std::move(frames)), ...);
    return list;
  }
  std::uint64_t lost(PortIndex port) { return tables.drops.count(port, DropReason::no_buffer); }

  Tables tables{std::vector<PortDescription>(3), CardCapacity(), {}};
  VirtualClock clock;
  FramePool pool{6, 0};
  FailingQueue cpu;
  Cables cables;
  Pipeline pipeline{tables, clock, pool, cpu, cables};
};

// The first frame is staged when the second one's copy for the CPU throws; the third one waits.
TEST_F(ShortOfMemoryTest, WhatWasUnderWayGoesNowhere) {
  cpu.wants = true;
  EXPECT_THROW(receive(all(to_b(1), flood(2), to_b(3))), std::bad_alloc);
  EXPECT_EQ(pool.in_use(), 0u);
  EXPECT_TRUE(cables.sent.empty());
  EXPECT_EQ(lost(0), 2u) << "the flood and the frame behind it";
  EXPECT_EQ(lost(1), 1u) << "staged, and never sent";
  EXPECT_EQ(tables.counters.value(1, STAT_OUT_ERRORS), 1u);
  receive(all(to_b(4)));
  EXPECT_EQ(cables.sent, (std::vector<Cables::Sent>{{1, 4}}));
}

TEST_F(ShortOfMemoryTest, NorDoesWhatACableLeaves) {
  cables.throws = 1;
  EXPECT_THROW(receive(all(to_b(1), flood(2))), std::bad_alloc);
  EXPECT_EQ(pool.in_use(), 0u);
  const std::uint8_t bytes[60] = {0, 0, 0x5e, 0, 0x53, 0x62};
  EXPECT_THROW(pipeline.send_by_port({}, {1}, bytes, sizeof bytes, PACKET_TYPE_DATA),
               std::bad_alloc);
  EXPECT_THROW(pipeline.send_from_cpu(bytes, sizeof bytes, PACKET_TYPE_DATA), std::bad_alloc);
  EXPECT_EQ(pool.in_use(), 0u);
  cables.throws = kNoPort;
  cables.sent.clear();
  receive(all(to_b(4)));
  EXPECT_EQ(cables.sent, (std::vector<Cables::Sent>{{1, 4}}));
}

// Six frames are there. A flood's last copy is the frame itself.
TEST_F(ShortOfMemoryTest, CopiesAreLostWhereThePoolIsUsedUp) {
  std::vector<FramePtr> taken;
  for (int i = 0; i < 5; ++i) taken.push_back(pool.make(60));
  receive(all(flood(7)));
  EXPECT_EQ(cables.sent, (std::vector<Cables::Sent>{{2, 7}}));
  EXPECT_EQ(lost(1), 1u);
  EXPECT_EQ(tables.counters.value(1, STAT_OUT_DISCARDS), 1u);
  tables.mirrors.set(2, 0, MIRROR_TYPE_INGRESS);
  receive(all(to_b(8)));
  EXPECT_EQ(lost(2), 1u) << "the mirror's copy";
  cpu.wants = true;
  receive(all(flood(9)));
  EXPECT_EQ(lost(0), 1u) << "the CPU's copy";
  EXPECT_EQ(tables.counters.value(0, STAT_IN_DISCARDS), 1u);
}

TEST_F(ShortOfMemoryTest, UnpluggedPortsTakeFramesAndSendNone) {
  cables.unplugged = 1;
  receive(all(to_b(1), to_b(2)));
  EXPECT_EQ(tables.drops.count(1, DropReason::unplugged), 2u);
  EXPECT_EQ(tables.counters.value(1, STAT_OUT_ERRORS), 2u);
  EXPECT_EQ(pool.in_use(), 0u);
}

}  // namespace
}  // namespace softcard
