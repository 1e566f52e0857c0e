// SPDX-License-Identifier: Apache-2.0
#include "interactive.h"

#include <unistd.h>

#include <cctype>
#include <iostream>
#include <utility>

#include "interrupt.h"
#include "libxorp/eventloop.hh"
#include "line_editor.h"
#include "shell.h"

namespace shell {

namespace {

// Completions of `text` as the word after `words`.
std::vector<std::string> complete(const Shell& shell, std::vector<std::string> words,
                                  const std::string& text) {
  std::vector<std::string> choices;
  const auto offer = [&](const std::string& choice) {
    if (choice.compare(0, text.size(), text) == 0) choices.push_back(choice);
  };
  // These have a command behind them.
  while (!words.empty() && (words.front() == "!" || words.front() == "repeat")) {
    words.erase(words.begin(), words.begin() + (words.front() == "!" || words.size() < 2 ? 1 : 2));
  }
  const Command* const command = words.empty() ? nullptr : shell.commands().find(words.front());
  if (words.empty() || words.front() == "help") {
    for (const std::string& name : shell.commands().names()) offer(name);
  } else if (command != nullptr && command->entry_point != nullptr) {
    if (words.size() > command->words.size()) return choices;
    for (const std::string& choice : command->words[words.size() - 1].choices) offer(choice);
  } else if (command != nullptr) {
    // The words of the usage that are to be written as they stand.
    for (std::string usage = command->usage; !usage.empty();) {
      const std::size_t end = usage.find_first_of(" |,[]");
      const std::string word = usage.substr(0, end);
      if (!word.empty() && std::islower(static_cast<unsigned char>(word[0])) != 0) offer(word);
      usage.erase(0, end == std::string::npos ? end : end + 1);
    }
  }
  return choices;
}

class Session {
 public:
  explicit Session(Shell& shell)
      : shell_(shell),
        editor_("vornsh> ",
                {[this](const std::string& line) { run(line); }, [this] { shell_.quit(); },
                 [this](const std::vector<std::string>& words, const std::string& text) {
                   return complete(shell_, words, text);
                 }}) {
    shell_.set_screen({[this] {
                         if (!running_) editor_.clear();
                       },
                       [this] {
                         if (!running_) editor_.restore();
                       }});
  }
  ~Session() { shell_.set_screen({}); }

  void listen() {
    shell_.loop().add_ioevent_cb(XorpFd(STDIN_FILENO), IOT_READ,
                                 callback(this, &Session::input_ready));
  }
  void stop_listening() { shell_.loop().remove_ioevent_cb(XorpFd(STDIN_FILENO), IOT_READ); }

  // Gives up the line that is being typed.
  void forget() {
    unfinished_.clear();
    editor_.forget();
  }

 private:
  void input_ready(XorpFd, IoEventType) { editor_.ready(); }

  // Input that is typed while the line runs waits in the terminal.
  void run(const std::string& line) {
    if (shell_.done()) return;
    unfinished_ += line;
    if (!unfinished_.empty() && unfinished_.back() == '\\') {
      unfinished_.pop_back();
      return;
    }
    stop_listening();
    running_ = true;
    forget_interrupt();
    shell_.run_line(std::exchange(unfinished_, {}), {});
    forget_interrupt();
    running_ = false;
    listen();
  }

  Shell& shell_;
  bool running_ = false;    // a command prints, and no line is being typed
  std::string unfinished_;  // lines so far that go on in the next one
  LineEditor editor_;
};

}  // namespace

void run_interactive(Shell& shell) {
  if (!shell.json()) {
    shell.out() << "A software line card with " << shell.commands().all().size()
                << " commands; help lists them, quit ends.\n";
  }
  catch_interrupts();
  EventLoop& loop = shell.loop();
  Session session(shell);
  session.listen();
  const XorpTimer rounds = shell.rounds();
  while (!shell.done()) {
    loop.run();
    if (!interrupted()) continue;
    forget_interrupt();
    session.forget();
  }
  session.stop_listening();
}

}  // namespace shell
