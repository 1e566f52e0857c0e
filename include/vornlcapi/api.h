// SPDX-License-Identifier: Apache-2.0
//
// All API entry points of libvornlcapi, one header a family. Valid from C++11 on.
//
// A process on the line card, from its start to its end:
//
//   #include <cstdio>
//   #include "vornlcapi/api.h"
//
//   int main() {
//     int ports = 0;
//     if (!vorn_lcmgr_api_init(ports)) return 1;  // the host could not start the line card
//
//     const Usp port(1, 1, 3);  // unit, slot, port
//     if (!vorn_create_vlan(10) || !vorn_add_ports_to_vlan(10, {}, {port}) ||
//         !vorn_set_port_pvid(port, 10)) {
//       return 1;  // false: what was done before the refusal stays
//     }
//     unsigned int pvid = 0;
//     if (vorn_get_port_pvid(port, pvid)) std::printf("%d ports, PVID %u\n", ports, pvid);
//     if (!vorn_set_port_pvid(port, 4095)) std::puts("refused: there is no VLAN 4095");
//     if (!vorn_get_port_pvid(Usp(1, 9, 3), pvid)) std::puts("refused: there is no port 1/9/3");
//     return vorn_lcmgr_api_terminate() ? 0 : 1;  // the end: from here on everything is refused
//   }
//
// It prints "52 ports, PVID 10" on the software line card, and the two refusals. Programs in
// examples/ go on from here.
//
// These conventions hold for every entry point; a function's own comment names what departs.
//
// Results
//   An entry point returns true when everything it had to do was done, and false otherwise. It
//   does not tell why: there may be no SDK object (before vorn_lcmgr_api_init() and after
//   vorn_lcmgr_api_terminate() that is always so), a port may not translate, or the SDK may
//   refuse. Nothing is printed or logged. The library throws nothing of its own; what the host's
//   functions throw passes through, and nothing is leaked.
//   An output is a reference that the SDK writes. After false it is as the SDK left it, which
//   means untouched when the SDK was not reached. Nothing is cleared beforehand.
//   What was changed before a failure stays changed.
//
// Values
//   The library checks no range, pointer or enumeration value: it hands them to the SDK, and a
//   range given here is what the SDK takes. Null pointers are not allowed, save for the user
//   data of callbacks.
//   A MAC address is 6 bytes and an IPv6 address or mask 16 bytes, first byte on the wire first.
//   An IPv4 address or mask is a number: 192.0.2.1 is 0xc0000201. VLAN numbers run from 1 to
//   4094. Arguments are the caller's and are used during the call only.
//
// Ports
//   A Usp names a physical port, a LAG interface or a VLAN interface. The comments say
//     physical port       `port` must be one; a LAG interface, a VLAN interface and an unknown
//                         port give false, and the SDK is not asked.
//     every member        the physical port itself, or each member of the LAG or VLAN interface
//                         in turn, up to the first one that the SDK refuses. Members before that
//                         keep the new value. A LAG or VLAN without members gives true.
//     every port listed   each port of `ports` in turn, a LAG or VLAN interface in it as its
//                         members, up to the first one that the SDK refuses. If one of them is
//                         unknown none is changed. An empty list gives true.
//   A getter and its setter need not take the same kinds of port.
//
// Threads
//   The library starts no thread, takes no lock and keeps no state but one trace flag. Calls run
//   on the caller's thread; callers do not let them overlap.
#ifndef VORNLCAPI_API_H_
#define VORNLCAPI_API_H_

#include "vornlcapi/api/event.h"
#include "vornlcapi/api/fdb.h"
#include "vornlcapi/api/filter.h"
#include "vornlcapi/api/flow.h"
#include "vornlcapi/api/l3.h"
#include "vornlcapi/api/lag.h"
#include "vornlcapi/api/lifecycle.h"
#include "vornlcapi/api/packet.h"
#include "vornlcapi/api/port.h"
#include "vornlcapi/api/stat.h"
#include "vornlcapi/api/stp.h"
#include "vornlcapi/api/traffic.h"
#include "vornlcapi/api/vlan.h"

#endif  // VORNLCAPI_API_H_
