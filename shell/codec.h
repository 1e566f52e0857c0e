// SPDX-License-Identifier: Apache-2.0
//
// How the values of each type are read from words and printed: what entry_point.h builds the
// commands of the library's entry points from, and what the card's own commands use too.
#ifndef SHELL_CODEC_H_
#define SHELL_CODEC_H_

#include <array>
#include <cstdint>
#include <functional>
#include <list>
#include <string>
#include <type_traits>
#include <vector>

#include "command.h"
#include "entrypoints/row.h"
#include "names.h"
#include "text.h"
#include "value.h"
#include "vornlcapi/types.h"

namespace shell {

using entrypoints::Parameter;

// One call while its arguments are read and its outputs printed.
struct Call {
  Arguments& arguments;
  Reply& reply;
  of_action_t action = OF_ACTION_OUTPUT;          // read last: says what its parameter means
  std::size_t array_size = 0;                     // of the array read last
  std::function<void(std::size_t)> report_array;  // prints so many of the array read last
};

// ---- Text of the values that several commands read ----------------------------------------------

Usp parse_port(const std::string& text, const std::string& what);
Value port_value(const Usp& port);
// `1/1/0,1/1/4-7,lag/2`, or - for none.
std::list<Usp> parse_ports(const std::string& text, const std::string& what);

std::array<unsigned char, 6> parse_mac(const std::string& text, const std::string& what);
std::string mac_text(const unsigned char* mac);
// 192.0.2.1, or a number.
std::uint32_t parse_ip4(const std::string& text, const std::string& what);
std::string ip4_text(std::uint32_t ip);
// 255.255.255.0, /24, or a number.
std::uint32_t parse_ip4_mask(const std::string& text, const std::string& what);
// 192.0.2.0/24 for a mask of leading ones, 192.0.2.1 under all ones, else 192.0.2.1/255.0.255.0.
std::string ip4_subnet_text(std::uint32_t ip, std::uint32_t mask);
std::string ip6_text(const unsigned char* ip6);
bool parse_flag(const std::string& text, const std::string& what);
// The fields of a flow whose bit is set, as they are read: `in_port=1/1/0 vlan_id=10`; any.
std::string flow_text(const ctype_of_flow_s& flow);
std::string udf_text(const ctype_of_flow_qualify_udf_s& udf);
std::string action_text(of_action_t kind, const of_action_param_s& param);

// ---- Codecs -------------------------------------------------------------------------------------
// Codec<T>::read() takes the words of one argument and throws Error, naming it, when they do not
// parse; show() prints one.

template <class T, class = void>
struct Codec;

template <class T>
struct Codec<T, std::enable_if_t<std::is_enum_v<T>>> {
  static T initial() { return T{}; }
  static T read(const Parameter& parameter, Call& call) {
    const auto value = static_cast<T>(
        parse_name(names_of<T>(), call.arguments.take(parameter.name), parameter.name));
    if constexpr (std::is_same_v<T, of_action_t> || std::is_same_v<T, ctype_of_action_t>) {
      call.action = static_cast<of_action_t>(value);
    }
    return value;
  }
  static Value show(const Parameter&, T value) { return enum_value(value); }
};

template <>
struct Codec<unsigned int> {
  static unsigned int initial() { return 0; }
  static unsigned int read(const Parameter& parameter, Call& call);
  static Value show(const Parameter& parameter, unsigned int value);
};

template <>
struct Codec<unsigned short> {
  static unsigned short initial() { return 0; }
  static unsigned short read(const Parameter& parameter, Call& call);
  static Value show(const Parameter& parameter, unsigned short value);
};

// A signed number, or of kind `flag` a flag of the C binding: on, off, or any number.
template <>
struct Codec<int> {
  static int initial() { return 0; }
  static int read(const Parameter& parameter, Call& call);
  static Value show(const Parameter& parameter, int value);
};

template <>
struct Codec<unsigned long long> {
  static unsigned long long initial() { return 0; }
  static Value show(const Parameter&, unsigned long long value) {
    return number_value(std::uint64_t{value});
  }
};

template <>
struct Codec<bool> {
  static bool initial() { return false; }
  static bool read(const Parameter& parameter, Call& call);
  static Value show(const Parameter&, bool value) { return flag_value(value); }
};

template <>
struct Codec<std::string> {
  static std::string initial() { return {}; }
  static std::string read(const Parameter& parameter, Call& call) {
    return call.arguments.take(parameter.name);
  }
  static Value show(const Parameter&, const std::string& value) { return text_value(value); }
};

template <>
struct Codec<Usp> {
  static Usp initial() { return Usp(0, 0, 0); }
  static Usp read(const Parameter& parameter, Call& call) {
    return parse_port(call.arguments.take(parameter.name), parameter.name);
  }
  static Value show(const Parameter&, const Usp& value) { return port_value(value); }
};

template <>
struct Codec<std::list<Usp>> {
  static std::list<Usp> initial() { return {}; }
  static std::list<Usp> read(const Parameter& parameter, Call& call) {
    return parse_ports(call.arguments.take(parameter.name), parameter.name);
  }
  static Value show(const Parameter& parameter, const std::list<Usp>& value);
};

template <>
struct Codec<ctype_of_flow_s> {
  static ctype_of_flow_s initial() { return ctype_of_flow_s(); }
  static ctype_of_flow_s read(const Parameter& parameter, Call& call);
  static Value show(const Parameter&, const ctype_of_flow_s& value) {
    return text_value(flow_text(value));
  }
};

template <>
struct Codec<of_flow_s> {
  static of_flow_s initial() { return of_flow_s(); }
  static of_flow_s read(const Parameter& parameter, Call& call);
  static Value show(const Parameter& parameter, const of_flow_s& value);
};

template <>
struct Codec<ctype_of_flow_qualify_udf_s> {
  static ctype_of_flow_qualify_udf_s initial() { return {}; }
  static ctype_of_flow_qualify_udf_s read(const Parameter& parameter, Call& call);
  static Value show(const Parameter&, const ctype_of_flow_qualify_udf_s& value) {
    return text_value(udf_text(value));
  }
};

template <>
struct Codec<of_flow_qualify_udf_s> {
  static of_flow_qualify_udf_s initial() { return {}; }
  static of_flow_qualify_udf_s read(const Parameter& parameter, Call& call) {
    const auto udf = Codec<ctype_of_flow_qualify_udf_s>::read(parameter, call);
    return {udf.base, udf.offset, udf.value, udf.mask};
  }
  static Value show(const Parameter&, const of_flow_qualify_udf_s& value) {
    return text_value(udf_text({value.base, value.offset, value.value, value.mask}));
  }
};

template <>
struct Codec<of_action_param_s> {
  static of_action_param_s initial() { return {}; }
  static of_action_param_s read(const Parameter& parameter, Call& call);
};

template <>
struct Codec<ctype_of_action_param_s> {
  static ctype_of_action_param_s initial() { return {}; }
  static ctype_of_action_param_s read(const Parameter& parameter, Call& call) {
    const auto param = Codec<of_action_param_s>::read(parameter, call);
    return {{param.word[0], param.word[1], param.word[2]}};
  }
};

template <>
struct Codec<Packet> {
  static Packet initial() { return Packet(); }
  static Packet read(const Parameter& parameter, Call& call);
  static Value show(const Parameter&, const Packet& value);
};

// Byte arrays: a MAC address, an IPv6 address or mask, or a VLAN bitmap, by the parameter's kind.
using Bytes = std::array<unsigned char, 512>;

template <>
struct Codec<Bytes> {
  static Bytes initial() { return Bytes(); }
  static Bytes read(const Parameter& parameter, Call& call);
  static Value show(const Parameter& parameter, const Bytes& value);
};

// The argument as a recording has it.
template <class T>
Value show_input(const Parameter& parameter, const Call&, const T& value) {
  return Codec<T>::show(parameter, value);
}
inline Value show_input(const Parameter&, const Call& call, const of_action_param_s& value) {
  return text_value(action_text(call.action, value));
}
inline Value show_input(const Parameter&, const Call& call, const ctype_of_action_param_s& value) {
  return text_value(action_text(call.action, {{value.word[0], value.word[1], value.word[2]}}));
}

}  // namespace shell

#endif  // SHELL_CODEC_H_
