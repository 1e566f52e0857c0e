// SPDX-License-Identifier: Apache-2.0
#include "interrupt.h"

#include <csignal>

namespace shell {

namespace {

volatile std::sig_atomic_t the_interrupt = 0;

void note_interrupt(int) { interrupt(); }

}  // namespace

// System calls go on after it, so that what is being printed is not cut off; poll(2) alone returns.
void catch_interrupts() { std::signal(SIGINT, note_interrupt); }

void interrupt() { the_interrupt = 1; }

bool interrupted() { return the_interrupt != 0; }

void forget_interrupt() { the_interrupt = 0; }

}  // namespace shell
