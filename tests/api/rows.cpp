// SPDX-License-Identifier: Apache-2.0
//
// The properties that hold for every row.

#include "tests/api/rows.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <ostream>
#include <typeinfo>
#include <utility>

namespace vorn::test {

Usp the_port = kPort;
std::list<Usp> the_ports;

namespace {

constexpr unsigned char kPattern = 0xa5;
constexpr std::size_t kOutputs = 4;
alignas(16) unsigned char outputs[kOutputs][16];

bool outputs_untouched() {
  const auto* const bytes = &outputs[0][0];
  return std::all_of(bytes, bytes + sizeof outputs,
                     [](unsigned char byte) { return byte == kPattern; });
}

// A step without its " no".
bool says_no(const std::string& step) {
  return step.size() > 3 && step.compare(step.size() - 3, 3, " no") == 0;
}
Steps plain(Steps steps) {
  for (std::string& step : steps) {
    if (says_no(step)) step.resize(step.size() - 3);
  }
  return steps;
}

void prepare(const Case& a_case) {
  host().reset();
  the_port = a_case.port;
  the_ports = a_case.ports;
  std::memset(outputs, kPattern, sizeof outputs);
  for (std::size_t i = 0; i < kOutputs; ++i) host().names[outputs[i]] = "out" + text(i);
}

void expect(const Row& row, const Case& a_case, std::size_t refuse, bool result,
            const Steps& steps) {
  prepare(a_case);
  host().refuse = refuse;
  EXPECT_EQ(row.call(), result) << row.name << " on " << text(a_case.port) << ", step " << refuse
                                << " refused";
  EXPECT_EQ(host().steps, plain(steps)) << row.name << ", step " << refuse << " refused";
  if (!result) {
    EXPECT_TRUE(outputs_untouched()) << row.name << ", step " << refuse << " refused";
  }
}

void expect_throw(const Row& row, const Case& a_case, std::size_t step) {
  prepare(a_case);
  host().throws = step;
  EXPECT_THROW(row.call(), Thrown) << row.name << ", step " << step;
  EXPECT_EQ(host().steps,
            plain(Steps(a_case.steps.begin(), a_case.steps.begin() + static_cast<long>(step))));
}

// ---- An SDK object of which only the table is there ---------------------------------------------

constexpr std::size_t kSlots = 190;
std::vector<std::size_t> slots_called;

template <std::size_t slot>
bool take_slot() {
  if (std::find(slots_called.begin(), slots_called.end(), slot) == slots_called.end()) {
    slots_called.push_back(slot);
  }
  return true;
}

// A table as compilers lay it out: the offset to the object's start, its type, the functions. The
// functions ignore their arguments.
template <std::size_t... slot>
std::array<const void*, 2 + kSlots> make_table(std::index_sequence<slot...>) {
  return {nullptr, &typeid(Recorder), reinterpret_cast<const void*>(&take_slot<slot>)...};
}

void expect_slots(const Row& row, const Case& a_case) {
  static const auto table = make_table(std::make_index_sequence<kSlots>());
  static const void* object = &table[2];
  prepare(a_case);
  host().sdk = reinterpret_cast<VornSdkBase*>(&object);
  slots_called.clear();
  row.call();
  EXPECT_EQ(slots_called, row.slots) << row.name;
}

}  // namespace

std::ostream& operator<<(std::ostream& stream, const Row& row) { return stream << row.name; }
std::string row_name(const testing::TestParamInfo<Row>& row) { return row.param.name; }

unsigned char* output_bytes(std::size_t number) { return outputs[number]; }

// ---- Shapes -------------------------------------------------------------------------------------

std::string at(const std::string& operation, const std::string& mp) {
  std::string all;
  for (const char c : operation) all += c == '@' ? mp : std::string(1, c);
  return all;
}

std::vector<Case> call(const std::string& operation) { return {{kPort, {"get_sdk()", operation}}}; }

std::vector<Case> translate_lookup(const std::string& operation) {
  std::vector<Case> cases{{kPort, {"usp_to_mp(1/1/3)", "get_sdk()", at(operation, "2:7")}}};
  for (const Usp& port : {kLag, kVlan, kUnknown}) {
    cases.push_back({port, {"usp_to_mp(" + text(port) + ") no"}, false});
  }
  return cases;
}

std::vector<Case> lookup_translate(const std::string& operation) {
  std::vector<Case> cases{{kPort, {"get_sdk()", "usp_to_mp(1/1/3)", at(operation, "2:7")}}};
  for (const Usp& port : {kLag, kVlan, kUnknown}) {
    cases.push_back({port, {"get_sdk()", "usp_to_mp(" + text(port) + ") no"}, false});
  }
  return cases;
}

namespace {

std::vector<Case> fan_out(const std::string& operation, bool lookup_first) {
  std::vector<Case> cases{
      {kPort, {at(operation, "2:7")}},
      {kLag, {at(operation, "2:1"), at(operation, "2:2"), at(operation, "2:3")}},
      {kVlan, {at(operation, "2:5"), at(operation, "2:6")}},
      {kEmptyLag, {}},
      {kUnknown, {}, false}};
  for (Case& a_case : cases) {
    const std::string translation = "usp_to_mp_list(" + text(a_case.port) + ")";
    Steps first{translation, "get_sdk()"};
    if (lookup_first) std::swap(first[0], first[1]);
    if (!a_case.result)
      first = lookup_first ? Steps{"get_sdk()", translation + " no"} : Steps{translation + " no"};
    a_case.steps.insert(a_case.steps.begin(), first.begin(), first.end());
  }
  return cases;
}

}  // namespace

std::vector<Case> members(const std::string& operation) { return fan_out(operation, false); }
std::vector<Case> members_lookup_first(const std::string& operation) {
  return fan_out(operation, true);
}

std::vector<Case> guarded_members(const std::string& operation) {
  std::vector<Case> cases = fan_out(operation, false);
  for (Case& a_case : cases) {
    const std::string physical = "is_port_physical(" + text(a_case.port) + ")";
    const std::string lag = "is_port_logical_lag(" + text(a_case.port) + ")";
    if (a_case.port == kPort) {
      a_case.departures = {{1, false, {lag}}};
      a_case.steps.insert(a_case.steps.begin(), physical);
    } else if (a_case.port.slot() == kLag.slot()) {
      a_case.steps.insert(a_case.steps.begin(), {physical + " no", lag});
    } else {
      a_case.steps = {physical + " no", lag + " no"};
      a_case.result = false;
    }
  }
  return cases;
}

std::vector<Case> ports(const std::string& operation) {
  const auto translated = [](const std::list<Usp>& all) {
    return "usp_list_to_mp_list(" + text(all) + ")";
  };
  const std::list<Usp> two{kPort, kOtherPort};
  const std::list<Usp> with_lag{kOtherPort, kLag};
  const std::list<Usp> with_unknown{kPort, kUnknown};
  std::vector<Case> cases;
  cases.push_back({kPort,
                   {"get_sdk()", translated(two), at(operation, "2:7"), at(operation, "2:8")},
                   true,
                   {},
                   two});
  cases.push_back({kPort,
                   {"get_sdk()", translated(with_lag), at(operation, "2:8"), at(operation, "2:1"),
                    at(operation, "2:2"), at(operation, "2:3")},
                   true,
                   {},
                   with_lag});
  cases.push_back({kPort, {"get_sdk()", translated({})}, true, {}, {}});
  cases.push_back(
      {kPort, {"get_sdk()", translated(with_unknown) + " no"}, false, {}, with_unknown});
  return cases;
}

// ---- Properties ---------------------------------------------------------------------------------

TEST_P(EntryPoint, KeepsItsContract) {
  const Row& row = GetParam();
  for (const Case& a_case : row.cases) {
    expect(row, a_case, 0, a_case.result, a_case.steps);
    for (std::size_t step = 1; step <= a_case.steps.size(); ++step) {
      expect_throw(row, a_case, step);
      if (says_no(a_case.steps[step - 1])) {
        expect(row, a_case, step, a_case.result, a_case.steps);
        continue;
      }
      Departure outcome{step, false, {}};
      for (const Departure& departure : a_case.departures) {
        if (departure.step == step) outcome = departure;
      }
      Steps steps(a_case.steps.begin(), a_case.steps.begin() + static_cast<long>(step));
      steps.insert(steps.end(), outcome.then.begin(), outcome.then.end());
      expect(row, a_case, step, outcome.result, steps);
    }
  }
  expect_slots(row, row.cases.front());
}

}  // namespace vorn::test
