// SPDX-License-Identifier: Apache-2.0
//
// Why the card refused something, in words with the values: "VLAN 5000: above 4094".
//
// The interface of the card answers false and no more. Whoever makes that false says why:
//
//   if (vlan > kMaxVlan) return refuse("VLAN ", vlan, ": above ", kMaxVlan);
//
// The process keeps the last reason. A success leaves it as it is; refusals() tells a new one from
// an old one.
#ifndef SOFTCARD_BASE_REFUSAL_H_
#define SOFTCARD_BASE_REFUSAL_H_

#include <cstdint>
#include <string>
#include <type_traits>

namespace softcard {

// The last reason; empty before the first. Its text is valid until the next refusal.
const std::string& last_refusal();

// How many refusals there have been.
std::uint64_t refusals();

namespace detail {

// One reason while it is put together.
class Reason {
 public:
  void add(const char* words) { text_ += words; }
  void add(const std::string& words) { text_ += words; }
  template <class Number, class = std::enable_if_t<std::is_integral_v<Number>>>
  void add(Number number) {
    text_ += std::to_string(number);
  }
  // Makes it the last reason.
  void keep();

 private:
  std::string text_;
};

}  // namespace detail

// Keeps the parts, texts and numbers put behind each other, as the last reason. Always false, so
// that it stands behind `return`.
template <class... Parts>
[[gnu::cold]] bool refuse(const Parts&... parts) {
  detail::Reason reason;
  (reason.add(parts), ...);
  reason.keep();
  return false;
}

}  // namespace softcard

#endif  // SOFTCARD_BASE_REFUSAL_H_
