// SPDX-License-Identifier: Apache-2.0
//
// vornsh: the software line card, the client library, and every entry point of it as a command.
// The program is a host: it offers the card's symbols to the library, which it loads as a shared
// object like any host does.
#include <fcntl.h>
#include <getopt.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>

#include "capture.h"
#include "interactive.h"
#include "lines.h"
#include "shell.h"
#include "softcard/host.h"
#include "standard_input.h"
#include "vornlcapi/api/lifecycle.h"

namespace {

constexpr int kScriptFailed = 1;
constexpr int kCannotStart = 2;

constexpr const char* kUsage = R"(usage: vornsh [options] [SCRIPT]

A software line card with a shell. Runs SCRIPT, or standard input; at a terminal without a script
it asks for commands.

  -c COMMANDS      runs these commands instead, separated by ;
  -e               ends a script at its first error
  -v, --echo       prints each command in front of what it answers
  --json           answers with one JSON object for each command and each event
  --card FILE      the card's description; without, 48 ports and 4 uplinks
  --virtual-time   time stands still but for `time warp`: the default of scripts
  --real-time      time passes: the default at a terminal
  --no-init        leaves vorn_lcmgr_api_init to the script
  -h, --help       prints this

The exit status is 0 when every command did what it should, 1 when one did not, and 2 when the shell
could not start. `help` lists the commands.
)";

struct Settings {
  shell::Options options;
  std::string commands;
  bool has_commands = false;
  std::string card_file;
  bool init = true;
  enum class Time { kDefault, kVirtual, kReal } time = Time::kDefault;
};

// Descriptors 0 to 2 that are closed would go to the next file that is opened, a capture for
// instance, and the shell would write its text there. In their place come some that cannot be read
// or written, so that whoever uses them hears of it.
bool keep_standard_descriptors() {
  for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
    if (fcntl(fd, F_GETFD) != -1) continue;
    if (open("/dev/null", fd == STDIN_FILENO ? O_WRONLY : O_RDONLY) != fd) return false;
  }
  return true;
}

// The exit status: not a success when something that was printed is lost.
int finished(int status) {
  if (!std::cout.flush()) std::cerr << "vornsh: standard output cannot be written\n";
  std::cerr.flush();
  return status == EXIT_SUCCESS && !(std::cout && std::cerr) ? kScriptFailed : status;
}

int run(const Settings& settings, const char* script) {
  const bool at_terminal = !settings.has_commands && script == nullptr && isatty(STDIN_FILENO) != 0;
  const bool virtual_time = settings.time == Settings::Time::kVirtual ||
                            (settings.time == Settings::Time::kDefault && !at_terminal);
  if (virtual_time) {
    softcard::host::use_clock(std::make_shared<softcard::VirtualClock>());
    // The shell's own loop waits for what is typed, and for other processes.
    softcard::host::loop_in_real_time();
  }
  if (!settings.card_file.empty()) softcard::host::use_description_file(settings.card_file);

  int ports = 0;
  if (settings.init && !vorn_lcmgr_api_init(ports)) {
    std::cerr << "vornsh: " << softcard::host::error() << '\n';
    return kCannotStart;
  }
  shell::Shell shell(settings.options);
  int status = EXIT_SUCCESS;
  try {
    if (settings.has_commands) {
      std::istringstream commands(settings.commands);
      if (shell::captures_to_standard_output(commands)) shell.print_to_standard_error();
      commands = std::istringstream(settings.commands);
      shell.run_script(commands, "-c");
    } else if (script != nullptr) {
      std::ifstream commands;
      if (shell::file_at(script).has_value()) commands.open(script);
      if (shell::captures_to_standard_output(commands)) shell.print_to_standard_error();
      shell.run_file(script);
    } else if (at_terminal) {
      shell::run_interactive(shell);
    } else {
      shell::StandardInput bytes(shell, !virtual_time);
      std::istream input(&bytes);
      shell.run_script(input, "stdin");
    }
  } catch (const shell::Error& error) {
    std::cerr << "vornsh: " << error.what() << '\n';
    status = kCannotStart;
  }
  shell.finish_capture();
  // Cables hold on to the shell's event loop: the card goes first.
  if (softcard::host::card() != nullptr) vorn_lcmgr_api_terminate();
  if (status != EXIT_SUCCESS) return status;
  // At a terminal the user has seen what went wrong.
  return shell.good() || at_terminal ? EXIT_SUCCESS : kScriptFailed;
}

int start(int argc, char** argv) {
  enum { kJson = 256, kCard, kVirtualTime, kRealTime, kNoInit };
  const option options[] = {{"json", no_argument, nullptr, kJson},
                            {"echo", no_argument, nullptr, 'v'},
                            {"card", required_argument, nullptr, kCard},
                            {"virtual-time", no_argument, nullptr, kVirtualTime},
                            {"real-time", no_argument, nullptr, kRealTime},
                            {"no-init", no_argument, nullptr, kNoInit},
                            {"help", no_argument, nullptr, 'h'},
                            {nullptr, 0, nullptr, 0}};
  Settings settings;
  for (int option = 0; (option = getopt_long(argc, argv, "+c:evh", options, nullptr)) != -1;) {
    switch (option) {
      case 'c':
        settings.commands = optarg;
        settings.has_commands = true;
        break;
      case 'e':
        settings.options.stop_at_error = true;
        break;
      case 'v':
        settings.options.echo = true;
        break;
      case kJson:
        settings.options.json = true;
        break;
      case kCard:
        settings.card_file = optarg;
        break;
      case kVirtualTime:
        settings.time = Settings::Time::kVirtual;
        break;
      case kRealTime:
        settings.time = Settings::Time::kReal;
        break;
      case kNoInit:
        settings.init = false;
        break;
      case 'h':
        std::cout << kUsage;
        return EXIT_SUCCESS;
      default:
        std::cerr << kUsage;
        return kCannotStart;
    }
  }
  if (argc - optind > 1 || (settings.has_commands && optind < argc)) {
    std::cerr << "vornsh: one script at a time\n" << kUsage;
    return kCannotStart;
  }
  return run(settings, optind < argc ? argv[optind] : nullptr);
}

}  // namespace

int main(int argc, char** argv) {
  return keep_standard_descriptors() ? finished(start(argc, argv)) : kCannotStart;
}
