// SPDX-License-Identifier: Apache-2.0
//
// A host for the check's own tests: four ports, two LAG interfaces, VLANs, links and callbacks.
// The environment's FAULT names one thing that it does wrong.

#include <algorithm>
#include <cstdlib>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "host_check/host_check.h"
#include "vorn_lag_list.h"
#include "vorn_port_mapping.h"
#include "vorn_sdk.h"
#include "vorn_sdk_refusing.h"

namespace {

constexpr unsigned kPorts = 4;  // 1/1/0 to 1/1/3, hardware ports 0:1 to 0:4
constexpr unsigned kLags = 2;   // 1/2/1 and 1/2/2

bool fault(const char* name) {
  const char* const chosen = std::getenv("FAULT");
  return chosen != nullptr && std::string(chosen) == name;
}

struct Callback {
  lcmgr_report_event_t event;
  void* function;
  void* user_data;
  bool c_form;
};

bool contains(const std::list<Mp>& mps, const Mp& mp) {
  return std::find(mps.begin(), mps.end(), mp) != mps.end();
}

class Sdk final : public VornSdkRefusing {
 public:
  // ---- VLANs ------------------------------------------------------------------------------------
  bool create_vlan(unsigned vlan) override {
    if (fault("throws")) throw std::runtime_error("out of order");
    return vlan >= 1 && vlan <= 4094 &&
           (vlans_.try_emplace(vlan).second || fault("vlan_made_twice"));
  }
  bool delete_vlan(unsigned vlan) override { return vlans_.erase(vlan) != 0; }
  bool add_ports_to_vlan(unsigned vlan, std::list<Mp>& tagged, std::list<Mp>& untagged) override {
    if (vlans_.count(vlan) == 0) return false;
    vlans_[vlan] = {tagged, untagged};
    return true;
  }
  bool delete_ports_from_vlan(unsigned vlan, std::list<Mp>& ports) override {
    if (vlans_.count(vlan) == 0) return false;
    if (fault("vlan_keeps_members")) return true;
    for (std::list<Mp>& kind : vlans_[vlan]) {
      kind.remove_if([&](const Mp& mp) { return contains(ports, mp); });
    }
    return true;
  }
  bool get_vlan_info(unsigned vlan, std::list<Mp>& tagged, std::list<Mp>& untagged) override {
    if (vlans_.count(vlan) == 0) return false;
    const bool swapped = fault("vlan_kinds_swapped");
    tagged = vlans_[vlan][swapped ? 1 : 0];
    untagged = vlans_[vlan][swapped ? 0 : 1];
    return true;
  }

  // ---- LAGs -------------------------------------------------------------------------------------
  bool create_lag(unsigned& id) override {
    id = 0;
    while (lags_.count(id) != 0 && !fault("id_given_twice")) ++id;
    lags_.insert(id);
    return true;
  }
  bool delete_lag(unsigned id) override {
    if (fault("node_goes_with_lag")) delete_lag_from_list(id, lag_list);
    return lags_.erase(id) != 0 || fault("deleted_twice");
  }
  bool add_ports_to_lag(unsigned id, std::list<Mp>&) override { return lags_.count(id) != 0; }
  bool delete_ports_from_lag(unsigned id, std::list<Mp>&) override { return lags_.count(id) != 0; }

  // ---- Ports ------------------------------------------------------------------------------------
  bool set_port_pvid(const Mp& mp, unsigned vlan) override {
    if (vlan < 1 || vlan > 4094) return false;
    pvid_[mp.port() - 1] = vlan;
    return true;
  }
  bool get_port_pvid(const Mp& mp, unsigned& vlan) override {
    vlan = pvid_[mp.port() - 1];
    return true;
  }
  bool set_port_state(const Mp& mp, bool on) override {
    on_[mp.port() - 1] = on;
    changes_.push_back(mp);
    return true;
  }
  bool get_port_link_state(const Mp& mp, phy_state_t& state) override {
    state = on_[mp.port() - 1] ? PHY_STATE_UP : PHY_STATE_DOWN;
    return true;
  }

  // ---- Callbacks --------------------------------------------------------------------------------
  bool register_mac_update_callback(void (*f)(L2Addr*, int, void*), void* data) override {
    return store({LCMGR_REPORT_MAC_UPDATE, reinterpret_cast<void*>(f), data, false});
  }
  bool register_mac_update_callback_c(void (*f)(ctype_l2_addr_s*, int, void*),
                                      void* data) override {
    return store({LCMGR_REPORT_MAC_UPDATE, reinterpret_cast<void*>(f), data, true});
  }
  bool register_link_change_callback(void (*f)(LinkStatus*, Usp*), void* data) override {
    return store({LCMGR_REPORT_LINK_CHANGE, reinterpret_cast<void*>(f), data, false});
  }
  bool register_link_change_callback_c(void (*f)(ctype_link_status_s*, usp_s*),
                                       void* data) override {
    return store({LCMGR_REPORT_LINK_CHANGE, reinterpret_cast<void*>(f), data, true});
  }
  bool deregister_event_callback(lcmgr_report_event_t event, void* function, void* data) override {
    const bool by_event = fault("callback_by_event_alone");
    const auto found = std::find_if(callbacks_.begin(), callbacks_.end(), [&](const Callback& one) {
      return one.event == event &&
             (by_event || (one.function == function && one.user_data == data));
    });
    if (found == callbacks_.end()) return false;
    if (!fault("called_after_withdrawal")) callbacks_.erase(found);
    return true;
  }

  void deliver() {
    const std::vector<Mp> changes = std::exchange(changes_, {});
    for (const Mp& mp : changes) {
      for (const Callback& one : std::vector<Callback>(callbacks_)) report(one, mp);
    }
  }

 private:
  bool store(const Callback& callback) {
    if (fault("callback_never_stored")) return true;
    if (fault("forms_share_a_place")) {
      callbacks_.erase(
          std::remove_if(callbacks_.begin(), callbacks_.end(),
                         [&](const Callback& one) { return one.event == callback.event; }),
          callbacks_.end());
    }
    callbacks_.push_back(callback);
    return true;
  }
  void report(const Callback& callback, const Mp& mp) {
    if (callback.event != LCMGR_REPORT_LINK_CHANGE) return;
    phy_state_t state = PHY_STATE_DOWN;
    get_port_link_state(mp, state);
    Usp port(1, 1, mp.port() - (fault("wrong_port_reported") ? 0 : 1));
    if (!callback.c_form) {
      LinkStatus status = {state, SPEED_TYPE_1000, DUPLEX_TYPE_FULL};
      reinterpret_cast<void (*)(LinkStatus*, Usp*)>(callback.function)(&status, &port);
    } else if (!fault("c_form_not_called")) {
      ctype_link_status_s status = {state, SPEED_TYPE_1000, DUPLEX_TYPE_FULL};
      usp_s words = {port.unit(), port.slot(), port.port()};
      reinterpret_cast<void (*)(ctype_link_status_s*, usp_s*)>(callback.function)(&status, &words);
    }
  }

  std::map<unsigned, std::vector<std::list<Mp>>> vlans_;  // tagged members, untagged members
  std::set<unsigned> lags_;
  std::vector<Callback> callbacks_;
  std::vector<Mp> changes_;
  unsigned pvid_[kPorts] = {1, 1, 1, 1};
  bool on_[kPorts] = {true, true, true, true};
};

Sdk* sdk_object = nullptr;
bool ended = false;
std::map<unsigned, unsigned> ids;  // of LAG interfaces, by their port number

std::list<LagNode>::iterator node_of(unsigned id, std::list<LagNode>& list) {
  return std::find_if(list.begin(), list.end(),
                      [&](const LagNode& node) { return node.id() == id; });
}

}  // namespace

bool vorn_host_check_deliver_events() {
  sdk_object->deliver();
  return true;
}

// ---- vorn_sdk.h ---------------------------------------------------------------------------------

bool vornsdk_get_sdk_instance(VornSdkBase*& sdk) {
  if (sdk_object == nullptr) return false;
  sdk = sdk_object;
  return true;
}
bool vornsdk_create_sdk_instance() {
  if (ended && fault("no_second_start")) return false;
  sdk_object = new Sdk;
  return true;
}
bool vornsdk_delete_sdk_instance(VornSdkBase*) {
  delete sdk_object;
  sdk_object = nullptr;
  ended = true;
  if (!fault("mapping_survives_the_end")) ids.clear();
  if (!fault("list_survives_the_end")) lag_list.clear();
  return true;
}

bool vornsdk_lag_usp_to_lag_id(const Usp& lag, unsigned& id) {
  if (fault("id_written_on_failure")) id = 0;
  if (fault("mapped_too_early") && !lag_list.empty() && lag == Usp(1, 2, 1)) {
    id = lag_list.front().id();
    return true;
  }
  const auto found = ids.find(lag.port());
  if (!is_port_logical_lag(lag) || found == ids.end()) return false;
  id = found->second;
  return true;
}
bool vornsdk_lag_id_to_lag_usp(unsigned id, Usp& lag) {
  for (const auto& entry : ids) {
    if (entry.second != id) continue;
    lag = Usp(1, 2, entry.first);
    return true;
  }
  return false;
}
bool vornsdk_add_lag_mapping(const Usp& lag, unsigned id) {
  if (!fault("mapping_forgotten")) ids[lag.port()] = id;
  return true;
}
bool vornsdk_delete_lag_mapping(const Usp& lag, unsigned) {
  return fault("mapping_stays") || ids.erase(lag.port()) != 0;
}

// ---- vorn_port_mapping.h ------------------------------------------------------------------------

bool vorn_init_line_card(int& out) {
  out = kPorts;
  return true;
}
bool is_port_physical(const Usp& port) {
  return port.unit() == 1 && port.slot() == 1 && port.port() < kPorts;
}
bool is_port_logical_lag(const Usp& port) {
  if (port.unit() != 1 || port.slot() != 2 || port.port() < 1 || port.port() > kLags) return false;
  // The faulty host forgets that its LAG interfaces are such once a LAG was made and deleted.
  static bool made = false;
  made = made || !lag_list.empty();
  return !(fault("kind_by_existence") && made && lag_list.empty());
}
bool is_port_logical_vlan(const Usp&) { return false; }
bool vorn_usp_to_mp(const Usp& port, Mp& mp) {
  if (!is_port_physical(port)) return false;
  mp = Mp(0, port.port() + 1);
  return true;
}
bool vorn_usp_to_mp_list(const Usp& port, std::list<Mp>& mps) {
  Mp mp(0, 0);
  unsigned id = 0;
  if (vorn_usp_to_mp(port, mp)) {
    mps.push_back(mp);
    return true;
  }
  if (!vornsdk_lag_usp_to_lag_id(port, id)) return false;
  return fault("interface_without_members") || get_lag_member(id, mps);
}
bool vorn_usp_list_to_mp_list(const std::list<Usp>& ports, std::list<Mp>& mps) {
  for (const Usp& port : ports) {
    const std::size_t before = mps.size();
    if (!vorn_usp_to_mp_list(port, mps)) return false;
    if (mps.size() == before && !fault("empty_lag_in_list")) return false;
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

// ---- vorn_lag_list.h ----------------------------------------------------------------------------

std::list<LagNode> lag_list;

bool add_lag_to_list(unsigned id, std::list<LagNode>& list) {
  (fault("own_list_ignored") ? lag_list : list).emplace_back(id);
  return true;
}
bool delete_lag_from_list(unsigned id, std::list<LagNode>& list) {
  const auto node = node_of(id, list);
  if (node == list.end()) return false;
  if (!fault("node_stays")) list.erase(node);
  return true;
}
bool is_lag_exist(unsigned id, std::list<LagNode> list) { return node_of(id, list) != list.end(); }
bool add_lag_member(unsigned id, std::list<LagNode>& list, std::list<Mp>& members) {
  const auto node = node_of(id, list);
  if (node == list.end()) return fault("unknown_lag_has_members");
  for (const Mp& mp : members) {
    if (contains(node->members(), mp) && !fault("members_doubled")) continue;
    node->members().insert(
        fault("members_reversed") ? node->members().begin() : node->members().end(), mp);
  }
  return true;
}
bool delete_lag_member(unsigned id, std::list<LagNode>& list, std::list<Mp>& members) {
  const auto node = node_of(id, list);
  if (node == list.end()) return false;
  if (fault("members_stay")) return true;
  node->members().remove_if([&](const Mp& mp) { return contains(members, mp); });
  return true;
}
bool get_lag_member(unsigned id, std::list<Mp>& members) {
  const auto node = node_of(id, lag_list);
  if (node == lag_list.end()) return false;
  if (fault("members_cleared")) members.clear();
  members.insert(members.end(), node->members().begin(), node->members().end());
  return true;
}
