// SPDX-License-Identifier: Apache-2.0

#include "softcard/pipeline/trace.h"

#include <iterator>

#include "softcard/base/address_plan.h"
#include "softcard/base/text.h"
#include "vornlcapi/enums.h"

namespace softcard {

const char* rx_reason_text(unsigned reason) {
  switch (reason) {
    case RX_REASON_RESERVED:
      return "reserved group address";
    case RX_REASON_ARP_FILTER:
      return "ARP filter";
    case RX_REASON_IP_PROTOCOL_FILTER:
      return "IP protocol filter";
    case RX_REASON_L4_PORT_FILTER:
      return "L4 destination port filter";
    case RX_REASON_SYSTEM_MAC:
      return "the switch's own address";
    case RX_REASON_UNKNOWN_UNICAST:
      return "copy of unknown unicast";
    case RX_REASON_FLOOD:
      return "copy of a flood";
    case RX_REASON_FLOW:
      return "output of a flow";
    case RX_REASON_LOCAL:
      return "local output of a flow";
    case RX_REASON_ROUTER:
      return "to the router itself";
    case RX_REASON_TTL:
      return "the TTL or hop limit ran out";
    case RX_REASON_NO_ROUTE:
      return "no host or route matches";
    case RX_REASON_OPTIONS:
      return "IP options";
    case RX_REASON_MTU:
      return "too long for the router's way out";
    default:
      return "?";
  }
}

const char* flow_action_text(unsigned kind) {
  constexpr const char* kTexts[] = {"output",
                                    "set VLAN",
                                    "set priority",
                                    "strip VLAN",
                                    "set source MAC",
                                    "set destination MAC",
                                    "set source IP",
                                    "set destination IP",
                                    "set TOS",
                                    "set source port",
                                    "set destination port",
                                    "set queue"};
  return kind < std::size(kTexts) ? kTexts[kind] : "?";
}

std::string Trace::to_string() const {
  constexpr std::size_t kColumn = 10;
  std::string lines;
  for (const Step& step : steps_) {
    std::string stage = step.stage;
    if (stage.size() < kColumn) stage.resize(kColumn, ' ');
    lines += stage + ' ' + step.text + '\n';
  }
  return lines;
}

// ---- The parts of a step ------------------------------------------------------------------------

void TraceWriter::append(std::string& line, DropReason reason) {
  line += std::string("drop: ") + text(reason) + " (" + name(reason) + ")";
}

void TraceWriter::append(std::string& line, HexText hex) { line += hex_text(hex.number); }

void TraceWriter::append(std::string& line, MacText mac) {
  line += mac_text(MacAddress::from_number(mac.number));
}

void TraceWriter::append(std::string& line, Destination destination) const {
  switch (destination.kind) {
    case DestinationKind::port:
    case DestinationKind::lag:
      line += AddressPlan::text(tables_.usp_of(destination));
      return;
    case DestinationKind::cpu:
      line += "CPU";
      return;
    case DestinationKind::none:
    case DestinationKind::drop:
      line += "nowhere";
      return;
  }
}

}  // namespace softcard
