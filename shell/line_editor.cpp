// SPDX-License-Identifier: Apache-2.0
#include "line_editor.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <iterator>
#include <sstream>

#include "text.h"

#if VORN_LINE_EDITING
#include <readline/history.h>
#include <readline/readline.h>
#endif

namespace shell {

namespace {

LineEditor::Calls the_calls;
std::string the_prompt;

}  // namespace

#if VORN_LINE_EDITING

namespace {

constexpr int kMostHistory = 1000;

std::string history_file() {
  const char* const home = std::getenv("HOME");
  return home == nullptr ? "" : std::string(home) + "/.vornsh_history";
}

void take_line(char* text) {
  if (text == nullptr) {
    std::cout << std::endl;
    the_calls.end();
    return;
  }
  const std::string line = text;
  std::free(text);
  if (!line.empty()) add_history(line.c_str());
  // Pasted text may have several lines.
  for (const std::string& one : split(line, '\n')) the_calls.line(one);
}

std::vector<std::string> the_choices;

char* next_choice(const char*, int state) {
  static std::size_t next = 0;
  if (state == 0) next = 0;
  return next < the_choices.size() ? strdup(the_choices[next++].c_str()) : nullptr;
}

char** complete(const char* text, int start, int) {
  rl_attempted_completion_over = 1;
  std::istringstream before(std::string(rl_line_buffer, static_cast<std::size_t>(start)));
  const std::vector<std::string> words{std::istream_iterator<std::string>(before), {}};
  the_choices = the_calls.complete(words, text);
  return rl_completion_matches(text, next_choice);
}

}  // namespace

LineEditor::LineEditor(const std::string& prompt, Calls calls) {
  the_calls = std::move(calls);
  the_prompt = prompt;
  rl_readline_name = "vornsh";
  rl_catch_signals = 0;
  rl_attempted_completion_function = complete;
  // Ports and addresses are single words.
  rl_completer_word_break_characters = " \t;!";
  if (!history_file().empty()) read_history(history_file().c_str());
  rl_callback_handler_install(the_prompt.c_str(), take_line);
}

LineEditor::~LineEditor() {
  // The library has put up the prompt for a line that nobody will ask for.
  clear();
  rl_callback_handler_remove();
  if (history_file().empty()) return;
  stifle_history(kMostHistory);
  write_history(history_file().c_str());
}

void LineEditor::ready() { rl_callback_read_char(); }

void LineEditor::forget() {
  std::cout << "^C" << std::endl;
  rl_free_line_state();
  rl_callback_sigcleanup();
  rl_replace_line("", 0);
  rl_on_new_line();
  rl_redisplay();
}

void LineEditor::clear() {
  std::cout.flush();
  std::fputs("\r\033[K", stdout);
  std::fflush(stdout);
}

void LineEditor::restore() { rl_forced_update_display(); }

#else

namespace {

std::string unfinished_line;

void show_prompt() { std::cout << the_prompt << std::flush; }

}  // namespace

LineEditor::LineEditor(const std::string& prompt, Calls calls) {
  the_calls = std::move(calls);
  the_prompt = prompt;
  show_prompt();
}

LineEditor::~LineEditor() = default;

void LineEditor::ready() {
  char bytes[1024];
  const ssize_t count = ::read(STDIN_FILENO, bytes, sizeof bytes);
  if (count <= 0) {
    std::cout << std::endl;
    the_calls.end();
    return;
  }
  unfinished_line.append(bytes, static_cast<std::size_t>(count));
  for (std::size_t end = unfinished_line.find('\n'); end != std::string::npos;
       end = unfinished_line.find('\n')) {
    const std::string line = unfinished_line.substr(0, end);
    unfinished_line.erase(0, end + 1);
    the_calls.line(line);
    show_prompt();
  }
}

void LineEditor::forget() {
  unfinished_line.clear();
  std::cout << std::endl;
  show_prompt();
}

void LineEditor::clear() { std::cout << '\n'; }
void LineEditor::restore() { show_prompt(); }

#endif

}  // namespace shell
