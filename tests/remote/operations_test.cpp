// SPDX-License-Identifier: Apache-2.0
//
// Every operation through a connection: it arrives at the SDK as it was called, and what becomes of
// it there comes back.

#include "operations/operations.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <new>
#include <regex>
#include <stdexcept>

#include "tests/remote/server_thread.h"
#include "tests/support/sdk_arguments.h"

namespace vorn::test {
namespace {

using operations::Effect;
using operations::kOperation;

// What a call did: its result, the steps of the SDK, and what the arguments hold afterwards.
struct Outcome {
  bool result = false;
  std::vector<std::string> steps;
  std::string arguments;
};
bool operator==(const Outcome& a, const Outcome& b) {
  return a.result == b.result && a.steps == b.steps && a.arguments == b.arguments;
}
std::ostream& operator<<(std::ostream& stream, const Outcome& outcome) {
  return stream << outcome.result << " " << testing::PrintToString(outcome.steps) << " "
                << testing::PrintToString(outcome.arguments);
}

struct Told {
  bool answers = false;
  bool refuses = false;
  bool throws = false;
};

// `number` is that of the operation's step; through a connection the lookup comes ahead of it.
template <class... Parameters>
Outcome call(VornSdkBase& sdk, bool (VornSdkBase::*operation)(Parameters...), const Told& told,
             std::size_t number) {
  VornSdkBase* const recorder = host().sdk;
  host().reset();
  host().sdk = recorder;
  host().answers = told.answers;
  host().refuse = told.refuses ? number : 0;
  host().throws = told.throws ? number : 0;
  Arguments<Parameters...> arguments;
  Outcome outcome;
  outcome.result = arguments.call_unnamed(sdk, operation);
  outcome.steps = host().steps;
  outcome.arguments = arguments.bytes();
  return outcome;
}

// The steps that asking for the SDK takes.
std::vector<std::string> without_lookups(std::vector<std::string> steps) {
  steps.erase(std::remove(steps.begin(), steps.end(), "get_sdk()"), steps.end());
  return steps;
}

class RemoteOperations : public testing::Test {
 protected:
  FreshHost fresh_;
  ServerThread server_;
  TestClient near_{server_.connect()};
};

TEST_F(RemoteOperations, ArriveAsTheyWereCalledAndComeBackAsTheyEnded) {
  ASSERT_TRUE(near_.connected && near_.sdk != nullptr) << near_.client.last_refusal();
  unsigned tried = 0;
  operations::for_each_operation([&](auto slot) {
    constexpr auto& operation = kOperation<slot()>;
    if constexpr (operation.effect != Effect::kCallsBack) {
      ++tried;
      for (const Told told : {Told{false, false, false}, Told{true, false, false},
                              Told{false, true, false}, Told{true, true, false}}) {
        const Outcome direct = call(*host().sdk, operation.kFunction, told, 1);
        Outcome remote = call(*near_.sdk, operation.kFunction, told, 2);
        remote.steps = without_lookups(remote.steps);
        EXPECT_EQ(remote, direct) << operation.name << ", answers: " << told.answers;
        const std::string name = direct.steps.front().substr(0, direct.steps.front().find('('));
        EXPECT_EQ(name, operation.name);
      }
      EXPECT_THROW(call(*near_.sdk, operation.kFunction, {false, false, true}, 2),
                   std::runtime_error)
          << operation.name;
      ASSERT_TRUE(near_.client.connected()) << operation.name;
    }
  });
  EXPECT_EQ(tried, 161u - 8u);
}

// The slot of each row is the operation's place in the table of virtual functions.
TEST_F(RemoteOperations, StandInTheirSlots) {
  unsigned rows = 0;
  operations::for_each_operation([&](auto slot) {
    ++rows;
    auto function = kOperation<slot()>.kFunction;
    static_assert(sizeof function == 2 * sizeof(std::ptrdiff_t));
    std::ptrdiff_t words[2];
    std::memcpy(words, &function, sizeof words);
    EXPECT_EQ(words[0], 1 + static_cast<std::ptrdiff_t>(slot() * sizeof(void*)))
        << kOperation<slot()>.name;
  });
  EXPECT_EQ(rows, 161u);
}

// What only reads says so by its name.
TEST_F(RemoteOperations, SayWhetherTheyChangeTheCard) {
  operations::for_each_operation([&](auto slot) {
    constexpr auto& operation = kOperation<slot()>;
    const std::regex reading("get_.*|(de)?register_.*|traverse_mac_table");
    EXPECT_EQ(operation.effect != Effect::kChanges, std::regex_match(operation.name, reading))
        << operation.name;
  });
}

TEST_F(RemoteOperations, AreRefusedWhereTheyChangeTheCardAndMayOnlyRead) {
  TestClient reader(server_.connect(true));
  ASSERT_TRUE(reader.connected && reader.client.read_only());
  operations::for_each_operation([&](auto slot) {
    constexpr auto& operation = kOperation<slot()>;
    if constexpr (operation.effect != Effect::kCallsBack) {
      const bool changes = operation.effect == Effect::kChanges;
      const Outcome outcome = call(*reader.sdk, operation.kFunction, {}, 2);
      EXPECT_EQ(outcome.result, !changes) << operation.name;
      EXPECT_EQ(without_lookups(outcome.steps).empty(), changes) << operation.name;
    }
  });
  EXPECT_EQ(reader.client.last_refusal(), "the connection is read-only");
}

// The form of messages is the same on every machine, and in every build of this version.
TEST_F(RemoteOperations, HaveOneFormOnEveryMachine) {
  EXPECT_EQ(RawClient::call(0x01020304), (remote::Bytes{0, 0, 0, 6, 2, 0, 1, 2, 3, 4}));
  EXPECT_EQ(remote::version_text(remote::kVersion, remote::table_hash()),
            "version 1, table dc7c8050119ca555");
  remote::Bytes bytes;
  remote::Writer out(bytes);
  remote::Value<std::list<StatCounter64>>::put(out, {{STAT_OUT_OCTETS, 0x0102030405060708}});
  remote::Value<bool>::put(out, true);
  remote::Value<int>::put(out, -2);
  remote::Value<unsigned short>::put(out, 0x88b5);
  EXPECT_EQ(bytes, (remote::Bytes{0, 0,    0,    1,    0,    0,    0,   STAT_OUT_OCTETS,
                                  1, 2,    3,    4,    5,    6,    7,   8,
                                  1, 0xff, 0xff, 0xff, 0xfe, 0x88, 0xb5}));
}

// An SDK of which one operation runs out of memory.
TEST_F(RemoteOperations, ThatRunOutOfMemoryThereDoSoHere) {
  struct Poor final : Recorder {
    bool create_vlan(unsigned int) override { throw std::bad_alloc(); }
  } poor;
  host().sdk = &poor;
  EXPECT_THROW(near_.sdk->create_vlan(10), std::bad_alloc);
  host().reset();
  EXPECT_TRUE(near_.sdk->create_vlan(10));
}

TEST_F(RemoteOperations, ThatAreTooLongAreRefused) {
  Packet packet;
  packet.set_data(std::vector<unsigned char>(2000000));
  EXPECT_FALSE(near_.sdk->send_packet_from_cpu(packet));
  EXPECT_EQ(near_.client.last_refusal(),
            "what the call carries is more than a message can hold, 1048576 bytes");
  EXPECT_TRUE(near_.sdk->create_vlan(10));
}

// A flag that comes from elsewhere is one of two, whatever its byte is.
TEST_F(RemoteOperations, TakeEveryByteForAFlag) {
  RawClient raw(server_.connect());
  raw.send(RawClient::hello());
  raw.receive();
  raw.send(RawClient::message(remote::Kind::kCall, [](remote::Writer& out) {
    out.u8(61);  // clear_fdb_table(and_static)
    out.u8(0xa5);
  }));
  EXPECT_EQ(raw.receive().size(), remote::kHeaderBytes + 1);
  EXPECT_EQ(host().steps.back(), "clear_fdb_table(true)");
}

TEST_F(RemoteOperations, TakeNoAddressWhereTheCallerHasNone) {
  struct Nulls final : Recorder {
    bool add_system_mac(const unsigned char* mac, unsigned int) override { return mac == nullptr; }
    bool get_l3_interface(unsigned int, unsigned int&, unsigned char* mac) override {
      return mac == nullptr;
    }
    bool get_port_stat_counter_all64_ext(const Mp&, StatCounter64* counters,
                                         unsigned int& count) override {
      return counters == nullptr && count == 5;
    }
  } nulls;
  host().sdk = &nulls;
  unsigned number = 5;
  EXPECT_TRUE(near_.sdk->add_system_mac(nullptr, 1));
  EXPECT_TRUE(near_.sdk->get_l3_interface(1, number, nullptr));
  EXPECT_TRUE(near_.sdk->get_port_stat_counter_all64_ext(Mp(2, 7), nullptr, number));
  host().reset();
}

TEST_F(RemoteOperations, FillNoMoreCountersThanThereIsRoomFor) {
  struct Counting final : Recorder {
    bool get_port_stat_counter_all32_ext(const Mp&, StatCounter32* counters,
                                         unsigned int& count) override {
      const unsigned filled = count < 4 ? count : 4;
      for (unsigned i = 0; i < filled; ++i) {
        counters[i] = {static_cast<stat_type_t>(i), 1000 + i};
      }
      count = filled;
      return true;
    }
  } counting;
  host().sdk = &counting;
  for (const unsigned room : {0u, 3u, 4u, 0xffffffffu}) {
    StatCounter32 counters[5] = {};
    for (StatCounter32& counter : counters) counter.value = 7;
    unsigned count = room;
    EXPECT_TRUE(near_.sdk->get_port_stat_counter_all32_ext(Mp(2, 7), counters, count));
    EXPECT_EQ(count, room < 4 ? room : 4);
    for (unsigned i = 0; i < 5; ++i) EXPECT_EQ(counters[i].value, i < count ? 1000 + i : 7);
  }
  host().reset();
}

}  // namespace
}  // namespace vorn::test
