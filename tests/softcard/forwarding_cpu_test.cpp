// SPDX-License-Identifier: Apache-2.0
//
// The CPU's side: filters, packets that it sends, events, and the record of a frame's way.
//
//      a    b    c    d
//      |    |    |    |      VLAN 10: 0, 1 untagged, 2 tagged; VLAN 20: 2 tagged, 3 untagged
//    +-0----1----2----3-+
//    +------------------+

#include <set>

#include "tests/softcard/switch_fixture.h"

namespace softcard {
namespace {

class CpuTest : public SwitchTest {
 protected:
  CpuTest() {
    vlan(10, mps({2}), mps({0, 1}));
    vlan(20, mps({2}), mps({3}));
  }
  void keep_floods_from_cpu() {
    for (const PortIndex port : card.tables().ports.all()) {
      ok(sdk.set_port_flood_blocking_cpu(mp(port), FLOOD_BLOCK_ALL));
    }
  }
  Packet packet(const std::string& words, unsigned type = PACKET_TYPE_DATA) {
    Packet packet;
    packet.set_data(bytes_of(words));
    packet.set_type(type);
    return packet;
  }
};

// ---- Filters ------------------------------------------------------------------------------------

// effect: add_arp_filter - ARP for the addresses goes to the CPU alone
// effect: add_ip_protocol_filter - packets of the protocol go to the CPU alone
// effect: add_l4_destination_port_filter - packets to the port go to the CPU alone
// effect: delete_arp_filter - such packets are forwarded again
// effect: delete_ip_protocol_filter - such packets are forwarded again
// effect: delete_l4_destination_port_filter - such packets are forwarded again
// effect: delete_arp_filter_all - such packets are forwarded again
// effect: delete_ip_protocol_filter_all - such packets are forwarded again
// effect: delete_l4_destination_port_filter_all - such packets are forwarded again
TEST_F(CpuTest, FiltersTakeFramesOutOfTheWay) {
  keep_floods_from_cpu();
  struct Row {
    unsigned reason;
    const char* caught;
    const char* passes;
    bool (*add)(VornSdkBase&);
    bool (*remove)(VornSdkBase&);
    bool (*remove_all)(VornSdkBase&);
  };
  const Row kRows[] = {
      {RX_REASON_ARP_FILTER, "a all arp tpa=192.0.2.200", "a all arp tpa=192.0.3.1",
       [](VornSdkBase& card_sdk) { return card_sdk.add_arp_filter(0xc0000200, 0xffffff00); },
       [](VornSdkBase& card_sdk) { return card_sdk.delete_arp_filter(0xc0000200, 0xffffff00); },
       [](VornSdkBase& card_sdk) { return card_sdk.delete_arp_filter_all(); }},
      {RX_REASON_IP_PROTOCOL_FILTER, "a b ipv4 src=192.0.2.1 dst=192.0.2.2 proto=89",
       "a b ipv4 src=192.0.2.1 dst=192.0.2.2 proto=88",
       [](VornSdkBase& card_sdk) { return card_sdk.add_ip_protocol_filter(89); },
       [](VornSdkBase& card_sdk) { return card_sdk.delete_ip_protocol_filter(89); },
       [](VornSdkBase& card_sdk) { return card_sdk.delete_ip_protocol_filter_all(); }},
      {RX_REASON_L4_PORT_FILTER, "a b ipv6 src=2001:db8::1 dst=2001:db8::2 tcp sport=1 dport=179",
       "a b ipv6 src=2001:db8::1 dst=2001:db8::2 tcp sport=179 dport=1",
       [](VornSdkBase& card_sdk) { return card_sdk.add_l4_destination_port_filter(179); },
       [](VornSdkBase& card_sdk) { return card_sdk.delete_l4_destination_port_filter(179); },
       [](VornSdkBase& card_sdk) { return card_sdk.delete_l4_destination_port_filter_all(); }},
  };
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.reason);
    for (bool (*remove)(VornSdkBase&) : {row.remove, row.remove_all}) {
      ok(row.add(sdk));
      in(0, row.caught);
      cpu(row.reason, row.caught);
      in(0, row.passes);
      skip({1, 2});
      ok(remove(sdk));
      in(0, row.caught);
      skip({1, 2});
    }
  }
}

// ---- Packets from the CPU -----------------------------------------------------------------------

// effect: send_packet_by_port - one copy out of each port, tagged or untagged as listed
TEST_F(CpuTest, SendsByPort) {
  std::list<Mp> tagged = mps({0, 2}), untagged = mps({1, 3}), none_of_them;
  ok(sdk.send_packet_by_port(tagged, untagged, packet("x all")));
  out({0, 2}, "x all");
  out({1, 3}, "x all untagged");
  ok(sdk.send_packet_by_port(tagged, untagged, packet("x all vlan=99 prio=3")));
  out({0, 2}, "x all vlan=99 prio=3");
  out({1, 3}, "x all untagged");
  std::list<Mp> twice = mps({1, 1});
  ok(sdk.send_packet_by_port(none_of_them, twice, packet("x all")));
  out({1, 1}, "x all untagged");
  EXPECT_FALSE(sdk.send_packet_by_port(none_of_them, none_of_them, packet("x all")));
  EXPECT_FALSE(sdk.send_packet_by_port(none_of_them, twice, Packet()));
  EXPECT_EQ(stat(0, STAT_OUT_BROADCAST_PACKETS), 2u);
}

TEST_F(CpuTest, TagOfThePvid) {
  std::list<Mp> tagged = mps({3}), untagged;
  ok(sdk.send_packet_by_port(tagged, untagged, packet("x all")));
  out(3, "x all vlan=20 prio=0");
}

TEST_F(CpuTest, QueueOfTheTagsPriority) {
  std::list<Mp> tagged, untagged = mps({1});
  ok(sdk.set_port_mirror(mp(5), mp(1), MIRROR_TYPE_EGRESS));
  counted();
  ok(sdk.send_packet_by_port(tagged, untagged, packet("x b vlan=10 prio=3")));
  EXPECT_EQ(counted(), "1 out q3; 5 out q3");
  ok(sdk.add_mac_to_port(mp(2), mac('c'), 10, false));
  ok(sdk.send_packet_from_cpu(packet("x c vlan=10 prio=6")));
  EXPECT_EQ(counted(), "2 out q6");
  skip({1, 2, 5});
}

TEST_F(CpuTest, ControlPassesTheSpanningTreeAndDataDoesNot) {
  ok(sdk.set_port_stp_state(mp(0), STP_STATE_BLOCKING));
  std::list<Mp> tagged, untagged = mps({0});
  EXPECT_FALSE(sdk.send_packet_by_port(tagged, untagged, packet("x all")));
  EXPECT_EQ(drops(0, DropReason::stp_egress), 1u);
  ok(sdk.send_packet_by_port(tagged, untagged, packet("x all", PACKET_TYPE_CONTROL)));
  out(0, "x all");
  ok(sdk.set_port_egress_admin_state(mp(0), false));
  EXPECT_FALSE(sdk.send_packet_by_port(tagged, untagged, packet("x all", PACKET_TYPE_CONTROL)));
}

// effect: send_packet_from_cpu - forwarded in its VLAN like any frame, and not back to the CPU
TEST_F(CpuTest, SendsByForwarding) {
  ok(sdk.send_packet_from_cpu(packet("x all vlan=20")));
  out(2, "x all vlan=20");
  out(3, "x all untagged");
  ok(sdk.send_packet_from_cpu(packet("x all")));  // VLAN 1, which all ports are in
  skip({0, 1, 2, 3, 4, 5, 6, 7});
  ok(sdk.add_mac_to_port(mp(1), mac('b'), 10, false));
  ok(sdk.send_packet_from_cpu(packet("x b vlan=10")));
  out(1, "x b untagged");
  EXPECT_EQ(card.tables().fdb.find(10, MacAddress::from_bytes(mac('x'))), nullptr);
  ok(sdk.add_system_mac(mac('s'), 10));
  ok(sdk.send_packet_from_cpu(packet("x s vlan=10")));
  EXPECT_EQ(card.tables().drops.count(kNoPort, DropReason::cpu_queue), 1u);
  EXPECT_FALSE(sdk.send_packet_from_cpu(packet("x b vlan=99")));
  ok(sdk.set_port_stp_state(mp(3), STP_STATE_BLOCKING));
  ok(sdk.send_packet_from_cpu(packet("x all vlan=20")));
  skip({2});
  std::uint32_t flow = 0;
  for (int way = 0; way < 2; ++way) {
    ok(sdk.send_packet_from_cpu(packet("x all vlan=20", PACKET_TYPE_CONTROL)));
    skip({2, 3});
    card.tables().flows.add(FlowMatch(), flow);  // the second time by a flow
    card.tables().flows.add_action(flow, {OF_ACTION_OUTPUT, {OF_PORT_NORMAL, 0, 0}, {}});
  }
}

// ---- Events -------------------------------------------------------------------------------------

struct Seen {
  std::vector<std::string> lines;
};
Seen* seen = nullptr;

void note(const std::string& line) { seen->lines.push_back(line); }

void on_link(LinkStatus* status, Usp* port) {
  note("link " + AddressPlan::text(*port) + " " + std::to_string(status->state) + " " +
       std::to_string(status->speed));
}
void on_link_c(ctype_link_status_s* status, usp_s* port) {
  note("c link " + std::to_string(port->port) + " " + std::to_string(status->state));
}
void on_mac(L2Addr* entry, int what, void*) {
  note("mac " + std::string(1, static_cast<char>(entry->mac[5])) + " " + std::to_string(what) +
       " at " + AddressPlan::text(entry->port));
}
void on_mac_c(ctype_l2_addr_s* entry, int what, void*) {
  note("c mac " + std::to_string(what) + " vlan " + std::to_string(entry->vlan));
}
void on_packet(RxPacket* packet, void*) { note("rx " + std::to_string(packet->reason)); }
void on_packet_c(ctype_rx_packet_s* packet, void* lines) {
  static_cast<Seen*>(lines)->lines.push_back("c rx " + std::to_string(packet->port.port) + " " +
                                             std::to_string(packet->vlan));
}

class EventTest : public CpuTest {
 protected:
  EventTest() { seen = &lines; }
  ~EventTest() override { seen = nullptr; }
  void expect(const std::vector<std::string>& wanted) {
    card.deliver_events();
    CpuPacket packet;
    while (take_cpu(packet)) continue;
    EXPECT_EQ(lines.lines, wanted);
    lines.lines.clear();
  }
  template <class Callback>
  bool deregister(lcmgr_report_event_t kind, Callback callback) {
    return sdk.deregister_event_callback(kind, reinterpret_cast<void*>(callback), nullptr);
  }
  Seen lines;
};

// effect: register_rx_packet_callback - hears of packets for the CPU
// effect: register_rx_packet_callback_c - the same in C
// effect: register_link_change_callback - hears of links
// effect: register_link_change_callback_c - the same in C
// effect: register_mac_update_callback - hears of the MAC table
// effect: register_mac_update_callback_c - the same in C
// effect: deregister_event_callback - hears no more
TEST_F(EventTest, EventsComeInTheirOrderToAllThatListen) {
  ok(sdk.register_link_change_callback(on_link, nullptr));
  ok(sdk.register_mac_update_callback(on_mac, nullptr));
  ok(sdk.register_rx_packet_callback(on_packet, nullptr));
  ok(sdk.register_rx_packet_callback_c(on_packet_c, &lines));
  ok(sdk.register_mac_update_callback_c(on_mac_c, nullptr));
  ok(sdk.register_link_change_callback_c(on_link_c, nullptr));
  in(0, "a all");
  skip({1, 2});
  ok(sdk.set_port_state(mp(0), false));
  EXPECT_TRUE(lines.lines.empty()) << "not from within";
  expect({"mac a 1 at 1/1/0", "c mac 1 vlan 10", "rx 7", "c rx 0 10", "link 1/1/0 0 0",
          "c link 0 0", "mac a 3 at 1/1/0", "c mac 3 vlan 10"});
  ok(sdk.set_port_state(mp(0), true));
  expect({"link 1/1/0 1 1000", "c link 0 1"});

  ok(deregister(LCMGR_REPORT_LINK_CHANGE, on_link) &&
     deregister(LCMGR_REPORT_MAC_UPDATE, on_mac_c) &&
     deregister(LCMGR_REPORT_RX_PACKET, on_packet));
  EXPECT_FALSE(deregister(LCMGR_REPORT_RX_PACKET, on_packet));
  in(0, "a all");
  skip({1, 2});
  expect({"mac a 1 at 1/1/0", "c rx 0 10"});
}

TEST_F(EventTest, MacUpdatesByCause) {
  ok(sdk.register_mac_update_callback(on_mac, nullptr));
  keep_floods_from_cpu();
  in(0, "a a");
  expect({"mac a 1 at 1/1/0"});
  in(1, "a a");
  expect({"mac a 2 at 1/1/1"});
  warp(301);
  expect({"mac a 3 at 1/1/1"});
  ok(sdk.add_mac_to_port(mp(2), mac('b'), 10, false));
  ok(sdk.delete_mac(mac('b'), 10));
  expect({"mac b 1 at 1/1/2", "mac b 3 at 1/1/2"});
}

// An address between two ports: one event a second, and the last one is the truth.
TEST_F(EventTest, FlappingAddressIsDamped) {
  keep_floods_from_cpu();
  in(0, "a a");
  ok(sdk.register_mac_update_callback(on_mac, nullptr));
  for (int i = 0; i < 1000; ++i) {
    in(1, "a a");
    in(0, "a a");
  }
  in(1, "a a");
  expect({"mac a 2 at 1/1/1"});
  warp(0.9);
  expect({});
  warp(0.2);
  expect({"mac a 2 at 1/1/1"});
  EXPECT_EQ(card.events().mac_moves_held_back(), 2000u);
  warp(2);
  in(0, "a a");
  in(1, "a a");  // held back, and overtaken by the removal
  ok(sdk.delete_mac(mac('a'), 10));
  warp(2);
  expect({"mac a 2 at 1/1/0", "mac a 3 at 1/1/1"});
  card.events().set_mac_moves_per_second(0);
  for (const PortIndex port : {PortIndex{0}, PortIndex{1}, PortIndex{0}}) in(port, "a a");
  expect({"mac a 1 at 1/1/0", "mac a 2 at 1/1/1", "mac a 2 at 1/1/0"});
}

// A callback may do anything: what it causes comes with the next delivery.
TEST_F(EventTest, CallbacksCallBack) {
  ok(sdk.register_mac_update_callback(
      [](L2Addr* entry, int what, void* test) {
        auto* self = static_cast<EventTest*>(test);
        note("mac " + std::to_string(what));
        EXPECT_EQ(self->card.deliver_events(), 0u);
        if (what == MAC_UPDATE_LEARNED) {
          EXPECT_TRUE(self->sdk.delete_mac(entry->mac, entry->vlan));
          EXPECT_TRUE(self->sdk.register_link_change_callback(on_link, nullptr));
          EXPECT_TRUE(self->sdk.set_port_state(mp(3), false));
        }
      },
      this));
  keep_floods_from_cpu();
  in(0, "a a");
  expect({"mac 1"});
  expect({"mac 3", "link 1/1/3 0 0"});
}

TEST_F(EventTest, QueueForTheCpuHasItsRoom) {
  card.events().set_room(LCMGR_REPORT_RX_PACKET, 3);
  for (int i = 0; i < 5; ++i) in(0, "a all");
  skip({1, 2}, 5);
  for (int i = 0; i < 3; ++i) cpu(RX_REASON_FLOOD, "a all");
  EXPECT_EQ(card.events().lost(LCMGR_REPORT_RX_PACKET), 2u);
  in(0, "a 01:80:c2:00:00:02");
  cpu(RX_REASON_RESERVED, "");
}

// ---- Why ----------------------------------------------------------------------------------------

TEST_F(CpuTest, TraceTellsTheWay) {
  keep_floods_from_cpu();
  Trace trace;
  card.pipeline().set_trace(&trace);
  in(0, "a b");
  skip({1, 2});
  const std::string way = trace.to_string();
  for (const char* step :
       {"port       1/1/0 received", "vlan       PVID: VLAN 10",
        "learn      00:00:5e:00:53:61 learned", "is unknown", "flood      VLAN 10 to 2 port(s)",
        "out        1/1/1 untagged, queue 0", "out        1/1/2 tagged, queue 0"}) {
    EXPECT_NE(way.find(step), std::string::npos) << step << "\nin\n" << way;
  }
  trace.clear();
  in(0, "a b vlan=77");
  EXPECT_NE(trace.to_string().find("(no-vlan)"), std::string::npos) << trace.to_string();
  trace.clear();
  ok(sdk.add_mac_to_port(mp(1), mac('a'), 10, false));
  in(0, "a b");
  skip({1, 2});
  EXPECT_NE(trace.to_string().find("is static elsewhere"), std::string::npos);
  card.pipeline().set_trace(nullptr);
  trace.clear();
  in(0, "a b vlan=77");
  EXPECT_TRUE(trace.steps().empty());
  EXPECT_EQ(card.tables().drops.count(DropReason::no_vlan), 2u);
}

// No two reasons or actions read alike.
TEST(TraceTexts, TellEverythingApart) {
  std::set<std::string> names, texts, cpu_texts, actions;
  for (std::size_t i = 0; i < kDropReasons; ++i) {
    names.insert(name(static_cast<DropReason>(i)));
    texts.insert(text(static_cast<DropReason>(i)));
  }
  for (unsigned reason = RX_REASON_RESERVED; reason <= RX_REASON_MTU + 1; ++reason) {
    cpu_texts.insert(rx_reason_text(reason));
  }
  for (unsigned kind = OF_ACTION_OUTPUT; kind <= OF_ACTION_SET_QUEUE + 1; ++kind) {
    actions.insert(flow_action_text(kind));
  }
  EXPECT_TRUE(names.size() == kDropReasons && texts.size() == kDropReasons);
  EXPECT_EQ(cpu_texts.size(), RX_REASON_MTU + 1u) << "the last one is unknown";
  EXPECT_EQ(actions.size(), OF_ACTION_SET_QUEUE - OF_ACTION_OUTPUT + 2u);
}

}  // namespace
}  // namespace softcard
