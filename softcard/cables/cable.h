// SPDX-License-Identifier: Apache-2.0
//
// The cables that a port of the card can be plugged into. A cable takes the frames that the port
// sends and hands over those that arrive; it has a carrier, which with the port's own settings
// makes the link. memory_cable.h has the cables that need nothing but memory.
#ifndef SOFTCARD_CABLES_CABLE_H_
#define SOFTCARD_CABLES_CABLE_H_

#include <cstddef>
#include <cstdint>
#include <string>

#include "softcard/base/net_types.h"
#include "softcard/frames/frame.h"

namespace softcard {

// The card as its cables see it.
class CableSink {
 public:
  // Takes frames that arrived at `port`, in their order; every pointer is null afterwards. The
  // frames come out of frame_pool(). Cables call it from the event loop or from poll(), never
  // from transmit().
  virtual void frames_arrived(PortIndex port, FramePtr* frames, std::size_t count) = 0;

  // Counts frames that came to the cable at `port` and were lost before the card could take them.
  virtual void frames_lost(PortIndex port, std::uint64_t count) = 0;

  // Counts frames that the port sent and that the cable kept until it had no more room for them.
  virtual void frames_forgotten(PortIndex port, std::uint64_t count) = 0;

  // The cable's carrier has changed: the card asks for it again.
  virtual void carrier_changed(PortIndex port) = 0;

  // The abilities that a port advertises to its link partner: bits of port_ability_type_t, none
  // while it is off and gives no carrier.
  virtual unsigned advertised_ability(PortIndex port) const = 0;

  // Where frames for frames_arrived() are made.
  virtual FramePool& frame_pool() = 0;

 protected:
  ~CableSink() = default;
};

class Cable {
 public:
  virtual ~Cable() = default;

  // Plugs the cable into a port; a cable is plugged once. `sink` outlives the cable.
  virtual void plug(CableSink& sink, PortIndex port) = 0;

  // Sends frames in their order and takes all of them; every pointer is null afterwards. Returns
  // how many were sent: the rest was refused and counts as the port's errors.
  virtual std::size_t transmit(FramePtr* frames, std::size_t count) = 0;

  // Whether there is a carrier.
  virtual bool carrier() const = 0;

  // The abilities that the port advertises have changed: the cable tells the other end. Comes while
  // the port changes, so the cable may call the sink of its other end, not its own one, but for
  // advertised_ability().
  virtual void advertisement_changed() {}

  // The card at the other end and, in `port`, its port there; null when the cable leads elsewhere.
  virtual CableSink* far_end(PortIndex& port) const {
    static_cast<void>(port);
    return nullptr;
  }

  // True when transmit() completes checksums and segments frames itself (frame.h's Offload), or
  // passes them to somebody who does. Otherwise the card does so before it calls.
  virtual bool takes_offloads() const { return false; }

  // Hands frames that wait to the sink, at most about `budget` of them. Returns how many. Only
  // cables without a descriptor in the event loop have frames that wait.
  virtual std::size_t poll(std::size_t budget) {
    static_cast<void>(budget);
    return 0;
  }

  // The cable and where it leads, in one line for the reader of `show port`.
  virtual std::string describe() const = 0;
};

}  // namespace softcard

#endif  // SOFTCARD_CABLES_CABLE_H_
