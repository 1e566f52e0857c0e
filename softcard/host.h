// SPDX-License-Identifier: Apache-2.0
//
// The host side of a process that carries the software line card: how a program (a shell, a test,
// an example) chooses the card before vorn_lcmgr_api_init() makes it, and gets at it afterwards.
// Everything that platform/vorn_*.h asks of a host is defined in host.cpp.
//
//   softcard::host::use_clock(std::make_shared<softcard::VirtualClock>());
//   softcard::host::use_description_file("eight-ports.card");
//   int ports = 0;
//   if (!vorn_lcmgr_api_init(ports)) fail(softcard::host::error());
//   softcard::host::card()->run_once();
//   vorn_lcmgr_api_terminate();
#ifndef SOFTCARD_HOST_H_
#define SOFTCARD_HOST_H_

#include <memory>
#include <string>

#include "softcard/card.h"
#include "softcard/sdk/call_watch.h"

namespace softcard::host {

// ---- Before vorn_lcmgr_api_init(); none has an effect on a card that is there already ---------

// The description of the next card; without a call it is the default one.
void use_description(const CardDescription& description);
// Names a file that the next vorn_lcmgr_api_init() reads: it fails, and error() says why, when the
// file is malformed. An empty path goes back to the description set before.
void use_description_file(const std::string& path);
// The clock of the next cards; a RealClock without a call.
void use_clock(std::shared_ptr<Clock> clock);

// ---- Afterwards -------------------------------------------------------------------------------

// Why the last vorn_lcmgr_api_init() failed; empty when it did not.
const std::string& error();

// The card, from vorn_lcmgr_api_init() to vorn_lcmgr_api_terminate(); null at other times.
Card* card();

// The watch over the SDK's calls. It is the process's: traces and refusals hold from card to card.
CallWatch& call_watch();

}  // namespace softcard::host

#endif  // SOFTCARD_HOST_H_
