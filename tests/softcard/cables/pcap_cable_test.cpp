// SPDX-License-Identifier: Apache-2.0

#include "softcard/cables/pcap_cable.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include "cable_fixture.h"

namespace softcard {
namespace {

// Writes numbers in either byte order.
class Capture {
 public:
  explicit Capture(bool big_endian = false) : big_endian_(big_endian) {}
  Capture& u16(unsigned value) { return put(value, 2); }
  Capture& u32(std::uint64_t value) { return put(value, 4); }
  Capture& bytes(const Bytes& more) {
    bytes_.insert(bytes_.end(), more.begin(), more.end());
    return *this;
  }
  Capture& header(std::uint32_t magic, std::uint32_t network = 1, unsigned major = 2) {
    return u32(magic).u16(major).u16(4).u32(0).u32(0).u32(65535).u32(network);
  }
  Capture& record(const Bytes& frame, std::uint32_t seconds = 1, std::uint32_t fraction = 2) {
    return u32(seconds).u32(fraction).u32(frame.size()).u32(frame.size()).bytes(frame);
  }
  const Bytes& done() const { return bytes_; }

 private:
  Capture& put(std::uint64_t value, int bytes) {
    for (int i = 0; i < bytes; ++i) {
      const int shift = 8 * (big_endian_ ? bytes - 1 - i : i);
      bytes_.push_back(static_cast<std::uint8_t>(value >> shift));
    }
    return *this;
  }
  bool big_endian_;
  Bytes bytes_;
};

constexpr std::uint32_t kMicroseconds = 0xA1B2C3D4;
constexpr std::uint32_t kNanoseconds = 0xA1B23C4D;

class PcapTest : public CableTest {
 protected:
  PcapTest() {
    char name[] = "/tmp/pcap_cable_test.XXXXXX";
    if (mkdtemp(name) == nullptr) abort();
    folder_ = name;
  }
  ~PcapTest() override {
    for (const std::string& path : made_) std::remove(path.c_str());
    std::remove(folder_.c_str());
  }

  std::string path(const char* name) {
    made_.push_back(folder_ + "/" + name);
    return made_.back();
  }
  std::string file(const char* name, const Bytes& bytes) {
    std::ofstream out(path(name), std::ios::binary);
    out.write(reinterpret_cast<const char*>(bytes.data()),
              static_cast<std::streamsize>(bytes.size()));
    return made_.back();
  }

  std::string folder_;
  std::vector<std::string> made_;
  VirtualClock clock_;
  KeepingSink sink_;
};

TEST_F(PcapTest, ReadsBothByteOrdersAndBothFractions) {
  const Bytes first = some_frame(60), second = some_frame(1500, 1);
  for (const bool big_endian : {false, true}) {
    for (const bool nanoseconds : {false, true}) {
      SCOPED_TRACE(std::to_string(big_endian) + std::to_string(nanoseconds));
      const auto reader =
          PcapReader::open(file("in", Capture(big_endian)
                                          .header(nanoseconds ? kNanoseconds : kMicroseconds)
                                          .record(first, 0x90000000, 5)
                                          .record(second)
                                          .done()),
                           error_);
      ASSERT_NE(reader, nullptr) << error_;
      PcapRecord record;
      ASSERT_TRUE(reader->next(record));
      EXPECT_EQ(record.frame, first);
      EXPECT_EQ(record.time_ns, 0x90000000u * 1000000000ull + (nanoseconds ? 5 : 5000));
      ASSERT_TRUE(reader->next(record));
      EXPECT_EQ(record.frame, second);
      EXPECT_FALSE(reader->next(record));
      EXPECT_EQ(reader->error(), "");
    }
  }
}

TEST_F(PcapTest, CheckSequencesAreLeftOut) {
  const auto reader = PcapReader::open(
      file("in", Capture().header(kMicroseconds, 0x24000001).record(some_frame(64)).done()),
      error_);
  ASSERT_NE(reader, nullptr) << error_;
  PcapRecord record;
  ASSERT_TRUE(reader->next(record));
  EXPECT_EQ(record.frame, some_frame(60));
}

TEST_F(PcapTest, BadFilesAreRefusedWithFileAndRecord) {
  const auto sound = [] { return Capture().header(kMicroseconds).record(some_frame(60)); };
  const struct {
    Bytes bytes;
    const char* error;
  } kRows[] = {
      {{}, "/in: is too short for a pcap capture"},
      {Capture().header(0x12345678).done(), "/in: is no pcap capture"},
      {{0x0A, 0x0D, 0x0D, 0x0A, 0x1C, 0, 0, 0}, "/in: is a pcapng capture"},
      {Capture().header(kMicroseconds, 1, 1).done(), "/in: has version 1 of the pcap format"},
      {Capture(true).header(kNanoseconds, 105).done(), "its link type is 105"},
      {sound().u32(1).done(), "/in: record 2: the file ends inside its header"},
      {sound().u32(1).u32(2).u32(60).u32(60).bytes(some_frame(59)).done(),
       "/in: record 2: the file ends inside its 60 bytes"},
      {sound().u32(1).u32(2).u32(60).u32(1500).bytes(some_frame(60)).done(),
       "/in: record 2: was cut to 60 of 1500 bytes"},
      {sound().record({}).done(), "/in: record 2: is empty"},
      {sound().record(some_frame(65601)).done(), "/in: record 2: has 65601 bytes"},
      {sound().record(some_frame(65600)).u32(1).u32(2).u32(~0u).u32(~0u).done(),
       "/in: record 3: has 4294967295 bytes"},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.error);
    EXPECT_EQ(PcapCable::open(file("in", row.bytes), "", clock_, error_), nullptr);
    EXPECT_NE(error_.find(row.error), std::string::npos) << error_;
    EXPECT_EQ(error_.find(folder_), 0u);
  }
}

TEST_F(PcapTest, FilesThatCannotBeUsedAreNamed) {
  const std::string good =
      file("good", Capture().header(kMicroseconds).record(some_frame(60)).done());
  const struct {
    std::string input, output, error;
  } kRows[] = {
      {folder_ + "/none", "", folder_ + "/none: cannot be opened: No such file"},
      {folder_, "", folder_ + ": is no regular file"},
      {good, folder_ + "/no/folder", folder_ + "/no/folder: cannot be made: No such file"},
      {good, folder_ + "/./good", folder_ + "/./good: is the input, too"},
      {"", "/dev/full", "/dev/full: cannot be written after record 0: No space left"},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(PcapCable::open(row.input, row.output, clock_, error_), nullptr);
    EXPECT_EQ(error_.find(row.error), 0u) << error_;
  }
  EXPECT_NE(PcapCable::open(good, file("other", {}), clock_, error_), nullptr)
      << "the input is still whole";
}

TEST_F(PcapTest, RecordsEnterThePortAsItPolls) {
  Capture capture;
  capture.header(kMicroseconds);
  std::vector<Bytes> frames;
  for (unsigned i = 0; i < 100; ++i) {
    frames.push_back(some_frame(60 + 30 * i, i));
    capture.record(frames.back());
  }
  const auto cable = PcapCable::open(file("in", capture.done()), "", clock_, error_);
  ASSERT_NE(cable, nullptr) << error_;
  cable->plug(sink_, 3);
  EXPECT_EQ(cable->poll(40), 40u);
  EXPECT_EQ(sink_.arrived.size(), 40u);
  EXPECT_EQ(sink_.bursts, 2);
  EXPECT_EQ(cable->poll(1000), 60u);
  EXPECT_EQ(cable->poll(1000), 0u);
  EXPECT_EQ(sink_.take(), frames);
  EXPECT_TRUE(cable->carrier());
  EXPECT_EQ(cable->describe(), "pcap from " + made_[0] + " (100 frames read)");
}

TEST_F(PcapTest, NothingIsLostWhenThePoolIsUsedUp) {
  Capture capture;
  capture.header(kMicroseconds);
  for (unsigned i = 0; i < 5; ++i) capture.record(some_frame(60, i));
  KeepingSink small(3);
  const auto cable = PcapCable::open(file("in", capture.done()), "", clock_, error_);
  ASSERT_NE(cable, nullptr) << error_;
  cable->plug(small, 0);
  EXPECT_EQ(cable->poll(1000), 3u);
  EXPECT_EQ(cable->poll(1000), 0u);
  EXPECT_EQ(cable->describe(), "pcap from " + made_[0] + " (3 frames read)");
  EXPECT_EQ(small.take(),
            (std::vector<Bytes>{some_frame(60, 0), some_frame(60, 1), some_frame(60, 2)}));
  EXPECT_EQ(cable->poll(1000), 2u);
  EXPECT_EQ(small.take(), (std::vector<Bytes>{some_frame(60, 3), some_frame(60, 4)}));
}

TEST_F(PcapTest, FileThatShrinksTakesTheCarrier) {
  const Bytes whole = Capture().header(kMicroseconds).record(some_frame(60000)).done();
  const auto cable = PcapCable::open(file("in", whole), "", clock_, error_);
  ASSERT_NE(cable, nullptr) << error_;
  cable->plug(sink_, 0);
  file("in", Bytes(whole.begin(), whole.begin() + 5000));
  EXPECT_EQ(cable->poll(10), 0u);
  EXPECT_FALSE(cable->carrier());
  EXPECT_EQ(sink_.carrier_changes, 1);
  EXPECT_NE(cable->describe().find("record 1: the file ends inside"), std::string::npos);
}

TEST_F(PcapTest, WritesWhatThePortSendsWithTheCardsTime) {
  const std::string out = path("out");
  const auto cable = PcapCable::open("", out, clock_, error_);
  ASSERT_NE(cable, nullptr) << error_;
  cable->plug(sink_, 0);
  EXPECT_EQ(sink_.send(*cable, {some_frame(60), some_frame(2049, 1)}), 2u);
  clock_.warp_ns(3000000007);
  EXPECT_EQ(sink_.send(*cable, {some_frame(65600, 2)}), 1u);
  cable->poll(1);

  std::ifstream in(out, std::ios::binary);
  const Bytes bytes{std::istreambuf_iterator<char>(in), {}};
  EXPECT_EQ(bytes, Capture()
                       .u32(kNanoseconds)
                       .u16(2)
                       .u16(4)
                       .u32(0)
                       .u32(0)
                       .u32(65600)
                       .u32(1)
                       .record(some_frame(60), 0, 0)
                       .record(some_frame(2049, 1), 0, 0)
                       .record(some_frame(65600, 2), 3, 7)
                       .done());
}

TEST_F(PcapTest, FullDiskTakesTheCarrier) {
  const std::string out = path("out");
  const auto cable = PcapCable::open("", out, clock_, error_);
  ASSERT_NE(cable, nullptr) << error_;
  cable->plug(sink_, 0);
  EXPECT_EQ(sink_.send(*cable, {some_frame(60)}), 1u);
  cable->poll(1);
  EXPECT_EQ(sink_.carrier_changes, 0);
  // No file may grow beyond this.
  rlimit limit;
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &limit), 0);
  const rlimit small{10000, limit.rlim_max};
  signal(SIGXFSZ, SIG_IGN);
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
  const std::size_t sent = sink_.send(*cable, {some_frame(60), some_frame(60000), some_frame(60)});
  setrlimit(RLIMIT_FSIZE, &limit);
  signal(SIGXFSZ, SIG_DFL);
  EXPECT_EQ(sent, 1u);
  cable->poll(1);
  cable->poll(1);
  EXPECT_FALSE(cable->carrier());
  EXPECT_EQ(sink_.carrier_changes, 1);
  EXPECT_EQ(cable->describe(),
            "pcap to " + out + "; " + out + ": cannot be written after record 2: File too large");
  EXPECT_EQ(sink_.send(*cable, {some_frame(60)}), 0u);
}

TEST_F(PcapTest, WithoutFilesFramesLeaveForNowhere) {
  const auto cable = PcapCable::open("", "", clock_, error_);
  ASSERT_NE(cable, nullptr);
  EXPECT_EQ(sink_.send(*cable, {some_frame(60)}), 1u);
  EXPECT_EQ(cable->poll(10), 0u);
  EXPECT_EQ(cable->describe(), "pcap");
}

}  // namespace
}  // namespace softcard
