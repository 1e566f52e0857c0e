// SPDX-License-Identifier: Apache-2.0
//
// The port patterns: how an entry point gets from logical ports to hardware ports and the SDK.
//
//   on_port     one operation on one physical port
//   on_members  one operation on each hardware port behind a logical port, until one is refused
//   on_ports    the same for a list of logical ports
//
// The order of SDK lookup and translation differs between entry points and is part of their
// contract, so the statement names it: TranslateLookup or LookupTranslate. on_ports always looks
// up first.
//
// A pattern hands the operation the hardware port and then the arguments, which must have exactly
// the types of its parameters. Entry points whose operation takes its arguments otherwise are
// written out with find() and each(), of which the patterns are made.
#ifndef API_PORTS_H_
#define API_PORTS_H_

#include <list>
#include <type_traits>

#include "api/frame.h"
#include "vorn_port_mapping.h"

namespace vorn::detail {

// The SDK object and hardware port that a single-port operation needs. The port starts as module 0,
// port 0, and stays so where a translation fails or none is made.
struct Target {
  VornSdkBase* sdk = nullptr;  // null: the lookup or the translation failed
  Mp mp{0, 0};
};

// Takes a step on every hardware port in turn, until one is false. False without an SDK object.
template <class Step>
bool each_of(const std::list<Mp>& mps, VornSdkBase* sdk, const Step& step) {
  if (sdk == nullptr) return false;
  for (const Mp& mp : mps) {
    if (!step(*sdk, mp)) return false;
  }
  return true;
}

// The two orders. find() is for one physical port. each() takes a step on every hardware port
// behind `port`: false as soon as the lookup, the translation or a step fails, true when there is
// no hardware port.
struct TranslateLookup {
  static Target find(const Usp& port) {
    Target to;
    if (vorn_usp_to_mp(port, to.mp)) to.sdk = find_sdk();
    return to;
  }

  template <class Step>
  static bool each(const Usp& port, const Step& step) {
    std::list<Mp> mps;
    return vorn_usp_to_mp_list(port, mps) && each_of(mps, find_sdk(), step);
  }
};

struct LookupTranslate {
  static Target find(const Usp& port) {
    Target to;
    to.sdk = find_sdk();
    if (to.sdk != nullptr && !vorn_usp_to_mp(port, to.mp)) to.sdk = nullptr;
    return to;
  }

  template <class Step>
  static bool each(const Usp& port, const Step& step) {
    VornSdkBase* const sdk = find_sdk();
    std::list<Mp> mps;
    return sdk != nullptr && vorn_usp_to_mp_list(port, mps) && each_of(mps, sdk, step);
  }

  // The same for a list of ports, which is translated whole before the first step.
  template <class Step>
  static bool each(const std::list<Usp>& ports, const Step& step) {
    VornSdkBase* const sdk = find_sdk();
    std::list<Mp> mps;
    return sdk != nullptr && vorn_usp_list_to_mp_list(ports, mps) && each_of(mps, sdk, step);
  }
};

// Whether a port can have administrative state, flow control and jamming: not a VLAN interface,
// and not unknown.
inline bool is_physical_or_lag(const Usp& port) {
  return is_port_physical(port) || is_port_logical_lag(port);
}

// find() in the shape of each().
template <class Order>
struct Single {
  template <class Step>
  static bool each(const Usp& port, const Step& step) {
    const Target to = Order::find(port);
    return to.sdk != nullptr && step(*to.sdk, to.mp);
  }
};

template <class Way, class Address, auto operation, class Signature = decltype(operation)>
struct PortPattern;

template <class Way, class Address, auto operation, class... Parameters>
struct PortPattern<Way, Address, operation, bool (VornSdkBase::*)(const Mp&, Parameters...)> {
  // Inline in the entry point, so that arguments stay in their registers.
  [[gnu::always_inline]] bool operator()(const Address& address,
                                         Exactly<Parameters>... arguments) const {
    return Way::each(address, [&](VornSdkBase& sdk, const Mp& mp) {
      return (sdk.*operation)(mp, arguments.value...);
    });
  }
};

template <class Order, auto operation>
inline constexpr PortPattern<Single<Order>, Usp, operation> on_port{};

template <class Order, auto operation>
inline constexpr PortPattern<Order, Usp, operation> on_members{};

template <auto operation>
inline constexpr PortPattern<LookupTranslate, std::list<Usp>, operation> on_ports{};

}  // namespace vorn::detail

#endif  // API_PORTS_H_
