// SPDX-License-Identifier: Apache-2.0
//
// One client of the server: its connection, what it has sent, what it has yet to be sent.
#ifndef SERVICE_SESSION_H_
#define SERVICE_SESSION_H_

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

#include "remote/descriptor.h"
#include "remote/event_buffer.h"
#include "remote/protocol.h"
#include "remote/wire.h"

namespace vorn::service {

class Server;

class Session {
 public:
  using Clock = std::chrono::steady_clock;

  Session(Server& server, remote::Descriptor socket, bool read_only);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  int descriptor() const { return socket_.get(); }
  bool ended() const { return ended_; }
  // Ends the connection; whoever owns the session lets it go when he can.
  void end(const std::string& why);

  // Takes what has come. To be called when there is something, or the other end has gone.
  void receive();
  // Whether a whole request waits, and not too many bytes of answers to others.
  bool has_request() const;
  // Answers it.
  void serve();
  // Sends what waits, as much as goes.
  void send();
  // Whether the socket is to be watched for room.
  bool wants_to_send() const { return sent_ < output_.size(); }
  // Whether it is to be watched for bytes: not while a request waits, nor while answers do.
  bool wants_to_receive() const;

  bool listens_for(lcmgr_report_event_t kind) const { return listens_[kind]; }
  void tell(const remote::Event& event);

  // Whether a message is on its way, in or out, that should have arrived by now.
  bool is_late(Clock::time_point now, std::chrono::milliseconds patience) const;
  bool may_be_late() const { return waits_; }

  std::uint32_t interest = 0;  // what the server watches the socket for

 private:
  bool is_behind() const;
  // Says whether the client is waited for, from when on.
  void note_wait();
  void greet(remote::Reader& in);
  // Answers a request; false when it is malformed.
  bool answer(remote::Kind kind, remote::Reader& in);
  bool answer(remote::Kind kind, remote::Reader& in, remote::Writer& out);
  bool call(remote::Reader& in, remote::Writer& out);
  bool describe_port(remote::Reader& in, remote::Writer& out);
  bool change_lags(remote::Reader& in, remote::Writer& out);
  bool listen(remote::Reader& in, remote::Writer& out);
  bool walk(remote::Reader& in);
  bool command(remote::Reader& in);
  // Ends an answer in parts.
  void end_answer(const remote::Bytes& outcome);
  // False when the connection has ended.
  bool send_bytes();
  // Puts events behind what is to be sent, while that is little.
  void take_events();

  // Carries something out and writes how it ended: status and reason.
  template <class Call>
  void run(remote::Writer& out, const Call& call);
  // Refuses without having asked the card.
  void refuse(remote::Writer& out, const std::string& why);
  bool may_change(remote::Writer& out);

  Server& server_;
  remote::Descriptor socket_;
  const bool read_only_;
  bool greeted_ = false;
  bool ended_ = false;

  remote::Bytes input_;  // of which [read_, filled_) has not been looked at
  std::size_t read_ = 0;
  std::size_t filled_ = 0;
  remote::Bytes output_;  // of which sent_ bytes have gone
  std::size_t sent_ = 0;
  std::size_t answers_end_ = 0;  // where the last answer in it ends

  std::array<bool, remote::kEventKinds> listens_{};
  remote::EventBuffer events_;
  std::array<std::uint64_t, remote::kEventKinds> lost_told_{};

  bool waits_ = true;
  Clock::time_point waits_since_ = Clock::now();
};

}  // namespace vorn::service

#endif  // SERVICE_SESSION_H_
