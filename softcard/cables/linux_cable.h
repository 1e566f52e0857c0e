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
#include "libxorp/timer.hh"
#include "softcard/cables/cable.h"
#include "softcard/cables/descriptor.h"

struct ifreq;

namespace softcard {

// The interface becomes promiscuous while the cable is plugged. Its own stack should have no
// address there: it would see the same frames. One cable at a time leads to an interface.
//
// The interface is down while the port is off, so that its link partner sees that; it is up again
// when the port is on again or the cable goes. Where the process may not do that (CAP_NET_ADMIN)
// the interface stays up, the link partner sees a carrier, and describe() says so. An interface
// that somebody else took down stays down.
//
// Frames keep the work that the interface's checksum and segmentation offloads left open, so that
// up to 64 kilobytes travel as one frame. A VLAN tag that the kernel keeps beside a frame is put
// back into it. What leaves through the interface does not come back in.
class LinuxCable final : public Cable {
 public:
  // Null, and `error` names the interface, when there is none of that name, when a cable leads
  // there already, or when the system refuses. `loop` outlives the cable.
  static std::unique_ptr<LinuxCable> open(EventLoop& loop, const std::string& interface,
                                          std::string& error);
  ~LinuxCable() override;

  void plug(CableSink& sink, PortIndex port) override;
  // Refuses frames longer than the interface's MTU and what it has no room for.
  std::size_t transmit(FramePtr* frames, std::size_t count) override;
  // The interface's own carrier, while it is up. An interface that has been deleted gets one again
  // when another one comes under the name that was given.
  bool carrier() const override { return carrier_; }
  bool takes_offloads() const override { return true; }
  void advertisement_changed() override;
  std::string describe() const override;
  const std::string& interface() const { return name_; }

 private:
  LinuxCable(EventLoop& loop, const std::string& interface) : loop_(loop), name_(interface) {}

  bool open_monitor(std::string& error);
  bool open_interface(std::string& error);
  bool claim(std::string& error);
  bool open_socket(std::string& error);
  bool open_ring(std::string& error);
  void close_interface();
  bool interface_is_gone() const;
  bool ask_flags(ifreq& request) const;
  bool ask_carrier() const;
  // Takes the interface down, or lets it be as it was.
  void hold_down(bool down);
  void watch_frames();
  void link_changed(XorpFd fd, IoEventType type);
  void look_after_interface();
  void frames_waiting(XorpFd fd, IoEventType type);
  std::uint8_t* slot(std::size_t index) const;
  FramePtr take(const std::uint8_t* slot);
  FramePtr take_long(std::size_t bytes);
  void count_losses();

  EventLoop& loop_;
  std::string name_;
  Descriptor monitor_;  // the kernel's news about interfaces
  int index_ = 0;       // the kernel's number of the interface; 0: there is none
  Descriptor claim_;    // keeps other cables off the interface
  Descriptor socket_;   // frames
  std::uint8_t* ring_ = nullptr;
  std::size_t next_slot_ = 0;
  XorpTimer retry_;
  std::string failure_;     // why there is no socket, or why the interface stays up
  bool held_down_ = false;  // by this cable
  bool carrier_ = false;
  std::uint64_t lost_ = 0;    // received frames, in all
  std::uint64_t untold_ = 0;  // of them, not told to the card yet
  CableSink* sink_ = nullptr;
  PortIndex port_ = kNoPort;
};

}  // namespace softcard

#endif  // SOFTCARD_CABLES_LINUX_CABLE_H_
