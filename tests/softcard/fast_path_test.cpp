// SPDX-License-Identifier: Apache-2.0
//
// Two cards, alike in everything but the fast path, forward the same random frames under the same
// random settings: everything that leaves them, and all that they count and learn, is equal.

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "softcard/base/clock.h"
#include "softcard/frames/checksum.h"
#include "softcard/frames/wire.h"
#include "softcard/pipeline/pipeline.h"

namespace softcard {
namespace {

constexpr PortIndex kPorts = 8;
constexpr std::uint64_t kRouterMac = 0x00005E005301;
using Bytes = std::vector<std::uint8_t>;

class PacketList final : public CpuQueue {
 public:
  bool wants_packets() const override { return wants; }
  bool post_packet(FramePtr frame, unsigned reason) override {
    packets.emplace_back(reason, Bytes(frame->data(), frame->data() + frame->size()));
    return true;
  }

  bool wants = false;
  std::vector<std::pair<unsigned, Bytes>> packets;
};

class Stations final : public PortCables {
 public:
  bool plugged(PortIndex) const override { return true; }
  bool takes_offloads(PortIndex) const override { return false; }
  std::size_t transmit(PortIndex port, FramePtr* frames, std::size_t count) override {
    for (std::size_t i = 0; i < count; ++i) {
      const Frame& frame = *frames[i];
      sent[port].emplace_back(frame.ingress, frame.vlan, frame.priority,
                              Bytes(frame.data(), frame.data() + frame.size()));
      frames[i].reset();
    }
    return count;
  }

  using Sent = std::tuple<PortIndex, unsigned, unsigned, Bytes>;  // from where, VLAN, priority
  std::map<PortIndex, std::vector<Sent>> sent;
};

struct World {
  explicit World(bool fast) {
    for (const PortIndex port : tables.ports.all()) tables.ports.set_carrier(port, true, nullptr);
    pipeline.set_fast_path(fast);
  }

  void receive(PortIndex port, const std::vector<Bytes>& frames) {
    std::vector<FramePtr> burst;
    for (const Bytes& frame : frames) burst.push_back(pool.make(frame.data(), frame.size()));
    pipeline.receive(port, burst.data(), burst.size());
  }

  Tables tables{std::vector<PortDescription>(kPorts), CardCapacity(), {}, KeyedHash(1)};
  VirtualClock clock;
  FramePool pool;
  PacketList cpu;
  Stations stations;
  Pipeline pipeline{tables, clock, pool, cpu, stations};
};

// ---- What a seed makes --------------------------------------------------------------------------

class Random {
 public:
  explicit Random(std::uint32_t seed) : bits_(seed) {}
  unsigned below(unsigned count) { return static_cast<unsigned>(bits_() % count); }
  bool once_in(unsigned count) { return below(count) == 0; }
  PortIndex port() { return static_cast<PortIndex>(below(kPorts)); }
  std::uint16_t vlan() { return static_cast<std::uint16_t>(1 + below(4)); }
  PortSet ports() {
    PortSet set;
    for (PortIndex port = 0; port < kPorts; ++port) set.assign(port, !once_in(3));
    return set;
  }
  MacAddress mac() { return MacAddress::from_number(0x00005E005310 + below(12)); }
  Ipv4 ip() {
    static constexpr Ipv4 kNets[] = {0xC0000200, 0xC6336400, 0xCB007100, 0x7F000000, 0xE0000000};
    return kNets[below(once_in(8) ? 5 : 3)] + below(6);
  }

 private:
  std::mt19937 bits_;
};

FlowMatch random_match(Random& random) {
  FlowMatch match;
  match.fields = 1u << random.below(12) | 1u << random.below(12);
  match.in_port = random.port();
  match.source_mac = random.mac();
  match.destination_mac = random.mac();
  match.vlan = random.vlan();
  match.priority = static_cast<std::uint8_t>(random.below(2));
  match.ether_type = random.once_in(4) ? kTypeArp : kTypeIpv4;
  match.ipv4_source = random.ip();
  match.ipv4_source_mask = ~Ipv4{0} << random.below(12);
  match.ipv4_destination = random.ip();
  match.ipv4_destination_mask = ~Ipv4{0} << random.below(12);
  match.ip_protocol = random.once_in(2) ? kProtocolUdp : kProtocolTcp;
  match.l4_source = static_cast<std::uint16_t>(random.below(2));
  match.l4_destination = static_cast<std::uint16_t>(random.below(2));
  if (random.once_in(20)) match.udf = {FlowUdfBase::l3, 8, 0x40000000, 0xFF000000};
  return match;
}

// Most settings stay what a plain port has, so that most bursts may take the fast path.
void change_setting(World& world, Random random) {
  Tables& tables = world.tables;
  const PortIndex port = random.port();
  const std::uint16_t vlan = random.vlan();
  const bool plain = !random.once_in(6);
  std::uint32_t id = 0;
  switch (random.below(32)) {
    case 0:
    case 1:
      tables.vlans.create(vlan);
      tables.vlans.add_members(vlan, random.ports(), random.ports());
      return;
    case 2:
      tables.port_vlans.set_pvid(port, vlan);
      return;
    case 3:
      tables.stp.set_mstp(0, port, plain ? MSTP_STATE_FORWARDING : MSTP_STATE_LEARNING);
      return;
    case 4:
      tables.stp.set_stp(port, plain ? STP_STATE_FORWARDING : STP_STATE_DISABLED);
      return;
    case 5:
      if (tables.lags.exists(0) || tables.lags.create(id)) {
        if (plain) {
          tables.lags.remove(0);
        } else {
          tables.lags.add_members(0, {port, random.port()});
        }
      }
      return;
    case 6:
      tables.fdb.add_static(vlan, random.mac(), Destination::port(port));
      return;
    case 7:
      tables.fdb.add_system(vlan, random.mac());
      return;
    case 8:
    case 9:
      tables.l3.interfaces.create(
          MacAddress::from_number(random.once_in(4) ? kRouterMac + 16 : kRouterMac), vlan, id);
      return;
    case 10:
    case 11:
      tables.l3.ipv4_hosts.add(random.ip(),
                               {Destination::port(port), random.mac(), 1 + random.below(4)});
      return;
    case 12:
    case 13:
    case 14:
      tables.l3.ipv4_routes.add(random.ip(), random.below(33),
                                {Destination::port(port), random.mac(), 1 + random.below(4)});
      return;
    case 15: {
      if (tables.flows.size() > 6) tables.flows.clear();
      if (tables.flows.add(random_match(random), id) != FlowResult::done) return;
      for (unsigned i = 0; i <= (plain ? 0u : 2u); ++i) {
        FlowAction action;
        action.kind = random.once_in(5) ? OF_ACTION_SET_DST_MAC : OF_ACTION_OUTPUT;
        action.words[0] = OF_PORT_FIRST_PHYSICAL + port;
        if (random.once_in(8)) action.words[0] = OF_PORT_NORMAL;
        if (action.kind == OF_ACTION_OUTPUT && action.words[0] != OF_PORT_NORMAL) {
          action.destination = Destination::port(port);
        }
        tables.flows.add_action(id, action);
      }
      return;
    }
    case 16:
      tables.flows.clear();
      return;
    case 17:
      tables.traffic.set_forward_mode(plain ? unsigned{SWITCH_FORWARD_MODE_HYBRID}
                                            : random.below(3));
      return;
    case 18:
      tables.mirrors.set(random.port(), port, plain ? MIRROR_TYPE_NONE : MIRROR_TYPE_BOTH);
      return;
    case 19:
      tables.mac_locks.set_lock(port, !plain, random.once_in(2));
      return;
    case 20:
      tables.traffic.set_storm_limit(port, static_cast<StormKind>(random.below(3)), plain ? 0 : 5);
      return;
    case 21:
      tables.traffic.set_egress(port, plain);
      return;
    case 22:
      tables.traffic.set_l2(port, plain);
      return;
    case 23:
      tables.traffic.set_ingress_discard(
          port,
          plain ? INGRESS_DISCARD_NONE : static_cast<ingress_discard_type_t>(1 + random.below(3)));
      return;
    case 24:
      tables.ports.set_mtu(port, plain ? 1514 : 100 + random.below(100));
      return;
    case 25:
      tables.ports.set_admin(port, plain);
      return;
    case 26:
      tables.flood_blocks.set(port, random.port(),
                              static_cast<flood_block_type_t>(plain ? 0 : random.below(8)));
      tables.flood_blocks.set_to_cpu(port, static_cast<flood_block_type_t>(random.below(8)));
      return;
    case 27:
      tables.port_vlans.set_priority(port, vlan, random.below(8));
      tables.cos.set_queue(port, random.below(8), random.below(8));
      tables.port_vlans.set_accepts_untagged(port, plain);
      return;
    case 28:
      world.cpu.wants = !plain;
      return;
    case 29:
      tables.filters.clear_ip_protocols();
      if (!plain) tables.filters.add_ip_protocol(kProtocolTcp);
      return;
    case 30:
      tables.port_vlans.clear_protocol_vlans(port);
      if (!plain) tables.port_vlans.set_protocol_vlan(port, FRAME_TYPE_ETHERNET, kTypeIpv4, vlan);
      return;
    default:
      if (!plain && random.once_in(3)) tables.vlan_classes.set_mac(random.mac(), vlan, 1);
      return;
  }
}

Bytes random_frame(Random& random) {
  Bytes frame(random.once_in(30) ? random.below(20)
                                 : 60 + random.below(random.once_in(20) ? 1500 : 90));
  Bytes head;
  const auto put16 = [&](unsigned value) {
    head.push_back(static_cast<std::uint8_t>(value >> 8));
    head.push_back(static_cast<std::uint8_t>(value));
  };
  const auto put48 = [&](std::uint64_t value) {
    put16(static_cast<unsigned>(value >> 32 & 0xFFFF));
    put16(static_cast<unsigned>(value >> 16 & 0xFFFF));
    put16(static_cast<unsigned>(value & 0xFFFF));
  };
  static constexpr std::uint64_t kGroups[] = {kBroadcast, 0x01005E000001, kReservedGroup, 0};
  put48(random.once_in(4)   ? kRouterMac
        : random.once_in(5) ? kGroups[random.below(4)]
                            : random.mac().to_number());
  put48(random.once_in(40) ? random.below(2) << 8 : random.mac().to_number());
  while (random.once_in(3)) {
    put16(random.once_in(10) ? kTypeServiceTag : kTypeCustomerTag);
    put16(random.below(8) << 13 | random.below(2) << 12 | random.below(6));
  }
  static constexpr std::uint16_t kTypes[] = {kTypeIpv4, kTypeIpv4, kTypeIpv4, kTypeArp,
                                             kTypeIpv6, 0x88B5,    40};
  const std::uint16_t type = kTypes[random.below(7)];
  put16(type);
  if (type == kTypeIpv4) {
    Bytes ip(28);
    ip[0] = random.once_in(20) ? 0x46 : 0x45;
    store16(&ip[2], static_cast<std::uint16_t>(28 + random.below(random.once_in(20) ? 200 : 12)));
    ip[8] = static_cast<std::uint8_t>(random.once_in(10) ? random.below(3) : 64);
    ip[9] = random.once_in(2) ? kProtocolUdp : kProtocolTcp;
    store32(&ip[12], random.ip());
    store32(&ip[16], random.ip());
    store16(&ip[20], static_cast<std::uint16_t>(random.below(2)));
    store16(&ip[22], static_cast<std::uint16_t>(random.below(2)));
    store16(&ip[10], checksum(ip.data(), (ip[0] & 0xFu) * 4));
    if (random.once_in(20)) ++ip[10];
    head.insert(head.end(), ip.begin(), ip.end());
  }
  std::copy_n(head.begin(), std::min(head.size(), frame.size()), frame.begin());
  return frame;
}

// ---- What two worlds show -----------------------------------------------------------------------

std::vector<std::tuple<std::uint64_t, std::uint64_t, int, bool>> fdb_of(const World& world) {
  std::vector<std::tuple<std::uint64_t, std::uint64_t, int, bool>> entries;
  world.tables.fdb.for_each([&](const FdbEntry& entry) {
    entries.emplace_back(
        fdb_key(entry.vlan(), entry.mac().to_number()), entry.last_seen_seconds(),
        static_cast<int>(entry.destination().kind) << 16 | entry.destination().number, entry.hit());
  });
  return entries;
}

std::vector<std::uint64_t> counts_of(const World& world) {
  std::vector<std::uint64_t> counts;
  for (PortIndex port = 0; port < kPorts; ++port) {
    for (unsigned type = 0; type < STAT_TYPE_COUNT; ++type) {
      counts.push_back(world.tables.counters.value(port, static_cast<stat_type_t>(type)));
    }
    for (std::size_t reason = 0; reason < kDropReasons; ++reason) {
      counts.push_back(world.tables.drops.count(port, static_cast<DropReason>(reason)));
    }
  }
  world.tables.flows.for_each([&](const Flow& flow) {
    counts.push_back(flow.packets);
    counts.push_back(flow.bytes);
  });
  return counts;
}

TEST(FastPathTest, DoesWhatTheWholeWayDoes) {
  std::size_t sent = 0;
  for (std::uint32_t seed = 1; seed <= 12; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    World fast(true);
    World whole(false);
    Random random(seed);
    for (std::uint16_t vlan = 2; vlan <= 4; ++vlan) {
      for (World* world : {&fast, &whole}) {
        world->tables.vlans.create(vlan);
        world->tables.vlans.add_members(vlan, PortSet::first(4),
                                        PortSet::first(kPorts) - PortSet::first(4));
        std::uint32_t id = 0;
        world->tables.l3.interfaces.create(MacAddress::from_number(kRouterMac), vlan, id);
      }
    }
    for (int round = 0; round < 150; ++round) {
      SCOPED_TRACE("round " + std::to_string(round));
      const Random settings(random.below(1u << 31));
      if (!random.once_in(3)) {
        for (World* world : {&fast, &whole}) change_setting(*world, settings);
      }
      std::vector<Bytes> frames(1 + random.below(random.once_in(5) ? 70 : 12));
      for (Bytes& frame : frames) frame = random_frame(random);
      const PortIndex port = random.port();
      for (World* world : {&fast, &whole}) {
        world->clock.warp_ns(300'000'000);
        world->stations.sent.clear();
        world->cpu.packets.clear();
        world->receive(port, frames);
      }
      ASSERT_EQ(fast.stations.sent, whole.stations.sent);
      ASSERT_EQ(fast.cpu.packets, whole.cpu.packets);
      if (round % 5 == 4) {
        ASSERT_EQ(counts_of(fast), counts_of(whole));
        ASSERT_EQ(fdb_of(fast), fdb_of(whole));
      }
      ASSERT_EQ(fast.pool.in_use(), 0u);
      for (const auto& [port_sent, list] : fast.stations.sent) sent += list.size();
    }
  }
  EXPECT_GT(sent, 5000u);
}

}  // namespace
}  // namespace softcard
