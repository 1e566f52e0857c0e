// SPDX-License-Identifier: Apache-2.0

#include "stp_daemon.h"

#include <algorithm>
#include <list>

namespace stp {
namespace {

constexpr Mac kBridgeGroup = {0x01, 0x80, 0xc2, 0x00, 0x00, 0x00};
constexpr std::size_t kBpduOffset = 17;  // behind two addresses, the length and LLC
constexpr std::size_t kBpduBytes = 35;
constexpr int kHopMs = 1000;  // what a BPDU ages on its way through a bridge

Daemon* the_daemon = nullptr;

// Numbers of a BPDU, the first byte the highest.
void put(std::vector<unsigned char>& frame, std::uint64_t number, unsigned bytes) {
  while (bytes-- > 0) frame.push_back(static_cast<unsigned char>(number >> 8 * bytes));
}
std::uint64_t get(const std::uint8_t* at, unsigned bytes) {
  std::uint64_t number = 0;
  for (unsigned i = 0; i < bytes; ++i) number = number << 8 | at[i];
  return number;
}
// Times are in units of 1/256 second.
std::uint64_t ticks(int ms) { return static_cast<std::uint64_t>(ms) * 256 / 1000; }
int ms_of(std::uint64_t ticks) { return static_cast<int>(ticks * 1000 / 256); }

std::uint32_t path_cost(speed_type_t speed) {
  if (speed >= SPEED_TYPE_10000) return 2;
  if (speed >= SPEED_TYPE_1000) return 4;
  return speed >= SPEED_TYPE_100 ? 19 : 100;
}

}  // namespace

Daemon::Daemon(EventLoop& loop, const Settings& settings, const std::vector<Usp>& ports)
    : loop_(loop),
      settings_(settings),
      own_(bridge_id(settings.priority, settings.mac)),
      best_{own_, 0, own_, 0} {
  std::uint16_t number = 0;
  for (const Usp& usp : ports) {
    Port port;
    port.usp = usp;
    port.id = static_cast<std::uint16_t>(0x8000 | ++number);
    ports_.push_back(port);
  }
}

Daemon::~Daemon() {
  if (!started_) return;
  the_daemon = nullptr;
  vorn_deregister_event_callback(LCMGR_REPORT_RX_PACKET,
                                 reinterpret_cast<void*>(&Daemon::packet_arrived), this);
  vorn_deregister_event_callback(LCMGR_REPORT_LINK_CHANGE,
                                 reinterpret_cast<void*>(&Daemon::link_changed), nullptr);
}

bool Daemon::start() {
  if (the_daemon != nullptr) return false;
  std::list<Usp> all;
  for (const Port& port : ports_) all.push_back(port.usp);
  if (!vorn_set_ports_stp_state(all, STP_STATE_BLOCKING)) return false;
  if (!vorn_register_rx_packet_callback(&Daemon::packet_arrived, this)) return false;
  the_daemon = this;
  started_ = true;
  if (!vorn_register_link_change_callback(&Daemon::link_changed)) return false;
  for (Port& port : ports_) {
    LinkStatus status{PHY_STATE_DOWN, SPEED_TYPE_UNKNOWN, DUPLEX_TYPE_FULL};
    if (!vorn_set_port_bpdu_processing(port.usp, true) ||
        !vorn_get_port_link_state(port.usp, status.state) ||
        !vorn_get_port_speed(port.usp, status.speed)) {
      return false;
    }
    set_link(port, status);
  }
  hello_ = loop_.new_periodic_ms(settings_.hello_ms, callback(this, &Daemon::hello));
  hello();
  return true;
}

// ---- What happens to the daemon -----------------------------------------------------------------

void Daemon::packet_arrived(RxPacket* packet, void* daemon) {
  Daemon& own = *static_cast<Daemon*>(daemon);
  Port* const port = own.find(packet->port);
  if (port != nullptr) own.receive(*port, packet->data, packet->length);
}

void Daemon::link_changed(LinkStatus* status, Usp* usp) {
  if (the_daemon == nullptr) return;
  Port* const port = the_daemon->find(*usp);
  if (port != nullptr) the_daemon->set_link(*port, *status);
}

void Daemon::set_link(Port& port, const LinkStatus& status) {
  port.up = status.state == PHY_STATE_UP;
  if (port.up) port.path_cost = path_cost(status.speed);
  port.heard = false;
  port.age.unschedule();
  decide();
}

void Daemon::receive(Port& port, const std::uint8_t* frame, std::size_t bytes) {
  if (!port.up || bytes < kBpduOffset + kBpduBytes ||
      !std::equal(kBridgeGroup.begin(), kBridgeGroup.end(), frame)) {
    return;
  }
  const std::uint8_t* const bpdu = frame + kBpduOffset;
  if (frame[14] != 0x42 || frame[15] != 0x42 || get(bpdu, 2) != 0 || bpdu[3] != 0) return;
  const Vector vector = {get(bpdu + 5, 8), static_cast<std::uint32_t>(get(bpdu + 13, 4)),
                         get(bpdu + 17, 8), static_cast<std::uint16_t>(get(bpdu + 25, 2))};
  const int age_ms = ms_of(get(bpdu + 27, 2));
  if (vector.bridge == own_ || age_ms >= settings_.max_age_ms) return;
  // The same bridge may also say worse than it did: its old word is void.
  const bool same_sender =
      port.heard && port.received.bridge == vector.bridge && port.received.port == vector.port;
  if (port.heard && !same_sender && port.received < vector) return;
  port.heard = true;
  port.received = vector;
  port.message_age_ms = age_ms;
  port.age = loop_.new_oneoff_after_ms(settings_.max_age_ms - age_ms,
                                       callback(this, &Daemon::forget, &port));
  decide();
  // What comes from the root goes on to the bridges behind this one.
  if (&port != root_port_) return;
  for (Port& other : ports_) {
    if (other.role == Role::designated) send(other);
  }
}

void Daemon::forget(Port* port) {
  port->heard = false;
  decide();
}

// ---- Roles and states ---------------------------------------------------------------------------

Daemon::Port* Daemon::find(const Usp& usp) {
  const auto found =
      std::find_if(ports_.begin(), ports_.end(), [&](const Port& port) { return port.usp == usp; });
  return found == ports_.end() ? nullptr : &*found;
}

void Daemon::decide() {
  root_port_ = nullptr;
  best_ = {own_, 0, own_, 0};
  Vector way = best_;
  for (Port& port : ports_) {
    if (!port.up || !port.heard) continue;
    Vector through = port.received;
    through.cost += port.path_cost;
    if (through < way) {
      way = through;
      root_port_ = &port;
    }
  }
  if (root_port_ != nullptr) {
    best_.root = way.root;
    best_.cost = way.cost;
  }
  for (Port& port : ports_) {
    Vector own = best_;
    own.port = port.id;
    if (!port.up) {
      become(port, Role::disabled);
    } else if (&port == root_port_) {
      become(port, Role::root);
    } else if (!port.heard || own < port.received) {
      become(port, Role::designated);
    } else {
      become(port, Role::alternate);
    }
  }
}

void Daemon::become(Port& port, Role role) {
  const bool newly_designated = role == Role::designated && port.role != role;
  port.role = role;
  const bool forwards = role == Role::root || role == Role::designated;
  if (!forwards) {
    port.forward.unschedule();
    go_to(port, STP_STATE_BLOCKING);
  } else if (port.state == STP_STATE_BLOCKING && !port.forward.scheduled()) {
    go_to(port, STP_STATE_LISTENING);
    port.forward = loop_.new_oneoff_after_ms(settings_.forward_delay_ms,
                                             callback(this, &Daemon::next_state, &port));
  }
  if (newly_designated && started_) send(port);
}

void Daemon::next_state(Port* port) {
  if (port->state == STP_STATE_LISTENING) {
    go_to(*port, STP_STATE_LEARNING);
    port->forward = loop_.new_oneoff_after_ms(settings_.forward_delay_ms,
                                              callback(this, &Daemon::next_state, port));
  } else if (port->state == STP_STATE_LEARNING) {
    go_to(*port, STP_STATE_FORWARDING);
  }
}

// A state that the switch refuses is tried again with each hello. vorn_set_ports_stp_state() tells
// whether the state was set; vorn_set_port_stp_state() gives the result of its flush instead.
void Daemon::go_to(Port& port, stp_state_t state) {
  port.wanted = state;
  if (port.state == state) return;
  if (!vorn_set_ports_stp_state({port.usp}, state)) return;
  const bool forwarded = port.state == STP_STATE_FORWARDING;
  port.state = state;
  if (forwarded) vorn_clear_fdb_by_port(port.usp, false);
}

// ---- BPDUs out ----------------------------------------------------------------------------------

bool Daemon::hello() {
  for (Port& port : ports_) {
    if (port.wanted != port.state) go_to(port, port.wanted);
    if (is_root() && port.role == Role::designated) send(port);
  }
  return true;
}

void Daemon::send(Port& port) {
  const int age_ms = root_port_ == nullptr ? 0 : root_port_->message_age_ms + kHopMs;
  if (age_ms >= settings_.max_age_ms) return;
  std::vector<unsigned char> frame(kBridgeGroup.begin(), kBridgeGroup.end());
  frame.insert(frame.end(), settings_.mac.begin(), settings_.mac.end());
  put(frame, kBpduBytes + 3, 2);
  put(frame, 0x424203, 3);
  put(frame, 0, 5);  // protocol, version, type and flags of a configuration BPDU
  put(frame, best_.root, 8);
  put(frame, best_.cost, 4);
  put(frame, own_, 8);
  put(frame, port.id, 2);
  put(frame, ticks(age_ms), 2);
  put(frame, ticks(settings_.max_age_ms), 2);
  put(frame, ticks(settings_.hello_ms), 2);
  put(frame, ticks(settings_.forward_delay_ms), 2);
  Packet packet;
  packet.set_data(frame);
  packet.set_type(PACKET_TYPE_CONTROL);
  vorn_send_packet_by_port({}, {port.usp}, packet);
}

}  // namespace stp
