// SPDX-License-Identifier: Apache-2.0
//
// Any SDK with a watch over its calls: the watch may trace a call, or have it fail before the SDK
// sees it. A host hands the wrapper to the library only while watching() says so; the library
// asks for the SDK at each call, and so calls that nobody watches cost nothing:
//
//   bool vornsdk_get_sdk_instance(VornSdkBase*& sdk) {
//     sdk = watch.watching() ? static_cast<VornSdkBase*>(&watched) : &the_sdk;
//     return true;
//   }
//
// It needs the platform headers alone, and so serves hosts on real hardware as well.
#ifndef SOFTCARD_SDK_WATCHED_SDK_H_
#define SOFTCARD_SDK_WATCHED_SDK_H_

#include <list>
#include <type_traits>
#include <utility>

#include "operations/forwarding_sdk.h"
#include "operations/operations.h"
#include "softcard/base/refusal.h"
#include "softcard/sdk/call_text.h"
#include "softcard/sdk/call_watch.h"

namespace softcard {

class WatchedSdk final : public vorn::operations::ForwardingSdk<WatchedSdk> {
 public:
  // Both outlive the object.
  WatchedSdk(VornSdkBase& sdk, CallWatch& watch) : sdk_(sdk), watch_(watch) {}

  // Calls the operation of the SDK unless the watch has it fail, and traces the call when it
  // is done.
  template <unsigned slot, class... Arguments>
  bool carry(Arguments&... arguments) {
    return call<slot>(vorn::operations::kOperation<slot>.kFunction,
                      std::make_integer_sequence<unsigned, sizeof...(Arguments)>(), arguments...);
  }

 private:
  template <unsigned slot, class... Parameters, unsigned... index, class... Arguments>
  bool call(bool (VornSdkBase::*function)(Parameters...), std::integer_sequence<unsigned, index...>,
            Arguments&... arguments) {
    const auto& operation = vorn::operations::kOperation<slot>;
    using Operation = vorn::operations::OperationAt<slot>;
    CallWatch& watch = watch_;  // a callback may end whoever holds this object
    forget_answer();
    const std::uint64_t refused_before = refusals();
    const bool result = !watch.fails(operation.name) && (sdk_.*function)(arguments...);
    if (!watch.traces(operation.name)) return result;
    CallText text(operation.name);
    (show<Parameters, typename Operation::template Meaning<index>>(text, result, arguments), ...);
    const bool has_reason = !result && refusals() != refused_before;
    watch.write(text.finish(result, has_reason ? last_refusal() : ""));
    return result;
  }

  // Shows an argument. What a call that failed did not write may be anything, and is not read.
  template <class Parameter, class Meaning, class Argument>
  static void show(CallText& text, bool result, const Argument& argument) {
    using Value = std::remove_reference_t<Parameter>;
    constexpr bool is_output =
        std::is_same_v<Meaning, vorn::operations::Mac>
            ? std::is_same_v<Value, unsigned char*>
            : std::is_lvalue_reference_v<Parameter> && !std::is_const_v<Value> &&
                  !std::is_same_v<Value, std::list<Mp>> && !std::is_same_v<Value, of_flow_mp_s>;
    if (is_output && !result) {
      text.add_unknown();
    } else {
      text.add(argument, Meaning());
    }
  }

  VornSdkBase& sdk_;
  CallWatch& watch_;
};

}  // namespace softcard

#endif  // SOFTCARD_SDK_WATCHED_SDK_H_
