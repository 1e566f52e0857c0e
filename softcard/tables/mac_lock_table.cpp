// SPDX-License-Identifier: Apache-2.0

#include "softcard/tables/mac_lock_table.h"

#include <climits>

#include "softcard/base/limits.h"
#include "softcard/base/refusal.h"

namespace softcard {

MacLockTable::MacLockTable()
    : drop_(PortSet::first(kMaxPorts)),
      lag_limits_(kMaxLagNumber, kNoMacLimit),
      vlan_limits_(kVlanCount, kNoMacLimit) {
  port_limits_.fill(kNoMacLimit);
}

bool MacLockTable::set(int& limit, int value) {
  if (!in_range("limit", value, kNoMacLimit, INT_MAX)) return false;
  if (limit != kNoMacLimit) --limits_set_;
  if (value != kNoMacLimit) ++limits_set_;
  limit = value;
  return true;
}

}  // namespace softcard
