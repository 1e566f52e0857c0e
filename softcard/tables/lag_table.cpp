// SPDX-License-Identifier: Apache-2.0

#include "softcard/tables/lag_table.h"

#include <algorithm>

#include "softcard/base/refusal.h"

namespace softcard {

LagTable::LagTable(std::size_t capacity) : lags_(capacity), number_by_id_(capacity) {
  lag_of_.fill(kNoLag);
  id_by_number_.fill(kUnpaired);
}

bool LagTable::create(unsigned& id) {
  const auto free =
      std::find_if(lags_.begin(), lags_.end(), [](const Lag& lag) { return !lag.exists; });
  if (free == lags_.end()) return refuse_full("lags", lags_.size());
  *free = Lag();
  free->exists = true;
  id = static_cast<unsigned>(free - lags_.begin());
  return true;
}

bool LagTable::require(unsigned id) const {
  return exists(id) || refuse("LAG id ", id, " does not exist");
}

bool LagTable::remove(unsigned id) {
  if (!require(id)) return false;
  for (const PortIndex port : lags_[id].set) lag_of_[port] = kNoLag;
  members_ -= lags_[id].set;
  lags_[id] = Lag();
  return true;
}

bool LagTable::add_members(unsigned id, const std::vector<PortIndex>& ports) {
  if (!require(id)) return false;
  Lag lag = lags_[id];
  for (const PortIndex port : ports) {
    if (lag.set.contains(port)) continue;
    if (lag_of_[port] != kNoLag) {
      return refuse(AddressPlan::usp_of(port), " is a member of ", text(lag_of_[port]));
    }
    if (lag.size == Lag::kMaxMembers) {
      return refuse(text(id), ": ", Lag::kMaxMembers, " members are the most");
    }
    lag.members[lag.size++] = port;
    lag.set.insert(port);
  }
  lags_[id] = lag;
  for (const PortIndex port : lag.set) lag_of_[port] = static_cast<std::uint16_t>(id);
  members_ |= lag.set;
  return true;
}

bool LagTable::remove_members(unsigned id, const std::vector<PortIndex>& ports) {
  if (!require(id)) return false;
  Lag& lag = lags_[id];
  for (const PortIndex port : ports) {
    if (!lag.set.contains(port)) {
      return refuse(AddressPlan::usp_of(port), " is no member of ", text(id));
    }
  }
  for (const PortIndex port : ports) {
    lag.set.erase(port);
    members_.erase(port);
    lag_of_[port] = kNoLag;
  }
  const auto end = std::remove_if(lag.members.begin(), lag.members.begin() + lag.size,
                                  [&](PortIndex port) { return !lag.set.contains(port); });
  lag.size = static_cast<std::uint8_t>(end - lag.members.begin());
  return true;
}

bool LagTable::set_psc(unsigned id, lag_psc_t psc) {
  if (!require(id) ||
      !in_range("balancing strategy", unsigned{psc}, LAG_PSC_SRC_MAC, LAG_PSC_SRC_DST_IP_PORT)) {
    return false;
  }
  lags_[id].psc = psc;
  return true;
}

// ---- LAG interfaces -----------------------------------------------------------------------------

Usp LagTable::usp_of(unsigned id) const {
  const bool paired = id < number_by_id_.size() && number_by_id_[id] != 0;
  return paired ? AddressPlan::lag_usp(number_by_id_[id]) : Usp(0, 0, 0);
}

std::string LagTable::text(unsigned id) const {
  const Usp usp = usp_of(id);
  return usp == Usp(0, 0, 0) ? "LAG id " + std::to_string(id) : AddressPlan::text(usp);
}

bool LagTable::id_of(const Usp& lag, unsigned& id) const {
  if (!AddressPlan::is_lag(lag) || id_by_number_[lag.port()] == kUnpaired) return false;
  id = id_by_number_[lag.port()];
  return true;
}

bool LagTable::pair(const Usp& lag, unsigned id) {
  unsigned present = 0;
  if (!AddressPlan::is_lag(lag)) return refuse(lag, " is no LAG interface");
  if (id_of(lag, present)) return refuse(lag, " has the id ", present);
  if (!require(id)) return false;
  if (number_by_id_[id] != 0) return refuse("LAG id ", id, " is ", usp_of(id));
  id_by_number_[lag.port()] = id;
  number_by_id_[id] = lag.port();
  return true;
}

bool LagTable::unpair(const Usp& lag, unsigned id) {
  unsigned present = 0;
  if (!id_of(lag, present) || present != id) {
    return refuse(lag, " does not have the id ", id);
  }
  id_by_number_[lag.port()] = kUnpaired;
  number_by_id_[id] = 0;
  return true;
}

}  // namespace softcard
