// SPDX-License-Identifier: Apache-2.0
//
// Packets from the CPU.
#include "vornlcapi/capi/packet.h"

#include "tests/capi/rows.h"

namespace vorn::test {
namespace {

unsigned char bytes[] = {10, 11, 12, 13, 14};
ctype_packet_s frame = {4, 3, bytes};

const Row kRows[] = {
    {"send_packet_from_cpu", call(ctype_vorn_send_packet_from_cpu, &frame),
     "send_packet_from_cpu(3 4 0a0b0c0d)"},
    {"send_packet_by_port",
     call(ctype_vorn_send_packet_by_port, pair, 2, unsorted, 1, &frame),
     "send_packet_by_port([2:6 2:5],[2:13],3 4 0a0b0c0d)",
     "",
     {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11}},
};

INSTANTIATE_TEST_SUITE_P(packet, Rows, testing::ValuesIn(kRows), row_name);

TEST(Packet, OfNoLengthIsNotSent) {
  ctype_packet_s nothing = {0, 3, nullptr};
  host().reset();
  EXPECT_EQ(0, ctype_vorn_send_packet_from_cpu(&nothing));
  EXPECT_EQ(0, ctype_vorn_send_packet_by_port(pair, 2, unsorted, 1, &nothing));
  EXPECT_TRUE(host().steps.empty());
}

TEST(Packet, OfAnyOtherLengthIsSentWhole) {
  for (const unsigned int length : {1U, 0x10001U}) {
    std::vector<unsigned char> data(length, 0x5a);
    ctype_packet_s packet = {length, 3, data.data()};
    std::string hex;
    while (hex.size() < 2 * length) hex += "5a";
    host().reset();
    ASSERT_EQ(1, ctype_vorn_send_packet_from_cpu(&packet));
    EXPECT_TRUE(host().steps.back() == "send_packet_from_cpu(3 " + text(length) + " " + hex + ")")
        << length;
  }
}

// Whether a packet without any port is an error is the SDK's to say.
TEST(Packet, IsSentThroughEmptyLists) {
  host().reset();
  EXPECT_EQ(1, ctype_vorn_send_packet_by_port(pair, 0, unsorted, 0, &frame));
  EXPECT_EQ("send_packet_by_port([],[],3 4 0a0b0c0d)", host().steps.back());
}

}  // namespace
}  // namespace vorn::test
