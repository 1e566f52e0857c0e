// SPDX-License-Identifier: Apache-2.0
//
// Packets from the CPU.

#include "softcard/sdk/sdk.h"

#include "softcard/sdk/conversions.h"

namespace softcard {

bool SoftSdk::send_packet_by_port(std::list<Mp>& tagged, std::list<Mp>& untagged,
                                  const Packet& packet) {
  std::vector<PortIndex> tagged_ports;
  std::vector<PortIndex> untagged_ports;
  return in_range("packet type", packet.type(), 0, PACKET_TYPE_CONTROL) &&
         ports_of(card_.addresses(), tagged, tagged_ports) &&
         ports_of(card_.addresses(), untagged, untagged_ports) &&
         card_.pipeline().send_by_port(tagged_ports, untagged_ports, packet.data().data(),
                                       packet.data().size(), packet.type());
}

bool SoftSdk::send_packet_from_cpu(const Packet& packet) {
  return in_range("packet type", packet.type(), 0, PACKET_TYPE_CONTROL) &&
         card_.pipeline().send_from_cpu(packet.data().data(), packet.data().size(), packet.type());
}

}  // namespace softcard
