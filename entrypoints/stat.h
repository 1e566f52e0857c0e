// SPDX-License-Identifier: Apache-2.0
//
// The entry points of the family `stat`, a row each; row.h says what stands in a row.
#ifndef ENTRYPOINTS_STAT_H_
#define ENTRYPOINTS_STAT_H_

#include "entrypoints/row.h"
#include "vornlcapi/api/stat.h"
#include "vornlcapi/capi/stat.h"

namespace entrypoints {

template <class Rows>
void add_stat(Rows& rows) {
  rows.add(VORN_BOTH(get_port_stat_counter), {"port", "type", "out value"}, "one counter, 64 bits");
  rows.add(VORN_BOTH(get_port_stat_counter32), {"port", "type", "out value"},
           "one counter, its low 32 bits");
  rows.add(VORN_BOTH(get_port_stat_counter_all64), {"port", "out counters[]"},
           "all counters; through C none is delivered");
  rows.add(VORN_BOTH(get_port_stat_counter_all32), {"port", "out counters[]"},
           "all counters, 32 bits; through C none is delivered");
  rows.add(VORN_API(get_port_stat_counter_all64_ext), {"port", "out counters[]"},
           "all counters into an array");
  rows.add(VORN_API(get_port_stat_counter_all32_ext), {"port", "out counters[]"},
           "all counters into an array, 32 bits");
  rows.add(VORN_BOTH(get_port_brief_stat_counter64), {"port", "type", "out value"},
           "one brief counter, 64 bits");
  rows.add(VORN_BOTH(get_port_brief_stat_counter32), {"port", "type", "out value"},
           "one brief counter, its low 32 bits");
  rows.add(VORN_BOTH(get_port_brief_stat_counter_all64), {"port", "out counters[]"},
           "delivers nothing: the list comes by value");
  rows.add(VORN_BOTH(get_port_brief_stat_counter_all32), {"port", "out counters[]"},
           "delivers nothing and clears the counters");
  rows.add(VORN_BOTH(clear_port_stat_counter), {"port"}, "sets all counters of the port to 0");
  rows.add(VORN_BOTH(get_port_stat_enabled), {"port", "out enabled"}, "whether the counters count");
  rows.add(VORN_BOTH(set_port_stat_enable), {"port", "enable"}, "whether the counters count");
}

}  // namespace entrypoints

#endif  // ENTRYPOINTS_STAT_H_
