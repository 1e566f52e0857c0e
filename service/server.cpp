// SPDX-License-Identifier: Apache-2.0

#include "service/server.h"

#include <fcntl.h>
#include <sys/epoll.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>
#include <utility>

#include "libxorp/callback.hh"
#include "remote/protocol.h"
#include "remote/values.h"
#include "service/session.h"
#include "vorn_sdk.h"

namespace vorn::service {

using namespace remote;

namespace {

constexpr std::size_t kPageBytes = 4096;
constexpr int kBacklog = 64;
constexpr int kAcceptAgainMs = 1000;
// Rounds that are served in one turn of the loop: then the card has its turn.
constexpr unsigned kMostRounds = 16;

Server* the_server = nullptr;

std::string error_text() { return std::strerror(errno); }

// Keeps two processes from making a socket in the same folder at the same time, while it lives.
class FolderLock {
 public:
  explicit FolderLock(const std::string& path) {
    constexpr unsigned kTries = 200;
    const std::size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    folder_ = Descriptor(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    // Whoever may read the folder can hold the lock for as long as he likes.
    for (unsigned tries = 0; folder_ && !locked_ && tries < kTries; ++tries) {
      locked_ = flock(folder_.get(), LOCK_EX | LOCK_NB) == 0;
      if (!locked_) std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
  }
  bool locked() const { return locked_; }

 private:
  Descriptor folder_;
  bool locked_ = false;
};

Descriptor new_socket() {
  return Descriptor(socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
}

// The socket that the system is asked for by name is ours alone until its group is set.
bool bind_privately(int fd, const sockaddr_un& name) {
  const mode_t before = umask(0177);
  const int result = bind(fd, reinterpret_cast<const sockaddr*>(&name), sizeof name);
  const int error = errno;
  umask(before);
  errno = error;
  return result == 0;
}

// Makes way for a new socket: removes one that nobody serves.
bool make_way(const sockaddr_un& name, std::string& error) {
  struct stat found {};
  if (lstat(name.sun_path, &found) != 0) {
    if (errno == ENOENT) return true;
    error = error_text();
    return false;
  }
  if (!S_ISSOCK(found.st_mode)) {
    error = "it is there and is no socket";
    return false;
  }
  const Descriptor probe = new_socket();
  if (connect(probe.get(), reinterpret_cast<const sockaddr*>(&name), sizeof name) == 0 ||
      errno == EAGAIN) {
    error = "somebody serves it already";
    return false;
  }
  if (errno != ECONNREFUSED || unlink(name.sun_path) != 0) {
    error = error_text();
    return false;
  }
  return true;
}

}  // namespace

Server::Server(EventLoop& loop, Options options)
    : loop_(loop),
      options_(std::move(options)),
      epoll_(epoll_create1(EPOLL_CLOEXEC)),
      page_memory_(memfd_create("vorn-lags", MFD_CLOEXEC | MFD_ALLOW_SEALING)) {
  the_server = this;
  if (page_memory_ && ftruncate(page_memory_.get(), kPageBytes) == 0) {
    void* const page =
        mmap(nullptr, kPageBytes, PROT_READ | PROT_WRITE, MAP_SHARED, page_memory_.get(), 0);
    // Nobody else may ever write to it. Where the kernel cannot promise that, clients ask for the
    // list each time instead.
    const bool sealed = page != MAP_FAILED &&
                        fcntl(page_memory_.get(), F_ADD_SEALS,
                              F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_FUTURE_WRITE | F_SEAL_SEAL) == 0;
    if (page != MAP_FAILED) page_ = page;
    if (!sealed) page_memory_.reset();
  }
  lags_changed();
  loop_.add_ioevent_cb(epoll_.get(), IOT_READ, callback(this, &Server::ready));
}

Server::~Server() {
  sessions_.clear();
  loop_.remove_ioevent_cb(epoll_.get());
  for (const Listener& listener : listeners_) {
    // Not that of somebody else who has taken its place.
    struct stat found {};
    if (lstat(listener.socket.path.c_str(), &found) == 0 && found.st_dev == listener.device &&
        found.st_ino == listener.file) {
      unlink(listener.socket.path.c_str());
    }
  }
  if (page_ != nullptr) munmap(page_, kPageBytes);
  the_server = nullptr;
}

// ---- Sockets ------------------------------------------------------------------------------------

bool Server::listen(const Socket& socket, std::string& error) {
  sockaddr_un name{};
  name.sun_family = AF_UNIX;
  if (socket.path.empty() || socket.path.size() >= sizeof name.sun_path) {
    error = socket.path + ": a socket's name has 1 to " + std::to_string(sizeof name.sun_path - 1) +
            " bytes";
    return false;
  }
  socket.path.copy(name.sun_path, sizeof name.sun_path - 1);
  const FolderLock lock(socket.path);
  if (!lock.locked()) {
    error = socket.path + ": its folder cannot be locked";
    return false;
  }
  if (!make_way(name, error)) {
    error = socket.path + ": " + error;
    return false;
  }
  Listener listener{socket, new_socket(), 0, 0};
  const int fd = listener.descriptor.get();
  struct stat made {};
  const bool bound = fd >= 0 && bind_privately(fd, name);
  if (!bound ||
      (socket.has_group && (chown(name.sun_path, static_cast<uid_t>(-1), socket.group) != 0 ||
                            chmod(name.sun_path, 0660) != 0)) ||
      lstat(name.sun_path, &made) != 0 || ::listen(fd, kBacklog) != 0) {
    error = socket.path + ": " + error_text();
    if (bound) unlink(name.sun_path);
    return false;
  }
  listener.device = made.st_dev;
  listener.file = made.st_ino;
  listeners_.push_back(std::move(listener));
  set_interest(fd, &listeners_.back(), EPOLLIN, true);
  return true;
}

// The user that the process runs as, root, and where there is a group its members.
bool Server::may_connect(int fd, const Listener& listener, std::string& who) const {
  ucred peer{};
  socklen_t size = sizeof peer;
  if (getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) {
    who = "somebody unknown";
    return false;
  }
  who = "user " + std::to_string(peer.uid) + ", process " + std::to_string(peer.pid);
  if (peer.uid == 0 || peer.uid == geteuid()) return true;
  if (!listener.socket.has_group) return false;
  if (peer.gid == listener.socket.group) return true;
  std::vector<gid_t> groups(65536);
  size = static_cast<socklen_t>(groups.size() * sizeof groups[0]);
  if (getsockopt(fd, SOL_SOCKET, SO_PEERGROUPS, groups.data(), &size) != 0) return false;
  groups.resize(size / sizeof groups[0]);
  return std::find(groups.begin(), groups.end(), listener.socket.group) != groups.end();
}

void Server::accept_from(Listener& listener) {
  for (unsigned count = 0; count < kBacklog; ++count) {
    Descriptor client(
        accept4(listener.descriptor.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (!client) {
      if (errno == EINTR || errno == ECONNABORTED) continue;
      if (errno == EAGAIN || errno == EWOULDBLOCK) return;
      // No descriptor is left: not before some time has passed will there be one.
      options_.log("no client can be taken: " + error_text());
      set_interest(listener.descriptor.get(), &listener, 0, false);
      accepting_ =
          loop_.new_oneoff_after_ms(kAcceptAgainMs, callback(this, &Server::resume_accepting));
      return;
    }
    std::string who;
    std::string why;
    if (!may_connect(client.get(), listener, who)) {
      why = who + " may not connect";
    } else if (sessions_.size() >= options_.most_clients) {
      why = "there are " + std::to_string(sessions_.size()) + " clients already";
    }
    if (why.empty()) {
      turning_away_ = false;
      add(std::move(client), listener.socket.read_only);
      continue;
    }
    // One line for as many as come.
    if (!std::exchange(turning_away_, true)) options_.log("clients are turned away: " + why);
    Bytes answer;
    const std::size_t start = begin_message(answer, Kind::kAnswer);
    Writer out(answer);
    out.u32(kMagic);
    out.u32(kVersion);
    out.u64(table_hash());
    out.u8(static_cast<unsigned>(Status::kNotTried));
    out.text(why);
    end_message(answer, start);
    ::send(client.get(), answer.data(), answer.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
  }
}

void Server::resume_accepting() {
  for (Listener& listener : listeners_) {
    set_interest(listener.descriptor.get(), &listener, EPOLLIN, false);
  }
}

void Server::adopt(Descriptor socket, bool read_only) {
  fcntl(socket.get(), F_SETFL, fcntl(socket.get(), F_GETFL) | O_NONBLOCK);
  add(std::move(socket), read_only);
}

void Server::add(Descriptor socket, bool read_only) {
  sessions_.push_back(std::make_unique<Session>(*this, std::move(socket), read_only));
  Session& session = *sessions_.back();
  session.interest = EPOLLIN | EPOLLRDHUP;
  set_interest(session.descriptor(), &session, session.interest, true);
  watch_patience();
}

void Server::set_interest(int fd, void* whose, std::uint32_t events, bool is_new) {
  epoll_event event{};
  event.events = events;
  event.data.ptr = whose;
  epoll_ctl(epoll_.get(), is_new ? EPOLL_CTL_ADD : EPOLL_CTL_MOD, fd, &event);
}

// ---- Rounds -------------------------------------------------------------------------------------

void Server::ready(XorpFd, IoEventType) {
  if (again()) again_ = loop_.new_task(callback(this, &Server::again));
}

bool Server::again() {
  for (unsigned rounds = 0; rounds < kMostRounds; ++rounds) {
    if (!round()) return false;
  }
  return true;
}

bool Server::round() {
  std::array<epoll_event, 64> events;
  const int count = epoll_wait(epoll_.get(), events.data(), static_cast<int>(events.size()), 0);
  for (int i = 0; i < count; ++i) {
    const epoll_event& event = events[static_cast<std::size_t>(i)];
    const auto listener =
        std::find_if(listeners_.begin(), listeners_.end(),
                     [&](const Listener& candidate) { return &candidate == event.data.ptr; });
    if (listener != listeners_.end()) {
      accept_from(*listener);
      continue;
    }
    auto& session = *static_cast<Session*>(event.data.ptr);
    if ((event.events & ~static_cast<std::uint32_t>(EPOLLOUT)) != 0) session.receive();
  }
  bool more = false;
  for (const auto& session : sessions_) {
    if (session->has_request()) session->serve();
  }
  events_waiting_ = false;
  for (const auto& session : sessions_) {
    session->send();
    if (session->ended()) continue;
    more = more || session->has_request();
    const std::uint32_t interest =
        (session->wants_to_receive() ? EPOLLIN | EPOLLRDHUP : 0u) |
        (session->wants_to_send() ? static_cast<std::uint32_t>(EPOLLOUT) : 0u);
    if (interest == session->interest) continue;
    session->interest = interest;
    set_interest(session->descriptor(), session.get(), interest, false);
  }
  drop_ended();
  watch_patience();
  return more;
}

void Server::drop_ended() {
  sessions_.remove_if([](const auto& session) { return session->ended(); });
}

// The timer runs only while somebody is waited for.
void Server::watch_patience() {
  const bool needed = std::any_of(sessions_.begin(), sessions_.end(),
                                  [](const auto& session) { return session->may_be_late(); });
  if (needed == patience_.scheduled()) return;
  patience_.unschedule();
  if (!needed) return;
  patience_ =
      loop_.new_oneoff_after_ms(options_.patience_ms, callback(this, &Server::look_at_patience));
}

void Server::look_at_patience() {
  const auto now = Session::Clock::now();
  const std::chrono::milliseconds patience(options_.patience_ms);
  for (const auto& session : sessions_) {
    if (session->is_late(now, patience)) session->end("it sends or takes nothing any more");
  }
  drop_ended();
  watch_patience();
}

// ---- LAGs ---------------------------------------------------------------------------------------

void Server::lags_changed() {
  ++generation_;
  if (page_ == nullptr) return;
  std::uint32_t word = 0;
  Bytes bytes;
  Writer(bytes).u32(generation_);
  std::memcpy(&word, bytes.data(), sizeof word);
  static_cast<std::atomic<std::uint32_t>*>(page_)->store(word, std::memory_order_release);
}

void Server::card_ended() {
  for (const auto& session : sessions_) session->end("the card has ended");
  drop_ended();
  lags_changed();
}

// ---- Events -------------------------------------------------------------------------------------

bool Server::listen_for(lcmgr_report_event_t kind, bool on) {
  unsigned& listeners = listeners_for_[kind];
  const bool first_or_last = listeners == (on ? 0 : 1);
  if (first_or_last) {
    VornSdkBase* sdk = nullptr;
    if (!vornsdk_get_sdk_instance(sdk) && on) return false;
    bool done = !on;
    if (sdk != nullptr && kind == LCMGR_REPORT_RX_PACKET) {
      done = on ? sdk->register_rx_packet_callback(&take_packet, this)
                : sdk->deregister_event_callback(kind, reinterpret_cast<void*>(&take_packet), this);
    } else if (sdk != nullptr && kind == LCMGR_REPORT_LINK_CHANGE) {
      done =
          on ? sdk->register_link_change_callback(&take_link, nullptr)
             : sdk->deregister_event_callback(kind, reinterpret_cast<void*>(&take_link), nullptr);
    } else if (sdk != nullptr) {
      done = on ? sdk->register_mac_update_callback(&take_mac, this)
                : sdk->deregister_event_callback(kind, reinterpret_cast<void*>(&take_mac), this);
    }
    if (!done && on) return false;
  }
  listeners += on ? 1u : -1u;
  return true;
}

// Events go out when the loop runs next: one after the other would be a system call each.
void Server::tell(const Event& event) {
  for (const auto& session : sessions_) session->tell(event);
  if (!std::exchange(events_waiting_, true)) {
    again_ = loop_.new_task(callback(this, &Server::again));
  }
}

namespace {

// The message of an event, written by `write`.
template <class Write>
std::shared_ptr<const Bytes> message_of(Kind kind, const Write& write) {
  auto message = std::make_shared<Bytes>();
  const std::size_t start = begin_message(*message, kind);
  Writer out(*message);
  write(out);
  end_message(*message, start);
  return message;
}

}  // namespace

void Server::take_packet(RxPacket* packet, void* server) {
  static_cast<Server*>(server)->tell(
      {LCMGR_REPORT_RX_PACKET, packet->port, message_of(Kind::kPacket, [&](Writer& out) {
         out.u32(packet->reason);
         Value<Usp>::put(out, packet->port);
         out.u32(packet->vlan);
         out.u32(packet->priority);
         out.text({reinterpret_cast<const char*>(packet->data), packet->length});
       })});
}

void Server::take_link(LinkStatus* status, Usp* port) {
  the_server->tell({LCMGR_REPORT_LINK_CHANGE, *port, message_of(Kind::kLink, [&](Writer& out) {
                      Value<phy_state_t>::put(out, status->state);
                      Value<speed_type_t>::put(out, status->speed);
                      Value<duplex_type_t>::put(out, status->duplex);
                      Value<Usp>::put(out, *port);
                    })});
}

void Server::take_mac(L2Addr* entry, int what, void* server) {
  static_cast<Server*>(server)->tell(
      {LCMGR_REPORT_MAC_UPDATE, entry->port, message_of(Kind::kMac, [&](Writer& out) {
         out.raw(entry->mac, sizeof entry->mac);
         out.u32(entry->vlan);
         Value<Usp>::put(out, entry->port);
         out.u32(entry->flags);
         Value<int>::put(out, what);
       })});
}

}  // namespace vorn::service
