// SPDX-License-Identifier: Apache-2.0
//
// The steps of the port patterns, emitted once for all entry points.

#include "api/ports.h"

namespace vorn::detail {

bool TranslateLookup::find(const Usp& port, Target& target) {
  return vorn_usp_to_mp(port, target.mp) && get_sdk(target.sdk);
}

bool LookupTranslate::find(const Usp& port, Target& target) {
  return get_sdk(target.sdk) && vorn_usp_to_mp(port, target.mp);
}

bool TranslateLookup::each(const Usp& port, Step step) {
  VornSdkBase* sdk = nullptr;
  std::list<Mp> members;
  return vorn_usp_to_mp_list(port, members) && get_sdk(sdk) && each_of(members, *sdk, step);
}

bool LookupTranslate::each(const Usp& port, Step step) {
  VornSdkBase* sdk = nullptr;
  std::list<Mp> members;
  return get_sdk(sdk) && vorn_usp_to_mp_list(port, members) && each_of(members, *sdk, step);
}

bool each_of(const std::list<Mp>& mps, VornSdkBase& sdk, Step step) {
  for (const Mp& mp : mps) {
    if (!step(sdk, mp)) return false;
  }
  return true;
}

bool each_listed(const std::list<Usp>& ports, Step step) {
  VornSdkBase* sdk = nullptr;
  std::list<Mp> mps;
  return get_sdk(sdk) && vorn_usp_list_to_mp_list(ports, mps) && each_of(mps, *sdk, step);
}

bool is_physical_or_lag(const Usp& port) {
  return is_port_physical(port) || is_port_logical_lag(port);
}

}  // namespace vorn::detail
