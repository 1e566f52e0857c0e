// SPDX-License-Identifier: Apache-2.0
//
// An operation of the SDK in a message: its arguments on the way to the card, its outputs on the
// way back. Both halves follow from the operation's type and its row in operations/operations.h.
//
// Whatever an operation may write travels both ways, so that what it leaves alone stays what it
// was. Outputs reach the caller's variables together, when the whole answer has been understood.
#ifndef REMOTE_CALLS_H_
#define REMOTE_CALLS_H_

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "operations/operations.h"
#include "remote/values.h"
#include "remote/wire.h"

namespace vorn::remote {

// ---- One parameter ------------------------------------------------------------------------------
// Carried<Parameter, Meaning> has
//
//   put(out, argument)   writes the caller's argument into the request
//   Output               what came back: get(in) reads it, commit(argument) writes it to the caller
//   Argument             the card's: get(in) reads the request, pass() gives it to the operation,
//                        put(out) writes what became of it into the answer

template <class Parameter, class Meaning, class = void>
struct Carried;

struct NoOutput {
  void get(Reader&) {}
  template <class Argument>
  void commit(const Argument&) {}
};

// Inputs: values and references to const.
template <class Parameter, class Meaning>
struct Carried<Parameter, Meaning,
               std::enable_if_t<!std::is_pointer_v<Parameter> &&
                                (!std::is_lvalue_reference_v<Parameter> ||
                                 std::is_const_v<std::remove_reference_t<Parameter>>)>> {
  using T = std::remove_cv_t<std::remove_reference_t<Parameter>>;
  using Output = NoOutput;
  class Argument {
   public:
    void get(Reader& in) { Value<T>::get(in, value_); }
    const T& pass() { return value_; }
    void put(Writer&) const {}

   private:
    T value_ = Value<T>::make();
  };
  static std::string code() { return Value<T>::code(); }
  static void put(Writer& out, const T& argument) { Value<T>::put(out, argument); }
};

// References that an operation may write to.
template <class T, class Meaning>
struct Carried<T&, Meaning, std::enable_if_t<!std::is_const_v<T> && !std::is_array_v<T>>> {
  class Output {
   public:
    void get(Reader& in) { get_output(in, value_); }
    void commit(T& argument) {
      if constexpr (std::is_same_v<T, bool>) {
        std::memcpy(&argument, &value_, sizeof argument);
      } else {
        argument = std::move(value_);
      }
    }

   private:
    T value_ = Value<T>::make();
  };
  class Argument {
   public:
    void get(Reader& in) { get_output(in, value_); }
    T& pass() { return value_; }
    void put(Writer& out) const { Value<T>::put(out, value_); }

   private:
    T value_ = Value<T>::make();
  };
  static std::string code() { return Value<T>::code() + " both ways"; }
  static void put(Writer& out, const T& argument) { Value<T>::put(out, argument); }

 private:
  // A flag that is not set yet goes to and fro as it is; nobody looks at it before it is.
  static void get_output(Reader& in, T& value) {
    if constexpr (std::is_same_v<T, bool>) {
      in.raw(&value, sizeof value);
    } else {
      Value<T>::get(in, value);
    }
  }
};

// Addresses and bitmaps, of so many bytes, or null. Those that are not const come back.
template <class Byte, class Meaning>
struct Carried<Byte*, Meaning,
               std::enable_if_t<std::is_same_v<std::remove_const_t<Byte>, unsigned char>>> {
  static constexpr bool kComesBack = !std::is_const_v<Byte>;
  using Array = std::array<unsigned char, Meaning::kBytes>;
  class Output {
   public:
    void get(Reader& in) {
      if (kComesBack) is_there_ = get_bytes(in, bytes_);
    }
    void commit(Byte* argument) const {
      if constexpr (kComesBack) {
        if (is_there_ && argument != nullptr) {
          std::copy(bytes_.begin(), bytes_.end(), argument);
        }
      }
    }

   private:
    bool is_there_ = false;
    Array bytes_{};
  };
  class Argument {
   public:
    void get(Reader& in) { is_there_ = get_bytes(in, bytes_); }
    Byte* pass() { return is_there_ ? bytes_.data() : nullptr; }
    void put(Writer& out) const {
      if (kComesBack) Carried::put(out, is_there_ ? bytes_.data() : nullptr);
    }

   private:
    bool is_there_ = false;
    Array bytes_{};
  };
  static std::string code() {
    return std::to_string(Meaning::kBytes) + " bytes" + (kComesBack ? " both ways" : "");
  }
  static void put(Writer& out, const unsigned char* argument) {
    out.u8(argument != nullptr);
    if (argument != nullptr) out.raw(argument, Meaning::kBytes);
  }

 private:
  static bool get_bytes(Reader& in, Array& bytes) {
    if (in.u8() == 0) return false;
    in.raw(bytes.data(), bytes.size());
    return true;
  }
};

template <class Meaning>
struct Carried<unsigned char (&)[6], Meaning> {
  class Output {
   public:
    void get(Reader& in) { in.raw(bytes_.data(), bytes_.size()); }
    void commit(unsigned char (&argument)[6]) const {
      std::copy(bytes_.begin(), bytes_.end(), argument);
    }

   private:
    std::array<unsigned char, 6> bytes_{};
  };
  class Argument {
   public:
    void get(Reader& in) { in.raw(bytes_, sizeof bytes_); }
    unsigned char (&pass())[6] { return bytes_; }
    void put(Writer& out) const { out.raw(bytes_, sizeof bytes_); }

   private:
    unsigned char bytes_[6] = {};
  };
  static std::string code() { return "6 bytes both ways"; }
  static void put(Writer& out, const unsigned char (&argument)[6]) { out.raw(argument, 6); }
};

// The caller's array of counters, with its room as the next argument. It is written, not read: the
// counters that the operation filled come back.
template <class Counter, class Meaning>
struct Carried<Counter*, Meaning,
               std::enable_if_t<std::is_class_v<Counter> && !std::is_const_v<Counter>>> {
  static constexpr unsigned kMostRoom = 4096;
  class Output {
   public:
    void get(Reader& in) { Value<std::list<Counter>>::get(in, counters_); }
    void commit(Counter* argument) const {
      if (argument == nullptr) return;
      for (const Counter& counter : counters_) {
        argument->type = counter.type;
        argument->value = counter.value;
        ++argument;
      }
    }

   private:
    std::list<Counter> counters_;
  };
  // Of `room` counters, each marked as not written.
  class Argument {
   public:
    void get(Reader& in) { is_there_ = in.u8() != 0; }
    void make_room(unsigned room) { counters_.assign(room, kUntouched); }
    Counter* pass() { return is_there_ ? counters_.data() : nullptr; }
    void put(Writer& out) const {
      const auto filled = std::find_if(counters_.begin(), counters_.end(),
                                       [](const Counter& c) { return c.type == kUntouched.type; });
      Value<std::list<Counter>>::put(out, {counters_.begin(), filled});
    }

   private:
    static constexpr Counter kUntouched = {static_cast<decltype(Counter::type)>(0xffffffff), 0};
    bool is_there_ = false;
    std::vector<Counter> counters_;
  };
  static std::string code() { return Value<Counter>::code() + " filled"; }
  static void put(Writer& out, const Counter* argument) { out.u8(argument != nullptr); }
};

// ---- A whole operation --------------------------------------------------------------------------

template <unsigned slot, unsigned index, class Parameter>
using CarriedAt =
    Carried<Parameter, typename operations::OperationAt<slot>::template Meaning<index>>;

// The operation's parameters in words: what the two ends must agree about.
template <unsigned slot, class... Parameters, unsigned... index>
std::string code_of(bool (VornSdkBase::*)(Parameters...),
                    std::integer_sequence<unsigned, index...>) {
  std::string code;
  ((code += CarriedAt<slot, index, Parameters>::code() + ';'), ...);
  return code;
}

template <unsigned slot, class Call, class... Parameters, unsigned... index>
bool carry_out_with(VornSdkBase& sdk, bool (VornSdkBase::*function)(Parameters...),
                    std::integer_sequence<unsigned, index...>, Reader& in, Writer& out,
                    const Call& call) {
  std::tuple<typename CarriedAt<slot, index, Parameters>::Argument...> arguments;
  (std::get<index>(arguments).get(in), ...);
  if (!in.done()) return false;
  call([&] { return (sdk.*function)(std::get<index>(arguments).pass()...); });
  (std::get<index>(arguments).put(out), ...);
  return true;
}

// The same with an array of counters. A room larger than any card fills is cut on the way to it.
template <unsigned slot, class Call, class Counter>
bool carry_out_with(VornSdkBase& sdk,
                    bool (VornSdkBase::*function)(const Mp&, Counter*, unsigned int&),
                    std::integer_sequence<unsigned, 0, 1, 2>, Reader& in, Writer& out,
                    const Call& call) {
  using Array = CarriedAt<slot, 1, Counter*>;
  Mp mp(0, 0);
  typename Array::Argument counters;
  Value<Mp>::get(in, mp);
  counters.get(in);
  const unsigned given = in.u32();
  if (!in.done()) return false;
  const unsigned room = std::min(given, Array::kMostRoom);
  unsigned count = room;
  counters.make_room(room);
  call([&] { return (sdk.*function)(mp, counters.pass(), count); });
  counters.put(out);
  out.u32(count == room ? given : count);
  return true;
}

template <class... Parameters>
constexpr auto parameter_numbers(bool (VornSdkBase::*)(Parameters...)) {
  return std::make_integer_sequence<unsigned, sizeof...(Parameters)>();
}

// Reads the arguments of a request and carries the operation out by `call`, which is handed
// something to call that returns the operation's result, and writes the outcome. Behind it come the
// outputs. False, and nothing called, when the request is malformed.
template <unsigned slot, class Call>
bool carry_out(VornSdkBase& sdk, Reader& in, Writer& out, const Call& call) {
  constexpr auto function = operations::OperationAt<slot>::kFunction;
  return carry_out_with<slot>(sdk, function, parameter_numbers(function), in, out, call);
}

}  // namespace vorn::remote

#endif  // REMOTE_CALLS_H_
