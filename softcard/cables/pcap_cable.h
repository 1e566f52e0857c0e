// SPDX-License-Identifier: Apache-2.0
//
// A port plugged into capture files: frames come in from one, and those that the port sends go
// into another.
#ifndef SOFTCARD_CABLES_PCAP_CABLE_H_
#define SOFTCARD_CABLES_PCAP_CABLE_H_

#include <cstdint>
#include <memory>
#include <string>

#include "softcard/base/clock.h"
#include "softcard/cables/cable.h"
#include "softcard/cables/pcap_file.h"

namespace softcard {

class PcapCable final : public Cable {
 public:
  // Opens both files; an empty name stands for none. Records leave as fast as the card polls,
  // whatever their times. Records that are written carry the card's time: counted from 1970 on a
  // clock that stands still until it is moved, else the time of day. The clock outlives the cable.
  //
  // Null, and `error` says which file and which record, when a file cannot be opened, when the
  // input is no sound capture (PcapReader), or when both are the same file.
  static std::unique_ptr<PcapCable> open(const std::string& input, const std::string& output,
                                         Clock& clock, std::string& error);
  ~PcapCable() override;

  void plug(CableSink& sink, PortIndex port) override;
  std::size_t transmit(FramePtr* frames, std::size_t count) override;
  // False once one of the files has failed.
  bool carrier() const override { return failure().empty(); }
  // Also hands what was written to the file system.
  std::size_t poll(std::size_t budget) override;
  std::string describe() const override;

  // The error of a file; empty when there was none.
  std::string failure() const;

 private:
  PcapCable(std::unique_ptr<PcapReader> input, std::unique_ptr<PcapWriter> output, Clock& clock);

  std::unique_ptr<PcapReader> input_;   // null for none
  std::unique_ptr<PcapWriter> output_;  // null for none
  const Clock& clock_;
  std::uint64_t clock_start_ns_;  // the clock's 0 since 1970
  PcapRecord next_;
  bool has_next_ = false;
  bool failure_told_ = false;
  CableSink* sink_ = nullptr;
  PortIndex port_ = kNoPort;
};

}  // namespace softcard

#endif  // SOFTCARD_CABLES_PCAP_CABLE_H_
