// SPDX-License-Identifier: Apache-2.0
//
// Words and numbers: what every part of the shell needs to read a line.
#ifndef SHELL_TEXT_H_
#define SHELL_TEXT_H_

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace shell {

// Something the user wrote is wrong, or what a script expected did not come. The message is one
// line; whoever runs the command puts the place in front of it.
class Error : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Splits a line into commands and each command into words. Commands end at `;`, a `#` at the
// start of a word begins a comment. Quotes ('...' or "...") keep spaces and these marks, anywhere
// in a word; a backslash inside "..." or outside of quotes takes the next character as it is.
// Throws Error when a quote is left open, and at a NUL, which no text has.
std::vector<std::vector<std::string>> split_commands(const std::string& line);

// `word` quoted where split_commands() would otherwise take it apart.
std::string quoted(const std::string& word);

// The pieces one behind the other.
template <class... Pieces>
std::string joined_pieces(const Pieces&... pieces) {
  std::string text;
  (text.append(pieces), ...);
  return text;
}

std::vector<std::string> split(const std::string& text, char separator);
std::string joined(const std::vector<std::string>& words, const std::string& separator);

// Decimal, or hexadecimal with 0x. `what` names the value in the message of the Error thrown when
// the text is no number from `lowest` to `highest`.
std::int64_t parse_number(const std::string& text, const std::string& what, std::int64_t lowest,
                          std::int64_t highest);
// The same without an Error: false when it is no number in that range.
bool read_number(const std::string& text, std::int64_t lowest, std::int64_t highest,
                 std::int64_t& number);

// Seconds with up to nine digits behind the point, up to `most`, in nanoseconds; Error otherwise.
std::uint64_t parse_seconds(const std::string& text, const std::string& what,
                            std::int64_t most_seconds);

// Nanoseconds as seconds: 300, 0.25.
std::string seconds_text(std::uint64_t nanoseconds);

// The candidate with the fewest letters to change, empty when none is near.
std::string nearest(const std::string& word, const std::vector<std::string>& candidates);

}  // namespace shell

#endif  // SHELL_TEXT_H_
