// SPDX-License-Identifier: Apache-2.0
//
// A call of an SDK operation as one line of a trace: "create_vlan(10) = true".
#ifndef SOFTCARD_SDK_CALL_TEXT_H_
#define SOFTCARD_SDK_CALL_TEXT_H_

#include <list>
#include <string>
#include <type_traits>

#include "operations/operations.h"
#include "softcard/base/text.h"
#include "vornlcapi/types.h"

namespace softcard {

class CallText {
 public:
  explicit CallText(const char* operation) : text_(std::string(operation) + "(") {}

  // Adds the next argument as what it means. Those that have no text (functions, user data, arrays
  // of counters) are left out.
  template <class Other>
  void add(const Other& other, vorn::operations::Plain) {
    add(other);
  }
  void add(const unsigned char* mac, vorn::operations::Mac) {
    append(mac_text(MacAddress::from_bytes(mac)));
  }
  void add(unsigned int ip, vorn::operations::Ip4) { append(ipv4_text(ip)); }
  void add(const unsigned char* ip6, vorn::operations::Ip6) {
    append(ipv6_text(Ipv6Address::from_bytes(ip6)));
  }
  void add(const unsigned char* bitmap, vorn::operations::VlanBitmap);  // the numbers of the VLANs
  void add(bool flag) { append(flag ? "true" : "false"); }
  void add(const Mp& mp);
  void add(const Usp& usp);
  void add(const std::list<Mp>& ports);
  void add(const std::string& name) { append(name); }
  void add(const unsigned char (&mac)[6]) { add(mac, vorn::operations::Mac()); }
  void add(const Packet& packet);            // its length and type
  void add(const of_flow_mp_s& flow);        // the flags of its match
  void add(const of_action_param_s& param);  // the two words that actions use
  template <class Other>
  void add(const Other& other) {
    if constexpr (std::is_integral_v<Other>) append(std::to_string(other));
    if constexpr (std::is_enum_v<Other>) append(std::to_string(static_cast<unsigned>(other)));
  }
  // The next argument is an output that was not written.
  void add_unknown() { append("?"); }

  // The whole line; `reason` is why the result is false, or empty: "create_vlan(0) = false: VLAN 0:
  // below 1".
  std::string finish(bool result, const std::string& reason) const {
    return text_ + ") = " + (result ? "true" : "false") + (reason.empty() ? "" : ": ") + reason;
  }

 private:
  void append(const std::string& argument);

  std::string text_;
  bool first_ = true;
};

}  // namespace softcard

#endif  // SOFTCARD_SDK_CALL_TEXT_H_
