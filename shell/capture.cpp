// SPDX-License-Identifier: Apache-2.0
#include "capture.h"

#include <istream>

#include "card_text.h"
#include "monitor.h"
#include "shell.h"

namespace shell {

namespace {

void show_counts(const softcard::FrameCapture& capture, Reply& reply) {
  reply.say(capture_text(capture));
  reply.data.emplace_back("capture", text_value(capture.path()));
  reply.data.emplace_back("frames", number_value(capture.frames()));
  reply.data.emplace_back("lost", number_value(capture.lost()));
}

}  // namespace

std::string capture_text(const softcard::FrameCapture& capture) {
  std::string text = capture.path() + ": " + std::to_string(capture.frames()) + " frames";
  if (capture.lost() != 0) {
    text += ", " + std::to_string(capture.lost()) + " lost, for the reader is slow";
  }
  return text;
}

void capture(Shell& shell, Arguments& arguments, Reply& reply) {
  const std::shared_ptr<softcard::FrameCapture> running = shell.capture();
  if (arguments.empty()) {
    if (running != nullptr) show_counts(*running, reply);
    return;
  }
  const std::string path = arguments.take("file");
  if (path == "off") {
    arguments.finish();
    if (running == nullptr) return;
    const bool whole = shell.end_capture();
    show_counts(*running, reply);
    if (!running->error().empty()) throw Error(running->error());
    if (!whole) reply.say("the reader did not take all of it");
    return;
  }
  softcard::Card& card = shell.card();
  const Places places = take_places(card, arguments);
  if (running != nullptr) {
    throw Error(running->path() + " is being written; `capture off` ends it");
  }
  if (path == "-") shell.print_to_standard_error();
  std::string error;
  const auto started = softcard::FrameCapture::open(path, card.tables(), card.clock(), places.ports,
                                                    places.cpu, error);
  if (started == nullptr) throw Error(error);
  card.pipeline().observe(started);
  shell.start_capture(started);
}

bool captures_to_standard_output(std::istream& script) {
  for (std::string line; std::getline(script, line);) {
    try {
      for (const auto& words : split_commands(line)) {
        if (words.size() > 1 && words[0] == "capture" &&
            (words[1] == "-" || words[1] == "file=-")) {
          return true;
        }
      }
    } catch (const Error&) {
      // Whoever runs the line says so.
    }
  }
  return false;
}

}  // namespace shell
