// SPDX-License-Identifier: Apache-2.0
#include "agent.h"

#include <array>
#include <cstring>
#include <list>
#include <utility>

#include "vornlcapi/api.h"

namespace agent {

namespace {

constexpr unsigned kFramesAtATime = 64;

Agent* the_agent = nullptr;

// 01:80:c2:00:00:00 to 0f: what link partners tell each other, whatever the spanning tree says.
bool is_control(const std::uint8_t* frame) {
  constexpr std::array<std::uint8_t, 5> kReserved = {0x01, 0x80, 0xc2, 0x00, 0x00};
  return std::memcmp(frame, kReserved.data(), kReserved.size()) == 0 && frame[5] <= 0x0f;
}

bool is_tagged(const std::uint8_t* frame) {
  return (frame[12] == 0x81 && frame[13] == 0x00) || (frame[12] == 0x88 && frame[13] == 0xa8);
}

constexpr std::size_t kEthernetHeaderBytes = 14;

}  // namespace

Agent::Agent(EventLoop& loop, std::function<void(const std::string&)> report)
    : loop_(loop), report_(std::move(report)), writer_(report_) {
  the_agent = this;
}

Agent::~Agent() {
  vorn_deregister_event_callback(LCMGR_REPORT_RX_PACKET,
                                 reinterpret_cast<void*>(&Agent::packet_received), this);
  vorn_deregister_event_callback(LCMGR_REPORT_LINK_CHANGE,
                                 reinterpret_cast<void*>(&Agent::link_changed), nullptr);
  vorn_deregister_event_callback(LCMGR_REPORT_MAC_UPDATE,
                                 reinterpret_cast<void*>(&Agent::mac_updated), this);
  while (!taps_.empty()) remove_tap(taps_.begin()->first);
  if (netlink_ != nullptr) loop_.remove_ioevent_cb(XorpFd(netlink_->descriptor()));
  the_agent = nullptr;
}

bool Agent::start(const std::string& prefix, const std::vector<Mac>& macs, std::string& error) {
  netlink_ = Netlink::open(error);
  if (netlink_ == nullptr) {
    error = "netlink: " + error;
    return false;
  }
  loop_.add_ioevent_cb(XorpFd(netlink_->descriptor()), IOT_READ,
                       callback(this, &Agent::netlink_ready), XorpTask::PRIORITY_HIGH);
  if (!writer_.begin(static_cast<unsigned>(macs.size()))) {
    error = "the card does not answer";
    return false;
  }
  for (unsigned port = 0; port < macs.size(); ++port) {
    auto tap = Tap::open(prefix + std::to_string(port), error);
    if (tap == nullptr) return false;
    std::string trouble;
    if (!netlink_->set_mac(tap->index(), macs[port], trouble)) {
      error = prefix + std::to_string(port);
      error += ": its address: " + trouble;
      return false;
    }
    loop_.add_ioevent_cb(XorpFd(tap->descriptor()), IOT_READ,
                         callback(this, &Agent::tap_ready, port));
    ports_[port] = tap->index();
    taps_[port] = std::move(tap);
  }
  if (!vorn_register_rx_packet_callback(&Agent::packet_received, this) ||
      !vorn_register_link_change_callback(&Agent::link_changed) ||
      !vorn_register_mac_update_callback(&Agent::mac_updated, this)) {
    error = "the card does not take callbacks";
    return false;
  }
  netlink_->read();
  settle();
  for (unsigned port = 0; port < macs.size(); ++port) {
    phy_state_t state = PHY_STATE_DOWN;
    set_carrier(port, vorn_get_port_link_state(writer_.usp(port), state) && state == PHY_STATE_UP);
  }
  return true;
}

// ---- Frames -------------------------------------------------------------------------------------

bool Agent::number_of(const Usp& port, unsigned& number) const {
  number = port.port();
  return port == writer_.usp(number) && ports_.count(number) != 0;
}

void Agent::packet_received(RxPacket* packet, void* self) {
  auto* const agent = static_cast<Agent*>(self);
  unsigned number = 0;
  if (!agent->number_of(packet->port, number)) return;
  const auto tap = agent->taps_.find(number);
  if (tap == agent->taps_.end() || !tap->second->carrier()) return;
  tap->second->write(packet->data, packet->length);
}

void Agent::tap_ready(XorpFd, IoEventType, unsigned port) {
  static std::array<std::uint8_t, Tap::kMostBytes> bytes;
  for (unsigned i = 0; i < kFramesAtATime; ++i) {
    const auto tap = taps_.find(port);
    if (tap == taps_.end()) return;
    const std::ptrdiff_t count = tap->second->read(bytes.data());
    if (count == 0) return;
    if (count < 0) {
      report_("the interface of port " + std::to_string(port) + " is gone");
      remove_tap(port);
      return;
    }
    send(port, bytes.data(), static_cast<std::size_t>(count));
  }
}

void Agent::send(unsigned port, const std::uint8_t* bytes, std::size_t count) {
  if (count < kEthernetHeaderBytes) return;
  Packet packet;
  packet.set_data({bytes, bytes + count});
  packet.set_type(is_control(bytes) ? PACKET_TYPE_CONTROL : PACKET_TYPE_DATA);
  const std::list<Usp> out = {writer_.usp(port)};
  // The card counts what it does not send.
  if (is_tagged(bytes)) {
    vorn_send_packet_by_port(out, {}, packet);
  } else {
    vorn_send_packet_by_port({}, out, packet);
  }
}

void Agent::remove_tap(unsigned port) {
  const auto found = taps_.find(port);
  loop_.remove_ioevent_cb(XorpFd(found->second->descriptor()));
  taps_.erase(found);
  ports_.erase(port);
  replan_ = true;
}

// ---- What the card tells ------------------------------------------------------------------------

void Agent::link_changed(LinkStatus* status, Usp* port) {
  unsigned number = 0;
  if (the_agent == nullptr || !the_agent->number_of(*port, number)) return;
  the_agent->set_carrier(number, status->state == PHY_STATE_UP);
}

void Agent::set_carrier(unsigned port, bool on) {
  const auto found = taps_.find(port);
  if (found == taps_.end() || found->second->carrier() == on) return;
  found->second->set_carrier(on);
  std::string error;
  // Otherwise the kernel may wait for a second before it tells anybody of a lost carrier.
  if (!on) try_netlink(netlink_->look_at(found->second->index(), error), "a carrier", error);
}

void Agent::mac_updated(L2Addr* entry, int what, void* self) {
  auto* const agent = static_cast<Agent*>(self);
  CardModel::Address address{entry->vlan, {}};
  std::memcpy(address.second.data(), entry->mac, address.second.size());
  unsigned number = 0;
  if (what != MAC_UPDATE_REMOVED && entry->flags == 0 && agent->number_of(entry->port, number)) {
    agent->learned_[address] = number;
  } else if (agent->learned_.erase(address) == 0) {
    return;
  }
  agent->updated_.insert(address);
  // Hosts behind a bridge are where their addresses are.
  if (agent->writer_.card().routers.count(address.first) != 0 &&
      agent->bridges_.count(address.first) != 0) {
    agent->replan_ = true;
  }
}

// ---- What Linux tells ---------------------------------------------------------------------------

void Agent::netlink_ready(XorpFd, IoEventType) {
  if (!netlink_->read()) overrun_ = true;
}

void Agent::settle() {
  std::string error;
  if (overrun_) {
    overrun_ = false;
    report_("netlink lost messages: reading everything again");
    replan_ = true;
    try_netlink(netlink_->reload(error), "reading everything", error);
  }
  forget_stations();
  if (netlink_->changed()) replan_ = true;
  if ((replan_ || netlink_->routes_stale()) && may_plan()) replan();
  for (const CardModel::Address& address : std::exchange(updated_, {})) tell_bridge(address);
}

bool Agent::may_plan() {
  const auto wait = next_plan_ - std::chrono::steady_clock::now();
  if (wait <= wait.zero()) return true;
  if (!plan_timer_.scheduled()) {
    const auto ms = std::chrono::ceil<std::chrono::milliseconds>(wait).count();
    plan_timer_ =
        loop_.new_oneoff_after_ms(static_cast<int>(ms), callback(this, &Agent::plan_is_due));
  }
  return false;
}

void Agent::replan() {
  constexpr int kTimesItsOwnTime = 4;
  const auto began = std::chrono::steady_clock::now();
  std::string error;
  if (netlink_->routes_stale()) {
    try_netlink(netlink_->reload_routes(error), "reading the routes", error);
  }
  netlink_->changed();
  replan_ = false;
  Plan plan = planner_.plan(netlink_->state(), ports_, learned_);
  writer_.apply(plan.card);
  for (const int index : plan.to_isolate) {
    try_netlink(netlink_->isolate(index, error), "isolating a bridge port", error);
  }
  keep_gateways(plan.gateways);
  const bool bridges_changed = plan.bridges != bridges_;
  bridges_ = std::move(plan.bridges);
  if (bridges_changed) tell_bridges();
  say_once("several", plan.several_next_hops == 0
                          ? ""
                          : "routes with several next hops: the card uses the first that is alive");
  say_once("gaps", plan.left_to_linux == 0
                       ? ""
                       : "routes around too many that are Linux's: Linux routes their packets");
  const auto ended = std::chrono::steady_clock::now();
  next_plan_ = ended + kTimesItsOwnTime * (ended - began);
}

// ---- Bridges ------------------------------------------------------------------------------------

void Agent::tell_bridge(const CardModel::Address& address) {
  const auto bridge = bridges_.find(address.first);
  if (bridge == bridges_.end()) return;
  const auto station = learned_.find(address);
  const LinuxState& state = netlink_->state();
  std::string error;
  for (const auto& [port, index] : ports_) {
    const Link* const link = state.link(index);
    if (link == nullptr || link->master != bridge->second) continue;
    const auto entry = state.fdb.find({index, address.second});
    const bool there = entry != state.fdb.end();
    if (station != learned_.end() && station->second == port) {
      // What somebody has set himself stays.
      if (there && entry->second != FdbKind::learned) continue;
      try_netlink(netlink_->add_station(index, address.second, error), "a learned address", error);
    } else if (there && entry->second == FdbKind::from_card) {
      try_netlink(netlink_->remove_station(index, address.second, error), "a learned address",
                  error);
    }
  }
}

void Agent::tell_bridges() {
  for (const auto& [address, port] : learned_) updated_.insert(address);
}

// What somebody removes from a bridge the card learns anew.
void Agent::forget_stations() {
  for (const auto& [index, mac] : netlink_->forgotten()) {
    for (const auto& [port, tap] : ports_) {
      if (tap != index) continue;
      const auto model = writer_.card().ports.find(port);
      if (model == writer_.card().ports.end()) continue;
      const auto station = learned_.find({model->second.vlan, mac});
      if (station != learned_.end() && station->second == port) {
        vorn_delete_mac(model->second.vlan, mac.data());
      }
    }
  }
}

// ---- Routing ------------------------------------------------------------------------------------

void Agent::keep_gateways(const std::set<LinuxState::NeighbourKey>& gateways) {
  const LinuxState& state = netlink_->state();
  std::string error;
  for (auto neighbour = managed_.begin(); neighbour != managed_.end();) {
    const bool wanted = gateways.count(*neighbour) != 0;
    if (!wanted && state.neighbours.count(*neighbour) != 0) {
      netlink_->release(*neighbour, error);  // it may be gone already
    }
    neighbour = wanted ? std::next(neighbour) : managed_.erase(neighbour);
  }
  for (const LinuxState::NeighbourKey& gateway : gateways) {
    const auto neighbour = state.neighbours.find(gateway);
    if (neighbour != state.neighbours.end() && neighbour->second.managed) continue;
    try_netlink(netlink_->manage(gateway, error), "looking for " + text(gateway.second), error);
    managed_.insert(gateway);
  }
}

// ---- Messages -----------------------------------------------------------------------------------

void Agent::say_once(const std::string& subject, const std::string& text) {
  std::string& said = said_[subject];
  if (said != text && !text.empty()) report_(text);
  said = text;
}

void Agent::try_netlink(bool done, const std::string& what, const std::string& error) {
  say_once(what, done ? "" : what + ": " + error);
}

}  // namespace agent
