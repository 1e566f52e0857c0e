// SPDX-License-Identifier: Apache-2.0
//
// Where a capture is written to: a file, or a pipe that somebody reads while it grows.
#ifndef SOFTCARD_CAPTURE_CAPTURE_OUTPUT_H_
#define SOFTCARD_CAPTURE_CAPTURE_OUTPUT_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "softcard/cables/descriptor.h"

namespace softcard {

class CaptureOutput {
 public:
  // What a slow reader may leave unread before more is lost.
  static constexpr std::size_t kMostWaitingBytes = std::size_t{4} << 20;

  // Makes or empties a file, or opens a named pipe that somebody reads; `-` is standard output.
  // Null, and `error` says why, when that fails, and for a terminal. From here on the process
  // ignores SIGPIPE.
  static std::unique_ptr<CaptureOutput> open(const std::string& path, std::string& error);

  // Whether somebody reads while it grows.
  bool live() const { return !regular_; }

  // Takes a whole block, or nothing: false when the reader is so slow that there is no room, and
  // once over().
  bool put(const std::vector<std::uint8_t>& block);
  // The same past any bound.
  void put_last(const std::vector<std::uint8_t>& block);

  // Writes as much of it as goes without waiting for a reader, and sees whether he is gone.
  void flush();
  // Writes all of it, with patience for a reader as long as he reads. False when some is left.
  bool finish();

  // Nothing can be written any more: the reader is gone, or error() says why.
  bool over() const { return gone_ || !error_.empty(); }
  const std::string& error() const { return error_; }
  const std::string& path() const { return path_; }

 private:
  CaptureOutput(const std::string& path, Descriptor fd, bool regular, bool socket)
      : path_(path), fd_(std::move(fd)), regular_(regular), socket_(socket) {}

  void write_some(int patience_ms);

  std::string path_;
  Descriptor fd_;
  bool regular_;
  bool socket_;
  std::vector<std::uint8_t> waiting_;
  std::size_t written_ = 0;  // of what waits
  bool gone_ = false;
  std::string error_;
};

}  // namespace softcard

#endif  // SOFTCARD_CAPTURE_CAPTURE_OUTPUT_H_
