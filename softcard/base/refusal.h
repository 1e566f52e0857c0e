// SPDX-License-Identifier: Apache-2.0
//
// Why the card refused something, in words with the values: "VLAN 5000: above 4094".
//
// The interface of the card answers false and no more. Whoever makes that false says why:
//
//   if (vlan > kMaxVlan) return refuse("VLAN ", vlan, ": above ", kMaxVlan);
//
// The process keeps the last reason. A success leaves it as it is; refusals() tells a new one from
// an old one. Each false of an operation or of the port mapping gives one reason: the innermost
// function that knows it does, and those that called it hand the false on.
//
// A question is no refusal: the library asks whether an address is a port, and a no may be all that
// a call fails for, or only decide how it goes on. answer() keeps the no without words.
//
// A reason names the value and says what is wrong with it ("MTU 63: below 64"), or says what is or
// is not there ("1/1/3 is no member of VLAN 10"). Ports are as in scripts, and tables have the
// names of the card description ("fdb: full, 131072 entries").
#ifndef SOFTCARD_BASE_REFUSAL_H_
#define SOFTCARD_BASE_REFUSAL_H_

#include <cstddef>
#include <cstdint>
#include <new>
#include <string>
#include <string_view>
#include <type_traits>

#include "softcard/base/net_types.h"
#include "vornlcapi/types.h"

namespace softcard {

// The last reason; empty before the first. Its text is valid until the next refusal.
const std::string& last_refusal();

// How many refusals there have been.
std::uint64_t refusals();

// Answers a question about an address; gives `yes` back. A no becomes the last reason, in the words
// that `explain` gives to refuse(), if one of the two functions above is called before the next
// answer or refusal.
bool answer(bool yes, const Usp& asked, bool (*explain)(const Usp& asked)) noexcept;

// Forgets a no: the call goes on behind it.
void forget_answer() noexcept;

namespace detail {

// One reason while it is put together.
class Reason {
 public:
  void add(std::string_view words) { text_ += words; }
  template <class Number,
            class = std::enable_if_t<std::is_integral_v<Number> || std::is_enum_v<Number>>>
  void add(Number number) {
    text_ += std::to_string(+number);
  }
  void add(const Usp& usp);  // "1/1/3", "lag/2", "vlan/10"
  void add(const Mp& mp);    // the port that it is, or module:port
  void add(const MacAddress& mac);
  void add(const Ipv6Address& ip);
  // Makes it the last reason.
  void keep() noexcept;

  void set_out_of_memory() noexcept { text_ = "no memory"; }  // needs none

 private:
  std::string text_;
};

}  // namespace detail

// Keeps the parts, texts, numbers and addresses put behind each other, as the last reason. Always
// false, so that it stands behind `return`. Throws nothing: without memory the reason says so.
template <class... Parts>
[[gnu::cold]] bool refuse(const Parts&... parts) noexcept {
  detail::Reason reason;
  try {
    (reason.add(parts), ...);
  } catch (const std::bad_alloc&) {
    reason.set_out_of_memory();
  }
  reason.keep();
  return false;
}

// Whether `value` is `lowest` to `highest`; keeps why not: "VLAN 5000: above 4094".
template <class Number>
bool in_range(const char* what, Number value, std::common_type_t<Number> lowest,
              std::common_type_t<Number> highest) {
  if (value < lowest) return refuse(what, " ", value, ": below ", lowest);
  if (value > highest) return refuse(what, " ", value, ": above ", highest);
  return true;
}

// Keeps that a table has no room; false. `table` is its name in a card description.
inline bool refuse_full(const char* table, std::size_t entries) {
  return refuse(table, ": full, ", entries, " entries");
}

}  // namespace softcard

#endif  // SOFTCARD_BASE_REFUSAL_H_
