// SPDX-License-Identifier: Apache-2.0
//
// A command of the shell, the words that it is given, and the table of all commands.
#ifndef SHELL_COMMAND_H_
#define SHELL_COMMAND_H_

#include <deque>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "text.h"
#include "value.h"

namespace shell {

class Shell;

// The words behind a command's name, taken one by one.
class Arguments {
 public:
  explicit Arguments(std::vector<std::string> words) : words_(words.begin(), words.end()) {}

  bool empty() const { return words_.empty(); }
  const std::string& peek() const { return words_.front(); }

  // The next word; Error "NAME is missing" when there is none. A word `name=value` stands for its
  // value.
  std::string take(const std::string& name);
  // All words that are left, joined with spaces; Error when there is none.
  std::string rest(const std::string& name);
  // Error when a word is left.
  void finish() const;

 private:
  std::deque<std::string> words_;
};

// A word of a command: its name and what it may be, where that is a choice of a few.
struct Word {
  std::string name;
  std::vector<std::string> choices;
};

struct Command {
  std::string name;   // as it is called
  std::string group;  // its family, or `card`, or `shell`
  std::string usage;  // arguments, in capitals
  std::string help;   // one line
  std::function<void(Shell&, Arguments&, Reply&)> run;
  void (*entry_point)() = nullptr;  // what it calls, for entry points
  std::vector<Word> words{};        // of entry points
  // Whether a recording has it besides the entry points: it changes the card.
  bool changes_card = false;
};

class CommandTable {
 public:
  void add(Command command);

  // The command with that name: its own, or for entry points without vorn_ or with c. for
  // ctype_vorn_. Null when there is none.
  const Command* find(const std::string& name) const;

  const std::deque<Command>& all() const { return commands_; }  // in the order of the groups
  std::vector<std::string> names() const;

 private:
  std::deque<Command> commands_;
  std::map<std::string, const Command*> by_name_;
};

// Each file of commands adds its rows.
void add_lifecycle_commands(CommandTable& table);
void add_event_commands(CommandTable& table);
void add_port_commands(CommandTable& table);
void add_stp_commands(CommandTable& table);
void add_stat_commands(CommandTable& table);
void add_traffic_commands(CommandTable& table);
void add_vlan_commands(CommandTable& table);
void add_lag_commands(CommandTable& table);
void add_fdb_commands(CommandTable& table);
void add_l3_commands(CommandTable& table);
void add_flow_commands(CommandTable& table);
void add_filter_commands(CommandTable& table);
void add_packet_commands(CommandTable& table);
void add_card_commands(CommandTable& table);
void add_show_commands(CommandTable& table);
void add_shell_commands(CommandTable& table);

}  // namespace shell

#endif  // SHELL_COMMAND_H_
