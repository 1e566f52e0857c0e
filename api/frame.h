// SPDX-License-Identifier: Apache-2.0
//
// The call frame: what every entry point that needs the SDK does. ports.h builds on it for the
// entry points that address ports.
//
// call<&VornSdkBase::operation>(arguments...) finds the SDK object and calls one operation. The
// parameters are those of the operation, and no argument is converted on its way into it: a
// wrong type or number is an error on the line of the call.
#ifndef API_FRAME_H_
#define API_FRAME_H_

#include "vorn_sdk.h"

namespace vorn::detail {

// The SDK object, or null while there is none. It is asked for at every call, never kept.
inline VornSdkBase* find_sdk() {
  VornSdkBase* sdk = nullptr;
  return vornsdk_get_sdk_instance(sdk) ? sdk : nullptr;
}

// A parameter of type T that takes an argument of type T and no other.
template <class T>
struct Exactly {
  Exactly(T argument) : value(argument) {}  // NOLINT(performance-unnecessary-value-param)
  template <class Other>
  Exactly(Other) = delete;

  T value;
};

template <auto operation, class Signature = decltype(operation)>
struct Call;

template <auto operation, class... Parameters>
struct Call<operation, bool (VornSdkBase::*)(Parameters...)> {
  // Inline in the entry point, so that arguments stay in their registers.
  [[gnu::always_inline]] bool operator()(Exactly<Parameters>... arguments) const {
    VornSdkBase* const sdk = find_sdk();
    return sdk != nullptr && (sdk->*operation)(arguments.value...);
  }
};

template <auto operation>
inline constexpr Call<operation> call{};

}  // namespace vorn::detail

#endif  // API_FRAME_H_
