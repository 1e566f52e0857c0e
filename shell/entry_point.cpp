// SPDX-License-Identifier: Apache-2.0
#include "entry_point.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>

namespace shell {

namespace {

// The largest answer that a C caller could be given: every port there can be.
constexpr std::size_t kArrayRoom = 65536;

// A buffer that is passed and not used.
std::array<unsigned long long, std::size_t{2} * STAT_TYPE_COUNT> unused_buffer{};

// The shell's callbacks by name, for withdrawing them.
struct NamedCallback {
  const char* name;
  void* function;
};
const std::array<NamedCallback, 6>& callbacks() {
  static const std::array<NamedCallback, 6> all = {{
      {"rx_packet", reinterpret_cast<void*>(&EventPrinter<RxPacket*, void*>::print)},
      {"rx_packet_c", reinterpret_cast<void*>(&EventPrinter<ctype_rx_packet_s*, void*>::print)},
      {"link_change", reinterpret_cast<void*>(&EventPrinter<LinkStatus*, Usp*>::print)},
      {"link_change_c",
       reinterpret_cast<void*>(&EventPrinter<ctype_link_status_s*, usp_s*>::print)},
      {"mac_update", reinterpret_cast<void*>(&EventPrinter<L2Addr*, int, void*>::print)},
      {"mac_update_c", reinterpret_cast<void*>(&EventPrinter<ctype_l2_addr_s*, int, void*>::print)},
  }};
  return all;
}

int keep_entry(const ctype_l2_addr_s* entry, void* entries) {
  static_cast<std::vector<ctype_l2_addr_s>*>(entries)->push_back(*entry);
  return 1;
}

Value entry_value(const ctype_l2_addr_s& entry) {
  const bool of_cpu = (entry.flags & L2_ADDR_SYSTEM) != 0;
  const Value port =
      of_cpu ? text_value("cpu") : port_value({entry.port.unit, entry.port.slot, entry.port.port});
  const std::string kind = of_cpu ? "system" : entry.flags != 0 ? "static" : "learned";
  const Value vlan = number_value(std::uint64_t{entry.vlan});
  const Value mac = text_value(mac_text(entry.mac));
  return {mac.text + " vlan " + vlan.text + " port " + port.text + ' ' + kind,
          json_object({{"mac", mac}, {"vlan", vlan}, {"port", port}, {"kind", text_value(kind)}})};
}

}  // namespace

// ---- Rows ---------------------------------------------------------------------------------------

std::string usage_of(const std::vector<Word>& words) {
  std::vector<std::string> names;
  names.reserve(words.size());
  for (const Word& word : words) names.push_back(word.name);
  return joined(names, " ");
}

std::vector<Word> words_of(const std::vector<Bound>& parameters) {
  std::vector<Word> words;
  for (const Bound& bound : parameters) {
    if (bound.role != Role::kIn) continue;
    Word word;
    word.name = bound.parameter.name;
    std::transform(word.name.begin(), word.name.end(), word.name.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    if (bound.parameter.optional) word.name = '[' + word.name + ']';
    if (bound.parameter.kind == "flag") word.choices = {"on", "off"};
    const NameTable* const names =
        bound.parameter.kind == "mode" ? &forward_mode_names() : bound.parameter.names;
    if (names != nullptr) {
      for (const auto& entry : names->entries) word.choices.emplace_back(entry.name);
    }
    words.push_back(word);
  }
  return words;
}

// ---- Slots --------------------------------------------------------------------------------------

void BytesSlot::read(const Bound& bound, Call& call) {
  if (bound.role != Role::kIn) return;
  bytes_ = Codec<Bytes>::read(bound.parameter, call);
  call.reply.inputs.emplace_back(bound.parameter.name, Codec<Bytes>::show(bound.parameter, bytes_));
}

void BytesSlot::report(const Bound& bound, Call& call) const {
  if (bound.role != Role::kOut) return;
  call.reply.outputs.emplace_back(bound.parameter.name,
                                  Codec<Bytes>::show(bound.parameter, bytes_));
}

Bound Slot<usp_s*>::bind(Binder& binder) {
  const bool array = binder.array_next();
  Bound bound = binder.take(Binder::Direction::kEither, array);
  if (array) binder.expect_count();
  return bound;
}

void Slot<usp_s*>::read(const Bound& bound, Call& call) {
  if (bound.role == Role::kOut) {
    ports_.resize(bound.parameter.array ? kArrayRoom : 1);
  } else {
    const std::list<Usp> ports = bound.parameter.array
                                     ? Codec<std::list<Usp>>::read(bound.parameter, call)
                                     : std::list<Usp>{Codec<Usp>::read(bound.parameter, call)};
    for (const Usp& port : ports) ports_.push_back({port.unit(), port.slot(), port.port()});
    call.reply.inputs.emplace_back(bound.parameter.name,
                                   Codec<std::list<Usp>>::show(bound.parameter, ports));
  }
  call.array_size = ports_.size();
}

void Slot<usp_s*>::report(const Bound& bound, Call& call) {
  if (bound.role != Role::kOut) return;
  const auto report = [this, &bound, &call](std::size_t count) {
    std::vector<Value> items;
    for (std::size_t i = 0; i < count && i < ports_.size(); ++i) {
      items.push_back(port_value({ports_[i].unit, ports_[i].slot, ports_[i].port}));
    }
    call.reply.outputs.emplace_back(bound.parameter.name,
                                    bound.parameter.array ? list_value(items) : items.front());
  };
  if (bound.parameter.array) {
    call.report_array = report;
  } else {
    report(1);
  }
}

void Slot<ctype_packet_s*>::read(const Bound& bound, Call& call) {
  const Packet packet = Codec<Packet>::read(bound.parameter, call);
  call.reply.inputs.emplace_back(bound.parameter.name,
                                 Codec<Packet>::show(bound.parameter, packet));
  bytes_ = packet.data();
  record_ = {packet.length(), packet.type(), bytes_.data()};
}

Bound Slot<void*>::bind(Binder& binder) {
  const bool array = binder.array_next();
  Bound bound = binder.take(Binder::Direction::kEither, array);
  if (array) {
    binder.expect_count();
    bound.role = Role::kHidden;
  }
  return bound;
}

void Slot<void*>::read(const Bound& bound, Call& call) {
  const Parameter& parameter = bound.parameter;
  if (bound.role == Role::kHidden) {
    pointer_ = unused_buffer.data();
    call.array_size = STAT_TYPE_COUNT;
    call.report_array = [](std::size_t) {};
    return;
  }
  if (bound.role == Role::kOut) {
    walk_ = {&keep_entry, &entries_};
    pointer_ = &walk_;
    return;
  }
  if (parameter.optional && call.arguments.empty()) return;
  const std::string text = call.arguments.take(parameter.name);
  if (parameter.kind == "callback") {
    for (const NamedCallback& callback : callbacks()) {
      if (text == callback.name) pointer_ = callback.function;
    }
    if (pointer_ == nullptr) {
      std::vector<std::string> names;
      for (const NamedCallback& callback : callbacks()) names.emplace_back(callback.name);
      throw Error(parameter.name + ": '" + text + "' is none of " + joined(names, ", "));
    }
  } else {
    // User data is the caller's number, and no object is reached through it.
    pointer_ = reinterpret_cast<void*>(  // NOLINT(performance-no-int-to-ptr)
        static_cast<std::uintptr_t>(parse_number(text, parameter.name, 0, UINT32_MAX)));
  }
  call.reply.inputs.emplace_back(parameter.name, text_value(text));
}

void Slot<void*>::report(const Bound& bound, Call& call) {
  if (bound.role != Role::kOut) return;
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    call.reply.outputs.emplace_back(bound.parameter.name + '[' + std::to_string(i) + ']',
                                    entry_value(entries_[i]));
  }
}

}  // namespace shell
