// SPDX-License-Identifier: Apache-2.0
//
// One row for each C entry point, and what must hold for all of them: see rows.cpp. Each
// <family>_test.cpp has the rows of its family, in the order of the header.
#ifndef TESTS_CAPI_ROWS_H_
#define TESTS_CAPI_ROWS_H_

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <set>
#include <string>
#include <type_traits>

#include "tests/support/recorder.h"

namespace vorn::test {

// Memory of the caller's that outputs go to, filled with a pattern beforehand. outputs[0] converts
// to a pointer of whatever type the entry point takes.
class Outputs {
 public:
  class Place {
   public:
    Place(Outputs& outputs, int index) : outputs_(outputs), index_(index) {}

    template <class T>
    operator T*() const {  // NOLINT(google-explicit-constructor)
      if constexpr (!std::is_void_v<T>) outputs_.read_[index_] = &read<T>;
      return reinterpret_cast<T*>(outputs_.bytes_[index_]);
    }

   private:
    Outputs& outputs_;
    int index_;
  };

  Outputs() { std::memset(bytes_, kPattern, sizeof(bytes_)); }

  Place operator[](int index) { return Place(*this, index); }

  // The values with spaces between, "-" for memory that was not touched, up to the last that was.
  // A "+" behind a value: so was the memory behind it.
  std::string text() const;
  // The same with "*" for every value.
  std::string shape() const;

 private:
  static constexpr unsigned char kPattern = 0xa5;
  static constexpr int kPlaces = 4;
  static constexpr std::size_t kPlaceBytes = 32;

  static bool touched(const unsigned char* from, const unsigned char* to);
  std::string join(bool shape) const;

  template <class T>
  static std::string read(const unsigned char* bytes) {
    std::string value;
    std::size_t size = sizeof(T);
    if constexpr (std::is_same_v<T, unsigned char>) {
      value = mac_text(bytes);
      size = 6;
    } else if constexpr (std::is_same_v<T, bool>) {
      value = vorn::test::text(static_cast<int>(*bytes));
    } else {
      T typed;
      std::memcpy(&typed, bytes, sizeof(typed));
      if constexpr (std::is_same_v<T, usp_s>) {
        value = vorn::test::text(Usp(typed.unit, typed.slot, typed.port));
      } else {
        value = vorn::test::text(typed);
      }
    }
    return value + (touched(bytes + size, bytes + kPlaceBytes) ? "+" : "");
  }

  alignas(16) unsigned char bytes_[kPlaces][kPlaceBytes];
  std::string (*read_[kPlaces])(const unsigned char*) = {};
};

// An argument that is an output: a place of Outputs.
struct Out {
  int place;
};
constexpr Out out0{0};
constexpr Out out1{1};
constexpr Out out2{2};
constexpr Out out3{3};

template <class Parameter, class Argument>
Parameter to_parameter(Argument argument, Outputs& outputs) {
  if constexpr (std::is_same_v<Argument, Out>) {
    return outputs[argument.place];
  } else {
    return static_cast<Parameter>(argument);
  }
}

// A call of an entry point, to be made later.
template <class... Parameters, class... Arguments>
std::function<int(Outputs&)> call(int (*entry)(Parameters...), Arguments... arguments) {
  return [=](Outputs& outputs) { return entry(to_parameter<Parameters>(arguments, outputs)...); };
}

struct Row {
  const char* name;
  std::function<int(Outputs&)> call;
  // What the host is asked once, besides other things; or how its text begins.
  const char* step;
  // Outputs::text() after success, or its shape().
  std::string outputs = "";
  // The numbers, from 1, of the steps whose refusal is no failure.
  std::set<std::size_t> survives = {};
  // Outputs::text() after a failure.
  std::string after_failure = "";
  int result = 1;
};

inline void PrintTo(const Row& row, std::ostream* stream) { *stream << row.step; }

class Rows : public testing::TestWithParam<Row> {};

std::string row_name(const testing::TestParamInfo<Row>& info);

// ---- Arguments. All are different, so that a swap shows -----------------------------------------

inline usp_s port = {1, 1, 3};      // hardware port 2:7
inline usp_s other = {1, 1, 4};     // hardware port 2:8
inline usp_s lag = {1, 20, 5};      // id 33
inline usp_s new_lag = {1, 20, 9};  // none yet
inline usp_s unsorted[] = {{1, 1, 9}, {1, 1, 3}, {1, 1, 6}, {1, 1, 3}};
inline usp_s pair[] = {{1, 1, 2}, {1, 1, 1}};
inline usp_s twice[] = {{1, 1, 2}, {1, 1, 2}};
inline unsigned char mac[6] = {0x02, 0x00, 0x5e, 0x00, 0x53, 0x11};
inline unsigned char ip6[16] = {0x20, 0x01, 0x0d, 0xb8, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0x11};
inline unsigned char mask6[16] = {0xff, 0xff, 0xff, 0xff, 0, 0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0x22};

// Flags as a careless caller passes them: only the low 8 bits count.
constexpr int kOn = 0x1280;
constexpr int kOff = 0x7f00;

}  // namespace vorn::test

#endif  // TESTS_CAPI_ROWS_H_
