// SPDX-License-Identifier: Apache-2.0
//
// The card's routes out of Linux's: longest prefix match over the result sends a packet where Linux
// would, and finds nothing where Linux is to decide.
#ifndef AGENT_ROUTE_PLAN_H_
#define AGENT_ROUTE_PLAN_H_

#include <cstddef>
#include <optional>
#include <vector>

#include "card_model.h"

namespace agent {

struct PlannedRoute {
  Prefix prefix;
  std::optional<Hop> hop;  // none: its packets are for Linux
  int on_link = 0;         // the interface whose link the destinations are on
};

// A route with more gaps than this is left to Linux as a whole: each gap takes up to as many
// entries of the card as its prefix is longer.
constexpr std::size_t kMostGaps = 512;

// Appends the routes of `routes`, which are sorted by prefix and have no prefix twice. A route
// around one whose packets are for Linux is cut into pieces. Returns how many were left to Linux
// because they had too many gaps.
std::size_t cover(const std::vector<PlannedRoute>& routes, CardModel::Routes& result);

// The interface whose link an address is on by the longest prefix; 0 when the way there is another.
int link_of(const std::vector<PlannedRoute>& routes, const Ip& ip);

}  // namespace agent

#endif  // AGENT_ROUTE_PLAN_H_
