// SPDX-License-Identifier: Apache-2.0
//
// A descriptor of the host's own in the process's loop, whichever loop that is and whenever the
// process makes it.
#ifndef SOFTCARD_EVENTLOOP_LOOP_WATCH_H_
#define SOFTCARD_EVENTLOOP_LOOP_WATCH_H_

namespace softcard {

// Has every loop of the process call `ready` while `fd` is readable, in place of what was given
// before; -1 for nothing. Whoever closes the descriptor says so first.
void watch_in_loop(int fd, void (*ready)());

}  // namespace softcard

#endif  // SOFTCARD_EVENTLOOP_LOOP_WATCH_H_
