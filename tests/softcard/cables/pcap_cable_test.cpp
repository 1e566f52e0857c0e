// SPDX-License-Identifier: Apache-2.0

#include "softcard/cables/pcap_cable.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
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
      {{}, "/in: is too short for a capture"},
      {Capture().header(0x12345678).done(), "/in: is no pcap or pcapng capture"},
      {Capture().header(kMicroseconds, 1, 1).done(), "/in: has version 1 of the pcap format"},
      {Capture(true).header(kNanoseconds, 105).done(), "its link type is 105"},
      {sound().u32(1).done(), "/in: record 2 at byte 100: the file ends inside it"},
      {sound().u32(1).u32(2).u32(60).u32(60).bytes(some_frame(59)).done(),
       "/in: record 2 at byte 100: the file ends inside it: it was cut, or is still being written"},
      {sound().u32(1).u32(2).u32(60).u32(1500).bytes(some_frame(60)).done(),
       "/in: record 2 at byte 100: was cut to 60 of 1500 bytes"},
      {sound().record({}).done(), "/in: record 2 at byte 100: is empty"},
      {sound().record(some_frame(65601)).done(), "/in: record 2 at byte 100: has 65601 bytes"},
      {sound().record(some_frame(65600)).u32(1).u32(2).u32(~0u).u32(~0u).done(),
       "/in: record 3 at byte 65716: has 4294967295 bytes"},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.error);
    EXPECT_EQ(PcapCable::open(file("in", row.bytes), "", clock_, error_), nullptr);
    EXPECT_NE(error_.find(row.error), std::string::npos) << error_;
    EXPECT_EQ(error_.find(folder_), 0u);
  }
}

// ---- pcapng -------------------------------------------------------------------------------------

// Writes blocks in either byte order.
class Blocks {
 public:
  explicit Blocks(bool big_endian = false) : big_endian_(big_endian) {}

  Blocks& block(std::uint32_t type, const std::function<void(Capture&)>& fill) {
    Capture body(big_endian_);
    fill(body);
    Bytes bytes = body.done();
    bytes.resize((bytes.size() + 3) / 4 * 4);
    const std::uint64_t length = bytes.size() + 12;
    const Bytes whole = Capture(big_endian_).u32(type).u32(length).bytes(bytes).u32(length).done();
    all_.insert(all_.end(), whole.begin(), whole.end());
    return *this;
  }
  Blocks& section(unsigned major = 1) {
    return block(0x0A0D0D0A,
                 [=](Capture& body) { body.u32(0x1A2B3C4D).u16(major).u16(0).u32(~0u).u32(~0u); });
  }
  // `options` are written as they are.
  Blocks& interface(unsigned link_type = 1, unsigned snap = 0, const Bytes& options = {}) {
    return block(1, [&](Capture& body) { body.u16(link_type).u16(0).u32(snap).bytes(options); });
  }
  Blocks& packet(const Bytes& frame, std::uint32_t id = 0, std::uint64_t ticks = 0,
                 const Bytes& options = {}) {
    return block(6, [&](Capture& body) {
      body.u32(id).u32(ticks >> 32).u32(ticks & 0xFFFFFFFF).u32(frame.size()).u32(frame.size());
      padded(body, frame).bytes(options);
    });
  }
  Blocks& raw(const Bytes& bytes) {
    all_.insert(all_.end(), bytes.begin(), bytes.end());
    return *this;
  }
  Bytes option(unsigned code, const Bytes& value) const {
    Capture bytes(big_endian_);
    bytes.u16(code).u16(static_cast<unsigned>(value.size()));
    return padded(bytes, value).done();
  }
  Bytes word(std::uint64_t value) const { return Capture(big_endian_).u32(value).done(); }
  static Capture& padded(Capture& body, const Bytes& bytes) {
    return body.bytes(bytes).bytes(Bytes((4 - bytes.size() % 4) % 4));
  }
  const Bytes& done() const { return all_; }

 private:
  bool big_endian_;
  Bytes all_;
};

// Sections of either byte order, each with interfaces of its own, and blocks that mean nothing.
Bytes two_sections() {
  Blocks all;
  for (const bool big_endian : {false, true}) {
    Blocks blocks(big_endian);
    // 5 s, in 64 bits.
    Bytes both_words = blocks.word(big_endian ? 0 : 5);
    const Bytes second_word = blocks.word(big_endian ? 5 : 0);
    both_words.insert(both_words.end(), second_word.begin(), second_word.end());
    Bytes options = blocks.option(9, {9});
    const Bytes offset = blocks.option(14, both_words);
    options.insert(options.end(), offset.begin(), offset.end());
    blocks.section()
        .interface()
        .packet(some_frame(61), 0, 5)
        .interface(1, 0, options)
        .block(0x80000BAD, [](Capture& body) { body.bytes(some_frame(100)); })
        .packet(some_frame(62, 1), 1, 0x123456789ABCDEF0, blocks.option(1, {'h', 'i'}))
        .interface(1, 0, blocks.option(9, {0x80 | 20}))
        .packet(some_frame(63, 2), 2, 3 << 19)
        .block(3, [](Capture& body) { Blocks::padded(body.u32(60), some_frame(60, 3)); })
        .block(2,
               [](Capture& body) {
                 body.u16(1).u16(7).u32(0).u32(1000000009).u32(60).u32(60);
                 body.bytes(some_frame(60, 4));
               })
        .packet(some_frame(64, 5), 0, 7, blocks.option(2, blocks.word(4 << 5)))
        .block(5, [](Capture& body) { body.u32(0).u32(0).u32(0); });
    all.raw(blocks.done());
  }
  return all.done();
}

TEST_F(PcapTest, ReadsSectionsAndInterfacesOfEitherByteOrder) {
  const struct {
    std::size_t bytes;
    unsigned seed;
    std::uint64_t time_ns;
  } kPackets[] = {{61, 0, 5000},       {62, 1, 0x123456789ABCDEF0 + 5000000000},
                  {63, 2, 1500000000}, {60, 3, 0},
                  {60, 4, 6000000009}, {60, 5, 7000}};
  const auto reader = PcapReader::open(file("in", two_sections()), error_);
  ASSERT_NE(reader, nullptr) << error_;
  PcapRecord record;
  for (int section = 0; section < 2; ++section) {
    for (const auto& packet : kPackets) {
      SCOPED_TRACE(packet.seed);
      ASSERT_TRUE(reader->next(record)) << reader->error();
      Bytes frame = some_frame(packet.seed == 5 ? 64 : packet.bytes, packet.seed);
      frame.resize(packet.bytes);
      EXPECT_EQ(record.frame, frame);
      EXPECT_EQ(record.time_ns, packet.time_ns);
    }
  }
  EXPECT_FALSE(reader->next(record));
  EXPECT_EQ(reader->error(), "");
  EXPECT_EQ(reader->records_read(), 12u);
}

TEST_F(PcapTest, TimestampsHaveAnyResolution) {
  const struct {
    std::uint8_t resolution;
    std::uint64_t ticks, time_ns;
  } kRows[] = {{0, 3, 3000000000},
               {3, 3, 3000000},
               {12, 3999, 3},
               {0x80, 2, 2000000000},
               {0x80 | 63, 3ull << 62, 1500000000},
               {0x80 | 64, ~0ull, 999999999},
               {6, ~0ull, ~0ull},
               {0x80, ~0ull, ~0ull}};
  for (const auto& row : kRows) {
    Blocks blocks;
    blocks.section().interface(1, 0, blocks.option(9, {row.resolution}));
    blocks.packet(some_frame(60), 0, row.ticks);
    const auto reader = PcapReader::open(file("in", blocks.done()), error_);
    ASSERT_NE(reader, nullptr) << error_;
    PcapRecord record;
    ASSERT_TRUE(reader->next(record));
    EXPECT_EQ(record.time_ns, row.time_ns) << int{row.resolution};
  }
}

TEST_F(PcapTest, BadBlocksAreRefusedWithTheirPlace) {
  const auto sound = [] { return Blocks().section().interface(); };  // 28 and 20 bytes
  const auto packet = [](std::uint32_t kept, std::uint32_t whole) {
    return [=](Capture& body) { body.u32(0).u32(0).u32(0).u32(kept).u32(whole).bytes(Bytes(60)); };
  };
  const auto framed = [](std::uint32_t type, std::uint32_t length, const Bytes& rest) {
    return Capture().u32(type).u32(length).bytes(rest).done();
  };
  const struct {
    const char* error;
    Bytes bytes;
  } kRows[] = {
      {"/in: block at byte 0: the file ends inside it: it was cut, or is still being written",
       framed(0x0A0D0D0A, 28, {})},
      {"/in: block at byte 0: no section begins like that", framed(0x0A0D0D0A, 28, Bytes(20))},
      {"/in: block at byte 0: has version 2 of the pcapng format", Blocks().section(2).done()},
      {"/in: block at byte 48: the file ends inside it", sound().raw({6, 0, 0}).done()},
      {"/in: block at byte 48: the file ends inside it", sound().raw(framed(99, 64, {})).done()},
      {"/in: block at byte 48: no block of type 99 is 8 bytes long",
       sound().raw(framed(99, 8, {})).done()},
      {"/in: block at byte 48: no block of type 99 is 17 bytes long",
       sound().raw(framed(99, 17, Bytes(9))).done()},
      {"/in: block at byte 48: no block of type 6 is 28 bytes long",
       sound().raw(framed(6, 28, Bytes(20))).done()},
      {"/in: block at byte 48: is 1048580 bytes long", sound().raw(framed(6, 1048580, {})).done()},
      {"/in: block at byte 48: is 12 bytes long by its beginning, 16 by its end",
       sound().raw(framed(99, 12, {16, 0, 0, 0})).done()},
      {"/in: block at byte 48: is of interface 1, and 1 are described",
       sound().packet(some_frame(60), 1).done()},
      {"/in: block at byte 76: is of interface 0, and 0 are described",
       sound().section().packet(some_frame(60)).done()},
      {"/in: block at byte 48: is no Ethernet frame: its link type is 113",
       Blocks().section().interface(113).packet(some_frame(60)).done()},
      {"/in: block at byte 48: has room for 60 bytes of a packet of 61",
       sound().block(6, packet(61, 61)).done()},
      {"/in: block at byte 48: was cut to 60 of 1500 bytes",
       sound().block(6, packet(60, 1500)).done()},
      {"/in: block at byte 48: was cut to 40 of 60 bytes",
       Blocks()
           .section()
           .interface(1, 40)
           .block(3, [](Capture& body) { body.u32(60).bytes(Bytes(40)); })
           .done()},
      {"/in: block at byte 48: is empty", sound().packet({}).done()},
      {"/in: block at byte 48: has 65601 bytes", sound().packet(some_frame(65601)).done()},
      {"/in: block at byte 48: its option at byte 136 is longer than the block",
       sound().packet(some_frame(60), 0, 0, {1, 0, 5, 0, 'h', 'i', 0, 0}).done()},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(PcapReader::open(file("in", row.bytes), error_), nullptr) << row.error;
    EXPECT_NE(error_.find(row.error), std::string::npos) << row.error << "\n" << error_;
  }
}

// Nothing that a file holds does harm, and one that was cut is as good as a shorter one or refused.
TEST_F(PcapTest, NoFileDoesHarm) {
  // A file in memory, for there are thousands of them.
  const int memory = memfd_create("in", MFD_CLOEXEC);
  ASSERT_GE(memory, 0);
  const std::string name = "/proc/self/fd/" + std::to_string(memory);
  const auto is_sound = [&](const Bytes& bytes) {
    const auto length = static_cast<off_t>(bytes.size());
    EXPECT_EQ(ftruncate(memory, length), 0);
    EXPECT_EQ(pwrite(memory, bytes.data(), bytes.size(), 0), length);
    if (PcapReader::open(name, error_) != nullptr) return true;
    EXPECT_EQ(error_.find(name + ": "), 0u) << error_;
    return false;
  };
  const Bytes whole = two_sections();
  std::size_t sound = 0;
  for (std::size_t bytes = 0; bytes < whole.size(); ++bytes) {
    if (is_sound({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(bytes)})) ++sound;
  }
  EXPECT_EQ(sound, 23u) << "one behind each block but the last";
  for (std::size_t at = 0; at < whole.size(); ++at) {
    for (const unsigned bits : {0xFFu, 0x01u, 0x80u}) {
      Bytes changed = whole;
      changed[at] = static_cast<std::uint8_t>(whole[at] ^ bits);
      is_sound(changed);
    }
  }
  close(memory);
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
  EXPECT_NE(cable->describe().find("record 1 at byte 24: the file ends inside"), std::string::npos);
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
