// SPDX-License-Identifier: Apache-2.0
//
// One virtual time: a daemon's timers, timeouts and tasks, and the card's ageing and events,
// advance together and in order.

#include <sys/socket.h>
#include <unistd.h>

#include "host_fixture.h"
#include "libxorp/eventloop.hh"
#include "softcard/cables/memory_cable.h"

namespace softcard {
namespace {

constexpr std::uint64_t kSecond = kNanosecondsPerSecond;

// A daemon that notes when things happen to it, in milliseconds of the loop and of the card.
class VirtualTimeTest : public HostTest {
 public:
  // As itself in a test: the callbacks name the class that has the functions.
  VirtualTimeTest* self() { return this; }

  void note(std::string what) {
    TimeVal now;
    loop_.current_time(now);
    EXPECT_EQ(now.to_ms(), static_cast<std::int64_t>(clock_->now_ns() / 1000000)) << what;
    log_.push_back(std::to_string(now.to_ms()) + " " + what);
  }
  bool note_again(std::string what) {
    note(what);
    return true;
  }

  // Has the card learn an address at port 0.
  static void learn(std::uint8_t last) {
    std::vector<std::uint8_t> frame(60, 0xff);
    const std::uint8_t source[] = {0x00, 0x00, 0x5e, 0x00, 0x53, last};
    std::copy(source, source + 6, frame.begin() + 6);
    dynamic_cast<MemoryCable&>(*card().cable(0)).send(frame);
  }

  EventLoop loop_;
  XorpTimer chain_;
  Lines log_;
};

TEST_F(VirtualTimeTest, TimersFireInOrderAndEachSeesItsOwnTime) {
  const XorpTimer hello = loop_.new_periodic_ms(
      2000, callback(self(), &VirtualTimeTest::note_again, std::string("hello")));
  const XorpTimer late = loop_.new_oneoff_after_ms(
      5001, callback(self(), &VirtualTimeTest::note, std::string("late")));
  const XorpTimer first =
      loop_.new_oneoff_after_ms(1, callback(self(), &VirtualTimeTest::note, std::string("first")));
  ASSERT_TRUE(host::warp_ns(6 * kSecond));
  EXPECT_EQ(log_, (Lines{"1 first", "2000 hello", "4000 hello", "5001 late", "6000 hello"}));
  EXPECT_EQ(clock_->now_ns(), 6 * kSecond);
  ASSERT_TRUE(host::warp_ns(2 * kSecond - 1));
  EXPECT_EQ(log_.size(), 5u);
  ASSERT_TRUE(host::warp_ns(1));
  EXPECT_EQ(log_.back(), "8000 hello");
}

TEST_F(VirtualTimeTest, AgeingAndTimersKeepTheirOrder) {
  ASSERT_TRUE(vorn_set_fdb_aging_time(10));
  ASSERT_TRUE(vorn_register_mac_update_callback(
      [](L2Addr* entry, int update, void* test) {
        static_cast<VirtualTimeTest*>(test)->note(
            std::string(update == MAC_UPDATE_LEARNED ? "learned" : "removed") + " :" +
            std::to_string(entry->mac[5]));
      },
      this));
  learn(1);
  const XorpTimer before = loop_.new_oneoff_after_ms(
      9999, callback(self(), &VirtualTimeTest::note, std::string("before")));
  const XorpTimer behind = loop_.new_oneoff_after_ms(
      10001, callback(self(), &VirtualTimeTest::note, std::string("behind")));
  ASSERT_TRUE(host::warp_ns(3 * kSecond));
  learn(2);
  ASSERT_TRUE(host::warp_ns(60 * kSecond));
  EXPECT_EQ(log_, (Lines{"0 learned :1", "3000 learned :2", "9999 before", "10000 removed :1",
                         "10001 behind", "13000 removed :2"}));
}

TEST_F(VirtualTimeTest, RunMovesTheTimeToTheNextTimer) {
  bool over = false;
  const XorpTimer timeout = loop_.set_flag_after_ms(86400000, &over);
  const XorpTimer hello = loop_.new_periodic_ms(
      43200000, callback(self(), &VirtualTimeTest::note_again, std::string("hello")));
  while (!over) loop_.run();
  EXPECT_EQ(log_[0], "43200000 hello");
  EXPECT_EQ(clock_->now_ns(), 86400 * kSecond);
}

TEST_F(VirtualTimeTest, ReadyDescriptorsComeBeforeTimersThatAreNotDue) {
  int ends[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK, 0, ends), 0);
  struct Reader {
    static void read(XorpFd fd, IoEventType, VirtualTimeTest* test) {
      char byte = 0;
      ASSERT_EQ(recv(fd, &byte, 1, 0), 1);
      test->note("read");
    }
  };
  ASSERT_TRUE(loop_.add_ioevent_cb(ends[0], IOT_READ, callback(&Reader::read, self())));
  bool over = false;
  const XorpTimer timeout = loop_.set_flag_after_ms(1000, &over);
  ASSERT_EQ(send(ends[1], "x", 1, 0), 1);
  while (!over) loop_.run();
  ASSERT_EQ(send(ends[1], "y", 1, 0), 1);
  ASSERT_TRUE(host::warp_ns(kSecond));
  EXPECT_EQ(log_, (Lines{"0 read", "1000 read"}));
  loop_.remove_ioevent_cb(ends[0]);
  close(ends[0]);
  close(ends[1]);
}

TEST_F(VirtualTimeTest, ACallbackMayStartTimersAndMayNotWarp) {
  struct Chain {
    static void step(VirtualTimeTest* test, unsigned left) {
      test->note("step");
      EXPECT_FALSE(host::warp_ns(1));
      EXPECT_EQ(host::last_refusal(), "time: it is being moved on already");
      if (left > 0) {
        test->chain_ = test->loop_.new_oneoff_after_ms(250, callback(&Chain::step, test, left - 1));
      }
    }
  };
  chain_ = loop_.new_oneoff_after_ms(250, callback(&Chain::step, self(), 3u));
  ASSERT_TRUE(host::warp_ns(kSecond));
  EXPECT_EQ(log_, (Lines{"250 step", "500 step", "750 step", "1000 step"}));
}

TEST_F(VirtualTimeTest, ACallbackThatEndsTheCardEndsTheWarp) {
  struct End {
    static void now() { EXPECT_TRUE(vorn_lcmgr_api_terminate()); }
  };
  const XorpTimer end = loop_.new_oneoff_after_ms(500, callback(&End::now));
  EXPECT_TRUE(host::warp_ns(kSecond));
  EXPECT_EQ(clock_->now_ns(), kSecond / 2);
  int ports = 0;
  ASSERT_TRUE(vorn_lcmgr_api_init(ports));
}

TEST_F(VirtualTimeTest, WhatCannotBeWarpedSaysWhy) {
  EXPECT_FALSE(host::warp_ns(UINT64_MAX) && host::warp_ns(UINT64_MAX));
  EXPECT_EQ(host::last_refusal(), "time: beyond 2^64 ns");
  ASSERT_TRUE(vorn_lcmgr_api_terminate());
  EXPECT_FALSE(host::warp_ns(1));
  EXPECT_EQ(host::last_refusal(), "time: there is no card");
  host::use_clock(std::make_shared<RealClock>());
  int ports = 0;
  ASSERT_TRUE(vorn_lcmgr_api_init(ports));
  EXPECT_FALSE(host::warp_ns(1));
  EXPECT_EQ(host::last_refusal(), "time: the card runs in real time");
}

}  // namespace
}  // namespace softcard
