// SPDX-License-Identifier: Apache-2.0
#include "standard_input.h"

#include <unistd.h>

#include <ios>

#include "libxorp/eventloop.hh"
#include "shell.h"

namespace shell {

StandardInput::int_type StandardInput::underflow() {
  if (live_) wait_until_ready();
  const ssize_t count = ::read(STDIN_FILENO, bytes_.data(), bytes_.size());
  if (count < 0) throw std::ios_base::failure("standard input");
  if (count == 0) return traits_type::eof();
  setg(bytes_.data(), bytes_.data(), bytes_.data() + count);
  return traits_type::to_int_type(bytes_[0]);
}

void StandardInput::wait_until_ready() {
  EventLoop& loop = shell_.loop();
  ready_ = false;
  loop.add_ioevent_cb(XorpFd(STDIN_FILENO), IOT_READ, callback(this, &StandardInput::input_ready));
  const XorpTimer rounds = shell_.rounds();
  while (!ready_) loop.run();
  loop.remove_ioevent_cb(XorpFd(STDIN_FILENO), IOT_READ);
}

}  // namespace shell
