// SPDX-License-Identifier: Apache-2.0

#include "host_check/host_check.h"

#include <cstdio>
#include <cstring>
#include <exception>

#include "host_check/rules.h"
#include "vorn_port_mapping.h"

namespace vorn::host_check {
namespace {

constexpr unsigned kUnits = 8;
constexpr unsigned kSlots = 32;
constexpr unsigned kPorts = 256;

bool read_arguments(int argc, char** argv, HostUnderCheck& host) {
  for (int i = 1; i < argc; ++i) {
    unsigned unit = 0;
    unsigned slot = 0;
    unsigned port = 0;
    char rest = 0;
    if (std::strcmp(argv[i], "--library") == 0 && i + 1 < argc) {
      host.library = argv[++i];
    } else if (std::sscanf(argv[i], "%u/%u/%u%c", &unit, &slot, &port, &rest) == 3) {
      if (unit >= kUnits || slot >= kSlots || port >= kPorts) {
        host.addresses.emplace_back(unit, slot, port);
      }
    } else {
      std::fprintf(stderr,
                   "%s: not an address\nusage: %s [--library <file>] [<unit>/<slot>/<port>...]\n",
                   argv[i], argv[0]);
      return false;
    }
  }
  for (unsigned unit = 0; unit < kUnits; ++unit) {
    for (unsigned slot = 0; slot < kSlots; ++slot) {
      for (unsigned port = 0; port < kPorts; ++port) host.addresses.emplace_back(unit, slot, port);
    }
  }
  return true;
}

}  // namespace

std::vector<Usp> HostUnderCheck::others() const {
  std::vector<Usp> all = lags;
  all.insert(all.end(), vlans.begin(), vlans.end());
  all.push_back(kNoUsp);
  return all;
}

std::string text(bool value) { return value ? "true" : "false"; }
std::string text(unsigned int value) { return std::to_string(value); }
std::string text(const Usp& port) {
  if (port == kNoUsp) return "(no port)";
  return text(port.unit()) + "/" + text(port.slot()) + "/" + text(port.port());
}
std::string text(const Mp& mp) {
  if (mp == kNoMp) return "(no port)";
  return text(mp.module()) + ":" + text(mp.port());
}

}  // namespace vorn::host_check

int vorn_host_check(int argc, char** argv) {
  using namespace vorn::host_check;
  HostUnderCheck host;
  if (!read_arguments(argc, argv, host)) return 2;
  int held = 0;
  int broken = 0;
  int skipped = 0;
  for (const Rule& rule : rules()) {
    // The name is out before the rule runs, so that a crash is blamed on it.
    std::printf("%-18s ", rule.name);
    std::fflush(stdout);
    Verdict verdict;
    try {
      rule.run(host, verdict);
    } catch (const std::exception& thrown) {
      verdict.fail(std::string("the host threw ") + thrown.what());
    }
    if (!verdict.failure().empty()) {
      ++broken;
      std::printf("BROKEN   %s\n%28s%s\n", rule.words, "", verdict.failure().c_str());
    } else if (!verdict.skipped().empty()) {
      ++skipped;
      std::printf("skipped  %s\n%28s%s\n", rule.words, "", verdict.skipped().c_str());
    } else {
      ++held;
      std::printf("holds    %s\n", rule.words);
    }
  }
  std::printf("rules that hold: %d, broken: %d, not tried: %d\n", held, broken, skipped);
  return broken == 0 ? 0 : 1;
}
