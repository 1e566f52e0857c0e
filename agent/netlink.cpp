// SPDX-License-Identifier: Apache-2.0
#include "netlink.h"

#include <linux/if_bridge.h>
#include <linux/if_link.h>
#include <linux/neighbour.h>
#include <linux/netconf.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <netlink/msg.h>
#include <netlink/netlink.h>
#include <netlink/socket.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <optional>

namespace agent {

namespace {

constexpr int kEventBytes = 4 << 20;  // room for 10,000 routes that change at once
constexpr std::size_t kBufferBytes = 65536;
constexpr unsigned kLowerUp = 0x10000;  // IFF_LOWER_UP, of a header that net/if.h excludes
constexpr unsigned char kMulticastNeighbour = RTN_MULTICAST;
constexpr unsigned kCentiseconds = 100;

constexpr int kGroups[] = {RTNLGRP_LINK,         RTNLGRP_NEIGH,        RTNLGRP_IPV4_IFADDR,
                           RTNLGRP_IPV6_IFADDR,  RTNLGRP_IPV4_ROUTE,   RTNLGRP_IPV6_ROUTE,
                           RTNLGRP_IPV4_NETCONF, RTNLGRP_IPV6_NETCONF, RTNLGRP_NEXTHOP};

// The attributes of a message or of one that holds others, by type; null where there is none.
template <int kMost>
class Attributes {
 public:
  Attributes(nlmsghdr* message, int header_bytes) {
    good_ = nlmsg_parse(message, header_bytes, table_, kMost, nullptr) == 0;
  }
  explicit Attributes(nlattr* holder) {
    good_ = holder != nullptr && nla_parse_nested(table_, kMost, holder, nullptr) == 0;
  }
  Attributes(nlattr* first, int bytes) {
    good_ = nla_parse(table_, kMost, first, bytes, nullptr) == 0;
  }

  nlattr* operator[](int type) const { return good_ ? table_[type] : nullptr; }

  unsigned number(int type, unsigned otherwise) const {
    nlattr* const found = (*this)[type];
    if (found == nullptr) return otherwise;
    switch (nla_len(found)) {
      case 1:
        return nla_get_u8(found);
      case 2:
        return nla_get_u16(found);
      case 4:
        return nla_get_u32(found);
      default:
        return otherwise;
    }
  }

 private:
  nlattr* table_[kMost + 1] = {};
  bool good_ = false;
};

std::optional<Mac> mac_of(nlattr* attribute) {
  Mac mac{};
  if (attribute == nullptr || nla_len(attribute) != static_cast<int>(mac.size())) {
    return std::nullopt;
  }
  std::memcpy(mac.data(), nla_data(attribute), mac.size());
  return mac;
}

std::optional<Ip> ip_of(const void* data, int bytes) {
  if (bytes != 4 && bytes != 16) return std::nullopt;
  Ip ip;
  ip.family = bytes == 4 ? Family::v4 : Family::v6;
  std::memcpy(ip.bytes.data(), data, static_cast<std::size_t>(bytes));
  return ip;
}

std::optional<Ip> ip_of(nlattr* attribute) {
  if (attribute == nullptr) return std::nullopt;
  return ip_of(nla_data(attribute), nla_len(attribute));
}

template <class Header>
const Header& header_of(nlmsghdr* message) {
  return *static_cast<const Header*>(nlmsg_data(message));
}

template <class Header>
bool has_header(nlmsghdr* message) {
  return nlmsg_valid_hdr(message, sizeof(Header)) != 0;
}

bool failed(int result, std::string& error) {
  if (result < 0) error = nl_geterror(result);
  return result < 0;
}

// The next hop that a route or one of its legs names.
template <int kMost>
RouteLeg leg_of(const Attributes<kMost>& attributes, int interface) {
  RouteLeg leg;
  leg.interface = interface;
  std::optional<Ip> gateway = ip_of(attributes[RTA_GATEWAY]);
  if (nlattr* const via = attributes[RTA_VIA]) {  // an address of the other family
    const int head = static_cast<int>(sizeof(rtvia));
    if (nla_len(via) > head) {
      gateway = ip_of(static_cast<const char*>(nla_data(via)) + head, nla_len(via) - head);
    }
  }
  if (gateway) {
    leg.has_gateway = true;
    leg.gateway = *gateway;
  }
  return leg;
}

std::vector<RouteLeg> legs_of(nlattr* multipath) {
  std::vector<RouteLeg> legs;
  int rest = nla_len(multipath);
  auto* next = static_cast<rtnexthop*>(nla_data(multipath));
  while (rest >= static_cast<int>(sizeof *next) && next->rtnh_len >= sizeof *next &&
         next->rtnh_len <= rest) {
    auto* const bytes = reinterpret_cast<char*>(next);
    const Attributes<RTA_MAX> attributes(reinterpret_cast<nlattr*>(bytes + sizeof *next),
                                         next->rtnh_len - static_cast<int>(sizeof *next));
    legs.push_back(leg_of(attributes, next->rtnh_ifindex));
    const int length = static_cast<int>(RTNH_ALIGN(next->rtnh_len));
    rest -= length;
    next = reinterpret_cast<rtnexthop*>(bytes + length);
  }
  return legs;
}

}  // namespace

// ---- Sockets ------------------------------------------------------------------------------------

// A request in the making.
struct Netlink::Message {
  template <class Header>
  Message(int type, int flags, const Header& header) : message(nlmsg_alloc_simple(type, flags)) {
    if (message != nullptr) {
      good = nlmsg_append(message, const_cast<Header*>(&header), sizeof header, NLMSG_ALIGNTO) == 0;
    }
  }
  ~Message() { nlmsg_free(message); }
  Message(const Message&) = delete;
  Message& operator=(const Message&) = delete;

  void put(int type, const void* data, std::size_t bytes) {
    good = good && nla_put(message, type, static_cast<int>(bytes), data) == 0;
  }

  nl_msg* message;
  bool good = false;
};

std::unique_ptr<Netlink> Netlink::open(std::string& error) {
  std::unique_ptr<Netlink> made(new Netlink);
  made->buffer_.resize(kBufferBytes);
  made->events_ = nl_socket_alloc();
  made->requests_ = nl_socket_alloc();
  if (made->events_ == nullptr || made->requests_ == nullptr) {
    error = std::strerror(ENOMEM);
    return nullptr;
  }
  if (failed(nl_connect(made->events_, NETLINK_ROUTE), error) ||
      failed(nl_connect(made->requests_, NETLINK_ROUTE), error) ||
      failed(nl_socket_set_nonblocking(made->events_), error) ||
      failed(
          nl_socket_modify_cb(made->requests_, NL_CB_VALID, NL_CB_CUSTOM, &take_dumped, made.get()),
          error)) {
    return nullptr;
  }
  for (const int group : kGroups) {
    if (failed(nl_socket_add_membership(made->events_, group), error)) return nullptr;
  }
  // What does not fit is read again: a smaller buffer costs time only.
  setsockopt(made->descriptor(), SOL_SOCKET, SO_RCVBUFFORCE, &kEventBytes, sizeof kEventBytes);
  if (!made->reload(error)) return nullptr;
  return made;
}

Netlink::~Netlink() {
  if (events_ != nullptr) nl_socket_free(events_);
  if (requests_ != nullptr) nl_socket_free(requests_);
}

int Netlink::descriptor() const { return nl_socket_get_fd(events_); }

bool Netlink::read() {
  bool whole = true;
  for (;;) {
    const ssize_t count = recv(descriptor(), buffer_.data(), buffer_.size(), 0);
    if (count < 0) {
      if (errno == EINTR) continue;
      if (errno != ENOBUFS) return whole;
      whole = false;
      continue;
    }
    int rest = static_cast<int>(count);
    auto* message = reinterpret_cast<nlmsghdr*>(buffer_.data());
    for (; nlmsg_ok(message, rest) != 0; message = nlmsg_next(message, &rest)) take(message);
  }
}

bool Netlink::changed() { return std::exchange(changed_, false); }

std::vector<LinuxState::FdbKey> Netlink::forgotten() { return std::exchange(forgotten_, {}); }

template <class Header>
bool Netlink::dump(int type, unsigned char Header::*family_field, unsigned char family,
                   std::string& error) {
  constexpr int kMostTries = 10;
  Header header{};
  header.*family_field = family;
  for (int attempt = 0; attempt < kMostTries; ++attempt) {
    if (failed(nl_send_simple(requests_, type, NLM_F_DUMP, &header, sizeof header), error)) {
      return false;
    }
    dumping_ = true;
    const int result = nl_recvmsgs_default(requests_);
    dumping_ = false;
    // Disturbed while it ran.
    if (result == -NLE_DUMP_INTR) continue;
    return !failed(result, error);
  }
  error = "the tables change faster than they can be read";
  return false;
}

int Netlink::take_dumped(nl_msg* message, void* self) {
  static_cast<Netlink*>(self)->take(nlmsg_hdr(message));
  return NL_OK;
}

bool Netlink::reload(std::string& error) {
  while (!read()) {
  }
  state_ = LinuxState();
  changed_ = true;
  return dump(RTM_GETLINK, &ifinfomsg::ifi_family, AF_UNSPEC, error) &&
         dump(RTM_GETLINK, &ifinfomsg::ifi_family, AF_BRIDGE, error) &&
         dump(RTM_GETNETCONF, &netconfmsg::ncm_family, AF_INET, error) &&
         dump(RTM_GETNETCONF, &netconfmsg::ncm_family, AF_INET6, error) &&
         dump(RTM_GETADDR, &ifaddrmsg::ifa_family, AF_UNSPEC, error) &&
         dump(RTM_GETNEIGH, &ndmsg::ndm_family, AF_UNSPEC, error) &&
         dump(RTM_GETNEIGH, &ndmsg::ndm_family, AF_BRIDGE, error) && reload_routes(error);
}

bool Netlink::reload_routes(std::string& error) {
  routes_stale_ = false;
  changed_ = true;
  state_.routes.clear();
  return dump(RTM_GETROUTE, &rtmsg::rtm_family, AF_INET, error) &&
         dump(RTM_GETROUTE, &rtmsg::rtm_family, AF_INET6, error);
}

// ---- What the kernel tells ----------------------------------------------------------------------

void Netlink::take(nlmsghdr* message) {
  switch (message->nlmsg_type) {
    case RTM_NEWLINK:
    case RTM_DELLINK:
      if (!has_header<ifinfomsg>(message)) return;
      if (header_of<ifinfomsg>(message).ifi_family == AF_BRIDGE) {
        take_bridge_port(message);
      } else {
        take_link(message);
      }
      break;
    case RTM_NEWADDR:
    case RTM_DELADDR:
      if (has_header<ifaddrmsg>(message)) take_address(message);
      break;
    case RTM_NEWNEIGH:
    case RTM_DELNEIGH:
      if (!has_header<ndmsg>(message)) return;
      if (header_of<ndmsg>(message).ndm_family == AF_BRIDGE) {
        take_station(message);
      } else {
        take_neighbour(message);
      }
      return;
    case RTM_NEWROUTE:
    case RTM_DELROUTE:
      if (has_header<rtmsg>(message)) take_route(message);
      break;
    case RTM_NEWNETCONF:
      if (has_header<netconfmsg>(message)) take_forwarding(message);
      break;
    case RTM_DELNEXTHOP:
      routes_stale_ = true;
      break;
    default:
      return;
  }
  changed_ = true;
}

void Netlink::take_link(nlmsghdr* message) {
  const auto& header = header_of<ifinfomsg>(message);
  const int index = header.ifi_index;
  if (message->nlmsg_type == RTM_DELLINK) {
    state_.remove_link(index);
    routes_stale_ = true;
    return;
  }
  const Attributes<IFLA_MAX> attributes(message, sizeof header);
  Link& link = state_.links[index];
  if (attributes[IFLA_IFNAME] != nullptr) link.name = nla_get_string(attributes[IFLA_IFNAME]);
  const bool was_alive = link.carrier;
  link.up = (header.ifi_flags & IFF_UP) != 0;
  link.carrier = link.up && (header.ifi_flags & kLowerUp) != 0;
  // Without a carrier next-hop objects go, too, and the routes by them.
  if (was_alive && !link.carrier) routes_stale_ = true;
  link.mtu = attributes.number(IFLA_MTU, link.mtu);
  link.master = static_cast<int>(attributes.number(IFLA_MASTER, 0));
  if (const auto mac = mac_of(attributes[IFLA_ADDRESS])) link.mac = *mac;

  const Attributes<IFLA_INFO_MAX> info(attributes[IFLA_LINKINFO]);
  link.is_bridge = info[IFLA_INFO_KIND] != nullptr &&
                   std::strcmp(nla_get_string(info[IFLA_INFO_KIND]), "bridge") == 0;
  if (!link.is_bridge || info[IFLA_INFO_DATA] == nullptr) return;
  const Attributes<IFLA_BR_MAX> data(info[IFLA_INFO_DATA]);
  Bridge& bridge = link.bridge;
  bridge.stp = data.number(IFLA_BR_STP_STATE, 0) != 0;
  const unsigned ageing = data.number(IFLA_BR_AGEING_TIME, 300 * kCentiseconds);
  const unsigned delay = data.number(IFLA_BR_FORWARD_DELAY, 15 * kCentiseconds);
  // A part of a second counts as a whole one: 0 would mean for ever.
  bridge.ageing_seconds = (ageing + kCentiseconds - 1) / kCentiseconds;
  bridge.forward_delay_seconds = (delay + kCentiseconds - 1) / kCentiseconds;
  const bool was_changing = bridge.topology_change;
  bridge.topology_change = bridge.stp && data.number(IFLA_BR_TOPOLOGY_CHANGE, 0) != 0;
  if (bridge.topology_change && !was_changing) ++bridge.topology_changes;
}

void Netlink::take_bridge_port(nlmsghdr* message) {
  const auto& header = header_of<ifinfomsg>(message);
  const auto found = state_.links.find(header.ifi_index);
  if (found == state_.links.end()) return;
  Link& link = found->second;
  if (message->nlmsg_type == RTM_DELLINK) {  // it has left its bridge
    link.port_state = BridgePortState::disabled;
    link.isolated = false;
    return;
  }
  const Attributes<IFLA_MAX> attributes(message, sizeof header);
  const Attributes<IFLA_BRPORT_MAX> port(attributes[IFLA_PROTINFO]);
  const unsigned port_state = port.number(IFLA_BRPORT_STATE, 0);
  link.port_state =
      port_state <= 4 ? static_cast<BridgePortState>(port_state) : BridgePortState::disabled;
  link.isolated = port.number(IFLA_BRPORT_ISOLATED, 0) != 0;
}

void Netlink::take_address(nlmsghdr* message) {
  const auto& header = header_of<ifaddrmsg>(message);
  const Attributes<IFA_MAX> attributes(message, sizeof header);
  nlattr* const local = attributes[IFA_LOCAL];
  const auto ip = ip_of(local != nullptr ? local : attributes[IFA_ADDRESS]);
  if (!ip) return;
  const int index = static_cast<int>(header.ifa_index);
  if (message->nlmsg_type == RTM_NEWADDR) {
    state_.addresses[index].insert(*ip);
    return;
  }
  const auto found = state_.addresses.find(index);
  if (found != state_.addresses.end()) {
    found->second.erase(*ip);
    if (found->second.empty()) state_.addresses.erase(found);
  }
  routes_stale_ = true;
}

void Netlink::take_neighbour(nlmsghdr* message) {
  const auto& header = header_of<ndmsg>(message);
  const Attributes<NDA_MAX> attributes(message, sizeof header);
  const auto ip = ip_of(attributes[NDA_DST]);
  if (!ip || header.ndm_type == kMulticastNeighbour || (header.ndm_flags & NTF_PROXY) != 0) return;
  const LinuxState::NeighbourKey key{header.ndm_ifindex, *ip};
  if (message->nlmsg_type == RTM_DELNEIGH) {
    if (state_.neighbours.erase(key) != 0) changed_ = true;
    return;
  }
  constexpr unsigned kResolved =
      NUD_REACHABLE | NUD_STALE | NUD_DELAY | NUD_PROBE | NUD_NOARP | NUD_PERMANENT;
  const auto mac = mac_of(attributes[NDA_LLADDR]);
  const auto [entry, fresh] = state_.neighbours.try_emplace(key);
  Neighbour neighbour = entry->second;
  neighbour.resolved = mac && !is_group(*mac) && (header.ndm_state & kResolved) != 0;
  if (mac) neighbour.mac = *mac;
  neighbour.managed = (attributes.number(NDA_FLAGS_EXT, 0) & NTF_EXT_MANAGED) != 0;
  // Most messages tell how old an entry is, and nothing else.
  if (!fresh && neighbour == entry->second) return;
  entry->second = neighbour;
  changed_ = true;
}

void Netlink::take_station(nlmsghdr* message) {
  const auto& header = header_of<ndmsg>(message);
  const Attributes<NDA_MAX> attributes(message, sizeof header);
  const auto mac = mac_of(attributes[NDA_LLADDR]);
  const int bridge = static_cast<int>(attributes.number(NDA_MASTER, 0));
  // Without a bridge it is an address filter of the device itself.
  if (!mac || bridge == 0) return;
  const LinuxState::FdbKey key{header.ndm_ifindex, *mac};
  const auto found = state_.fdb.find(key);
  if (message->nlmsg_type == RTM_DELNEIGH) {
    if (found == state_.fdb.end()) return;
    if (found->second == FdbKind::from_card) forgotten_.push_back(key);
    state_.fdb.erase(found);
    changed_ = true;
    return;
  }
  FdbKind kind = FdbKind::learned;
  if ((header.ndm_state & NUD_PERMANENT) != 0) {
    kind = FdbKind::local;
  } else if ((header.ndm_state & NUD_NOARP) != 0) {
    kind = FdbKind::fixed;
  } else if ((header.ndm_flags & NTF_EXT_LEARNED) != 0) {
    kind = FdbKind::from_card;
  }
  // The echo of a request.
  if (found != state_.fdb.end() && found->second == kind) return;
  // An address is at one port of a bridge.
  if (!dumping_) {
    for (const auto& [index, link] : state_.links) {
      if (link.master == bridge) state_.fdb.erase({index, *mac});
    }
  }
  state_.fdb[key] = kind;
  changed_ = true;
}

void Netlink::take_route(nlmsghdr* message) {
  const auto& header = header_of<rtmsg>(message);
  if ((header.rtm_flags & RTM_F_CLONED) != 0 || header.rtm_type == RTN_MULTICAST ||
      header.rtm_tos != 0 || (header.rtm_family != AF_INET && header.rtm_family != AF_INET6)) {
    return;
  }
  const Attributes<RTA_MAX> attributes(message, sizeof header);
  RouteKey key;
  key.table = attributes.number(RTA_TABLE, header.rtm_table);
  if (key.table != RT_TABLE_MAIN && key.table != RT_TABLE_LOCAL) return;
  key.metric = attributes.number(RTA_PRIORITY, 0);
  key.prefix.length = header.rtm_dst_len;
  key.prefix.ip.family = header.rtm_family == AF_INET ? Family::v4 : Family::v6;
  if (const auto ip = ip_of(attributes[RTA_DST])) key.prefix.ip = *ip;
  if (stays_on_link(key.prefix)) return;

  Route route;
  route.kind = header.rtm_type == RTN_UNICAST ? RouteKind::unicast : RouteKind::local;
  if (nlattr* const multipath = attributes[RTA_MULTIPATH]) {
    route.legs = legs_of(multipath);
  } else {
    route.legs.push_back(leg_of(attributes, static_cast<int>(attributes.number(RTA_OIF, 0))));
  }
  if (message->nlmsg_type == RTM_DELROUTE) {
    state_.remove_route(key, route);
    return;
  }
  RouteChange change = RouteChange::add;
  if (!dumping_ && (message->nlmsg_flags & NLM_F_REPLACE) != 0) change = RouteChange::replace;
  if ((message->nlmsg_flags & NLM_F_APPEND) != 0) change = RouteChange::append;
  state_.add_route(key, route, change);
}

void Netlink::take_forwarding(nlmsghdr* message) {
  const auto& header = header_of<netconfmsg>(message);
  const Attributes<NETCONFA_MAX> attributes(message, sizeof header);
  const int index = static_cast<int>(attributes.number(NETCONFA_IFINDEX, 0));
  // "All" and "default" are no interfaces.
  if (index <= 0 || attributes[NETCONFA_FORWARDING] == nullptr) return;
  const bool forwards = attributes.number(NETCONFA_FORWARDING, 0) != 0;
  // A new interface is told of here first.
  Link& link = state_.links[index];
  if (header.ncm_family == AF_INET) {
    link.forwards_v4 = forwards;
  } else if (header.ncm_family == AF_INET6) {
    link.forwards_v6 = forwards;
  }
}

// ---- Requests -----------------------------------------------------------------------------------

int Netlink::send(Message& message) {
  if (!message.good) return -NLE_NOMEM;
  const int sent = nl_send_auto(requests_, message.message);
  return sent < 0 ? sent : nl_wait_for_ack(requests_);
}

bool Netlink::request(Message& message, std::string& error) {
  return !failed(send(message), error);
}

bool Netlink::look_at(int interface, std::string& error) {
  ifinfomsg header{};
  header.ifi_index = interface;
  // The answer comes in front of the acknowledgement.
  return !failed(nl_send_simple(requests_, RTM_GETLINK, 0, &header, sizeof header), error) &&
         !failed(nl_recvmsgs_default(requests_), error) &&
         !failed(nl_wait_for_ack(requests_), error);
}

bool Netlink::set_mac(int interface, const Mac& mac, std::string& error) {
  ifinfomsg header{};
  header.ifi_index = interface;
  Message message(RTM_SETLINK, 0, header);
  message.put(IFLA_ADDRESS, mac.data(), mac.size());
  return request(message, error);
}

bool Netlink::isolate(int bridge_port, std::string& error) {
  ifinfomsg header{};
  header.ifi_family = AF_BRIDGE;
  header.ifi_index = bridge_port;
  Message message(RTM_SETLINK, 0, header);
  nlattr* const port =
      message.good ? nla_nest_start(message.message, IFLA_PROTINFO | NLA_F_NESTED) : nullptr;
  const std::uint8_t on = 1;
  message.good = port != nullptr;
  message.put(IFLA_BRPORT_ISOLATED, &on, sizeof on);
  if (message.good) nla_nest_end(message.message, port);
  if (!request(message, error)) return false;
  const auto found = state_.links.find(bridge_port);
  if (found != state_.links.end()) found->second.isolated = true;
  return true;
}

bool Netlink::add_station(int bridge_port, const Mac& mac, std::string& error) {
  ndmsg header{};
  header.ndm_family = AF_BRIDGE;
  header.ndm_ifindex = bridge_port;
  header.ndm_state = NUD_REACHABLE;
  header.ndm_flags = NTF_MASTER | NTF_EXT_LEARNED;
  Message message(RTM_NEWNEIGH, NLM_F_CREATE | NLM_F_REPLACE, header);
  message.put(NDA_LLADDR, mac.data(), mac.size());
  if (!request(message, error)) return false;
  state_.fdb[{bridge_port, mac}] = FdbKind::from_card;
  return true;
}

bool Netlink::remove_station(int bridge_port, const Mac& mac, std::string& error) {
  // The kernel's message about it shall not be taken for somebody else's wish.
  state_.fdb.erase({bridge_port, mac});
  ndmsg header{};
  header.ndm_family = AF_BRIDGE;
  header.ndm_ifindex = bridge_port;
  header.ndm_flags = NTF_MASTER;
  Message message(RTM_DELNEIGH, 0, header);
  message.put(NDA_LLADDR, mac.data(), mac.size());
  // The kernel removes addresses by itself when a port is lost.
  const int result = send(message);
  return result == -NLE_OBJ_NOTFOUND || !failed(result, error);
}

bool Netlink::manage(const LinuxState::NeighbourKey& neighbour, std::string& error) {
  ndmsg header{};
  header.ndm_family = neighbour.second.family == Family::v4 ? AF_INET : AF_INET6;
  header.ndm_ifindex = neighbour.first;
  Message message(RTM_NEWNEIGH, NLM_F_CREATE, header);
  message.put(NDA_DST, neighbour.second.bytes.data(), bits(neighbour.second.family) / 8);
  const std::uint32_t flags = NTF_EXT_MANAGED;
  message.put(NDA_FLAGS_EXT, &flags, sizeof flags);
  return request(message, error);
}

bool Netlink::release(const LinuxState::NeighbourKey& neighbour, std::string& error) {
  ndmsg header{};
  header.ndm_family = neighbour.second.family == Family::v4 ? AF_INET : AF_INET6;
  header.ndm_ifindex = neighbour.first;
  Message message(RTM_DELNEIGH, 0, header);
  message.put(NDA_DST, neighbour.second.bytes.data(), bits(neighbour.second.family) / 8);
  return request(message, error);
}

}  // namespace agent
