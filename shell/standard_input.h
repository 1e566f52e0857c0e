// SPDX-License-Identifier: Apache-2.0
//
// Standard input for scripts. While it has nothing to read, a card in real time goes on.
#ifndef SHELL_STANDARD_INPUT_H_
#define SHELL_STANDARD_INPUT_H_

#include <array>
#include <streambuf>

#include "libxorp/ioevents.hh"

namespace shell {

class Shell;

class StandardInput : public std::streambuf {
 public:
  // `live` has the card do what is to be done while the input is waited for.
  StandardInput(Shell& shell, bool live) : shell_(shell), live_(live) {}

 protected:
  // A stream that reads from here is bad() when the system cannot read, and errno says why.
  int_type underflow() override;

 private:
  void wait_until_ready();
  void input_ready(XorpFd, IoEventType) { ready_ = true; }

  Shell& shell_;
  bool live_;
  bool ready_ = false;
  std::array<char, 4096> bytes_{};
};

}  // namespace shell

#endif  // SHELL_STANDARD_INPUT_H_
