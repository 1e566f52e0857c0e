// SPDX-License-Identifier: Apache-2.0
//
// A port plugged into a network interface of this machine: what the interface receives enters the
// port, and what the port sends leaves through the interface. Needs CAP_NET_RAW.
#ifndef SOFTCARD_CABLES_LINUX_CABLE_H_
#define SOFTCARD_CABLES_LINUX_CABLE_H_

#include <cstdint>
#include <memory>
#include <string>

#include "libxorp/eventloop.hh"
#include "softcard/cables/cable.h"
#include "softcard/cables/descriptor.h"

namespace softcard {

// The interface becomes promiscuous while the cable is plugged. Its own stack should have no
// address there: it would see the same frames.
//
// Frames keep the work that the interface's checksum and segmentation offloads left open, so that
// up to 64 kilobytes travel as one frame. A VLAN tag that the kernel keeps beside a frame is put
// back into it. What leaves through the interface does not come back in.
class LinuxCable final : public Cable {
 public:
  // Null, and `error` names the interface, when there is none of that name or the system refuses.
  // `loop` outlives the cable.
  static std::unique_ptr<LinuxCable> open(EventLoop& loop, const std::string& interface,
                                          std::string& error);
  ~LinuxCable() override;

  void plug(CableSink& sink, PortIndex port) override;
  // Refuses frames longer than the interface's MTU and what it has no room for.
  std::size_t transmit(FramePtr* frames, std::size_t count) override;
  // The interface's own carrier, while it is up. An interface that has been deleted never gets
  // one again.
  bool carrier() const override { return carrier_; }
  bool takes_offloads() const override { return true; }
  std::string describe() const override;

 private:
  LinuxCable(EventLoop& loop, const std::string& interface) : loop_(loop), name_(interface) {}

  bool open_socket(std::string& error);
  bool open_ring(std::string& error);
  bool open_monitor(std::string& error);
  bool ask_carrier() const;
  void frames_waiting(XorpFd fd, IoEventType type);
  void link_changed(XorpFd fd, IoEventType type);
  std::uint8_t* slot(std::size_t index) const;
  FramePtr take(const std::uint8_t* slot);

  EventLoop& loop_;
  std::string name_;
  int index_ = 0;       // the kernel's number of the interface
  Descriptor socket_;   // frames
  Descriptor monitor_;  // the kernel's news about interfaces
  std::uint8_t* ring_ = nullptr;
  std::size_t next_slot_ = 0;
  bool carrier_ = false;
  std::uint64_t no_frame_ = 0;  // received and lost for want of a frame in the pool
  CableSink* sink_ = nullptr;
  PortIndex port_ = kNoPort;
};

}  // namespace softcard

#endif  // SOFTCARD_CABLES_LINUX_CABLE_H_
