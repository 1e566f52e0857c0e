// SPDX-License-Identifier: Apache-2.0
//
// Settings of what ports let in and out: mirrors, storm control, discarding, flood blocking,
// queues, layer 2.

#include "softcard/sdk/sdk.h"

#include "softcard/base/refusal.h"

namespace softcard {

bool SoftSdk::set_port_mirror(const Mp& mirror_to, const Mp& mirrored, mirror_type_t type) {
  PortIndex to = 0;
  return port_of(card_.addresses(), mirror_to, to) &&
         on_port(mirrored, [&](PortIndex port) { return tables_.mirrors.set(to, port, type); });
}

bool SoftSdk::get_port_mirror(Mp& mirror_to, const Mp& mirrored, mirror_type_t& type) {
  return on_port(mirrored, [&](PortIndex port) {
    const MirrorTable::Session& session = tables_.mirrors[port];
    if (session.type == MIRROR_TYPE_NONE) {
      return refuse(AddressPlan::usp_of(port), " is not mirrored");
    }
    mirror_to = AddressPlan::mp_of(session.to);
    type = session.type;
    return true;
  });
}

bool SoftSdk::set_storm_limit(const Mp& mp, StormKind kind, unsigned int frames_per_second) {
  return on_port(
      mp, [&](PortIndex port) { tables_.traffic.set_storm_limit(port, kind, frames_per_second); });
}

bool SoftSdk::get_storm_limit(const Mp& mp, StormKind kind, unsigned int& frames_per_second) {
  return on_port(
      mp, [&](PortIndex port) { frames_per_second = tables_.traffic.storm_limit(port, kind); });
}

bool SoftSdk::set_port_broadcast_control(const Mp& mp, unsigned int frames_per_second) {
  return set_storm_limit(mp, StormKind::broadcast, frames_per_second);
}

bool SoftSdk::get_port_broadcast_control(const Mp& mp, unsigned int& frames_per_second) {
  return get_storm_limit(mp, StormKind::broadcast, frames_per_second);
}

bool SoftSdk::set_port_multicast_control(const Mp& mp, unsigned int frames_per_second) {
  return set_storm_limit(mp, StormKind::multicast, frames_per_second);
}

bool SoftSdk::get_port_multicast_control(const Mp& mp, unsigned int& frames_per_second) {
  return get_storm_limit(mp, StormKind::multicast, frames_per_second);
}

bool SoftSdk::set_port_unicast_control(const Mp& mp, unsigned int frames_per_second) {
  return set_storm_limit(mp, StormKind::unknown_unicast, frames_per_second);
}

bool SoftSdk::get_port_unicast_control(const Mp& mp, unsigned int& frames_per_second) {
  return get_storm_limit(mp, StormKind::unknown_unicast, frames_per_second);
}

bool SoftSdk::set_port_egress_admin_state(const Mp& mp, bool on) {
  return on_port(mp, [&](PortIndex port) { tables_.traffic.set_egress(port, on); });
}

bool SoftSdk::get_port_egress_admin_state(const Mp& mp, bool& on) {
  return on_port(mp, [&](PortIndex port) { on = tables_.traffic.egress_on(port); });
}

bool SoftSdk::set_port_ingress_discarding(const Mp& mp, ingress_discard_type_t type) {
  return on_port(mp,
                 [&](PortIndex port) { return tables_.traffic.set_ingress_discard(port, type); });
}

bool SoftSdk::get_port_ingress_discarding(const Mp& mp, ingress_discard_type_t& type) {
  return on_port(mp, [&](PortIndex port) { type = tables_.traffic.ingress_discard(port); });
}

bool SoftSdk::set_port_flood_blocking(const Mp& from, const Mp& to, flood_block_type_t type) {
  PortIndex to_port = 0;
  if (from == to && type != FLOOD_BLOCK_NONE) {
    return refuse("floods never leave through the port that they came in through");
  }
  return port_of(card_.addresses(), to, to_port) && on_port(from, [&](PortIndex port) {
           return tables_.flood_blocks.set(port, to_port, type);
         });
}

bool SoftSdk::get_port_flood_blocking(const Mp& from, const Mp& to, flood_block_type_t& type) {
  PortIndex to_port = 0;
  return port_of(card_.addresses(), to, to_port) &&
         on_port(from, [&](PortIndex port) { type = tables_.flood_blocks.get(port, to_port); });
}

bool SoftSdk::set_port_flood_blocking_cpu(const Mp& from, flood_block_type_t type) {
  return on_port(from, [&](PortIndex port) { return tables_.flood_blocks.set_to_cpu(port, type); });
}

bool SoftSdk::get_port_flood_blocking_cpu(const Mp& from, flood_block_type_t& type) {
  return on_port(from, [&](PortIndex port) { type = tables_.flood_blocks.get_to_cpu(port); });
}

bool SoftSdk::set_port_cos_mapping(const Mp& mp, unsigned int priority, unsigned int queue) {
  return on_port(mp, [&](PortIndex port) { return tables_.cos.set_queue(port, priority, queue); });
}

bool SoftSdk::get_port_cos_mapping(const Mp& mp, unsigned int priority, unsigned int& queue) {
  return in_range("priority", priority, 0, kPriorities - 1) &&
         on_port(mp, [&](PortIndex port) { queue = tables_.cos.queue(port, priority); });
}

bool SoftSdk::set_switch_forward_mode(unsigned int mode) {
  return tables_.traffic.set_forward_mode(mode);
}

bool SoftSdk::get_switch_forward_mode(unsigned int& mode) {
  mode = tables_.traffic.forward_mode();
  return true;
}

bool SoftSdk::set_port_l2_enable(const Mp& mp, bool on) {
  return on_port(mp, [&](PortIndex port) { tables_.traffic.set_l2(port, on); });
}

bool SoftSdk::set_port_switch_unknown_unicast_to_cpu(const Mp& mp, bool on) {
  return on_port(mp, [&](PortIndex port) { tables_.traffic.set_unknown_to_cpu(port, on); });
}

bool SoftSdk::get_port_switch_unknown_unicast_to_cpu(const Mp& mp, bool& on) {
  return on_port(mp, [&](PortIndex port) { on = tables_.traffic.unknown_to_cpu(port); });
}

bool SoftSdk::set_switch_unknown_unicast_to_cpu(bool on) {
  tables_.traffic.set_switch_unknown_to_cpu(on);
  return true;
}

bool SoftSdk::get_switch_unknown_unicast_to_cpu(bool& on) {
  on = tables_.traffic.switch_unknown_to_cpu();
  return true;
}

}  // namespace softcard
