// SPDX-License-Identifier: Apache-2.0
//
// A program with XORP's event loop that listens for link changes of a card in another process. It
// prints them until a link comes up again.
#include <cstdio>

#include "libxorp/eventloop.hh"
#include "remote/remote.h"
#include "vornlcapi/api.h"

namespace {

bool is_up = false;
bool in_loop = false;

void note(LinkStatus* status, Usp* port) {
  is_up = status->state == PHY_STATE_UP;
  std::printf("%u/%u/%u is %s%s\n", port->unit(), port->slot(), port->port(), is_up ? "up" : "down",
              in_loop ? "" : ", outside the loop");
}

}  // namespace

int main() {
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  EventLoop loop;
  int ports = 0;
  if (vorn_create_vlan(30)) return 1;
  std::printf("%s\n", vornremote_last_refusal());
  if (!vorn_lcmgr_api_init(ports) || !vorn_register_link_change_callback(&note)) return 1;
  std::printf("connected: %d, read-only: %d, refusals: %u, lost: %u\n", vornremote_connected(),
              vornremote_read_only(), static_cast<unsigned>(vornremote_refusals()),
              static_cast<unsigned>(vornremote_lost(LCMGR_REPORT_LINK_CHANGE)));
  std::printf("listening\n");
  while (!is_up) {
    in_loop = true;
    loop.run();
    in_loop = false;
    // A call takes events from the socket as well; their turn is in the loop.
    unsigned pvid = 0;
    if (!vorn_get_port_pvid(Usp(1, 1, 0), pvid)) return 1;
  }
  const bool ended = vorn_lcmgr_api_terminate();
  std::printf("connected: %d\n", vornremote_connected());
  return ended ? 0 : 1;
}
