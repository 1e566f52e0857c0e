// SPDX-License-Identifier: Apache-2.0
//
// The command `expect`: what a script says must have come.
#ifndef SHELL_EXPECT_H_
#define SHELL_EXPECT_H_

#include "command.h"

namespace shell {

// Throws Failure with what was expected and what came instead.
void expect(Shell& shell, Arguments& arguments, Reply& reply);

}  // namespace shell

#endif  // SHELL_EXPECT_H_
