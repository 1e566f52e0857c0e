// SPDX-License-Identifier: Apache-2.0

#include "vornlcapi/api/packet.h"

#include "tests/api/rows.h"

namespace vorn::test {
namespace {

Packet packet() {
  Packet made;
  made.set_type(9);
  made.set_data({0xca, 0xfe});
  return made;
}

std::vector<Row> rows() {
  // clang-format off
  return {
      {"send_packet_from_cpu", [] { return vorn_send_packet_from_cpu(packet()); },
       {95}, call("send_packet_from_cpu(9 2 cafe)")},
      // A port that cannot be asked for is left out, a lookup that fails in the selection is made
      // again; only the last two steps decide.
      {"send_packet_by_port", [] { return vorn_send_packet_by_port({kPort}, the_ports, packet()); },
       {65, 94},
       {{kPort,
         {"get_sdk()", "is_port_physical(1/1/3)", "usp_to_mp(1/1/3)", "get_port_link_state(2:7,&)",
          "get_sdk()", "get_sdk()", "send_packet_by_port([2:7],[],9 2 cafe)"},
         true,
         {{1, true, {"get_sdk()", "get_sdk()", "send_packet_by_port([],[],9 2 cafe)"}},
          {2,
           true,
           {"is_port_logical_lag(1/1/3)", "is_port_logical_vlan(1/1/3)", "get_sdk()", "get_sdk()",
            "send_packet_by_port([],[],9 2 cafe)"}},
          {3, true, {"get_sdk()", "get_sdk()", "send_packet_by_port([],[],9 2 cafe)"}},
          {4, true, {"get_sdk()", "get_sdk()", "send_packet_by_port([],[],9 2 cafe)"}},
          {5, true, {"get_sdk()", "send_packet_by_port([2:7],[],9 2 cafe)"}}}}}},
  };
  // clang-format on
}
INSTANTIATE_TEST_SUITE_P(Packet, EntryPoint, testing::ValuesIn(rows()), row_name);

// ---- Which hardware ports are chosen: the last step shows it ------------------------------------

struct Egress {
  std::list<Usp> tagged;
  std::list<Usp> untagged;
  std::map<unsigned int, phy_state_t> links;
  std::string chosen;
};
constexpr phy_state_t kDown = PHY_STATE_DOWN;

TEST(SendPacketByPort, ChoosesPortsThatAreUp) {
  const Egress egresses[] = {
      {{kPort, kOtherPort}, {kVlan}, {}, "[2:7 2:8],[2:5 2:6]"},
      {{kPort, kOtherPort}, {}, {{7, kDown}, {8, phy_state_t(2)}}, "[],[]"},
      {{kLag}, {kLag}, {}, "[2:1],[2:1]"},
      {{kLag}, {kPort}, {{1, kDown}}, "[2:2],[2:7]"},
      {{kLag}, {}, {{1, kDown}, {2, kDown}, {3, kDown}}, "[],[]"},
      {{kVlan, kPort}, {}, {{5, kDown}}, "[2:6 2:7],[]"},
      {{kVlan}, {}, {{6, kDown}}, "[2:5],[]"},
      {{kUnknown, kNewLag, kEmptyLag, kPort}, {}, {}, "[2:7],[]"},
      {{kPort, kPort}, {kPort}, {}, "[2:7 2:7],[2:7]"},
      {{}, {}, {}, "[],[]"},
  };
  for (const Egress& egress : egresses) {
    host().reset();
    host().links = egress.links;
    EXPECT_TRUE(vorn_send_packet_by_port(egress.tagged, egress.untagged, packet()));
    EXPECT_EQ(host().steps.back(), "send_packet_by_port(" + egress.chosen + ",9 2 cafe)");
  }
}

TEST(SendPacketByPort, AsksNoMemberOfALagBehindTheFirstThatIsUp) {
  host().reset();
  host().links = {{1, kDown}};
  EXPECT_TRUE(vorn_send_packet_by_port({kLag}, {}, packet()));
  EXPECT_EQ(
      host().steps,
      (Steps{"get_sdk()", "is_port_physical(1/20/5)", "is_port_logical_lag(1/20/5)",
             "usp_to_mp_list(1/20/5)", "get_port_link_state(2:1,&)", "get_port_link_state(2:2,&)",
             "get_sdk()", "get_sdk()", "send_packet_by_port([2:2],[],9 2 cafe)"}));
}

// A member whose link cannot be asked for counts as down: of a LAG the next one is taken.
TEST(SendPacketByPort, PassesOverAMemberThatCannotBeAskedFor) {
  for (const auto& [port, refuse, chosen] :
       {std::tuple(kLag, 5U, "[2:2],[]"), std::tuple(kVlan, 6U, "[2:6],[]"),
        std::tuple(kLag, 4U, "[],[]"), std::tuple(kVlan, 5U, "[],[]")}) {
    host().reset();
    host().refuse = refuse;
    host().answers = true;  // the refused query says "up" all the same
    EXPECT_TRUE(vorn_send_packet_by_port({port}, {}, packet()));
    EXPECT_EQ(host().steps.back(), std::string("send_packet_by_port(") + chosen + ",9 2 cafe)");
  }
}

}  // namespace
}  // namespace vorn::test
