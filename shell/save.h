// SPDX-License-Identifier: Apache-2.0
//
// The card's configuration as a script: the calls that lead to it from a fresh card of the same
// description.
#ifndef SHELL_SAVE_H_
#define SHELL_SAVE_H_

#include <string>
#include <vector>

#include "command.h"
#include "softcard/card.h"

namespace shell {

// The lines of the script, in an order in which every call succeeds, with a comment in front of
// each family. Only what differs from a fresh card is in it; what no call can make is named.
std::vector<std::string> config_lines(softcard::Card& card);

// Writes the script to a file, which is there as a whole or not at all.
void save(Shell& shell, Arguments& arguments, Reply& reply);

}  // namespace shell

#endif  // SHELL_SAVE_H_
