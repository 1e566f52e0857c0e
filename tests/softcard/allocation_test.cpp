// SPDX-License-Identifier: Apache-2.0
//
// Operations that allocate nothing: counted in a program of its own, whose operator new counts.

#include <gtest/gtest.h>

#include "softcard/card.h"
#include "softcard/frames/frame_text.h"
#include "tests/softcard/own_new.h"

namespace softcard {

namespace {
std::size_t allocations = 0;
}  // namespace

void before_allocation() { ++allocations; }

namespace {

// Takes frames and gives them back to the pool.
class DrainCable : public Cable {
 public:
  void plug(CableSink&, PortIndex) override {}
  std::size_t transmit(FramePtr* frames, std::size_t count) override {
    for (std::size_t i = 0; i < count; ++i) frames[i].reset();
    sent += count;
    return count;
  }
  bool carrier() const override { return true; }
  std::string describe() const override { return "drain"; }

  std::size_t sent = 0;
};

TEST(Allocation, NoneOnTheWayOfAFrame) {
  CardDescription description;
  description.ports.resize(4);
  Card card(description, std::make_shared<VirtualClock>());
  DrainCable* drains[4];
  for (const PortIndex port : card.tables().ports.all()) {
    auto drain = std::make_unique<DrainCable>();
    drains[port] = drain.get();
    card.plug(port, std::move(drain));
  }
  std::uint32_t interface = 0, flow = 0;
  card.tables().l3.interfaces.create(MacAddress::from_number(0x00005e005301), 1, interface);
  card.tables().l3.ipv4_routes.add(0xc6336400, 24,
                                   {Destination::port(2), MacAddress::from_number(2), interface});
  FlowMatch match;
  match.fields = kFlowEtherType;
  match.ether_type = 0x88b6;
  card.tables().flows.add(match, flow);
  card.tables().flows.add_action(flow, {OF_ACTION_SET_VLAN_ID, {7, 0, 0}, {}});
  card.tables().flows.add_action(
      flow, {OF_ACTION_OUTPUT, {OF_PORT_FIRST_PHYSICAL + 3, 0, 0}, Destination::port(3)});
  card.tables().mirrors.set(3, 1, MIRROR_TYPE_INGRESS);

  const char* const kFrames[] = {
      "eth src=00:00:5e:00:53:0a dst=00:00:5e:00:53:0b",  // unknown, later known
      "eth src=00:00:5e:00:53:0b dst=ff:ff:ff:ff:ff:ff vlan=1",
      ("eth src=00:00:5e:00:53:0b dst=00:00:5e:00:53:01 ipv4 src=192.0.2.1 dst=198.51.100.7 udp "
       "sport=1 dport=2"),
      "eth src=00:00:5e:00:53:0b dst=00:00:5e:00:53:0a type=0x88b6",
      "eth src=00:00:5e:00:53:0b dst=00:00:5e:00:53:0a vlan=9",  // dropped
  };
  std::vector<std::vector<std::uint8_t>> frames(std::size(kFrames));
  std::string error;
  for (std::size_t i = 0; i < frames.size(); ++i) {
    ASSERT_TRUE(parse_frame(kFrames[i], frames[i], error)) << error;
  }
  const auto round = [&] {
    for (const auto& bytes : frames) {
      for (const PortIndex port : {PortIndex{0}, PortIndex{1}}) {
        std::array<FramePtr, 40> burst;
        for (FramePtr& frame : burst) frame = card.frame_pool().make(bytes.data(), bytes.size());
        card.frames_arrived(port, burst.data(), burst.size());
      }
    }
  };
  round();  // the pool makes its frames
  std::size_t sent = 0;
  for (DrainCable* drain : drains) sent -= drain->sent;
  const std::size_t before = allocations;
  for (int i = 0; i < 20; ++i) round();
  EXPECT_TRUE(before > 0 && allocations == before) << allocations - before;
  for (DrainCable* drain : drains) sent += drain->sent;
  // From port 0 and 1, whose frames are mirrored: 1 and 0 to the station, 3 and 3 flooded, 1 and 1
  // routed, 1 and 1 by the flow, and 5 copies.
  EXPECT_EQ(sent, 20u * 40 * 16);
}

TEST(Allocation, NoneForRoutesAndHostsInTheRoomOfOthers) {
  L3Table l3;
  // Other addresses and next hops in each round, so that those of the last one must have gone.
  const auto round = [&](std::uint32_t n) {
    // Under few short prefixes, so that the nodes of the tries fill up.
    const auto ip = [&](std::uint32_t i) { return (10 + n) << 24 | (i * 0x9E3779B1u >> 14); };
    const auto ip6 = [&](std::uint32_t i) {
      const std::uint32_t low = ip(i);
      Ipv6Address address{{0x20, 0x01, 0x0D, 0xB8}};
      for (unsigned b = 0; b < 4; ++b) address.bytes[4 + b] = low >> (24 - 8 * b) & 0xFF;
      return address;
    };
    for (std::uint32_t i = 0; i < 1024; ++i) {
      // Then with other MAC addresses, which replace the first.
      for (const std::uint64_t again : {0u, 1u}) {
        const auto mac = MacAddress::from_number((std::uint64_t{n} << 20 | i / 2) << 1 | again);
        const NextHop hop{Destination::port(1), mac, 3};
        ASSERT_TRUE(succeeded(l3.ipv4_routes.add(ip(i), 18 + i % 15, hop)));
        ASSERT_TRUE(succeeded(l3.ipv6_routes.add(ip6(i), 40 + i % 25, hop)));
        ASSERT_TRUE(succeeded(l3.ipv4_hosts.add(ip(i), hop)));
      }
    }
    l3.ipv4_routes.remove_by_interface(3);
    l3.ipv6_routes.remove_by_interface(3);
    l3.ipv4_hosts.remove_by_interface(3);
    ASSERT_EQ(l3.ipv4_routes.size() + l3.ipv6_routes.size() + l3.ipv4_hosts.size(), 0u);
  };
  round(0);
  const std::size_t before = allocations;
  for (std::uint32_t n = 1; n <= 40; ++n) round(n);
  EXPECT_TRUE(before > 0 && allocations == before) << allocations - before;
}

// The index of a subtable goes and comes with it; all else is used again.
TEST(Allocation, NoMoreForFlowsAndInterfacesInTheRoomOfOthers) {
  FlowTable flows;
  L3InterfaceTable interfaces(4096);
  const auto round = [&](std::uint32_t n) {
    for (std::uint32_t i = 0; i < 700; ++i) {
      FlowMatch match;  // a mask of its own for each sixteenth
      match.fields = kFlowIpv4Source;
      match.ipv4_source = n << 16 | i;
      match.ipv4_source_mask = i % 16 == 0 ? 0xffffu | i << 12 : ~0u;
      ASSERT_EQ(flows.add_with_id(match, i + 1, static_cast<std::int32_t>(i % 7)),
                FlowResult::done);
      for (std::uint32_t action = 0; action < i % 4; ++action) {
        ASSERT_EQ(flows.add_action(i + 1, {action, {}, {}}), FlowResult::done);
      }
      ASSERT_TRUE(succeeded(interfaces.create_with_id(MacAddress::from_number(n << 10 | i), 1,
                                                      i % 2 == 0 ? i : ~i, false)));
      ASSERT_EQ(interfaces.create_with_id(MacAddress::from_number(n << 10 | i), 2,
                                          i % 2 == 0 ? i : ~i, true),
                L3Add::replaced);
    }
    for (std::uint32_t i = 0; i < 700; ++i) {
      // The last action goes alone or with the others, or with the flow.
      for (std::uint32_t action = 0; i % 3 == 0 && action < i % 4; ++action) {
        ASSERT_EQ(flows.remove_action(i + 1, {action, {}, {}}), FlowResult::done);
      }
      if (i % 3 == 1) {
        ASSERT_EQ(flows.clear_actions(i + 1), FlowResult::done);
      }
      ASSERT_EQ(flows.remove(i + 1), FlowResult::done);
      ASSERT_TRUE(interfaces.remove(i % 2 == 0 ? i : ~i));
    }
    ASSERT_EQ(flows.size() + flows.subtables() + interfaces.size(), 0u);
  };
  round(0);
  std::size_t of_a_round = 0;
  for (std::uint32_t n = 1; n <= 20; ++n) {
    const std::size_t before = allocations;
    round(n);
    if (n == 1) of_a_round = allocations - before;
    EXPECT_EQ(allocations - before, of_a_round) << n;
  }
}

}  // namespace
}  // namespace softcard
