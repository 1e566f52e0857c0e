// SPDX-License-Identifier: Apache-2.0
//
// A host for the example clients: the software line card, and a little of what happens to a switch.
// A host with real hardware behind it runs the same clients unchanged.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <vector>

#include "client.h"
#include "softcard/base/clock.h"
#include "softcard/cables/memory_cable.h"
#include "softcard/host.h"

namespace {

// The far end of the cable in port 1/1/`port`.
softcard::MemoryCable& far_end(softcard::PortIndex port) {
  return dynamic_cast<softcard::MemoryCable&>(*softcard::host::card()->cable(port));
}

// A broadcast of the smallest size from a station behind the port.
void station_calls(softcard::PortIndex port) {
  std::vector<std::uint8_t> frame(60, 0);
  std::fill_n(frame.begin(), 6, std::uint8_t{0xff});
  frame[6] = 0x02;
  frame[11] = static_cast<std::uint8_t>(port);
  frame[12] = 0x88;  // an EtherType for experiments
  frame[13] = 0xb5;
  far_end(port).send(frame);
}

}  // namespace

int main() {
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  softcard::host::use_clock(std::make_shared<softcard::VirtualClock>());
  if (!client_start()) return 1;

  station_calls(0);
  station_calls(1);
  far_end(48).set_carrier(false);  // somebody pulls an uplink
  softcard::host::card()->run_once();

  const bool reported = client_report() != 0;
  return client_stop() && reported ? 0 : 1;
}
