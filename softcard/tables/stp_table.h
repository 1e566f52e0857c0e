// SPDX-License-Identifier: Apache-2.0
//
// Spanning-tree states: one of each port, and one of each port in each instance. A frame of a VLAN
// passes a port where the port's own state and the state in the VLAN's instance both let it.
#ifndef SOFTCARD_TABLES_STP_TABLE_H_
#define SOFTCARD_TABLES_STP_TABLE_H_

#include <array>
#include <cstdint>
#include <vector>

#include "softcard/base/limits.h"
#include "softcard/base/port_set.h"
#include "vornlcapi/enums.h"

namespace softcard {

// Conventions: a PortIndex given is a port of the card; an instance given to the queries is below
// kMstpInstances. Setters return false for a state or instance that there is not.
class StpTable {
 public:
  // Every port forwards in every instance.
  explicit StpTable(const PortSet& ports);

  // ---- What the pipeline asks -------------------------------------------------------------------

  // The ports that data passes in an instance, both ways, and those that learn from it.
  const PortSet& forwarding(unsigned instance) const { return gates_[instance].forwarding; }
  const PortSet& learning(unsigned instance) const { return gates_[instance].learning; }
  bool forwards(PortIndex port, unsigned instance) const {
    return forwarding(instance).contains(port);
  }
  bool learns(PortIndex port, unsigned instance) const { return learning(instance).contains(port); }
  // Whether the port's own state drops everything, BPDUs included.
  bool disabled(PortIndex port) const { return stp_[port] == STP_STATE_DISABLED; }

  // ---- Settings ---------------------------------------------------------------------------------

  bool set_stp(PortIndex port, stp_state_t state);
  stp_state_t stp(PortIndex port) const { return static_cast<stp_state_t>(stp_[port]); }
  bool set_mstp(unsigned instance, PortIndex port, mstp_state_t state);
  mstp_state_t mstp(unsigned instance, PortIndex port) const {
    return static_cast<mstp_state_t>(mstp_[instance][port]);
  }
  // Whether BPDUs go to the CPU (as at the start) or are ordinary multicast.
  void set_bpdu_processing(PortIndex port, bool on) { bpdu_processing_.assign(port, on); }
  bool bpdu_processing(PortIndex port) const { return bpdu_processing_.contains(port); }

 private:
  struct Gate {
    PortSet forwarding;
    PortSet learning;
  };

  void update_gate(unsigned instance, PortIndex port);

  std::array<std::uint8_t, kMaxPorts> stp_;
  std::array<std::array<std::uint8_t, kMaxPorts>, kMstpInstances> mstp_;
  std::array<Gate, kMstpInstances> gates_;
  PortSet bpdu_processing_;
};

}  // namespace softcard

#endif  // SOFTCARD_TABLES_STP_TABLE_H_
