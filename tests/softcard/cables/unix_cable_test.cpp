// SPDX-License-Identifier: Apache-2.0

#include "softcard/cables/unix_cable.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>

#include "cable_fixture.h"

namespace softcard {
namespace {

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
  for (const unsigned bytes : {1u, 14u, 60u, 1518u, 2047u, 2048u, 2049u, 9216u, 65600u}) {
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
