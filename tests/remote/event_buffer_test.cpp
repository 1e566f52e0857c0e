// SPDX-License-Identifier: Apache-2.0

#include "remote/event_buffer.h"

#include <gtest/gtest.h>

#include <string>

namespace vorn::remote {
namespace {

// An event whose message is a text of so many bytes.
Event event_of(lcmgr_report_event_t kind, unsigned port, const std::string& text) {
  return {kind, Usp(1, 1, port), std::make_shared<const Bytes>(text.begin(), text.end())};
}
Event packet(const std::string& text) { return event_of(LCMGR_REPORT_RX_PACKET, 0, text); }
Event link_of(unsigned port, const std::string& text) {
  return event_of(LCMGR_REPORT_LINK_CHANGE, port, text);
}

std::string take_all(EventBuffer& buffer) {
  std::string all;
  for (; !buffer.empty(); buffer.pop()) {
    const Bytes& message = *buffer.front().message;
    all += std::string(message.begin(), message.end()) + " ";
  }
  return all;
}

TEST(EventBuffer, HoldsSoManyEventsAndBytes) {
  EventBuffer buffer(EventBuffer::Room{3, 10});
  for (const char* text : {"one", "two", "three", "four"}) buffer.push(packet(text));
  EXPECT_EQ(buffer.lost(LCMGR_REPORT_RX_PACKET), 1u);  // by bytes
  EXPECT_EQ(take_all(buffer), "one two four ");
  for (const char* text : {"1", "2", "3", "4"}) buffer.push(packet(text));
  EXPECT_EQ(buffer.lost(LCMGR_REPORT_RX_PACKET), 2u);  // by number
  EXPECT_EQ(take_all(buffer), "1 2 3 ");
  buffer.push(packet("1234567890"));
  EXPECT_EQ(buffer.lost(LCMGR_REPORT_RX_PACKET), 2u);
  buffer.clear();
  buffer.push(packet("0123456789"));
  EXPECT_EQ(take_all(buffer), "0123456789 ");
  EXPECT_EQ(buffer.lost(LCMGR_REPORT_MAC_UPDATE), 0u);
}

TEST(EventBuffer, TellsTheLastStateOfEachLink) {
  EventBuffer buffer(EventBuffer::Room{2, 1000});
  buffer.push(link_of(1, "1up"));
  buffer.push(packet("p"));
  buffer.push(link_of(1, "1dn"));  // in place of the one that waits
  buffer.push(link_of(2, "2up"));  // the port's first: there is always room for that
  buffer.push(link_of(2, "2dn"));
  buffer.push(packet("q"));
  EXPECT_EQ(buffer.lost(LCMGR_REPORT_LINK_CHANGE), 2u);
  EXPECT_EQ(buffer.lost(LCMGR_REPORT_RX_PACKET), 1u);
  EXPECT_EQ(take_all(buffer), "1dn p 2dn ");
  // One that was taken is not replaced.
  buffer.push(packet("p"));
  buffer.push(packet("q"));
  buffer.push(link_of(1, "1up"));
  EXPECT_EQ(take_all(buffer), "p q 1up ");
}

}  // namespace
}  // namespace vorn::remote
