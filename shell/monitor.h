// SPDX-License-Identifier: Apache-2.0
//
// What the card does with frames, told as it happens: the command `monitor`.
#ifndef SHELL_MONITOR_H_
#define SHELL_MONITOR_H_

#include <functional>
#include <string>

#include "command.h"
#include "softcard/card.h"
#include "softcard/pipeline/observer.h"

namespace shell {

// Where somebody looks on: at ports, and between the card and the CPU.
struct Places {
  softcard::PortSet ports;
  bool cpu = true;
};

// The ports and `cpu` that the words left name; everything when there is none.
Places take_places(const softcard::Card& card, Arguments& arguments);

// Tells of each frame that goes in or out at a place: a line each, for a person or one JSON object.
class Monitor final : public softcard::FrameObserver {
 public:
  // `tell` is called with a line without its end, in the middle of what the card does: it must not
  // call the card.
  Monitor(Places places, bool json, std::function<void(const std::string& line)> tell)
      : places_(places), json_(json), tell_(std::move(tell)) {}

  void saw(const softcard::Sighting& sighting) override;

 private:
  // A frame that goes in or out; the fields stand behind its place in JSON, `behind` behind its
  // bytes in text.
  void tell(const char* direction, const std::string& place, const softcard::Sighting& sighting,
            const softcard::SeenFrame& frame, const NamedValues& fields, const std::string& behind);

  Places places_;
  bool json_;
  std::function<void(const std::string& line)> tell_;
};

void monitor(Shell& shell, Arguments& arguments, Reply& reply);

}  // namespace shell

#endif  // SHELL_MONITOR_H_
