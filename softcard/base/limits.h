// SPDX-License-Identifier: Apache-2.0
//
// The largest numbers of a card, whatever its description says.
#ifndef SOFTCARD_BASE_LIMITS_H_
#define SOFTCARD_BASE_LIMITS_H_

#include "softcard/base/net_types.h"

namespace softcard {

// The largest number of physical ports that a card can have.
inline constexpr PortIndex kMaxPorts = 256;

// VLAN numbers are 1 to kMaxVlan; arrays indexed by VLAN have kVlanCount places.
inline constexpr unsigned kMaxVlan = 4094;
inline constexpr unsigned kVlanCount = 4096;

// Whether `vlan` is a VLAN number at all; it need not exist.
constexpr bool valid_vlan(unsigned vlan) { return vlan >= 1 && vlan <= kMaxVlan; }

// Spanning-tree instances are 0 to kMstpInstances - 1.
inline constexpr unsigned kMstpInstances = 64;

// 802.1p priorities are 0 to kPriorities - 1, egress queues 0 to kQueues - 1.
inline constexpr unsigned kPriorities = 8;
inline constexpr unsigned kQueues = 8;

// LAG interfaces are numbered 1 to kMaxLagNumber, LAG ids 0 to kMaxLagNumber - 1.
inline constexpr unsigned kMaxLagNumber = 128;

}  // namespace softcard

#endif  // SOFTCARD_BASE_LIMITS_H_
