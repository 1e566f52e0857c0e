// SPDX-License-Identifier: Apache-2.0

#include "softcard/cables/memory_cable.h"

#include <gtest/gtest.h>

#include "cable_fixture.h"
#include "softcard/card.h"

namespace softcard {
namespace {

constexpr std::size_t kFrameBytes = 100 + MemoryCable::kOverheadBytes;

// The memory that cables keep for their far ends is bounded for all of them together.
class MemoryCableTest : public CableTest {
 protected:
  MemoryCableTest() { MemoryCable::keep_at_most(10 * kFrameBytes); }
  ~MemoryCableTest() override { MemoryCable::keep_at_most(MemoryCable::kDefaultRoomBytes); }

  void send(MemoryCable& cable, unsigned first, unsigned count) {
    std::vector<Bytes> frames;
    for (unsigned i = 0; i < count; ++i) frames.push_back(some_frame(100, first + i));
    EXPECT_EQ(sink_.send(cable, frames), count);
  }
  // The cable holds these frames and nothing else.
  void expect_kept(MemoryCable& cable, unsigned first, unsigned count) {
    EXPECT_EQ(cable.waiting(), count);
    Bytes frame;
    for (unsigned i = 0; i < count; ++i) {
      ASSERT_TRUE(cable.take(frame));
      EXPECT_EQ(frame, some_frame(100, first + i));
    }
    EXPECT_FALSE(cable.take(frame));
  }

  KeepingSink sink_;
};

TEST_F(MemoryCableTest, KeepsTheLatestFramesThatFitAndCountsTheOthers) {
  MemoryCable cable;
  cable.plug(sink_, 0);
  send(cable, 0, 10);
  EXPECT_EQ(cable.describe(), "memory");
  EXPECT_EQ(sink_.forgotten, 0u);
  send(cable, 10, 3);
  EXPECT_EQ(cable.describe(), "memory, 3 frames forgotten");
  EXPECT_EQ(cable.forgotten(), 3u);
  EXPECT_EQ(sink_.forgotten, 3u);
  expect_kept(cable, 3, 10);
  send(cable, 0, 10);
  expect_kept(cable, 0, 10);
  EXPECT_EQ(sink_.forgotten, 3u) << "what was taken leaves its room";
}

TEST_F(MemoryCableTest, CablesShareTheRoomAndEachKeepsItsLatestFrame) {
  MemoryCable a, b;
  a.plug(sink_, 0);
  b.plug(sink_, 1);
  send(a, 0, 10);
  send(b, 50, 2);
  EXPECT_EQ(a.forgotten(), 0u) << "nobody forgets what is another one's";
  expect_kept(b, 51, 1);
  a.clear();
  send(b, 0, 10);
  expect_kept(b, 0, 10);
  {
    MemoryCable gone;
    gone.plug(sink_, 2);
    send(gone, 0, 10);
  }
  send(b, 0, 10);
  expect_kept(b, 0, 10);
  const Bytes longest = some_frame(9000);
  sink_.send(a, {longest, longest});
  Bytes frame;
  EXPECT_TRUE(a.take(frame) && frame == longest) << "longer than all the room, and still kept";
  EXPECT_EQ(a.waiting(), 0u);
}

TEST_F(MemoryCableTest, CaptureOfThousandsOfFramesIsKeptWhole) {
  MemoryCable::keep_at_most(MemoryCable::kDefaultRoomBytes);
  CardDescription description;
  description.ports.resize(8);
  Card card(description, std::make_shared<VirtualClock>());
  const auto cable = [&](PortIndex port) { return static_cast<MemoryCable*>(card.cable(port)); };
  Bytes broadcast = some_frame(60);
  std::fill_n(broadcast.begin(), 6, std::uint8_t{0xFF});
  for (int i = 0; i < 12000; ++i) cable(0)->send(broadcast);
  for (PortIndex port = 1; port < 8; ++port) ASSERT_EQ(cable(port)->waiting(), 12000u) << port;
}

TEST_F(MemoryCableTest, CardTellsWhatItsCablesLost) {
  CardDescription description;
  description.ports.resize(2);
  Card card(description, std::make_shared<VirtualClock>());
  auto* const out = static_cast<MemoryCable*>(card.cable(1));
  for (int i = 0; i < 14; ++i) static_cast<MemoryCable*>(card.cable(0))->send(some_frame(100));
  EXPECT_EQ(out->waiting(), 10u);
  EXPECT_EQ(card.tables().drops.count(1, DropReason::cable_forgot), 4u);
  EXPECT_EQ(card.tables().counters.value(1, STAT_OUT_ERRORS), 0u) << "they were sent";
  card.frames_lost(0, 5);
  card.frames_lost(0, 2);
  EXPECT_EQ(card.tables().drops.count(0, DropReason::cable_lost), 7u);
  EXPECT_EQ(card.tables().counters.value(0, STAT_IN_ERRORS), 7u);
  EXPECT_EQ(card.tables().counters.value(0, STAT_IN_DISCARDS), 0u);
  card.clear_counters();
  EXPECT_EQ(card.tables().drops.count(DropReason::cable_lost), 0u);
  EXPECT_EQ(card.tables().drops.count(DropReason::cable_forgot), 0u);
}

TEST_F(MemoryCableTest, PatchCableJoinsTwoPorts) {
  KeepingSink far_sink;
  auto ends = PatchCable::make(3);
  PatchCable& a = *ends.first;
  a.plug(sink_, 4);
  EXPECT_FALSE(a.carrier());
  EXPECT_EQ(a.describe(), "patch, other end loose");
  EXPECT_EQ(sink_.send(a, {some_frame(60)}), 0u);
  ends.second->plug(far_sink, 5);
  EXPECT_EQ(sink_.carrier_changes, 1);
  EXPECT_TRUE(a.carrier());
  EXPECT_EQ(a.describe(), "patch to port 5 of another card");
  PortIndex port = 0;
  EXPECT_EQ(a.far_end(port), &far_sink);
  EXPECT_EQ(port, 5u);
  a.advertisement_changed();
  EXPECT_EQ(far_sink.carrier_changes, 1);

  // The frames that wait at the other end are bounded, and enter it as it polls, as fresh frames.
  EXPECT_EQ(
      sink_.send(a, {some_frame(60, 0), some_frame(60, 1), some_frame(60, 2), some_frame(60)}), 3u);
  EXPECT_EQ(ends.second->poll(2), 2u);
  EXPECT_EQ(far_sink.take(), (std::vector<Bytes>{some_frame(60, 0), some_frame(60, 1)}));
  EXPECT_EQ(ends.second->poll(2), 1u);
  EXPECT_EQ(far_sink.take(), std::vector<Bytes>{some_frame(60, 2)});

  ends.second.reset();
  EXPECT_EQ(sink_.carrier_changes, 2);
  EXPECT_FALSE(a.carrier());

  // Within one card the frame itself goes over, without what was found out about it.
  auto within = PatchCable::make();
  within.first->plug(sink_, 0);
  within.second->plug(sink_, 1);
  FramePtr frame = sink_.frame_pool().make(60);
  const Frame* const same = frame.get();
  frame->ingress = 0;
  frame->vlan = 10;
  frame->priority = 3;
  EXPECT_EQ(within.first->transmit(&frame, 1), 1u);
  EXPECT_EQ(within.second->poll(9), 1u);
  ASSERT_EQ(sink_.arrived.size(), 1u);
  const Frame& got = *sink_.arrived.front();
  EXPECT_EQ(&got, same);
  EXPECT_EQ(got.ingress, kNoPort);
  EXPECT_EQ(got.vlan, 0u);
  EXPECT_EQ(got.priority, 0u);
  sink_.arrived.clear();
}

}  // namespace
}  // namespace softcard
