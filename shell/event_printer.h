// SPDX-License-Identifier: Apache-2.0
//
// The shell's callbacks: each prints the event that it is called with, one line an event.
#ifndef SHELL_EVENT_PRINTER_H_
#define SHELL_EVENT_PRINTER_H_

#include <string>
#include <vector>

#include "vornlcapi/types.h"

namespace shell {

// The names of an event's fields; Error when there is no such event.
const std::vector<std::string>& fields_of_event(const std::string& name);

// The callback with the signature void(A...).
template <class... A>
struct EventPrinter;

template <>
struct EventPrinter<RxPacket*, void*> {
  static void print(RxPacket* packet, void* user_data);
};
template <>
struct EventPrinter<ctype_rx_packet_s*, void*> {
  static void print(ctype_rx_packet_s* packet, void* user_data);
};
template <>
struct EventPrinter<LinkStatus*, Usp*> {
  static void print(LinkStatus* status, Usp* port);
};
template <>
struct EventPrinter<ctype_link_status_s*, usp_s*> {
  static void print(ctype_link_status_s* status, usp_s* port);
};
template <>
struct EventPrinter<L2Addr*, int, void*> {
  static void print(L2Addr* entry, int update, void* user_data);
};
template <>
struct EventPrinter<ctype_l2_addr_s*, int, void*> {
  static void print(ctype_l2_addr_s* entry, int update, void* user_data);
};

}  // namespace shell

#endif  // SHELL_EVENT_PRINTER_H_
