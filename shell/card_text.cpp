// SPDX-License-Identifier: Apache-2.0
#include "card_text.h"

#include "codec.h"
#include "softcard/sdk/flow_fields.h"

namespace shell {

namespace {

softcard::PortIndex physical_port(const softcard::Card& card, const Usp& port) {
  softcard::PortIndex index = 0;
  if (!card.addresses().port_of(port, index)) {
    throw Error("port: " + softcard::AddressPlan::text(port) + " is no physical port of the card");
  }
  return index;
}

}  // namespace

softcard::PortIndex take_physical_port(const softcard::Card& card, Arguments& arguments) {
  return physical_port(card, parse_port(arguments.take("port"), "port"));
}

std::vector<softcard::PortIndex> take_physical_ports(const softcard::Card& card,
                                                     Arguments& arguments) {
  std::vector<softcard::PortIndex> ports;
  while (!arguments.empty()) {
    for (const Usp& port : parse_ports(arguments.take("ports"), "ports")) {
      ports.push_back(physical_port(card, port));
    }
  }
  if (ports.empty()) {
    for (softcard::PortIndex port = 0; port < card.addresses().port_count(); ++port) {
      ports.push_back(port);
    }
  }
  return ports;
}

std::string port_text(softcard::PortIndex port) {
  return softcard::AddressPlan::text(softcard::AddressPlan::usp_of(port));
}

Value port_value(softcard::PortIndex port) { return text_value(port_text(port)); }

Value ports_value(const softcard::PortSet& ports) {
  std::string text;
  std::vector<Value> list;
  const auto has = [&](unsigned port) {
    return port < softcard::kMaxPorts && ports.contains(static_cast<softcard::PortIndex>(port));
  };
  for (unsigned port = 0; port < softcard::kMaxPorts; ++port) {
    if (!has(port)) continue;
    text += (text.empty() ? "" : ",") + port_text(static_cast<softcard::PortIndex>(port));
    const unsigned first = port;
    while (has(port + 1)) ++port;
    if (port > first) text += '-' + std::to_string(port);
    for (unsigned i = first; i <= port; ++i) {
      list.push_back(port_value(static_cast<softcard::PortIndex>(i)));
    }
  }
  return {text.empty() ? "-" : text, list_value(list).json};
}

Value destination_value(const softcard::Card& card, softcard::Destination destination) {
  switch (destination.kind) {
    case softcard::DestinationKind::port:
      return port_value(destination.number);
    case softcard::DestinationKind::lag:
      return port_value(card.tables().lags.usp_of(destination.number));
    case softcard::DestinationKind::cpu:
      return text_value("cpu");
    case softcard::DestinationKind::drop:
      return text_value("drop");
    case softcard::DestinationKind::none:
      break;
  }
  return text_value("none");
}

Value mac_value(const softcard::MacAddress& mac) { return text_value(mac_text(mac.bytes.data())); }
Value address_value(softcard::Ipv4 ip) { return text_value(ip4_text(ip)); }
Value address_value(const softcard::Ipv6Address& ip) {
  return text_value(ip6_text(ip.bytes.data()));
}

std::string flow_match_text(const softcard::FlowMatch& match) {
  ctype_of_flow_s flow{};
  softcard::write_flow_fields(match, flow);
  if ((match.fields & softcard::kFlowInPort) != 0) flow.flags |= OF_MATCH_IN_PORT;
  const Usp in_port = softcard::AddressPlan::usp_of(match.in_port);
  flow.in_port = {in_port.unit(), in_port.slot(), in_port.port()};
  std::string text = flow_text(flow);
  if (match.udf.mask != 0) {
    const unsigned base = static_cast<unsigned>(match.udf.base) + OF_UDF_FRAME;
    text += ' ' + udf_text({base, match.udf.offset_bytes, match.udf.value, match.udf.mask});
  }
  return text;
}

}  // namespace shell
