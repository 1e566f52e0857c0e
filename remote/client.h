// SPDX-License-Identifier: Apache-2.0
//
// A host whose card is in another process: everything that platform/ asks of a host, carried over
// one connection. platform.cpp makes it the process's host.
//
// The mapping of physical ports never changes while the card lives, so each address is asked for
// once. The LAG list is a copy: a page of memory, shared by the card's process and all clients,
// counts its changes, and the copy is fetched anew before anybody looks at one that has changed.
//
// Events that come wait here until dispatch() hands them to the registered functions, never while
// a call is under way.
#ifndef REMOTE_CLIENT_H_
#define REMOTE_CLIENT_H_

#include <array>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "operations/forwarding_sdk.h"
#include "operations/host.h"
#include "operations/operations.h"
#include "remote/calls.h"
#include "remote/connection.h"
#include "remote/event_buffer.h"
#include "vornlcapi/types.h"

namespace vorn::remote {

class Client;

// The form of the records that a callback takes.
enum class Form : std::uint8_t { cpp, c };

// The SDK of a card in another process.
class RemoteSdk final : public operations::ForwardingSdk<RemoteSdk> {
 public:
  explicit RemoteSdk(Client& client) : client_(client) {}

  template <unsigned slot, class... Arguments>
  bool carry(Arguments&... arguments);

 private:
  template <unsigned slot, class... Parameters, unsigned... index, class... Arguments>
  bool call(bool (VornSdkBase::*)(Parameters...), std::integer_sequence<unsigned, index...>,
            Arguments&... arguments);
  template <class Callback>
  bool add(lcmgr_report_event_t kind, Form form, Callback* callback, void* user_data);

  Client& client_;
};

class Client final : public operations::Host {
 public:
  // `lags` is the list that the client keeps equal to the card's.
  explicit Client(std::list<LagNode>& lags);
  ~Client();
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  // ---- Before init() ----------------------------------------------------------------------------

  // The socket of the card's process.
  void use(const std::string& path) { path_ = path; }
  const std::string& path() const { return path_; }
  // How long the card's process has for each answer.
  void set_timeout_ms(int timeout_ms) { timeout_ms_ = timeout_ms; }

  // ---- vorn_port_mapping.h ----------------------------------------------------------------------

  // Connects, unless it is connected; a connection that was lost is made anew, without the
  // registrations of the last one.
  bool init(int& out) override;
  // The same over a socket that is connected already.
  bool init_with(Descriptor socket, int& out);
  bool is_physical(const Usp& port) override;
  bool is_lag(const Usp& port) override;
  bool is_vlan(const Usp& port) override;
  bool usp_to_mp(const Usp& port, Mp& mp) override;
  bool usp_to_mp_list(const Usp& port, std::list<Mp>& mps) override;
  bool usp_list_to_mp_list(const std::list<Usp>& ports, std::list<Mp>& mps) override;
  bool mp_to_usp(const Mp& mp, Usp& port) override;
  bool mp_list_to_usp_list(const std::list<Mp>& mps, std::list<Usp>& ports) override;

  // ---- vorn_sdk.h -------------------------------------------------------------------------------

  bool get_instance(VornSdkBase*& sdk) override;
  bool create_instance() override;
  // Ends the connection. The card stays as it is.
  bool delete_instance(const VornSdkBase* sdk) override;
  bool lag_usp_to_lag_id(const Usp& lag, unsigned& id) override;
  bool lag_id_to_lag_usp(unsigned id, Usp& lag) override;
  bool add_lag_mapping(const Usp& lag, unsigned id) override;
  bool delete_lag_mapping(const Usp& lag, unsigned id) override;

  // ---- vorn_lag_list.h --------------------------------------------------------------------------

  bool add_lag_to_list(unsigned id, std::list<LagNode>& list) override;
  bool delete_lag_from_list(unsigned id, std::list<LagNode>& list) override;
  bool is_lag_exist(unsigned id, const std::list<LagNode>& list) override;
  bool add_lag_member(unsigned id, std::list<LagNode>& list, const std::list<Mp>& members) override;
  bool delete_lag_member(unsigned id, std::list<LagNode>& list,
                         const std::list<Mp>& members) override;
  bool get_lag_member(unsigned id, std::list<Mp>& members) override;

  // ---- Events -----------------------------------------------------------------------------------

  bool add(lcmgr_report_event_t kind, Form form, void* callback, void* user_data);
  bool remove(lcmgr_report_event_t kind, void* callback, void* user_data);

  // Readable while there is something for dispatch() to do; the same as long as the client lives.
  int descriptor() const { return watch_.get(); }
  // Calls the registered functions for the events that have come, and returns how many events
  // those were. From within a callback it does nothing.
  std::size_t dispatch();
  // Events of a kind that were lost, here or in the card's process, because nobody took them.
  std::uint64_t lost(lcmgr_report_event_t kind) const;

  // ---- Everything else --------------------------------------------------------------------------

  bool connected() const { return connection_.is_open(); }
  bool read_only() const { return read_only_; }
  // The physical ports of the card.
  const std::vector<Usp>& ports() const { return ports_; }
  // Why something was refused last, here or at the card; refusals() tells a new reason from an
  // old one.
  const std::string& last_refusal();
  std::uint64_t refusals();

  bool walk(void* arg);
  // Has the card's process run a command. `part` gets each piece of what it answers; false, and the
  // reason is last_refusal(), when it is refused.
  bool command(const std::vector<std::string>& words,
               const std::function<void(std::string_view)>& part);

 private:
  friend class RemoteSdk;

  struct PortFacts {
    bool is_physical = false;
    bool is_lag = false;
    bool is_vlan = false;
    bool has_mp = false;
    Mp mp{0, 0};
    std::string reason;  // why it is not what it is not
  };
  struct Registration {
    lcmgr_report_event_t kind;
    Form form;
    void* callback;
    void* user_data;
    std::uint64_t number;
  };
  using PortKey = std::tuple<unsigned, unsigned, unsigned>;

  bool greet(int& out);
  void forget_everything();
  bool refuse(std::string reason);
  bool refuse_without_connection();
  bool refuse_too_long();
  // Sends the request that was begun and waits for the answer. Reads its status: false, and the
  // reason kept, when it is refused or the connection ends; an exception of the card's comes here
  // as one. `answer` holds what was asked for.
  bool ask(Reader& answer);
  // The same, but leaves it to the caller to end with settle() once he has read `answer`.
  bool ask(Reader& answer, Status& status, std::string& reason);
  bool settle(Status status, std::string reason);
  bool understood(const Reader& answer);
  // Asks for something that has no more to it than yes or no.
  bool ask_yes_or_no();
  bool change_lags(LagChange change, unsigned id, const Usp& lag, const std::list<Mp>& members);

  const PortFacts* facts_of(const Usp& port);
  // Answers a question about a port. A no is no refusal yet: the call may go on behind it.
  bool answer(const PortFacts* facts, bool yes);
  void keep_answer();
  // Whether there is a card, with the LAG list as it is now.
  bool refresh();
  std::uint32_t generation() const;
  void take_page();

  void take_event(Kind kind, const std::uint8_t* message, std::size_t bytes);
  void connection_lost(const std::string& reason);
  void signal();
  void call_all(const Event& event);
  void call(const Registration& registration, const Event& event) const;

  std::string path_;
  int timeout_ms_ = 10000;
  std::list<LagNode>& lags_;
  RemoteSdk sdk_;
  bool has_instance_ = false;
  Connection connection_;

  bool read_only_ = false;
  int init_value_ = 0;
  std::vector<Usp> ports_;
  std::map<PortKey, PortFacts> facts_;
  std::map<std::pair<unsigned, unsigned>, Usp> usps_;  // by hardware port

  const void* page_ = nullptr;  // of which the first word counts the changes of LAGs
  bool lags_known_ = false;
  std::uint32_t known_generation_ = 0;
  std::map<PortKey, unsigned> lag_ids_;  // that were asked for since

  std::vector<Registration> registrations_;
  std::uint64_t registrations_made_ = 0;
  std::array<unsigned, kEventKinds> listeners_{};
  EventBuffer inbox_;
  std::array<std::uint64_t, kEventKinds> lost_there_{};
  bool in_dispatch_ = false;
  Descriptor watch_;   // epoll: the socket and wakeup_
  Descriptor wakeup_;  // eventfd: events wait in inbox_

  static constexpr const char* kNotConnected =
      "there is no connection to the card: vorn_lcmgr_api_init() makes it";
  std::string no_connection_ = kNotConnected;  // why there is none
  std::string reason_;
  std::uint64_t refusals_ = 0;
  const PortFacts* answered_no_ = nullptr;  // the last question, where nothing came after it
};

template <unsigned slot, class... Arguments>
bool RemoteSdk::carry(Arguments&... arguments) {
  constexpr auto& operation = operations::kOperation<slot>;
  if constexpr (operation.effect != operations::Effect::kCallsBack) {
    return call<slot>(operation.kFunction,
                      std::make_integer_sequence<unsigned, sizeof...(Arguments)>(), arguments...);
  } else if constexpr (slot == 142) {
    return client_.remove(arguments...);
  } else if constexpr (slot == 145) {
    return client_.walk(arguments...);
  } else {
    // The six kinds of callback: those of MAC updates, links and packets, the C form behind each.
    constexpr lcmgr_report_event_t kKinds[] = {LCMGR_REPORT_MAC_UPDATE, LCMGR_REPORT_LINK_CHANGE,
                                               LCMGR_REPORT_RX_PACKET};
    constexpr lcmgr_report_event_t kind = kKinds[(slot - 136) / 2];
    return add(kind, slot % 2 == 0 ? Form::cpp : Form::c, arguments...);
  }
}

template <class Callback>
bool RemoteSdk::add(lcmgr_report_event_t kind, Form form, Callback* callback, void* user_data) {
  return client_.add(kind, form, reinterpret_cast<void*>(callback), user_data);
}

template <unsigned slot, class... Parameters, unsigned... index, class... Arguments>
bool RemoteSdk::call(bool (VornSdkBase::*)(Parameters...),
                     std::integer_sequence<unsigned, index...>, Arguments&... arguments) {
  [[maybe_unused]] Writer out = client_.connection_.begin(Kind::kCall);
  out.u8(slot);
  (CarriedAt<slot, index, Parameters>::put(out, arguments), ...);
  Reader in;
  Status status{};
  std::string reason;
  if (!client_.ask(in, status, reason)) return false;
  std::tuple<typename CarriedAt<slot, index, Parameters>::Output...> outputs;
  (std::get<index>(outputs).get(in), ...);
  if (!client_.understood(in)) return false;
  (std::get<index>(outputs).commit(arguments), ...);
  return client_.settle(status, std::move(reason));
}

}  // namespace vorn::remote

#endif  // REMOTE_CLIENT_H_
