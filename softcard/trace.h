// SPDX-License-Identifier: Apache-2.0
//
// Why a frame went where it went: the reasons for which frames are dropped, and the record of a
// frame's way through the pipeline, table by table.
#ifndef SOFTCARD_TRACE_H_
#define SOFTCARD_TRACE_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "softcard/net_types.h"

namespace softcard {

// Why a frame, or one copy of it, went no further.
enum class DropReason : std::uint8_t {
  // On the way in.
  runt,             // shorter than an Ethernet header
  oversize,         // above the port's MTU
  malformed,        // cut off within a VLAN tag, or an 802.3 length beyond the frame's end
  link_down,        // the port has no link
  pause,            // an IEEE 802.3x frame: taken by the port itself
  ingress_discard,  // the port's ingress discarding
  accept_frame,     // untagged, and the port accepts tagged frames only
  no_vlan,          // the frame's VLAN does not exist
  not_member,       // the port is no member of the frame's VLAN
  stp_ingress,      // the spanning-tree state of the port lets no data in
  mac_lock,         // the source address is not known on a locked port
  storm_broadcast,  // above the port's broadcast rate
  storm_multicast,  // above the port's multicast rate
  storm_unicast,    // above the port's rate of unknown unicast
  // Where to.
  flow_miss,      // no flow matches, and forwarding is by flows alone
  flow_drop,      // the matching flow leads nowhere
  flow_bad_port,  // the matching flow leads only to ports that are not there
  l2_disabled,    // the port does not forward by the FDB
  same_port,      // the destination is where the frame came from
  flood_nowhere,  // no port is left to flood to
  bad_ip,         // an IP packet to the router whose header is damaged
  ttl,            // the TTL or hop limit ran out
  no_route,       // to the router, and nothing matches
  no_interface,   // the router interface of the next hop is gone
  router_local,   // to the router, and not to be routed: the CPU's
  lag_empty,      // no member of the LAG can send
  // On the way out; counted at the port that did not send.
  egress_down,         // the port has no link
  egress_state,        // the port's egress is off
  egress_not_member,   // the port is no member of the frame's VLAN
  stp_egress,          // the spanning-tree state of the port lets no data out
  egress_l2_disabled,  // the port sends nothing by the FDB
  egress_mtu,          // above the port's MTU
  flood_blocked,       // kept from the port by flood blocking
  unplugged,           // nothing is plugged into the port
  cable_refused,       // the cable took the frame and could not send it
  // Resources.
  cpu_queue,  // the CPU's queue is full
  no_buffer,  // no frame is left for a copy
  count_      // how many there are; no reason
};
inline constexpr std::size_t kDropReasons = static_cast<std::size_t>(DropReason::count_);

// The reason's name in scripts and counters: its enumerator's, with - for _.
const char* name(DropReason reason);
// The reason in a few words.
const char* text(DropReason reason);

// The record of frames on their way. The pipeline fills one while it is set.
class Trace {
 public:
  // What one stage of the pipeline found and decided.
  struct Step {
    std::string stage;  // "port", "vlan", "stp", "fdb", ...
    std::string text;
  };

  void add(const char* stage, std::string text) { steps_.push_back({stage, std::move(text)}); }
  void clear() { steps_.clear(); }
  const std::vector<Step>& steps() const { return steps_; }

  // All steps, a line each: the stage in a column of its own, then the text.
  std::string to_string() const;

 private:
  std::vector<Step> steps_;
};

}  // namespace softcard

#endif  // SOFTCARD_TRACE_H_
