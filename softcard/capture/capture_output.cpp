// SPDX-License-Identifier: Apache-2.0

#include "softcard/capture/capture_output.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <utility>

namespace softcard {
namespace {

// How long a reader may take nothing at the end.
constexpr int kPatienceMs = 2000;

Descriptor open_output(const std::string& path) {
  if (path == "-") return Descriptor(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
  // A named pipe without a reader is an error at once instead of a wait. Files know no waiting.
  return Descriptor(
      ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NONBLOCK, 0666));
}

}  // namespace

std::unique_ptr<CaptureOutput> CaptureOutput::open(const std::string& path, std::string& error) {
  Descriptor fd = open_output(path);
  struct stat status {};
  if (!fd || fstat(fd.get(), &status) != 0) {
    error = errno == ENXIO ? path + ": is a pipe that nobody reads"
                           : system_error(path, "cannot be written");
    return nullptr;
  }
  if (isatty(fd.get()) != 0) {
    error = path + ": is a terminal; a capture goes into a file or a pipe";
    return nullptr;
  }
  std::signal(SIGPIPE, SIG_IGN);
  return std::unique_ptr<CaptureOutput>(
      new CaptureOutput(path, std::move(fd), S_ISREG(status.st_mode), S_ISSOCK(status.st_mode)));
}

bool CaptureOutput::put(const std::vector<std::uint8_t>& block) {
  if (over()) return false;
  const std::size_t room = live() ? kMostWaitingBytes : SIZE_MAX;
  if (waiting_.size() - written_ + block.size() > room) return false;
  put_last(block);
  // A file is written when a burst is over, or earlier where that is long.
  if (!live() && waiting_.size() >= kMostWaitingBytes) flush();
  return true;
}

void CaptureOutput::put_last(const std::vector<std::uint8_t>& block) {
  waiting_.insert(waiting_.end(), block.begin(), block.end());
}

void CaptureOutput::flush() { write_some(0); }

bool CaptureOutput::finish() {
  write_some(kPatienceMs);
  return waiting_.empty() && !over();
}

// A pipe that is ready takes PIPE_BUF bytes without a wait, whether it is set to wait or not: its
// settings may be shared with other processes and stay as they are.
void CaptureOutput::write_some(int patience_ms) {
  while (!over()) {
    if (live()) {
      pollfd ready{fd_.get(), POLLOUT, 0};
      const int count = poll(&ready, 1, written_ < waiting_.size() ? patience_ms : 0);
      if (count < 0 && errno == EINTR) continue;
      if ((ready.revents & (POLLERR | POLLHUP | POLLNVAL)) != 0) {
        gone_ = true;
        break;
      }
      if (count <= 0) break;
    }
    const std::size_t left = waiting_.size() - written_;
    if (left == 0) break;
    const std::uint8_t* const from = waiting_.data() + written_;
    const std::size_t most = live() ? std::min<std::size_t>(left, PIPE_BUF) : left;
    const ssize_t written = socket_ ? send(fd_.get(), from, most, MSG_DONTWAIT | MSG_NOSIGNAL)
                                    : write(fd_.get(), from, most);
    if (written > 0) {
      written_ += static_cast<std::size_t>(written);
    } else if (written < 0 && (errno == EPIPE || errno == ECONNRESET)) {
      gone_ = true;
    } else if (written < 0 && errno == EAGAIN) {
      break;
    } else if (written >= 0 || errno != EINTR) {
      error_ = system_error(path_, "cannot be written any more");
    }
  }
  if (written_ == waiting_.size() || over()) {
    waiting_.clear();
    written_ = 0;
  } else if (written_ > kMostWaitingBytes) {
    waiting_.erase(waiting_.begin(), waiting_.begin() + static_cast<std::ptrdiff_t>(written_));
    written_ = 0;
  }
}

}  // namespace softcard
