// SPDX-License-Identifier: Apache-2.0
//
// Access to the switch SDK object and to its LAG mapping. The host process defines all of these
// functions, with C++ linkage, and exports them to the libraries that it loads.
#ifndef PLATFORM_VORN_SDK_H_
#define PLATFORM_VORN_SDK_H_

#include "vorn_sdk_base.h"

// ---- The SDK object -----------------------------------------------------------------------------

// Stores the process's SDK object in `sdk` and returns true; returns false while there is none.
// REQUIRES: cheap, since the library asks at every call and keeps nothing.
bool vornsdk_get_sdk_instance(VornSdkBase*& sdk);

// Makes the SDK object. Called by vorn_lcmgr_api_init() after vorn_init_line_card() succeeded.
bool vornsdk_create_sdk_instance();

// Destroys the object that vornsdk_get_sdk_instance() gave. From then on that function returns
// false until another object is made.
bool vornsdk_delete_sdk_instance(VornSdkBase* sdk);

// ---- Mapping between LAG interfaces and LAG ids -------------------------------------------------

// Writes the LAG id of a LAG interface. False, and `id` untouched, when there is no mapping:
// LAG creation and deletion ask this to learn whether the LAG exists.
bool vornsdk_lag_usp_to_lag_id(const Usp& lag, unsigned int& id);

// The inverse.
bool vornsdk_lag_id_to_lag_usp(unsigned int id, Usp& lag);

// Records that `lag` has the id that the SDK's create_lag() chose. The library does not test
// that `lag` is a LAG interface.
bool vornsdk_add_lag_mapping(const Usp& lag, unsigned int id);

// Forgets it. Called after the SDK's delete_lag() and after delete_lag_from_list().
bool vornsdk_delete_lag_mapping(const Usp& lag, unsigned int id);

#endif  // PLATFORM_VORN_SDK_H_
