// SPDX-License-Identifier: Apache-2.0

#include "vornlcapi/test/switch.h"

#include <sstream>

#include "softcard/base/refusal.h"
#include "softcard/base/text.h"
#include "softcard/cables/memory_cable.h"
#include "softcard/frames/frame_text.h"
#include "softcard/pipeline/trace.h"

namespace vorn::test {

namespace {

using softcard::AddressPlan;
using softcard::MemoryCable;
using softcard::PortIndex;

void throw_failure(const char* file, int line, const std::string& message) {
  throw Failure(std::string(file) + ":" + std::to_string(line) + ": " + message);
}

Reporter the_reporter = &throw_failure;
Switch* the_switch = nullptr;

PortIndex index_of(const softcard::Card& card, const Usp& port) {
  PortIndex index = 0;
  if (!card.addresses().port_of(port, index)) {
    throw Failure(AddressPlan::text(port) + " is no physical port of the card");
  }
  return index;
}

softcard::CardDescription read(const std::string& text) {
  std::istringstream in(text);
  softcard::CardDescription description;
  std::string error;
  if (!softcard::read_card_description(in, "description", description, error)) throw Failure(error);
  return description;
}

// The memory that a port is plugged into; null where a test plugged it into something else.
MemoryCable* memory_of(softcard::Card& card, PortIndex port) {
  return dynamic_cast<MemoryCable*>(card.cable(port));
}

void keep_packet(RxPacket* packet, void* packets) {
  static_cast<std::deque<CpuPacket>*>(packets)->push_back(
      {packet->reason,
       packet->port,
       packet->vlan,
       packet->priority,
       {packet->data, packet->data + packet->length}});
}

// Whether a frame shows what a pattern asks for; the empty pattern takes any.
Outcome shows(const Bytes& frame, const std::string& pattern, const std::string& where) {
  if (pattern.empty()) return {true, ""};
  std::string error;
  if (softcard::frame_matches(pattern, frame.data(), frame.size(), error)) return {true, ""};
  if (!error.empty()) return {false, "pattern '" + pattern + "': " + error};
  return {false, where + "\n  sent    " + text_of(frame) + "\n  wanted  " + pattern};
}

}  // namespace

// ---- Results of expectations --------------------------------------------------------------------

Reporter set_reporter(Reporter reporter) { return std::exchange(the_reporter, reporter); }

void report(const char* file, int line, const Outcome& outcome) {
  if (!outcome.held) the_reporter(file, line, outcome.message);
}

Outcome ok(bool result, const char* call) {
  if (result) return {true, ""};
  return {false, std::string(call) + " was refused: " + softcard::last_refusal()};
}

Outcome refused(bool result, const char* call, const std::string& reason) {
  if (result) return {false, std::string(call) + " was not refused"};
  const std::string& given = softcard::last_refusal();
  if (given.find(reason) != std::string::npos) return {true, ""};
  return {false, std::string(call) + " was refused: " + given + "\n  wanted: " + reason};
}

// ---- Stations and frames ------------------------------------------------------------------------

Bytes frame_of(const std::string& text) {
  Bytes frame;
  std::string error;
  if (!softcard::parse_frame(text, frame, error)) throw Failure("'" + text + "': " + error);
  return frame;
}

std::string text_of(const Bytes& frame) {
  return softcard::print_frame(frame.data(), frame.size());
}

// ---- The switch ---------------------------------------------------------------------------------

Switch::Switch(const std::string& description) : Switch(read(description)) {}

Switch::Switch(const softcard::CardDescription& description)
    : clock_(std::make_shared<softcard::VirtualClock>()) {
  if (the_switch != nullptr) throw Failure("there is a switch already, and a process has one");
  softcard::host::use_description(description);
  softcard::host::use_clock(clock_);
  int ports = 0;
  if (!vorn_lcmgr_api_init(ports)) throw Failure(softcard::host::error());
  the_switch = this;
}

Switch::~Switch() {
  the_switch = nullptr;
  softcard::host::call_watch().clear_failures();
  // The program under test may have ended the card itself.
  if (softcard::host::card() != nullptr) vorn_lcmgr_api_terminate();
}

Switch& Switch::current() {
  if (the_switch == nullptr) throw Failure("there is no switch");
  return *the_switch;
}

softcard::Card& Switch::card() const {
  softcard::Card* const card = softcard::host::card();
  if (card == nullptr) throw Failure("the card was ended");
  return *card;
}

Station Switch::station(unsigned port_number) {
  const softcard::MacAddress mac =
      softcard::MacAddress::from_number(0x00005e005301 + std::uint64_t{port_number});
  return {port(port_number), softcard::mac_text(mac),
          softcard::ipv4_text(0xc0000201 + softcard::Ipv4{port_number})};
}

void Switch::inject(const Usp& at, const Bytes& frame) {
  MemoryCable* const cable = memory_of(card(), index_of(card(), at));
  if (cable == nullptr) throw Failure(AddressPlan::text(at) + " is not plugged into memory");
  softcard::Trace trace;
  card().pipeline().set_trace(&trace);
  const bool sent = cable->send(frame);
  card().pipeline().set_trace(nullptr);
  why_ = trace.to_string();
  if (!sent) throw Failure(std::to_string(frame.size()) + " bytes are no frame");
  run();
}

bool Switch::take(const Usp& at, Bytes& frame) const {
  MemoryCable* const cable = memory_of(card(), index_of(card(), at));
  return cable != nullptr && cable->take(frame);
}

void Switch::listen_to_cpu() {
  if (!vorn_register_rx_packet_callback(&keep_packet, &packets_)) {
    throw Failure("packets for the CPU: " + softcard::last_refusal());
  }
}

bool Switch::take_cpu(CpuPacket& packet) {
  if (packets_.empty()) return false;
  packet = std::move(packets_.front());
  packets_.pop_front();
  return true;
}

void Switch::cut(const Usp& at) {
  card().cut_carrier(index_of(card(), at), true);
  run();
}

void Switch::restore(const Usp& at) {
  card().cut_carrier(index_of(card(), at), false);
  run();
}

void Switch::patch(const Usp& at, const Usp& other) {
  const PortIndex port = index_of(card(), at);
  const PortIndex other_port = index_of(card(), other);
  if (port == other_port) throw Failure("a port cannot be patched to itself");
  auto [end, other_end] = softcard::PatchCable::make();
  card().plug(port, std::move(end));
  card().plug(other_port, std::move(other_end));
  run();
}

void Switch::run() { softcard::host::run(); }

void Switch::warp(std::chrono::nanoseconds time) {
  if (!softcard::host::warp_ns(static_cast<std::uint64_t>(time.count()))) {
    throw Failure(softcard::last_refusal());
  }
}

std::chrono::nanoseconds Switch::now() const {
  return std::chrono::nanoseconds(static_cast<std::int64_t>(clock_->now_ns()));
}

void Switch::fail(const std::string& operation, unsigned nth) {
  if (!softcard::host::call_watch().fail(operation, nth)) {
    throw Failure("'" + operation + "' is no operation of the SDK");
  }
}

// ---- Expectations -------------------------------------------------------------------------------

Outcome Switch::frame(const Usp& at, const std::string& pattern) {
  Bytes sent;
  if (take(at, sent)) return shows(sent, pattern, AddressPlan::text(at));
  return {false, AddressPlan::text(at) + " sent nothing; wanted " + pattern +
                     "\nThe last frame's way:\n" + why_};
}

Outcome Switch::cpu(unsigned reason, const std::string& pattern) {
  CpuPacket packet;
  if (!take_cpu(packet)) {
    return {false, "the CPU got nothing; wanted " + pattern + "\nThe last frame's way:\n" + why_};
  }
  if (packet.reason != reason) {
    return {false, std::string("the CPU got, for ") + softcard::rx_reason_text(packet.reason) +
                       ", " + text_of(packet.frame) + "\n  wanted, for " +
                       softcard::rx_reason_text(reason) + ", " + pattern};
  }
  return shows(packet.frame, pattern, "the CPU");
}

Outcome Switch::nothing() {
  std::string left;
  CpuPacket packet;
  while (take_cpu(packet)) {
    left += std::string("\n  CPU, for ") + softcard::rx_reason_text(packet.reason) + ": " +
            text_of(packet.frame);
  }
  if (softcard::host::card() != nullptr) {
    Bytes sent;
    for (PortIndex index = 0; index < card().addresses().port_count(); ++index) {
      const Usp at = AddressPlan::usp_of(index);
      while (take(at, sent)) left += "\n  " + AddressPlan::text(at) + ": " + text_of(sent);
    }
  }
  return {left.empty(), left.empty() ? "" : "nobody expected:" + left};
}

}  // namespace vorn::test
