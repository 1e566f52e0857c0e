// SPDX-License-Identifier: Apache-2.0
//
// Packet filters: frames that go to the CPU and nowhere else.

#include "softcard/sdk/sdk.h"

namespace softcard {

bool SoftSdk::add_arp_filter(unsigned int ip, unsigned int mask) {
  return tables_.filters.add_arp(ip, mask);
}

bool SoftSdk::delete_arp_filter(unsigned int ip, unsigned int mask) {
  return tables_.filters.remove_arp(ip, mask);
}

bool SoftSdk::delete_arp_filter_all() {
  tables_.filters.clear_arp();
  return true;
}

bool SoftSdk::add_ip_protocol_filter(unsigned int protocol) {
  return tables_.filters.add_ip_protocol(protocol);
}

bool SoftSdk::delete_ip_protocol_filter(unsigned int protocol) {
  return tables_.filters.remove_ip_protocol(protocol);
}

bool SoftSdk::delete_ip_protocol_filter_all() {
  tables_.filters.clear_ip_protocols();
  return true;
}

bool SoftSdk::add_l4_destination_port_filter(unsigned int port) {
  return tables_.filters.add_l4_port(port);
}

bool SoftSdk::delete_l4_destination_port_filter(unsigned int port) {
  return tables_.filters.remove_l4_port(port);
}

bool SoftSdk::delete_l4_destination_port_filter_all() {
  tables_.filters.clear_l4_ports();
  return true;
}

}  // namespace softcard
