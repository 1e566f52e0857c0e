// SPDX-License-Identifier: Apache-2.0

#include "softcard/cables/memory_cable.h"

#include <utility>

namespace softcard {

// ---- MemoryCable --------------------------------------------------------------------------------

std::atomic<std::size_t> MemoryCable::room_bytes_{MemoryCable::kDefaultRoomBytes};
std::atomic<std::size_t> MemoryCable::kept_bytes_{0};

void MemoryCable::plug(CableSink& sink, PortIndex port) {
  sink_ = &sink;
  port_ = port;
}

std::size_t MemoryCable::transmit(FramePtr* frames, std::size_t count) {
  std::uint64_t forgotten = 0;
  for (std::size_t i = 0; i < count; ++i) {
    const FramePtr frame = std::move(frames[i]);
    const std::size_t bytes = frame->size() + kOverheadBytes;
    for (; !sent_.empty() && kept_bytes_ + bytes > room_bytes_; ++forgotten) drop_first();
    sent_.emplace_back(frame->data(), frame->data() + frame->size());
    kept_bytes_ += bytes;
  }
  if (forgotten != 0 && sink_ != nullptr) sink_->frames_forgotten(port_, forgotten);
  forgotten_ += forgotten;
  return count;
}

bool MemoryCable::send(const std::uint8_t* data, std::size_t bytes) {
  if (sink_ == nullptr || bytes == 0) return false;
  FramePtr frame = sink_->frame_pool().make(data, bytes);
  if (frame == nullptr) return false;
  sink_->frames_arrived(port_, &frame, 1);
  return true;
}

bool MemoryCable::take(std::vector<std::uint8_t>& frame) {
  if (sent_.empty()) return false;
  frame = sent_.front();
  drop_first();
  return true;
}

void MemoryCable::clear() {
  while (!sent_.empty()) drop_first();
}

void MemoryCable::drop_first() {
  kept_bytes_ -= sent_.front().size() + kOverheadBytes;
  sent_.pop_front();
}

std::string MemoryCable::describe() const {
  return forgotten_ == 0 ? "memory" : "memory, " + std::to_string(forgotten_) + " frames forgotten";
}

void MemoryCable::set_carrier(bool on) {
  if (carrier_ == on) return;
  carrier_ = on;
  if (sink_ != nullptr) sink_->carrier_changed(port_);
}

// ---- PatchCable ---------------------------------------------------------------------------------

std::pair<std::unique_ptr<PatchCable>, std::unique_ptr<PatchCable>> PatchCable::make(
    std::size_t room) {
  std::unique_ptr<PatchCable> a(new PatchCable(room));
  std::unique_ptr<PatchCable> b(new PatchCable(room));
  a->peer_ = b.get();
  b->peer_ = a.get();
  return {std::move(a), std::move(b)};
}

PatchCable::~PatchCable() {
  if (peer_ == nullptr) return;
  peer_->peer_ = nullptr;
  if (peer_->sink_ != nullptr) peer_->sink_->carrier_changed(peer_->port_);
}

void PatchCable::plug(CableSink& sink, PortIndex port) {
  sink_ = &sink;
  port_ = port;
  if (peer_ != nullptr && peer_->sink_ != nullptr) peer_->sink_->carrier_changed(peer_->port_);
}

void PatchCable::advertisement_changed() {
  if (carrier()) peer_->sink_->carrier_changed(peer_->port_);
}

CableSink* PatchCable::far_end(PortIndex& port) const {
  if (!carrier()) return nullptr;
  port = peer_->port_;
  return peer_->sink_;
}

std::size_t PatchCable::transmit(FramePtr* frames, std::size_t count) {
  std::size_t sent = 0;
  for (std::size_t i = 0; i < count; ++i) {
    FramePtr frame = std::move(frames[i]);
    if (!carrier() || peer_->arrived_.size() == peer_->room_) continue;
    if (peer_->sink_ != sink_) {
      frame = peer_->sink_->frame_pool().make(frame->data(), frame->size());
      if (frame == nullptr) continue;
    }
    frame->ingress = kNoPort;
    frame->vlan = 0;
    frame->priority = 0;
    peer_->arrived_.push_back(std::move(frame));
    ++sent;
  }
  return sent;
}

std::size_t PatchCable::poll(std::size_t budget) {
  std::size_t handed = 0;
  for (; handed < budget && !arrived_.empty(); ++handed) {
    FramePtr frame = std::move(arrived_.front());
    arrived_.pop_front();
    sink_->frames_arrived(port_, &frame, 1);
  }
  return handed;
}

std::string PatchCable::describe() const {
  if (!carrier()) return "patch, other end loose";
  return "patch to port " + std::to_string(peer_->port_) +
         (peer_->sink_ == sink_ ? "" : " of another card");
}

}  // namespace softcard
