// SPDX-License-Identifier: Apache-2.0

#include "softcard/capture/frame_capture.h"

#include <utility>

#include "softcard/base/address_plan.h"
#include "softcard/capture/pcapng_writer.h"
#include "softcard/pipeline/trace.h"

namespace softcard {
namespace {

std::string port_text(PortIndex port) { return AddressPlan::text(AddressPlan::usp_of(port)); }

// What a reader of the bytes must know of what they lack.
void add_offload(const Offload& offload, std::vector<std::string>& comments) {
  if (offload.segmentation != Segmentation::none) {
    comments.push_back("to be cut into segments of " + std::to_string(offload.segment_bytes) +
                       " bytes");
  }
  if (offload.checksum_partial) comments.emplace_back("checksum left to the cable");
}

}  // namespace

std::shared_ptr<FrameCapture> FrameCapture::open(const std::string& path, const Tables& tables,
                                                 Clock& clock, const PortSet& ports, bool cpu,
                                                 std::string& error) {
  std::unique_ptr<CaptureOutput> output = CaptureOutput::open(path, error);
  if (output == nullptr) return nullptr;
  std::shared_ptr<FrameCapture> capture(new FrameCapture(std::move(output), ns_since_1970(clock)));
  capture->last_time_ns_ = capture->clock_start_ns_ + clock.now_ns();
  std::vector<std::uint8_t> head = pcapng::section_header("the software line card");
  const auto add = [&](const std::string& name, const std::string& description,
                       const std::uint8_t* mac) {
    const auto block = pcapng::interface_description(name, description, mac);
    head.insert(head.end(), block.begin(), block.end());
    capture->interfaces_.emplace_back();
    return static_cast<std::uint32_t>(capture->interfaces_.size() - 1);
  };
  capture->by_port_.assign(tables.ports.count(), kNotCaptured);
  for (const PortIndex port : ports) {
    capture->by_port_[port] =
        add(port_text(port), "port " + port_text(port), tables.ports.mac(port).bytes.data());
  }
  if (cpu) capture->cpu_ = add("cpu", "packets of the control plane", nullptr);
  capture->output_->put_last(head);
  capture->output_->flush();
  error = capture->error();
  return error.empty() ? capture : nullptr;
}

void FrameCapture::saw(const Sighting& sighting) {
  if (finished_) return;
  const bool from_cpu = sighting.ingress == kNoPort;
  const std::string from = from_cpu ? "from the CPU" : "from " + port_text(sighting.ingress);
  if (interface_of(sighting.ingress) != kNotCaptured) {
    std::vector<std::string> comments = sighting.details();
    comments.insert(comments.begin(), sighting.verdict());
    write(sighting, sighting.ingress, false, sighting.in, std::move(comments));
  }
  for (const auto& sent : sighting.sent) {
    if (interface_of(sent.port) == kNotCaptured) continue;
    write(sighting, sent.port, true, sent.frame, {sent.made_here ? "of the port's own" : from});
  }
  if (cpu_ == kNotCaptured) return;
  for (const auto& packet : sighting.to_cpu) {
    write(sighting, kNoPort, true, packet.frame, {from, rx_reason_text(packet.reason)});
  }
}

// The first comment is the verdict.
void FrameCapture::write(const Sighting& sighting, PortIndex place, bool outbound,
                         const SeenFrame& frame, std::vector<std::string> comments) {
  const std::uint32_t id = interface_of(place);
  Interface& interface = interfaces_[id];
  last_time_ns_ = clock_start_ns_ + sighting.time_ns;
  const std::string verdict = comments.front();
  add_offload(frame.offload, comments);
  ++interface.seen;
  const bool taken = output_->put(pcapng::enhanced_packet(
      {id, last_time_ns_, frame.bytes.data(), frame.bytes.size(), outbound, interface.lost_since,
       sighting.number, verdict, std::move(comments)}));
  if (taken) {
    ++frames_;
    interface.lost_since = 0;
  } else {
    ++lost_;
    ++interface.lost;
    ++interface.lost_since;
  }
}

bool FrameCapture::finish() {
  if (std::exchange(finished_, true)) return !over();
  for (std::size_t id = 0; id < interfaces_.size(); ++id) {
    output_->put_last(pcapng::interface_statistics(static_cast<std::uint32_t>(id), last_time_ns_,
                                                   interfaces_[id].seen, interfaces_[id].lost));
  }
  return output_->finish();
}

}  // namespace softcard
