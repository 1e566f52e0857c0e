// SPDX-License-Identifier: Apache-2.0
//
// Which member of a LAG a frame leaves through.
#ifndef SOFTCARD_PIPELINE_LOAD_BALANCE_H_
#define SOFTCARD_PIPELINE_LOAD_BALANCE_H_

#include "softcard/base/net_types.h"
#include "softcard/base/port_set.h"
#include "softcard/frames/frame.h"
#include "softcard/frames/parser.h"
#include "softcard/tables/lag_table.h"

namespace softcard {

// The member that a frame leaves through, of those that are eligible; kNoPort when none is. Frames
// that are equal in what the LAG's criterion names leave through one member, and a frame whose
// usual member is eligible leaves through it whatever the others do.
PortIndex choose_member(const Headers& headers, const Frame& frame, const Lag& lag,
                        const PortSet& eligible);

}  // namespace softcard

#endif  // SOFTCARD_PIPELINE_LOAD_BALANCE_H_
