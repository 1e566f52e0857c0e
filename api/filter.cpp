// SPDX-License-Identifier: Apache-2.0
//
// Packet filters.

#include "vornlcapi/api/filter.h"

#include "api/frame.h"

using namespace vorn::detail;

bool vorn_add_arp_filter(unsigned int ip, unsigned int mask) {
  return call<&VornSdkBase::add_arp_filter>(ip, mask);
}

bool vorn_delete_arp_filter(unsigned int ip, unsigned int mask) {
  return call<&VornSdkBase::delete_arp_filter>(ip, mask);
}

bool vorn_delete_arp_filter_all() { return call<&VornSdkBase::delete_arp_filter_all>(); }

bool vorn_add_ip_protocol_filter(unsigned int protocol) {
  return call<&VornSdkBase::add_ip_protocol_filter>(protocol);
}

bool vorn_delete_ip_protocol_filter(unsigned int protocol) {
  return call<&VornSdkBase::delete_ip_protocol_filter>(protocol);
}

bool vorn_delete_ip_protocol_filter_all() {
  return call<&VornSdkBase::delete_ip_protocol_filter_all>();
}

bool vorn_add_l4_destination_port_filter(unsigned int port) {
  return call<&VornSdkBase::add_l4_destination_port_filter>(port);
}

bool vorn_delete_l4_destination_port_filter(unsigned int port) {
  return call<&VornSdkBase::delete_l4_destination_port_filter>(port);
}

bool vorn_delete_l4_destination_port_filter_all() {
  return call<&VornSdkBase::delete_l4_destination_port_filter_all>();
}
