// SPDX-License-Identifier: Apache-2.0

#include "softcard/tables/flow_table.h"

#include "softcard/base/hash.h"
#include "softcard/base/limits.h"
#include "softcard/base/undo.h"

namespace softcard {

const FlowActions FlowTable::kNoActions{};

bool UdfReader::read(FlowUdfBase base, std::uint32_t offset_bytes, std::uint32_t& value) const {
  std::uint64_t position = offset_bytes;
  if (base != FlowUdfBase::frame) {
    const std::uint32_t header = base == FlowUdfBase::l3 ? l3_offset_bytes : l4_offset_bytes;
    if (header == 0) return false;
    position += header;
  }
  if (position + 4 > length_bytes) return false;
  const std::uint8_t* bytes = frame + position;
  value = std::uint32_t{bytes[0]} << 24 | std::uint32_t{bytes[1]} << 16 |
          std::uint32_t{bytes[2]} << 8 | std::uint32_t{bytes[3]};
  return true;
}

// ---- Keys and masks -----------------------------------------------------------------------------

FlowKey FlowTable::key_of(const FlowMatch& match) {
  FlowKey key;
  key.set_ethernet(match.in_port, match.source_mac.to_number(), match.destination_mac.to_number(),
                   match.vlan, match.priority, match.ether_type);
  key.set_ip_protocol(match.ip_protocol);
  key.set_tos(match.tos);
  key.set_ipv4(match.ipv4_source, match.ipv4_destination);
  key.set_l4_ports(match.l4_source, match.l4_destination);
  key.words_[4] |= match.udf.value;
  return key;
}

FlowKey FlowTable::mask_of(const FlowMatch& match) {
  constexpr std::uint64_t kMacBits = (std::uint64_t{1} << 48) - 1;
  const auto asks = [&](std::uint32_t field) { return (match.fields & field) != 0; };
  const auto ones = [&](std::uint32_t field, std::uint64_t bits) { return asks(field) ? bits : 0; };
  FlowKey mask;
  mask.set_ethernet(static_cast<PortIndex>(ones(kFlowInPort, 0xFFFF)),
                    ones(kFlowSourceMac, kMacBits), ones(kFlowDestinationMac, kMacBits),
                    static_cast<std::uint16_t>(ones(kFlowVlan, kVlanCount - 1)),
                    static_cast<std::uint8_t>(ones(kFlowPriority, kPriorities - 1)),
                    static_cast<std::uint16_t>(ones(kFlowEtherType, 0xFFFF)));
  if (asks(kFlowIpProtocol)) mask.set_ip_protocol(0xFF);
  if (asks(kFlowTos)) mask.set_tos(0xFF);
  if (asks(kFlowIpv4Source | kFlowIpv4Destination)) {
    mask.set_ipv4(asks(kFlowIpv4Source) ? match.ipv4_source_mask : 0,
                  asks(kFlowIpv4Destination) ? match.ipv4_destination_mask : 0);
  }
  if (asks(kFlowL4Source | kFlowL4Destination)) {
    mask.set_l4_ports(static_cast<std::uint16_t>(ones(kFlowL4Source, 0xFFFF)),
                      static_cast<std::uint16_t>(ones(kFlowL4Destination, 0xFFFF)));
  }
  mask.words_[4] |= match.udf.mask;
  return mask;
}

// An empty subtable for flows that look at the same bits as `match`.
FlowTable::Subtable FlowTable::make_subtable(const FlowMatch& match) {
  Subtable subtable;
  subtable.mask = mask_of(match);
  for (std::size_t i = 0; i < subtable.mask.words_.size(); ++i) {
    const std::uint64_t bits = subtable.mask.words_[i];
    // Whether the headers are there is asked before the words are compared.
    if ((i == 4 ? bits & ~FlowKey::kHeaders : bits) != 0) {
      subtable.word[subtable.words++] = static_cast<std::uint8_t>(i);
    }
  }
  if (match.udf.mask != 0) {
    subtable.udf_base = match.udf.base;
    subtable.udf_offset_bytes = match.udf.offset_bytes;
  }
  return subtable;
}

bool FlowTable::same_mask(const Subtable& a, const Subtable& b) {
  return a.mask.words_ == b.mask.words_ && a.udf_base == b.udf_base &&
         a.udf_offset_bytes == b.udf_offset_bytes;
}

FlowTable::FlowTable(std::size_t capacity, KeyedHash hash) : hash_(hash), capacity_(capacity) {
  for (std::size_t i = 0; i < spread_.size(); ++i) spread_[i] = hash_.spread(i + 1) | 1;
}

std::uint32_t FlowTable::mask_hash(const Subtable& subtable) const {
  std::uint64_t sum =
      std::uint64_t{subtable.udf_offset_bytes} << 8 | static_cast<std::uint8_t>(subtable.udf_base);
  for (std::size_t i = 0; i < subtable.mask.words_.size(); ++i) {
    sum += hash_.spread(subtable.mask.words_[i] + spread_[i]);
  }
  return hash_(sum);
}

std::uint32_t FlowTable::key_hash(const Subtable& subtable, const FlowKey& key) const {
  std::uint64_t sum = 0;
  for (unsigned i = 0; i < subtable.words; ++i) {
    const unsigned word = subtable.word[i];
    sum += (key.words_[word] & subtable.mask.words_[word]) * spread_[word];
  }
  return static_cast<std::uint32_t>((sum ^ sum >> 32) * spread_[0] >> 32);
}

std::uint32_t FlowTable::find_in(const Subtable& subtable, const FlowKey& key,
                                 std::uint32_t hash) const {
  return subtable.index.find(hash, [&](std::uint32_t position) {
    const FlowKey& own = entries_[position].key;
    std::uint64_t differences = 0;
    for (unsigned i = 0; i < subtable.words; ++i) {
      const unsigned word = subtable.word[i];
      differences |= (own.words_[word] ^ key.words_[word]) & subtable.mask.words_[word];
    }
    return differences == 0;
  });
}

// ---- Flows --------------------------------------------------------------------------------------

FlowResult FlowTable::add(const FlowMatch& match, std::uint32_t& id, std::int32_t priority) {
  const std::uint32_t free_id = ids_.lowest_free();
  const FlowResult result = add_with_id(match, free_id, priority);
  if (result == FlowResult::done) id = free_id;
  return result;
}

FlowResult FlowTable::add_with_id(const FlowMatch& match, std::uint32_t id, std::int32_t priority) {
  if (((match.fields & kFlowVlan) != 0 && match.vlan >= kVlanCount) ||
      ((match.fields & kFlowPriority) != 0 && match.priority >= kPriorities)) {
    return FlowResult::bad_match;
  }
  if (ids_.find(id) != kNil) return FlowResult::id_taken;
  if (size() == capacity_) return FlowResult::full;
  if (answers_.empty()) answers_.resize(std::size_t{1} << kAnswersLog2);

  const std::uint32_t position = entries_.take();
  Undo give_back([&] { entries_.give(position); });
  Entry& entry = entries_[position];
  entry.key = key_of(match);
  entry.rank = {priority, id};
  entry.flow.id = id;
  entry.flow.priority = priority;
  entry.flow.match = match;
  const std::uint32_t subtable = subtable_for(match);
  Undo give_back_if_new([&] { give_if_empty(subtable); });
  entry.flow.subtable_ = subtable;
  ids_.insert(id, position);
  Undo free_id([&] { ids_.erase(id); });
  link(position);
  free_id.dismiss();
  give_back_if_new.dismiss();
  give_back.dismiss();
  return FlowResult::done;
}

FlowResult FlowTable::remove(std::uint32_t id) {
  const std::uint32_t position = ids_.find(id);
  if (position == kNil) return FlowResult::no_flow;
  unlink(position);
  update_subtable(entries_[position].flow.subtable_);
  ids_.erase(id);
  release_actions(entries_[position].flow);
  entries_.give(position);
  return FlowResult::done;
}

void FlowTable::clear() { *this = FlowTable(capacity_, hash_); }

const Flow* FlowTable::get(std::uint32_t id) const {
  const std::uint32_t position = ids_.find(id);
  return position == kNil ? nullptr : &entries_[position].flow;
}

FlowResult FlowTable::set_priority(std::uint32_t id, std::int32_t priority) {
  const std::uint32_t position = ids_.find(id);
  if (position == kNil) return FlowResult::no_flow;
  unlink(position);
  entries_[position].flow.priority = priority;
  entries_[position].rank.priority = priority;
  link(position);
  update_subtable(entries_[position].flow.subtable_);
  return FlowResult::done;
}

// ---- Actions ------------------------------------------------------------------------------------

FlowResult FlowTable::add_action(std::uint32_t id, const FlowAction& action) {
  const std::uint32_t position = ids_.find(id);
  if (position == kNil) return FlowResult::no_flow;
  Flow& flow = entries_[position].flow;
  const FlowActions& old = actions(flow);
  if (std::find(old.begin(), old.end(), action) != old.end()) return FlowResult::exists;
  if (old.count == kMaxFlowActions) return FlowResult::full_of_actions;
  if (flow.actions_ == kNil) flow.actions_ = action_lists_.take();
  FlowActions& list = action_lists_[flow.actions_];
  list.items[list.count++] = action;
  return FlowResult::done;
}

FlowResult FlowTable::remove_action(std::uint32_t id, const FlowAction& action) {
  const std::uint32_t position = ids_.find(id);
  if (position == kNil) return FlowResult::no_flow;
  Flow& flow = entries_[position].flow;
  if (flow.actions_ == kNil) return FlowResult::no_action;
  FlowActions& list = action_lists_[flow.actions_];
  FlowAction* const end = list.items.data() + list.count;
  FlowAction* const found = std::find(list.items.data(), end, action);
  if (found == end) return FlowResult::no_action;
  std::move(found + 1, end, found);
  if (--list.count == 0) release_actions(flow);
  return FlowResult::done;
}

FlowResult FlowTable::clear_actions(std::uint32_t id) {
  const std::uint32_t position = ids_.find(id);
  if (position == kNil) return FlowResult::no_flow;
  release_actions(entries_[position].flow);
  return FlowResult::done;
}

void FlowTable::release_actions(Flow& flow) {
  if (flow.actions_ == kNil) return;
  action_lists_.give(flow.actions_);
  flow.actions_ = kNil;
}

// ---- Frames -------------------------------------------------------------------------------------

// Of all the fields of a frame only those count that some flow looks at, and frames that agree in
// them share an answer, whichever flow that is. User-defined qualifiers look at bytes that no key
// holds.
const Flow* FlowTable::lookup(const FlowKey& key, const UdfReader& bytes) const {
  std::uint32_t found = kNil;
  const bool qualified = static_cast<std::uint32_t>(seen_.words_[4]) != 0;
  if (qualified || search_order_.size() < kSubtablesToKeepAnswers) {
    found = search(key, bytes);
  } else {
    FlowKey seen = key;
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i < FlowKey::kWords; ++i) {
      seen.words_[i] &= seen_.words_[i];
      sum += seen.words_[i] * spread_[i];
    }
    const std::uint64_t hash = (sum ^ sum >> 32) * spread_[0];
    Answer& answer = answers_[static_cast<std::size_t>(hash >> (64 - kAnswersLog2))];
    if (answer.version != version_ || answer.key.words_ != seen.words_) {
      answer.position = search(key, bytes);
      answer.key = seen;
      answer.version = version_;
    }
    found = answer.position;
  }
  return found == kNil ? nullptr : &entries_[found].flow;
}

std::uint32_t FlowTable::search(const FlowKey& key, const UdfReader& bytes) const {
  std::uint32_t best = kNil;
  for (const SearchStep& step : search_order_) {
    if (best != kNil && entries_[best].rank.beats(step.bound)) break;
    const Subtable& subtable = *step.subtable;
    const std::uint64_t headers = subtable.mask.words_[4] & FlowKey::kHeaders;
    if ((key.words_[4] & headers) != headers) continue;
    std::uint32_t found = kNil;
    if (static_cast<std::uint32_t>(subtable.mask.words_[4]) == 0) {
      found = find_in(subtable, key, key_hash(subtable, key));
    } else {
      std::uint32_t value = 0;
      if (!bytes.read(subtable.udf_base, subtable.udf_offset_bytes, value)) continue;
      FlowKey with_value = key;
      with_value.words_[4] |= value;
      found = find_in(subtable, with_value, key_hash(subtable, with_value));
    }
    if (found != kNil && (best == kNil || entries_[found].rank.beats(entries_[best].rank)))
      best = found;
  }
  return best;
}

// ---- Subtables ----------------------------------------------------------------------------------

// Returns the subtable for flows that look at the same bits as `match`; makes it where there is
// none.
std::uint32_t FlowTable::subtable_for(const FlowMatch& match) {
  Subtable wanted = make_subtable(match);
  const std::uint32_t hash = mask_hash(wanted);
  const std::uint32_t found =
      by_mask_.find(hash, [&](std::uint32_t s) { return same_mask(subtables_[s], wanted); });
  if (found != kNil) return found;
  if (subtables_.size() >= search_order_.capacity()) {
    search_order_.reserve(std::max<std::size_t>(16, 2 * search_order_.capacity()));
  }
  const std::uint32_t subtable = subtables_.take();
  Undo give_back([&] { subtables_.give(subtable); });
  by_mask_.insert(hash, subtable);
  give_back.dismiss();
  if (search_order_.empty()) seen_ = FlowKey();
  for (std::size_t i = 0; i < FlowKey::kWords; ++i) seen_.words_[i] |= wanted.mask.words_[i];
  subtables_[subtable] = std::move(wanted);
  return subtable;
}

// Enters a flow into its subtable, and that at its right place into the order of the search. No
// effect when memory runs out, which it does not for a flow that was linked before.
void FlowTable::link(std::uint32_t position) {
  ++version_;
  Flow& flow = entries_[position].flow;
  const Entry& entry = entries_[position];
  Subtable& subtable = subtables_[flow.subtable_];
  const std::uint32_t hash = key_hash(subtable, entry.key);
  const std::uint32_t first = find_in(subtable, entry.key, hash);
  if (first == kNil) subtable.index.insert(hash, position);

  if (subtable.size++ == 0) {
    insert_step(subtable, entry.rank);
  } else if (entry.rank.beats(subtable.bound)) {
    erase_step(subtable);
    insert_step(subtable, entry.rank);
  }
  if (first == kNil) {
    flow.next_ = position;
    flow.previous_ = position;
    return;
  }
  // The ring is looked through from its end, where a flow of the same priority and a new id
  // belongs.
  std::uint32_t before = entries_[first].flow.previous_;
  if (entry.rank.beats(entries_[first].rank)) {
    subtable.index.replace(hash, first, position);
  } else {
    while (entry.rank.beats(entries_[before].rank)) before = entries_[before].flow.previous_;
  }
  flow.previous_ = before;
  flow.next_ = entries_[before].flow.next_;
  entries_[flow.next_].flow.previous_ = position;
  entries_[before].flow.next_ = position;
}

// Takes a flow out of its subtable; update_subtable() must follow.
void FlowTable::unlink(std::uint32_t position) {
  ++version_;
  const Flow& flow = entries_[position].flow;
  const Entry& entry = entries_[position];
  Subtable& subtable = subtables_[flow.subtable_];
  const std::uint32_t hash = key_hash(subtable, entry.key);
  if (flow.next_ == position) {
    subtable.index.erase(hash, position);
  } else {
    const std::uint32_t first = find_in(subtable, entry.key, hash);
    if (first == position) subtable.index.replace(hash, position, flow.next_);
    entries_[flow.previous_].flow.next_ = flow.next_;
    entries_[flow.next_].flow.previous_ = flow.previous_;
  }
  --subtable.size;
  ++subtable.removed_since_scan;
  if (subtable.size == 0) erase_step(subtable);
}

// Gives an empty subtable back. In any other finds the bound anew when enough flows have left it
// to pay for that, so that the search ends early again.
void FlowTable::update_subtable(std::uint32_t position) {
  Subtable& subtable = subtables_[position];
  if (subtable.size == 0) {
    give_if_empty(position);
  } else if (subtable.removed_since_scan >= subtable.index.slots() / 2) {
    Rank best{INT32_MIN, UINT32_MAX};
    subtable.index.for_each([&](std::uint32_t p) {
      if (entries_[p].rank.beats(best)) best = entries_[p].rank;
    });
    subtable.removed_since_scan = 0;
    erase_step(subtable);
    insert_step(subtable, best);
  }
}

void FlowTable::give_if_empty(std::uint32_t position) {
  if (subtables_[position].size != 0) return;
  by_mask_.erase(mask_hash(subtables_[position]), position);
  subtables_.give(position);
}

// Enters a subtable into the order of the search behind all with a bound that beats its own.
void FlowTable::insert_step(Subtable& subtable, const Rank& bound) {
  subtable.bound = bound;
  const auto behind = std::upper_bound(
      search_order_.begin(), search_order_.end(), bound,
      [](const Rank& rank, const SearchStep& step) { return rank.beats(step.bound); });
  search_order_.insert(behind, {bound, &subtable});
}

void FlowTable::erase_step(const Subtable& subtable) {
  search_order_.erase(
      std::find_if(search_order_.begin(), search_order_.end(),
                   [&](const SearchStep& step) { return step.subtable == &subtable; }));
}

}  // namespace softcard
