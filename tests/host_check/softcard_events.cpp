// SPDX-License-Identifier: Apache-2.0
//
// The functions by which the check for hosts drives the software line card.

#include "host_check/host_check.h"
#include "softcard/host.h"

bool vorn_host_check_deliver_events() {
  softcard::host::card()->run_once();
  return true;
}
