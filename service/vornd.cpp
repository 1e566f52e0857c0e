// SPDX-License-Identifier: Apache-2.0
//
// vornd: the software line card as a service.
#include <getopt.h>
#include <grp.h>
#include <sys/eventfd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "libxorp/eventloop.hh"
#include "service/commands.h"
#include "service/server.h"
#include "shell/interrupt.h"
#include "shell/shell.h"
#include "softcard/base/clock.h"
#include "softcard/base/text.h"
#include "softcard/host.h"
#include "vornlcapi/api/lifecycle.h"

#if VORN_SYSTEMD
#include <systemd/sd-daemon.h>
#endif

namespace {

constexpr int kScriptFailed = 1;
constexpr int kCannotStart = 2;

constexpr const char* kUsage = R"(usage: vornd --listen PATH [options] [SCRIPT]

The software line card as a service: SCRIPT, of the shell's commands, plugs its cables and configures
it; then it serves clients until SIGTERM or SIGINT.

  --listen PATH           the socket that clients come to
  --group GROUP           members of the group may connect, too
  --readonly-socket PATH  a second socket, where nothing can be changed
  --readonly-group GROUP  the same for that socket
  --clients N             how many may be connected at once; 64 unless given
  --card FILE             the card's description; without, 48 ports and 4 uplinks
  -h, --help              prints this
  --version               prints the version

The exit status is 0 after a signal, 1 when a command of the script failed, and 2 when the card could
not start.
)";

struct Settings {
  std::string card_file;
  std::string script;
  std::vector<vorn::service::Socket> sockets;
  std::size_t clients = 64;
};

// ---- Log and service manager --------------------------------------------------------------------

// Lines to the journal begin with how much they matter.
enum Weight { kError = 3, kNote = 6 };

// Whether standard error is the journal's, which says so by its device and file.
bool logs_to_journal() {
  const char* const stream = std::getenv("JOURNAL_STREAM");
  struct stat own {};
  return stream != nullptr && fstat(STDERR_FILENO, &own) == 0 &&
         stream == std::to_string(own.st_dev) + ":" + std::to_string(own.st_ino);
}

void log(Weight weight, const std::string& line) {
  static const bool kToJournal = logs_to_journal();
  std::cerr << (kToJournal ? "<" + std::to_string(weight) + ">" : "vornd: ") << line << std::endl;
}

void tell_service_manager([[maybe_unused]] const std::string& state) {
#if VORN_SYSTEMD
  sd_notify(0, state.c_str());
#endif
}

// ---- The end ------------------------------------------------------------------------------------

// Woken by a signal.
int end_descriptor = -1;

void ask_for_end(int) {
  shell::interrupt();
  eventfd_write(end_descriptor, 1);
}

// ---- The card while it is served ----------------------------------------------------------------

class Service {
 public:
  explicit Service(shell::Shell& shell) : shell_(shell), number_(softcard::host::card_number()) {
    shell_.loop().add_ioevent_cb(end_descriptor, IOT_READ, callback(this, &Service::end));
  }
  ~Service() { shell_.loop().remove_ioevent_cb(end_descriptor); }

  // Until a signal comes, or the card is gone. The loop waits unless something is due.
  void run() {
    while (!over_) {
      settle();
      shell_.loop().run();
    }
  }

 private:
  void end(XorpFd, IoEventType) { over_ = true; }
  void due() {}

  // Has the card do what waits, for a while, and sets the timer for what is due by time alone.
  void settle() {
    softcard::Card* const card = softcard::host::card();
    if (card == nullptr || softcard::host::card_number() != number_) {
      log(kError, "the card has ended");
      over_ = true;
      return;
    }
    bool more = true;
    try {
      // Frames that go round in a loop of cables leave clients their turn.
      for (unsigned round = 0; more && round < kMostRounds; ++round) more = card->run_once() != 0;
    } catch (const std::exception& exception) {
      log(kError, exception.what());
    }
    wake_at(more ? 0 : card->next_due_ns(), card->clock().now_ns());
  }

  void wake_at(std::uint64_t due_ns, std::uint64_t now_ns) {
    if (due_ns == due_ns_ && (due_ns == UINT64_MAX || timer_.scheduled())) return;
    due_ns_ = due_ns;
    timer_.unschedule();
    if (due_ns == UINT64_MAX) return;
    const std::uint64_t wait_ms = due_ns <= now_ns ? 0 : (due_ns - now_ns) / 1000000 + 1;
    constexpr std::uint64_t kLongestMs = std::numeric_limits<int>::max();
    timer_ = shell_.loop().new_oneoff_after_ms(static_cast<int>(std::min(wait_ms, kLongestMs)),
                                               callback(this, &Service::due));
  }

  static constexpr unsigned kMostRounds = 16;

  shell::Shell& shell_;
  const std::uint64_t number_;
  bool over_ = false;
  std::uint64_t due_ns_ = UINT64_MAX;
  XorpTimer timer_;
};

int serve(const Settings& settings) {
  if (!settings.card_file.empty()) softcard::host::use_description_file(settings.card_file);
  int ports = 0;
  if (!vorn_lcmgr_api_init(ports)) {
    log(kError, softcard::host::error());
    return kCannotStart;
  }
  shell::Options shell_options;
  shell_options.stop_at_error = true;
  shell::Shell shell(shell_options);
  // Cables hold on to the shell's event loop: the card goes first.
  struct End {
    ~End() {
      if (softcard::host::card() != nullptr) vorn_lcmgr_api_terminate();
    }
  } end_of_card;
  if (!settings.script.empty()) {
    try {
      shell.run_file(settings.script);
    } catch (const shell::Error& error) {
      log(kError, error.what());
      return kCannotStart;
    }
    if (shell::interrupted()) return EXIT_SUCCESS;
    if (!shell.good()) {
      log(kError, settings.script + ": it did not run to its end");
      return kScriptFailed;
    }
    if (softcard::host::card() == nullptr) {
      log(kError, settings.script + ": it ended the card");
      return kScriptFailed;
    }
  }

  vorn::service::Options options = vorn::service::options_for(shell);
  options.most_clients = settings.clients;
  options.log = [](const std::string& line) { log(kNote, line); };
  vorn::service::Server server(shell.loop(), std::move(options));
  softcard::host::on_lag_change([&server] { server.lags_changed(); });
  struct Forget {
    ~Forget() { softcard::host::on_lag_change(nullptr); }
  } forget;
  std::string error;
  std::string where;
  for (const vorn::service::Socket& socket : settings.sockets) {
    if (!server.listen(socket, error)) {
      log(kError, error);
      return kCannotStart;
    }
    where += (where.empty() ? "" : ", ") + socket.path + (socket.read_only ? " (read-only)" : "");
  }
  log(kNote, "a card of " + std::to_string(ports) + " ports is served at " + where);
  tell_service_manager("READY=1\nSTATUS=serving " + std::to_string(ports) + " ports at " + where);
  Service(shell).run();
  shell.finish_capture();
  tell_service_manager("STOPPING=1");
  log(kNote, "the end");
  return EXIT_SUCCESS;
}

bool find_group(const std::string& name, vorn::service::Socket& socket) {
  const group* const found = getgrnam(name.c_str());
  if (found != nullptr) {
    socket.group = found->gr_gid;
  } else if (!softcard::parse_decimal(name, gid_t{0}, std::numeric_limits<gid_t>::max() - 1,
                                      socket.group)) {
    log(kError, "there is no group '" + name + "'");
    return false;
  }
  socket.has_group = true;
  return true;
}

int start(int argc, char** argv) {
  enum { kListen = 256, kGroup, kReadonlySocket, kReadonlyGroup, kClients, kCard, kVersion };
  const option options[] = {{"listen", required_argument, nullptr, kListen},
                            {"group", required_argument, nullptr, kGroup},
                            {"readonly-socket", required_argument, nullptr, kReadonlySocket},
                            {"readonly-group", required_argument, nullptr, kReadonlyGroup},
                            {"clients", required_argument, nullptr, kClients},
                            {"card", required_argument, nullptr, kCard},
                            {"help", no_argument, nullptr, 'h'},
                            {"version", no_argument, nullptr, kVersion},
                            {nullptr, 0, nullptr, 0}};
  Settings settings;
  vorn::service::Socket socket;
  vorn::service::Socket readonly_socket;
  readonly_socket.read_only = true;
  for (int option = 0; (option = getopt_long(argc, argv, "+h", options, nullptr)) != -1;) {
    switch (option) {
      case kListen:
        socket.path = optarg;
        break;
      case kGroup:
        if (!find_group(optarg, socket)) return kCannotStart;
        break;
      case kReadonlySocket:
        readonly_socket.path = optarg;
        break;
      case kReadonlyGroup:
        if (!find_group(optarg, readonly_socket)) return kCannotStart;
        break;
      case kClients:
        if (!softcard::parse_decimal(optarg, std::size_t{1}, std::size_t{1000}, settings.clients)) {
          log(kError, std::string("--clients ") + optarg + ": 1 to 1000");
          return kCannotStart;
        }
        break;
      case kCard:
        settings.card_file = optarg;
        break;
      case 'h':
        std::cout << kUsage;
        return EXIT_SUCCESS;
      case kVersion:
        std::cout << "vornd " VORN_VERSION "\n";
        return EXIT_SUCCESS;
      default:
        std::cerr << kUsage;
        return kCannotStart;
    }
  }
  if (argc - optind > 1 || socket.path.empty()) {
    std::cerr << "vornd: " << (socket.path.empty() ? "--listen is missing" : "one script at a time")
              << '\n'
              << kUsage;
    return kCannotStart;
  }
  if (optind < argc) settings.script = argv[optind];
  settings.sockets.push_back(socket);
  if (!readonly_socket.path.empty()) settings.sockets.push_back(readonly_socket);
  return serve(settings);
}

}  // namespace

int main(int argc, char** argv) {
  end_descriptor = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  struct sigaction action {};
  action.sa_handler = ask_for_end;
  sigaction(SIGTERM, &action, nullptr);
  sigaction(SIGINT, &action, nullptr);
  std::signal(SIGPIPE, SIG_IGN);
  return start(argc, argv);
}
