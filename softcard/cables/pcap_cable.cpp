// SPDX-License-Identifier: Apache-2.0

#include "softcard/cables/pcap_cable.h"

#include <sys/stat.h>

#include <algorithm>
#include <utility>

namespace softcard {

namespace {

bool same_file(const std::string& a, const std::string& b) {
  struct stat first {};
  struct stat second {};
  return stat(a.c_str(), &first) == 0 && stat(b.c_str(), &second) == 0 &&
         first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

}  // namespace

std::unique_ptr<PcapCable> PcapCable::open(const std::string& input, const std::string& output,
                                           Clock& clock, std::string& error) {
  std::unique_ptr<PcapReader> reader;
  std::unique_ptr<PcapWriter> writer;
  if (!input.empty() && (reader = PcapReader::open(input, error)) == nullptr) return nullptr;
  if (reader != nullptr && !output.empty() && same_file(input, output)) {
    error = output + ": is the input, too";
    return nullptr;
  }
  if (!output.empty() && (writer = PcapWriter::open(output, error)) == nullptr) return nullptr;
  return std::unique_ptr<PcapCable>(new PcapCable(std::move(reader), std::move(writer), clock));
}

PcapCable::PcapCable(std::unique_ptr<PcapReader> input, std::unique_ptr<PcapWriter> output,
                     Clock& clock)
    : input_(std::move(input)),
      output_(std::move(output)),
      clock_(clock),
      clock_start_ns_(ns_since_1970(clock)) {}

PcapCable::~PcapCable() {
  // Losses of the closing itself cannot be asked for any more; earlier ones can.
  if (output_ != nullptr && output_->error().empty() && !output_->flush()) {
    std::fprintf(stderr, "%s\n", output_->error().c_str());
  }
}

void PcapCable::plug(CableSink& sink, PortIndex port) {
  sink_ = &sink;
  port_ = port;
}

std::size_t PcapCable::transmit(FramePtr* frames, std::size_t count) {
  const std::uint64_t time_ns = clock_start_ns_ + clock_.now_ns();
  std::size_t written = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const FramePtr frame = std::move(frames[i]);
    // Without an output the frames leave for nowhere.
    if (output_ == nullptr || output_->write(time_ns, frame->data(), frame->size())) ++written;
  }
  return written;
}

std::size_t PcapCable::poll(std::size_t budget) {
  constexpr std::size_t kBurst = 32;
  std::size_t handed = 0;
  while (input_ != nullptr && handed < budget) {
    FramePtr burst[kBurst];
    std::size_t count = 0;
    for (; count < std::min(kBurst, budget - handed); ++count) {
      if (!has_next_) has_next_ = input_->next(next_);
      if (!has_next_) break;
      burst[count] = sink_->frame_pool().make(next_.frame.data(), next_.frame.size());
      if (burst[count] == nullptr) break;  // the record waits for the next round
      has_next_ = false;
    }
    if (count == 0) break;
    sink_->frames_arrived(port_, burst, count);
    handed += count;
  }
  if (output_ != nullptr) output_->flush();
  // A file may have failed here or in transmit(), which must not call the card.
  if (!carrier() && !std::exchange(failure_told_, true)) sink_->carrier_changed(port_);
  return handed;
}

std::string PcapCable::failure() const {
  if (input_ != nullptr && !input_->error().empty()) return input_->error();
  return output_ != nullptr ? output_->error() : std::string();
}

std::string PcapCable::describe() const {
  std::string text = "pcap";
  if (input_ != nullptr) {
    const std::uint64_t handed = input_->records_read() - (has_next_ ? 1 : 0);
    text += " from " + input_->path() + " (" + std::to_string(handed) + " frames read)";
  }
  if (output_ != nullptr) text += " to " + output_->path();
  if (!carrier()) text += "; " + failure();
  return text;
}

}  // namespace softcard
