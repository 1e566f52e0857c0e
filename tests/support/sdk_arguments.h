// SPDX-License-Identifier: Apache-2.0
//
// Arguments for any operation of VornSdkBase, each different from the others.
#ifndef TESTS_SUPPORT_SDK_ARGUMENTS_H_
#define TESTS_SUPPORT_SDK_ARGUMENTS_H_

#include <cstddef>
#include <cstring>
#include <list>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>

#include "tests/support/recorder.h"
#include "vorn_sdk_base.h"

namespace vorn::test {

constexpr std::size_t kArgumentBytes = 512;  // behind a pointer

template <class T>
T make_argument(unsigned number) {
  if constexpr (std::is_pointer_v<T>) {  // functions, user data, addresses, bitmaps, arrays
    alignas(16) static unsigned char buffers[32][kArgumentBytes];
    unsigned char* const buffer = buffers[number % 32];
    std::memset(buffer, static_cast<int>(number), sizeof buffers[0]);
    return reinterpret_cast<T>(buffer);
  } else if constexpr (std::is_same_v<T, bool>) {
    return number % 2 == 0;
  } else if constexpr (std::is_arithmetic_v<T> || std::is_enum_v<T>) {
    return static_cast<T>(number);
  } else if constexpr (std::is_same_v<T, Mp>) {
    return {number, number + 50};
  } else if constexpr (std::is_same_v<T, Usp>) {
    return {number, number + 50, number + 60};
  } else if constexpr (std::is_same_v<T, std::list<Mp>>) {
    return {Mp(number, 1), Mp(number, 2)};
  } else if constexpr (std::is_same_v<T, std::string>) {
    return "name" + std::to_string(number);
  } else if constexpr (std::is_same_v<T, Packet>) {
    Packet packet;
    packet.set_type(number);
    packet.set_data({0xca, 0xfe});
    return packet;
  } else if constexpr (std::is_trivially_copyable_v<T>) {  // records of flows
    T record{};
    unsigned char bytes[sizeof(T)];
    std::memset(bytes, static_cast<int>(number), sizeof bytes);
    std::memcpy(&record, bytes, sizeof bytes);
    return record;
  } else {
    return T();  // lists of counters
  }
}

template <class T>
class Argument {
 public:
  explicit Argument(unsigned number) : number_(number), value_(make_argument<T>(number)) {}
  T& get() { return value_; }
  void name() {
    const std::string number = std::to_string(number_);
    host().names[&value_] = "argument " + number;
    if constexpr (std::is_pointer_v<T>) {
      host().names[reinterpret_cast<const void*>(value_)] = "buffer " + number;
    }
  }
  // What it holds, or points at.
  std::string bytes() const {
    if constexpr (std::is_class_v<std::remove_pointer_t<T>> && std::is_pointer_v<T>) {
      // Counters without the padding between their fields.
      std::string all;
      for (std::size_t i = 0; i < kArgumentBytes / sizeof *value_; ++i) {
        all += text(value_[i].type) + "=" + text(value_[i].value) + " ";
      }
      return all;
    } else if constexpr (std::is_pointer_v<T>) {
      return {reinterpret_cast<const char*>(value_), kArgumentBytes};
    } else if constexpr (std::is_trivially_copyable_v<T>) {
      return {reinterpret_cast<const char*>(&value_), sizeof value_};
    } else {
      return text_of(value_);
    }
  }

 private:
  static std::string text_of(const Packet& packet) { return text(packet); }
  static std::string text_of(const std::string& words) { return words; }
  static std::string text_of(const std::list<Mp>& ports) { return text(ports); }
  template <class Counter>
  static std::string text_of(const std::list<Counter>& counters) {
    std::string all;
    for (const Counter& counter : counters) {
      all += text(counter.type) + "=" + text(counter.value) + " ";
    }
    return all;
  }

  unsigned number_;
  T value_;
};

template <>
class Argument<unsigned char[6]> {
 public:
  explicit Argument(unsigned) {}
  unsigned char (&get())[6] { return value_; }
  void name() { host().names[&value_] = "address"; }
  std::string bytes() const { return {reinterpret_cast<const char*>(value_), sizeof value_}; }

 private:
  unsigned char value_[6] = {1, 2, 3, 4, 5, 6};
};

// The arguments of one operation.
template <class... Parameters>
class Arguments {
 public:
  Arguments() : Arguments(std::index_sequence_for<Parameters...>()) {}

  // Calls the operation; the recorder names each argument by its number.
  bool call(VornSdkBase& sdk, bool (VornSdkBase::*operation)(Parameters...)) {
    std::apply([](auto&... argument) { (argument.name(), ...); }, values_);
    return call_unnamed(sdk, operation);
  }
  bool call_unnamed(VornSdkBase& sdk, bool (VornSdkBase::*operation)(Parameters...)) {
    return std::apply([&](auto&... argument) { return (sdk.*operation)(argument.get()...); },
                      values_);
  }
  // What all of them hold.
  std::string bytes() const {
    return std::apply(
        [](const auto&... argument) { return (std::string() + ... + argument.bytes()); }, values_);
  }

 private:
  template <std::size_t... number>
  explicit Arguments(std::index_sequence<number...>)
      : values_(Argument<std::remove_cv_t<std::remove_reference_t<Parameters>>>(
            static_cast<unsigned>(number + 1))...) {}

  std::tuple<Argument<std::remove_cv_t<std::remove_reference_t<Parameters>>>...> values_;
};

}  // namespace vorn::test

#endif  // TESTS_SUPPORT_SDK_ARGUMENTS_H_
