// SPDX-License-Identifier: Apache-2.0
//
// How a value of each type that an operation takes stands in a message: put() and get() are the
// two halves, code() names its form.
//
// A flag is written as the byte that it is in memory: a variable that nobody has set yet, which is
// to take an output, may hold any.
#ifndef REMOTE_VALUES_H_
#define REMOTE_VALUES_H_

#include <cstring>
#include <list>
#include <string>
#include <type_traits>
#include <vector>

#include "remote/wire.h"
#include "vornlcapi/types.h"

namespace vorn::remote {

template <class T, class = void>
struct Value;  // of a type that no operation has

template <>
struct Value<bool> {
  static_assert(sizeof(bool) == 1);
  static std::string code() { return "flag"; }
  static bool make() { return false; }
  static void put(Writer& out, const bool& flag) { out.raw(&flag, 1); }
  static void get(Reader& in, bool& flag) { flag = in.u8() != 0; }
};

// Numbers and enumerations: of the width that their types have on every target.
template <class T>
struct Value<T, std::enable_if_t<std::is_integral_v<T> || std::is_enum_v<T>>> {
  using Number = std::make_unsigned_t<T>;
  static std::string code() {
    return (std::is_signed_v<T> ? "i" : "u") + std::to_string(8 * sizeof(T));
  }
  static T make() { return T(); }
  static void put(Writer& out, const T& value) { out.number(static_cast<Number>(value)); }
  static void get(Reader& in, T& value) { value = static_cast<T>(in.number<Number>()); }
};
static_assert(sizeof(short) == 2 && sizeof(int) == 4 && sizeof(long long) == 8);

template <>
struct Value<Mp> {
  static std::string code() { return "mp"; }
  static Mp make() { return {0, 0}; }
  static void put(Writer& out, const Mp& mp) {
    out.u32(mp.module());
    out.u32(mp.port());
  }
  static void get(Reader& in, Mp& mp) {
    const unsigned module = in.u32();
    mp = Mp(module, in.u32());
  }
};

template <>
struct Value<Usp> {
  static std::string code() { return "usp"; }
  static Usp make() { return {0, 0, 0}; }
  static void put(Writer& out, const Usp& usp) {
    out.u32(usp.unit());
    out.u32(usp.slot());
    out.u32(usp.port());
  }
  static void get(Reader& in, Usp& usp) {
    const unsigned unit = in.u32();
    const unsigned slot = in.u32();
    usp = Usp(unit, slot, in.u32());
  }
};

template <class Item>
struct Value<std::list<Item>> {
  static std::string code() { return "list " + Value<Item>::code(); }
  static std::list<Item> make() { return {}; }
  static void put(Writer& out, const std::list<Item>& items) {
    out.u32(static_cast<std::uint32_t>(items.size()));
    for (const Item& item : items) Value<Item>::put(out, item);
  }
  static void get(Reader& in, std::list<Item>& items) {
    constexpr std::size_t kLeastBytes = 8;  // of a port or a counter
    items.clear();
    for (std::size_t left = in.count(kLeastBytes); left != 0 && in.good(); --left) {
      items.push_back(Value<Item>::make());
      Value<Item>::get(in, items.back());
    }
  }
};

// A counter of any kind.
template <class T>
struct Value<T, std::enable_if_t<std::is_enum_v<decltype(T::type)> &&
                                 std::is_unsigned_v<decltype(T::value)>>> {
  using Type = Value<decltype(T::type)>;
  using Number = Value<decltype(T::value)>;
  static std::string code() { return Type::code() + ' ' + Number::code(); }
  static T make() { return T(); }
  static void put(Writer& out, const T& counter) {
    Type::put(out, counter.type);
    Number::put(out, counter.value);
  }
  static void get(Reader& in, T& counter) {
    Type::get(in, counter.type);
    Number::get(in, counter.value);
  }
};

// Visits the fields of a flow in their order.
template <class Flow, class Visit>
void for_each_field(Flow& flow, const Visit& visit) {
  visit(flow.in_port);
  for (auto& byte : flow.match.src_mac) visit(byte);
  for (auto& byte : flow.match.dst_mac) visit(byte);
  visit(flow.match.vlan_id);
  visit(flow.match.vlan_priority);
  visit(flow.match.ether_type);
  visit(flow.match.gap_);
  visit(flow.match.src_ip);
  visit(flow.match.dst_ip);
  visit(flow.match.src_ip_mask);
  visit(flow.match.dst_ip_mask);
  visit(flow.match.src_l4_port);
  visit(flow.match.dst_l4_port);
  visit(flow.match.ip_protocol);
  visit(flow.match.tos);
  visit(flow.match.flags);
}

template <>
struct Value<of_flow_mp_s> {
  static std::string code() { return "flow"; }
  static of_flow_mp_s make() { return {}; }
  static void put(Writer& out, const of_flow_mp_s& flow) {
    for_each_field(flow, [&](const auto& field) {
      Value<std::remove_cv_t<std::remove_reference_t<decltype(field)>>>::put(out, field);
    });
  }
  static void get(Reader& in, of_flow_mp_s& flow) {
    for_each_field(flow, [&](auto& field) {
      Value<std::remove_reference_t<decltype(field)>>::get(in, field);
    });
  }
};

template <>
struct Value<of_flow_qualify_udf_s> {
  static std::string code() { return "udf"; }
  static of_flow_qualify_udf_s make() { return {}; }
  static void put(Writer& out, const of_flow_qualify_udf_s& udf) {
    for (const unsigned word : {udf.base, udf.offset, udf.value, udf.mask}) out.u32(word);
  }
  static void get(Reader& in, of_flow_qualify_udf_s& udf) {
    for (unsigned* const word : {&udf.base, &udf.offset, &udf.value, &udf.mask}) *word = in.u32();
  }
};

template <>
struct Value<of_action_param_s> {
  static std::string code() { return "action"; }
  static of_action_param_s make() { return {}; }
  static void put(Writer& out, const of_action_param_s& param) {
    for (const unsigned word : param.word) out.u32(word);
  }
  static void get(Reader& in, of_action_param_s& param) {
    for (unsigned& word : param.word) word = in.u32();
  }
};

template <>
struct Value<Packet> {
  static std::string code() { return "packet"; }
  static Packet make() { return {}; }
  static void put(Writer& out, const Packet& packet) {
    out.u32(packet.type());
    out.u32(packet.length());
    out.raw(packet.data().data(), packet.data().size());
  }
  static void get(Reader& in, Packet& packet) {
    packet.set_type(in.u32());
    const std::string_view bytes = in.text();
    packet.set_data({bytes.begin(), bytes.end()});
  }
};

template <>
struct Value<std::string> {
  static std::string code() { return "text"; }
  static std::string make() { return {}; }
  static void put(Writer& out, const std::string& words) { out.text(words); }
  static void get(Reader& in, std::string& words) { words = in.text(); }
};

}  // namespace vorn::remote

#endif  // REMOTE_VALUES_H_
