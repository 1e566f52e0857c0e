// SPDX-License-Identifier: Apache-2.0
//
// The smallest host that libvornlcapi loads into: eight ports whose PVID is kept, and every other
// operation refused. Written from the platform headers alone; docs/host.md goes through it.
// main.cpp is a process with this host in it; a host without XORP adds no_event_loop.cpp.

#include "vorn_lag_list.h"
#include "vorn_port_mapping.h"
#include "vorn_sdk.h"
#include "vorn_sdk_refusing.h"

namespace {

const unsigned int kPorts = 8;  // 1/1/0 to 1/1/7, hardware ports 0:1 to 0:8

// This hardware's operations. The base class refuses the others: nothing is ever pretended.
class Sdk final : public VornSdkRefusing {
 public:
  bool get_line_card_usp(Usp& usp) override {
    usp = Usp(1, 1, 0);
    return true;
  }
  bool set_port_pvid(const Mp& mp, unsigned int vlan) override {
    if (vlan < 1 || vlan > 4094) return false;
    pvid_[mp.port() - 1] = vlan;
    return true;
  }
  bool get_port_pvid(const Mp& mp, unsigned int& vlan) override {
    vlan = pvid_[mp.port() - 1];
    return true;
  }

 private:
  unsigned int pvid_[kPorts] = {1, 1, 1, 1, 1, 1, 1, 1};
};

Sdk* sdk_object = nullptr;

}  // namespace

// ---- The SDK object and the LAG mapping ---------------------------------------------------------

bool vornsdk_get_sdk_instance(VornSdkBase*& sdk) {
  if (sdk_object == nullptr) return false;
  sdk = sdk_object;
  return true;
}
bool vornsdk_create_sdk_instance() {
  if (sdk_object != nullptr) return false;
  sdk_object = new Sdk;
  return true;
}
bool vornsdk_delete_sdk_instance(VornSdkBase* sdk) {
  if (sdk != sdk_object) return false;
  delete sdk_object;
  sdk_object = nullptr;
  return true;
}
bool vornsdk_lag_usp_to_lag_id(const Usp&, unsigned int&) { return false; }
bool vornsdk_lag_id_to_lag_usp(unsigned int, Usp&) { return false; }
bool vornsdk_add_lag_mapping(const Usp&, unsigned int) { return false; }
bool vornsdk_delete_lag_mapping(const Usp&, unsigned int) { return false; }

// ---- Port mapping -------------------------------------------------------------------------------

bool vorn_init_line_card(int& out) {
  out = kPorts;
  return true;
}
bool is_port_physical(const Usp& port) {
  return port.unit() == 1 && port.slot() == 1 && port.port() < kPorts;
}
bool is_port_logical_lag(const Usp&) { return false; }
bool is_port_logical_vlan(const Usp&) { return false; }
bool vorn_usp_to_mp(const Usp& port, Mp& mp) {
  if (!is_port_physical(port)) return false;
  mp = Mp(0, port.port() + 1);
  return true;
}
bool vorn_usp_to_mp_list(const Usp& port, std::list<Mp>& mps) {
  Mp mp(0, 0);
  if (!vorn_usp_to_mp(port, mp)) return false;
  mps.push_back(mp);
  return true;
}
bool vorn_usp_list_to_mp_list(const std::list<Usp>& ports, std::list<Mp>& mps) {
  for (const Usp& port : ports) {
    if (!vorn_usp_to_mp_list(port, mps)) return false;
  }
  return true;
}
bool vorn_mp_to_usp(const Mp& mp, Usp& port) {
  if (mp.module() != 0 || mp.port() < 1 || mp.port() > kPorts) return false;
  port = Usp(1, 1, mp.port() - 1);
  return true;
}
bool vorn_mp_list_to_usp_list(const std::list<Mp>& mps, std::list<Usp>& ports) {
  for (const Mp& mp : mps) {
    Usp port(0, 0, 0);
    if (!vorn_mp_to_usp(mp, port)) return false;
    ports.push_back(port);
  }
  return true;
}

// ---- LAG list: this card has no LAGs ------------------------------------------------------------

std::list<LagNode> lag_list;
bool add_lag_to_list(unsigned int, std::list<LagNode>&) { return false; }
bool delete_lag_from_list(unsigned int, std::list<LagNode>&) { return false; }
// NOLINTNEXTLINE(performance-unnecessary-value-param): vorn_lag_list.h has it so
bool is_lag_exist(unsigned int, std::list<LagNode>) { return false; }
bool add_lag_member(unsigned int, std::list<LagNode>&, std::list<Mp>&) { return false; }
bool delete_lag_member(unsigned int, std::list<LagNode>&, std::list<Mp>&) { return false; }
bool get_lag_member(unsigned int, std::list<Mp>&) { return false; }
