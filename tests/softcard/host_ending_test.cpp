// SPDX-License-Identifier: Apache-2.0
//
// Callbacks that end the library, or end it and start it again, whatever they are called for. Run
// under the address sanitizer this finds any use of the card that went.

#include <functional>

#include "softcard/cables/memory_cable.h"
#include "tests/softcard/host_fixture.h"

namespace softcard {
namespace {

int calls = 0;
bool start_again = false;

void end_library() {
  ++calls;
  EXPECT_TRUE(vorn_lcmgr_api_terminate());
  EXPECT_EQ(host::card(), nullptr);
  int ports = 0;
  if (start_again) {
    EXPECT_TRUE(vorn_lcmgr_api_init(ports)) << host::error();
  }
}

class EndingTest : public HostTest {
 protected:
  EndingTest() { calls = 0; }
  ~EndingTest() override { have_card(); }
  static void have_card() {
    int ports = 0;
    if (host::card() == nullptr) {
      EXPECT_TRUE(vorn_lcmgr_api_init(ports)) << host::error();
    }
  }
  // A broadcast comes in: an address is learned, the CPU gets a copy.
  static void frame_comes_in() {
    std::vector<std::uint8_t> frame(60, 0xFF);
    frame[6] = 2;
    frame[12] = 0x88;
    static_cast<MemoryCable*>(card().cable(0))->send(frame);
  }
};

TEST_F(EndingTest, AnyCallbackMayEndTheLibrary) {
  const std::function<bool()> kRegistrations[] = {
      [] {
        return vorn_register_rx_packet_callback(
            [](RxPacket* packet, void*) {
              end_library();
              EXPECT_EQ(packet->data[6], 2) << "the packet lasts as long as its call";
            },
            nullptr);
      },
      [] {
        return vorn_register_link_change_callback([](LinkStatus* status, Usp* usp) {
          end_library();
          EXPECT_TRUE(status->state == PHY_STATE_DOWN && *usp == port(1));
        });
      },
      [] {
        return vorn_register_mac_update_callback(
            [](L2Addr* entry, int, void*) {
              end_library();
              EXPECT_EQ(entry->mac[0], 2);
            },
            nullptr);
      },
  };
  for (start_again = false;; start_again = true) {
    for (const auto& registration : kRegistrations) {
      for (const bool by_round : {false, true}) {
        calls = 0;
        EXPECT_TRUE(registration());
        // Behind the one that ends the library nobody is called.
        EXPECT_TRUE(vorn_register_rx_packet_callback([](RxPacket*, void*) { EXPECT_EQ(calls, 0); },
                                                     nullptr));
        EXPECT_TRUE(vorn_register_mac_update_callback(
            [](L2Addr*, int, void*) { EXPECT_EQ(calls, 0); }, nullptr));
        EXPECT_TRUE(
            vorn_register_link_change_callback([](LinkStatus*, Usp*) { EXPECT_EQ(calls, 0); }));
        frame_comes_in();
        EXPECT_TRUE(vorn_set_port_state(port(1), false));
        if (by_round) {
          card().run_once();
        } else {
          card().deliver_events();
        }
        EXPECT_EQ(calls, 1);
        have_card();
        EXPECT_EQ(card().deliver_events(), 0u) << "nothing is left for the next card";
        EXPECT_TRUE(vorn_lcmgr_api_terminate());
        have_card();
      }
    }
    if (start_again) break;
  }
}

TEST_F(EndingTest, WalkMayEndTheLibrary) {
  for (start_again = false;; start_again = true) {
    const unsigned char first[] = {2, 0, 0, 0, 0, 1};
    const unsigned char second[] = {2, 0, 0, 0, 0, 2};
    EXPECT_TRUE(vorn_add_mac_to_port(port(1), first, 1));
    EXPECT_TRUE(vorn_add_mac_to_port(port(1), second, 1));
    calls = 0;
    mac_traverse_s walk{[](const ctype_l2_addr_s*, void*) {
                          end_library();
                          return 1;
                        },
                        nullptr};
    EXPECT_TRUE(vorn_traverse_mac_table(&walk));
    EXPECT_EQ(calls, 1) << "the rest of the table has gone";
    have_card();
    if (start_again) break;
  }
}

}  // namespace
}  // namespace softcard
