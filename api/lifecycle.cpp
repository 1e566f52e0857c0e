// SPDX-License-Identifier: Apache-2.0
//
// Start and end of the line card, its address, and tracing. The strings that the API builds at
// load are in this file.

#include "vornlcapi/api/lifecycle.h"

#include "api/frame.h"
#include "api/module_names.h"
#include "api/trace.h"
#include "vorn_port_mapping.h"

using namespace vorn::detail;

// Nothing in the library reads it, so it is marked as used lest it be optimised away.
[[gnu::used]] bool api_trace_enabled = false;

// There is no SDK object yet, so nothing is looked up.
bool vorn_lcmgr_api_init(int& out) {
  return vorn_init_line_card(out) && vornsdk_create_sdk_instance();
}

bool vorn_lcmgr_api_terminate() {
  VornSdkBase* const sdk = find_sdk();
  return sdk != nullptr && vornsdk_delete_sdk_instance(sdk);
}

bool vorn_get_line_card_usp(Usp& usp) { return call<&VornSdkBase::get_line_card_usp>(usp); }

bool vorn_free_call(int number) { return call<&VornSdkBase::free_call>(number); }

// The API's own level is set here, without the SDK; the level for all is set on both sides.
bool vorn_set_lcmgr_trace(const std::string& target, bool on) {
  VornSdkBase* const sdk = find_sdk();
  if (sdk == nullptr) return false;
  if (target == kTraceLevelAll) {
    api_trace_enabled = on;
  } else if (target == kTraceLevelApi) {
    api_trace_enabled = on;
    return true;
  }
  return sdk->set_lcmgr_trace(target, on);
}
