// SPDX-License-Identifier: Apache-2.0
//
// How the values of each type come from Python objects and become Python objects: what
// entry_point.h builds the functions from.
//
// Reading throws what pybind11 turns into TypeError or ValueError, and names the argument.
#ifndef PYTHON_VALUES_H_
#define PYTHON_VALUES_H_

#include <pybind11/cast.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <list>
#include <string>
#include <type_traits>
#include <unordered_map>
#include <vector>

#include "entrypoints/row.h"
#include "vornlcapi/types.h"

namespace vorn_python {

namespace py = pybind11;
using entrypoints::NameTable;
using entrypoints::Parameter;

// ---- Python's own -------------------------------------------------------------------------------

// What the package defines in Python: classes of vornlcapi._values, by name.
py::object value_class(const char* name);

// An enumeration as a Python class: IntEnum, or IntFlag for a set of bits.
class EnumClass {
 public:
  EnumClass(const char* name, const NameTable& names);

  const std::string& name() const { return name_; }
  py::handle type() const { return type_; }
  std::uint32_t read(const Parameter& parameter, py::handle value) const;
  // The member; a plain number where there is none.
  py::object show(std::uint32_t value);

 private:
  std::string name_;
  py::object type_;
  bool bits_;
  std::unordered_map<std::uint32_t, py::object> members_;
};

// The class of this name; made with `names` the first time. All of them stay.
EnumClass& enum_class(const char* name, const NameTable& names);
// Those that were made, in order.
const std::vector<EnumClass*>& enum_classes();

// How Python calls the enumeration.
template <class Enumeration>
constexpr const char* enum_name();
template <>
constexpr const char* enum_name<stp_state_t>() {
  return "StpState";
}
template <>
constexpr const char* enum_name<mstp_state_t>() {
  return "MstpState";
}
template <>
constexpr const char* enum_name<phy_state_t>() {
  return "PhyState";
}
template <>
constexpr const char* enum_name<speed_type_t>() {
  return "SpeedType";
}
template <>
constexpr const char* enum_name<duplex_type_t>() {
  return "DuplexType";
}
template <>
constexpr const char* enum_name<port_ability_type_t>() {
  return "PortAbility";
}
template <>
constexpr const char* enum_name<mirror_type_t>() {
  return "MirrorType";
}
template <>
constexpr const char* enum_name<flood_block_type_t>() {
  return "FloodBlock";
}
template <>
constexpr const char* enum_name<ingress_discard_type_t>() {
  return "IngressDiscard";
}
template <>
constexpr const char* enum_name<frame_type_t>() {
  return "FrameType";
}
template <>
constexpr const char* enum_name<lag_psc_t>() {
  return "LagPsc";
}
template <>
constexpr const char* enum_name<of_action_t>() {
  return "FlowAction";
}
template <>
constexpr const char* enum_name<lcmgr_report_event_t>() {
  return "ReportEvent";
}
template <>
constexpr const char* enum_name<stat_type_t>() {
  return "StatType";
}
template <>
constexpr const char* enum_name<brief_stat_type_t>() {
  return "BriefStatType";
}

template <class Enumeration>
EnumClass& enum_class() {
  static EnumClass& made =
      enum_class(enum_name<Enumeration>(), entrypoints::names_of<Enumeration>());
  return made;
}
// Of values that the interface carries as plain numbers.
EnumClass& forward_mode_class();
EnumClass& rx_reason_class();
EnumClass& mac_update_class();
EnumClass& flow_port_class();
EnumClass& udf_base_class();
EnumClass& packet_type_class();

// ---- Values that more than one type needs -------------------------------------------------------

std::int64_t read_number(const Parameter& parameter, py::handle value, std::int64_t lowest,
                         std::int64_t highest);
bool read_flag(const Parameter& parameter, py::handle value);
Usp read_port(const Parameter& parameter, py::handle value);
py::object show_port(const Usp& port);
std::list<Usp> read_ports(const Parameter& parameter, py::handle value);
py::object show_ports(const std::list<Usp>& ports);
py::object show_mac(const unsigned char* mac);
// A frame from its text, from bytes, or from anything that has __bytes__, such as a Scapy packet.
std::vector<unsigned char> read_frame(const Parameter& parameter, py::handle value);
py::object show_frame(const unsigned char* data, std::size_t bytes);

// ---- Records that callbacks are given -----------------------------------------------------------

py::object show_record(const RxPacket& packet);
py::object show_record(const ctype_rx_packet_s& packet);
py::object show_record(const LinkStatus& status);
py::object show_record(const ctype_link_status_s& status);
py::object show_record(const L2Addr& entry);
py::object show_record(const ctype_l2_addr_s& entry);
inline py::object show_record(const Usp& port) { return show_port(port); }
inline py::object show_record(const usp_s& port) {
  return show_port(Usp(port.unit, port.slot, port.port));
}
// Of the MAC-update callbacks.
inline py::object show_record(int update) {
  return mac_update_class().show(static_cast<std::uint32_t>(update));
}

// ---- Codecs -------------------------------------------------------------------------------------
// Codec<V>::read() and show() as above; hint() is the type as Python writes it, of what is given
// to the function or, with `out`, of what it returns.

template <class V, class = void>
struct Codec;

template <class V>
struct Codec<V, std::enable_if_t<std::is_enum_v<V>>> {
  static V initial() { return V{}; }
  static V read(const Parameter& parameter, py::handle value) {
    return static_cast<V>(enum_class<V>().read(parameter, value));
  }
  static py::object show(const Parameter&, V value) {
    return enum_class<V>().show(static_cast<std::uint32_t>(value));
  }
  // Values without a name are plain numbers.
  static std::string hint(const Parameter&, bool) { return enum_class<V>().name() + " | int"; }
};

template <>
struct Codec<unsigned int> {
  static unsigned int initial() { return 0; }
  static unsigned int read(const Parameter& parameter, py::handle value);
  static py::object show(const Parameter& parameter, unsigned int value);
  static std::string hint(const Parameter& parameter, bool);
};

template <>
struct Codec<unsigned short> {
  static unsigned short initial() { return 0; }
  static unsigned short read(const Parameter& parameter, py::handle value) {
    return static_cast<unsigned short>(read_number(parameter, value, 0, UINT16_MAX));
  }
  static py::object show(const Parameter&, unsigned short value) { return py::int_(value); }
  static std::string hint(const Parameter&, bool) { return "int"; }
};

template <>
struct Codec<int> {
  static int initial() { return 0; }
  static int read(const Parameter& parameter, py::handle value) {
    return static_cast<int>(read_number(parameter, value, INT32_MIN, INT32_MAX));
  }
  static py::object show(const Parameter&, int value) { return py::int_(value); }
  static std::string hint(const Parameter&, bool) { return "int"; }
};

template <>
struct Codec<unsigned long long> {
  static unsigned long long initial() { return 0; }
  static py::object show(const Parameter&, unsigned long long value) { return py::int_(value); }
  static std::string hint(const Parameter&, bool) { return "int"; }
};

template <>
struct Codec<bool> {
  static bool initial() { return false; }
  static bool read(const Parameter& parameter, py::handle value) {
    return read_flag(parameter, value);
  }
  static py::object show(const Parameter&, bool value) { return py::bool_(value); }
  static std::string hint(const Parameter&, bool) { return "bool"; }
};

template <>
struct Codec<std::string> {
  static std::string initial() { return {}; }
  static std::string read(const Parameter& parameter, py::handle value);
  static std::string hint(const Parameter&, bool) { return "str"; }
};

template <>
struct Codec<Usp> {
  static Usp initial() { return Usp(0, 0, 0); }
  static Usp read(const Parameter& parameter, py::handle value) {
    return read_port(parameter, value);
  }
  static py::object show(const Parameter&, const Usp& value) { return show_port(value); }
  static std::string hint(const Parameter&, bool out) { return out ? "Port" : "PortLike"; }
};

template <>
struct Codec<std::list<Usp>> {
  static std::list<Usp> initial() { return {}; }
  static std::list<Usp> read(const Parameter& parameter, py::handle value) {
    return read_ports(parameter, value);
  }
  static py::object show(const Parameter&, const std::list<Usp>& value) {
    return show_ports(value);
  }
  static std::string hint(const Parameter&, bool out) {
    return out ? "list[Port]" : "Iterable[PortLike]";
  }
};

template <>
struct Codec<of_flow_s> {
  static of_flow_s initial() { return of_flow_s(); }
  static of_flow_s read(const Parameter& parameter, py::handle value);
  static std::string hint(const Parameter&, bool) { return "Flow | Mapping[str, Any]"; }
};

template <>
struct Codec<of_flow_qualify_udf_s> {
  static of_flow_qualify_udf_s initial() { return {}; }
  static of_flow_qualify_udf_s read(const Parameter& parameter, py::handle value);
  static std::string hint(const Parameter&, bool) { return "Udf | None"; }
};

template <>
struct Codec<Packet> {
  static Packet initial() { return Packet(); }
  static Packet read(const Parameter& parameter, py::handle value);
  static std::string hint(const Parameter&, bool) { return "Packet | FrameLike"; }
};

// Byte arrays: a MAC address, an IPv6 address or mask, or a VLAN bitmap, by the parameter's kind.
using Bytes = std::array<unsigned char, 512>;

template <>
struct Codec<Bytes> {
  static Bytes initial() { return Bytes(); }
  static Bytes read(const Parameter& parameter, py::handle value);
  static py::object show(const Parameter& parameter, const Bytes& value);
  static std::string hint(const Parameter& parameter, bool out);
};

// What the words of an action's parameter mean depends on its kind.
of_action_param_s read_action_param(const Parameter& parameter, of_action_t kind, py::handle value);

}  // namespace vorn_python

#endif  // PYTHON_VALUES_H_
