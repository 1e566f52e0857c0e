// SPDX-License-Identifier: Apache-2.0
#include "value.h"

#include <algorithm>
#include <cstdio>

namespace shell {

std::string json_string(const std::string& text) {
  std::string result = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      result += '\\';
      result += c;
    } else if (static_cast<unsigned char>(c) < 0x20) {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned char>(c));
      result += escape;
    } else {
      result += c;
    }
  }
  return result + '"';
}

Value text_value(const std::string& text) { return {text, json_string(text)}; }
Value number_value(std::int64_t number) { return {std::to_string(number), std::to_string(number)}; }
Value number_value(std::uint64_t number) {
  return {std::to_string(number), std::to_string(number)};
}
Value flag_value(bool on) { return on ? Value{"on", "true"} : Value{"off", "false"}; }

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
