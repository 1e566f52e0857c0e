// SPDX-License-Identifier: Apache-2.0

#include "softcard/cables/pcap_file.h"

#include <sys/stat.h>

#include <cerrno>

#include "softcard/cables/descriptor.h"
#include "softcard/frames/frame.h"

namespace softcard {

namespace {

constexpr std::uint32_t kMagicMicroseconds = 0xA1B2C3D4;
constexpr std::uint32_t kMagicNanoseconds = 0xA1B23C4D;
constexpr std::uint32_t kMagicNextGeneration = 0x0A0D0D0A;
constexpr std::uint32_t kEthernet = 1;
constexpr std::uint32_t kVersionMajor = 2;
constexpr std::uint32_t kVersionMinor = 4;
constexpr std::size_t kHeaderBytes = 24;
constexpr std::size_t kRecordHeaderBytes = 16;
constexpr std::uint64_t kNsPerSecond = 1000000000;

std::uint32_t little_endian(const std::uint8_t* at) {
  return at[0] | std::uint32_t{at[1]} << 8 | std::uint32_t{at[2]} << 16 |
         std::uint32_t{at[3]} << 24;
}

std::uint32_t big_endian(const std::uint8_t* at) {
  return at[3] | std::uint32_t{at[2]} << 8 | std::uint32_t{at[1]} << 16 |
         std::uint32_t{at[0]} << 24;
}

void put(std::uint8_t* at, std::uint32_t value) {
  for (int i = 0; i < 4; ++i) at[i] = static_cast<std::uint8_t>(value >> 8 * i);
}

}  // namespace

// ---- PcapReader ---------------------------------------------------------------------------------

std::unique_ptr<PcapReader> PcapReader::open(const std::string& path, std::string& error) {
  File file(std::fopen(path.c_str(), "rbe"));
  struct stat status {};
  if (file == nullptr || fstat(fileno(file.get()), &status) != 0) {
    error = system_error(path, "cannot be opened");
    return nullptr;
  }
  if (!S_ISREG(status.st_mode)) {
    error = path + ": is no regular file";
    return nullptr;
  }
  std::unique_ptr<PcapReader> reader(new PcapReader(path, std::move(file)));
  PcapRecord record;
  if (reader->read_header()) {
    const long first = std::ftell(reader->file_.get());
    while (reader->next(record)) {
    }
    reader->records_ = 0;
    if (std::fseek(reader->file_.get(), first, SEEK_SET) != 0) {
      reader->error_ = system_error(path, "cannot be rewound");
    }
  }
  error = reader->error_;
  return error.empty() ? std::move(reader) : nullptr;
}

std::uint32_t PcapReader::number(const std::uint8_t* at) const {
  return big_endian_ ? big_endian(at) : little_endian(at);
}

bool PcapReader::fail(const std::string& what) {
  error_ = path_ + ": " + what;
  return false;
}

bool PcapReader::read_header() {
  std::uint8_t header[kHeaderBytes];
  const std::size_t bytes = std::fread(header, 1, sizeof header, file_.get());
  if (bytes >= 4 && little_endian(header) == kMagicNextGeneration) {
    return fail("is a pcapng capture; this reads the classic pcap format");
  }
  if (bytes != sizeof header) return fail("is too short for a pcap capture");
  big_endian_ = big_endian(header) == kMagicMicroseconds || big_endian(header) == kMagicNanoseconds;
  const std::uint32_t magic = number(header);
  if (magic != kMagicMicroseconds && magic != kMagicNanoseconds) {
    return fail("is no pcap capture: it does not begin like one");
  }
  fraction_ns_ = magic == kMagicNanoseconds ? 1 : 1000;
  const std::uint32_t major = big_endian_ ? number(header + 4) >> 16 : number(header + 4) & 0xFFFF;
  if (major != kVersionMajor) {
    return fail("has version " + std::to_string(major) + " of the pcap format; this reads 2");
  }
  // Above the link type stand a mark and, in 16-bit words, the length of a check sequence.
  const std::uint32_t network = number(header + 20);
  if ((network & 0x03FFFFFF) != kEthernet) {
    return fail("is no capture of Ethernet frames: its link type is " +
                std::to_string(network & 0x03FFFFFF));
  }
  check_bytes_ = (network & 0x04000000) != 0 ? network >> 28 << 1 : 0;
  return true;
}

bool PcapReader::next(PcapRecord& record) {
  if (!error_.empty()) return false;
  const std::string place = "record " + std::to_string(records_ + 1) + ": ";
  std::uint8_t header[kRecordHeaderBytes];
  const std::size_t bytes = std::fread(header, 1, sizeof header, file_.get());
  if (std::ferror(file_.get()) != 0) {
    error_ = system_error(path_, (place + "cannot be read").c_str());
    return false;
  }
  if (bytes == 0) return false;
  if (bytes != sizeof header) return fail(place + "the file ends inside its header");
  const std::uint32_t kept = number(header + 8);
  const std::uint32_t whole = number(header + 12);
  if (kept < whole) {
    return fail(place + "was cut to " + std::to_string(kept) + " of " + std::to_string(whole) +
                " bytes when it was captured");
  }
  if (kept <= check_bytes_) return fail(place + "is empty");
  if (kept - check_bytes_ > FramePool::kLargeBytes) {
    return fail(place + "has " + std::to_string(kept) + " bytes, the longest frame has " +
                std::to_string(FramePool::kLargeBytes));
  }
  record.frame.resize(kept);
  if (std::fread(record.frame.data(), 1, kept, file_.get()) != kept) {
    return fail(place + "the file ends inside its " + std::to_string(kept) + " bytes");
  }
  record.frame.resize(kept - check_bytes_);
  record.time_ns = number(header) * kNsPerSecond + number(header + 4) * fraction_ns_;
  ++records_;
  return true;
}

// ---- PcapWriter ---------------------------------------------------------------------------------

std::unique_ptr<PcapWriter> PcapWriter::open(const std::string& path, std::string& error) {
  File file(std::fopen(path.c_str(), "wbe"));
  if (file == nullptr) {
    error = system_error(path, "cannot be made");
    return nullptr;
  }
  std::unique_ptr<PcapWriter> writer(new PcapWriter(path, std::move(file)));
  std::uint8_t header[kHeaderBytes] = {};
  put(header, kMagicNanoseconds);
  put(header + 4, kVersionMajor | kVersionMinor << 16);
  put(header + 16, FramePool::kLargeBytes);
  put(header + 20, kEthernet);
  writer->check(std::fwrite(header, 1, sizeof header, writer->file_.get()) == sizeof header);
  writer->unflushed_ = true;
  writer->flush();
  error = writer->error_;
  return error.empty() ? std::move(writer) : nullptr;
}

bool PcapWriter::check(bool ok) {
  if (!ok && error_.empty()) {
    const std::string place = "cannot be written after record " + std::to_string(records_);
    error_ = system_error(path_, place.c_str());
  }
  return error_.empty();
}

bool PcapWriter::write(std::uint64_t time_ns, const std::uint8_t* frame, std::size_t bytes) {
  if (!error_.empty()) return false;
  std::uint8_t header[kRecordHeaderBytes];
  put(header, static_cast<std::uint32_t>(time_ns / kNsPerSecond));
  put(header + 4, static_cast<std::uint32_t>(time_ns % kNsPerSecond));
  put(header + 8, static_cast<std::uint32_t>(bytes));
  put(header + 12, static_cast<std::uint32_t>(bytes));
  unflushed_ = true;
  if (!check(std::fwrite(header, 1, sizeof header, file_.get()) == sizeof header &&
             std::fwrite(frame, 1, bytes, file_.get()) == bytes)) {
    return false;
  }
  ++records_;
  return true;
}

bool PcapWriter::flush() {
  if (unflushed_ && check(std::fflush(file_.get()) == 0)) unflushed_ = false;
  return error_.empty();
}

}  // namespace softcard
