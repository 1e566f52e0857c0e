// SPDX-License-Identifier: Apache-2.0

#include "softcard/base/refusal.h"

#include <utility>

#include "softcard/base/address_plan.h"
#include "softcard/base/text.h"

namespace softcard {

namespace {

// Lives from the first use to the end of the process, whatever is loaded before or after.
std::string& kept_reason() {
  static auto* const kReason = new std::string;
  return *kReason;
}

std::uint64_t reasons_kept = 0;

}  // namespace

const std::string& last_refusal() { return kept_reason(); }

std::uint64_t refusals() { return reasons_kept; }

namespace detail {

void Reason::add(const Usp& usp) { text_ += AddressPlan::text(usp); }

void Reason::add(const Mp& mp) { text_ += AddressPlan::text(mp); }

void Reason::add(const MacAddress& mac) { text_ += mac_text(mac); }

void Reason::add(const Ipv6Address& ip) { text_ += ipv6_text(ip); }

void Reason::keep() noexcept {
  kept_reason() = std::move(text_);
  ++reasons_kept;
}

}  // namespace detail

}  // namespace softcard
