// SPDX-License-Identifier: Apache-2.0
//
// A card on a virtual clock behind the library, fresh for each test.
#ifndef TESTS_SOFTCARD_HOST_FIXTURE_H_
#define TESTS_SOFTCARD_HOST_FIXTURE_H_

#include <gtest/gtest.h>

#include <algorithm>
#include <list>
#include <memory>
#include <string>
#include <vector>

#include "softcard/host.h"
#include "vornlcapi/api.h"

namespace softcard {

inline Usp port(unsigned number) { return AddressPlan::usp_of(static_cast<PortIndex>(number)); }
inline Usp lag(unsigned number) { return AddressPlan::lag_usp(number); }
inline Usp vlan(unsigned number) { return AddressPlan::vlan_usp(number); }
inline const Usp kNowhere(9, 9, 9);

// The addresses of ports as a script writes them, for messages and comparisons.
inline std::string text(const std::list<Usp>& ports) {
  std::string all;
  for (const Usp& usp : ports) all += (all.empty() ? "" : " ") + AddressPlan::text(usp);
  return all;
}

class HostTest : public testing::Test {
 protected:
  HostTest() {
    host::use_clock(clock_);
    host::use_description(CardDescription());
    int ports = 0;
    EXPECT_TRUE(vorn_lcmgr_api_init(ports)) << host::error();
    EXPECT_EQ(ports, 52);
  }
  ~HostTest() override {
    host::call_watch().clear_failures();
    host::call_watch().set_trace("trace_level_all", false);
    EXPECT_TRUE(vorn_lcmgr_api_terminate());
  }

  static Card& card() { return *host::card(); }

  // The MAC table as a walk shows it: "vlan mac-tail port flags" in order.
  static std::vector<std::string> mac_table() {
    std::vector<std::string> lines;
    mac_traverse_s walk{[](const ctype_l2_addr_s* entry, void* out) {
                          const Usp usp(entry->port.unit, entry->port.slot, entry->port.port);
                          static_cast<std::vector<std::string>*>(out)->push_back(
                              std::to_string(entry->vlan) + " :" + std::to_string(entry->mac[5]) +
                              " " + AddressPlan::text(usp) + " " + std::to_string(entry->flags));
                          return 1;
                        },
                        &lines};
    EXPECT_TRUE(vorn_traverse_mac_table(&walk));
    std::sort(lines.begin(), lines.end());
    return lines;
  }

  std::shared_ptr<VirtualClock> clock_ = std::make_shared<VirtualClock>();
};

using Lines = std::vector<std::string>;

}  // namespace softcard

#endif  // TESTS_SOFTCARD_HOST_FIXTURE_H_
