// SPDX-License-Identifier: Apache-2.0
//
// Link aggregation.

#include "softcard/sdk/sdk.h"

#include "softcard/sdk/conversions.h"

namespace softcard {

bool SoftSdk::create_lag(unsigned int& id) { return tables_.lags.create(id); }

bool SoftSdk::delete_lag(unsigned int id) { return card_.delete_lag(id); }

bool SoftSdk::add_ports_to_lag(unsigned int id, std::list<Mp>& ports) {
  std::vector<PortIndex> members;
  return ports_of(card_.addresses(), ports, members) && card_.add_lag_members(id, members);
}

bool SoftSdk::delete_ports_from_lag(unsigned int id, std::list<Mp>& ports) {
  std::vector<PortIndex> members;
  return ports_of(card_.addresses(), ports, members) && card_.remove_lag_members(id, members);
}

bool SoftSdk::set_lag_balancing_strategy(unsigned int id, lag_psc_t psc) {
  return tables_.lags.set_psc(id, psc);
}

bool SoftSdk::get_lag_balancing_strategy(unsigned int id, lag_psc_t& psc) {
  if (!tables_.lags.require(id)) return false;
  psc = tables_.lags[id].psc;
  return true;
}

}  // namespace softcard
