// SPDX-License-Identifier: Apache-2.0

#include "tests/support/recorder.h"

#include <cstring>

using vorn::test::host;
using vorn::test::name_of;

std::list<LagNode> lag_list;

namespace vorn::test {
namespace {

std::string hex(const void* data, std::size_t size) {
  const auto* const bytes = static_cast<const unsigned char*>(data);
  std::string all;
  for (std::size_t i = 0; i < size; ++i) {
    all += "0123456789abcdef"[bytes[i] / 16];
    all += "0123456789abcdef"[bytes[i] % 16];
  }
  return all;
}

unsigned int answers_given = 0;

}  // namespace

std::string text(const Usp& port) {
  return text(port.unit()) + "/" + text(port.slot()) + "/" + text(port.port());
}
std::string text(const Mp& mp) { return text(mp.module()) + ":" + text(mp.port()); }
std::string text(const of_match_s& match) { return hex(&match, sizeof match); }
std::string text(const of_flow_mp_s& flow) { return text(flow.in_port) + " " + text(flow.match); }
std::string text(const of_flow_qualify_udf_s& udf) {
  return text(udf.base) + " " + text(udf.offset) + " " + text(udf.value) + " " + text(udf.mask);
}
std::string text(const of_action_param_s& param) {
  return text(param.word[0]) + " " + text(param.word[1]) + " " + text(param.word[2]);
}
std::string text(const Packet& packet) {
  return text(packet.type()) + " " + text(packet.length()) + " " +
         hex(packet.data().data(), packet.data().size());
}
std::string mac_text(const unsigned char* mac) { return hex(mac, 6); }
std::string ip6_text(const unsigned char* ip6) { return hex(ip6, 16); }
std::string bitmap_text(const unsigned char* bitmap) { return hex(bitmap, 2); }

Host& host() {
  static Host* const the_host = new Host;  // outlives the library under test
  return *the_host;
}

void Host::reset() {
  struct PlainRecorder final : Recorder {};
  static PlainRecorder recorder;
  *this = Host();
  sdk = &recorder;
  lag_ids = {{kLag.port(), 33}, {kEmptyLag.port(), 34}};
  lag_list = {LagNode(33), LagNode(34)};
  lag_list.front().members() = {Mp(2, 1), Mp(2, 2), Mp(2, 3)};
  answers_given = 0;
}

bool Host::count(const std::string& line) {
  steps.push_back(line);
  if (steps.size() == throws) throw Thrown();
  return steps.size() != refuse;
}

std::string name_of(const void* address) {
  const auto name = host().names.find(address);
  return name != host().names.end() ? name->second : address == nullptr ? "null" : "&";
}

unsigned int next_answer() { return 101 + answers_given++; }

// ---- Slots that answer what the test told the host ----------------------------------------------

bool Recorder::get_vlan_info(u32 vlan, Ports& tagged, Ports& untagged) {
  const bool done = step(__func__, vlan, tagged, untagged);
  tagged = host().vlan_members[0];
  untagged = host().vlan_members[1];
  return done;
}

bool Recorder::create_lag(u32& id) {
  if (!step(__func__, name_of(&id))) return false;
  id = host().next_lag_id++;
  return true;
}

bool Recorder::get_port_mirror(Mp& to, const Mp& from, mirror_type_t& type) {
  const bool done = step(__func__, to, from, out(type));
  to = Mp(2, 8);
  return done;
}

bool Recorder::get_port_flow_control_8023x(const Mp& mp, u32& receive, u32& transmit) {
  receive = host().flow_control_words[0];
  transmit = host().flow_control_words[1];
  return step(__func__, mp);
}

bool Recorder::get_port_link_state(const Mp& mp, phy_state_t& state) {
  const auto link = host().links.find(mp.port());
  const bool done = step(__func__, mp, name_of(&state));
  if (done || host().answers) state = link != host().links.end() ? link->second : PHY_STATE_UP;
  return done;
}

}  // namespace vorn::test

// ---- Port mapping -------------------------------------------------------------------------------

namespace {

// vorn_usp_to_mp_list() without the record of it.
bool expand(const Usp& port, std::list<Mp>& mps) {
  if (port.slot() == 1) {
    mps.emplace_back(2, port.port() + 4);
    return true;
  }
  if (port.slot() == 30) {
    mps.emplace_back(2, 5);
    mps.emplace_back(2, 6);
    return true;
  }
  const auto id = host().lag_ids.find(port.port());
  if (port.slot() != 20 || id == host().lag_ids.end()) return false;
  for (const LagNode& lag : lag_list) {
    if (lag.id() == id->second) mps.insert(mps.end(), lag.members().begin(), lag.members().end());
  }
  return true;
}

}  // namespace

bool vorn_init_line_card(int& out) {
  out = 52;
  return host().step("init_line_card", name_of(&out));
}

bool is_port_physical(const Usp& port) { return host().step(__func__, port) && port.slot() == 1; }
bool is_port_logical_lag(const Usp& port) {
  return host().step(__func__, port) && port.slot() == 20;
}
bool is_port_logical_vlan(const Usp& port) {
  return host().step(__func__, port) && port.slot() == 30;
}

bool vorn_usp_to_mp(const Usp& port, Mp& mp) {
  if (!host().step("usp_to_mp", port) || port.slot() != 1) return false;
  mp = Mp(2, port.port() + 4);
  return true;
}

bool vorn_usp_to_mp_list(const Usp& port, std::list<Mp>& mps) {
  return host().step("usp_to_mp_list", port) && expand(port, mps);
}

bool vorn_usp_list_to_mp_list(const std::list<Usp>& ports, std::list<Mp>& mps) {
  if (!host().step("usp_list_to_mp_list", ports)) return false;
  for (const Usp& port : ports) {
    if (!expand(port, mps)) return false;
  }
  return true;
}

bool vorn_mp_to_usp(const Mp& mp, Usp& port) {
  if (!host().step("mp_to_usp", mp, name_of(&port))) return false;
  port = Usp(1, 1, mp.port() - 4);
  return true;
}

bool vorn_mp_list_to_usp_list(const std::list<Mp>& mps, std::list<Usp>& ports) {
  if (!host().step("mp_list_to_usp_list", mps, name_of(&ports))) return false;
  for (const Mp& mp : mps) ports.emplace_back(1, 1, mp.port() - 4);
  return true;
}

// ---- SDK object and LAG mapping -----------------------------------------------------------------

bool vornsdk_get_sdk_instance(VornSdkBase*& sdk) {
  if (!host().step("get_sdk")) return false;
  sdk = host().sdk;
  return host().has_sdk;
}

bool vornsdk_create_sdk_instance() { return host().step("create_sdk") && (host().has_sdk = true); }

bool vornsdk_delete_sdk_instance(VornSdkBase* sdk) {
  if (!host().step("delete_sdk", sdk == host().sdk)) return false;
  host().has_sdk = false;
  return true;
}

bool vornsdk_lag_usp_to_lag_id(const Usp& lag, unsigned int& id) {
  const auto known = host().lag_ids.find(lag.port());
  if (!host().step("lag_usp_to_lag_id", lag) || known == host().lag_ids.end()) return false;
  id = known->second;
  return true;
}

bool vornsdk_lag_id_to_lag_usp(unsigned int id, Usp& lag) {
  if (!host().step("lag_id_to_lag_usp", id, name_of(&lag))) return false;
  for (const auto& [port, known_id] : host().lag_ids) {
    if (known_id != id) continue;
    lag = Usp(1, 20, port);
    return true;
  }
  return false;
}

bool vornsdk_add_lag_mapping(const Usp& lag, unsigned int id) {
  return host().step("add_lag_mapping", lag, id) && host().lag_ids.emplace(lag.port(), id).second;
}

bool vornsdk_delete_lag_mapping(const Usp& lag, unsigned int id) {
  return host().step("delete_lag_mapping", lag, id) && host().lag_ids.erase(lag.port()) == 1;
}

// ---- LAG list -----------------------------------------------------------------------------------

namespace {

// "lag_list" for the host's own list, "copy" for one that is equal to it.
std::string which(const std::list<LagNode>& list) {
  if (&list == &lag_list) return "lag_list";
  bool equal = list.size() == lag_list.size();
  for (auto a = list.begin(), b = lag_list.cbegin(); equal && a != list.end(); ++a, ++b) {
    equal = a->id() == b->id() && a->members() == b->members();
  }
  return equal ? "copy" : "other";
}

LagNode* find(unsigned int id) {
  for (LagNode& lag : lag_list) {
    if (lag.id() == id) return &lag;
  }
  return nullptr;
}

}  // namespace

bool add_lag_to_list(unsigned int id, std::list<LagNode>& list) {
  if (!host().step(__func__, id, which(list))) return false;
  list.emplace_back(id);
  return true;
}

bool delete_lag_from_list(unsigned int id, std::list<LagNode>& list) {
  if (!host().step(__func__, id, which(list))) return false;
  list.remove_if([id](const LagNode& lag) { return lag.id() == id; });
  return true;
}

bool is_lag_exist(unsigned int id, std::list<LagNode> list) {  // NOLINT: by value, as declared
  return host().step(__func__, id, which(list)) && find(id) != nullptr;
}

bool add_lag_member(unsigned int id, std::list<LagNode>& list, std::list<Mp>& members) {
  if (!host().step(__func__, id, which(list), members) || find(id) == nullptr) return false;
  find(id)->members() = members;
  return true;
}

bool delete_lag_member(unsigned int id, std::list<LagNode>& list, std::list<Mp>& members) {
  if (!host().step(__func__, id, which(list), members) || find(id) == nullptr) return false;
  for (const Mp& mp : members) find(id)->members().remove(mp);
  return true;
}

bool get_lag_member(unsigned int id, std::list<Mp>& members) {
  if (!host().step(__func__, id) || find(id) == nullptr) return false;
  const std::list<Mp>& present = find(id)->members();
  members.insert(members.end(), present.begin(), present.end());
  return true;
}
