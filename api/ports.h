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
// Each pattern comes in two forms. on_port<Order, &VornSdkBase::operation>(port, arguments...)
// hands the operation the hardware port and then the arguments, which must have exactly the types
// of its parameters. on_port<Order>(port, step) leaves the operation's call to `step`, for the
// operations whose arguments stand otherwise.
#ifndef API_PORTS_H_
#define API_PORTS_H_

#include <list>
#include <type_traits>

#include "api/frame.h"
#include "vorn_port_mapping.h"

namespace vorn::detail {

// What a single-port operation needs. A hardware port starts as module 0, port 0, and stays so
// where a translation fails or none is made.
struct Target {
  VornSdkBase* sdk = nullptr;  // null: the lookup or the translation failed
  Mp mp{0, 0};
};

// A call of an SDK operation on one hardware port. Refers to a callable, which must outlive it.
class Step {
 public:
  template <class Callable, class = std::enable_if_t<std::is_invocable_r_v<
                                bool, const Callable&, VornSdkBase&, const Mp&>>>
  Step(const Callable& callable)  // NOLINT(google-explicit-constructor)
      : callable_(&callable), invoke_(&invoke<Callable>) {}

  bool operator()(VornSdkBase& sdk, const Mp& mp) const { return invoke_(callable_, sdk, mp); }

 private:
  template <class Callable>
  static bool invoke(const void* callable, VornSdkBase& sdk, const Mp& mp) {
    return (*static_cast<const Callable*>(callable))(sdk, mp);
  }

  const void* callable_;
  bool (*invoke_)(const void*, VornSdkBase&, const Mp&);
};

// The two orders. find() is for one physical port. each() takes a step on every hardware port
// behind `port`: false as soon as the lookup, the translation or a step fails, true when there is
// no hardware port.
struct [[gnu::visibility("hidden")]] TranslateLookup {
  static Target find(const Usp& port);
  static bool each(const Usp& port, Step step);
};
struct [[gnu::visibility("hidden")]] LookupTranslate {
  static Target find(const Usp& port);
  static bool each(const Usp& port, Step step);
};

// Takes a step on every hardware port in turn, until one is false. False without an SDK object.
[[gnu::visibility("hidden")]] bool each_of(const std::list<Mp>& mps, VornSdkBase* sdk, Step step);

// Looks up, translates the whole list, then takes a step on every hardware port.
[[gnu::visibility("hidden")]] bool each_listed(const std::list<Usp>& ports, Step step);

// What administrative state, flow control and jamming require of a port: not a VLAN interface,
// and not unknown.
[[gnu::visibility("hidden")]] bool is_physical_or_lag(const Usp& port);

// ---- on_port --------------------------------------------------------------------------------

template <class Order, class... Arguments>
struct PortSteps {
  [[gnu::noinline]] static bool run(const Usp& port, Arguments... arguments, Operation operation) {
    const Target to = Order::find(port);
    return to.sdk != nullptr && invoke<const Mp&>(*to.sdk, operation, to.mp, arguments...);
  }
};

template <class Order, auto operation, class Signature = decltype(operation)>
struct OnPort;

template <class Order, auto operation, class... Parameters>
struct OnPort<Order, operation, bool (VornSdkBase::*)(const Mp&, Parameters...)> {
  bool operator()(const Usp& port, Exactly<Parameters>... arguments) const {
    return PortSteps<Order, Passed<Parameters>...>::run(port, pass(arguments)...,
                                                        word_of(operation));
  }
};

template <class Order>
struct OnPort<Order, nullptr> {
  template <class Callable>
  bool operator()(const Usp& port, const Callable& step) const {
    const Target to = Order::find(port);
    return to.sdk != nullptr && step(*to.sdk, to.mp);
  }
};

template <class Order, auto operation = nullptr>
inline constexpr OnPort<Order, operation> on_port{};

// ---- on_members -----------------------------------------------------------------------------

template <class Order, class... Arguments>
struct MemberSteps {
  [[gnu::noinline]] static bool run(const Usp& port, Arguments... arguments, Operation operation) {
    return Order::each(port, [=](VornSdkBase& sdk, const Mp& mp) {
      return invoke<const Mp&>(sdk, operation, mp, arguments...);
    });
  }
};

template <class Order, auto operation, class Signature = decltype(operation)>
struct OnMembers;

template <class Order, auto operation, class... Parameters>
struct OnMembers<Order, operation, bool (VornSdkBase::*)(const Mp&, Parameters...)> {
  bool operator()(const Usp& port, Exactly<Parameters>... arguments) const {
    return MemberSteps<Order, Passed<Parameters>...>::run(port, pass(arguments)...,
                                                          word_of(operation));
  }
};

template <class Order>
struct OnMembers<Order, nullptr> {
  bool operator()(const Usp& port, Step step) const { return Order::each(port, step); }
};

template <class Order, auto operation = nullptr>
inline constexpr OnMembers<Order, operation> on_members{};

// ---- on_ports -------------------------------------------------------------------------------

template <class... Arguments>
struct ListSteps {
  [[gnu::noinline]] static bool run(const std::list<Usp>& ports, Arguments... arguments,
                                    Operation operation) {
    return each_listed(ports, [=](VornSdkBase& sdk, const Mp& mp) {
      return invoke<const Mp&>(sdk, operation, mp, arguments...);
    });
  }
};

template <auto operation, class Signature = decltype(operation)>
struct OnPorts;

template <auto operation, class... Parameters>
struct OnPorts<operation, bool (VornSdkBase::*)(const Mp&, Parameters...)> {
  bool operator()(const std::list<Usp>& ports, Exactly<Parameters>... arguments) const {
    return ListSteps<Passed<Parameters>...>::run(ports, pass(arguments)..., word_of(operation));
  }
};

template <auto operation>
inline constexpr OnPorts<operation> on_ports{};

}  // namespace vorn::detail

#endif  // API_PORTS_H_
