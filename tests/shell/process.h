// SPDX-License-Identifier: Apache-2.0
//
// vornsh, or another program of ours, as a process, with pipes or a terminal at its standard
// descriptors. Nothing here sleeps: whoever waits polls for output, up to a limit that no healthy
// machine reaches.
#ifndef TESTS_SHELL_PROCESS_H_
#define TESTS_SHELL_PROCESS_H_

#include <sys/types.h>

#include <string>
#include <vector>

// A folder of its own, which goes with its contents.
class Folder {
 public:
  Folder();
  ~Folder();
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;

  std::string path(const std::string& name) const { return path_ + '/' + name; }
  // Writes a file and returns its path.
  std::string file(const std::string& name, const std::string& contents) const;
  std::string contents(const std::string& name) const;

 private:
  std::string path_;
};

class Process {
 public:
  enum class Ends { kPipes, kTerminal };

  // Starts vornsh with these arguments, in `folder`, which is its home, too. `set_up` is what a
  // POSIX shell does before, redirections for instance: `exec >&-`.
  Process(const Folder& folder, const std::vector<std::string>& arguments, Ends ends = Ends::kPipes,
          const std::string& set_up = ":");
  // Ends it, should it still run.
  ~Process();
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  pid_t pid() const { return pid_; }
  void signal(int number) const;
  void send(const std::string& text);
  void end_input();

  // All output, standard error too, up to and with the next `text`; a failure of the test, and all
  // there is, when that does not come.
  std::string until(const std::string& text);
  // The rest of the output, to its end.
  std::string rest();
  // The exit status once it has ended, 128 and the signal when one ended it.
  int status();

 private:
  // False at the end of the output and when the time is over.
  bool read_more();

  pid_t pid_ = -1;
  int in_ = -1;
  int out_ = -1;
  std::string unread_;
  int status_ = -1;
};

// Runs it with `input`: all that it printed, and its exit status behind that as `[1]`.
std::string run(const Folder& folder, const std::vector<std::string>& arguments,
                const std::string& input = "", const std::string& set_up = ":");

#endif  // TESTS_SHELL_PROCESS_H_
