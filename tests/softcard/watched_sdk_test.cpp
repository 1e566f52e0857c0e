// SPDX-License-Identifier: Apache-2.0
//
// The watch over an SDK, here over the recording one: every operation arrives there as it was
// called, and is traced and refused by its name in VornSdkBase.

#include "softcard/sdk/watched_sdk.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <functional>
#include <regex>
#include <tuple>
#include <vector>

#include "tests/support/recorder.h"
#include "tests/support/sdk_arguments.h"
#include "tests/support/sdk_operations.h"

namespace softcard {
namespace {

using Sdk = VornSdkBase;
using vorn::test::host;

using Operation = std::function<bool(Sdk&)>;

template <class... Parameters>
Operation operation_of(bool (Sdk::*operation)(Parameters...)) {
  return
      [operation](Sdk& sdk) { return vorn::test::Arguments<Parameters...>().call(sdk, operation); };
}

// ---- Every operation ----------------------------------------------------------------------------

std::vector<Operation> all_operations() {
  return vorn::test::sdk_operations<Operation>(
      [](auto operation) { return operation_of(operation); });
}

using Names = std::vector<std::string>;

class WatchedSdkTest : public testing::Test {
 protected:
  WatchedSdkTest() {
    watch_.set_sink([this](const std::string& line) { traced_.push_back(line); });
  }

  // The record of an operation called at `sdk`, which answers `result`.
  static Names steps_of(const Operation& operation, Sdk& sdk, bool result) {
    host().steps.clear();
    EXPECT_EQ(operation(sdk), result);
    return host().steps;
  }

  static Sdk& fresh_recorder() {
    host().reset();
    return *host().sdk;
  }

  CallWatch watch_;
  WatchedSdk watched_{fresh_recorder(), watch_};
  Names traced_;
};

TEST_F(WatchedSdkTest, HandsEveryOperationThroughUnderItsName) {
  EXPECT_TRUE(watch_.set_trace("trace_level_all", true));
  Names tried;
  for (const Operation& operation : all_operations()) {
    const Names bare = steps_of(operation, *host().sdk, true);
    const std::string name = bare.front().substr(0, bare.front().find('('));
    tried.push_back(name);
    traced_.clear();
    EXPECT_EQ(steps_of(operation, watched_, true), bare);
    EXPECT_EQ(traced_.size(), 1u) << name;
    EXPECT_EQ(traced_.front().compare(0, name.size() + 1, name + "("), 0) << traced_.front();

    host().refuse = 1;  // the SDK itself says no
    EXPECT_EQ(steps_of(operation, watched_, false), bare);
    host().refuse = 0;
    EXPECT_TRUE(watch_.fail(name, 1)) << name;
    EXPECT_EQ(steps_of(operation, watched_, false), Names()) << name;
    EXPECT_EQ(watch_.pending_failures(), 0u) << name;

    host().steps.clear();
    host().throws = 1;
    EXPECT_THROW(operation(watched_), vorn::test::Thrown) << name;
    host().throws = 0;
  }

  std::ifstream header(VORN_SDK_HEADER);
  const std::string text((std::istreambuf_iterator<char>(header)), {});
  const std::regex slot(R"(virtual bool (\w+)\([^;{]*\) = 0;)");
  Names declared;
  for (std::sregex_iterator at(text.begin(), text.end(), slot), end; at != end; ++at) {
    declared.push_back((*at)[1]);
  }
  EXPECT_EQ(tried, declared);

  const auto operations = CallWatch::operations();
  Names watched(operations.begin(), operations.end());
  std::sort(watched.begin(), watched.end());
  std::sort(declared.begin(), declared.end());
  EXPECT_EQ(watched, declared);
}

TEST_F(WatchedSdkTest, TracesEachOperationWithOneModule) {
  const struct {
    const char* module;
    const char* operation;
    std::size_t operations;
  } rows[] = {{"lcmgr", "free_call", 12},        {"sif", "add_l3_route_ip6", 45},
              {"rstp", "set_port_stp_state", 6}, {"stat", "clear_port_stat_counter", 12},
              {"policy", "add_of_flow", 43},     {"switch_mirror", "set_port_mirror", 2},
              {"vlan", "set_port_pvid", 17},     {"lacp", "create_lag", 6},
              {"fdb", "delete_mac", 18}};
  std::size_t traced = 0;
  for (const auto& row : rows) {
    EXPECT_FALSE(watch_.watching());
    EXPECT_TRUE(watch_.set_trace(row.module, true));
    EXPECT_TRUE(watch_.watching() && watch_.traces(row.operation)) << row.module;
    const auto all = CallWatch::operations();
    const auto count = std::count_if(all.begin(), all.end(),
                                     [&](std::string_view name) { return watch_.traces(name); });
    EXPECT_EQ(static_cast<std::size_t>(count), row.operations) << row.module;
    traced += row.operations;
    EXPECT_TRUE(watch_.set_trace(row.module, false));
  }
  EXPECT_EQ(traced, CallWatch::operations().size());
}

TEST_F(WatchedSdkTest, ShowsArgumentsAsTheyAreMeant) {
  EXPECT_TRUE(watch_.set_trace("trace_level_sdk", true));
  unsigned char mac[6] = {2, 0, 0x5e, 0, 0x53, 0xa};
  const unsigned char ip6[16] = {0x20, 1, 0xd, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
  unsigned char bitmap[512] = {0, 4};
  bitmap[511] = 0x40;
  std::list<Mp> ports = {Mp(2, 7), Mp(2, 8)};
  std::list<Mp> none;
  unsigned id = 33;
  of_flow_mp_s flow;
  std::memset(&flow.match, 0, sizeof flow.match);
  flow.match.flags = 0x88;
  Packet packet;
  packet.set_data({1, 2, 3});
  watched_.set_ipv4_subnet_vlan(0xc0000200, 0xffffff00, 10, 5);
  watched_.get_l3_host_ip6(ip6, Mp(0, 33), mac, id, true);
  watched_.delete_mac_vlan_bitmap(mac, bitmap);
  watched_.add_ports_to_vlan(10, ports, none);
  watched_.set_lcmgr_trace("vlan", false);
  watched_.add_of_flow_with_id(flow, 7);
  watched_.send_packet_from_cpu(packet);
  host().answers = true;  // writes, and says no
  host().refuse = host().steps.size() + 1;
  watched_.get_l3_host_ip6(ip6, Mp(0, 33), mac, id, true);
  EXPECT_EQ(
      traced_,
      (Names{"set_ipv4_subnet_vlan(192.0.2.0, 255.255.255.0, 10, 5) = true",
             "get_l3_host_ip6(2001:db8::1, 0:33, "
             "02:00:5e:00:53:0a, 33, true) = true",
             "delete_mac_vlan_bitmap(02:00:5e:00:53:0a, {10 4094}) = true",
             "add_ports_to_vlan(10, [2:7 2:8], []) = true", "set_lcmgr_trace(vlan, false) = true",
             "add_of_flow_with_id(136, 7) = true", "send_packet_from_cpu(3, 0) = true",
             "get_l3_host_ip6(2001:db8::1, 0:33, ?, ?, true) = "
             "false"}));
}

}  // namespace
}  // namespace softcard
