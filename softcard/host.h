// SPDX-License-Identifier: Apache-2.0
//
// The host side of a process that carries the software line card: how a program (a shell, a test,
// an example) chooses the card before vorn_lcmgr_api_init() makes it, and gets at it afterwards.
// Everything that platform/vorn_*.h asks of a host is defined in host.cpp.
//
//   #include <cstdio>
//   #include "softcard/cables/memory_cable.h"
//   #include "softcard/host.h"
//   #include "vornlcapi/api.h"
//
//   int main() {
//     softcard::host::use_clock(std::make_shared<softcard::VirtualClock>());
//     int ports = 0;
//     softcard::host::use_description_file("missing.card");
//     if (!vorn_lcmgr_api_init(ports)) std::puts(softcard::host::error().c_str());
//     softcard::host::use_description_file("");  // the card of 48 ports and 4 uplinks after all
//     if (!vorn_lcmgr_api_init(ports)) return 1;
//
//     const std::list<Usp> both = {Usp(1, 1, 0), Usp(1, 1, 1)};
//     if (!vorn_create_vlan(10) || !vorn_add_ports_to_vlan(10, {}, both)) return 1;
//     if (!vorn_set_ports_pvid(both, 10)) return 1;
//     softcard::Card& card = *softcard::host::card();
//     auto& station0 = dynamic_cast<softcard::MemoryCable&>(*card.cable(0));
//     auto& station1 = dynamic_cast<softcard::MemoryCable&>(*card.cable(1));
//     std::vector<std::uint8_t> broadcast(60, 0xff);
//     broadcast[6] = 0x02;  // from an address of its own
//     station0.send(broadcast);
//     card.run_once();
//     std::printf("%zu frame(s) came out of 1/1/1\n", station1.waiting());
//     return vorn_lcmgr_api_terminate() ? 0 : 1;
//   }
#ifndef SOFTCARD_HOST_H_
#define SOFTCARD_HOST_H_

#include <functional>
#include <memory>
#include <string>

#include "operations/host.h"
#include "softcard/card.h"
#include "softcard/sdk/call_watch.h"

namespace softcard::host {

// ---- Before vorn_lcmgr_api_init(); none has an effect on a card that is there already -----------

// The description of the next card; without a call it is the default one.
void use_description(const CardDescription& description);
// Names a file that the next vorn_lcmgr_api_init() reads: it fails, and error() says why, when the
// file is malformed. An empty path goes back to the description set before.
void use_description_file(const std::string& path);
// The clock of the next cards; a RealClock without a call. The process's event loop runs on a
// VirtualClock, too, from this call on: its timers wait for warp_ns(), and EventLoop::run() moves
// the time on to the next timer when it has nothing else to do. loop_in_real_time() spares the
// loop.
void use_clock(std::shared_ptr<Clock> clock);
// Has the process's event loop run on the system's clock whatever the card's is, until the next
// use_clock(): for a program that waits for people or for other processes.
void loop_in_real_time();

// ---- Afterwards ---------------------------------------------------------------------------------

// Why the last vorn_lcmgr_api_init() failed; empty when it did not.
const std::string& error();

// The card, from vorn_lcmgr_api_init() to vorn_lcmgr_api_terminate(); null at other times.
Card* card();

// Counts the cards that the process has made: tells one card from the next.
std::uint64_t card_number();

// Why an entry point, or the card, refused something last: "VLAN 5000: above 4094". A success
// leaves it as it is; softcard/base/refusal.h counts them.
const std::string& last_refusal();

// Lets the card and the event loop do all that waits: frames in cables, ageing, events, timers that
// are due, tasks, descriptors that are ready. Returns how much that was; 0 without a card.
std::size_t run();

// Moves a virtual clock on by `ns`, from one thing that is due to the next: each timer of the event
// loop, each aged address and each event comes in its order and sees its own time. False, and
// nothing done, without a card, for a clock that runs by itself, beyond 2^64 ns, and within a
// callback of warp_ns() itself. A callback that ends the card ends the warp.
bool warp_ns(std::uint64_t ns);

// The watch over the SDK's calls. It is the process's: traces and refusals hold from card to card.
CallWatch& call_watch();

// Calls `observer` whenever lag_list or the mapping of LAG interfaces and ids has changed by the
// functions of platform/; nothing unsets it. There is one.
void on_lag_change(std::function<void()> observer);

// Has another host do, in place of this one, what platform/ asks for, such as one whose card is in
// another process; null has this one do it again. Neither may have a card at that time.
void use_host(vorn::operations::Host* other);

}  // namespace softcard::host

#endif  // SOFTCARD_HOST_H_
