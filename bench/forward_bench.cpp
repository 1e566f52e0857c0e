// SPDX-License-Identifier: Apache-2.0
//
// Measures how many frames of 64 bytes the software line card forwards in a second, in memory and
// on one core, and compares that with a bare loop that only looks both addresses of each frame up
// in the same FDB. All rows are measured in turn, several times, in one run; the fastest of each is
// shown, which other load disturbed least.
//
// A frame's cost is everything from the copy out of the generator's memory into a frame of the
// card's pool to the cable that takes it: parsing, all tables, counters, and the way back to the
// pool.
//
//   forward_bench [part of a row's name [rounds]]

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "softcard/cables/cable.h"
#include "softcard/card.h"
#include "softcard/frames/checksum.h"
#include "softcard/frames/wire.h"

namespace {

using namespace softcard;

constexpr PortIndex kPorts = 9;
constexpr std::size_t kStations = 100000;
constexpr std::size_t kRoutes = 100000;
constexpr std::size_t kFlows = 1000;
constexpr std::size_t kFrameBytes = 64;
constexpr std::size_t kFramesPerPort = 16384;
constexpr std::size_t kBurst = 32;
constexpr int kRounds = 7;
constexpr std::uint16_t kVlan = 1;
constexpr std::uint64_t kRouterMac = 0x00005E005301;
constexpr std::uint64_t kBroadcastMac = 0xFFFFFFFFFFFF;

// Lookups add their results here, so that the compiler does not leave them out.
volatile std::uint64_t sink;

double thread_seconds() {
  timespec time;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

// Takes frames, counts them and gives them back to the pool.
class DrainCable : public Cable {
 public:
  void plug(CableSink&, PortIndex) override {}
  std::size_t transmit(FramePtr* frames, std::size_t count) override {
    for (std::size_t i = 0; i < count; ++i) frames[i].reset();
    sent_ += count;
    return count;
  }
  bool carrier() const override { return true; }
  std::string describe() const override { return "drain"; }
  std::uint64_t sent() const { return sent_; }

 private:
  std::uint64_t sent_ = 0;
};

using FrameBytes = std::array<std::uint8_t, kFrameBytes>;

// The station with a number: its address and the port that it is at.
std::uint64_t station_mac(std::size_t number) { return 0x020000000000 + number; }
PortIndex station_port(std::size_t number) { return static_cast<PortIndex>(number % 8); }

// The n-th of kRoutes subnets of 24 bits, spread over 11/8 to 122/8: none is a martian.
Ipv4 subnet(std::size_t number) { return static_cast<Ipv4>(0x0B000000u + number * 73 * 256); }

// A card with a drain at each port, its tables filled, and frames to send into ports 0 to 7.
class Setup {
 public:
  Setup() : card(description(), std::make_shared<RealClock>()) {
    for (PortIndex port = 0; port < kPorts; ++port) {
      auto cable = std::make_unique<DrainCable>();
      cables.push_back(cable.get());
      card.plug(port, std::move(cable));
    }
    for (std::size_t i = 0; i < kStations; ++i) {
      card.tables().fdb.learn(kVlan, MacAddress::from_number(station_mac(i)),
                              Destination::port(station_port(i)), card.now_seconds());
    }
    std::uint32_t interface = 0;
    card.tables().l3.interfaces.create(MacAddress::from_number(kRouterMac), kVlan, interface);
    for (std::size_t i = 0; i < kRoutes; ++i) {
      const NextHop hop{Destination::port(static_cast<PortIndex>(i % 8)),
                        MacAddress::from_number(station_mac(i % 64)), interface};
      card.tables().l3.ipv4_routes.add(subnet(i), 24, hop);
    }
  }

  // Makes the frames: `make` fills one, given the number of its sender.
  void prepare(const std::function<void(FrameBytes&, std::size_t sender)>& make) {
    for (PortIndex port = 0; port < 8; ++port) {
      frames[port].resize(kFramesPerPort);
      for (FrameBytes& frame : frames[port]) {
        frame.fill(0);
        const std::size_t sender = random() % (kStations / 8) * 8 + port;
        store48(&frame[6], station_mac(sender));
        store16(&frame[12], 0x88B5);
        make(frame, sender);
      }
    }
  }

  // Sends every frame once; the result is the seconds that took.
  double run() {
    const double start = thread_seconds();
    std::array<FramePtr, kBurst> burst;
    for (std::size_t at = 0; at < kFramesPerPort; at += kBurst) {
      for (PortIndex port = 0; port < 8; ++port) {
        for (std::size_t i = 0; i < kBurst; ++i) {
          burst[i] = card.frame_pool().make(frames[port][at + i].data(), kFrameBytes);
        }
        card.frames_arrived(port, burst.data(), kBurst);
      }
    }
    return thread_seconds() - start;
  }

  std::uint64_t sent() const {
    std::uint64_t sum = 0;
    for (const DrainCable* cable : cables) sum += cable->sent();
    return sum;
  }

  std::size_t any_station() { return random() % kStations; }

  Card card;
  std::mt19937 random{1};
  std::array<std::vector<FrameBytes>, 8> frames;
  std::vector<DrainCable*> cables;

 private:
  static CardDescription description() {
    CardDescription description;
    description.hash_seed = 1;
    description.ports.resize(kPorts);
    return description;
  }
};

constexpr std::size_t kFramesPerRun = 8 * kFramesPerPort;

struct Row {
  const char* name;
  std::size_t copies;  // frames that leave for each that comes in
  double goal;         // millions of frames a second; 0: none was set
  std::function<void(Setup&)> prepare;
  std::function<double(Setup&)> run;
  bool floor = false;  // sends nothing
};

void unicast(Setup& setup) {
  setup.prepare([&](FrameBytes& frame, std::size_t sender) {
    std::size_t receiver = setup.any_station();
    if (station_port(receiver) == station_port(sender)) ++receiver;
    store48(frame.data(), station_mac(receiver % kStations));
  });
}

// Makes the frame a UDP packet.
void put_ipv4(FrameBytes& frame, Ipv4 source, Ipv4 destination) {
  constexpr std::uint8_t kHeaders[] = {0x08, 0x00, 0x45, 0,    0,    50,   0, 0, 0, 0,
                                       64,   17,   0,    0,    0,    0,    0, 0, 0, 0,
                                       0,    0,    0x03, 0xE8, 0x07, 0xD0, 0, 30};
  std::copy(std::begin(kHeaders), std::end(kHeaders), frame.begin() + 12);
  store32(&frame[26], source);
  store32(&frame[30], destination);
  store16(&frame[24], checksum(&frame[14], 20));
}

void routed(Setup& setup) {
  setup.prepare([&](FrameBytes& frame, std::size_t) {
    const Ipv4 destination =
        subnet(setup.random() % kRoutes) + static_cast<Ipv4>(1 + setup.random() % 200);
    put_ipv4(frame, 0xC0000201, destination);
    store48(frame.data(), kRouterMac);
  });
}

// Flows on destination subnets of eight lengths, two protocols and any port.
void flows(Setup& setup) {
  for (std::size_t i = 0; i < kFlows; ++i) {
    FlowMatch match;
    match.fields = kFlowEtherType | kFlowIpv4Destination | kFlowIpProtocol;
    match.ether_type = 0x0800;
    match.ip_protocol = 17;
    match.ipv4_destination = static_cast<Ipv4>(0x0A000000 + i * 65536);
    match.ipv4_destination_mask = ~Ipv4{0} << (9 + i % 8);
    std::uint32_t id = 0;
    setup.card.tables().flows.add(match, id);
    FlowAction action;
    action.kind = OF_ACTION_OUTPUT;
    action.words[0] = OF_PORT_FIRST_PHYSICAL + 8;
    action.destination = Destination::port(8);
    setup.card.tables().flows.add_action(id, action);
  }
  setup.prepare([&](FrameBytes& frame, std::size_t) {
    put_ipv4(
        frame, 0xC0000201,
        static_cast<Ipv4>(0x0A000000 + setup.random() % kFlows * 65536 + setup.random() % 512));
    store48(frame.data(), station_mac(setup.any_station()));
  });
}

// The loop that does nothing but the two lookups; with `ahead` it asks for the memory of 32 frames
// before it reads the first, as the card does.
double look_up(Setup& setup, bool ahead) {
  const FdbTable& fdb = setup.card.tables().fdb;
  const double start = thread_seconds();
  std::uint64_t found = 0;
  for (std::size_t at = 0; at < kFramesPerPort; at += kBurst) {
    for (PortIndex port = 0; port < 8; ++port) {
      const FrameBytes* frames = &setup.frames[port][at];
      if (ahead) {
        for (std::size_t i = 0; i < kBurst; ++i) {
          fdb.prefetch(fdb_key(kVlan, load48(&frames[i][6])));
          fdb.prefetch(fdb_key(kVlan, load48(&frames[i][0])));
        }
      }
      for (std::size_t i = 0; i < kBurst; ++i) {
        const FdbEntry* source = fdb.find(fdb_key(kVlan, load48(&frames[i][6])));
        const FdbEntry* destination = fdb.find(fdb_key(kVlan, load48(&frames[i][0])));
        if (source != nullptr) found += source->destination().number;
        if (destination != nullptr) found += destination->destination().number;
      }
    }
  }
  sink = found;
  return thread_seconds() - start;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string part = argc > 1 ? argv[1] : "";
  const int rounds = argc > 2 ? std::atoi(argv[2]) : kRounds;
  const auto wanted = [&](const Row& row) {
    return row.floor || std::string(row.name).find(part) != std::string::npos;
  };
  const auto forward = [](Setup& setup) { return setup.run(); };
  const std::vector<Row> rows = {
      {"floor: two lookups", 0, 0, unicast, [](Setup& s) { return look_up(s, false); }, true},
      {"floor: two lookups, prefetched", 0, 0, unicast, [](Setup& s) { return look_up(s, true); },
       true},
      {"L2 known unicast", 1, 8, unicast, forward},
      {"L2 flood to 8 ports", 8, 0,
       [](Setup& setup) {
         setup.prepare(
             [](FrameBytes& frame, std::size_t) { store48(frame.data(), kBroadcastMac); });
       },
       forward},
      {"routed IPv4", 1, 5, routed, forward},
      {"1,000 masked flows", 1, 0, flows, forward},
  };

  std::vector<std::unique_ptr<Setup>> setups;
  std::vector<double> best(rows.size(), 1e9);
  for (const Row& row : rows) {
    setups.push_back(wanted(row) ? std::make_unique<Setup>() : nullptr);
    if (setups.back() != nullptr) row.prepare(*setups.back());
  }
  for (int round = 0; round < rounds; ++round) {
    for (std::size_t i = 0; i < rows.size(); ++i) {
      if (setups[i] == nullptr) continue;
      const std::uint64_t before = setups[i]->sent();
      best[i] = std::min(best[i], rows[i].run(*setups[i]));
      if (setups[i]->sent() - before != rows[i].copies * kFramesPerRun) {
        std::fprintf(stderr, "%s: %llu frames came out of %zu\n", rows[i].name,
                     static_cast<unsigned long long>(setups[i]->sent() - before), kFramesPerRun);
        return 1;
      }
    }
  }

  std::printf("64-byte frames, %zu FDB entries, %zu routes, bursts of %zu, one core\n\n", kStations,
              kRoutes, kBurst);
  std::printf("%-32s %12s %10s %8s %10s %10s\n", "", "M frames/s", "ns/frame", "goal", "of floor",
              "prefetched");
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (best[i] > 1e8) continue;
    char goal[16] = "";
    if (rows[i].goal > 0) std::snprintf(goal, sizeof goal, "%.0f", rows[i].goal);
    std::printf("%-32s %12.2f %10.1f %8s %9.0f%% %9.0f%%\n", rows[i].name,
                kFramesPerRun / best[i] / 1e6, best[i] / kFramesPerRun * 1e9, goal,
                best[0] / best[i] * 100, best[1] / best[i] * 100);
  }
  return 0;
}
