// SPDX-License-Identifier: Apache-2.0
//
// A card of eight ports with a station at each, for tests that put frames in and look at what comes
// out. Station a is at port 0, b at port 1, and so on to h at port 7; `all` is everybody.
//
//   in(0, "a b vlan=10")       a sends to b, tagged with VLAN 10
//   out(1, "a b untagged")     that arrived at port 1, without a tag
//   cpu(RX_REASON_FLOOD, "")   the CPU was handed a packet for that reason
//
// Behind source and destination stands frame text; what out() and cpu() name must be in the frame.
// A test looks at every frame that comes out of a port or to the CPU: one that leaves a frame
// behind fails. Time stands still unless warp() moves it.
#ifndef TESTS_SOFTCARD_SWITCH_FIXTURE_H_
#define TESTS_SOFTCARD_SWITCH_FIXTURE_H_

#include <gtest/gtest.h>

#include <cstdint>
#include <deque>
#include <initializer_list>
#include <list>
#include <memory>
#include <string>
#include <vector>

#include "softcard/cables/memory_cable.h"
#include "softcard/card.h"
#include "softcard/frames/frame_text.h"
#include "vorn_sdk.h"
#include "vornlcapi/test/gtest.h"

namespace softcard {

inline CardDescription eight_ports() {
  CardDescription description;
  description.ports.resize(8);
  return description;
}

class SwitchTest : public vorn::test::SwitchTest {
 public:
  using CpuPacket = vorn::test::CpuPacket;

  explicit SwitchTest(const CardDescription& description = eight_ports())
      : vorn::test::SwitchTest(description), card(vorn::test::Switch::card()), sdk(the_sdk()) {
    listen_to_cpu();
  }

  void TearDown() override {
    none();
    EXPECT_EQ(card.frame_pool().in_use(), 0u) << "frames that went neither out nor back";
  }

  // ---- Names ------------------------------------------------------------------------------------

  static Mp mp(PortIndex port) { return AddressPlan::mp_of(port); }
  static std::list<Mp> mps(std::initializer_list<PortIndex> ports) {
    std::list<Mp> list;
    for (const PortIndex port : ports) list.push_back(mp(port));
    return list;
  }
  // The six bytes of a station's address.
  static const unsigned char* mac(char station) {
    static unsigned char addresses[26][6];
    unsigned char* at = addresses[station - 'a'];
    const unsigned char bytes[] = {0x00, 0x00, 0x5e,
                                   0x00, 0x53, static_cast<unsigned char>(station)};
    std::copy(bytes, bytes + 6, at);
    return at;
  }
  // Turns "a b rest" into the text of a frame.
  static std::string text_of(const std::string& words) {
    std::size_t at = 0;
    const auto next = [&] {
      const std::size_t end = std::min(words.find(' ', at), words.size());
      std::string word = words.substr(at, end - at);
      at = std::min(end + 1, words.size());
      if (word == "all") return std::string("ff:ff:ff:ff:ff:ff");
      if (word.size() != 1) return word;
      char text[] = "00:00:5e:00:53:00";
      const char digits[] = "0123456789abcdef";
      text[15] = digits[static_cast<unsigned char>(word[0]) >> 4];
      text[16] = digits[word[0] & 0xf];
      return std::string(text);
    };
    const std::string source = next();
    const std::string destination = next();
    return "eth src=" + source + " dst=" + destination + " " + words.substr(at);
  }

  // ---- Frames -----------------------------------------------------------------------------------

  MemoryCable& cable(PortIndex port) { return *static_cast<MemoryCable*>(card.cable(port)); }

  static std::vector<std::uint8_t> bytes_of(const std::string& words) {
    return vorn::test::frame_of(text_of(words));
  }

  void in(PortIndex port, const std::string& words) { in(port, bytes_of(words)); }
  // Nothing else is done yet: events wait until somebody asks for them.
  void in(PortIndex port, const std::vector<std::uint8_t>& frame) { cable(port).send(frame); }

  // Frames that come in together.
  void burst(PortIndex port, const std::vector<std::string>& words) {
    std::vector<FramePtr> frames;
    for (const std::string& frame : words) {
      const auto bytes = bytes_of(frame);
      frames.push_back(card.frame_pool().make(bytes.data(), bytes.size()));
    }
    card.frames_arrived(port, frames.data(), frames.size());
  }

  // The next frame that each port sent shows what `words` say; "" takes any.
  void out(PortIndex port, const std::string& words) { out({port}, words); }
  void out(std::initializer_list<PortIndex> ports, const std::string& words) {
    for (const PortIndex port : ports) {
      EXPECT_FRAME(AddressPlan::usp_of(port), words.empty() ? "" : text_of(words));
    }
  }
  // Takes `count` frames from each port, whatever they are.
  void skip(std::initializer_list<PortIndex> ports, std::size_t count = 1) {
    for (std::size_t i = 0; i < count; ++i) out(ports, "");
  }

  // The next packet for the CPU.
  CpuPacket cpu(unsigned reason, const std::string& words) {
    card.deliver_events();
    CpuPacket packet;
    if (!take_cpu(packet)) {
      ADD_FAILURE() << "the CPU got nothing; wanted: " << words;
      return packet;
    }
    EXPECT_EQ(packet.reason, reason) << words;
    expect_shows(packet.frame, words, "CPU");
    return packet;
  }

  // Nothing was sent but what was looked at.
  void none() {
    card.deliver_events();
    EXPECT_NO_FRAMES();
  }

  static void expect_shows(const std::vector<std::uint8_t>& frame, const std::string& words,
                           const std::string& where) {
    if (words.empty()) return;
    std::string error;
    const bool matches = frame_matches(text_of(words), frame.data(), frame.size(), error);
    EXPECT_EQ(error, "") << words;
    EXPECT_TRUE(matches) << where << "\n  wanted: " << words
                         << "\n  came:   " << print_frame(frame.data(), frame.size());
  }

  // ---- Settings ---------------------------------------------------------------------------------

  void ok(bool result) { EXPECT_TRUE(result); }

  // Makes a VLAN; its untagged ports get it as their PVID.
  void vlan(unsigned number, std::list<Mp> tagged, std::list<Mp> untagged) {
    for (const Mp& port : untagged) ok(sdk.set_port_pvid(port, number));
    if (!card.tables().vlans.known(number)) ok(sdk.create_vlan(number));
    ok(sdk.add_ports_to_vlan(number, tagged, untagged));
  }

  // A LAG of ports; the result is its id.
  unsigned lag(std::initializer_list<PortIndex> ports) {
    unsigned id = 0;
    std::list<Mp> members = mps(ports);
    ok(sdk.create_lag(id));
    ok(sdk.add_ports_to_lag(id, members));
    return id;
  }

  // A flow that takes every frame, without actions yet; the result is its id.
  unsigned flow_of_all_frames() {
    of_flow_mp_s flow;
    flow.match.flags = 0;
    unsigned id = 0;
    ok(sdk.add_of_flow(flow, id, of_flow_qualify_udf_s{}));
    return id;
  }

  std::uint64_t stat(PortIndex port, stat_type_t type) {
    unsigned long long value = 0;
    ok(sdk.get_port_stat_counter(mp(port), type, value));
    return value;
  }
  std::uint64_t drops(PortIndex port, DropReason reason) {
    return card.tables().drops.count(port, reason);
  }

  void warp(double seconds) {
    vorn::test::Switch::warp(std::chrono::nanoseconds(static_cast<std::int64_t>(seconds * 1e9)));
  }

  // Every counter and drop of every port that has changed since the last call, but octets and the
  // classes of sizes: "0 in; 1 out q0; 2 out-discards !egress-down", with x2 for two.
  std::string counted() {
    static constexpr const char* kNames[STAT_TYPE_COUNT] = {nullptr,
                                                            "in",
                                                            "in-multicast",
                                                            "in-broadcast",
                                                            "in-discards",
                                                            "in-errors",
                                                            nullptr,
                                                            "out",
                                                            "out-multicast",
                                                            "out-broadcast",
                                                            "out-discards",
                                                            "out-errors",
                                                            nullptr,
                                                            nullptr,
                                                            nullptr,
                                                            nullptr,
                                                            nullptr,
                                                            nullptr,
                                                            nullptr,
                                                            "undersize",
                                                            "oversize",
                                                            "in-pause",
                                                            "out-pause",
                                                            "jams",
                                                            "in-storm",
                                                            "in-vlan",
                                                            "in-stp",
                                                            "in-lock",
                                                            "q0",
                                                            "q1",
                                                            "q2",
                                                            "q3",
                                                            "q4",
                                                            "q5",
                                                            "q6",
                                                            "q7"};
    std::vector<std::uint64_t> values;
    std::string text;
    const auto add = [&](std::string& line, const std::string& name, std::uint64_t value) {
      const std::uint64_t before = values.size() < counted_.size() ? counted_[values.size()] : 0;
      values.push_back(value);
      if (value == before) return;
      line += " " + name;
      if (value != before + 1) line += " x" + std::to_string(value - before);
    };
    const Tables& tables = card.tables();
    for (PortIndex port = 0; port <= tables.ports.count(); ++port) {
      const bool cpu_port = port == tables.ports.count();
      std::string line;
      for (unsigned type = 0; type < STAT_TYPE_COUNT && !cpu_port; ++type) {
        if (kNames[type] == nullptr) continue;
        add(line, kNames[type], tables.counters.value(port, static_cast<stat_type_t>(type)));
      }
      for (std::size_t i = 0; i < kDropReasons; ++i) {
        const auto reason = static_cast<DropReason>(i);
        add(line, std::string("!") + name(reason),
            tables.drops.count(cpu_port ? kNoPort : port, reason));
      }
      if (line.empty()) continue;
      text += (text.empty() ? "" : "; ") + (cpu_port ? "cpu" : std::to_string(port)) + line;
    }
    counted_ = values;
    return text;
  }

  Card& card;
  VornSdkBase& sdk;

 private:
  static VornSdkBase& the_sdk() {
    VornSdkBase* sdk = nullptr;
    vornsdk_get_sdk_instance(sdk);
    return *sdk;
  }

  std::vector<std::uint64_t> counted_;
};

}  // namespace softcard

#endif  // TESTS_SOFTCARD_SWITCH_FIXTURE_H_
