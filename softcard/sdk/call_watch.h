// SPDX-License-Identifier: Apache-2.0
//
// Watches the calls of the SDK's operations: traces those of the modules that
// vorn_set_lcmgr_trace() switched on, and makes chosen calls be refused, so that a client can be
// tried against an SDK that says no. A call that nobody watches costs one test.
#ifndef SOFTCARD_SDK_CALL_WATCH_H_
#define SOFTCARD_SDK_CALL_WATCH_H_

#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <ostream>
#include <sstream>
#include <string>
#include <string_view>

#include "vornlcapi/types.h"

namespace softcard {

// The modules whose calls can be traced, under the names that clients use for them. Every operation
// belongs to one.
enum class Module : std::uint8_t {
  lcmgr,          // "lcmgr": life cycle, events, packets, free calls
  sif,            // "sif": ports and layer 3
  rstp,           // "rstp": spanning-tree states
  stat,           // "stat": counters
  policy,         // "policy": traffic settings, filters and flows
  switch_mirror,  // "switch_mirror"
  vlan,           // "vlan"
  lacp,           // "lacp": LAGs
  fdb,            // "fdb": MAC table, locks and limits
};
inline constexpr unsigned kModules = 9;

// How the arguments that are more than a number are shown in a traced call.
struct ShownBytes {
  const unsigned char* data;
  std::size_t count;
  std::size_t group;  // bytes between two colons
};
inline ShownBytes shown_mac(const unsigned char* mac) { return {mac, 6, 1}; }
inline ShownBytes shown_ip6(const unsigned char* ip6) { return {ip6, 16, 2}; }
struct ShownIpv4 {
  unsigned value;
};

class CallWatch {
 public:
  using Sink = std::function<void(const std::string& line)>;

  // Traces and refusals go by the operation's name in VornSdkBase. `work` carries the call out and
  // gives its result; `arguments` are shown after it, so outputs show what was written.
  template <class Work, class... Arguments>
  bool call(Module module, const char* operation, Work&& work, const Arguments&... arguments) {
    return watching_ ? watched(module, operation, work, arguments...) : work();
  }

  // Switches tracing of a module, or of all of them ("trace_level_sdk", "trace_level_all"); false
  // for a name of anything else.
  bool set_trace(const std::string& target, bool on);

  // Where traced lines go; standard error unless set otherwise.
  void set_sink(Sink sink) { sink_ = std::move(sink); }

  // Has the `nth` call from now of an operation refused, 1 being the next; it then has no effect
  // at all. False for a name that is no operation, and for nth 0.
  bool refuse(const std::string& operation, unsigned nth);
  // Forgets the refusals that have not come yet.
  void clear_refusals();
  // How many have not come yet.
  std::size_t pending_refusals() const { return refusals_.size(); }

 private:
  // Out of line, so that the ordinary way of a call stays small.
  template <class Work, class... Arguments>
  [[gnu::noinline, gnu::cold]] bool watched(Module module, const char* operation, Work& work,
                                            const Arguments&... arguments) {
    const bool result = !refuses(operation) && work();
    if (!traces(module)) return result;
    std::ostringstream line;
    line << operation << '(';
    [[maybe_unused]] const char* separator = "";
    ((line << separator, show(line, arguments), separator = ", "), ...);
    line << ") = " << (result ? "true" : "false");
    write(line.str());
    return result;
  }

  bool traces(Module module) const {
    return trace_all_ || (trace_modules_ >> static_cast<unsigned>(module) & 1) != 0;
  }
  bool refuses(const char* operation);
  void write(const std::string& line) const;
  void settle() { watching_ = trace_all_ || trace_modules_ != 0 || !refusals_.empty(); }

  static void show(std::ostream& out, const Mp& mp);
  static void show(std::ostream& out, const Usp& usp);
  static void show(std::ostream& out, const std::list<Mp>& ports);
  static void show(std::ostream& out, ShownBytes bytes);
  static void show(std::ostream& out, ShownIpv4 ip);
  static void show(std::ostream& out, bool flag) { out << (flag ? "true" : "false"); }
  static void show(std::ostream& out, const std::string& text) { out << text; }
  template <class Number>
  static void show(std::ostream& out, const Number& number) {
    out << +number;
  }

  bool watching_ = false;
  bool trace_all_ = false;
  unsigned trace_modules_ = 0;  // bits by Module
  Sink sink_;
  std::multimap<std::string, unsigned, std::less<>> refusals_;  // calls to go, by operation
};

}  // namespace softcard

#endif  // SOFTCARD_SDK_CALL_WATCH_H_
