// SPDX-License-Identifier: Apache-2.0

#include "softcard/base/prefix_trie.h"

#include <algorithm>

#include "softcard/base/undo.h"

namespace softcard {

// ---- Runs ---------------------------------------------------------------------------------------

template <class Value>
void RunPool<Value>::insert(std::uint32_t& run, unsigned count, unsigned at, Value value) {
  if (count == 0) {
    run = take(0);
  } else if (count == 1u << room_log2_[run]) {
    const std::uint32_t old = run;
    run = take(room_log2_[old] + 1u);  // leaves `run` alone when it throws
    std::copy_n(&values_[old], count, &values_[run]);
    give(old);
  }
  Value* const first = &values_[run];
  std::move_backward(first + at, first + count, first + count + 1);
  first[at] = value;
}

template <class Value>
std::uint32_t RunPool<Value>::make_pair(Value first, Value second) {
  const std::uint32_t run = take(1);
  values_[run] = first;
  values_[run + 1] = second;
  return run;
}

template <class Value>
void RunPool<Value>::erase(std::uint32_t run, unsigned count, unsigned at) {
  Value* const first = &values_[run];
  std::move(first + at + 1, first + count, first + at);
  if (count == 1) give(run);
}

template <class Value>
void RunPool<Value>::reserve_front(std::size_t count) {
  values_.reserve(2 * count);  // so that the first run does not move them
  room_log2_.resize(count);
  values_.resize(count);
}

template <class Value>
void RunPool<Value>::clear() {
  *this = RunPool();
}

// Returns room for 2^room_log2 values.
template <class Value>
std::uint32_t RunPool<Value>::take(unsigned room_log2) {
  std::vector<std::uint32_t>& list = free_[room_log2];
  if (!list.empty()) {
    const std::uint32_t run = list.back();
    list.pop_back();
    return run;
  }
  // Giving the run back must not need memory.
  if (made_[room_log2] == list.capacity())
    list.reserve(std::max<std::size_t>(16, 2 * made_[room_log2]));
  const std::size_t run = values_.size();
  const std::size_t end = run + (std::size_t{1} << room_log2);
  room_log2_.resize(end);
  values_.resize(end);
  room_log2_[run] = static_cast<std::uint8_t>(room_log2);
  ++made_[room_log2];
  return static_cast<std::uint32_t>(run);
}

template <class Value>
void RunPool<Value>::give(std::uint32_t run) {
  free_[room_log2_[run]].push_back(run);
}

// ---- Lookup -------------------------------------------------------------------------------------

template <class Address>
void PrefixTrie<Address>::lookup_batch(const Address* ips, std::size_t count,
                                       std::uint32_t* values) const {
  if (empty()) {
    std::fill_n(values, count, kNone);
    return;
  }
  std::array<Walk, kBatch> walks;
  for (std::size_t i = 0; i < count; ++i) prefetch(ips[i]);
  for (std::size_t i = 0; i < count; ++i) {
    walks[i] = Walk(root_of(AddressBits<Address>(ips[i])));
  }
  for (bool under_way = true; under_way;) {
    under_way = false;
    for (std::size_t i = 0; i < count; ++i) {
      Walk& walk = walks[i];
      if (walk.node == kNone) continue;
      step(AddressBits<Address>(ips[i]), walk);
      if (walk.node != kNone) {
        softcard::prefetch(&nodes_[walk.node]);
        under_way = true;
      } else if (!single(walk.prefixes)) {
        softcard::prefetch(&values_[walk.values_run + rank(walk.prefixes, walk.best)]);
      }
    }
  }
  for (std::size_t i = 0; i < count; ++i) {
    values[i] = value_of(AddressBits<Address>(ips[i]), walks[i]);
  }
}

// ---- Changes ------------------------------------------------------------------------------------

template <class Address>
void PrefixTrie<Address>::set(const Address& prefix, unsigned length, std::uint32_t value) {
  if (empty()) make_short_prefixes();
  const AddressBits<Address> bits(prefix);
  if (length < kRootBits) {
    set_short(heap_position(bits, length), value);
    return;
  }
  Way way;
  way.nodes[0] = root_of(bits);
  Undo drop_new_nodes([&] { prune(bits, way); });
  while (length - way.offset() >= kStride) {
    const unsigned branch = bits.extract(way.offset(), kStride);
    Node node = nodes_[way.last()];  // a copy: inserting may move the nodes
    const unsigned index = rank(node.children, branch);
    if ((node.children >> branch & 1) == 0) {
      nodes_.insert(node.children_run, count_bits(node.children), index, Node());
      node.children |= std::uint32_t{1} << branch;
      nodes_[way.last()] = node;
    }
    ++way.depth;
    way.nodes[way.depth] = node.children_run + index;
  }
  set_in(nodes_[way.last()], prefix_bit(bits, way.offset(), length), value);
  drop_new_nodes.dismiss();
}

template <class Address>
void PrefixTrie<Address>::make_short_prefixes() {
  nodes_.reserve_front(kRoots);
  short_values_.assign(kRoots, kNone);
  best_short_.assign(kRoots, kNone);  // last: empty() asks for it
}

template <class Address>
void PrefixTrie<Address>::set_in(Node& node, unsigned bit, std::uint32_t value) {
  const unsigned index = rank(node.prefixes, bit);
  const unsigned count = count_bits(node.prefixes);
  const bool known = (node.prefixes >> bit & 1) != 0;
  if (count == 0 || (known && count == 1)) {
    node.values_run = value;
  } else if (known) {
    values_[node.values_run + index] = value;
  } else if (count == 1) {
    const std::uint32_t other = node.values_run;
    node.values_run =
        index == 0 ? values_.make_pair(value, other) : values_.make_pair(other, value);
  } else {
    values_.insert(node.values_run, count, index, value);
  }
  node.prefixes |= std::uint32_t{1} << bit;
}

template <class Address>
void PrefixTrie<Address>::erase_in(Node& node, unsigned bit) {
  const unsigned count = count_bits(node.prefixes);
  if (count > 1) values_.erase(node.values_run, count, rank(node.prefixes, bit));
  node.prefixes &= ~(std::uint32_t{1} << bit);
  if (count != 2) return;
  const std::uint32_t last = values_[node.values_run];
  values_.erase(node.values_run, 1, 0);
  node.values_run = last;
}

template <class Address>
void PrefixTrie<Address>::erase(const Address& prefix, unsigned length) {
  const AddressBits<Address> bits(prefix);
  if (length < kRootBits) {
    set_short(heap_position(bits, length), kNone);
    return;
  }
  Way way;
  way.nodes[0] = root_of(bits);
  while (length - way.offset() >= kStride) {
    const Node& node = nodes_[way.last()];
    const unsigned branch = bits.extract(way.offset(), kStride);
    ++way.depth;
    way.nodes[way.depth] = node.children_run + rank(node.children, branch);
  }
  erase_in(nodes_[way.last()], prefix_bit(bits, way.offset(), length));
  prune(bits, way);
}

// Removes the nodes that hold nothing, from the last one up; a root stays.
template <class Address>
void PrefixTrie<Address>::prune(const AddressBits<Address>& bits, Way& way) {
  while (way.depth != 0 && nodes_[way.last()].prefixes == 0 && nodes_[way.last()].children == 0) {
    --way.depth;
    Node& parent = nodes_[way.last()];
    const unsigned branch = bits.extract(way.offset(), kStride);
    nodes_.erase(parent.children_run, count_bits(parent.children), rank(parent.children, branch));
    parent.children &= ~(std::uint32_t{1} << branch);
  }
}

template <class Address>
void PrefixTrie<Address>::clear() {
  std::vector<std::uint32_t>().swap(best_short_);
  std::vector<std::uint32_t>().swap(short_values_);
  nodes_.clear();
  values_.clear();
}

// The index in Node::prefixes of a prefix of `length` bits that ends in the node at `offset`.
template <class Address>
unsigned PrefixTrie<Address>::prefix_bit(const AddressBits<Address>& bits, unsigned offset,
                                         unsigned length) {
  const unsigned inside = length - offset;
  return (1u << inside) - 1 + (inside == 0 ? 0 : bits.extract(offset, inside));
}

// The position in short_values_ of a prefix of `length` bits: those of one more bit, which it
// splits into, follow at twice that and one more.
template <class Address>
std::uint32_t PrefixTrie<Address>::heap_position(const AddressBits<Address>& bits,
                                                 unsigned length) {
  return (1u << length) | (length == 0 ? 0 : bits.extract(0, length));
}

// Gives a short prefix a value, or none, and brings the roots under it up to date.
template <class Address>
void PrefixTrie<Address>::set_short(std::uint32_t heap, std::uint32_t value) {
  short_values_[heap] = value;
  for (std::uint32_t shorter = heap; value == kNone && shorter > 1;) {
    shorter /= 2;
    value = short_values_[shorter];
  }
  paint(heap, value);
}

// Makes `value` the best short prefix of all roots under `heap` that have no longer one.
template <class Address>
void PrefixTrie<Address>::paint(std::uint32_t heap, std::uint32_t value) {
  for (std::uint32_t half = 2 * heap; half <= 2 * heap + 1; ++half) {
    if (half >= kRoots) {
      best_short_[half - kRoots] = value;
    } else if (short_values_[half] == kNone) {
      paint(half, value);
    }
  }
}

template class PrefixTrie<Ipv4>;
template class PrefixTrie<Ipv6Address>;

}  // namespace softcard
