// SPDX-License-Identifier: Apache-2.0

#include "softcard/tables/fdb_table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <tuple>
#include <utility>
#include <vector>

namespace softcard {
namespace {

const MacAddress kMac = MacAddress::from_number(0x00005E005301);
const MacAddress kOtherMac = MacAddress::from_number(0x00005E005302);
const Destination kPort1 = Destination::port(1);
const Destination kPort2 = Destination::port(2);

using Key = std::pair<std::uint16_t, std::uint64_t>;  // VLAN, MAC

// The same table in the plainest form.
struct Model {
  struct Entry {
    Destination destination;
    FdbKind kind;
    std::uint64_t last_seen;
    bool hit;
    bool operator==(const Entry& other) const {
      return destination == other.destination && kind == other.kind &&
             last_seen == other.last_seen && hit == other.hit;
    }
  };
  std::size_t capacity;
  std::map<Key, Entry> entries;

  FdbLearn learn(Key key, Destination destination, std::uint32_t now) {
    auto found = entries.find(key);
    if (found == entries.end()) {
      if (entries.size() == capacity) return FdbLearn::full;
      entries[key] = {destination, FdbKind::learned, now, false};
      return FdbLearn::added;
    }
    Entry& entry = found->second;
    const bool here = entry.destination == destination;
    if (!here && entry.kind != FdbKind::learned) return FdbLearn::pinned;
    const bool later = entry.last_seen != now;
    entry = {destination, entry.kind, now, true};
    return !here ? FdbLearn::moved : later ? FdbLearn::refreshed : FdbLearn::known;
  }
  bool configure(Key key, Destination destination, FdbKind kind, std::uint32_t now) {
    auto found = entries.find(key);
    if (found == entries.end()) {
      if (entries.size() == capacity) return false;
      entries[key] = {destination, kind, now, false};
    } else {
      found->second.destination = destination;
      found->second.kind = kind;
    }
    return true;
  }
  template <class Goes>
  std::size_t remove_if(Goes&& goes) {
    const std::size_t before = entries.size();
    for (auto it = entries.begin(); it != entries.end();) {
      it = goes(it->first, it->second) ? entries.erase(it) : std::next(it);
    }
    return before - entries.size();
  }
};

std::map<Key, Model::Entry> contents(const FdbTable& table) {
  std::map<Key, Model::Entry> result;
  table.for_each([&](const FdbEntry& e) {
    const bool fresh = result
                           .insert({{e.vlan(), e.mac().to_number()},
                                    {e.destination(), e.kind(), e.last_seen_seconds(), e.hit()}})
                           .second;
    EXPECT_TRUE(fresh) << "visited twice";
  });
  return result;
}

// Runs the same pseudo-random operations on the table and the model; the third party is a copy that
// is kept up from the reported changes alone.
TEST(FdbTable, AgreesWithModelAndReportsEveryChange) {
  constexpr std::uint32_t kAgeing = 40;
  std::mt19937 random(20240501);
  const auto below = [&](std::uint32_t n) { return static_cast<std::uint32_t>(random() % n); };
  FdbTable table(300);
  table.set_ageing_seconds(kAgeing);
  Model model{300, {}};
  std::map<Key, std::pair<Destination, FdbKind>> reported;
  table.set_observer([&](const FdbChange& change) {
    const Key key{change.vlan, change.mac.to_number()};
    const bool known = reported.count(key) != 0;
    ASSERT_EQ(known, change.what != FdbChange::What::added);
    if (change.what == FdbChange::What::moved) {
      ASSERT_EQ(reported[key].first, change.previous);
    }
    if (change.what == FdbChange::What::removed) {
      ASSERT_EQ(reported[key], std::make_pair(change.destination, change.kind));
      reported.erase(key);
    } else {
      reported[key] = {change.destination, change.kind};
    }
  });

  std::uint32_t now = 1000;
  std::map<FdbLearn, int> seen;
  for (int round = 0; round < 60000; ++round) {
    SCOPED_TRACE(round);
    const auto vlan = static_cast<std::uint16_t>(4090 + below(6));
    const std::uint64_t number = 0xFE0000000000u + below(90) * 0x10001u;
    const MacAddress mac = MacAddress::from_number(number);
    const Key key{vlan, number};
    const auto n = static_cast<std::uint16_t>(below(5));
    const Destination where = below(2) != 0 ? Destination::port(n) : Destination::lag(n);
    const std::uint32_t what = below(1000);
    if (what < 850) {
      const FdbLearn result = table.learn(vlan, mac, where, now);
      ASSERT_EQ(result, model.learn(key, where, now));
      ++seen[result];
    } else if (what < 880) {
      ASSERT_EQ(table.add_static(vlan, mac, where, now),
                model.configure(key, where, FdbKind::static_entry, now));
    } else if (what < 890) {
      ASSERT_EQ(table.add_system(vlan, mac, now),
                model.configure(key, Destination::cpu(), FdbKind::system_entry, now));
    } else if (what < 950) {
      ASSERT_EQ(table.remove(vlan, mac), model.entries.erase(key) == 1);
    } else if (what < 960) {
      ASSERT_EQ(table.remove_mac(mac),
                model.remove_if([&](const Key& k, auto&) { return k.second == number; }));
    } else if (what < 970) {
      now += below(8);
      ASSERT_EQ(table.age(now), model.remove_if([&](auto&, const Model::Entry& e) {
        return e.kind == FdbKind::learned && now - e.last_seen >= kAgeing;
      }));
    } else if (what < 980) {
      FdbFilter filter;
      if (below(3) != 0) filter.vlan = vlan;
      if (below(50) != 0) filter.destination = where;
      filter.up_to = static_cast<FdbKind>(below(3));
      ASSERT_EQ(table.flush(filter), model.remove_if([&](const Key& k, const Model::Entry& e) {
        return e.kind <= filter.up_to && (!filter.vlan || *filter.vlan == k.first) &&
               (!filter.destination || *filter.destination == e.destination);
      }));
    }
    const FdbEntry* found = table.find(vlan, mac);
    ASSERT_EQ(found != nullptr, model.entries.count(key) == 1);
    ASSERT_EQ(table.size(), model.entries.size());
    if (round % 500 != 0) continue;
    ASSERT_EQ(contents(table), model.entries);
    ASSERT_EQ(reported.size(), model.entries.size());
    std::size_t on_where = 0, in_vlan = 0, learned = 0;
    for (const auto& [k, e] : model.entries) {
      ASSERT_EQ(reported[k], std::make_pair(e.destination, e.kind));
      if (e.kind != FdbKind::learned) continue;
      ++learned;
      on_where += e.destination == where;
      in_vlan += k.first == vlan;
    }
    ASSERT_EQ(std::make_tuple(table.learned(), table.learned_on(where), table.learned_in(vlan)),
              std::make_tuple(learned, on_where, in_vlan));
  }
  EXPECT_EQ(seen.size(), 6u) << "the operations do not reach every result";
}

TEST(FdbTable, FullTableRefusesNewAndStillChangesOld) {
  constexpr std::uint32_t kCapacity = 1000;
  FdbTable table(kCapacity);
  for (std::uint32_t i = 0; i < kCapacity; ++i) {
    ASSERT_EQ(table.learn(1, MacAddress::from_number(i), kPort1, 0), FdbLearn::added);
  }
  const auto before = contents(table);
  EXPECT_EQ(table.learn(1, kMac, kPort1, 0), FdbLearn::full);
  EXPECT_FALSE(table.add_static(1, kMac, kPort1));
  EXPECT_FALSE(table.add_system(1, kMac));
  EXPECT_EQ(contents(table), before);
  EXPECT_EQ(table.learn(1, MacAddress::from_number(7), kPort2, 0), FdbLearn::moved);
  EXPECT_TRUE(table.add_static(1, MacAddress::from_number(8), kPort2));
  EXPECT_TRUE(table.remove(1, MacAddress::from_number(9)));
  EXPECT_EQ(table.learn(1, kMac, kPort1, 0), FdbLearn::added);
}

TEST(FdbTable, AgesToTheSecond) {
  FdbTable table(16);
  table.set_ageing_seconds(300);
  table.learn(1, kMac, kPort1, 0);
  table.add_static(1, kOtherMac, kPort1);
  EXPECT_EQ(table.age(299), 0u);
  table.touch(*table.find(1, kMac), 299);
  EXPECT_EQ(table.age(598), 0u);
  table.set_ageing_seconds(0);
  EXPECT_EQ(table.age(4000000000u), 0u);
  table.set_ageing_seconds(300);
  EXPECT_EQ(table.age(599), 1u);
  EXPECT_EQ(table.size(), 1u);
}

// Times that 32 bits do not hold, and an age of exactly what they count.
TEST(FdbTable, AgesOverCenturies) {
  constexpr std::uint64_t kTurn = std::uint64_t{1} << 32;
  for (const std::uint64_t start : {kTurn - 10, kTurn, 4 * kTurn - 1}) {
    FdbTable table(16);
    table.learn(1, kMac, kPort1, start);
    EXPECT_EQ(table.find(1, kMac)->last_seen_seconds(), start);
    EXPECT_EQ(table.learn(1, kMac, kPort1, start), FdbLearn::known);
    EXPECT_EQ(table.age(start + 299), 0u);
    table.touch(*table.find(1, kMac), start + 299);
    EXPECT_EQ(table.find(1, kMac)->last_seen_seconds(), start + 299);
    EXPECT_EQ(table.age(start + 598), 0u);
    EXPECT_EQ(table.age(start + 599), 1u);
    table.learn(1, kMac, kPort1, start);
    EXPECT_EQ(table.learn(1, kMac, kPort1, start + kTurn), FdbLearn::refreshed);
    EXPECT_EQ(table.age(start + 2 * kTurn), 1u);
  }
}

// Entries that age together, and those of a walk, come by VLAN and address under any hash.
TEST(FdbTable, OrderDoesNotDependOnTheHash) {
  for (std::uint64_t seed = 0; seed < 3; ++seed) {
    FdbTable table(500, KeyedHash(seed));
    std::vector<std::uint64_t> aged;
    for (std::uint32_t i = 0; i < 500; ++i) {
      table.learn(static_cast<std::uint16_t>(i % 7), MacAddress::from_number(i * 7919 % 500),
                  i % 5 == 0 ? kPort2 : kPort1, i % 3);
    }
    table.set_observer([&](const FdbChange& change) {
      EXPECT_EQ(change.cause, FdbChange::Cause::aged);
      aged.push_back(fdb_key(change.vlan, change.mac.to_number()));
    });
    std::vector<std::uint64_t> walked;
    table.for_each([&](const FdbEntry& entry) {
      walked.push_back(fdb_key(entry.vlan(), entry.mac().to_number()));
    });
    EXPECT_TRUE(std::is_sorted(walked.begin(), walked.end()));
    EXPECT_EQ(walked.size(), 500u);
    EXPECT_EQ(table.age(300), 167u);
    EXPECT_TRUE(std::is_sorted(aged.begin(), aged.end()));
    EXPECT_EQ(table.age(301), 167u);
    EXPECT_EQ(table.age(302), 166u);
    EXPECT_EQ(aged.size(), 500u);
  }
}

// With a known seed one can choose addresses of one bucket; under another they spread.
TEST(FdbTable, AddressesChosenForOneSeedDoNotCollideUnderAnother) {
  constexpr std::size_t kChosen = 256;
  constexpr unsigned kBucketBits = 9;  // 1024 entries in places for twice as many, four a bucket
  const KeyedHash known(1);
  std::vector<MacAddress> macs;
  for (std::uint64_t mac = 0x020000000000; macs.size() < kChosen; ++mac) {
    if (known.spread(fdb_key(1, mac)) >> (64 - kBucketBits) == 0) {
      macs.push_back(MacAddress::from_number(mac));
    }
  }
  const auto longest = [&](FdbTable table) {
    for (const MacAddress& mac : macs) table.learn(1, mac, kPort1, 0);
    return table.longest_search();
  };
  EXPECT_EQ(longest(FdbTable(1024, known)), kChosen / 4);
  for (std::uint64_t seed = 2; seed < 6; ++seed) {
    EXPECT_LE(longest(FdbTable(1024, KeyedHash(seed))), 3u) << seed;
  }
  EXPECT_LE(longest(FdbTable(1024)), 8u) << "one that is drawn";
}

TEST(FdbTable, WalkMayRemoveWhatItVisits) {
  FdbTable table(500);
  for (std::uint32_t i = 0; i < 500; ++i) {
    table.learn(static_cast<std::uint16_t>(i % 7), MacAddress::from_number(i), kPort1, 0);
  }
  std::size_t visited = 0;
  table.for_each([&](const FdbEntry& entry) {
    ++visited;
    table.remove(entry.vlan(), entry.mac());
  });
  EXPECT_EQ(visited, 500u);
  EXPECT_EQ(table.size(), 0u);
}

}  // namespace
}  // namespace softcard
