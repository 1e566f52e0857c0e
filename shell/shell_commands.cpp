// SPDX-License-Identifier: Apache-2.0
//
// The commands that concern the shell alone.
#include <algorithm>

#include "codec.h"
#include "command.h"
#include "interrupt.h"
#include "shell.h"

namespace shell {

namespace {

std::string one_line(const Command& command) {
  std::string text = command.name;
  if (!command.usage.empty()) text += ' ' + command.usage;
  return text;
}

// Commands under their call; `c` marks those that the C binding has too, under c. and their name.
void list_group(const CommandTable& table, const std::string& group, Reply& reply) {
  std::vector<const Command*> commands;
  std::size_t width = 0;
  for (const Command& command : table.all()) {
    // An entry point of both bindings is listed once.
    const std::string c_prefix = "ctype_";
    const bool twin = command.name.compare(0, c_prefix.size(), c_prefix) == 0 &&
                      table.find(command.name.substr(c_prefix.size())) != nullptr;
    if (command.group != group || twin) continue;
    commands.push_back(&command);
    width = std::max(width, one_line(command).size());
  }
  width = std::min<std::size_t>(width, 60);
  for (const Command* command : commands) {
    std::string line = one_line(*command);
    line.append(line.size() < width ? width - line.size() + 1 : 1, ' ');
    line += table.find("ctype_" + command->name) != nullptr ? "c " : "  ";
    reply.say(line + command->help);
  }
}

void help(Shell& shell, Arguments& arguments, Reply& reply) {
  const CommandTable& table = shell.commands();
  if (arguments.empty()) {
    reply.say("help GROUP lists the commands of a group, help COMMAND says how it is called.");
    std::vector<std::string> groups;
    for (const Command& command : table.all()) {
      if (std::find(groups.begin(), groups.end(), command.group) == groups.end()) {
        groups.push_back(command.group);
      }
    }
    for (const std::string& group : groups) {
      const auto count = std::count_if(table.all().begin(), table.all().end(),
                                       [&](const Command& c) { return c.group == group; });
      reply.say("  " + group + std::string(12 - group.size(), ' ') + std::to_string(count) +
                " commands");
    }
    return;
  }
  const std::string name = arguments.take("name");
  arguments.finish();
  if (const Command* command = table.find(name)) {
    reply.say(one_line(*command));
    reply.say("  " + command->help);
    for (const Word& word : command->words) {
      if (!word.choices.empty()) reply.say("  " + word.name + ": " + joined(word.choices, " "));
    }
    // A command may have the name of a group.
  }
  list_group(table, name, reply);
  if (!reply.lines.empty()) return;
  std::vector<std::string> names = table.names();
  const std::string near = nearest(name, names);
  throw Error("'" + name + "' is neither a command nor a group" +
              (near.empty() ? "" : "; did you mean " + near + "?"));
}

void entry_points(Shell& shell, Arguments& arguments, Reply& reply) {
  arguments.finish();
  for (const Command& command : shell.commands().all()) {
    if (command.entry_point != nullptr) reply.say(command.name);
  }
}

void repeat(Shell& shell, Arguments& arguments, Reply& reply) {
  const auto count = parse_number(arguments.take("count"), "count", 0, 1000000000);
  std::vector<std::string> words;
  while (!arguments.empty()) words.push_back(arguments.take("command"));
  if (words.empty()) throw Error("command is missing");
  for (std::int64_t i = 0; i < count && reply.failure.empty() && reply.result != false; ++i) {
    if (interrupted()) throw Error("interrupted");
    reply = shell.run(words);
  }
}

}  // namespace

void add_shell_commands(CommandTable& table) {
  const auto add = [&table](const char* name, const char* usage, const char* help_line,
                            decltype(Command::run) run) {
    table.add({name, "shell", usage, help_line, std::move(run)});
  };
  add("help", "[GROUP|COMMAND]", "what there is, and how it is called", help);
  add("source", "FILE", "runs a script", [](Shell& shell, Arguments& arguments, Reply&) {
    const std::string path = arguments.take("file");
    arguments.finish();
    shell.run_file(path);
    if (interrupted()) throw Error("interrupted");
  });
  add("echo", "WORDS", "prints the words", [](Shell&, Arguments& arguments, Reply& reply) {
    reply.say(arguments.empty() ? "" : arguments.rest("words"));
  });
  add("!", "COMMAND", "a command that must fail",
      [](Shell&, Arguments&, Reply&) { throw Error("stands in front of a whole command"); });
  add("verbose", "on|off", "prints each command in front of its answer",
      [](Shell& shell, Arguments& arguments, Reply&) {
        const bool on = parse_flag(arguments.take("flag"), "flag");
        arguments.finish();
        shell.set_echo(on);
      });
  add("repeat", "COUNT COMMAND", "runs a command so many times, up to its first failure", repeat);
  add("record", "FILE|off", "writes every call from now on to a file, one line each",
      [](Shell& shell, Arguments& arguments, Reply&) {
        const std::string path = arguments.take("file");
        arguments.finish();
        shell.record(path == "off" ? "" : path);
      });
  add("replay", "FILE", "runs a recording again and tells every difference",
      [](Shell& shell, Arguments& arguments, Reply& reply) {
        const std::string path = arguments.take("file");
        arguments.finish();
        shell.replay(path, reply);
      });
  add("entry_points", "", "the names of all entry points of the library", entry_points);
  for (const char* name : {"quit", "exit"}) {
    add(name, "", "ends the shell", [](Shell& shell, Arguments& arguments, Reply&) {
      arguments.finish();
      shell.quit();
    });
  }
}

}  // namespace shell
