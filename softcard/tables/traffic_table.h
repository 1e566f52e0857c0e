// SPDX-License-Identifier: Apache-2.0
//
// Settings of what each port lets in and out: storm limits, ingress discarding, egress admin state,
// layer 2, unknown unicast to the CPU; and the switch-wide settings of the same family.
//
// Conventions: a PortIndex given is a port of the card. Setters return false for a value that there
// is not and then change nothing.
#ifndef SOFTCARD_TABLES_TRAFFIC_TABLE_H_
#define SOFTCARD_TABLES_TRAFFIC_TABLE_H_

#include <array>
#include <cstdint>

#include "softcard/base/net_types.h"
#include "softcard/base/port_set.h"
#include "softcard/base/refusal.h"
#include "vornlcapi/enums.h"

namespace softcard {

// The kinds of traffic that a storm limit counts.
enum class StormKind : std::uint8_t { broadcast, multicast, unknown_unicast };
inline constexpr unsigned kStormKinds = 3;

class TrafficTable {
 public:
  explicit TrafficTable(const PortSet& ports) : egress_(ports), l2_(ports) {}

  // ---- What the pipeline asks -------------------------------------------------------------------

  // Frames a second that may come in; 0: no limit.
  std::uint32_t storm_limit(PortIndex port, StormKind kind) const {
    return storm_limits_[port][static_cast<unsigned>(kind)];
  }
  ingress_discard_type_t ingress_discard(PortIndex port) const {
    return static_cast<ingress_discard_type_t>(ingress_discard_[port]);
  }
  const PortSet& egress_on() const { return egress_; }  // the ports that send
  const PortSet& l2_on() const { return l2_; }          // the ports that forward by the FDB
  bool egress_on(PortIndex port) const { return egress_.contains(port); }
  bool l2_on(PortIndex port) const { return l2_.contains(port); }
  // The port's setting or the switch's.
  bool copies_unknown_unicast_to_cpu(PortIndex port) const {
    return switch_unknown_to_cpu_ || unknown_to_cpu_.contains(port);
  }
  unsigned forward_mode() const { return forward_mode_; }  // SWITCH_FORWARD_MODE_...

  // ---- Settings ---------------------------------------------------------------------------------

  void set_storm_limit(PortIndex port, StormKind kind, std::uint32_t frames_per_second) {
    storm_limits_[port][static_cast<unsigned>(kind)] = frames_per_second;
  }
  bool set_ingress_discard(PortIndex port, ingress_discard_type_t type) {
    if (!in_range("ingress discarding", unsigned{type}, 0, INGRESS_DISCARD_ALL)) return false;
    ingress_discard_[port] = static_cast<std::uint8_t>(type);
    return true;
  }
  void set_egress(PortIndex port, bool on) { egress_.assign(port, on); }
  void set_l2(PortIndex port, bool on) { l2_.assign(port, on); }
  void set_unknown_to_cpu(PortIndex port, bool on) { unknown_to_cpu_.assign(port, on); }
  bool unknown_to_cpu(PortIndex port) const { return unknown_to_cpu_.contains(port); }
  void set_switch_unknown_to_cpu(bool on) { switch_unknown_to_cpu_ = on; }
  bool switch_unknown_to_cpu() const { return switch_unknown_to_cpu_; }
  bool set_forward_mode(unsigned mode) {
    if (!in_range("forward mode", mode, 0, SWITCH_FORWARD_MODE_NORMAL)) return false;
    forward_mode_ = mode;
    return true;
  }

 private:
  std::array<std::array<std::uint32_t, kStormKinds>, kMaxPorts> storm_limits_{};
  std::array<std::uint8_t, kMaxPorts> ingress_discard_{};
  PortSet egress_;
  PortSet l2_;
  PortSet unknown_to_cpu_;
  bool switch_unknown_to_cpu_ = false;
  unsigned forward_mode_ = SWITCH_FORWARD_MODE_HYBRID;
};

}  // namespace softcard

#endif  // SOFTCARD_TABLES_TRAFFIC_TABLE_H_
