// SPDX-License-Identifier: Apache-2.0
#include "names.h"

#include "text.h"

namespace shell {

std::uint32_t parse_name(const NameTable& names, const std::string& text, const std::string& what) {
  std::uint32_t number = 0;
  bool known = true;
  for (const std::string& word : names.bits ? split(text, '+') : std::vector<std::string>{text}) {
    bool found = false;
    for (const auto& entry : names.entries) {
      if (word != entry.name) continue;
      number |= entry.number;
      found = true;
      break;
    }
    std::int64_t value = 0;
    if (!found && read_number(word, 0, UINT32_MAX, value)) {
      number |= static_cast<std::uint32_t>(value);
      found = true;
    }
    known = known && found;
  }
  if (known) return number;
  std::vector<std::string> choices;
  for (const auto& entry : names.entries) choices.emplace_back(entry.name);
  const std::string near = nearest(text, choices);
  std::string message = what + ": '" + text + "' is neither a number nor ";
  if (choices.size() > 8) {
    message += "a known name";
    if (!near.empty()) message += "; did you mean " + near + "?";
  } else {
    message += "one of " + joined(choices, ", ");
  }
  throw Error(message);
}

Value name_value(const NameTable& names, std::uint32_t number) {
  std::string text;
  std::uint32_t left = number;
  for (const auto& entry : names.entries) {
    const bool fits = names.bits && entry.number != 0 ? (left & entry.number) == entry.number
                                                      : number == entry.number;
    if (!fits) continue;
    if (!names.bits) return text_value(entry.name);
    text += (text.empty() ? "" : "+") + std::string(entry.name);
    left &= ~entry.number;
  }
  if (!names.bits || left != 0) {
    if (text.empty()) return number_value(std::uint64_t{number});
    text += '+' + std::to_string(left);
  }
  return text_value(text);
}

}  // namespace shell
