// SPDX-License-Identifier: Apache-2.0
//
// Packets sent from the CPU. capi.h has the conventions.
#include "vornlcapi/capi/packet.h"

#include "capi/conversions.h"
#include "vornlcapi/api/packet.h"

using namespace vorn::detail;

int ctype_vorn_send_packet_from_cpu(ctype_packet_s* packet) {
  return packet->length != 0 && vorn_send_packet_from_cpu(to_packet(packet));
}

int ctype_vorn_send_packet_by_port(usp_s* tagged, int tagged_count, usp_s* untagged,
                                   int untagged_count, ctype_packet_s* packet) {
  const std::list<Usp> tagged_ports = to_list(tagged, tagged_count);
  const std::list<Usp> untagged_ports = to_list(untagged, untagged_count);
  return packet->length != 0 &&
         vorn_send_packet_by_port(tagged_ports, untagged_ports, to_packet(packet));
}
