// SPDX-License-Identifier: Apache-2.0
//
// Keeps a LinuxState up to date, and asks the kernel for changes, through rtnetlink in the network
// namespace of the thread that opens it.
//
// The kernel tells changes on one socket; dumps and requests go over another one, so that none
// waits for the other. Whatever the kernel has to tell is read before anything is dumped, and what
// comes during a dump is read behind it: the state converges. Where the kernel says nothing (IPv4
// routes that go with their interface, address or next hop) the routes are read anew.
#ifndef AGENT_NETLINK_H_
#define AGENT_NETLINK_H_

#include <memory>
#include <string>
#include <vector>

#include "linux_state.h"

struct nl_msg;
struct nl_sock;
struct nlmsghdr;

namespace agent {

class Netlink {
 public:
  // Null, and the reason in `error`, when the kernel refuses.
  static std::unique_ptr<Netlink> open(std::string& error);
  ~Netlink();
  Netlink(const Netlink&) = delete;
  Netlink& operator=(const Netlink&) = delete;

  // Is readable when read() has something to do.
  int descriptor() const;

  const LinuxState& state() const { return state_; }

  // Reads everything anew. False when the kernel refuses.
  bool reload(std::string& error);

  // Takes in what the kernel tells. False when it has lost some of it: then reload() is due.
  bool read();
  // Whether the state has changed since this was asked last.
  bool changed();
  // The routes may be others than the state has; reload_routes() is due.
  bool routes_stale() const { return routes_stale_; }
  bool reload_routes(std::string& error);
  // The card's addresses that somebody has removed from a bridge since this was asked last.
  std::vector<LinuxState::FdbKey> forgotten();

  // ---- Requests: false, and the reason in `error`, when the kernel refuses ----------------------

  // Has the kernel act on an interface's carrier at once, as it does when somebody looks.
  bool look_at(int interface, std::string& error);
  bool set_mac(int interface, const Mac& mac, std::string& error);
  bool isolate(int bridge_port, std::string& error);
  // Tells a bridge where the card has learned an address, and that it has forgotten it.
  bool add_station(int bridge_port, const Mac& mac, std::string& error);
  bool remove_station(int bridge_port, const Mac& mac, std::string& error);
  // Has the kernel find a neighbour and keep it.
  bool manage(const LinuxState::NeighbourKey& neighbour, std::string& error);
  // Ends that: forgets the neighbour.
  bool release(const LinuxState::NeighbourKey& neighbour, std::string& error);

 private:
  struct Message;

  Netlink() = default;
  template <class Header>
  bool dump(int type, unsigned char Header::*family_field, unsigned char family,
            std::string& error);
  // The result is libnl's: below 0 for an error.
  int send(Message& message);
  bool request(Message& message, std::string& error);
  static int take_dumped(nl_msg* message, void* self);

  void take(nlmsghdr* message);
  void take_link(nlmsghdr* message);
  void take_bridge_port(nlmsghdr* message);
  void take_address(nlmsghdr* message);
  void take_neighbour(nlmsghdr* message);
  void take_station(nlmsghdr* message);
  void take_route(nlmsghdr* message);
  void take_forwarding(nlmsghdr* message);

  nl_sock* events_ = nullptr;
  nl_sock* requests_ = nullptr;
  std::vector<char> buffer_;
  LinuxState state_;
  bool dumping_ = false;
  bool changed_ = true;
  bool routes_stale_ = false;
  std::vector<LinuxState::FdbKey> forgotten_;
};

}  // namespace agent

#endif  // AGENT_NETLINK_H_
