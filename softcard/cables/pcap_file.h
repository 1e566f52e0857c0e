// SPDX-License-Identifier: Apache-2.0
//
// Captures of Ethernet frames. Read are the classic pcap format and pcapng, in both byte orders,
// with timestamps of any resolution; written is classic pcap, little-endian with nanoseconds.
// softcard/capture/ writes pcapng.
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

// Reads a capture front to back. It keeps one block in memory, and what a pcapng section says of
// its interfaces.
class PcapReader {
 public:
  // Opens a capture and reads it through once, so that a bad record is found before the first one
  // is used. Null, and `error` names the file and the place in it, when the file cannot be read, is
  // no capture, is malformed, ends inside a record or block, or has a frame that is not of
  // Ethernet, is empty, was cut when it was captured, or is longer than any frame of the card.
  // Blocks that hold no packets are skipped.
  static std::unique_ptr<PcapReader> open(const std::string& path, std::string& error);

  // Reads the next record; false behind the last one, or when the file has changed since and
  // error() is not empty.
  bool next(PcapRecord& record);

  const std::string& error() const { return error_; }
  const std::string& path() const { return path_; }
  std::uint64_t records_read() const { return records_; }

 private:
  // What a pcapng section says of an interface; classic captures have one.
  struct Interface {
    std::uint16_t link_type = 0;
    std::uint32_t snap_bytes = 0;   // 0: frames are whole
    std::uint8_t resolution = 6;    // of timestamps, as if_tsresol has it
    std::uint64_t offset_ns = 0;    // to be added to them
    std::uint32_t check_bytes = 0;  // check sequence at the end of each frame
  };

  PcapReader(const std::string& path, File file) : path_(path), file_(std::move(file)) {}

  // Goes to the first record.
  bool begin();
  bool at_end();
  bool read_header();
  bool next_record(PcapRecord& record);
  bool next_block(PcapRecord& record);
  bool read_block(std::uint32_t& type);
  bool read_section();
  bool read_interface();
  bool read_packet(std::uint32_t type, PcapRecord& record);
  template <class Visit>
  bool for_each_option(std::size_t at, Visit&& visit);
  bool take_frame(const std::string& place, const Interface& interface, std::uint32_t kept,
                  std::uint32_t whole);

  // Reads all of it or fails.
  bool read(std::uint8_t* to, std::size_t bytes, const std::string& place);
  // False with error() set.
  bool fail(const std::string& what);
  std::string block_place() const;
  std::uint16_t half(const std::uint8_t* at) const;
  std::uint32_t number(const std::uint8_t* at) const;

  std::string path_;
  File file_;
  std::uint64_t offset_ = 0;  // of what is read next
  bool next_generation_ = false;
  bool big_endian_ = false;
  std::vector<Interface> interfaces_;
  std::uint64_t block_at_ = 0;       // of the block in hand
  std::vector<std::uint8_t> block_;  // its body
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
