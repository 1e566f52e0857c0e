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
#include "far_card.h"
#include "interactive.h"
#include "lines.h"
#include "remote/client.h"
#include "service/commands.h"
#include "shell.h"
#include "softcard/eventloop/loop_watch.h"
#include "softcard/host.h"
#include "standard_input.h"
#include "vorn_lag_list.h"
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
  --connect PATH   works on the card of another process, by its socket: that of vornd, or of --listen
  --listen PATH    lets other processes work on this shell's card, by that socket
  --no-init        leaves vorn_lcmgr_api_init to the script
  -h, --help       prints this
  --version        prints the version

The exit status is 0 when every command did what it should, 1 when one did not, and 2 when the shell
could not start. `help` lists the commands.
)";

struct Settings {
  shell::Options options;
  std::string commands;
  bool has_commands = false;
  std::string card_file;
  std::string connect;
  std::string listen;
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

// The card of another process in place of one of this.
struct Far {
  explicit Far(const std::string& path) {
    the_client = &client;
    client.use(path);
    softcard::host::use_host(&client);
    softcard::watch_in_loop(client.descriptor(), [] { the_client->dispatch(); });
  }
  ~Far() {
    VornSdkBase* sdk = nullptr;
    if (client.get_instance(sdk)) client.delete_instance(sdk);
    softcard::watch_in_loop(-1, nullptr);
    softcard::host::use_host(nullptr);
  }
  Far(const Far&) = delete;
  Far& operator=(const Far&) = delete;

  static vorn::remote::Client* the_client;
  vorn::remote::Client client{lag_list};
  shell::FarCard card{client};
};
vorn::remote::Client* Far::the_client = nullptr;

// Serves the shell's card while the shell runs its loop.
class Sharing {
 public:
  Sharing(shell::Shell& shell, const std::string& path)
      : server_(shell.loop(), vorn::service::options_for(shell)) {
    std::string error;
    if (!server_.listen({path, false, false, 0}, error)) throw shell::Error(error);
    softcard::host::on_lag_change([this] {
      if (softcard::host::card() == nullptr) server_.card_ended();
      server_.lags_changed();
    });
  }
  ~Sharing() { softcard::host::on_lag_change(nullptr); }

 private:
  vorn::service::Server server_;
};

int run(const Settings& settings, const char* script) {
  const bool at_terminal = !settings.has_commands && script == nullptr && isatty(STDIN_FILENO) != 0;
  const bool virtual_time =
      settings.time == Settings::Time::kVirtual ||
      (settings.time == Settings::Time::kDefault && !at_terminal && settings.connect.empty());
  if (virtual_time) {
    softcard::host::use_clock(std::make_shared<softcard::VirtualClock>());
    // The shell's own loop waits for what is typed, and for other processes.
    softcard::host::loop_in_real_time();
  }
  if (!settings.card_file.empty()) softcard::host::use_description_file(settings.card_file);

  std::unique_ptr<Far> far;
  if (!settings.connect.empty()) far = std::make_unique<Far>(settings.connect);
  int ports = 0;
  if (settings.init && !vorn_lcmgr_api_init(ports)) {
    std::cerr << "vornsh: "
              << (far != nullptr ? far->client.last_refusal() : softcard::host::error()) << '\n';
    return kCannotStart;
  }
  shell::Shell shell(settings.options);
  if (far != nullptr) shell.use_far_card(far->card);
  int status = EXIT_SUCCESS;
  std::unique_ptr<Sharing> sharing;
  try {
    if (!settings.listen.empty()) {
      shell.card();  // there is one
      sharing = std::make_unique<Sharing>(shell, settings.listen);
    }
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
  sharing.reset();
  // Cables hold on to the shell's event loop: the card goes first.
  if (softcard::host::card() != nullptr) vorn_lcmgr_api_terminate();
  if (status != EXIT_SUCCESS) return status;
  // At a terminal the user has seen what went wrong.
  return shell.good() || at_terminal ? EXIT_SUCCESS : kScriptFailed;
}

int start(int argc, char** argv) {
  enum { kJson = 256, kCard, kVirtualTime, kRealTime, kConnect, kListen, kNoInit, kVersion };
  const option options[] = {{"json", no_argument, nullptr, kJson},
                            {"echo", no_argument, nullptr, 'v'},
                            {"card", required_argument, nullptr, kCard},
                            {"virtual-time", no_argument, nullptr, kVirtualTime},
                            {"real-time", no_argument, nullptr, kRealTime},
                            {"connect", required_argument, nullptr, kConnect},
                            {"listen", required_argument, nullptr, kListen},
                            {"no-init", no_argument, nullptr, kNoInit},
                            {"help", no_argument, nullptr, 'h'},
                            {"version", no_argument, nullptr, kVersion},
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
      case kConnect:
        settings.connect = optarg;
        break;
      case kListen:
        settings.listen = optarg;
        break;
      case kNoInit:
        settings.init = false;
        break;
      case 'h':
        std::cout << kUsage;
        return EXIT_SUCCESS;
      case kVersion:
        std::cout << "vornsh " VORN_VERSION "\n";
        return EXIT_SUCCESS;
      default:
        std::cerr << kUsage;
        return kCannotStart;
    }
  }
  if (!settings.connect.empty() && (!settings.listen.empty() || !settings.card_file.empty() ||
                                    settings.time == Settings::Time::kVirtual)) {
    std::cerr << "vornsh: --connect goes with none of --listen, --card and --virtual-time\n";
    return kCannotStart;
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
