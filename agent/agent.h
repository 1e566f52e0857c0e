// SPDX-License-Identifier: Apache-2.0
//
// Linux as the control plane of a line card: a network interface for each front-panel port, and
// whatever Linux's bridges and routing tables say carried out by the card. A client of the library
// and of the event loop.
//
//   Linux: bridges, routes, daemons         tap ---- frames that the card traps, frames sent ---+
//     |                                                                                         |
//   netlink.h -> linux_state.h -> planner.h -> card_model.h -> card_writer.h -> vorn_...() -> card
//     ^                                                                                         |
//     +---------------------- learned addresses, carriers --------------------------------------+
#ifndef AGENT_AGENT_H_
#define AGENT_AGENT_H_

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "card_writer.h"
#include "libxorp/eventloop.hh"
#include "netlink.h"
#include "planner.h"
#include "tap.h"
#include "vornlcapi/types.h"

namespace agent {

class Agent {
 public:
  // `loop` outlives the agent; `report` takes what the user should know, a line each.
  Agent(EventLoop& loop, std::function<void(const std::string&)> report);
  // The taps go, and with them all that Linux had attached to them.
  ~Agent();
  Agent(const Agent&) = delete;
  Agent& operator=(const Agent&) = delete;

  // Makes a tap for each port, `prefix`0 and so on, with these addresses, and has the card do what
  // Linux says. The library is initialised. False, and the reason in `error`, when that fails; the
  // agent is of no use then. One agent at a time: link changes come without user data.
  bool start(const std::string& prefix, const std::vector<Mac>& macs, std::string& error);

  // Carries out what has changed. Comes after each pass of the event loop, and when the card has
  // delivered its events.
  void settle();

 private:
  static void packet_received(RxPacket* packet, void* self);
  static void link_changed(LinkStatus* status, Usp* port);
  static void mac_updated(L2Addr* entry, int what, void* self);

  void netlink_ready(XorpFd fd, IoEventType type);
  void tap_ready(XorpFd fd, IoEventType type, unsigned port);
  void send(unsigned port, const std::uint8_t* bytes, std::size_t count);
  // The front-panel port with this address; false for anything else.
  bool number_of(const Usp& port, unsigned& number) const;
  void set_carrier(unsigned port, bool on);
  void remove_tap(unsigned port);

  void replan();
  // Lets the card have most of the time while the tables keep changing.
  bool may_plan();
  void plan_is_due() {}
  // Tells bridges where the card has learned an address, or that it has not any more.
  void tell_bridge(const CardModel::Address& address);
  void tell_bridges();
  void forget_stations();
  void keep_gateways(const std::set<LinuxState::NeighbourKey>& gateways);
  void say_once(const std::string& subject, const std::string& text);
  void try_netlink(bool done, const std::string& what, const std::string& error);

  EventLoop& loop_;
  std::function<void(const std::string&)> report_;
  CardWriter writer_;
  Planner planner_;
  std::unique_ptr<Netlink> netlink_;
  std::map<unsigned, std::unique_ptr<Tap>> taps_;  // by port
  PortLinks ports_;
  LearnedStations learned_;
  std::set<CardModel::Address> updated_;  // learned, moved or forgotten
  std::map<unsigned, int> bridges_;       // of the last plan, by VLAN
  std::set<LinuxState::NeighbourKey> managed_;
  std::map<std::string, std::string> said_;  // by subject
  bool replan_ = true;
  std::chrono::steady_clock::time_point next_plan_{};
  XorpTimer plan_timer_;
  bool overrun_ = false;
};

}  // namespace agent

#endif  // AGENT_AGENT_H_
