// SPDX-License-Identifier: Apache-2.0

#include "softcard/tables/drop_counters.h"

namespace softcard {
namespace {

struct ReasonRow {
  DropReason reason;
  const char* name;
  const char* text;
};

// In the order of DropReason.
constexpr ReasonRow kReasons[] = {
    {DropReason::cable_lost, "cable-lost", "came faster than the card took it from its cable"},
    {DropReason::runt, "runt", "shorter than an Ethernet header"},
    {DropReason::oversize, "oversize", "longer than the port's MTU"},
    {DropReason::malformed, "malformed", "cut off within a VLAN tag or an 802.3 length"},
    {DropReason::link_down, "link-down", "the ingress port has no link"},
    {DropReason::pause, "pause", "pause frame, taken by the port"},
    {DropReason::ingress_discard, "ingress-discard", "ingress discarding"},
    {DropReason::accept_frame, "accept-frame", "untagged, and the port accepts tagged frames only"},
    {DropReason::no_vlan, "no-vlan", "the VLAN does not exist"},
    {DropReason::not_member, "not-member", "the ingress port is no member of the VLAN"},
    {DropReason::stp_ingress, "stp-ingress", "the spanning-tree state lets no data in"},
    {DropReason::mac_lock, "mac-lock", "unknown source address on a locked port"},
    {DropReason::storm_broadcast, "storm-broadcast", "above the broadcast rate"},
    {DropReason::storm_multicast, "storm-multicast", "above the multicast rate"},
    {DropReason::storm_unicast, "storm-unicast", "above the rate of unknown unicast"},
    {DropReason::flow_miss, "flow-miss", "no flow matches, and forwarding is by flows alone"},
    {DropReason::flow_drop, "flow-drop", "the flow leads nowhere"},
    {DropReason::l2_disabled, "l2-disabled", "the ingress port does not forward by the FDB"},
    {DropReason::same_port, "same-port", "the destination is where the frame came from"},
    {DropReason::flood_nowhere, "flood-nowhere", "no port is left to flood to"},
    {DropReason::bad_ip, "bad-ip", "to the router, and the IP header is damaged"},
    {DropReason::ttl, "ttl", "the TTL or hop limit ran out"},
    {DropReason::no_route, "no-route", "to the router, and no host or route matches"},
    {DropReason::no_interface, "no-interface", "the next hop's router interface does not exist"},
    {DropReason::router_local, "router-local", "to the router itself"},
    {DropReason::martian, "martian", "to the router, between addresses that no router connects"},
    {DropReason::router_mtu, "router-mtu", "too long for the router's way out"},
    {DropReason::lag_empty, "lag-empty", "no member of the LAG can send"},
    {DropReason::egress_down, "egress-down", "the egress port has no link"},
    {DropReason::egress_state, "egress-state", "the egress port's sending is off"},
    {DropReason::egress_not_member, "egress-not-member",
     "the egress port is no member of the VLAN"},
    {DropReason::stp_egress, "stp-egress", "the spanning-tree state lets no data out"},
    {DropReason::egress_l2_disabled, "egress-l2-disabled",
     "the egress port sends nothing by the FDB"},
    {DropReason::egress_mtu, "egress-mtu", "longer than the egress port's MTU"},
    {DropReason::flood_blocked, "flood-blocked", "kept from the egress port by flood blocking"},
    {DropReason::unplugged, "unplugged", "nothing is plugged into the egress port"},
    {DropReason::cable_refused, "cable-refused", "the cable could not send"},
    {DropReason::cable_forgot, "cable-forgot", "sent, and kept in memory until there was no room"},
    {DropReason::cpu_queue, "cpu-queue",
     "nobody takes packets for the CPU, or their queue is full"},
    {DropReason::no_buffer, "no-buffer", "no memory is left for the frame"},
};

constexpr bool in_order() {
  std::size_t i = 0;
  for (const ReasonRow& row : kReasons) {
    if (static_cast<std::size_t>(row.reason) != i++) return false;
  }
  return i == kDropReasons;
}
static_assert(in_order(), "a row for each reason, in their order");

}  // namespace

const char* name(DropReason reason) { return kReasons[static_cast<std::size_t>(reason)].name; }

const char* text(DropReason reason) { return kReasons[static_cast<std::size_t>(reason)].text; }

std::uint64_t DropCounters::count(DropReason reason) const {
  std::uint64_t sum = 0;
  for (const Row& row : by_port_) sum += row[static_cast<std::size_t>(reason)];
  return sum;
}

void DropCounters::clear() { by_port_.assign(by_port_.size(), Row{}); }

}  // namespace softcard
