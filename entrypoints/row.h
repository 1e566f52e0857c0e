// SPDX-License-Identifier: Apache-2.0
//
// A row names an entry point, its arguments and what it is for, once for everything that derives
// calls from it: the shell's commands and the Python module's functions.
//
//   rows.add(VORN_BOTH(get_port_pvid), {"port", "out pvid"}, "VLAN of untagged frames");
//
// How arguments are read and results are given comes from the function's own type. The row says
// what the type does not:
//
//   "out pvid"      a result; must agree with the type where the type says it
//   "always limit"  as out, and given even when the entry point fails
//   "ports[]"       any number of ports; in C the count that follows has no name of its own
//   "subnet:ip"     the kind of a plain number or of bytes, where the name is not the kind
//   "id?"           may be left out, which is 0
//
// Each file of a family has `template <class Rows> void add_<family>(Rows& rows)`, which calls
// rows.add() for each row in the order of the public header:
//
//   rows.add(name, function, names, help)                      one binding has it
//   rows.add(name, function, c_name, c_function, names, help)  both have it
#ifndef ENTRYPOINTS_ROW_H_
#define ENTRYPOINTS_ROW_H_

#include <initializer_list>
#include <string>
#include <vector>

#include "entrypoints/names.h"

// The name of an entry point and the function itself, written once.
#define VORN_API(name) "vorn_" #name, &vorn_##name
#define VORN_C(name) "ctype_vorn_" #name, &ctype_vorn_##name
#define VORN_BOTH(name) VORN_API(name), VORN_C(name)

namespace entrypoints {

// One argument of an entry point as its row names it.
struct Parameter {
  std::string name;
  // The kind, where the type does not say it: ip, mask, mac, ip6, mask6, bitmap, mode, hex, flag,
  // ...
  std::string kind;
  bool out = false;                  // a result
  bool always = false;               // a result even when the entry point fails
  bool optional = false;             // 0 when left out
  bool array = false;                // any number of them
  const NameTable* names = nullptr;  // of an enumeration
};

// Parses the names of a row.
std::vector<Parameter> parse_row(const std::initializer_list<const char*>& names);

}  // namespace entrypoints

#endif  // ENTRYPOINTS_ROW_H_
