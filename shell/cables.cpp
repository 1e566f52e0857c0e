// SPDX-License-Identifier: Apache-2.0
#include "cables.h"

#include <memory>
#include <utility>

#include "card_text.h"
#include "interrupt.h"
#include "libxorp/eventloop.hh"
#include "shell.h"
#include "softcard/cables/linux_cable.h"
#include "softcard/cables/pcap_cable.h"
#include "softcard/cables/unix_cable.h"

namespace shell {

namespace {

constexpr std::int64_t kMostSecondsOfWaiting = 86400;

// Plugs what `open` makes, or throws its Error; the old cable stays then.
template <class Open>
void plug_opened(softcard::Card& card, softcard::PortIndex port, Open&& open) {
  std::string error;
  auto cable = open(error);
  if (cable == nullptr) throw Error(error);
  card.plug(port, std::move(cable));
}

}  // namespace

softcard::MemoryCable* find_memory_cable(softcard::Card& card, softcard::PortIndex port) {
  return dynamic_cast<softcard::MemoryCable*>(card.cable(port));
}

softcard::MemoryCable& memory_cable(softcard::Card& card, softcard::PortIndex port) {
  softcard::MemoryCable* const cable = find_memory_cable(card, port);
  if (cable == nullptr) {
    throw Error(port_text(port) + " is not plugged into memory, where the shell could reach it");
  }
  return *cable;
}

void cable(Shell& shell, Arguments& arguments, Reply&) {
  softcard::Card& card = shell.card();
  const softcard::PortIndex port = take_physical_port(card, arguments);
  const std::string kind = arguments.take("kind");
  if (kind == "none") {
    arguments.finish();
    card.plug(port, nullptr);
  } else if (kind == "memory") {
    arguments.finish();
    card.plug(port, std::make_unique<softcard::MemoryCable>());
  } else if (kind == "patch") {
    const softcard::PortIndex other = take_physical_port(card, arguments);
    arguments.finish();
    if (other == port) throw Error("port: a cable has two ends");
    auto ends = softcard::PatchCable::make();
    card.plug(port, std::move(ends.first));
    card.plug(other, std::move(ends.second));
  } else if (kind == "pcap") {
    const std::string in = arguments.take("in");
    const std::string out = arguments.take("out");
    arguments.finish();
    plug_opened(card, port, [&](std::string& error) {
      return softcard::PcapCable::open(in == "-" ? "" : in, out == "-" ? "" : out, card.clock(),
                                       error);
    });
  } else if (kind == "unix") {
    const std::string path = arguments.take("path");
    arguments.finish();
    plug_opened(card, port, [&](std::string& error) {
      return softcard::UnixCable::open(shell.loop(), path, error);
    });
  } else if (kind == "linux") {
    const std::string interface = arguments.take("interface");
    arguments.finish();
    plug_opened(card, port, [&](std::string& error) {
      return softcard::LinuxCable::open(shell.loop(), interface, error);
    });
  } else {
    throw Error("kind: '" + kind + "' is none of none, memory, patch, pcap, unix, linux");
  }
}

void wait(Shell& shell, Arguments& arguments, Reply&) {
  const std::uint64_t nanoseconds =
      parse_seconds(arguments.take("seconds"), "seconds", kMostSecondsOfWaiting);
  arguments.finish();
  EventLoop& loop = shell.loop();
  bool over = false;
  const TimeVal time(static_cast<int32_t>(nanoseconds / softcard::kNanosecondsPerSecond),
                     static_cast<int32_t>(nanoseconds % softcard::kNanosecondsPerSecond / 1000));
  const XorpTimer end = loop.set_flag_after(time, &over);
  const XorpTimer rounds = shell.rounds();
  while (!over && !interrupted()) loop.run();
  if (!over) throw Error("interrupted");
  shell.run_card();
}

}  // namespace shell
