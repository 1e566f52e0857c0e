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
#include <linux/capability.h>
#include <linux/if_ether.h>
#include <linux/if_packet.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
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
  void frames_lost(PortIndex port, std::uint64_t count) override { lost[port] += count; }
  void frames_forgotten(PortIndex, std::uint64_t) override {}
  void carrier_changed(PortIndex) override { ++carrier_changes; }
  unsigned advertised_ability(PortIndex port) const override { return on[port] ? 1 : 0; }
  FramePool& frame_pool() override { return pool_; }

 private:
  FramePool pool_;

 public:
  std::unique_ptr<LinuxCable> cables[2];
  std::size_t longest_frame = 0;
  std::size_t arrived = 0;
  std::size_t partial_checksums = 0;
  std::size_t refused = 0;
  std::uint64_t lost[2] = {0, 0};
  bool on[2] = {true, true};
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
    for (int side : {0, 1}) open_cable(side);
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

  void open_cable(int side) {
    bridge_.cables[side] = LinuxCable::open(loop_, "c" + std::to_string(side), error_);
    ASSERT_NE(bridge_.cables[side], nullptr) << error_;
    bridge_.cables[side]->plug(bridge_, static_cast<PortIndex>(side));
  }
  bool is_up(const char* interface) {
    ifreq request{};
    std::strcpy(request.ifr_name, interface);
    const Descriptor any(socket(AF_INET, SOCK_DGRAM, 0));
    EXPECT_EQ(ioctl(any.get(), SIOCGIFFLAGS, &request), 0);
    return (request.ifr_flags & IFF_UP) != 0;
  }
  // Does something without a capability.
  static void without(unsigned capability, const std::function<void()>& act) {
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct all[2], fewer[2];
    ASSERT_EQ(syscall(SYS_capget, &header, all), 0);
    std::memcpy(fewer, all, sizeof all);
    fewer[0].effective &= ~(1u << capability);
    ASSERT_EQ(syscall(SYS_capset, &header, fewer), 0);
    act();
    ASSERT_EQ(syscall(SYS_capset, &header, all), 0);
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
  transfer(8 << 20);
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
  bridge_.carrier_changes = 0;  // the interfaces may have come up while the cables were there
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
}

TEST_F(LinuxCableTest, InterfaceIsDownWhileThePortIsOff) {
  LinuxCable& cable = *bridge_.cables[0];
  const auto switch_port = [&](bool on) {
    bridge_.on[0] = on;
    cable.advertisement_changed();
  };
  switch_port(false);
  EXPECT_FALSE(is_up("c0"));
  run_until([&] { return !cable.carrier(); });
  switch_port(true);
  EXPECT_TRUE(is_up("c0"));
  run_until([&] { return cable.carrier(); });

  // Somebody else takes it up or down.
  switch_port(false);
  ip("link set c0 up");
  run_until([&] { return !is_up("c0"); });
  switch_port(true);
  ip("link set c0 down");
  run_until([&] { return !cable.carrier(); });
  switch_port(false);
  switch_port(true);
  EXPECT_FALSE(is_up("c0")) << "not this cable's doing";
  ip("link set c0 up");
  run_until([&] { return cable.carrier(); });

  // The cable goes, and another one comes to a port that is off.
  switch_port(false);
  bridge_.cables[0].reset();
  EXPECT_TRUE(is_up("c0")) << "as it was found";
  open_cable(0);
  EXPECT_FALSE(is_up("c0"));
  bridge_.cables[0].reset();
  EXPECT_TRUE(is_up("c0"));
}

TEST_F(LinuxCableTest, InterfaceStaysUpWhereItMayNotBeTakenDown) {
  without(CAP_NET_ADMIN, [&] {
    bridge_.on[0] = false;
    bridge_.cables[0]->advertisement_changed();
  });
  EXPECT_TRUE(is_up("c0"));
  EXPECT_EQ(bridge_.cables[0]->describe(),
            "linux c0, up while the port is off: cannot be changed: Operation not permitted");
  bridge_.on[0] = true;
  bridge_.cables[0]->advertisement_changed();
  EXPECT_EQ(bridge_.cables[0]->describe(), "linux c0");
}

TEST_F(LinuxCableTest, OneCableLeadsToAnInterface) {
  EXPECT_EQ(LinuxCable::open(loop_, "c0", error_), nullptr);
  EXPECT_EQ(error_, "c0: another cable leads there already");
  enter(spaces_[0]);
  ip("link add c0 type veth peer name other");
  EXPECT_NE(LinuxCable::open(loop_, "c0", error_), nullptr) << "the name counts in its namespace";
  enter(card_space_);
  bridge_.cables[0].reset();
  open_cable(0);
}

TEST_F(LinuxCableTest, InterfaceThatComesBackIsPickedUp) {
  const Bytes frame = some_frame(60);
  for (const char* index : {"", "index 77", "index 77"}) {
    SCOPED_TRACE(index);
    bridge_.carrier_changes = 0;
    ip("link del c1");
    run_until([&] { return !bridge_.cables[1]->carrier(); });
    EXPECT_EQ(bridge_.cables[1]->describe(),
              "linux c1, no carrier, c1: there is no such interface");
    KeepingSink out;
    EXPECT_EQ(out.send(*bridge_.cables[1], {frame}), 0u);
    ip(std::string("link add c1 ") + index + " type veth peer name h1");
    ip("link set h1 up");
    ip("link set c1 up");
    run_until([&] { return bridge_.cables[1]->carrier(); });
    EXPECT_EQ(bridge_.carrier_changes, 2);
    EXPECT_EQ(bridge_.cables[1]->describe(), "linux c1");

    KeepingSink sink;
    const auto end = LinuxCable::open(loop_, "h1", error_);
    ASSERT_NE(end, nullptr) << error_;
    end->plug(sink, 0);
    bridge_.arrived = 0;
    EXPECT_EQ(sink.send(*end, {frame}), 1u);
    run_until([&] { return bridge_.arrived == 1; });
    EXPECT_EQ(out.send(*bridge_.cables[1], {frame}), 1u);
    run_until([&] { return sink.take() == std::vector<Bytes>{frame}; });
  }
  // One that was there in between, under the same number, before the cable heard of it.
  ip("link del c1");
  ip("link add c1 index 77 type veth peer name h1");
  ip("link set h1 up");
  ip("link set c1 up");
  bridge_.carrier_changes = 0;
  run_until([&] { return KeepingSink().send(*bridge_.cables[1], {frame}) == 1; });
  pump();
  EXPECT_TRUE(bridge_.cables[1]->carrier());

  // Another name is no other interface.
  ip("link set c1 down");
  ip("link set c1 name d1");
  ip("link set d1 up");
  run_until([&] { return bridge_.cables[1]->carrier(); });
}

// Frames that the card has not taken: as many as the ring has slots wait, the others are counted.
TEST_F(LinuxCableTest, LossesAreCounted) {
  KeepingSink sink;
  enter(spaces_[0]);
  const auto host = LinuxCable::open(loop_, "h0", error_);
  enter(card_space_);
  ASSERT_NE(host, nullptr) << error_;
  host->plug(sink, 0);
  const std::vector<Bytes> burst(500, some_frame(60));
  std::size_t sent = 0;
  while (sent < 10000) sent += sink.send(*host, burst);
  run_until([&] { return bridge_.arrived + bridge_.lost[0] == sent; });
  EXPECT_GE(bridge_.arrived, 4096u) << "small frames have many slots";
  EXPECT_GT(bridge_.lost[0], 0u);
  EXPECT_EQ(bridge_.cables[0]->describe(),
            "linux c0, " + std::to_string(bridge_.lost[0]) + " received frames lost");
  EXPECT_EQ(bridge_.lost[1], 0u);

  // Long ones go another way, and the pool has 512 for them.
  const std::uint64_t before = bridge_.lost[0];
  bridge_.arrived = 0;
  ip("link set c1 mtu 9000");
  ip("link set c0 mtu 9000");
  ip_at(0, "link set h0 mtu 9000");
  std::vector<FramePtr> hostage;
  for (int i = 0; i < 480; ++i) hostage.push_back(bridge_.frame_pool().make(9000));
  for (const std::size_t bytes : {9000u, 60u, 3000u, 1972u, 1973u, 9014u}) {
    const Bytes frame = some_frame(bytes);
    EXPECT_EQ(sink.send(*host, {frame, frame, frame}), 3u);
  }
  run_until([&] { return bridge_.arrived + bridge_.lost[0] - before == 18; });
  EXPECT_EQ(bridge_.lost[0], before) << "the bridge lets go of them at once";
  while (hostage.size() < 512) hostage.push_back(bridge_.frame_pool().make(9000));
  EXPECT_EQ(sink.send(*host, {some_frame(9000), some_frame(60), some_frame(9000)}), 3u);
  run_until([&] { return bridge_.lost[0] - before == 2; });
  hostage.clear();
  EXPECT_EQ(bridge_.arrived, 19u);
  EXPECT_EQ(bridge_.cables[0]->describe(),
            "linux c0, " + std::to_string(bridge_.lost[0]) + " received frames lost");

  // Those that wait when the interface goes down still come, each in its place.
  EXPECT_EQ(sink.send(*host, {some_frame(9000), some_frame(60), some_frame(8000)}), 3u);
  ip("link set c0 down");
  run_until([&] { return bridge_.arrived == 22; });
  EXPECT_EQ(bridge_.lost[0] - before, 2u);
}

// The header that tells the kernel of the work that is left, read as it is.
TEST_F(LinuxCableTest, HeaderInFrontOfAFrameSaysWhatIsLeftToDo) {
  enter(spaces_[0]);
  const Descriptor host(socket(AF_PACKET, SOCK_RAW | SOCK_NONBLOCK, htons(ETH_P_ALL)));
  enter(card_space_);
  const int on = 1;
  ASSERT_EQ(setsockopt(host.get(), SOL_PACKET, PACKET_VNET_HDR, &on, sizeof on), 0);
  const std::string tcp4 = " ipv4 src=198.51.100.1 dst=198.51.100.2 tcp sport=1 dport=2";
  const std::string tcp6 = " ipv6 src=2001:db8::1 dst=2001:db8::2 tcp sport=1 dport=2";
  const std::string udp4 = " ipv4 src=198.51.100.1 dst=198.51.100.2 udp sport=1 dport=2";
  constexpr std::uint16_t kSegment = 1400;
  const struct {
    std::string text;
    Segmentation segmentation;
    bool partial;
    std::vector<std::uint16_t> header;  // flags and kind, header, segment, start, offset
  } kRows[] = {
      {tcp4 + " size=1000", Segmentation::none, false, {0, 0, 0, 0, 0}},
      {tcp4 + " size=1000", Segmentation::none, true, {0x0001, 0, 0, 34, 16}},
      {tcp4 + " size=9000", Segmentation::tcp4, true, {0x0101, 54, kSegment, 34, 16}},
      {tcp4 + " flags=0x90 size=9000", Segmentation::tcp4, true, {0x8101, 54, kSegment, 34, 16}},
      {tcp4 + " flags=0x7f size=9000", Segmentation::tcp4, true, {0x0101, 54, kSegment, 34, 16}},
      {tcp6 + " flags=0x80 size=9000", Segmentation::tcp6, true, {0x8401, 74, kSegment, 54, 16}},
      {udp4 + " payload=000000000080 size=9000",
       Segmentation::udp,
       true,
       {0x0501, 42, kSegment, 34, 6}},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.text);
    Bytes bytes;
    ASSERT_TRUE(
        parse_frame("eth src=00:00:5e:00:53:01 dst=00:00:5e:00:53:02" + row.text, bytes, error_))
        << error_;
    FramePtr frame = bridge_.frame_pool().make(bytes.data(), bytes.size());
    frame->offload.checksum_partial = row.partial;
    frame->offload.segmentation = row.segmentation;
    if (row.partial) {
      frame->offload.checksum_start = row.header[3];
      frame->offload.checksum_offset = row.header[4];
    }
    if (row.segmentation != Segmentation::none) frame->offload.segment_bytes = kSegment;
    ASSERT_EQ(bridge_.cables[0]->transmit(&frame, 1), 1u);
    std::vector<std::uint8_t> got(70000);
    ssize_t length = 0;
    run_until([&] {
      length = recv(host.get(), got.data(), got.size(), MSG_DONTWAIT);
      pump(1);
      return length > 0;
    });
    ASSERT_EQ(length, static_cast<ssize_t>(10 + bytes.size()));
    std::vector<std::uint16_t> header(5);
    std::memcpy(header.data(), got.data(), 10);
    header[0] = static_cast<std::uint16_t>(got[0] | got[1] << 8);
    if (row.segmentation != Segmentation::none) header[1] = row.header[1];  // the kernel's own
    EXPECT_EQ(header, row.header);
  }
}

TEST_F(LinuxCableTest, UnknownInterfaceIsNamed) {
  EXPECT_EQ(LinuxCable::open(loop_, "none0", error_), nullptr);
  EXPECT_EQ(error_, "none0: there is no such interface");
}

}  // namespace
}  // namespace softcard
