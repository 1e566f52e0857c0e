// SPDX-License-Identifier: Apache-2.0
//
// A control-plane client in C++: bring-up, a VLAN with its trunk over a LAG, link changes and
// statistics.
#include <iostream>
#include <list>

#include "client.h"
#include "vornlcapi/api.h"

namespace {

const unsigned kVlan = 10;
const std::list<Usp> kAccessPorts = {Usp(1, 1, 0), Usp(1, 1, 1), Usp(1, 1, 2), Usp(1, 1, 3)};
const std::list<Usp> kUplinks = {Usp(1, 1, 48), Usp(1, 1, 49)};
const Usp kTrunk(1, 2, 1);  // the LAG interface

std::ostream& operator<<(std::ostream& out, const Usp& port) {
  return out << port.unit() << '/' << port.slot() << '/' << port.port();
}

// Every entry point returns true or false; this says which step was the false.
bool done(const char* step, bool result) {
  if (!result) std::cerr << "failed: " << step << '\n';
  return result;
}

void link_changed(LinkStatus* status, Usp* port) {
  std::cout << "link of " << *port << " is " << (status->state == PHY_STATE_UP ? "up" : "down")
            << '\n';
}

bool make_trunk() {
  return done("add the uplinks to the LAG", vorn_add_ports_to_lag(kTrunk, kUplinks)) &&
         done("balance the LAG by IP address",
              vorn_set_lag_balancing_strategy(kTrunk, LAG_PSC_SRC_DST_IP));
}

bool make_vlan() {
  return done("create the VLAN", vorn_create_vlan(kVlan)) &&
         done("add the VLAN's ports", vorn_add_ports_to_vlan(kVlan, {kTrunk}, kAccessPorts)) &&
         done("set the PVID", vorn_set_ports_pvid(kAccessPorts, kVlan));
}

void print_ports(const char* kind, const std::list<Usp>& ports) {
  std::cout << "VLAN " << kVlan << ", " << kind << ':';
  for (const Usp& port : ports) std::cout << ' ' << port;
  std::cout << '\n';
}

bool count_packets(const char* what, stat_type_t type, const std::list<Usp>& ports) {
  unsigned long long sum = 0;
  for (const Usp& port : ports) {
    unsigned long long value = 0;
    if (!done("read a counter", vorn_get_port_stat_counter(port, type, value))) return false;
    sum += value;
  }
  std::cout << what << ": " << sum << '\n';
  return true;
}

}  // namespace

int client_start() {
  int ports = 0;
  if (!done("start the line card", vorn_lcmgr_api_init(ports))) return 0;
  std::cout << "line card up, " << ports << " ports\n";
  return done("listen for link changes", vorn_register_link_change_callback(link_changed)) &&
         make_trunk() && make_vlan();
}

int client_report() {
  std::list<Usp> tagged, untagged;
  if (!done("read the VLAN", vorn_get_vlan_info(kVlan, tagged, untagged))) return 0;
  print_ports("tagged", tagged);
  print_ports("untagged", untagged);
  return count_packets("broadcasts into the access ports", STAT_IN_BROADCAST_PACKETS,
                       kAccessPorts) &&
         count_packets("broadcasts out of the access ports", STAT_OUT_BROADCAST_PACKETS,
                       kAccessPorts) &&
         count_packets("broadcasts out of the trunk", STAT_OUT_BROADCAST_PACKETS, kUplinks);
}

int client_stop() { return done("shut the line card down", vorn_lcmgr_api_terminate()); }
