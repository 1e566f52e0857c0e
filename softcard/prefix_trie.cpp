// SPDX-License-Identifier: Apache-2.0

#include "softcard/prefix_trie.h"

#include <algorithm>

namespace softcard {

// ---- Runs --------------------------------------------------------------------------------------

template <class Value>
void RunPool<Value>::insert(std::uint32_t& run, unsigned count, unsigned at, Value value) {
  if (count == 0) {
    run = allocate(0);
  } else if (ceil_log2(count + 1) != ceil_log2(count)) {
    resize_run(run, count, ceil_log2(count), ceil_log2(count + 1));
  }
  Value* first = &values_[run];
  std::move_backward(first + at, first + count, first + count + 1);
  first[at] = value;
}

template <class Value>
void RunPool<Value>::erase(std::uint32_t& run, unsigned count, unsigned at) {
  Value* first = &values_[run];
  std::move(first + at + 1, first + count, first + at);
  if (count == 1) {
    free_[0].push_back(run);
  } else if (ceil_log2(count - 1) != ceil_log2(count)) {
    resize_run(run, count - 1, ceil_log2(count), ceil_log2(count - 1));
  }
}

template <class Value>
void RunPool<Value>::clear() {
  std::vector<Value>().swap(values_);
  for (std::vector<std::uint32_t>& list : free_) std::vector<std::uint32_t>().swap(list);
}

// Returns room for 2^size_class values.
template <class Value>
std::uint32_t RunPool<Value>::allocate(unsigned size_class) {
  std::vector<std::uint32_t>& list = free_[size_class];
  if (!list.empty()) {
    const std::uint32_t run = list.back();
    list.pop_back();
    return run;
  }
  const std::size_t run = values_.size();
  values_.resize(run + (std::size_t{1} << size_class));
  return static_cast<std::uint32_t>(run);
}

// Moves a run of `count` values to room of another size.
template <class Value>
void RunPool<Value>::resize_run(std::uint32_t& run, unsigned count, unsigned old_class,
                                unsigned new_class) {
  const std::uint32_t to = allocate(new_class);
  std::copy_n(&values_[run], count, &values_[to]);
  free_[old_class].push_back(run);
  run = to;
}

// ---- Lookup ------------------------------------------------------------------------------------

template <class Address>
void PrefixTrie<Address>::lookup_batch(const Address* ips, std::size_t count,
                                       std::uint32_t* values) const {
  if (roots_.empty()) {
    std::fill_n(values, count, kNone);
    return;
  }
  std::array<Walk, kBatch> walks;
  for (std::size_t i = 0; i < count; ++i) prefetch(ips[i]);
  for (std::size_t i = 0; i < count; ++i) {
    walks[i] = Walk(roots_[AddressBits<Address>(ips[i]).extract(0, kRootBits)]);
    if (walks[i].node != kNone) softcard::prefetch(&nodes_[walks[i].node]);
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
  for (std::size_t i = 0; i < count; ++i) values[i] = value_of(walks[i]);
}

template <class Address>
std::uint32_t PrefixTrie<Address>::get(const Address& prefix, unsigned length) const {
  if (roots_.empty()) return kNone;
  const AddressBits<Address> bits(prefix);
  if (length < kRootBits) return short_values_[heap_position(bits, length)];
  std::uint32_t current = roots_[bits.extract(0, kRootBits)].node;
  unsigned offset = kRootBits;
  for (; current != kNone && length - offset >= kStride; offset += kStride) {
    const Node& node = nodes_[current];
    const unsigned branch = bits.extract(offset, kStride);
    current = (node.children >> branch & 1) == 0 ? kNone
                                                 : node.children_run + rank(node.children, branch);
  }
  if (current == kNone) return kNone;
  const Node& node = nodes_[current];
  const unsigned bit = prefix_bit(bits, offset, length);
  if ((node.prefixes >> bit & 1) == 0) return kNone;
  return value_at(node.prefixes, node.values_run, bit);
}

// ---- Changes -----------------------------------------------------------------------------------

template <class Address>
void PrefixTrie<Address>::set(const Address& prefix, unsigned length, std::uint32_t value) {
  if (roots_.empty()) {
    roots_.resize(kRoots);
    short_values_.assign(kRoots, kNone);
  }
  const AddressBits<Address> bits(prefix);
  if (length < kRootBits) {
    set_short(heap_position(bits, length), value);
    return;
  }
  Root& root = roots_[bits.extract(0, kRootBits)];
  if (root.node == kNone) nodes_.insert(root.node, 0, 0, Node());
  std::uint32_t current = root.node;
  unsigned offset = kRootBits;
  for (; length - offset >= kStride; offset += kStride) {
    const unsigned branch = bits.extract(offset, kStride);
    Node node = nodes_[current];  // a copy: inserting may move the nodes
    const unsigned index = rank(node.children, branch);
    if ((node.children >> branch & 1) == 0) {
      nodes_.insert(node.children_run, count_bits(node.children), index, Node());
      node.children |= std::uint64_t{1} << branch;
      nodes_[current] = node;
    }
    current = node.children_run + index;
  }
  set_in(nodes_[current], prefix_bit(bits, offset, length), value);
}

template <class Address>
void PrefixTrie<Address>::set_in(Node& node, unsigned bit, std::uint32_t value) {
  const unsigned index = rank(node.prefixes, bit);
  const unsigned count = count_bits(node.prefixes);
  const bool known = (node.prefixes >> bit & 1) != 0;
  node.prefixes |= std::uint64_t{1} << bit;
  if (count == 0 || (known && count == 1)) {
    node.values_run = value;
  } else if (known) {
    values_[node.values_run + index] = value;
  } else {
    if (count == 1) values_.insert(node.values_run, 0, 0, node.values_run);
    values_.insert(node.values_run, count, index, value);
  }
}

template <class Address>
void PrefixTrie<Address>::erase_in(Node& node, unsigned bit) {
  const unsigned count = count_bits(node.prefixes);
  if (count > 1) values_.erase(node.values_run, count, rank(node.prefixes, bit));
  node.prefixes &= ~(std::uint64_t{1} << bit);
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
  Root& root = roots_[bits.extract(0, kRootBits)];
  std::array<std::uint32_t, kMaxDepth> way;  // the nodes passed before the one of the prefix
  unsigned depth = 0;
  std::uint32_t current = root.node;
  unsigned offset = kRootBits;
  for (; length - offset >= kStride; offset += kStride) {
    const Node& node = nodes_[current];
    way[depth++] = current;
    current = node.children_run + rank(node.children, bits.extract(offset, kStride));
  }
  erase_in(nodes_[current], prefix_bit(bits, offset, length));

  // Nodes that hold nothing any more go, from the last one up.
  while (nodes_[current].prefixes == 0 && nodes_[current].children == 0) {
    if (depth == 0) {
      nodes_.erase(root.node, 1, 0);
      root.node = kNone;
      return;
    }
    current = way[--depth];
    offset -= kStride;
    Node parent = nodes_[current];
    const unsigned branch = bits.extract(offset, kStride);
    nodes_.erase(parent.children_run, count_bits(parent.children), rank(parent.children, branch));
    parent.children &= ~(std::uint64_t{1} << branch);
    nodes_[current] = parent;
  }
}

template <class Address>
void PrefixTrie<Address>::clear() {
  std::vector<Root>().swap(roots_);
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
      roots_[half - kRoots].value = value;
    } else if (short_values_[half] == kNone) {
      paint(half, value);
    }
  }
}

template class PrefixTrie<Ipv4>;
template class PrefixTrie<Ipv6Address>;

}  // namespace softcard
