// SPDX-License-Identifier: Apache-2.0
//
// A switch for tests of control-plane programs: the software line card on a virtual clock, with
// stations at its ports, and expectations that say what came instead. For C++17.
//
//   #include "vornlcapi/test/gtest.h"             // GoogleTest; else vornlcapi/test/switch.h
//
//   class VlanTest : public vorn::test::SwitchTest {        // eight ports, nothing configured
//    protected:
//     vorn::test::Station a = station(0), b = station(1), c = station(2);
//   };
//
//   TEST_F(VlanTest, StaysInItsVlan) {
//     EXPECT_OK(vorn_create_vlan(10));
//     EXPECT_OK(vorn_add_ports_to_vlan(10, {}, {a.port, b.port}));
//     EXPECT_OK(vorn_set_ports_pvid({a.port, b.port}, 10));
//     inject(a, a.to_all() + " arp tpa=192.0.2.2");
//     EXPECT_FRAME(b, "eth untagged arp");
//     EXPECT_NO_FRAMES();                                   // c is in another VLAN
//     EXPECT_REFUSED(vorn_create_vlan(5000), "above 4094");
//   }
//
// Frames are text as in the shell (softcard/frames/frame_text.h has the words) or bytes. What comes
// out of a port, or to the CPU while somebody listens there, must be expected: a frame that is left
// at the end of a test fails it. Time stands still but for warp(), and the process's event loop
// with it: a daemon's timers fire in warp(), in order.
//
// Without GoogleTest an expectation that does not hold throws vorn::test::Failure.
#ifndef VORNLCAPI_TEST_SWITCH_H_
#define VORNLCAPI_TEST_SWITCH_H_

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <list>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "softcard/host.h"
#include "vornlcapi/api.h"

namespace vorn::test {

using Bytes = std::vector<std::uint8_t>;

// ---- Results of expectations --------------------------------------------------------------------

// Whether an expectation held, and if not, what came instead.
struct Outcome {
  bool held;
  std::string message;  // empty when it held
};

// The exception for an expectation that does not hold, where no test framework takes it.
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Takes what does not hold: a place in a source, and the message. Throws Failure unless another
// function takes its place, as vornlcapi/test/gtest.h does.
using Reporter = void (*)(const char* file, int line, const std::string& message);
Reporter set_reporter(Reporter reporter);  // returns the one before
void report(const char* file, int line, const Outcome& outcome);

// ---- Stations and frames ------------------------------------------------------------------------

// Somebody at the far end of a port's cable, with addresses for documentation.
struct Station {
  Usp port;
  std::string mac;   // "00:00:5e:00:53:01" at 1/1/0, and so on
  std::string ipv4;  // "192.0.2.1" at 1/1/0, and so on

  // The head of a frame from here to another station, to everybody, or to an address:
  // "eth src=... dst=...".
  std::string to(const Station& other) const { return to(other.mac); }
  std::string to(const std::string& address) const { return "eth src=" + mac + " dst=" + address; }
  std::string to_all() const { return to("ff:ff:ff:ff:ff:ff"); }
};

// A frame from its text; Failure, with the column, for a text that is none.
Bytes frame_of(const std::string& text);
// A frame as text.
std::string text_of(const Bytes& frame);

// A packet that the card handed to the CPU.
struct CpuPacket {
  unsigned reason = 0;  // RX_REASON_...
  Usp port{0, 0, 0};
  unsigned vlan = 0;
  unsigned priority = 0;
  Bytes frame;
};

// ---- The switch ---------------------------------------------------------------------------------

// The card behind the library from its construction to its destruction; one at a time.
class Switch {
 public:
  // `description` is the text of a card description (softcard/card_description.h); Failure when it
  // is malformed or the card does not come up.
  explicit Switch(const std::string& description = "ports 8 speed 1000\n");
  // The same with a description that a program made.
  explicit Switch(const softcard::CardDescription& description);
  ~Switch();
  Switch(const Switch&) = delete;
  Switch& operator=(const Switch&) = delete;

  softcard::Card& card() const;

  static Usp port(unsigned number) { return Usp(1, 1, number); }
  static Usp lag(unsigned number) { return Usp(1, 2, number); }
  static Usp vlan(unsigned number) { return Usp(1, 3, number); }
  static Station station(unsigned port_number);

  // Sends a frame into a port and lets the card do what follows from it. Failure for a port that is
  // no physical port of the card.
  void inject(const Usp& at, const std::string& frame) { inject(at, frame_of(frame)); }
  void inject(const Usp& at, const Bytes& frame);
  void inject(const Station& at, const std::string& frame) { inject(at.port, frame); }
  void inject(const Station& at, const Bytes& frame) { inject(at.port, frame); }

  // Takes the frame that came out of a port first; false when there is none.
  bool take(const Usp& at, Bytes& frame) const;

  // Keeps the packets for the CPU from now on, for expect_cpu() and expect_nothing(). Until then
  // the card makes none unless the program under test registers for them.
  void listen_to_cpu();
  bool take_cpu(CpuPacket& packet);

  // Pulls the plug of a port and puts it back; joins two ports.
  void cut(const Usp& at);
  void restore(const Usp& at);
  void patch(const Usp& at, const Usp& other);

  // Lets card and event loop do all that waits, without any time passing.
  void run();
  // Lets time pass; what is due happens in its order. Failure beyond 2^64 ns.
  void warp(std::chrono::nanoseconds time);
  std::chrono::nanoseconds now() const;

  // Has the `nth` call from now of an SDK operation ("create_vlan") refused, 1 being the next.
  void fail(const std::string& operation, unsigned nth = 1);

  // The way of the last frame that was injected, a line for each thing that the card decided.
  const std::string& why() const { return why_; }

  // The expectations; the macros below report their outcome with its place.
  Outcome frame(const Usp& at, const std::string& pattern);
  Outcome frame(const Station& at, const std::string& pattern) { return frame(at.port, pattern); }
  Outcome cpu(unsigned reason, const std::string& pattern);
  // Nothing came out of any port, or to the CPU, that was not taken; takes what there is.
  Outcome nothing();

  // The switch that is there, for the macros; Failure when there is none.
  static Switch& current();

 private:
  std::shared_ptr<softcard::VirtualClock> clock_;
  std::deque<CpuPacket> packets_;
  std::string why_;
};

// An entry point's result, with the reason when it is a refusal.
Outcome ok(bool result, const char* call);
// A refusal whose reason contains `reason`.
Outcome refused(bool result, const char* call, const std::string& reason);

}  // namespace vorn::test

// The next frame that came out of a port or at a station shows what the pattern asks for; the empty
// pattern takes any frame.
#define EXPECT_FRAME(where, pattern)       \
  ::vorn::test::report(__FILE__, __LINE__, \
                       ::vorn::test::Switch::current().frame((where), (pattern)))

// The next packet for the CPU came for this reason (RX_REASON_...) and shows what the pattern asks.
#define EXPECT_CPU_PACKET(reason, pattern) \
  ::vorn::test::report(__FILE__, __LINE__, ::vorn::test::Switch::current().cpu((reason), (pattern)))

// Nothing is left that came out of a port or to the CPU.
#define EXPECT_NO_FRAMES() \
  ::vorn::test::report(__FILE__, __LINE__, ::vorn::test::Switch::current().nothing())

// A call of an entry point succeeds; else the message has the reason of the refusal.
#define EXPECT_OK(call) ::vorn::test::report(__FILE__, __LINE__, ::vorn::test::ok((call), #call))

// A call of an entry point is refused for a reason that contains the text.
#define EXPECT_REFUSED(call, reason) \
  ::vorn::test::report(__FILE__, __LINE__, ::vorn::test::refused((call), #call, (reason)))

#endif  // VORNLCAPI_TEST_SWITCH_H_
