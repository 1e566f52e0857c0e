// SPDX-License-Identifier: Apache-2.0
//
// The interrupt key: it ends the command that runs, and the shell stays.
#ifndef SHELL_INTERRUPT_H_
#define SHELL_INTERRUPT_H_

namespace shell {

// From here on an interrupt is noted, where it would have ended the process.
void catch_interrupts();

// Notes one; for signal handlers.
void interrupt();

// Whether one has come since the last forget_interrupt(). A command that runs for long asks.
bool interrupted();
void forget_interrupt();

}  // namespace shell

#endif  // SHELL_INTERRUPT_H_
