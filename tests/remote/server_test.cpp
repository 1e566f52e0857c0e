// SPDX-License-Identifier: Apache-2.0
//
// Clients and their server: the LAG list, ports, events, and whatever may go wrong between them.

#include "service/server.h"

#include <grp.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>

#include <array>
#include <cstring>
#include <fstream>
#include <memory>

#include "tests/remote/server_thread.h"
#include "vorn_lag_list.h"
#include "vorn_port_mapping.h"
#include "vorn_sdk.h"

namespace vorn::test {
namespace {

using remote::Bytes;
using remote::Descriptor;

class RemoteServer : public testing::Test {
 protected:
  FreshHost fresh_;
};

std::size_t steps_beginning(const std::string& name) {
  std::size_t count = 0;
  for (const std::string& step : host().steps) count += step.compare(0, name.size(), name) == 0;
  return count;
}

std::string text_of(const std::list<LagNode>& lags) {
  std::string all;
  for (const LagNode& lag : lags) all += text(lag.id()) + text(lag.members());
  return all;
}

// ---- Ports and LAGs -----------------------------------------------------------------------------

TEST_F(RemoteServer, PortsAreWhatTheCardSaysAndAreAskedForOnce) {
  ServerThread server;
  TestClient near(server.connect());
  remote::Client& client = near.client;
  for (const Usp& port : {kPort, kOtherPort, kLag, kEmptyLag, kNewLag, kVlan, kUnknown}) {
    SCOPED_TRACE(text(port));
    Mp mp(9, 9);
    Mp expected(9, 9);
    std::list<Mp> mps = {Mp(1, 1)};
    std::list<Mp> expected_mps = mps;
    EXPECT_EQ(client.is_physical(port), is_port_physical(port));
    EXPECT_EQ(client.is_lag(port), is_port_logical_lag(port));
    EXPECT_EQ(client.is_vlan(port), is_port_logical_vlan(port));
    EXPECT_EQ(client.usp_to_mp(port, mp), vorn_usp_to_mp(port, expected));
    EXPECT_EQ(mp, expected);
    EXPECT_EQ(client.usp_to_mp_list(port, mps), vorn_usp_to_mp_list(port, expected_mps));
    EXPECT_EQ(mps, expected_mps);
    unsigned id = 7;
    unsigned expected_id = 7;
    EXPECT_EQ(client.lag_usp_to_lag_id(port, id), vornsdk_lag_usp_to_lag_id(port, expected_id));
    EXPECT_EQ(id, expected_id);
  }
  for (const unsigned id : {33u, 34u, 35u}) {
    Usp lag(0, 0, 0);
    Usp expected(0, 0, 0);
    EXPECT_EQ(client.lag_id_to_lag_usp(id, lag), vornsdk_lag_id_to_lag_usp(id, expected));
    EXPECT_EQ(lag, expected);
  }
  std::list<Mp> mps;
  EXPECT_TRUE(client.usp_list_to_mp_list({kPort, kLag}, mps));
  EXPECT_EQ(mps, (std::list<Mp>{Mp(2, 7), Mp(2, 1), Mp(2, 2), Mp(2, 3)}));
  EXPECT_FALSE(client.usp_list_to_mp_list({kPort, kEmptyLag}, mps));
  std::list<Usp> ports;
  EXPECT_TRUE(client.mp_list_to_usp_list({Mp(2, 7), Mp(2, 8)}, ports));
  EXPECT_EQ(ports, (std::list<Usp>{kPort, kOtherPort}));

  host().steps.clear();
  Mp mp(0, 0);
  Usp port(0, 0, 0);
  EXPECT_TRUE(client.usp_to_mp(kPort, mp) && client.is_physical(kPort));
  EXPECT_FALSE(client.usp_to_mp(kUnknown, mp) || client.is_lag(kVlan));
  EXPECT_TRUE(client.mp_to_usp(Mp(2, 7), port));
  VornSdkBase* sdk = nullptr;
  EXPECT_TRUE(client.get_instance(sdk));
  EXPECT_EQ(host().steps, std::vector<std::string>());
}

TEST_F(RemoteServer, TheLagListIsTheSameInAllProcesses) {
  ServerThread server;
  TestClient a(server.connect());
  TestClient b(server.connect());
  VornSdkBase* sdk = nullptr;
  const std::string before = text_of(lag_list);
  EXPECT_EQ(text_of(a.lags), before);

  std::list<Mp> members = {Mp(2, 9), Mp(2, 10)};
  EXPECT_TRUE(a.client.add_lag_to_list(50, a.lags) && a.client.add_lag_mapping(kNewLag, 50) &&
              a.client.add_lag_member(50, a.lags, members));
  EXPECT_EQ(text_of(a.lags), text_of(lag_list));
  EXPECT_TRUE(b.client.get_instance(sdk));
  EXPECT_EQ(text_of(b.lags), before + "50[2:9 2:10]");
  unsigned id = 0;
  EXPECT_TRUE(b.client.lag_usp_to_lag_id(kNewLag, id));
  EXPECT_EQ(id, 50u);

  // An interface that has another id from now on.
  EXPECT_TRUE(a.client.lag_usp_to_lag_id(kLag, id));
  EXPECT_EQ(id, 33u);
  EXPECT_TRUE(b.client.delete_lag_mapping(kLag, 33) && b.client.add_lag_mapping(kLag, 44));
  EXPECT_TRUE(a.client.lag_usp_to_lag_id(kLag, id));
  EXPECT_EQ(id, 44u);

  // A change in the card's own process.
  server.run([](service::Server& serving) {
    lag_list.back().members().pop_front();
    serving.lags_changed();
  });
  std::list<Mp> found;
  EXPECT_TRUE(b.client.get_lag_member(50, found));
  EXPECT_EQ(found, std::list<Mp>{Mp(2, 10)});

  EXPECT_TRUE(b.client.delete_lag_member(50, b.lags, members) &&
              b.client.delete_lag_from_list(50, b.lags) &&
              b.client.delete_lag_mapping(kNewLag, 50));
  EXPECT_FALSE(a.client.lag_usp_to_lag_id(kNewLag, id));
  EXPECT_EQ(text_of(a.lags), before);

  // A list of one's own is nobody else's.
  std::list<LagNode> own;
  EXPECT_TRUE(a.client.add_lag_to_list(1, own) && a.client.add_lag_member(1, own, members) &&
              a.client.add_lag_member(1, own, members));
  EXPECT_EQ(text_of(own), "1[2:9 2:10]");
  EXPECT_TRUE(a.client.is_lag_exist(1, own));
  EXPECT_TRUE(a.client.delete_lag_member(1, own, {Mp(2, 9)}));
  EXPECT_EQ(text_of(own), "1[2:10]");
  EXPECT_TRUE(a.client.delete_lag_from_list(1, own));
  EXPECT_FALSE(a.client.delete_lag_from_list(1, own) || a.client.is_lag_exist(1, own));
  EXPECT_EQ(text_of(a.lags), before);
}

TEST_F(RemoteServer, AReaderChangesNoLags) {
  ServerThread server;
  TestClient reader(server.connect(true));
  const std::string before = text_of(lag_list);
  EXPECT_FALSE(reader.client.add_lag_to_list(50, reader.lags));
  EXPECT_FALSE(reader.client.delete_lag_mapping(kLag, 33));
  EXPECT_EQ(reader.client.last_refusal(), "the connection is read-only");
  EXPECT_EQ(text_of(lag_list), before);
}

// ---- Events -------------------------------------------------------------------------------------

// An SDK that keeps what is registered.
struct Reporting final : Recorder {
  bool register_rx_packet_callback(void (*callback)(RxPacket*, void*), void* data) override {
    packet = callback;
    user_data = data;
    return true;
  }
  bool register_link_change_callback(void (*callback)(LinkStatus*, Usp*), void*) override {
    link = callback;
    return true;
  }
  bool register_mac_update_callback(void (*callback)(L2Addr*, int, void*), void* data) override {
    mac = callback;
    user_data = data;
    return true;
  }
  bool deregister_event_callback(lcmgr_report_event_t event, void*, void*) override {
    if (event == LCMGR_REPORT_RX_PACKET) packet = nullptr;
    if (event == LCMGR_REPORT_LINK_CHANGE) link = nullptr;
    if (event == LCMGR_REPORT_MAC_UPDATE) mac = nullptr;
    return true;
  }

  void report_link(unsigned port, phy_state_t state) const {
    LinkStatus status = {state, SPEED_TYPE_1000, DUPLEX_TYPE_FULL};
    Usp usp(1, 1, port);
    link(&status, &usp);
  }
  void report_packet(const std::vector<unsigned char>& frame, unsigned reason) const {
    RxPacket record = {static_cast<unsigned>(frame.size()), reason, kPort, 10, 5, frame.data()};
    packet(&record, user_data);
  }
  void report_mac(unsigned vlan, int what) const {
    L2Addr entry = {{2, 0, 0x5e, 0, 0x53, 1}, vlan, kLag, L2_ADDR_STATIC};
    mac(&entry, what, user_data);
  }

  void (*packet)(RxPacket*, void*) = nullptr;
  void (*link)(LinkStatus*, Usp*) = nullptr;
  void (*mac)(L2Addr*, int, void*) = nullptr;
  void* user_data = nullptr;
};

std::vector<std::string> heard;

void hear_packet(RxPacket* packet, void* data) {
  heard.push_back("packet " + text(packet->length) + " " + text(packet->reason) + " " +
                  text(packet->port) + " " + text(packet->vlan) + " " + text(packet->priority) +
                  " " + text(unsigned{packet->data[0]}) + " " +
                  text(*static_cast<unsigned*>(data)));
}
void hear_packet_c(ctype_rx_packet_s* packet, void*) {
  heard.push_back("c packet " + text(packet->length) + " " + text(packet->port.port) + " " +
                  text(unsigned{packet->data[packet->length - 1]}));
}
void hear_link(LinkStatus* status, Usp* port) {
  heard.push_back("link " + text(*port) + " " + text(status->state) + " " + text(status->speed) +
                  " " + text(status->duplex));
}
void hear_link_c(ctype_link_status_s* status, usp_s* port) {
  heard.push_back("c link " + text(port->port) + " " + text(status->state));
}
void hear_mac(L2Addr* entry, int what, void*) {
  heard.push_back("mac " + mac_text(entry->mac) + " " + text(entry->vlan) + " " +
                  text(entry->port) + " " + text(entry->flags) + " " + text(what));
}
void hear_mac_c(ctype_l2_addr_s* entry, int what, void*) {
  heard.push_back("c mac " + mac_text(entry->mac) + " " + text(entry->port.port) + " " +
                  text(what));
}

// Takes events until `client` has had `count` of them, or none come any more.
void hear(remote::Client& client, std::size_t count) {
  while (count != 0) {
    pollfd watched = {client.descriptor(), POLLIN, 0};
    if (poll(&watched, 1, 10000) != 1) {
      ADD_FAILURE() << count << " events are missing";
      return;
    }
    const std::size_t taken = client.dispatch();
    count -= std::min(count, taken);
  }
}

TEST_F(RemoteServer, EventsReachEveryClientThatRegisteredInOrder) {
  Reporting sdk;
  host().sdk = &sdk;
  ServerThread server;
  TestClient a(server.connect());
  TestClient b(server.connect());
  unsigned data = 77;
  EXPECT_TRUE(a.sdk->register_rx_packet_callback(&hear_packet, &data));
  EXPECT_TRUE(a.sdk->register_rx_packet_callback_c(&hear_packet_c, nullptr));
  EXPECT_TRUE(a.sdk->register_link_change_callback(&hear_link, nullptr));
  EXPECT_TRUE(a.sdk->register_link_change_callback_c(&hear_link_c, nullptr));
  EXPECT_TRUE(a.sdk->register_mac_update_callback(&hear_mac, nullptr));
  EXPECT_TRUE(a.sdk->register_mac_update_callback_c(&hear_mac_c, nullptr));
  EXPECT_TRUE(b.sdk->register_link_change_callback(&hear_link, nullptr));
  EXPECT_FALSE(a.sdk->register_link_change_callback(&hear_link, nullptr));
  EXPECT_EQ(a.client.last_refusal(), "the callback is registered already");
  EXPECT_FALSE(a.sdk->register_mac_update_callback(nullptr, nullptr));

  const auto report = [&] {
    server.run([&](service::Server&) {
      sdk.report_packet({0xfe, 1, 2}, 3);
      sdk.report_link(4, PHY_STATE_UP);
      if (sdk.mac != nullptr) sdk.report_mac(20, MAC_UPDATE_MOVED);
      sdk.report_link(4, PHY_STATE_DOWN);
    });
  };
  report();
  heard.clear();
  // What comes while a call is answered waits, too.
  EXPECT_TRUE(a.sdk->create_vlan(10));
  EXPECT_EQ(heard.size(), 0u);
  hear(a.client, 4);
  const std::vector<std::string> all = {"packet 3 3 1/1/3 10 5 254 77",
                                        "c packet 3 3 2",
                                        "link 1/1/4 1 1000 1",
                                        "c link 4 1",
                                        "mac 02005e005301 20 1/20/5 1 " + text(MAC_UPDATE_MOVED),
                                        "c mac 02005e005301 5 " + text(MAC_UPDATE_MOVED),
                                        "link 1/1/4 0 1000 1",
                                        "c link 4 0"};
  EXPECT_EQ(heard, all);
  heard.clear();
  hear(b.client, 2);
  EXPECT_EQ(heard, (std::vector<std::string>{all[2], all[6]}));

  // The card is listened to while somebody does.
  void* const mac = reinterpret_cast<void*>(&hear_mac);
  EXPECT_TRUE(a.sdk->deregister_event_callback(LCMGR_REPORT_MAC_UPDATE, mac, nullptr));
  EXPECT_NE(sdk.mac, nullptr);
  EXPECT_FALSE(a.sdk->deregister_event_callback(LCMGR_REPORT_MAC_UPDATE, mac, nullptr));
  EXPECT_TRUE(a.sdk->deregister_event_callback(LCMGR_REPORT_MAC_UPDATE,
                                               reinterpret_cast<void*>(&hear_mac_c), nullptr));
  EXPECT_EQ(sdk.mac, nullptr);
  // A client that goes loses its registrations, and nothing else goes.
  EXPECT_TRUE(b.client.delete_instance(b.sdk));
  report();
  heard.clear();
  hear(a.client, 3);
  EXPECT_EQ(heard.size(), 6u);
  EXPECT_TRUE(a.client.delete_instance(a.sdk));
  while (server.clients() != 0) {
  }
  EXPECT_TRUE(sdk.packet == nullptr && sdk.link == nullptr);
}

// Functions that end the connection, or take back others, while events are handed out.
remote::Client* ending = nullptr;
void end_connection(LinkStatus*, Usp*) {
  heard.emplace_back("end");
  VornSdkBase* sdk = nullptr;
  EXPECT_TRUE(ending->get_instance(sdk) && ending->delete_instance(sdk));
  EXPECT_EQ(ending->dispatch(), 0u);
}

TEST_F(RemoteServer, AFunctionMayEndTheConnection) {
  Reporting sdk;
  host().sdk = &sdk;
  ServerThread server;
  TestClient near(server.connect());
  ending = &near.client;
  EXPECT_TRUE(near.sdk->register_link_change_callback(&end_connection, nullptr));
  EXPECT_TRUE(near.sdk->register_link_change_callback(&hear_link, nullptr));
  server.run([&](service::Server&) {
    sdk.report_link(1, PHY_STATE_UP);
    sdk.report_link(2, PHY_STATE_UP);
  });
  heard.clear();
  hear(near.client, 1);
  EXPECT_EQ(near.client.dispatch(), 0u);
  EXPECT_EQ(heard, std::vector<std::string>{"end"});
}

TEST_F(RemoteServer, AClientThatTakesNothingLosesItsOwnEventsOnly) {
  Reporting sdk;
  host().sdk = &sdk;
  service::Options options;
  options.room.events = 20;
  ServerThread server(std::move(options));
  TestClient slow(server.connect());
  TestClient quick(server.connect());
  unsigned data = 0;
  for (TestClient* client : {&slow, &quick}) {
    EXPECT_TRUE(client->sdk->register_rx_packet_callback(&hear_packet, &data));
    EXPECT_TRUE(client->sdk->register_link_change_callback(&hear_link, nullptr));
  }
  constexpr unsigned kPackets = 200;
  heard.clear();
  for (unsigned i = 0; i < kPackets; ++i) {
    server.run([&](service::Server&) {
      sdk.report_packet(std::vector<unsigned char>(9000, static_cast<unsigned char>(i)), i);
      sdk.report_link(i % 2, i < kPackets - 2 ? PHY_STATE_UP : PHY_STATE_DOWN);
    });
    hear(quick.client, 2);
  }
  EXPECT_EQ(heard.size(), 2 * kPackets);
  EXPECT_EQ(quick.client.lost(LCMGR_REPORT_RX_PACKET), 0u);

  // The slow one: what it gets is in order, ends with the last state of each link, and what is
  // missing is counted.
  heard.clear();
  const auto told = [&] {
    return heard.size() + slow.client.lost(LCMGR_REPORT_RX_PACKET) +
           slow.client.lost(LCMGR_REPORT_LINK_CHANGE);
  };
  while (told() < 2 * kPackets) {
    pollfd watched = {slow.client.descriptor(), POLLIN, 0};
    ASSERT_EQ(poll(&watched, 1, 10000), 1) << told();
    slow.client.dispatch();
  }
  EXPECT_EQ(told(), 2 * kPackets);
  EXPECT_GT(slow.client.lost(LCMGR_REPORT_RX_PACKET), 0u);
  std::map<std::string, std::string> last;
  for (const std::string& line : heard) last[line.substr(0, 10)] = line;
  EXPECT_EQ(last["link 1/1/0"], "link 1/1/0 0 1000 1");
  EXPECT_EQ(last["link 1/1/1"], "link 1/1/1 0 1000 1");
  EXPECT_TRUE(slow.sdk->create_vlan(10));
}

// ---- The end of either side ---------------------------------------------------------------------

TEST_F(RemoteServer, ACardThatDiesTakesEveryLinkDownAndIsReachedAnew) {
  Reporting sdk;
  host().sdk = &sdk;
  service::Options options;
  options.ports = {kPort, kOtherPort};
  options.init_value = 52;
  auto server = std::make_unique<ServerThread>(options);
  TestClient near(server->connect());
  EXPECT_EQ(near.ports, 52);
  EXPECT_TRUE(near.sdk->register_link_change_callback(&hear_link, nullptr));
  EXPECT_TRUE(near.sdk->register_link_change_callback_c(&hear_link_c, nullptr));
  unsigned id = 0;
  Mp mp(0, 0);
  EXPECT_TRUE(near.client.lag_usp_to_lag_id(kLag, id));
  server.reset();

  EXPECT_FALSE(near.client.lag_usp_to_lag_id(kLag, id));
  VornSdkBase* found = nullptr;
  EXPECT_FALSE(near.client.get_instance(found));
  EXPECT_FALSE(near.sdk->create_vlan(10));
  EXPECT_FALSE(near.client.usp_to_mp(kPort, mp));
  EXPECT_EQ(near.client.last_refusal(), "the connection to  is lost: the card's process has ended");
  EXPECT_EQ(near.lags.size(), 0u);
  heard.clear();
  hear(near.client, 2);
  EXPECT_EQ(heard, (std::vector<std::string>{"link 1/1/3 0 0 1", "c link 3 0", "link 1/1/4 0 0 1",
                                             "c link 4 0"}));
  EXPECT_EQ(near.client.dispatch(), 0u);

  ServerThread other;
  int ports = 0;
  EXPECT_TRUE(near.client.init_with(other.connect(), ports));
  EXPECT_TRUE(near.client.create_instance());
  EXPECT_FALSE(near.client.create_instance());
  EXPECT_TRUE(near.client.get_instance(found) && found->create_vlan(10));
}

TEST_F(RemoteServer, ACardThatStopsIsGivenUp) {
  auto [near_end, far_end] = socket_pair();
  std::list<LagNode> lags;
  remote::Client client(lags);
  client.set_timeout_ms(20);
  int ports = 0;
  EXPECT_FALSE(client.init_with(std::move(near_end), ports));
  EXPECT_EQ(client.last_refusal(), "the connection to  is lost: no answer in time");
}

// What a server says: the answer to the greeting, to a request, and an event.
Bytes greeting(remote::Status status, const std::string& reason = "") {
  return RawClient::message(remote::Kind::kAnswer, [&](remote::Writer& out) {
    out.u32(remote::kMagic);
    out.u32(remote::kVersion);
    out.u64(remote::table_hash());
    out.u8(static_cast<unsigned>(status));
    if (status != remote::Status::kDone) return out.text(reason);
    out.u8(0);
    for (const unsigned word : {52u, 0u}) out.u32(word);  // the value, no ports
  });
}
Bytes done() {
  return RawClient::message(remote::Kind::kAnswer, [](remote::Writer& out) {
    out.u8(static_cast<unsigned>(remote::Status::kDone));
  });
}
Bytes link_event() {
  return RawClient::message(remote::Kind::kLink, [](remote::Writer& out) {
    for (const unsigned word : {1u, 1000u, 1u, 1u, 1u, 3u}) out.u32(word);
  });
}

// A client of a server that only says what it is told to.
struct Scripted {
  explicit Scripted(int timeout_ms = 10000) : Scripted(socket_pair(), timeout_ms) {}
  Scripted(std::pair<Descriptor, Descriptor> ends, int timeout_ms)
      : far(std::move(ends.second)), near(std::move(ends.first)) {
    client.set_timeout_ms(timeout_ms);
  }
  bool init() {
    int ports = 0;
    return client.init_with(std::move(near), ports);
  }

  RawClient far;
  Descriptor near;
  std::list<LagNode> lags;
  remote::Client client{lags};
  remote::RemoteSdk sdk{client};
};

// An event that arrives together with an answer has nothing behind it that would announce it.
TEST_F(RemoteServer, AnEventBesideAnAnswerIsAnnounced) {
  Scripted scripted;
  scripted.far.send(greeting(remote::Status::kDone));
  ASSERT_TRUE(scripted.init());
  scripted.far.send(done());
  EXPECT_TRUE(scripted.sdk.register_link_change_callback(&hear_link, nullptr));
  Bytes both = done();
  const Bytes event = link_event();
  both.insert(both.end(), event.begin(), event.end());
  scripted.far.send(both);
  EXPECT_TRUE(scripted.sdk.create_vlan(10));
  heard.clear();
  hear(scripted.client, 1);
  EXPECT_EQ(heard, std::vector<std::string>{"link 1/1/3 1 1000 1"});
}

TEST_F(RemoteServer, WhatIsSaidAheadOfTheEndIsHeard) {
  Scripted scripted;
  scripted.far.send(greeting(remote::Status::kNotTried, "there is no room"));
  scripted.far.end();
  EXPECT_FALSE(scripted.init());
  EXPECT_EQ(scripted.client.last_refusal(), ": there is no room");
}

TEST_F(RemoteServer, AnAnswerOfNoLengthOrTooMuchEndsTheConnection) {
  for (const Bytes& nonsense : {Bytes{0, 0, 0, 0, 128}, Bytes{0x7f, 0xff, 0xff, 0xff, 128}}) {
    Scripted scripted;
    scripted.far.send(greeting(remote::Status::kDone));
    ASSERT_TRUE(scripted.init());
    scripted.far.send(nonsense);
    EXPECT_FALSE(scripted.sdk.create_vlan(10));
    EXPECT_EQ(scripted.client.last_refusal(),
              "the connection to  is lost: a message of " +
                  std::to_string(nonsense[0] == 0 ? 0 : 0x7fffffff) + " bytes came");
  }
}

// One that sends events for ever and never answers.
TEST_F(RemoteServer, ACardThatTalksAndDoesNotAnswerIsGivenUp) {
  Scripted scripted(50);
  scripted.far.send(greeting(remote::Status::kDone));
  ASSERT_TRUE(scripted.init());
  std::thread talking([&scripted] {
    const Bytes event = link_event();
    while (scripted.far.sends(event)) {
    }
  });
  EXPECT_FALSE(scripted.sdk.create_vlan(10));
  EXPECT_EQ(scripted.client.last_refusal(), "the connection to  is lost: no answer in time");
  talking.join();
}

// Messages of a whole conversation with the server, as the server sends them.
Bytes answers_of(ServerThread& server) {
  RawClient raw(server.connect());
  Bytes all;
  for (const Bytes& request :
       {RawClient::hello(), RawClient::message(remote::Kind::kLags, [](remote::Writer&) {}),
        RawClient::message(remote::Kind::kCall, [](remote::Writer& out) {
          out.u8(6);  // get_vlan_info(10, {}, {})
          for (const unsigned word : {10u, 0u, 0u}) out.u32(word);
        })}) {
    raw.send(request);
    const Bytes answer = raw.receive();
    all.insert(all.end(), answer.begin(), answer.end());
  }
  return all;
}

// Has the conversation with what the first bytes of `answers` say.
bool converse(const Bytes& answers, std::size_t count, std::list<Mp>& tagged) {
  auto [near_end, far_end] = socket_pair();
  RawClient far(std::move(far_end));
  far.send(answers, count);
  far.end();
  std::list<LagNode> lags;
  remote::Client client(lags);
  client.set_timeout_ms(5000);
  int ports = 0;
  VornSdkBase* sdk = nullptr;
  std::list<Mp> untagged;
  return client.init_with(std::move(near_end), ports) && client.create_instance() &&
         client.get_instance(sdk) && sdk->get_vlan_info(10, tagged, untagged);
}

TEST_F(RemoteServer, AnAnswerThatIsCutOffAnywhereIsNone) {
  host().vlan_members[0] = {Mp(2, 5), Mp(2, 6)};
  ServerThread server;
  const Bytes answers = answers_of(server);
  for (std::size_t count = 0; count < answers.size(); ++count) {
    std::list<Mp> tagged;
    EXPECT_FALSE(converse(answers, count, tagged)) << count;
    EXPECT_EQ(tagged.size(), 0u);
  }
}

TEST_F(RemoteServer, ARequestThatIsCutOffAnywhereIsNone) {
  ServerThread server;
  TestClient near(server.connect());
  Bytes requests = RawClient::hello();
  const Bytes call = RawClient::call(77);
  requests.insert(requests.end(), call.begin(), call.end());
  for (std::size_t count = 0; count < requests.size(); ++count) {
    RawClient raw(server.connect());
    raw.send(requests, count);
    raw.end();
  }
  while (server.clients() != 1) {
  }
  EXPECT_TRUE(near.sdk->create_vlan(10));
  EXPECT_EQ(steps_beginning("create_vlan(77)"), 0u);
  RawClient raw(server.connect());
  raw.send(requests);
  raw.receive();
  raw.receive();
  EXPECT_EQ(steps_beginning("create_vlan(77)"), 1u);
}

// ---- Who is no friend ---------------------------------------------------------------------------

TEST_F(RemoteServer, WhoSendsNonsenseIsDroppedAlone) {
  ServerThread server;
  TestClient near(server.connect());
  const auto nothing = [](remote::Writer&) {};
  const std::vector<Bytes> nonsense = {Bytes(4096, 0xa5),
                                       {0, 0, 0, 0},
                                       {0xff, 0xff, 0xff, 0xff, 1},
                                       {0, 0x10, 0, 1, 1},
                                       RawClient::call(10),  // before the greeting
                                       RawClient::message(remote::Kind::kHello, nothing)};
  for (const Bytes& bytes : nonsense) {
    RawClient raw(server.connect());
    raw.send(bytes);
    EXPECT_TRUE(raw.is_dropped()) << bytes.size();
  }
  using remote::Writer;
  const std::vector<Bytes> requests = {
      RawClient::hello(),
      {0, 0, 0, 0, 0},
      RawClient::message(remote::Kind::kCall, nothing),
      RawClient::message(remote::Kind::kCall, [](Writer& out) { out.u8(3); }),    // reserved
      RawClient::message(remote::Kind::kCall, [](Writer& out) { out.u8(136); }),  // a callback
      RawClient::message(remote::Kind::kCall, [](Writer& out) { out.u8(200); }),
      RawClient::message(remote::Kind::kCall,
                         [](Writer& out) {
                           out.u8(0);
                           out.u64(10);  // too long
                         }),
      RawClient::message(remote::Kind::kCall,
                         [](Writer& out) {
                           out.u8(4);  // a list longer than the message
                           out.u32(10);
                           out.u32(0x7fffffff);
                         }),
      RawClient::message(remote::Kind::kLagChange, [](Writer& out) { out.u8(6); }),
      RawClient::message(remote::Kind::kListen, [](Writer& out) { out.u8(9), out.u8(1); }),
      RawClient::message(remote::Kind::kWalk, [](Writer& out) { out.u8(9); }),
      RawClient::message(remote::Kind::kCommand, [](Writer& out) { out.u32(0); }),
      RawClient::message(static_cast<remote::Kind>(99), nothing),
      RawClient::message(remote::Kind::kAnswer, nothing)};
  for (const Bytes& bytes : requests) {
    RawClient raw(server.connect());
    raw.send(RawClient::hello());
    raw.receive();
    raw.send(bytes);
    EXPECT_TRUE(raw.is_dropped()) << unsigned{bytes[4]};
  }
  EXPECT_TRUE(near.sdk->create_vlan(10));
  EXPECT_EQ(server.clients(), 1u);
}

// Good messages with bytes changed, in both directions.
TEST_F(RemoteServer, BytesThatChangeOnTheWayDoNoMoreThanEndAConnection) {
  ServerThread server;
  TestClient near(server.connect());
  const Bytes answers = answers_of(server);
  std::uint32_t random = 1;
  const auto next = [&random](std::size_t below) {
    random = random * 1664525 + 1013904223;
    return (random >> 8) % below;
  };
  for (unsigned round = 0; round < 300; ++round) {
    Bytes changed = answers;
    changed[next(changed.size())] = static_cast<std::uint8_t>(next(256));
    std::list<Mp> tagged;
    converse(changed, changed.size(), tagged);

    Bytes request = RawClient::message(remote::Kind::kCall, [&](remote::Writer& out) {
      for (unsigned i = 0; i < 40; ++i) out.u8(static_cast<unsigned>(i == 0 ? next(179) : 0));
    });
    for (unsigned i = 0; i < 4; ++i) {
      request[5 + next(request.size() - 5)] = static_cast<std::uint8_t>(next(256));
    }
    RawClient raw(server.connect());
    raw.send(RawClient::hello());
    raw.send(request);
  }
  EXPECT_TRUE(near.sdk->create_vlan(10));
}

// Answers that nobody takes: further requests wait, those that were read as well, until they do.
TEST_F(RemoteServer, WhoTakesNoAnswersGetsNoMoreOfThem) {
  struct Long final : Recorder {
    bool get_vlan_info(unsigned int, std::list<Mp>& tagged, std::list<Mp>&) override {
      tagged.assign(10000, Mp(1, 1));
      ++calls;
      return true;
    }
    unsigned calls = 0;
  } sdk;
  host().sdk = &sdk;
  EventLoop loop;
  service::Server server(loop, {});
  auto [near_end, far_end] = socket_pair();
  server.adopt(std::move(far_end), false);
  RawClient raw(std::move(near_end));
  raw.send(RawClient::hello());
  constexpr unsigned kRequests = 60;
  for (unsigned i = 0; i < kRequests; ++i) {
    raw.send(RawClient::message(remote::Kind::kCall, [](remote::Writer& out) {
      out.u8(6);
      for (const unsigned word : {10u, 0u, 0u}) out.u32(word);
    }));
  }
  while (server.round()) {
  }
  // A mebibyte, one more, and what the socket holds.
  EXPECT_LT(sdk.calls, 40u);
  std::size_t bytes = 0;
  for (unsigned round = 0; round < 100 * kRequests && sdk.calls < kRequests; ++round) {
    bytes += raw.drain();
    server.round();
  }
  EXPECT_EQ(sdk.calls, kRequests);
  EXPECT_GT(bytes, 80000u);
}

TEST_F(RemoteServer, TwoVersionsDoNotTalk) {
  ServerThread server;
  for (const Bytes& hello :
       {RawClient::hello(remote::kVersion + 1), RawClient::hello(remote::kVersion, 0x1234)}) {
    RawClient raw(server.connect());
    raw.send(hello);
    const Bytes answer = raw.receive();
    const std::string words(answer.begin(), answer.end());
    EXPECT_NE(words.find(remote::version_text(remote::kVersion, remote::table_hash())),
              std::string::npos);
    EXPECT_NE(words.find(hello[12] == 2 ? "version 2" : "table 0000000000001234"),
              std::string::npos);
    EXPECT_TRUE(raw.is_dropped());

    // The same answer to a client.
    auto [near_end, far_end] = socket_pair();
    RawClient far(std::move(far_end));
    far.send(answer);
    std::list<LagNode> lags;
    remote::Client client(lags);
    int ports = 0;
    EXPECT_FALSE(client.init_with(std::move(near_end), ports));
    EXPECT_NE(client.last_refusal().find("this program has"), std::string::npos);
  }
}

TEST_F(RemoteServer, WhoTakesItsTimeOverAMessageIsDropped) {
  service::Options options;
  options.patience_ms = 100;
  ServerThread server(std::move(options));
  // A busy machine may take longer over a greeting.
  auto near = std::make_unique<TestClient>(server.connect());
  while (!near->connected) near = std::make_unique<TestClient>(server.connect());
  RawClient silent(server.connect());
  EXPECT_TRUE(silent.is_dropped());
  RawClient half(server.connect());
  half.send(RawClient::hello());
  half.receive();
  half.send(RawClient::call(10), 7);
  EXPECT_TRUE(half.is_dropped());
  // One that says nothing between two messages is not late.
  EXPECT_TRUE(near->sdk->create_vlan(10));
}

// Many requests at once from several clients: each gets one answer a round.
TEST_F(RemoteServer, EachClientGetsOneAnswerARound) {
  EventLoop loop;
  service::Server server(loop, {});
  std::vector<RawClient> clients;
  constexpr unsigned kRequests = 50;
  for (unsigned i = 0; i < 4; ++i) {
    auto [near_end, far_end] = socket_pair();
    server.adopt(std::move(far_end), false);
    clients.emplace_back(std::move(near_end));
    clients.back().send(RawClient::hello());
    for (unsigned request = 0; request < kRequests; ++request) {
      clients.back().send(RawClient::call(100 * i + request));
    }
  }
  for (unsigned round = 0; round <= kRequests; ++round) {
    EXPECT_EQ(server.round(), round != kRequests);
    for (RawClient& client : clients) EXPECT_EQ(client.take_all(), 1u);
  }
  EXPECT_FALSE(server.round());
}

// The page that counts the changes of LAGs: clients look at it and cannot write to it.
TEST_F(RemoteServer, SharesAPageThatNobodyElseWritesTo) {
  ServerThread server;
  const Descriptor near = server.connect();
  const Bytes hello = RawClient::hello();
  ASSERT_EQ(send(near.get(), hello.data(), hello.size(), 0), static_cast<ssize_t>(hello.size()));
  char answer[4096];
  iovec bytes = {answer, sizeof answer};
  alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))];
  msghdr header{};
  header.msg_iov = &bytes;
  header.msg_iovlen = 1;
  header.msg_control = control;
  header.msg_controllen = sizeof control;
  ASSERT_GT(recvmsg(near.get(), &header, 0), 0);
  const cmsghdr* const part = CMSG_FIRSTHDR(&header);
  ASSERT_NE(part, nullptr);
  int fd = -1;
  std::memcpy(&fd, CMSG_DATA(part), sizeof fd);
  const Descriptor page(fd);
  EXPECT_EQ(mmap(nullptr, 4096, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0), MAP_FAILED);
  EXPECT_NE(ftruncate(fd, 0), 0);
  EXPECT_EQ(write(fd, answer, 4), -1);
  void* const seen = mmap(nullptr, 4096, PROT_READ, MAP_SHARED, fd, 0);
  ASSERT_NE(seen, MAP_FAILED);
  const auto generation = [seen] {
    return remote::Reader(static_cast<const std::uint8_t*>(seen), 4).u32();
  };
  const std::uint32_t before = generation();
  server.run([](service::Server& serving) { serving.lags_changed(); });
  EXPECT_EQ(generation(), before + 1);
  munmap(seen, 4096);
}

// ---- Sockets ------------------------------------------------------------------------------------

class RemoteSocket : public RemoteServer {
 protected:
  RemoteSocket() {
    std::string pattern = testing::TempDir() + "vornd-XXXXXX";
    folder_ = mkdtemp(pattern.data());
    path_ = folder_ + "/card";
  }
  ~RemoteSocket() override {
    unlink(path_.c_str());
    rmdir(folder_.c_str());
  }

  bool listen(ServerThread& server, std::string& error) {
    bool done = false;
    server.run([&](service::Server& serving) { done = serving.listen({path_}, error); });
    return done;
  }
  // Connects as programs do.
  bool connects(TestClient& client) {
    client.client.use(path_);
    return client.client.init(client.ports);
  }

  std::string folder_;
  std::string path_;
};

TEST_F(RemoteSocket, IsForItsUserAloneAndGoesWithTheServer) {
  std::string error;
  {
    ServerThread server;
    ASSERT_TRUE(listen(server, error)) << error;
    struct stat made {};
    ASSERT_EQ(lstat(path_.c_str(), &made), 0);
    EXPECT_TRUE(S_ISSOCK(made.st_mode));
    EXPECT_EQ(made.st_mode & 0777, 0600u);
    TestClient near{Descriptor()};
    EXPECT_TRUE(connects(near)) << near.client.last_refusal();
  }
  EXPECT_NE(access(path_.c_str(), F_OK), 0);
}

TEST_F(RemoteSocket, OfSomebodyElseIsNotTaken) {
  std::string error;
  ServerThread server;
  ASSERT_TRUE(listen(server, error)) << error;
  std::string other_error;
  server.run([&](service::Server& serving) { EXPECT_FALSE(serving.listen({path_}, other_error)); });
  EXPECT_EQ(other_error, path_ + ": somebody serves it already");
  TestClient near{Descriptor()};
  EXPECT_TRUE(connects(near));
}

TEST_F(RemoteSocket, ThatNobodyServesIsTakenOver) {
  sockaddr_un name{};
  name.sun_family = AF_UNIX;
  path_.copy(name.sun_path, sizeof name.sun_path - 1);
  {
    const Descriptor left(socket(AF_UNIX, SOCK_STREAM, 0));
    ASSERT_EQ(bind(left.get(), reinterpret_cast<const sockaddr*>(&name), sizeof name), 0);
  }
  std::string error;
  ServerThread server;
  EXPECT_TRUE(listen(server, error)) << error;
  TestClient near{Descriptor()};
  EXPECT_TRUE(connects(near));
}

TEST_F(RemoteSocket, IsNoOtherFile) {
  std::ofstream(path_) << "precious";
  std::string error;
  ServerThread server;
  EXPECT_FALSE(listen(server, error));
  EXPECT_EQ(error, path_ + ": it is there and is no socket");
  EXPECT_EQ(access(path_.c_str(), F_OK), 0);
}

// Whether somebody else can connect: a process of that user and these groups.
bool stranger_connects(const std::string& path, gid_t group, gid_t other_group) {
  const pid_t child = fork();
  if (child == 0) {
    TestClient near{Descriptor()};
    near.client.use(path);
    const bool changed =
        setgroups(1, &other_group) == 0 && setgid(group) == 0 && setuid(65534) == 0;
    _exit(!changed ? 2 : near.client.init(near.ports) ? 0 : 1);
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_NE(WEXITSTATUS(status), 2) << "the user cannot be changed";
  return WEXITSTATUS(status) == 0;
}

// Whether the kernel tells the groups of who is at the other end; an emulator of it may not.
bool groups_are_told() {
  const auto [near_end, far_end] = socket_pair();
  std::array<gid_t, 256> groups{};
  socklen_t size = sizeof groups;
  return getsockopt(near_end.get(), SOL_SOCKET, SO_PEERGROUPS, groups.data(), &size) == 0;
}

// The socket's mode keeps others out; where somebody opened it, vornd's own look does.
TEST_F(RemoteSocket, IsForItsUserAndItsGroup) {
  if (geteuid() != 0) GTEST_SKIP() << "needs root, to be somebody else";
  chmod(folder_.c_str(), 0755);
  std::string error;
  for (const bool has_group : {false, true}) {
    ServerThread server;
    server.run([&](service::Server& serving) {
      EXPECT_TRUE(serving.listen({path_, false, has_group, 4242}, error)) << error;
    });
    struct stat made {};
    ASSERT_EQ(lstat(path_.c_str(), &made), 0);
    EXPECT_EQ(made.st_mode & 0777, has_group ? 0660u : 0600u);
    EXPECT_FALSE(stranger_connects(path_, 4343, 4343));
    chmod(path_.c_str(), 0666);
    EXPECT_FALSE(stranger_connects(path_, 4343, 4343));
    EXPECT_EQ(stranger_connects(path_, 4242, 4343), has_group);
    EXPECT_EQ(stranger_connects(path_, 4343, 4242), has_group && groups_are_told());
  }
}

TEST_F(RemoteSocket, TakesSoManyClientsAndTellsTheOthers) {
  std::string error;
  service::Options options;
  options.most_clients = 2;
  ServerThread server(std::move(options));
  ASSERT_TRUE(listen(server, error)) << error;
  std::vector<std::unique_ptr<TestClient>> clients;
  for (unsigned i = 0; i < 100; ++i) {
    clients.push_back(std::make_unique<TestClient>(Descriptor()));
    EXPECT_EQ(connects(*clients.back()), i < 2) << i;
  }
  EXPECT_EQ(clients.back()->client.last_refusal(), path_ + ": there are 2 clients already");
  clients.erase(clients.begin());
  while (server.clients() != 1) {
  }
  EXPECT_TRUE(connects(*clients.back()));
}

}  // namespace
}  // namespace vorn::test
