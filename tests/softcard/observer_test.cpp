// SPDX-License-Identifier: Apache-2.0
//
// What observers see: every frame as it came in, as it left, and the verdict. Whatever a test does,
// what was seen to leave is what the cables got, byte for byte.
//
//      a    b    c
//      |    |    |      VLAN 1: all ports untagged. LAG: 4, 5. Port 6 sends tagged in VLAN 10.
//    +-0----1----2-...-7+
//    +------------------+

#include <algorithm>
#include <functional>
#include <map>
#include <random>
#include <utility>

#include "softcard/pipeline/observer.h"
#include "tests/softcard/switch_fixture.h"

namespace softcard {
namespace {

// Keeps all that it sees, in words: "a all: to 1/1/1, CPU".
class Notes : public FrameObserver {
 public:
  void saw(const Sighting& sighting) override {
    seen.push_back(sighting);
    for (const auto& sent : sighting.sent) left[sent.port].push_back(sent.frame.bytes);
  }
  void burst_over() override { ++bursts; }

  std::vector<Sighting> seen;
  std::map<PortIndex, std::vector<std::vector<std::uint8_t>>> left;
  int bursts = 0;
};

// Takes the first frames and refuses the others.
class FullCable : public Cable {
 public:
  explicit FullCable(std::size_t room) : room_(room) {}
  void plug(CableSink&, PortIndex) override {}
  std::size_t transmit(FramePtr* frames, std::size_t count) override {
    const std::size_t taken = std::min(count, room_);
    room_ -= taken;
    for (std::size_t i = 0; i < count; ++i) frames[i].reset();
    return taken;
  }
  bool carrier() const override { return true; }
  std::string describe() const override { return "full"; }

 private:
  std::size_t room_;
};

class ObserverTest : public SwitchTest {
 protected:
  ObserverTest() : notes(std::make_shared<Notes>()) {
    ok(card.tables().lags.pair(AddressPlan::lag_usp(1), lag({4, 5})));
    vlan(10, mps({6}), {});
    ok(sdk.add_mac_to_port(mp(1), mac('b'), 1, false));
    ok(sdk.add_mac_to_port(mp(4), mac('e'), 1, false));
    ok(sdk.add_mac_to_port(mp(6), mac('g'), 10, false));
    for (const PortIndex port : {PortIndex{2}, PortIndex{3}, PortIndex{6}, PortIndex{7}}) {
      ok(sdk.set_port_flood_blocking(mp(0), mp(port), FLOOD_BLOCK_ALL));
    }
    card.pipeline().observe(notes);
  }

  // What was seen of the frames since the last call: verdicts with their details, in order.
  std::string verdicts() {
    std::string text;
    for (const Sighting& sighting : notes->seen) {
      text += (text.empty() ? "" : "; ") + sighting.verdict();
      for (const std::string& detail : sighting.details()) text += " | " + detail;
    }
    notes->seen.clear();
    return text;
  }
  // Takes what came out everywhere: exactly that was seen to leave, in this order.
  void expect_seen() {
    for (const PortIndex port : card.tables().ports.all()) {
      auto* const memory = dynamic_cast<MemoryCable*>(card.cable(port));
      if (memory == nullptr) continue;
      std::vector<std::vector<std::uint8_t>> came;
      for (std::vector<std::uint8_t> frame; memory->take(frame);) came.push_back(frame);
      EXPECT_EQ(came, notes->left[port]) << "port " << port;
    }
    notes->left.clear();
    card.deliver_events();
    for (CpuPacket packet; take_cpu(packet);) packets.push_back(packet.frame);
  }

  std::shared_ptr<Notes> notes;
  std::vector<std::vector<std::uint8_t>> packets;  // that the CPU got
};

TEST_F(ObserverTest, TellsWhereFramesWentAndWhy) {
  const auto stp = [this](PortIndex port, stp_state_t state) {
    return [this, port, state] { ok(sdk.set_port_stp_state(mp(port), state)); };
  };
  const auto nothing = [] {};
  const struct {
    const char* symptom;
    std::function<void()> set_up;
    PortIndex port;
    const char* words;
    const char* verdict;
  } kRows[] = {
      {"known", nothing, 0, "a b", "to 1/1/1"},
      {"known behind a LAG", nothing, 0, "a e", "to lag/1"},
      {"flood", nothing, 0, "a all",
       "to 1/1/1, lag/1, CPU | CPU: copy of a flood | not to 1/1/2: flood-blocked | "
       "not to 1/1/3: flood-blocked | not to 1/1/6: flood-blocked | not to 1/1/7: flood-blocked"},
      {"nowhere to flood to",
       [this] {
         vlan(10, mps({7}), {});
         ok(sdk.set_port_stp_state(mp(7), STP_STATE_BLOCKING));
         ok(sdk.set_port_flood_blocking_cpu(mp(6), FLOOD_BLOCK_ALL));
       },
       6, "g all vlan=10", "dropped: flood-nowhere | not to 1/1/7: stp-egress"},
      {"trapped", nothing, 0, "a 01:80:c2:00:00:0e", "to CPU | CPU: reserved group address"},
      {"no such VLAN", nothing, 0, "a b vlan=99", "dropped: no-vlan"},
      {"back to where it came from", nothing, 1, "b b", "dropped: same-port"},
      {"a runt", nothing, 0, "", "dropped: runt"},
      {"a pause frame", nothing, 0, "a 01:80:c2:00:00:01 type=0x8808", "dropped: pause"},
      {"blocked on the way in", stp(0, STP_STATE_BLOCKING), 0, "a b", "dropped: stp-ingress"},
      {"blocked on the way out", stp(1, STP_STATE_BLOCKING), 0, "a b",
       "dropped: stp-egress | not to 1/1/1: stp-egress"},
      {"no link", [this] { card.cut_carrier(0, true); }, 0, "a b", "dropped: link-down"},
      {"mirrored", [this] { ok(sdk.set_port_mirror(mp(7), mp(0), MIRROR_TYPE_INGRESS)); }, 0, "a b",
       "to 1/1/1 | mirrored to 1/1/7"},
      {"mirrored, and dropped", [] {}, 0, "a b vlan=99", "dropped: no-vlan | mirrored to 1/1/7"},
      {"unplugged", [this] { card.plug(1, std::make_unique<FullCable>(0)); }, 0, "a b",
       "dropped: cable-refused | mirrored to 1/1/7 | not to 1/1/1: cable-refused"},
  };
  for (const auto& row : kRows) {
    row.set_up();
    in(row.port, *row.words == 0 ? std::vector<std::uint8_t>(13) : bytes_of(row.words));
    EXPECT_EQ(verdicts(), row.verdict) << row.symptom;
    for (const PortIndex port : card.tables().ports.all()) {
      ok(sdk.set_port_stp_state(mp(port), STP_STATE_FORWARDING));
      card.cut_carrier(port, false);
    }
    expect_seen();
  }
}

// What the CPU has no room for was not handed to it.
TEST_F(ObserverTest, TellsWhatTheCpuTook) {
  std::size_t packets_sent = 0;
  std::string last;
  while (last != "dropped: cpu-queue" && packets_sent < 1000000) {
    in(0, "a 01:80:c2:00:00:0e");
    last = verdicts();
    ++packets_sent;
  }
  EXPECT_EQ(last, "dropped: cpu-queue");
  expect_seen();
  EXPECT_EQ(packets.size() + 1, packets_sent);
}

TEST_F(ObserverTest, ShowsFramesAsTheyCameAndAsTheyLeft) {
  const unsigned id = flow_of_all_frames();
  ok(sdk.add_of_flow_action(id, OF_ACTION_OUTPUT, {{OF_PORT_FIRST_PHYSICAL + 2, 0, 0}}, mp(2)));
  ok(sdk.add_of_flow_action(id, OF_ACTION_SET_VLAN_ID, {{10, 0, 0}}, Mp(0, 0)));
  ok(sdk.add_of_flow_action(id, OF_ACTION_OUTPUT, {{OF_PORT_CONTROLLER, 0, 0}}, Mp(0, 0)));
  in(0, "a b payload=01020304");
  ASSERT_EQ(notes->seen.size(), 1u);
  const Sighting seen = notes->seen[0];
  EXPECT_EQ(seen.ingress, 0u);
  EXPECT_EQ(seen.in.bytes, bytes_of("a b payload=01020304"));
  ASSERT_EQ(seen.sent.size(), 1u);
  EXPECT_EQ(seen.sent[0].frame.bytes, bytes_of("a b payload=01020304"));
  ASSERT_EQ(seen.to_cpu.size(), 1u);
  EXPECT_EQ(seen.to_cpu[0].reason, unsigned{RX_REASON_FLOW});
  expect_shows(seen.to_cpu[0].frame.bytes, "a b vlan=10", "CPU");
  expect_seen();
  EXPECT_EQ(packets, (std::vector<std::vector<std::uint8_t>>{seen.to_cpu[0].frame.bytes}));
}

TEST_F(ObserverTest, SeesWhatTheCpuSends) {
  warp(1.5);
  const auto frame = bytes_of("a b");
  ok(card.pipeline().send_by_port({6}, {1, 4}, frame.data(), frame.size(), PACKET_TYPE_DATA));
  ok(card.pipeline().send_from_cpu(frame.data(), frame.size(), PACKET_TYPE_DATA));
  ASSERT_EQ(notes->seen.size(), 2u);
  EXPECT_EQ(notes->seen[0].ingress, kNoPort);
  EXPECT_EQ(notes->seen[0].number + 1, notes->seen[1].number);
  EXPECT_EQ(notes->seen[0].time_ns, 1500000000u);
  // A member that is named is sent to, and not its LAG.
  EXPECT_EQ(verdicts(), "to 1/1/6, 1/1/1, 1/1/4; to 1/1/1");
  expect_seen();
}

// A long frame leaves in pieces, of which the cable takes some.
TEST_F(ObserverTest, SeesSegmentsAndWhatCablesRefuse) {
  const auto bytes = bytes_of("a b ipv4 src=192.0.2.1 dst=192.0.2.2 tcp sport=1 dport=2 payload=" +
                              std::string(6000, '0'));
  const auto send = [&] {
    FramePtr frame = card.frame_pool().make(bytes.data(), bytes.size());
    frame->offload.segmentation = Segmentation::tcp4;
    frame->offload.checksum_partial = true;
    frame->offload.checksum_start = 34;
    frame->offload.checksum_offset = 16;
    frame->offload.segment_bytes = 1000;
    card.frames_arrived(0, &frame, 1);
  };
  send();
  ASSERT_EQ(notes->seen.size(), 1u);
  EXPECT_EQ(notes->seen[0].in.offload.segment_bytes, 1000u);
  EXPECT_EQ(notes->seen[0].sent.size(), 3u);
  expect_seen();
  card.plug(1, std::make_unique<FullCable>(2));
  send();
  send();
  ASSERT_EQ(notes->seen.size(), 3u);
  EXPECT_EQ(notes->seen[1].sent.size(), 2u);
  EXPECT_EQ(notes->seen[2].sent.size(), 0u);
  EXPECT_EQ(verdicts(),
            "to 1/1/1; to 1/1/1 | not to 1/1/1: cable-refused; "
            "dropped: cable-refused | not to 1/1/1: cable-refused");
}

// Pause frames are the card's own, whatever they answer.
TEST_F(ObserverTest, TellsFramesOfTheCardsOwn) {
  ok(sdk.set_port_flow_control_8023x(mp(0), false, true));
  ok(sdk.set_port_broadcast_control(mp(0), 1));
  for (int i = 0; i < 3; ++i) in(0, "a all");
  const auto& dropped = *std::find_if(
      notes->seen.begin(), notes->seen.end(),
      [](const Sighting& seen) { return !seen.sent.empty() && seen.sent[0].made_here; });
  EXPECT_EQ(dropped.verdict(), "dropped: storm-broadcast");
  EXPECT_EQ(dropped.sent[0].port, 0u);
  expect_seen();
}

// Frames go the same ways whether somebody looks or not, and an observer that is let go sees none.
TEST_F(ObserverTest, ChangesNothing) {
  const auto seed = std::random_device()();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::minstd_rand random(seed);
  std::vector<std::pair<PortIndex, std::vector<std::string>>> bursts;
  for (int i = 0; i < 40; ++i) {
    std::vector<std::string> frames;
    for (auto count = random() % 50 + 1; count != 0; --count) {
      const char from = static_cast<char>('a' + random() % 12);
      const char to = static_cast<char>('a' + random() % 12);
      frames.push_back(std::string{from, ' ', to} + (random() % 3 == 0 ? " vlan=10" : ""));
    }
    bursts.emplace_back(static_cast<PortIndex>(random() % 8), frames);
  }
  const auto run = [&] {
    ok(sdk.clear_fdb_table(false));
    for (const auto& [port, frames] : bursts) burst(port, frames);
    std::map<PortIndex, std::vector<std::vector<std::uint8_t>>> came;
    for (const PortIndex port : card.tables().ports.all()) {
      for (std::vector<std::uint8_t> frame; cable(port).take(frame);) came[port].push_back(frame);
    }
    card.deliver_events();
    for (CpuPacket packet; take_cpu(packet);) {
    }
    counted();
    return came;
  };
  const auto looked_at = run();
  // Each frame was seen alone, in its order.
  std::size_t sent = 0;
  for (const auto& [port, frames] : bursts) {
    for (const std::string& frame : frames) {
      ASSERT_LT(sent, notes->seen.size());
      EXPECT_EQ(notes->seen[sent].ingress, port);
      EXPECT_EQ(notes->seen[sent++].in.bytes, bytes_of(frame));
    }
  }
  EXPECT_EQ(notes->seen.size(), sent);
  EXPECT_EQ(notes->bursts, 40);
  EXPECT_EQ(looked_at, notes->left);
  const std::weak_ptr<Notes> gone = notes;
  notes.reset();
  EXPECT_TRUE(gone.expired());
  EXPECT_EQ(run(), looked_at);
}

}  // namespace
}  // namespace softcard
