// SPDX-License-Identifier: Apache-2.0
//
// The commands that plug ports into cables and let the cables run.
#ifndef SHELL_CABLES_H_
#define SHELL_CABLES_H_

#include "command.h"
#include "softcard/cables/memory_cable.h"
#include "softcard/card.h"

namespace shell {

// The memory that a port is plugged into; null when it is plugged into anything else.
softcard::MemoryCable* find_memory_cable(softcard::Card& card, softcard::PortIndex port);
// The same, with an Error instead of null.
softcard::MemoryCable& memory_cable(softcard::Card& card, softcard::PortIndex port);

void cable(Shell& shell, Arguments& arguments, Reply& reply);
void wait(Shell& shell, Arguments& arguments, Reply& reply);

}  // namespace shell

#endif  // SHELL_CABLES_H_
