// SPDX-License-Identifier: Apache-2.0
#include "command.h"

namespace shell {

std::string Arguments::take(const std::string& name) {
  if (words_.empty()) throw Error(name + " is missing");
  std::string word = std::move(words_.front());
  words_.pop_front();
  const std::string prefix = name + '=';
  if (word.compare(0, prefix.size(), prefix) == 0) word.erase(0, prefix.size());
  return word;
}

std::string Arguments::rest(const std::string& name) {
  std::string text = take(name);
  for (; !words_.empty(); words_.pop_front()) text += ' ' + words_.front();
  return text;
}

void Arguments::finish() const {
  if (!words_.empty()) throw Error("'" + words_.front() + "' is one argument too many");
}

void CommandTable::add(Command command) {
  commands_.push_back(std::move(command));
  const Command* const added = &commands_.back();
  by_name_[added->name] = added;
  const std::string c_prefix = "ctype_vorn_";
  const std::string prefix = "vorn_";
  if (added->name.compare(0, c_prefix.size(), c_prefix) == 0) {
    by_name_["c." + added->name] = added;
    by_name_["c.vorn_" + added->name.substr(c_prefix.size())] = added;
    by_name_["c." + added->name.substr(c_prefix.size())] = added;
  } else if (added->name.compare(0, prefix.size(), prefix) == 0) {
    by_name_[added->name.substr(prefix.size())] = added;
  }
}

const Command* CommandTable::find(const std::string& name) const {
  const auto found = by_name_.find(name);
  return found == by_name_.end() ? nullptr : found->second;
}

std::vector<std::string> CommandTable::names() const {
  std::vector<std::string> names;
  for (const auto& entry : by_name_) names.push_back(entry.first);
  return names;
}

}  // namespace shell
