// SPDX-License-Identifier: Apache-2.0

#include "softcard/base/refusal.h"

#include <utility>

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

void detail::Reason::keep() {
  kept_reason() = std::move(text_);
  ++reasons_kept;
}

}  // namespace softcard
