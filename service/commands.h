// SPDX-License-Identifier: Apache-2.0
//
// What a program with a shell and the software line card serves to clients: the card, and the
// shell's commands that act on it.
#ifndef SERVICE_COMMANDS_H_
#define SERVICE_COMMANDS_H_

#include "service/server.h"
#include "shell/shell.h"

namespace vorn::service {

// Options for the process's card, which is there. The shell outlives the server.
Options options_for(shell::Shell& shell);

}  // namespace vorn::service

#endif  // SERVICE_COMMANDS_H_
