// SPDX-License-Identifier: Apache-2.0
//
// The settings of a port through the library: each is kept per port, read back as it was set, and
// refused out of its range; and what the settings make of the link.

#include <functional>
#include <utility>

#include "softcard/cables/memory_cable.h"
#include "softcard/sdk/sdk.h"
#include "tests/softcard/host_fixture.h"

namespace softcard {
namespace {

// ---- Every setting that is one value ------------------------------------------------------------

using Value = long long;
struct Setting {
  const char* name;
  std::function<bool(const Usp&, Value)> set;
  std::function<bool(const Usp&, Value&)> get;
  Value initial;
  std::vector<Value> good;
  std::vector<Value> refused;
};

// A setter and a getter of one value as functions of numbers.
template <class T, class Given>
Setting setting(const char* name, bool (*set)(const Usp&, Given), bool (*get)(const Usp&, T&),
                Value initial, std::vector<Value> good, std::vector<Value> refused) {
  return {name,
          [=](const Usp& usp, Value value) { return set(usp, static_cast<Given>(value)); },
          [=](const Usp& usp, Value& value) {
            T read{};
            if (!get(usp, read)) return false;
            value = static_cast<Value>(read);
            return true;
          },
          initial,
          std::move(good),
          std::move(refused)};
}

// The same for a pair that takes a key between port and value.
Setting keyed(const char* name, bool (*set)(const Usp&, unsigned, unsigned),
              bool (*get)(const Usp&, unsigned, unsigned&), unsigned key, Value initial,
              std::vector<Value> good, std::vector<Value> refused) {
  return {name,
          [=](const Usp& usp, Value value) { return set(usp, key, static_cast<unsigned>(value)); },
          [=](const Usp& usp, Value& value) {
            unsigned read = 0;
            if (!get(usp, key, read)) return false;
            value = read;
            return true;
          },
          initial,
          std::move(good),
          std::move(refused)};
}

const std::vector<Setting>& settings() {
  static const std::vector<Setting> kAll = {
      setting("state", vorn_set_port_state, vorn_get_port_state, 1, {0, 1}, {}),
      setting("autoneg", vorn_set_port_autoneg, vorn_get_port_autoneg, 1, {0, 1}, {}),
      setting("speed", vorn_set_port_speed, vorn_get_port_speed, 1000, {10, 1000, 100},
              {0, 1, 2500, 10000}),
      setting("duplex", vorn_set_port_duplex, vorn_get_port_duplex, DUPLEX_TYPE_FULL,
              {DUPLEX_TYPE_HALF, DUPLEX_TYPE_FULL}, {2}),
      setting("mtu", vorn_set_port_mtu, vorn_get_port_mtu, 1514, {64, 9216}, {0, 63, 9217}),
      setting("link_state", vorn_set_port_link_state, vorn_get_port_link_state, 1, {0, 1}, {2}),
      setting("advertising_ability", vorn_set_port_advertising_ability,
              vorn_get_port_advertising_ability, 0x302f, {0x0028, 0}, {0x0010, 0x0080, 0x10000}),
      setting("jaming_control", vorn_set_port_jaming_control, vorn_get_port_jaming_control, 0,
              {1, 0}, {}),
      setting("stat_enable", vorn_set_port_stat_enable, vorn_get_port_stat_enabled, 1, {0, 1}, {}),
      setting("stp_state", vorn_set_port_stp_state, vorn_get_port_stp_state, 3, {0, 1, 2, 4}, {5}),
      setting("bpdu_processing", vorn_set_port_bpdu_processing, vorn_get_port_bpdu_processing, 1,
              {0, 1}, {}),
      setting("unicast_control", vorn_set_port_unicast_control, vorn_get_port_unicast_control, 0,
              {1, 4294967295}, {}),
      setting("multicast_control", vorn_set_port_multicast_control, vorn_get_port_multicast_control,
              0, {2, 0}, {}),
      setting("broadcast_control", vorn_set_port_broadcast_control, vorn_get_port_broadcast_control,
              0, {3, 0}, {}),
      setting("ingress_discarding", vorn_set_port_ingress_discarding,
              vorn_get_port_ingress_discarding, 0, {1, 2, 3}, {4}),
      setting("egress_admin_state", vorn_set_port_egress_admin_state,
              vorn_get_port_egress_admin_state, 1, {0, 1}, {}),
      setting("unknown_unicast_to_cpu", vorn_set_port_switch_unknown_unicast_to_cpu,
              vorn_get_port_switch_unknown_unicast_to_cpu, 0, {1, 0}, {}),
      setting("mac_lock", vorn_set_port_mac_lock, vorn_get_port_mac_lock, 0, {1, 0}, {}),
      setting("mac_limit", vorn_set_port_mac_limit, vorn_get_port_mac_limit, -1, {0, 2147483647},
              {-2}),
      setting("pvid", vorn_set_port_pvid, vorn_get_port_pvid, 1, {4094, 10}, {0, 4095, 65537}),
      setting("vlan_accept_frame", vorn_set_port_vlan_accept_frame, vorn_get_port_vlan_accept_frame,
              1, {0, 1}, {}),
      keyed("vlan_priority of vlan 9", vorn_set_port_vlan_priority, vorn_get_port_vlan_priority, 9,
            0, {7, 1}, {8, 256}),
      keyed("vlan_priority of the rest", vorn_set_port_vlan_priority, vorn_get_port_vlan_priority,
            0, 0, {7, 1}, {8}),
      keyed("cos_mapping", vorn_set_port_cos_mapping, vorn_get_port_cos_mapping, 5, 5, {0, 7},
            {8, 256}),
      {"mstp_state",
       [](const Usp& usp, Value value) {
         return vorn_set_port_mstp_state(usp, static_cast<mstp_state_t>(value), 63);
       },
       [](const Usp& usp, Value& value) {
         mstp_state_t state{};
         if (!vorn_get_port_mstp_state(usp, state, 63)) return false;
         value = state;
         return true;
       },
       MSTP_STATE_FORWARDING,
       {0, 4},
       {5}},
      {"flood_blocking_cpu",
       [](const Usp& usp, Value value) {
         return vorn_set_port_flood_blocking_cpu({usp}, static_cast<flood_block_type_t>(value));
       },
       [](const Usp& usp, Value& value) {
         flood_block_type_t type{};
         if (!vorn_get_port_flood_blocking_cpu(usp, type)) return false;
         value = type;
         return true;
       },
       0,
       {5, 7},
       {8}},
      {"flood_blocking",
       [](const Usp& usp, Value value) {
         return vorn_set_port_flood_blocking({usp}, port(51),
                                             static_cast<flood_block_type_t>(value));
       },
       [](const Usp& usp, Value& value) {
         flood_block_type_t type{};
         if (!vorn_get_port_flood_blocking(usp, port(51), type)) return false;
         value = type;
         return true;
       },
       0,
       {1, 2, 4, 6},
       {8}},
  };
  return kAll;
}

using PortSettings = HostTest;

TEST_F(PortSettings, EachIsKeptPerPortAndRefusedOutOfRange) {
  for (const Setting& row : settings()) {
    SCOPED_TRACE(row.name);
    const auto read = [&](const Usp& usp) {
      Value value = -99;
      EXPECT_TRUE(row.get(usp, value));
      return value;
    };
    EXPECT_EQ(read(port(3)), row.initial);
    for (const Value value : row.good) {
      EXPECT_TRUE(row.set(port(3), value)) << value;
      EXPECT_EQ(read(port(3)), value);
      for (const Value bad : row.refused) {
        EXPECT_FALSE(row.set(port(3), bad)) << bad;
        EXPECT_EQ(read(port(3)), value) << "after " << bad;
      }
    }
    EXPECT_EQ(read(port(2)), row.initial) << "the neighbour's";
    Value value = -99;
    EXPECT_FALSE(row.get(port(52), value)) << "of no port";
    EXPECT_EQ(value, -99);
  }
}

TEST_F(PortSettings, PriorityOfAVlan) {
  unsigned value = 77;
  // A VLAN's own priority stands before that of the rest.
  EXPECT_TRUE(vorn_set_port_vlan_priority(port(0), 0, 4));
  EXPECT_TRUE(vorn_set_port_vlan_priority(port(0), 9, 2));
  EXPECT_TRUE(vorn_get_port_vlan_priority(port(0), 9, value) && value == 2);
  EXPECT_TRUE(vorn_get_port_vlan_priority(port(0), 8, value) && value == 4);
}

TEST_F(PortSettings, OfTwoFlags) {
  bool a = false, b = false;
  EXPECT_TRUE(vorn_set_port_flow_control_8023x(port(1), true, false));
  EXPECT_TRUE(vorn_get_port_flow_control_8023x(port(1), a, b) && a && !b);
  EXPECT_TRUE(vorn_set_port_mac_lock_ext(port(1), true, false));
  EXPECT_TRUE(vorn_get_port_mac_lock_ext(port(1), a, b) && a && !b);
  EXPECT_TRUE(vorn_set_port_mac_lock(port(1), true));
  EXPECT_TRUE(vorn_get_port_mac_lock_ext(port(1), a, b) && a && b) << "a plain lock drops";
}

TEST_F(PortSettings, Mirror) {
  Usp to(0, 0, 0);
  mirror_type_t type{};
  EXPECT_FALSE(vorn_get_port_mirror(to, port(2), type));
  EXPECT_TRUE(vorn_set_port_mirror(port(1), port(2), MIRROR_TYPE_EGRESS));
  EXPECT_TRUE(vorn_get_port_mirror(to, port(2), type) && to == port(1));
  EXPECT_EQ(type, MIRROR_TYPE_EGRESS);
  EXPECT_TRUE(vorn_set_port_mirror(port(5), port(2), MIRROR_TYPE_NONE));
  EXPECT_FALSE(vorn_get_port_mirror(to, port(2), type)) << "ended";
  EXPECT_TRUE(vorn_set_port_mirror(port(2), port(2), MIRROR_TYPE_NONE)) << "there is none";
}

TEST_F(PortSettings, ProtocolVlansUpToTheirNumber) {
  for (unsigned i = 0; i < 16; ++i) {
    EXPECT_TRUE(vorn_set_port_protocol_vlan(port(1), FRAME_TYPE_ETHERNET,
                                            static_cast<unsigned short>(0x8000 + i), 10 + i));
  }
  EXPECT_FALSE(vorn_set_port_protocol_vlan(port(1), FRAME_TYPE_SNAP, 0x8000, 10)) << "full";
  EXPECT_TRUE(vorn_set_port_protocol_vlan(port(1), FRAME_TYPE_ETHERNET, 0x8003, 99)) << "changed";
  EXPECT_EQ(card().tables().port_vlans.protocol_vlan(1, FRAME_TYPE_ETHERNET, 0x8003), 99u);
  EXPECT_EQ(card().tables().port_vlans.protocol_vlan(1, FRAME_TYPE_LLC, 0x8003), 0u);
  EXPECT_TRUE(vorn_delete_port_protocol_vlan(port(1), FRAME_TYPE_ETHERNET, 0x8003));
  EXPECT_FALSE(vorn_delete_port_protocol_vlan(port(1), FRAME_TYPE_ETHERNET, 0x8003));
  EXPECT_TRUE(vorn_delete_port_protocol_vlan_all(port(1)));
  EXPECT_FALSE(card().tables().port_vlans.has_protocol_vlans(1));
}

TEST_F(PortSettings, CountersOfBothSets) {
  Counters& counters = card().tables().counters;
  counters.received(1, 60, CastKind::unicast);
  counters.received(1, 123, CastKind::broadcast);  // 127 with its checksum
  counters.received(1, 124, CastKind::multicast);  // 128
  counters.received(1, 1019, CastKind::unicast);   // 1023
  counters.received(1, 1514, CastKind::unicast);   // 1518
  counters.received(1, 1515, CastKind::unicast);
  counters.sent(1, 100, CastKind::multicast, 6);
  counters.add(1, STAT_OUT_OCTETS, 0x200000000);
  const std::vector<std::pair<stat_type_t, unsigned long long>> full = {
      {STAT_IN_OCTETS, 60 + 123 + 124 + 1019 + 1514 + 1515},
      {STAT_IN_UNICAST_PACKETS, 4},
      {STAT_IN_MULTICAST_PACKETS, 1},
      {STAT_IN_BROADCAST_PACKETS, 1},
      {STAT_IN_PACKETS_64, 1},
      {STAT_IN_PACKETS_65_127, 1},
      {STAT_IN_PACKETS_128_255, 1},
      {STAT_IN_PACKETS_512_1023, 1},
      {STAT_IN_PACKETS_1024_1518, 1},
      {STAT_IN_PACKETS_1519_MAX, 1},
      {STAT_OUT_OCTETS, 0x200000064},
      {STAT_OUT_QUEUE_6, 1}};
  for (const auto& [type, expected] : full) {
    unsigned long long value = 0;
    unsigned low = 0;
    EXPECT_TRUE(vorn_get_port_stat_counter(port(1), type, value));
    EXPECT_EQ(value, expected) << type;
    EXPECT_TRUE(vorn_get_port_stat_counter32(port(1), type, low));
    EXPECT_EQ(low, static_cast<unsigned>(expected)) << type;
  }
  unsigned long long value = 5;
  EXPECT_TRUE(vorn_get_port_brief_stat_counter64(port(1), BRIEF_STAT_IN_PACKETS, value));
  EXPECT_EQ(value, 6u);

  std::list<StatCounter64> all = {{STAT_IN_ERRORS, 4711}};
  EXPECT_TRUE(vorn_get_port_stat_counter_all64(port(1), all));
  EXPECT_EQ(all.size(), 1u + STAT_TYPE_COUNT) << "appended to what was there";
  EXPECT_EQ(all.back().type, STAT_OUT_QUEUE_7);
  std::list<BriefStatCounter64> brief = {{BRIEF_STAT_IN_ERRORS, 4711}};
  SoftSdk sdk(card(), host::call_watch());
  EXPECT_TRUE(sdk.get_port_brief_stat_counter_all64(AddressPlan::mp_of(1), brief));
  EXPECT_EQ(brief.size(), 1u + BRIEF_STAT_TYPE_COUNT);
  EXPECT_EQ(brief.front().value, 4711u);
  StatCounter32 some[3] = {};
  unsigned count = 2;
  EXPECT_TRUE(vorn_get_port_stat_counter_all32_ext(port(1), some, count));
  EXPECT_EQ(count, 2u);
  EXPECT_EQ(some[1].value, 4u);
  EXPECT_EQ(some[2].value, 0u) << "no more than there was room for";
  std::vector<StatCounter64> more(STAT_TYPE_COUNT + 1);
  count = STAT_TYPE_COUNT + 1;
  EXPECT_TRUE(vorn_get_port_stat_counter_all64_ext(port(1), more.data(), count));
  EXPECT_EQ(count, 0u + STAT_TYPE_COUNT);

  EXPECT_TRUE(vorn_set_port_stat_enable(port(1), false));
  counters.received(1, 60, CastKind::unicast);
  EXPECT_TRUE(vorn_get_port_stat_counter(port(1), STAT_IN_UNICAST_PACKETS, value));
  EXPECT_EQ(value, 4u) << "off keeps the values";
  counters.add(2, STAT_IN_ERRORS);
  EXPECT_FALSE(vorn_free_call(0));
  EXPECT_TRUE(vorn_clear_port_stat_counter(port(1)));
  EXPECT_EQ(counters.value(1, STAT_IN_OCTETS) + counters.value(2, STAT_IN_ERRORS), 1u);
  EXPECT_TRUE(vorn_free_call(1)) << "clears all ports";
  EXPECT_EQ(counters.value(2, STAT_IN_ERRORS), 0u);
}

// ---- The link -----------------------------------------------------------------------------------

// "up 1000 full 0020": state, speed, duplex and current abilities as the library tells them.
std::string link(const Usp& usp) {
  phy_state_t state{};
  speed_type_t speed{};
  duplex_type_t duplex{};
  port_ability_type_t current{};
  EXPECT_TRUE(vorn_get_port_link_state(usp, state) && vorn_get_port_speed(usp, speed) &&
              vorn_get_port_duplex(usp, duplex) && vorn_get_port_current_ability(usp, current));
  char text[64];
  std::snprintf(text, sizeof text, "%s %u %s %04x", state == PHY_STATE_UP ? "up" : "down",
                static_cast<unsigned>(speed), duplex == DUPLEX_TYPE_FULL ? "full" : "half",
                static_cast<unsigned>(current));
  return text;
}

TEST(PortTable, AbilitiesByTheFastestSpeed) {
  constexpr unsigned k10 = PORT_ABILITY_10_HALF | PORT_ABILITY_10_FULL;
  constexpr unsigned k100 = PORT_ABILITY_100_FULL;
  constexpr unsigned k1000 = PORT_ABILITY_1000_FULL;
  constexpr unsigned k10000 = PORT_ABILITY_10000_FULL;
  const std::pair<unsigned, unsigned> rows[] = {
      {10, k10},
      {100, k10 | k100 | PORT_ABILITY_100_HALF},
      {1000, k10 | k100 | PORT_ABILITY_100_HALF | k1000},
      {2500, k100 | k1000 | PORT_ABILITY_2500_FULL},
      {10000, k1000 | k10000},
      {25000, k10000 | PORT_ABILITY_25000_FULL},
      {40000, k10000 | PORT_ABILITY_40000_FULL},
      {100000, PORT_ABILITY_40000_FULL | PORT_ABILITY_100000_FULL}};
  for (const auto& [speed_mbps, abilities] : rows) {
    const std::vector<PortDescription> ports = {{speed_mbps, {}}};
    EXPECT_EQ(PortTable(ports).ability(0),
              abilities | PORT_ABILITY_PAUSE_RX | PORT_ABILITY_PAUSE_TX)
        << speed_mbps;
  }
}

TEST_F(PortSettings, SpeedAndDuplexFollowEachOther) {
  EXPECT_EQ(link(port(0)), "up 1000 full 0020");
  EXPECT_TRUE(vorn_set_port_duplex(port(0), DUPLEX_TYPE_HALF));
  EXPECT_EQ(link(port(0)), "up 100 half 0004") << "the fastest that does half duplex";
  bool autoneg = true;
  EXPECT_TRUE(vorn_get_port_autoneg(port(0), autoneg) && !autoneg) << "fixing ends it";
  EXPECT_TRUE(vorn_set_port_speed(port(0), SPEED_TYPE_10));
  EXPECT_EQ(link(port(0)), "up 10 half 0001");
  EXPECT_TRUE(vorn_set_port_speed(port(0), SPEED_TYPE_1000));
  EXPECT_EQ(link(port(0)), "up 1000 full 0020") << "1000 has no half duplex here";
  EXPECT_TRUE(vorn_set_port_autoneg(port(0), true));
  EXPECT_TRUE(vorn_set_port_advertising_ability(
      port(0), static_cast<port_ability_type_t>(PORT_ABILITY_10_FULL | PORT_ABILITY_100_HALF)));
  EXPECT_EQ(link(port(0)), "up 100 half 0004") << "the best of what is advertised";
  EXPECT_TRUE(vorn_set_port_autoneg(port(0), false));
  EXPECT_EQ(link(port(0)), "up 100 half 0004") << "kept when negotiation ends";
  EXPECT_TRUE(vorn_set_port_autoneg(port(0), true));
  EXPECT_TRUE(vorn_set_port_advertising_ability(port(0), PORT_ABILITY_NONE));
  EXPECT_EQ(link(port(0)), "down 0 half 0000") << "nothing offered, no link";
}

TEST_F(PortSettings, EveryCauseTakesTheLinkDownAndBack) {
  const std::pair<const char*, std::function<void(bool)>> causes[] = {
      {"state", [](bool on) { EXPECT_TRUE(vorn_set_port_state(port(3), on)); }},
      {"phy",
       [](bool on) {
         EXPECT_TRUE(vorn_set_port_link_state(port(3), on ? PHY_STATE_UP : PHY_STATE_DOWN));
       }},
      {"carrier", [](bool on) { card().cut_carrier(3, !on); }},
      {"cable", [](bool on) { card().plug(3, on ? std::make_unique<MemoryCable>() : nullptr); }},
  };
  static std::vector<std::string> seen;
  seen.clear();
  const auto callback = [](LinkStatus* status, Usp* usp) {
    seen.push_back(AddressPlan::text(*usp) + " " + std::to_string(status->state) + " " +
                   std::to_string(status->speed));
  };
  EXPECT_TRUE(vorn_register_link_change_callback(callback));
  for (const auto& [name, set] : causes) {
    SCOPED_TRACE(name);
    seen.clear();
    set(false);
    set(false);
    EXPECT_EQ(link(port(3)), "down 0 full 0000");
    EXPECT_TRUE(seen.empty()) << "events wait until they are delivered";
    EXPECT_EQ(card().deliver_events(), 1u);
    set(true);
    EXPECT_EQ(link(port(3)), "up 1000 full 0020");
    card().deliver_events();
    EXPECT_EQ(seen, (Lines{"1/1/3 0 0", "1/1/3 1 1000"}));
  }
}

// A link that stays up but changes its mode is told, and one that does not change is not.
TEST_F(PortSettings, ChangesOfModeAreTold) {
  static Lines seen;
  seen.clear();
  EXPECT_TRUE(vorn_register_link_change_callback([](LinkStatus* status, Usp* usp) {
    seen.push_back(AddressPlan::text(*usp) + (status->state == PHY_STATE_UP ? " up " : " down ") +
                   std::to_string(status->speed) + " " + std::to_string(status->duplex));
  }));
  const auto told = [](bool done) {
    EXPECT_TRUE(done);
    seen.clear();
    card().deliver_events();
    return seen;
  };
  const std::string full = std::to_string(DUPLEX_TYPE_FULL),
                    half = std::to_string(DUPLEX_TYPE_HALF);
  EXPECT_EQ(told(vorn_set_port_speed(port(3), SPEED_TYPE_100)), Lines{"1/1/3 up 100 " + full});
  EXPECT_EQ(told(vorn_set_port_speed(port(3), SPEED_TYPE_100)), Lines());
  EXPECT_EQ(told(vorn_set_port_duplex(port(3), DUPLEX_TYPE_HALF)), Lines{"1/1/3 up 100 " + half});
  EXPECT_EQ(told(vorn_set_port_autoneg(port(3), true)), Lines{"1/1/3 up 1000 " + full});
  EXPECT_EQ(told(vorn_set_port_flow_control_8023x(port(3), true, true)), Lines());
  EXPECT_EQ(told(vorn_set_port_advertising_ability(port(3), PORT_ABILITY_10_HALF)),
            Lines{"1/1/3 up 10 " + half});
  EXPECT_EQ(told(vorn_set_port_mtu(port(3), 2000)), Lines());
}

TEST_F(PortSettings, TwoPortsAgreeOverACable) {
  auto ends = PatchCable::make();
  card().plug(0, std::move(ends.first));
  EXPECT_EQ(link(port(0)), "down 0 full 0000") << "the other end is loose";
  card().plug(48, std::move(ends.second));
  EXPECT_EQ(link(port(0)), "up 1000 full 0020");
  EXPECT_EQ(link(port(48)), "up 1000 full 0020") << "the uplink comes down to its partner";
  port_ability_type_t peer{};
  EXPECT_TRUE(vorn_get_port_peer_ability(port(48), peer));
  EXPECT_EQ(peer, 0x302fu) << "what 1/1/0 advertises";

  EXPECT_TRUE(vorn_set_port_flow_control_8023x(port(0), true, true));
  EXPECT_EQ(link(port(0)), "up 1000 full 3020");
  EXPECT_TRUE(vorn_set_port_advertising_ability(
      port(48), static_cast<port_ability_type_t>(PORT_ABILITY_1000_FULL | PORT_ABILITY_PAUSE_TX)));
  EXPECT_EQ(link(port(0)), "up 1000 full 1020") << "the partner sends pause, and honours none";
  EXPECT_TRUE(vorn_set_port_advertising_ability(port(0), PORT_ABILITY_1000_FULL));
  EXPECT_EQ(link(port(0)), "up 1000 full 0020") << "offers no pause of its own";

  EXPECT_TRUE(vorn_set_port_speed(port(48), SPEED_TYPE_10000));
  EXPECT_EQ(link(port(0)), "down 0 full 0000") << "no common speed";
  EXPECT_EQ(link(port(48)), "down 10000 full 0000");
  EXPECT_TRUE(vorn_set_port_speed(port(48), SPEED_TYPE_1000));
  EXPECT_EQ(link(port(0)), "up 1000 full 0020") << "a fixed partner negotiates no pause";
  EXPECT_TRUE(vorn_set_port_state(port(48), false));
  EXPECT_EQ(link(port(0)), "down 0 full 0000") << "the partner is off";
  EXPECT_TRUE(vorn_set_port_state(port(48), true));
  card().cut_carrier(48, true);
  EXPECT_EQ(link(port(0)), "down 0 full 0000");
  card().cut_carrier(48, false);
  EXPECT_EQ(link(port(0)), "up 1000 full 0020");
  card().plug(48, nullptr);
  EXPECT_EQ(link(port(0)), "down 0 full 0000");
}

TEST_F(PortSettings, TheSpanningTreeGateIsTheStricterOfBothStates) {
  StpTable& stp = card().tables().stp;
  const auto gate = [&] { return std::make_pair(stp.learns(5, 2), stp.forwards(5, 2)); };
  EXPECT_EQ(gate(), std::make_pair(true, true));
  EXPECT_TRUE(vorn_set_port_mstp_state(port(5), MSTP_STATE_LEARNING, 2));
  EXPECT_EQ(gate(), std::make_pair(true, false));
  EXPECT_TRUE(stp.forwards(5, 1)) << "another instance";
  EXPECT_TRUE(vorn_set_port_stp_state(port(5), STP_STATE_LISTENING));
  EXPECT_EQ(gate(), std::make_pair(false, false));
  EXPECT_TRUE(vorn_set_port_mstp_state(port(5), MSTP_STATE_FORWARDING, 2));
  EXPECT_EQ(gate(), std::make_pair(false, false));
  EXPECT_TRUE(vorn_set_port_stp_state(port(5), STP_STATE_FORWARDING));
  EXPECT_EQ(gate(), std::make_pair(true, true));
  EXPECT_TRUE(stp.forwards(4, 2)) << "the neighbour";
}

}  // namespace
}  // namespace softcard
