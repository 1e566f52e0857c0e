// SPDX-License-Identifier: Apache-2.0
//
// Measures what a client of the C binding sees of the big tables: adding, asking and deleting
// through libvornlcapi, its host interface and the software line card, on one core. What a row
// shows is said in rows.h, and at row() what is measured.
//
//   binding_bench [part of a row's name]

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <set>
#include <utility>
#include <vector>

#include "bench/rows.h"
#include "vornlcapi/capi.h"

namespace {

using namespace bench;

constexpr unsigned kVlans = 16;
constexpr unsigned kPorts = 48;
constexpr unsigned kInterface = 1;
constexpr unsigned kNeighbours = 20 * kPorts;

// A call that fails is measured as nothing: the benchmark ends.
void check(int done, const char* what) {
  if (done) return;
  std::fprintf(stderr, "binding_bench: %s failed\n", what);
  std::exit(1);
}

// The data that the rows put into the tables.
struct Item {
  usp_s port;
  unsigned char mac[6];
  unsigned vlan;
  unsigned ip;
  unsigned route_mask;
  unsigned char neighbour[6];  // that the route leads to
  unsigned flow_source_mask;
  unsigned flow_destination_mask;
  unsigned flow_id;
};

std::vector<Item> make_items() {
  static constexpr unsigned kFlowMasks[] = {0xFFFFFFFF, 0xFFFFFF00, 0xFFFFF000, 0xFFFF0000};
  std::mt19937 random(1);
  std::set<std::pair<unsigned, unsigned>> subnets;
  std::vector<Item> items(kSizes[2]);
  for (std::size_t i = 0; i < items.size(); ++i) {
    Item& item = items[i];
    const unsigned n = static_cast<unsigned>(i);
    item.port = {1, 1, n % kPorts};
    const unsigned host = static_cast<unsigned>(random());
    for (unsigned b = 0; b < 4; ++b) item.mac[2 + b] = static_cast<unsigned char>(host >> 8 * b);
    item.mac[0] = 2;
    item.mac[1] = static_cast<unsigned char>(n >> 8);
    item.vlan = 1 + n % kVlans;
    const unsigned neighbour = n % kNeighbours;
    item.neighbour[0] = 2;
    item.neighbour[4] = static_cast<unsigned char>(neighbour >> 8);
    item.neighbour[5] = static_cast<unsigned char>(neighbour);
    item.route_mask = ~0u << (32 - (i % 10 < 6 ? 24 : 16 + n % 17));
    // No two routes are the same.
    do {
      item.ip = static_cast<unsigned>(random());
    } while (!subnets.insert({item.ip & item.route_mask, item.route_mask}).second);
    item.flow_source_mask = kFlowMasks[i % 4];
    item.flow_destination_mask = kFlowMasks[i / 4 % 2];
  }
  return items;
}

void start_card() {
  int ports = 0;
  check(ctype_vorn_lcmgr_api_init(&ports), "ctype_vorn_lcmgr_api_init");
  unsigned char mac[6] = {2, 0, 0, 0, 0, 1};
  for (unsigned vlan = 2; vlan <= kVlans; ++vlan) {
    check(ctype_vorn_create_vlan(vlan), "ctype_vorn_create_vlan");
  }
  check(ctype_vorn_create_l3_interface_with_id(mac, 1, kInterface, 0),
        "ctype_vorn_create_l3_interface_with_id");
}

void stop_card() { check(ctype_vorn_lcmgr_api_terminate(), "ctype_vorn_lcmgr_api_terminate"); }

// One call of the C binding for an item; 0 when it fails.
using Operation = int (*)(Item&);

// Runs an operation, which must succeed, on the first `entries` items.
void for_items(std::vector<Item>& items, std::size_t entries, Operation operation,
               const char* what) {
  for (std::size_t i = 0; i < entries; ++i) check(operation(items[i]), what);
}

// A row for an operation on the tables of a new card: adding so many items, or what `measured` does
// to each of them afterwards.
Row row(std::vector<Item>& items, const char* name, Operation add, Operation measured) {
  return {name, [=, &items](std::size_t entries, std::size_t* operations) {
            *operations = entries;
            stop_card();
            start_card();
            const Stopwatch adding;
            for_items(items, entries, add, name);
            if (measured == nullptr) return adding.nanoseconds();
            const Stopwatch watch;
            for_items(items, entries, measured, name);
            return watch.nanoseconds();
          }};
}

int add_mac(Item& i) { return ctype_vorn_add_mac_to_port(&i.port, i.mac, i.vlan); }
int delete_mac(Item& i) { return ctype_vorn_delete_mac(i.vlan, i.mac); }

int add_host(Item& i) { return ctype_vorn_add_l3_host_ip4(&i.port, i.ip, i.mac, kInterface); }
int delete_host(Item& i) { return ctype_vorn_delete_l3_host_by_addr_ip4(i.ip, &i.port); }

int add_route(Item& i) {
  return ctype_vorn_add_l3_route_ip4(&i.port, i.ip, i.route_mask, i.neighbour, kInterface, 0);
}
int get_route(Item& i) {
  unsigned char mac[6];
  unsigned interface = 0, metric = 0;
  return ctype_vorn_get_l3_route_by_subnet_ip4(i.ip, i.route_mask, &i.port, mac, &interface,
                                               &metric);
}
int delete_route(Item& i) {
  return ctype_vorn_delete_l3_route_by_subnet_ip4(i.ip, i.route_mask, &i.port);
}

int add_flow(Item& i) {
  ctype_of_flow_s flow{};
  flow.src_ip = i.ip;
  flow.dst_ip = ~i.ip;
  flow.src_ip_mask = i.flow_source_mask;
  flow.dst_ip_mask = i.flow_destination_mask;
  flow.flags = OF_MATCH_SRC_IP | OF_MATCH_DST_IP;
  ctype_of_flow_qualify_udf_s udf{};
  return ctype_vorn_add_of_flow(&flow, &i.flow_id, &udf);
}
int get_flow(Item& i) {
  unsigned long long packets = 0;
  return ctype_vorn_get_of_flow_stat_counter64(i.flow_id, &packets);
}
int delete_flow(Item& i) { return ctype_vorn_delete_of_flow(i.flow_id); }

}  // namespace

int main(int argc, char** argv) {
  start_card();
  std::vector<Item> items = make_items();
  const std::vector<Row> rows = {
      row(items, "c.add_mac_to_port", add_mac, nullptr),
      row(items, "c.delete_mac", add_mac, delete_mac),
      row(items, "c.add_l3_host_ip4", add_host, nullptr),
      row(items, "c.delete_l3_host_by_addr_ip4", add_host, delete_host),
      row(items, "c.add_l3_route_ip4", add_route, nullptr),
      row(items, "c.get_l3_route_by_subnet_ip4", add_route, get_route),
      row(items, "c.delete_l3_route_by_subnet_ip4", add_route, delete_route),
      row(items, "c.add_of_flow, 8 masks", add_flow, nullptr),
      row(items, "c.get_of_flow_stat_counter64", add_flow, get_flow),
      row(items, "c.delete_of_flow", add_flow, delete_flow),
  };
  run(rows, argc, argv);
  stop_card();
  return 0;
}
