// SPDX-License-Identifier: Apache-2.0
//
// The call frame: what every entry point that needs the SDK does. ports.h builds on it for the
// entry points that address ports.
//
// call<&VornSdkBase::operation>(arguments...) finds the SDK object and calls one operation. The
// parameters are those of the operation, and no argument is converted on its way into it: a
// wrong type or number is an error on the line of the call.
//
// The library must be small on the target, so the steps are compiled once for all operations that
// look alike to the calling convention, and an entry point comes to a jump with one constant more
// in a register. The types are checked at the entry point, above that; this file is the one place
// that knows how.
#ifndef API_FRAME_H_
#define API_FRAME_H_

#include <cstddef>
#include <cstring>
#include <memory>
#include <type_traits>
#include <utility>

#include "vorn_sdk.h"

namespace vorn::detail {

// The SDK object, or null while there is none. It is asked for at every call, never kept.
[[gnu::visibility("hidden")]] VornSdkBase* find_sdk();

// A parameter of type T that takes an argument of type T and no other.
template <class T>
struct Exactly {
  Exactly(T argument) : value(argument) {}  // NOLINT(performance-unnecessary-value-param)
  template <class Other>
  Exactly(Other) = delete;

  T value;
};

// What the calling convention makes of an argument: an address for references and pointers, a word
// for the unsigned types of at most 32 bits and for enumerations. Every ABI that the library is
// built for passes the two kinds like the types they come from.
template <class T>
auto pass(Exactly<T> argument) {
  if constexpr (std::is_reference_v<T>) {
    return static_cast<const void*>(std::addressof(argument.value));
  } else if constexpr (std::is_pointer_v<T>) {
    return reinterpret_cast<const void*>(argument.value);
  } else if constexpr (std::is_same_v<T, int>) {
    return argument.value;
  } else {
    static_assert(sizeof(T) <= 4 && (std::is_unsigned_v<T> || std::is_enum_v<T>));
    return static_cast<unsigned int>(argument.value);
  }
}

template <class T>
using Passed = decltype(pass<T>(std::declval<Exactly<T>>()));

// An operation of the SDK as one word, which travels in a register where a member pointer would
// travel through memory. A pointer to a virtual member function has two words, and the second is
// the same for all of a class without bases.
using Operation = std::ptrdiff_t;

template <class... Parameters>
Operation word_of(bool (VornSdkBase::*operation)(Parameters...)) {
  static_assert(sizeof operation == 2 * sizeof(Operation), "a member pointer has two words");
  Operation word = 0;
  std::memcpy(&word, &operation, sizeof word);
  return word;
}

// Calls an operation given by word_of(). `arguments` are what pass() made of its arguments.
template <class... Arguments>
bool invoke(VornSdkBase& sdk, Operation word, Arguments... arguments) {
  const auto some_operation = &VornSdkBase::create_vlan;
  bool (VornSdkBase::*operation)(Arguments...) = nullptr;
  std::memcpy(&operation, &some_operation, sizeof operation);
  std::memcpy(&operation, &word, sizeof word);
  return (sdk.*operation)(arguments...);
}

template <class... Arguments>
struct CallSteps {
  [[gnu::noinline]] static bool run(Arguments... arguments, Operation operation) {
    VornSdkBase* const sdk = find_sdk();
    return sdk != nullptr && invoke(*sdk, operation, arguments...);
  }
};

template <auto operation, class Signature = decltype(operation)>
struct Call;

template <auto operation, class... Parameters>
struct Call<operation, bool (VornSdkBase::*)(Parameters...)> {
  bool operator()(Exactly<Parameters>... arguments) const {
    return CallSteps<Passed<Parameters>...>::run(pass(arguments)..., word_of(operation));
  }
};

template <auto operation>
inline constexpr Call<operation> call{};

}  // namespace vorn::detail

#endif  // API_FRAME_H_
