// SPDX-License-Identifier: Apache-2.0
//
// Mirror sessions: which frames of a port are copied to which other port. A mirrored port has one
// mirror-to port; a mirror-to port may serve several.
#ifndef SOFTCARD_TABLES_MIRROR_TABLE_H_
#define SOFTCARD_TABLES_MIRROR_TABLE_H_

#include <array>

#include "softcard/base/address_plan.h"
#include "softcard/base/net_types.h"
#include "softcard/base/port_set.h"
#include "softcard/base/refusal.h"
#include "vornlcapi/enums.h"

namespace softcard {

class MirrorTable {
 public:
  struct Session {
    mirror_type_t type = MIRROR_TYPE_NONE;
    PortIndex to = 0;  // while the type is not none
  };

  // The ports whose frames are copied as they come in, and as they go out.
  const PortSet& ingress() const { return ingress_; }
  const PortSet& egress() const { return egress_; }
  const Session& operator[](PortIndex mirrored) const { return sessions_[mirrored]; }

  // False for a type that there is not and for a port mirrored to itself. MIRROR_TYPE_NONE ends
  // the mirroring whichever port is named as `to`.
  bool set(PortIndex to, PortIndex mirrored, mirror_type_t type) {
    if (!in_range("mirror type", unsigned{type}, 0, MIRROR_TYPE_BOTH)) return false;
    if (type != MIRROR_TYPE_NONE && to == mirrored) {
      return refuse(AddressPlan::usp_of(to), " cannot be mirrored to itself");
    }
    sessions_[mirrored] = {type, to};
    ingress_.assign(mirrored, (type & MIRROR_TYPE_INGRESS) != 0);
    egress_.assign(mirrored, (type & MIRROR_TYPE_EGRESS) != 0);
    return true;
  }

 private:
  std::array<Session, kMaxPorts> sessions_;  // by mirrored port
  PortSet ingress_;
  PortSet egress_;
};

}  // namespace softcard

#endif  // SOFTCARD_TABLES_MIRROR_TABLE_H_
