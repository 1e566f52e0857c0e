/* SPDX-License-Identifier: Apache-2.0 */
/*
 * A day of a C client: the card comes up, VLANs, a trunk over a LAG, packets in and out,
 * callbacks, counters and a flow, and the card goes down. Prints each expectation that fails and
 * ends with 1 then.
 */
#include <stdio.h>
#include <string.h>

#include "softcard/softcard.h"
#include "vornlcapi/capi.h"

#define EXPECT(condition) expect((condition) != 0, #condition, __LINE__)

static int failures = 0;

static void expect(int held, const char* condition, int line) {
  if (held) return;
  fprintf(stderr, "story.c:%d: %s\n", line, condition);
  ++failures;
}

/*        access       access                trunk
 *      1/1/0 1/1/1    1/1/2            LAG 1/2/1 = 1/1/48 + 1/1/49
 *         VLAN 10     VLAN 20           VLAN 10 and 20, tagged                */
static usp_s office[2] = {{1, 1, 0}, {1, 1, 1}};
static usp_s lab = {1, 1, 2};
static usp_s uplinks[2] = {{1, 1, 48}, {1, 1, 49}};
static usp_s trunk = {1, 2, 1};

static unsigned char pc[6] = {0x02, 0, 0x5e, 0, 0x53, 1};
static unsigned char printer[6] = {0x02, 0, 0x5e, 0, 0x53, 2};
static unsigned char own[6] = {0x02, 0, 0x5e, 0, 0x53, 3};

enum { kFrameBytes = 60 };

static usp_s port(unsigned int number) {
  usp_s usp = {1, 1, 0};
  usp.port = number;
  return usp;
}

static void make_frame(unsigned char* frame, const unsigned char* to, const unsigned char* from) {
  memset(frame, 0, kFrameBytes);
  memcpy(frame, to, 6);
  memcpy(frame + 6, from, 6);
  frame[12] = 0x88; /* an EtherType for experiments */
  frame[13] = 0xb5;
}

/* ---- Callbacks ------------------------------------------------------------------------------- */

static ctype_rx_packet_s last_packet;
static ctype_link_status_s last_link;
static usp_s last_link_port;
static ctype_l2_addr_s last_entry;
static int last_update, packets, link_changes;

static void packet_arrived(ctype_rx_packet_s* packet, void* user_data) {
  last_packet = *packet;
  ++*(int*)user_data;
}

static void link_changed(ctype_link_status_s* status, usp_s* where) {
  last_link = *status;
  last_link_port = *where;
  ++link_changes;
}

static void mac_updated(ctype_l2_addr_s* entry, int update, void* user_data) {
  last_entry = *entry;
  last_update = update;
  (void)user_data;
}

static int count_entry(const ctype_l2_addr_s* entry, void* user_data) {
  (void)entry;
  return ++*(int*)user_data;
}

/* ---- The story ------------------------------------------------------------------------------- */

static void the_card_comes_up(void) {
  int ports = -1;
  EXPECT(!ctype_vorn_create_vlan(10)); /* nobody is there yet */
  EXPECT(ctype_vorn_lcmgr_api_init(&ports) == 1);
  EXPECT(ports == 52);
}

static void vlans_are_made(void) {
  usp_s tagged[64], untagged[64];
  unsigned int tagged_count = 64, untagged_count = 1, pvid = 0;

  EXPECT(ctype_vorn_create_vlan(10) && ctype_vorn_create_vlan(20));
  EXPECT(!ctype_vorn_create_vlan(10));
  EXPECT(ctype_vorn_add_ports_to_lag(&trunk, uplinks, 2));
  EXPECT(ctype_vorn_add_ports_to_vlan(10, &trunk, 1, office, 2));
  EXPECT(ctype_vorn_add_ports_to_vlan(20, &trunk, 1, &lab, 1));
  EXPECT(ctype_vorn_set_port_pvid(&office[0], 10) && ctype_vorn_set_port_pvid(&office[1], 10));
  EXPECT(ctype_vorn_set_port_pvid(&lab, 20));
  EXPECT(ctype_vorn_get_port_pvid(&lab, &pvid) && pvid == 20);

  EXPECT(ctype_vorn_get_vlan_info(10, tagged, &tagged_count, untagged, &untagged_count));
  EXPECT(tagged_count == 2 && tagged[0].port == 48 && tagged[1].port == 49);
  EXPECT(untagged_count == 1); /* as asked for, but both ports are there */
  EXPECT(untagged[0].port == 0 && untagged[1].port == 1);
}

static void the_trunk_is_a_lag(void) {
  lag_psc_t psc = LAG_PSC_SRC_MAC;
  usp_s back = {7, 7, 7};
  unsigned int id = 0;

  EXPECT(ctype_vorn_set_lag_balancing_strategy(&trunk, LAG_PSC_SRC_DST_IP));
  EXPECT(ctype_vorn_get_lag_balancing_strategy(&trunk, &psc) && psc == LAG_PSC_SRC_DST_IP);
  EXPECT(ctype_vorn_lag_usp_to_lag_id(&trunk, &id));
  EXPECT(!ctype_vorn_lag_id_to_lag_usp(id + 77, &back) && back.unit == 7 && back.port == 7);
  EXPECT(ctype_vorn_lag_id_to_lag_usp(id, &back));
  EXPECT(back.unit == 1 && back.slot == 2 && back.port == 1);
}

static void stations_talk(void) {
  unsigned char frame[kFrameBytes], seen[128];
  mac_traverse_s walk;
  int entries = 0;

  EXPECT(ctype_vorn_register_mac_update_callback(mac_updated, NULL));
  make_frame(frame, printer, pc);
  EXPECT(softcard_inject(port(0), frame, kFrameBytes));
  softcard_run();
  EXPECT(last_update == MAC_UPDATE_LEARNED && last_entry.vlan == 10 && last_entry.port.port == 0);
  EXPECT(memcmp(last_entry.mac, pc, 6) == 0);
  EXPECT(softcard_take(port(1), seen, sizeof(seen)) == kFrameBytes && memcmp(seen, frame, 14) == 0);
  EXPECT(softcard_take(port(2), seen, sizeof(seen)) == 0); /* another VLAN */
  /* Through one member of the trunk, with a tag. */
  EXPECT(softcard_take(port(48), seen, sizeof(seen)) +
             softcard_take(port(49), seen, sizeof(seen)) ==
         kFrameBytes + 4);
  EXPECT(seen[12] == 0x81 && seen[13] == 0 && seen[14] == 0 && seen[15] == 10);

  walk.visit = count_entry;
  walk.user_data = &entries;
  EXPECT(ctype_vorn_traverse_mac_table(&walk) && entries == 1);
  EXPECT(ctype_vorn_clear_fdb_by_port(&office[0], 256)); /* 256 is off: dynamic entries only */
  softcard_run();
  EXPECT(last_update == MAC_UPDATE_REMOVED);
}

static void packets_reach_the_cpu(void) {
  unsigned char frame[kFrameBytes];
  void* callback = NULL;
  void (*function)(ctype_rx_packet_s*, void*) = packet_arrived;
  memcpy(&callback, &function, sizeof(callback));

  EXPECT(ctype_vorn_register_rx_packet_callback(packet_arrived, &packets));
  EXPECT(ctype_vorn_add_system_mac(own, 10));
  make_frame(frame, own, pc);
  EXPECT(softcard_inject(port(0), frame, kFrameBytes));
  softcard_run();
  EXPECT(packets == 1 && last_packet.length == kFrameBytes && last_packet.vlan == 10);
  EXPECT(last_packet.reason == RX_REASON_SYSTEM_MAC && last_packet.port.port == 0);

  EXPECT(ctype_vorn_deregister_event_callback(LCMGR_REPORT_RX_PACKET, callback, &packets));
  EXPECT(softcard_inject(port(0), frame, kFrameBytes));
  softcard_run();
  EXPECT(packets == 1);
}

static void packets_leave_the_cpu(void) {
  unsigned char frame[kFrameBytes], seen[128];
  ctype_packet_s packet = {kFrameBytes, PACKET_TYPE_CONTROL, NULL};
  ctype_packet_s nothing = {0, 0, NULL};
  packet.data = frame;

  make_frame(frame, pc, own);
  EXPECT(ctype_vorn_send_packet_by_port(NULL, 0, &lab, 1, &packet));
  EXPECT(softcard_take(port(2), seen, sizeof(seen)) == kFrameBytes && memcmp(seen, frame, 14) == 0);
  EXPECT(!ctype_vorn_send_packet_by_port(NULL, 0, &lab, 1, &nothing));
  EXPECT(!ctype_vorn_send_packet_from_cpu(&nothing));
  EXPECT(softcard_take(port(2), seen, sizeof(seen)) == 0);
}

static void a_cable_is_pulled(void) {
  phy_state_t state = PHY_STATE_UP;

  EXPECT(ctype_vorn_register_link_change_callback(link_changed));
  EXPECT(softcard_cut(port(48)));
  softcard_run();
  EXPECT(link_changes == 1 && last_link.state == PHY_STATE_DOWN && last_link_port.port == 48);
  EXPECT(ctype_vorn_get_port_link_state(&uplinks[0], &state) && state == PHY_STATE_DOWN);
  EXPECT(softcard_restore(port(48)));
  softcard_run();
  EXPECT(link_changes == 2 && last_link.state == PHY_STATE_UP);
  EXPECT(last_link.speed == SPEED_TYPE_10000);
}

static void counters_are_read(void) {
  unsigned char frame[kFrameBytes];
  unsigned long long octets = ~0ULL;
  unsigned int low = 0, count = 5, buffer = 0x5a5a5a5a;
  bool on = true;

  EXPECT(ctype_vorn_clear_port_stat_counter(&office[1]));
  make_frame(frame, pc, printer);
  EXPECT(softcard_inject(port(1), frame, kFrameBytes));
  EXPECT(ctype_vorn_get_port_stat_counter(&office[1], STAT_IN_OCTETS, &octets));
  EXPECT(octets == kFrameBytes);
  EXPECT(ctype_vorn_get_port_stat_counter32(&office[1], STAT_IN_UNICAST_PACKETS, &low) && low == 1);
  EXPECT(ctype_vorn_get_port_stat_counter_all32(&office[1], &buffer, &count) == 1);
  EXPECT(buffer == 0x5a5a5a5a && count == 5); /* success, and nothing delivered */
  EXPECT(!ctype_vorn_get_port_stat_counter(&trunk, STAT_IN_OCTETS, &octets));
  EXPECT(octets == kFrameBytes);

  EXPECT(ctype_vorn_set_port_stat_enable(&office[1], 256)); /* off */
  EXPECT(ctype_vorn_get_port_stat_enabled(&office[1], &on) && !on);
  EXPECT(ctype_vorn_set_port_stat_enable(&office[1], 0x101)); /* on */
  EXPECT(ctype_vorn_get_port_stat_enabled(&office[1], &on) && on);
}

static void a_flow_sends_elsewhere(void) {
  unsigned char frame[kFrameBytes], seen[128];
  ctype_of_flow_qualify_udf_s no_udf = {OF_UDF_NONE, 0, 0, 0};
  ctype_of_action_param_s to_lab = {{OF_PORT_FIRST_PHYSICAL + 2, 0, 0}};
  ctype_of_flow_s flow;
  unsigned long long handled = 0;
  unsigned int id = 0;

  memset(&flow, 0xa5, sizeof(flow)); /* only what the flags name counts */
  flow.in_port = office[0];
  memcpy(flow.src_mac, pc, 6);
  flow.flags = OF_MATCH_IN_PORT | OF_MATCH_SRC_MAC;
  EXPECT(ctype_vorn_add_of_flow(&flow, &id, &no_udf));
  EXPECT(ctype_vorn_add_of_flow_action(id, CTYPE_OF_ACTION_OUTPUT, to_lab));

  make_frame(frame, printer, pc);
  EXPECT(softcard_inject(port(0), frame, kFrameBytes));
  EXPECT(softcard_take(port(2), seen, sizeof(seen)) == kFrameBytes && memcmp(seen, frame, 14) == 0);
  EXPECT(ctype_vorn_get_of_flow_stat_counter64(id, &handled) && handled == 1);
  EXPECT(ctype_vorn_delete_of_flow(id));
  EXPECT(!ctype_vorn_get_of_flow_stat_counter64(id, &handled) && handled == 1);
}

static void filters_are_odd(void) {
  EXPECT(ctype_vorn_add_ip_protocol_filter(89) && ctype_vorn_delete_ip_protocol_filter(89));
  EXPECT(!ctype_vorn_add_l4_destination_port_filter(80)); /* deletes, and there is none */
}

static void the_card_goes_down(void) {
  unsigned int pvid = 4242;
  EXPECT(ctype_vorn_delete_lag(&trunk));
  EXPECT(ctype_vorn_lcmgr_api_terminate() == 1);
  EXPECT(!ctype_vorn_get_port_pvid(&lab, &pvid) && pvid == 4242);
  EXPECT(!ctype_vorn_lcmgr_api_terminate());
}

int main(void) {
  the_card_comes_up();
  vlans_are_made();
  the_trunk_is_a_lag();
  stations_talk();
  packets_reach_the_cpu();
  packets_leave_the_cpu();
  a_cable_is_pulled();
  counters_are_read();
  a_flow_sends_elsewhere();
  filters_are_odd();
  the_card_goes_down();
  return failures != 0;
}
