// SPDX-License-Identifier: Apache-2.0
//
// Tests of entry points are rows. A row calls one entry point, and its cases say for one port each
// which steps the host sees, in order. For every case these properties hold:
//
//   - the steps are those, and the result is the one given
//   - when a step is refused the result is false and nothing comes after it, unless the case
//     has a Departure for that step
//   - when a step throws, the exception comes through and nothing comes after it
//   - whenever the result is false the outputs are untouched
//   - the SDK's operations are reached through the row's slots of its table
//
// In steps, "@" stands for a hardware port where the helpers below say so, and " no" at the end
// marks a question that the host answers with false anyway: refusing it changes nothing.
// Arguments differ from each other, so that a swap shows.
#ifndef TESTS_API_ROWS_H_
#define TESTS_API_ROWS_H_

#include <gtest/gtest.h>

#include <iosfwd>
#include <list>
#include <string>
#include <vector>

#include "tests/support/recorder.h"

namespace vorn::test {

using Steps = std::vector<std::string>;

// The result when step number `step` (from 1) is refused, other than false and nothing more.
struct Departure {
  std::size_t step;
  bool result;
  Steps then;
};

struct Case {
  Usp port;  // the_port during the call
  Steps steps;
  bool result = true;
  std::vector<Departure> departures = {};
  std::list<Usp> ports = {};  // the_ports during the call
};

struct Row {
  const char* name;  // of the entry point, without vorn_; a second row adds what it is about
  bool (*call)();
  std::vector<std::size_t> slots;  // in order of first use
  std::vector<Case> cases;
};
std::ostream& operator<<(std::ostream& stream, const Row& row);

// The arguments of the rows' calls.
extern Usp the_port;
extern std::list<Usp> the_ports;

// The caller's variable for an output, filled with a pattern; steps know it as "out0", "out1", ...
unsigned char* output_bytes(std::size_t number);
template <class T, std::size_t number = 0>
T& output() {
  return *reinterpret_cast<T*>(output_bytes(number));
}

// ---- Cases of the regular shapes ----------------------------------------------------------------
// `operation` is its step, with "@" for the hardware port.

std::vector<Case> call(const std::string& operation);
std::vector<Case> translate_lookup(const std::string& operation);
std::vector<Case> lookup_translate(const std::string& operation);
std::vector<Case> members(const std::string& operation);
std::vector<Case> members_lookup_first(const std::string& operation);
std::vector<Case> guarded_members(const std::string& operation);
std::vector<Case> ports(const std::string& operation);

// `operation` with every "@" replaced.
std::string at(const std::string& operation, const std::string& mp);

class EntryPoint : public testing::TestWithParam<Row> {};
std::string row_name(const testing::TestParamInfo<Row>& row);

}  // namespace vorn::test

#endif  // TESTS_API_ROWS_H_
