// SPDX-License-Identifier: Apache-2.0
//
// The words that the shell reads and prints for the values of enumerations.
#ifndef SHELL_NAMES_H_
#define SHELL_NAMES_H_

#include <cstdint>
#include <string>
#include <vector>

#include "value.h"
#include "vornlcapi/types.h"

namespace shell {

// The names of an enumeration. Values without a name are read and printed as numbers; those of a
// set of bits are joined with `+`.
struct NameTable {
  struct Entry {
    const char* name;
    std::uint32_t number;
  };
  std::vector<Entry> entries;
  bool bits = false;
};

// The table of an enumeration type.
template <class Enumeration>
const NameTable& names_of();

template <>
const NameTable& names_of<stp_state_t>();
template <>
const NameTable& names_of<mstp_state_t>();
template <>
const NameTable& names_of<phy_state_t>();
template <>
const NameTable& names_of<speed_type_t>();
template <>
const NameTable& names_of<duplex_type_t>();
template <>
const NameTable& names_of<port_ability_type_t>();
template <>
const NameTable& names_of<mirror_type_t>();
template <>
const NameTable& names_of<flood_block_type_t>();
template <>
const NameTable& names_of<ingress_discard_type_t>();
template <>
const NameTable& names_of<frame_type_t>();
template <>
const NameTable& names_of<lag_psc_t>();
template <>
const NameTable& names_of<of_action_t>();
template <>
const NameTable& names_of<ctype_of_action_t>();
template <>
const NameTable& names_of<lcmgr_report_event_t>();
template <>
const NameTable& names_of<stat_type_t>();
template <>
const NameTable& names_of<brief_stat_type_t>();

// Values that the interface carries as plain numbers.
const NameTable& forward_mode_names();
const NameTable& rx_reason_names();
const NameTable& mac_update_names();
const NameTable& flow_port_names();
const NameTable& udf_base_names();
const NameTable& packet_type_names();

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
