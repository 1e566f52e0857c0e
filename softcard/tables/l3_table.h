// SPDX-License-Identifier: Apache-2.0
//
// Layer 3: router interfaces, hosts (one address each) and routes (longest prefix match). Hosts
// and routes are templates over Ipv4 and Ipv6Address; L3Table at the end holds one of each.
//
// Conventions: masks are lengths in bits (mask_length() makes one from a mask); a full table
// refuses a new entry and changes nothing, and so does one that runs out of memory, which throws;
// a pointer that a table returns holds until its entry is removed. Memory grows with the entries,
// and removing never asks for any.
#ifndef SOFTCARD_TABLES_L3_TABLE_H_
#define SOFTCARD_TABLES_L3_TABLE_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <type_traits>
#include <utility>
#include <vector>

#include "softcard/base/flat_index.h"
#include "softcard/base/id_map.h"
#include "softcard/base/net_types.h"
#include "softcard/base/pool.h"
#include "softcard/base/prefix_trie.h"
#include "softcard/tables/capacity.h"

namespace softcard {

// The result of adding to a table.
enum class L3Add {
  added,     // a new entry
  replaced,  // an entry of the same key has the new values
  exists,    // refused: another entry stands in the way and was not to be replaced
  full,      // refused: no room
  invalid,   // refused: no VLAN id or a mask length beyond the address
};

// True for added and replaced.
constexpr bool succeeded(L3Add result) {
  return result == L3Add::added || result == L3Add::replaced;
}

// The way of a frame out of the router.
struct NextHop {
  Destination destination;         // the port or LAG it leaves by
  MacAddress mac;                  // its new destination address
  std::uint32_t interface_id = 0;  // the router interface that gives the new source and the VLAN

  friend bool operator==(const NextHop& a, const NextHop& b) {
    return a.destination == b.destination && a.mac == b.mac && a.interface_id == b.interface_id;
  }
};

// The length of a mask, 0 to 32 or 128, or -1 when its ones are not all in front.
int mask_length(Ipv4 mask);
int mask_length(const Ipv6Address& mask);
// The same with the reason of a refusal: false, and `length` untouched, for a mask with holes.
bool mask_length(Ipv4 mask, unsigned& length);
bool mask_length(const Ipv6Address& mask, unsigned& length);

// `ip` with all bits behind the first `length` cleared.
Ipv4 masked(Ipv4 ip, unsigned length);
Ipv6Address masked(const Ipv6Address& ip, unsigned length);

// The hash of an address, or of a prefix and its length in bits.
inline std::uint32_t address_hash(const KeyedHash& hash, Ipv4 ip, unsigned length = 0) {
  return hash(std::uint64_t{length} << 32 | ip);
}
inline std::uint32_t address_hash(const KeyedHash& hash, const Ipv6Address& ip,
                                  unsigned length = 0) {
  const AddressBits<Ipv6Address> bits(ip);
  return hash(hash.spread(bits.high() + length) + bits.low());
}

// ---- Interfaces ---------------------------------------------------------------------------------

// A router's own address in a VLAN.
struct L3Interface {
  std::uint32_t id = 0;
  std::uint16_t vlan = 0;
  MacAddress mac;
};

// The router interfaces; neither an id nor a (VLAN, MAC) pair is there twice.
class L3InterfaceTable {
 public:
  explicit L3InterfaceTable(std::size_t capacity, KeyedHash hash = KeyedHash::drawn());

  // Makes an interface under the lowest free id from 1 up. `exists` when the pair is there
  // already; `id` is set to the interface's id in both cases and left alone otherwise.
  L3Add create(const MacAddress& mac, std::uint16_t vlan, std::uint32_t& id);

  // Makes an interface under `id`. When the id is taken it gets the new values if `replace` is
  // set, and `exists` is returned if not; `exists` too when the pair belongs to another id.
  L3Add create_with_id(const MacAddress& mac, std::uint16_t vlan, std::uint32_t id, bool replace);

  // Returns the interface of `id`, or null.
  const L3Interface* get(std::uint32_t id) const {
    const std::uint32_t position = ids_.find(id);
    return position == IdMap::kNone ? nullptr : &places_[position];
  }

  // Returns the interface that owns a MAC address in `vlan`, or null: whether a frame is the
  // router's. `mac` is MacAddress::to_number().
  const L3Interface* find(std::uint16_t vlan, std::uint64_t mac) const {
    if (!any_in(vlan) || per_last_byte_[mac & 0xFF] == 0) return nullptr;
    return find_pair(vlan, MacAddress::from_number(mac));
  }
  const L3Interface* find(std::uint16_t vlan, const MacAddress& mac) const {
    return find(vlan, mac.to_number());
  }

  // Whether a VLAN has interfaces at all.
  bool any_in(std::uint16_t vlan) const { return per_vlan_[vlan % kVlanCount] != 0; }

  bool remove(std::uint16_t vlan, const MacAddress& mac);
  bool remove(std::uint32_t id);
  void clear();

  std::size_t size() const { return places_.size(); }
  std::size_t capacity() const { return capacity_; }

  // Calls visit(const L3Interface&) for each interface; `visit` must not change the table.
  template <class Visit>
  void for_each(Visit&& visit) const {
    places_.for_each([&](std::uint32_t position) { visit(places_[position]); });
  }

 private:
  const L3Interface* find_pair(std::uint16_t vlan, const MacAddress& mac) const;
  void add(const L3Interface& interface);
  void put(std::uint32_t position, const L3Interface& interface);
  void take(std::uint32_t position);
  std::uint32_t pair_hash(std::uint16_t vlan, const MacAddress& mac) const;

  KeyedHash hash_;
  std::size_t capacity_;
  Pool<L3Interface> places_;
  FlatIndex by_pair_;
  IdMap ids_;
  std::vector<std::uint32_t> per_vlan_;  // interfaces in each VLAN
  // Interfaces by the last byte of their MAC address: most addresses are told apart by it.
  std::array<std::uint32_t, 256> per_last_byte_{};
};

// ---- Hosts --------------------------------------------------------------------------------------

// A neighbour: its address and how to reach it.
template <class Address>
struct L3Host {
  Address ip{};
  NextHop next_hop;
};

// The hosts, keyed by address and destination: several ports may hold one address, and then the
// earliest of them is used.
template <class Address>
class L3HostTable {
 public:
  using Host = L3Host<Address>;

  explicit L3HostTable(std::size_t capacity, KeyedHash hash = KeyedHash::drawn())
      : hash_(hash), capacity_(capacity) {}

  // Adds a host, or gives the host of the same address and destination the new MAC and interface.
  L3Add add(const Address& ip, const NextHop& next_hop);

  // Starts to load what find(ip) reads first.
  void prefetch(const Address& ip) const { index_.prefetch(address_hash(hash_, ip)); }

  // Returns the earliest host of `ip`, or null.
  const Host* find(const Address& ip) const {
    const std::uint32_t position = first_of(ip);
    return position == kNil ? nullptr : &places_[position].host;
  }

  // Returns the host of `ip` at `destination`, or null.
  const Host* find(const Address& ip, Destination destination) const;

  // Removes the host of `ip` at `destination`; false when there is none.
  bool remove(const Address& ip, Destination destination);

  // Removes the hosts of the address's network, the /24 of IPv4 and the /64 of IPv6, and returns
  // how many there were. Asks for each of the 256 addresses of a /24; reads the whole table for a
  // /64.
  std::size_t remove_network(const Address& ip);

  // Removes the hosts behind an interface and returns how many there were; reads the whole table.
  std::size_t remove_by_interface(std::uint32_t interface_id);
  // The same for the hosts that are reached through a port or LAG.
  std::size_t remove_by_destination(Destination destination);

  void clear();

  std::size_t size() const { return places_.size(); }
  std::size_t capacity() const { return capacity_; }
  // FlatIndex::longest_search() of the addresses.
  std::size_t longest_search() const { return index_.longest_search(); }

  // Calls visit(const Host&) for each host; `visit` must not change the table.
  template <class Visit>
  void for_each(Visit&& visit) const {
    places_.for_each([&](std::uint32_t position) { visit(places_[position].host); });
  }
  // The same for the hosts of one address, the earliest first.
  template <class Visit>
  void for_each_of(const Address& ip, Visit&& visit) const {
    for (std::uint32_t p = first_of(ip); p != kNil; p = places_[p].next) visit(places_[p].host);
  }

 private:
  static constexpr std::uint32_t kNil = FlatIndex::kNone;

  struct Place {
    Host host;
    std::uint32_t next = kNil;  // the next later host of the same address
  };

  std::uint32_t first_of(const Address& ip) const {
    return index_.find(address_hash(hash_, ip),
                       [&](std::uint32_t p) { return places_[p].host.ip == ip; });
  }
  template <class Matches>
  std::size_t remove_where(Matches&& matches);

  KeyedHash hash_;
  std::size_t capacity_;
  Pool<Place> places_;
  FlatIndex index_;  // the earliest host of each address
};

template <>
std::size_t L3HostTable<Ipv4>::remove_network(const Ipv4& ip);
template <>
std::size_t L3HostTable<Ipv6Address>::remove_network(const Ipv6Address& ip);

// ---- Routes -------------------------------------------------------------------------------------

// The next hops of routes, each kept once for all routes that have it.
class NextHopTable {
 public:
  explicit NextHopTable(KeyedHash hash) : hash_(hash) {}

  // Returns the id of `next_hop`, which has one more user by that.
  std::uint32_t keep(const NextHop& next_hop);

  // Takes one user away; the next hop goes with the last one.
  void drop(std::uint32_t id);

  const NextHop& operator[](std::uint32_t id) const { return places_[id].next_hop; }

 private:
  struct Place {
    NextHop next_hop;
    std::uint32_t users = 0;
  };

  std::uint32_t hash_of(const NextHop& next_hop) const;

  KeyedHash hash_;
  Pool<Place> places_;
  FlatIndex index_;
};

// A subnet and one way to it.
template <class Address>
struct L3Route {
  Address prefix{};     // bits behind `length` are 0
  unsigned length = 0;  // of the mask, in bits
  std::uint32_t metric = 0;
  NextHop next_hop;
};

// The routes, keyed by prefix, mask length and destination. Of the routes of one prefix the one of
// the lowest metric is used, and of several of those the earliest.
//
// A hash index finds the routes of a prefix, for those who set them; forwarding reads a trie alone,
// which leads to the next hops of the routes in use.
template <class Address>
class L3RouteTable {
 public:
  using Route = L3Route<Address>;

  explicit L3RouteTable(std::size_t capacity, KeyedHash hash = KeyedHash::drawn())
      : hash_(hash), capacity_(capacity), next_hops_(hash) {}

  // Adds a route to the subnet of `ip`, or gives the route of the same key the new MAC, interface
  // and metric; a route whose metric changes counts as the latest of its new metric.
  L3Add add(const Address& ip, unsigned length, const NextHop& next_hop, std::uint32_t metric = 0);

  // Starts to load what lookup(ip) reads first.
  void prefetch(const Address& ip) const { trie_.prefetch(ip); }

  // Returns the next hop of the route in use for `ip`, that of the longest prefix that holds it.
  // Null when there is none. The pointer holds until a route is added or removed.
  const NextHop* lookup(const Address& ip) const { return next_hop_of(trie_.lookup(ip)); }

  // As lookup() for each of `count` addresses, a step of all of them at a time, so that they wait
  // for memory together. next_hops[i] is the result for ips[i]. `count` is at most kBatch.
  static constexpr std::size_t kBatch = PrefixTrie<Address>::kBatch;
  void lookup_batch(const Address* ips, std::size_t count, const NextHop** next_hops) const;

  // Returns the route to this subnet by `destination`, if there is one.
  std::optional<Route> find(const Address& ip, unsigned length, Destination destination) const;

  // Removes the route to this subnet by `destination`; false when there is none.
  bool remove(const Address& ip, unsigned length, Destination destination);

  // Removes the routes over an interface and returns how many there were; reads the whole table.
  std::size_t remove_by_interface(std::uint32_t interface_id);
  // The same for the routes through a port or LAG.
  std::size_t remove_by_destination(Destination destination);

  void clear();

  std::size_t size() const { return places_.size(); }
  std::size_t capacity() const { return capacity_; }

  // Calls visit(const Route&) for each route; `visit` must not change the table.
  template <class Visit>
  void for_each(Visit&& visit) const {
    places_.for_each([&](std::uint32_t position) { visit(route_at(position)); });
  }
  // The same for the routes of one prefix, the one in use first, then by metric and age.
  template <class Visit>
  void for_each_of(const Address& prefix, unsigned length, Visit&& visit) const {
    for (std::uint32_t p = first_of(prefix, length); p != kNil; p = places_[p].next) {
      visit(route_at(p));
    }
  }

 private:
  static constexpr std::uint32_t kNil = FlatIndex::kNone;

  struct Place {
    Address prefix{};
    std::uint32_t metric = 0;
    std::uint32_t next_hop = 0;  // its id
    std::uint32_t next = kNil;   // the next worse route of the same prefix
    std::uint8_t length = 0;
  };

  const NextHop* next_hop_of(std::uint32_t found) const {
    return found == PrefixTrie<Address>::kNone ? nullptr : &next_hops_[found];
  }
  Route route_at(std::uint32_t position) const;
  std::uint32_t first_of(const Address& prefix, unsigned length) const;
  std::uint32_t by_destination(std::uint32_t first, Destination destination) const;
  template <class Matches>
  std::size_t remove_where(Matches&& matches);
  void link(std::uint32_t position, std::uint32_t first);
  void unlink(std::uint32_t position, std::uint32_t first);
  void erase(std::uint32_t position, std::uint32_t first);

  KeyedHash hash_;
  std::size_t capacity_;
  Pool<Place> places_;
  FlatIndex index_;  // the route in use of each prefix
  NextHopTable next_hops_;
  PrefixTrie<Address> trie_;  // the next hop of the route in use of each prefix
};

// ---- All of them --------------------------------------------------------------------------------

// The layer-3 tables of a card. They stand side by side: removing an interface leaves the hosts
// and routes that name it, and those find no interface until one has that id again.
struct L3Table {
  explicit L3Table(const CardCapacity& capacity = CardCapacity(),
                   KeyedHash hash = KeyedHash::drawn())
      : interfaces(capacity.l3_interfaces, hash),
        ipv4_hosts(capacity.ipv4_hosts, hash),
        ipv6_hosts(capacity.ipv6_hosts, hash),
        ipv4_routes(capacity.ipv4_routes, hash),
        ipv6_routes(capacity.ipv6_routes, hash) {}

  // The hosts and the routes of a family.
  template <class Address>
  L3HostTable<Address>& hosts() {
    if constexpr (std::is_same_v<Address, Ipv4>) return ipv4_hosts;
    if constexpr (std::is_same_v<Address, Ipv6Address>) return ipv6_hosts;
  }
  template <class Address>
  L3RouteTable<Address>& routes() {
    if constexpr (std::is_same_v<Address, Ipv4>) return ipv4_routes;
    if constexpr (std::is_same_v<Address, Ipv6Address>) return ipv6_routes;
  }

  L3InterfaceTable interfaces;
  L3HostTable<Ipv4> ipv4_hosts;
  L3HostTable<Ipv6Address> ipv6_hosts;
  L3RouteTable<Ipv4> ipv4_routes;
  L3RouteTable<Ipv6Address> ipv6_routes;
};

extern template class L3HostTable<Ipv4>;
extern template class L3HostTable<Ipv6Address>;
extern template class L3RouteTable<Ipv4>;
extern template class L3RouteTable<Ipv6Address>;

}  // namespace softcard

#endif  // SOFTCARD_TABLES_L3_TABLE_H_
