// SPDX-License-Identifier: Apache-2.0
//
// From what Linux knows to what the card is to do. Start, events and repairs all come here: the
// plan follows from the state alone, but for the numbers of the VLANs, which stay with their
// bridges.
//
// Every port that is in no bridge is in a VLAN of its own, and so is every bridge. What the card
// does not know it hands to Linux, which knows everything; so what is left out of a plan is slower
// and not lost. Longest prefix match would take a packet past what is left out, to a shorter
// prefix: the planner cuts such a route into the pieces around the gap.
#ifndef AGENT_PLANNER_H_
#define AGENT_PLANNER_H_

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "card_model.h"
#include "linux_state.h"

namespace agent {

// The taps of the front-panel ports: the kernel's index by the port's number.
using PortLinks = std::map<unsigned, int>;

// Where the card has learned an address: the port, by VLAN and address.
using LearnedStations = std::map<CardModel::Address, unsigned>;

struct Plan {
  CardModel card;
  // Bridge ports that must be isolated, so that Linux does not forward what the card has forwarded.
  std::vector<int> to_isolate;
  // Next hops of routes through the card: Linux should find them and keep them.
  std::set<LinuxState::NeighbourKey> gateways;
  // The bridge of each bridge VLAN.
  std::map<unsigned, int> bridges;
  std::size_t several_next_hops = 0;  // routes of which the card takes the first next hop only
  std::size_t left_to_linux = 0;      // routes with too many gaps to be cut into pieces
};

class Planner {
 public:
  // The VLAN of a port that is in no bridge.
  static unsigned port_vlan(unsigned port) { return kHighestVlan - port; }

  Plan plan(const LinuxState& linux_state, const PortLinks& ports, const LearnedStations& learned);

 private:
  static constexpr unsigned kHighestVlan = 4094;
  static constexpr unsigned kFirstBridgeVlan = 2;  // VLAN 1 has the ports of a fresh card

  std::map<int, unsigned> bridge_vlans_;
};

}  // namespace agent

#endif  // AGENT_PLANNER_H_
