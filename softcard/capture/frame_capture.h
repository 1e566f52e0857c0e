// SPDX-License-Identifier: Apache-2.0
//
// An observer that writes what it sees as pcapng, beside whatever the ports are plugged into: an
// interface for each port and one for the CPU, and each frame with the direction that it went, the
// verdict, and a number that is the same wherever one frame was seen.
#ifndef SOFTCARD_CAPTURE_FRAME_CAPTURE_H_
#define SOFTCARD_CAPTURE_FRAME_CAPTURE_H_

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "softcard/base/clock.h"
#include "softcard/base/port_set.h"
#include "softcard/capture/capture_output.h"
#include "softcard/pipeline/observer.h"
#include "softcard/tables/tables.h"

namespace softcard {

class FrameCapture final : public FrameObserver {
 public:
  // Opens `path` as CaptureOutput does and writes what stands in front of the frames. Looks on at
  // `ports` and, with `cpu`, at what goes to and comes from the CPU. The card's time counts from
  // 1970 on a clock that stands still until it is moved, else it is the time of day. Neither the
  // tables nor the clock is kept. Null, and `error` says why, when it cannot be written.
  static std::shared_ptr<FrameCapture> open(const std::string& path, const Tables& tables,
                                            Clock& clock, const PortSet& ports, bool cpu,
                                            std::string& error);

  void saw(const Sighting& sighting) override;
  void burst_over() override { output_->flush(); }

  // Hands on what a slow reader left, and sees whether he is gone: for the owner, from time to
  // time.
  void poll() { output_->flush(); }
  // Writes what is left and the statistics; nothing can be captured afterwards. False when a reader
  // did not take all of it, and when over().
  bool finish();

  // Nothing can be written any more: the reader is gone, or error() says why.
  bool over() const { return output_->over(); }
  const std::string& error() const { return output_->error(); }
  const std::string& path() const { return output_->path(); }
  // Whether somebody reads while it grows.
  bool live() const { return output_->live(); }
  // Frames that were handed on, and that were lost because the reader is slow.
  std::uint64_t frames() const { return frames_; }
  std::uint64_t lost() const { return lost_; }

 private:
  struct Interface {
    std::uint64_t seen = 0;
    std::uint64_t lost = 0;
    std::uint64_t lost_since = 0;  // its last frame that was written
  };
  static constexpr std::uint32_t kNotCaptured = UINT32_MAX;

  FrameCapture(std::unique_ptr<CaptureOutput> output, std::uint64_t clock_start_ns)
      : output_(std::move(output)), clock_start_ns_(clock_start_ns) {}

  std::uint32_t interface_of(PortIndex port) const {
    return port == kNoPort ? cpu_ : by_port_[port];
  }
  void write(const Sighting& sighting, PortIndex place, bool outbound, const SeenFrame& frame,
             std::vector<std::string> comments);

  std::unique_ptr<CaptureOutput> output_;
  std::uint64_t clock_start_ns_;        // the clock's 0 since 1970
  std::vector<std::uint32_t> by_port_;  // the interface of each port
  std::uint32_t cpu_ = kNotCaptured;    // that of the CPU
  std::vector<Interface> interfaces_;
  std::uint64_t last_time_ns_ = 0;
  std::uint64_t frames_ = 0;
  std::uint64_t lost_ = 0;
  bool finished_ = false;
};

}  // namespace softcard

#endif  // SOFTCARD_CAPTURE_FRAME_CAPTURE_H_
