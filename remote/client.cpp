// SPDX-License-Identifier: Apache-2.0

#include "remote/client.h"

#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/mman.h>

#include <algorithm>
#include <atomic>
#include <new>
#include <stdexcept>

namespace vorn::remote {
namespace {

constexpr std::size_t kMostFacts = 65536;
constexpr std::size_t kPageBytes = 4096;

std::tuple<unsigned, unsigned, unsigned> key_of(const Usp& port) {
  return {port.unit(), port.slot(), port.port()};
}

usp_s record_of(const Usp& port) { return {port.unit(), port.slot(), port.port()}; }

template <class T>
T read(Reader& in) {
  T value = Value<T>::make();
  Value<T>::get(in, value);
  return value;
}

std::list<LagNode>::iterator find_lag(std::list<LagNode>& list, unsigned id) {
  return std::find_if(list.begin(), list.end(),
                      [id](const LagNode& node) { return node.id() == id; });
}

std::string not_in_list(unsigned id) {
  return "LAG id " + std::to_string(id) + " is not in the list";
}

bool watch(const Descriptor& epoll, int fd) {
  epoll_event event{};
  event.events = EPOLLIN | EPOLLRDHUP;
  return epoll_ctl(epoll.get(), EPOLL_CTL_ADD, fd, &event) == 0;
}

}  // namespace

Client::Client(std::list<LagNode>& lags)
    : lags_(lags),
      sdk_(*this),
      connection_([this](Kind kind, const std::uint8_t* message,
                         std::size_t bytes) { take_event(kind, message, bytes); },
                  [this](const std::string& reason) { connection_lost(reason); }),
      watch_(epoll_create1(EPOLL_CLOEXEC)),
      wakeup_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  watch(watch_, wakeup_.get());
}

Client::~Client() { forget_everything(); }

// ---- Refusals and answers -----------------------------------------------------------------------

void Client::keep_answer() {
  const PortFacts* const facts = std::exchange(answered_no_, nullptr);
  if (facts != nullptr) refuse(facts->reason);
}

const std::string& Client::last_refusal() {
  keep_answer();
  return reason_;
}

std::uint64_t Client::refusals() {
  keep_answer();
  return refusals_;
}

bool Client::refuse(std::string reason) {
  answered_no_ = nullptr;
  reason_ = std::move(reason);
  ++refusals_;
  return false;
}

bool Client::refuse_without_connection() { return refuse(no_connection_); }

bool Client::refuse_too_long() {
  return refuse("what the call carries is more than a message can hold, " +
                std::to_string(kMostMessageBytes) + " bytes");
}

bool Client::ask(Reader& answer, Status& status, std::string& reason) {
  if (!connection_.is_open()) {
    return refuse_without_connection();
  }
  if (!connection_.fits()) return refuse_too_long();
  Kind kind{};
  if (!connection_.exchange(kind, answer)) return false;
  if (kind != Kind::kAnswer) return connection_.fail("an answer in parts came unasked");
  status = static_cast<Status>(answer.u8());
  if (status != Status::kDone) reason = answer.text();
  if (status == Status::kNotTried) return understood(answer) && refuse(std::move(reason));
  return true;
}

bool Client::settle(Status status, std::string reason) {
  switch (status) {
    case Status::kDone:
      return true;
    case Status::kNoMemory:
      throw std::bad_alloc();
    case Status::kThrew:
      throw std::runtime_error(reason);
    case Status::kRefused:
    case Status::kNotTried:
      break;
  }
  // An operation may refuse without a reason.
  return reason.empty() ? false : refuse(std::move(reason));
}

bool Client::ask(Reader& answer) {
  Status status{};
  std::string reason;
  return ask(answer, status, reason) && settle(status, std::move(reason));
}

bool Client::understood(const Reader& answer) {
  return answer.done() || connection_.fail("an answer is malformed");
}

bool Client::ask_yes_or_no() {
  Reader answer;
  return ask(answer) && understood(answer);
}

// ---- The connection -----------------------------------------------------------------------------

bool Client::init(int& out) {
  if (connection_.is_open() && connection_.alive()) {
    out = init_value_;
    return true;
  }
  forget_everything();
  std::string error;
  if (!connection_.open(path_, timeout_ms_, error)) return refuse(error);
  return greet(out);
}

bool Client::init_with(Descriptor socket, int& out) {
  forget_everything();
  connection_.adopt(std::move(socket), path_, timeout_ms_);
  return greet(out);
}

bool Client::greet(int& out) {
  Writer request = connection_.begin(Kind::kHello);
  request.u32(kMagic);
  request.u32(kVersion);
  request.u64(table_hash());
  Kind kind{};
  Reader answer;
  if (!connection_.exchange(kind, answer)) return false;
  if (kind != Kind::kAnswer || answer.u32() != kMagic) {
    return connection_.fail("what answers is no line card");
  }
  const std::uint32_t version = answer.u32();
  const std::uint64_t hash = answer.u64();
  const auto status = static_cast<Status>(answer.u8());
  if (status != Status::kDone) {
    const std::string reason(answer.text());
    connection_.close();
    return refuse(path_ + ": " + reason);
  }
  // Whoever answered has looked at the versions, and so the rest can be read.
  if (version != kVersion || hash != table_hash()) {
    return connection_.fail("it has " + version_text(version, hash) + ", this program " +
                            version_text(kVersion, table_hash()));
  }
  read_only_ = answer.u8() != 0;
  Value<int>::get(answer, init_value_);
  std::list<Usp> ports;
  Value<std::list<Usp>>::get(answer, ports);
  if (!understood(answer)) return false;
  ports_.assign(ports.begin(), ports.end());
  take_page();
  watch(watch_, connection_.descriptor());
  out = init_value_;
  return true;
}

void Client::take_page() {
  const Descriptor memory = connection_.take_descriptor();
  if (!memory) return;
  void* const page = mmap(nullptr, kPageBytes, PROT_READ, MAP_SHARED, memory.get(), 0);
  if (page != MAP_FAILED) page_ = page;
}

void Client::forget_everything() {
  connection_.close();
  no_connection_ = kNotConnected;
  if (page_ != nullptr) munmap(const_cast<void*>(page_), kPageBytes);
  page_ = nullptr;
  has_instance_ = false;
  ports_.clear();
  answered_no_ = nullptr;
  facts_.clear();
  usps_.clear();
  lags_.clear();
  lags_known_ = false;
  lag_ids_.clear();
  registrations_.clear();
  listeners_ = {};
  inbox_.clear();
}

// Every link that somebody listens for goes down with the card.
void Client::connection_lost(const std::string& reason) {
  no_connection_ = reason;
  refuse(reason);
  if (listeners_[LCMGR_REPORT_LINK_CHANGE] != 0) {
    for (const Usp& port : ports_) {
      const auto message = std::make_shared<Bytes>();
      const std::size_t start = begin_message(*message, Kind::kLink);
      Writer out(*message);
      out.u32(PHY_STATE_DOWN);
      out.u32(SPEED_TYPE_UNKNOWN);
      out.u32(DUPLEX_TYPE_FULL);
      Value<Usp>::put(out, port);
      end_message(*message, start);
      inbox_.push({LCMGR_REPORT_LINK_CHANGE, port, message});
    }
    signal();
  }
  lags_.clear();
  lags_known_ = false;
  lag_ids_.clear();
}

bool Client::get_instance(VornSdkBase*& sdk) {
  if (!has_instance_) return refuse_without_connection();
  if (!refresh()) return false;
  answered_no_ = nullptr;
  sdk = &sdk_;
  return true;
}

bool Client::create_instance() {
  if (has_instance_ && connection_.alive()) return refuse("the line card is in use already");
  if (!connection_.alive()) return refuse_without_connection();
  has_instance_ = true;
  return true;
}

bool Client::delete_instance(const VornSdkBase* sdk) {
  if (!has_instance_) return refuse_without_connection();
  if (sdk != &sdk_) return refuse("the SDK object is not the card's");
  forget_everything();
  return true;
}

// ---- Ports --------------------------------------------------------------------------------------

const Client::PortFacts* Client::facts_of(const Usp& port) {
  if (!connection_.is_open()) {
    refuse_without_connection();
    return nullptr;
  }
  const auto known = facts_.find(key_of(port));
  if (known != facts_.end()) return &known->second;
  Writer request = connection_.begin(Kind::kPort);
  Value<Usp>::put(request, port);
  Reader answer;
  if (!ask(answer)) return nullptr;
  PortFacts facts;
  facts.is_physical = answer.u8() != 0;
  facts.is_lag = answer.u8() != 0;
  facts.is_vlan = answer.u8() != 0;
  facts.has_mp = answer.u8() != 0;
  facts.mp = read<Mp>(answer);
  facts.reason = answer.text();
  if (!understood(answer)) return nullptr;
  if (facts_.size() >= kMostFacts) {
    keep_answer();
    facts_.clear();
  }
  return &facts_.emplace(key_of(port), std::move(facts)).first->second;
}

bool Client::answer(const PortFacts* facts, bool yes) {
  if (!yes) answered_no_ = facts;
  return yes;
}

bool Client::is_physical(const Usp& port) {
  const PortFacts* const facts = facts_of(port);
  return facts != nullptr && answer(facts, facts->is_physical);
}

bool Client::is_lag(const Usp& port) {
  const PortFacts* const facts = facts_of(port);
  return facts != nullptr && answer(facts, facts->is_lag);
}

bool Client::is_vlan(const Usp& port) {
  const PortFacts* const facts = facts_of(port);
  return facts != nullptr && answer(facts, facts->is_vlan);
}

bool Client::usp_to_mp(const Usp& port, Mp& mp) {
  const PortFacts* const facts = facts_of(port);
  if (facts == nullptr || !answer(facts, facts->has_mp)) return false;
  mp = facts->mp;
  return true;
}

bool Client::usp_to_mp_list(const Usp& port, std::list<Mp>& mps) {
  const PortFacts* const facts = facts_of(port);
  if (facts == nullptr) return false;
  if (facts->has_mp) {
    mps.push_back(facts->mp);
    return true;
  }
  Writer request = connection_.begin(Kind::kMembers);
  Value<Usp>::put(request, port);
  Reader answer;
  if (!ask(answer)) return false;
  auto members = read<std::list<Mp>>(answer);
  if (!understood(answer)) return false;
  mps.splice(mps.end(), members);
  return true;
}

bool Client::usp_list_to_mp_list(const std::list<Usp>& ports, std::list<Mp>& mps) {
  for (const Usp& port : ports) {
    const std::size_t before = mps.size();
    if (!usp_to_mp_list(port, mps)) return false;
    if (mps.size() == before) return refuse("a port of the list has no members");
  }
  return true;
}

bool Client::mp_to_usp(const Mp& mp, Usp& port) {
  if (!connection_.is_open()) return refuse_without_connection();
  const std::pair<unsigned, unsigned> key(mp.module(), mp.port());
  const auto known = usps_.find(key);
  if (known != usps_.end()) {
    port = known->second;
    return true;
  }
  Writer request = connection_.begin(Kind::kHardware);
  Value<Mp>::put(request, mp);
  Reader answer;
  if (!ask(answer)) return false;
  const Usp found = read<Usp>(answer);
  if (!understood(answer)) return false;
  if (usps_.size() >= kMostFacts) usps_.clear();
  usps_.emplace(key, found);
  port = found;
  return true;
}

bool Client::mp_list_to_usp_list(const std::list<Mp>& mps, std::list<Usp>& ports) {
  for (const Mp& mp : mps) {
    Usp port(0, 0, 0);
    if (!mp_to_usp(mp, port)) return false;
    ports.push_back(port);
  }
  return true;
}

// ---- LAGs ---------------------------------------------------------------------------------------

// Highest byte first, as in messages; changes as a whole.
std::uint32_t Client::generation() const {
  static_assert(sizeof(std::atomic<std::uint32_t>) == 4);
  const std::uint32_t word =
      static_cast<const std::atomic<std::uint32_t>*>(page_)->load(std::memory_order_acquire);
  return Reader(reinterpret_cast<const std::uint8_t*>(&word), sizeof word).u32();
}

bool Client::refresh() {
  if (!connection_.alive()) return refuse_without_connection();
  if (lags_known_ && page_ != nullptr && generation() == known_generation_) return true;
  connection_.begin(Kind::kLags);
  Reader answer;
  if (!ask(answer)) return false;
  const std::uint32_t generation = answer.u32();
  std::list<LagNode> lags;
  constexpr std::size_t kLeastBytes = 8;
  for (std::size_t left = answer.count(kLeastBytes); left != 0 && answer.good(); --left) {
    lags.emplace_back(answer.u32());
    Value<std::list<Mp>>::get(answer, lags.back().members());
  }
  if (!understood(answer)) return false;
  lags_ = std::move(lags);
  lag_ids_.clear();
  known_generation_ = generation;
  lags_known_ = true;
  return true;
}

bool Client::lag_usp_to_lag_id(const Usp& lag, unsigned& id) {
  if (!refresh()) return false;
  const auto known = lag_ids_.find(key_of(lag));
  if (page_ != nullptr && known != lag_ids_.end()) {
    id = known->second;
    return true;
  }
  Writer request = connection_.begin(Kind::kLagId);
  Value<Usp>::put(request, lag);
  Reader answer;
  if (!ask(answer)) return false;
  const unsigned found = answer.u32();
  if (!understood(answer)) return false;
  lag_ids_[key_of(lag)] = found;
  id = found;
  return true;
}

bool Client::lag_id_to_lag_usp(unsigned id, Usp& lag) {
  connection_.begin(Kind::kLagUsp).u32(id);
  Reader answer;
  if (!ask(answer)) return false;
  const Usp found = read<Usp>(answer);
  if (!understood(answer)) return false;
  lag = found;
  return true;
}

bool Client::change_lags(LagChange change, unsigned id, const Usp& lag,
                         const std::list<Mp>& members) {
  Writer request = connection_.begin(Kind::kLagChange);
  request.u8(static_cast<unsigned>(change));
  request.u32(id);
  Value<Usp>::put(request, lag);
  Value<std::list<Mp>>::put(request, members);
  const bool done = ask_yes_or_no();
  return connection_.is_open() && refresh() && done;
}

bool Client::add_lag_mapping(const Usp& lag, unsigned id) {
  return change_lags(LagChange::kAddMapping, id, lag, {});
}
bool Client::delete_lag_mapping(const Usp& lag, unsigned id) {
  return change_lags(LagChange::kDeleteMapping, id, lag, {});
}

// A list of the caller's own is changed here.

bool Client::add_lag_to_list(unsigned id, std::list<LagNode>& list) {
  if (&list == &lags_) return change_lags(LagChange::kAddToList, id, Usp(0, 0, 0), {});
  if (find_lag(list, id) != list.end()) {
    return refuse("LAG id " + std::to_string(id) + " is in the list");
  }
  list.emplace_back(id);
  return true;
}

bool Client::delete_lag_from_list(unsigned id, std::list<LagNode>& list) {
  if (&list == &lags_) return change_lags(LagChange::kDeleteFromList, id, Usp(0, 0, 0), {});
  const auto node = find_lag(list, id);
  if (node == list.end()) return refuse(not_in_list(id));
  list.erase(node);
  return true;
}

bool Client::is_lag_exist(unsigned id, const std::list<LagNode>& list) {
  return std::any_of(list.begin(), list.end(),
                     [id](const LagNode& node) { return node.id() == id; });
}

bool Client::add_lag_member(unsigned id, std::list<LagNode>& list, const std::list<Mp>& members) {
  if (&list == &lags_) return change_lags(LagChange::kAddMembers, id, Usp(0, 0, 0), members);
  const auto node = find_lag(list, id);
  if (node == list.end()) return refuse(not_in_list(id));
  std::list<Mp>& present = node->members();
  for (const Mp& mp : members) {
    if (std::find(present.begin(), present.end(), mp) == present.end()) present.push_back(mp);
  }
  return true;
}

bool Client::delete_lag_member(unsigned id, std::list<LagNode>& list,
                               const std::list<Mp>& members) {
  if (&list == &lags_) return change_lags(LagChange::kDeleteMembers, id, Usp(0, 0, 0), members);
  const auto node = find_lag(list, id);
  if (node == list.end()) return refuse(not_in_list(id));
  node->members().remove_if(
      [&](const Mp& mp) { return std::find(members.begin(), members.end(), mp) != members.end(); });
  return true;
}

bool Client::get_lag_member(unsigned id, std::list<Mp>& members) {
  if (!refresh()) return false;
  const auto node = find_lag(lags_, id);
  if (node == lags_.end()) return refuse(not_in_list(id));
  members.insert(members.end(), node->members().begin(), node->members().end());
  return true;
}

// ---- Events -------------------------------------------------------------------------------------

bool Client::add(lcmgr_report_event_t kind, Form form, void* callback, void* user_data) {
  if (callback == nullptr) return refuse("the callback is null");
  for (const Registration& other : registrations_) {
    if (other.kind == kind && other.form == form && other.callback == callback &&
        other.user_data == user_data) {
      return refuse("the callback is registered already");
    }
  }
  if (listeners_[kind] == 0) {
    Writer request = connection_.begin(Kind::kListen);
    request.u8(kind);
    request.u8(1);
    if (!ask_yes_or_no()) return false;
  }
  registrations_.push_back({kind, form, callback, user_data, ++registrations_made_});
  ++listeners_[kind];
  return true;
}

bool Client::remove(lcmgr_report_event_t kind, void* callback, void* user_data) {
  const auto gone = std::remove_if(
      registrations_.begin(), registrations_.end(), [&](const Registration& registration) {
        return registration.kind == kind && registration.callback == callback &&
               registration.user_data == user_data;
      });
  if (gone == registrations_.end()) return refuse("no such callback is registered");
  listeners_[kind] -= static_cast<unsigned>(registrations_.end() - gone);
  registrations_.erase(gone, registrations_.end());
  if (listeners_[kind] != 0) return true;
  Writer request = connection_.begin(Kind::kListen);
  request.u8(kind);
  request.u8(0);
  return ask_yes_or_no();
}

void Client::take_event(Kind kind, const std::uint8_t* message, std::size_t bytes) {
  Reader in(message + kHeaderBytes, bytes - kHeaderBytes);
  if (kind == Kind::kLost) {
    for (std::uint64_t& lost : lost_there_) lost = in.u64();
    return;
  }
  Event event{LCMGR_REPORT_MAC_UPDATE, Usp(0, 0, 0), nullptr};
  if (kind == Kind::kPacket) event.kind = LCMGR_REPORT_RX_PACKET;
  if (kind == Kind::kLink) {
    event.kind = LCMGR_REPORT_LINK_CHANGE;
    for (unsigned word = 0; word < 3; ++word) in.u32();
    event.port = read<Usp>(in);
  }
  event.message = std::make_shared<const Bytes>(message, message + bytes);
  inbox_.push(std::move(event));
  if (!in_dispatch_) signal();
}

void Client::signal() { eventfd_write(wakeup_.get(), 1); }

std::uint64_t Client::lost(lcmgr_report_event_t kind) const {
  return inbox_.lost(kind) + lost_there_[kind];
}

std::size_t Client::dispatch() {
  if (in_dispatch_) return 0;
  struct Guard {
    Client& client;
    explicit Guard(Client& owner) : client(owner) { client.in_dispatch_ = true; }
    ~Guard() {
      client.in_dispatch_ = false;
      if (!client.inbox_.empty()) client.signal();
    }
  } guard(*this);
  eventfd_t signals = 0;
  eventfd_read(wakeup_.get(), &signals);
  if (connection_.is_open()) connection_.take_events();
  std::size_t delivered = 0;
  // Those that come meanwhile have their turn in the next call.
  for (std::size_t left = inbox_.size(); left != 0 && !inbox_.empty(); --left) {
    const Event event = inbox_.front();
    inbox_.pop();
    ++delivered;
    call_all(event);
  }
  return delivered;
}

// Calls every function of the event's kind that is registered when its turn comes, but none that
// was registered by one of them for this very event.
void Client::call_all(const Event& event) {
  const std::uint64_t last = registrations_made_;
  std::uint64_t done = 0;
  for (;;) {
    const auto next =
        std::find_if(registrations_.begin(), registrations_.end(), [&](const Registration& r) {
          return r.kind == event.kind && r.number > done && r.number <= last;
        });
    if (next == registrations_.end()) return;
    done = next->number;
    call(Registration(*next), event);
  }
}

void Client::call(const Registration& registration, const Event& event) const {
  Reader in(event.message->data() + kHeaderBytes, event.message->size() - kHeaderBytes);
  const bool c = registration.form == Form::c;
  void* const callback = registration.callback;
  void* const user_data = registration.user_data;
  switch (event.kind) {
    case LCMGR_REPORT_RX_PACKET: {
      const unsigned reason = in.u32();
      const Usp port = read<Usp>(in);
      const unsigned vlan = in.u32();
      const unsigned priority = in.u32();
      const std::string_view frame = in.text();
      if (!in.done()) return;
      const auto* const data = reinterpret_cast<const unsigned char*>(frame.data());
      const auto length = static_cast<unsigned>(frame.size());
      if (c) {
        ctype_rx_packet_s packet = {length, reason, record_of(port), vlan, priority, data};
        reinterpret_cast<void (*)(ctype_rx_packet_s*, void*)>(callback)(&packet, user_data);
      } else {
        RxPacket packet = {length, reason, port, vlan, priority, data};
        reinterpret_cast<void (*)(RxPacket*, void*)>(callback)(&packet, user_data);
      }
      return;
    }
    case LCMGR_REPORT_LINK_CHANGE: {
      LinkStatus status{};
      Value<phy_state_t>::get(in, status.state);
      Value<speed_type_t>::get(in, status.speed);
      Value<duplex_type_t>::get(in, status.duplex);
      Usp port = read<Usp>(in);
      if (!in.done()) return;
      if (c) {
        ctype_link_status_s record = {status.state, status.speed, status.duplex};
        usp_s usp = record_of(port);
        reinterpret_cast<void (*)(ctype_link_status_s*, usp_s*)>(callback)(&record, &usp);
      } else {
        reinterpret_cast<void (*)(LinkStatus*, Usp*)>(callback)(&status, &port);
      }
      return;
    }
    case LCMGR_REPORT_MAC_UPDATE: {
      L2Addr entry{{}, 0, Usp(0, 0, 0), 0};
      in.raw(entry.mac, sizeof entry.mac);
      entry.vlan = in.u32();
      entry.port = read<Usp>(in);
      entry.flags = in.u32();
      const int what = read<int>(in);
      if (!in.done()) return;
      if (c) {
        ctype_l2_addr_s record = {{}, entry.vlan, record_of(entry.port), entry.flags};
        std::copy(std::begin(entry.mac), std::end(entry.mac), record.mac);
        reinterpret_cast<void (*)(ctype_l2_addr_s*, int, void*)>(callback)(&record, what,
                                                                           user_data);
      } else {
        reinterpret_cast<void (*)(L2Addr*, int, void*)>(callback)(&entry, what, user_data);
      }
      return;
    }
  }
}

// ---- What comes in parts ------------------------------------------------------------------------

// The whole table first, since the visitor may call anything that reads.
bool Client::walk(void* arg) {
  const auto* const request = static_cast<const mac_traverse_s*>(arg);
  if (request == nullptr || request->visit == nullptr) {
    return refuse("the walk has no function to call");
  }
  if (!connection_.is_open()) return refuse_without_connection();
  std::vector<ctype_l2_addr_s> entries;
  connection_.begin(Kind::kWalk);
  Kind kind{};
  Reader in;
  bool going = connection_.exchange(kind, in);
  while (going && kind == Kind::kPart) {
    constexpr std::size_t kEntryBytes = 26;
    for (std::size_t left = in.count(kEntryBytes); left != 0; --left) {
      ctype_l2_addr_s entry{};
      in.raw(entry.mac, sizeof entry.mac);
      entry.vlan = in.u32();
      entry.port = record_of(read<Usp>(in));
      entry.flags = in.u32();
      entries.push_back(entry);
    }
    if (!understood(in)) return false;
    going = connection_.more(kind, in);
  }
  if (!going) return false;
  const auto status = static_cast<Status>(in.u8());
  std::string reason;
  if (status != Status::kDone) reason = in.text();
  if (!understood(in) || !settle(status, reason)) return false;
  const mac_traverse_s visitor = *request;
  for (const ctype_l2_addr_s& entry : entries) {
    if (visitor.visit(&entry, visitor.user_data) == 0) break;
  }
  return true;
}

bool Client::command(const std::vector<std::string>& words,
                     const std::function<void(std::string_view)>& part) {
  if (!connection_.is_open()) return refuse_without_connection();
  Writer request = connection_.begin(Kind::kCommand);
  request.u32(static_cast<std::uint32_t>(words.size()));
  for (const std::string& word : words) request.text(word);
  if (!connection_.fits()) return refuse_too_long();
  Kind kind{};
  Reader in;
  bool going = connection_.exchange(kind, in);
  while (going && kind == Kind::kPart) {
    const std::string_view text = in.text();
    if (!understood(in)) return false;
    part(text);
    going = connection_.more(kind, in);
  }
  if (!going) return false;
  const auto status = static_cast<Status>(in.u8());
  std::string reason;
  if (status != Status::kDone) reason = in.text();
  return understood(in) && settle(status, reason);
}

}  // namespace vorn::remote
