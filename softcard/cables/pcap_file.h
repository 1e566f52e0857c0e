// SPDX-License-Identifier: Apache-2.0
//
// Captures of Ethernet frames in the classic pcap format: both byte orders, microseconds and
// nanoseconds on reading; little-endian nanoseconds on writing.
#ifndef SOFTCARD_CABLES_PCAP_FILE_H_
#define SOFTCARD_CABLES_PCAP_FILE_H_

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace softcard {

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

struct PcapRecord {
  std::uint64_t time_ns = 0;        // since 1970
  std::vector<std::uint8_t> frame;  // without a check sequence
};

// Reads a capture front to back.
class PcapReader {
 public:
  // Opens a capture and reads it through once, so that a bad record is found before the first one
  // is used. Null, and `error` names the file and the record (from 1), when the file cannot be
  // read, is no Ethernet capture, ends inside a record, or has a record that is empty, that was
  // cut when it was captured, or that is longer than any frame of the card.
  static std::unique_ptr<PcapReader> open(const std::string& path, std::string& error);

  // Reads the next record; false behind the last one, or when the file has changed since and
  // error() is not empty.
  bool next(PcapRecord& record);

  const std::string& error() const { return error_; }
  const std::string& path() const { return path_; }
  std::uint64_t records_read() const { return records_; }

 private:
  PcapReader(const std::string& path, File file) : path_(path), file_(std::move(file)) {}

  bool read_header();
  // False with error() set.
  bool fail(const std::string& what);
  std::uint32_t number(const std::uint8_t* at) const;

  std::string path_;
  File file_;
  bool big_endian_ = false;
  std::uint64_t fraction_ns_ = 1000;  // what a timestamp's fraction counts
  std::uint32_t check_bytes_ = 0;     // check sequence at the end of each frame
  std::uint64_t records_ = 0;
  std::string error_;
};

// Writes a capture.
class PcapWriter {
 public:
  // Makes or empties the file. Null, and `error` names the file, when that fails.
  static std::unique_ptr<PcapWriter> open(const std::string& path, std::string& error);

  // Appends a record. False when the file system refuses, now or before; error() says why.
  bool write(std::uint64_t time_ns, const std::uint8_t* frame, std::size_t bytes);

  // Hands everything to the file system, so that others can read it. False as write().
  bool flush();

  const std::string& error() const { return error_; }
  const std::string& path() const { return path_; }

 private:
  PcapWriter(const std::string& path, File file) : path_(path), file_(std::move(file)) {}

  bool check(bool ok);

  std::string path_;
  File file_;
  std::uint64_t records_ = 0;
  bool unflushed_ = false;
  std::string error_;
};

}  // namespace softcard

#endif  // SOFTCARD_CABLES_PCAP_FILE_H_
