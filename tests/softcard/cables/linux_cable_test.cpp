// SPDX-License-Identifier: Apache-2.0
//
// Two hosts, each in a network namespace of its own, and a bridge of two Linux cables between:
//
//   198.51.100.1 h0 ---- c0 [cable 0] [cable 1] c1 ---- h1 198.51.100.2
//
// Needs root and iproute2. All of it happens in namespaces that vanish with the program.

#include "softcard/cables/linux_cable.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sched.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>

#include "cable_fixture.h"
#include "softcard/frames/frame_text.h"

namespace softcard {
namespace {

constexpr std::uint16_t kPort = 5201;

// Hands each frame from one cable to the other.
class Bridge final : public CableSink {
 public:
  void frames_arrived(PortIndex port, FramePtr* frames, std::size_t count) override {
    for (std::size_t i = 0; i < count; ++i) {
      longest_frame = std::max(longest_frame, frames[i]->size());
      if (frames[i]->offload.checksum_partial) ++partial_checksums;
    }
    arrived += count;
    refused += count - cables[1 - port]->transmit(frames, count);
  }
  void carrier_changed(PortIndex) override { ++carrier_changes; }
  unsigned offered_ability(PortIndex) const override { return 0; }
  FramePool& frame_pool() override { return pool_; }

 private:
  FramePool pool_;

 public:
  std::unique_ptr<LinuxCable> cables[2];
  std::size_t longest_frame = 0;
  std::size_t arrived = 0;
  std::size_t partial_checksums = 0;
  std::size_t refused = 0;
  int carrier_changes = 0;
};

class LinuxCableTest : public CableTest {
 protected:
  void SetUp() override {
    if (geteuid() != 0) GTEST_SKIP() << "needs root: makes network namespaces";
    if (std::system("ip -V >/dev/null 2>&1") != 0) GTEST_SKIP() << "needs iproute2";
    home_ = Descriptor(::open("/proc/thread-self/ns/net", O_RDONLY));
    if (!enter_new(spaces_[0]) || !enter_new(spaces_[1]) || !enter_new(card_space_)) {
      GTEST_SKIP() << "needs network namespaces: " << std::strerror(errno);
    }
    for (const char* side : {"0", "1"}) {
      const std::string n = side;
      ip("link add c" + n + " type veth peer name h" + n);
      ip("link set c" + n + " up");
      // A namespace that is nobody's is named through a descriptor.
      ip("link set h" + n + " netns /proc/" + std::to_string(getpid()) + "/fd/" +
         std::to_string(spaces_[n[0] - '0'].get()));
    }
    for (int side : {0, 1}) {
      enter(spaces_[side]);
      const std::string n = std::to_string(side);
      ip("link set h" + n + " address 02:00:00:00:00:0" + n);
      ip("addr add 198.51.100." + std::to_string(side + 1) + "/24 dev h" + n);
      ip("link set h" + n + " up");
    }
    enter(card_space_);
    for (int side : {0, 1}) {
      bridge_.cables[side] = LinuxCable::open(loop_, "c" + std::to_string(side), error_);
      ASSERT_NE(bridge_.cables[side], nullptr) << error_;
      bridge_.cables[side]->plug(bridge_, static_cast<PortIndex>(side));
    }
    run_until([&] { return bridge_.cables[0]->carrier() && bridge_.cables[1]->carrier(); });
  }
  void TearDown() override {
    if (home_) setns(home_.get(), CLONE_NEWNET);
  }

  bool enter_new(Descriptor& space) {
    if (unshare(CLONE_NEWNET) != 0) return false;
    // The hosts shall say nothing that a test has not asked for.
    std::ofstream("/proc/sys/net/ipv6/conf/default/disable_ipv6") << 1;
    space = Descriptor(::open("/proc/thread-self/ns/net", O_RDONLY));
    return static_cast<bool>(space);
  }
  void enter(const Descriptor& space) { ASSERT_EQ(setns(space.get(), CLONE_NEWNET), 0); }
  void ip(const std::string& arguments) {
    EXPECT_EQ(std::system(("ip " + arguments).c_str()), 0) << arguments;
  }
  void ip_at(int side, const std::string& arguments) {
    enter(spaces_[side]);
    ip(arguments);
    enter(card_space_);
  }

  // A socket of host `side`, bound to `address`.
  Descriptor host_socket(int side, int type, const char* address) {
    enter(spaces_[side]);
    Descriptor made(socket(AF_INET, type | SOCK_NONBLOCK, 0));
    const sockaddr_in name = name_of(address);
    EXPECT_EQ(bind(made.get(), reinterpret_cast<const sockaddr*>(&name), sizeof name), 0);
    enter(card_space_);
    return made;
  }
  static sockaddr_in name_of(const char* address) {
    sockaddr_in name{};
    name.sin_family = AF_INET;
    name.sin_port = htons(kPort);
    inet_pton(AF_INET, address, &name.sin_addr);
    return name;
  }

  // Sends `bytes` bytes over TCP from host 0 to host 1 and compares what comes.
  void transfer(std::size_t bytes) {
    const Descriptor listener = host_socket(1, SOCK_STREAM, "198.51.100.2");
    ASSERT_EQ(listen(listener.get(), 1), 0);
    const Descriptor client = host_socket(0, SOCK_STREAM, "198.51.100.1");
    const sockaddr_in name = name_of("198.51.100.2");
    connect(client.get(), reinterpret_cast<const sockaddr*>(&name), sizeof name);
    Descriptor server;
    run_until([&] {
      if (!server) server = Descriptor(accept4(listener.get(), nullptr, nullptr, SOCK_NONBLOCK));
      return static_cast<bool>(server);
    });
    std::vector<std::uint8_t> data(bytes);
    for (std::size_t i = 0; i < bytes; ++i) data[i] = static_cast<std::uint8_t>(i * 7 + i / 251);
    std::size_t sent = 0, received = 0, wrong = 0;
    std::vector<std::uint8_t> room(1 << 20);
    const XorpTimer ticks = loop_.new_periodic_ms(1, callback(&tick));
    run_until([&] {
      const ssize_t out = write(client.get(), data.data() + sent, bytes - sent);
      if (out > 0) sent += static_cast<std::size_t>(out);
      const ssize_t in = ::read(server.get(), room.data(), room.size());
      for (ssize_t i = 0; i < in; ++i) {
        if (room[static_cast<std::size_t>(i)] != data[received++]) ++wrong;
      }
      return received == bytes;
    });
    EXPECT_EQ(wrong, 0u);
  }
  static bool tick() { return true; }

  Descriptor home_, spaces_[2], card_space_;
  Bridge bridge_;
};

TEST_F(LinuxCableTest, TcpPassesWithOffloadsLeftOn) {
  transfer(32 << 20);
  EXPECT_GT(bridge_.longest_frame, 20000u) << "segments travel together";
  EXPECT_GT(bridge_.partial_checksums, 0u);
}

TEST_F(LinuxCableTest, TagsAndOpenWorkStayWithTheFrame) {
  const std::string ipv4 = " ipv4 src=198.51.100.1 dst=198.51.100.2";
  const std::string ipv6 = " ipv6 src=2001:db8::1 dst=2001:db8::2";
  const std::string tcp = " tcp sport=1000 dport=2000 size=";
  const struct {
    std::string text;
    Segmentation segmentation;
    int checksum_start;  // -1: complete
  } kRows[] = {
      {ipv4 + tcp + "60", Segmentation::none, -1},
      {" vlan=10 prio=3" + ipv4 + tcp + "64", Segmentation::none, -1},
      {" vlan=10 tpid=0x88a8 vlan=20" + ipv4 + tcp + "80", Segmentation::none, -1},
      {ipv4 + tcp + "1000", Segmentation::none, 34},
      {" vlan=4094" + ipv4 + tcp + "1000", Segmentation::none, 38},
      {ipv4 + tcp + "40000", Segmentation::tcp4, 34},
      {" vlan=10 prio=7" + ipv4 + tcp + "40000", Segmentation::tcp4, 38},
      {" vlan=10" + ipv6 + tcp + "40000", Segmentation::tcp6, 58},
      {" vlan=10 vlan=20" + ipv6 + tcp + "40000", Segmentation::tcp6, 62},
  };
  // Cables at the far ends, too, since only they show what the kernel keeps beside a frame. The
  // frames are for stations that are not there, so that the hosts do not answer.
  KeepingSink sinks[2];
  std::unique_ptr<LinuxCable> hosts[2];
  for (int side : {0, 1}) {
    enter(spaces_[side]);
    hosts[side] = LinuxCable::open(loop_, "h" + std::to_string(side), error_);
    enter(card_space_);
    ASSERT_NE(hosts[side], nullptr) << error_;
    hosts[side]->plug(sinks[side], 0);
  }
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.text);
    Bytes bytes;
    ASSERT_TRUE(
        parse_frame("eth src=00:00:5e:00:53:01 dst=00:00:5e:00:53:02" + row.text, bytes, error_))
        << error_;
    FramePtr frame = sinks[0].frame_pool().make(bytes.data(), bytes.size());
    Offload offload;
    offload.segmentation = row.segmentation;
    if (row.checksum_start >= 0) {
      offload.checksum_partial = true;
      offload.checksum_start = static_cast<std::uint16_t>(row.checksum_start);
      offload.checksum_offset = 16;
    }
    if (row.segmentation != Segmentation::none) offload.segment_bytes = 1400;
    frame->offload = offload;
    ASSERT_EQ(hosts[0]->transmit(&frame, 1), 1u);
    run_until([&] { return !sinks[1].arrived.empty(); });
    const Offload got = sinks[1].arrived.front()->offload;
    EXPECT_EQ(got.checksum_partial, offload.checksum_partial);
    EXPECT_EQ(got.checksum_start, offload.checksum_start);
    EXPECT_EQ(got.checksum_offset, offload.checksum_offset);
    EXPECT_EQ(got.segmentation, offload.segmentation);
    EXPECT_EQ(got.segment_bytes, offload.segment_bytes);
    EXPECT_TRUE(sinks[1].take() == std::vector<Bytes>{bytes}) << "the bytes differ";
  }
  EXPECT_TRUE(sinks[0].arrived.empty());
}

TEST_F(LinuxCableTest, WhatIsSentDoesNotComeBackAndLongFramesAreRefused) {
  FramePtr burst[4];
  const std::size_t sizes[] = {60, 1600, 1514, 9000};
  for (int i = 0; i < 4; ++i) {
    const Bytes bytes = some_frame(sizes[i]);
    burst[i] = bridge_.frame_pool().make(bytes.data(), bytes.size());
  }
  EXPECT_EQ(bridge_.cables[0]->transmit(burst, 4), 2u);
  pump();
  EXPECT_EQ(bridge_.arrived, 0u);
}

TEST_F(LinuxCableTest, BurstsOfSmallFramesArriveInOrder) {
  constexpr std::size_t kCount = 100;  // fewer than the ring has slots
  const Descriptor from = host_socket(0, SOCK_DGRAM, "198.51.100.1");
  const Descriptor to = host_socket(1, SOCK_DGRAM, "198.51.100.2");
  ip_at(0, "neigh add 198.51.100.2 lladdr 02:00:00:00:00:01 dev h0");
  const sockaddr_in name = name_of("198.51.100.2");
  for (std::size_t i = 0; i < kCount; ++i) {
    ASSERT_EQ(
        sendto(from.get(), &i, sizeof i, 0, reinterpret_cast<const sockaddr*>(&name), sizeof name),
        static_cast<ssize_t>(sizeof i));
  }
  std::vector<std::size_t> received;
  const XorpTimer ticks = loop_.new_periodic_ms(1, callback(&tick));
  run_until([&] {
    std::size_t number;
    while (recv(to.get(), &number, sizeof number, 0) > 0) received.push_back(number);
    return received.size() == kCount;
  });
  EXPECT_TRUE(std::is_sorted(received.begin(), received.end()));
  EXPECT_EQ(bridge_.refused, 0u);
}

TEST_F(LinuxCableTest, CarrierFollowsTheInterface) {
  for (const char* down : {"link set h0 down", "link set h0 up"}) {
    const bool before = bridge_.cables[0]->carrier();
    ip_at(0, down);
    run_until([&] { return bridge_.cables[0]->carrier() != before; });
  }
  ip("link set c1 down");
  run_until([&] { return !bridge_.cables[1]->carrier(); });
  EXPECT_EQ(bridge_.cables[1]->describe(), "linux c1, no carrier");
  const Bytes bytes = some_frame(60);
  FramePtr frame = bridge_.frame_pool().make(bytes.data(), bytes.size());
  EXPECT_EQ(bridge_.cables[1]->transmit(&frame, 1), 0u);
  ip("link set c1 up");
  run_until([&] { return bridge_.cables[1]->carrier(); });
  EXPECT_EQ(bridge_.carrier_changes, 4);
  ip("link del c1");
  run_until([&] { return !bridge_.cables[1]->carrier(); });
}

TEST_F(LinuxCableTest, UnknownInterfaceIsNamed) {
  EXPECT_EQ(LinuxCable::open(loop_, "none0", error_), nullptr);
  EXPECT_EQ(error_, "none0: there is no such interface");
}

}  // namespace
}  // namespace softcard
