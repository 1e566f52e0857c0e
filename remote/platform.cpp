// SPDX-License-Identifier: Apache-2.0
//
// Makes the client the process's host: everything that platform/vorn_*.h asks for, and remote.h.

#include <cstdlib>

#include "remote/client.h"
#include "remote/remote.h"
#include "softcard/eventloop/loop_watch.h"
#include "vorn_lag_list.h"
#include "vorn_port_mapping.h"
#include "vorn_sdk.h"

std::list<LagNode> lag_list;

namespace {

using vorn::remote::Client;

void take_events() { vornremote_dispatch(); }

// Lives from the first use to the end of the process, whatever is loaded before or after.
Client& client() {
  static Client* const kClient = [] {
    auto* const made = new Client(lag_list);
    const char* const path = std::getenv("VORN_CARD");
    if (path != nullptr) made->use(path);
    softcard::watch_in_loop(made->descriptor(), &take_events);
    return made;
  }();
  return *kClient;
}

}  // namespace

// ---- vorn_port_mapping.h ------------------------------------------------------------------------

bool vorn_init_line_card(int& out) { return client().init(out); }

bool is_port_physical(const Usp& port) { return client().is_physical(port); }
bool is_port_logical_lag(const Usp& port) { return client().is_lag(port); }
bool is_port_logical_vlan(const Usp& port) { return client().is_vlan(port); }

bool vorn_usp_to_mp(const Usp& port, Mp& mp) { return client().usp_to_mp(port, mp); }

bool vorn_usp_to_mp_list(const Usp& port, std::list<Mp>& mps) {
  return client().usp_to_mp_list(port, mps);
}

bool vorn_usp_list_to_mp_list(const std::list<Usp>& ports, std::list<Mp>& mps) {
  return client().usp_list_to_mp_list(ports, mps);
}

bool vorn_mp_to_usp(const Mp& mp, Usp& port) { return client().mp_to_usp(mp, port); }

bool vorn_mp_list_to_usp_list(const std::list<Mp>& mps, std::list<Usp>& ports) {
  return client().mp_list_to_usp_list(mps, ports);
}

// ---- vorn_sdk.h ---------------------------------------------------------------------------------

bool vornsdk_get_sdk_instance(VornSdkBase*& sdk) { return client().get_instance(sdk); }
bool vornsdk_create_sdk_instance() { return client().create_instance(); }
bool vornsdk_delete_sdk_instance(VornSdkBase* sdk) { return client().delete_instance(sdk); }

bool vornsdk_lag_usp_to_lag_id(const Usp& lag, unsigned int& id) {
  return client().lag_usp_to_lag_id(lag, id);
}

bool vornsdk_lag_id_to_lag_usp(unsigned int id, Usp& lag) {
  return client().lag_id_to_lag_usp(id, lag);
}

bool vornsdk_add_lag_mapping(const Usp& lag, unsigned int id) {
  return client().add_lag_mapping(lag, id);
}

bool vornsdk_delete_lag_mapping(const Usp& lag, unsigned int id) {
  return client().delete_lag_mapping(lag, id);
}

// ---- vorn_lag_list.h ----------------------------------------------------------------------------

bool add_lag_to_list(unsigned int id, std::list<LagNode>& list) {
  return client().add_lag_to_list(id, list);
}

bool delete_lag_from_list(unsigned int id, std::list<LagNode>& list) {
  return client().delete_lag_from_list(id, list);
}

bool is_lag_exist(unsigned int id,
                  std::list<LagNode> list) {  // NOLINT(performance-unnecessary-value-param)
  return client().is_lag_exist(id, list);
}

bool add_lag_member(unsigned int id, std::list<LagNode>& list, std::list<Mp>& members) {
  return client().add_lag_member(id, list, members);
}

bool delete_lag_member(unsigned int id, std::list<LagNode>& list, std::list<Mp>& members) {
  return client().delete_lag_member(id, list, members);
}

bool get_lag_member(unsigned int id, std::list<Mp>& members) {
  return client().get_lag_member(id, members);
}

// ---- remote.h -----------------------------------------------------------------------------------

void vornremote_use(const char* path) { client().use(path); }
void vornremote_set_timeout_ms(int timeout_ms) { client().set_timeout_ms(timeout_ms); }
int vornremote_connected(void) { return client().connected() ? 1 : 0; }
int vornremote_read_only(void) { return client().connected() && client().read_only() ? 1 : 0; }
const char* vornremote_last_refusal(void) { return client().last_refusal().c_str(); }
uint64_t vornremote_refusals(void) { return client().refusals(); }
int vornremote_descriptor(void) { return client().descriptor(); }
size_t vornremote_dispatch(void) { return client().dispatch(); }
uint64_t vornremote_lost(lcmgr_report_event_t kind) { return client().lost(kind); }
