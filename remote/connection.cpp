// SPDX-License-Identifier: Apache-2.0

#include "remote/connection.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <utility>

namespace vorn::remote {
namespace {

constexpr std::size_t kReadBytes = 65536;

void set_timeouts(int socket, int timeout_ms) {
  timeval limit{};
  limit.tv_sec = timeout_ms / 1000;
  limit.tv_usec = static_cast<suseconds_t>(timeout_ms % 1000) * 1000;
  setsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
  setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
}

// EAGAIN says that a time limit is over.
std::string error_text() {
  return errno == EAGAIN || errno == EWOULDBLOCK ? "no answer in time" : std::strerror(errno);
}

bool is_event(Kind kind) {
  return kind == Kind::kPacket || kind == Kind::kLink || kind == Kind::kMac || kind == Kind::kLost;
}

}  // namespace

bool Connection::open(const std::string& path, int timeout_ms, std::string& error) {
  close();
  sockaddr_un name{};
  name.sun_family = AF_UNIX;
  if (path.empty() || path.size() >= sizeof name.sun_path) {
    error = path.empty() ? "no socket is named: set VORN_CARD to the path of the card's socket"
                         : path + ": a socket's name has at most " +
                               std::to_string(sizeof name.sun_path - 1) + " bytes";
    return false;
  }
  path.copy(name.sun_path, sizeof name.sun_path - 1);
  Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  if (socket) set_timeouts(socket.get(), timeout_ms);
  if (!socket ||
      connect(socket.get(), reinterpret_cast<const sockaddr*>(&name), sizeof name) != 0) {
    error = path + ": " + error_text();
    return false;
  }
  adopt(std::move(socket), path, timeout_ms);
  return true;
}

void Connection::adopt(Descriptor socket, const std::string& name, int timeout_ms) {
  close();
  set_timeouts(socket.get(), timeout_ms);
  socket_ = std::move(socket);
  name_ = name;
  timeout_ms_ = timeout_ms;
}

void Connection::close() {
  socket_.reset();
  received_.reset();
  read_ = 0;
  filled_ = 0;
}

bool Connection::fail(const std::string& why) {
  if (!is_open()) return false;
  const std::string reason = "the connection to " + name_ + " is lost: " + why;
  close();
  lost_(reason);
  return false;
}

bool Connection::alive() {
  if (!is_open()) return false;
  pollfd watched = {socket_.get(), POLLRDHUP, 0};
  if (poll(&watched, 1, 0) <= 0) return true;
  return fail("the card's process has ended");
}

Writer Connection::begin(Kind kind) {
  request_.clear();
  begin_message(request_, kind);
  return Writer(request_);
}

bool Connection::send_request() {
  end_message(request_, 0);
  if (!is_open()) return false;
  for (std::size_t sent = 0; sent < request_.size();) {
    const ssize_t count =
        send(socket_.get(), request_.data() + sent, request_.size() - sent, MSG_NOSIGNAL);
    if (count < 0 && errno == EINTR) continue;
    // What the other end said before it left is still to be read.
    if (count < 0 && errno == EPIPE) return true;
    if (count < 0) return fail(error_text());
    sent += static_cast<std::size_t>(count);
  }
  return true;
}

bool Connection::exchange(Kind& kind, Reader& answer) {
  return send_request() && more(kind, answer);
}

bool Connection::more(Kind& kind, Reader& answer) {
  using Clock = std::chrono::steady_clock;
  // Set when what came first was no whole answer: mostly it is, and no clock is asked.
  Clock::time_point end{};
  const std::uint8_t* message = nullptr;
  std::size_t bytes = 0;
  for (bool first = true; is_open(); first = false) {
    while (next(kind, message, bytes)) {
      if (is_event(kind)) {
        take_event_(kind, message, bytes);
        continue;
      }
      if (kind != Kind::kAnswer && kind != Kind::kPart) return fail("what came is no answer");
      answer = Reader(message + kHeaderBytes, bytes - kHeaderBytes);
      // Nobody would wait for events that are here already.
      const Kind kind_of_answer = kind;
      while (next_is_event() && next(kind, message, bytes)) take_event_(kind, message, bytes);
      kind = kind_of_answer;
      return is_open();
    }
    if (!first) {
      const Clock::time_point now = Clock::now();
      if (end == Clock::time_point()) end = now + std::chrono::milliseconds(timeout_ms_);
      if (now > end) return fail("no answer in time");
    }
    receive(true);
  }
  return false;
}

void Connection::take_events() {
  Kind kind{};
  const std::uint8_t* message = nullptr;
  std::size_t bytes = 0;
  do {
    while (next(kind, message, bytes)) {
      if (!is_event(kind)) {
        fail("an answer came that nobody asked for");
        return;
      }
      take_event_(kind, message, bytes);
    }
  } while (is_open() && receive(false));
}

bool Connection::receive(bool wait) {
  if (read_ == filled_) {
    read_ = 0;
    filled_ = 0;
  } else if (read_ != 0) {
    std::copy(input_.begin() + static_cast<std::ptrdiff_t>(read_),
              input_.begin() + static_cast<std::ptrdiff_t>(filled_), input_.begin());
    filled_ -= read_;
    read_ = 0;
  }
  if (input_.size() - filled_ < kReadBytes) input_.resize(filled_ + kReadBytes);
  iovec room = {input_.data() + filled_, input_.size() - filled_};
  alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))];
  msghdr header{};
  header.msg_iov = &room;
  header.msg_iovlen = 1;
  header.msg_control = control;
  header.msg_controllen = sizeof control;
  const ssize_t count =
      recvmsg(socket_.get(), &header, MSG_CMSG_CLOEXEC | (wait ? 0 : MSG_DONTWAIT));
  if (count < 0) {
    if (errno == EINTR) return false;
    if (!wait && (errno == EAGAIN || errno == EWOULDBLOCK)) return false;
    return fail(error_text());
  }
  for (cmsghdr* part = CMSG_FIRSTHDR(&header); part != nullptr; part = CMSG_NXTHDR(&header, part)) {
    if (part->cmsg_level != SOL_SOCKET || part->cmsg_type != SCM_RIGHTS) continue;
    int fd = -1;
    std::memcpy(&fd, CMSG_DATA(part), sizeof fd);
    received_ = Descriptor(fd);
  }
  if (count == 0) return fail("the card's process has ended");
  filled_ += static_cast<std::size_t>(count);
  return true;
}

bool Connection::next_is_event() const {
  return filled_ - read_ >= kHeaderBytes && is_event(static_cast<Kind>(input_[read_ + 4]));
}

bool Connection::next(Kind& kind, const std::uint8_t*& message, std::size_t& bytes) {
  if (filled_ - read_ < kHeaderBytes) return false;
  message = input_.data() + read_;
  Reader header(message, kHeaderBytes);
  const std::size_t count = header.u32();
  if (count == 0 || count > kMostMessageBytes) {
    return fail("a message of " + std::to_string(count) + " bytes came");
  }
  kind = static_cast<Kind>(header.u8());
  bytes = 4 + count;
  if (filled_ - read_ < bytes) return false;
  read_ += bytes;
  return true;
}

}  // namespace vorn::remote
