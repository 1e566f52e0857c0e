// SPDX-License-Identifier: Apache-2.0
//
// Serves the process's card to clients in other processes. Works on whatever host the process has,
// by the functions of platform/ alone.
//
// All work is done from the event loop, and nothing of it waits. In one round each client that has
// sent a request gets one answer, so that none has more of the card than another. What a client
// does not take stays in its own buffers, which are bounded.
#ifndef SERVICE_SERVER_H_
#define SERVICE_SERVER_H_

#include <sys/types.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "libxorp/eventloop.hh"
#include "libxorp/task.hh"
#include "libxorp/timer.hh"
#include "remote/descriptor.h"
#include "remote/event_buffer.h"
#include "vornlcapi/types.h"

namespace vorn::service {

class Session;

struct Options {
  int init_value = 0;      // what vorn_init_line_card() wrote
  std::vector<Usp> ports;  // the card's physical ports
  std::size_t most_clients = 64;
  int patience_ms = 10000;         // that a message may take on its way in or out
  remote::EventBuffer::Room room;  // of the events that wait for one client

  // Why the host refused something last, and how often it has refused something.
  std::function<std::string()> last_refusal = [] { return std::string(); };
  std::function<std::uint64_t()> refusals = [] { return std::uint64_t{0}; };
  // Runs a command and hands over what it answers in pieces. False: refused, and why.
  std::function<bool(const std::vector<std::string>& words, bool read_only,
                     const std::function<void(std::string_view)>& part, std::string& why)>
      command = [](const auto&, bool, const auto&, std::string& why) {
        why = "there are no commands here";
        return false;
      };
  // One line about what happened.
  std::function<void(const std::string&)> log = [](const std::string&) {};
};

// A socket that clients come to.
struct Socket {
  std::string path;
  bool read_only = false;  // whether what changes the card is refused there
  bool has_group = false;  // whether the members of a group may connect, too
  gid_t group = 0;
};

class Server {
 public:
  // The loop outlives the server. A process has one server.
  Server(EventLoop& loop, Options options);
  ~Server();
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  // Waits for clients at a socket. False, and why, when somebody serves it already, or it cannot be
  // made. One that nobody serves any more is taken over.
  bool listen(const Socket& socket, std::string& error);
  // Serves a client that is connected already.
  void adopt(remote::Descriptor socket, bool read_only);

  // To be told when something else than a client has changed the LAG list or the mapping of LAGs.
  void lags_changed();
  // To be told when the card has ended: the clients are let go.
  void card_ended();

  std::size_t clients() const { return sessions_.size(); }

  // One round: takes what clients have sent, answers one request of each. True when requests are
  // left.
  bool round();

 private:
  friend class Session;

  struct Listener {
    Socket socket;
    remote::Descriptor descriptor;
    dev_t device;
    ino_t file;
  };

  const Options& options() const { return options_; }
  void ready(XorpFd fd, IoEventType type);
  bool again();
  void accept_from(Listener& listener);
  bool may_connect(int fd, const Listener& listener, std::string& who) const;
  void add(remote::Descriptor socket, bool read_only);
  void drop_ended();
  void watch_patience();
  void look_at_patience();
  void resume_accepting();
  void set_interest(int fd, void* whose, std::uint32_t events, bool is_new);

  // Whether somebody listens for a kind: the server registers at the card while one does. False
  // when the card refuses.
  bool listen_for(lcmgr_report_event_t kind, bool on);
  void tell(const remote::Event& event);
  static void take_packet(RxPacket* packet, void* server);
  static void take_link(LinkStatus* status, Usp* port);
  static void take_mac(L2Addr* entry, int what, void* server);

  EventLoop& loop_;
  Options options_;
  std::list<Listener> listeners_;
  std::list<std::unique_ptr<Session>> sessions_;
  remote::Descriptor epoll_;
  remote::Descriptor page_memory_;
  void* page_ = nullptr;  // its first word counts the changes of LAGs
  std::uint32_t generation_ = 0;
  std::array<unsigned, remote::kEventKinds> listeners_for_{};
  bool events_waiting_ = false;
  bool turning_away_ = false;  // since the last client was taken
  XorpTask again_;
  XorpTimer patience_;
  XorpTimer accepting_;
};

}  // namespace vorn::service

#endif  // SERVICE_SERVER_H_
