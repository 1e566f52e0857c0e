// SPDX-License-Identifier: Apache-2.0
#include "route_plan.h"

#include <algorithm>

namespace agent {

namespace {

class Cover {
 public:
  Cover(const std::vector<PlannedRoute>& routes, CardModel::Routes& result)
      : routes_(routes), result_(result), gaps_before_(routes.size() + 1, 0) {
    for (std::size_t i = 0; i < routes.size(); ++i) {
      gaps_before_[i + 1] = gaps_before_[i] + (routes[i].hop ? 0 : 1);
    }
  }

  std::size_t run() {
    outermost(0, routes_.size(), nullptr);
    return left_out_;
  }

 private:
  std::size_t gaps(std::size_t first, std::size_t end) const {
    return gaps_before_[end] - gaps_before_[first];
  }

  // The end of the routes from `first` on that lie within a prefix: they stand together.
  std::size_t end_of(const Prefix& prefix, std::size_t first, std::size_t end) const {
    const auto begin = routes_.begin();
    const auto at = [&](std::size_t i) { return begin + static_cast<std::ptrdiff_t>(i); };
    const auto stop = std::partition_point(
        at(first), at(end), [&](const PlannedRoute& r) { return contains(prefix, r.prefix); });
    return static_cast<std::size_t>(stop - begin);
  }

  // Covers the outermost of some routes, each with what is within it.
  void outermost(std::size_t first, std::size_t end, const Hop* around) {
    while (first != end) {
      const std::size_t stop = end_of(routes_[first].prefix, first, end);
      cover(routes_[first].prefix, around, first, stop);
      first = stop;
    }
  }

  // Covers a prefix. `hop` is the way of what is around it, null for Linux; the routes from `first`
  // to `end` lie within it.
  void cover(const Prefix& prefix, const Hop* hop, std::size_t first, std::size_t end) {
    if (first != end && routes_[first].prefix == prefix) {
      hop = routes_[first].hop ? &*routes_[first].hop : nullptr;
      ++first;
      if (hop != nullptr && gaps(first, end) > kMostGaps) {
        hop = nullptr;
        ++left_out_;
      }
    }
    if (hop == nullptr) {
      outermost(first, end, nullptr);
    } else if (gaps(first, end) == 0) {
      if (!stays_on_link(prefix)) result_.emplace_back(prefix, *hop);
      outermost(first, end, hop);
    } else {
      const Prefix low{prefix.ip, prefix.length + 1};
      Prefix high = low;
      high.ip.set_bit(prefix.length);
      const std::size_t middle = end_of(low, first, end);
      cover(low, hop, first, middle);
      cover(high, hop, middle, end);
    }
  }

  const std::vector<PlannedRoute>& routes_;
  CardModel::Routes& result_;
  std::vector<std::size_t> gaps_before_;  // routes for Linux in front of each route
  std::size_t left_out_ = 0;
};

}  // namespace

std::size_t cover(const std::vector<PlannedRoute>& routes, CardModel::Routes& result) {
  return Cover(routes, result).run();
}

int link_of(const std::vector<PlannedRoute>& routes, const Ip& ip) {
  // Of the prefixes that hold the address the longest stands last, and all of them in front of it.
  const Prefix itself{ip, bits(ip.family)};
  auto next = std::upper_bound(
      routes.begin(), routes.end(), itself,
      [](const Prefix& prefix, const PlannedRoute& route) { return prefix < route.prefix; });
  while (next != routes.begin()) {
    --next;
    if (contains(next->prefix, ip)) return next->on_link;
  }
  return 0;
}

}  // namespace agent
