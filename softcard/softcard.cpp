// SPDX-License-Identifier: Apache-2.0

#include "softcard/softcard.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "softcard/base/refusal.h"
#include "softcard/cables/memory_cable.h"
#include "softcard/frames/frame_text.h"
#include "softcard/host.h"
#include "softcard/pipeline/trace.h"

namespace {

using softcard::Card;
using softcard::MemoryCable;
using softcard::PortIndex;
using softcard::refuse;

// Frames that go round in a loop of cables would keep the card busy for ever.
constexpr unsigned kMostRounds = 1000;

// Callbacks of one kind, in the order of their registration.
template <class Callback>
class Listeners {
 public:
  bool add(Callback callback, void* user_data) {
    if (callback == nullptr) return refuse("the callback is null");
    if (find(callback, user_data) != listeners_.end()) return refuse("it is registered already");
    listeners_.push_back({callback, user_data});
    return true;
  }
  bool remove(Callback callback, void* user_data) {
    const auto found = find(callback, user_data);
    if (found == listeners_.end()) return refuse("no such callback is registered");
    listeners_.erase(found);
    return true;
  }
  // Calls those that were registered when it began and still are.
  template <class... Arguments>
  void call(const Arguments&... arguments) const {
    const std::vector<Listener> present = listeners_;
    for (const Listener& listener : present) {
      if (find(listener.callback, listener.user_data) == listeners_.end()) continue;
      listener.callback(arguments..., listener.user_data);
    }
  }
  bool empty() const { return listeners_.empty(); }
  void clear() { listeners_.clear(); }

 private:
  struct Listener {
    Callback callback;
    void* user_data;
  };
  typename std::vector<Listener>::const_iterator find(Callback callback, void* user_data) const {
    return std::find_if(listeners_.begin(), listeners_.end(), [&](const Listener& listener) {
      return listener.callback == callback && listener.user_data == user_data;
    });
  }

  std::vector<Listener> listeners_;
};

// The state of this interface that belongs to the card; it ends with the card.
struct State {
  std::uint64_t card_number = 0;
  softcard::Trace trace;
  std::string trace_text;
  Listeners<softcard_frame_callback> on_frame;
  Listeners<softcard_link_callback> on_link;
  Listeners<softcard_cpu_callback> on_cpu;
};

State& state() {
  static auto* const kState = new State;
  State& own = *kState;
  if (own.card_number != softcard::host::card_number()) {
    own = State();
    own.card_number = softcard::host::card_number();
  }
  return own;
}

Card* the_card() {
  Card* const card = softcard::host::card();
  if (card == nullptr) refuse("there is no card: vorn_lcmgr_api_init() makes it");
  return card;
}

// The card, with the index of one of its ports; null for any other port.
Card* card_with(usp_s usp, PortIndex& port) {
  Card* const card = the_card();
  if (card == nullptr) return nullptr;
  const Usp named(usp.unit, usp.slot, usp.port);
  if (card->addresses().port_of(named, port)) return card;
  card->addresses().refuse(named);
  return nullptr;
}

// The memory that a port is plugged into; null where it is plugged into anything else.
MemoryCable* memory_of(usp_s usp) {
  PortIndex port = 0;
  Card* const card = card_with(usp, port);
  if (card == nullptr) return nullptr;
  auto* const cable = dynamic_cast<MemoryCable*>(card->cable(port));
  if (cable == nullptr) {
    refuse(softcard::AddressPlan::usp_of(port), " is not plugged into memory");
  }
  return cable;
}

// Hands the frames that came out of ports to whoever registered for them. Returns how many.
std::size_t hand_out_frames() {
  std::size_t handed = 0;
  std::vector<std::uint8_t> frame;
  const std::uint64_t number = softcard::host::card_number();
  for (PortIndex port = 0;; ++port) {
    // A callback may end the card, or plug a port into something else.
    Card* const card = softcard::host::card();
    if (card == nullptr || softcard::host::card_number() != number ||
        port >= card->addresses().port_count() || state().on_frame.empty()) {
      return handed;
    }
    auto* const cable = dynamic_cast<MemoryCable*>(card->cable(port));
    if (cable == nullptr || !cable->take(frame)) continue;
    const Usp usp = softcard::AddressPlan::usp_of(port);
    state().on_frame.call(usp_s{usp.unit(), usp.slot(), usp.port()}, frame.data(), frame.size());
    ++handed;
    --port;  // until it has no more; 0 wraps round and comes back to 0
  }
}

void report_link(ctype_link_status_s* status, usp_s* port) { state().on_link.call(*port, status); }

void report_cpu_packet(ctype_rx_packet_s* packet, void*) { state().on_cpu.call(packet); }

int inject(usp_s usp, const std::uint8_t* frame, std::size_t bytes) {
  MemoryCable* const cable = memory_of(usp);
  if (cable == nullptr) return 0;
  State& own = state();
  own.trace.clear();
  Card& card = *softcard::host::card();
  card.pipeline().set_trace(&own.trace);
  const bool sent = cable->send(frame, bytes);
  card.pipeline().set_trace(nullptr);
  own.trace_text = own.trace.to_string();
  if (sent) return 1;
  return refuse(bytes, " bytes are none, or more than a frame can hold");
}

}  // namespace

// ---- Before vorn_lcmgr_api_init() ---------------------------------------------------------------

int softcard_use_description(const char* text) {
  std::istringstream in(text);
  softcard::CardDescription description;
  std::string error;
  if (!softcard::read_card_description(in, "description", description, error)) return refuse(error);
  softcard::host::use_description(description);
  return 1;
}

int softcard_use_description_file(const char* path) {
  softcard::CardDescription description;
  std::string error;
  if (!softcard::load_card_description(path, description, error)) return refuse(error);
  softcard::host::use_description(description);
  return 1;
}

int softcard_use_virtual_time(void) {
  softcard::host::use_clock(std::make_shared<softcard::VirtualClock>());
  return 1;
}

int softcard_use_real_time(void) {
  softcard::host::use_clock(std::make_shared<softcard::RealClock>());
  return 1;
}

// ---- The card -----------------------------------------------------------------------------------

unsigned int softcard_port_count(void) {
  const Card* const card = the_card();
  return card == nullptr ? 0 : card->addresses().port_count();
}

const char* softcard_last_refusal(void) { return softcard::last_refusal().c_str(); }

uint64_t softcard_refusals(void) { return softcard::refusals(); }

// ---- Time ---------------------------------------------------------------------------------------

size_t softcard_run(void) {
  if (the_card() == nullptr) return 0;
  std::size_t done = softcard::host::run();
  // A callback may have caused more frames to come out.
  for (unsigned round = 0; round < kMostRounds; ++round) {
    const std::size_t frames = hand_out_frames();
    if (frames == 0) break;
    done += frames + softcard::host::run();
  }
  return done;
}

int softcard_warp(uint64_t ns) {
  if (the_card() == nullptr) return 0;
  if (!softcard::host::warp_ns(ns)) return 0;
  softcard_run();
  return 1;
}

uint64_t softcard_now(void) {
  const Card* const card = the_card();
  return card == nullptr ? 0 : card->clock().now_ns();
}

// ---- Frames -------------------------------------------------------------------------------------

int softcard_inject(usp_s port, const void* frame, size_t bytes) {
  return inject(port, static_cast<const std::uint8_t*>(frame), bytes);
}

int softcard_inject_text(usp_s port, const char* frame) {
  std::vector<std::uint8_t> bytes;
  std::string error;
  if (!softcard::parse_frame(frame, bytes, error)) return refuse("frame: ", error);
  return inject(port, bytes.data(), bytes.size());
}

size_t softcard_take(usp_s port, void* frame, size_t room) {
  MemoryCable* const cable = memory_of(port);
  if (cable == nullptr || cable->waiting() == 0) return 0;
  const std::size_t bytes = cable->first().size();
  if (bytes > room) {
    refuse("the frame has ", bytes, " bytes, and there is room for ", room);
    return bytes;
  }
  std::memcpy(frame, cable->first().data(), bytes);
  std::vector<std::uint8_t> taken;
  cable->take(taken);
  return bytes;
}

size_t softcard_waiting(usp_s port) {
  const MemoryCable* const cable = memory_of(port);
  return cable == nullptr ? 0 : cable->waiting();
}

int softcard_frame_matches(const void* frame, size_t bytes, const char* pattern) {
  std::string error;
  if (softcard::frame_matches(pattern, static_cast<const std::uint8_t*>(frame), bytes, error)) {
    return 1;
  }
  return error.empty()
             ? refuse("the frame is another: ",
                      softcard::print_frame(static_cast<const std::uint8_t*>(frame), bytes))
             : refuse("pattern: ", error);
}

size_t softcard_frame_text(const void* frame, size_t bytes, char* text, size_t room) {
  const std::string line = softcard::print_frame(static_cast<const std::uint8_t*>(frame), bytes);
  if (room != 0) {
    const std::size_t copied = std::min(line.size(), room - 1);
    std::memcpy(text, line.data(), copied);
    text[copied] = '\0';
  }
  return line.size();
}

// ---- Links --------------------------------------------------------------------------------------

int softcard_cut(usp_s usp) {
  PortIndex port = 0;
  Card* const card = card_with(usp, port);
  if (card == nullptr) return 0;
  card->cut_carrier(port, true);
  return 1;
}

int softcard_restore(usp_s usp) {
  PortIndex port = 0;
  Card* const card = card_with(usp, port);
  if (card == nullptr) return 0;
  card->cut_carrier(port, false);
  return 1;
}

int softcard_patch(usp_s usp, usp_s other_usp) {
  PortIndex port = 0;
  PortIndex other = 0;
  Card* const card = card_with(usp, port);
  if (card == nullptr || card_with(other_usp, other) == nullptr) return 0;
  if (port == other) return refuse("a port cannot be patched to itself");
  auto [end, other_end] = softcard::PatchCable::make();
  card->plug(port, std::move(end));
  card->plug(other, std::move(other_end));
  return 1;
}

int softcard_unpatch(usp_s usp) {
  PortIndex port = 0;
  Card* const card = card_with(usp, port);
  if (card == nullptr) return 0;
  card->plug(port, std::make_unique<MemoryCable>());
  return 1;
}

// ---- Why a frame went where it went -------------------------------------------------------------

const char* softcard_last_trace(void) { return state().trace_text.c_str(); }

int softcard_drops(usp_s usp, const char* reason, uint64_t* frames) {
  PortIndex port = 0;
  Card* const card = card_with(usp, port);
  if (card == nullptr) return 0;
  for (unsigned n = 0; n < softcard::kDropReasons; ++n) {
    if (std::strcmp(softcard_drop_reason(n), reason) != 0) continue;
    *frames = card->tables().drops.count(port, static_cast<softcard::DropReason>(n));
    return 1;
  }
  return refuse("'", reason, "' is no reason for dropping frames");
}

const char* softcard_drop_reason(unsigned int n) {
  return n < softcard::kDropReasons ? name(static_cast<softcard::DropReason>(n)) : nullptr;
}

// ---- Failures on purpose ------------------------------------------------------------------------

int softcard_fail(const char* operation, unsigned int nth) {
  return softcard::host::call_watch().fail(operation, nth);
}

void softcard_fail_none(void) { softcard::host::call_watch().clear_failures(); }

// ---- Callbacks with user data -------------------------------------------------------------------

int softcard_on_frame(softcard_frame_callback callback, void* user_data) {
  return the_card() != nullptr && state().on_frame.add(callback, user_data);
}

int softcard_on_link_change(softcard_link_callback callback, void* user_data) {
  Card* const card = the_card();
  if (card == nullptr || !state().on_link.add(callback, user_data)) return 0;
  // False when it is registered already, for another callback.
  card->events().add(&report_link);
  return 1;
}

int softcard_on_cpu_packet(softcard_cpu_callback callback, void* user_data) {
  Card* const card = the_card();
  if (card == nullptr || !state().on_cpu.add(callback, user_data)) return 0;
  card->events().add(&report_cpu_packet, nullptr);
  return 1;
}

int softcard_remove_frame_callback(softcard_frame_callback callback, void* user_data) {
  return the_card() != nullptr && state().on_frame.remove(callback, user_data);
}

int softcard_remove_link_callback(softcard_link_callback callback, void* user_data) {
  Card* const card = the_card();
  if (card == nullptr || !state().on_link.remove(callback, user_data)) return 0;
  if (state().on_link.empty()) {
    card->events().remove(LCMGR_REPORT_LINK_CHANGE, reinterpret_cast<void*>(&report_link), nullptr);
  }
  return 1;
}

int softcard_remove_cpu_callback(softcard_cpu_callback callback, void* user_data) {
  Card* const card = the_card();
  if (card == nullptr || !state().on_cpu.remove(callback, user_data)) return 0;
  // Without a listener the card makes no copies for the CPU.
  if (state().on_cpu.empty()) {
    card->events().remove(LCMGR_REPORT_RX_PACKET, reinterpret_cast<void*>(&report_cpu_packet),
                          nullptr);
  }
  return 1;
}
