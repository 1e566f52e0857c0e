// SPDX-License-Identifier: Apache-2.0
//
// Why a frame went where it went: the reasons for which frames are dropped, and the record of a
// frame's way through the pipeline, table by table.
#ifndef SOFTCARD_PIPELINE_TRACE_H_
#define SOFTCARD_PIPELINE_TRACE_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "softcard/base/net_types.h"

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
  // Want of room: for a packet to the CPU at the ingress port, for a copy at the egress port.
  cpu_queue,
  no_buffer,
  count_  // how many there are; no reason
};
inline constexpr std::size_t kDropReasons = static_cast<std::size_t>(DropReason::count_);

// The reason's name in scripts and counters: its enumerator's, with - for _.
const char* name(DropReason reason);
// The reason in a few words.
const char* text(DropReason reason);

// Why a packet was handed to the CPU, in a few words; `reason` is RX_REASON_....
const char* rx_reason_text(unsigned reason);

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

#endif  // SOFTCARD_PIPELINE_TRACE_H_
