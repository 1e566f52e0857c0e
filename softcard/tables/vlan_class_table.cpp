// SPDX-License-Identifier: Apache-2.0

#include "softcard/tables/vlan_class_table.h"

#include "softcard/base/limits.h"
#include "softcard/base/refusal.h"
#include "softcard/base/text.h"
#include "softcard/base/undo.h"
#include "softcard/tables/l3_table.h"

namespace softcard {
namespace {

constexpr unsigned bits(Ipv4) { return 32; }
constexpr unsigned bits(const Ipv6Address&) { return 128; }

bool in_range(unsigned vlan, unsigned priority) {
  return softcard::in_range("VLAN", vlan, 0, kMaxVlan) &&
         softcard::in_range("priority", priority, 0, kPriorities - 1);
}

std::string text(Ipv4 ip) { return ipv4_text(ip); }
std::string text(const Ipv6Address& ip) { return ipv6_text(ip); }

VlanClass rule_of(unsigned vlan, unsigned priority) {
  return {static_cast<std::uint16_t>(vlan), static_cast<std::uint8_t>(priority)};
}

}  // namespace

std::size_t VlanClassTable::Hash::operator()(std::uint64_t key) const { return hash(key); }

std::size_t VlanClassTable::Hash::operator()(const Prefix<Ipv4>& key) const {
  return address_hash(hash, key.address, key.length);
}

std::size_t VlanClassTable::Hash::operator()(const Prefix<Ipv6Address>& key) const {
  return address_hash(hash, key.address, key.length);
}

template <class Address>
const VlanClass* VlanClassTable::Subnets<Address>::find(const Address& source) const {
  for (const auto& [length, count] : lengths) {
    const auto rule = rules.find({masked(source, length), length});
    if (rule != rules.end()) return &rule->second;
  }
  return nullptr;
}

// A rule of VLAN 0 is one to delete.
template <class Address>
bool VlanClassTable::Subnets<Address>::set(const Address& ip, unsigned length, VlanClass rule,
                                           std::size_t capacity) {
  if (!softcard::in_range("prefix length", length, 0, bits(ip))) return false;
  const Prefix<Address> key{masked(ip, length), length};
  const auto present = rules.find(key);
  if (rule.vlan == 0) {
    if (present == rules.end()) {
      return refuse("there is no VLAN rule for ", text(key.address), "/", length);
    }
    rules.erase(present);
    if (--lengths[length] == 0) lengths.erase(length);
    return true;
  }
  if (present != rules.end()) {
    present->second = rule;
    return true;
  }
  if (rules.size() >= capacity) return refuse_full("subnet-vlans", capacity);
  const auto added = rules.emplace(key, rule).first;
  Undo take_back([&] { rules.erase(added); });
  ++lengths[length];
  take_back.dismiss();
  return true;
}

const VlanClass* VlanClassTable::by_mac(const MacAddress& source) const {
  const auto rule = macs_.find(source.to_number());
  return rule == macs_.end() ? nullptr : &rule->second;
}

const VlanClass* VlanClassTable::by_ipv4(Ipv4 source) const { return ipv4_.find(source); }

const VlanClass* VlanClassTable::by_ipv6(const Ipv6Address& source) const {
  return ipv6_.find(source);
}

bool VlanClassTable::set_mac(const MacAddress& mac, unsigned vlan, unsigned priority) {
  if (mac.is_group()) return refuse(mac, " is a group address");
  if (!in_range(vlan, priority)) return false;
  if (vlan == 0) {
    return macs_.erase(mac.to_number()) != 0 || refuse("there is no VLAN rule for ", mac);
  }
  const auto present = macs_.find(mac.to_number());
  if (present == macs_.end() && macs_.size() >= mac_capacity_) {
    return refuse_full("mac-vlans", mac_capacity_);
  }
  macs_[mac.to_number()] = rule_of(vlan, priority);
  return true;
}

bool VlanClassTable::set_ipv4(Ipv4 ip, Ipv4 mask, unsigned vlan, unsigned priority) {
  unsigned length = 0;
  return mask_length(mask, length) && in_range(vlan, priority) &&
         ipv4_.set(ip, length, rule_of(vlan, priority), subnet_capacity_);
}

bool VlanClassTable::set_ipv6(const Ipv6Address& ip, unsigned prefix_length, unsigned vlan,
                              unsigned priority) {
  return in_range(vlan, priority) &&
         ipv6_.set(ip, prefix_length, rule_of(vlan, priority), subnet_capacity_);
}

}  // namespace softcard
