// SPDX-License-Identifier: Apache-2.0
//
// The addresses of the card's ports: logical (Usp), hardware (Mp), as an index, and as text.
//
//   physical port i   Usp 1/1/i       Mp(1, i + 1)   "1/1/3"
//   LAG interface n   Usp 1/2/n       -              "lag/2"     n is 1 to 128
//   VLAN interface v  Usp 1/3/v       -              "vlan/10"   v is 1 to 4094
//
// No physical port is Mp(0, 0), which the interface uses for "none" and for the whole switch.
#ifndef SOFTCARD_BASE_ADDRESS_PLAN_H_
#define SOFTCARD_BASE_ADDRESS_PLAN_H_

#include <string>

#include "softcard/base/limits.h"
#include "softcard/base/net_types.h"
#include "vornlcapi/types.h"

namespace softcard {

inline constexpr unsigned kUnit = 1;
inline constexpr unsigned kPortSlot = 1;
inline constexpr unsigned kLagSlot = 2;
inline constexpr unsigned kVlanSlot = 3;
inline constexpr unsigned kModule = 1;

class AddressPlan {
 public:
  explicit AddressPlan(PortIndex port_count) : port_count_(port_count) {}

  PortIndex port_count() const { return port_count_; }

  // Tell the kind of a Usp by its numbers alone: a LAG or VLAN interface need not exist.
  bool is_physical(const Usp& usp) const {
    return usp.unit() == kUnit && usp.slot() == kPortSlot && usp.port() < port_count_;
  }
  static bool is_lag(const Usp& usp) {
    return usp.unit() == kUnit && usp.slot() == kLagSlot && usp.port() >= 1 &&
           usp.port() <= kMaxLagNumber;
  }
  static bool is_vlan(const Usp& usp) {
    return usp.unit() == kUnit && usp.slot() == kVlanSlot && valid_vlan(usp.port());
  }

  // The index of a physical port; false, and `port` untouched, for any other address.
  bool port_of(const Usp& usp, PortIndex& port) const {
    if (!is_physical(usp)) return false;
    port = static_cast<PortIndex>(usp.port());
    return true;
  }
  bool port_of(const Mp& mp, PortIndex& port) const {
    // Port 0 wraps round and is out of range like any other.
    if (mp.module() != kModule || mp.port() - 1 >= port_count_) return false;
    port = static_cast<PortIndex>(mp.port() - 1);
    return true;
  }

  static Usp usp_of(PortIndex port) { return Usp(kUnit, kPortSlot, port); }
  static Mp mp_of(PortIndex port) { return Mp(kModule, port + 1u); }
  static Usp lag_usp(unsigned number) { return Usp(kUnit, kLagSlot, number); }
  static Usp vlan_usp(unsigned vlan) { return Usp(kUnit, kVlanSlot, vlan); }

  // "1/1/3", "lag/2", "vlan/10"; any other address as its three numbers.
  static std::string text(const Usp& usp);
  // The text of the port that it is, on a card of enough ports; any other address as its two
  // numbers, "0:0".
  static std::string text(const Mp& mp);

  // Keep, as the reason of a refusal, what an address is when it is not what it should be: "1/1/99:
  // the card has 52 ports", "lag/2 is a LAG interface". Always false.
  bool refuse(const Usp& usp) const;
  bool refuse(const Mp& mp) const;

 private:
  PortIndex port_count_;
};

// Reads an address in any form that text() writes. It need not name anything that exists, so that
// scripts can try what the card does with it. False leaves `usp` as it was and says in `error` what
// is wrong.
bool parse_usp(const std::string& text, Usp& usp, std::string& error);

}  // namespace softcard

#endif  // SOFTCARD_BASE_ADDRESS_PLAN_H_
