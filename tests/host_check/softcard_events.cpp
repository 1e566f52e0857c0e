// SPDX-License-Identifier: Apache-2.0
//
// What the check for hosts asks of the software line card.

#include "host_check/host_check.h"
#include "softcard/host.h"

bool vorn_host_check_deliver_events() {
  softcard::host::card()->run_once();
  return true;
}
