// SPDX-License-Identifier: Apache-2.0
//
// A Linux of plain tables in front of a real card of eight ports: port n is the interface n + 1.
#ifndef TESTS_AGENT_LINUX_FIXTURE_H_
#define TESTS_AGENT_LINUX_FIXTURE_H_

#include <string>
#include <utility>
#include <vector>

#include "agent/card_writer.h"
#include "agent/planner.h"
#include "vornlcapi/test/gtest.h"

namespace agent {

class LinuxTest : public vorn::test::SwitchTest {
 protected:
  using vorn::test::SwitchTest::SwitchTest;

  static constexpr int kBridge = 100;
  static constexpr int kOther = 200;  // an interface that is no port of the card

  void SetUp() override {
    ASSERT_TRUE(writer_.begin(kPorts));
    for (unsigned n = 0; n < kPorts; ++n) {
      links_[n] = static_cast<int>(n) + 1;
      Link& link = port(n);
      link.up = link.carrier = link.forwards_v4 = link.forwards_v6 = true;
      link.mac = {0x02, 0, 0x5e, 0, 0x10, static_cast<std::uint8_t>(n + 1)};
    }
    listen_to_cpu();
    settle();
  }

  Link& port(unsigned n) { return linux_.links[static_cast<int>(n) + 1]; }
  Link& bridge(int index = kBridge) {
    Link& link = linux_.links[index];
    link.is_bridge = link.up = link.carrier = link.forwards_v4 = link.forwards_v6 = true;
    link.mac = {0x02, 0, 0x5e, 0, 0x20, static_cast<std::uint8_t>(index)};
    return link;
  }
  void join(unsigned n, int index = kBridge) {
    port(n).master = index;
    port(n).port_state = BridgePortState::forwarding;
  }

  static Ip ip(const std::string& text) {
    Ip result;
    EXPECT_TRUE(parse(text, result)) << text;
    return result;
  }
  static Mac mac(unsigned last) { return {0, 0, 0x5e, 0, 0x53, static_cast<std::uint8_t>(last)}; }

  // An address with its network, as the kernel's tables have them.
  void address(int index, const std::string& own, const std::string& network) {
    linux_.addresses[index].insert(ip(own));
    route(own + (own.find(':') == std::string::npos ? "/32" : "/128"), {{index, false, {}}},
          RouteKind::local);
    route(network, {{index, false, {}}});
  }
  void neighbour(int index, const std::string& address, unsigned last, bool resolved = true) {
    linux_.neighbours[{index, ip(address)}] = Neighbour{mac(last), resolved, false};
  }
  void route(const std::string& to, std::vector<RouteLeg> legs, RouteKind kind = RouteKind::unicast,
             unsigned metric = 0) {
    RouteKey key;
    EXPECT_TRUE(parse(to, key.prefix)) << to;
    key.metric = metric;
    key.table = 254;
    linux_.routes[key] = {Route{kind, std::move(legs)}};
  }
  void remove_route(const std::string& to) {
    RouteKey key;
    EXPECT_TRUE(parse(to, key.prefix)) << to;
    key.table = 254;
    linux_.routes.erase(key);
  }
  static RouteLeg via(int index, const std::string& gateway) { return {index, true, ip(gateway)}; }

  // Has the card do what the tables say, and takes the learned addresses along.
  void settle() {
    plan_ = planner_.plan(linux_, links_, learned_);
    writer_.apply(plan_.card);
    run();
  }

  static constexpr unsigned kPorts = 8;
  LinuxState linux_;
  PortLinks links_;
  LearnedStations learned_;
  Planner planner_;
  Plan plan_;
  std::vector<std::string> said_;
  CardWriter writer_{[this](const std::string& text) { said_.push_back(text); }};
};

}  // namespace agent

#endif  // TESTS_AGENT_LINUX_FIXTURE_H_
