// SPDX-License-Identifier: Apache-2.0
//
// The queue of events on its own: what callbacks are given in both forms, who is called and when,
// what callbacks may do, what waits and what is lost.

#include "softcard/events.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "softcard/base/address_plan.h"
#include "softcard/base/clock.h"

namespace softcard {
namespace {

using Lines = std::vector<std::string>;

constexpr std::uint64_t kSecond = kNanosecondsPerSecond;

// Every callback notes what it was given, and then does what `then` says.
class EventQueueTest;
EventQueueTest* test = nullptr;

class EventQueueTest : public testing::Test {
 protected:
  EventQueueTest() { test = this; }
  ~EventQueueTest() override {
    test = nullptr;
    events.end();
    EXPECT_EQ(pool.in_use(), 0u);
  }

 public:
  static void note(const std::string& line) {
    test->lines.push_back(line);
    const auto then = test->then;  // a copy: it may set another
    if (then) then();
  }
  static std::string text(const usp_s& port) {
    return AddressPlan::text(Usp(port.unit, port.slot, port.port));
  }

  static void on_packet(RxPacket* packet, void* name) {
    note(std::string(static_cast<const char*>(name)) + " rx " + std::to_string(packet->reason) +
         " " + AddressPlan::text(packet->port) + " vlan " + std::to_string(packet->vlan) +
         " prio " + std::to_string(packet->priority) + " bytes " + std::to_string(packet->length) +
         " of " + std::to_string(packet->data[0]));
  }
  static void on_packet_c(ctype_rx_packet_s* packet, void* name) {
    note(std::string(static_cast<const char*>(name)) + " rx " + std::to_string(packet->reason) +
         " " + text(packet->port) + " vlan " + std::to_string(packet->vlan) + " prio " +
         std::to_string(packet->priority) + " bytes " + std::to_string(packet->length) + " of " +
         std::to_string(packet->data[0]));
  }
  static void on_link(LinkStatus* status, Usp* port) {
    note("link " + AddressPlan::text(*port) + " " + std::to_string(status->state) + " " +
         std::to_string(status->speed) + " " + std::to_string(status->duplex));
  }
  static void on_link_c(ctype_link_status_s* status, usp_s* port) {
    note("c link " + text(*port) + " " + std::to_string(status->state) + " " +
         std::to_string(status->speed) + " " + std::to_string(status->duplex));
  }
  static void on_mac(L2Addr* entry, int what, void* name) {
    note(std::string(static_cast<const char*>(name)) + " mac " + std::to_string(entry->mac[0]) +
         ":" + std::to_string(entry->mac[5]) + " vlan " + std::to_string(entry->vlan) + " at " +
         AddressPlan::text(entry->port) + " flags " + std::to_string(entry->flags) + " what " +
         std::to_string(what));
  }
  static void on_mac_c(ctype_l2_addr_s* entry, int what, void* name) {
    note(std::string(static_cast<const char*>(name)) + " mac " + std::to_string(entry->mac[0]) +
         ":" + std::to_string(entry->mac[5]) + " vlan " + std::to_string(entry->vlan) + " at " +
         text(entry->port) + " flags " + std::to_string(entry->flags) + " what " +
         std::to_string(what));
  }
  static void* name(const char* text) { return const_cast<char*>(text); }
  template <class Callback>
  static void* address(Callback* callback) {
    return reinterpret_cast<void*>(callback);
  }

  bool post_packet(unsigned reason, PortIndex port = 3) {
    FramePtr frame = pool.make(60);
    frame->ingress = port;
    frame->vlan = 10;
    frame->priority = 5;
    frame->data()[0] = 0xAB;
    return events.post_packet(std::move(frame), reason);
  }
  void post_link(PortIndex port, phy_state_t state) {
    LinkStatus status;
    status.state = state;
    status.speed = SPEED_TYPE_1000;
    status.duplex = DUPLEX_TYPE_FULL;
    events.post_link_change(port, status);
  }
  void post_mac(FdbChange::What what, std::uint8_t mac, PortIndex port, std::uint64_t now_ns = 0,
                FdbChange::Cause cause = FdbChange::Cause::learned,
                FdbKind kind = FdbKind::learned) {
    events.post_mac_change({what, cause, kind, 20, MacAddress::from_number(0x020000000000 | mac),
                            Destination::port(port), Destination::none()},
                           now_ns);
  }
  void post_move(std::uint8_t mac, PortIndex port, std::uint64_t now_ns) {
    post_mac(FdbChange::What::moved, mac, port, now_ns);
  }
  // Delivers, and gives what callbacks noted.
  Lines delivered(std::uint64_t now_ns = 0) {
    events.deliver(now_ns);
    Lines noted;
    noted.swap(lines);
    return noted;
  }

  FramePool pool{64, 1};
  EventQueue events{[](Destination destination) {
    return destination.is_port() ? AddressPlan::usp_of(destination.number) : Usp(0, 0, 0);
  }};
  Lines lines;
  std::function<void()> then;
};

TEST_F(EventQueueTest, BothFormsAreGivenTheSame) {
  const std::string kPacket = " rx 7 1/1/3 vlan 10 prio 5 bytes 60 of 171";
  const std::string kMac = " mac 2:9 vlan 20 at 1/1/4 flags ";
  const std::string kLink = "link 1/1/2 " + std::to_string(PHY_STATE_UP) + " " +
                            std::to_string(SPEED_TYPE_1000) + " " +
                            std::to_string(DUPLEX_TYPE_FULL);
  ASSERT_TRUE(events.add(on_packet, name("cpp")) && events.add(on_packet_c, name("c")));
  ASSERT_TRUE(events.add(on_link_c) && events.add(on_link));
  ASSERT_TRUE(events.add(on_mac, name("cpp")) && events.add(on_mac_c, name("c")));
  post_mac(FdbChange::What::added, 9, 4);
  EXPECT_TRUE(post_packet(7));
  post_link(2, PHY_STATE_UP);
  post_mac(FdbChange::What::moved, 9, 4, 0, FdbChange::Cause::configured, FdbKind::static_entry);
  post_mac(FdbChange::What::removed, 9, 4, 0, FdbChange::Cause::deleted, FdbKind::system_entry);
  EXPECT_TRUE(post_packet(8, kNoPort));
  EXPECT_TRUE(lines.empty()) << "nothing is called while something works";
  EXPECT_TRUE(events.pending());
  EXPECT_EQ(delivered(), (Lines{"cpp" + kMac + "0 what 1", "c" + kMac + "0 what 1", "cpp" + kPacket,
                                "c" + kPacket, "c " + kLink, kLink,
                                "cpp" + kMac + std::to_string(L2_ADDR_STATIC) + " what 2",
                                "c" + kMac + std::to_string(L2_ADDR_STATIC) + " what 2",
                                "cpp" + kMac + std::to_string(L2_ADDR_SYSTEM) + " what 3",
                                "c" + kMac + std::to_string(L2_ADDR_SYSTEM) + " what 3",
                                "cpp rx 8 0/0/0 vlan 10 prio 5 bytes 60 of 171",
                                "c rx 8 0/0/0 vlan 10 prio 5 bytes 60 of 171"}));
  EXPECT_FALSE(events.pending());
  EXPECT_EQ(events.deliver(0), 0u);
}

TEST_F(EventQueueTest, RegistrationsAreCountedByKind) {
  EXPECT_FALSE(events.wants_packets() || events.wants_mac_changes());
  EXPECT_FALSE(post_packet(7)) << "nobody listens";
  post_link(1, PHY_STATE_UP);
  post_mac(FdbChange::What::added, 1, 1);
  EXPECT_FALSE(events.pending());
  EXPECT_EQ(events.lost(LCMGR_REPORT_RX_PACKET), 0u) << "and so nothing is lost";

  EXPECT_FALSE(events.add(static_cast<void (*)(RxPacket*, void*)>(nullptr), nullptr));
  EXPECT_TRUE(events.add(on_packet, name("a")));
  EXPECT_FALSE(events.add(on_packet, name("a"))) << "the same pair";
  EXPECT_TRUE(events.add(on_packet, name("b")));
  EXPECT_TRUE(events.wants_packets() && !events.wants_mac_changes());
  EXPECT_FALSE(events.remove(LCMGR_REPORT_MAC_UPDATE, address(on_packet), name("a")));
  EXPECT_FALSE(events.remove(LCMGR_REPORT_RX_PACKET, address(on_packet), name("c")));
  EXPECT_TRUE(events.remove(LCMGR_REPORT_RX_PACKET, address(on_packet), name("a")));
  EXPECT_FALSE(events.remove(LCMGR_REPORT_RX_PACKET, address(on_packet), name("a")));
  EXPECT_TRUE(events.wants_packets());
  EXPECT_TRUE(events.remove(LCMGR_REPORT_RX_PACKET, address(on_packet), name("b")));
  EXPECT_FALSE(events.wants_packets());

  // One function in both forms goes at once.
  const auto as_c = reinterpret_cast<void (*)(ctype_l2_addr_s*, int, void*)>(on_mac);
  EXPECT_TRUE(events.add(on_mac, nullptr) && events.add(as_c, nullptr));
  EXPECT_TRUE(events.remove(LCMGR_REPORT_MAC_UPDATE, address(on_mac), nullptr));
  EXPECT_FALSE(events.wants_mac_changes());
}

TEST_F(EventQueueTest, ExceptionPassesAndWhatIsBehindComesNext) {
  ASSERT_TRUE(events.add(on_packet, name("a")) && events.add(on_packet, name("b")));
  for (unsigned reason = 1; reason <= 3; ++reason) EXPECT_TRUE(post_packet(reason));
  then = [] { throw std::runtime_error("no"); };
  EXPECT_THROW(events.deliver(0), std::runtime_error);
  EXPECT_EQ(lines.size(), 1u);
  EXPECT_EQ(events.waiting(LCMGR_REPORT_RX_PACKET), 2u);
  EXPECT_TRUE(events.pending());
  then = nullptr;
  lines.clear();
  EXPECT_TRUE(post_packet(4)) << "behind those that wait still";
  EXPECT_EQ(events.deliver(0), 2u);
  EXPECT_EQ(lines.size(), 4u);
  EXPECT_EQ(lines[0].substr(0, 6), "a rx 2");
  EXPECT_EQ(lines[3].substr(0, 6), "b rx 3");
  lines.clear();
  EXPECT_EQ(events.deliver(0), 1u);
  EXPECT_EQ(lines[0].substr(0, 6), "a rx 4");
}

TEST_F(EventQueueTest, CallbacksMayRegisterAndRemove) {
  ASSERT_TRUE(events.add(on_packet, name("a")) && events.add(on_packet, name("b")) &&
              events.add(on_packet, name("c")));
  for (unsigned reason = 1; reason <= 2; ++reason) EXPECT_TRUE(post_packet(reason));
  then = [this] {
    then = nullptr;
    EXPECT_EQ(events.deliver(0), 0u) << "not from within";
    EXPECT_TRUE(events.remove(LCMGR_REPORT_RX_PACKET, address(on_packet), name("b")));
    EXPECT_TRUE(events.add(on_packet, name("d")));
    EXPECT_TRUE(events.remove(LCMGR_REPORT_RX_PACKET, address(on_packet), name("a")));
    EXPECT_TRUE(events.add(on_packet, name("a"))) << "a new one, behind the others";
    EXPECT_TRUE(post_packet(3));
  };
  Lines order;
  for (const std::string& line : delivered()) order.push_back(line.substr(0, 6));
  EXPECT_EQ(order, (Lines{"a rx 1", "c rx 1", "c rx 2", "d rx 2", "a rx 2"}));
  order.clear();
  for (const std::string& line : delivered()) order.push_back(line.substr(0, 6));
  EXPECT_EQ(order, (Lines{"c rx 3", "d rx 3", "a rx 3"}));
}

TEST_F(EventQueueTest, AfterItsEndNobodyIsCalled) {
  ASSERT_TRUE(events.add(on_packet, name("a")) && events.add(on_packet, name("b")) &&
              events.add(on_mac, name("a")));
  for (unsigned reason = 1; reason <= 3; ++reason) EXPECT_TRUE(post_packet(reason));
  then = [this] {
    EXPECT_TRUE(post_packet(4));
    events.end();
    EXPECT_FALSE(post_packet(5)) << "nobody listens";
  };
  EXPECT_EQ(delivered().size(), 1u);
  EXPECT_EQ(pool.in_use(), 0u);
  EXPECT_EQ(events.waiting(LCMGR_REPORT_RX_PACKET), 0u);
  EXPECT_FALSE(events.pending() || events.wants_packets() || events.wants_mac_changes());
  then = nullptr;
  EXPECT_TRUE(events.add(on_packet, name("a")));
  EXPECT_TRUE(post_packet(6));
  EXPECT_EQ(delivered().size(), 1u);
}

// ---- What waits ---------------------------------------------------------------------------------

TEST_F(EventQueueTest, EachKindHasItsRoomAndCountsWhatIsLost) {
  ASSERT_TRUE(events.add(on_packet, name("a")) && events.add(on_mac, name("a")) &&
              events.add(on_link));
  EXPECT_EQ(events.room(LCMGR_REPORT_RX_PACKET), 4096u);
  EXPECT_EQ(events.room(LCMGR_REPORT_LINK_CHANGE), 4096u);
  EXPECT_EQ(events.room(LCMGR_REPORT_MAC_UPDATE), 262144u);
  for (const auto kind :
       {LCMGR_REPORT_RX_PACKET, LCMGR_REPORT_LINK_CHANGE, LCMGR_REPORT_MAC_UPDATE}) {
    events.set_room(kind, 3);
  }
  for (unsigned round = 0; round < 2; ++round) {
    for (unsigned i = 0; i < 5; ++i) {
      EXPECT_EQ(post_packet(i), i < 3);
      post_mac(FdbChange::What::added, static_cast<std::uint8_t>(i), 1);
    }
    EXPECT_EQ(events.waiting(LCMGR_REPORT_RX_PACKET), 3u);
    EXPECT_EQ(events.waiting(LCMGR_REPORT_MAC_UPDATE), 3u);
    EXPECT_EQ(delivered().size(), 6u) << "the first of each";
    EXPECT_EQ(events.lost(LCMGR_REPORT_RX_PACKET), 2u * (round + 1u));
    EXPECT_EQ(events.lost(LCMGR_REPORT_MAC_UPDATE), 2u * (round + 1u));
  }
  // A port's last state is told, however often it changed.
  for (unsigned round = 0; round < 2; ++round) {
    for (const PortIndex port : {PortIndex{1}, PortIndex{2}, PortIndex{1}, PortIndex{7}}) {
      post_link(port, PHY_STATE_DOWN);
    }
    for (int i = 0; i < 10; ++i) {
      post_link(1, i % 2 == 0 ? PHY_STATE_UP : PHY_STATE_DOWN);
      post_link(2, PHY_STATE_UP);
    }
    post_link(1, PHY_STATE_UP);
    EXPECT_EQ(events.waiting(LCMGR_REPORT_LINK_CHANGE), 4u);
    Lines short_lines;
    for (const std::string& line : delivered()) short_lines.push_back(line.substr(0, 12));
    EXPECT_EQ(short_lines, (Lines{"link 1/1/1 0", "link 1/1/2 1", "link 1/1/1 1", "link 1/1/7 0"}));
    EXPECT_EQ(events.lost(LCMGR_REPORT_LINK_CHANGE), 21u * (round + 1u));
  }
}

TEST_F(EventQueueTest, MovesAreHeldBackForASecond) {
  ASSERT_TRUE(events.add(on_mac, name("")));
  const auto at = [](const Lines& noted) {
    std::string all;
    for (const std::string& line : noted) {
      const std::size_t mac = line.find("mac 2:") + 6;
      const std::size_t port = line.find("1/1/") + 4;
      all += (all.empty() ? "" : " ") + line.substr(mac, 1) + line.substr(port, 1);
    }
    return all;
  };
  for (const std::uint64_t start : {std::uint64_t{0}, UINT64_MAX - 2 * kSecond}) {
    SCOPED_TRACE(start);
    events.set_mac_moves_per_second(2);
    const std::uint64_t before = events.mac_moves_held_back();
    for (PortIndex port = 1; port <= 4; ++port) {
      post_move(6, port, start);
      post_move(5, port, start + kSecond / 2);
    }
    EXPECT_EQ(at(delivered(start + kSecond / 2)), "61 51 62 52");
    EXPECT_EQ(events.mac_moves_held_back(), before + 4);
    EXPECT_EQ(at(delivered(start + kSecond - 1)), "");
    EXPECT_EQ(at(delivered(start + kSecond)), "64") << "the last one alone, after its second";
    post_move(6, 7, start + kSecond + 1);
    post_move(6, 8, start + kSecond + 2);
    EXPECT_EQ(at(delivered(start + kSecond + 2)), "67") << "that one counted";
    EXPECT_EQ(at(delivered(start + 3 * kSecond / 2 - 1)), "");
    EXPECT_EQ(at(delivered(start + 3 * kSecond / 2)), "54");
    // One that is not learned, and one that goes, overtake what is held back.
    post_mac(FdbChange::What::moved, 6, 9, start + 3 * kSecond / 2, FdbChange::Cause::configured);
    post_mac(FdbChange::What::removed, 5, 4, start + 3 * kSecond / 2);
    EXPECT_EQ(at(delivered(start + 2 * kSecond)), "69 54");
    EXPECT_EQ(at(delivered(UINT64_MAX)), "");
  }
  events.set_mac_moves_per_second(0);
  for (PortIndex port = 1; port <= 3; ++port) post_move(6, port, 0);
  EXPECT_EQ(at(delivered(0)), "61 62 63");
}

TEST_F(EventQueueTest, MoveHeldBackIsNotLostForWantOfRoom) {
  ASSERT_TRUE(events.add(on_mac, name("")));
  for (PortIndex port = 1; port <= 3; ++port) post_move(6, port, 0);
  EXPECT_EQ(delivered(0).size(), 1u);
  events.set_room(LCMGR_REPORT_MAC_UPDATE, 1);
  post_mac(FdbChange::What::added, 9, 1);
  EXPECT_EQ(delivered(kSecond).size(), 1u) << "the room is taken when the second is over";
  const Lines last = delivered(kSecond);
  ASSERT_EQ(last.size(), 1u);
  EXPECT_NE(last[0].find("2:6 vlan 20 at 1/1/3"), std::string::npos) << last[0];
  EXPECT_EQ(events.lost(LCMGR_REPORT_MAC_UPDATE), 0u);
}

}  // namespace
}  // namespace softcard
