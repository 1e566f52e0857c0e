// SPDX-License-Identifier: Apache-2.0
#include "interactive.h"

#include <unistd.h>

#include <iostream>

#include "libxorp/eventloop.hh"
#include "line_editor.h"
#include "shell.h"

namespace shell {

namespace {

// How often the card looks for what its cables brought and what time did.
constexpr int kRoundMilliseconds = 20;

std::vector<std::string> complete(const Shell& shell, const std::string& text, unsigned word) {
  std::vector<std::string> choices;
  const auto offer = [&](const std::string& choice) {
    if (choice.compare(0, text.size(), text) == 0) choices.push_back(choice);
  };
  if (word == 0) {
    for (const std::string& name : shell.commands().names()) offer(name);
  } else {
    // Whatever the words of a usage offer: show's tables, cable's kinds, groups behind help.
    for (const std::string& name : shell.commands().names()) offer(name);
    for (const char* port : {"lag/", "vlan/", "1/1/"}) offer(port);
  }
  return choices;
}

class Session {
 public:
  explicit Session(Shell& shell)
      : shell_(shell),
        editor_("vornsh> ",
                {[this](const std::string& line) { run(line); }, [this] { shell_.quit(); },
                 [this](const std::string& text, unsigned word) {
                   return complete(shell_, text, word);
                 }}) {
    shell_.set_screen({[this] {
                         if (!running_) editor_.clear();
                       },
                       [this] {
                         if (!running_) editor_.restore();
                       }});
  }
  ~Session() { shell_.set_screen({}); }

  void input_ready(XorpFd, IoEventType) { editor_.ready(); }
  bool round() {
    shell_.settle();
    return true;
  }

 private:
  void run(const std::string& line) {
    running_ = true;
    shell_.run_line(line, {});
    running_ = false;
  }

  Shell& shell_;
  bool running_ = false;  // a command prints, and no line is being typed
  LineEditor editor_;
};

}  // namespace

void run_interactive(Shell& shell) {
  std::cout << "A software line card with " << shell.commands().all().size()
            << " commands; help lists them, quit ends.\n";
  EventLoop& loop = shell.loop();
  Session session(shell);
  loop.add_ioevent_cb(XorpFd(STDIN_FILENO), IOT_READ, callback(&session, &Session::input_ready));
  const XorpTimer rounds =
      loop.new_periodic_ms(kRoundMilliseconds, callback(&session, &Session::round));
  while (!shell.done()) loop.run();
  loop.remove_ioevent_cb(XorpFd(STDIN_FILENO), IOT_READ);
}

}  // namespace shell
