// SPDX-License-Identifier: Apache-2.0

#include "service/session.h"

#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <exception>
#include <new>
#include <utility>
#include <vector>

#include "operations/operations.h"
#include "remote/calls.h"
#include "service/server.h"
#include "vorn_lag_list.h"
#include "vorn_port_mapping.h"
#include "vorn_sdk.h"

namespace vorn::service {

using namespace remote;
using operations::Effect;
using operations::kOperation;

namespace {

constexpr std::size_t kReadBytes = 65536;
// Events are put behind what waits in the socket's buffer only while that is less.
constexpr std::size_t kEventsAheadBytes = 65536;
// Of answers that nobody takes; then no further request is read.
constexpr std::size_t kMostAnswerBytes = std::size_t{1} << 20;
constexpr std::size_t kPartBytes = 32768;

template <class T>
T read(Reader& in) {
  T value = Value<T>::make();
  Value<T>::get(in, value);
  return value;
}

VornSdkBase* find_sdk() {
  VornSdkBase* sdk = nullptr;
  return vornsdk_get_sdk_instance(sdk) ? sdk : nullptr;
}

}  // namespace

Session::Session(Server& server, Descriptor socket, bool read_only)
    : server_(server),
      socket_(std::move(socket)),
      read_only_(read_only),
      events_(server.options().room) {}

Session::~Session() {
  for (unsigned kind = 0; kind < kEventKinds; ++kind) {
    if (listens_[kind]) server_.listen_for(static_cast<lcmgr_report_event_t>(kind), false);
  }
}

void Session::end(const std::string& why) {
  if (ended_) return;
  ended_ = true;
  if (!why.empty()) server_.options().log("a client is dropped: " + why);
}

// ---- In -----------------------------------------------------------------------------------------

void Session::receive() {
  if (ended_) return;
  if (read_ == filled_) {
    read_ = 0;
    filled_ = 0;
  } else if (read_ != 0) {
    std::copy(input_.begin() + static_cast<std::ptrdiff_t>(read_),
              input_.begin() + static_cast<std::ptrdiff_t>(filled_), input_.begin());
    filled_ -= read_;
    read_ = 0;
  }
  if (input_.size() - filled_ < kReadBytes) input_.resize(filled_ + kReadBytes);
  const ssize_t count =
      recv(socket_.get(), input_.data() + filled_, input_.size() - filled_, MSG_DONTWAIT);
  if (count > 0) {
    filled_ += static_cast<std::size_t>(count);
    note_wait();
  } else if (count == 0) {
    end(filled_ == read_ ? "" : "it left in the middle of a message");
  } else if (errno != EAGAIN && errno != EWOULDBLOCK && errno != EINTR) {
    end(std::strerror(errno));
  }
}

// The client takes no answers.
bool Session::is_behind() const {
  return answers_end_ - std::min(answers_end_, sent_) >= kMostAnswerBytes;
}

bool Session::has_request() const {
  if (ended_ || is_behind() || filled_ - read_ < 4) return false;
  const std::size_t count = Reader(input_.data() + read_, 4).u32();
  // One that is too long is served, too: with the end of the connection.
  return count == 0 || count > kMostMessageBytes || filled_ - read_ >= 4 + count;
}

bool Session::wants_to_receive() const { return !has_request() && !is_behind(); }

void Session::note_wait() {
  const bool waits = !greeted_ || filled_ != read_ || answers_end_ > sent_;
  if (waits && !waits_) waits_since_ = Clock::now();
  waits_ = waits;
}

bool Session::is_late(Clock::time_point now, std::chrono::milliseconds patience) const {
  return waits_ && now - waits_since_ >= patience;
}

// ---- Requests -----------------------------------------------------------------------------------

void Session::serve() {
  const std::size_t count = Reader(input_.data() + read_, 4).u32();
  if (count == 0 || count > kMostMessageBytes) {
    end("it sent a message of " + std::to_string(count) + " bytes");
    return;
  }
  const auto kind = static_cast<Kind>(input_[read_ + 4]);
  Reader in(input_.data() + read_ + kHeaderBytes, count - 1);
  read_ += 4 + count;
  // Whatever is amiss with one client ends that client alone.
  try {
    if (!greeted_) {
      if (kind == Kind::kHello) return greet(in);
      end("it did not begin with a greeting");
      return;
    }
    const std::size_t before = output_.size();
    if (!answer(kind, in)) {
      output_.resize(before);
      end("it sent a malformed request of kind " + std::to_string(static_cast<unsigned>(kind)));
      return;
    }
    answers_end_ = output_.size();
  } catch (const std::bad_alloc&) {
    end("no memory for its request");
  } catch (const std::exception& exception) {
    end(std::string("its request threw: ") + exception.what());
  } catch (...) {
    end("its request threw");
  }
  note_wait();
}

void Session::greet(Reader& in) {
  const std::uint32_t magic = in.u32();
  const std::uint32_t version = in.u32();
  const std::uint64_t hash = in.u64();
  if (!in.good() || magic != kMagic) {
    end("its greeting is none");
    return;
  }
  const std::size_t start = begin_message(output_, Kind::kAnswer);
  Writer out(output_);
  out.u32(kMagic);
  out.u32(kVersion);
  out.u64(table_hash());
  int descriptor = -1;
  if (version != kVersion || hash != table_hash()) {
    refuse(out, "the card's process has " + version_text(kVersion, table_hash()) +
                    "; this program has " + version_text(version, hash));
  } else {
    greeted_ = true;
    out.u8(static_cast<unsigned>(Status::kDone));
    out.u8(read_only_);
    Value<int>::put(out, server_.options().init_value);
    const std::vector<Usp>& ports = server_.options().ports;
    Value<std::list<Usp>>::put(out, {ports.begin(), ports.end()});
    descriptor = server_.page_memory_.get();
  }
  end_message(output_, start);
  answers_end_ = output_.size();
  if (descriptor < 0) {
    send();
    if (!greeted_) end("");
    return;
  }
  // The page goes along with the first byte.
  iovec bytes = {output_.data(), output_.size()};
  alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))] = {};
  msghdr header{};
  header.msg_iov = &bytes;
  header.msg_iovlen = 1;
  header.msg_control = control;
  header.msg_controllen = sizeof control;
  cmsghdr* const part = CMSG_FIRSTHDR(&header);
  part->cmsg_level = SOL_SOCKET;
  part->cmsg_type = SCM_RIGHTS;
  part->cmsg_len = CMSG_LEN(sizeof descriptor);
  std::memcpy(CMSG_DATA(part), &descriptor, sizeof descriptor);
  const ssize_t count = sendmsg(socket_.get(), &header, MSG_NOSIGNAL | MSG_DONTWAIT);
  if (count < 0) {
    end(std::strerror(errno));
    return;
  }
  sent_ += static_cast<std::size_t>(count);
  note_wait();
}

template <class Call>
void Session::run(Writer& out, const Call& call) {
  const std::uint64_t before = server_.options().refusals();
  Status status = Status::kRefused;
  std::string reason;
  try {
    if (call()) {
      status = Status::kDone;
    } else if (server_.options().refusals() != before) {
      reason = server_.options().last_refusal();
    }
  } catch (const std::bad_alloc&) {
    status = Status::kNoMemory;
  } catch (const std::exception& exception) {
    status = Status::kThrew;
    reason = exception.what();
  } catch (...) {
    status = Status::kThrew;
    reason = "an exception without a text";
  }
  out.u8(static_cast<unsigned>(status));
  if (status != Status::kDone) out.text(reason);
}

void Session::refuse(Writer& out, const std::string& why) {
  out.u8(static_cast<unsigned>(Status::kNotTried));
  out.text(why);
}

bool Session::may_change(Writer& out) {
  if (!read_only_) return true;
  refuse(out, "the connection is read-only");
  return false;
}

bool Session::answer(Kind kind, Reader& in) {
  if (kind == Kind::kWalk) return walk(in);
  if (kind == Kind::kCommand) return command(in);
  const std::size_t start = begin_message(output_, Kind::kAnswer);
  Writer out(output_);
  if (!answer(kind, in, out)) return false;
  end_message(output_, start);
  return true;
}

bool Session::answer(Kind kind, Reader& in, Writer& out) {
  switch (kind) {
    case Kind::kCall:
      return call(in, out);
    case Kind::kPort:
      return describe_port(in, out);
    case Kind::kHardware: {
      const Mp mp = read<Mp>(in);
      if (!in.done()) return false;
      Usp port(0, 0, 0);
      run(out, [&] { return vorn_mp_to_usp(mp, port); });
      Value<Usp>::put(out, port);
      return true;
    }
    case Kind::kMembers: {
      const Usp port = read<Usp>(in);
      if (!in.done()) return false;
      std::list<Mp> members;
      run(out, [&] { return vorn_usp_to_mp_list(port, members); });
      Value<std::list<Mp>>::put(out, members);
      return true;
    }
    case Kind::kLags:
      if (!in.done()) return false;
      run(out, [] { return find_sdk() != nullptr; });
      out.u32(server_.generation_);
      out.u32(static_cast<std::uint32_t>(lag_list.size()));
      for (const LagNode& lag : lag_list) {
        out.u32(lag.id());
        Value<std::list<Mp>>::put(out, lag.members());
      }
      return true;
    case Kind::kLagId: {
      const Usp lag = read<Usp>(in);
      if (!in.done()) return false;
      unsigned id = 0;
      run(out, [&] { return vornsdk_lag_usp_to_lag_id(lag, id); });
      out.u32(id);
      return true;
    }
    case Kind::kLagUsp: {
      const unsigned id = in.u32();
      if (!in.done()) return false;
      Usp lag(0, 0, 0);
      run(out, [&] { return vornsdk_lag_id_to_lag_usp(id, lag); });
      Value<Usp>::put(out, lag);
      return true;
    }
    case Kind::kLagChange:
      return change_lags(in, out);
    case Kind::kListen:
      return listen(in, out);
    default:
      return false;
  }
}

bool Session::call(Reader& in, Writer& out) {
  // Of each slot; the row of one that cannot be carried is empty.
  struct Row {
    bool (*carry_out)(Session&, VornSdkBase&, Reader&, Writer&) = nullptr;
    bool changes = false;
  };
  static const std::array<Row, operations::kSlots> kRows = [] {
    std::array<Row, operations::kSlots> rows{};
    operations::for_each_operation([&rows](auto slot) {
      constexpr auto& operation = kOperation<slot()>;
      if constexpr (operation.effect != Effect::kCallsBack) {
        rows[slot()].changes = operation.effect == Effect::kChanges;
        rows[slot()].carry_out = [](Session& session, VornSdkBase& sdk, Reader& from, Writer& to) {
          return remote::carry_out<decltype(slot)::value>(
              sdk, from, to, [&](const auto& operation_call) { session.run(to, operation_call); });
        };
      }
    });
    return rows;
  }();
  const unsigned slot = in.u8();
  if (!in.good() || slot >= kRows.size() || kRows[slot].carry_out == nullptr) return false;
  if (kRows[slot].changes && !may_change(out)) return true;
  VornSdkBase* const sdk = find_sdk();
  if (sdk == nullptr) {
    refuse(out, server_.options().last_refusal());
    return true;
  }
  return kRows[slot].carry_out(*this, *sdk, in, out);
}

bool Session::describe_port(Reader& in, Writer& out) {
  const Usp port = read<Usp>(in);
  if (!in.done()) return false;
  std::uint64_t before = server_.options().refusals();
  std::string reason;
  const auto note = [&](bool yes) {
    if (!yes && server_.options().refusals() != before) {
      before = server_.options().refusals();
      reason = server_.options().last_refusal();
    }
    out.u8(yes);
  };
  Mp mp(0, 0);
  out.u8(static_cast<unsigned>(Status::kDone));
  note(is_port_physical(port));
  note(is_port_logical_lag(port));
  note(is_port_logical_vlan(port));
  note(vorn_usp_to_mp(port, mp));
  Value<Mp>::put(out, mp);
  out.text(reason);
  return true;
}

bool Session::change_lags(Reader& in, Writer& out) {
  const auto change = static_cast<LagChange>(in.u8());
  const unsigned id = in.u32();
  const Usp lag = read<Usp>(in);
  auto members = read<std::list<Mp>>(in);
  if (!in.done() || change > LagChange::kDeleteMapping) return false;
  if (!may_change(out)) return true;
  run(out, [&] {
    switch (change) {
      case LagChange::kAddToList:
        return add_lag_to_list(id, lag_list);
      case LagChange::kDeleteFromList:
        return delete_lag_from_list(id, lag_list);
      case LagChange::kAddMembers:
        return add_lag_member(id, lag_list, members);
      case LagChange::kDeleteMembers:
        return delete_lag_member(id, lag_list, members);
      case LagChange::kAddMapping:
        return vornsdk_add_lag_mapping(lag, id);
      case LagChange::kDeleteMapping:
        return vornsdk_delete_lag_mapping(lag, id);
    }
    return false;
  });
  server_.lags_changed();
  return true;
}

// ---- Events -------------------------------------------------------------------------------------

bool Session::listen(Reader& in, Writer& out) {
  const unsigned kind = in.u8();
  const bool on = in.u8() != 0;
  if (!in.done() || kind >= kEventKinds) return false;
  run(out, [&] {
    if (on == listens_[kind]) return true;
    if (!server_.listen_for(static_cast<lcmgr_report_event_t>(kind), on)) return false;
    listens_[kind] = on;
    return true;
  });
  return true;
}

void Session::tell(const Event& event) {
  if (ended_ || !listens_[event.kind]) return;
  try {
    events_.push(event);
  } catch (const std::bad_alloc&) {
    end("no memory for its events");
  }
}

void Session::take_events() {
  while (!events_.empty() && output_.size() - sent_ < kEventsAheadBytes) {
    const Bytes& message = *events_.front().message;
    output_.insert(output_.end(), message.begin(), message.end());
    events_.pop();
  }
  if (!events_.empty()) return;
  std::array<std::uint64_t, kEventKinds> lost{};
  for (unsigned kind = 0; kind < kEventKinds; ++kind) {
    lost[kind] = events_.lost(static_cast<lcmgr_report_event_t>(kind));
  }
  if (lost == lost_told_) return;
  lost_told_ = lost;
  const std::size_t start = begin_message(output_, Kind::kLost);
  Writer out(output_);
  for (const std::uint64_t count : lost) out.u64(count);
  end_message(output_, start);
  server_.options().log("a client did not take its events: lost " + std::to_string(lost[0]) + ", " +
                        std::to_string(lost[1]) + ", " + std::to_string(lost[2]));
}

// ---- Answers in parts ---------------------------------------------------------------------------

void Session::end_answer(const Bytes& outcome) {
  const std::size_t start = begin_message(output_, Kind::kAnswer);
  Writer(output_).raw(outcome.data(), outcome.size());
  end_message(output_, start);
}

bool Session::walk(Reader& in) {
  if (!in.done()) return false;
  Bytes part;
  unsigned entries = 0;
  const auto end_part = [&] {
    if (entries == 0) return;
    const std::size_t start = begin_message(output_, Kind::kPart);
    Writer out(output_);
    out.u32(entries);
    out.raw(part.data(), part.size());
    end_message(output_, start);
    part.clear();
    entries = 0;
  };
  struct Walk {
    Bytes& part;
    unsigned& entries;
    const std::function<void()> end_part;
  } walk_state{part, entries, end_part};
  mac_traverse_s request{};
  request.user_data = &walk_state;
  request.visit = [](const ctype_l2_addr_s* entry, void* user_data) {
    Walk& state = *static_cast<Walk*>(user_data);
    Writer out(state.part);
    out.raw(entry->mac, sizeof entry->mac);
    out.u32(entry->vlan);
    for (const unsigned word : {entry->port.unit, entry->port.slot, entry->port.port}) {
      out.u32(word);
    }
    out.u32(entry->flags);
    ++state.entries;
    if (state.part.size() >= kPartBytes) state.end_part();
    return 1;
  };
  Bytes last;
  Writer outcome(last);
  run(outcome, [&] {
    VornSdkBase* const sdk = find_sdk();
    return sdk != nullptr && sdk->traverse_mac_table(&request);
  });
  end_part();
  end_answer(last);
  return true;
}

bool Session::command(Reader& in) {
  constexpr std::size_t kLeastBytes = 4;
  std::vector<std::string> words;
  for (std::size_t left = in.count(kLeastBytes); left != 0; --left) words.emplace_back(in.text());
  if (!in.done() || words.empty()) return false;
  Bytes last;
  Writer outcome(last);
  std::string why;
  const auto hand_over = [this](std::string_view text) {
    while (!text.empty()) {
      const std::string_view piece = text.substr(0, kPartBytes);
      text.remove_prefix(piece.size());
      const std::size_t start = begin_message(output_, Kind::kPart);
      Writer(output_).text(piece);
      end_message(output_, start);
    }
  };
  if (server_.options().command(words, read_only_, hand_over, why)) {
    outcome.u8(static_cast<unsigned>(Status::kDone));
  } else {
    outcome.u8(static_cast<unsigned>(Status::kRefused));
    outcome.text(why);
  }
  // What the command has caused comes ahead of its answer.
  take_events();
  end_answer(last);
  return true;
}

// ---- Out ----------------------------------------------------------------------------------------

void Session::send() {
  if (ended_) return;
  do {
    try {
      take_events();
    } catch (const std::bad_alloc&) {
      end("no memory for its events");
    }
    if (!send_bytes()) return;
  } while (!events_.empty() && sent_ == output_.size());
  if (sent_ == output_.size()) {
    output_.clear();
    sent_ = 0;
    answers_end_ = 0;
  } else if (sent_ >= kMostAnswerBytes) {
    output_.erase(output_.begin(), output_.begin() + static_cast<std::ptrdiff_t>(sent_));
    answers_end_ -= std::min(answers_end_, sent_);
    sent_ = 0;
  }
  note_wait();
}

bool Session::send_bytes() {
  while (!ended_ && sent_ < output_.size()) {
    const ssize_t count = ::send(socket_.get(), output_.data() + sent_, output_.size() - sent_,
                                 MSG_NOSIGNAL | MSG_DONTWAIT);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) break;
    if (count < 0) {
      end(errno == EPIPE || errno == ECONNRESET ? "" : std::strerror(errno));
      break;
    }
    sent_ += static_cast<std::size_t>(count);
    // The client takes what is sent to it, if slowly.
    if (waits_) waits_since_ = Clock::now();
  }
  return !ended_;
}

}  // namespace vorn::service
