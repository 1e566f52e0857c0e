// SPDX-License-Identifier: Apache-2.0
#include "event_printer.h"

#include <cstdint>
#include <map>

#include "codec.h"
#include "shell.h"
#include "softcard/frames/frame_text.h"

namespace shell {

namespace {

// User data is shown where there is some.
void add_user_data(NamedValues& fields, void* user_data) {
  if (user_data == nullptr) return;
  fields.emplace_back("user_data",
                      number_value(std::uint64_t{reinterpret_cast<std::uintptr_t>(user_data)}));
}

// Both forms of a record have the same fields.
template <class Record>
void print_packet(const char* event, const Record& packet, const Usp& port, void* user_data) {
  NamedValues fields = {
      {"port", port_value(port)},
      {"vlan", number_value(std::uint64_t{packet.vlan})},
      {"priority", number_value(std::uint64_t{packet.priority})},
      {"reason", name_value(rx_reason_names(), packet.reason)},
      {"frame", text_value(softcard::print_frame(packet.data, packet.length))},
  };
  add_user_data(fields, user_data);
  Shell::current().event(event, fields);
}

template <class Record>
void print_link(const char* event, const Record& status, const Usp& port) {
  Shell::current().event(event, {{"port", port_value(port)},
                                 {"state", enum_value(status.state)},
                                 {"speed", enum_value(status.speed)},
                                 {"duplex", enum_value(status.duplex)}});
}

template <class Record>
void print_mac(const char* event, const Record& entry, const Usp& port, int update,
               void* user_data) {
  NamedValues fields = {
      {"update", name_value(mac_update_names(), static_cast<std::uint32_t>(update))},
      {"mac", text_value(mac_text(entry.mac))},
      {"vlan", number_value(std::uint64_t{entry.vlan})},
      {"port", (entry.flags & L2_ADDR_SYSTEM) != 0 ? text_value("cpu") : port_value(port)},
      {"static", flag_value((entry.flags & L2_ADDR_STATIC) != 0)},
  };
  add_user_data(fields, user_data);
  Shell::current().event(event, fields);
}

Usp to_usp(const usp_s& port) { return Usp(port.unit, port.slot, port.port); }

}  // namespace

const std::vector<std::string>& fields_of_event(const std::string& name) {
  static const std::vector<std::string> packet = {"port",   "vlan",  "priority",
                                                  "reason", "frame", "user_data"};
  static const std::vector<std::string> link = {"port", "state", "speed", "duplex"};
  static const std::vector<std::string> mac = {"update", "mac",    "vlan",
                                               "port",   "static", "user_data"};
  static const std::map<std::string, const std::vector<std::string>*> events = {
      {"rx_packet", &packet},   {"rx_packet_c", &packet}, {"link_change", &link},
      {"link_change_c", &link}, {"mac_update", &mac},     {"mac_update_c", &mac}};
  const auto found = events.find(name);
  if (found != events.end()) return *found->second;
  std::vector<std::string> names;
  names.reserve(events.size());
  for (const auto& event : events) names.push_back(event.first);
  throw Error(joined_pieces("event: '", name, "' is none of ", joined(names, ", ")));
}

void EventPrinter<RxPacket*, void*>::print(RxPacket* packet, void* user_data) {
  print_packet("rx_packet", *packet, packet->port, user_data);
}
void EventPrinter<ctype_rx_packet_s*, void*>::print(ctype_rx_packet_s* packet, void* user_data) {
  print_packet("rx_packet_c", *packet, to_usp(packet->port), user_data);
}
void EventPrinter<LinkStatus*, Usp*>::print(LinkStatus* status, Usp* port) {
  print_link("link_change", *status, *port);
}
void EventPrinter<ctype_link_status_s*, usp_s*>::print(ctype_link_status_s* status, usp_s* port) {
  print_link("link_change_c", *status, to_usp(*port));
}
void EventPrinter<L2Addr*, int, void*>::print(L2Addr* entry, int update, void* user_data) {
  print_mac("mac_update", *entry, entry->port, update, user_data);
}
void EventPrinter<ctype_l2_addr_s*, int, void*>::print(ctype_l2_addr_s* entry, int update,
                                                       void* user_data) {
  print_mac("mac_update_c", *entry, to_usp(entry->port), update, user_data);
}

}  // namespace shell
