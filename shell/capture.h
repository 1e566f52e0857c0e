// SPDX-License-Identifier: Apache-2.0
//
// The command `capture`: frames as they go in and out, written as pcapng beside whatever the ports
// are plugged into.
#ifndef SHELL_CAPTURE_H_
#define SHELL_CAPTURE_H_

#include <iosfwd>
#include <string>

#include "command.h"
#include "softcard/capture/frame_capture.h"

namespace shell {

void capture(Shell& shell, Arguments& arguments, Reply& reply);

// "FILE: 12 frames", and how many were lost.
std::string capture_text(const softcard::FrameCapture& capture);

// Whether a script writes a capture to standard output, where its text then does not belong. Reads
// the script to its end.
bool captures_to_standard_output(std::istream& script);

}  // namespace shell

#endif  // SHELL_CAPTURE_H_
