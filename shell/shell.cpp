// SPDX-License-Identifier: Apache-2.0
#include "shell.h"

#include <exception>
#include <iostream>

#include "codec.h"
#include "libxorp/eventloop.hh"
#include "softcard/host.h"

namespace shell {

namespace {

// A script that runs itself would not end.
constexpr unsigned kMostScriptsWithinScripts = 16;
// Frames that go round in a loop of cables would not either.
constexpr unsigned kMostRounds = 1000;
// Of packets for the CPU, and of events: the latest are kept.
constexpr std::size_t kMostWaiting = 65536;

Shell* the_shell = nullptr;

void take_cpu_packet(RxPacket* packet, void* shell) {
  auto& packets = static_cast<Shell*>(shell)->cpu_packets();
  if (packets.size() == kMostWaiting) packets.pop_front();
  packets.push_back({static_cast<softcard::PortIndex>(packet->port.port()),
                     packet->reason,
                     {packet->data, packet->data + packet->length}});
}

std::string quoted_all(const std::vector<std::string>& words) {
  std::vector<std::string> result;
  result.reserve(words.size());
  for (const std::string& word : words) result.push_back(quoted(word));
  return joined(result, " ");
}

// `ok pvid=10`, as recordings have it.
std::string outcome(const Reply& reply) {
  std::string text = *reply.result ? "ok" : "failed";
  for (const auto& [name, value] : reply.outputs) text += ' ' + quoted(name + '=' + value.text);
  return text;
}

// Without the blanks around it; lines from other systems may end in a carriage return.
std::string trimmed(const std::string& text) {
  const std::size_t first = text.find_first_not_of(" \t\r");
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

}  // namespace

Shell::Shell(const Options& options) : options_(options) {
  the_shell = this;
  softcard::host::call_watch().set_sink([this](const std::string& call) { traced_call(call); });
  add_shell_commands(table_);
  add_card_commands(table_);
  add_show_commands(table_);
  add_lifecycle_commands(table_);
  add_event_commands(table_);
  add_port_commands(table_);
  add_stp_commands(table_);
  add_stat_commands(table_);
  add_traffic_commands(table_);
  add_vlan_commands(table_);
  add_lag_commands(table_);
  add_fdb_commands(table_);
  add_l3_commands(table_);
  add_flow_commands(table_);
  add_filter_commands(table_);
  add_packet_commands(table_);
}

Shell::~Shell() {
  softcard::host::call_watch().set_sink({});
  the_shell = nullptr;
}

Shell& Shell::current() { return *the_shell; }

// ---- Running commands ------------------------------------------------------------------------

void Shell::run_script(std::istream& script, const std::string& name) {
  if (script_depth_ == kMostScriptsWithinScripts) {
    throw Error("scripts run scripts more than " + std::to_string(kMostScriptsWithinScripts) +
                " deep");
  }
  ++script_depth_;
  Place place{name, 0};
  std::string line;
  unsigned line_number = 0;
  while (!done_ && std::getline(script, line)) {
    place.line = ++line_number;
    // A line that ends in a backslash goes on in the next one.
    while (!line.empty() && line.back() == '\\') {
      line.pop_back();
      std::string next;
      if (!std::getline(script, next)) break;
      ++line_number;
      line += next;
    }
    run_line(trimmed(line), place);
    if (options_.stop_at_error && errors_ != 0) done_ = true;
  }
  --script_depth_;
}

void Shell::run_file(const std::string& path) {
  std::ifstream script(path);
  if (!script) throw Error("cannot read " + path);
  run_script(script, path);
}

void Shell::run_line(const std::string& line, const Place& place) {
  end_echo();
  if (options_.echo && !options_.json) {
    echo_open_ = !line.empty() && line[0] != '#';
    std::cout << (echo_open_ ? "> " : "") << line << (echo_open_ ? "" : "\n");
  }
  std::vector<std::vector<std::string>> commands;
  try {
    commands = split_commands(line);
  } catch (const Error& error) {
    print({line}, place, {}, error.what());
    return;
  }
  for (auto& words : commands) {
    if (done_) break;
    run_words(std::move(words), place);
    if (options_.stop_at_error && errors_ != 0) break;
  }
  end_echo();
}

// Runs one command with whatever it throws caught, and prints the outcome.
void Shell::run_words(std::vector<std::string> words, const Place& place) {
  const std::vector<std::string> written = words;
  const bool must_fail = words.front()[0] == '!';
  Reply reply;
  std::string error;
  try {
    if (must_fail) {
      words.front().erase(0, 1);
      if (words.front().empty()) words.erase(words.begin());
      if (words.empty()) throw Error("! needs a command behind it");
    }
    reply = run(words);
    const bool failed = reply.result == false || !reply.failure.empty();
    if (must_fail && !failed) {
      error = words.front() + ": expected to fail, but it succeeded";
    } else if (failed && !must_fail) {
      error = words.front() + ": " + (reply.failure.empty() ? "failed" : reply.failure);
    } else if (!reply.failure.empty()) {
      reply.say("failed as expected: " + reply.failure);
    }
  } catch (const std::exception& exception) {
    error = exception.what();
  } catch (...) {
    error = words.front() + ": threw something that is no std::exception";
  }
  print(written, place, reply, error);
  try {
    settle();
  } catch (const std::exception& exception) {
    complain(place, std::string("an event: ") + exception.what());
  }
}

Reply Shell::run(const std::vector<std::string>& given) {
  // Before the command, so that nothing of what it does escapes.
  listen_to_card();
  std::vector<std::string> words = given;
  expand(words);
  const Command* const command = table_.find(words.front());
  if (command == nullptr) {
    const std::string near = nearest(words.front(), table_.names());
    throw Error(words.front() + ": unknown command" +
                (near.empty() ? "; try help" : "; did you mean " + near + "?"));
  }
  Arguments arguments({words.begin() + 1, words.end()});
  Reply reply;
  try {
    command->run(*this, arguments, reply);
  } catch (const Failure& failure) {
    reply.failure = failure.what();
  } catch (const Error& error) {
    // A wrong argument of an entry point: how it is called helps.
    const bool usage = command->entry_point != nullptr;
    throw Error(words.front() + ": " + error.what() +
                (usage ? "; usage: " + trimmed(command->name + ' ' + command->usage) : ""));
  } catch (const std::exception& exception) {
    throw Error(words.front() + ": threw " + exception.what());
  }
  if (reply.result.has_value()) {
    last_call_ = reply;
    for (const auto& [name, value] : reply.outputs) outputs_[name] = value.text;
  }
  // A command may have made another card.
  listen_to_card();
  if (recording_ != nullptr) write_record(*command, words, reply);
  return reply;
}

// Puts the latest output of that name in the place of each word $name.
void Shell::expand(std::vector<std::string>& words) const {
  for (std::string& word : words) {
    if (word.size() < 2 || word[0] != '$') continue;
    const auto found = outputs_.find(word.substr(1));
    if (found == outputs_.end()) throw Error(word + ": no output has had that name yet");
    word = found->second;
  }
}

// ---- Printing --------------------------------------------------------------------------------

void Shell::print(const std::vector<std::string>& words, const Place& place, const Reply& reply,
                  const std::string& error) {
  if (options_.json) {
    NamedValues object;
    if (!place.name.empty()) object.emplace_back("file", text_value(place.name));
    if (place.line != 0) object.emplace_back("line", number_value(std::uint64_t{place.line}));
    object.emplace_back("command", text_value(quoted_all(words)));
    object.emplace_back("ok", flag_value(error.empty()));
    if (reply.result.has_value()) object.emplace_back("result", flag_value(*reply.result));
    if (!reply.outputs.empty()) {
      object.emplace_back("outputs", Value{"", json_object(reply.outputs)});
    }
    for (const auto& field : reply.data) object.push_back(field);
    if (!reply.lines.empty() && reply.data.empty()) {
      object.emplace_back("text", text_value(joined(reply.lines, "\n")));
    }
    if (!error.empty()) {
      object.emplace_back("error", text_value(error));
      ++errors_;
    }
    std::cout << json_object(object) << std::endl;
    return;
  }
  const std::string result =
      reply.result.has_value() ? (*reply.result ? "ok" : "failed") : std::string();
  const std::string note = result.empty() ? reply.note : result;
  if (echo_open_ && reply.lines.empty() && reply.outputs.empty() && !note.empty() &&
      reply.failure.empty()) {
    echo_open_ = false;
    std::cout << " -> " << note << '\n';
    if (!error.empty()) complain(place, error);
    return;
  }
  if (!reply.lines.empty() || !reply.outputs.empty() || !result.empty()) end_echo();
  for (const std::string& line : reply.lines) std::cout << line << '\n';
  for (const auto& [name, value] : reply.outputs) {
    std::cout << name << " = " << value.text << '\n';
  }
  if (!result.empty()) std::cout << result << '\n';
  std::cout.flush();
  if (!error.empty()) complain(place, error);
}

void Shell::end_echo() {
  if (echo_open_) std::cout << '\n';
  echo_open_ = false;
}

void Shell::complain(const Place& place, const std::string& message) {
  ++errors_;
  end_echo();
  std::cout.flush();
  // At the keyboard the place is plain to see.
  if (!place.name.empty()) std::cerr << place.name << ':' << place.line << ": ";
  std::cerr << message << std::endl;
}

void Shell::event(const std::string& name, const NamedValues& fields) {
  if (events_.size() == kMostWaiting) events_.pop_front();
  events_.push_back({name, fields});
  if (screen_.clear) screen_.clear();
  end_echo();
  if (options_.json) {
    NamedValues object = {{"event", text_value(name)}};
    object.insert(object.end(), fields.begin(), fields.end());
    std::cout << json_object(object) << std::endl;
  } else {
    std::cout << "event " << name;
    for (const auto& [field, value] : fields) std::cout << ' ' << field << ' ' << value.text;
    std::cout << std::endl;
  }
  if (screen_.restore) screen_.restore();
}

void Shell::traced_call(const std::string& call) {
  end_echo();
  if (options_.json) {
    std::cout << json_object({{"call", text_value(call)}}) << std::endl;
  } else {
    std::cout << "call " << call << std::endl;
  }
}

// ---- The card --------------------------------------------------------------------------------

softcard::Card& Shell::card() const {
  softcard::Card* const card = softcard::host::card();
  if (card == nullptr) throw Error("there is no card: vorn_lcmgr_api_init makes one");
  return *card;
}

void Shell::settle() {
  softcard::Card* const card = softcard::host::card();
  if (card == nullptr) return;
  for (unsigned round = 0; round < kMostRounds && card->run_once() != 0; ++round) {
  }
}

EventLoop& Shell::loop() {
  if (loop_ == nullptr) loop_ = std::make_unique<EventLoop>();
  return *loop_;
}

void Shell::listen_to_card() {
  softcard::Card* const card = softcard::host::card();
  if (card == heard_card_) return;
  heard_card_ = card;
  cpu_packets_.clear();
  if (card != nullptr) card->events().add(&take_cpu_packet, this);
}

// ---- Recordings ------------------------------------------------------------------------------

void Shell::record(const std::string& path) {
  recording_.reset();
  if (path.empty()) return;
  auto file = std::make_unique<std::ofstream>(path);
  if (!*file) throw Error("cannot write " + path);
  recording_ = std::move(file);
}

void Shell::write_record(const Command& command, const std::vector<std::string>& words,
                         const Reply& reply) {
  if (reply.result.has_value()) {
    *recording_ << command.name;
    for (const auto& [name, value] : reply.inputs) {
      *recording_ << ' ' << quoted(name + '=' + value.text);
    }
    *recording_ << " -> " << outcome(reply) << std::endl;
  } else if (command.changes_card) {
    *recording_ << quoted_all(words) << std::endl;
  }
  if (!*recording_) {
    recording_.reset();
    throw Error("the recording cannot be written any more");
  }
}

void Shell::replay(const std::string& path, Reply& reply) {
  std::ifstream file(path);
  if (!file) throw Error("cannot read " + path);
  const std::string arrow = " -> ";
  std::uint64_t calls = 0;
  std::uint64_t differences = 0;
  std::string line;
  for (unsigned number = 1; std::getline(file, line); ++number) {
    const std::size_t at = line.rfind(arrow);
    const std::string recorded = at == std::string::npos ? "" : line.substr(at + arrow.size());
    const auto tell = [&](const std::string& difference) {
      ++differences;
      reply.say(joined_pieces(path, ":", std::to_string(number), ": ", difference));
    };
    try {
      for (const auto& words : split_commands(line.substr(0, at))) {
        ++calls;
        const Reply again = run(words);
        const std::string now = again.result.has_value() ? outcome(again) : "";
        if (now != recorded) {
          tell(joined_pieces(words.front(), ": was ", recorded, ", is ", now));
        }
        if (!again.failure.empty()) tell(words.front() + ": " + again.failure);
      }
    } catch (const Error& error) {
      tell(error.what());
    }
    settle();
  }
  reply.say(std::to_string(calls) + " commands, " + std::to_string(differences) + " differences");
  reply.data.emplace_back("commands", number_value(calls));
  reply.data.emplace_back("differences", number_value(differences));
  if (differences != 0) reply.failure = std::to_string(differences) + " differences";
}

}  // namespace shell
