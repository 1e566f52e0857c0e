// SPDX-License-Identifier: Apache-2.0
//
// From the interface's values to the card's and back, where more than one family needs it. Those
// that return a bool are false, and give the reason of the refusal, when a port is none of the
// card's.
#ifndef SOFTCARD_SDK_CONVERSIONS_H_
#define SOFTCARD_SDK_CONVERSIONS_H_

#include <cstring>
#include <list>
#include <string>
#include <vector>

#include "softcard/base/refusal.h"
#include "softcard/card.h"

namespace softcard {

// Six bytes at `mac`, sixteen at `ip6`.
inline MacAddress mac_of(const unsigned char* mac) { return MacAddress::from_bytes(mac); }
inline Ipv6Address ip6_of(const unsigned char* ip6) { return Ipv6Address::from_bytes(ip6); }
inline void write_mac(const MacAddress& mac, unsigned char* out) {
  std::memcpy(out, mac.bytes.data(), mac.bytes.size());
}

inline bool port_of(const AddressPlan& addresses, const Mp& mp, PortIndex& port) {
  return addresses.port_of(mp, port) || addresses.refuse(mp);
}

// The ports of a list in its order, a port that is listed twice included twice.
inline bool ports_of(const AddressPlan& addresses, const std::list<Mp>& mps,
                     std::vector<PortIndex>& ports) {
  ports.reserve(mps.size());
  for (const Mp& mp : mps) {
    PortIndex port = 0;
    if (!port_of(addresses, mp, port)) return false;
    ports.push_back(port);
  }
  return true;
}

inline bool set_of(const AddressPlan& addresses, const std::list<Mp>& mps, PortSet& ports) {
  for (const Mp& mp : mps) {
    PortIndex port = 0;
    if (!port_of(addresses, mp, port)) return false;
    ports.insert(port);
  }
  return true;
}

inline std::list<Mp> mps_of(const PortSet& ports) {
  std::list<Mp> mps;
  for (const PortIndex port : ports) mps.push_back(AddressPlan::mp_of(port));
  return mps;
}

// Whether `mp` is a LAG that exists: module 0, and its id.
inline bool lag_of(const Card& card, const Mp& mp) {
  if (mp.module() != 0) return refuse(mp, " is no LAG");
  return card.tables().lags.require(mp.port());
}

// A port or, with `trunk`, a LAG that exists.
inline bool destination_of(Card& card, const Mp& mp, bool trunk, Destination& destination) {
  forget_answer();  // whether it is a LAG: `trunk` has it
  if (trunk) {
    if (!lag_of(card, mp)) return false;
    destination = Destination::lag(static_cast<std::uint16_t>(mp.port()));
    return true;
  }
  PortIndex port = 0;
  if (!port_of(card.addresses(), mp, port)) return false;
  destination = Destination::port(port);
  return true;
}

// A destination in reasons: "1/1/3", "lag/2".
inline std::string text(const Card& card, Destination destination) {
  return destination.is_lag() ? card.tables().lags.text(destination.number)
                              : AddressPlan::text(AddressPlan::usp_of(destination.number));
}

}  // namespace softcard

#endif  // SOFTCARD_SDK_CONVERSIONS_H_
