// SPDX-License-Identifier: Apache-2.0
#include "value.h"

#include <algorithm>
#include <cstdio>

namespace shell {

namespace {

// The length of the UTF-8 character at `at`, 0 when there is none: a byte that is out of place, a
// longer form of a short character, a surrogate, or beyond the last character.
std::size_t character_bytes(const std::string& text, std::size_t at) {
  const auto byte = [&](std::size_t i) {
    return at + i < text.size() ? static_cast<unsigned char>(text[at + i]) : 0U;
  };
  const auto continues = [&](std::size_t i) { return (byte(i) & 0xC0) == 0x80; };
  const unsigned first = byte(0);
  const unsigned second = byte(1);
  if (first < 0x80) return 1;
  if (!continues(1)) return 0;
  if (first >= 0xC2 && first <= 0xDF) return 2;
  if (!continues(2)) return 0;
  if ((first == 0xE0 && second >= 0xA0) || (first == 0xED && second < 0xA0) ||
      (first > 0xE0 && first < 0xF0 && first != 0xED)) {
    return 3;
  }
  if (!continues(3)) return 0;
  return (first == 0xF0 && second >= 0x90) || (first > 0xF0 && first < 0xF4) ||
                 (first == 0xF4 && second < 0x90)
             ? 4
             : 0;
}

}  // namespace

std::string json_string(const std::string& text) {
  std::string result = "\"";
  for (std::size_t at = 0; at < text.size();) {
    const char c = text[at];
    const std::size_t bytes = character_bytes(text, at);
    if (bytes != 1) {
      result += bytes == 0 ? "\\ufffd" : text.substr(at, bytes);
    } else if (c == '"' || c == '\\') {
      result += '\\';
      result += c;
    } else if (static_cast<unsigned char>(c) < 0x20) {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned char>(c));
      result += escape;
    } else {
      result += c;
    }
    at += std::max<std::size_t>(bytes, 1);
  }
  return result + '"';
}

Value text_value(const std::string& text) { return {text, json_string(text)}; }
Value number_value(std::int64_t number) { return {std::to_string(number), std::to_string(number)}; }
Value number_value(std::uint64_t number) {
  return {std::to_string(number), std::to_string(number)};
}
Value flag_value(bool on) { return on ? Value{"on", "true"} : Value{"off", "false"}; }

Value no_value() { return {"-", "null"}; }

Value list_value(const std::vector<Value>& items) {
  Value list{items.empty() ? "-" : "", "["};
  const char* separator = "";
  for (const Value& item : items) {
    list.text += separator + item.text;
    list.json += separator + item.json;
    separator = ",";
  }
  list.json += ']';
  return list;
}

std::string json_object(const NamedValues& fields) {
  std::string result = "{";
  const char* separator = "";
  for (const auto& [name, value] : fields) {
    result += separator + json_string(name) + ":" + value.json;
    separator = ",";
  }
  return result + '}';
}

std::vector<std::string> Table::lines() const {
  std::vector<std::size_t> widths;
  for (std::size_t column = 0; column < columns_.size(); ++column) {
    std::size_t width = columns_[column].size();
    for (const auto& row : rows_) width = std::max(width, row[column].text.size());
    widths.push_back(width);
  }
  std::vector<std::string> lines;
  const auto add_line = [&](const auto& cell_text) {
    std::string line;
    for (std::size_t column = 0; column < columns_.size(); ++column) {
      const std::string& cell = cell_text(column);
      line += cell;
      if (column + 1 < columns_.size()) line.append(widths[column] - cell.size() + 2, ' ');
    }
    line.erase(line.find_last_not_of(' ') + 1);
    lines.push_back(line);
  };
  add_line([&](std::size_t column) -> const std::string& { return columns_[column]; });
  for (const auto& row : rows_) {
    add_line([&](std::size_t column) -> const std::string& { return row[column].text; });
  }
  return lines;
}

std::string Table::json() const {
  std::string result = "[";
  const char* separator = "";
  for (const auto& row : rows_) {
    NamedValues fields;
    for (std::size_t column = 0; column < columns_.size(); ++column) {
      fields.emplace_back(columns_[column], row[column]);
    }
    result += separator + json_object(fields);
    separator = ",";
  }
  return result + ']';
}

void Reply::show(const std::string& name, const Table& table) {
  for (const std::string& line : table.lines()) say(line);
  data.emplace_back(name, Value{"", table.json()});
}

}  // namespace shell
