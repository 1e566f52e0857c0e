// SPDX-License-Identifier: Apache-2.0
//
// The flow table: what frames match, with a priority, actions and counters.
//
// The lookup is a tuple space search: flows that look at the same bits of a frame stand together in
// a subtable, a hash index over those bits. Subtables are searched in the order of the highest
// priority they hold and the search ends when none of the rest can win, so a lookup costs a probe
// for each distinct mask at most and does not depend on the number of flows.
//
// Conventions: addresses and numbers are in host byte order; a higher priority wins, and among
// equals the lower id; a full table refuses a new flow and changes nothing, and so does one that
// runs out of memory, which throws. Memory grows with the flows, and removing never asks for any.
#ifndef SOFTCARD_TABLES_FLOW_TABLE_H_
#define SOFTCARD_TABLES_FLOW_TABLE_H_

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "softcard/base/flat_index.h"
#include "softcard/base/id_map.h"
#include "softcard/base/net_types.h"
#include "softcard/base/pool.h"
#include "softcard/tables/capacity.h"

namespace softcard {

// ---- What a frame shows -------------------------------------------------------------------------

// The fields of a frame that flows look at, packed so that a mask is five ANDs. The pipeline fills
// a fresh key once per frame, with each set_ function at most once and only for headers that are
// there: a flow that asks for a header which the frame lacks does not match.
class FlowKey {
 public:
  // `source` and `destination` are MacAddress::to_number(); `vlan` and `priority` (PCP, 0 to 7) are
  // those the frame was classified to; `ether_type` is the one behind all tags.
  void set_ethernet(PortIndex in_port, std::uint64_t source, std::uint64_t destination,
                    std::uint16_t vlan, std::uint8_t priority, std::uint16_t ether_type) {
    words_[0] = source << 16 | in_port;
    words_[1] = destination << 16 | std::uint64_t{vlan} << 4 | std::uint64_t{priority};
    words_[3] |= std::uint64_t{ether_type} << 48;
  }
  // Of IPv4 and IPv6 alike the protocol, behind extension headers; of ARP the operation.
  void set_ip_protocol(std::uint8_t protocol) {
    words_[3] |= std::uint64_t{protocol} << 8;
    words_[4] |= kHasIpProtocol;
  }
  // TOS of IPv4, traffic class of IPv6.
  void set_tos(std::uint8_t tos) {
    words_[3] |= tos;
    words_[4] |= kHasTos;
  }
  // Of IPv4, and of ARP the sender's and the target's address.
  void set_ipv4(Ipv4 source, Ipv4 destination) {
    words_[2] = std::uint64_t{source} << 32 | destination;
    words_[4] |= kHasIpv4;
  }
  // TCP and UDP ports, ICMP type and code; of the first fragment only.
  void set_l4_ports(std::uint16_t source, std::uint16_t destination) {
    words_[3] |= std::uint64_t{source} << 32 | std::uint64_t{destination} << 16;
    words_[4] |= kHasL4Ports;
  }

 private:
  friend class FlowTable;

  static constexpr std::uint64_t kHeaders = std::uint64_t{0xFFFFFFFF} << 32;
  static constexpr std::uint64_t kHasIpProtocol = std::uint64_t{1} << 32;
  static constexpr std::uint64_t kHasIpv4 = std::uint64_t{1} << 33;
  static constexpr std::uint64_t kHasL4Ports = std::uint64_t{1} << 34;
  static constexpr std::uint64_t kHasTos = std::uint64_t{1} << 35;

  // source MAC 48, in port 16 | destination MAC 48, VLAN 12, PCP 4 | IPv4 source 32, destination 32
  // | Ethernet type 16, L4 source 16, destination 16, protocol 8, TOS 8 | headers 32, qualifier 32
  static constexpr std::size_t kWords = 5;
  std::array<std::uint64_t, kWords> words_{};
};

// Where the offset of a user-defined qualifier counts from.
enum class FlowUdfBase : std::uint8_t {
  frame,  // the first byte of the destination MAC
  l3,     // the first byte of the IPv4, IPv6 or ARP header
  l4,     // the first byte behind the IP header and its extensions
};

// Four bytes of the frame under a mask, read as a big-endian number.
struct FlowUdf {
  FlowUdfBase base = FlowUdfBase::frame;
  std::uint32_t offset_bytes = 0;
  std::uint32_t value = 0;
  std::uint32_t mask = 0;  // 0: no qualifier
};

// The bytes of a frame as qualifiers read them. Owns nothing.
struct UdfReader {
  const std::uint8_t* frame = nullptr;
  std::uint32_t length_bytes = 0;
  std::uint32_t l3_offset_bytes = 0;  // from the start of the frame; 0: no such header
  std::uint32_t l4_offset_bytes = 0;  // likewise

  // Reads the four bytes at `offset_bytes` behind `base` into `value`. False when the header is
  // not there or the frame ends before the fourth byte.
  bool read(FlowUdfBase base, std::uint32_t offset_bytes, std::uint32_t& value) const;
};

// ---- What a flow asks for -----------------------------------------------------------------------

// The fields that a flow may look at; FlowMatch::fields is an OR of these.
enum FlowField : std::uint32_t {
  kFlowInPort = 1u << 0,
  kFlowSourceMac = 1u << 1,
  kFlowDestinationMac = 1u << 2,
  kFlowVlan = 1u << 3,
  kFlowPriority = 1u << 4,
  kFlowEtherType = 1u << 5,
  kFlowIpv4Source = 1u << 6,
  kFlowIpv4Destination = 1u << 7,
  kFlowIpProtocol = 1u << 8,
  kFlowTos = 1u << 9,
  kFlowL4Source = 1u << 10,
  kFlowL4Destination = 1u << 11,
};

// The frames that a flow takes: those that agree in every field named in `fields`, and with `udf`.
// Fields that are not named may hold anything.
struct FlowMatch {
  std::uint32_t fields = 0;
  PortIndex in_port = 0;
  MacAddress source_mac;
  MacAddress destination_mac;
  std::uint16_t vlan = 0;     // below kVlanCount
  std::uint8_t priority = 0;  // PCP, 0 to 7
  std::uint16_t ether_type = 0;
  Ipv4 ipv4_source = 0;       // bits outside the mask do not count
  Ipv4 ipv4_source_mask = 0;  // any bits; 0 takes every IPv4 frame
  Ipv4 ipv4_destination = 0;
  Ipv4 ipv4_destination_mask = 0;
  std::uint8_t ip_protocol = 0;
  std::uint8_t tos = 0;  // all eight bits
  std::uint16_t l4_source = 0;
  std::uint16_t l4_destination = 0;
  FlowUdf udf;
};

// One thing to do with a frame; kind and words mean what the card makes of them.
struct FlowAction {
  std::uint32_t kind = 0;
  std::array<std::uint32_t, 3> words{};
  Destination destination;

  friend bool operator==(const FlowAction& a, const FlowAction& b) {
    return a.kind == b.kind && a.words == b.words && a.destination == b.destination;
  }
};

constexpr std::size_t kMaxFlowActions = 8;

// The actions of a flow in the order in which they were added, none twice.
struct FlowActions {
  std::uint32_t count = 0;
  std::array<FlowAction, kMaxFlowActions> items;

  const FlowAction* begin() const { return items.data(); }
  const FlowAction* end() const { return items.data() + count; }
};

// One flow. Only FlowTable changes it.
struct Flow {
  std::uint32_t id = 0;
  std::int32_t priority = 0;
  std::uint64_t packets = 0;
  std::uint64_t bytes = 0;
  FlowMatch match;

 private:
  friend class FlowTable;

  std::uint32_t subtable_ = 0;
  std::uint32_t next_ = 0;      // ring of the flows with the same match, best first
  std::uint32_t previous_ = 0;  //
  std::uint32_t actions_ = UINT32_MAX;
};

// The result of an operation of FlowTable.
enum class FlowResult {
  done,
  full,             // no room for the flow
  full_of_actions,  // no room for one more action of the flow
  id_taken,         // a flow has that id
  bad_match,        // no VLAN id, or no PCP
  no_flow,          // no flow has that id
  exists,           // the flow has that action already
  no_action,        // the flow has no such action
};

class FlowTable {
 public:
  static constexpr std::size_t kDefaultCapacity = CardCapacity().flows;
  static constexpr std::int32_t kDefaultPriority = 32768;

  explicit FlowTable(std::size_t capacity = kDefaultCapacity, KeyedHash hash = KeyedHash::drawn());

  // ---- Flows ------------------------------------------------------------------------------------

  // Adds a flow without actions under the lowest free id from 1 up and sets `id` to it. `id` is
  // left alone when the flow is refused.
  FlowResult add(const FlowMatch& match, std::uint32_t& id,
                 std::int32_t priority = kDefaultPriority);

  // Adds a flow without actions under `id`, which may be any number.
  FlowResult add_with_id(const FlowMatch& match, std::uint32_t id,
                         std::int32_t priority = kDefaultPriority);

  // Removes a flow with its actions and counters.
  FlowResult remove(std::uint32_t id);

  // Removes all flows.
  void clear();

  // Returns the flow of `id`, or null. It holds until the flow is removed.
  const Flow* get(std::uint32_t id) const;

  FlowResult set_priority(std::uint32_t id, std::int32_t priority);

  // ---- Actions ----------------------------------------------------------------------------------

  // Appends an action; at most kMaxFlowActions.
  FlowResult add_action(std::uint32_t id, const FlowAction& action);

  // Removes the action that is equal in kind, words and destination; the others keep their order.
  FlowResult remove_action(std::uint32_t id, const FlowAction& action);

  FlowResult clear_actions(std::uint32_t id);

  // The actions of a flow of this table.
  const FlowActions& actions(const Flow& flow) const {
    return flow.actions_ == kNil ? kNoActions : action_lists_[flow.actions_];
  }

  // ---- Frames -----------------------------------------------------------------------------------

  // Returns the winning flow for a frame, or null when none matches. Does not count the frame.
  // `bytes` is read only for flows with a user-defined qualifier.
  const Flow* lookup(const FlowKey& key, const UdfReader& bytes) const;

  // Counts a frame of `frame_bytes` for a flow of this table.
  void count(const Flow& flow, std::uint32_t frame_bytes) {
    Flow& own = const_cast<Flow&>(flow);
    ++own.packets;
    own.bytes += frame_bytes;
  }

  // ---- Sizes ------------------------------------------------------------------------------------

  std::size_t size() const { return entries_.size(); }
  std::size_t capacity() const { return capacity_; }
  // The number of distinct masks in use: what bounds the cost of a lookup.
  std::size_t subtables() const { return search_order_.size(); }

  // Calls visit(const Flow&) for each flow; `visit` must not change the table.
  template <class Visit>
  void for_each(Visit&& visit) const {
    entries_.for_each([&](std::uint32_t position) { visit(entries_[position].flow); });
  }

 private:
  static constexpr std::uint32_t kNil = FlatIndex::kNone;
  static const FlowActions kNoActions;
  static constexpr unsigned kAnswersLog2 = 11;
  // From this many subtables on an answer is cheaper kept than found again.
  static constexpr std::size_t kSubtablesToKeepAnswers = 3;

  // The higher priority wins, then the lower id.
  struct Rank {
    std::int32_t priority = 0;
    std::uint32_t id = 0;

    bool beats(const Rank& other) const {
      return priority != other.priority ? priority > other.priority : id < other.id;
    }
  };

  // What a lookup found, for frames that agree in all that flows look at.
  struct alignas(64) Answer {
    FlowKey key;                // of such a frame, under seen_
    std::uint64_t version = 0;  // of the table, when it was found
    std::uint32_t position = kNil;
  };

  // A flow behind what a lookup reads of it, which is in one cache line.
  struct alignas(64) Entry {
    FlowKey key;
    Rank rank;
    Flow flow;
  };

  // The flows that look at the same bits.
  struct Subtable {
    FlowKey mask;
    std::uint8_t words = 0;  // how many words of the mask are not 0, headers aside, and which
    std::array<std::uint8_t, 5> word{};
    FlowUdfBase udf_base = FlowUdfBase::frame;
    std::uint32_t udf_offset_bytes = 0;
    FlatIndex index;  // the best flow of each distinct match
    Rank bound;       // no flow in it beats this
    std::uint32_t size = 0;
    std::uint32_t removed_since_scan = 0;  // flows removed since the bound was exact
  };

  struct SearchStep {
    Rank bound;
    const Subtable* subtable;
  };

  // The bits of a match as a key and the bits that count as a mask.
  static FlowKey key_of(const FlowMatch& match);
  static FlowKey mask_of(const FlowMatch& match);
  static Subtable make_subtable(const FlowMatch& match);
  static bool same_mask(const Subtable& a, const Subtable& b);
  std::uint32_t mask_hash(const Subtable& subtable) const;

  // Searches all subtables; kNil when no flow matches.
  std::uint32_t search(const FlowKey& key, const UdfReader& bytes) const;
  // Finds the best flow of a subtable for a key, kNil when there is none. `hash` is key_hash().
  std::uint32_t find_in(const Subtable& subtable, const FlowKey& key, std::uint32_t hash) const;
  std::uint32_t key_hash(const Subtable& subtable, const FlowKey& key) const;

  std::uint32_t subtable_for(const FlowMatch& match);
  void link(std::uint32_t position);
  void unlink(std::uint32_t position);
  void update_subtable(std::uint32_t position);
  void give_if_empty(std::uint32_t position);
  void insert_step(Subtable& subtable, const Rank& bound);
  void erase_step(const Subtable& subtable);
  void release_actions(Flow& flow);

  KeyedHash hash_;
  std::array<std::uint64_t, FlowKey::kWords> spread_;  // odd numbers that spread a key's words
  std::size_t capacity_;
  Pool<Entry> entries_;
  IdMap ids_{capacity_};
  Pool<Subtable> subtables_;
  FlatIndex by_mask_;
  // The bound that beats the others first; has room for all subtables.
  std::vector<SearchStep> search_order_;
  Pool<FlowActions> action_lists_;

  // Answers by a hash of their keys; none until the first flow comes. One that is not of the
  // table's present version holds no longer.
  mutable std::vector<Answer> answers_;
  std::uint64_t version_ = 1;
  FlowKey seen_;  // at least the bits that flows look at
};

}  // namespace softcard

#endif  // SOFTCARD_TABLES_FLOW_TABLE_H_
