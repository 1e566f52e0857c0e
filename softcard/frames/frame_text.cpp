// SPDX-License-Identifier: Apache-2.0
//
// Text, rows of headers with their fields, and bytes: text is split into headers, headers are built
// into bytes, and bytes are taken apart into headers again. What a frame says in an unusual way (a
// length that does not fit, a header cut off) is found by building what was taken apart: where that
// gives other bytes, more is spelled out, down to plain bytes.

#include "softcard/frames/frame_text.h"

#include <algorithm>
#include <cstring>

#include "softcard/base/net_types.h"
#include "softcard/base/text.h"
#include "softcard/frames/checksum.h"
#include "softcard/frames/parser.h"
#include "softcard/frames/wire.h"

namespace softcard {

namespace {

using Bytes = std::vector<std::uint8_t>;

// ---- What headers and fields there are ----------------------------------------------------------

enum class Kind { decimal, hexadecimal, mac, ipv4, ipv6, bytes, operation, flags };

// A field with the value that stands for it when it is left out. Two values are special: kRequired
// must be given, kFits is made to fit by the builder.
struct FieldRow {
  const char* header;
  const char* key;
  Kind kind;
  unsigned bits;  // of a number
  const char* usual;
};
constexpr char kRequired[] = "!";
constexpr char kFits[] = "";

// A tag is a header of its own here, though its fields stand among those of eth.
constexpr FieldRow kFields[] = {
    {"eth", "src", Kind::mac, 48, kRequired},
    {"eth", "dst", Kind::mac, 48, kRequired},
    {"eth", "type", Kind::hexadecimal, 16, kFits},
    {"vlan", "vlan", Kind::decimal, 12, kRequired},
    {"vlan", "prio", Kind::decimal, 3, "0"},
    {"vlan", "dei", Kind::decimal, 1, "0"},
    {"vlan", "tpid", Kind::hexadecimal, 16, "0x8100"},
    {"arp", "op", Kind::operation, 16, "request"},
    {"arp", "sha", Kind::mac, 48, kFits},
    {"arp", "spa", Kind::ipv4, 32, "0.0.0.0"},
    {"arp", "tha", Kind::mac, 48, "00:00:00:00:00:00"},
    {"arp", "tpa", Kind::ipv4, 32, "0.0.0.0"},
    {"ipv4", "src", Kind::ipv4, 32, kRequired},
    {"ipv4", "dst", Kind::ipv4, 32, kRequired},
    {"ipv4", "ttl", Kind::decimal, 8, "64"},
    {"ipv4", "tos", Kind::decimal, 8, "0"},
    {"ipv4", "id", Kind::decimal, 16, "0"},
    {"ipv4", "df", Kind::decimal, 1, "0"},
    {"ipv4", "mf", Kind::decimal, 1, "0"},
    {"ipv4", "frag", Kind::decimal, 16, "0"},
    {"ipv4", "proto", Kind::decimal, 8, kFits},
    {"ipv4", "options", Kind::bytes, 0, ""},
    {"ipv4", "length", Kind::decimal, 16, kFits},
    {"ipv4", "checksum", Kind::hexadecimal, 16, kFits},
    {"ipv6", "src", Kind::ipv6, 128, kRequired},
    {"ipv6", "dst", Kind::ipv6, 128, kRequired},
    {"ipv6", "hops", Kind::decimal, 8, "64"},
    {"ipv6", "tc", Kind::decimal, 8, "0"},
    {"ipv6", "flow", Kind::decimal, 20, "0"},
    {"ipv6", "next", Kind::decimal, 8, kFits},
    {"ipv6", "length", Kind::decimal, 16, kFits},
    {"hopopts", "next", Kind::decimal, 8, kFits},
    {"hopopts", "data", Kind::bytes, 0, "010400000000"},
    {"dstopts", "next", Kind::decimal, 8, kFits},
    {"dstopts", "data", Kind::bytes, 0, "010400000000"},
    {"routing", "next", Kind::decimal, 8, kFits},
    {"routing", "data", Kind::bytes, 0, "000000000000"},
    {"frag", "next", Kind::decimal, 8, kFits},
    {"frag", "offset", Kind::decimal, 16, "0"},
    {"frag", "more", Kind::decimal, 1, "0"},
    {"frag", "id", Kind::decimal, 32, "0"},
    {"tcp", "sport", Kind::decimal, 16, kRequired},
    {"tcp", "dport", Kind::decimal, 16, kRequired},
    {"tcp", "seq", Kind::decimal, 32, "0"},
    {"tcp", "ack", Kind::decimal, 32, "0"},
    {"tcp", "flags", Kind::flags, 8, "A"},
    {"tcp", "window", Kind::decimal, 16, "65535"},
    {"tcp", "options", Kind::bytes, 0, ""},
    {"tcp", "checksum", Kind::hexadecimal, 16, kFits},
    {"udp", "sport", Kind::decimal, 16, kRequired},
    {"udp", "dport", Kind::decimal, 16, kRequired},
    {"udp", "length", Kind::decimal, 16, kFits},
    {"udp", "checksum", Kind::hexadecimal, 16, kFits},
    {"icmp", "type", Kind::decimal, 8, kRequired},
    {"icmp", "code", Kind::decimal, 8, "0"},
    {"icmp", "id", Kind::decimal, 16, "0"},
    {"icmp", "seq", Kind::decimal, 16, "0"},
    {"icmp", "checksum", Kind::hexadecimal, 16, kFits},
    {"icmp6", "type", Kind::decimal, 8, kRequired},
    {"icmp6", "code", Kind::decimal, 8, "0"},
    {"icmp6", "id", Kind::decimal, 16, "0"},
    {"icmp6", "seq", Kind::decimal, 16, "0"},
    {"icmp6", "checksum", Kind::hexadecimal, 16, kFits},
    {"llc", "dsap", Kind::hexadecimal, 8, kRequired},
    {"llc", "ssap", Kind::hexadecimal, 8, kRequired},
    {"llc", "control", Kind::hexadecimal, 8, "0x3"},
    {"llc", "length", Kind::decimal, 16, kFits},
    {"snap", "oui", Kind::hexadecimal, 24, "0x0"},
    {"snap", "proto", Kind::hexadecimal, 16, kRequired},
    {"snap", "length", Kind::decimal, 16, kFits},
    {"payload", "payload", Kind::bytes, 0, kRequired},
    {"trailer", "trailer", Kind::bytes, 0, kRequired},
    {"size", "size", Kind::decimal, 16, kRequired},
};

// The number by which the header in front announces a header: an EtherType, or an IP protocol.
struct HeaderRow {
  const char* name;
  const char* behind;  // the headers that it may follow, each between blanks
  unsigned number;
};
constexpr char kBehindIpv6[] = " ipv6 hopopts dstopts routing frag ";
constexpr char kBehindIp[] = " ipv4 ipv6 hopopts dstopts routing frag ";
constexpr HeaderRow kHeaders[] = {
    {"arp", " eth ", kTypeArp},
    {"ipv4", " eth ", kTypeIpv4},
    {"ipv6", " eth ", kTypeIpv6},
    {"llc", " eth ", 0},
    {"snap", " eth ", 0},
    {"hopopts", kBehindIpv6, 0},
    {"dstopts", kBehindIpv6, 60},
    {"routing", kBehindIpv6, 43},
    {"frag", kBehindIpv6, 44},
    {"tcp", kBehindIp, kProtocolTcp},
    {"udp", kBehindIp, kProtocolUdp},
    {"icmp", " ipv4 ", kProtocolIcmp},
    {"icmp6", kBehindIpv6, kProtocolIcmp6},
};

const FieldRow* find_field(const std::string& header, const std::string& key) {
  for (const FieldRow& row : kFields) {
    if (header == row.header && key == row.key) return &row;
  }
  return nullptr;
}

const HeaderRow* find_header(const std::string& name) {
  for (const HeaderRow& row : kHeaders) {
    if (name == row.name) return &row;
  }
  return nullptr;
}

bool follows(const HeaderRow& row, const std::string& outer) {
  return std::string(row.behind).find(" " + outer + " ") != std::string::npos;
}

// A header with the fields that are spelled out, their values in the one form that print_frame()
// writes.
struct Header {
  std::string name;
  std::vector<std::pair<std::string, std::string>> fields;

  const std::string* find(const std::string& key) const {
    for (const auto& field : fields) {
      if (field.first == key) return &field.second;
    }
    return nullptr;
  }
  // The field's value, or what stands for it.
  std::string value(const std::string& key) const {
    const std::string* own = find(key);
    return own != nullptr ? *own : find_field(name, key)->usual;
  }
  bool given(const std::string& key) const { return find(key) != nullptr; }
};
using HeaderRowList = std::vector<Header>;

// ---- Values -------------------------------------------------------------------------------------

constexpr char kFlagLetters[] = "FSRPAUEC";

bool read_number(const std::string& text, unsigned bits, std::uint64_t& number) {
  return parse_number(text, std::uint64_t{0}, (std::uint64_t{1} << bits) - 1, number);
}

std::string print_flags(std::uint64_t flags) {
  if (flags == 0) return "0";
  std::string text;
  for (unsigned i = 0; i < 8; ++i) {
    if ((flags >> i & 1) != 0) text += kFlagLetters[i];
  }
  return text;
}

std::string print_number(const FieldRow& row, std::uint64_t number) {
  switch (row.kind) {
    case Kind::hexadecimal:
      return hex_text(number);
    case Kind::mac:
      return mac_text(MacAddress::from_number(number));
    case Kind::operation:
      return number == 1 ? "request" : number == 2 ? "reply" : std::to_string(number);
    case Kind::flags:
      return print_flags(number);
    default:
      return std::to_string(number);
  }
}

// Brings a value into the one form that print_frame() writes; false when it is no value of the
// field, and then `wanted` says what one is.
bool normalise_value(const FieldRow& row, std::string& value, std::string& wanted) {
  std::uint64_t number = 0;
  MacAddress mac;
  Ipv4 ipv4 = 0;
  Ipv6Address ipv6;
  Bytes bytes;
  switch (row.kind) {
    case Kind::mac:
      wanted = "an Ethernet address";
      if (!parse_mac(value, mac)) return false;
      value = mac_text(mac);
      return true;
    case Kind::ipv4:
      wanted = "an IPv4 address";
      if (!parse_ipv4(value, ipv4)) return false;
      value = ipv4_text(ipv4);
      return true;
    case Kind::ipv6:
      wanted = "an IPv6 address";
      if (!parse_ipv6(value, ipv6)) return false;
      value = ipv6_text(ipv6);
      return true;
    case Kind::bytes:
      wanted = "an even number of hexadecimal digits";
      if (!parse_bytes(value, bytes)) return false;
      value = bytes_text(bytes.data(), bytes.size());
      return true;
    case Kind::operation:
      wanted = "request, reply or a number";
      if (value == "request") value = "1";
      if (value == "reply") value = "2";
      if (!read_number(value, row.bits, number)) return false;
      break;
    case Kind::flags:
      wanted = std::string("letters of ") + kFlagLetters + " or a number";
      if (!value.empty() && value.find_first_not_of(kFlagLetters) == std::string::npos) {
        for (const char letter : value) {
          number |= 1u << (std::strchr(kFlagLetters, letter) - kFlagLetters);
        }
      } else if (!read_number(value, row.bits, number)) {
        return false;
      }
      break;
    case Kind::decimal:
    case Kind::hexadecimal:
      wanted = "a number from 0 to " + std::to_string((std::uint64_t{1} << row.bits) - 1);
      if (!read_number(value, row.bits, number)) return false;
      break;
  }
  value = print_number(row, number);
  return true;
}

// The value of a complete number, address or set of flags.
std::uint64_t number_of(const Header& header, const std::string& key) {
  const FieldRow& row = *find_field(header.name, key);
  std::string value = header.value(key);
  std::uint64_t number = 0;
  if (row.kind == Kind::mac) {
    MacAddress mac;
    parse_mac(value, mac);
    number = mac.to_number();
  } else if (row.kind == Kind::flags) {
    for (const char letter : value) {
      const char* place = std::strchr(kFlagLetters, letter);
      if (place != nullptr) number |= 1u << (place - kFlagLetters);
    }
  } else {
    if (value == "request") value = "1";
    if (value == "reply") value = "2";
    read_number(value, 64 - 1, number);
  }
  return number;
}

// ---- Text to headers ----------------------------------------------------------------------------

bool fail(std::string& error, std::size_t column, const std::string& message) {
  error = "column " + std::to_string(column) + ": " + message;
  return false;
}

std::string quoted(const std::string& word, const std::string& problem) {
  return "'" + word + "' " + problem;
}

// Splits `text` into headers with complete values. The word untagged in eth becomes its field.
bool read_headers(const std::string& text, HeaderRowList& headers, std::string& error) {
  std::size_t eth = 0;
  for (std::size_t at = 0;;) {
    at = text.find_first_not_of(" \t", at);
    if (at == std::string::npos) break;
    const std::size_t end = std::min(text.find_first_of(" \t", at), text.size());
    const std::size_t column = at + 1;
    const std::string word = text.substr(at, end - at);
    at = end;

    const std::size_t equals = word.find('=');
    if (equals == std::string::npos) {
      if (word == "untagged" && !headers.empty() && headers.back().name == "eth") {
        headers.back().fields.emplace_back(word, "");
        continue;
      }
      if (word != "eth" && find_header(word) == nullptr) {
        return fail(error, column, quoted(word, "is neither a header nor key=value"));
      }
      if ((word == "eth") != headers.empty()) {
        return fail(error, column, "a frame begins with eth, and has it once");
      }
      headers.push_back({word, {}});
      continue;
    }

    if (headers.empty()) return fail(error, column, "a frame begins with eth");
    const std::string key = word.substr(0, equals);
    std::string value = word.substr(equals + 1);
    Header* header = &headers.back();
    const bool in_eth = header->name == "eth" || header->name == "vlan";
    if (key == "payload" || key == "trailer" || key == "size" || (key == "vlan" && in_eth)) {
      headers.push_back({key, {}});
      header = &headers.back();
    } else if (in_eth && find_field(header->name, key) == nullptr) {
      header = &headers[eth];
    }
    const FieldRow* row = find_field(header->name, key);
    if (row == nullptr) {
      return fail(error, column, quoted(key, "is no field of " + header->name));
    }
    if (header->given(key)) return fail(error, column, quoted(key, "is there twice"));
    std::string wanted;
    if (!normalise_value(*row, value, wanted)) {
      return fail(error, column + equals + 1, quoted(value, "is not " + wanted));
    }
    header->fields.emplace_back(key, value);
  }
  if (headers.empty()) return fail(error, 1, "there is no frame");
  return true;
}

// ---- Headers to bytes ---------------------------------------------------------------------------

class Builder {
 public:
  explicit Builder(const HeaderRowList& headers) : headers_(headers) {}

  bool build(Bytes& frame, std::string& error) {
    for (const Header& header : headers_) {
      for (const FieldRow& row : kFields) {
        if (header.name == row.header && row.usual == kRequired && !header.given(row.key)) {
          error = header.name + " needs " + row.key + "=";
          return false;
        }
      }
    }
    for (std::size_t i = 0; i < headers_.size(); ++i) {
      if (!place(i, error)) return false;
    }
    if (frame_.size() > kLongest) {
      error = "the frame is longer than " + std::to_string(kLongest) + " bytes";
      return false;
    }
    frame = std::move(frame_);
    return true;
  }

 private:
  static constexpr std::size_t kLongest = 65535;

  struct Placed {
    const Header* header;
    std::size_t begin;
  };

  bool place(std::size_t i, std::string& error) {
    const Header& header = headers_[i];
    const std::string& name = header.name;
    if (name == "trailer" || name == "size") {
      finish();
      if (name == "trailer") {
        append(bytes_of(header, "trailer"));
        return true;
      }
      const std::size_t size = static_cast<std::size_t>(number_of(header, "size"));
      if (size < frame_.size()) {
        error = "the frame is longer than its size= of " + std::to_string(size) + " bytes";
        return false;
      }
      frame_.resize(size);
      return true;
    }
    if (finished_) {
      error = "nothing but trailer= and size= may stand at the end";
      return false;
    }
    if (name == "payload") {
      append(bytes_of(header, "payload"));
      if (i + 1 == headers_.size()) finish();
      return true;
    }
    if (name == "vlan") return true;  // with eth
    if (name != "eth") {
      const HeaderRow& row = *find_header(name);
      if (!placed_.empty() && !follows(row, placed_.back().header->name)) {
        error = name + " cannot follow " + placed_.back().header->name;
        return false;
      }
      announce(row.number, name == "llc" || name == "snap");
    }
    placed_.push_back({&header, frame_.size()});
    if (name == "eth") {
      put_eth(header);
    } else if (name == "arp") {
      put_arp(header);
    } else if (name == "ipv4") {
      put_ipv4(header);
    } else if (name == "ipv6") {
      put_ipv6(header);
    } else if (name == "hopopts" || name == "dstopts" || name == "routing") {
      put_options(header);
    } else if (name == "frag") {
      put_frag(header);
    } else if (name == "tcp") {
      put_tcp(header);
    } else if (name == "udp") {
      put16(number_of(header, "sport"));
      put16(number_of(header, "dport"));
      put32(0);
    } else if (name == "icmp" || name == "icmp6") {
      put8(number_of(header, "type"));
      put8(number_of(header, "code"));
      put16(0);
      put16(number_of(header, "id"));
      put16(number_of(header, "seq"));
    } else if (name == "llc") {
      put8(number_of(header, "dsap"));
      put8(number_of(header, "ssap"));
      put8(number_of(header, "control"));
    } else if (name == "snap") {
      put16(0xAAAA);
      put8(0x03);
      const std::uint64_t oui = number_of(header, "oui");
      put8(oui >> 16);
      put16(oui);
      put16(number_of(header, "proto"));
    }
    if (i + 1 == headers_.size()) finish();
    return true;
  }

  void put8(std::uint64_t value) { frame_.push_back(static_cast<std::uint8_t>(value)); }
  void put16(std::uint64_t value) {
    put8(value >> 8);
    put8(value);
  }
  void put32(std::uint64_t value) {
    put16(value >> 16);
    put16(value);
  }
  void put48(std::uint64_t value) {
    put16(value >> 32);
    put32(value);
  }
  void append(const Bytes& bytes) { frame_.insert(frame_.end(), bytes.begin(), bytes.end()); }
  void put_ipv4_address(const Header& header, const std::string& key) {
    Ipv4 ip = 0;
    parse_ipv4(header.value(key), ip);
    put32(ip);
  }
  void put_ipv6_address(const Header& header, const std::string& key) {
    Ipv6Address ip;
    parse_ipv6(header.value(key), ip);
    frame_.insert(frame_.end(), ip.bytes.begin(), ip.bytes.end());
  }
  static Bytes bytes_of(const Header& header, const std::string& key) {
    Bytes bytes;
    parse_bytes(header.value(key), bytes);
    return bytes;
  }

  // Says in the header in front what follows, unless that one says something of its own.
  void announce(std::uint64_t number, bool length) {
    const Placed& outer = placed_.back();
    const std::string& name = outer.header->name;
    if (name == "eth") {
      if (!outer.header->given("type") && !length)
        store16(&frame_[frame_.size() - 2], narrow(number));
    } else if (name == "ipv4") {
      if (!outer.header->given("proto")) frame_[outer.begin + 9] = narrow8(number);
    } else if (!outer.header->given("next")) {
      frame_[outer.begin + (name == "ipv6" ? 6 : 0)] = narrow8(number);
    }
  }

  void put_eth(const Header& header) {
    put48(number_of(header, "dst"));
    put48(number_of(header, "src"));
    for (const Header& tag : headers_) {
      if (tag.name != "vlan") continue;
      put16(number_of(tag, "tpid"));
      put16(number_of(tag, "prio") << 13 | number_of(tag, "dei") << 12 | number_of(tag, "vlan"));
    }
    put16(header.given("type") ? number_of(header, "type") : kExperimentalType);
  }

  void put_arp(const Header& header) {
    put16(1);
    put16(kTypeIpv4);
    put16(0x0604);
    put16(number_of(header, "op"));
    put48(number_of(header.given("sha") ? header : headers_.front(),
                    header.given("sha") ? "sha" : "src"));
    put_ipv4_address(header, "spa");
    put48(number_of(header, "tha"));
    put_ipv4_address(header, "tpa");
  }

  void put_ipv4(const Header& header) {
    Bytes options = bytes_of(header, "options");
    options.resize(std::min<std::size_t>((options.size() + 3) / 4 * 4, 40));
    put8(0x45 + options.size() / 4);
    put8(number_of(header, "tos"));
    put16(0);
    put16(number_of(header, "id"));
    put16(number_of(header, "df") << 14 | number_of(header, "mf") << 13 |
          number_of(header, "frag") / 8);
    put8(number_of(header, "ttl"));
    put8(header.given("proto") ? number_of(header, "proto") : kExperimentalProtocol);
    put16(0);
    put_ipv4_address(header, "src");
    put_ipv4_address(header, "dst");
    append(options);
  }

  void put_ipv6(const Header& header) {
    put32(std::uint64_t{6} << 28 | number_of(header, "tc") << 20 | number_of(header, "flow"));
    put16(0);
    put8(header.given("next") ? number_of(header, "next") : kNoNextHeader);
    put8(number_of(header, "hops"));
    put_ipv6_address(header, "src");
    put_ipv6_address(header, "dst");
  }

  void put_options(const Header& header) {
    Bytes data = bytes_of(header, "data");
    data.resize(std::max<std::size_t>(6, (data.size() + 2 + 7) / 8 * 8 - 2));
    put8(header.given("next") ? number_of(header, "next") : kNoNextHeader);
    put8((data.size() + 2) / 8 - 1);
    append(data);
  }

  void put_frag(const Header& header) {
    put8(header.given("next") ? number_of(header, "next") : kNoNextHeader);
    put8(0);
    put16((number_of(header, "offset") & 0xFFF8) | number_of(header, "more"));
    put32(number_of(header, "id"));
  }

  void put_tcp(const Header& header) {
    Bytes options = bytes_of(header, "options");
    options.resize(std::min<std::size_t>((options.size() + 3) / 4 * 4, 40));
    put16(number_of(header, "sport"));
    put16(number_of(header, "dport"));
    put32(number_of(header, "seq"));
    put32(number_of(header, "ack"));
    put8((5 + options.size() / 4) << 4);
    put8(number_of(header, "flags"));
    put16(number_of(header, "window"));
    put32(0);
    append(options);
  }

  // Writes lengths and checksums, from the inside out.
  void finish() {
    if (finished_) return;
    finished_ = true;
    for (auto at = placed_.rbegin(); at != placed_.rend(); ++at) {
      const Header& header = *at->header;
      std::uint8_t* const begin = frame_.data() + at->begin;
      const std::size_t bytes = frame_.size() - at->begin;
      const auto length = [&](std::uint8_t* field, std::size_t fitting) {
        store16(field, narrow(header.given("length") ? number_of(header, "length") : fitting));
      };
      const auto sum = [&](std::uint8_t* field, std::uint64_t first, std::size_t covered) {
        const bool given = header.given("checksum");
        std::uint16_t value =
            given ? narrow(number_of(header, "checksum")) : checksum(begin, covered, first);
        if (!given && header.name == "udp" && value == 0) value = 0xFFFF;
        store16(field, value);
      };
      if (header.name == "ipv4") {
        length(begin + 2, bytes);
        sum(begin + 10, 0, (begin[0] & 0xFu) * std::size_t{4});
      } else if (header.name == "ipv6") {
        length(begin + 4, bytes - 40);
      } else if (header.name == "udp") {
        length(begin + 4, bytes);
        sum(begin + 6, pseudo_header(kProtocolUdp, bytes), bytes);
      } else if (header.name == "tcp") {
        sum(begin + 16, pseudo_header(kProtocolTcp, bytes), bytes);
      } else if (header.name == "icmp") {
        sum(begin + 2, 0, bytes);
      } else if (header.name == "icmp6") {
        sum(begin + 2, pseudo_header(kProtocolIcmp6, bytes), bytes);
      } else if (header.name == "llc" || header.name == "snap") {
        if (!headers_.front().given("type")) length(begin - 2, bytes);
      }
    }
  }

  std::uint64_t pseudo_header(std::uint8_t protocol, std::size_t bytes) const {
    for (const Placed& placed : placed_) {
      const std::uint8_t* begin = frame_.data() + placed.begin;
      if (placed.header->name == "ipv4") return sum_words(begin + 12, 8) + protocol + bytes;
      if (placed.header->name == "ipv6") return sum_words(begin + 8, 32) + protocol + bytes;
    }
    return 0;
  }

  static std::uint16_t narrow(std::uint64_t value) { return static_cast<std::uint16_t>(value); }
  static std::uint8_t narrow8(std::uint64_t value) { return static_cast<std::uint8_t>(value); }

  // The text of a header that has no name.
  static constexpr std::uint64_t kExperimentalType = 0x88B5;
  static constexpr std::uint64_t kExperimentalProtocol = 253;
  static constexpr std::uint64_t kNoNextHeader = 59;

  const HeaderRowList& headers_;
  std::vector<Placed> placed_;
  Bytes frame_;
  bool finished_ = false;
};

// ---- Bytes to headers ---------------------------------------------------------------------------

// How much of a frame is taken apart.
enum class Depth { everything, ethernet };

class Dissector {
 public:
  Dissector(const std::uint8_t* data, std::size_t bytes) : data_(data), end_(bytes), all_(bytes) {}

  // Every field of every header, those that fit too. REQUIRES: at least an Ethernet header.
  HeaderRowList dissect(Depth depth) {
    add("eth");
    mac("src", data_ + 6);
    mac("dst", data_);
    std::size_t at = 12;
    while (end_ - at >= kTagBytes + 2 &&
           (load16(data_ + at) == kTypeCustomerTag || load16(data_ + at) == kTypeServiceTag)) {
      const std::uint16_t control = load16(data_ + at + 2);
      add("vlan");
      number("vlan", control & 0xFFF);
      number("prio", control >> 13);
      number("dei", control >> 12 & 1);
      number("tpid", load16(data_ + at));
      at += kTagBytes;
    }
    const std::uint16_t type = load16(data_ + at);
    headers_.front().fields.emplace_back("type", print_number(*find_field("eth", "type"), type));
    at += 2;
    if (depth == Depth::everything) at = network(type, at);
    if (at < end_) {
      add("payload");
      bytes("payload", data_ + at, end_ - at);
    }
    rest();
    return std::move(headers_);
  }

 private:
  void add(const char* name) { headers_.push_back({name, {}}); }
  void number(const char* key, std::uint64_t value) {
    Header& header = headers_.back();
    header.fields.emplace_back(key, print_number(*find_field(header.name, key), value));
  }
  void mac(const char* key, const std::uint8_t* at) { number(key, load48(at)); }
  void bytes(const char* key, const std::uint8_t* at, std::size_t count) {
    headers_.back().fields.emplace_back(key, bytes_text(at, count));
  }
  void text(const char* key, const std::string& value) {
    headers_.back().fields.emplace_back(key, value);
  }

  std::size_t network(std::uint16_t type, std::size_t at) {
    const std::uint8_t* p = data_ + at;
    const std::size_t left = end_ - at;
    if (type < kFirstEtherType && type <= left && type >= 3) {
      end_ = at + type;
      if (type >= 8 && load16(p) == 0xAAAA && p[2] == 3) {
        add("snap");
        number("oui", load32(p + 2) & 0xFFFFFF);
        number("proto", load16(p + 6));
        number("length", type);
        return at + 8;
      }
      add("llc");
      number("dsap", p[0]);
      number("ssap", p[1]);
      number("control", p[2]);
      number("length", type);
      return at + 3;
    }
    if (type == kTypeArp && left >= 28 && load32(p) == 0x00010800 && load16(p + 4) == 0x0604) {
      add("arp");
      number("op", load16(p + 6));
      mac("sha", p + 8);
      text("spa", ipv4_text(load32(p + 14)));
      mac("tha", p + 18);
      text("tpa", ipv4_text(load32(p + 24)));
      end_ = at + 28;
      return at + 28;
    }
    if (type == kTypeIpv4 && left >= 20 && p[0] >> 4 == 4) {
      const std::size_t header_bytes = (p[0] & 0xFu) * std::size_t{4};
      const std::size_t total = load16(p + 2);
      if (header_bytes < 20 || total < header_bytes || total > left) return at;
      end_ = at + total;
      add("ipv4");
      text("src", ipv4_text(load32(p + 12)));
      text("dst", ipv4_text(load32(p + 16)));
      number("ttl", p[8]);
      number("tos", p[1]);
      number("id", load16(p + 4));
      number("df", p[6] >> 6 & 1);
      number("mf", p[6] >> 5 & 1);
      const unsigned offset = (load16(p + 6) & 0x1FFFu) * 8;
      number("frag", offset);
      number("proto", p[9]);
      bytes("options", p + 20, header_bytes - 20);
      number("length", total);
      number("checksum", load16(p + 10));
      at += header_bytes;
      return offset == 0 ? transport(p[9], at) : at;
    }
    if (type == kTypeIpv6 && left >= 40 && p[0] >> 4 == 6) {
      const std::size_t total = std::size_t{40} + load16(p + 4);
      if (total > left) return at;
      end_ = at + total;
      add("ipv6");
      text("src", ipv6_text(Ipv6Address::from_bytes(p + 8)));
      text("dst", ipv6_text(Ipv6Address::from_bytes(p + 24)));
      number("hops", p[7]);
      number("tc", load32(p) >> 20 & 0xFF);
      number("flow", load32(p) & 0xFFFFF);
      number("next", p[6]);
      number("length", total - 40);
      return extensions(p[6], at + 40);
    }
    return at;
  }

  std::size_t extensions(std::uint8_t next, std::size_t at) {
    while (end_ - at >= 8) {
      const std::uint8_t* p = data_ + at;
      const char* name = next == 0    ? "hopopts"
                         : next == 60 ? "dstopts"
                         : next == 43 ? "routing"
                                      : "";
      if (next == 44) {
        add("frag");
        number("next", p[0]);
        number("offset", load16(p + 2) & 0xFFF8);
        number("more", p[3] & 1);
        number("id", load32(p + 4));
        next = p[0];
        at += 8;
        if ((load16(p + 2) & 0xFFF8) != 0) return at;
        continue;
      }
      const std::size_t header_bytes = (p[1] + std::size_t{1}) * 8;
      if (*name == '\0' || header_bytes > end_ - at) break;
      add(name);
      number("next", p[0]);
      bytes("data", p + 2, header_bytes - 2);
      next = p[0];
      at += header_bytes;
    }
    return transport(next, at);
  }

  std::size_t transport(std::uint8_t protocol, std::size_t at) {
    const std::uint8_t* p = data_ + at;
    const std::size_t left = end_ - at;
    const bool v6 = find_header(headers_.back().name) != nullptr && headers_.back().name != "ipv4";
    if (protocol == kProtocolUdp && left >= 8) {
      add("udp");
      number("sport", load16(p));
      number("dport", load16(p + 2));
      number("length", load16(p + 4));
      number("checksum", load16(p + 6));
      return at + 8;
    }
    if (protocol == kProtocolTcp && left >= 20) {
      const std::size_t header_bytes = (p[12] >> 4) * std::size_t{4};
      if (header_bytes < 20 || header_bytes > left) return at;
      add("tcp");
      number("sport", load16(p));
      number("dport", load16(p + 2));
      number("seq", load32(p + 4));
      number("ack", load32(p + 8));
      number("flags", p[13]);
      number("window", load16(p + 14));
      bytes("options", p + 20, header_bytes - 20);
      number("checksum", load16(p + 16));
      return at + header_bytes;
    }
    if (left >= 8 && protocol == (v6 ? kProtocolIcmp6 : kProtocolIcmp)) {
      add(v6 ? "icmp6" : "icmp");
      number("type", p[0]);
      number("code", p[1]);
      number("id", load16(p + 4));
      number("seq", load16(p + 6));
      number("checksum", load16(p + 2));
      return at + 8;
    }
    return at;
  }

  // The bytes behind the end of the packet by its own length: padding, or something else.
  void rest() {
    const bool zeros =
        std::all_of(data_ + end_, data_ + all_, [](std::uint8_t b) { return b == 0; });
    if (!zeros) {
      add("trailer");
      bytes("trailer", data_ + end_, all_ - end_);
    }
    add("size");
    number("size", all_);
  }

  const std::uint8_t* data_;
  std::size_t end_;  // of the packet, by its own length
  std::size_t all_;  // of the frame
  HeaderRowList headers_;
};

// The frame with everything spelled out; empty when it is no Ethernet frame.
HeaderRowList dissect(const std::uint8_t* data, std::size_t bytes, Depth depth) {
  if (bytes < kEthernetBytes) return {};
  return Dissector(data, bytes).dissect(depth);
}

bool builds(const HeaderRowList& headers, const std::uint8_t* data, std::size_t bytes) {
  Bytes built;
  std::string error;
  return Builder(headers).build(built, error) && built.size() == bytes &&
         std::equal(built.begin(), built.end(), data);
}

// Leaves out every field without which the frame is the same, and that is not worth seeing anyway.
void shorten(HeaderRowList& headers, const std::uint8_t* data, std::size_t bytes) {
  for (std::size_t i = headers.size(); i-- > 0;) {
    Header& header = headers[i];
    if (header.name == "size") {
      const Header size = header;
      headers.erase(headers.begin() + static_cast<std::ptrdiff_t>(i));
      if (!builds(headers, data, bytes)) {
        headers.insert(headers.begin() + static_cast<std::ptrdiff_t>(i), size);
      }
      continue;
    }
    for (std::size_t k = header.fields.size(); k-- > 0;) {
      const auto field = header.fields[k];
      const FieldRow& row = *find_field(header.name, field.first);
      const bool seen = row.usual == kRequired || field.first == "ttl" || field.first == "hops" ||
                        (header.name == "vlan" && field.first == "prio" && field.second != "0") ||
                        field.first == "op";
      if (seen) continue;
      header.fields.erase(header.fields.begin() + static_cast<std::ptrdiff_t>(k));
      if (!builds(headers, data, bytes)) {
        header.fields.insert(header.fields.begin() + static_cast<std::ptrdiff_t>(k), field);
      }
    }
  }
}

// Whether `there`, a frame taken apart, has what a pattern asks for.
bool matches(const HeaderRowList& wanted, const HeaderRowList& there) {
  const auto shows = [&](const Header& header, const Header& want) {
    return header.name == want.name &&
           std::all_of(want.fields.begin(), want.fields.end(), [&](const auto& field) {
             if (field.first == "untagged") {
               return std::none_of(there.begin(), there.end(),
                                   [](const Header& h) { return h.name == "vlan"; });
             }
             const std::string* value = header.find(field.first);
             return value != nullptr && *value == field.second;
           });
  };
  // Headers stand in one order only, so the first one that fits is as good as any.
  auto at = there.begin();
  for (const Header& want : wanted) {
    at = std::find_if(at, there.end(), [&](const Header& header) { return shows(header, want); });
    if (at == there.end()) return false;
    ++at;
  }
  return true;
}

bool is_hex_line(const std::string& text, Bytes& bytes) {
  std::string digits;
  for (const char c : text) {
    if (std::strchr("0123456789abcdefABCDEF", c) != nullptr && c != '\0') {
      digits += c;
    } else if (c != ' ' && c != '\t' && c != ':') {
      return false;
    }
  }
  return !digits.empty() && parse_bytes(digits, bytes);
}

}  // namespace

// ---- The three functions ------------------------------------------------------------------------

bool parse_frame(const std::string& text, Bytes& frame, std::string& error) {
  if (is_hex_line(text, frame)) return true;
  HeaderRowList headers;
  if (!read_headers(text, headers, error)) return false;
  for (const Header& header : headers) {
    if (!header.given("untagged")) continue;
    error = "untagged asks for something: it belongs into a pattern";
    return false;
  }
  return Builder(headers).build(frame, error);
}

std::string print_frame(const std::uint8_t* data, std::size_t bytes) {
  for (const Depth depth : {Depth::everything, Depth::ethernet}) {
    HeaderRowList headers = dissect(data, bytes, depth);
    if (headers.empty() || !builds(headers, data, bytes)) continue;
    shorten(headers, data, bytes);
    std::string line;
    for (const Header& header : headers) {
      const bool word = header.name == "eth" || find_header(header.name) != nullptr;
      if (word) line += (line.empty() ? "" : " ") + header.name;
      for (const auto& field : header.fields) line += " " + field.first + "=" + field.second;
    }
    return line;
  }
  return bytes_text(data, bytes);
}

bool frame_matches(const std::string& pattern, const std::uint8_t* data, std::size_t bytes,
                   std::string& error) {
  error.clear();
  Bytes exact;
  if (is_hex_line(pattern, exact)) {
    return exact.size() == bytes && std::equal(exact.begin(), exact.end(), data);
  }
  HeaderRowList wanted;
  if (!read_headers(pattern, wanted, error)) return false;
  // A frame may be printed in either way, and what is printed matches.
  return matches(wanted, dissect(data, bytes, Depth::everything)) ||
         matches(wanted, dissect(data, bytes, Depth::ethernet));
}

}  // namespace softcard
