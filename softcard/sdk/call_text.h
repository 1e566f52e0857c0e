// SPDX-License-Identifier: Apache-2.0
//
// A call of an SDK operation as one line of a trace: "create_vlan(10) = true".
#ifndef SOFTCARD_SDK_CALL_TEXT_H_
#define SOFTCARD_SDK_CALL_TEXT_H_

#include <list>
#include <string>
#include <type_traits>

#include "softcard/base/text.h"
#include "vornlcapi/types.h"

namespace softcard {

// Arguments whose own type does not tell what they are. They become what an operation takes.
template <class Byte>
struct ShownMac {
  Byte* bytes;                              // 6; an output unless `Byte` is const
  operator Byte*() const { return bytes; }  // NOLINT(google-explicit-constructor)
};
template <class Byte>
ShownMac(Byte*) -> ShownMac<Byte>;

struct ShownIp6 {
  const unsigned char* bytes;                              // 16
  operator const unsigned char*() const { return bytes; }  // NOLINT(google-explicit-constructor)
};

struct ShownIp4 {
  unsigned int number;
  operator unsigned int() const { return number; }  // NOLINT(google-explicit-constructor)
};

template <class Byte>
struct ShownVlans {
  Byte* bytes;                              // 512
  operator Byte*() const { return bytes; }  // NOLINT(google-explicit-constructor)
};
template <class Byte>
ShownVlans(Byte*) -> ShownVlans<Byte>;

class CallText {
 public:
  explicit CallText(const char* operation) : text_(std::string(operation) + "(") {}

  // Adds the next argument. Those that have no text (functions, user data, arrays of counters) are
  // left out.
  void add(bool flag) { append(flag ? "true" : "false"); }
  void add(const Mp& mp);
  void add(const Usp& usp);
  void add(const std::list<Mp>& ports);
  void add(const std::string& name) { append(name); }
  void add(const unsigned char (&mac)[6]) { add(ShownMac{&mac[0]}); }
  template <class Byte>
  void add(const ShownMac<Byte>& mac) {
    append(mac_text(MacAddress::from_bytes(mac.bytes)));
  }
  void add(const ShownIp6& ip6) { append(ipv6_text(Ipv6Address::from_bytes(ip6.bytes))); }
  void add(const ShownIp4& ip);
  template <class Byte>
  void add(const ShownVlans<Byte>& vlans) {
    append_vlans(vlans.bytes);
  }
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
  void append_vlans(const unsigned char* bitmap);

  std::string text_;
  bool first_ = true;
};

}  // namespace softcard

#endif  // SOFTCARD_SDK_CALL_TEXT_H_
