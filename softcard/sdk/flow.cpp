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
  if (const unsigned unknown = from.flags & ~unsigned{OF_MATCH_ALL}; unknown != 0) {
    return refuse("there are no match flags ", hex_text(unknown));
  }
  if ((has(OF_MATCH_IN_PORT) && !port_of(addresses, flow.in_port, match.in_port)) ||
      (has(OF_MATCH_VLAN_ID) && !in_range<unsigned>("VLAN", from.vlan_id, 1, kMaxVlan)) ||
      (has(OF_MATCH_VLAN_PRIORITY) &&
       !in_range<unsigned>("priority", from.vlan_priority, 0, kPriorities - 1)) ||
      (has(OF_MATCH_IP_PROTOCOL) && !in_range<unsigned>("IP protocol", from.ip_protocol, 0, 255)) ||
      (has(OF_MATCH_TOS) && !in_range<unsigned>("ToS", from.tos, 0, 255))) {
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
  if (!in_range<unsigned>("base of the qualifier", from.base, OF_UDF_NONE, OF_UDF_L4)) return false;
  if (from.mask == 0) return refuse("the qualifier's mask has no bits");
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
      if (!port_of(addresses, mp, port)) return false;
      if (word - OF_PORT_FIRST_PHYSICAL != port) {
        return refuse("output port ", word, " is not ", mp);
      }
      action.destination = Destination::port(port);
      return true;
    }
    case OF_ACTION_SET_VLAN_ID:
      return in_range("VLAN", word, 1, kMaxVlan);
    case OF_ACTION_SET_VLAN_PRIORITY:
      return in_range("priority", word, 0, kPriorities - 1);
    case OF_ACTION_STRIP_VLAN:
      action.words[0] = 0;
      return true;
    case OF_ACTION_SET_SRC_MAC:
    case OF_ACTION_SET_DST_MAC:
      action.words[1] = param.word[1];
      return param.word[1] <= 0xffff || refuse("the address has more than six bytes");
    case OF_ACTION_SET_SRC_IP:
    case OF_ACTION_SET_DST_IP:
      return true;
    case OF_ACTION_SET_TOS:
      return in_range("ToS", word, 0, 255);
    case OF_ACTION_SET_SRC_L4_PORT:
    case OF_ACTION_SET_DST_L4_PORT:
      return in_range("L4 port", word, 0, 65535);
    case OF_ACTION_SET_QUEUE:
      return in_range("queue", word, 0, kQueues - 1);
    default:
      return in_range("action", unsigned{kind}, OF_ACTION_OUTPUT, OF_ACTION_SET_QUEUE);
  }
}

// Whether the table did what it was to do with flow `id` and an action of `kind`.
bool done(const FlowTable& flows, FlowResult result, unsigned id, unsigned kind = 0) {
  switch (result) {
    case FlowResult::done:
      return true;
    case FlowResult::full:
      return refuse_full("flows", flows.capacity());
    case FlowResult::full_of_actions:
      return refuse("flow ", id, ": ", kMaxFlowActions, " actions are the most");
    case FlowResult::id_taken:
      return refuse("add_of_flow_with_id: flow ", id, " exists");
    case FlowResult::bad_match:
      return refuse("the match has a VLAN or priority out of range");
    case FlowResult::no_flow:
      return refuse("flow ", id, " does not exist");
    case FlowResult::exists:
      return refuse("flow ", id, " has that action ", kind);
    case FlowResult::no_action:
      return refuse("flow ", id, " has no such action ", kind);
  }
  return false;
}

const Flow* required(const FlowTable& flows, unsigned id) {
  const Flow* const flow = flows.get(id);
  if (flow == nullptr) done(flows, FlowResult::no_flow, id);
  return flow;
}

}  // namespace

bool SoftSdk::add_of_flow(of_flow_mp_s& flow, unsigned int& id, const of_flow_qualify_udf_s& udf) {
  FlowMatch match;
  std::uint32_t chosen = 0;
  if (!flow_match_of(card_.addresses(), flow, match) || !flow_udf_of(udf, match.udf) ||
      !done(tables_.flows, tables_.flows.add(match, chosen), chosen)) {
    return false;
  }
  id = chosen;
  return true;
}

bool SoftSdk::add_of_flow_with_id(of_flow_mp_s& flow, unsigned int id) {
  FlowMatch match;
  return flow_match_of(card_.addresses(), flow, match) &&
         done(tables_.flows, tables_.flows.add_with_id(match, id), id);
}

bool SoftSdk::delete_of_flow(unsigned int id) {
  return done(tables_.flows, tables_.flows.remove(id), id);
}

bool SoftSdk::clear_of_flow_table() {
  tables_.flows.clear();
  return true;
}

bool SoftSdk::add_of_flow_action(unsigned int id, of_action_t kind, of_action_param_s param,
                                 const Mp& mp) {
  FlowAction action;
  return flow_action_of(card_.addresses(), kind, param, mp, action) &&
         done(tables_.flows, tables_.flows.add_action(id, action), id, kind);
}

bool SoftSdk::delete_of_flow_action(unsigned int id, of_action_t kind, of_action_param_s param,
                                    const Mp& mp) {
  FlowAction action;
  return flow_action_of(card_.addresses(), kind, param, mp, action) &&
         done(tables_.flows, tables_.flows.remove_action(id, action), id, kind);
}

bool SoftSdk::clear_of_flow_action(unsigned int id) {
  return done(tables_.flows, tables_.flows.clear_actions(id), id);
}

bool SoftSdk::set_of_flow_priority(unsigned int id, int priority) {
  return done(tables_.flows, tables_.flows.set_priority(id, priority), id);
}

bool SoftSdk::get_of_flow_priority(unsigned int id, int& priority) {
  const Flow* const flow = required(tables_.flows, id);
  if (flow == nullptr) return false;
  priority = flow->priority;
  return true;
}

bool SoftSdk::get_of_flow_stat_counter64(unsigned int id, unsigned long long& packets) {
  const Flow* const flow = required(tables_.flows, id);
  if (flow == nullptr) return false;
  packets = flow->packets;
  return true;
}

bool SoftSdk::get_of_flow_stat_counter32(unsigned int id, unsigned int& packets) {
  const Flow* const flow = required(tables_.flows, id);
  if (flow == nullptr) return false;
  packets = static_cast<unsigned>(flow->packets);
  return true;
}

}  // namespace softcard
