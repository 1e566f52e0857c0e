// SPDX-License-Identifier: Apache-2.0
//
// The reasons for which frames are dropped, and how many were, by port and reason.
#ifndef SOFTCARD_TABLES_DROP_COUNTERS_H_
#define SOFTCARD_TABLES_DROP_COUNTERS_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "softcard/base/net_types.h"
#include "softcard/frames/frame.h"

namespace softcard {

// Why a frame, or one copy of it, went no further.
enum class DropReason : std::uint8_t {
  // On the way in; counted at the ingress port.
  cable_lost,
  runt,
  oversize,
  malformed,
  link_down,
  pause,
  ingress_discard,
  accept_frame,
  no_vlan,
  not_member,
  stp_ingress,
  mac_lock,
  storm_broadcast,
  storm_multicast,
  storm_unicast,
  // Where to; counted at the ingress port.
  flow_miss,
  flow_drop,
  l2_disabled,
  same_port,
  flood_nowhere,
  bad_ip,
  ttl,
  no_route,
  no_interface,
  router_local,
  martian,
  router_mtu,
  lag_empty,
  // On the way out; counted at the egress port.
  egress_down,
  egress_state,
  egress_not_member,
  stp_egress,
  egress_l2_disabled,
  egress_mtu,
  flood_blocked,
  unplugged,
  cable_refused,
  cable_forgot,
  // Want of room: for a copy to one port at that port, else at the ingress port.
  cpu_queue,
  no_buffer,
  count_  // how many there are; no reason
};
inline constexpr std::size_t kDropReasons = static_cast<std::size_t>(DropReason::count_);

// The reason's name in scripts and counters: its enumerator's, with - for _.
const char* name(DropReason reason);
// The reason in a few words.
const char* text(DropReason reason);

// Conventions: a PortIndex given is a port of the card, or kNoPort for frames from the CPU.
class DropCounters {
 public:
  explicit DropCounters(PortIndex ports) : by_port_(ports + std::size_t{1}) {}

  void add(PortIndex port, DropReason reason, std::uint64_t frames = 1) {
    by_port_[row(port)][static_cast<std::size_t>(reason)] += frames;
  }

  std::uint64_t count(PortIndex port, DropReason reason) const {
    return by_port_[row(port)][static_cast<std::size_t>(reason)];
  }
  // The sum over all ports and the CPU.
  std::uint64_t count(DropReason reason) const;
  void clear();

 private:
  using Row = std::array<std::uint64_t, kDropReasons>;

  std::size_t row(PortIndex port) const { return port == kNoPort ? by_port_.size() - 1 : port; }

  std::vector<Row> by_port_;  // the last one is the CPU's
};

}  // namespace softcard

#endif  // SOFTCARD_TABLES_DROP_COUNTERS_H_
