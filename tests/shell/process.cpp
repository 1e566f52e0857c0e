// SPDX-License-Identifier: Apache-2.0
#include "process.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <thread>

namespace {

constexpr int kPatienceMilliseconds = 60000;

// The command that starts vornsh, one word a line: an emulator may stand in front.
std::vector<std::string> vornsh() {
  std::istringstream words(VORNSH_COMMAND);
  std::vector<std::string> command;
  for (std::string word; std::getline(words, word, '|');) command.push_back(word);
  return command;
}

// A terminal; the other end is opened by its name.
int open_terminal(std::string& name) {
  const int terminal = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  if (terminal == -1 || grantpt(terminal) != 0 || unlockpt(terminal) != 0) return -1;
  name = ptsname(terminal);
  const winsize size = {50, 500, 0, 0};
  ioctl(terminal, TIOCSWINSZ, &size);
  return terminal;
}

}  // namespace

Folder::Folder() {
  std::string name = (std::filesystem::temp_directory_path() / "vornsh_test_XXXXXX").string();
  EXPECT_NE(mkdtemp(name.data()), nullptr);
  path_ = name;
}

Folder::~Folder() { std::filesystem::remove_all(path_); }

std::string Folder::file(const std::string& name, const std::string& contents) const {
  std::ofstream(path(name), std::ios::binary) << contents;
  return path(name);
}

std::string Folder::contents(const std::string& name) const {
  std::ifstream file(path(name), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

Process::Process(const Folder& folder, const std::vector<std::string>& arguments, Ends ends,
                 const std::string& set_up) {
  std::vector<std::string> words = {"/bin/sh", "-c", set_up + "; exec \"$@\"", "sh"};
  for (const std::string& word : vornsh()) words.push_back(word);
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);

  const bool terminal = ends == Ends::kTerminal;
  std::string terminal_name;
  std::array<int, 2> to = {-1, -1};
  std::array<int, 2> from = {-1, -1};
  if (terminal) {
    in_ = out_ = open_terminal(terminal_name);
    EXPECT_NE(in_, -1) << "no terminal can be made";
  } else {
    EXPECT_EQ(pipe2(to.data(), O_CLOEXEC), 0);
    EXPECT_EQ(pipe2(from.data(), O_CLOEXEC), 0);
  }
  const std::string home = folder.path("");
  // Writing to one that has ended fails instead.
  std::signal(SIGPIPE, SIG_IGN);
  pid_ = fork();
  EXPECT_NE(pid_, -1);
  if (pid_ == 0) {
    std::signal(SIGPIPE, SIG_DFL);
    // The first terminal that the leader of a session opens is the one it is controlled by.
    setsid();
    const int in = terminal ? open(terminal_name.c_str(), O_RDWR) : to[0];
    const int out = terminal ? in : from[1];
    dup2(in, STDIN_FILENO);
    dup2(out, STDOUT_FILENO);
    dup2(out, STDERR_FILENO);
    if (terminal) close(in);
    setenv("HOME", home.c_str(), 1);
    setenv("TERM", "dumb", 1);
    setenv("INPUTRC", "/dev/null", 1);
    if (chdir(home.c_str()) == 0) execv(argv[0], argv.data());
    _exit(127);
  }
  if (terminal) return;
  close(to[0]);
  close(from[1]);
  in_ = to[1];
  out_ = from[0];
}

Process::~Process() {
  if (pid_ == -1) return;
  if (status_ == -1) {
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
  end_input();
  if (out_ != -1) close(out_);
}

void Process::signal(int number) const { kill(pid_, number); }

void Process::send(const std::string& text) {
  for (std::size_t sent = 0; sent < text.size();) {
    const ssize_t count = write(in_, text.data() + sent, text.size() - sent);
    if (count <= 0) return;
    sent += static_cast<std::size_t>(count);
  }
}

void Process::end_input() {
  if (in_ != -1 && in_ != out_) close(in_);
  in_ = -1;
}

bool Process::read_more() {
  pollfd ready = {out_, POLLIN, 0};
  if (poll(&ready, 1, kPatienceMilliseconds) <= 0) {
    ADD_FAILURE() << "nothing more came behind: " << unread_;
    return false;
  }
  std::array<char, 65536> bytes{};
  const ssize_t count = read(out_, bytes.data(), bytes.size());
  if (count <= 0) return false;
  unread_.append(bytes.data(), static_cast<std::size_t>(count));
  return true;
}

std::string Process::until(const std::string& text) {
  std::size_t at = unread_.find(text);
  while (at == std::string::npos && read_more()) at = unread_.find(text);
  if (at == std::string::npos) ADD_FAILURE() << "'" << text << "' did not come in: " << unread_;
  const std::size_t end = at == std::string::npos ? unread_.size() : at + text.size();
  std::string read = unread_.substr(0, end);
  unread_.erase(0, end);
  return read;
}

std::string Process::rest() {
  while (read_more()) {
  }
  std::string read;
  read.swap(unread_);
  return read;
}

int Process::status() {
  unread_ += rest();
  int status = 0;
  if (status_ == -1 && waitpid(pid_, &status, 0) == pid_) {
    status_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  }
  return status_;
}

std::string run(const Folder& folder, const std::vector<std::string>& arguments,
                const std::string& input, const std::string& set_up) {
  Process process(folder, arguments, Process::Ends::kPipes, set_up);
  // It may print before it has read all.
  std::thread sender([&] {
    process.send(input);
    process.end_input();
  });
  std::string output = process.rest();
  sender.join();
  return output + '[' + std::to_string(process.status()) + ']';
}
