// SPDX-License-Identifier: Apache-2.0
#include "entrypoints/row.h"

namespace entrypoints {

std::vector<Parameter> parse_row(const std::initializer_list<const char*>& names) {
  std::vector<Parameter> row;
  for (std::string text : names) {
    Parameter parameter;
    const auto strip_front = [&](const std::string& prefix) {
      const bool found = text.compare(0, prefix.size(), prefix) == 0;
      if (found) text.erase(0, prefix.size());
      return found;
    };
    parameter.always = strip_front("always ");
    parameter.out = strip_front("out ") || parameter.always;
    if (text.back() == '?') {
      parameter.optional = true;
      text.pop_back();
    }
    if (text.size() > 2 && text.compare(text.size() - 2, 2, "[]") == 0) {
      parameter.array = true;
      text.erase(text.size() - 2);
    }
    const std::size_t colon = text.find(':');
    parameter.name = text.substr(0, colon);
    parameter.kind = colon == std::string::npos ? parameter.name : text.substr(colon + 1);
    row.push_back(parameter);
  }
  return row;
}

}  // namespace entrypoints
