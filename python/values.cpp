// SPDX-License-Identifier: Apache-2.0
#include "values.h"

#include <pybind11/pybind11.h>

#include <algorithm>
#include <cctype>
#include <cstring>
#include <map>
#include <tuple>
#include <utility>

#include "softcard/base/address_plan.h"
#include "softcard/base/text.h"
#include "softcard/frames/frame_text.h"

namespace vorn_python {

namespace {

std::string text_of(py::handle value) { return py::repr(value).cast<std::string>(); }

[[noreturn]] void wrong_type(const Parameter& parameter, py::handle value, const char* wanted) {
  throw py::type_error(parameter.name + ": " + text_of(value) + " is " + wanted);
}
[[noreturn]] void wrong_value(const Parameter& parameter, py::handle value, const char* wanted) {
  throw py::value_error(parameter.name + ": " + text_of(value) + " is " + wanted);
}

// The UTF-8 text of a str.
bool read_text(py::handle value, std::string& text) {
  if (!PyUnicode_Check(value.ptr())) return false;
  Py_ssize_t size = 0;
  const char* const data = PyUnicode_AsUTF8AndSize(value.ptr(), &size);
  if (data == nullptr) throw py::error_already_set();
  text.assign(data, static_cast<std::size_t>(size));
  return true;
}

// The bytes of bytes and other buffers, of an address of Python's ipaddress, of what has __bytes__.
bool read_bytes(py::handle value, std::vector<unsigned char>& bytes) {
  py::object holder = py::reinterpret_borrow<py::object>(value);
  if (PyObject_CheckBuffer(value.ptr()) == 0) {
    if (py::hasattr(value, "packed")) {
      holder = value.attr("packed");
    } else if (py::hasattr(value, "__bytes__")) {
      holder = py::reinterpret_steal<py::object>(PyObject_Bytes(value.ptr()));
      if (!holder) throw py::error_already_set();
    } else {
      return false;
    }
  }
  Py_buffer view;
  if (PyObject_GetBuffer(holder.ptr(), &view, PyBUF_SIMPLE) != 0) throw py::error_already_set();
  const auto* const data = static_cast<const unsigned char*>(view.buf);
  bytes.assign(data, data + view.len);
  PyBuffer_Release(&view);
  return true;
}

// An address of so many bytes: text for `parse`, or bytes.
template <class Parse>
void read_address(const Parameter& parameter, py::handle value, std::size_t size,
                  const char* wanted, unsigned char* address, Parse parse) {
  std::string text;
  if (read_text(value, text)) {
    if (!parse(text)) wrong_value(parameter, value, wanted);
    return;
  }
  std::vector<unsigned char> bytes;
  if (!read_bytes(value, bytes)) wrong_type(parameter, value, wanted);
  if (bytes.size() != size) wrong_value(parameter, value, wanted);
  std::copy(bytes.begin(), bytes.end(), address);
}

void read_mac(const Parameter& parameter, py::handle value, unsigned char* mac) {
  read_address(parameter, value, 6, "no MAC address", mac, [&](const std::string& text) {
    softcard::MacAddress parsed;
    if (!softcard::parse_mac(text, parsed)) return false;
    std::copy(parsed.bytes.begin(), parsed.bytes.end(), mac);
    return true;
  });
}

void read_ip6(const Parameter& parameter, py::handle value, unsigned char* ip6) {
  read_address(parameter, value, 16, "no IPv6 address", ip6, [&](const std::string& text) {
    softcard::Ipv6Address parsed;
    if (!softcard::parse_ipv6(text, parsed)) return false;
    std::copy(parsed.bytes.begin(), parsed.bytes.end(), ip6);
    return true;
  });
}

// The length of "/24", or false.
bool read_length(const std::string& text, unsigned most, unsigned& length) {
  return !text.empty() && text[0] == '/' &&
         softcard::parse_decimal(std::string_view(text).substr(1), 0U, most, length);
}

std::uint32_t leading_ones(unsigned length) {
  return length == 0 ? 0 : UINT32_MAX << (32 - length);
}

std::uint32_t read_ip4(const Parameter& parameter, py::handle value, bool mask) {
  if (PyLong_Check(value.ptr())) {
    return static_cast<std::uint32_t>(read_number(parameter, value, 0, UINT32_MAX));
  }
  unsigned char bytes[4] = {};
  const char* const wanted =
      mask ? "no IPv4 mask, such as \"/24\" or \"255.255.255.0\"" : "no IPv4 address";
  read_address(parameter, value, 4, wanted, bytes, [&](const std::string& text) {
    softcard::Ipv4 ip = 0;
    unsigned length = 0;
    if (mask && read_length(text, 32, length)) {
      ip = leading_ones(length);
    } else if (!softcard::parse_ipv4(text, ip)) {
      return false;
    }
    for (unsigned i = 0; i < 4; ++i) bytes[i] = static_cast<unsigned char>(ip >> (24 - 8 * i));
    return true;
  });
  return std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 |
         std::uint32_t{bytes[2]} << 8 | std::uint32_t{bytes[3]};
}

void read_mask6(const Parameter& parameter, py::handle value, unsigned char* mask) {
  std::string text;
  unsigned length = 0;
  if (!read_text(value, text) || !read_length(text, 128, length)) {
    return read_ip6(parameter, value, mask);
  }
  for (unsigned bit = 0; bit < length; ++bit) {
    mask[bit / 8] = static_cast<unsigned char>(mask[bit / 8] | 0x80U >> bit % 8);
  }
}

// VLAN numbers, or the 512 bytes themselves.
void read_bitmap(const Parameter& parameter, py::handle value, Bytes& bitmap) {
  if (PyObject_CheckBuffer(value.ptr()) != 0) {
    return read_address(parameter, value, bitmap.size(), "no VLAN bitmap of 512 bytes",
                        bitmap.data(), [](const std::string&) { return false; });
  }
  if (PyUnicode_Check(value.ptr()) || !py::isinstance<py::iterable>(value)) {
    wrong_type(parameter, value, "no set of VLANs, such as {1, 10} or range(10, 20)");
  }
  for (const py::handle item : py::reinterpret_borrow<py::iterable>(value)) {
    const auto vlan = static_cast<unsigned>(read_number(parameter, item, 0, 4095));
    bitmap[vlan / 8] = static_cast<unsigned char>(bitmap[vlan / 8] | 1U << vlan % 8);
  }
}

std::vector<EnumClass*>& made_classes() {
  static auto* const classes = new std::vector<EnumClass*>;
  return *classes;
}

// A name of the tables as a member's: in capitals, and not beginning with a digit. Only the
// abilities do, which begin with a speed.
std::string member_name(const char* name) {
  std::string member;
  if (std::isdigit(static_cast<unsigned char>(*name)) != 0) member = "MBPS_";
  for (; *name != '\0'; ++name) {
    member += static_cast<char>(std::toupper(static_cast<unsigned char>(*name)));
  }
  return member;
}

}  // namespace

// ---- Python's own -------------------------------------------------------------------------------

py::object value_class(const char* name) {
  static auto* const classes = new std::map<std::string, py::object>;
  py::object& found = (*classes)[name];
  if (!found) found = py::module_::import("vornlcapi._values").attr(name);
  return found;
}

EnumClass::EnumClass(const char* name, const NameTable& names) : name_(name), bits_(names.bits) {
  py::dict members;
  for (const auto& entry : names.entries) members[py::str(member_name(entry.name))] = entry.number;
  const py::object base = py::module_::import("enum").attr(names.bits ? "IntFlag" : "IntEnum");
  type_ = base(name, members, py::arg("module") = "vornlcapi");
}

std::uint32_t EnumClass::read(const Parameter& parameter, py::handle value) const {
  // A member of another enumeration is a mistake, though it is a number too.
  if (!PyLong_CheckExact(value.ptr()) && !py::isinstance(value, type_)) {
    wrong_type(parameter, value, ("neither of " + name_ + " nor a number").c_str());
  }
  return static_cast<std::uint32_t>(read_number(parameter, value, 0, UINT32_MAX));
}

py::object EnumClass::show(std::uint32_t value) {
  const auto found = members_.find(value);
  if (found != members_.end()) return found->second;
  py::object shown = py::int_(value);
  if (bits_ || py::bool_(type_.attr("_value2member_map_").contains(shown))) shown = type_(shown);
  if (members_.size() < 65536) members_[value] = shown;
  return shown;
}

EnumClass& enum_class(const char* name, const NameTable& names) {
  for (EnumClass* const made : made_classes()) {
    if (made->name() == name) return *made;
  }
  made_classes().push_back(new EnumClass(name, names));
  return *made_classes().back();
}

const std::vector<EnumClass*>& enum_classes() { return made_classes(); }

EnumClass& forward_mode_class() {
  static EnumClass& made = enum_class("ForwardMode", entrypoints::forward_mode_names());
  return made;
}
EnumClass& rx_reason_class() {
  static EnumClass& made = enum_class("RxReason", entrypoints::rx_reason_names());
  return made;
}
EnumClass& mac_update_class() {
  static EnumClass& made = enum_class("MacUpdate", entrypoints::mac_update_names());
  return made;
}
EnumClass& flow_port_class() {
  static EnumClass& made = enum_class("FlowPort", entrypoints::flow_port_names());
  return made;
}
EnumClass& udf_base_class() {
  static EnumClass& made = enum_class("UdfBase", entrypoints::udf_base_names());
  return made;
}
EnumClass& packet_type_class() {
  static EnumClass& made = enum_class("PacketType", entrypoints::packet_type_names());
  return made;
}

// ---- Values that more than one type needs -------------------------------------------------------

std::int64_t read_number(const Parameter& parameter, py::handle value, std::int64_t lowest,
                         std::int64_t highest) {
  if (PyBool_Check(value.ptr()) || PyIndex_Check(value.ptr()) == 0) {
    wrong_type(parameter, value, "no number");
  }
  const auto index = py::reinterpret_steal<py::object>(PyNumber_Index(value.ptr()));
  if (!index) throw py::error_already_set();
  int overflow = 0;
  const long long number = PyLong_AsLongLongAndOverflow(index.ptr(), &overflow);
  if (overflow != 0 || number < lowest || number > highest) {
    throw py::value_error(parameter.name + ": " + text_of(index) + " is not within " +
                          std::to_string(lowest) + " and " + std::to_string(highest));
  }
  return number;
}

bool read_flag(const Parameter& parameter, py::handle value) {
  if (value.ptr() == Py_True) return true;
  if (value.ptr() == Py_False) return false;
  wrong_type(parameter, value, "neither True nor False");
}

Usp read_port(const Parameter& parameter, py::handle value) {
  std::string text;
  if (!read_text(value, text)) {
    wrong_type(parameter, value, "no port, such as \"1/1/3\", \"lag/2\" or \"vlan/10\"");
  }
  Usp port(0, 0, 0);
  std::string error;
  if (!softcard::parse_usp(text, port, error)) throw py::value_error(parameter.name + ": " + error);
  return port;
}

py::object show_port(const Usp& port) {
  using Key = std::tuple<unsigned, unsigned, unsigned>;
  static auto* const ports = new std::map<Key, py::object>;
  const Key key(port.unit(), port.slot(), port.port());
  const auto found = ports->find(key);
  if (found != ports->end()) return found->second;
  py::object made = value_class("Port")(softcard::AddressPlan::text(port));
  if (ports->size() < 65536) (*ports)[key] = made;
  return made;
}

std::list<Usp> read_ports(const Parameter& parameter, py::handle value) {
  if (PyUnicode_Check(value.ptr())) return {read_port(parameter, value)};
  if (!py::isinstance<py::iterable>(value)) wrong_type(parameter, value, "no list of ports");
  std::list<Usp> ports;
  for (const py::handle item : py::reinterpret_borrow<py::iterable>(value)) {
    ports.push_back(read_port(parameter, item));
  }
  return ports;
}

py::object show_ports(const std::list<Usp>& ports) {
  py::list shown;
  for (const Usp& port : ports) shown.append(show_port(port));
  return std::move(shown);
}

py::object show_mac(const unsigned char* mac) {
  return py::str(softcard::mac_text(softcard::MacAddress::from_bytes(mac)));
}

std::vector<unsigned char> read_frame(const Parameter& parameter, py::handle value) {
  std::vector<unsigned char> frame;
  std::string text;
  if (read_text(value, text)) {
    std::string error;
    if (softcard::parse_frame(text, frame, error)) return frame;
    throw py::value_error(parameter.name + ": " + error);
  }
  if (!read_bytes(value, frame)) {
    wrong_type(parameter, value, "no frame: neither text, nor bytes, nor a packet of bytes");
  }
  return frame;
}

py::object show_frame(const unsigned char* data, std::size_t bytes) {
  return value_class("Frame")(py::bytes(reinterpret_cast<const char*>(data), bytes));
}

// ---- Records that callbacks are given -----------------------------------------------------------

namespace {

template <class Packet>
py::object show_packet(const Packet& packet) {
  return value_class("RxPacket")(show_frame(packet.data, packet.length),
                                 rx_reason_class().show(packet.reason), show_record(packet.port),
                                 packet.vlan, packet.priority);
}
template <class Status>
py::object show_status(const Status& status) {
  const auto shown = [](auto value) {
    return enum_class<decltype(value)>().show(static_cast<std::uint32_t>(value));
  };
  return value_class("LinkStatus")(shown(status.state), shown(status.speed), shown(status.duplex));
}
template <class Entry>
py::object show_entry(const Entry& entry) {
  return value_class("L2Addr")(show_mac(entry.mac), entry.vlan, show_record(entry.port),
                               value_class("L2AddrFlag")(entry.flags));
}

}  // namespace

py::object show_record(const RxPacket& packet) { return show_packet(packet); }
py::object show_record(const ctype_rx_packet_s& packet) { return show_packet(packet); }
py::object show_record(const LinkStatus& status) { return show_status(status); }
py::object show_record(const ctype_link_status_s& status) { return show_status(status); }
py::object show_record(const L2Addr& entry) { return show_entry(entry); }
py::object show_record(const ctype_l2_addr_s& entry) { return show_entry(entry); }

// ---- Codecs -------------------------------------------------------------------------------------

unsigned int Codec<unsigned int>::read(const Parameter& parameter, py::handle value) {
  if (parameter.kind == "ip") return read_ip4(parameter, value, false);
  if (parameter.kind == "mask") return read_ip4(parameter, value, true);
  if (parameter.kind == "mode") return forward_mode_class().read(parameter, value);
  return static_cast<unsigned int>(read_number(parameter, value, 0, UINT32_MAX));
}

py::object Codec<unsigned int>::show(const Parameter& parameter, unsigned int value) {
  if (parameter.kind == "mode") return forward_mode_class().show(value);
  return py::int_(value);
}

std::string Codec<unsigned int>::hint(const Parameter& parameter, bool) {
  if (parameter.kind == "ip" || parameter.kind == "mask") return "Ip4Like";
  if (parameter.kind == "mode") return forward_mode_class().name() + " | int";
  return "int";
}

std::string Codec<std::string>::read(const Parameter& parameter, py::handle value) {
  std::string text;
  if (!read_text(value, text)) wrong_type(parameter, value, "no text");
  return text;
}

namespace {

// Reads one field of a flow, whose bit is set then.
struct FlowField {
  const char* name;
  unsigned bit;
  void (*read)(const Parameter& parameter, py::handle value, of_flow_s& flow);
};

template <unsigned short of_match_s::*Member>
void read_short(const Parameter& parameter, py::handle value, of_flow_s& flow) {
  flow.match.*Member = static_cast<unsigned short>(read_number(parameter, value, 0, UINT16_MAX));
}
template <unsigned char (of_match_s::*Member)[6]>
void read_flow_mac(const Parameter& parameter, py::handle value, of_flow_s& flow) {
  read_mac(parameter, value, flow.match.*Member);
}
// An address alone, or with its mask behind a slash: "192.0.2.0/24", "192.0.2.0/255.255.255.0".
template <unsigned int of_match_s::*Ip, unsigned int of_match_s::*Mask>
void read_subnet(const Parameter& parameter, py::handle value, of_flow_s& flow) {
  flow.match.*Mask = UINT32_MAX;
  // A network of Python's ipaddress is written so, too.
  const py::object whole = py::hasattr(value, "network_address")
                               ? py::object(py::str(value))
                               : py::reinterpret_borrow<py::object>(value);
  std::string text;
  const std::size_t slash = read_text(whole, text) ? text.find('/') : std::string::npos;
  if (slash == std::string::npos) {
    flow.match.*Ip = read_ip4(parameter, whole, false);
    return;
  }
  const std::string mask = text.substr(slash);
  flow.match.*Ip = read_ip4(parameter, py::str(text.substr(0, slash)), false);
  flow.match.*Mask = read_ip4(
      parameter, py::str(mask.find('.') == std::string::npos ? mask : mask.substr(1)), true);
}

using Match = of_match_s;
const FlowField kFlowFields[] = {
    {"in_port", OF_MATCH_IN_PORT,
     [](const Parameter& parameter, py::handle value, of_flow_s& flow) {
       flow.in_port = read_port(parameter, value);
     }},
    {"src_mac", OF_MATCH_SRC_MAC, read_flow_mac<&Match::src_mac>},
    {"dst_mac", OF_MATCH_DST_MAC, read_flow_mac<&Match::dst_mac>},
    {"vlan_id", OF_MATCH_VLAN_ID, read_short<&Match::vlan_id>},
    {"vlan_priority", OF_MATCH_VLAN_PRIORITY, read_short<&Match::vlan_priority>},
    {"ether_type", OF_MATCH_ETHER_TYPE, read_short<&Match::ether_type>},
    {"src_ip", OF_MATCH_SRC_IP, read_subnet<&Match::src_ip, &Match::src_ip_mask>},
    {"dst_ip", OF_MATCH_DST_IP, read_subnet<&Match::dst_ip, &Match::dst_ip_mask>},
    {"src_l4_port", OF_MATCH_SRC_L4_PORT, read_short<&Match::src_l4_port>},
    {"dst_l4_port", OF_MATCH_DST_L4_PORT, read_short<&Match::dst_l4_port>},
    {"ip_protocol", OF_MATCH_IP_PROTOCOL, read_short<&Match::ip_protocol>},
    {"tos", OF_MATCH_TOS, read_short<&Match::tos>},
};

Parameter named(const char* name) {
  Parameter parameter;
  parameter.name = name;
  return parameter;
}

}  // namespace

of_flow_s Codec<of_flow_s>::read(const Parameter& parameter, py::handle value) {
  const py::object flow_class = value_class("Flow");
  py::object given = py::reinterpret_borrow<py::object>(value);
  if (py::isinstance<py::dict>(value)) given = flow_class(**given);
  if (!py::isinstance(given, flow_class)) {
    wrong_type(parameter, value, "neither a Flow nor a dictionary of its fields");
  }
  of_flow_s flow;
  flow.match = of_match_s();
  for (const FlowField& field : kFlowFields) {
    const py::object part = given.attr(field.name);
    if (part.is_none()) continue;
    field.read(named(field.name), part, flow);
    flow.match.flags |= field.bit;
  }
  return flow;
}

of_flow_qualify_udf_s Codec<of_flow_qualify_udf_s>::read(const Parameter& parameter,
                                                         py::handle value) {
  if (value.is_none()) return {};
  if (!py::isinstance(value, value_class("Udf"))) wrong_type(parameter, value, "no Udf");
  const auto word = [&](const char* name) {
    return static_cast<unsigned int>(read_number(named(name), value.attr(name), 0, UINT32_MAX));
  };
  return {udf_base_class().read(named("base"), value.attr("base")), word("offset"), word("value"),
          word("mask")};
}

Packet Codec<Packet>::read(const Parameter& parameter, py::handle value) {
  Packet packet;
  if (py::isinstance(value, value_class("Packet"))) {
    packet.set_type(packet_type_class().read(named("type"), value.attr("type")));
    packet.set_data(read_frame(parameter, value.attr("frame")));
  } else {
    packet.set_data(read_frame(parameter, value));
  }
  return packet;
}

Bytes Codec<Bytes>::read(const Parameter& parameter, py::handle value) {
  Bytes bytes{};
  if (parameter.kind == "mac") {
    read_mac(parameter, value, bytes.data());
  } else if (parameter.kind == "ip6") {
    read_ip6(parameter, value, bytes.data());
  } else if (parameter.kind == "mask6") {
    read_mask6(parameter, value, bytes.data());
  } else {
    read_bitmap(parameter, value, bytes);
  }
  return bytes;
}

// Only MAC addresses are returned.
py::object Codec<Bytes>::show(const Parameter&, const Bytes& value) {
  return show_mac(value.data());
}

std::string Codec<Bytes>::hint(const Parameter& parameter, bool out) {
  if (out) return "str";
  if (parameter.kind == "mac") return "MacLike";
  if (parameter.kind == "bitmap") return "Iterable[int] | bytes";
  return "Ip6Like";
}

of_action_param_s read_action_param(const Parameter& parameter, of_action_t kind,
                                    py::handle value) {
  of_action_param_s param{};
  const bool given = value && !value.is_none();
  if (kind == OF_ACTION_STRIP_VLAN && !given) return param;
  if (!given) throw py::type_error(parameter.name + ": this action needs one");
  switch (kind) {
    case OF_ACTION_OUTPUT:
      if (PyUnicode_Check(value.ptr())) {
        const Usp port = read_port(parameter, value);
        if (port.unit() != softcard::kUnit || port.slot() != softcard::kPortSlot) {
          wrong_value(parameter, value, "no port with a flow port number: only 1/1/N has one");
        }
        param.word[0] = port.port() + OF_PORT_FIRST_PHYSICAL;
      } else {
        param.word[0] = flow_port_class().read(parameter, value);
      }
      break;
    case OF_ACTION_SET_SRC_MAC:
    case OF_ACTION_SET_DST_MAC: {
      unsigned char mac[6] = {};
      read_mac(parameter, value, mac);
      param.word[0] = std::uint32_t{mac[0]} << 24 | std::uint32_t{mac[1]} << 16 |
                      std::uint32_t{mac[2]} << 8 | std::uint32_t{mac[3]};
      param.word[1] = std::uint32_t{mac[4]} << 8 | std::uint32_t{mac[5]};
      break;
    }
    case OF_ACTION_SET_SRC_IP:
    case OF_ACTION_SET_DST_IP:
      param.word[0] = read_ip4(parameter, value, false);
      break;
    default:
      param.word[0] = static_cast<unsigned int>(read_number(parameter, value, 0, UINT32_MAX));
  }
  return param;
}

}  // namespace vorn_python
