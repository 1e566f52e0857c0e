// SPDX-License-Identifier: Apache-2.0

#include "softcard/tables/port_table.h"

#include "softcard/base/address_plan.h"
#include "softcard/base/refusal.h"
#include "softcard/base/text.h"

namespace softcard {
namespace {

struct Mode {
  AbilitySet ability;
  LinkMode mode;
};
// Best first.
constexpr Mode kModes[] = {
    {PORT_ABILITY_100000_FULL, {SPEED_TYPE_100000, DUPLEX_TYPE_FULL}},
    {PORT_ABILITY_40000_FULL, {SPEED_TYPE_40000, DUPLEX_TYPE_FULL}},
    {PORT_ABILITY_25000_FULL, {SPEED_TYPE_25000, DUPLEX_TYPE_FULL}},
    {PORT_ABILITY_10000_FULL, {SPEED_TYPE_10000, DUPLEX_TYPE_FULL}},
    {PORT_ABILITY_2500_FULL, {SPEED_TYPE_2500, DUPLEX_TYPE_FULL}},
    {PORT_ABILITY_1000_FULL, {SPEED_TYPE_1000, DUPLEX_TYPE_FULL}},
    {PORT_ABILITY_1000_HALF, {SPEED_TYPE_1000, DUPLEX_TYPE_HALF}},
    {PORT_ABILITY_100_FULL, {SPEED_TYPE_100, DUPLEX_TYPE_FULL}},
    {PORT_ABILITY_100_HALF, {SPEED_TYPE_100, DUPLEX_TYPE_HALF}},
    {PORT_ABILITY_10_FULL, {SPEED_TYPE_10, DUPLEX_TYPE_FULL}},
    {PORT_ABILITY_10_HALF, {SPEED_TYPE_10, DUPLEX_TYPE_HALF}},
};
constexpr AbilitySet kPause = PORT_ABILITY_PAUSE_RX | PORT_ABILITY_PAUSE_TX;
constexpr AbilitySet kHalfDuplex =
    PORT_ABILITY_10_HALF | PORT_ABILITY_100_HALF | PORT_ABILITY_1000_HALF;

// The abilities of a port whose fastest speed is `speed_mbps`.
AbilitySet abilities(unsigned speed_mbps) {
  constexpr AbilitySet k10 = PORT_ABILITY_10_HALF | PORT_ABILITY_10_FULL | kPause;
  constexpr AbilitySet k100 = k10 | PORT_ABILITY_100_HALF | PORT_ABILITY_100_FULL;
  switch (speed_mbps) {
    case 10:
      return k10;
    case 100:
      return k100;
    case 1000:
      return k100 | PORT_ABILITY_1000_FULL;
    case 2500:
      return PORT_ABILITY_100_FULL | PORT_ABILITY_1000_FULL | PORT_ABILITY_2500_FULL | kPause;
    case 10000:
      return PORT_ABILITY_1000_FULL | PORT_ABILITY_10000_FULL | kPause;
    case 25000:
      return PORT_ABILITY_10000_FULL | PORT_ABILITY_25000_FULL | kPause;
    case 40000:
      return PORT_ABILITY_10000_FULL | PORT_ABILITY_40000_FULL | kPause;
    default:
      return PORT_ABILITY_40000_FULL | PORT_ABILITY_100000_FULL | kPause;
  }
}

// The best mode in a set; no link when it has none.
LinkMode best_mode(AbilitySet ability) {
  for (const Mode& candidate : kModes) {
    if ((ability & candidate.ability) != 0) return candidate.mode;
  }
  return LinkMode();
}

bool operator==(const LinkMode& a, const LinkMode& b) {
  return a.speed == b.speed && a.duplex == b.duplex;
}

}  // namespace

AbilitySet ability_of(LinkMode mode) {
  for (const Mode& candidate : kModes) {
    if (candidate.mode == mode) return candidate.ability;
  }
  return 0;
}

PortTable::PortTable(const std::vector<PortDescription>& ports)
    : ports_(ports.size()), all_(PortSet::first(static_cast<PortIndex>(ports.size()))) {
  for (const PortIndex port : all_) {
    Port& own = ports_[port];
    own.mac = ports[port].mac;
    own.ability = abilities(ports[port].speed_mbps);
    own.advertised = own.ability;
    own.fixed = best_mode(own.ability);
    update_link(port);
  }
}

void PortTable::set_admin(PortIndex port, bool on) {
  ports_[port].admin = on;
  update_link(port);
}

void PortTable::set_phy_forced_down(PortIndex port, bool down) {
  ports_[port].phy_forced_down = down;
  update_link(port);
}

void PortTable::set_autoneg(PortIndex port, bool on) {
  if (!on && is_up(port)) ports_[port].fixed = ports_[port].mode;
  ports_[port].autoneg = on;
  update_link(port);
}

bool PortTable::set_speed(PortIndex port, speed_type_t speed) {
  const duplex_type_t duplex = mode(port).duplex;
  const duplex_type_t other = duplex == DUPLEX_TYPE_FULL ? DUPLEX_TYPE_HALF : DUPLEX_TYPE_FULL;
  for (const LinkMode wanted : {LinkMode{speed, duplex}, LinkMode{speed, other}}) {
    if ((ability(port) & ability_of(wanted)) != 0) {
      fix(port, wanted);
      return true;
    }
  }
  return refuse(AddressPlan::usp_of(port), " has no ability for ", speed, " Mbit/s");
}

bool PortTable::set_duplex(PortIndex port, duplex_type_t duplex) {
  const LinkMode present = mode(port);
  const LinkMode wanted{
      present.speed == SPEED_TYPE_UNKNOWN ? ports_[port].fixed.speed : present.speed, duplex};
  if ((ability(port) & ability_of(wanted)) != 0) {
    fix(port, wanted);
    return true;
  }
  for (const Mode& candidate : kModes) {
    if (candidate.mode.duplex == duplex && (ability(port) & candidate.ability) != 0) {
      fix(port, candidate.mode);
      return true;
    }
  }
  if (!in_range("duplex mode", unsigned{duplex}, 0, DUPLEX_TYPE_FULL)) return false;
  return refuse(AddressPlan::usp_of(port), " has no ability for ",
                duplex == DUPLEX_TYPE_FULL ? "full" : "half", " duplex");
}

void PortTable::fix(PortIndex port, LinkMode mode) {
  ports_[port].fixed = mode;
  ports_[port].autoneg = false;
  update_link(port);
}

LinkMode PortTable::mode(PortIndex port) const {
  const Port& own = ports_[port];
  if (is_up(port)) return own.mode;
  return own.autoneg ? LinkMode{SPEED_TYPE_UNKNOWN, own.fixed.duplex} : own.fixed;
}

bool PortTable::set_advertised(PortIndex port, AbilitySet ability) {
  if (const AbilitySet missing = ability & ~ports_[port].ability; missing != 0) {
    return refuse(AddressPlan::usp_of(port), " does not have the abilities ", hex_text(missing));
  }
  ports_[port].advertised = ability;
  update_link(port);
  return true;
}

AbilitySet PortTable::peer_offer(PortIndex port) const {
  const Port& own = ports_[port];
  if (!own.carrier) return 0;
  return own.peer_agrees_to_all ? own.ability : own.peer_offer;
}

void PortTable::set_pause(PortIndex port, bool receive, bool transmit) {
  ports_[port].pause_receive = receive;
  ports_[port].pause_transmit = transmit;
  update_link(port);
}

bool PortTable::set_jamming(PortIndex port, bool on) {
  if (on && (ports_[port].ability & kHalfDuplex) == 0) {
    return refuse(AddressPlan::usp_of(port), " has no ability for half duplex");
  }
  ports_[port].jamming = on;
  return true;
}

bool PortTable::set_mtu(PortIndex port, unsigned bytes) {
  if (!in_range("MTU", bytes, kMinMtuBytes, kMaxMtuBytes)) return false;
  ports_[port].mtu_bytes = bytes;
  return true;
}

void PortTable::set_carrier(PortIndex port, bool carrier, const AbilitySet* peer_offer) {
  Port& own = ports_[port];
  own.carrier = carrier;
  own.peer_agrees_to_all = peer_offer == nullptr;
  own.peer_offer = peer_offer == nullptr ? 0 : *peer_offer;
  update_link(port);
}

// Works out what is in force from everything that was set.
void PortTable::update_link(PortIndex port) {
  Port& own = ports_[port];
  const bool was_up = is_up(port);
  const LinkMode old_mode = own.mode;
  const AbilitySet old_offer = own.offer;

  const bool on = own.admin && !own.phy_forced_down;
  own.offer = !on ? 0 : own.autoneg ? own.advertised : ability_of(own.fixed);
  const AbilitySet peer = peer_offer(port);
  own.mode = best_mode(own.offer & peer);
  const bool up = own.mode.speed != SPEED_TYPE_UNKNOWN;
  up_.assign(port, up);

  own.current = 0;
  if (up) {
    own.current = ability_of(own.mode);
    if (own.mode.duplex == DUPLEX_TYPE_FULL) {
      // One end sends pause frames only if the other honours them; without autonegotiation neither
      // asks.
      const auto agreed = [&](AbilitySet mine, AbilitySet theirs) {
        return !own.autoneg || ((own.advertised & mine) != 0 && (peer & theirs) != 0);
      };
      if (own.pause_receive && agreed(PORT_ABILITY_PAUSE_RX, PORT_ABILITY_PAUSE_TX)) {
        own.current |= PORT_ABILITY_PAUSE_RX;
      }
      if (own.pause_transmit && agreed(PORT_ABILITY_PAUSE_TX, PORT_ABILITY_PAUSE_RX)) {
        own.current |= PORT_ABILITY_PAUSE_TX;
      }
    }
  }

  const bool link_changed = up != was_up || !(own.mode == old_mode);
  const bool advertisement_changed = own.offer != old_offer;
  if (observer_ && (link_changed || advertisement_changed))
    observer_(port, link_changed, advertisement_changed);
}

}  // namespace softcard
