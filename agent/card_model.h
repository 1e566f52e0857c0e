// SPDX-License-Identifier: Apache-2.0
//
// What is to be in the card: the planner makes a model from what Linux has, the card writer carries
// the differences between two models out. Ports are front-panel ports by their number.
#ifndef AGENT_CARD_MODEL_H_
#define AGENT_CARD_MODEL_H_

#include <map>
#include <set>
#include <utility>
#include <vector>

#include "net.h"
#include "vornlcapi/enums.h"

namespace agent {

struct PortModel {
  bool on = false;
  unsigned mtu_bytes = 0;  // of a frame
  unsigned vlan = 0;       // untagged: the only one that the port is in
  stp_state_t stp = STP_STATE_FORWARDING;
  bool bpdus_to_cpu = true;     // else they are flooded
  bool unknown_to_cpu = false;  // floods of unicast frames reach Linux, too
};
inline bool operator==(const PortModel& a, const PortModel& b) {
  return a.on == b.on && a.mtu_bytes == b.mtu_bytes && a.vlan == b.vlan && a.stp == b.stp &&
         a.bpdus_to_cpu == b.bpdus_to_cpu && a.unknown_to_cpu == b.unknown_to_cpu;
}

// The way to a neighbour.
struct Hop {
  unsigned port = 0;
  unsigned vlan = 0;  // whose router interface it is
  Mac mac{};
};
inline bool operator==(const Hop& a, const Hop& b) {
  return a.port == b.port && a.vlan == b.vlan && a.mac == b.mac;
}

struct CardModel {
  using Address = std::pair<unsigned, Mac>;            // in a VLAN
  using Routes = std::vector<std::pair<Prefix, Hop>>;  // sorted by prefix, none there twice

  int ageing_seconds = 300;
  std::map<unsigned, PortModel> ports;
  std::map<unsigned, unsigned> vlans;    // each with a number: when it grows, learned addresses go
  std::set<Address> own_addresses;       // whose frames Linux gets
  std::map<Address, unsigned> stations;  // static addresses, by port
  std::map<unsigned, Mac> routers;       // router interfaces by VLAN, which is their id, too
  std::map<Ip, Hop> hosts;
  Routes routes;
};

}  // namespace agent

#endif  // AGENT_CARD_MODEL_H_
