// SPDX-License-Identifier: Apache-2.0
//
// The switch-wide rules that put untagged frames into VLANs by their source: MAC address, IPv4
// subnet, IPv6 subnet. Of the subnets that fit the longest wins.
#ifndef SOFTCARD_TABLES_VLAN_CLASS_TABLE_H_
#define SOFTCARD_TABLES_VLAN_CLASS_TABLE_H_

#include <algorithm>
#include <bitset>
#include <cstdint>
#include <map>
#include <unordered_map>
#include <vector>

#include "softcard/base/hash.h"
#include "softcard/base/net_types.h"

namespace softcard {

// The VLAN and 802.1p priority that a rule gives.
struct VlanClass {
  std::uint16_t vlan;
  std::uint8_t priority;
};

// Conventions: setters take `vlan` 0 to delete the rule, and return false for a VLAN above 4094, a
// priority above 7, a rule to delete that is not there, and a full table.
class VlanClassTable {
 public:
  VlanClassTable(std::size_t mac_capacity, std::size_t subnet_capacity,
                 KeyedHash hash = KeyedHash::drawn())
      : macs_(0, Hash{hash}),
        ipv4_{Rules<Ipv4>(0, Hash{hash}), {}},
        ipv6_{Rules<Ipv6Address>(0, Hash{hash}), {}},
        mac_capacity_(mac_capacity),
        subnet_capacity_(subnet_capacity) {}

  // ---- What the pipeline asks: null when no rule fits -------------------------------------------

  bool has_mac_rules() const { return !macs_.empty(); }
  bool has_ipv4_rules() const { return !ipv4_.rules.empty(); }
  bool has_ipv6_rules() const { return !ipv6_.rules.empty(); }
  const VlanClass* by_mac(const MacAddress& source) const;
  const VlanClass* by_ipv4(Ipv4 source) const;
  const VlanClass* by_ipv6(const Ipv6Address& source) const;

  // ---- Settings ---------------------------------------------------------------------------------

  // Refuses group addresses, which are no sources.
  bool set_mac(const MacAddress& mac, unsigned vlan, unsigned priority);
  // Refuses a mask with holes. Bits of `ip` outside the mask do not count.
  bool set_ipv4(Ipv4 ip, Ipv4 mask, unsigned vlan, unsigned priority);
  bool set_ipv6(const Ipv6Address& ip, unsigned prefix_length, unsigned vlan, unsigned priority);

  // Call visit(address, VlanClass) and visit(address, prefix length, VlanClass) for each rule, by
  // address from the lowest up.
  template <class Visit>
  void for_each_mac(Visit&& visit) const {
    for (const auto* rule : in_order(macs_)) {
      visit(MacAddress::from_number(rule->first), rule->second);
    }
  }
  template <class Visit>
  void for_each_ipv4(Visit&& visit) const {
    for (const auto* rule : in_order(ipv4_.rules)) {
      visit(rule->first.address, rule->first.length, rule->second);
    }
  }
  template <class Visit>
  void for_each_ipv6(Visit&& visit) const {
    for (const auto* rule : in_order(ipv6_.rules)) {
      visit(rule->first.address, rule->first.length, rule->second);
    }
  }

 private:
  template <class Address>
  struct Prefix {
    Address address;
    unsigned length;
    bool operator==(const Prefix& other) const {
      return length == other.length && address == other.address;
    }
    bool operator<(const Prefix& other) const {
      return address == other.address ? length < other.length : address < other.address;
    }
  };
  struct Hash {
    KeyedHash hash;

    std::size_t operator()(std::uint64_t key) const;
    std::size_t operator()(const Prefix<Ipv4>& key) const;
    std::size_t operator()(const Prefix<Ipv6Address>& key) const;
  };
  template <class Address>
  using Rules = std::unordered_map<Prefix<Address>, VlanClass, Hash>;
  // The rules of one address family, looked up once for each prefix length in use.
  template <class Address>
  struct Subnets {
    Rules<Address> rules;
    std::map<unsigned, unsigned, std::greater<>> lengths;  // how many rules, by length

    const VlanClass* find(const Address& source) const;
    bool set(const Address& ip, unsigned length, VlanClass rule, std::size_t capacity);
  };

  template <class Map>
  static std::vector<const typename Map::value_type*> in_order(const Map& rules) {
    std::vector<const typename Map::value_type*> sorted;
    sorted.reserve(rules.size());
    for (const auto& rule : rules) sorted.push_back(&rule);
    std::sort(sorted.begin(), sorted.end(),
              [](const auto* a, const auto* b) { return a->first < b->first; });
    return sorted;
  }

  std::unordered_map<std::uint64_t, VlanClass, Hash> macs_;  // by MacAddress::to_number()
  Subnets<Ipv4> ipv4_;
  Subnets<Ipv6Address> ipv6_;
  std::size_t mac_capacity_;
  std::size_t subnet_capacity_;
};

}  // namespace softcard

#endif  // SOFTCARD_TABLES_VLAN_CLASS_TABLE_H_
