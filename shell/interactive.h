// SPDX-License-Identifier: Apache-2.0
//
// The shell at a terminal, and whatever else waits for real time to pass.
#ifndef SHELL_INTERACTIVE_H_
#define SHELL_INTERACTIVE_H_

namespace shell {

class Shell;

// Asks for commands and runs them until `quit` or the end of the input. Meanwhile the card lives.
void run_interactive(Shell& shell);

}  // namespace shell

#endif  // SHELL_INTERACTIVE_H_
