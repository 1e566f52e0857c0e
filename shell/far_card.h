// SPDX-License-Identifier: Apache-2.0
//
// A card in another process, as the shell works on it: the library's entry points reach it by
// themselves, and what the card's own commands do is carried out there.
#ifndef SHELL_FAR_CARD_H_
#define SHELL_FAR_CARD_H_

#include <cstdint>
#include <string>
#include <vector>

#include "command.h"
#include "remote/client.h"
#include "remote/wire.h"
#include "value.h"

namespace shell {

// A reply on its way from one shell to another.
vorn::remote::Bytes bytes_of(const Reply& reply);
// Error when the bytes are none.
Reply reply_of(const vorn::remote::Bytes& bytes);

class FarCard {
 public:
  explicit FarCard(vorn::remote::Client& client) : client_(client) {}

  // Whether a command is carried out there: it needs the card itself, and not the shell alone.
  static bool carries_out(const Command& command, const Arguments& arguments);
  // Error when it cannot be run.
  Reply run(const std::vector<std::string>& words);

  // Has the card do all that waits, and calls the registered functions for what came of it.
  void settle();
  // Calls them for what has come.
  void take_events() { client_.dispatch(); }

  const std::string& last_refusal() { return client_.last_refusal(); }
  std::uint64_t refusals() { return client_.refusals(); }

 private:
  vorn::remote::Client& client_;
};

}  // namespace shell

#endif  // SHELL_FAR_CARD_H_
