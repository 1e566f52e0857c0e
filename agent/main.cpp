// SPDX-License-Identifier: Apache-2.0
//
// vorn-agent: a software line card with Linux as its control plane, in one process. A script in the
// shell's language plugs the card's cables.
#include <fcntl.h>
#include <getopt.h>
#include <sched.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>
#include <vector>

#include "agent.h"
#include "libxorp/eventloop.hh"
#include "shell/shell.h"
#include "shell/text.h"
#include "softcard/card.h"
#include "softcard/host.h"
#include "vornlcapi/api/lifecycle.h"

namespace {

constexpr int kFailed = 1;
constexpr int kCannotStart = 2;

constexpr const char* kUsage = R"(usage: vorn-agent [options]

A software line card whose control plane is Linux: swp0, swp1, ... are its ports.

  --card FILE      the card's description; without, 48 ports and 4 uplinks
  --script FILE    runs these commands of vornsh first: `cable 1/1/0 linux eth1`
  --wires NETNS    the interfaces that the script's cables lead to are in this network namespace
                   (a name, or a path), where Linux has no say
  --prefix NAME    what the interfaces are called, in front of the port's number: swp
  --commands       takes commands of vornsh from standard input while it runs
  -h, --help       prints this
  --version        prints the version

It runs in the foreground until SIGTERM or SIGINT and needs CAP_NET_ADMIN in its network namespace.
The exit status is 0 after such an end, 1 when the script failed, and 2 when it could not start.
)";

void report(const std::string& text) { std::cerr << "vorn-agent: " << text << std::endl; }

// What the loop waits for beside the agent and the card: signals, and commands.
class Console {
 public:
  // `shell` outlives the console.
  Console(shell::Shell& shell, bool commands) : shell_(shell) {
    sigset_t ends;
    sigemptyset(&ends);
    sigaddset(&ends, SIGTERM);
    sigaddset(&ends, SIGINT);
    sigprocmask(SIG_BLOCK, &ends, nullptr);
    signals_ = signalfd(-1, &ends, SFD_CLOEXEC | SFD_NONBLOCK);
    shell.loop().add_ioevent_cb(XorpFd(signals_), IOT_READ, callback(this, &Console::ended));
    if (commands) {
      shell.loop().add_ioevent_cb(XorpFd(STDIN_FILENO), IOT_READ,
                                  callback(this, &Console::commands_ready));
    }
  }
  ~Console() {
    shell_.loop().remove_ioevent_cb(XorpFd(signals_));
    shell_.loop().remove_ioevent_cb(XorpFd(STDIN_FILENO));
    close(signals_);
  }
  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;

  bool over() const { return over_ || shell_.done(); }

 private:
  void ended(XorpFd, IoEventType) { over_ = true; }

  void commands_ready(XorpFd, IoEventType) {
    char bytes[4096];
    const ssize_t count = read(STDIN_FILENO, bytes, sizeof bytes);
    if (count <= 0) {
      shell_.loop().remove_ioevent_cb(XorpFd(STDIN_FILENO));
      return;
    }
    typed_.append(bytes, static_cast<std::size_t>(count));
    for (std::size_t end = 0; (end = typed_.find('\n')) != std::string::npos;) {
      const std::string line = typed_.substr(0, end);
      typed_.erase(0, end + 1);
      shell_.run_line(line, {"stdin", ++line_number_});
      std::cout.flush();
    }
  }

  shell::Shell& shell_;
  int signals_ = -1;
  bool over_ = false;
  std::string typed_;
  unsigned line_number_ = 0;
};

void nothing() {}

// Puts the thread into another network namespace while it lives.
class InNamespace {
 public:
  // Error when there is no such namespace. An empty name stays where one is.
  explicit InNamespace(const std::string& name) {
    if (name.empty()) return;
    const std::string path = name.find('/') == std::string::npos ? "/run/netns/" + name : name;
    home_ = open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC);
    const int there = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    const bool entered = there >= 0 && setns(there, CLONE_NEWNET) == 0;
    const int trouble = errno;
    if (there >= 0) close(there);
    if (entered) return;
    if (home_ >= 0) close(home_);
    throw shell::Error("network namespace " + path + ": " + std::strerror(trouble));
  }
  ~InNamespace() {
    if (home_ < 0) return;
    if (setns(home_, CLONE_NEWNET) != 0) std::abort();  // nobody takes the way back from us
    close(home_);
  }
  InNamespace(const InNamespace&) = delete;
  InNamespace& operator=(const InNamespace&) = delete;

 private:
  int home_ = -1;
};

// Waits for descriptors and for what is due in the card, and for nothing else.
void run(shell::Shell& shell, softcard::Card& card, agent::Agent& agent, const Console& console) {
  XorpTimer due;
  std::uint64_t due_ns = UINT64_MAX;
  while (!console.over()) {
    shell.run_card();
    agent.settle();
    const std::uint64_t next_ns = card.next_due_ns();
    // The timer's clock is not the card's: it may have been early.
    if (next_ns != due_ns || (next_ns != UINT64_MAX && !due.scheduled())) {
      due_ns = next_ns;
      due.unschedule();
      if (next_ns != UINT64_MAX) {
        const std::uint64_t now_ns = card.clock().now_ns();
        const std::uint64_t wait_ms = next_ns > now_ns ? (next_ns - now_ns) / 1000000 + 1 : 1;
        due = shell.loop().new_oneoff_after_ms(
            static_cast<int>(std::min<std::uint64_t>(wait_ms, 1000000000)), callback(&nothing));
      }
    }
    shell.loop().run();
  }
}

struct Settings {
  std::string card_file;
  std::string script;
  std::string wires;
  std::string prefix = "swp";
  bool commands = false;
};

int start(const Settings& settings) {
  if (!settings.card_file.empty()) softcard::host::use_description_file(settings.card_file);
  int ports = 0;
  if (!vorn_lcmgr_api_init(ports)) {
    report(softcard::host::error());
    return kCannotStart;
  }
  softcard::Card& card = *softcard::host::card();
  std::vector<agent::Mac> macs;
  for (const auto& port : card.description().ports) macs.push_back(port.mac.bytes);
  int status = EXIT_SUCCESS;
  {
    shell::Shell shell{shell::Options()};
    const Console console(shell, settings.commands);
    {
      agent::Agent agent(shell.loop(), &report);
      std::string error;
      if (!agent.start(settings.prefix, macs, error)) {
        report(error);
        status = kCannotStart;
      }
      try {
        if (status == EXIT_SUCCESS && !settings.script.empty()) {
          const InNamespace wires(settings.wires);
          shell.run_file(settings.script);
        }
      } catch (const shell::Error& trouble) {
        report(trouble.what());
        status = kFailed;
      }
      if (status == EXIT_SUCCESS && !shell.good()) status = kFailed;
      if (status == EXIT_SUCCESS) {
        report("ready");
        run(shell, card, agent, console);
      }
    }
    // Cables hold on to the shell's event loop: the card goes first.
    vorn_lcmgr_api_terminate();
  }
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  enum { kCard = 256, kScript, kWires, kPrefix, kCommands, kVersion };
  const option options[] = {{"card", required_argument, nullptr, kCard},
                            {"script", required_argument, nullptr, kScript},
                            {"wires", required_argument, nullptr, kWires},
                            {"prefix", required_argument, nullptr, kPrefix},
                            {"commands", no_argument, nullptr, kCommands},
                            {"help", no_argument, nullptr, 'h'},
                            {"version", no_argument, nullptr, kVersion},
                            {nullptr, 0, nullptr, 0}};
  Settings settings;
  for (int option = 0; (option = getopt_long(argc, argv, "h", options, nullptr)) != -1;) {
    switch (option) {
      case kCard:
        settings.card_file = optarg;
        break;
      case kScript:
        settings.script = optarg;
        break;
      case kWires:
        settings.wires = optarg;
        break;
      case kPrefix:
        settings.prefix = optarg;
        break;
      case kCommands:
        settings.commands = true;
        break;
      case 'h':
        std::cout << kUsage;
        return EXIT_SUCCESS;
      case kVersion:
        std::cout << "vorn-agent " VORN_VERSION "\n";
        return EXIT_SUCCESS;
      default:
        std::cerr << kUsage;
        return kCannotStart;
    }
  }
  if (optind != argc) {
    std::cerr << kUsage;
    return kCannotStart;
  }
  return start(settings);
}
