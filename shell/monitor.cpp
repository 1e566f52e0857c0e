// SPDX-License-Identifier: Apache-2.0
#include "monitor.h"

#include <memory>

#include "card_text.h"
#include "names.h"
#include "shell.h"
#include "softcard/frames/frame_text.h"

namespace shell {

namespace {

// What a person reads of a frame; the rest is told as a size.
constexpr std::size_t kMostText = 600;

std::string shortened(std::string text, std::size_t frame_bytes) {
  if (text.size() <= kMostText) return text;
  text.resize(kMostText);
  return text + "... (" + std::to_string(frame_bytes) + " bytes)";
}

Value texts_value(const std::vector<std::string>& texts) {
  std::vector<Value> values;
  values.reserve(texts.size());
  for (const std::string& text : texts) values.push_back(text_value(text));
  return list_value(values);
}

// The way of a frame by its verdict.
NamedValues verdict_fields(const softcard::Sighting& sighting) {
  std::vector<Value> ways;
  for (const auto& way : sighting.ways) ways.push_back(text_value(way.to));
  if (!sighting.to_cpu.empty()) ways.push_back(text_value("cpu"));
  return {{"verdict", text_value(sighting.verdict())},
          {"to", list_value(ways)},
          {"dropped", sighting.dropped() ? text_value(sighting.drop_reason()) : no_value()},
          {"details", texts_value(sighting.details())}};
}

}  // namespace

Places take_places(const softcard::Card& card, Arguments& arguments) {
  Places places;
  if (arguments.empty()) {
    places.ports = card.tables().ports.all();
    return places;
  }
  places.cpu = false;
  while (!arguments.empty()) {
    if (arguments.peek() == "cpu") {
      arguments.take("port");
      places.cpu = true;
      continue;
    }
    Arguments one({arguments.take("ports")});
    for (const softcard::PortIndex port : take_physical_ports(card, one)) places.ports.insert(port);
  }
  return places;
}

void Monitor::saw(const softcard::Sighting& sighting) {
  const bool from_cpu = sighting.ingress == softcard::kNoPort;
  if (from_cpu ? places_.cpu : places_.ports.contains(sighting.ingress)) {
    std::string behind = " -> " + sighting.verdict();
    const std::vector<std::string> details = sighting.details();
    if (!details.empty()) behind += " (" + joined(details, "; ") + ')';
    tell("in", from_cpu ? "cpu" : port_text(sighting.ingress), sighting, sighting.in,
         verdict_fields(sighting), behind);
  }
  for (const auto& sent : sighting.sent) {
    if (!places_.ports.contains(sent.port)) continue;
    tell("out", port_text(sent.port), sighting, sent.frame,
         {{"made_here", flag_value(sent.made_here)}}, sent.made_here ? " (of its own)" : "");
  }
  if (!places_.cpu) return;
  for (const auto& packet : sighting.to_cpu) {
    const Value reason = name_value(rx_reason_names(), packet.reason);
    tell("out", "cpu", sighting, packet.frame,
         {{"from", port_value(sighting.ingress)}, {"reason", reason}},
         " (" + reason.text + ", from " + port_text(sighting.ingress) + ')');
  }
}

void Monitor::tell(const char* direction, const std::string& place,
                   const softcard::Sighting& sighting, const softcard::SeenFrame& frame,
                   const NamedValues& fields, const std::string& behind) {
  const std::string text = softcard::print_frame(frame.bytes.data(), frame.bytes.size());
  if (!json_) {
    tell_(joined_pieces("frame ", direction, " ", place, ": ", shortened(text, frame.bytes.size()),
                        behind));
    return;
  }
  const std::string seconds = seconds_text(sighting.time_ns);
  NamedValues object = {{"frame", text_value(direction)},
                        {"number", number_value(sighting.number)},
                        {"seconds", {seconds, seconds}},
                        {"port", text_value(place)}};
  object.insert(object.end(), fields.begin(), fields.end());
  object.emplace_back("bytes", count_value(frame.bytes.size()));
  object.emplace_back("data", text_value(text));
  tell_(json_object(object));
}

void monitor(Shell& shell, Arguments& arguments, Reply&) {
  if (!arguments.empty() && arguments.peek() == "off") {
    arguments.take("off");
    arguments.finish();
    shell.set_monitor(nullptr);
    return;
  }
  softcard::Card& card = shell.card();
  const auto monitor = std::make_shared<Monitor>(
      take_places(card, arguments), shell.json(),
      [&shell](const std::string& line) { shell.print_behind(line, Shell::Hold::kAlways); });
  card.pipeline().observe(monitor);
  shell.set_monitor(monitor);
}

}  // namespace shell
