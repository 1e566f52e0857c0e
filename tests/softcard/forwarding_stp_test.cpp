// SPDX-License-Identifier: Apache-2.0
//
// Spanning-tree states of ports and instances, BPDUs, and reserved group addresses.
//
//      a    b    c
//      |    |    |         VLAN 10 (instance 0) and 20 (instance 63): 0, 1, 2 tagged
//    +-0----1----2-+
//    +-------------+

#include "tests/softcard/switch_fixture.h"

namespace softcard {
namespace {

constexpr char kBpdu[] = "a 01:80:c2:00:00:00 llc dsap=0x42 ssap=0x42 payload=0000000000";

class StpTest : public SwitchTest {
 protected:
  StpTest() {
    vlan(10, mps({0, 1, 2}), {});
    vlan(20, mps({0, 1, 2}), {});
    for (PortIndex port = 0; port < 3; ++port) {
      ok(sdk.set_port_flood_blocking_cpu(mp(port), FLOOD_BLOCK_ALL));
    }
  }
  bool known(char station, std::uint16_t vlan) {
    return card.tables().fdb.find(vlan, MacAddress::from_bytes(mac(station))) != nullptr;
  }
};

// effect: set_port_stp_state - which states let data in and out, learn, and hand BPDUs to the CPU
TEST_F(StpTest, StatesOfThePort) {
  const struct {
    stp_state_t state;
    bool forwards, learns, bpdus;
  } kRows[] = {{STP_STATE_BLOCKING, false, false, true},
               {STP_STATE_LISTENING, false, false, true},
               {STP_STATE_LEARNING, false, true, true},
               {STP_STATE_FORWARDING, true, true, true},
               {STP_STATE_DISABLED, false, false, false}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.state);
    ok(sdk.clear_fdb_table(false));
    ok(sdk.set_port_stp_state(mp(0), row.state));
    stp_state_t state = STP_STATE_DISABLED;
    ok(sdk.get_port_stp_state(mp(0), state));
    EXPECT_EQ(state, row.state);
    in(0, "a all vlan=10");
    if (row.forwards) skip({1, 2});
    EXPECT_EQ(known('a', 10), row.learns);
    in(1, "b all vlan=10");
    out(2, "b all");
    if (row.forwards) out(0, "b all");
    in(0, kBpdu);
    if (row.bpdus) cpu(RX_REASON_RESERVED, kBpdu);
  }
  EXPECT_EQ(stat(0, STAT_IN_STP_DISCARDS), 5u);
  EXPECT_EQ(drops(0, DropReason::stp_egress), 4u);
}

// VLAN 20 follows the last instance.
class MstpTest : public SwitchTest {
 protected:
  static constexpr unsigned kLast = kMstpInstances - 1;

  static CardDescription two_instances() {
    CardDescription description = eight_ports();
    description.mstp_instance[20] = kLast;
    return description;
  }
  MstpTest() : SwitchTest(two_instances()) {
    vlan(10, mps({0, 1, 2}), {});
    vlan(20, mps({0, 1, 2}), {});
    for (PortIndex port = 0; port < 3; ++port) {
      ok(sdk.set_port_flood_blocking_cpu(mp(port), FLOOD_BLOCK_ALL));
    }
    for (const unsigned number : {10u, 20u}) {
      ok(sdk.add_mac_to_port(mp(1), mac('b'), number, false));
    }
    counted();
  }
};

// effect: set_port_mstp_state - the same for the VLANs of the instance alone
TEST_F(MstpTest, InstanceByVlan) {
  const struct {
    mstp_state_t state;
    bool forwards, learns;
  } kRows[] = {{MSTP_STATE_BLOCKING, false, false},
               {MSTP_STATE_LEARNING, false, true},
               {MSTP_STATE_FORWARDING, true, true}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.state);
    ok(sdk.clear_fdb_table(false));
    ok(sdk.set_port_mstp_state(kLast, mp(1), row.state));
    mstp_state_t state = MSTP_STATE_DISABLED;
    ok(sdk.get_port_mstp_state(kLast, mp(1), state));
    EXPECT_EQ(state, row.state);
    in(0, "a b vlan=10");  // instance 0 lets everything through
    EXPECT_EQ(counted(), "0 in; 1 out q0");
    in(0, "a b vlan=20");
    EXPECT_EQ(counted(), row.forwards ? "0 in; 1 out q0" : "0 in; 1 out-discards !stp-egress");
    in(0, "a all vlan=20");
    EXPECT_EQ(counted(), row.forwards
                             ? "0 in-broadcast; 1 out-broadcast q0; 2 out-broadcast q0"
                             : "0 in-broadcast; 1 out-discards !stp-egress; 2 out-broadcast q0");
    in(1, "x a vlan=10");
    EXPECT_EQ(counted(), "0 out q0; 1 in");
    in(1, "x a vlan=20");
    EXPECT_EQ(counted(), row.forwards ? "0 out q0; 1 in" : "1 in in-discards in-stp !stp-ingress");
    const auto* learned = card.tables().fdb.find(20, MacAddress::from_bytes(mac('x')));
    EXPECT_EQ(learned != nullptr, row.learns);
  }
  for (PortIndex port = 0; port < 3; ++port) cable(port).clear();
}

// A packet that the CPU sends by port is in the VLAN of its tag, else in that of the port's PVID.
TEST_F(MstpTest, InstanceOfWhatTheCpuSends) {
  ok(sdk.set_port_mstp_state(kLast, mp(1), MSTP_STATE_BLOCKING));
  std::list<Mp> tagged = mps({1}), untagged;
  const auto sends = [&](const char* frame) {
    Packet packet;
    packet.set_data(bytes_of(frame));
    const bool sent = sdk.send_packet_by_port(tagged, untagged, packet);
    if (sent) skip({1});
    return sent;
  };
  EXPECT_TRUE(sends("x b vlan=10"));
  EXPECT_FALSE(sends("x b vlan=20"));
  EXPECT_TRUE(sends("x b"));
  ok(sdk.set_port_pvid(mp(1), 20));
  EXPECT_TRUE(sends("x b vlan=10"));
  EXPECT_FALSE(sends("x b"));
  ok(sdk.set_port_mstp_state(kLast, mp(1), MSTP_STATE_FORWARDING));
  EXPECT_TRUE(sends("x b"));
  ok(sdk.set_port_stp_state(mp(1), STP_STATE_BLOCKING));  // holds for every instance
  EXPECT_FALSE(sends("x b"));
}

// effect: set_port_bpdu_processing - off: BPDUs are flooded like any multicast
TEST_F(StpTest, BpduIsMulticastWhenNotProcessed) {
  vlan(30, {}, mps({0, 1}));
  ok(sdk.set_port_bpdu_processing(mp(0), false));
  in(0, kBpdu);
  out(1, kBpdu);
  ok(sdk.set_port_stp_state(mp(0), STP_STATE_BLOCKING));
  in(0, kBpdu);
  EXPECT_EQ(drops(0, DropReason::stp_ingress), 1u);
  bool on = true;
  ok(sdk.get_port_bpdu_processing(mp(0), on));
  EXPECT_FALSE(on);
  for (const char* last : {"02", "0e", "0f"}) {  // LACP and LLDP are no BPDUs
    in(0, "a 01:80:c2:00:00:" + std::string(last));
    cpu(RX_REASON_RESERVED, "");
  }
  in(1, kBpdu);  // the other port's are processed
  cpu(RX_REASON_RESERVED, kBpdu);
}

TEST_F(StpTest, ReservedAddressesReachTheCpuAndNobodyElse) {
  for (const char* last : {"02", "03", "0e", "0f", "01"}) {
    const std::string lldp = "a 01:80:c2:00:00:" + std::string(last) + " type=0x88cc payload=00";
    in(0, lldp);
    const CpuPacket packet = cpu(RX_REASON_RESERVED, lldp);
    EXPECT_EQ(packet.port, AddressPlan::usp_of(0));
    EXPECT_EQ(packet.vlan, 1u);
  }
  ok(sdk.delete_vlan(1));  // without a VLAN they still come
  in(0, "a 01:80:c2:00:00:02 type=0x8809");
  EXPECT_EQ(cpu(RX_REASON_RESERVED, "").vlan, 0u);
  in(0, "a 01:80:c2:00:00:10 vlan=10");  // the first address that is not reserved
  out({1, 2}, "a 01:80:c2:00:00:10");
}

// A patch from port 1 to port 2 makes a loop; blocking one end cuts it.
TEST_F(StpTest, LoopIsCut) {
  auto ends = PatchCable::make();
  card.plug(1, std::move(ends.first));
  card.plug(2, std::move(ends.second));
  ok(sdk.set_port_stp_state(mp(2), STP_STATE_BLOCKING));
  in(0, "a all vlan=10");
  for (int round = 0; round < 10; ++round) card.run_once();
  EXPECT_EQ(stat(1, STAT_OUT_BROADCAST_PACKETS), 1u);
  EXPECT_EQ(stat(2, STAT_IN_STP_DISCARDS), 1u);
  EXPECT_EQ(stat(0, STAT_OUT_BROADCAST_PACKETS), 0u);

  ok(sdk.set_port_stp_state(mp(2), STP_STATE_FORWARDING));
  in(0, "a all vlan=10");
  for (int round = 0; round < 10; ++round) card.run_once(1);
  EXPECT_GE(stat(0, STAT_OUT_BROADCAST_PACKETS), 10u);
  cable(0).clear();
  card.plug(1, nullptr);
  card.plug(2, nullptr);
}

}  // namespace
}  // namespace softcard
