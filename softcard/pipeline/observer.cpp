// SPDX-License-Identifier: Apache-2.0

#include "softcard/pipeline/observer.h"

#include <algorithm>
#include <utility>

#include "softcard/base/address_plan.h"
#include "softcard/pipeline/trace.h"

namespace softcard {
namespace {

std::string port_text(PortIndex port) { return AddressPlan::text(AddressPlan::usp_of(port)); }

}  // namespace

// ---- Sighting -----------------------------------------------------------------------------------

std::string Sighting::drop_reason() const {
  if (drops.empty()) return "no-port";
  const auto whole = std::find_if(drops.begin(), drops.end(),
                                  [](const Drop& drop) { return drop.egress == kNoPort; });
  return name(whole != drops.end() ? whole->reason : drops.front().reason);
}

std::string Sighting::verdict() const {
  if (dropped()) return "dropped: " + drop_reason();
  std::string text = "to ";
  for (const Way& way : ways) text += way.to + ", ";
  if (!to_cpu.empty()) return text + "CPU";
  text.resize(text.size() - 2);
  return text;
}

std::vector<std::string> Sighting::details() const {
  std::vector<std::string> lines;
  for (const ToCpu& packet : to_cpu) {
    lines.push_back(std::string("CPU: ") + rx_reason_text(packet.reason));
  }
  for (const PortIndex to : mirrored_to) lines.push_back("mirrored to " + port_text(to));
  const bool gone = dropped();
  for (const Drop& drop : drops) {
    if (drop.egress != kNoPort) {
      lines.push_back("not to " + port_text(drop.egress) + ": " + name(drop.reason));
    } else if (!gone) {
      lines.push_back(std::string("a copy dropped: ") + name(drop.reason));
    }
  }
  return lines;
}

// ---- Witness ------------------------------------------------------------------------------------

std::string Witness::text(Destination way) const {
  return way.is_lag() ? tables_.lags.text(way.number) : port_text(way.number);
}

void Witness::open(PortIndex ingress, const Frame& frame, std::uint64_t time_ns) {
  sighting_ = Sighting();
  sighting_.number = ++count_;
  sighting_.time_ns = time_ns;
  sighting_.ingress = ingress;
  sighting_.in = seen(frame);
  open_ = true;
}

void Witness::take_back(PortIndex port, std::size_t count, DropReason reason) {
  std::vector<Sighting::Sent>& sent = sighting_.sent;
  const auto at_port = [port](const auto& entry) { return entry.port == port; };
  for (; count != 0; --count) {
    const auto last = std::find_if(sent.rbegin(), sent.rend(), at_port);
    if (last == sent.rend()) break;
    sent.erase(std::next(last).base());
  }
  sighting_.drops.push_back({port, reason});
  if (std::any_of(sent.begin(), sent.end(), at_port)) return;
  auto& ways = sighting_.ways;
  ways.erase(std::remove_if(ways.begin(), ways.end(), at_port), ways.end());
  auto& mirrors = sighting_.mirrored_to;
  mirrors.erase(std::remove(mirrors.begin(), mirrors.end(), port), mirrors.end());
}

template <class Tell>
void Witness::for_each_observer(Tell&& tell) {
  bool gone = false;
  // By position: an observer may bring in another one.
  for (std::size_t i = 0; i < observers_.size(); ++i) {
    const std::shared_ptr<FrameObserver> observer = observers_[i].lock();
    if (observer != nullptr) {
      tell(*observer);
    } else {
      gone = true;
    }
  }
  if (!gone) return;
  observers_.erase(std::remove_if(observers_.begin(), observers_.end(),
                                  [](const auto& observer) { return observer.expired(); }),
                   observers_.end());
}

void Witness::show() {
  open_ = false;
  for_each_observer([this](FrameObserver& observer) { observer.saw(sighting_); });
}

void Witness::tell_burst_over() {
  for_each_observer([](FrameObserver& observer) { observer.burst_over(); });
}

}  // namespace softcard
