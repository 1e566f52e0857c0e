// SPDX-License-Identifier: Apache-2.0

#include "softcard/cables/unix_cable.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>

#include "cable_fixture.h"
#include "softcard/card.h"

namespace softcard {
namespace {

constexpr int kFewPasses = 20;

class UnixCableTest : public CableTest {
 protected:
  UnixCableTest() {
    char name[] = "/tmp/unix_cable_test.XXXXXX";
    if (mkdtemp(name) == nullptr) abort();
    folder_ = name;
    path_ = folder_ + "/cable";
  }
  ~UnixCableTest() override {
    unlink(path_.c_str());
    EXPECT_EQ(rmdir(folder_.c_str()), 0) << "a cable left something behind";
  }

  std::unique_ptr<UnixCable> plug(KeepingSink& sink) {
    std::unique_ptr<UnixCable> cable = UnixCable::open(loop_, path_, error_);
    EXPECT_NE(cable, nullptr) << error_;
    if (cable != nullptr) cable->plug(sink, 0);
    return cable;
  }
  // Passes that the loop takes in a while: few unless it spins.
  int passes_in_a_while() {
    int passes = 0;
    bool over = false;
    const XorpTimer end = loop_.set_flag_after_ms(150, &over);
    while (!over) {
      loop_.run();
      ++passes;
    }
    return passes;
  }
  bool name_is_there() const {
    struct stat status {};
    return lstat(path_.c_str(), &status) == 0;
  }

  std::string folder_;
  std::string path_;
  KeepingSink a_sink_, b_sink_;
};

TEST_F(UnixCableTest, FramesPassBothWaysWholeAndInOrder) {
  const auto a = plug(a_sink_);
  const auto b = plug(b_sink_);
  run_until([&] { return a->carrier() && b->carrier(); });
  std::vector<Bytes> frames;
  for (const unsigned bytes : {2u, 14u, 60u, 1518u, 2047u, 2048u, 2049u, 9216u, 65600u}) {
    frames.push_back(some_frame(bytes, bytes));
  }
  for (unsigned i = 0; i < 40; ++i) frames.push_back(some_frame(60, i));
  EXPECT_EQ(a_sink_.send(*a, frames), frames.size());
  EXPECT_EQ(b_sink_.send(*b, {frames[2]}), 1u);
  run_until([&] { return b_sink_.arrived.size() == frames.size() && !a_sink_.arrived.empty(); });
  EXPECT_EQ(b_sink_.take(), frames);
  EXPECT_EQ(a_sink_.take(), std::vector<Bytes>{frames[2]});
}

TEST_F(UnixCableTest, CarrierIsThereWhileBothEndsAre) {
  auto a = plug(a_sink_);
  EXPECT_FALSE(a->carrier());
  EXPECT_EQ(a->describe(), "unix " + path_ + ", waiting for the other end");
  EXPECT_EQ(a_sink_.send(*a, {some_frame(60)}), 0u);
  auto b = plug(b_sink_);
  run_until([&] { return a->carrier(); });
  EXPECT_EQ(a->describe(), "unix " + path_);
  EXPECT_FALSE(name_is_there()) << "nobody else may join";

  // Either end may go and come back.
  for (auto* const pair : {&a, &b}) {
    auto& other = pair == &a ? b : a;
    pair->reset();
    run_until([&] { return !other->carrier(); });
    EXPECT_TRUE(name_is_there());
    *pair = plug(pair == &a ? a_sink_ : b_sink_);
    run_until([&] { return other->carrier() && (*pair)->carrier(); });
  }
  EXPECT_EQ(a_sink_.carrier_changes, 3);
  EXPECT_EQ(b_sink_.carrier_changes, 2) << "a cable that finds its other end at once has a carrier";
  EXPECT_EQ(b_sink_.send(*b, {some_frame(60)}), 1u);
  run_until([&] { return !a_sink_.arrived.empty(); });
}

TEST_F(UnixCableTest, ThirdEndWaitsForAFourth) {
  KeepingSink c_sink, d_sink;
  const auto a = plug(a_sink_);
  const auto b = plug(b_sink_);
  run_until([&] { return a->carrier(); });
  const auto c = plug(c_sink);
  pump();
  EXPECT_FALSE(c->carrier());
  const auto d = plug(d_sink);
  run_until([&] { return c->carrier(); });
  c_sink.send(*c, {some_frame(60)});
  run_until([&] { return !d_sink.arrived.empty(); });
  EXPECT_TRUE(a_sink_.arrived.empty() && b_sink_.arrived.empty());
}

TEST_F(UnixCableTest, PortThatIsOffTakesTheCarrierOfTheOtherEnd) {
  const auto a = plug(a_sink_);
  b_sink_.on = false;
  auto b = plug(b_sink_);
  run_until([&] { return a->describe() == "unix " + path_ + ", the other end is off"; });
  EXPECT_FALSE(a->carrier());
  EXPECT_TRUE(b->carrier()) << "the end that is off still sees the other one";
  EXPECT_EQ(a_sink_.send(*a, {some_frame(60)}), 0u);
  EXPECT_TRUE(a_sink_.arrived.empty()) << "what the ends tell each other is no frame";

  // Frames and signals keep their order.
  a_sink_.carrier_changes = 0;
  for (const bool on : {true, false, true}) {
    b_sink_.on = on;
    b->advertisement_changed();
    b->advertisement_changed();
    b_sink_.send(*b, {some_frame(60, on)});
  }
  run_until([&] { return a_sink_.arrived.size() == 3; });
  EXPECT_EQ(a_sink_.carrier_changes, 3);
  EXPECT_EQ(a_sink_.arrived_before_change, 2u);
  EXPECT_EQ(a_sink_.take(),
            (std::vector<Bytes>{some_frame(60, 1), some_frame(60, 0), some_frame(60, 1)}));
  EXPECT_TRUE(a->carrier());

  // An end that comes anew knows nothing of the one before.
  b_sink_.on = false;
  b->advertisement_changed();
  run_until([&] { return !a->carrier(); });
  b.reset();
  b_sink_.on = true;
  run_until([&] { return name_is_there(); });
  a_sink_.on = false;
  for (int i = 0; i < 2; ++i) {
    b = plug(b_sink_);
    run_until([&] { return a->carrier() && !b->carrier(); });
    b.reset();
    run_until([&] { return name_is_there(); });
  }
}

TEST_F(UnixCableTest, SignalWaitsBehindFramesForRoom) {
  const auto a = plug(a_sink_);
  const auto b = plug(b_sink_);
  run_until([&] { return a->carrier(); });
  while (a_sink_.send(*a, std::vector<Bytes>(16, some_frame(60000))) == 16) a_sink_.arrived.clear();
  a_sink_.on = false;
  a->advertisement_changed();
  run_until([&] {
    b_sink_.arrived.clear();
    return !b->carrier();
  });
  EXPECT_LT(passes_in_a_while(), kFewPasses);
}

TEST_F(UnixCableTest, CardsSeeEachOthersPorts) {
  CardDescription description;
  description.ports.resize(2);
  const auto clock = std::make_shared<VirtualClock>();
  Card left(description, clock), right(description, clock);
  for (Card* card : {&left, &right}) card->plug(0, UnixCable::open(loop_, path_, error_));
  run_until([&] { return left.tables().ports.is_up(0) && right.tables().ports.is_up(0); });
  const struct {
    const char* name;
    std::function<void(bool)> set;
  } kRows[] = {
      {"state", [&](bool on) { left.tables().ports.set_admin(0, on); }},
      {"PHY", [&](bool on) { left.tables().ports.set_phy_forced_down(0, !on); }},
      {"plug", [&](bool on) { left.cut_carrier(0, !on); }},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    row.set(false);
    EXPECT_FALSE(left.tables().ports.is_up(0));
    run_until([&] { return !right.tables().ports.is_up(0); });
    row.set(true);
    run_until([&] { return left.tables().ports.is_up(0) && right.tables().ports.is_up(0); });
  }
}

TEST_F(UnixCableTest, MessagesThatAreNoFramesAreLostAndCounted) {
  const auto a = plug(a_sink_);
  const int peer = socket(AF_UNIX, SOCK_SEQPACKET, 0);
  sockaddr_un name{};
  name.sun_family = AF_UNIX;
  path_.copy(name.sun_path, sizeof name.sun_path - 1);
  ASSERT_EQ(connect(peer, reinterpret_cast<sockaddr*>(&name), sizeof name), 0);
  for (const std::size_t bytes : {65601u, 65600u, 65700u, 60u}) {
    const Bytes message = some_frame(bytes);
    ASSERT_EQ(write(peer, message.data(), bytes), static_cast<ssize_t>(bytes));
  }
  run_until([&] { return a_sink_.arrived.size() == 2; });
  EXPECT_EQ(a_sink_.take(), (std::vector<Bytes>{some_frame(65600), some_frame(60)}));
  EXPECT_EQ(a_sink_.lost, 2u);
  close(peer);
  run_until([&] { return !a->carrier(); });
}

TEST_F(UnixCableTest, LockOnTheFolderOrWantOfDescriptorsDelaysAlone) {
  const int folder = ::open(folder_.c_str(), O_RDONLY);
  ASSERT_EQ(flock(folder, LOCK_EX), 0);
  auto a = plug(a_sink_);
  EXPECT_EQ(a->describe(), "unix " + path_ + ", " + path_ +
                               ": its folder cannot be locked: Resource temporarily unavailable");
  EXPECT_LT(passes_in_a_while(), kFewPasses);
  EXPECT_FALSE(name_is_there());
  flock(folder, LOCK_UN);
  run_until([&] { return name_is_there(); });
  EXPECT_EQ(a->describe(), "unix " + path_ + ", waiting for the other end");

  // Nor one that comes while the two are connected.
  auto b = plug(b_sink_);
  run_until([&] { return a->carrier(); });
  flock(folder, LOCK_EX);
  b.reset();
  run_until([&] { return !a->carrier(); });
  b = plug(b_sink_);
  EXPECT_LT(passes_in_a_while(), kFewPasses);
  flock(folder, LOCK_UN);
  run_until([&] { return a->carrier() && b->carrier(); });
  close(folder);

  // Nor does a want of descriptors.
  b.reset();
  run_until([&] { return name_is_there(); });
  const int peer = socket(AF_UNIX, SOCK_SEQPACKET, 0);
  sockaddr_un name{};
  name.sun_family = AF_UNIX;
  path_.copy(name.sun_path, sizeof name.sun_path - 1);
  ASSERT_EQ(connect(peer, reinterpret_cast<sockaddr*>(&name), sizeof name), 0);
  rlimit limit;
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
  const rlimit none{3, limit.rlim_max};  // standard input, output and error
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
  const int passes = passes_in_a_while();
  const std::string text = a->describe();
  setrlimit(RLIMIT_NOFILE, &limit);
  EXPECT_LT(passes, kFewPasses);
  EXPECT_EQ(text, "unix " + path_ + ", waiting for the other end, " + path_ +
                      ": the other end cannot be let in: Too many open files");
  run_until([&] { return a->carrier(); });
  EXPECT_EQ(a->describe(), "unix " + path_);

  // Nor one that comes when the other end goes.
  close(peer);
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
  const int passes_alone = passes_in_a_while();
  const std::string text_alone = a->describe();
  setrlimit(RLIMIT_NOFILE, &limit);
  EXPECT_LT(passes_alone, kFewPasses);
  EXPECT_EQ(text_alone,
            "unix " + path_ + ", " + path_ + ": its folder cannot be locked: Too many open files");
  run_until([&] { return name_is_there(); });
}

TEST_F(UnixCableTest, SlowEndMakesTheFastOneRefuse) {
  const auto a = plug(a_sink_);
  const auto b = plug(b_sink_);
  run_until([&] { return a->carrier(); });
  std::size_t sent = 0;
  for (int i = 0; i < 1000; ++i) {
    const std::size_t now = a_sink_.send(*a, std::vector<Bytes>(64, some_frame(1500)));
    sent += now;
    if (now < 64) break;
  }
  EXPECT_LT(sent, 64000u);
  run_until([&] { return b_sink_.arrived.size() == sent; });
  pump();
  EXPECT_EQ(b_sink_.arrived.size(), sent) << "what was taken arrives, no more and no less";
  EXPECT_EQ(a_sink_.send(*a, {some_frame(60)}), 1u);
}

TEST_F(UnixCableTest, FramesWaitWhileThePoolIsUsedUp) {
  KeepingSink small(3);
  const auto a = plug(a_sink_);
  const auto b = plug(small);
  run_until([&] { return a->carrier(); });
  a_sink_.send(*a, {some_frame(60, 0), some_frame(60, 1), some_frame(60, 2), some_frame(60, 3)});
  pump();
  EXPECT_EQ(small.take().size(), 3u);
  run_until([&] { return !small.arrived.empty(); });
  EXPECT_EQ(small.take(), std::vector<Bytes>{some_frame(60, 3)});
}

TEST_F(UnixCableTest, AbandonedNameIsTakenOver) {
  const int dead = socket(AF_UNIX, SOCK_SEQPACKET, 0);
  sockaddr_un name{};
  name.sun_family = AF_UNIX;
  path_.copy(name.sun_path, sizeof name.sun_path - 1);
  ASSERT_EQ(bind(dead, reinterpret_cast<sockaddr*>(&name), sizeof name), 0);
  close(dead);
  const auto a = plug(a_sink_);
  const auto b = plug(b_sink_);
  run_until([&] { return a->carrier() && b->carrier(); });
}

TEST_F(UnixCableTest, PathsThatCannotBeUsedAreNamed) {
  std::ofstream(path_) << "precious";
  const std::string rows[][2] = {
      {path_, path_ + ": is there and is no socket"},
      {"", ": a socket's name has 1 to 107 bytes"},
      {"/" + std::string(107, 'x'), "a socket's name has 1 to 107 bytes"},
      {folder_ + "/none/cable", folder_ + "/none/cable: its folder cannot be locked: No such file"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(UnixCable::open(loop_, row[0], error_), nullptr);
    EXPECT_NE(error_.find(row[1]), std::string::npos) << error_;
  }
  EXPECT_TRUE(name_is_there());
}

}  // namespace
}  // namespace softcard
