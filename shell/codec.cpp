// SPDX-License-Identifier: Apache-2.0
#include "codec.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <limits>

#include "softcard/base/address_plan.h"
#include "softcard/base/limits.h"
#include "softcard/base/text.h"
#include "softcard/frames/frame_text.h"

namespace shell {

namespace {

constexpr unsigned kVlans = softcard::kVlanCount;
// In one list: what a range or a row of ranges may hold is bounded, so that a slip of the pen does
// not make millions.
constexpr std::size_t kMostPorts = 65536;

std::uint32_t parse_word(const std::string& text, const std::string& what) {
  return static_cast<std::uint32_t>(parse_number(text, what, 0, UINT32_MAX));
}

std::uint16_t parse_short(const std::string& text, const std::string& what) {
  return static_cast<std::uint16_t>(parse_number(text, what, 0, UINT16_MAX));
}

// `1-3,7` as bits of a VLAN bitmap.
void parse_bitmap(const std::string& text, const std::string& what, unsigned char* bitmap) {
  if (text == "-") return;
  for (const std::string& range : split(text, ',')) {
    const std::vector<std::string> ends = split(range, '-');
    if (ends.size() > 2) {
      throw Error(joined_pieces(what, ": '", range, "' is no VLAN and no range of VLANs"));
    }
    const auto first = parse_number(ends.front(), what, 0, kVlans - 1);
    const auto last = parse_number(ends.back(), what, first, kVlans - 1);
    for (auto vlan = static_cast<unsigned>(first); vlan <= last; ++vlan) {
      bitmap[vlan / 8] = static_cast<unsigned char>(bitmap[vlan / 8] | 1U << vlan % 8);
    }
  }
}

std::string bitmap_text(const unsigned char* bitmap) {
  std::vector<std::string> ranges;
  const auto has = [&](unsigned vlan) {
    return vlan < kVlans && (bitmap[vlan / 8] >> vlan % 8 & 1) != 0;
  };
  for (unsigned vlan = 0; vlan < kVlans; ++vlan) {
    if (!has(vlan)) continue;
    const unsigned first = vlan;
    while (has(vlan + 1)) ++vlan;
    ranges.push_back(std::to_string(first) + (vlan > first ? "-" + std::to_string(vlan) : ""));
  }
  return ranges.empty() ? "-" : joined(ranges, ",");
}

void parse_ip6(const std::string& text, const std::string& what, unsigned char* ip6) {
  softcard::Ipv6Address ip;
  if (!softcard::parse_ipv6(text, ip)) {
    throw Error(what + ": '" + text + "' is no IPv6 address");
  }
  std::copy(ip.bytes.begin(), ip.bytes.end(), ip6);
}

// An IPv6 address, or /0 to /128.
void parse_ip6_mask(const std::string& text, const std::string& what, unsigned char* mask) {
  if (text.empty() || text[0] != '/') return parse_ip6(text, what, mask);
  const auto length = static_cast<unsigned>(parse_number(text.substr(1), what, 0, 128));
  for (unsigned bit = 0; bit < length; ++bit) {
    mask[bit / 8] = static_cast<unsigned char>(mask[bit / 8] | 0x80U >> bit % 8);
  }
}

std::string ip6_mask_text(const unsigned char* mask) {
  unsigned length = 0;
  while (length < 128 && (mask[length / 8] >> (7 - length % 8) & 1) != 0) ++length;
  for (unsigned bit = length; bit < 128; ++bit) {
    if ((mask[bit / 8] >> (7 - bit % 8) & 1) != 0) return ip6_text(mask);
  }
  return "/" + std::to_string(length);
}

// The length of a mask of leading ones, or -1.
int leading_ones(std::uint32_t mask) {
  int length = 0;
  while (length < 32 && (mask << length & 0x80000000U) != 0) ++length;
  return length == 32 || mask << length == 0 ? length : -1;
}

std::string ip4_mask_text(std::uint32_t mask) {
  const int length = leading_ones(mask);
  return length < 0 ? ip4_text(mask) : "/" + std::to_string(length);
}

// Reads `address/mask` where the mask may be left out.
void parse_ip4_subnet(const std::string& text, const std::string& what, unsigned int& ip,
                      unsigned int& mask) {
  const std::size_t slash = text.find('/');
  ip = parse_ip4(text.substr(0, slash), what);
  mask = UINT32_MAX;
  if (slash == std::string::npos) return;
  // Behind the slash stands a length, or a mask written like an address.
  const std::string behind = text.substr(slash + 1);
  mask = parse_ip4_mask(behind.find('.') == std::string::npos ? "/" + behind : behind, what);
}

// ---- Flows --------------------------------------------------------------------------------------

// A field of a flow: the word for it, its bit, how it is read and printed.
struct FlowField {
  const char* name;
  unsigned bit;
  void (*read)(const std::string& text, const std::string& what, ctype_of_flow_s& flow);
  std::string (*text)(const ctype_of_flow_s& flow);
};

template <unsigned short ctype_of_flow_s::*Member>
void read_short(const std::string& text, const std::string& what, ctype_of_flow_s& flow) {
  flow.*Member = parse_short(text, what);
}
template <unsigned short ctype_of_flow_s::*Member>
std::string short_text(const ctype_of_flow_s& flow) {
  return std::to_string(flow.*Member);
}
template <unsigned char (ctype_of_flow_s::*Member)[6]>
void read_mac(const std::string& text, const std::string& what, ctype_of_flow_s& flow) {
  std::memcpy(flow.*Member, parse_mac(text, what).data(), 6);
}
template <unsigned char (ctype_of_flow_s::*Member)[6]>
std::string show_mac(const ctype_of_flow_s& flow) {
  return mac_text(flow.*Member);
}
template <unsigned int ctype_of_flow_s::*Ip, unsigned int ctype_of_flow_s::*Mask>
void read_subnet(const std::string& text, const std::string& what, ctype_of_flow_s& flow) {
  parse_ip4_subnet(text, what, flow.*Ip, flow.*Mask);
}
template <unsigned int ctype_of_flow_s::*Ip, unsigned int ctype_of_flow_s::*Mask>
std::string show_subnet(const ctype_of_flow_s& flow) {
  return ip4_subnet_text(flow.*Ip, flow.*Mask);
}

using Flow = ctype_of_flow_s;

const std::vector<FlowField>& flow_fields() {
  static const std::vector<FlowField> fields = {
      {"in_port", OF_MATCH_IN_PORT,
       [](const std::string& text, const std::string& what, Flow& flow) {
         const Usp port = parse_port(text, what);
         flow.in_port = {port.unit(), port.slot(), port.port()};
       },
       [](const Flow& flow) {
         return port_value({flow.in_port.unit, flow.in_port.slot, flow.in_port.port}).text;
       }},
      {"src_mac", OF_MATCH_SRC_MAC, read_mac<&Flow::src_mac>, show_mac<&Flow::src_mac>},
      {"dst_mac", OF_MATCH_DST_MAC, read_mac<&Flow::dst_mac>, show_mac<&Flow::dst_mac>},
      {"vlan_id", OF_MATCH_VLAN_ID, read_short<&Flow::vlan_id>, short_text<&Flow::vlan_id>},
      {"vlan_priority", OF_MATCH_VLAN_PRIORITY, read_short<&Flow::vlan_priority>,
       short_text<&Flow::vlan_priority>},
      {"ether_type", OF_MATCH_ETHER_TYPE, read_short<&Flow::ether_type>,
       [](const Flow& flow) { return softcard::hex_text(flow.ether_type); }},
      {"src_ip", OF_MATCH_SRC_IP, read_subnet<&Flow::src_ip, &Flow::src_ip_mask>,
       show_subnet<&Flow::src_ip, &Flow::src_ip_mask>},
      {"dst_ip", OF_MATCH_DST_IP, read_subnet<&Flow::dst_ip, &Flow::dst_ip_mask>,
       show_subnet<&Flow::dst_ip, &Flow::dst_ip_mask>},
      {"src_l4_port", OF_MATCH_SRC_L4_PORT, read_short<&Flow::src_l4_port>,
       short_text<&Flow::src_l4_port>},
      {"dst_l4_port", OF_MATCH_DST_L4_PORT, read_short<&Flow::dst_l4_port>,
       short_text<&Flow::dst_l4_port>},
      {"ip_protocol", OF_MATCH_IP_PROTOCOL, read_short<&Flow::ip_protocol>,
       short_text<&Flow::ip_protocol>},
      {"tos", OF_MATCH_TOS, read_short<&Flow::tos>, short_text<&Flow::tos>},
  };
  return fields;
}

const FlowField* find_flow_field(const std::string& word) {
  for (const FlowField& field : flow_fields()) {
    if (word.compare(0, std::strlen(field.name) + 1, std::string(field.name) + '=') == 0) {
      return &field;
    }
  }
  return nullptr;
}

bool sets_flow_flags(const std::string& word) { return word.compare(0, 6, "flags=") == 0; }

void read_flow_word(const std::string& word, const std::string& what, ctype_of_flow_s& flow) {
  if (word.empty() || word == "any") return;
  if (const FlowField* field = find_flow_field(word)) {
    const std::string name = field->name;
    field->read(word.substr(name.size() + 1), what + ": " + name, flow);
    flow.flags |= field->bit;
    return;
  }
  if (sets_flow_flags(word)) {
    flow.flags = parse_word(word.substr(6), what + ": flags");
    return;
  }
  std::vector<std::string> names;
  for (const FlowField& field : flow_fields()) names.emplace_back(field.name);
  throw Error(what + ": '" + word + "' is neither any nor one of " + joined(names, "=, ") +
              "=, flags=");
}

}  // namespace

// ---- Text of the values that several commands read ----------------------------------------------

Usp parse_port(const std::string& text, const std::string& what) {
  Usp port(0, 0, 0);
  std::string error;
  if (!softcard::parse_usp(text, port, error)) throw Error(what + ": " + error);
  return port;
}

Value port_value(const Usp& port) { return text_value(softcard::AddressPlan::text(port)); }

std::list<Usp> parse_ports(const std::string& text, const std::string& what) {
  std::list<Usp> ports;
  if (text == "-") return ports;
  for (const std::string& item : split(text, ',')) {
    const std::size_t dash = item.find('-');
    const Usp first = parse_port(item.substr(0, dash), what);
    ports.push_back(first);
    if (ports.size() > kMostPorts) {
      throw Error(what + ": more than " + std::to_string(kMostPorts) + " ports");
    }
    if (dash == std::string::npos) continue;
    const auto last =
        parse_number(item.substr(dash + 1), what, first.port(),
                     std::min<std::int64_t>(UINT32_MAX, first.port() + std::int64_t{kVlans}));
    for (auto port = std::int64_t{first.port()} + 1; port <= last; ++port) {
      ports.emplace_back(first.unit(), first.slot(), static_cast<unsigned>(port));
    }
  }
  return ports;
}

std::array<unsigned char, 6> parse_mac(const std::string& text, const std::string& what) {
  softcard::MacAddress mac;
  if (!softcard::parse_mac(text, mac)) {
    throw Error(what + ": '" + text + "' is no MAC address such as 02:00:5e:00:00:01");
  }
  return mac.bytes;
}

std::string mac_text(const unsigned char* mac) {
  return softcard::mac_text(softcard::MacAddress::from_bytes(mac));
}

std::uint32_t parse_ip4(const std::string& text, const std::string& what) {
  std::int64_t number = 0;
  if (read_number(text, 0, UINT32_MAX, number)) return static_cast<std::uint32_t>(number);
  softcard::Ipv4 ip = 0;
  if (!softcard::parse_ipv4(text, ip)) {
    throw Error(what + ": '" + text + "' is no IPv4 address and no number");
  }
  return ip;
}

std::string ip4_text(std::uint32_t ip) { return softcard::ipv4_text(ip); }

std::uint32_t parse_ip4_mask(const std::string& text, const std::string& what) {
  if (text.empty() || text[0] != '/') return parse_ip4(text, what);
  const auto length = parse_number(text.substr(1), what, 0, 32);
  return length == 0 ? 0 : UINT32_MAX << (32 - length);
}

std::string ip4_subnet_text(std::uint32_t ip, std::uint32_t mask) {
  const int length = leading_ones(mask);
  if (length == 32) return ip4_text(ip);
  return ip4_text(ip) + '/' + (length < 0 ? ip4_text(mask) : std::to_string(length));
}

std::string ip6_text(const unsigned char* ip6) {
  return softcard::ipv6_text(softcard::Ipv6Address::from_bytes(ip6));
}

bool parse_flag(const std::string& text, const std::string& what) {
  if (text == "on" || text == "true" || text == "1") return true;
  if (text == "off" || text == "false" || text == "0") return false;
  throw Error(what + ": '" + text + "' is neither on nor off");
}

std::string flow_text(const ctype_of_flow_s& flow) {
  std::vector<std::string> words;
  unsigned named = 0;
  for (const FlowField& field : flow_fields()) {
    if ((flow.flags & field.bit) == 0) continue;
    words.push_back(std::string(field.name) + '=' + field.text(flow));
    named |= field.bit;
  }
  if (named != flow.flags) words.push_back("flags=" + softcard::hex_text(flow.flags));
  return words.empty() ? "any" : joined(words, " ");
}

std::string udf_text(const ctype_of_flow_qualify_udf_s& udf) {
  if (udf.base == OF_UDF_NONE) return "-";
  return name_value(udf_base_names(), udf.base).text + '+' + std::to_string(udf.offset) + ':' +
         softcard::hex_text(udf.value) + '/' + softcard::hex_text(udf.mask);
}

std::string action_text(of_action_t kind, const of_action_param_s& param) {
  const std::uint32_t word = param.word[0];
  switch (kind) {
    case OF_ACTION_OUTPUT:
      if (word >= OF_PORT_FIRST_PHYSICAL && word - OF_PORT_FIRST_PHYSICAL < 65536) {
        return port_value(Usp(1, 1, word - OF_PORT_FIRST_PHYSICAL)).text;
      }
      return name_value(flow_port_names(), word).text;
    case OF_ACTION_STRIP_VLAN:
      return "";
    case OF_ACTION_SET_SRC_MAC:
    case OF_ACTION_SET_DST_MAC: {
      const std::uint64_t number = std::uint64_t{word} << 16 | (param.word[1] & 0xffff);
      return softcard::mac_text(softcard::MacAddress::from_number(number));
    }
    case OF_ACTION_SET_SRC_IP:
    case OF_ACTION_SET_DST_IP:
      return ip4_text(word);
    default:
      return std::to_string(word);
  }
}

// ---- Codecs -------------------------------------------------------------------------------------

unsigned int Codec<unsigned int>::read(const Parameter& parameter, Call& call) {
  const std::string text = call.arguments.take(parameter.name);
  if (parameter.kind == "ip") return parse_ip4(text, parameter.name);
  if (parameter.kind == "mask") return parse_ip4_mask(text, parameter.name);
  if (parameter.kind == "mode") return parse_name(forward_mode_names(), text, parameter.name);
  return parse_word(text, parameter.name);
}

Value Codec<unsigned int>::show(const Parameter& parameter, unsigned int value) {
  if (parameter.kind == "ip") return text_value(ip4_text(value));
  if (parameter.kind == "mask") return text_value(ip4_mask_text(value));
  if (parameter.kind == "mode") return name_value(forward_mode_names(), value);
  return number_value(std::uint64_t{value});
}

unsigned short Codec<unsigned short>::read(const Parameter& parameter, Call& call) {
  return parse_short(call.arguments.take(parameter.name), parameter.name);
}

Value Codec<unsigned short>::show(const Parameter& parameter, unsigned short value) {
  if (parameter.kind == "hex") return {softcard::hex_text(value), std::to_string(value)};
  return number_value(std::uint64_t{value});
}

int Codec<int>::read(const Parameter& parameter, Call& call) {
  const std::string text = call.arguments.take(parameter.name);
  std::int64_t number = 0;
  if (parameter.kind == "flag" && !read_number(text, INT32_MIN, INT32_MAX, number)) {
    return parse_flag(text, parameter.name) ? 1 : 0;
  }
  return static_cast<int>(parse_number(text, parameter.name, INT32_MIN, INT32_MAX));
}

Value Codec<int>::show(const Parameter& parameter, int value) {
  if (parameter.kind == "flag" && (value == 0 || value == 1)) return flag_value(value != 0);
  return number_value(std::int64_t{value});
}

bool Codec<bool>::read(const Parameter& parameter, Call& call) {
  return parse_flag(call.arguments.take(parameter.name), parameter.name);
}

Value Codec<std::list<Usp>>::show(const Parameter&, const std::list<Usp>& value) {
  std::vector<Value> items;
  for (const Usp& port : value) items.push_back(port_value(port));
  return list_value(items);
}

ctype_of_flow_s Codec<ctype_of_flow_s>::read(const Parameter& parameter, Call& call) {
  ctype_of_flow_s flow{};
  for (const std::string& word : split(call.arguments.take(parameter.name), ' ')) {
    read_flow_word(word, parameter.name, flow);
  }
  while (!call.arguments.empty() && (find_flow_field(call.arguments.peek()) != nullptr ||
                                     sets_flow_flags(call.arguments.peek()))) {
    read_flow_word(call.arguments.take(parameter.name), parameter.name, flow);
  }
  return flow;
}

of_flow_s Codec<of_flow_s>::read(const Parameter& parameter, Call& call) {
  const ctype_of_flow_s from = Codec<ctype_of_flow_s>::read(parameter, call);
  of_flow_s flow;
  flow.in_port = Usp(from.in_port.unit, from.in_port.slot, from.in_port.port);
  flow.match = of_match_s();
  std::memcpy(flow.match.src_mac, from.src_mac, sizeof from.src_mac);
  std::memcpy(flow.match.dst_mac, from.dst_mac, sizeof from.dst_mac);
  flow.match.vlan_id = from.vlan_id;
  flow.match.vlan_priority = from.vlan_priority;
  flow.match.ether_type = from.ether_type;
  flow.match.src_ip = from.src_ip;
  flow.match.dst_ip = from.dst_ip;
  flow.match.src_ip_mask = from.src_ip_mask;
  flow.match.dst_ip_mask = from.dst_ip_mask;
  flow.match.src_l4_port = from.src_l4_port;
  flow.match.dst_l4_port = from.dst_l4_port;
  flow.match.ip_protocol = from.ip_protocol;
  flow.match.tos = from.tos;
  flow.match.flags = from.flags;
  return flow;
}

Value Codec<of_flow_s>::show(const Parameter& parameter, const of_flow_s& value) {
  ctype_of_flow_s flow{};
  flow.in_port = {value.in_port.unit(), value.in_port.slot(), value.in_port.port()};
  std::memcpy(flow.src_mac, value.match.src_mac, sizeof flow.src_mac);
  std::memcpy(flow.dst_mac, value.match.dst_mac, sizeof flow.dst_mac);
  flow.vlan_id = value.match.vlan_id;
  flow.vlan_priority = value.match.vlan_priority;
  flow.ether_type = value.match.ether_type;
  flow.src_ip = value.match.src_ip;
  flow.dst_ip = value.match.dst_ip;
  flow.src_ip_mask = value.match.src_ip_mask;
  flow.dst_ip_mask = value.match.dst_ip_mask;
  flow.src_l4_port = value.match.src_l4_port;
  flow.dst_l4_port = value.match.dst_l4_port;
  flow.ip_protocol = value.match.ip_protocol;
  flow.tos = value.match.tos;
  flow.flags = value.match.flags;
  return Codec<ctype_of_flow_s>::show(parameter, flow);
}

ctype_of_flow_qualify_udf_s Codec<ctype_of_flow_qualify_udf_s>::read(const Parameter& parameter,
                                                                     Call& call) {
  ctype_of_flow_qualify_udf_s udf{};
  if (call.arguments.empty()) return udf;
  const std::string text = call.arguments.take(parameter.name);
  if (text == "-") return udf;
  const std::size_t plus = text.find('+');
  const std::size_t colon = text.find(':');
  const std::size_t slash = text.find('/');
  if (plus == std::string::npos || colon == std::string::npos || colon < plus) {
    throw Error(parameter.name + ": '" + text +
                "' is neither - nor BASE+OFFSET:VALUE/MASK such as l3+12:0xc0000200/0xffffff00");
  }
  udf.base = parse_name(udf_base_names(), text.substr(0, plus), parameter.name);
  udf.offset = parse_word(text.substr(plus + 1, colon - plus - 1), parameter.name);
  udf.value =
      parse_word(text.substr(colon + 1, slash == std::string::npos ? slash : slash - colon - 1),
                 parameter.name);
  udf.mask =
      slash == std::string::npos ? UINT32_MAX : parse_word(text.substr(slash + 1), parameter.name);
  return udf;
}

of_action_param_s Codec<of_action_param_s>::read(const Parameter& parameter, Call& call) {
  of_action_param_s param{};
  switch (call.action) {
    case OF_ACTION_OUTPUT: {
      const std::string text = call.arguments.take(parameter.name);
      if (text.find('/') == std::string::npos) {
        param.word[0] = parse_name(flow_port_names(), text, parameter.name);
        break;
      }
      const Usp port = parse_port(text, parameter.name);
      if (port.unit() != 1 || port.slot() != 1) {
        throw Error(parameter.name + ": '" + text + "' has no flow port number, only 1/1/N has");
      }
      param.word[0] = port.port() + OF_PORT_FIRST_PHYSICAL;
      break;
    }
    case OF_ACTION_STRIP_VLAN:
      // It has none; one that is given all the same is handed on.
      if (!call.arguments.empty()) {
        param.word[0] = parse_word(call.arguments.take(parameter.name), parameter.name);
      }
      break;
    case OF_ACTION_SET_SRC_MAC:
    case OF_ACTION_SET_DST_MAC: {
      const auto mac = parse_mac(call.arguments.take(parameter.name), parameter.name);
      param.word[0] = std::uint32_t{mac[0]} << 24 | std::uint32_t{mac[1]} << 16 |
                      std::uint32_t{mac[2]} << 8 | std::uint32_t{mac[3]};
      param.word[1] = std::uint32_t{mac[4]} << 8 | std::uint32_t{mac[5]};
      break;
    }
    case OF_ACTION_SET_SRC_IP:
    case OF_ACTION_SET_DST_IP:
      param.word[0] = parse_ip4(call.arguments.take(parameter.name), parameter.name);
      break;
    default:
      param.word[0] = parse_word(call.arguments.take(parameter.name), parameter.name);
  }
  return param;
}

Packet Codec<Packet>::read(const Parameter& parameter, Call& call) {
  std::string text = call.arguments.rest(parameter.name);
  Packet packet;
  const std::size_t space = text.find(' ');
  const std::string first = text.substr(0, space);
  for (const auto& entry : packet_type_names().entries) {
    if (first == entry.name) packet.set_type(entry.number);
  }
  const std::string type_prefix = "type=";
  const bool numbered = first.compare(0, type_prefix.size(), type_prefix) == 0;
  if (numbered) packet.set_type(parse_word(first.substr(type_prefix.size()), parameter.name));
  if (numbered || first == "data" || first == "control") {
    text = space == std::string::npos ? "" : text.substr(space + 1);
  }
  std::vector<std::uint8_t> frame;
  std::string error;
  if (text != "-" && !softcard::parse_frame(text, frame, error)) {
    throw Error(parameter.name + ": " + error);
  }
  packet.set_data(frame);
  return packet;
}

Value Codec<Packet>::show(const Parameter&, const Packet& value) {
  std::string type = name_value(packet_type_names(), value.type()).text;
  if (std::isdigit(static_cast<unsigned char>(type[0])) != 0) type = "type=" + type;
  return text_value(type + ' ' +
                    (value.length() == 0
                         ? "-"
                         : softcard::print_frame(value.data().data(), value.data().size())));
}

Bytes Codec<Bytes>::read(const Parameter& parameter, Call& call) {
  const std::string text = call.arguments.take(parameter.name);
  Bytes bytes{};
  if (parameter.kind == "mac") {
    std::memcpy(bytes.data(), parse_mac(text, parameter.name).data(), 6);
  } else if (parameter.kind == "ip6") {
    parse_ip6(text, parameter.name, bytes.data());
  } else if (parameter.kind == "mask6") {
    parse_ip6_mask(text, parameter.name, bytes.data());
  } else {
    parse_bitmap(text, parameter.name, bytes.data());
  }
  return bytes;
}

Value Codec<Bytes>::show(const Parameter& parameter, const Bytes& value) {
  if (parameter.kind == "mac") return text_value(mac_text(value.data()));
  if (parameter.kind == "ip6") return text_value(ip6_text(value.data()));
  if (parameter.kind == "mask6") return text_value(ip6_mask_text(value.data()));
  return text_value(bitmap_text(value.data()));
}

}  // namespace shell
