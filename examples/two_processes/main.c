/* SPDX-License-Identifier: Apache-2.0 */
/*
 * The example client by itself: it configures a card wherever that is, and reports.
 */
#include "client.h"

int main(void) {
  const int reported = client_start() && client_report();
  return client_stop() && reported ? 0 : 1;
}
