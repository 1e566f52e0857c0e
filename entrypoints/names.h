// SPDX-License-Identifier: Apache-2.0
//
// The names of the values of enumerations, as the shell reads and prints them and as Python's
// enumerations have them (there in capitals).
#ifndef ENTRYPOINTS_NAMES_H_
#define ENTRYPOINTS_NAMES_H_

#include <cstdint>
#include <vector>

#include "vornlcapi/types.h"

namespace entrypoints {

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

}  // namespace entrypoints

#endif  // ENTRYPOINTS_NAMES_H_
