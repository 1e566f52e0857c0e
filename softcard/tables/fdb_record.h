// SPDX-License-Identifier: Apache-2.0
//
// An entry of the MAC table as the interface's record.
#ifndef SOFTCARD_TABLES_FDB_RECORD_H_
#define SOFTCARD_TABLES_FDB_RECORD_H_

#include <algorithm>

#include "softcard/tables/fdb_table.h"
#include "vornlcapi/types.h"

namespace softcard {

inline unsigned fdb_record_flags(FdbKind kind) {
  switch (kind) {
    case FdbKind::static_entry:
      return L2_ADDR_STATIC;
    case FdbKind::system_entry:
      return L2_ADDR_SYSTEM;
    case FdbKind::learned:
      break;
  }
  return 0;
}

// `Record` is L2Addr or ctype_l2_addr_s; `port` is where the entry leads to, in its form.
template <class Record>
Record fdb_record(std::uint16_t vlan, const MacAddress& mac, decltype(Record::port) port,
                  FdbKind kind) {
  Record record = {{}, vlan, port, fdb_record_flags(kind)};
  std::copy(mac.bytes.begin(), mac.bytes.end(), record.mac);
  return record;
}

}  // namespace softcard

#endif  // SOFTCARD_TABLES_FDB_RECORD_H_
