// SPDX-License-Identifier: Apache-2.0
//
// The event loop: order and number of callbacks in a pass, lifetimes, readers and writers, callback
// objects, counters, socket settings. Nothing waits longer than a few milliseconds.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "libxorp/asyncio.hh"
// Behind a libxorp header.
#include "libcomm/comm_api.h"

// The linker puts this in front of the real function (--wrap): sizes above the limit are refused.
static int largest_buffer_bytes = -1;  // no limit
static int tries = 0;

extern "C" {
int __real_setsockopt(int, int, int, const void*, socklen_t);
int __wrap_setsockopt(int fd, int level, int name, const void* value, socklen_t bytes) {
  ++tries;
  if (largest_buffer_bytes >= 0 && *static_cast<const int*>(value) > largest_buffer_bytes) {
    errno = ENOBUFS;
    return -1;
  }
  return __real_setsockopt(fd, level, name, value, bytes);
}
}

namespace {

typedef std::vector<std::string> Log;

// Two ends of a datagram or stream channel that do not block.
struct Pair {
  explicit Pair(int type = SOCK_DGRAM) {
    if (socketpair(AF_UNIX, type | SOCK_NONBLOCK, 0, ends) != 0) abort();
  }
  ~Pair() {
    for (const int fd : ends) close(fd);
  }
  void send(const std::string& text) const {
    ASSERT_EQ(::send(ends[1], text.data(), text.size(), 0), static_cast<ssize_t>(text.size()));
  }
  int fd() const { return ends[0]; }
  int ends[2];
};

class EventLoopTest : public testing::Test {
 protected:
  void note(std::string what) { log_.push_back(what); }
  bool note_bool(std::string what, bool result) {
    log_.push_back(what);
    return result;
  }
  void ready(XorpFd fd, IoEventType type, std::string what) {
    static_cast<void>(fd);
    log_.push_back(what + std::to_string(type));
  }
  void ready_once(XorpFd fd, IoEventType type, std::string what) {
    char byte;
    EXPECT_EQ(::read(fd, &byte, 1), 1);
    ready(fd, type, what);
  }
  OneoffTimerCallback noter(std::string what) { return callback(this, &EventLoopTest::note, what); }
  RepeatedTaskCallback repeater(std::string what, bool result) {
    return callback(this, &EventLoopTest::note_bool, what, result);
  }
  IoEventCb watcher(std::string what) { return callback(this, &EventLoopTest::ready, what); }

  void watch(const Pair& pair, const char* name, int priority = XorpTask::PRIORITY_DEFAULT) {
    EXPECT_TRUE(loop_.add_ioevent_cb(pair.fd(), IOT_READ,
                                     callback(this, &EventLoopTest::ready_once, std::string(name)),
                                     priority));
  }
  // A pass that does not wait: a timer has just fired.
  void pass() {
    bool due;
    const XorpTimer timer = loop_.set_flag_after_ms(0, &due);
    loop_.run();
    EXPECT_TRUE(due);
  }
  // Passes until nothing of the kernel's last answer is left.
  void pump(int passes = 8) {
    while (passes-- > 0) pass();
  }
  Log taken() {
    Log log;
    log.swap(log_);
    return log;
  }

  EventLoop loop_;
  Log log_;
};

// ---- Timers and tasks ---------------------------------------------------------------------------

TEST_F(EventLoopTest, OneTimerOneTaskOneDescriptorAPass) {
  const Pair a, b;
  watch(a, "a");
  watch(b, "b");
  a.send("x");
  b.send("x");
  XorpTimer first = loop_.new_oneoff_after_ms(0, noter("timer 1"));
  XorpTimer second = loop_.new_oneoff_after_ms(0, noter("timer 2"));
  XorpTask task_1 = loop_.new_oneoff_task(noter("task 1"));
  XorpTask task_2 = loop_.new_oneoff_task(noter("task 2"));
  EXPECT_EQ(loop_.timer_list_length(), 2u);
  EXPECT_EQ(loop_.descriptor_count(), 2u);
  loop_.run();
  EXPECT_EQ(taken(), (Log{"timer 1", "task 1", "a0"}));
  loop_.run();
  EXPECT_EQ(taken(), (Log{"timer 2", "task 2", "b0"}));
  EXPECT_FALSE(loop_.events_pending());
}

TEST_F(EventLoopTest, TimersFireInOrderAndNotBeforeTheirTime) {
  TimeVal start, end;
  loop_.current_time(start);
  bool done;
  XorpTimer last = loop_.set_flag_after_ms(6, &done);
  XorpTimer b = loop_.new_oneoff_after_ms(3, noter("b"), XorpTask::PRIORITY_HIGHEST);
  XorpTimer a = loop_.new_oneoff_after_ms(1, noter("a"), XorpTask::PRIORITY_LOWEST);
  TimeVal left;
  EXPECT_TRUE(b.time_remaining(left));
  EXPECT_EQ(left, TimeVal(0, 3000));
  while (!done) loop_.run();
  loop_.current_time(end);
  EXPECT_EQ(taken(), (Log{"a", "b"}));
  EXPECT_GE((end - start).to_ms(), 6);
  EXPECT_FALSE(b.scheduled());
  EXPECT_FALSE(b.time_remaining(left));
}

// A wait is rounded up to the kernel's milliseconds: it never ends before the timer is due, and the
// next pass fires it without another wait.
TEST_F(EventLoopTest, WaitEndsWhenTheTimerIsDue) {
  for (const int us : {1, 400, 999, 1001, 1500}) {
    XorpTimer timer = loop_.new_oneoff_after(TimeVal(0, us), noter("due"));
    loop_.run();
    TimeVal left(1, 0);
    if (timer.scheduled()) {
      EXPECT_TRUE(timer.time_remaining(left));
      EXPECT_EQ(left, TimeVal::ZERO()) << us;
      loop_.run();
    }
    EXPECT_EQ(taken(), Log{"due"}) << us;
  }
}

// A timer that fired keeps the pass from waiting, and so do tasks; what a callback schedules counts
// from the end of the wait.
TEST_F(EventLoopTest, TimesCountFromTheEndOfTheWait) {
  TimeVal before, after;
  const Pair a;
  watch(a, "a");
  // Long enough that it is not due already when a machine under load gets to run().
  XorpTimer wait = loop_.new_oneoff_after_ms(100, noter("wait"));
  loop_.current_time(before);
  loop_.run();
  loop_.current_time(after);
  EXPECT_GE(after - before, TimeVal(0, 100000));
  XorpTask task = loop_.new_oneoff_task(noter("task"));
  XorpTimer late = loop_.new_oneoff_after_ms(3600 * 1000, noter("late"));
  loop_.run();
  EXPECT_EQ(taken(), (Log{"wait", "task"}));
  task = loop_.new_task(repeater("again", true));
  loop_.run();
  loop_.run();
  EXPECT_EQ(taken(), (Log{"again", "again"}));
}

TEST_F(EventLoopTest, RescheduledTimerCountsFromItsLastTime) {
  XorpTimer timer = loop_.new_oneoff_after_ms(1000, noter("a"));
  const TimeVal first = timer.expiry();
  timer.reschedule_after_ms(5);
  EXPECT_EQ(timer.expiry() - first, TimeVal(0, 5000));
  timer.schedule_at(first);
  EXPECT_EQ(timer.expiry(), first);
  EXPECT_EQ(loop_.timer_list_length(), 1u);
  timer.unschedule();
  EXPECT_FALSE(timer.scheduled());
  TimeVal left(1, 0);
  EXPECT_FALSE(timer.time_remaining(left));
  EXPECT_EQ(left, TimeVal::ZERO());
}

TEST_F(EventLoopTest, TimerLivesAsLongAsAHandle) {
  loop_.new_oneoff_after_ms(0, noter("lost"));
  EXPECT_EQ(loop_.timer_list_length(), 0u);
  XorpTimer copy;
  {
    const XorpTimer timer = loop_.new_oneoff_after_ms(0, noter("kept"));
    copy = timer;
  }
  loop_.run();
  EXPECT_EQ(taken(), Log{"kept"});
  copy.schedule_now();
  loop_.remove_timer(copy);
  EXPECT_FALSE(loop_.timers_pending());
}

TEST_F(EventLoopTest, FlagIsClearedAtOnceWhateverItsValue) {
  bool flag = true;
  XorpTimer timer = loop_.set_flag_after_ms(0, &flag, false);
  EXPECT_FALSE(flag);
  timer = loop_.set_flag_after(TimeVal::ZERO(), &flag);
  EXPECT_FALSE(flag);
  loop_.run();
  EXPECT_TRUE(flag);
}

struct Countdown {
  int left;
  XorpTimer timer;
  bool again() { return --left > 0; }
  bool drop() {
    timer.clear();
    return true;
  }
  void rearm(XorpTimer& self) {
    if (--left > 0) self.schedule_now();
  }
};

TEST_F(EventLoopTest, PeriodicTimerRunsUntilFalseOrDropped) {
  Countdown count{3, {}};
  count.timer = loop_.new_periodic_ms(1, callback(&count, &Countdown::again));
  const TimeVal first = count.timer.expiry();
  while (loop_.timers_pending()) loop_.run();
  EXPECT_EQ(count.left, 0);
  EXPECT_EQ(count.timer.expiry() - first, TimeVal(0, 2000)) << "it does not drift";

  count.timer = loop_.new_periodic_ms(0, callback(count, &Countdown::drop));
  loop_.run();
  EXPECT_FALSE(loop_.timers_pending()) << "dropped from inside its own call";

  count.left = 2;
  count.timer = loop_.new_timer(callback(&count, &Countdown::rearm));
  EXPECT_FALSE(count.timer.scheduled());
  count.timer.schedule_now();
  while (loop_.timers_pending()) loop_.run();
  EXPECT_EQ(count.left, 0);
}

TEST_F(EventLoopTest, TasksRunByPriorityAndTakeTurnsByWeight) {
  XorpTask low = loop_.new_oneoff_task(noter("low"), XorpTask::PRIORITY_LOWEST);
  XorpTask a = loop_.new_task(repeater("a", true));
  XorpTask b = loop_.new_task(repeater("b", true), XorpTask::PRIORITY_DEFAULT, 2);
  for (int i = 0; i < 6; ++i) pass();
  EXPECT_EQ(taken(), (Log{"a", "b", "b", "a", "b", "b"}));
  a.unschedule();
  b = XorpTask();
  pass();
  EXPECT_EQ(taken(), Log{"low"});
  a.reschedule();
  EXPECT_TRUE(a.scheduled() && loop_.events_pending());
  XorpTask once = loop_.new_task(repeater("c", false), XorpTask::PRIORITY_HIGH);
  pass();
  pass();
  EXPECT_EQ(taken(), (Log{"c", "a"}));
}

TEST(EventLoop, OneAtATimeAndHandlesMayOutliveIt) {
  bool done;
  XorpTimer timer;
  XorpTask task;
  for (int i = 0; i < 2; ++i) {
    EventLoop loop;
    EXPECT_EQ(eventloop_instance_count, 1);
    timer = loop.set_flag_after_ms(1000, &done);
    task = loop.new_oneoff_task(callback(+[] {}));
  }
  EXPECT_EQ(eventloop_instance_count, 0);
  EXPECT_FALSE(timer.scheduled() || task.scheduled());
  struct sigaction pipe_action {};
  sigaction(SIGPIPE, nullptr, &pipe_action);
  EXPECT_EQ(pipe_action.sa_handler, SIG_IGN);
}

TEST(EventLoopDeathTest, MisuseAborts) {
  EventLoop loop;
  EXPECT_DEATH({ EventLoop second; }, "one loop at a time");
  int fds[2];
  ASSERT_EQ(pipe(fds), 0);
  EXPECT_DEATH({ AsyncFileReader blocking(loop, fds[0]); }, "does not block");
  ASSERT_EQ(comm_sock_set_blocking(fds[0], COMM_SOCK_NONBLOCKING), XORP_OK);
  AsyncFileReader reader(loop, fds[0]);
  uint8_t byte;
  EXPECT_DEATH(reader.add_buffer(&byte, 0, AsyncFileOperator::Callback()), "without room");
  close(fds[0]);
  close(fds[1]);
}

// ---- Descriptors --------------------------------------------------------------------------------

TEST_F(EventLoopTest, ReadyDescriptorsAreServedByPriorityThenInTurn) {
  const Pair a, b, c;
  watch(a, "a");
  watch(b, "b");
  watch(c, "c", XorpTask::PRIORITY_HIGH);
  for (const Pair* pair : {&a, &b, &c}) {
    pair->send("x");
    pair->send("y");
  }
  pump(6);
  EXPECT_EQ(taken(), (Log{"c0", "a0", "b0", "c0", "a0", "b0"}));
}

TEST_F(EventLoopTest, TurnsGoOnBehindTheOneServedLast) {
  const Pair a, b;
  watch(a, "a");
  watch(b, "b");
  a.send("x");
  pass();
  a.send("y");
  b.send("x");
  pump(2);
  EXPECT_EQ(taken(), (Log{"a0", "b0", "a0"}));
}

TEST_F(EventLoopTest, DescriptorRemovedSinceIsSkipped) {
  const Pair a, b;
  watch(a, "a");
  watch(b, "b");
  a.send("x");
  b.send("x");
  pass();
  loop_.remove_ioevent_cb(b.fd());
  pass();
  EXPECT_EQ(taken(), Log{"a0"});
  EXPECT_EQ(loop_.descriptor_count(), 1u);
}

TEST_F(EventLoopTest, OneCallbackForEachGroup) {
  const Pair a;
  const auto add = [&](IoEventType type, const char* name) {
    return loop_.add_ioevent_cb(a.fd(), type, watcher(name));
  };
  EXPECT_TRUE(add(IOT_ACCEPT, "a"));
  EXPECT_FALSE(add(IOT_READ, "r"));
  EXPECT_TRUE(add(IOT_WRITE, "w"));
  EXPECT_FALSE(add(IOT_CONNECT, "c"));
  EXPECT_TRUE(add(IOT_EXCEPTION, "e"));
  EXPECT_FALSE(add(IOT_DISCONNECT, "d"));
  a.send("x");
  pump(2);
  EXPECT_EQ(taken(), (Log{"a3", "w1"})) << "with the kind that was registered";
  EXPECT_TRUE(loop_.remove_ioevent_cb(a.fd(), IOT_READ));
  EXPECT_EQ(loop_.descriptor_count(), 1u);
  EXPECT_TRUE(loop_.remove_ioevent_cb(a.fd()));
  EXPECT_TRUE(loop_.remove_ioevent_cb(12345, IOT_WRITE));
  EXPECT_EQ(loop_.descriptor_count(), 0u);
}

// An end that hangs up wakes the reader and the writer, who learn it from their next call.
TEST_F(EventLoopTest, HangUpWakesReadersAndWriters) {
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_NONBLOCK), 0);
  EXPECT_TRUE(loop_.add_ioevent_cb(ends[0], IOT_READ, watcher("read")));
  pass();
  EXPECT_TRUE(taken().empty());
  close(ends[1]);
  pass();
  EXPECT_EQ(taken(), Log{"read0"});
  loop_.remove_ioevent_cb(ends[0]);
  close(ends[0]);

  ASSERT_EQ(pipe2(ends, O_NONBLOCK), 0);
  char page[4096] = {};
  while (::write(ends[1], page, sizeof page) > 0) {
  }
  EXPECT_TRUE(loop_.add_ioevent_cb(ends[1], IOT_WRITE, watcher("write")));
  pass();
  EXPECT_TRUE(taken().empty()) << "the pipe is full";
  close(ends[0]);
  pass();
  EXPECT_EQ(taken(), Log{"write1"});
  loop_.remove_ioevent_cb(ends[1]);
  close(ends[1]);
}

TEST_F(EventLoopTest, DescriptorClosedWhileWatchedIsDropped) {
  const int fd = fcntl(STDERR_FILENO, F_DUPFD, 500);  // nobody else gets that number
  EXPECT_TRUE(loop_.add_ioevent_cb(fd, IOT_READ, watcher("closed")));
  close(fd);
  testing::internal::CaptureStderr();
  pass();
  EXPECT_NE(testing::internal::GetCapturedStderr().find("was closed while it was watched"),
            std::string::npos);
  EXPECT_EQ(loop_.descriptor_count(), 0u);
}

TEST_F(EventLoopTest, OnTheWayOutNoWaitIsForEver) {
  xorp_do_run = 0;
  XorpTimer late = loop_.new_oneoff_after_ms(3600 * 1000, noter("late"));
  const Pair a;
  watch(a, "a");
  a.send("x");
  loop_.run();
  xorp_do_run = 1;
  EXPECT_EQ(taken(), Log{"a0"});
}

// ---- Readers ------------------------------------------------------------------------------------

class ReaderTest : public EventLoopTest {
 protected:
  AsyncFileOperator::Callback completion() { return callback(this, &ReaderTest::completed); }
  void completed(AsyncFileOperator::Event event, const uint8_t* buffer, size_t bytes,
                 size_t offset) {
    log_.push_back(std::to_string(event) + ":" + std::string(buffer, buffer + offset) + "/" +
                   std::to_string(bytes) + (reader_->running() ? " running" : " stopped"));
    if (then_) then_();
  }
  void add(size_t bytes) {
    buffers_.emplace_back(new uint8_t[bytes]);
    reader_->add_buffer(buffers_.back().get(), bytes, completion());
  }

  Pair pair_;
  std::vector<std::unique_ptr<uint8_t[]>> buffers_;
  std::unique_ptr<AsyncFileReader> reader_{new AsyncFileReader(loop_, pair_.fd())};
  std::function<void()> then_;
};

TEST_F(ReaderTest, FillsBuffersInOrderAndStopsBeforeTheLastCall) {
  EXPECT_FALSE(reader_->start()) << "no buffers";
  add(4);
  add(2);
  EXPECT_FALSE(reader_->running());
  EXPECT_TRUE(reader_->start() && reader_->start());
  for (const char* text : {"ab", "", "cd", "efg", "hi"}) pair_.send(text);
  pump();
  EXPECT_EQ(taken(),
            (Log{"1:ab/4 running", "8:ab/4 running", "1:abcd/4 running", "1:ef/2 stopped"}));
  EXPECT_EQ(reader_->buffers_remaining(), 0u);
  EXPECT_EQ(loop_.descriptor_count(), 0u);
  add(9);
  EXPECT_TRUE(reader_->resume());
  pump();
  EXPECT_EQ(taken(), Log{"1:hi/9 running"}) << "it has waited in the kernel";
}

TEST_F(ReaderTest, ReadyDescriptorThatHasBeenEmptiedCallsNobody) {
  const Pair first;
  watch(first, "first", XorpTask::PRIORITY_HIGH);
  add(4);
  reader_->start();
  first.send("x");
  pair_.send("ab");
  pass();
  char byte;
  ASSERT_EQ(::read(pair_.fd(), &byte, 1), 1);
  pass();
  EXPECT_EQ(taken(), Log{"first0"});
  EXPECT_TRUE(reader_->running());
  EXPECT_EQ(reader_->error(), EAGAIN);
}

TEST_F(ReaderTest, StopKeepsBuffersAndFlushHandsThemBack) {
  add(4);
  add(5);
  reader_->start();
  pair_.send("ab");
  pump();
  reader_->stop();
  reader_->stop();
  pair_.send("c");
  pump();
  EXPECT_EQ(taken(), Log{"1:ab/4 running"});
  reader_->start();
  pump();
  EXPECT_EQ(taken(), Log{"1:abc/4 running"});
  reader_->flush_buffers();
  EXPECT_EQ(taken(), (Log{"2:abc/4 stopped", "2:/5 stopped"}));
}

TEST_F(ReaderTest, ErrorStopsItAndKeepsTheBuffer) {
  ASSERT_EQ(dup2(open("/", O_RDONLY | O_NONBLOCK), pair_.fd()), pair_.fd());
  add(4);
  reader_->start();
  pump();
  EXPECT_EQ(taken(), Log{"4:/4 stopped"});
  EXPECT_EQ(reader_->error(), EISDIR);
  EXPECT_EQ(reader_->buffers_remaining(), 1u);
}

TEST_F(ReaderTest, MayBeDeletedFromItsCallAndCallsNobodyWhenDeleted) {
  for (const size_t bytes : {2u, 4u}) {
    reader_.reset(new AsyncFileReader(loop_, pair_.fd()));
    const int32_t balance = ref_counter_pool::instance().balance();
    then_ = [this] {
      log_.clear();
      reader_.reset();
    };
    add(bytes);
    add(bytes);
    reader_->start();
    pair_.send("ab");
    pump();
    EXPECT_EQ(reader_, nullptr);
    EXPECT_TRUE(taken().empty());
    EXPECT_EQ(ref_counter_pool::instance().balance(), balance) << "callbacks go with it";
  }
}

TEST_F(ReaderTest, TwoReadersOfOneDescriptor) {
  AsyncFileReader other(loop_, pair_.fd());
  uint8_t byte;
  other.add_buffer(&byte, 1, completion());
  add(4);
  EXPECT_TRUE(reader_->start());
  EXPECT_FALSE(other.start());
  EXPECT_FALSE(other.running());
#if XORP_ASYNCIO_HAS_TOSTRING
  EXPECT_NE(reader_->toString(), other.toString()) << "one runs, the other does not";
#endif
}

// ---- Writers ------------------------------------------------------------------------------------

class WriterTest : public EventLoopTest {
 protected:
  AsyncFileOperator::Callback completion() { return callback(this, &WriterTest::completed); }
  void completed(AsyncFileOperator::Event event, const uint8_t* buffer, size_t bytes,
                 size_t offset) {
    static_cast<void>(buffer);
    log_.push_back(std::to_string(event) + ":" + std::to_string(offset) + "/" +
                   std::to_string(bytes));
    if (then_) then_();
  }
  void add(const std::string& text) {
    writer_->add_data(std::vector<uint8_t>(text.begin(), text.end()), completion());
  }
  std::string received() {
    char text[64];
    const ssize_t bytes = ::read(pair_.ends[1], text, sizeof text);
    return std::string(text, text + std::max<ssize_t>(bytes, 0));
  }

  Pair pair_{SOCK_STREAM};
  std::unique_ptr<AsyncFileWriter> writer_{new AsyncFileWriter(loop_, pair_.fd(), 2)};
  std::function<void()> then_;
};

TEST_F(WriterTest, WritesInOrderUpToTheCoalesceCount) {
  EXPECT_FALSE(writer_->start());
  for (const char* text : {"ab", "cde", "f"}) add(text);
  EXPECT_TRUE(writer_->start());
  pass();
  EXPECT_EQ(taken(), (Log{"1:2/2", "1:3/3"}));
  EXPECT_EQ(received(), "abcde");
  pass();
  EXPECT_EQ(taken(), Log{"1:1/1"});
  EXPECT_FALSE(writer_->running());
  add("g");
  writer_->flush_buffers();
  EXPECT_EQ(taken(), Log{"2:0/1"});
}

TEST_F(WriterTest, CoalescesOneToSixteenBuffers) {
  for (const auto& [asked, at_once] :
       {std::pair<unsigned, unsigned>{0, 1}, {1, 1}, {16, 16}, {99, 16}}) {
    writer_.reset(new AsyncFileWriter(loop_, pair_.fd(), asked));
    for (int i = 0; i < 20; ++i) add("x");
    writer_->start();
    pass();
    EXPECT_EQ(taken().size(), at_once) << asked;
    EXPECT_EQ(received().size(), at_once) << asked;
  }
}

// A writer that does not run leaves the one that does alone.
TEST_F(WriterTest, StopConcernsOneWriter) {
  AsyncFileWriter other(loop_, pair_.fd());
  add("ab");
  writer_->start();
  other.stop();
  pass();
  EXPECT_EQ(taken(), Log{"1:2/2"});
  add("c");
  writer_->start();
  writer_->stop();
  pass();
  EXPECT_TRUE(taken().empty());
  EXPECT_EQ(writer_->buffers_remaining(), 1u);
}

TEST_F(WriterTest, LongBufferGoesOutInParts) {
  const std::vector<uint8_t> bytes(1 << 22, 'x');
  writer_->add_buffer_with_offset(bytes.data(), bytes.size(), 1, completion());
  writer_->start();
  size_t received_bytes = 0;
  std::vector<uint8_t> room(1 << 20);
  for (int i = 0; i < 1000 && received_bytes < bytes.size() - 1; ++i) {
    pass();
    const ssize_t done = ::read(pair_.ends[1], room.data(), room.size());
    if (done > 0) received_bytes += static_cast<size_t>(done);
  }
  EXPECT_EQ(received_bytes, bytes.size() - 1);
  EXPECT_GT(log_.size(), 1u);
  EXPECT_EQ(log_.back(), "1:4194304/4194304");
}

TEST_F(WriterTest, ErrorsAndDeletionFromItsCall) {
  then_ = [this] { writer_.reset(); };
  add("ab");
  add("cd");
  writer_->start();
  pass();
  EXPECT_EQ(taken(), Log{"1:2/2"});
  then_ = nullptr;
  writer_.reset(new AsyncFileWriter(loop_, pair_.fd()));
  shutdown(pair_.fd(), SHUT_WR);
  add("ab");
  writer_->start();
  pass();
  EXPECT_EQ(taken(), Log{"4:0/2"});
  EXPECT_EQ(writer_->error(), EPIPE);
  EXPECT_EQ(writer_->buffers_remaining(), 1u);
}

// ---- Callback objects, counted pointers, time ---------------------------------------------------

int add_up(int a, int b, int c) { return a * 100 + b * 10 + c; }
struct Safe : CallbackSafeObject {
  int value = 7;
  int get() { return value; }
  int sum(const std::string& text, int more) const { return value + std::stoi(text) + more; }
};

TEST(Callback, GivenArgumentsComeFirstThenTheBoundOnes) {
  const XorpCallback1<int, int>::RefPtr two_bound = callback(add_up, 2, 3);
  EXPECT_EQ(two_bound->dispatch(1), 123);
  const XorpCallback3<int, int, int, int>::RefPtr none_bound = callback(add_up);
  EXPECT_EQ(none_bound->dispatch(4, 5, 6), 456);
  const XorpCallback0<int>::RefPtr all_bound = callback(add_up, 7, 8, 9);
  EXPECT_EQ(all_bound->dispatch(), 789);
  const Safe constant;
  const XorpCallback1<int, const std::string&>::RefPtr member = callback(constant, &Safe::sum, 1);
  EXPECT_EQ(member->dispatch("10"), 18);
}

TEST(Callback, SafeObjectMayDieFirst) {
  std::unique_ptr<Safe> object(new Safe);
  const XorpCallback0<int>::RefPtr value = callback(object.get(), &Safe::get);
  EXPECT_EQ(value->dispatch(), 7);
  object.reset();
  EXPECT_EQ(value->dispatch(), 0);
}

TEST(RefPtr, SharesAndCounts) {
  ref_counter_pool& pool = ref_counter_pool::instance();
  const int32_t balance = pool.balance();
  struct Noted {
    explicit Noted(int& deaths) : deaths_(deaths) {}
    ~Noted() { ++deaths_; }
    int& deaths_;
  };
  int deaths = 0;
  {
    ref_ptr<Noted> a(new Noted(deaths));
    EXPECT_TRUE(a.is_only());
    ref_ptr<Noted> b(a), empty;
    EXPECT_TRUE(a == b && a.at_least(2) && !a.at_least(3) && empty.is_empty());
    EXPECT_EQ(pool.balance(), balance + 1) << "null takes no counter";
    const ref_ptr<Noted>& same = a;
    a = same;
    a = new Noted(deaths);
    EXPECT_EQ(deaths, 0);
    b = a;
    EXPECT_EQ(deaths, 1);
    b.release();
    EXPECT_TRUE(b.get() == nullptr && a.is_only());
    a.reset();
    EXPECT_EQ(deaths, 2);
    a = b;
  }
  EXPECT_EQ(deaths, 2);
  EXPECT_EQ(pool.balance(), balance);
  pool.check();
}

TEST(TimeVal, ArithmeticKeepsNormalForm) {
  EXPECT_EQ(TimeVal(1, 900000) + TimeVal(0, 200000), TimeVal(2, 100000));
  const TimeVal negative = TimeVal(0, 100000) - TimeVal(0, 200000);
  EXPECT_EQ(negative.sec(), -1);
  EXPECT_EQ(negative.usec(), 900000);
  EXPECT_LT(negative, TimeVal::ZERO());
  EXPECT_EQ(TimeVal::from_ms(-1), TimeVal(-1, 999000));
  EXPECT_EQ(TimeVal::from_ms(2500), TimeVal(2, 500000));
  EXPECT_GT(TimeVal::MAXIMUM(), TimeVal::from_ms(0x7fffffff));
}

// ---- Socket settings ----------------------------------------------------------------------------

TEST(CommSock, BlockingIsSetAndCleared) {
  const Pair pair;
  EXPECT_EQ(comm_sock_set_blocking(pair.fd(), COMM_SOCK_BLOCKING), XORP_OK);
  EXPECT_EQ(fcntl(pair.fd(), F_GETFL) & O_NONBLOCK, 0);
  EXPECT_EQ(comm_sock_set_blocking(pair.fd(), COMM_SOCK_NONBLOCKING), XORP_OK);
  EXPECT_NE(fcntl(pair.fd(), F_GETFL) & O_NONBLOCK, 0);
  EXPECT_EQ(comm_sock_set_blocking(-1, 0), XORP_ERROR);
  EXPECT_EQ(comm_get_last_error(), EBADF);
}

TEST(CommSock, BufferSizeIsTheOneAskedForOrIsSearched) {
  const struct {
    int limit, desired, least;
    int lowest, highest;  // of the result
  } kRows[] = {
      {-1, 262144, 49152, 262144, 262144},
      {-1, 1 << 30, 1 << 29, 1 << 30, 1 << 30},
      {100000, 262144, 49152, 100000 - 1024, 100000},
      {49000, 262144, 49152, -1, -1},
      {49000, 262144, 0, 49000 - 1024, 49000},
      {0, 262144, 49152, -1, -1},
      {0, 262144, -5, 0, 0},
  };
  const Pair pair;
  for (const auto& row : kRows) {
    SCOPED_TRACE(std::to_string(row.limit) + " " + std::to_string(row.desired));
    for (const auto set : {comm_sock_set_rcvbuf, comm_sock_set_sndbuf}) {
      largest_buffer_bytes = row.limit;
      tries = 0;
      const int result = set(pair.fd(), row.desired, row.least);
      largest_buffer_bytes = -1;
      EXPECT_GE(result, row.lowest);
      EXPECT_LE(result, row.highest);
      EXPECT_EQ(tries == 1, row.limit < 0);
    }
  }
  EXPECT_EQ(comm_sock_set_rcvbuf(-1, 262144, 49152), -1);
}

}  // namespace
