// SPDX-License-Identifier: Apache-2.0

#include "service/commands.h"

#include "shell/far_card.h"
#include "softcard/base/address_plan.h"
#include "softcard/base/refusal.h"
#include "softcard/host.h"

namespace vorn::service {
namespace {

// Runs a command of a client's shell. An empty name only has the card do what waits.
bool run_command(shell::Shell& shell, const std::vector<std::string>& words, bool read_only,
                 const std::function<void(std::string_view)>& part, std::string& why) {
  const std::string& name = words.front();
  const shell::Command* const command = shell.commands().find(name);
  if (!name.empty() && (command == nullptr || command->group != "card")) {
    why = name + ": no command of the card";
    return false;
  }
  if (read_only && !name.empty() && name != "show") {
    why = name + ": the connection is read-only";
    return false;
  }
  // Both write to the standard output of the card's own process.
  if (name == "monitor" || (name == "capture" && words.size() > 1 && words[1] == "-")) {
    why = name + ": only in the shell that has the card";
    return false;
  }
  try {
    remote::Bytes reply;
    if (!name.empty()) reply = shell::bytes_of(shell.run(words));
    shell.run_card();
    part({reinterpret_cast<const char*>(reply.data()), reply.size()});
    return true;
  } catch (const shell::Error& error) {
    why = error.what();
    return false;
  }
}

}  // namespace

Options options_for(shell::Shell& shell) {
  const softcard::AddressPlan& addresses = softcard::host::card()->addresses();
  Options options;
  options.init_value = addresses.port_count();
  for (softcard::PortIndex port = 0; port < addresses.port_count(); ++port) {
    options.ports.push_back(softcard::AddressPlan::usp_of(port));
  }
  options.last_refusal = [] { return softcard::last_refusal(); };
  options.refusals = [] { return softcard::refusals(); };
  options.command = [&shell](const std::vector<std::string>& words, bool read_only,
                             const std::function<void(std::string_view)>& part, std::string& why) {
    return run_command(shell, words, read_only, part, why);
  };
  return options;
}

}  // namespace vorn::service
