// SPDX-License-Identifier: Apache-2.0
//
// Packets sent from the CPU.

#include "vornlcapi/api/packet.h"

#include "api/ports.h"

using namespace vorn::detail;

namespace {

bool is_up(VornSdkBase& sdk, const Mp& mp) {
  phy_state_t state = PHY_STATE_DOWN;
  return sdk.get_port_link_state(mp, state) && state == PHY_STATE_UP;
}

// Appends the hardware ports that can carry a packet now: a physical port that is up, the first
// member of a LAG that is up, every member of a VLAN interface that is up. Ports that do not
// translate, whose link is not up or cannot be asked for, and ports of no kind are passed over.
// Without an SDK object nothing is appended; the caller's own lookup notices.
void select_egress(const std::list<Usp>& ports, std::list<Mp>& selected) {
  VornSdkBase* const sdk = find_sdk();
  if (sdk == nullptr) return;
  for (const Usp& port : ports) {
    if (is_port_physical(port)) {
      Mp mp(0, 0);
      if (vorn_usp_to_mp(port, mp) && is_up(*sdk, mp)) selected.push_back(mp);
      continue;
    }
    const bool first_only = is_port_logical_lag(port);
    std::list<Mp> members;
    if (!(first_only || is_port_logical_vlan(port)) || !vorn_usp_to_mp_list(port, members)) {
      continue;
    }
    for (const Mp& mp : members) {
      if (!is_up(*sdk, mp)) continue;
      selected.push_back(mp);
      if (first_only) break;
    }
  }
}

}  // namespace

bool vorn_send_packet_from_cpu(const Packet& packet) {
  return call<&VornSdkBase::send_packet_from_cpu>(packet);
}

bool vorn_send_packet_by_port(const std::list<Usp>& tagged, const std::list<Usp>& untagged,
                              const Packet& packet) {
  std::list<Mp> tagged_mps;
  std::list<Mp> untagged_mps;
  select_egress(tagged, tagged_mps);
  select_egress(untagged, untagged_mps);
  VornSdkBase* const sdk = find_sdk();
  return sdk != nullptr && sdk->send_packet_by_port(tagged_mps, untagged_mps, packet);
}
