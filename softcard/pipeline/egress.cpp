// SPDX-License-Identifier: Apache-2.0

#include "softcard/pipeline/egress.h"

#include <algorithm>
#include <utility>

#include "softcard/frames/offload.h"
#include "softcard/frames/parser.h"
#include "softcard/frames/wire.h"

namespace softcard {

Egress::Egress(Tables& tables, FramePool& pool, PortCables& cables, const TraceWriter& note,
               Witness& witness)
    : tables_(tables),
      pool_(pool),
      cables_(cables),
      note_(note),
      witness_(witness),
      staged_(tables.ports.count()),
      paused_until_ns_(tables.ports.count()) {}

// ---- Frames -------------------------------------------------------------------------------------

// Does what the cable leaves to the card.
void Egress::complete(FramePtr frame, PortIndex egress, unsigned queue) {
  if (frame->offload.segmentation == Segmentation::none) {
    complete_checksum(*frame);
    count_and_stage(std::move(frame), egress, queue);
    return;
  }
  std::size_t taken = 0;
  while (frame != nullptr) {
    FramePtr piece = next_segment(frame, pool_, taken);
    if (piece == nullptr) {
      drop(egress, DropReason::no_buffer);
    } else {
      count_and_stage(std::move(piece), egress, queue);
    }
  }
}

void Egress::flush(PortIndex egress) {
  Staged& staged = staged_[egress];
  const std::size_t sent = cables_.transmit(egress, staged.frames.data(), staged.count);
  if (sent != staged.count) {
    const DropReason reason =
        cables_.plugged(egress) ? DropReason::cable_refused : DropReason::unplugged;
    note_("out", Destination::port(egress), ": ", reason);
    witness_.refused(egress, staged.count - sent, reason);
    count_errors(egress, reason, staged.count - sent);
  }
  staged.count = 0;
  staged_ports_.erase(egress);
}

void Egress::flush() {
  for (const PortIndex egress : staged_ports_) flush(egress);
}

void Egress::discard() {
  for (const PortIndex egress : staged_ports_) {
    Staged& staged = staged_[egress];
    count_errors(egress, DropReason::no_buffer, staged.count);
    for (std::size_t i = 0; i < staged.count; ++i) staged.frames[i].reset();
    staged.count = 0;
  }
  staged_ports_ = PortSet();
}

// ---- Backpressure -------------------------------------------------------------------------------

void Egress::backpressure(PortIndex port, std::uint64_t now_ns) {
  const PortTable& ports = tables_.ports;
  if (ports.jams(port)) tables_.counters.add(port, STAT_OUT_JAMS);
  if (!ports.sends_pause(port) || now_ns < paused_until_ns_[port]) return;
  constexpr std::size_t kPauseBytes = 60;
  constexpr std::uint16_t kLongest = 0xFFFF;  // in units of 512 bit times
  FramePtr frame = pool_.make(kPauseBytes);
  if (frame == nullptr) return;
  std::uint8_t* at = frame->data();
  std::fill_n(at, kPauseBytes, std::uint8_t{0});
  store48(at, kPauseGroup);
  store48(at + 6, ports.mac(port).to_number());
  store16(at + 12, kTypePause);
  store16(at + 14, 0x0001);
  store16(at + 16, kLongest);
  const std::uint64_t mbps = std::max<std::uint64_t>(ports.mode(port).speed, 1);
  paused_until_ns_[port] = now_ns + std::uint64_t{kLongest} * 512 * 1000 / mbps;
  tables_.counters.add(port, STAT_OUT_PAUSE_FRAMES);
  note_("port", Destination::port(port), " sends a pause frame");
  witness_.sent(port, *frame, true);
  stage(std::move(frame), port);
}

// ---- Losses -------------------------------------------------------------------------------------

void Egress::drop(PortIndex egress, DropReason reason) {
  note_("out", Destination::port(egress), ": ", reason);
  witness_.dropped(reason, egress);
  tables_.drops.add(egress, reason);
  tables_.counters.add(egress, STAT_OUT_DISCARDS);
}

void Egress::count_errors(PortIndex egress, DropReason reason, std::size_t frames) {
  tables_.drops.add(egress, reason, frames);
  tables_.counters.add(egress, STAT_OUT_ERRORS, frames);
}

}  // namespace softcard
