// SPDX-License-Identifier: Apache-2.0
//
// The watch over an SDK's calls: traces those of the modules that vorn_set_lcmgr_trace()
// switched on, and has chosen calls fail, so that a client can be tried against an SDK that says
// no. WatchedSdk puts it in front of an SDK. Such a failure has the reason "create_vlan: refused on
// purpose", and the trace ends a call that was refused with its reason.
//
// Operations go by their names in VornSdkBase, and each belongs to one module, which is traced
// under the name that clients use for it:
//
//   lcmgr           life cycle, events, packets, free calls
//   sif             ports and layer 3
//   rstp            spanning-tree states
//   stat            counters
//   policy          traffic settings, filters and flows
//   switch_mirror   mirrors
//   vlan            VLANs
//   lacp            LAGs
//   fdb             MAC table, locks and limits
#ifndef SOFTCARD_SDK_CALL_WATCH_H_
#define SOFTCARD_SDK_CALL_WATCH_H_

#include <cstddef>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace softcard {

class CallWatch {
 public:
  using Sink = std::function<void(const std::string& line)>;

  // The names of all operations, module by module.
  static std::vector<std::string_view> operations();

  // Switches tracing of a module, or of all of them ("trace_level_sdk", "trace_level_all"); false
  // for a name of anything else.
  bool set_trace(const std::string& target, bool on);

  // Where traced lines go; standard error unless set otherwise.
  void set_sink(Sink sink) { sink_ = std::move(sink); }

  // Has the `nth` call from now of an operation fail, 1 being the next; it then has no effect at
  // all. False for a name that is no operation, and for nth 0.
  bool fail(const std::string& operation, unsigned nth);
  // Forgets the failures that have not come yet.
  void clear_failures() { failures_.clear(); }
  // How many have not come yet.
  std::size_t pending_failures() const { return failures_.size(); }

  // ---- For who puts it in front of an SDK -------------------------------------------------------

  // Whether any call is traced or to fail: an SDK need not be wrapped while none is.
  bool watching() const { return trace_all_ || traced_modules_ != 0 || !failures_.empty(); }
  // Counts a call of the operation; true, and the reason given, when it is one to fail.
  bool fails(std::string_view operation);
  bool traces(std::string_view operation) const;
  // Writes a line of the trace.
  void write(const std::string& line) const;

 private:
  bool trace_all_ = false;
  unsigned traced_modules_ = 0;  // bits by position of the module
  Sink sink_;
  std::multimap<std::string, unsigned, std::less<>> failures_;  // calls to go, by operation
};

}  // namespace softcard

#endif  // SOFTCARD_SDK_CALL_WATCH_H_
