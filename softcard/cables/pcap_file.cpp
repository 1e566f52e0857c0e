// SPDX-License-Identifier: Apache-2.0

#include "softcard/cables/pcap_file.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>

#include "softcard/cables/descriptor.h"
#include "softcard/frames/frame.h"

namespace softcard {

namespace {

constexpr std::uint32_t kMagicMicroseconds = 0xA1B2C3D4;
constexpr std::uint32_t kMagicNanoseconds = 0xA1B23C4D;
constexpr std::uint32_t kEthernet = 1;
constexpr std::uint32_t kVersionMajor = 2;
constexpr std::uint32_t kVersionMinor = 4;
constexpr std::size_t kHeaderBytes = 24;
constexpr std::size_t kRecordHeaderBytes = 16;
constexpr std::uint64_t kNsPerSecond = 1000000000;
constexpr std::uint8_t kMicroseconds = 6;  // as if_tsresol has them: a negative power of ten
constexpr std::uint8_t kNanoseconds = 9;

// The blocks of pcapng.
constexpr std::uint32_t kSection = 0x0A0D0D0A;
constexpr std::uint32_t kInterface = 1;
constexpr std::uint32_t kOldPacket = 2;
constexpr std::uint32_t kSimplePacket = 3;
constexpr std::uint32_t kEnhancedPacket = 6;
constexpr std::uint32_t kByteOrderMagic = 0x1A2B3C4D;
constexpr std::size_t kFramingBytes = 12;  // type, and length at either end
// Of the blocks that are kept in memory: a frame and a lot of options.
constexpr std::uint32_t kMostBlockBytes = 1 << 20;
constexpr std::size_t kMostInterfaces = 65536;
constexpr std::uint64_t kMostSeconds = UINT64_MAX / kNsPerSecond;

constexpr const char* kCut = ": it was cut, or is still being written";

std::uint32_t little_endian(const std::uint8_t* at) {
  return at[0] | std::uint32_t{at[1]} << 8 | std::uint32_t{at[2]} << 16 |
         std::uint32_t{at[3]} << 24;
}

std::uint32_t big_endian(const std::uint8_t* at) {
  return at[3] | std::uint32_t{at[2]} << 8 | std::uint32_t{at[1]} << 16 |
         std::uint32_t{at[0]} << 24;
}

// The least that a block of a type holds, without its framing.
std::size_t least_bytes(std::uint32_t type) {
  switch (type) {
    case kSection:
      return 16;
    case kInterface:
      return 8;
    case kOldPacket:
    case kEnhancedPacket:
      return 20;
    case kSimplePacket:
      return 4;
    default:
      return 0;
  }
}

// A timestamp in nanoseconds; what nanoseconds cannot hold is the end of time. `resolution` is a
// negative power of ten, or with the highest bit of two.
std::uint64_t nanoseconds(std::uint64_t ticks, std::uint8_t resolution) {
  unsigned power = resolution & 0x7F;
  if ((resolution & 0x80) == 0) {
    for (; power > kNanoseconds; --power) ticks /= 10;
    for (; power < kNanoseconds; ++power) {
      if (ticks > UINT64_MAX / 10) return UINT64_MAX;
      ticks *= 10;
    }
    return ticks;
  }
  const std::uint64_t seconds = power < 64 ? ticks >> power : 0;
  if (seconds > kMostSeconds) return UINT64_MAX;
  std::uint64_t fraction = power < 64 ? ticks - (seconds << power) : ticks;
  for (; power > 32; --power) fraction >>= 1;
  return seconds * kNsPerSecond + (fraction * kNsPerSecond >> power);
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
  if (reader->begin()) {
    while (reader->next(record)) {
    }
    if (reader->error_.empty()) reader->begin();
  }
  error = reader->error_;
  return error.empty() ? std::move(reader) : nullptr;
}

std::uint32_t PcapReader::number(const std::uint8_t* at) const {
  return big_endian_ ? big_endian(at) : little_endian(at);
}

std::uint16_t PcapReader::half(const std::uint8_t* at) const {
  return static_cast<std::uint16_t>(big_endian_ ? at[0] << 8 | at[1] : at[1] << 8 | at[0]);
}

bool PcapReader::fail(const std::string& what) {
  error_ = path_ + ": " + what;
  return false;
}

bool PcapReader::read(std::uint8_t* to, std::size_t bytes, const std::string& place) {
  const std::size_t got = std::fread(to, 1, bytes, file_.get());
  offset_ += got;
  if (got == bytes) return true;
  if (std::ferror(file_.get()) == 0) return fail(place + "the file ends inside it" + kCut);
  error_ = system_error(path_, (place + "cannot be read").c_str());
  return false;
}

// Whether nothing follows; a file that cannot be read has no end.
bool PcapReader::at_end() {
  const int byte = std::fgetc(file_.get());
  if (byte == EOF) return std::ferror(file_.get()) == 0;
  std::ungetc(byte, file_.get());
  return false;
}

bool PcapReader::begin() {
  records_ = 0;
  offset_ = 0;
  interfaces_.clear();
  if (std::fseek(file_.get(), 0, SEEK_SET) != 0) {
    error_ = system_error(path_, "cannot be rewound");
    return false;
  }
  return read_header();
}

bool PcapReader::next(PcapRecord& record) {
  if (!error_.empty()) return false;
  if (at_end() || !(next_generation_ ? next_block(record) : next_record(record))) return false;
  ++records_;
  return true;
}

// Takes the bytes in hand as a frame: all of them, without its check sequence.
bool PcapReader::take_frame(const std::string& place, const Interface& interface,
                            std::uint32_t kept, std::uint32_t whole) {
  if (interface.link_type != kEthernet) {
    return fail(place + "is no Ethernet frame: its link type is " +
                std::to_string(interface.link_type));
  }
  if (kept < whole) {
    return fail(place + "was cut to " + std::to_string(kept) + " of " + std::to_string(whole) +
                " bytes when it was captured");
  }
  if (kept <= interface.check_bytes) return fail(place + "is empty");
  if (kept - interface.check_bytes > FramePool::kLargeBytes) {
    return fail(place + "has " + std::to_string(kept) + " bytes, the longest frame has " +
                std::to_string(FramePool::kLargeBytes));
  }
  return true;
}

// ---- The classic format -------------------------------------------------------------------------

bool PcapReader::read_header() {
  std::uint8_t header[kHeaderBytes];
  const std::size_t bytes = std::fread(header, 1, sizeof header, file_.get());
  next_generation_ = bytes >= 4 && little_endian(header) == kSection;
  if (next_generation_) return std::fseek(file_.get(), 0, SEEK_SET) == 0;
  if (bytes != sizeof header) return fail("is too short for a capture");
  offset_ = bytes;
  big_endian_ = big_endian(header) == kMagicMicroseconds || big_endian(header) == kMagicNanoseconds;
  const std::uint32_t magic = number(header);
  if (magic != kMagicMicroseconds && magic != kMagicNanoseconds) {
    return fail("is no pcap or pcapng capture: it does not begin like one");
  }
  if (const unsigned major = half(header + 4); major != kVersionMajor) {
    return fail("has version " + std::to_string(major) + " of the pcap format; this reads 2");
  }
  // Above the link type stand a mark and, in 16-bit words, the length of a check sequence.
  const std::uint32_t network = number(header + 20);
  if ((network & 0x03FFFFFF) != kEthernet) {
    return fail("is no capture of Ethernet frames: its link type is " +
                std::to_string(network & 0x03FFFFFF));
  }
  Interface interface;
  interface.link_type = kEthernet;
  interface.resolution = magic == kMagicNanoseconds ? kNanoseconds : kMicroseconds;
  interface.check_bytes = (network & 0x04000000) != 0 ? network >> 28 << 1 : 0;
  interfaces_.push_back(interface);
  return true;
}

bool PcapReader::next_record(PcapRecord& record) {
  const Interface& interface = interfaces_[0];
  const std::string place =
      "record " + std::to_string(records_ + 1) + " at byte " + std::to_string(offset_) + ": ";
  std::uint8_t header[kRecordHeaderBytes];
  if (!read(header, sizeof header, place)) return false;
  const std::uint32_t kept = number(header + 8);
  if (!take_frame(place, interface, kept, number(header + 12))) return false;
  record.frame.resize(kept);
  if (!read(record.frame.data(), kept, place)) return false;
  record.frame.resize(kept - interface.check_bytes);
  record.time_ns =
      number(header) * kNsPerSecond + nanoseconds(number(header + 4), interface.resolution);
  return true;
}

// ---- pcapng -------------------------------------------------------------------------------------

std::string PcapReader::block_place() const {
  return "block at byte " + std::to_string(block_at_) + ": ";
}

// Reads blocks up to one with a packet; false at the end, too.
bool PcapReader::next_block(PcapRecord& record) {
  while (!at_end()) {
    std::uint32_t type = 0;
    if (!read_block(type)) return false;
    switch (type) {
      case kSection:
        if (!read_section()) return false;
        break;
      case kInterface:
        if (!read_interface()) return false;
        break;
      case kOldPacket:
      case kSimplePacket:
      case kEnhancedPacket:
        return read_packet(type, record);
      default:
        break;
    }
  }
  return false;
}

// Reads a whole block, the body of one that means something into block_.
bool PcapReader::read_block(std::uint32_t& type) {
  block_at_ = offset_;
  const std::string place = block_place();
  std::uint8_t framing[kFramingBytes] = {};
  if (!read(framing, 8, place)) return false;
  // The type of a section is the same from either end; which end it is says its first word.
  const bool section = little_endian(framing) == kSection;
  if (section) {
    if (!read(framing + 8, 4, place)) return false;
    big_endian_ = big_endian(framing + 8) == kByteOrderMagic;
    if (number(framing + 8) != kByteOrderMagic) return fail(place + "no section begins like that");
  }
  type = number(framing);
  const std::uint32_t length = number(framing + 4);
  const std::size_t least = least_bytes(type);
  if (length % 4 != 0 || length < kFramingBytes + least) {
    return fail(place + "no block of type " + std::to_string(type) + " is " +
                std::to_string(length) + " bytes long");
  }
  if (least != 0 && length > kMostBlockBytes) {
    return fail(place + "is " + std::to_string(length) + " bytes long, " +
                std::to_string(kMostBlockBytes) + " are the most");
  }
  const std::size_t begun = section ? 4 : 0;
  std::size_t left = length - kFramingBytes - begun;
  block_.assign(framing + 8, framing + 8 + begun);
  // What means nothing here is passed over in pieces.
  for (std::size_t piece; left != 0; left -= piece) {
    piece = std::min<std::size_t>(left, kMostBlockBytes);
    if (least == 0) block_.clear();
    const std::size_t at = block_.size();
    block_.resize(at + piece);
    if (!read(block_.data() + at, piece, place)) return false;
  }
  if (!read(framing, 4, place)) return false;
  if (number(framing) != length) {
    return fail(place + "is " + std::to_string(length) + " bytes long by its beginning, " +
                std::to_string(number(framing)) + " by its end");
  }
  return true;
}

bool PcapReader::read_section() {
  const unsigned major = half(block_.data() + 4);
  if (major != 1) {
    return fail(block_place() + "has version " + std::to_string(major) +
                " of the pcapng format; this reads 1");
  }
  interfaces_.clear();
  return true;
}

// Calls visit(code, value, length) for each option of the block in hand from `at` on.
template <class Visit>
bool PcapReader::for_each_option(std::size_t at, Visit&& visit) {
  while (block_.size() - at >= 4) {
    const std::uint16_t code = half(block_.data() + at);
    const std::uint16_t length = half(block_.data() + at + 2);
    if (code == 0) return true;
    const std::size_t padded = (std::size_t{length} + 3) / 4 * 4;
    if (block_.size() - at - 4 < padded) {
      return fail(block_place() + "its option at byte " + std::to_string(block_at_ + 8 + at) +
                  " is longer than the block");
    }
    visit(code, block_.data() + at + 4, length);
    at += 4 + padded;
  }
  return true;
}

bool PcapReader::read_interface() {
  if (interfaces_.size() == kMostInterfaces) {
    return fail(block_place() + "more than " + std::to_string(kMostInterfaces) + " interfaces");
  }
  Interface interface;
  interface.link_type = half(block_.data());
  interface.snap_bytes = number(block_.data() + 4);
  const bool good =
      for_each_option(8, [&](unsigned code, const std::uint8_t* value, unsigned length) {
        if (code == 9 && length == 1) interface.resolution = *value;
        if (code == 13 && length == 1) interface.check_bytes = *value;
        if (code == 14 && length == 8) {
          // Seconds, before 1970 if need be.
          const std::uint64_t first = number(value);
          const std::uint64_t second = number(value + 4);
          interface.offset_ns =
              (big_endian_ ? first << 32 | second : second << 32 | first) * kNsPerSecond;
        }
      });
  if (good) interfaces_.push_back(interface);
  return good;
}

bool PcapReader::read_packet(std::uint32_t type, PcapRecord& record) {
  const std::string place = block_place();
  const std::uint8_t* const body = block_.data();
  const bool simple = type == kSimplePacket;
  const std::uint32_t id = simple ? 0 : type == kOldPacket ? half(body) : number(body);
  if (id >= interfaces_.size()) {
    return fail(place + "is of interface " + std::to_string(id) + ", and " +
                std::to_string(interfaces_.size()) + " are described");
  }
  Interface interface = interfaces_[id];
  const std::size_t data_at = simple ? 4 : 20;
  const std::uint32_t whole = number(body + (simple ? 0 : 16));
  const std::uint32_t kept =
      !simple ? number(body + 12)
              : std::min(whole, interface.snap_bytes == 0 ? whole : interface.snap_bytes);
  const std::size_t room = block_.size() - data_at;
  if (kept > room) {
    return fail(place + "has room for " + std::to_string(room) + " bytes of a packet of " +
                std::to_string(kept));
  }
  // The length of a check sequence may be the packet's own.
  const std::size_t options_at = data_at + (kept + std::size_t{3}) / 4 * 4;
  if (!simple &&
      !for_each_option(options_at, [&](unsigned code, const std::uint8_t* value, unsigned length) {
        if (code != 2 || length != 4) return;
        const std::uint32_t check_bytes = number(value) >> 5 & 0xF;
        if (check_bytes != 0) interface.check_bytes = check_bytes;
      })) {
    return false;
  }
  if (!take_frame(place, interface, kept, whole)) return false;
  record.frame.assign(body + data_at, body + data_at + kept - interface.check_bytes);
  const std::uint64_t ticks = simple ? 0 : std::uint64_t{number(body + 4)} << 32 | number(body + 8);
  record.time_ns = nanoseconds(ticks, interface.resolution) + interface.offset_ns;
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
