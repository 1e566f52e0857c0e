// SPDX-License-Identifier: Apache-2.0
//
// VornSocket over loopback. A datagram that sendto(2) has taken is in the receiver's queue, so
// nothing here waits for time to pass.

#include "vornlcapi/socket.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <functional>
#include <iostream>
#include <memory>
#include <new>
#include <streambuf>
#include <string>
#include <vector>

#include "libcomm/comm_api.h"

// The linker puts these in front of the real functions (--wrap).
static bool refuse_socket = false;
static bool refuse_memory = false;
static bool refuse_non_blocking = false;
static int granted_buffer_bytes = 0;  // 0: what the real function says
static std::vector<int> opened;       // family, type and protocol of each socket
static std::vector<int> asked;        // option, desired and least size of each request
enum Operator { kNone, kReader, kWriter };
static Operator throwing = kNone;  // whose constructor throws
static std::vector<int> made;      // descriptor, coalesce count and priority of each operator

extern "C" {
int __real_socket(int, int, int);
int __wrap_socket(int family, int type, int protocol) {
  opened.insert(opened.end(), {family, type, protocol});
  return refuse_socket ? -1 : __real_socket(family, type, protocol);
}
int __real_comm_sock_set_blocking(int, int);
int __wrap_comm_sock_set_blocking(int sock, int is_blocking) {
  return refuse_non_blocking ? -1 : __real_comm_sock_set_blocking(sock, is_blocking);
}
int __real_comm_sock_set_rcvbuf(int, int, int);
int __wrap_comm_sock_set_rcvbuf(int sock, int desired, int least) {
  asked.insert(asked.end(), {SO_RCVBUF, desired, least});
  const int real = __real_comm_sock_set_rcvbuf(sock, desired, least);
  return granted_buffer_bytes != 0 ? granted_buffer_bytes : real;
}
int __real_comm_sock_set_sndbuf(int, int, int);
int __wrap_comm_sock_set_sndbuf(int sock, int desired, int least) {
  asked.insert(asked.end(), {SO_SNDBUF, desired, least});
  const int real = __real_comm_sock_set_sndbuf(sock, desired, least);
  return granted_buffer_bytes != 0 ? granted_buffer_bytes : real;
}
void __real__ZN15AsyncFileReaderC1ER9EventLoop6XorpFdi(void*, EventLoop&, XorpFd, int);
void __wrap__ZN15AsyncFileReaderC1ER9EventLoop6XorpFdi(void* self, EventLoop& loop, XorpFd fd,
                                                       int priority) {
  if (throwing == kReader) throw std::bad_alloc();
  made.insert(made.end(), {fd, priority});
  __real__ZN15AsyncFileReaderC1ER9EventLoop6XorpFdi(self, loop, fd, priority);
}
void __real__ZN15AsyncFileWriterC1ER9EventLoop6XorpFdji(void*, EventLoop&, XorpFd, uint32_t, int);
void __wrap__ZN15AsyncFileWriterC1ER9EventLoop6XorpFdji(void* self, EventLoop& loop, XorpFd fd,
                                                        uint32_t coalesce, int priority) {
  if (throwing == kWriter) throw std::bad_alloc();
  made.insert(made.end(), {fd, static_cast<int>(coalesce), priority});
  __real__ZN15AsyncFileWriterC1ER9EventLoop6XorpFdji(self, loop, fd, coalesce, priority);
}
}

// Stands in front of the runtime's for this whole process.
void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept {
  return refuse_memory ? nullptr : operator new[](bytes);
}

namespace {

// The number that the next descriptor to be opened gets.
int next_descriptor() {
  const int probe = dup(STDERR_FILENO);
  close(probe);
  return probe;
}

bool is_open(int fd) { return fcntl(fd, F_GETFD) >= 0; }

class VornSocketTest : public testing::Test {
 protected:
  struct Call {
    const unsigned char* buffer;
    unsigned bytes;
    unsigned total;
    bool operator==(const Call& other) const {
      return bytes == other.bytes && total == other.total;
    }
    friend std::ostream& operator<<(std::ostream& out, const Call& call) {
      return out << call.total << " of " << call.bytes;
    }
  };

  VornSocketTest() : sender_(::socket(AF_INET, SOCK_DGRAM, 0)) { open(); }
  ~VornSocketTest() override {
    refuse_socket = refuse_non_blocking = false;
    granted_buffer_bytes = 0;
    throwing = kNone;
    close(sender_);
  }

  void open() {
    socket_.reset();
    descriptor_ = next_descriptor();
    socket_.reset(new VornSocket(loop_));
    bind();
    socket_->register_io_callback(true, on_data, this);
  }

  void bind() {
    ASSERT_TRUE(socket_->bind_address("not an address", 0));
    socklen_t length = sizeof address_;
    ASSERT_EQ(getsockname(descriptor_, reinterpret_cast<sockaddr*>(&address_), &length), 0);
    EXPECT_EQ(address_.sin_addr.s_addr, htonl(INADDR_ANY));
    address_.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  }

  void send(const std::string& datagram) {
    ASSERT_EQ(sendto(sender_, datagram.data(), datagram.size(), 0,
                     reinterpret_cast<const sockaddr*>(&address_), sizeof address_),
              static_cast<ssize_t>(datagram.size()));
  }

  // Passes of the loop, none of which waits.
  void pump(int passes = 8) {
    while (passes-- > 0) {
      bool due;
      const XorpTimer timer = loop_.set_flag_after_ms(0, &due);
      loop_.run();
    }
  }

  static void on_data(const unsigned char* buffer, unsigned bytes, unsigned total, void* self) {
    auto& test = *static_cast<VornSocketTest*>(self);
    test.calls_.push_back({buffer, bytes, total});
    test.text_.assign(reinterpret_cast<const char*>(buffer), total);
    if (test.then_) test.then_();
  }

  EventLoop loop_;
  std::unique_ptr<VornSocket> socket_;
  int descriptor_ = -1;
  int sender_;
  sockaddr_in address_{};
  std::vector<Call> calls_;
  std::string text_;            // what is in the buffer of the last call
  std::function<void()> then_;  // runs inside each call
};

TEST_F(VornSocketTest, DeliversIntoQueuedBuffers) {
  const struct {
    const char* name;
    std::vector<unsigned> reads;
    std::vector<std::string> datagrams;
    std::vector<Call> calls;
    const char* text;
  } kRows[] = {
      {"exact fill", {4}, {"abcd"}, {{nullptr, 4, 4}}, "abcd"},
      {"short ones share a buffer",
       {10},
       {"abc", "defg"},
       {{nullptr, 10, 3}, {nullptr, 10, 7}},
       "abcdefg"},
      {"the first buffer is filled first",
       {4, 6},
       {"ab", "cd", "ef"},
       {{nullptr, 4, 2}, {nullptr, 4, 4}, {nullptr, 6, 2}},
       "ef"},
      {"too long is cut", {4, 4}, {"abcdefgh", "ij"}, {{nullptr, 4, 4}, {nullptr, 4, 2}}, "ij"},
      {"cut at the room that is left",
       {4},
       {"abc", "def"},
       {{nullptr, 4, 3}, {nullptr, 4, 4}},
       "abcd"},
      {"an empty one is dropped", {4}, {"", "ab"}, {{nullptr, 4, 2}}, "ab"},
      {"the rest waits for a read", {2}, {"ab", "cd"}, {{nullptr, 2, 2}}, "ab"},
      {"4095 bytes", {4095}, {"a"}, {{nullptr, 4095, 1}}, "a"},
      {"4096 bytes", {4096}, {"a"}, {{nullptr, 4096, 1}}, "a"},
      {"no more than 4096 bytes", {4097}, {"a"}, {{nullptr, 4096, 1}}, "a"},
      {"nor of the largest number", {~0u}, {"a"}, {{nullptr, 4096, 1}}, "a"},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    open();
    calls_.clear();
    for (unsigned bytes : row.reads) EXPECT_TRUE(socket_->read(bytes));
    for (const std::string& datagram : row.datagrams) send(datagram);
    pump();
    EXPECT_EQ(calls_, row.calls);
    EXPECT_EQ(text_, row.text);
  }
}

TEST_F(VornSocketTest, ReadFromInsideTheCallGoesOn) {
  then_ = [this] {
    EXPECT_EQ(loop_.descriptor_count(), 0u) << "the last buffer is full, so the reader has stopped";
    socket_->read(2);
  };
  socket_->read(2);
  for (const char* datagram : {"ab", "cd", "ef"}) send(datagram);
  pump();
  EXPECT_EQ(calls_.size(), 3u);
  EXPECT_EQ(text_, "ef");
  EXPECT_EQ(std::string(calls_[0].buffer, calls_[0].buffer + 2), "ab") << "buffers stay readable";
}

TEST_F(VornSocketTest, ReadWithoutABufferIsRefusedAndQueuesNothing) {
  EXPECT_FALSE(socket_->read(0));
  EXPECT_EQ(socket_->create_buffer(0), nullptr);
  EXPECT_EQ(loop_.descriptor_count(), 0u);
  unsigned char* const buffer = socket_->create_buffer(100000);
  ASSERT_NE(buffer, nullptr);
  buffer[99999] = 1;

  refuse_memory = true;
  EXPECT_EQ(socket_->create_buffer(4), nullptr);
  EXPECT_FALSE(socket_->read(4));
  refuse_memory = false;
  EXPECT_EQ(loop_.descriptor_count(), 0u);
}

TEST_F(VornSocketTest, NullFunctionIsRefusedAndTheEarlierOneStays) {
  EXPECT_FALSE(socket_->register_io_callback(true, nullptr, nullptr));
  EXPECT_FALSE(socket_->register_io_callback(false, nullptr, nullptr));
  socket_->read(4);
  send("ab");
  pump();
  EXPECT_EQ(text_, "ab");
}

TEST_F(VornSocketTest, OnlyDataEventsReachTheReadFunction) {
  const unsigned char bytes[4] = {'a', 'b', 'c', 'd'};
  unsigned written = 0;
  const auto on_written = [](const unsigned char*, unsigned, unsigned total, void* sum) {
    *static_cast<unsigned*>(sum) += total;
  };
  socket_->write_cb(AsyncFileOperator::DATA, bytes, 4, 1);  // nobody is registered
  EXPECT_TRUE(socket_->register_io_callback(false, on_written, &written));
  for (const auto event : {AsyncFileOperator::FLUSHING, AsyncFileOperator::OS_ERROR,
                           AsyncFileOperator::END_OF_FILE, AsyncFileOperator::WOULDBLOCK}) {
    socket_->read_cb(event, bytes, 4, 2);
    socket_->write_cb(event, bytes, 4, 2);
  }
  EXPECT_TRUE(calls_.empty());
  EXPECT_EQ(written, 8u) << "the write function gets every event";
  socket_->read_cb(AsyncFileOperator::DATA, bytes, 4, 3);
  EXPECT_EQ(text_, "abc");
}

TEST_F(VornSocketTest, WarnsOncePerCompletionWithoutAFunction) {
  VornSocket silent(loop_);
  const unsigned char byte = 0;
  testing::internal::CaptureStdout();
  silent.read_cb(AsyncFileOperator::END_OF_FILE, &byte, 1, 0);
  silent.read_cb(AsyncFileOperator::DATA, &byte, 1, 1);
  silent.read_cb(AsyncFileOperator::DATA, &byte, 1, 1);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "Warning: io_read_callback is empty\nWarning: io_read_callback is empty\n");
}

TEST_F(VornSocketTest, WriteSaysTrueAndDoesNothing) {
  EXPECT_TRUE(socket_->write());
  EXPECT_EQ(loop_.descriptor_count(), 0u);
}

TEST_F(VornSocketTest, BindFailsForAPortInUse) {
  const int second = next_descriptor();
  VornSocket other(loop_);
  EXPECT_FALSE(other.bind_address(nullptr, ntohs(address_.sin_port)));
  EXPECT_TRUE(is_open(second));
  EXPECT_TRUE(other.bind_address(nullptr, 0));
}

TEST_F(VornSocketTest, DestructorClosesWhatItOpened) {
  EXPECT_TRUE(is_open(descriptor_));
  socket_->read(4);
  socket_.reset();
  EXPECT_FALSE(is_open(descriptor_));
  EXPECT_EQ(loop_.descriptor_count(), 0u);
}

TEST_F(VornSocketTest, DescriptorZeroIsClosedOnlyWhenItWasOpened) {
  const int saved = dup(STDIN_FILENO);
  refuse_socket = true;
  { VornSocket failed(loop_); }
  EXPECT_TRUE(is_open(STDIN_FILENO));
  refuse_socket = false;
  close(STDIN_FILENO);
  {
    VornSocket zero(loop_);
    EXPECT_TRUE(is_open(STDIN_FILENO));
    zero.initialize();
    EXPECT_FALSE(is_open(STDIN_FILENO));
  }
  { VornSocket zero(loop_); }
  EXPECT_FALSE(is_open(STDIN_FILENO));
  dup2(saved, STDIN_FILENO);
  close(saved);
}

TEST_F(VornSocketTest, MayBeDestroyedFromInsideItsCall) {
  for (const unsigned bytes : {2u, 100u}) {
    SCOPED_TRACE(bytes);
    calls_.clear();
    then_ = nullptr;
    open();
    then_ = [this] { socket_.reset(); };
    socket_->read(bytes);
    socket_->read(bytes);
    send("ab");
    send("cd");
    pump();
    EXPECT_EQ(calls_.size(), 1u);
    EXPECT_FALSE(is_open(descriptor_));
  }
}

TEST_F(VornSocketTest, ErrorLeavesItDeafUntilTheNextRead) {
  sockaddr_in nobody{};
  {
    VornSocket gone(loop_);
    const int fd = next_descriptor() - 1;
    ASSERT_TRUE(gone.bind_address("", 0));
    socklen_t length = sizeof nobody;
    ASSERT_EQ(getsockname(fd, reinterpret_cast<sockaddr*>(&nobody), &length), 0);
    nobody.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  }
  socket_->read(3);
  ASSERT_EQ(connect(descriptor_, reinterpret_cast<sockaddr*>(&nobody), sizeof nobody), 0);
  ASSERT_EQ(::send(descriptor_, "x", 1, 0), 1);
  pump();
  EXPECT_EQ(loop_.descriptor_count(), 0u) << "the reader has stopped";
  EXPECT_TRUE(calls_.empty());

  sockaddr_in peer{};
  peer.sin_family = AF_INET;
  peer.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof peer;
  ASSERT_EQ(::bind(sender_, reinterpret_cast<sockaddr*>(&peer), length), 0);
  ASSERT_EQ(getsockname(sender_, reinterpret_cast<sockaddr*>(&peer), &length), 0);
  ASSERT_EQ(connect(descriptor_, reinterpret_cast<sockaddr*>(&peer), sizeof peer), 0);
  socket_->read(5);
  send("abc");
  pump();
  EXPECT_EQ(calls_, (std::vector<Call>{{nullptr, 3, 3}})) << "the old buffer comes first";
}

TEST_F(VornSocketTest, InitializeAgainOpensANewSocket) {
  socket_->read(4);
  const int earlier = descriptor_;
  descriptor_ = next_descriptor();
  socket_->initialize();
  EXPECT_FALSE(is_open(earlier));
  EXPECT_EQ(loop_.descriptor_count(), 0u) << "the pending read is dropped";
  bind();
  socket_->read(4);
  send("ab");
  pump();
  EXPECT_EQ(text_, "ab");
}

TEST_F(VornSocketTest, InitializeAgainThatFailsChangesNothing) {
  socket_->read(4);
  testing::internal::CaptureStdout();
  refuse_socket = true;
  socket_->initialize();
  refuse_socket = false;
  refuse_non_blocking = true;
  const int opened = next_descriptor();
  socket_->initialize();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "failed to set socket non-blocking\n");
  EXPECT_FALSE(is_open(opened));
  send("ab");
  pump();
  EXPECT_EQ(text_, "ab");
  EXPECT_FALSE(socket_->bind_address("", 0)) << "the earlier descriptor is bound";
}

// Standard output that takes nothing and throws.
class ClosedOutput {
 public:
  ClosedOutput() : earlier_(std::cout.rdbuf(&closed_)) { std::cout.exceptions(std::ios::badbit); }
  ~ClosedOutput() {
    std::cout.exceptions(std::ios::goodbit);
    std::cout.rdbuf(earlier_);
  }

 private:
  struct : std::streambuf {
  } closed_;
  std::streambuf* earlier_;
};

TEST_F(VornSocketTest, ExceptionsLeaveNoDescriptorBehind) {
  const struct {
    const char* name;
    Operator throwing;
    int granted_buffer_bytes;
    bool reader_stays;
  } kRows[] = {{"no reader", kReader, 0, false},
               {"no writer", kWriter, 0, false},
               {"no warning", kNone, 1, true}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    open();
    text_.clear();
    socket_->read(4);
    const int next = next_descriptor();
    {
      const ClosedOutput closed;
      throwing = row.throwing;
      granted_buffer_bytes = row.granted_buffer_bytes;
      EXPECT_ANY_THROW(VornSocket other(loop_));
      EXPECT_EQ(next_descriptor(), next) << "by the constructor";
      EXPECT_ANY_THROW(socket_->initialize());
      throwing = kNone;
      granted_buffer_bytes = 0;
    }
    EXPECT_EQ(is_open(descriptor_), row.reader_stays);
    EXPECT_EQ(loop_.descriptor_count(), row.reader_stays ? 1u : 0u);
    EXPECT_FALSE(socket_->bind_address("", 0)) << "bound already, or there is nothing to bind";
    EXPECT_EQ(next_descriptor(), row.reader_stays ? next : descriptor_);

    descriptor_ = next_descriptor();
    socket_->initialize();
    bind();
    socket_->read(4);
    send("ab");
    pump();
    EXPECT_EQ(text_, "ab");
  }
}

TEST_F(VornSocketTest, KernelReaderAndWriterAreAskedForThis) {
  opened.clear();
  made.clear();
  open();
  EXPECT_EQ(opened, (std::vector<int>{AF_INET, SOCK_DGRAM, 0}));
  EXPECT_EQ(made, (std::vector<int>{descriptor_, 4, descriptor_, 1, 4}));
}

TEST_F(VornSocketTest, FirstInitializeThatFails) {
  testing::internal::CaptureStdout();
  refuse_socket = true;
  {
    VornSocket failed(loop_);
    EXPECT_FALSE(failed.bind_address("", 0));
    refuse_socket = false;
    failed.initialize();
    EXPECT_TRUE(failed.bind_address("", 0));
  }
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");

  testing::internal::CaptureStdout();
  asked.clear();
  refuse_non_blocking = true;
  {
    const int first = next_descriptor();
    VornSocket failed(loop_);
    EXPECT_TRUE(failed.bind_address("", 0)) << "it is open all the same";
    failed.initialize();
    EXPECT_FALSE(is_open(first));
  }
  EXPECT_TRUE(asked.empty());
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "failed to set socket non-blocking\nfailed to set socket non-blocking\n");
}

TEST_F(VornSocketTest, SmallKernelBuffersAreReportedAndUsed) {
  for (const bool enough : {true, false}) {
    testing::internal::CaptureStdout();
    asked.clear();
    granted_buffer_bytes = enough ? 49152 : 49151;
    open();
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              enough ? "" : "failed to set socket recv_buf\nfailed to set socket snd_buf\n");
    EXPECT_EQ(asked, (std::vector<int>{SO_RCVBUF, 262144, 49152, SO_SNDBUF, 262144, 49152}));
    socket_->read(4);
    send("ab");
    pump();
    EXPECT_EQ(text_, "ab");
    text_.clear();
  }
}

TEST_F(VornSocketTest, CleanupKeepsDescriptorAndFunctions) {
  socket_->read(4);
  socket_->cleanup();
  EXPECT_EQ(loop_.descriptor_count(), 0u);
  EXPECT_TRUE(is_open(descriptor_));
  const int earlier = descriptor_;
  descriptor_ = next_descriptor();
  socket_->initialize();
  EXPECT_FALSE(is_open(earlier));
  bind();
  socket_->read(4);
  send("ab");
  pump();
  EXPECT_EQ(text_, "ab");
}

}  // namespace
