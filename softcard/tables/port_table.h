// SPDX-License-Identifier: Apache-2.0
//
// The physical side of the ports: administrative and PHY state, speed, duplex, autonegotiation,
// abilities, pause, jamming, MTU, and the link that follows from all of them.
//
// A port has a link when it is on, its PHY is not forced down, its cable carries a carrier, and
// both ends agree on a speed and duplex mode. An end with autonegotiation offers what it
// advertises; one without offers the one mode that it is fixed to. What is in force is the best
// mode that both offer. A cable that leads to no port of a card agrees to everything.
//
// Conventions: a PortIndex given is below count(). Setters return false for a value that the port
// cannot honour and then change nothing.
#ifndef SOFTCARD_TABLES_PORT_TABLE_H_
#define SOFTCARD_TABLES_PORT_TABLE_H_

#include <cstdint>
#include <functional>
#include <vector>

#include "softcard/base/net_types.h"
#include "softcard/base/port_set.h"
#include "vornlcapi/enums.h"

namespace softcard {

struct PortDescription {
  unsigned speed_mbps;  // the fastest the port can do: 10, 100, 1000, 2500, 10000, 25000, 40000
                        // or 100000
  MacAddress mac;
};

// Bits of port_ability_type_t.
using AbilitySet = unsigned;

// A speed and duplex mode; no link is {SPEED_TYPE_UNKNOWN, ...}.
struct LinkMode {
  speed_type_t speed = SPEED_TYPE_UNKNOWN;
  duplex_type_t duplex = DUPLEX_TYPE_FULL;
};

class PortTable {
 public:
  // Bytes from the destination address on, without 802.1Q tag and checksum.
  static constexpr unsigned kMinMtuBytes = 64;
  static constexpr unsigned kMaxMtuBytes = 9216;
  static constexpr unsigned kDefaultMtuBytes = 1514;

  explicit PortTable(const std::vector<PortDescription>& ports);

  PortIndex count() const { return static_cast<PortIndex>(ports_.size()); }
  const PortSet& all() const { return all_; }

  // ---- What the pipeline asks -------------------------------------------------------------------

  const PortSet& up() const { return up_; }
  bool is_up(PortIndex port) const { return up_.contains(port); }
  unsigned mtu_bytes(PortIndex port) const { return ports_[port].mtu_bytes; }
  const MacAddress& mac(PortIndex port) const { return ports_[port].mac; }
  // Pause as it is in force: configured, agreed with the other end, and full duplex.
  bool receives_pause(PortIndex port) const { return (current(port) & PORT_ABILITY_PAUSE_RX) != 0; }
  bool sends_pause(PortIndex port) const { return (current(port) & PORT_ABILITY_PAUSE_TX) != 0; }
  // Back-pressure as it is in force: configured, and the link is half duplex.
  bool jams(PortIndex port) const {
    return ports_[port].jamming && is_up(port) && ports_[port].mode.duplex == DUPLEX_TYPE_HALF;
  }

  // ---- Settings ---------------------------------------------------------------------------------

  void set_admin(PortIndex port, bool on);
  bool admin(PortIndex port) const { return ports_[port].admin; }

  void set_phy_forced_down(PortIndex port, bool down);
  bool phy_forced_down(PortIndex port) const { return ports_[port].phy_forced_down; }

  // Switching it off keeps the mode in force, if there is a link.
  void set_autoneg(PortIndex port, bool on);
  bool autoneg(PortIndex port) const { return ports_[port].autoneg; }

  // Fix the speed or the duplex mode and end autonegotiation. Where the port cannot do both the new
  // value and the present other one, the other one follows: duplex to what the speed allows, speed
  // to the fastest that the duplex mode allows. False for a value that the port has no ability for.
  bool set_speed(PortIndex port, speed_type_t speed);
  bool set_duplex(PortIndex port, duplex_type_t duplex);
  // The mode in force; without a link the fixed one, or with autonegotiation an unknown speed.
  LinkMode mode(PortIndex port) const;

  // What the port does without autonegotiation.
  LinkMode fixed(PortIndex port) const { return ports_[port].fixed; }

  AbilitySet ability(PortIndex port) const { return ports_[port].ability; }
  // False for abilities that the port does not have.
  bool set_advertised(PortIndex port, AbilitySet ability);
  AbilitySet advertised(PortIndex port) const { return ports_[port].advertised; }
  // One speed and duplex mode, and pause; none without a link.
  AbilitySet current(PortIndex port) const { return ports_[port].current; }
  // The abilities that the link partner advertises; none without a carrier.
  AbilitySet peer_offer(PortIndex port) const;
  // The abilities that the port advertises; none while the port is off or its PHY is forced down.
  AbilitySet offer(PortIndex port) const { return ports_[port].offer; }

  void set_pause(PortIndex port, bool receive, bool transmit);
  bool pause_receive(PortIndex port) const { return ports_[port].pause_receive; }
  bool pause_transmit(PortIndex port) const { return ports_[port].pause_transmit; }

  // False for switching it on where the port has no half-duplex ability at all.
  bool set_jamming(PortIndex port, bool on);
  bool jamming(PortIndex port) const { return ports_[port].jamming; }

  bool set_mtu(PortIndex port, unsigned bytes);

  // ---- The cable --------------------------------------------------------------------------------

  // Whether the cable carries a carrier, and what the other end offers: nullptr for a cable that
  // agrees to everything.
  void set_carrier(PortIndex port, bool carrier, const AbilitySet* peer_offer);
  bool carrier(PortIndex port) const { return ports_[port].carrier; }

  // Has every change of a port's link (its state or mode) and of its offer to the other end
  // reported, when it is complete. The observer may change other ports, not this one.
  using Observer = std::function<void(PortIndex, bool link_changed, bool advertisement_changed)>;
  void set_observer(Observer observer) { observer_ = std::move(observer); }

 private:
  struct Port {
    MacAddress mac;
    unsigned mtu_bytes = kDefaultMtuBytes;
    AbilitySet ability = 0;
    AbilitySet advertised = 0;
    AbilitySet current = 0;
    AbilitySet offer = 0;
    AbilitySet peer_offer = 0;
    bool peer_agrees_to_all = true;
    bool admin = true;
    bool phy_forced_down = false;
    bool carrier = true;
    bool autoneg = true;
    bool pause_receive = false;
    bool pause_transmit = false;
    bool jamming = false;
    LinkMode fixed;  // what the port does without autonegotiation
    LinkMode mode;   // in force, while there is a link
  };

  void update_link(PortIndex port);
  void fix(PortIndex port, LinkMode mode);

  std::vector<Port> ports_;
  PortSet all_;
  PortSet up_;
  Observer observer_;
};

// The ability bit of a mode, 0 when there is none.
AbilitySet ability_of(LinkMode mode);

}  // namespace softcard

#endif  // SOFTCARD_TABLES_PORT_TABLE_H_
