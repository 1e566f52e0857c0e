// SPDX-License-Identifier: Apache-2.0

#include "softcard/base/address_plan.h"

#include <cstdint>

#include "softcard/base/refusal.h"
#include "softcard/base/text.h"

namespace softcard {

std::string AddressPlan::text(const Usp& usp) {
  if (is_lag(usp)) return "lag/" + std::to_string(usp.port());
  if (is_vlan(usp)) return "vlan/" + std::to_string(usp.port());
  return std::to_string(usp.unit()) + '/' + std::to_string(usp.slot()) + '/' +
         std::to_string(usp.port());
}

std::string AddressPlan::text(const Mp& mp) {
  if (mp.module() == kModule && mp.port() != 0) return text(Usp(kUnit, kPortSlot, mp.port() - 1));
  return std::to_string(mp.module()) + ':' + std::to_string(mp.port());
}

bool AddressPlan::refuse(const Usp& usp) const {
  if (is_physical(usp)) return softcard::refuse(usp, " is a port");
  if (is_lag(usp)) return softcard::refuse(usp, " is a LAG interface");
  if (is_vlan(usp)) return softcard::refuse(usp, " is a VLAN interface");
  if (usp.unit() != kUnit || usp.slot() < kPortSlot || usp.slot() > kVlanSlot) {
    return softcard::refuse(usp, " is no address of the card");
  }
  if (usp.slot() == kLagSlot) {
    return softcard::refuse(usp, ": LAG interfaces are 1 to ", kMaxLagNumber);
  }
  if (usp.slot() == kVlanSlot) return softcard::refuse(usp, ": VLANs are 1 to ", kMaxVlan);
  if (port_count_ == 0) return softcard::refuse(usp, ": there is no card");
  return softcard::refuse(usp, ": the card has ", port_count_, " ports");
}

bool AddressPlan::refuse(const Mp& mp) const {
  if (mp.module() == kModule && mp.port() != 0) {
    return softcard::refuse(mp, ": the card has ", port_count_, " ports");
  }
  return softcard::refuse(mp, " is no port");
}

bool parse_usp(const std::string& text, Usp& usp, std::string& error) {
  const std::size_t slash = text.find('/');
  const std::string head = text.substr(0, slash);
  const std::string tail = slash == std::string::npos ? "" : text.substr(slash + 1);
  unsigned number = 0;
  if (head == "lag" || head == "vlan") {
    const unsigned highest = head == "lag" ? kMaxLagNumber : kMaxVlan;
    if (!parse_decimal(tail, 1u, highest, number)) {
      error = "'" + text + "': " + head + "/ wants a number from 1 to " + std::to_string(highest);
      return false;
    }
    usp = head == "lag" ? AddressPlan::lag_usp(number) : AddressPlan::vlan_usp(number);
    return true;
  }
  const std::size_t second = tail.find('/');
  unsigned unit = 0;
  unsigned slot = 0;
  if (second == std::string::npos || !parse_decimal(head, 0u, UINT32_MAX, unit) ||
      !parse_decimal(tail.substr(0, second), 0u, UINT32_MAX, slot) ||
      !parse_decimal(tail.substr(second + 1), 0u, UINT32_MAX, number)) {
    error = "'" + text + "' is no port: write unit/slot/port such as 1/1/3, lag/2 or vlan/10";
    return false;
  }
  usp = Usp(unit, slot, number);
  return true;
}

}  // namespace softcard
