/* SPDX-License-Identifier: Apache-2.0 */
/*
 * The software line card driven from C: description, time, frames, links, traces, failures,
 * callbacks. Prints each expectation that fails and ends with 1 then.
 */
#include <stdio.h>
#include <string.h>

#include "softcard/softcard.h"
#include "vornlcapi/capi.h"

#define EXPECT(condition) expect((condition) != 0, #condition, __LINE__)
#define SECONDS(n) ((uint64_t)(n)*1000000000u)

static int failures = 0;

static void expect(int held, const char* condition, int line) {
  if (held) return;
  fprintf(stderr, "card.c:%d: %s; last refusal: %s\n", line, condition, softcard_last_refusal());
  ++failures;
}

static int refused(const char* reason) { return strcmp(softcard_last_refusal(), reason) == 0; }

static const usp_s one = {1, 1, 0};
static const usp_s two = {1, 1, 1};
static const usp_s three = {1, 1, 2};
static const usp_s nowhere = {1, 1, 99};

static const char hello[] =
    "eth src=00:00:5e:00:53:01 dst=ff:ff:ff:ff:ff:ff arp spa=192.0.2.1 tpa=192.0.2.2";

/* ---- Callbacks ------------------------------------------------------------------------------- */

static void count_frame(usp_s port, const unsigned char* frame, size_t bytes, void* count) {
  if (port.port != 0 && softcard_frame_matches(frame, bytes, "eth untagged arp")) ++*(int*)count;
}

static void note_link(usp_s port, const ctype_link_status_s* status, void* text) {
  sprintf((char*)text + strlen(text), "%u %s;", port.port,
          status->state == PHY_STATE_UP ? "up" : "down");
}

static void count_packet(const ctype_rx_packet_s* packet, void* bytes) {
  *(unsigned int*)bytes += packet->length;
}

/* ---- The tests ------------------------------------------------------------------------------- */

static void without_a_card(void) {
  uint64_t frames = 7;
  EXPECT(softcard_port_count() == 0 && softcard_run() == 0 && softcard_now() == 0);
  EXPECT(!softcard_inject_text(one, hello));
  EXPECT(refused("there is no card: vorn_lcmgr_api_init() makes it"));
  EXPECT(!softcard_warp(1) && !softcard_cut(one) && !softcard_drops(one, "runt", &frames));
  EXPECT(frames == 7 && softcard_take(one, NULL, 0) == 0);
  EXPECT(!softcard_use_description("ports many\n"));
  EXPECT(strncmp(softcard_last_refusal(), "description:1: ", 15) == 0);
  EXPECT(!softcard_use_description_file("/nowhere/small.card"));
}

static void a_small_card_comes_up(void) {
  int ports = 0;
  EXPECT(softcard_use_description("ports 8 speed 1000\n"));
  EXPECT(softcard_use_virtual_time());
  EXPECT(ctype_vorn_lcmgr_api_init(&ports) && ports == 8 && softcard_port_count() == 8);
}

static void frames_go_in_and_come_out(void) {
  unsigned char frame[128];
  unsigned char small[8] = {1, 2, 3, 4, 5, 6, 7, 8};
  char text[256];
  size_t bytes;
  EXPECT(softcard_inject_text(one, hello));
  EXPECT(strstr(softcard_last_trace(), "1/1/0 received 42 bytes") != NULL);
  EXPECT(strstr(softcard_last_trace(), "flood") != NULL);
  EXPECT(softcard_waiting(two) == 1 && softcard_waiting(one) == 0);
  EXPECT(softcard_take(two, small, sizeof(small)) == 42 && small[7] == 8 &&
         softcard_waiting(two) == 1);
  bytes = softcard_take(two, frame, sizeof(frame));
  EXPECT(bytes == 42 && softcard_take(two, frame, sizeof(frame)) == 0);
  EXPECT(softcard_frame_matches(frame, bytes, "eth arp tpa=192.0.2.2"));
  EXPECT(!softcard_frame_matches(frame, bytes, "eth arp tpa=192.0.2.3"));
  EXPECT(!softcard_frame_matches(frame, bytes, "ethernet") &&
         strncmp(softcard_last_refusal(), "pattern: ", 9) == 0);
  EXPECT(softcard_frame_text(frame, bytes, text, sizeof(text)) == strlen(text));
  EXPECT(strstr(text, "tpa=192.0.2.2") != NULL);
  EXPECT(softcard_frame_text(frame, bytes, text, 4) > 4 && strcmp(text, "eth") == 0);
  EXPECT(!softcard_inject(nowhere, frame, bytes));
  EXPECT(refused("1/1/99: the card has 8 ports"));
  EXPECT(!softcard_inject(one, frame, 0) && !softcard_inject_text(one, "eth src=1"));
}

static void time_passes_when_it_is_told_to(void) {
  static const char seek[] = "eth src=00:00:5e:00:53:02 dst=00:00:5e:00:53:01";
  unsigned char frame[128];
  while (softcard_take(three, frame, sizeof(frame)) != 0) continue;
  EXPECT(softcard_inject_text(two, seek) && softcard_waiting(three) == 0); /* it is learned */
  EXPECT(softcard_warp(SECONDS(299)) && softcard_inject_text(two, seek));
  EXPECT(softcard_waiting(three) == 0);
  EXPECT(softcard_warp(SECONDS(2)) && softcard_now() == SECONDS(301));
  EXPECT(softcard_inject_text(two, seek) && softcard_waiting(three) == 1); /* it is forgotten */
}

static void links_are_cut_and_patched(void) {
  char changes[64] = "";
  uint64_t frames = 0;
  EXPECT(softcard_on_link_change(note_link, changes));
  EXPECT(!softcard_on_link_change(note_link, changes) && refused("it is registered already"));
  EXPECT(softcard_cut(two));
  softcard_run();
  EXPECT(strcmp(changes, "1 down;") == 0);
  EXPECT(softcard_inject_text(two, hello));
  EXPECT(softcard_drops(two, "link-down", &frames) && frames == 1);
  EXPECT(!softcard_drops(two, "weather", &frames) && frames == 1);
  EXPECT(softcard_restore(two) && !softcard_patch(one, one));
  softcard_run();
  EXPECT(strcmp(changes, "1 down;1 up;") == 0);
  EXPECT(softcard_remove_link_callback(note_link, changes));
  EXPECT(!softcard_remove_link_callback(note_link, changes));

  /* What port two floods into port three's cable comes in at port four and goes on. */
  usp_s four = {1, 1, 3};
  EXPECT(softcard_patch(three, four) && softcard_waiting(three) == 0);
  EXPECT(!softcard_inject_text(three, hello) && refused("1/1/2 is not plugged into memory"));
  EXPECT(softcard_unpatch(three) && softcard_unpatch(four));
}

static void callbacks_have_user_data(void) {
  unsigned char frame[128];
  usp_s port = one;
  int frames = 0, again = 0;
  unsigned int bytes = 0;
  for (port.port = 0; port.port < 8; ++port.port) {
    while (softcard_take(port, frame, sizeof(frame)) != 0) continue;
  }
  EXPECT(softcard_on_frame(count_frame, &frames) && softcard_on_frame(count_frame, &again));
  EXPECT(softcard_on_cpu_packet(count_packet, &bytes));
  EXPECT(softcard_inject_text(one, hello));
  EXPECT(softcard_inject_text(one, "eth src=00:00:5e:00:53:01 dst=01:80:c2:00:00:0e size=60"));
  softcard_run();
  EXPECT(frames == 7 && again == 7 && bytes == 42 + 60);
  EXPECT(softcard_remove_frame_callback(count_frame, &frames));
  EXPECT(softcard_inject_text(one, hello));
  softcard_run();
  EXPECT(frames == 7 && again == 14);
  EXPECT(softcard_remove_frame_callback(count_frame, &again));
  EXPECT(softcard_remove_cpu_callback(count_packet, &bytes));
  EXPECT(!softcard_remove_cpu_callback(count_packet, &bytes));
}

static void failures_come_on_purpose(void) {
  EXPECT(softcard_fail("create_vlan", 2));
  EXPECT(ctype_vorn_create_vlan(10) && !ctype_vorn_create_vlan(20) && ctype_vorn_create_vlan(20));
  EXPECT(!softcard_fail("make_vlan", 1) && refused("'make_vlan' is no operation of the SDK"));
  EXPECT(!softcard_fail("create_vlan", 0) && softcard_refusals() > 0);
  EXPECT(softcard_fail("create_vlan", 1));
  softcard_fail_none();
  EXPECT(ctype_vorn_create_vlan(30));
}

static void reasons_have_names(void) {
  uint64_t frames = 0;
  unsigned int count = 0;
  while (softcard_drop_reason(count) != NULL) ++count;
  EXPECT(count > 30);
  while (count-- > 0) EXPECT(softcard_drops(one, softcard_drop_reason(count), &frames));
}

int main(void) {
  int ports = 0, frames = 0;
  without_a_card();
  a_small_card_comes_up();
  frames_go_in_and_come_out();
  time_passes_when_it_is_told_to();
  links_are_cut_and_patched();
  callbacks_have_user_data();
  failures_come_on_purpose();
  reasons_have_names();
  /* Callbacks end with the card that they were registered with. */
  EXPECT(softcard_on_frame(count_frame, &frames) && ctype_vorn_lcmgr_api_terminate());
  EXPECT(ctype_vorn_lcmgr_api_init(&ports) && softcard_inject_text(one, hello));
  softcard_run();
  EXPECT(frames == 0 && softcard_waiting(two) == 1);
  EXPECT(ctype_vorn_lcmgr_api_terminate());
  return failures != 0;
}
