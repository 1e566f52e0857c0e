// SPDX-License-Identifier: Apache-2.0
//
// A cable to a port of another card, in this process or in another one, over a Unix socket of type
// SOCK_SEQPACKET: one message a frame. A message of a single byte is no frame: 0 says that the
// sender's port has no carrier to give, 1 that it has. An end that says nothing has one.
#ifndef SOFTCARD_CABLES_UNIX_CABLE_H_
#define SOFTCARD_CABLES_UNIX_CABLE_H_

#include <sys/socket.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "libxorp/eventloop.hh"
#include "libxorp/timer.hh"
#include "softcard/cables/cable.h"
#include "softcard/cables/descriptor.h"

namespace softcard {

// The two ends give the same path. Whoever comes first waits there, and the second one finds it;
// the path is gone again as soon as the two have met, so a third end waits for a fourth. The
// carrier is on while both ends are there and the other one's port is on. When one end goes, the
// other waits anew. While it cannot, because somebody holds a lock on the folder or the process is
// out of descriptors, it tries again ten times a second.
class UnixCable final : public Cable {
 public:
  // Null, and `error` names the path, when there is something else than a socket at `path`, when it
  // is too long for a socket's name, or when the system refuses. `loop` outlives the cable.
  static std::unique_ptr<UnixCable> open(EventLoop& loop, const std::string& path,
                                         std::string& error);
  ~UnixCable() override;

  void plug(CableSink& sink, PortIndex port) override;
  // Refuses frames while there is no carrier or the other end does not keep up.
  std::size_t transmit(FramePtr* frames, std::size_t count) override;
  bool carrier() const override { return peer_ && peer_carrier_; }
  void advertisement_changed() override;
  std::string describe() const override;
  const std::string& path() const { return path_; }

 private:
  static constexpr std::size_t kBatch = 16;  // messages in one system call

  UnixCable(EventLoop& loop, const std::string& path) : loop_(loop), path_(path) {}

  bool meet(std::string& error);
  bool wait_for_peer(std::string& error);
  void stop_waiting();
  void try_again_later();
  void try_again();
  void peer_came(XorpFd fd, IoEventType type);
  void peer_sent(XorpFd fd, IoEventType type);
  void set_peer(Descriptor peer);
  void drop_peer();
  // A message as a frame.
  FramePtr whole(const mmsghdr& message, FramePtr& first);
  void peer_has_room(XorpFd fd, IoEventType type);
  void set_peer_carrier(bool carrier);

  EventLoop& loop_;
  std::string path_;
  Descriptor listener_;  // while waiting
  Descriptor peer_;      // while connected
  std::string failure_;  // why it neither waits nor is connected, or lets nobody in
  XorpTimer retry_;
  bool told_carrier_ = true;  // what the other end takes this one's port for
  bool peer_carrier_ = true;
  FramePtr arriving_[kBatch];
  std::vector<std::uint8_t> overflow_;  // behind each of them, for what is longer than usual
  CableSink* sink_ = nullptr;
  PortIndex port_ = kNoPort;
};

}  // namespace softcard

#endif  // SOFTCARD_CABLES_UNIX_CABLE_H_
