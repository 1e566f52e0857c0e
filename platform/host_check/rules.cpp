// SPDX-License-Identifier: Apache-2.0
//
// The rules of docs/host.md, in the order in which they are run: start, addresses, translations,
// settings, VLANs, LAGs, callbacks, end, and the library itself.

#include <dlfcn.h>

#include <algorithm>
#include <string>
#include <vector>

#include "host_check/host_check.h"
#include "host_check/rules.h"
#include "vorn_lag_list.h"
#include "vorn_port_mapping.h"
#include "vornlcapi/records.h"

namespace vorn::host_check {
namespace {

// Whether a rule that needs the SDK object may go on.
bool started(const HostUnderCheck& host, Verdict& verdict) {
  if (host.sdk == nullptr) verdict.skip("the line card did not start");
  return host.sdk != nullptr;
}

// The ports whose settings are changed: the last one, so that a host that mixes ports up is found
// out by the first, which has to stay as it is.
bool two_ports(const HostUnderCheck& host, Verdict& verdict, Mp& subject, Mp& neighbour) {
  if (!started(host, verdict)) return false;
  if (host.physical.size() < 2 || !vorn_usp_to_mp(host.physical.back(), subject) ||
      !vorn_usp_to_mp(host.physical.front(), neighbour)) {
    verdict.skip("the host has no two physical ports");
    return false;
  }
  return true;
}

// ---- Start --------------------------------------------------------------------------------------

void no_object_before(HostUnderCheck&, Verdict& verdict) {
  VornSdkBase* sdk = nullptr;
  verdict.expect("vornsdk_get_sdk_instance()", false, vornsdk_get_sdk_instance(sdk));
}

void object_after(HostUnderCheck& host, Verdict& verdict) {
  int out = 0;
  VornSdkBase* sdk = nullptr;
  VornSdkBase* again = nullptr;
  if (verdict.expect("vorn_init_line_card()", true, vorn_init_line_card(out)) &&
      verdict.expect("vornsdk_create_sdk_instance()", true, vornsdk_create_sdk_instance()) &&
      verdict.expect("vornsdk_get_sdk_instance()", true, vornsdk_get_sdk_instance(sdk)) &&
      verdict.expect("an object is written", true, sdk != nullptr) &&
      verdict.expect("asked again", true, vornsdk_get_sdk_instance(again)) &&
      verdict.expect("the same object when asked again", true, sdk == again)) {
    host.sdk = sdk;
  }
}

// ---- Addresses ----------------------------------------------------------------------------------

void one_kind(HostUnderCheck& host, Verdict& verdict) {
  for (const Usp& port : host.addresses) {
    const bool physical = is_port_physical(port);
    const bool lag = is_port_logical_lag(port);
    const bool vlan = is_port_logical_vlan(port);
    if (physical + lag + vlan > 1) {
      verdict.fail(text(port) + " is physical " + text(physical) + ", LAG interface " + text(lag) +
                   ", VLAN interface " + text(vlan) + ": expected one of them at most");
    }
    if (physical) host.physical.push_back(port);
    if (lag) host.lags.push_back(port);
    if (vlan) host.vlans.push_back(port);
  }
  if (host.physical.empty()) {
    verdict.fail("no physical port was found; name one as <unit>/<slot>/<port>");
  }
}

void kinds_stay(HostUnderCheck& host, Verdict& verdict) {
  const auto same = [&](const std::vector<Usp>& ports, bool (*kind)(const Usp&)) {
    for (const Usp& port : ports) verdict.expect("the kind of " + text(port), true, kind(port));
  };
  same(host.physical, is_port_physical);
  same(host.lags, is_port_logical_lag);
  same(host.vlans, is_port_logical_vlan);
}

// ---- Translations -------------------------------------------------------------------------------

void physical_ports_translate(HostUnderCheck& host, Verdict& verdict) {
  for (const Usp& port : host.physical) {
    Mp mp = kNoMp;
    verdict.expect("vorn_usp_to_mp(" + text(port) + ")", true, vorn_usp_to_mp(port, mp));
  }
}

void other_ports_do_not(HostUnderCheck& host, Verdict& verdict) {
  for (const Usp& port : host.others()) {
    Mp mp = kNoMp;
    verdict.expect("vorn_usp_to_mp(" + text(port) + ")", false, vorn_usp_to_mp(port, mp));
  }
}

void failure_writes_nothing(HostUnderCheck& host, Verdict& verdict) {
  for (const Usp& port : host.others()) {
    Mp mp = kNoMp;
    if (!vorn_usp_to_mp(port, mp)) verdict.expect("Mp after " + text(port) + " failed", kNoMp, mp);
  }
}

void inverse(HostUnderCheck& host, Verdict& verdict) {
  for (const Usp& port : host.physical) {
    Mp mp = kNoMp;
    Usp back = kNoUsp;
    if (!vorn_usp_to_mp(port, mp)) continue;
    const std::string call = "vorn_mp_to_usp(" + text(mp) + "), " + text(port) + "'s";
    if (verdict.expect(call, true, vorn_mp_to_usp(mp, back))) verdict.expect(call, port, back);
  }
}

void unknown_hardware(HostUnderCheck&, Verdict& verdict) {
  Usp port = kNoUsp;
  verdict.expect("vorn_mp_to_usp() of a port that no host has", false, vorn_mp_to_usp(kNoMp, port));
}

void one_hardware_port(HostUnderCheck& host, Verdict& verdict) {
  for (const Usp& port : host.physical) {
    Mp mp = kNoMp;
    std::list<Mp> mps;
    const std::string call = "vorn_usp_to_mp_list(" + text(port) + ")";
    if (verdict.expect(call, true, vorn_usp_to_mp_list(port, mps)) && vorn_usp_to_mp(port, mp)) {
      verdict.expect(call, std::list<Mp>{mp}, mps);
    }
  }
}

void lists_append(HostUnderCheck& host, Verdict& verdict) {
  Mp first = kNoMp;
  Mp last = kNoMp;
  if (!two_ports(host, verdict, last, first)) return;
  const std::list<Usp> ports = {host.physical.back(), host.physical.front()};
  std::list<Mp> mps = {kNoMp};
  verdict.expect("vorn_usp_to_mp_list()", true, vorn_usp_to_mp_list(ports.front(), mps));
  verdict.expect("a list that held (no port), after vorn_usp_to_mp_list()",
                 std::list<Mp>{kNoMp, last}, mps);
  mps = {kNoMp};
  verdict.expect("vorn_usp_list_to_mp_list()", true, vorn_usp_list_to_mp_list(ports, mps));
  verdict.expect("a list that held (no port), after vorn_usp_list_to_mp_list()",
                 std::list<Mp>{kNoMp, last, first}, mps);
  std::list<Usp> usps = {kNoUsp};
  verdict.expect("vorn_mp_list_to_usp_list()", true, vorn_mp_list_to_usp_list({last, first}, usps));
  verdict.expect("a list that held (no port), after vorn_mp_list_to_usp_list()",
                 std::list<Usp>{kNoUsp, ports.front(), ports.back()}, usps);
}

void lists_fail(HostUnderCheck& host, Verdict& verdict) {
  Mp first = kNoMp;
  Mp last = kNoMp;
  if (!two_ports(host, verdict, last, first)) return;
  std::list<Mp> mps;
  std::list<Usp> usps;
  verdict.expect(
      "vorn_usp_list_to_mp_list() with an unknown port in the middle", false,
      vorn_usp_list_to_mp_list({host.physical.back(), kNoUsp, host.physical.front()}, mps));
  verdict.expect("vorn_mp_list_to_usp_list() with an unknown port in the middle", false,
                 vorn_mp_list_to_usp_list({last, kNoMp, first}, usps));
}

// ---- Settings -----------------------------------------------------------------------------------

// A setting of a port with its two operations, each over an unsigned int.
struct Setting {
  const char* name;
  bool (*get)(VornSdkBase& sdk, const Mp& mp, unsigned int& value);
  bool (*set)(VornSdkBase& sdk, const Mp& mp, unsigned int value);
  unsigned int values[2];
  unsigned int impossible;  // has to be refused; 0 where every value may have a meaning
};

// Calls operations over a value of another type with an unsigned int.
template <auto operation, class Value>
bool get(VornSdkBase& sdk, const Mp& mp, unsigned int& value) {
  Value own{};
  if (!(sdk.*operation)(mp, own)) return false;
  value = static_cast<unsigned int>(own);
  return true;
}
template <auto operation, class Value>
bool set(VornSdkBase& sdk, const Mp& mp, unsigned int value) {
  return (sdk.*operation)(mp, static_cast<Value>(value));
}

using Base = VornSdkBase;
const Setting kSettings[] = {
    {"pvid",
     get<&Base::get_port_pvid, unsigned>,
     set<&Base::set_port_pvid, unsigned>,
     {1, 2},
     4095},
    {"mtu",
     get<&Base::get_port_mtu, unsigned>,
     set<&Base::set_port_mtu, unsigned>,
     {1514, 1500},
     0},
    {"autoneg", get<&Base::get_port_autoneg, bool>, set<&Base::set_port_autoneg, bool>, {0, 1}, 0},
    {"stat_enable",
     get<&Base::get_port_stat_enabled, bool>,
     set<&Base::set_port_stat_enable, bool>,
     {0, 1},
     0},
    {"stp_state",
     get<&Base::get_port_stp_state, stp_state_t>,
     set<&Base::set_port_stp_state, stp_state_t>,
     {STP_STATE_BLOCKING, STP_STATE_FORWARDING},
     0},
    {"bpdu_processing",
     get<&Base::get_port_bpdu_processing, bool>,
     set<&Base::set_port_bpdu_processing, bool>,
     {0, 1},
     0},
    {"mac_lock",
     get<&Base::get_port_mac_lock, bool>,
     set<&Base::set_port_mac_lock, bool>,
     {0, 1},
     0},
    {"broadcast_control",
     get<&Base::get_port_broadcast_control, unsigned>,
     set<&Base::set_port_broadcast_control, unsigned>,
     {0, 1000},
     0},
    {"multicast_control",
     get<&Base::get_port_multicast_control, unsigned>,
     set<&Base::set_port_multicast_control, unsigned>,
     {0, 1000},
     0},
    {"unicast_control",
     get<&Base::get_port_unicast_control, unsigned>,
     set<&Base::set_port_unicast_control, unsigned>,
     {0, 1000},
     0},
    {"egress_admin_state",
     get<&Base::get_port_egress_admin_state, bool>,
     set<&Base::set_port_egress_admin_state, bool>,
     {0, 1},
     0},
    {"ingress_discarding",
     get<&Base::get_port_ingress_discarding, ingress_discard_type_t>,
     set<&Base::set_port_ingress_discarding, ingress_discard_type_t>,
     {INGRESS_DISCARD_NONE, INGRESS_DISCARD_TAGGED},
     0},
    {"vlan_accept_frame",
     get<&Base::get_port_vlan_accept_frame, bool>,
     set<&Base::set_port_vlan_accept_frame, bool>,
     {0, 1},
     0},
};

void settings_read_back(HostUnderCheck& host, Verdict& verdict) {
  Mp mp = kNoMp;
  Mp neighbour = kNoMp;
  if (!two_ports(host, verdict, mp, neighbour)) return;
  int tried = 0;
  for (const Setting& setting : kSettings) {
    unsigned before = 0;
    unsigned beside = 0;
    if (!setting.get(*host.sdk, mp, before) || !setting.get(*host.sdk, neighbour, beside)) continue;
    const unsigned value = setting.values[setting.values[0] == before ? 1 : 0];
    if (!setting.set(*host.sdk, mp, value)) continue;
    ++tried;
    const std::string name = setting.name;
    unsigned after = before;
    unsigned beside_after = beside;
    verdict.expect("get_port_" + name, true, setting.get(*host.sdk, mp, after));
    verdict.expect(name + " that was set", value, after);
    verdict.expect("get_port_" + name, true, setting.get(*host.sdk, neighbour, beside_after));
    verdict.expect(name + " of a port beside the one that was set", beside, beside_after);
    verdict.expect(name + " set back", true, setting.set(*host.sdk, mp, before));
  }
  if (tried == 0) verdict.skip("the SDK refuses every setting");
}

void refusals_change_nothing(HostUnderCheck& host, Verdict& verdict) {
  Mp mp = kNoMp;
  Mp neighbour = kNoMp;
  if (!two_ports(host, verdict, mp, neighbour)) return;
  int tried = 0;
  for (const Setting& setting : kSettings) {
    unsigned before = 0;
    if (setting.impossible == 0 || !setting.get(*host.sdk, mp, before)) continue;
    ++tried;
    const std::string name = setting.name;
    unsigned after = before;
    verdict.expect(name + " " + text(setting.impossible), false,
                   setting.set(*host.sdk, mp, setting.impossible));
    verdict.expect("get_port_" + name, true, setting.get(*host.sdk, mp, after));
    verdict.expect(name + " after the refusal", before, after);
  }
  if (tried == 0) verdict.skip("the SDK refuses every setting");
}

// ---- VLANs --------------------------------------------------------------------------------------

void vlan_members(HostUnderCheck& host, Verdict& verdict) {
  Mp tagged = kNoMp;
  Mp untagged = kNoMp;
  if (!two_ports(host, verdict, tagged, untagged)) return;
  unsigned vlan = 4094;
  while (vlan > 1 && !host.sdk->create_vlan(vlan)) --vlan;
  if (vlan == 1) {
    verdict.skip("the SDK refuses every VLAN");
    return;
  }
  const std::string name = "VLAN " + text(vlan);
  verdict.expect("create_vlan() of one that exists", false, host.sdk->create_vlan(vlan));
  std::list<Mp> first = {tagged};
  std::list<Mp> second = {untagged};
  verdict.expect("add_ports_to_vlan()", true, host.sdk->add_ports_to_vlan(vlan, first, second));
  first.clear();
  second.clear();
  verdict.expect("get_vlan_info()", true, host.sdk->get_vlan_info(vlan, first, second));
  verdict.expect("tagged members of " + name, std::list<Mp>{tagged}, first);
  verdict.expect("untagged members of " + name, std::list<Mp>{untagged}, second);
  std::list<Mp> leaving = {tagged};
  verdict.expect("delete_ports_from_vlan()", true, host.sdk->delete_ports_from_vlan(vlan, leaving));
  first.clear();
  second.clear();
  verdict.expect("get_vlan_info()", true, host.sdk->get_vlan_info(vlan, first, second));
  verdict.expect("tagged members of " + name + " after the port left", std::list<Mp>{}, first);
  verdict.expect("untagged members of " + name + " after the other left", std::list<Mp>{untagged},
                 second);
  verdict.expect("delete_vlan()", true, host.sdk->delete_vlan(vlan));
  verdict.expect("delete_vlan() of one that does not exist", false, host.sdk->delete_vlan(vlan));
}

// ---- LAGs ---------------------------------------------------------------------------------------

constexpr unsigned kNoId = 0xfffffffe;  // a LAG id that no host gives

void expect_no_lag(Verdict& verdict, const Usp& lag) {
  unsigned id = kNoId;
  verdict.expect("vornsdk_lag_usp_to_lag_id(" + text(lag) + ")", false,
                 vornsdk_lag_usp_to_lag_id(lag, id));
  verdict.expect("its id afterwards, untouched", kNoId, id);
}

// The rules for a LAG id that the list does not have.
void expect_unlisted(Verdict& verdict, unsigned id, const std::string& which) {
  std::list<Mp> members = {kNoMp};
  std::list<Mp> none;
  const std::size_t nodes = lag_list.size();
  verdict.expect("is_lag_exist() of " + which, false, is_lag_exist(id, lag_list));
  verdict.expect("get_lag_member() of " + which, false, get_lag_member(id, members));
  verdict.expect("the members written", std::list<Mp>{kNoMp}, members);
  verdict.expect("add_lag_member() to " + which, false, add_lag_member(id, lag_list, none));
  verdict.expect("delete_lag_member() from " + which, false, delete_lag_member(id, lag_list, none));
  verdict.expect("delete_lag_from_list() of " + which, false, delete_lag_from_list(id, lag_list));
  verdict.expect("the list is as long as before", true, nodes == lag_list.size());
}

void lags_unknown(HostUnderCheck& host, Verdict& verdict) {
  Usp lag = kNoUsp;
  expect_no_lag(verdict, kNoUsp);
  for (const Usp& port : host.others()) {
    unsigned id = kNoId;
    if (!vornsdk_lag_usp_to_lag_id(port, id)) verdict.expect("LAG id of " + text(port), kNoId, id);
  }
  verdict.expect("vornsdk_lag_id_to_lag_usp() of an unknown id", false,
                 vornsdk_lag_id_to_lag_usp(kNoId, lag));
  verdict.expect("its interface afterwards, untouched", kNoUsp, lag);
  expect_unlisted(verdict, kNoId, "an unknown id");
}

void no_lags_at_all(HostUnderCheck& host, Verdict& verdict) {
  if (!started(host, verdict)) return;
  if (!host.lags.empty()) {
    verdict.skip("the host has LAG interfaces");
    return;
  }
  unsigned id = 0;
  const Usp port = host.physical.empty() ? kNoUsp : host.physical.front();
  verdict.expect("create_lag()", false, host.sdk->create_lag(id));
  verdict.expect("lag_list is empty", true, lag_list.empty());
  verdict.expect("add_lag_to_list()", false, add_lag_to_list(1, lag_list));
  verdict.expect("vornsdk_add_lag_mapping()", false, vornsdk_add_lag_mapping(port, 1));
  verdict.expect("vornsdk_delete_lag_mapping()", false, vornsdk_delete_lag_mapping(port, 1));
}

// A LAG interface without a LAG; kNoUsp, and the rule is skipped, when the host has none.
Usp free_lag(const HostUnderCheck& host, Verdict& verdict) {
  unsigned id = 0;
  for (const Usp& lag : host.lags) {
    if (!vornsdk_lag_usp_to_lag_id(lag, id)) return lag;
  }
  verdict.skip("the host has no free LAG interface");
  return kNoUsp;
}

// The steps by which the library makes a LAG and deletes it.
bool make_lag(HostUnderCheck& host, Verdict& verdict, const Usp& lag, unsigned& id) {
  if (!host.sdk->create_lag(id)) {
    verdict.skip("the SDK makes no LAG");
    return false;
  }
  return verdict.expect("add_lag_to_list()", true, add_lag_to_list(id, lag_list)) &&
         verdict.expect("vornsdk_add_lag_mapping()", true, vornsdk_add_lag_mapping(lag, id));
}

void delete_lag(HostUnderCheck& host, Verdict& verdict, const Usp& lag, unsigned id) {
  verdict.expect("delete_lag()", true, host.sdk->delete_lag(id));
  verdict.expect("delete_lag_from_list()", true, delete_lag_from_list(id, lag_list));
  verdict.expect("vornsdk_delete_lag_mapping()", true, vornsdk_delete_lag_mapping(lag, id));
}

// A LAG without members, for the rules that need one; false when they cannot be tried.
bool begin_lag(HostUnderCheck& host, Verdict& verdict, Usp& lag, unsigned& id) {
  if (!started(host, verdict)) return false;
  lag = free_lag(host, verdict);
  return lag != kNoUsp && make_lag(host, verdict, lag, id);
}

std::size_t nodes_of(unsigned id) {
  return static_cast<std::size_t>(std::count_if(
      lag_list.begin(), lag_list.end(), [id](const LagNode& node) { return node.id() == id; }));
}

void lag_in_step(HostUnderCheck& host, Verdict& verdict) {
  Usp lag = kNoUsp;
  unsigned id = 0;
  if (!begin_lag(host, verdict, lag, id)) return;
  unsigned mapped = kNoId;
  Usp back = kNoUsp;
  verdict.expect("nodes of the new LAG in lag_list", 1U, static_cast<unsigned>(nodes_of(id)));
  verdict.expect("is_lag_exist()", true, is_lag_exist(id, lag_list));
  verdict.expect("vornsdk_lag_usp_to_lag_id()", true, vornsdk_lag_usp_to_lag_id(lag, mapped));
  verdict.expect("the id of " + text(lag), id, mapped);
  verdict.expect("vornsdk_lag_id_to_lag_usp()", true, vornsdk_lag_id_to_lag_usp(id, back));
  verdict.expect("the interface of id " + text(id), lag, back);
  delete_lag(host, verdict, lag, id);
  verdict.expect("nodes of the deleted LAG in lag_list", 0U, static_cast<unsigned>(nodes_of(id)));
  expect_no_lag(verdict, lag);
  back = kNoUsp;
  verdict.expect("vornsdk_lag_id_to_lag_usp() of the deleted LAG", false,
                 vornsdk_lag_id_to_lag_usp(id, back));
  expect_unlisted(verdict, id, "the deleted LAG");
}

void lag_members(HostUnderCheck& host, Verdict& verdict) {
  Mp first = kNoMp;
  Mp last = kNoMp;
  Usp lag = kNoUsp;
  unsigned id = 0;
  if (!two_ports(host, verdict, last, first) || !begin_lag(host, verdict, lag, id)) return;
  std::list<Mp> given = {last};
  verdict.expect("add_ports_to_lag()", true, host.sdk->add_ports_to_lag(id, given));
  given = {last};
  verdict.expect("add_lag_member()", true, add_lag_member(id, lag_list, given));
  given = {last, first};  // the present member first, as the library does it
  verdict.expect("add_ports_to_lag() with a present member", true,
                 host.sdk->add_ports_to_lag(id, given));
  given = {last, first};
  verdict.expect("add_lag_member() with a present member", true,
                 add_lag_member(id, lag_list, given));
  std::list<Mp> members = {kNoMp};
  verdict.expect("get_lag_member()", true, get_lag_member(id, members));
  verdict.expect("a list that held (no port), after get_lag_member()",
                 std::list<Mp>{kNoMp, last, first}, members);
  members = {kNoMp};
  verdict.expect("vorn_usp_to_mp_list(" + text(lag) + ")", true, vorn_usp_to_mp_list(lag, members));
  verdict.expect("the hardware ports of " + text(lag), std::list<Mp>{kNoMp, last, first}, members);
  given = {last};
  verdict.expect("delete_ports_from_lag()", true, host.sdk->delete_ports_from_lag(id, given));
  given = {last};
  verdict.expect("delete_lag_member()", true, delete_lag_member(id, lag_list, given));
  members.clear();
  verdict.expect("get_lag_member()", true, get_lag_member(id, members));
  verdict.expect("members after one left", std::list<Mp>{first}, members);
  given = {first};
  verdict.expect("delete_ports_from_lag()", true, host.sdk->delete_ports_from_lag(id, given));
  given = {first};
  verdict.expect("delete_lag_member()", true, delete_lag_member(id, lag_list, given));
  members.clear();
  verdict.expect("get_lag_member() of a LAG without members", true, get_lag_member(id, members));
  verdict.expect("vorn_usp_to_mp_list() of a LAG without members", true,
                 vorn_usp_to_mp_list(lag, members));
  verdict.expect("members after all left", std::list<Mp>{}, members);
  verdict.expect("vorn_usp_list_to_mp_list() of a LAG without members", false,
                 vorn_usp_list_to_mp_list({lag}, members));
  delete_lag(host, verdict, lag, id);
}

void list_as_given(HostUnderCheck& host, Verdict& verdict) {
  if (host.lags.empty()) {
    verdict.skip("the host has no LAG interface");
    return;
  }
  const std::size_t nodes = lag_list.size();
  std::list<LagNode> own = {LagNode(kNoId)};
  std::list<Mp> members = {kNoMp};
  verdict.expect("is_lag_exist() in a list of its own", true, is_lag_exist(kNoId, own));
  verdict.expect("add_lag_to_list()", true, add_lag_to_list(kNoId - 1, own));
  verdict.expect("nodes in the list given", 2U, static_cast<unsigned>(own.size()));
  verdict.expect("add_lag_member()", true, add_lag_member(kNoId, own, members));
  verdict.expect("members in the list given", std::list<Mp>{kNoMp}, own.front().members());
  verdict.expect("delete_lag_from_list()", true, delete_lag_from_list(kNoId - 1, own));
  verdict.expect("lag_list is as long as before", true, nodes == lag_list.size());
}

// The library stops at the step that fails and undoes nothing.
void halfway_creation(HostUnderCheck& host, Verdict& verdict) {
  if (!started(host, verdict)) return;
  const Usp lag = free_lag(host, verdict);
  unsigned id = 0;
  if (lag == kNoUsp) return;
  if (!host.sdk->create_lag(id)) {
    verdict.skip("the SDK makes no LAG");
    return;
  }
  // Of the SDK alone, then of the list too: no mapping says that the interface has a LAG.
  std::list<Mp> members;
  expect_no_lag(verdict, lag);
  vorn_usp_to_mp_list(lag, members);
  verdict.expect("add_lag_to_list()", true, add_lag_to_list(id, lag_list));
  expect_no_lag(verdict, lag);
  vorn_usp_to_mp_list(lag, members);
  verdict.expect("members of an interface without a mapping", std::list<Mp>{}, members);
  verdict.expect("is_lag_exist()", true, is_lag_exist(id, lag_list));
  unsigned other = 0;
  if (host.sdk->create_lag(other)) {
    verdict.expect("the next LAG has an id of its own", true, other != id);
    verdict.expect("delete_lag()", true, host.sdk->delete_lag(other));
  }
  verdict.expect("delete_lag()", true, host.sdk->delete_lag(id));
  verdict.expect("delete_lag_from_list()", true, delete_lag_from_list(id, lag_list));
}

void halfway_deletion(HostUnderCheck& host, Verdict& verdict) {
  Usp lag = kNoUsp;
  unsigned id = 0;
  if (!begin_lag(host, verdict, lag, id)) return;
  verdict.expect("delete_lag()", true, host.sdk->delete_lag(id));
  verdict.expect("is_lag_exist() before the list is told", true, is_lag_exist(id, lag_list));
  verdict.expect("delete_lag() again", false, host.sdk->delete_lag(id));
  std::list<Mp> members;
  vorn_usp_to_mp_list(lag, members);
  verdict.expect("members of a LAG that is going", std::list<Mp>{}, members);
  verdict.expect("delete_lag_from_list()", true, delete_lag_from_list(id, lag_list));
  verdict.expect("vornsdk_delete_lag_mapping()", true, vornsdk_delete_lag_mapping(lag, id));
  expect_no_lag(verdict, lag);
}

// ---- Callbacks ----------------------------------------------------------------------------------

int link_changes = 0;
int link_changes_c = 0;
LinkStatus last_status;
Usp last_port = kNoUsp;

void on_mac(L2Addr*, int, void*) {}
void on_mac_c(ctype_l2_addr_s*, int, void*) {}
void on_packet(RxPacket*, void*) {}
void on_packet_c(ctype_rx_packet_s*, void*) {}
void on_link(LinkStatus* status, Usp* port) {
  ++link_changes;
  last_status = *status;
  last_port = *port;
}
void on_link_c(ctype_link_status_s*, usp_s*) { ++link_changes_c; }

// One of the six registrations. Link changes have no user data.
struct Registration {
  const char* name;
  bool (*add)(VornSdkBase& sdk, void* user_data);
  void* function;
  lcmgr_report_event_t event;
  bool has_user_data;
};

template <auto operation, auto function>
bool add(VornSdkBase& sdk, void* user_data) {
  return (sdk.*operation)(function, user_data);
}

const Registration kRegistrations[] = {
    {"mac_update", add<&Base::register_mac_update_callback, on_mac>,
     reinterpret_cast<void*>(on_mac), LCMGR_REPORT_MAC_UPDATE, true},
    {"mac_update_c", add<&Base::register_mac_update_callback_c, on_mac_c>,
     reinterpret_cast<void*>(on_mac_c), LCMGR_REPORT_MAC_UPDATE, true},
    {"link_change", add<&Base::register_link_change_callback, on_link>,
     reinterpret_cast<void*>(on_link), LCMGR_REPORT_LINK_CHANGE, false},
    {"link_change_c", add<&Base::register_link_change_callback_c, on_link_c>,
     reinterpret_cast<void*>(on_link_c), LCMGR_REPORT_LINK_CHANGE, false},
    {"rx_packet", add<&Base::register_rx_packet_callback, on_packet>,
     reinterpret_cast<void*>(on_packet), LCMGR_REPORT_RX_PACKET, true},
    {"rx_packet_c", add<&Base::register_rx_packet_callback_c, on_packet_c>,
     reinterpret_cast<void*>(on_packet_c), LCMGR_REPORT_RX_PACKET, true},
};

void callbacks_stored(HostUnderCheck& host, Verdict& verdict) {
  if (!started(host, verdict)) return;
  int tried = 0;
  int data = 0;
  int other_data = 0;
  const auto withdraw = [&](const Registration& registration, void* user_data) {
    return host.sdk->deregister_event_callback(registration.event, registration.function,
                                               user_data);
  };
  // All at once: each is a registration of its own.
  std::vector<const Registration*> taken;
  for (const Registration& registration : kRegistrations) {
    void* const user_data = registration.has_user_data ? &data : nullptr;
    const std::string name = std::string("deregister_event_callback() of ") + registration.name;
    verdict.expect(name + " that was not registered", false, withdraw(registration, user_data));
    if (!registration.add(*host.sdk, user_data)) continue;
    ++tried;
    taken.push_back(&registration);
  }
  for (const Registration* const registration : taken) {
    void* const user_data = registration->has_user_data ? &data : nullptr;
    const std::string name = std::string("deregister_event_callback() of ") + registration->name;
    if (registration->has_user_data) {
      verdict.expect(name + " with other user data", false, withdraw(*registration, &other_data));
    }
    verdict.expect(name, true, withdraw(*registration, user_data));
    verdict.expect(name + " for the second time", false, withdraw(*registration, user_data));
  }
  if (tried == 0) verdict.skip("the SDK refuses every registration");
}

void callbacks_called(HostUnderCheck& host, Verdict& verdict) {
  Mp mp = kNoMp;
  Mp neighbour = kNoMp;
  phy_state_t state = PHY_STATE_DOWN;
  if (!two_ports(host, verdict, mp, neighbour)) return;
  if (!vorn_host_check_deliver_events()) {
    verdict.skip("the host does not define vorn_host_check_deliver_events()");
    return;
  }
  if (!host.sdk->get_port_link_state(mp, state) || state != PHY_STATE_UP) {
    verdict.skip("there is no link at " + text(host.physical.back()));
    return;
  }
  link_changes = 0;
  link_changes_c = 0;
  if (!host.sdk->register_link_change_callback(on_link, nullptr) ||
      !host.sdk->register_link_change_callback_c(on_link_c, nullptr) ||
      !host.sdk->set_port_state(mp, false)) {
    verdict.skip("the SDK refuses a link callback, or to take the link down");
    return;
  }
  vorn_host_check_deliver_events();
  verdict.expect("link changes reported to C++ when the link went down", 1U,
                 static_cast<unsigned>(link_changes));
  verdict.expect("link changes reported to C when the link went down", 1U,
                 static_cast<unsigned>(link_changes_c));
  if (link_changes == 1) {
    verdict.expect("the port reported", host.physical.back(), last_port);
    verdict.expect("the state reported", static_cast<unsigned>(PHY_STATE_DOWN),
                   static_cast<unsigned>(last_status.state));
  }
  for (const Registration& registration : kRegistrations) {
    if (registration.event != LCMGR_REPORT_LINK_CHANGE) continue;
    host.sdk->deregister_event_callback(registration.event, registration.function, nullptr);
  }
  verdict.expect("set_port_state()", true, host.sdk->set_port_state(mp, true));
  vorn_host_check_deliver_events();
  verdict.expect("link changes after the callbacks were withdrawn", 2U,
                 static_cast<unsigned>(link_changes + link_changes_c));
}

// ---- End ----------------------------------------------------------------------------------------

void no_object_after(HostUnderCheck& host, Verdict& verdict) {
  if (!started(host, verdict)) return;
  // A LAG is left behind where there can be one: the next start must not find half of it.
  Verdict ignored;
  Usp lag = kNoUsp;
  unsigned id = 0;
  begin_lag(host, ignored, lag, id);
  VornSdkBase* sdk = nullptr;
  verdict.expect("vornsdk_delete_sdk_instance()", true, vornsdk_delete_sdk_instance(host.sdk));
  host.sdk = nullptr;
  verdict.expect("vornsdk_get_sdk_instance()", false, vornsdk_get_sdk_instance(sdk));
}

void starts_again(HostUnderCheck& host, Verdict& verdict) {
  int out = 0;
  VornSdkBase* sdk = nullptr;
  if (!verdict.expect("vorn_init_line_card()", true, vorn_init_line_card(out)) ||
      !verdict.expect("vornsdk_create_sdk_instance()", true, vornsdk_create_sdk_instance()) ||
      !verdict.expect("vornsdk_get_sdk_instance()", true, vornsdk_get_sdk_instance(sdk))) {
    return;
  }
  for (const LagNode& node : lag_list) {
    Usp lag = kNoUsp;
    verdict.expect("an interface for id " + text(node.id()) + " of lag_list", true,
                   vornsdk_lag_id_to_lag_usp(node.id(), lag));
  }
  for (const Usp& lag : host.lags) {
    unsigned id = 0;
    if (!vornsdk_lag_usp_to_lag_id(lag, id)) continue;
    verdict.expect("a node in lag_list for " + text(lag), true, is_lag_exist(id, lag_list));
  }
  verdict.expect("vornsdk_delete_sdk_instance()", true, vornsdk_delete_sdk_instance(sdk));
}

// ---- The library --------------------------------------------------------------------------------

// A C entry point; null, and the rule is broken, when the library has none of the name.
template <class Function>
Function* find(void* library, const char* name, Verdict& verdict) {
  void* const symbol = dlsym(library, name);
  if (symbol == nullptr) verdict.fail(dlerror());
  return reinterpret_cast<Function*>(symbol);
}

void library_goes_through(HostUnderCheck& host, Verdict& verdict) {
  if (host.library == nullptr) {
    verdict.skip("--library names no file");
    return;
  }
  void* const library = dlopen(host.library, RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) {
    verdict.fail(dlerror());
    return;
  }
  const auto init = find<int(int*)>(library, "ctype_vorn_lcmgr_api_init", verdict);
  const auto terminate = find<int()>(library, "ctype_vorn_lcmgr_api_terminate", verdict);
  const auto create = find<int(usp_s*)>(library, "ctype_vorn_create_lag", verdict);
  const auto remove = find<int(usp_s*)>(library, "ctype_vorn_delete_lag", verdict);
  const auto add_ports =
      find<int(usp_s*, usp_s*, int)>(library, "ctype_vorn_add_ports_to_lag", verdict);
  int out = 0;
  if (!verdict.failure().empty() ||
      !verdict.expect("ctype_vorn_lcmgr_api_init()", 1U, static_cast<unsigned>(init(&out)))) {
    return;
  }
  const auto words = [](const Usp& port) { return usp_s{port.unit(), port.slot(), port.port()}; };
  unsigned id = 0;
  if (!host.lags.empty() && !host.physical.empty()) {
    usp_s lag = words(host.lags.front());
    usp_s port = words(host.physical.front());
    Mp mp = kNoMp;
    std::list<Mp> members;
    if (create(&lag) != 0) {
      verdict.expect("ctype_vorn_add_ports_to_lag()", 1U,
                     static_cast<unsigned>(add_ports(&lag, &port, 1)));
      verdict.expect("vornsdk_lag_usp_to_lag_id()", true,
                     vornsdk_lag_usp_to_lag_id(host.lags.front(), id));
      verdict.expect("get_lag_member()", true, get_lag_member(id, members));
      verdict.expect("vorn_usp_to_mp()", true, vorn_usp_to_mp(host.physical.front(), mp));
      verdict.expect("members", std::list<Mp>{mp}, members);
      verdict.expect("ctype_vorn_delete_lag()", 1U, static_cast<unsigned>(remove(&lag)));
      verdict.expect("is_lag_exist()", false, is_lag_exist(id, lag_list));
    }
  }
  verdict.expect("ctype_vorn_lcmgr_api_terminate()", 1U, static_cast<unsigned>(terminate()));
}

}  // namespace

const std::vector<Rule>& rules() {
  // clang-format off
  static const std::vector<Rule> kRules = {
      {"start.before", "there is no SDK object before it is made", no_object_before},
      {"start.object", "the line card starts, and gives one SDK object", object_after},
      {"kinds.one", "an address is of one kind at most", one_kind},
      {"ports.physical", "vorn_usp_to_mp() translates every physical port", physical_ports_translate},
      {"ports.others", "vorn_usp_to_mp() refuses LAG and VLAN interfaces and unknown ports", other_ports_do_not},
      {"ports.untouched", "vorn_usp_to_mp() that fails leaves the Mp alone", failure_writes_nothing},
      {"ports.inverse", "vorn_mp_to_usp() is the inverse of vorn_usp_to_mp()", inverse},
      {"ports.unknown", "vorn_mp_to_usp() refuses an unknown hardware port", unknown_hardware},
      {"lists.one", "a physical port is one hardware port in a list", one_hardware_port},
      {"lists.append", "the list functions append, in order", lists_append},
      {"lists.unknown", "the list functions are false as soon as a port is unknown", lists_fail},
      {"settings.kept", "a setting that was accepted reads back, on its port alone", settings_read_back},
      {"settings.refused", "a setting that cannot be is refused, and nothing changes", refusals_change_nothing},
      {"vlans.members", "a VLAN gives its members back, each of its kind", vlan_members},
      {"lags.unknown", "what has no LAG is refused, and nothing is written", lags_unknown},
      {"lags.none", "a host without LAG interfaces refuses everything about LAGs", no_lags_at_all},
      {"lags.step", "SDK, LAG list and mapping say the same of a LAG", lag_in_step},
      {"lags.members", "a LAG's members are listed once, in the order they were added", lag_members},
      {"lags.list", "the functions of the LAG list work on the list that they are given", list_as_given},
      {"lags.creating", "a LAG that was made halfway can be deleted", halfway_creation},
      {"lags.deleting", "a LAG that was deleted halfway can be deleted in full", halfway_deletion},
      {"kinds.stay", "the kinds of port do not change with what exists", kinds_stay},
      {"callbacks.stored", "a callback is withdrawn once, by its function and user data", callbacks_stored},
      {"callbacks.called", "both forms of a callback are called until they are withdrawn", callbacks_called},
      {"end.object", "there is no SDK object after it is deleted", no_object_after},
      {"end.again", "the line card starts again, with list and mapping in step", starts_again},
      {"library", "the library finds every symbol and goes through the host", library_goes_through},
  };
  // clang-format on
  return kRules;
}

}  // namespace vorn::host_check
