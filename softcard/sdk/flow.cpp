// SPDX-License-Identifier: Apache-2.0
//
// The flow table.

#include "softcard/sdk/sdk.h"

#include <algorithm>
#include <initializer_list>

#include "softcard/base/refusal.h"
#include "softcard/base/text.h"
#include "softcard/frames/parser.h"
#include "softcard/sdk/conversions.h"
#include "softcard/sdk/flow_fields.h"

namespace softcard {
namespace {

// Whether any frame has all the fields that a flow asks for.
bool can_match(const FlowMatch& match) {
  const auto asks = [&](std::uint32_t fields) { return (match.fields & fields) != 0; };
  const auto is_one_of = [](unsigned value, std::initializer_list<unsigned> values) {
    return std::find(values.begin(), values.end(), value) != values.end();
  };
  if (asks(kFlowEtherType)) {
    const std::uint16_t type = match.ether_type;
    if (is_tag(type))
      return refuse("Ethernet type ", hex_text(type), ": it stands behind the tags");
    if ((asks(kFlowIpv4Source | kFlowIpv4Destination) && !is_one_of(type, {kTypeIpv4, kTypeArp})) ||
        (asks(kFlowIpProtocol) && !is_one_of(type, {kTypeIpv4, kTypeIpv6, kTypeArp})) ||
        (asks(kFlowTos | kFlowL4Source | kFlowL4Destination) &&
         !is_one_of(type, {kTypeIpv4, kTypeIpv6}))) {
      return refuse("Ethernet type ", hex_text(type), ": its frames lack a field of the flow");
    }
  }
  if (asks(kFlowL4Source | kFlowL4Destination) && asks(kFlowIpProtocol) &&
      !is_one_of(match.ip_protocol, {kProtocolIcmp, kProtocolTcp, kProtocolUdp, kProtocolIcmp6})) {
    return refuse("IP protocol ", match.ip_protocol, ": it has no ports");
  }
  return true;
}

bool flow_match_of(const AddressPlan& addresses, const of_flow_mp_s& flow, FlowMatch& match) {
  const of_match_s& from = flow.match;
  const auto has = [&](unsigned bit) { return (from.flags & bit) != 0; };
  if ((from.flags & ~static_cast<unsigned>(OF_MATCH_ALL)) != 0 ||
      (has(OF_MATCH_IN_PORT) && !addresses.port_of(flow.in_port, match.in_port)) ||
      (has(OF_MATCH_VLAN_ID) && !valid_vlan(from.vlan_id)) ||
      (has(OF_MATCH_VLAN_PRIORITY) && from.vlan_priority >= kPriorities) ||
      (has(OF_MATCH_IP_PROTOCOL) && from.ip_protocol > 255) ||
      (has(OF_MATCH_TOS) && from.tos > 255)) {
    return false;
  }
  if (has(OF_MATCH_IN_PORT)) match.fields |= kFlowInPort;
  read_flow_fields(from, match);
  return can_match(match);
}

// No frame is longer, tags included.
constexpr unsigned kLongestFrameBytes = 65535;

// False for a base that there is not, and for a qualifier of no bits, which would take every frame
// that is long enough: the flow table has no such condition.
bool flow_udf_of(const of_flow_qualify_udf_s& from, FlowUdf& udf) {
  if (from.base == OF_UDF_NONE) return true;
  if (from.base > OF_UDF_L4 || from.mask == 0) return false;
  if (from.offset > kLongestFrameBytes) {
    return refuse("offset ", from.offset, ": behind the end of every frame");
  }
  udf = {static_cast<FlowUdfBase>(from.base - OF_UDF_FRAME), from.offset, from.value, from.mask};
  return true;
}

// The words that the action does not name become 0.
bool flow_action_of(const AddressPlan& addresses, of_action_t kind, const of_action_param_s& param,
                    const Mp& mp, FlowAction& action) {
  const unsigned word = param.word[0];
  action.kind = kind;
  action.words = {word, 0, 0};
  switch (kind) {
    case OF_ACTION_OUTPUT: {
      if (word < OF_PORT_FIRST_PHYSICAL) return true;
      PortIndex port = 0;
      if (!addresses.port_of(mp, port) || word - OF_PORT_FIRST_PHYSICAL != port) return false;
      action.destination = Destination::port(port);
      return true;
    }
    case OF_ACTION_SET_VLAN_ID:
      return valid_vlan(word);
    case OF_ACTION_SET_VLAN_PRIORITY:
      return word < kPriorities;
    case OF_ACTION_STRIP_VLAN:
      action.words[0] = 0;
      return true;
    case OF_ACTION_SET_SRC_MAC:
    case OF_ACTION_SET_DST_MAC:
      action.words[1] = param.word[1];
      return param.word[1] <= 0xffff;
    case OF_ACTION_SET_SRC_IP:
    case OF_ACTION_SET_DST_IP:
      return true;
    case OF_ACTION_SET_TOS:
      return word <= 255;
    case OF_ACTION_SET_SRC_L4_PORT:
    case OF_ACTION_SET_DST_L4_PORT:
      return word <= 65535;
    case OF_ACTION_SET_QUEUE:
      return word < kQueues;
    default:
      return false;
  }
}

}  // namespace

bool SoftSdk::add_of_flow(of_flow_mp_s& flow, unsigned int& id, const of_flow_qualify_udf_s& udf) {
  FlowMatch match;
  std::uint32_t chosen = 0;
  if (!flow_match_of(card_.addresses(), flow, match) || !flow_udf_of(udf, match.udf) ||
      tables_.flows.add(match, chosen) != FlowResult::done) {
    return false;
  }
  id = chosen;
  return true;
}

bool SoftSdk::add_of_flow_with_id(of_flow_mp_s& flow, unsigned int id) {
  FlowMatch match;
  return flow_match_of(card_.addresses(), flow, match) &&
         tables_.flows.add_with_id(match, id) == FlowResult::done;
}

bool SoftSdk::delete_of_flow(unsigned int id) {
  return tables_.flows.remove(id) == FlowResult::done;
}

bool SoftSdk::clear_of_flow_table() {
  tables_.flows.clear();
  return true;
}

bool SoftSdk::add_of_flow_action(unsigned int id, of_action_t kind, of_action_param_s param,
                                 const Mp& mp) {
  FlowAction action;
  return flow_action_of(card_.addresses(), kind, param, mp, action) &&
         tables_.flows.add_action(id, action) == FlowResult::done;
}

bool SoftSdk::delete_of_flow_action(unsigned int id, of_action_t kind, of_action_param_s param,
                                    const Mp& mp) {
  FlowAction action;
  return flow_action_of(card_.addresses(), kind, param, mp, action) &&
         tables_.flows.remove_action(id, action) == FlowResult::done;
}

bool SoftSdk::clear_of_flow_action(unsigned int id) {
  return tables_.flows.clear_actions(id) == FlowResult::done;
}

bool SoftSdk::set_of_flow_priority(unsigned int id, int priority) {
  return tables_.flows.set_priority(id, priority) == FlowResult::done;
}

bool SoftSdk::get_of_flow_priority(unsigned int id, int& priority) {
  const Flow* const flow = tables_.flows.get(id);
  if (flow == nullptr) return false;
  priority = flow->priority;
  return true;
}

bool SoftSdk::get_of_flow_stat_counter64(unsigned int id, unsigned long long& packets) {
  const Flow* const flow = tables_.flows.get(id);
  if (flow == nullptr) return false;
  packets = flow->packets;
  return true;
}

bool SoftSdk::get_of_flow_stat_counter32(unsigned int id, unsigned int& packets) {
  const Flow* const flow = tables_.flows.get(id);
  if (flow == nullptr) return false;
  packets = static_cast<unsigned>(flow->packets);
  return true;
}

}  // namespace softcard
