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

// The question that was answered no last; `explain` is null when there is none.
struct Question {
  Usp asked{0, 0, 0};
  bool (*explain)(const Usp& asked) = nullptr;
};

Question& open_question() {
  static Question question;
  return question;
}

// Puts a no into words that nothing followed.
void explain_answer() {
  const Question question = std::exchange(open_question(), Question());
  if (question.explain != nullptr) question.explain(question.asked);
}

}  // namespace

const std::string& last_refusal() {
  explain_answer();
  return kept_reason();
}

std::uint64_t refusals() {
  explain_answer();
  return reasons_kept;
}

bool answer(bool yes, const Usp& asked, bool (*explain)(const Usp& asked)) noexcept {
  open_question() = yes ? Question() : Question{asked, explain};
  return yes;
}

void forget_answer() noexcept { open_question().explain = nullptr; }

namespace detail {

void Reason::add(const Usp& usp) { text_ += AddressPlan::text(usp); }

void Reason::add(const Mp& mp) { text_ += AddressPlan::text(mp); }

void Reason::add(const MacAddress& mac) { text_ += mac_text(mac); }

void Reason::add(const Ipv6Address& ip) { text_ += ipv6_text(ip); }

void Reason::keep() noexcept {
  kept_reason() = std::move(text_);
  ++reasons_kept;
  forget_answer();
}

}  // namespace detail

}  // namespace softcard
