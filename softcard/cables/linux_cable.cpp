// SPDX-License-Identifier: Apache-2.0

#include "softcard/cables/linux_cable.h"

#include <arpa/inet.h>
#include <linux/if_ether.h>
#include <linux/if_packet.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <atomic>
#include <utility>

#include "softcard/frames/wire.h"

// Younger than some of the kernel headers that this compiles with.
#ifndef PACKET_IGNORE_OUTGOING
#define PACKET_IGNORE_OUTGOING 23
#endif

namespace softcard {

namespace {

// A slot of the ring holds a usual frame behind the kernel's header. Longer ones wait in the
// socket's queue, and their slot says so. Blocks are a whole number of pages of up to 65536 bytes.
constexpr std::size_t kSlotBytes = 2048;
constexpr std::size_t kSlots = 8192;
constexpr std::size_t kBlockBytes = 65536;
constexpr std::size_t kRingBytes = kSlotBytes * kSlots;
constexpr int kQueueBytes = 32 << 20;  // of longer frames
constexpr int kRetryMs = 1000;
constexpr std::size_t kBurst = 32;    // frames that enter the card together
constexpr std::size_t kBudget = 128;  // frames taken before other descriptors have their turn

// The header that the kernel puts in front of a frame, and takes there: struct virtio_net_hdr,
// whose own header is not C++. Numbers are in the machine's byte order.
struct VirtualNetHeader {
  std::uint8_t flags;
  std::uint8_t segment_kind;
  std::uint16_t header_bytes;
  std::uint16_t segment_bytes;
  std::uint16_t checksum_start;
  std::uint16_t checksum_offset;
};
static_assert(sizeof(VirtualNetHeader) == 10, "as the kernel has it");

constexpr std::uint8_t kFlagNeedsChecksum = 1;
constexpr std::uint8_t kSegmentCongestion = 0x80;  // a mark beside the kind: TCP's CWR is set

struct SegmentKind {
  Segmentation segmentation;
  std::uint8_t code;
};
constexpr SegmentKind kSegmentKinds[] = {
    {Segmentation::none, 0},
    {Segmentation::tcp4, 1},
    {Segmentation::tcp6, 4},
    {Segmentation::udp, 5},
};

Offload offload_of(const VirtualNetHeader& header) {
  Offload offload;
  offload.checksum_partial = (header.flags & kFlagNeedsChecksum) != 0;
  offload.checksum_start = header.checksum_start;
  offload.checksum_offset = header.checksum_offset;
  offload.segment_bytes = header.segment_bytes;
  const unsigned code = header.segment_kind & ~unsigned{kSegmentCongestion};
  for (const SegmentKind& kind : kSegmentKinds) {
    if (kind.code == code) offload.segmentation = kind.segmentation;
  }
  return offload;
}

VirtualNetHeader header_of(const Frame& frame) {
  constexpr unsigned kUdpHeaderBytes = 8;
  constexpr unsigned kTcpHeaderBytes = 20;
  constexpr unsigned kTcpFlagsOffset = 13;
  constexpr unsigned kTcpCongestionReduced = 0x80;
  const Offload& offload = frame.offload;
  VirtualNetHeader header{};
  if (offload.checksum_partial) {
    header.flags = kFlagNeedsChecksum;
    header.checksum_start = offload.checksum_start;
    header.checksum_offset = offload.checksum_offset;
  }
  if (offload.segmentation != Segmentation::none) {
    for (const SegmentKind& kind : kSegmentKinds) {
      if (kind.segmentation == offload.segmentation) header.segment_kind = kind.code;
    }
    header.segment_bytes = offload.segment_bytes;
    // Of the segments only the first one may carry CWR.
    const std::size_t flags = offload.checksum_start + kTcpFlagsOffset;
    if (offload.segmentation != Segmentation::udp && flags < frame.size() &&
        (frame.data()[flags] & kTcpCongestionReduced) != 0) {
      header.segment_kind |= kSegmentCongestion;
    }
    header.header_bytes = static_cast<std::uint16_t>(std::min<std::size_t>(
        frame.size(),
        offload.checksum_start +
            (offload.segmentation == Segmentation::udp ? kUdpHeaderBytes : kTcpHeaderBytes)));
  }
  return header;
}

bool set(int fd, int option, int value, int level = SOL_PACKET) {
  return setsockopt(fd, level, option, &value, sizeof value) == 0;
}

// The kernel and this program hand a slot over through its status word.
std::uint32_t status_of(const std::uint8_t* slot) {
  const auto* header = reinterpret_cast<const tpacket2_hdr*>(slot);
  const std::uint32_t status = *const_cast<const volatile std::uint32_t*>(&header->tp_status);
  std::atomic_thread_fence(std::memory_order_acquire);
  return status;
}

void give_back(std::uint8_t* slot) {
  std::atomic_thread_fence(std::memory_order_seq_cst);
  auto* header = reinterpret_cast<tpacket2_hdr*>(slot);
  *const_cast<volatile std::uint32_t*>(&header->tp_status) = TP_STATUS_KERNEL;
}

}  // namespace

// ---- Opening ------------------------------------------------------------------------------------

std::unique_ptr<LinuxCable> LinuxCable::open(EventLoop& loop, const std::string& interface,
                                             std::string& error) {
  std::unique_ptr<LinuxCable> cable(new LinuxCable(loop, interface));
  if (!cable->open_monitor(error) || !cable->open_interface(error)) return nullptr;
  cable->carrier_ = cable->ask_carrier();
  return cable;
}

LinuxCable::~LinuxCable() {
  hold_down(false);
  close_interface();
  if (monitor_) loop_.remove_ioevent_cb(monitor_.get());
}

bool LinuxCable::open_monitor(std::string& error) {
  monitor_ = Descriptor(socket(AF_NETLINK, SOCK_RAW | SOCK_NONBLOCK | SOCK_CLOEXEC, NETLINK_ROUTE));
  sockaddr_nl name{};
  name.nl_family = AF_NETLINK;
  name.nl_groups = RTMGRP_LINK;
  if (!monitor_ ||
      bind(monitor_.get(), reinterpret_cast<const sockaddr*>(&name), sizeof name) != 0) {
    error = system_error(name_, "its carrier cannot be watched");
    return false;
  }
  return true;
}

bool LinuxCable::open_interface(std::string& error) {
  ifreq request{};
  name_.copy(request.ifr_name, IFNAMSIZ - 1);
  if (name_.size() >= IFNAMSIZ || ioctl(monitor_.get(), SIOCGIFINDEX, &request) != 0) {
    error = name_ + ": there is no such interface";
    return false;
  }
  index_ = request.ifr_ifindex;
  if (claim(error) && open_socket(error)) return true;
  close_interface();
  return false;
}

// The name of a Unix socket that is no file belongs to one process of a network namespace, and goes
// with it.
bool LinuxCable::claim(std::string& error) {
  sockaddr_un name{};
  name.sun_family = AF_UNIX;
  const std::string text = "softcard/linux-cable/" + std::to_string(index_);
  text.copy(name.sun_path + 1, sizeof name.sun_path - 1);
  claim_ = Descriptor(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  if (claim_ && bind(claim_.get(), reinterpret_cast<const sockaddr*>(&name), sizeof name) == 0) {
    return true;
  }
  error = errno == EADDRINUSE ? name_ + ": another cable leads there already"
                              : system_error(name_, "cannot be claimed");
  return false;
}

bool LinuxCable::open_socket(std::string& error) {
  // Without a protocol nothing is received before the socket is bound to the one interface.
  socket_ = Descriptor(socket(AF_PACKET, SOCK_RAW | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
  if (!socket_) {
    error = system_error(name_, "no packet socket");
    return false;
  }
  const int fd = socket_.get();
  if (!set(fd, PACKET_VERSION, TPACKET_V2) || !set(fd, PACKET_VNET_HDR, 1) ||
      !set(fd, PACKET_COPY_THRESH, 1)) {
    error = system_error(name_, "no packet socket with offloads");
    return false;
  }
  // Beyond the system's limit only with CAP_NET_ADMIN; what does not fit is lost and counted.
  if (!set(fd, SO_RCVBUFFORCE, kQueueBytes, SOL_SOCKET)) {
    set(fd, SO_RCVBUF, kQueueBytes, SOL_SOCKET);
  }
  // Older kernels refuse; take() leaves these frames out, too.
  set(fd, PACKET_IGNORE_OUTGOING, 1);
  if (!open_ring(error)) return false;

  packet_mreq promiscuous{};
  promiscuous.mr_ifindex = index_;
  promiscuous.mr_type = PACKET_MR_PROMISC;
  sockaddr_ll name{};
  name.sll_family = AF_PACKET;
  name.sll_protocol = htons(ETH_P_ALL);
  name.sll_ifindex = index_;
  if (setsockopt(fd, SOL_PACKET, PACKET_ADD_MEMBERSHIP, &promiscuous, sizeof promiscuous) != 0 ||
      bind(fd, reinterpret_cast<const sockaddr*>(&name), sizeof name) != 0) {
    error = system_error(name_, "cannot be opened");
    return false;
  }
  return true;
}

bool LinuxCable::open_ring(std::string& error) {
  tpacket_req request{};
  request.tp_block_size = kBlockBytes;
  request.tp_block_nr = kRingBytes / kBlockBytes;
  request.tp_frame_size = kSlotBytes;
  request.tp_frame_nr = kSlots;
  if (setsockopt(socket_.get(), SOL_PACKET, PACKET_RX_RING, &request, sizeof request) != 0) {
    error = system_error(name_, "no packet ring");
    return false;
  }
  void* const ring =
      mmap(nullptr, kRingBytes, PROT_READ | PROT_WRITE, MAP_SHARED, socket_.get(), 0);
  if (ring == MAP_FAILED) {
    error = system_error(name_, "the packet ring cannot be mapped");
    return false;
  }
  ring_ = static_cast<std::uint8_t*>(ring);
  return true;
}

void LinuxCable::close_interface() {
  if (socket_) loop_.remove_ioevent_cb(socket_.get());
  if (ring_ != nullptr) munmap(ring_, kRingBytes);
  ring_ = nullptr;
  next_slot_ = 0;
  socket_.reset();
  claim_.reset();
  index_ = 0;
  held_down_ = false;
}

void LinuxCable::plug(CableSink& sink, PortIndex port) {
  sink_ = &sink;
  port_ = port;
  watch_frames();
  loop_.add_ioevent_cb(monitor_.get(), IOT_READ, callback(this, &LinuxCable::link_changed));
  advertisement_changed();
}

void LinuxCable::watch_frames() {
  loop_.add_ioevent_cb(socket_.get(), IOT_READ, callback(this, &LinuxCable::frames_waiting));
}

// ---- The interface ------------------------------------------------------------------------------

// The kernel takes the socket off an interface that is deleted or leaves the namespace, even when
// the next one gets the same number.
bool LinuxCable::interface_is_gone() const {
  sockaddr_ll name{};
  socklen_t bytes = sizeof name;
  return getsockname(socket_.get(), reinterpret_cast<sockaddr*>(&name), &bytes) != 0 ||
         name.sll_ifindex != index_;
}

// Asks for the interface's flags by the name that it has by now. False when there is none.
bool LinuxCable::ask_flags(ifreq& request) const {
  request.ifr_ifindex = index_;
  return index_ != 0 && ioctl(monitor_.get(), SIOCGIFNAME, &request) == 0 &&
         ioctl(monitor_.get(), SIOCGIFFLAGS, &request) == 0;
}

bool LinuxCable::ask_carrier() const {
  constexpr int kWanted = IFF_UP | IFF_RUNNING;
  ifreq request{};
  return ask_flags(request) && (request.ifr_flags & kWanted) == kWanted;
}

void LinuxCable::advertisement_changed() { hold_down(sink_->advertised_ability(port_) == 0); }

void LinuxCable::hold_down(bool down) {
  ifreq request{};
  if (!ask_flags(request)) return;
  const bool up = (request.ifr_flags & IFF_UP) != 0;
  if (!down) failure_.clear();
  if (down ? !up : !held_down_) return;
  held_down_ = down;
  if (up != down) return;
  request.ifr_flags = static_cast<short>(request.ifr_flags ^ IFF_UP);
  if (ioctl(monitor_.get(), SIOCSIFFLAGS, &request) == 0) return;
  held_down_ = false;
  failure_ = system_error(down ? "up while the port is off" : "down", "cannot be changed");
}

void LinuxCable::link_changed(XorpFd fd, IoEventType /*type*/) {
  // The messages only say that something changed: the state is asked for.
  std::uint8_t news[8192];
  while (recv(fd, news, sizeof news, MSG_DONTWAIT) > 0) {
  }
  look_after_interface();
}

void LinuxCable::look_after_interface() {
  if (index_ != 0 && interface_is_gone()) {
    close_interface();
    failure_.clear();
  }
  if (index_ == 0) {
    if (open_interface(failure_)) {
      failure_.clear();
      watch_frames();
    } else {
      retry_ =
          loop_.new_oneoff_after_ms(kRetryMs, callback(this, &LinuxCable::look_after_interface));
    }
  }
  advertisement_changed();
  const bool now = ask_carrier();
  if (now == carrier_) return;
  carrier_ = now;
  sink_->carrier_changed(port_);
}

// ---- Frames -------------------------------------------------------------------------------------

std::uint8_t* LinuxCable::slot(std::size_t index) const { return ring_ + index * kSlotBytes; }

void LinuxCable::frames_waiting(XorpFd fd, IoEventType /*type*/) {
  for (std::size_t taken = 0; taken < kBudget;) {
    FramePtr burst[kBurst];
    std::size_t count = 0;
    std::size_t seen = 0;
    for (; seen < kBurst; ++seen) {
      std::uint8_t* const next = slot(next_slot_);
      if ((status_of(next) & TP_STATUS_USER) == 0) break;
      if (FramePtr frame = take(next)) burst[count++] = std::move(frame);
      give_back(next);
      next_slot_ = (next_slot_ + 1) % kSlots;
    }
    if (count != 0) sink_->frames_arrived(port_, burst, count);
    taken += seen;
    if (seen < kBurst) break;
  }
  // An interface that goes down leaves an error, which would wake the loop again and again.
  int error = 0;
  socklen_t bytes = sizeof error;
  getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &bytes);
  count_losses();
}

// The kernel loses what comes while the ring is full, and forgets how much that was when asked.
void LinuxCable::count_losses() {
  tpacket_stats counts{};
  socklen_t bytes = sizeof counts;
  getsockopt(socket_.get(), SOL_PACKET, PACKET_STATISTICS, &counts, &bytes);
  const std::uint64_t lost = std::exchange(untold_, 0) + counts.tp_drops;
  lost_ += lost;
  if (lost != 0) sink_->frames_lost(port_, lost);
}

FramePtr LinuxCable::take(const std::uint8_t* slot) {
  constexpr std::size_t kTagOffset = 12;
  constexpr std::size_t kTagBytes = 4;
  tpacket2_hdr header;
  sockaddr_ll from;
  VirtualNetHeader offload;
  std::memcpy(&header, slot, sizeof header);
  std::memcpy(&from, slot + TPACKET_ALIGN(sizeof header), sizeof from);
  std::memcpy(&offload, slot + header.tp_mac - sizeof offload, sizeof offload);

  FramePtr frame;
  if ((header.tp_status & TP_STATUS_COPY) != 0) {
    frame = take_long(header.tp_len);
  } else if (header.tp_snaplen == header.tp_len) {
    frame = sink_->frame_pool().make(slot + header.tp_mac, header.tp_snaplen);
  }
  if (from.sll_pkttype == PACKET_OUTGOING) return nullptr;
  if (frame == nullptr) {
    ++untold_;
    return nullptr;
  }
  frame->offload = offload_of(offload);
  if ((header.tp_status & TP_STATUS_VLAN_VALID) != 0 && frame->size() >= kTagOffset) {
    frame->insert(kTagOffset, kTagBytes);
    const bool has_tpid = (header.tp_status & TP_STATUS_VLAN_TPID_VALID) != 0;
    store16(frame->data() + kTagOffset, has_tpid ? header.tp_vlan_tpid : ETH_P_8021Q);
    store16(frame->data() + kTagOffset + 2, header.tp_vlan_tci);
  }
  return frame;
}

// Takes the next frame of the socket's queue, which goes whether the pool has one for it or not.
FramePtr LinuxCable::take_long(std::size_t bytes) {
  FramePtr frame = sink_->frame_pool().make(bytes);
  VirtualNetHeader header;  // is in the slot, too
  iovec pieces[2] = {{&header, sizeof header}, {nullptr, 0}};
  if (frame != nullptr) pieces[1] = {frame->data(), frame->size()};
  msghdr message{};
  message.msg_iov = pieces;
  message.msg_iovlen = 2;
  ssize_t got;
  do {
    got = recvmsg(socket_.get(), &message, MSG_DONTWAIT);
  } while (got < 0 && (errno == EINTR || errno == ENETDOWN));  // an error that waited comes first
  if (got != static_cast<ssize_t>(sizeof header + bytes)) frame.reset();
  return frame;
}

// A ring for sending would keep each slot until the receiver has let go of its frame, so frames go
// out by copy, many in one call.
std::size_t LinuxCable::transmit(FramePtr* frames, std::size_t count) {
  std::size_t sent = 0;
  for (std::size_t first = 0; first < count && socket_;) {
    mmsghdr messages[kBurst] = {};
    VirtualNetHeader headers[kBurst];
    iovec pieces[kBurst][2];
    const std::size_t batch = std::min(count - first, kBurst);
    for (std::size_t i = 0; i < batch; ++i) {
      Frame& frame = *frames[first + i];
      headers[i] = header_of(frame);
      pieces[i][0] = {&headers[i], sizeof headers[i]};
      pieces[i][1] = {frame.data(), frame.size()};
      messages[i].msg_hdr.msg_iov = pieces[i];
      messages[i].msg_hdr.msg_iovlen = 2;
    }
    const int done = sendmmsg(socket_.get(), messages, static_cast<unsigned>(batch), MSG_DONTWAIT);
    if (done > 0) {
      sent += static_cast<std::size_t>(done);
      first += static_cast<std::size_t>(done);
    } else if (errno == EAGAIN || errno == ENETDOWN || errno == ENXIO) {
      break;  // the next one would fare no better
    } else if (errno != EINTR) {
      ++first;  // this one is refused
    }
  }
  for (std::size_t i = 0; i < count; ++i) frames[i].reset();
  return sent;
}

std::string LinuxCable::describe() const {
  std::string text = "linux " + name_;
  if (!carrier_) text += ", no carrier";
  if (!failure_.empty()) text += ", " + failure_;
  if (lost_ != 0) text += ", " + std::to_string(lost_) + " received frames lost";
  return text;
}

}  // namespace softcard
