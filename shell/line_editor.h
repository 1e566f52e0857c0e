// SPDX-License-Identifier: Apache-2.0
//
// Lines from a terminal, as they become ready: edited, with history and completion where the build
// found a line editing library, else as the terminal gives them.
#ifndef SHELL_LINE_EDITOR_H_
#define SHELL_LINE_EDITOR_H_

#include <functional>
#include <string>
#include <vector>

namespace shell {

// There is one at a time. It owns the terminal's settings until it goes.
class LineEditor {
 public:
  struct Calls {
    std::function<void(const std::string& line)> line;  // a line is whole
    std::function<void()> end;                          // there will be no more
    // Gives the completions of `text`, which follows the whole words `words`.
    std::function<std::vector<std::string>(const std::vector<std::string>& words,
                                           const std::string& text)>
        complete;
  };

  LineEditor(const std::string& prompt, Calls calls);
  ~LineEditor();
  LineEditor(const LineEditor&) = delete;
  LineEditor& operator=(const LineEditor&) = delete;

  // Standard input has something to read.
  void ready();

  // Forgets the line that is being typed, as on an interrupt.
  void forget();

  // Takes the line that is being typed off the screen, and puts it back.
  void clear();
  void restore();
};

}  // namespace shell

#endif  // SHELL_LINE_EDITOR_H_
