// SPDX-License-Identifier: Apache-2.0
#include "far_card.h"

#include <algorithm>

namespace shell {

namespace {

using vorn::remote::Bytes;
using vorn::remote::Reader;
using vorn::remote::Writer;

// Results of entry points do not come this way, only texts and values.
void put(Writer& out, const NamedValues& values) {
  out.u32(static_cast<std::uint32_t>(values.size()));
  for (const auto& [name, value] : values) {
    out.text(name);
    out.text(value.text);
    out.text(value.json);
  }
}

void get(Reader& in, NamedValues& values) {
  constexpr std::size_t kLeastBytes = 12;
  for (std::size_t left = in.count(kLeastBytes); left != 0; --left) {
    const std::string name(in.text());
    const std::string text(in.text());
    values.emplace_back(name, Value{text, std::string(in.text())});
  }
}

}  // namespace

Bytes bytes_of(const Reply& reply) {
  Bytes bytes;
  Writer out(bytes);
  out.u8(!reply.result.has_value() ? 2 : *reply.result ? 1 : 0);
  for (const std::string* text : {&reply.reason, &reply.failure, &reply.note}) out.text(*text);
  put(out, reply.inputs);
  put(out, reply.outputs);
  put(out, reply.data);
  out.u32(static_cast<std::uint32_t>(reply.lines.size()));
  for (const std::string& line : reply.lines) out.text(line);
  return bytes;
}

Reply reply_of(const Bytes& bytes) {
  Reader in(bytes.data(), bytes.size());
  Reply reply;
  const unsigned result = in.u8();
  if (result < 2) reply.result = result == 1;
  for (std::string* text : {&reply.reason, &reply.failure, &reply.note}) *text = in.text();
  get(in, reply.inputs);
  get(in, reply.outputs);
  get(in, reply.data);
  constexpr std::size_t kLeastBytes = 4;
  for (std::size_t left = in.count(kLeastBytes); left != 0; --left) {
    reply.lines.emplace_back(in.text());
  }
  if (!in.done()) throw Error("what the card's process answered is no reply");
  return reply;
}

// What is expected of frames is looked up where they come out; what is expected of calls and events
// is known here.
bool FarCard::carries_out(const Command& command, const Arguments& arguments) {
  if (command.group != "card" || command.name == "wait") return false;
  if (command.name != "expect" || arguments.empty()) return true;
  const std::string& first = arguments.peek();
  const bool is_port = first.find('/') != std::string::npos && first.find('=') == std::string::npos;
  return is_port || first == "cpu" || first == "none";
}

Reply FarCard::run(const std::vector<std::string>& words) {
  Bytes bytes;
  const bool done = client_.command(words, [&bytes](std::string_view part) {
    bytes.insert(bytes.end(), part.begin(), part.end());
  });
  if (!done) throw Error(client_.last_refusal());
  return reply_of(bytes);
}

void FarCard::settle() {
  // A command without a name does no more than that.
  if (client_.connected()) client_.command({""}, [](std::string_view) {});
  client_.dispatch();
}

}  // namespace shell
