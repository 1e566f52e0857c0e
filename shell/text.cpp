// SPDX-License-Identifier: Apache-2.0
#include "text.h"

#include <algorithm>
#include <cctype>
#include <numeric>

#include "softcard/base/clock.h"
#include "softcard/base/text.h"

namespace shell {

std::vector<std::vector<std::string>> split_commands(const std::string& line) {
  const std::size_t nul = line.find('\0');
  if (nul != std::string::npos) {
    throw Error("column " + std::to_string(nul + 1) + " is a NUL, which no command has");
  }
  std::vector<std::vector<std::string>> commands(1);
  std::string word;
  bool in_word = false;
  const auto end_word = [&] {
    if (in_word) commands.back().push_back(word);
    word.clear();
    in_word = false;
  };
  char quote = 0;
  for (std::size_t i = 0; i < line.size(); ++i) {
    const char c = line[i];
    if (c == '\\' && quote != '\'' && i + 1 < line.size()) {
      word += line[++i];
      in_word = true;
    } else if (quote != 0) {
      if (c == quote) {
        quote = 0;
      } else {
        word += c;
      }
    } else if (c == '"' || c == '\'') {
      quote = c;
      in_word = true;
    } else if (c == '#' && !in_word) {
      break;
    } else if (c == ';') {
      end_word();
      commands.emplace_back();
    } else if (std::isspace(static_cast<unsigned char>(c)) != 0) {
      end_word();
    } else {
      word += c;
      in_word = true;
    }
  }
  if (quote != 0) throw Error(std::string("a ") + quote + " is left open");
  end_word();
  commands.erase(
      std::remove_if(commands.begin(), commands.end(), [](const auto& c) { return c.empty(); }),
      commands.end());
  return commands;
}

std::string quoted(const std::string& word) {
  if (!word.empty() && word.find_first_of(" \t;'\"\\#") == std::string::npos) return word;
  std::string result = "\"";
  for (const char c : word) {
    if (c == '"' || c == '\\') result += '\\';
    result += c;
  }
  return result + '"';
}

std::vector<std::string> split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::size_t start = 0;
  for (;;) {
    const std::size_t end = text.find(separator, start);
    parts.push_back(text.substr(start, end - start));
    if (end == std::string::npos) return parts;
    start = end + 1;
  }
}

std::string joined(const std::vector<std::string>& words, const std::string& separator) {
  std::string result;
  for (const std::string& word : words) {
    if (&word != &words.front()) result += separator;
    result += word;
  }
  return result;
}

bool read_number(const std::string& text, std::int64_t lowest, std::int64_t highest,
                 std::int64_t& number) {
  return softcard::parse_number(text, lowest, highest, number);
}

std::int64_t parse_number(const std::string& text, const std::string& what, std::int64_t lowest,
                          std::int64_t highest) {
  std::int64_t number = 0;
  if (!read_number(text, lowest, highest, number)) {
    throw Error(what + ": '" + text + "' is not a number from " + std::to_string(lowest) + " to " +
                std::to_string(highest));
  }
  return number;
}

std::uint64_t parse_seconds(const std::string& text, const std::string& what,
                            std::int64_t most_seconds) {
  const std::vector<std::string> parts = split(text, '.');
  std::int64_t whole = 0;
  std::int64_t fraction = 0;
  bool good = parts.size() <= 2 && read_number(parts[0], 0, most_seconds, whole);
  if (good && parts.size() == 2) {
    std::string digits = parts[1];
    good = !digits.empty() && digits.size() <= 9;
    digits.resize(9, '0');
    good = good && digits.find_first_not_of("0123456789") == std::string::npos &&
           read_number(digits, 0, 999999999, fraction);
  }
  if (!good) {
    throw Error(what + ": '" + text + "' is no time from 0 to " + std::to_string(most_seconds) +
                " such as 300 or 0.25");
  }
  return static_cast<std::uint64_t>(whole) * softcard::kNanosecondsPerSecond +
         static_cast<std::uint64_t>(fraction);
}

std::string seconds_text(std::uint64_t nanoseconds) {
  std::string fraction = std::to_string(nanoseconds % softcard::kNanosecondsPerSecond);
  fraction.insert(0, 9 - fraction.size(), '0');
  fraction.erase(fraction.find_last_not_of('0') + 1);
  return std::to_string(nanoseconds / softcard::kNanosecondsPerSecond) +
         (fraction.empty() ? "" : "." + fraction);
}

std::string nearest(const std::string& word, const std::vector<std::string>& candidates) {
  // A long text is no mistyped command.
  constexpr std::size_t kLongestWord = 200;
  if (word.size() > kLongestWord) return {};
  std::string best;
  // A word of which no letter stays is another one.
  std::size_t best_distance = std::min(word.size(), std::max<std::size_t>(2, word.size() / 3) + 1);
  std::vector<std::size_t> row;
  for (const std::string& candidate : candidates) {
    row.resize(candidate.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= word.size(); ++i) {
      std::size_t diagonal = row[0];
      row[0] = i;
      for (std::size_t j = 1; j <= candidate.size(); ++j) {
        const std::size_t replaced = diagonal + (word[i - 1] == candidate[j - 1] ? 0U : 1U);
        diagonal = row[j];
        row[j] = std::min({replaced, row[j] + 1, row[j - 1] + 1});
      }
    }
    if (row.back() < best_distance) {
      best_distance = row.back();
      best = candidate;
    }
  }
  return best;
}

}  // namespace shell
