// SPDX-License-Identifier: Apache-2.0

#include "softcard/tables/lag_table.h"

#include <algorithm>

namespace softcard {

LagTable::LagTable(std::size_t capacity) : lags_(capacity), number_by_id_(capacity) {
  lag_of_.fill(kNoLag);
  id_by_number_.fill(kUnpaired);
}

bool LagTable::create(unsigned& id) {
  const auto free =
      std::find_if(lags_.begin(), lags_.end(), [](const Lag& lag) { return !lag.exists; });
  if (free == lags_.end()) return false;
  *free = Lag();
  free->exists = true;
  id = static_cast<unsigned>(free - lags_.begin());
  return true;
}

bool LagTable::remove(unsigned id) {
  if (!exists(id)) return false;
  for (const PortIndex port : lags_[id].set) lag_of_[port] = kNoLag;
  lags_[id] = Lag();
  return true;
}

bool LagTable::add_members(unsigned id, const std::vector<PortIndex>& ports) {
  if (!exists(id)) return false;
  Lag lag = lags_[id];
  for (const PortIndex port : ports) {
    if (lag.set.contains(port)) continue;
    if (lag_of_[port] != kNoLag || lag.size == Lag::kMaxMembers) return false;
    lag.members[lag.size++] = port;
    lag.set.insert(port);
  }
  lags_[id] = lag;
  for (const PortIndex port : lag.set) lag_of_[port] = static_cast<std::uint16_t>(id);
  return true;
}

bool LagTable::remove_members(unsigned id, const std::vector<PortIndex>& ports) {
  if (!exists(id)) return false;
  Lag& lag = lags_[id];
  for (const PortIndex port : ports) {
    if (!lag.set.contains(port)) return false;
  }
  for (const PortIndex port : ports) {
    lag.set.erase(port);
    lag_of_[port] = kNoLag;
  }
  const auto end = std::remove_if(lag.members.begin(), lag.members.begin() + lag.size,
                                  [&](PortIndex port) { return !lag.set.contains(port); });
  lag.size = static_cast<std::uint8_t>(end - lag.members.begin());
  return true;
}

bool LagTable::set_psc(unsigned id, lag_psc_t psc) {
  if (!exists(id) || psc < LAG_PSC_SRC_MAC || psc > LAG_PSC_SRC_DST_IP_PORT) return false;
  lags_[id].psc = psc;
  return true;
}

// ---- LAG interfaces -----------------------------------------------------------------------------

Usp LagTable::usp_of(unsigned id) const {
  const bool paired = id < number_by_id_.size() && number_by_id_[id] != 0;
  return paired ? AddressPlan::lag_usp(number_by_id_[id]) : Usp(0, 0, 0);
}

bool LagTable::id_of(const Usp& lag, unsigned& id) const {
  if (!AddressPlan::is_lag(lag) || id_by_number_[lag.port()] == kUnpaired) return false;
  id = id_by_number_[lag.port()];
  return true;
}

bool LagTable::pair(const Usp& lag, unsigned id) {
  unsigned present = 0;
  if (!AddressPlan::is_lag(lag) || id_of(lag, present) || !exists(id) || number_by_id_[id] != 0) {
    return false;
  }
  id_by_number_[lag.port()] = id;
  number_by_id_[id] = lag.port();
  return true;
}

bool LagTable::unpair(const Usp& lag, unsigned id) {
  unsigned present = 0;
  if (!id_of(lag, present) || present != id) return false;
  id_by_number_[lag.port()] = kUnpaired;
  number_by_id_[id] = 0;
  return true;
}

}  // namespace softcard
