// SPDX-License-Identifier: Apache-2.0

#include "softcard/flow_table.h"

#include "softcard/hash.h"

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

// ---- Keys and masks ----------------------------------------------------------------------------

FlowKey FlowTable::key_of(const FlowMatch& match) {
  FlowKey key;
  key.set_ethernet(match.in_port, match.source_mac.to_number(), match.destination_mac.to_number(),
                   match.vlan, match.priority, match.ether_type);
  key.set_ip(match.ip_protocol, match.tos);
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
                    static_cast<std::uint16_t>(ones(kFlowVlan, 0xFFF)),
                    static_cast<std::uint8_t>(ones(kFlowPriority, 0x7)),
                    static_cast<std::uint16_t>(ones(kFlowEtherType, 0xFFFF)));
  if (asks(kFlowIpProtocol | kFlowTos)) {
    mask.set_ip(static_cast<std::uint8_t>(ones(kFlowIpProtocol, 0xFF)),
                static_cast<std::uint8_t>(ones(kFlowTos, 0xFF)));
  }
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

FlowKey FlowTable::masked(const FlowKey& key, const FlowKey& mask) {
  FlowKey result;
  result.words_ = {key.words_[0] & mask.words_[0], key.words_[1] & mask.words_[1],
                   key.words_[2] & mask.words_[2], key.words_[3] & mask.words_[3],
                   key.words_[4] & mask.words_[4]};
  return result;
}

// Compares without a branch for each word: all of them are the same in nearly every case.
bool FlowTable::same(const FlowKey& a, const FlowKey& b) {
  return ((a.words_[0] ^ b.words_[0]) | (a.words_[1] ^ b.words_[1]) | (a.words_[2] ^ b.words_[2]) |
          (a.words_[3] ^ b.words_[3]) | (a.words_[4] ^ b.words_[4])) == 0;
}

std::uint32_t FlowTable::hash_of(const FlowKey& key) {
  // The products do not wait for one another.
  return FlatIndex::hash_of(
      key.words_[0] * 0x9E3779B97F4A7C15u + key.words_[1] * 0xC2B2AE3D27D4EB4Fu +
      key.words_[2] * 0x165667B19E3779F9u + key.words_[3] * 0xD6E8FEB86659FD93u +
      key.words_[4] * 0xA0761D6478BD642Fu);
}

std::uint32_t FlowTable::hash_of(const Subtable& subtable) {
  const std::uint64_t place =
      std::uint64_t{subtable.udf_offset_bytes} << 8 | static_cast<std::uint8_t>(subtable.udf_base);
  return hash_of(subtable.mask) ^ FlatIndex::hash_of(place);
}

// ---- Flows -------------------------------------------------------------------------------------

FlowResult FlowTable::add(const FlowMatch& match, std::uint32_t& id, std::int32_t priority) {
  const std::uint32_t free_id = ids_.lowest_free();
  const FlowResult result = add_with_id(match, free_id, priority);
  if (result == FlowResult::done) id = free_id;
  return result;
}

FlowResult FlowTable::add_with_id(const FlowMatch& match, std::uint32_t id, std::int32_t priority) {
  if (((match.fields & kFlowVlan) != 0 && match.vlan > 4095) ||
      ((match.fields & kFlowPriority) != 0 && match.priority > 7)) {
    return FlowResult::bad_match;
  }
  if (position_of(id) != kNil) return FlowResult::id_taken;
  if (size() == capacity_) return FlowResult::full;

  std::uint32_t position = static_cast<std::uint32_t>(flows_.size());
  if (free_flows_.empty()) {
    flows_.emplace_back();
    rows_.emplace_back();
  } else {
    position = free_flows_.back();
    free_flows_.pop_back();
  }
  const std::uint32_t subtable = subtable_for(match);
  Flow& flow = flows_[position];
  flow.id = id;
  flow.priority = priority;
  flow.match = match;
  flow.subtable_ = subtable;
  flow.used_ = true;
  rows_[position].key = masked(key_of(match), subtables_[subtable].mask);
  rows_[position].id = id;
  by_id_.insert(FlatIndex::hash_of(id), position);
  ids_.take(id);
  link(position);
  return FlowResult::done;
}

FlowResult FlowTable::remove(std::uint32_t id) {
  const std::uint32_t position = position_of(id);
  if (position == kNil) return FlowResult::no_flow;
  unlink(position);
  settle(flows_[position].subtable_);
  by_id_.erase(FlatIndex::hash_of(id), position);
  ids_.release(id);
  release_actions(flows_[position]);
  flows_[position] = Flow();
  free_flows_.push_back(position);
  return FlowResult::done;
}

void FlowTable::clear() { *this = FlowTable(capacity_); }

const Flow* FlowTable::get(std::uint32_t id) const {
  const std::uint32_t position = position_of(id);
  return position == kNil ? nullptr : &flows_[position];
}

FlowResult FlowTable::set_priority(std::uint32_t id, std::int32_t priority) {
  const std::uint32_t position = position_of(id);
  if (position == kNil) return FlowResult::no_flow;
  unlink(position);
  flows_[position].priority = priority;
  link(position);
  settle(flows_[position].subtable_);
  return FlowResult::done;
}

// ---- Actions -----------------------------------------------------------------------------------

FlowResult FlowTable::add_action(std::uint32_t id, const FlowAction& action) {
  const std::uint32_t position = position_of(id);
  if (position == kNil) return FlowResult::no_flow;
  Flow& flow = flows_[position];
  const FlowActions& old = actions(flow);
  if (std::find(old.begin(), old.end(), action) != old.end()) return FlowResult::exists;
  if (old.count == kMaxFlowActions) return FlowResult::full;
  if (flow.actions_ == kNil) {
    if (free_action_lists_.empty()) {
      flow.actions_ = static_cast<std::uint32_t>(action_lists_.size());
      action_lists_.emplace_back();
    } else {
      flow.actions_ = free_action_lists_.back();
      free_action_lists_.pop_back();
    }
  }
  FlowActions& list = action_lists_[flow.actions_];
  list.items[list.count++] = action;
  return FlowResult::done;
}

FlowResult FlowTable::remove_action(std::uint32_t id, const FlowAction& action) {
  const std::uint32_t position = position_of(id);
  if (position == kNil) return FlowResult::no_flow;
  Flow& flow = flows_[position];
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
  const std::uint32_t position = position_of(id);
  if (position == kNil) return FlowResult::no_flow;
  release_actions(flows_[position]);
  return FlowResult::done;
}

void FlowTable::release_actions(Flow& flow) {
  if (flow.actions_ == kNil) return;
  action_lists_[flow.actions_].count = 0;
  free_action_lists_.push_back(flow.actions_);
  flow.actions_ = kNil;
}

// ---- Frames ------------------------------------------------------------------------------------

const Flow* FlowTable::lookup(const FlowKey& key, const UdfReader& bytes) const {
  std::uint32_t best = kNil;
  for (const SearchStep& step : search_order_) {
    if (best != kNil && rows_[best].priority > step.highest_priority) break;
    const Subtable& subtable = subtables_[step.subtable];
    const std::uint64_t headers = subtable.mask.words_[4] & FlowKey::kHeaders;
    if ((key.words_[4] & headers) != headers) continue;
    FlowKey sought = masked(key, subtable.mask);
    const std::uint32_t udf_mask = static_cast<std::uint32_t>(subtable.mask.words_[4]);
    if (udf_mask != 0) {
      std::uint32_t value = 0;
      if (!bytes.read(subtable.udf_base, subtable.udf_offset_bytes, value)) continue;
      sought.words_[4] |= value & udf_mask;
    }
    const std::uint32_t found = subtable.index.find(
        hash_of(sought), [&](std::uint32_t p) { return same(rows_[p].key, sought); });
    if (found != kNil && (best == kNil || better(found, best))) best = found;
  }
  return best == kNil ? nullptr : &flows_[best];
}

// True when the flow at `a` wins over the one at `b`.
bool FlowTable::better(std::uint32_t a, std::uint32_t b) const {
  if (rows_[a].priority != rows_[b].priority) return rows_[a].priority > rows_[b].priority;
  return rows_[a].id < rows_[b].id;
}

std::uint32_t FlowTable::position_of(std::uint32_t id) const {
  return by_id_.find(FlatIndex::hash_of(id), [&](std::uint32_t p) { return rows_[p].id == id; });
}

// ---- Subtables ---------------------------------------------------------------------------------

// Returns the subtable for flows that look at the same bits as `match`; makes it where there is
// none.
std::uint32_t FlowTable::subtable_for(const FlowMatch& match) {
  Subtable wanted;
  wanted.mask = mask_of(match);
  if (match.udf.mask != 0) {
    wanted.udf_base = match.udf.base;
    wanted.udf_offset_bytes = match.udf.offset_bytes;
  }
  const std::uint32_t hash = hash_of(wanted);
  const std::uint32_t found = by_mask_.find(hash, [&](std::uint32_t s) {
    const Subtable& candidate = subtables_[s];
    return same(candidate.mask, wanted.mask) && candidate.udf_base == wanted.udf_base &&
           candidate.udf_offset_bytes == wanted.udf_offset_bytes;
  });
  if (found != kNil) return found;
  std::uint32_t subtable = static_cast<std::uint32_t>(subtables_.size());
  if (free_subtables_.empty()) {
    subtables_.push_back(std::move(wanted));
  } else {
    subtable = free_subtables_.back();
    free_subtables_.pop_back();
    subtables_[subtable] = std::move(wanted);
  }
  by_mask_.insert(hash, subtable);
  return subtable;
}

// Enters a flow into its subtable, and that at its right place into the order of the search.
void FlowTable::link(std::uint32_t position) {
  Flow& flow = flows_[position];
  Row& row = rows_[position];
  row.priority = flow.priority;
  Subtable& subtable = subtables_[flow.subtable_];
  if (subtable.size++ == 0) {
    insert_step(flow.subtable_, flow.priority);
  } else if (flow.priority > subtable.highest_priority) {
    erase_step(flow.subtable_);
    insert_step(flow.subtable_, flow.priority);
  }

  const std::uint32_t hash = hash_of(row.key);
  const std::uint32_t first =
      subtable.index.find(hash, [&](std::uint32_t p) { return same(rows_[p].key, row.key); });
  if (first == kNil) {
    flow.next_ = position;
    flow.previous_ = position;
    subtable.index.insert(hash, position);
    return;
  }
  // The ring is looked through from its end, where a flow of the same priority and a new id
  // belongs.
  std::uint32_t before = flows_[first].previous_;
  if (better(position, first)) {
    subtable.index.replace(hash, first, position);
  } else {
    while (better(position, before)) before = flows_[before].previous_;
  }
  flow.previous_ = before;
  flow.next_ = flows_[before].next_;
  flows_[flow.next_].previous_ = position;
  flows_[before].next_ = position;
}

// Takes a flow out of its subtable; settle() must follow.
void FlowTable::unlink(std::uint32_t position) {
  Flow& flow = flows_[position];
  const Row& row = rows_[position];
  Subtable& subtable = subtables_[flow.subtable_];
  const std::uint32_t hash = hash_of(row.key);
  if (flow.next_ == position) {
    subtable.index.erase(hash, position);
  } else {
    const std::uint32_t first =
        subtable.index.find(hash, [&](std::uint32_t p) { return same(rows_[p].key, row.key); });
    if (first == position) subtable.index.replace(hash, position, flow.next_);
    flows_[flow.previous_].next_ = flow.next_;
    flows_[flow.next_].previous_ = flow.previous_;
  }
  --subtable.size;
  ++subtable.removed_since_scan;
  if (subtable.size == 0) erase_step(flow.subtable_);
}

// Gives an empty subtable back.  In any other finds the highest priority anew when enough flows
// have left it to pay for that, so that the search ends early again.
void FlowTable::settle(std::uint32_t position) {
  Subtable& subtable = subtables_[position];
  if (subtable.size == 0) {
    by_mask_.erase(hash_of(subtable), position);
    subtable = Subtable();
    free_subtables_.push_back(position);
  } else if (subtable.removed_since_scan >= subtable.index.slots() / 2) {
    std::int32_t highest = INT32_MIN;
    subtable.index.for_each(
        [&](std::uint32_t p) { highest = std::max(highest, rows_[p].priority); });
    subtable.removed_since_scan = 0;
    erase_step(position);
    insert_step(position, highest);
  }
}

// Enters a subtable into the order of the search behind all that hold no lower priority.
void FlowTable::insert_step(std::uint32_t subtable, std::int32_t highest_priority) {
  subtables_[subtable].highest_priority = highest_priority;
  const auto behind = std::upper_bound(search_order_.begin(), search_order_.end(), highest_priority,
                                       [](std::int32_t priority, const SearchStep& step) {
                                         return priority > step.highest_priority;
                                       });
  search_order_.insert(behind, {highest_priority, subtable});
}

void FlowTable::erase_step(std::uint32_t subtable) {
  search_order_.erase(
      std::find_if(search_order_.begin(), search_order_.end(),
                   [&](const SearchStep& step) { return step.subtable == subtable; }));
}

}  // namespace softcard
