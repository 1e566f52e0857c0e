// SPDX-License-Identifier: Apache-2.0
//
// The packet filters: which packets go to the CPU and nowhere else.
//
// Conventions: adding what is there already changes nothing and is true; deleting what is not there
// is false.
#ifndef SOFTCARD_TABLES_FILTER_TABLE_H_
#define SOFTCARD_TABLES_FILTER_TABLE_H_

#include <bitset>
#include <cstdint>
#include <vector>

#include "softcard/base/net_types.h"

namespace softcard {

class FilterTable {
 public:
  struct ArpFilter {
    Ipv4 ip;  // without the bits outside the mask
    Ipv4 mask;
  };

  explicit FilterTable(std::size_t arp_capacity) : arp_capacity_(arp_capacity) {}

  // ---- What the pipeline asks -------------------------------------------------------------------

  bool any() const { return any_; }
  bool matches_arp_target(Ipv4 target) const {
    for (const ArpFilter& filter : arp_) {
      if ((target & filter.mask) == filter.ip) return true;
    }
    return false;
  }
  bool matches_ip_protocol(std::uint8_t protocol) const { return ip_protocols_[protocol]; }
  bool matches_l4_port(std::uint16_t destination) const { return l4_ports_[destination]; }

  // ---- Settings ---------------------------------------------------------------------------------

  // Any mask is good; false when the table is full.
  bool add_arp(Ipv4 ip, Ipv4 mask);
  bool remove_arp(Ipv4 ip, Ipv4 mask);
  void clear_arp();
  const std::vector<ArpFilter>& arp() const { return arp_; }

  // False for a protocol above 255.
  bool add_ip_protocol(unsigned protocol);
  bool remove_ip_protocol(unsigned protocol);
  void clear_ip_protocols();

  // False for a port above 65535.
  bool add_l4_port(unsigned port);
  bool remove_l4_port(unsigned port);
  void clear_l4_ports();

 private:
  static constexpr unsigned kHighestProtocol = 255;
  static constexpr unsigned kHighestL4Port = 65535;

  void update_any() { any_ = !arp_.empty() || ip_protocols_.any() || l4_ports_.any(); }

  std::vector<ArpFilter> arp_;
  std::bitset<kHighestProtocol + 1> ip_protocols_;
  std::bitset<kHighestL4Port + 1> l4_ports_;
  std::size_t arp_capacity_;
  bool any_ = false;
};

}  // namespace softcard

#endif  // SOFTCARD_TABLES_FILTER_TABLE_H_
