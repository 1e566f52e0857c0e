// SPDX-License-Identifier: Apache-2.0
#include "story_host.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "softcard/cables/memory_cable.h"
#include "softcard/host.h"

namespace {

softcard::MemoryCable& cable(unsigned int port) {
  softcard::Cable* const end =
      softcard::host::card()->cable(static_cast<softcard::PortIndex>(port));
  return dynamic_cast<softcard::MemoryCable&>(*end);
}

}  // namespace

void host_pull_cable(unsigned int port) { cable(port).set_carrier(false); }

void host_put_cable_back(unsigned int port) { cable(port).set_carrier(true); }

void host_send(unsigned int port, const unsigned char* frame, unsigned int bytes) {
  cable(port).send(frame, bytes);
}

unsigned int host_take(unsigned int port, unsigned char* frame, unsigned int room) {
  std::vector<std::uint8_t> taken;
  if (!cable(port).take(taken) || taken.size() > room) return 0;
  std::copy(taken.begin(), taken.end(), frame);
  return static_cast<unsigned int>(taken.size());
}

void host_run() { softcard::host::card()->run_once(); }
