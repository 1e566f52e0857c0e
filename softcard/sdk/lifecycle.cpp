// SPDX-License-Identifier: Apache-2.0
//
// The switch as a whole, and tracing.

#include "softcard/sdk/sdk.h"

namespace softcard {

bool SoftSdk::get_line_card_usp(Usp& usp) {
  usp = Usp(kUnit, kPortSlot, 0);
  return true;
}

bool SoftSdk::free_call(int number) {
  if (number != kFreeCallClearCounters) return refuse("there is no free call ", number);
  card_.clear_counters();
  return true;
}

bool SoftSdk::set_lcmgr_trace(const std::string& target, bool on) {
  return watch_.set_trace(target, on);
}

}  // namespace softcard
