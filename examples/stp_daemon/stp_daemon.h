// SPDX-License-Identifier: Apache-2.0
//
// A spanning-tree daemon: IEEE 802.1D with configuration BPDUs, without topology-change
// notification. It is a client of the library and of XORP's event loop and of nothing else, so it
// runs on a switch as on the software line card; stp_daemon_test.cpp tests it in virtual time.
#ifndef STP_DAEMON_H_
#define STP_DAEMON_H_

#include <array>
#include <cstdint>
#include <deque>
#include <tuple>
#include <vector>

#include "libxorp/eventloop.hh"
#include "vornlcapi/api.h"

namespace stp {

using Mac = std::array<std::uint8_t, 6>;

// Priority in the upper 16 bits, then the bridge's address.
using BridgeId = std::uint64_t;
constexpr BridgeId bridge_id(std::uint16_t priority, const Mac& mac) {
  BridgeId id = priority;
  for (const std::uint8_t byte : mac) id = id << 8 | byte;
  return id;
}

// What a configuration BPDU says; the lesser one is the better one.
struct Vector {
  BridgeId root;
  std::uint32_t cost;  // of the way to the root
  BridgeId bridge;     // who sends it
  std::uint16_t port;  // and through which port of his

  friend bool operator<(const Vector& a, const Vector& b) {
    return std::tie(a.root, a.cost, a.bridge, a.port) < std::tie(b.root, b.cost, b.bridge, b.port);
  }
  friend bool operator==(const Vector& a, const Vector& b) { return !(a < b) && !(b < a); }
};

enum class Role { disabled, root, designated, alternate };

struct Settings {
  Mac mac;
  std::uint16_t priority = 32768;
  int hello_ms = 2000;
  int max_age_ms = 20000;
  int forward_delay_ms = 15000;
};

class Daemon {
 public:
  // Runs spanning tree on these physical ports from start() to the end of its life. One daemon at a
  // time: a link-change callback has no user data.
  Daemon(EventLoop& loop, const Settings& settings, const std::vector<Usp>& ports);
  ~Daemon();
  Daemon(const Daemon&) = delete;
  Daemon& operator=(const Daemon&) = delete;

  // Blocks the ports and begins. False when the library refuses.
  bool start();

  bool is_root() const { return root_port_ == nullptr; }
  BridgeId root() const { return best_.root; }
  std::uint32_t root_cost() const { return best_.cost; }
  // Role and state of the n-th port.
  Role role(std::size_t n) const { return ports_[n].role; }
  stp_state_t state(std::size_t n) const { return ports_[n].state; }

 private:
  struct Port {
    Usp usp{0, 0, 0};
    std::uint16_t id = 0;
    std::uint32_t path_cost = 4;
    bool up = false;
    bool heard = false;  // `received` holds
    Vector received{};
    int message_age_ms = 0;
    Role role = Role::disabled;
    stp_state_t wanted = STP_STATE_BLOCKING;
    stp_state_t state = STP_STATE_BLOCKING;
    XorpTimer age;      // until what was received is too old
    XorpTimer forward;  // until the next state
  };

  static void packet_arrived(RxPacket* packet, void* daemon);
  static void link_changed(LinkStatus* status, Usp* usp);

  Port* find(const Usp& usp);
  void set_link(Port& port, const LinkStatus& status);
  void receive(Port& port, const std::uint8_t* frame, std::size_t bytes);
  void forget(Port* port);
  void decide();
  void become(Port& port, Role role);
  void go_to(Port& port, stp_state_t state);
  void next_state(Port* port);
  void send(Port& port);
  bool hello();

  EventLoop& loop_;
  Settings settings_;
  BridgeId own_;
  std::deque<Port> ports_;
  Port* root_port_ = nullptr;
  Vector best_;  // what this bridge sends, but for the port
  XorpTimer hello_;
  bool started_ = false;
};

}  // namespace stp

#endif  // STP_DAEMON_H_
