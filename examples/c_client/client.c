/* SPDX-License-Identifier: Apache-2.0 */
/* A control-plane client in C: bring-up, a VLAN with its trunk over a LAG, link changes and
 * statistics. */
#include <stdio.h>

#include "client.h"
#include "vornlcapi/capi.h"

enum { kVlan = 10, kAccessCount = 4, kUplinkCount = 2, kRoom = 64 };

static usp_s access_ports[kAccessCount] = {{1, 1, 0}, {1, 1, 1}, {1, 1, 2}, {1, 1, 3}};
static usp_s uplinks[kUplinkCount] = {{1, 1, 48}, {1, 1, 49}};
static usp_s trunk = {1, 2, 1}; /* the LAG interface */

/* Every entry point returns 1 or 0; this says which step was the 0. */
static int done(const char* step, int result) {
  if (!result) fprintf(stderr, "failed: %s\n", step);
  return result;
}

static void link_changed(ctype_link_status_s* status, usp_s* port) {
  printf("link of %u/%u/%u is %s\n", port->unit, port->slot, port->port,
         status->state == PHY_STATE_UP ? "up" : "down");
}

static int make_trunk(void) {
  return done("add the uplinks to the LAG",
              ctype_vorn_add_ports_to_lag(&trunk, uplinks, kUplinkCount)) &&
         done("balance the LAG by IP address",
              ctype_vorn_set_lag_balancing_strategy(&trunk, LAG_PSC_SRC_DST_IP));
}

static int make_vlan(void) {
  int i;
  if (!done("create the VLAN", ctype_vorn_create_vlan(kVlan))) return 0;
  if (!done("add the VLAN's ports",
            ctype_vorn_add_ports_to_vlan(kVlan, &trunk, 1, access_ports, kAccessCount))) {
    return 0;
  }
  for (i = 0; i < kAccessCount; ++i) {
    if (!done("set the PVID", ctype_vorn_set_port_pvid(&access_ports[i], kVlan))) return 0;
  }
  return 1;
}

int client_start(void) {
  int ports = 0;
  if (!done("start the line card", ctype_vorn_lcmgr_api_init(&ports))) return 0;
  printf("line card up, %d ports\n", ports);
  return done("listen for link changes", ctype_vorn_register_link_change_callback(link_changed)) &&
         make_trunk() && make_vlan();
}

static void print_ports(const char* kind, const usp_s* ports, unsigned int count) {
  unsigned int i;
  printf("VLAN %d, %s:", kVlan, kind);
  for (i = 0; i < count; ++i) printf(" %u/%u/%u", ports[i].unit, ports[i].slot, ports[i].port);
  printf("\n");
}

static int count_packets(const char* what, stat_type_t type, usp_s* ports, int count) {
  unsigned long long sum = 0;
  int i;
  for (i = 0; i < count; ++i) {
    unsigned long long value = 0;
    if (!done("read a counter", ctype_vorn_get_port_stat_counter(&ports[i], type, &value))) {
      return 0;
    }
    sum += value;
  }
  printf("%s: %llu\n", what, sum);
  return 1;
}

int client_report(void) {
  /* The arrays receive every member, whatever the counts say: they have room for all ports. */
  usp_s tagged[kRoom], untagged[kRoom];
  unsigned int tagged_count = kRoom, untagged_count = kRoom;
  if (!done("read the VLAN",
            ctype_vorn_get_vlan_info(kVlan, tagged, &tagged_count, untagged, &untagged_count))) {
    return 0;
  }
  print_ports("tagged", tagged, tagged_count);
  print_ports("untagged", untagged, untagged_count);
  return count_packets("broadcasts into the access ports", STAT_IN_BROADCAST_PACKETS, access_ports,
                       kAccessCount) &&
         count_packets("broadcasts out of the access ports", STAT_OUT_BROADCAST_PACKETS,
                       access_ports, kAccessCount) &&
         count_packets("broadcasts out of the trunk", STAT_OUT_BROADCAST_PACKETS, uplinks,
                       kUplinkCount);
}

int client_stop(void) { return done("shut the line card down", ctype_vorn_lcmgr_api_terminate()); }
