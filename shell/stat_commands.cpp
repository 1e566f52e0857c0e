// SPDX-License-Identifier: Apache-2.0
#include "entry_point.h"
#include "vornlcapi/api/stat.h"
#include "vornlcapi/capi/stat.h"

namespace shell {

void add_stat_commands(CommandTable& table) {
  Family family(table, "stat");
  family.add(VORN_BOTH(get_port_stat_counter), {"port", "type", "out value"},
             "one counter, 64 bits");
  family.add(VORN_BOTH(get_port_stat_counter32), {"port", "type", "out value"},
             "one counter, its low 32 bits");
  family.add(VORN_BOTH(get_port_stat_counter_all64), {"port", "out counters[]"},
             "all counters; through C none is delivered");
  family.add(VORN_BOTH(get_port_stat_counter_all32), {"port", "out counters[]"},
             "all counters, 32 bits; through C none is delivered");
  family.add(VORN_API(get_port_stat_counter_all64_ext), {"port", "out counters[]"},
             "all counters into an array");
  family.add(VORN_API(get_port_stat_counter_all32_ext), {"port", "out counters[]"},
             "all counters into an array, 32 bits");
  family.add(VORN_BOTH(get_port_brief_stat_counter64), {"port", "type", "out value"},
             "one brief counter, 64 bits");
  family.add(VORN_BOTH(get_port_brief_stat_counter32), {"port", "type", "out value"},
             "one brief counter, its low 32 bits");
  family.add(VORN_BOTH(get_port_brief_stat_counter_all64), {"port", "out counters[]"},
             "delivers nothing: the list comes by value");
  family.add(VORN_BOTH(get_port_brief_stat_counter_all32), {"port", "out counters[]"},
             "delivers nothing and clears the counters");
  family.add(VORN_BOTH(clear_port_stat_counter), {"port"}, "sets all counters of the port to 0");
  family.add(VORN_BOTH(get_port_stat_enabled), {"port", "out enabled"},
             "whether the counters count");
  family.add(VORN_BOTH(set_port_stat_enable), {"port", "enable"}, "whether the counters count");
}

}  // namespace shell
