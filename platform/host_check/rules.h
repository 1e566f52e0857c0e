// SPDX-License-Identifier: Apache-2.0
//
// What the rules of rules.cpp work with: the host's addresses, and a verdict. Not installed.
#ifndef PLATFORM_HOST_CHECK_RULES_H_
#define PLATFORM_HOST_CHECK_RULES_H_

#include <list>
#include <string>
#include <vector>

#include "vorn_sdk.h"

namespace vorn {
namespace host_check {

// The host as the rules find it. The first rules fill it.
struct HostUnderCheck {
  std::vector<Usp> addresses;     // all that are looked at
  std::vector<Usp> physical;      // of them
  std::vector<Usp> lags;          // LAG interfaces
  std::vector<Usp> vlans;         // VLAN interfaces
  VornSdkBase* sdk = nullptr;     // null until the line card is started
  const char* library = nullptr;  // the file to load; null: none

  // Every address that is no physical port: LAG and VLAN interfaces, and one that is unknown.
  std::vector<Usp> others() const;
};

// An address and a hardware port that no host has: unknown ones, and in lists and outputs what was
// there before.
const Usp kNoUsp(0xfffffffeU, 0xfffffffeU, 0xfffffffeU);
const Mp kNoMp(0xfffffffeU, 0xfffffffeU);

std::string text(bool value);
std::string text(unsigned int value);
std::string text(const Usp& port);
std::string text(const Mp& mp);
template <class Item>
std::string text(const std::list<Item>& items) {
  std::string all;
  for (const Item& item : items) all += (all.empty() ? "" : " ") + text(item);
  return "[" + all + "]";
}

// The verdict on one rule. The first expectation that is not met is the verdict.
class Verdict {
 public:
  // Whether `got` is `expected`; `what` says what was looked at.
  template <class Value>
  bool expect(const std::string& what, const Value& expected, const Value& got) {
    const bool met = expected == got;
    if (!met) fail(what + ": expected " + text(expected) + ", got " + text(got));
    return met;
  }
  void fail(const std::string& what) {
    if (failure_.empty()) failure_ = what;
  }
  // The rule cannot be tried on this host.
  void skip(const std::string& why) { skipped_ = why; }

  const std::string& failure() const { return failure_; }
  const std::string& skipped() const { return skipped_; }

 private:
  std::string failure_;
  std::string skipped_;
};

struct Rule {
  const char* name;
  const char* words;
  void (*run)(HostUnderCheck& host, Verdict& verdict);
};

// In the order in which they have to run.
const std::vector<Rule>& rules();

}  // namespace host_check
}  // namespace vorn

#endif  // PLATFORM_HOST_CHECK_RULES_H_
