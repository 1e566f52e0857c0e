// SPDX-License-Identifier: Apache-2.0
//
// Why a frame went where it went: the record of its way through the pipeline, table by table, and
// the words of that record.
#ifndef SOFTCARD_PIPELINE_TRACE_H_
#define SOFTCARD_PIPELINE_TRACE_H_

#include <cstdint>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "softcard/base/net_types.h"
#include "softcard/tables/tables.h"

namespace softcard {

// Why a packet was handed to the CPU, in a few words; `reason` is RX_REASON_....
const char* rx_reason_text(unsigned reason);

// Describes a flow's action in a few words; `kind` is OF_ACTION_....
const char* flow_action_text(unsigned kind);

// The record of frames on their way. The pipeline fills one while it is set.
class Trace {
 public:
  // One stage of the pipeline, with its finding and decision.
  struct Step {
    std::string stage;  // "port", "vlan", "stp", "fdb", ...
    std::string text;
  };

  void add(const char* stage, std::string text) { steps_.push_back({stage, std::move(text)}); }
  void clear() { steps_.clear(); }
  const std::vector<Step>& steps() const { return steps_; }

  // All steps, a line each: the stage in a column of its own, then the text.
  std::string to_string() const;

 private:
  std::vector<Step> steps_;
};

// Numbers that a step shows as an address and in hexadecimal.
struct MacText {
  std::uint64_t number;  // MacAddress::to_number()
};
struct HexText {
  std::uint64_t number;
};

// Writes the steps of a trace out of their parts: words, numbers, addresses, destinations and drop
// reasons. Without a trace a step costs a comparison.
class TraceWriter {
 public:
  // `tables`, which the writer keeps, know the names of LAGs.
  explicit TraceWriter(const Tables& tables) : tables_(tables) {}

  // Writes to `trace` until it is set to null.
  void set(Trace* trace) { trace_ = trace; }
  bool on() const { return trace_ != nullptr; }

  template <class... Parts>
  void operator()(const char* stage, const Parts&... parts) const {
    if (trace_ != nullptr) write(stage, parts...);
  }

 private:
  template <class... Parts>
  void write(const char* stage, const Parts&... parts) const {
    std::string line;
    (append(line, parts), ...);
    trace_->add(stage, std::move(line));
  }

  static void append(std::string& line, const char* words) { line += words; }
  template <class Number, class = std::enable_if_t<std::is_integral_v<Number>>>
  static void append(std::string& line, Number number) {
    line += std::to_string(number);
  }
  static void append(std::string& line, DropReason reason);
  static void append(std::string& line, HexText hex);
  static void append(std::string& line, MacText mac);
  void append(std::string& line, Destination destination) const;

  const Tables& tables_;
  Trace* trace_ = nullptr;
};

}  // namespace softcard

#endif  // SOFTCARD_PIPELINE_TRACE_H_
