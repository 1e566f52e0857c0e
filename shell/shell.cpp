// SPDX-License-Identifier: Apache-2.0
#include "shell.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <exception>
#include <iostream>
#include <utility>

#include "capture.h"
#include "card_text.h"
#include "codec.h"
#include "far_card.h"
#include "interrupt.h"
#include "libxorp/eventloop.hh"
#include "softcard/base/refusal.h"
#include "softcard/cables/pcap_cable.h"
#include "softcard/host.h"

namespace shell {

namespace {

// Commands that run commands: source, repeat, replay, expect. One that runs itself would not end.
constexpr unsigned kDeepest = 16;
// Of what comes while a command runs and waits for its answer. More than that is printed ahead.
constexpr std::size_t kMostHeldBytes = std::size_t{16} << 20;
// How often the card looks for what its cables brought and what time did.
constexpr int kRoundMilliseconds = 10;
// Frames that go round in a loop of cables would not either.
constexpr unsigned kMostRounds = 1000;
// The room for packets for the CPU and for events that wait, each; frames wait in their cables.
constexpr std::size_t kMostWaitingBytes = std::size_t{16} << 20;

// Between a recorded call and what came of it.
constexpr char kArrow[] = "->";

Shell* the_shell = nullptr;

void take_cpu_packet(RxPacket* packet, void* shell) {
  static_cast<Shell*>(shell)->cpu_packets().add(
      {static_cast<softcard::PortIndex>(packet->port.port()),
       packet->reason,
       {packet->data, packet->data + packet->length}},
      sizeof(CpuPacket) + packet->length);
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

// Without the blanks around it.
std::string trimmed(const std::string& text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

// One more of something while this lives.
class Counted {
 public:
  explicit Counted(unsigned& count) : count_(count) { ++count_; }
  ~Counted() { --count_; }
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;

 private:
  unsigned& count_;
};

}  // namespace

Shell::Shell(const Options& options)
    : options_(options), cpu_packets_(kMostWaitingBytes), events_(kMostWaitingBytes) {
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

// ---- Running commands ---------------------------------------------------------------------------

void Shell::run_script(std::istream& script, const std::string& name) {
  Lines lines(script, name);
  std::string line;
  while (!done() && !interrupted() && lines.next(line)) {
    const Place place{name, lines.number()};
    // A line that ends in a backslash goes on in the next one.
    for (std::string next; !line.empty() && line.back() == '\\' && lines.next(next);) {
      line.pop_back();
      line += next;
    }
    run_line(trimmed(line), place);
    if (options_.stop_at_error && errors_ != 0) quit();
  }
}

void Shell::run_file(const std::string& path) {
  with_file(path, [&](std::istream& script) { run_script(script, path); });
}

void Shell::with_file(const std::string& path, const std::function<void(std::istream&)>& read) {
  const std::optional<FileId> id = file_at(path);
  if (id.has_value() && id == recorded_file_) {
    throw Error(path + " is being recorded, and would grow while it runs");
  }
  std::ifstream file(path);
  if (!file) throw Error("cannot read " + path + ": " + std::strerror(errno));
  const std::size_t before = files_.size();
  if (id.has_value()) files_.push_back(*id);
  try {
    read(file);
  } catch (...) {
    files_.resize(before);
    throw;
  }
  files_.resize(before);
}

void Shell::run_line(const std::string& line, const Place& place) {
  end_echo();
  if (options_.echo && !options_.json) {
    echo_open_ = !line.empty() && line[0] != '#';
    out() << (echo_open_ ? "> " : "") << line << (echo_open_ ? "" : "\n");
  }
  std::vector<std::vector<std::string>> commands;
  try {
    commands = split_commands(line);
  } catch (const Error& error) {
    print({line}, place, {}, error.what());
    return;
  }
  for (auto& words : commands) {
    if (done()) break;
    if (interrupted()) {
      complain(place, words.front() + ": interrupted");
      break;
    }
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
  holding_ = true;
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
  holding_ = false;
  print_held();
  if (!recording_trouble_.empty()) complain(place, std::exchange(recording_trouble_, {}));
  run_card(place);
}

Reply Shell::run(const std::vector<std::string>& given) {
  if (depth_ == kDeepest) {
    throw Error(given.front() + ": commands run commands more than " + std::to_string(kDeepest) +
                " deep");
  }
  const Counted counted(depth_);
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
  const std::uint64_t refused_before = refusals();
  if (far_card_ != nullptr && FarCard::carries_out(*command, arguments)) {
    reply = far_card_->run(words);
    if (command->name == "drain") events_.clear();
    write_record(*command, words, reply);
    return reply;
  }
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
  if (reply.result == false && refusals() != refused_before) {
    reply.reason = far_card_ != nullptr ? far_card_->last_refusal() : softcard::last_refusal();
  }
  if (reply.result.has_value()) {
    last_call_ = reply;
    for (const auto& [name, value] : reply.outputs) outputs_[name] = value.text;
  }
  capture_was_last_ = command->name == "capture";
  // A command may have made another card.
  listen_to_card();
  write_record(*command, words, reply);
  return reply;
}

std::uint64_t Shell::refusals() const {
  return far_card_ != nullptr ? far_card_->refusals() : softcard::refusals();
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

// ---- Printing -----------------------------------------------------------------------------------

std::ostream& Shell::out() {
  printed_ = true;
  return std::cout;
}

void Shell::print_to_standard_error() {
  if (std::cout.rdbuf() == std::cerr.rdbuf()) return;
  if (printed_) {
    throw Error("standard output has other text already: begin with `capture -`, or name a file");
  }
  std::cout.rdbuf(std::cerr.rdbuf());
}

bool Shell::done() const { return done_ || !std::cout; }

void Shell::print(const std::vector<std::string>& words, const Place& place, const Reply& reply,
                  const std::string& error) {
  if (options_.json) {
    NamedValues object;
    if (!place.name.empty()) object.emplace_back("file", text_value(place.name));
    if (place.line != 0) object.emplace_back("line", number_value(std::uint64_t{place.line}));
    object.emplace_back("command", text_value(quoted_all(words)));
    object.emplace_back("ok", flag_value(error.empty()));
    if (reply.result.has_value()) object.emplace_back("result", flag_value(*reply.result));
    if (reply.result == false && !reply.reason.empty()) {
      object.emplace_back("reason", text_value(reply.reason));
    }
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
    out() << json_object(object) << std::endl;
    return;
  }
  const std::string result = reply.result.has_value() ? reply.verdict() : std::string();
  const std::string note = result.empty() ? reply.note : result;
  if (echo_open_ && reply.lines.empty() && reply.outputs.empty() && !note.empty() &&
      reply.failure.empty()) {
    echo_open_ = false;
    out() << " -> " << note << std::endl;
    if (!error.empty()) complain(place, error);
    return;
  }
  if (!reply.lines.empty() || !reply.outputs.empty() || !result.empty()) end_echo();
  for (const std::string& line : reply.lines) out() << line << '\n';
  for (const auto& [name, value] : reply.outputs) {
    out() << name << " = " << value.text << '\n';
  }
  if (!result.empty()) out() << result << '\n';
  std::cout.flush();
  if (!error.empty()) complain(place, error);
}

void Shell::end_echo() {
  if (echo_open_) out() << '\n';
  echo_open_ = false;
}

void Shell::complain(const Place& place, const std::string& message) {
  ++errors_;
  if (options_.json) {
    NamedValues object;
    if (!place.name.empty()) object.emplace_back("file", text_value(place.name));
    if (place.line != 0) object.emplace_back("line", number_value(std::uint64_t{place.line}));
    object.emplace_back("ok", flag_value(false));
    object.emplace_back("error", text_value(message));
    return print_behind(json_object(object));
  }
  end_echo();
  std::cout.flush();
  // At the keyboard the place is plain to see.
  if (!place.name.empty()) std::cerr << place.name << ':' << place.line << ": ";
  std::cerr << message << std::endl;
}

void Shell::event(const std::string& name, const NamedValues& fields) {
  std::size_t bytes = sizeof(Event) + name.size();
  for (const auto& [field, value] : fields) {
    bytes += sizeof(fields.front()) + field.size() + value.text.size() + value.json.size();
  }
  events_.add({name, fields}, bytes);
  if (options_.json) {
    NamedValues object = {{"event", text_value(name)}};
    object.insert(object.end(), fields.begin(), fields.end());
    return print_behind(json_object(object));
  }
  std::string line = "event " + name;
  for (const auto& [field, value] : fields) line += joined_pieces(" ", field, " ", value.text);
  print_behind(line);
}

void Shell::traced_call(const std::string& call) {
  print_behind(options_.json ? json_object({{"call", text_value(call)}}) : "call " + call);
}

void Shell::print_behind(const std::string& line, Hold hold) {
  const bool held = holding_ && (options_.json || hold == Hold::kAlways);
  if (held && held_.size() < kMostHeldBytes) {
    held_ += line + '\n';
    return;
  }
  print_held();
  if (screen_.clear) screen_.clear();
  end_echo();
  out() << line << std::endl;
  if (screen_.restore) screen_.restore();
}

void Shell::print_held() {
  if (held_.empty()) return;
  end_echo();
  out() << held_ << std::flush;
  held_.clear();
}

// ---- The card -----------------------------------------------------------------------------------

softcard::Card& Shell::card() const {
  softcard::Card* const card = softcard::host::card();
  if (card == nullptr) throw Error("there is no card: vorn_lcmgr_api_init makes one");
  return *card;
}

void Shell::run_card() {
  softcard::Card* const card = softcard::host::card();
  if (card == nullptr) return;
  for (unsigned round = 0; round < kMostRounds && card->run_once() != 0; ++round) {
  }
}

void Shell::run_card(const Place& place) {
  try {
    if (far_card_ != nullptr) far_card_->settle();
    run_card();
  } catch (const std::exception& exception) {
    complain(place, std::string("an event: ") + exception.what());
  }
  check_capture(place);
  softcard::Card* const card = softcard::host::card();
  if (card == nullptr) return;
  for (softcard::PortIndex port = 0; port < card->tables().ports.count(); ++port) {
    const auto* const cable = dynamic_cast<softcard::PcapCable*>(card->cable(port));
    const std::string trouble = cable == nullptr ? "" : cable->failure();
    if (trouble != cable_troubles_[port] && !trouble.empty()) {
      complain(place, port_text(port) + ": " + trouble);
    }
    cable_troubles_[port] = trouble;
  }
}

bool Shell::round() {
  // A card elsewhere lives by itself.
  if (far_card_ == nullptr) run_card(Place());
  if (!options_.json) print_held();
  return true;
}

XorpTimer Shell::rounds() {
  return loop().new_periodic_ms(kRoundMilliseconds, callback(this, &Shell::round));
}

EventLoop& Shell::loop() {
  if (loop_ == nullptr) loop_ = std::make_unique<EventLoop>();
  return *loop_;
}

void Shell::listen_to_card() {
  softcard::Card* const card = softcard::host::card();
  if (card == heard_card_) return;
  heard_card_ = card;
  monitor_ = nullptr;
  if (capture_ != nullptr) {
    const auto capture = capture_;
    tell_end(*capture, end_capture(), Place());
  }
  cpu_packets_.clear();
  if (card != nullptr) card->events().add(&take_cpu_packet, this);
}

// ---- Captures -----------------------------------------------------------------------------------

void Shell::start_capture(std::shared_ptr<softcard::FrameCapture> capture) {
  capture_ = std::move(capture);
}

bool Shell::end_capture() { return std::exchange(capture_, nullptr)->finish(); }

void Shell::check_capture(const Place& place) {
  if (capture_ == nullptr) return;
  capture_->poll();
  if (!capture_->over()) return;
  const auto capture = capture_;
  tell_end(*capture, end_capture(), place);
}

void Shell::tell_end(const softcard::FrameCapture& capture, bool whole, const Place& place) {
  if (!capture.error().empty()) return complain(place, capture.error());
  std::string text = capture_text(capture);
  if (capture.over()) {
    text += "; the reader is gone";
  } else if (!whole) {
    text += "; the reader did not take all of it";
  }
  if (options_.json) return print_behind(json_object({{"note", text_value(text)}}));
  end_echo();
  std::cerr << text << std::endl;
}

void Shell::finish_capture() {
  if (capture_ != nullptr && capture_was_last_ && capture_->live() && !done()) {
    catch_interrupts();
    const XorpTimer live = rounds();
    while (capture_ != nullptr && !interrupted()) loop().run();
  }
  if (capture_ == nullptr) return;
  const auto capture = capture_;
  const bool whole = end_capture();
  if (!whole || capture->lost() != 0) tell_end(*capture, whole, Place());
}

// ---- Recordings ---------------------------------------------------------------------------------

void Shell::record(const std::string& path) {
  const std::optional<FileId> id = path.empty() ? std::nullopt : file_at(path);
  if (id.has_value() && std::find(files_.begin(), files_.end(), *id) != files_.end()) {
    throw Error(path + " is running, and would be lost");
  }
  recording_.reset();
  recorded_file_.reset();
  if (path.empty()) return;
  auto file = std::make_unique<std::ofstream>(path);
  if (!*file) throw Error("cannot write " + path + ": " + std::strerror(errno));
  recording_ = std::move(file);
  recorded_file_ = file_at(path);
}

// Records a command. One that runs another one, whose reply it hands on, is recorded by that one.
void Shell::write_record(const Command& command, const std::vector<std::string>& words,
                         const Reply& reply) {
  if (recording_ == nullptr) return;
  errno = 0;
  if (command.entry_point != nullptr && reply.result.has_value()) {
    *recording_ << command.name;
    for (const auto& [name, value] : reply.inputs) {
      *recording_ << ' ' << quoted(name + '=' + value.text);
    }
    *recording_ << ' ' << kArrow << ' ' << outcome(reply) << std::endl;
  } else if (command.changes_card) {
    *recording_ << quoted_all(words) << std::endl;
  }
  if (!*recording_) {
    recording_trouble_ =
        std::string("the recording ends here, for it cannot be written: ") + std::strerror(errno);
    record("");
  }
}

void Shell::replay(const std::string& path, Reply& reply) {
  std::uint64_t calls = 0;
  std::uint64_t differences = 0;
  const auto replay_line = [&](const std::string& line, const Place& place) {
    const auto tell = [&](const std::string& difference) {
      ++differences;
      reply.say(joined_pieces(path, ":", std::to_string(place.line), ": ", difference));
    };
    try {
      for (auto words : split_commands(line)) {
        // The recorded answer stands behind the arrow.
        const auto arrow = std::find(words.begin(), words.end(), kArrow);
        std::string recorded;
        if (arrow != words.end()) recorded = quoted_all({arrow + 1, words.end()});
        words.erase(arrow, words.end());
        if (words.empty()) throw Error("there is no command");
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
    run_card(place);
  };
  with_file(path, [&](std::istream& file) {
    Lines lines(file, path);
    std::string line;
    while (!done() && !interrupted() && lines.next(line)) {
      replay_line(line, {path, lines.number()});
    }
  });
  reply.say(std::to_string(calls) + " commands, " + std::to_string(differences) + " differences");
  reply.data.emplace_back("commands", number_value(calls));
  reply.data.emplace_back("differences", number_value(differences));
  if (differences != 0) reply.failure = std::to_string(differences) + " differences";
  if (interrupted()) reply.failure = "interrupted";
}

}  // namespace shell
