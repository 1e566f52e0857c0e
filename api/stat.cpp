// SPDX-License-Identifier: Apache-2.0
//
// Port counters.

#include "vornlcapi/api/stat.h"

#include "api/ports.h"

using namespace vorn::detail;

// ---- The full set -------------------------------------------------------------------------------

bool vorn_get_port_stat_counter(const Usp& port, stat_type_t type, unsigned long long& value) {
  return on_port<LookupTranslate, &VornSdkBase::get_port_stat_counter>(port, type, value);
}

bool vorn_get_port_stat_counter32(const Usp& port, stat_type_t type, unsigned int& value) {
  return on_port<LookupTranslate, &VornSdkBase::get_port_stat_counter32>(port, type, value);
}

bool vorn_get_port_stat_counter_all64(const Usp& port, std::list<StatCounter64>& counters) {
  return on_port<LookupTranslate, &VornSdkBase::get_port_stat_counter_all64>(port, counters);
}

bool vorn_get_port_stat_counter_all32(const Usp& port, std::list<StatCounter32>& counters) {
  return on_port<LookupTranslate, &VornSdkBase::get_port_stat_counter_all32>(port, counters);
}

bool vorn_get_port_stat_counter_all64_ext(const Usp& port, StatCounter64* counters,
                                          unsigned int& count) {
  return on_port<LookupTranslate, &VornSdkBase::get_port_stat_counter_all64_ext>(port, counters,
                                                                                 count);
}

bool vorn_get_port_stat_counter_all32_ext(const Usp& port, StatCounter32* counters,
                                          unsigned int& count) {
  return on_port<LookupTranslate, &VornSdkBase::get_port_stat_counter_all32_ext>(port, counters,
                                                                                 count);
}

// ---- The brief set ------------------------------------------------------------------------------

bool vorn_get_port_brief_stat_counter64(const Usp& port, brief_stat_type_t type,
                                        unsigned long long& value) {
  return on_port<TranslateLookup, &VornSdkBase::get_port_brief_stat_counter64>(port, type, value);
}

bool vorn_get_port_brief_stat_counter32(const Usp& port, brief_stat_type_t type,
                                        unsigned int& value) {
  return on_port<TranslateLookup, &VornSdkBase::get_port_brief_stat_counter32>(port, type, value);
}

// `counters` is this call's own copy, so what the SDK appends ends here.
bool vorn_get_port_brief_stat_counter_all64(const Usp& port,
                                            std::list<BriefStatCounter64> counters) {
  return on_port<TranslateLookup, &VornSdkBase::get_port_brief_stat_counter_all64>(port, counters);
}

// The operation behind this name has always been the clearing one; callers rely on that.
bool vorn_get_port_brief_stat_counter_all32(
    const Usp& port,
    std::list<BriefStatCounter32> /*counters*/) {  // NOLINT(performance-unnecessary-value-param)
  return on_port<TranslateLookup, &VornSdkBase::clear_port_stat_counter>(port);
}

// ---- Clearing and collection --------------------------------------------------------------------

bool vorn_clear_port_stat_counter(const Usp& port) {
  return on_port<TranslateLookup, &VornSdkBase::clear_port_stat_counter>(port);
}

bool vorn_get_port_stat_enabled(const Usp& port, bool& enabled) {
  return on_port<TranslateLookup, &VornSdkBase::get_port_stat_enabled>(port, enabled);
}

bool vorn_set_port_stat_enable(const Usp& port, bool enable) {
  return on_members<TranslateLookup, &VornSdkBase::set_port_stat_enable>(port, enable);
}
