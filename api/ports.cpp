// SPDX-License-Identifier: Apache-2.0
//
// The steps of the port patterns, emitted once for all entry points.

#include "api/ports.h"

namespace vorn::detail {

VornSdkBase* find_sdk() {
  VornSdkBase* sdk = nullptr;
  return vornsdk_get_sdk_instance(sdk) ? sdk : nullptr;
}

Target TranslateLookup::find(const Usp& port) {
  Target to;
  if (vorn_usp_to_mp(port, to.mp)) to.sdk = find_sdk();
  return to;
}

Target LookupTranslate::find(const Usp& port) {
  Target to;
  to.sdk = find_sdk();
  if (to.sdk != nullptr && !vorn_usp_to_mp(port, to.mp)) to.sdk = nullptr;
  return to;
}

bool TranslateLookup::each(const Usp& port, Step step) {
  std::list<Mp> members;
  return vorn_usp_to_mp_list(port, members) && each_of(members, find_sdk(), step);
}

bool LookupTranslate::each(const Usp& port, Step step) {
  VornSdkBase* const sdk = find_sdk();
  std::list<Mp> members;
  return sdk != nullptr && vorn_usp_to_mp_list(port, members) && each_of(members, sdk, step);
}

bool each_listed(const std::list<Usp>& ports, Step step) {
  VornSdkBase* const sdk = find_sdk();
  std::list<Mp> mps;
  return sdk != nullptr && vorn_usp_list_to_mp_list(ports, mps) && each_of(mps, sdk, step);
}

bool each_of(const std::list<Mp>& mps, VornSdkBase* sdk, Step step) {
  if (sdk == nullptr) return false;
  for (const Mp& mp : mps) {
    if (!step(*sdk, mp)) return false;
  }
  return true;
}

bool is_physical_or_lag(const Usp& port) {
  return is_port_physical(port) || is_port_logical_lag(port);
}

}  // namespace vorn::detail
