// SPDX-License-Identifier: Apache-2.0
//
// Link aggregation groups: their members in the order they were added, and how a frame's member is
// chosen. A port belongs to one LAG at most. LAGs have ids from 0; a new one gets the lowest free.
// Which LAG interface (1/2/n) has which id is the host's to say: it pairs them.
#ifndef SOFTCARD_TABLES_LAG_TABLE_H_
#define SOFTCARD_TABLES_LAG_TABLE_H_

#include <array>
#include <cstdint>
#include <vector>

#include "softcard/base/address_plan.h"
#include "softcard/base/net_types.h"
#include "softcard/base/port_set.h"
#include "vornlcapi/enums.h"

namespace softcard {

struct Lag {
  static constexpr unsigned kMaxMembers = 32;

  bool exists = false;
  std::uint8_t size = 0;
  lag_psc_t psc = LAG_PSC_SRC_DST_MAC;
  std::array<PortIndex, kMaxMembers> members{};  // the first `size` places
  PortSet set;                                   // the same ports
};

class LagTable {
 public:
  static constexpr std::uint16_t kNoLag = 0xffff;

  explicit LagTable(std::size_t capacity);

  // ---- What the pipeline asks -------------------------------------------------------------------

  // The LAG that a port belongs to, or kNoLag.
  std::uint16_t lag_of(PortIndex port) const { return lag_of_[port]; }
  // The ports that belong to a LAG.
  const PortSet& members() const { return members_; }
  // Where frames for a destination go: while a port is a member of a LAG, that is the LAG.
  Destination resolve(Destination destination) const {
    if (!destination.is_port() || lag_of_[destination.number] == kNoLag) return destination;
    return Destination::lag(lag_of_[destination.number]);
  }
  // Whether frames for `destination` go to `resolved`, which resolve() gave.
  bool leads_to(Destination destination, Destination resolved) const {
    return destination == resolved || resolve(destination) == resolved;
  }
  // `id` is below id_count().
  const Lag& operator[](std::size_t id) const { return lags_[id]; }
  std::size_t id_count() const { return lags_.size(); }

  // ---- Settings ---------------------------------------------------------------------------------

  bool exists(unsigned id) const { return id < lags_.size() && lags_[id].exists; }
  // exists(), and the reason of a refusal when it does not.
  bool require(unsigned id) const;

  // False when there is no free id.
  bool create(unsigned& id);
  // False when it does not exist. Its members leave it.
  bool remove(unsigned id);
  // Makes ports members, in their order; present members count as added. False, and nothing
  // changed, when the LAG does not exist, a port belongs to another one, or it would have too many.
  bool add_members(unsigned id, const std::vector<PortIndex>& ports);
  // False, and nothing changed, when the LAG does not exist or a port is no member.
  bool remove_members(unsigned id, const std::vector<PortIndex>& ports);
  // False when the LAG or the strategy does not exist.
  bool set_psc(unsigned id, lag_psc_t psc);

  // ---- LAG interfaces ---------------------------------------------------------------------------

  // A LAG in reasons: "lag/2", or "LAG id 1" while it has no address.
  std::string text(unsigned id) const;
  // The LAG interface that has an id; 0/0/0 when none has.
  Usp usp_of(unsigned id) const;
  // The id of a LAG interface; false, and `id` untouched, when it has none.
  bool id_of(const Usp& lag, unsigned& id) const;
  // False for an address that is no LAG interface, one that has an id, and an id that is paired
  // or no LAG's.
  bool pair(const Usp& lag, unsigned id);
  // False when the two are no pair.
  bool unpair(const Usp& lag, unsigned id);

 private:
  static constexpr unsigned kUnpaired = UINT32_MAX;

  std::vector<Lag> lags_;  // by id
  std::array<std::uint16_t, kMaxPorts> lag_of_;
  PortSet members_;
  std::array<unsigned, kMaxLagNumber + 1> id_by_number_;  // kUnpaired where none
  std::vector<unsigned> number_by_id_;                    // 0 where none
};

}  // namespace softcard

#endif  // SOFTCARD_TABLES_LAG_TABLE_H_
