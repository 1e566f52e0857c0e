// SPDX-License-Identifier: Apache-2.0
//
// The answer of a command: values that print for a person and as JSON, and the reply that
// gathers them.
#ifndef SHELL_VALUE_H_
#define SHELL_VALUE_H_

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace shell {

// A value in both of its forms.
struct Value {
  std::string text;
  std::string json;
};

// Always valid UTF-8: bytes of `text` that are not become U+FFFD.
std::string json_string(const std::string& text);

Value text_value(const std::string& text);
Value number_value(std::int64_t number);
Value number_value(std::uint64_t number);
Value flag_value(bool on);                          // on, off
Value no_value();                                   // -, null
Value list_value(const std::vector<Value>& items);  // a,b,c; - when empty

using NamedValues = std::vector<std::pair<std::string, Value>>;

// {"a": 1, "b": 2}
std::string json_object(const NamedValues& fields);

// Rows under headings: columns aligned for a person, an array of objects in JSON.
class Table {
 public:
  explicit Table(std::vector<std::string> columns) : columns_(std::move(columns)) {}
  void add(std::vector<Value> row) { rows_.push_back(std::move(row)); }
  std::vector<std::string> lines() const;
  std::string json() const;

 private:
  std::vector<std::string> columns_;
  std::vector<std::vector<Value>> rows_;
};

// The answer of one command.
struct Reply {
  std::optional<bool> result;      // of an entry point
  std::string reason;              // why it is false, when the card said so
  NamedValues inputs;              // its decoded arguments, in order
  NamedValues outputs;             // printed as `name = value`
  std::vector<std::string> lines;  // printed as they are
  NamedValues data;                // the same for JSON, by name
  std::string failure;             // what did not come that was asked for
  std::string note;                // a word of comfort for those who read along

  void say(const std::string& line) { lines.push_back(line); }
  // The result in words: "ok", "failed: VLAN 5000: above 4094".
  std::string verdict() const {
    if (*result) return "ok";
    return reason.empty() ? "failed" : "failed: " + reason;
  }
  void show(const std::string& name, const Table& table);
};

}  // namespace shell

#endif  // SHELL_VALUE_H_
