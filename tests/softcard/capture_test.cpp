// SPDX-License-Identifier: Apache-2.0
//
// Captures of a card: what stands in the file, and readers that are slow, gone, or never there.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>

#include "softcard/cables/pcap_file.h"
#include "softcard/capture/frame_capture.h"
#include "tests/softcard/switch_fixture.h"
#include "tests/support/pcapng.h"

namespace softcard {
namespace {

class CaptureTest : public SwitchTest {
 protected:
  CaptureTest() {
    char name[] = "/tmp/capture_test.XXXXXX";
    if (mkdtemp(name) == nullptr) abort();
    folder = name;
    file = folder + "/out";
    ok(sdk.add_mac_to_port(mp(1), mac('b'), 1, false));
  }
  ~CaptureTest() override {
    unlink(file.c_str());
    rmdir(folder.c_str());
  }

  // Captures at these ports into `file`.
  void start(std::initializer_list<PortIndex> ports, bool cpu) {
    PortSet set;
    for (const PortIndex port : ports) set.insert(port);
    capture = FrameCapture::open(file, card.tables(), card.clock(), set, cpu, error);
    ASSERT_NE(capture, nullptr) << error;
    card.pipeline().observe(capture);
  }
  std::string contents() const {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }
  // A frame from a to b, with a long tail.
  void send(std::size_t bytes = 60) {
    auto frame = bytes_of("a b");
    frame.resize(bytes);
    in(0, frame);
    cable(1).clear();
  }
  static std::string text(const std::vector<std::uint8_t>& bytes) {
    return {bytes.begin(), bytes.end()};
  }

  std::string folder;
  std::string file;
  std::string error;
  std::shared_ptr<FrameCapture> capture;
};

TEST_F(CaptureTest, HoldsFramesWithDirectionVerdictAndTime) {
  start({0, 1, 6}, true);
  warp(2.000000005);
  in(0, "a b payload=01");
  in(0, "a b vlan=9");
  in(6, "g 01:80:c2:00:00:0e");
  ok(card.pipeline().send_by_port({}, {6}, bytes_of("x all").data(), 14, PACKET_TYPE_DATA));
  ok(sdk.set_port_flood_blocking(mp(0), mp(1), FLOOD_BLOCK_ALL));
  ok(sdk.set_port_mirror(mp(7), mp(0), MIRROR_TYPE_INGRESS));
  in(0, "a all");
  const auto seen = pcapng_test::read(contents());
  EXPECT_EQ(seen.text(),
            "1/1/0 in #1: to 1/1/1\n"
            "1/1/1 out #1: from 1/1/0\n"
            "1/1/0 in #2: dropped: no-vlan\n"
            "1/1/6 in #3: to CPU | CPU: reserved group address\n"
            "cpu out #3: from 1/1/6 | reserved group address\n"
            "cpu in #4: to 1/1/6\n"
            "1/1/6 out #4: from the CPU\n"
            "1/1/0 in #5: to 1/1/2, 1/1/3, 1/1/4, 1/1/5, 1/1/6, 1/1/7, CPU | CPU: copy of a flood"
            " | mirrored to 1/1/7 | not to 1/1/1: flood-blocked\n"
            "1/1/6 out #5: from 1/1/0\n"
            "cpu out #5: from 1/1/0 | copy of a flood\n");
  ASSERT_EQ(seen.packets.size(), 10u);
  for (const auto& packet : seen.packets) {
    EXPECT_EQ(packet.time_ns, 2000000005u);
    EXPECT_EQ(packet.verdict, packet.comments[0]);
    EXPECT_EQ(packet.lost_before, 0u);
  }
  EXPECT_EQ(seen.packets[0].bytes, text(bytes_of("a b payload=01")));
  EXPECT_EQ(seen.packets[0].reception, 1u);
  EXPECT_EQ(seen.packets[4].bytes, text(bytes_of("g 01:80:c2:00:00:0e")));
  EXPECT_EQ(seen.packets[4].reception, 2u);
  EXPECT_EQ(seen.packets[7].reception, 3u);
  EXPECT_EQ(seen.interfaces[1].mac, text({card.tables().ports.mac(1).bytes.begin(),
                                          card.tables().ports.mac(1).bytes.end()}));

  // The end says how many there were; the card goes on without.
  EXPECT_TRUE(capture->finish());
  in(0, "a all");
  const auto all = pcapng_test::read(contents());
  EXPECT_EQ(all.packets.size(), 10u);
  EXPECT_EQ(capture->frames(), 10u);
  const std::uint64_t kSeen[] = {3, 1, 3, 3};
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_TRUE(all.interfaces[i].has_statistics);
    EXPECT_EQ(all.interfaces[i].received, kSeen[i]) << i;
  }

  // And the card's own reader takes it.
  const auto reader = PcapReader::open(file, error);
  ASSERT_NE(reader, nullptr) << error;
  PcapRecord record;
  for (const auto& packet : seen.packets) {
    ASSERT_TRUE(reader->next(record));
    EXPECT_EQ(text(record.frame), packet.bytes);
    EXPECT_EQ(record.time_ns, packet.time_ns);
  }
  EXPECT_FALSE(reader->next(record));
  for (const PortIndex port : card.tables().ports.all()) cable(port).clear();
  card.deliver_events();
  for (CpuPacket packet; take_cpu(packet);) {
  }
}

// Frames that are still to be cut into segments stand there as they are.
TEST_F(CaptureTest, HoldsTheLongestFrames) {
  start({0, 1}, false);
  auto bytes = bytes_of("a b ipv4 src=192.0.2.1 dst=192.0.2.2 tcp sport=1 dport=2 payload=" +
                        std::string(130000, '0'));
  FramePtr frame = card.frame_pool().make(bytes.data(), bytes.size());
  ASSERT_NE(frame, nullptr);
  frame->offload.checksum_partial = true;
  frame->offload.checksum_start = 34;
  frame->offload.checksum_offset = 16;
  frame->offload.segmentation = Segmentation::tcp4;
  frame->offload.segment_bytes = 1400;
  card.frames_arrived(0, &frame, 1);
  const auto seen = pcapng_test::read(contents());
  ASSERT_EQ(seen.packets.size(), 1u + 47u);
  EXPECT_EQ(seen.packets[0].bytes, text(bytes));
  EXPECT_EQ(seen.packets[0].comments,
            (std::vector<std::string>{"to 1/1/1", "to be cut into segments of 1400 bytes",
                                      "checksum left to the cable"}));
  EXPECT_EQ(seen.packets[1].comments, std::vector<std::string>{"from 1/1/0"});
  cable(1).clear();
}

TEST_F(CaptureTest, NeverWaitsForASlowReader) {
  ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
  const int reader = open(file.c_str(), O_RDONLY | O_NONBLOCK);
  ASSERT_GE(reader, 0);
  start({0, 1}, false);
  EXPECT_TRUE(capture->live());
  std::string all;
  const auto pump = [&] {
    char buffer[65536];
    for (;;) {
      capture->poll();
      const ssize_t count = read(reader, buffer, sizeof buffer);
      if (count <= 0) return;
      all.append(buffer, static_cast<std::size_t>(count));
    }
  };
  // It is live: each burst is there for the reader when it is over.
  send();
  pump();
  EXPECT_EQ(pcapng_test::read(all).packets.size(), 2u);
  // While nobody reads what there is no room for is lost, whole frames only.
  for (int i = 0; i < 4000; ++i) send(1500);
  EXPECT_GT(capture->lost(), 1000u);
  EXPECT_FALSE(capture->over());
  pump();
  send();
  send();
  pump();
  EXPECT_TRUE(capture->finish());
  pump();
  const auto seen = pcapng_test::read(all);
  EXPECT_EQ(seen.packets.size(), capture->frames());
  EXPECT_EQ(capture->frames() + capture->lost(), 2u * 4003u);
  std::uint64_t told[] = {0, 0};
  for (const auto& packet : seen.packets) told[packet.interface_id] += packet.lost_before;
  for (std::size_t i = 0; i < 2; ++i) {
    EXPECT_EQ(told[i], seen.interfaces[i].lost);
    EXPECT_EQ(seen.interfaces[i].received, 4003u);
  }
  EXPECT_EQ(told[0] + told[1], capture->lost());
  close(reader);
}

TEST_F(CaptureTest, EndsWithItsReader) {
  ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
  for (const bool idle : {false, true}) {
    const int reader = open(file.c_str(), O_RDONLY | O_NONBLOCK);
    start({0}, false);
    send();
    EXPECT_FALSE(capture->over());
    close(reader);
    if (idle) {
      capture->poll();
    } else {
      send();
    }
    EXPECT_TRUE(capture->over());
    EXPECT_EQ(capture->error(), "");
    send();
    EXPECT_FALSE(capture->finish());
  }
}

TEST_F(CaptureTest, NamesWhatCannotBeWritten) {
  const auto open_at = [&](const std::string& path) {
    EXPECT_EQ(FrameCapture::open(path, card.tables(), card.clock(), {}, true, error), nullptr);
    return error;
  };
  EXPECT_EQ(open_at("/dev/full"), "/dev/full: cannot be written any more: No space left on device");
  EXPECT_EQ(open_at(folder), folder + ": cannot be written: Is a directory");
  EXPECT_EQ(open_at(folder + "/no/file"),
            folder + "/no/file: cannot be written: No such file or directory");
  ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
  EXPECT_EQ(open_at(file), file + ": is a pipe that nobody reads");
  const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
  ASSERT_EQ(grantpt(terminal) | unlockpt(terminal), 0);
  const std::string name = ptsname(terminal);
  EXPECT_EQ(open_at(name), name + ": is a terminal; a capture goes into a file or a pipe");
  close(terminal);
}

}  // namespace
}  // namespace softcard
