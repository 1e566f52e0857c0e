// SPDX-License-Identifier: Apache-2.0
//
// The host that platform/vorn_*.h asks for. vorn_init_line_card() reads the line card's
// description, which says what addresses are physical ports; the card itself lives as long as the
// SDK object.

#include "softcard/host.h"

#include <algorithm>
#include <functional>
#include <utility>
#include <vector>

#include "softcard/base/refusal.h"
#include "softcard/eventloop/loop_time.h"
#include "softcard/sdk/sdk.h"
#include "softcard/sdk/watched_sdk.h"
#include "vorn_lag_list.h"
#include "vorn_port_mapping.h"
#include "vorn_sdk.h"

std::list<LagNode> lag_list;

namespace softcard::host {
namespace {

// The card and its SDK, bare and watched: made and destroyed together.
struct Instance {
  Instance(const CardDescription& description, std::shared_ptr<Clock> clock, CallWatch& watch)
      : card(description, std::move(clock)),
        sdk(card, watch),
        watched_sdk(sdk, watch),
        spare_lags(description.capacity.lags, LagNode(0)),
        spare_members(description.ports.size(), Mp(0, 0)) {}

  Card card;
  SoftSdk sdk;
  WatchedSdk watched_sdk;
  // The nodes that lag_list needs at most. A change of a LAG goes to the SDK first and then to the
  // list: with nodes at hand memory cannot run out between the two.
  std::list<LagNode> spare_lags;
  std::list<Mp> spare_members;
};

struct Process {
  CardDescription chosen;  // by use_description()
  std::string description_path;
  std::shared_ptr<Clock> clock;
  std::string error;
  CallWatch watch;
  CardDescription description;  // of the line card that was initialised
  AddressPlan addresses{0};     // no ports before that
  std::shared_ptr<Instance> instance;
  std::uint64_t cards_made = 0;
  bool in_warp = false;
  std::function<void()> on_lag_change;
};

// What platform/ asks for is asked of it, where there is one.
vorn::operations::Host* other = nullptr;

// Lives from the first use to the end of the process, whatever is loaded before or after.
Process& process() {
  static Process* const kProcess = new Process;
  return *kProcess;
}

std::list<LagNode>::iterator find_lag(std::list<LagNode>& list, unsigned id) {
  return std::find_if(list.begin(), list.end(),
                      [id](const LagNode& node) { return node.id() == id; });
}

// The list's LAG of that id, or its end and the reason of a refusal.
std::list<LagNode>::iterator require_lag(std::list<LagNode>& list, unsigned id) {
  const auto node = find_lag(list, id);
  if (node == list.end()) refuse("LAG id ", id, " is not in the list");
  return node;
}

// The card, or null and the reason of a refusal.
Card* require_card() {
  Card* const present = card();
  if (present == nullptr) refuse("there is no card: vorn_lcmgr_api_init() makes it");
  return present;
}

// Say what an address is that is not what it was asked to be, and why one has no LAG id.
bool refuse_port(const Usp& port) { return process().addresses.refuse(port); }
bool refuse_lag(const Usp& lag) {
  return AddressPlan::is_lag(lag) ? refuse(lag, " does not exist") : refuse_port(lag);
}

bool contains(const std::list<Mp>& members, const Mp& mp) {
  return std::find(members.begin(), members.end(), mp) != members.end();
}

// A list of one item, its node from `spare` if there is any.
template <class Item>
std::list<Item> node_of(std::list<Item>* spare, const Item& item) {
  std::list<Item> node;
  if (spare == nullptr || spare->empty()) {
    node.push_back(item);
  } else {
    node.splice(node.begin(), *spare, spare->begin());
    node.front() = item;
  }
  return node;
}

// Where the nodes of a list come from and go to: nowhere for any list but lag_list.
Instance* node_store(const std::list<LagNode>& list) {
  return &list == &lag_list ? process().instance.get() : nullptr;
}

// Tells whoever has a copy of the LAG list or of the mapping of LAGs. True.
bool lags_changed() {
  if (process().on_lag_change) process().on_lag_change();
  return true;
}
bool list_changed(const std::list<LagNode>& list) { return &list != &lag_list || lags_changed(); }

// Cables in a loop, or tasks that come again and again, would keep an instant going for ever.
constexpr unsigned kMostRounds = 1000;

// The time of the event loop while the clock is virtual: the card's.
class CardTime final : public LoopTime {
 public:
  std::uint64_t now_ns() const override { return clock().now_ns(); }

  void advance(std::uint64_t most_ns) override {
    const std::uint64_t now = now_ns();
    std::uint64_t next = now + std::min(most_ns, UINT64_MAX - now);
    const Instance* const instance = process().instance.get();
    if (instance != nullptr) next = std::min(next, instance->card.next_due_ns());
    clock().warp_ns(std::max(next, now + 1) - now);
    if (process().instance != nullptr) process().instance->card.run_once();
  }

 private:
  static Clock& clock() {
    Instance* const instance = process().instance.get();
    return instance != nullptr ? instance->card.clock() : *process().clock;
  }
};

CardTime& card_time() {
  static CardTime* const kTime = new CardTime;
  return *kTime;
}

// A line card in use stays as it is.
bool initialise(int& out) {
  Process& own = process();
  own.error.clear();
  if (own.instance == nullptr) {
    CardDescription description = own.chosen;
    if (!own.description_path.empty() &&
        !load_card_description(own.description_path, description, own.error)) {
      return refuse(own.error);
    }
    own.description = description;
    own.addresses = AddressPlan(static_cast<PortIndex>(description.ports.size()));
  }
  out = own.addresses.port_count();
  return true;
}

bool create_instance() {
  Process& own = process();
  if (own.instance != nullptr) {
    own.error = "the line card is in use already";
    return refuse(own.error);
  }
  if (own.addresses.port_count() == 0) {
    own.error = "the line card is not initialised";
    return refuse(own.error);
  }
  if (own.clock == nullptr) own.clock = std::make_shared<RealClock>();
  own.instance = std::make_shared<Instance>(own.description, own.clock, own.watch);
  own.instance->card.set_owner(own.instance);
  ++own.cards_made;
  return true;
}

}  // namespace

void use_description(const CardDescription& description) {
  process().chosen = description;
  process().description_path.clear();
}

void use_description_file(const std::string& path) { process().description_path = path; }

void use_clock(std::shared_ptr<Clock> clock) {
  const bool is_virtual = dynamic_cast<const VirtualClock*>(clock.get()) != nullptr;
  process().clock = std::move(clock);
  set_loop_time(is_virtual ? &card_time() : nullptr);
}

void loop_in_real_time() { set_loop_time(nullptr); }

const std::string& error() { return process().error; }

Card* card() {
  Instance* const instance = process().instance.get();
  return instance == nullptr ? nullptr : &instance->card;
}

std::uint64_t card_number() { return process().cards_made; }

const std::string& last_refusal() { return softcard::last_refusal(); }

std::size_t run() {
  std::size_t done = 0;
  for (unsigned round = 0; round < kMostRounds; ++round) {
    // A callback may end the card.
    Card* const present = card();
    std::size_t more = present == nullptr ? 0 : present->run_once();
    more += run_loop_once() ? 1 : 0;
    if (more == 0) break;
    done += more;
  }
  return done;
}

bool warp_ns(std::uint64_t ns) {
  Process& own = process();
  Card* const present = card();
  if (present == nullptr) return refuse("time: there is no card");
  if (own.in_warp) return refuse("time: it is being moved on already");
  Clock& clock = present->clock();
  const std::uint64_t start = clock.now_ns();
  if (dynamic_cast<VirtualClock*>(&clock) == nullptr) {
    return refuse("time: the card runs in real time");
  }
  if (ns > UINT64_MAX - start) return refuse("time: beyond 2^64 ns");
  const std::uint64_t target = start + ns;
  const std::uint64_t number = card_number();
  const std::shared_ptr<const void> alive = present->keep_alive();
  struct Guard {
    bool& flag;
    explicit Guard(bool& set) : flag(set) { flag = true; }
    ~Guard() { flag = false; }
  } guard(own.in_warp);
  run();
  while (card() != nullptr && card_number() == number && clock.now_ns() < target) {
    const std::uint64_t now = clock.now_ns();
    std::uint64_t next = std::min(target, card()->next_due_ns());
    std::uint64_t timer = 0;
    if (loop_time() != nullptr && next_timer(timer)) next = std::min(next, timer);
    clock.warp_ns(std::max(next, now + 1) - now);
    run();
  }
  return true;
}

CallWatch& call_watch() { return process().watch; }

void use_host(vorn::operations::Host* host) { other = host; }

void on_lag_change(std::function<void()> observer) {
  process().on_lag_change = std::move(observer);
}

}  // namespace softcard::host

namespace host = softcard::host;
using softcard::refuse;

// ---- vorn_sdk.h ---------------------------------------------------------------------------------

bool vornsdk_get_sdk_instance(VornSdkBase*& sdk) {
  if (host::other != nullptr) return host::other->get_instance(sdk);
  if (host::require_card() == nullptr) return false;
  host::Instance* const instance = host::process().instance.get();
  softcard::forget_answer();
  sdk = &instance->sdk;
  if (host::call_watch().watching()) sdk = &instance->watched_sdk;
  return true;
}

bool vornsdk_create_sdk_instance() {
  if (host::other != nullptr) return host::other->create_instance();
  return host::create_instance();
}

bool vornsdk_delete_sdk_instance(VornSdkBase* sdk) {
  if (host::other != nullptr) return host::other->delete_instance(sdk);
  host::Process& own = host::process();
  if (host::require_card() == nullptr) return false;
  if (sdk != &own.instance->sdk && sdk != &own.instance->watched_sdk) {
    return refuse("the SDK object is not the card's");
  }
  // A callback may have asked for it: then the card stays until the call of it that is under way
  // comes back.
  own.instance->card.end();
  own.instance.reset();
  lag_list.clear();
  return host::lags_changed();
}

bool vornsdk_lag_usp_to_lag_id(const Usp& lag, unsigned int& id) {
  if (host::other != nullptr) return host::other->lag_usp_to_lag_id(lag, id);
  const softcard::Card* const card = host::require_card();
  return card != nullptr &&
         softcard::answer(card->tables().lags.id_of(lag, id), lag, host::refuse_lag);
}

bool vornsdk_lag_id_to_lag_usp(unsigned int id, Usp& lag) {
  if (host::other != nullptr) return host::other->lag_id_to_lag_usp(id, lag);
  const softcard::Card* const card = host::require_card();
  if (card == nullptr) return false;
  const Usp found = card->tables().lags.usp_of(id);
  if (found == Usp(0, 0, 0)) return refuse("LAG id ", id, " has no LAG interface");
  lag = found;
  return true;
}

// A LAG whose address is refused is taken back, from the SDK and from the list: nobody could reach
// it again.
bool vornsdk_add_lag_mapping(const Usp& lag, unsigned int id) {
  if (host::other != nullptr) return host::other->add_lag_mapping(lag, id);
  softcard::Card* const card = host::require_card();
  if (card == nullptr) return false;
  softcard::LagTable& lags = card->tables().lags;
  if (lags.pair(lag, id)) {
    softcard::forget_answer();  // that the LAG had no id, when it was asked for
    return host::lags_changed();
  }
  if (lags.exists(id) && lags.usp_of(id) == Usp(0, 0, 0) && card->delete_lag(id)) {
    if (host::find_lag(lag_list, id) != lag_list.end()) delete_lag_from_list(id, lag_list);
  }
  return false;
}

bool vornsdk_delete_lag_mapping(const Usp& lag, unsigned int id) {
  if (host::other != nullptr) return host::other->delete_lag_mapping(lag, id);
  softcard::Card* const card = host::require_card();
  return card != nullptr && card->tables().lags.unpair(lag, id) && host::lags_changed();
}

// ---- vorn_port_mapping.h ------------------------------------------------------------------------

bool vorn_init_line_card(int& out) {
  if (host::other != nullptr) return host::other->init(out);
  return host::initialise(out);
}

bool is_port_physical(const Usp& port) {
  if (host::other != nullptr) return host::other->is_physical(port);
  return softcard::answer(host::process().addresses.is_physical(port), port, host::refuse_port);
}

bool is_port_logical_lag(const Usp& port) {
  if (host::other != nullptr) return host::other->is_lag(port);
  return softcard::answer(softcard::AddressPlan::is_lag(port), port, host::refuse_port);
}

bool is_port_logical_vlan(const Usp& port) {
  if (host::other != nullptr) return host::other->is_vlan(port);
  return softcard::answer(softcard::AddressPlan::is_vlan(port), port, host::refuse_port);
}

bool vorn_usp_to_mp(const Usp& port, Mp& mp) {
  if (host::other != nullptr) return host::other->usp_to_mp(port, mp);
  softcard::PortIndex index = 0;
  const bool is_port = host::process().addresses.port_of(port, index);
  if (is_port) mp = softcard::AddressPlan::mp_of(index);
  return softcard::answer(is_port, port, host::refuse_port);
}

// False for a LAG or VLAN that does not exist.
bool vorn_usp_to_mp_list(const Usp& port, std::list<Mp>& mps) {
  if (host::other != nullptr) return host::other->usp_to_mp_list(port, mps);
  softcard::PortIndex index = 0;
  const softcard::AddressPlan& addresses = host::process().addresses;
  if (addresses.port_of(port, index)) {
    mps.push_back(softcard::AddressPlan::mp_of(index));
    return true;
  }
  if (!addresses.is_lag(port) && !addresses.is_vlan(port)) return addresses.refuse(port);
  softcard::Card* const card = host::require_card();
  if (card == nullptr) return false;
  if (addresses.is_lag(port)) {
    unsigned id = 0;
    return vornsdk_lag_usp_to_lag_id(port, id) && get_lag_member(id, mps);
  }
  if (!card->tables().vlans.require(port.port())) return false;
  for (const softcard::PortIndex member : card->tables().vlans.members(port.port())) {
    mps.push_back(softcard::AddressPlan::mp_of(member));
  }
  return true;
}

bool vorn_usp_list_to_mp_list(const std::list<Usp>& ports, std::list<Mp>& mps) {
  if (host::other != nullptr) return host::other->usp_list_to_mp_list(ports, mps);
  for (const Usp& port : ports) {
    const std::size_t before = mps.size();
    if (!vorn_usp_to_mp_list(port, mps)) return false;
    if (mps.size() == before) return refuse(port, " has no members");
  }
  return true;
}

bool vorn_mp_to_usp(const Mp& mp, Usp& port) {
  if (host::other != nullptr) return host::other->mp_to_usp(mp, port);
  softcard::PortIndex index = 0;
  const softcard::AddressPlan& addresses = host::process().addresses;
  if (!addresses.port_of(mp, index)) return addresses.refuse(mp);
  port = softcard::AddressPlan::usp_of(index);
  return true;
}

bool vorn_mp_list_to_usp_list(const std::list<Mp>& mps, std::list<Usp>& ports) {
  if (host::other != nullptr) return host::other->mp_list_to_usp_list(mps, ports);
  for (const Mp& mp : mps) {
    Usp port(0, 0, 0);
    if (!vorn_mp_to_usp(mp, port)) return false;
    ports.push_back(port);
  }
  return true;
}

// ---- vorn_lag_list.h ----------------------------------------------------------------------------

bool add_lag_to_list(unsigned int id, std::list<LagNode>& list) {
  if (host::other != nullptr) return host::other->add_lag_to_list(id, list);
  if (host::find_lag(list, id) != list.end()) return refuse("LAG id ", id, " is in the list");
  host::Instance* const store = host::node_store(list);
  std::list<LagNode> node =
      host::node_of(store == nullptr ? nullptr : &store->spare_lags, LagNode(id));
  list.splice(list.end(), node);
  return host::list_changed(list);
}

bool delete_lag_from_list(unsigned int id, std::list<LagNode>& list) {
  if (host::other != nullptr) return host::other->delete_lag_from_list(id, list);
  const auto node = host::require_lag(list, id);
  if (node == list.end()) return false;
  if (host::Instance* const store = host::node_store(list)) {
    store->spare_members.splice(store->spare_members.end(), node->members());
    store->spare_lags.splice(store->spare_lags.end(), list, node);
  } else {
    list.erase(node);
  }
  return host::list_changed(list);
}

bool is_lag_exist(unsigned int id, std::list<LagNode> list) {
  if (host::other != nullptr) return host::other->is_lag_exist(id, list);
  return host::find_lag(list, id) != list.end();
}

bool add_lag_member(unsigned int id, std::list<LagNode>& list, std::list<Mp>& members) {
  if (host::other != nullptr) return host::other->add_lag_member(id, list, members);
  const auto node = host::require_lag(list, id);
  if (node == list.end()) return false;
  host::Instance* const store = host::node_store(list);
  std::list<Mp> added;
  for (const Mp& mp : members) {
    if (host::contains(node->members(), mp) || host::contains(added, mp)) continue;
    std::list<Mp> one = host::node_of(store == nullptr ? nullptr : &store->spare_members, mp);
    added.splice(added.end(), one);
  }
  node->members().splice(node->members().end(), added);
  return host::list_changed(list);
}

bool delete_lag_member(unsigned int id, std::list<LagNode>& list, std::list<Mp>& members) {
  if (host::other != nullptr) return host::other->delete_lag_member(id, list, members);
  const auto node = host::require_lag(list, id);
  if (node == list.end()) return false;
  host::Instance* const store = host::node_store(list);
  std::list<Mp> removed;
  for (auto at = node->members().begin(); at != node->members().end();) {
    const auto member = at++;
    if (!host::contains(members, *member)) continue;
    removed.splice(removed.end(), node->members(), member);
  }
  if (store != nullptr) store->spare_members.splice(store->spare_members.end(), removed);
  return host::list_changed(list);
}

bool get_lag_member(unsigned int id, std::list<Mp>& members) {
  if (host::other != nullptr) return host::other->get_lag_member(id, members);
  const auto node = host::require_lag(lag_list, id);
  if (node == lag_list.end()) return false;
  members.insert(members.end(), node->members().begin(), node->members().end());
  return true;
}
