// SPDX-License-Identifier: Apache-2.0
//
// The commands that act on the card itself: its cables, frames, time, and refusals.
#include <cmath>
#include <cstdlib>

#include "cables.h"
#include "capture.h"
#include "card_text.h"
#include "codec.h"
#include "expect.h"
#include "monitor.h"
#include "save.h"
#include "shell.h"
#include "softcard/cables/memory_cable.h"
#include "softcard/frames/frame_text.h"
#include "softcard/host.h"
#include "softcard/pipeline/trace.h"

namespace shell {

namespace {

// That time may move on at once.
constexpr std::int64_t kMostSeconds = 1000000000;

std::vector<std::uint8_t> take_frame(Arguments& arguments) {
  const std::string text = arguments.rest("frame");
  std::vector<std::uint8_t> frame;
  std::string error;
  if (!softcard::parse_frame(text, frame, error)) throw Error("frame: " + error);
  return frame;
}

void link(Shell& shell, Arguments& arguments, Reply&) {
  softcard::Card& card = shell.card();
  const softcard::PortIndex port = take_physical_port(card, arguments);
  const std::string state = arguments.take("state");
  arguments.finish();
  if (state != "up" && state != "down") {
    throw Error("state: '" + state + "' is neither up nor down");
  }
  card.cut_carrier(port, state == "down");
}

void inject(Shell& shell, Arguments& arguments, Reply&) {
  softcard::Card& card = shell.card();
  const softcard::PortIndex port = take_physical_port(card, arguments);
  const std::vector<std::uint8_t> frame = take_frame(arguments);
  if (!memory_cable(card, port).send(frame)) {
    throw Error("frame: " + std::to_string(frame.size()) + " bytes are more than a frame can hold");
  }
  shell.run_card();
}

// Not through the cable, so that the answer stands alone: what else the card has to do is done
// before.
void trace(Shell& shell, Arguments& arguments, Reply& reply) {
  softcard::Card& card = shell.card();
  const softcard::PortIndex port = take_physical_port(card, arguments);
  const std::vector<std::uint8_t> bytes = take_frame(arguments);
  shell.run_card();
  softcard::FramePtr frame = card.frame_pool().make(bytes.data(), bytes.size());
  if (frame == nullptr) throw Error("frame: it is longer than any frame, or no buffer is left");
  softcard::Trace steps;
  card.pipeline().set_trace(&steps);
  card.frames_arrived(port, &frame, 1);
  card.pipeline().set_trace(nullptr);
  Table table({"stage", "text"});
  for (const auto& step : steps.steps()) {
    reply.say(step.stage + std::string(step.stage.size() < 10 ? 10 - step.stage.size() : 1, ' ') +
              step.text);
    table.add({text_value(step.stage), text_value(step.text)});
  }
  reply.data.emplace_back("trace", Value{"", table.json()});
}

void time(Shell& shell, Arguments& arguments, Reply& reply) {
  softcard::Clock& clock = shell.card().clock();
  if (!arguments.empty()) {
    const std::string word = arguments.take("warp");
    if (word != "warp") throw Error("'" + word + "' is not warp");
    const std::uint64_t nanoseconds =
        parse_seconds(arguments.take("seconds"), "seconds", kMostSeconds);
    arguments.finish();
    if (!softcard::host::warp_ns(nanoseconds)) {
      throw Error(dynamic_cast<softcard::VirtualClock*>(&clock) == nullptr
                      ? "the card runs in real time; start with --virtual-time to warp"
                      : "the card's time ends 2^64 ns after its start");
    }
    return;
  }
  const std::string seconds = seconds_text(clock.now_ns());
  reply.say(seconds + " s");
  reply.data.emplace_back("seconds", Value{seconds, seconds});
}

void fail(Shell&, Arguments& arguments, Reply& reply) {
  softcard::CallWatch& watch = softcard::host::call_watch();
  if (arguments.empty()) {
    reply.say(std::to_string(watch.pending_failures()) + " refusals to come");
    reply.data.emplace_back("pending", count_value(watch.pending_failures()));
    return;
  }
  std::string operation = arguments.take("operation");
  if (operation == "none") {
    arguments.finish();
    watch.clear_failures();
    return;
  }
  const auto nth = arguments.empty() ? 1 : parse_number(arguments.take("n"), "n", 1, UINT32_MAX);
  arguments.finish();
  if (operation.compare(0, 5, "vorn_") == 0) operation.erase(0, 5);
  if (!watch.fail(operation, static_cast<unsigned>(nth))) {
    throw Error("operation: '" + operation + "' is no operation of the SDK");
  }
}

// Forgets what came out and nobody asked for.
void drain(Shell& shell, Arguments& arguments, Reply&) {
  arguments.finish();
  softcard::Card& card = shell.card();
  for (softcard::PortIndex port = 0; port < card.tables().ports.count(); ++port) {
    if (softcard::MemoryCable* const cable = find_memory_cable(card, port)) cable->clear();
  }
  shell.cpu_packets().clear();
  shell.events().clear();
}

void clear_counters(Shell& shell, Arguments& arguments, Reply&) {
  arguments.finish();
  shell.card().clear_counters();
}

}  // namespace

void add_card_commands(CommandTable& table) {
  const auto add = [&table](const char* name, const char* usage, const char* help,
                            decltype(Command::run) run, bool changes_card) {
    table.add({name, "card", usage, help, std::move(run), nullptr, {}, changes_card});
  };
  add("link", "PORT up|down", "pulls the plug of a port, or puts it back", link, true);
  add("cable", "PORT none|memory|patch PORT|pcap IN OUT|unix PATH|linux INTERFACE",
      "what a port is plugged into", cable, true);
  add("inject", "PORT FRAME", "sends a frame into a port", inject, true);
  add("trace", "PORT FRAME", "sends a frame into a port and tells its way, table by table", trace,
      true);
  add("expect",
      "PORT FRAME|none|count N, none, cpu [REASON] FRAME|none|count N, event NAME FIELDS|none, "
      "ok|failed [COMMAND], NAME = VALUE",
      "what must have come", expect, false);
  add("drain", "", "forgets frames, packets for the CPU and events that nobody expected", drain,
      true);
  add("monitor", "[PORTS] [cpu]|off", "tells of every frame that goes in and out, as it comes",
      monitor, false);
  add("capture", "FILE|- [PORTS] [cpu], off, nothing", "writes frames that go in and out as pcapng",
      capture, false);
  add("save", "FILE", "writes the calls that lead from a fresh card to this one", save, false);
  add("time", "[warp SECONDS]", "the card's time, or moves it on", time, true);
  add("wait", "SECONDS", "lets the card run for so long, in real time", wait, false);
  add("fail", "[OPERATION [N]|none]", "has the Nth next call of an SDK operation refused", fail,
      true);
  add("clear_counters", "", "sets all counters of all ports to 0", clear_counters, true);
}

}  // namespace shell
