// SPDX-License-Identifier: Apache-2.0
//
// The shell itself: it runs commands line by line, prints what they answer, and counts what went
// wrong.
#ifndef SHELL_SHELL_H_
#define SHELL_SHELL_H_

#include <array>
#include <fstream>
#include <functional>
#include <iosfwd>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "command.h"
#include "kept.h"
#include "libxorp/timer.hh"
#include "lines.h"
#include "softcard/capture/frame_capture.h"
#include "softcard/card.h"

class EventLoop;

namespace shell {

class FarCard;

// A good command whose expectation did not hold. Shell::run() makes it the reply's failure, which
// `!` asks for.
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

  // ---- Running commands -------------------------------------------------------------------------

  // Runs every line of a script; returns at its end, after `quit`, at an interrupt, and after the
  // first error when that is asked for. `name` is what messages call it. Error when it cannot be
  // read.
  void run_script(std::istream& script, const std::string& name);
  // The same for a file.
  void run_file(const std::string& path);
  // Runs the commands of one line.
  void run_line(const std::string& line, const Place& place);
  // Runs one command and answers; Error when it cannot be run.
  Reply run(const std::vector<std::string>& words);

  // After `quit`, and when standard output takes nothing more: then nobody would learn what
  // happens.
  bool done() const;
  void quit() { done_ = true; }
  // Whether commands are printed in front of their answers.
  void set_echo(bool on) { options_.echo = on; }
  // Whether answers are JSON.
  bool json() const { return options_.json; }
  // Where answers are printed.
  std::ostream& out();
  // Has what is printed go to standard error from now on: standard output is a capture's. Error
  // when something stands there already.
  void print_to_standard_error();
  // Nothing has gone wrong so far.
  bool good() const { return errors_ == 0; }

  // ---- For the commands -------------------------------------------------------------------------

  const CommandTable& commands() const { return table_; }

  // The card; Error while there is none.
  softcard::Card& card() const;
  // Has the card do all that is waiting: frames in its cables, ageing, events.
  void run_card();

  // Has the shell work on a card in another process, which outlives it; the process has no card of
  // its own then.
  void use_far_card(FarCard& card) { far_card_ = &card; }

  // Where cables and the terminal wait for their descriptors; made when it is first asked for.
  EventLoop& loop();
  // Has the card live while its loop runs, as long as the timer is kept.
  XorpTimer rounds();

  // Prints an event that a callback was called with, and keeps it for `expect`.
  void event(const std::string& name, const NamedValues& fields);

  // The events that no `expect` has taken yet.
  Kept<Event>& events() { return events_; }

  // Result and outputs of the last entry point called.
  const Reply& last_call() const { return last_call_; }

  // Prints what came between or behind the answers. What waits comes behind the answer of the
  // command that runs: in JSON everything does; in text only what is held always, and that no
  // longer than while the card runs.
  enum class Hold { kInJson, kAlways };
  void print_behind(const std::string& line, Hold hold = Hold::kInJson);

  // Looks on until the next one does, or the card goes; null ends it.
  void set_monitor(std::shared_ptr<softcard::FrameObserver> monitor) {
    monitor_ = std::move(monitor);
  }

  // The capture that runs; null while none does.
  const std::shared_ptr<softcard::FrameCapture>& capture() const { return capture_; }
  void start_capture(std::shared_ptr<softcard::FrameCapture> capture);
  // Ends it; false when a part of it could not be written.
  bool end_capture();
  // At the end of a script: one that ends with a live capture goes on until its reader is gone, or
  // an interrupt. Ends the capture and says what went wrong with it.
  void finish_capture();

  // Prints a call of the SDK that is traced.
  void traced_call(const std::string& call);

  // The packets that the card handed to the CPU and no `expect` has taken yet.
  Kept<CpuPacket>& cpu_packets() { return cpu_packets_; }

  // Starts to write every call to a file, or ends that when `path` is empty.
  void record(const std::string& path);
  // Runs a recording again and tells each difference in `reply`, which fails when there is one.
  void replay(const std::string& path, Reply& reply);

  // Code that prints while a line is being typed calls `clear` before and `restore` after it.
  struct Screen {
    std::function<void()> clear;
    std::function<void()> restore;
  };
  void set_screen(Screen screen) { screen_ = std::move(screen); }

 private:
  void run_words(std::vector<std::string> words, const Place& place);
  // Reads a file of commands by `read`; Error when it cannot be read or is being written.
  void with_file(const std::string& path, const std::function<void(std::istream&)>& read);
  void expand(std::vector<std::string>& words) const;
  void print(const std::vector<std::string>& words, const Place& place, const Reply& reply,
             const std::string& error);
  // Ends the line of a command that was printed and whose answer did not fit behind it.
  void end_echo();
  void complain(const Place& place, const std::string& message);
  void print_held();
  std::uint64_t refusals() const;
  // Runs the card until nothing is left to do, and says what went wrong in that: a callback that
  // threw, a capture file that cannot be read or written.
  void run_card(const Place& place);
  // Says that the capture is over, and why, when it is.
  void check_capture(const Place& place);
  void tell_end(const softcard::FrameCapture& capture, bool whole, const Place& place);
  bool round();
  void write_record(const Command& command, const std::vector<std::string>& words,
                    const Reply& reply);
  // Keeps the shell's own registration for packets on the present card.
  void listen_to_card();

  Options options_;
  CommandTable table_;
  bool done_ = false;
  bool echo_open_ = false;  // a command stands at the end of what was printed
  unsigned errors_ = 0;
  unsigned depth_ = 0;    // commands that run, each within the one before
  bool holding_ = false;  // what comes waits for an answer
  std::string held_;      // so far
  Reply last_call_;
  std::map<std::string, std::string> outputs_;  // the latest of each name, for $name
  Kept<CpuPacket> cpu_packets_;
  Kept<Event> events_;
  const softcard::Card* heard_card_ = nullptr;
  FarCard* far_card_ = nullptr;
  std::shared_ptr<softcard::FrameObserver> monitor_;  // null while nobody looks on
  std::shared_ptr<softcard::FrameCapture> capture_;   // null while there is none
  bool capture_was_last_ = false;                     // of the commands
  bool printed_ = false;                              // something, on standard output
  std::unique_ptr<std::ofstream> recording_;
  std::optional<FileId> recorded_file_;
  std::string recording_trouble_;  // to be told behind the answer
  std::vector<FileId> files_;      // of the scripts and recordings that run
  std::array<std::string, softcard::kMaxPorts> cable_troubles_;  // that have been told
  Screen screen_;
  std::unique_ptr<EventLoop> loop_;
};

}  // namespace shell

#endif  // SHELL_SHELL_H_
