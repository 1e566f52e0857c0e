// SPDX-License-Identifier: Apache-2.0

#include "softcard/cables/unix_cable.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <algorithm>
#include <utility>

namespace softcard {

namespace {

constexpr std::size_t kOverflowBytes = FramePool::kLargeBytes - FramePool::kSmallBytes;
// Frames that may be on their way before the other end counts as not keeping up.
constexpr int kSendBufferBytes = 4 << 20;
constexpr int kRetryMs = 100;
constexpr std::size_t kCarrierBytes = 1;  // of the message that is no frame

// Keeps the ends that meet in a folder apart while it lives, so that neither takes a socket for
// abandoned that the other one is just making. Leaves no file behind. Whoever may read the folder
// can hold the lock, for as long as he likes: nobody waits for it.
class FolderLock {
 public:
  explicit FolderLock(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    folder_ = Descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder_) locked_ = flock(folder_.get(), LOCK_EX | LOCK_NB) == 0;
    busy_ = folder_ && !locked_ && errno == EWOULDBLOCK;
  }
  bool locked() const { return locked_; }
  // Somebody else has it.
  bool busy() const { return busy_; }

 private:
  Descriptor folder_;
  bool locked_ = false;
  bool busy_ = false;
};

sockaddr_un name_of(const std::string& path) {
  sockaddr_un name{};
  name.sun_family = AF_UNIX;
  path.copy(name.sun_path, sizeof name.sun_path - 1);
  return name;
}

Descriptor new_socket() {
  return Descriptor(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
}

}  // namespace

std::unique_ptr<UnixCable> UnixCable::open(EventLoop& loop, const std::string& path,
                                           std::string& error) {
  if (path.empty() || path.size() >= sizeof(sockaddr_un::sun_path)) {
    error = path + ": a socket's name has 1 to " +
            std::to_string(sizeof(sockaddr_un::sun_path) - 1) + " bytes";
    return nullptr;
  }
  std::unique_ptr<UnixCable> cable(new UnixCable(loop, path));
  if (!cable->meet(error)) return nullptr;
  return cable;
}

UnixCable::~UnixCable() {
  sink_ = nullptr;  // the card no longer asks
  if (peer_) loop_.remove_ioevent_cb(peer_.get());
  stop_waiting();
}

void UnixCable::plug(CableSink& sink, PortIndex port) {
  sink_ = &sink;
  port_ = port;
  // Only now is there somebody to take what the other end has sent.
  if (peer_) {
    loop_.add_ioevent_cb(peer_.get(), IOT_READ, callback(this, &UnixCable::peer_sent));
    advertisement_changed();
  }
}

// ---- Meeting ------------------------------------------------------------------------------------

bool UnixCable::meet(std::string& error) {
  const FolderLock lock(path_);
  if (!lock.locked()) {
    error = system_error(path_, "its folder cannot be locked");
    if (!lock.busy()) return false;
    failure_ = error;
    try_again_later();
    return true;
  }
  struct stat status {};
  if (lstat(path_.c_str(), &status) == 0) {
    if (!S_ISSOCK(status.st_mode)) {
      error = path_ + ": is there and is no socket";
      return false;
    }
    Descriptor peer = new_socket();
    const sockaddr_un name = name_of(path_);
    if (peer && connect(peer.get(), reinterpret_cast<const sockaddr*>(&name), sizeof name) == 0) {
      set_peer(std::move(peer));
      return true;
    }
    if (errno != ECONNREFUSED && errno != ENOENT) {
      error = system_error(path_, "cannot be connected");
      return false;
    }
    unlink(path_.c_str());  // left behind by a process that is gone
  }
  return wait_for_peer(error);
}

bool UnixCable::wait_for_peer(std::string& error) {
  listener_ = new_socket();
  const sockaddr_un name = name_of(path_);
  if (!listener_ ||
      bind(listener_.get(), reinterpret_cast<const sockaddr*>(&name), sizeof name) != 0 ||
      listen(listener_.get(), 1) != 0) {
    error = system_error(path_, "cannot be made");
    listener_.reset();
    return false;
  }
  failure_.clear();
  loop_.add_ioevent_cb(listener_.get(), IOT_ACCEPT, callback(this, &UnixCable::peer_came));
  return true;
}

void UnixCable::try_again_later() {
  retry_ = loop_.new_oneoff_after_ms(kRetryMs, callback(this, &UnixCable::try_again));
}

void UnixCable::try_again() {
  if (listener_) {
    loop_.add_ioevent_cb(listener_.get(), IOT_ACCEPT, callback(this, &UnixCable::peer_came));
  } else if (!peer_ && !meet(failure_)) {
    try_again_later();
  }
}

void UnixCable::stop_waiting() {
  if (!listener_) return;
  // The name goes first: whoever finds it must find somebody behind it.
  unlink(path_.c_str());
  loop_.remove_ioevent_cb(listener_.get());
  listener_.reset();
}

void UnixCable::peer_came(XorpFd fd, IoEventType /*type*/) {
  Descriptor peer(accept4(fd, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
  if (!peer) {
    if (errno == EAGAIN || errno == EINTR || errno == ECONNABORTED) return;
    // The listener stays ready and would wake the loop again and again.
    failure_ = system_error(path_, "the other end cannot be let in");
    loop_.remove_ioevent_cb(fd);
    try_again_later();
    return;
  }
  stop_waiting();
  set_peer(std::move(peer));
}

void UnixCable::set_peer(Descriptor peer) {
  peer_ = std::move(peer);
  setsockopt(peer_.get(), SOL_SOCKET, SO_SNDBUF, &kSendBufferBytes, sizeof kSendBufferBytes);
  failure_.clear();
  told_carrier_ = true;
  peer_carrier_ = true;
  if (sink_ == nullptr) return;
  loop_.add_ioevent_cb(peer_.get(), IOT_READ, callback(this, &UnixCable::peer_sent));
  advertisement_changed();
  sink_->carrier_changed(port_);
}

void UnixCable::drop_peer() {
  loop_.remove_ioevent_cb(peer_.get());
  peer_.reset();
  sink_->carrier_changed(port_);
  if (!meet(failure_)) try_again_later();
}

// ---- Carrier ------------------------------------------------------------------------------------

void UnixCable::advertisement_changed() {
  const bool carrier = sink_->advertised_ability(port_) != 0;
  if (!peer_ || carrier == told_carrier_) return;
  const std::uint8_t message = carrier ? 1 : 0;
  if (send(peer_.get(), &message, kCarrierBytes, MSG_DONTWAIT | MSG_NOSIGNAL) > 0) {
    told_carrier_ = carrier;
  } else if (errno == EAGAIN || errno == ENOBUFS || errno == ENOMEM) {
    loop_.add_ioevent_cb(peer_.get(), IOT_WRITE, callback(this, &UnixCable::peer_has_room));
  }
}

void UnixCable::peer_has_room(XorpFd fd, IoEventType /*type*/) {
  loop_.remove_ioevent_cb(fd, IOT_WRITE);
  advertisement_changed();
}

void UnixCable::set_peer_carrier(bool carrier) {
  if (carrier == peer_carrier_) return;
  peer_carrier_ = carrier;
  sink_->carrier_changed(port_);
}

// ---- Frames -------------------------------------------------------------------------------------

std::size_t UnixCable::transmit(FramePtr* frames, std::size_t count) {
  std::size_t sent = 0;
  for (std::size_t first = 0; first < count && carrier();) {
    mmsghdr messages[kBatch] = {};
    iovec pieces[kBatch];
    const std::size_t batch = std::min(count - first, kBatch);
    for (std::size_t i = 0; i < batch; ++i) {
      const Frame& frame = *frames[first + i];
      pieces[i] = {const_cast<std::uint8_t*>(frame.data()), frame.size()};
      messages[i].msg_hdr.msg_iov = &pieces[i];
      messages[i].msg_hdr.msg_iovlen = 1;
    }
    const int done =
        sendmmsg(peer_.get(), messages, static_cast<unsigned>(batch), MSG_DONTWAIT | MSG_NOSIGNAL);
    if (done <= 0) break;
    sent += static_cast<std::size_t>(done);
    first += static_cast<std::size_t>(done);
  }
  for (std::size_t i = 0; i < count; ++i) frames[i].reset();
  return sent;
}

void UnixCable::peer_sent(XorpFd fd, IoEventType /*type*/) {
  // A message fills a small frame first. The few that are longer go on in the overflow and are
  // put together in a large frame.
  overflow_.resize(kBatch * kOverflowBytes);
  mmsghdr messages[kBatch] = {};
  iovec pieces[kBatch][2];
  std::size_t room = 0;
  for (; room < kBatch; ++room) {
    FramePtr& frame = arriving_[room];
    if (frame == nullptr) frame = sink_->frame_pool().make(FramePool::kSmallBytes);
    if (frame == nullptr) break;
    pieces[room][0] = {frame->data(), frame->size()};
    pieces[room][1] = {overflow_.data() + room * kOverflowBytes, kOverflowBytes};
    messages[room].msg_hdr.msg_iov = pieces[room];
    messages[room].msg_hdr.msg_iovlen = 2;
  }
  if (room == 0) return;  // they wait in the socket until the pool has a frame
  const int done = recvmmsg(fd, messages, static_cast<unsigned>(room), MSG_DONTWAIT, nullptr);
  if (done < 0 && (errno == EAGAIN || errno == EINTR)) return;

  FramePtr arrived[kBatch];
  std::size_t count = 0;
  std::uint64_t lost = 0;
  const auto hand_over = [&] {
    if (count != 0) sink_->frames_arrived(port_, arrived, std::exchange(count, 0));
  };
  bool open = done > 0;
  for (int i = 0; i < done; ++i) {
    const std::size_t bytes = messages[i].msg_len;
    if (bytes == 0) {
      open = false;  // nobody sends empty frames: this is the end
    } else if (bytes == kCarrierBytes) {
      hand_over();
      set_peer_carrier(arriving_[i]->data()[0] != 0);
    } else if (FramePtr frame = whole(messages[i], arriving_[i])) {
      arrived[count++] = std::move(frame);
    } else {
      ++lost;
    }
  }
  hand_over();
  if (lost != 0) sink_->frames_lost(port_, lost);
  if (!open) drop_peer();
}

// A small frame that fits is moved out of `first`. Null when it is longer than any frame, or the
// pool has none of that size.
FramePtr UnixCable::whole(const mmsghdr& message, FramePtr& first) {
  const std::size_t bytes = message.msg_len;
  if ((message.msg_hdr.msg_flags & MSG_TRUNC) != 0) return nullptr;
  if (bytes <= FramePool::kSmallBytes) {
    first->set_size(bytes);
    return std::move(first);
  }
  FramePtr large = sink_->frame_pool().make(bytes);
  if (large == nullptr) return nullptr;
  std::memcpy(large->data(), first->data(), FramePool::kSmallBytes);
  std::memcpy(large->data() + FramePool::kSmallBytes, message.msg_hdr.msg_iov[1].iov_base,
              bytes - FramePool::kSmallBytes);
  return large;
}

std::string UnixCable::describe() const {
  std::string text = "unix " + path_;
  if (peer_) return text + (peer_carrier_ ? "" : ", the other end is off");
  if (listener_) text += ", waiting for the other end";
  return failure_.empty() ? text : text + ", " + failure_;
}

}  // namespace softcard
