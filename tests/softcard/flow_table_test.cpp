// SPDX-License-Identifier: Apache-2.0

#include "softcard/tables/flow_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <map>
#include <random>
#include <vector>

namespace softcard {
namespace {

// A frame as a matcher of plain fields sees it.
struct Frame {
  PortIndex in_port = 1;
  MacAddress source, destination;
  std::uint16_t vlan = 1;
  std::uint8_t priority = 0;
  std::uint16_t ether_type = 0x0800;
  bool has_ip = false, has_tos = false, has_ipv4 = false, has_l4 = false;
  Ipv4 ip_source = 0, ip_destination = 0;
  std::uint8_t protocol = 0, tos = 0;
  std::uint16_t l4_source = 0, l4_destination = 0;
  std::array<std::uint8_t, 64> bytes{};

  FlowKey key() const {
    FlowKey key;
    key.set_ethernet(in_port, source.to_number(), destination.to_number(), vlan, priority,
                     ether_type);
    if (has_ip) key.set_ip_protocol(protocol);
    if (has_tos) key.set_tos(tos);
    if (has_ipv4) key.set_ipv4(ip_source, ip_destination);
    if (has_l4) key.set_l4_ports(l4_source, l4_destination);
    return key;
  }
  UdfReader reader() const {
    return {bytes.data(), static_cast<std::uint32_t>(bytes.size()), has_ip ? 14u : 0u,
            has_l4 ? 34u : 0u};
  }
};

bool udf_matches(const FlowUdf& udf, const Frame& frame) {
  if (udf.mask == 0) return true;
  const UdfReader reader = frame.reader();
  std::uint32_t start = 0;
  if (udf.base == FlowUdfBase::l3) start = reader.l3_offset_bytes;
  if (udf.base == FlowUdfBase::l4) start = reader.l4_offset_bytes;
  if (udf.base != FlowUdfBase::frame && start == 0) return false;
  std::uint32_t value = 0;
  for (std::uint32_t i = 0; i < 4; ++i) {
    if (start + udf.offset_bytes + i >= frame.bytes.size()) return false;
    value = value * 256 + frame.bytes[start + udf.offset_bytes + i];
  }
  return (value & udf.mask) == (udf.value & udf.mask);
}

bool matches(const FlowMatch& m, const Frame& f) {
  const auto differs = [&](std::uint32_t field, bool present, auto wanted, auto actual) {
    return (m.fields & field) != 0 && (!present || wanted != actual);
  };
  return !differs(kFlowInPort, true, m.in_port, f.in_port) &&
         !differs(kFlowSourceMac, true, m.source_mac, f.source) &&
         !differs(kFlowDestinationMac, true, m.destination_mac, f.destination) &&
         !differs(kFlowVlan, true, m.vlan, f.vlan) &&
         !differs(kFlowPriority, true, m.priority, f.priority) &&
         !differs(kFlowEtherType, true, m.ether_type, f.ether_type) &&
         !differs(kFlowIpv4Source, f.has_ipv4, m.ipv4_source & m.ipv4_source_mask,
                  f.ip_source & m.ipv4_source_mask) &&
         !differs(kFlowIpv4Destination, f.has_ipv4, m.ipv4_destination & m.ipv4_destination_mask,
                  f.ip_destination & m.ipv4_destination_mask) &&
         !differs(kFlowIpProtocol, f.has_ip, m.ip_protocol, f.protocol) &&
         !differs(kFlowTos, f.has_tos, m.tos, f.tos) &&
         !differs(kFlowL4Source, f.has_l4, m.l4_source, f.l4_source) &&
         !differs(kFlowL4Destination, f.has_l4, m.l4_destination, f.l4_destination) &&
         udf_matches(m.udf, f);
}

class FlowTableTest : public ::testing::Test {
 protected:
  unsigned below(unsigned n) { return static_cast<unsigned>(random_() % n); }
  std::uint8_t byte_below(unsigned n) { return static_cast<std::uint8_t>(below(n)); }
  std::uint16_t word_below(unsigned n) { return static_cast<std::uint16_t>(below(n)); }
  MacAddress mac() { return MacAddress::from_number(0xFE0000000000u + below(2)); }
  Ipv4 ip() { return 0xC0000200u + below(2) * 0x10000u + below(4); }

  // Few values a field, so that flows overlap and frames match.
  FlowMatch random_match() {
    static const std::uint32_t kFields[] = {0,
                                            kFlowInPort,
                                            kFlowSourceMac | kFlowVlan,
                                            kFlowDestinationMac,
                                            kFlowPriority,
                                            kFlowEtherType,
                                            kFlowIpv4Source,
                                            kFlowIpv4Destination,
                                            kFlowIpv4Source | kFlowIpv4Destination,
                                            kFlowIpProtocol | kFlowTos,
                                            kFlowL4Source,
                                            kFlowIpProtocol | kFlowL4Destination};
    static const Ipv4 kMasks[] = {0xFFFFFFFF, 0xFFFF0000, 0x00000001, 0};
    FlowMatch m;
    m.fields = kFields[below(12)] | (below(3) == 0 ? kFields[below(12)] : 0);
    m.in_port = word_below(2);
    m.source_mac = mac();
    m.destination_mac = mac();
    m.vlan = word_below(2);
    m.priority = byte_below(2);
    m.ether_type = word_below(2);
    m.ipv4_source = ip();
    m.ipv4_source_mask = kMasks[below(4)];
    m.ipv4_destination = ip();
    m.ipv4_destination_mask = kMasks[below(4)];
    m.ip_protocol = byte_below(2);
    m.tos = byte_below(2);
    m.l4_source = word_below(2);
    m.l4_destination = word_below(2);
    if (below(4) == 0) {
      m.udf = {static_cast<FlowUdfBase>(below(3)), below(4) * 20, below(3) << 24 | below(3),
               below(2) != 0 ? 0xFF000000u : 0x000000FFu};
    }
    return m;
  }
  Frame random_frame() {
    Frame f;
    f.in_port = word_below(2);
    f.source = mac();
    f.destination = mac();
    f.vlan = word_below(2);
    f.priority = byte_below(2);
    f.ether_type = word_below(2);
    f.has_ip = below(4) != 0;
    f.has_tos = f.has_ip && below(4) != 0;
    f.has_ipv4 = f.has_ip && below(4) != 0;
    f.has_l4 = f.has_ip && below(2) != 0;
    f.ip_source = ip();
    f.ip_destination = ip();
    f.protocol = byte_below(2);
    f.tos = byte_below(2);
    f.l4_source = word_below(2);
    f.l4_destination = word_below(2);
    for (std::uint8_t& byte : f.bytes) byte = byte_below(3);
    return f;
  }

 private:
  std::mt19937 random_{20240503};
};

TEST_F(FlowTableTest, LookupAgreesWithBruteForce) {
  struct Entry {
    FlowMatch match;
    std::int32_t priority;
  };
  constexpr std::size_t kCapacity = 250;
  FlowTable table(kCapacity);
  std::map<std::uint32_t, Entry> model;
  const auto some_id = [&] {
    auto it = model.begin();
    std::advance(it, below(static_cast<unsigned>(model.size())));
    return it->first;
  };
  int hits = 0, misses = 0, full = 0;
  for (int round = 0; round < 30000; ++round) {
    SCOPED_TRACE(round);
    const unsigned what = below(1000);
    const FlowMatch match = random_match();
    const std::int32_t priority = static_cast<std::int32_t>(below(6)) - 2;
    if (what < 450) {
      std::uint32_t id = 0;
      std::uint32_t lowest = 1;
      while (model.count(lowest) != 0) ++lowest;
      const FlowResult result = table.add(match, id, priority);
      if (model.size() == kCapacity) {
        ASSERT_EQ(result, FlowResult::full);
        ASSERT_EQ(id, 0u);
        ++full;
      } else {
        ASSERT_EQ(result, FlowResult::done);
        ASSERT_EQ(id, lowest);
        model[id] = {match, priority};
      }
    } else if (what < 550) {
      const std::uint32_t id = below(2) != 0 ? below(300) : 0xFFFFFFFFu - below(20);
      const FlowResult result = table.add_with_id(match, id, priority);
      ASSERT_EQ(result, model.count(id) != 0        ? FlowResult::id_taken
                        : model.size() == kCapacity ? FlowResult::full
                                                    : FlowResult::done);
      if (result == FlowResult::done) model[id] = {match, priority};
    } else if (what < 850 && !model.empty()) {
      const std::uint32_t id = some_id();
      ASSERT_EQ(table.remove(id), FlowResult::done);
      model.erase(id);
      ASSERT_EQ(table.remove(id), FlowResult::no_flow);
    } else if (what < 950 && !model.empty()) {
      const std::uint32_t id = some_id();
      ASSERT_EQ(table.set_priority(id, priority), FlowResult::done);
      model[id].priority = priority;
    } else if (what == 999 && below(5) == 0) {
      table.clear();
      model.clear();
    }
    ASSERT_EQ(table.size(), model.size());

    const Frame frame = random_frame();
    const Flow* found = table.lookup(frame.key(), frame.reader());
    auto best = model.end();
    for (auto it = model.begin(); it != model.end(); ++it) {  // ascending ids
      if (!matches(it->second.match, frame)) continue;
      if (best == model.end() || it->second.priority > best->second.priority) best = it;
    }
    ASSERT_EQ(found != nullptr, best != model.end());
    if (found == nullptr) {
      ++misses;
      continue;
    }
    ++hits;
    ASSERT_EQ(found->id, best->first);
    ASSERT_EQ(found->priority, best->second.priority);
    ASSERT_EQ(table.get(found->id), found);
  }
  EXPECT_GT(std::min({hits, misses, full}), 50);
  while (!model.empty()) {
    ASSERT_EQ(table.remove(model.begin()->first), FlowResult::done);
    model.erase(model.begin());
  }
  EXPECT_EQ(table.subtables(), 0u);
}

// What the fields say under the mask of each of them: one bit off in any field is another frame.
TEST_F(FlowTableTest, EveryFieldCounts) {
  Frame frame;
  frame.has_ip = frame.has_tos = frame.has_ipv4 = frame.has_l4 = true;
  FlowMatch match;
  match.fields = (kFlowL4Destination << 1) - 1;
  match.in_port = frame.in_port = 0xFFFF;
  match.source_mac = frame.source = MacAddress::from_number(0xFEDCBA987654);
  match.destination_mac = frame.destination = MacAddress::from_number(0x0123456789AB);
  match.vlan = frame.vlan = 4095;
  match.priority = frame.priority = 5;
  match.ether_type = frame.ether_type = 0x8100;
  match.ipv4_source = frame.ip_source = 0xC0000201;
  match.ipv4_destination = frame.ip_destination = 0xC6336401;
  match.ipv4_source_mask = match.ipv4_destination_mask = 0xFFFFFFFF;
  match.ip_protocol = frame.protocol = 6;
  match.tos = frame.tos = 0xB8;
  match.l4_source = frame.l4_source = 0x8001;
  match.l4_destination = frame.l4_destination = 443;
  FlowTable table;
  std::uint32_t id = 0;
  ASSERT_EQ(table.add(match, id), FlowResult::done);
  ASSERT_NE(table.lookup(frame.key(), frame.reader()), nullptr);

  using Change = void (*)(Frame&);
  const Change changes[] = {
      [](Frame& f) { f.in_port ^= 0x8000; },
      [](Frame& f) { f.source.bytes[0] ^= 0x80; },
      [](Frame& f) { f.destination.bytes[5] ^= 1; },
      [](Frame& f) { f.vlan ^= 0x800; },
      [](Frame& f) { f.priority ^= 4; },
      [](Frame& f) { f.ether_type ^= 1; },
      [](Frame& f) { f.ip_source ^= 0x80000000; },
      [](Frame& f) { f.ip_destination ^= 1; },
      [](Frame& f) { f.protocol ^= 0x80; },
      [](Frame& f) { f.tos ^= 1; },
      [](Frame& f) { f.l4_source ^= 0x8000; },
      [](Frame& f) { f.l4_destination ^= 1; },
      [](Frame& f) { f.has_l4 = false; },
      [](Frame& f) { f.has_ipv4 = false; },
      [](Frame& f) { f.has_tos = false; },
  };
  for (std::size_t i = 0; i < std::size(changes); ++i) {
    Frame other = frame;
    changes[i](other);
    EXPECT_EQ(table.lookup(other.key(), other.reader()), nullptr) << "change " << i;
  }

  FlowMatch bad;
  bad.fields = kFlowVlan;
  bad.vlan = 4096;
  EXPECT_EQ(table.add(bad, id), FlowResult::bad_match);
  bad = FlowMatch();
  bad.fields = kFlowPriority;
  bad.priority = 8;
  EXPECT_EQ(table.add(bad, id), FlowResult::bad_match);
  EXPECT_EQ(table.size(), 1u);
}

// The search order follows what comes and goes: a low flow never hides a high one, and once the
// high ones are gone the bound of their subtable comes down so far that results stay right.
TEST_F(FlowTableTest, PrioritiesFallAndRise) {
  FlowTable table;
  FlowMatch by_port, by_vlan;
  by_port.fields = kFlowInPort;
  by_vlan.fields = kFlowVlan;
  by_vlan.vlan = 1;
  Frame frame;
  ASSERT_EQ(table.add_with_id(by_vlan, 5000, 50), FlowResult::done);
  for (std::uint32_t i = 0; i < 100; ++i) {
    by_port.in_port = frame.in_port = static_cast<PortIndex>(i);
    ASSERT_EQ(table.add_with_id(by_port, i, static_cast<std::int32_t>(i)), FlowResult::done);
    ASSERT_EQ(table.lookup(frame.key(), frame.reader())->id, i <= 50 && i != 50 ? 5000u : i);
  }
  for (std::uint32_t i = 100; i-- > 0;) {
    frame.in_port = static_cast<PortIndex>(i);
    ASSERT_EQ(table.remove(i), FlowResult::done);
    ASSERT_EQ(table.lookup(frame.key(), frame.reader())->id, 5000u);
  }
}

TEST_F(FlowTableTest, FreedIdsComeBackLowestFirst) {
  FlowTable table(10000);
  const auto next_id = [&] {
    std::uint32_t id = 0;
    EXPECT_EQ(table.add(FlowMatch(), id), FlowResult::done);
    return id;
  };
  ASSERT_EQ(table.add_with_id(FlowMatch(), 0), FlowResult::done);
  ASSERT_EQ(table.add_with_id(FlowMatch(), 9001), FlowResult::done);
  for (std::uint32_t id = 1; id <= 9000; ++id) ASSERT_EQ(next_id(), id);
  for (std::uint32_t id : {8999u, 4096u, 64u, 4097u, 0u}) {
    ASSERT_EQ(table.remove(id), FlowResult::done);
  }
  for (std::uint32_t id : {64u, 4096u, 4097u, 8999u, 9002u}) EXPECT_EQ(next_id(), id);
}

TEST_F(FlowTableTest, ActionsKeepTheirOrderAndCountersCount) {
  FlowTable table;
  std::uint32_t id = 0;
  ASSERT_EQ(table.add(FlowMatch(), id), FlowResult::done);
  const auto action = [](std::uint32_t n) {
    return FlowAction{n % 3, {n, 0, ~n}, Destination::port(static_cast<PortIndex>(n))};
  };
  const auto list = [&] {
    const FlowActions& actions = table.actions(*table.get(id));
    return std::vector<FlowAction>(actions.begin(), actions.end());
  };
  for (std::uint32_t n = 0; n < kMaxFlowActions; ++n) {
    EXPECT_EQ(table.add_action(id, action(n)), FlowResult::done);
  }
  EXPECT_EQ(table.add_action(id, action(3)), FlowResult::exists);
  EXPECT_EQ(table.add_action(id, action(99)), FlowResult::full_of_actions);
  EXPECT_EQ(table.remove_action(id, action(99)), FlowResult::no_action);
  EXPECT_EQ(table.remove_action(id, action(3)), FlowResult::done);
  EXPECT_EQ(table.add_action(id, action(3)), FlowResult::done);
  std::vector<FlowAction> expected;
  for (std::uint32_t n : {0u, 1u, 2u, 4u, 5u, 6u, 7u, 3u}) expected.push_back(action(n));
  EXPECT_EQ(list(), expected);
  EXPECT_EQ(table.clear_actions(id), FlowResult::done);
  EXPECT_TRUE(list().empty());

  const Frame frame;
  for (std::uint32_t bytes : {64u, 1500u}) {
    table.count(*table.lookup(frame.key(), frame.reader()), bytes);
  }
  EXPECT_EQ(table.get(id)->packets, 2u);
  EXPECT_EQ(table.get(id)->bytes, 1564u);

  // A flow that takes the place of a removed one starts afresh.
  ASSERT_EQ(table.add_action(id, action(1)), FlowResult::done);
  ASSERT_EQ(table.remove(id), FlowResult::done);
  ASSERT_EQ(table.add(FlowMatch(), id), FlowResult::done);
  EXPECT_EQ(table.get(id)->packets, 0u);
  EXPECT_TRUE(list().empty());
  for (const FlowResult result :
       {table.add_action(77, action(1)), table.remove_action(77, action(1)),
        table.clear_actions(77), table.set_priority(77, 1)}) {
    EXPECT_EQ(result, FlowResult::no_flow);
  }
}

}  // namespace
}  // namespace softcard
