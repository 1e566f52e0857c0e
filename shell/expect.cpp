// SPDX-License-Identifier: Apache-2.0
#include "expect.h"

#include <algorithm>

#include "cables.h"
#include "card_text.h"
#include "codec.h"
#include "event_printer.h"
#include "shell.h"
#include "softcard/frames/frame_text.h"

namespace shell {

namespace {

std::string frame_text(const std::vector<unsigned char>& frame) {
  return softcard::print_frame(frame.data(), frame.size());
}

// Error when the pattern is none.
bool matches(const std::string& pattern, const std::vector<unsigned char>& frame) {
  std::string error;
  const bool result = softcard::frame_matches(pattern, frame.data(), frame.size(), error);
  if (!error.empty()) throw Error("frame: " + error);
  return result;
}

// Frames that wait at one place: `take` gives the next frame and false when there is none.
struct Waiting {
  std::string where;
  std::size_t count;
  std::uint64_t forgotten;
  std::function<bool(std::vector<unsigned char>&)> take;
};

// Says that some of what came is not there any more.
void tell_forgotten(const std::string& where, std::uint64_t forgotten, Reply& reply) {
  if (forgotten == 0) return;
  reply.say(where + ": " + std::to_string(forgotten) +
            " that came earlier are forgotten, for nobody asked and there was no room");
  reply.data.emplace_back("forgotten", number_value(forgotten));
}

// none, count N, or a frame: of a port or of the CPU.
void expect_frames(const Waiting& waiting, Arguments& arguments, Reply& reply) {
  tell_forgotten(waiting.where, waiting.forgotten, reply);
  const std::string came = std::to_string(waiting.count) + " came";
  if (!arguments.empty() && arguments.peek() == "none") {
    arguments.take("none");
    arguments.finish();
    std::vector<unsigned char> frame;
    if (waiting.take(frame)) {
      throw Failure(waiting.where + ": expected no frame, " + came + ", first " +
                    frame_text(frame));
    }
    return;
  }
  if (!arguments.empty() && arguments.peek() == "count") {
    arguments.take("count");
    const auto count = parse_number(arguments.take("n"), "n", 0, UINT32_MAX);
    arguments.finish();
    std::vector<unsigned char> frame;
    while (waiting.take(frame)) {
    }
    if (static_cast<std::uint64_t>(count) != waiting.count) {
      throw Failure(waiting.where + ": expected " + std::to_string(count) + " frames, " + came);
    }
    return;
  }
  const std::string pattern = arguments.rest("frame");
  matches(pattern, {});  // A bad pattern is told even when nothing came.
  std::vector<unsigned char> frame;
  if (!waiting.take(frame)) {
    throw Failure(waiting.where + ": expected " + pattern + ", nothing came");
  }
  if (!matches(pattern, frame)) {
    throw Failure(waiting.where + ": expected " + pattern + ", came " + frame_text(frame));
  }
}

void expect_port(Shell& shell, Arguments& arguments, Reply& reply) {
  softcard::Card& card = shell.card();
  const softcard::PortIndex port = take_physical_port(card, arguments);
  softcard::MemoryCable& cable = memory_cable(card, port);
  expect_frames({port_text(port), cable.waiting(), cable.forgotten(),
                 [&cable](std::vector<unsigned char>& frame) { return cable.take(frame); }},
                arguments, reply);
}

void expect_cpu(Shell& shell, Arguments& arguments, Reply& reply) {
  auto& packets = shell.cpu_packets();
  unsigned came_for = 0;
  const Waiting waiting = {"cpu", packets.size(), packets.forgotten(),
                           [&](std::vector<unsigned char>& frame) {
                             if (packets.empty()) return false;
                             CpuPacket packet = packets.take();
                             frame = std::move(packet.frame);
                             came_for = packet.reason;
                             return true;
                           }};
  unsigned reason = 0;
  if (!arguments.empty()) {
    for (const auto& entry : rx_reason_names().entries) {
      if (arguments.peek() == entry.name) reason = entry.number;
    }
  }
  if (reason == 0) return expect_frames(waiting, arguments, reply);
  const std::string name = arguments.take("reason");
  expect_frames(waiting, arguments, reply);
  if (came_for != 0 && came_for != reason) {
    throw Failure("cpu: expected reason " + name + ", came " +
                  name_value(rx_reason_names(), came_for).text);
  }
}

void expect_no_frame(Shell& shell) {
  softcard::Card& card = shell.card();
  for (softcard::PortIndex port = 0; port < card.tables().ports.count(); ++port) {
    softcard::MemoryCable* const cable = find_memory_cable(card, port);
    std::vector<unsigned char> frame;
    if (cable == nullptr || !cable->take(frame)) continue;
    throw Failure(port_text(port) + ": expected no frame, came " + frame_text(frame));
  }
}

// event NAME FIELD VALUE ...: the fields that are named must be so.
void expect_event(Shell& shell, Arguments& arguments, Reply& reply) {
  auto& events = shell.events();
  const std::string name = arguments.take("event");
  tell_forgotten("events", events.forgotten(), reply);
  const auto text = [](const Event& event) {
    std::string line = event.name;
    for (const auto& [field, value] : event.fields) line += ' ' + field + ' ' + value.text;
    return line;
  };
  if (name == "none") {
    arguments.finish();
    if (!events.empty()) throw Failure("expected no event, came " + text(events.first()));
    return;
  }
  const std::vector<std::string>& known = fields_of_event(name);
  NamedValues fields;
  std::string expected = name;
  while (!arguments.empty()) {
    const std::string field = arguments.take("field");
    if (std::find(known.begin(), known.end(), field) == known.end()) {
      throw Error(joined_pieces("'", field, "' is none of ", joined(known, ", ")));
    }
    const std::string value = arguments.take("value of " + field);
    fields.emplace_back(field, text_value(value));
    expected += joined_pieces(" ", field, " ", value);
  }
  if (events.empty()) throw Failure("expected event " + expected + ", none came");
  const Event event = events.take();
  bool good = event.name == name;
  for (const auto& [field, value] : fields) {
    bool found = false;
    for (const auto& [came_field, came_value] : event.fields) {
      found = found || (came_field == field && came_value.text == value.text);
    }
    good = good && found;
  }
  if (!good) throw Failure("expected event " + expected + ", came " + text(event));
}

// ok and failed: what the last entry point gave, or the one behind gives.
void expect_result(Shell& shell, bool expected, Arguments& arguments, Reply& reply) {
  std::vector<std::string> words;
  while (!arguments.empty()) words.push_back(arguments.take("command"));
  std::string what = "the last call";
  std::optional<bool> result = shell.last_call().result;
  if (!words.empty()) {
    what = words.front();
    reply = shell.run(words);
    if (!reply.failure.empty()) return;
    result = reply.result;
    reply.result.reset();
  }
  if (!result.has_value()) throw Error(what + " is no call of an entry point");
  // A failure that was asked for does not fail the script.
  if (!words.empty()) reply.say(*result ? "ok" : "failed");
  if (*result != expected) {
    throw Failure(what + ": expected " + (expected ? "ok" : "failed") + ", came " +
                  (*result ? "ok" : "failed"));
  }
}

void expect_output(const Shell& shell, std::string name, Arguments& arguments) {
  std::string value;
  const std::size_t equals = name.find('=');
  if (equals != std::string::npos) {
    value = name.substr(equals + 1);
    name.erase(equals);
  } else {
    const std::string sign = arguments.take("=");
    if (sign != "=") {
      throw Error("'" + name + "' is no port, and no output NAME = VALUE, for its = is missing");
    }
    value = arguments.rest("value");
  }
  arguments.finish();
  for (const auto& [output, came] : shell.last_call().outputs) {
    if (output != name) continue;
    if (came.text == value) return;
    throw Failure(joined_pieces("expected ", name, " = ", value, ", came ", came.text));
  }
  throw Failure("expected " + name + " = " + value + ", but the last call wrote no " + name);
}

}  // namespace

void expect(Shell& shell, Arguments& arguments, Reply& reply) {
  reply.note = "as expected";
  if (arguments.empty()) throw Error("what to expect is missing");
  const std::string first = arguments.peek();
  if (first.find('/') != std::string::npos && first.find('=') == std::string::npos) {
    return expect_port(shell, arguments, reply);
  }
  arguments.take("what");
  if (first == "cpu") return expect_cpu(shell, arguments, reply);
  if (first == "event") return expect_event(shell, arguments, reply);
  if (first == "ok" || first == "failed") {
    return expect_result(shell, first == "ok", arguments, reply);
  }
  if (first == "none" && arguments.empty()) return expect_no_frame(shell);
  expect_output(shell, first, arguments);
}

}  // namespace shell
