// SPDX-License-Identifier: Apache-2.0
//
// How the event loop answers a misuse that its headers call invalid.

#ifndef SOFTCARD_EVENTLOOP_FATAL_H_
#define SOFTCARD_EVENTLOOP_FATAL_H_

#include <cstdio>
#include <cstdlib>

namespace softcard {

// Ends the process with `message` on standard error unless `condition` holds, in release builds
// too.
inline void require(bool condition, const char* message) {
  if (condition) return;
  std::fprintf(stderr, "event loop: %s\n", message);
  std::abort();
}

}  // namespace softcard

#endif  // SOFTCARD_EVENTLOOP_FATAL_H_
