// SPDX-License-Identifier: Apache-2.0
//
// The shell itself: it runs commands line by line, prints what they answer, and counts what went
// wrong.
#ifndef SHELL_SHELL_H_
#define SHELL_SHELL_H_

#include <array>
#include <deque>
#include <fstream>
#include <functional>
#include <iosfwd>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "command.h"
#include "softcard/card.h"

class EventLoop;

namespace shell {

// What a script asked for did not come: the command as such was good. Shell::run() makes it the
// reply's failure, which `!` asks for.
class Failure : public Error {
 public:
  using Error::Error;
};

// Where a command stands; an empty name is the keyboard.
struct Place {
  std::string name;
  unsigned line = 0;
};

struct Options {
  bool json = false;           // one object a command instead of text
  bool echo = false;           // print each command in front of what it answers
  bool stop_at_error = false;  // end a script at its first error
};

// A packet that the card handed to the CPU.
struct CpuPacket {
  softcard::PortIndex port;
  unsigned reason;  // RX_REASON_...
  std::vector<unsigned char> frame;
};

// An event that one of the shell's callbacks was called with.
struct Event {
  std::string name;
  NamedValues fields;
};

class Shell {
 public:
  explicit Shell(const Options& options);
  ~Shell();
  Shell(const Shell&) = delete;
  Shell& operator=(const Shell&) = delete;

  // The one shell of the process, for callbacks without user data.
  static Shell& current();

  // ---- Running commands ----------------------------------------------------------------------

  // Runs every line of a script; returns at its end, after `quit`, and after the first error when
  // that is asked for. `name` is what messages call it.
  void run_script(std::istream& script, const std::string& name);
  // The same for a file; Error when it cannot be read.
  void run_file(const std::string& path);
  // Runs the commands of one line.
  void run_line(const std::string& line, const Place& place);
  // Runs one command and answers; Error when it cannot be run.
  Reply run(const std::vector<std::string>& words);

  bool done() const { return done_; }
  void quit() { done_ = true; }
  // Whether commands are printed in front of their answers.
  void set_echo(bool on) { options_.echo = on; }
  // Nothing has gone wrong so far.
  bool good() const { return errors_ == 0; }

  // ---- For the commands ----------------------------------------------------------------------

  const CommandTable& commands() const { return table_; }

  // The card; Error while there is none.
  softcard::Card& card() const;
  // Has the card do all that is waiting: frames in its cables, ageing, events.
  void settle();

  // Where cables and the terminal wait for their descriptors; made when it is first asked for.
  EventLoop& loop();

  // Prints an event that a callback was called with, and keeps it for `expect`.
  void event(const std::string& name, const NamedValues& fields);

  // The events that no `expect` has taken yet, oldest first.
  std::deque<Event>& events() { return events_; }

  // Result and outputs of the last entry point called.
  const Reply& last_call() const { return last_call_; }

  // Prints a call of the SDK that is traced.
  void traced_call(const std::string& call);

  // The packets that the card handed to the CPU and no `expect` has taken yet, oldest first.
  std::deque<CpuPacket>& cpu_packets() { return cpu_packets_; }

  // Starts to write every call to a file, or ends that when `path` is empty.
  void record(const std::string& path);
  // Runs a recording again and tells each difference in `reply`, which fails when there is one.
  void replay(const std::string& path, Reply& reply);

  // Whoever prints between the lines that are typed is told before and after.
  struct Screen {
    std::function<void()> clear;
    std::function<void()> restore;
  };
  void set_screen(Screen screen) { screen_ = std::move(screen); }

 private:
  void run_words(std::vector<std::string> words, const Place& place);
  void expand(std::vector<std::string>& words) const;
  void print(const std::vector<std::string>& words, const Place& place, const Reply& reply,
             const std::string& error);
  // Ends the line of a command that was printed and whose answer did not fit behind it.
  void end_echo();
  void complain(const Place& place, const std::string& message);
  void write_record(const Command& command, const std::vector<std::string>& words,
                    const Reply& reply);
  // Keeps the shell's own registration for packets on the present card.
  void listen_to_card();

  Options options_;
  CommandTable table_;
  bool done_ = false;
  bool echo_open_ = false;  // a command stands at the end of what was printed
  unsigned errors_ = 0;
  unsigned script_depth_ = 0;
  Reply last_call_;
  std::map<std::string, std::string> outputs_;  // the latest of each name, for $name
  std::deque<CpuPacket> cpu_packets_;
  std::deque<Event> events_;
  const softcard::Card* heard_card_ = nullptr;
  std::unique_ptr<std::ofstream> recording_;
  Screen screen_;
  std::unique_ptr<EventLoop> loop_;
};

}  // namespace shell

#endif  // SHELL_SHELL_H_
