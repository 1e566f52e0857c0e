// SPDX-License-Identifier: Apache-2.0
//
// Layer-3 interfaces, hosts and routes.
//
// The operations on hosts and routes take a hardware port and a trunk flag. The entry points
// come to the two in five ways, each with its own order of questions to the host; the first
// argument of through() names the way.

#include "vornlcapi/api/l3.h"

#include "api/ports.h"
#include "vornlcapi/api/lag.h"

using namespace vorn::detail;

namespace {

// Where a host or route leads: with `trunk` set, mp is module 0 and its port is a LAG number.
struct Egress : Target {
  bool trunk = false;

  bool set_lag(unsigned int number) {
    trunk = true;
    mp.set_port(number);
    return true;
  }
};

// Asks for the kind of port first: a physical port is translated, a LAG gives its id.
bool by_kind(const Usp& port, Egress& to) {
  if (is_port_physical(port)) return vorn_usp_to_mp(port, to.mp);
  unsigned int lag_id = 0;
  return is_port_logical_lag(port) && vorn_lag_usp_to_lag_id(port, lag_id) && to.set_lag(lag_id);
}

// Translates first: a LAG that does not translate gives its id.
bool translated_or_lag_id(const Usp& port, Egress& to) {
  unsigned int lag_id = 0;
  return vorn_usp_to_mp(port, to.mp) ||
         (is_port_logical_lag(port) && vornsdk_lag_usp_to_lag_id(port, lag_id) &&
          to.set_lag(lag_id));
}

// Translates first: a LAG that does not translate gives the port number of its interface.
bool translated_or_lag_port(const Usp& port, Egress& to) {
  return vorn_usp_to_mp(port, to.mp) || (is_port_logical_lag(port) && to.set_lag(port.port()));
}

// Asks for a LAG first, which gives its id; any other port is translated.
bool lag_id_or_translated(const Usp& port, Egress& to) {
  if (!is_port_logical_lag(port)) return vorn_usp_to_mp(port, to.mp);
  unsigned int lag_id = 0;
  return vornsdk_lag_usp_to_lag_id(port, lag_id) && to.set_lag(lag_id);
}

// Translates whatever it is; whether it is a LAG decides the flag only.
bool translated(const Usp& port, Egress& to) {
  if (!vorn_usp_to_mp(port, to.mp)) return false;
  to.trunk = is_port_logical_lag(port);
  return true;
}

using Way = bool (*)(const Usp& port, Egress& to);

// Looks up, then goes the way given.
Egress find(Way way, const Usp& port) {
  Egress to;
  to.sdk = find_sdk();
  if (to.sdk != nullptr && !way(port, to)) to.sdk = nullptr;
  return to;
}

template <class Step>
bool through(Way way, const Usp& port, const Step& step) {
  const Egress to = find(way, port);
  return to.sdk != nullptr && step(to);
}

}  // namespace

// ---- Interfaces ---------------------------------------------------------------------------------

bool vorn_create_l3_interface(const unsigned char* mac, unsigned int vlan, unsigned int& id) {
  return call<&VornSdkBase::create_l3_interface>(mac, vlan, id);
}

bool vorn_create_l3_interface_with_id(const unsigned char* mac, unsigned int vlan, unsigned int id,
                                      bool replace) {
  return call<&VornSdkBase::create_l3_interface_with_id>(mac, vlan, id, replace);
}

bool vorn_get_l3_interface(unsigned int id, unsigned int& vlan, unsigned char* mac) {
  return call<&VornSdkBase::get_l3_interface>(id, vlan, mac);
}

bool vorn_delete_l3_interface(const unsigned char* mac, unsigned int vlan) {
  return call<&VornSdkBase::delete_l3_interface>(mac, vlan);
}

bool vorn_delete_l3_interface_by_id(unsigned int id) {
  return call<&VornSdkBase::delete_l3_interface_by_id>(id);
}

bool vorn_delete_l3_interface_all() { return call<&VornSdkBase::delete_l3_interface_all>(); }

// ---- Hosts --------------------------------------------------------------------------------------

bool vorn_add_l3_host_ip4(const Usp& port, unsigned int ip, const unsigned char* mac,
                          unsigned int interface) {
  return through(translated_or_lag_id, port, [&](const Egress& to) {
    return to.sdk->add_l3_host_ip4(to.mp, to.trunk, ip, mac, interface);
  });
}

bool vorn_add_l3_host_ip6(const Usp& port, const unsigned char* ip6, const unsigned char* mac,
                          unsigned int interface) {
  return through(translated_or_lag_id, port, [&](const Egress& to) {
    return to.sdk->add_l3_host_ip6(to.mp, to.trunk, ip6, mac, interface);
  });
}

bool vorn_get_l3_host_ip4(unsigned int ip, const Usp& port, unsigned char* mac,
                          unsigned int& interface) {
  return through(lag_id_or_translated, port, [&](const Egress& to) {
    return to.sdk->get_l3_host_ip4(ip, to.mp, mac, interface, to.trunk);
  });
}

bool vorn_get_l3_host_ip6(const unsigned char* ip6, const Usp& port, unsigned char* mac,
                          unsigned int& interface) {
  return through(lag_id_or_translated, port, [&](const Egress& to) {
    return to.sdk->get_l3_host_ip6(ip6, to.mp, mac, interface, to.trunk);
  });
}

bool vorn_delete_l3_host_by_interface(unsigned int interface, bool ip6) {
  return call<&VornSdkBase::delete_l3_host_by_interface>(interface, ip6);
}

bool vorn_delete_l3_host_by_network_ip4(unsigned int ip) {
  return call<&VornSdkBase::delete_l3_host_by_network_ip4>(ip);
}

bool vorn_delete_l3_host_by_network_ip6(const unsigned char* ip6) {
  return call<&VornSdkBase::delete_l3_host_by_network_ip6>(ip6);
}

bool vorn_delete_l3_host_by_addr_ip4(unsigned int ip, const Usp& port) {
  return through(by_kind, port, [&](const Egress& to) {
    return to.sdk->delete_l3_host_by_addr_ip4(ip, to.mp, to.trunk);
  });
}

bool vorn_delete_l3_host_by_addr_ip6(const unsigned char* ip6, const Usp& port) {
  return through(by_kind, port, [&](const Egress& to) {
    return to.sdk->delete_l3_host_by_addr_ip6(ip6, to.mp, to.trunk);
  });
}

bool vorn_clear_l3_host_table() { return call<&VornSdkBase::clear_l3_host_table>(); }

// ---- Routes -------------------------------------------------------------------------------------

bool vorn_add_l3_route_ip4(const Usp& port, unsigned int ip, unsigned int mask,
                           const unsigned char* mac, unsigned int interface, unsigned int metric) {
  return through(translated_or_lag_id, port, [&](const Egress& to) {
    return to.sdk->add_l3_route_ip4(to.mp, to.trunk, ip, mask, mac, interface, metric);
  });
}

// A LAG goes by its port number here, unlike in the IPv4 form.
bool vorn_add_l3_route_ip6(const Usp& port, const unsigned char* ip6, const unsigned char* mask6,
                           const unsigned char* mac, unsigned int interface) {
  return through(translated_or_lag_port, port, [&](const Egress& to) {
    return to.sdk->add_l3_route_ip6(to.mp, to.trunk, ip6, mask6, mac, interface);
  });
}

bool vorn_get_l3_route_by_subnet_ip4(unsigned int ip, unsigned int mask, const Usp& port,
                                     unsigned char (&mac)[6], unsigned int& interface,
                                     unsigned int& metric) {
  return through(lag_id_or_translated, port, [&](const Egress& to) {
    return to.sdk->get_l3_route_by_subnet_ip4(ip, mask, to.mp, to.trunk, mac, interface, metric);
  });
}

bool vorn_get_l3_route_by_subnet_ip6(const unsigned char* ip6, const unsigned char* mask6,
                                     const Usp& port, unsigned int& interface, unsigned char* mac) {
  return through(translated, port, [&](const Egress& to) {
    return to.sdk->get_l3_route_by_subnet_ip6(ip6, mask6, to.mp, to.trunk, interface, mac);
  });
}

bool vorn_delete_l3_route_by_interface(unsigned int interface, bool ip6) {
  return call<&VornSdkBase::delete_l3_route_by_interface>(interface, ip6);
}

bool vorn_delete_l3_route_by_subnet_ip4(unsigned int ip, unsigned int mask, const Usp& port) {
  return through(by_kind, port, [&](const Egress& to) {
    return to.sdk->delete_l3_route_by_subnet_ip4(ip, mask, to.mp, to.trunk);
  });
}

bool vorn_delete_l3_route_by_subnet_ip6(const unsigned char* ip6, const unsigned char* mask6,
                                        const Usp& port) {
  return through(by_kind, port, [&](const Egress& to) {
    return to.sdk->delete_l3_route_by_subnet_ip6(ip6, mask6, to.mp, to.trunk);
  });
}

bool vorn_clear_l3_route_table() { return call<&VornSdkBase::clear_l3_route_table>(); }
