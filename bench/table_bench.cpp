// SPDX-License-Identifier: Apache-2.0
//
// Measures the FDB, the routes, the hosts and the flows of the software line card alone, on one
// core: nanoseconds of processor time an operation. What the rows show is said in rows.h. What a
// client does with the same tables, through the library, is measured by binding_bench.
//
// A lookup stands for itself in one row and, where the pipeline looks up a burst of frames at a
// time so that they wait for memory together, in batches in another.
//
//   table_bench [part of a row's name]

#include <algorithm>
#include <cstdint>
#include <memory>
#include <random>
#include <vector>

#include "bench/rows.h"
#include "softcard/tables/fdb_table.h"
#include "softcard/tables/flow_table.h"
#include "softcard/tables/l3_table.h"

namespace {

using namespace softcard;

using namespace bench;

constexpr std::size_t kBatch = 32;
// The same in every run, so that runs compare.
const KeyedHash kHash(1);

// Lookups add their results here, so that the compiler does not leave them out.
volatile std::uint64_t sink;

// Measures work(table, i) for each i below `entries` on tables that prepare(table, entries) made,
// as many tables as make the time long enough to measure.
template <class Make, class Prepare, class Work>
Measure per_entry(Make make, Prepare prepare, Work work) {
  return [=](std::size_t entries, std::size_t* operations) {
    double nanoseconds = 0;
    const std::size_t tables = std::max<std::size_t>(1, 20000 / entries);
    for (std::size_t t = 0; t < tables; ++t) {
      auto table = make();
      prepare(*table, entries);
      const Stopwatch watch;
      for (std::size_t i = 0; i < entries; ++i) work(*table, i);
      nanoseconds += watch.nanoseconds();
    }
    *operations = tables * entries;
    return nanoseconds;
  };
}

// Measures lookups in one table: query(i) is what asks for entry i, work(table, queries) looks up
// kBatch of them and returns something that depends on all.
template <class Make, class Prepare, class Query, class Work>
Measure batches(Make make, Prepare prepare, Query query, Work work) {
  return [=](std::size_t entries, std::size_t* operations) {
    constexpr std::size_t kOperations = 1000000 / kBatch * kBatch;
    auto table = make();
    prepare(*table, entries);
    std::mt19937 random(7);
    std::vector<decltype(query(0))> queries;
    for (std::size_t i = 0; i < kOperations; ++i) queries.push_back(query(random() % entries));
    std::uint64_t sum = 0;
    const Stopwatch watch;
    for (std::size_t i = 0; i < kOperations; i += kBatch) sum += work(*table, &queries[i]);
    const double nanoseconds = watch.nanoseconds();
    sink = sum;
    *operations = kOperations;
    return nanoseconds;
  };
}

// A work for batches() out of a lookup of one entry.
template <class Lookup>
auto one_by_one(Lookup lookup) {
  return [=](const auto& table, const auto* queries) {
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i < kBatch; ++i) sum += lookup(table, queries[i]);
    return sum;
  };
}

const auto kNothing = [](auto&, std::size_t) {};

template <class Insert>
auto filled_by(Insert insert) {
  return [=](auto& table, std::size_t entries) {
    for (std::size_t i = 0; i < entries; ++i) insert(table, i);
  };
}

// ---- FDB ----------------------------------------------------------------------------------------

struct FdbData {
  std::vector<MacAddress> macs;
  FdbData() {
    std::mt19937_64 random(1);
    for (std::size_t i = 0; i < kSizes[2]; ++i) {
      macs.push_back(MacAddress::from_number(random() >> 16 & 0xFEFFFFFFFFFF));
    }
  }
  static std::uint16_t vlan(std::size_t i) { return static_cast<std::uint16_t>(1 + i % 16); }
};

void add_fdb_rows(std::vector<Row>& rows) {
  static const FdbData data;
  const auto make = [] { return std::make_unique<FdbTable>(FdbTable::kDefaultCapacity, kHash); };
  const auto insert = [](FdbTable& table, std::size_t i) {
    table.learn(FdbData::vlan(i), data.macs[i], Destination::port(static_cast<PortIndex>(i % 52)),
                1);
  };
  const auto fill = filled_by(insert);
  rows.push_back({"fdb learn", per_entry(make, kNothing, insert)});
  const auto key = [](std::size_t i) {
    return fdb_key(FdbData::vlan(i), data.macs[i].to_number());
  };
  const auto unknown_key = [](std::size_t i) { return fdb_key(100, data.macs[i].to_number()); };
  const auto find = one_by_one(
      [](const FdbTable& table, std::uint64_t k) { return table.find(k)->destination().number; });
  const auto find_unknown = one_by_one(
      [](const FdbTable& table, std::uint64_t k) { return table.find(k) == nullptr ? 1u : 0u; });
  const auto prefetch_and_find = [=](const FdbTable& table, const std::uint64_t* keys) {
    for (std::size_t i = 0; i < kBatch; ++i) table.prefetch(keys[i]);
    return find(table, keys);
  };
  rows.push_back({"fdb lookup", batches(make, fill, key, find)});
  rows.push_back({"fdb lookup, batches of 32", batches(make, fill, key, prefetch_and_find)});
  rows.push_back({"fdb lookup of an unknown MAC", batches(make, fill, unknown_key, find_unknown)});
  rows.push_back({"fdb delete", per_entry(make, fill, [](FdbTable& table, std::size_t i) {
                    table.remove(FdbData::vlan(i), data.macs[i]);
                  })});
  rows.push_back(
      {"fdb flush by port, each entry", [=](std::size_t entries, std::size_t* operations) {
         auto table = make();
         fill(*table, entries);
         FdbFilter filter;
         filter.destination = Destination::port(7);
         const Stopwatch watch;
         *operations = table->flush(filter);
         return watch.nanoseconds();
       }});
  rows.push_back({"fdb age, each young entry", [=](std::size_t entries, std::size_t* operations) {
                    auto table = make();
                    fill(*table, entries);
                    table->for_each([&](const FdbEntry& entry) { table->touch(entry, 200); });
                    const Stopwatch watch;
                    sink = table->age(301);
                    *operations = entries;
                    return watch.nanoseconds();
                  }});
}

// ---- Routes and hosts ---------------------------------------------------------------------------

// Distinct prefixes of 16 to 32 bits (IPv6: 32 to 64), most of them in the middle, and an address
// in each. Each leads to one of so many neighbours.
template <class Address>
struct RouteData {
  std::vector<Address> prefixes;
  std::vector<unsigned> lengths;
  std::vector<NextHop> hops;

  explicit RouteData(std::size_t neighbours) {
    std::mt19937_64 random(2);
    for (std::size_t i = 0; i < kSizes[2]; ++i) {
      prefixes.push_back(address(random()));
      lengths.push_back(length(static_cast<unsigned>(random() % 100)));
      const std::uint64_t neighbour = random() % neighbours;
      hops.push_back({Destination::port(static_cast<PortIndex>(neighbour % 52)),
                      MacAddress::from_number(0x020000000000 + neighbour),
                      static_cast<std::uint32_t>(neighbour % 64)});
    }
  }
  static Address address(std::uint64_t bits);
  static unsigned length(unsigned percent);
};

template <>
Ipv4 RouteData<Ipv4>::address(std::uint64_t bits) {
  return static_cast<Ipv4>(bits) & 0xDFFFFFFF;
}
template <>
unsigned RouteData<Ipv4>::length(unsigned percent) {
  return percent < 60   ? 24
         : percent < 75 ? 22
         : percent < 90 ? 20 + percent % 4
                        : 16 + percent % 17;
}
template <>
Ipv6Address RouteData<Ipv6Address>::address(std::uint64_t bits) {
  Ipv6Address ip{{0x20, 0x01, 0x0D, 0xB8}};
  for (unsigned i = 3; i < 8; ++i) ip.bytes[i] = static_cast<std::uint8_t>(bits >> (8 * i));
  return ip;
}
template <>
unsigned RouteData<Ipv6Address>::length(unsigned percent) {
  return percent < 50 ? 48 : percent < 80 ? 64 : 32 + percent % 33;
}

// Routes share the routers that they lead to; in the rows "own next hops" nearly each has its own.
constexpr std::size_t kNeighbours = 1000;

template <class Address>
void add_route_rows(std::vector<Row>& rows, const RouteData<Address>& data,
                    const char* const (&names)[4]) {
  using Table = L3RouteTable<Address>;
  const auto make = [] { return std::make_unique<Table>(131072, kHash); };
  const auto insert = [&data](Table& table, std::size_t i) {
    table.add(data.prefixes[i], data.lengths[i], data.hops[i]);
  };
  const auto fill = filled_by(insert);
  rows.push_back({names[0], per_entry(make, kNothing, insert)});
  const auto address = [&data](std::size_t i) { return data.prefixes[i]; };
  const auto lookup = one_by_one(
      [](const Table& table, const Address& ip) { return table.lookup(ip)->interface_id; });
  const auto lookup_batch = [](const Table& table, const Address* ips) {
    const NextHop* next_hops[kBatch];
    table.lookup_batch(ips, kBatch, next_hops);
    std::uint64_t sum = 0;
    for (const NextHop* next_hop : next_hops) sum += next_hop->interface_id;
    return sum;
  };
  rows.push_back({names[1], batches(make, fill, address, lookup)});
  rows.push_back({names[2], batches(make, fill, address, lookup_batch)});
  rows.push_back({names[3], per_entry(make, fill, [&data](Table& table, std::size_t i) {
                    table.remove(data.prefixes[i], data.lengths[i], data.hops[i].destination);
                  })});
}

template <class Address>
void add_host_rows(std::vector<Row>& rows, const RouteData<Address>& data,
                   const char* const (&names)[2]) {
  using Table = L3HostTable<Address>;
  const auto make = [] { return std::make_unique<Table>(131072, kHash); };
  const auto insert = [&data](Table& table, std::size_t i) {
    table.add(data.prefixes[i], data.hops[i]);
  };
  const auto address = [&data](std::size_t i) { return data.prefixes[i]; };
  const auto find = one_by_one(
      [](const Table& table, const Address& ip) { return table.find(ip)->next_hop.interface_id; });
  rows.push_back({names[0], per_entry(make, kNothing, insert)});
  rows.push_back({names[1], batches(make, filled_by(insert), address, find)});
}

// ---- Flows --------------------------------------------------------------------------------------

// Flows under eight masks of IPv4 addresses and ports, and a frame for each.
struct FlowData {
  std::vector<FlowMatch> matches;
  std::vector<FlowKey> keys;

  FlowData() {
    static constexpr Ipv4 kMasks[] = {0xFFFFFFFF, 0xFFFFFF00, 0xFFFFF000, 0xFFFF0000};
    std::mt19937_64 random(3);
    for (std::size_t i = 0; i < kSizes[2]; ++i) {
      FlowMatch match;
      match.fields = kFlowIpv4Source | kFlowIpv4Destination;
      match.ipv4_source = static_cast<Ipv4>(random());
      match.ipv4_destination = static_cast<Ipv4>(random());
      match.ipv4_source_mask = kMasks[i % 4];
      match.ipv4_destination_mask = kMasks[(i / 4) % 2];
      matches.push_back(match);
      FlowKey key;
      key.set_ethernet(1, 0x020000000000u + i, 0x020000000001u, 1, 0, 0x0800);
      key.set_ip_protocol(17);
      key.set_tos(0);
      key.set_ipv4(match.ipv4_source, match.ipv4_destination);
      key.set_l4_ports(1000, 53);
      keys.push_back(key);
    }
  }
};

void add_flow_rows(std::vector<Row>& rows) {
  static const FlowData data;
  const auto make = [] { return std::make_unique<FlowTable>(FlowTable::kDefaultCapacity, kHash); };
  const auto insert = [](FlowTable& table, std::size_t i) {
    std::uint32_t id = 0;
    table.add(data.matches[i], id);
  };
  const auto fill = filled_by(insert);
  rows.push_back({"flow add, 8 masks", per_entry(make, kNothing, insert)});
  const auto key = [](std::size_t i) { return data.keys[i]; };
  const auto strange_key = [](std::size_t i) {
    FlowKey strange;
    strange.set_ethernet(1, i, 2, 1, 0, 0x0800);
    strange.set_ipv4(static_cast<Ipv4>(i), static_cast<Ipv4>(~i));
    return strange;
  };
  const auto lookup = one_by_one([](const FlowTable& table, const FlowKey& k) {
    const Flow* flow = table.lookup(k, UdfReader());
    return flow == nullptr ? 0u : flow->id;
  });
  rows.push_back({"flow lookup, 8 masks", batches(make, fill, key, lookup)});
  rows.push_back({"flow lookup, 8 masks, no match", batches(make, fill, strange_key, lookup)});
  rows.push_back(
      {"flow delete, 8 masks", per_entry(make, fill, [](FlowTable& table, std::size_t i) {
         table.remove(static_cast<std::uint32_t>(i + 1));
       })});
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<Row> rows;
  add_fdb_rows(rows);
  const RouteData<Ipv4> ipv4(kNeighbours);
  add_route_rows(rows, ipv4,
                 {"ipv4 route add", "ipv4 route lookup", "ipv4 route lookup, batches of 32",
                  "ipv4 route delete"});
  const RouteData<Ipv4> ipv4_apart(1000 * kNeighbours);
  add_route_rows(rows, ipv4_apart,
                 {"ipv4 route add, own next hops", "ipv4 route lookup, own next hops",
                  "ipv4 route batches, own next hops", "ipv4 route delete, own next hops"});
  const RouteData<Ipv6Address> ipv6(kNeighbours);
  add_route_rows(rows, ipv6,
                 {"ipv6 route add", "ipv6 route lookup", "ipv6 route lookup, batches of 32",
                  "ipv6 route delete"});
  add_host_rows(rows, ipv4, {"ipv4 host add", "ipv4 host lookup"});
  add_host_rows(rows, ipv6, {"ipv6 host add", "ipv6 host lookup"});
  add_flow_rows(rows);
  run(rows, argc, argv);
  return 0;
}
