// SPDX-License-Identifier: Apache-2.0

#include "softcard/tables/filter_table.h"

#include <algorithm>

#include "softcard/base/refusal.h"
#include "softcard/base/text.h"

namespace softcard {
namespace {

auto find(std::vector<FilterTable::ArpFilter>& filters, Ipv4 ip, Ipv4 mask) {
  return std::find_if(filters.begin(), filters.end(), [&](const FilterTable::ArpFilter& filter) {
    return filter.ip == (ip & mask) && filter.mask == mask;
  });
}

}  // namespace

bool FilterTable::add_arp(Ipv4 ip, Ipv4 mask) {
  if (find(arp_, ip, mask) != arp_.end()) return true;
  if (arp_.size() >= arp_capacity_) return refuse_full("arp-filters", arp_capacity_);
  arp_.push_back({ip & mask, mask});
  update_any();
  return true;
}

bool FilterTable::remove_arp(Ipv4 ip, Ipv4 mask) {
  const auto filter = find(arp_, ip, mask);
  if (filter == arp_.end()) {
    return refuse("there is no ARP filter ", ipv4_text(ip), " mask ", ipv4_text(mask));
  }
  arp_.erase(filter);
  update_any();
  return true;
}

void FilterTable::clear_arp() {
  arp_.clear();
  update_any();
}

bool FilterTable::add_ip_protocol(unsigned protocol) {
  if (!in_range("IP protocol", protocol, 0, kHighestProtocol)) return false;
  ip_protocols_.set(protocol);
  update_any();
  return true;
}

bool FilterTable::remove_ip_protocol(unsigned protocol) {
  if (!in_range("IP protocol", protocol, 0, kHighestProtocol)) return false;
  if (!ip_protocols_[protocol]) return refuse("there is no filter of IP protocol ", protocol);
  ip_protocols_.reset(protocol);
  update_any();
  return true;
}

void FilterTable::clear_ip_protocols() {
  ip_protocols_.reset();
  update_any();
}

bool FilterTable::add_l4_port(unsigned port) {
  if (!in_range("L4 port", port, 0, kHighestL4Port)) return false;
  l4_ports_.set(port);
  update_any();
  return true;
}

bool FilterTable::remove_l4_port(unsigned port) {
  if (!in_range("L4 port", port, 0, kHighestL4Port)) return false;
  if (!l4_ports_[port]) return refuse("there is no filter of L4 port ", port);
  l4_ports_.reset(port);
  update_any();
  return true;
}

void FilterTable::clear_l4_ports() {
  l4_ports_.reset();
  update_any();
}

}  // namespace softcard
