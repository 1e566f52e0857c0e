// SPDX-License-Identifier: Apache-2.0
//
// The words that the shell reads and prints for the values of enumerations.
#ifndef SHELL_NAMES_H_
#define SHELL_NAMES_H_

#include <cstdint>
#include <string>

#include "entrypoints/names.h"
#include "value.h"

namespace shell {

using entrypoints::flow_port_names;
using entrypoints::forward_mode_names;
using entrypoints::mac_update_names;
using entrypoints::names_of;
using entrypoints::NameTable;
using entrypoints::packet_type_names;
using entrypoints::rx_reason_names;
using entrypoints::udf_base_names;

// Throws Error, naming `what` and some of the names, when the text is neither a name nor a
// 32-bit number.
std::uint32_t parse_name(const NameTable& names, const std::string& text, const std::string& what);
Value name_value(const NameTable& names, std::uint32_t number);

template <class Enumeration>
Value enum_value(Enumeration value) {
  return name_value(names_of<Enumeration>(), static_cast<std::uint32_t>(value));
}

}  // namespace shell

#endif  // SHELL_NAMES_H_
