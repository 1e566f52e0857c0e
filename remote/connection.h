// SPDX-License-Identifier: Apache-2.0
//
// A client's connection to the process that has the card: one request at a time, and the events
// that come in between.
#ifndef REMOTE_CONNECTION_H_
#define REMOTE_CONNECTION_H_

#include <cstddef>
#include <functional>
#include <string>

#include "remote/descriptor.h"
#include "remote/protocol.h"
#include "remote/wire.h"

namespace vorn::remote {

class Connection {
 public:
  // `take_event` gets the whole message of each event, its header included; `lost` hears once that
  // the connection has ended, and why.
  Connection(std::function<void(Kind, const std::uint8_t*, std::size_t)> take_event,
             std::function<void(const std::string&)> lost)
      : take_event_(std::move(take_event)), lost_(std::move(lost)) {}

  // Connects to a socket by its path. Whoever listens there has so long for each answer.
  bool open(const std::string& path, int timeout_ms, std::string& error);
  // Takes a socket that is connected.
  void adopt(Descriptor socket, const std::string& name, int timeout_ms);
  void close();
  bool is_open() const { return static_cast<bool>(socket_); }
  int descriptor() const { return socket_.get(); }

  // Whether the other end is there still. Ends the connection when it is not.
  bool alive();

  // Begins a request; what is written next belongs to it.
  Writer begin(Kind kind);
  // Whether the request is short enough to be sent.
  bool fits() const { return request_.size() - 4 <= kMostMessageBytes; }
  // Sends the request and waits for the answer, which is valid until the next call of anything
  // here. Kind is that of the answer: kPart when more of it follows, for more(). False when the
  // connection has ended.
  bool exchange(Kind& kind, Reader& answer);
  bool more(Kind& kind, Reader& answer);
  // Takes the events that have come, without waiting.
  void take_events();

  // Ends the connection because of what came; false.
  bool fail(const std::string& why);

  // The descriptor that came beside an answer.
  Descriptor take_descriptor() { return std::move(received_); }

 private:
  bool send_request();
  // Waits for bytes, or takes those that are there. False without any: nothing there, or the end.
  bool receive(bool wait);
  // Finds the next message; false when it is not there whole.
  bool next(Kind& kind, const std::uint8_t*& message, std::size_t& bytes);
  bool next_is_event() const;

  std::function<void(Kind, const std::uint8_t*, std::size_t)> take_event_;
  std::function<void(const std::string&)> lost_;
  std::string name_;
  int timeout_ms_ = 0;
  Descriptor socket_;
  Descriptor received_;
  Bytes request_;
  Bytes input_;  // of which [read_, filled_) has not been looked at
  std::size_t read_ = 0;
  std::size_t filled_ = 0;
};

}  // namespace vorn::remote

#endif  // REMOTE_CONNECTION_H_
