// SPDX-License-Identifier: Apache-2.0
//
// Longest prefix match for IPv4 and IPv6: a tree bitmap that takes 16 bits of the address with its
// first step and five with each further one. A node keeps two bitmaps, the prefixes that end in it
// and the children it has, so it costs 16 bytes however many of its 32 branches are there, and
// adding or removing a prefix touches one node, whatever longer prefixes lie below it. The nodes
// that the first step leads to, the roots, are all there from the first prefix on: 1 MB.
//
//   node      prefixes that end here: *, 0*, 1*, 00*, ...      children by the next five bits
//             +---+---+---+---+-- ... --+                      +---+---+---+-- ... --+
//             | 1 | 0 | 1 | 0 |         |                      | 0 | 1 | 1 |         |
//             +---+---+---+---+-- ... --+                      +---+---+---+-- ... --+
//               |       |                                            |   |
//               v       v                                            v   v
//   arrays    values of the 1 bits, side by side               nodes of the 1 bits, side by side
//
// The place of a value or child in its array is the number of 1 bits in front of its own.
//
// An IPv4 prefix of up to 20 bits is in the first node, one of up to 25 bits in the second.
#ifndef SOFTCARD_BASE_PREFIX_TRIE_H_
#define SOFTCARD_BASE_PREFIX_TRIE_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "softcard/base/hash.h"
#include "softcard/base/net_types.h"

namespace softcard {

// The bits of an address by position; position 0 is the most significant bit.
template <class Address>
class AddressBits;

template <>
class AddressBits<Ipv4> {
 public:
  static constexpr unsigned kWidth = 32;

  explicit AddressBits(Ipv4 ip) : bits_(std::uint64_t{ip} << 32) {}

  // `count` bits (1 to 63) from `offset` (below 64) on as a number; bits behind the end are 0.
  unsigned extract(unsigned offset, unsigned count) const {
    return static_cast<unsigned>(bits_ << offset >> (64 - count));
  }

 private:
  std::uint64_t bits_;
};

template <>
class AddressBits<Ipv6Address> {
 public:
  static constexpr unsigned kWidth = 128;

  explicit AddressBits(const Ipv6Address& ip) {
    for (unsigned i = 0; i < 8; ++i) {
      high_ = high_ << 8 | ip.bytes[i];
      low_ = low_ << 8 | ip.bytes[i + 8];
    }
  }

  std::uint64_t high() const { return high_; }
  std::uint64_t low() const { return low_; }

  // `count` bits (1 to 63) from `offset` (below 128) on as a number; bits behind the end are 0.
  unsigned extract(unsigned offset, unsigned count) const {
    const std::uint64_t from_offset =
        offset >= 64 ? low_ << (offset - 64)
                     : high_ << offset | (offset == 0 ? 0 : low_ >> (64 - offset));
    return static_cast<unsigned>(from_offset >> (64 - count));
  }

 private:
  std::uint64_t high_ = 0;
  std::uint64_t low_ = 0;
};

// Runs of 1 to 32 values in one array, addressed by the position of the first. Room for them is
// handed out in powers of two. A run keeps its room, however few its values become, until it has
// none; then the room is used again.
template <class Value>
class RunPool {
 public:
  Value& operator[](std::uint32_t position) { return values_[position]; }
  const Value& operator[](std::uint32_t position) const { return values_[position]; }

  // Adds `value` at index `at` of the run of `count` values at `run`, which may move. A run of no
  // values has no position.
  void insert(std::uint32_t& run, unsigned count, unsigned at, Value value);

  // Makes a run of two values and returns its position.
  std::uint32_t make_pair(Value first, Value second);

  // Removes the value at index `at` of the run of `count` values at `run`.
  void erase(std::uint32_t run, unsigned count, unsigned at);

  // Puts `count` values, which are no runs, at the positions from 0 on of an empty pool.
  void reserve_front(std::size_t count);

  // Forgets all runs and gives the memory back.
  void clear();

 private:
  std::uint32_t take(unsigned room_log2);
  void give(std::uint32_t run);

  std::vector<Value> values_;
  std::vector<std::uint8_t> room_log2_;  // of the run that starts at a position
  // By log2 of the room: the runs that are free, with room for all that were ever made.
  std::array<std::vector<std::uint32_t>, 6> free_;
  std::array<std::size_t, 6> made_{};
};

namespace detail {

// For each branch of a node the bits of Node::prefixes (below) that hold it.
constexpr std::array<std::uint32_t, 32> make_prefixes_of_branch() {
  std::array<std::uint32_t, 32> table{};
  for (unsigned branch = 0; branch < 32; ++branch) {
    for (unsigned length = 0; length < 5; ++length) {
      table[branch] |= std::uint32_t{1} << ((1u << length) - 1 + (branch >> (5 - length)));
    }
  }
  return table;
}
inline constexpr std::array<std::uint32_t, 32> kPrefixesOfBranch = make_prefixes_of_branch();

}  // namespace detail

// A map from prefixes to 32-bit values that answers with the value of the longest prefix of an
// address. Bits of a prefix behind its length do not count; lengths are at most kWidth.
template <class Address>
class PrefixTrie {
 public:
  static constexpr std::uint32_t kNone = UINT32_MAX;
  static constexpr unsigned kWidth = AddressBits<Address>::kWidth;
  static constexpr std::size_t kBatch = 64;

  // Starts to load what lookup(ip) reads first.
  void prefetch(const Address& ip) const {
    if (!empty()) softcard::prefetch(&nodes_[root_of(AddressBits<Address>(ip))]);
  }

  // Returns the value of the longest prefix that holds `ip`, or kNone.
  std::uint32_t lookup(const Address& ip) const {
    if (empty()) return kNone;
    const AddressBits<Address> bits(ip);
    Walk walk(root_of(bits));
    while (walk.node != kNone) step(bits, walk);
    return value_of(bits, walk);
  }

  // As lookup() for each of `count` addresses, at most kBatch, a step of all of them at a time.
  void lookup_batch(const Address* ips, std::size_t count, std::uint32_t* values) const;

  // Gives a prefix a value, which must not be kNone. No effect when memory runs out; none is asked
  // for where the prefix has a value already.
  void set(const Address& prefix, unsigned length, std::uint32_t value);

  // Removes a prefix, which must have a value. Never runs out of memory.
  void erase(const Address& prefix, unsigned length);

  // Removes all prefixes and gives the memory back.
  void clear();

 private:
  static constexpr unsigned kRootBits = 16;
  static constexpr unsigned kStride = 5;
  static constexpr std::size_t kRoots = std::size_t{1} << kRootBits;
  // The nodes on the way to a prefix of full length.
  static constexpr unsigned kMaxDepth = (kWidth - kRootBits) / kStride + 1;

  // Bit (2^l - 1 + n) of `prefixes` stands for the prefix of l bits (0 to 4) with the value n; bit
  // n of `children` for the branch of five bits with the value n. Values and children are runs in
  // the order of their bits; a single value stands where the position of its run would.
  struct Node {
    std::uint32_t prefixes = 0;
    std::uint32_t children = 0;
    std::uint32_t values_run = 0;
    std::uint32_t children_run = 0;
  };
  // A lookup under way: the node to look at and the best prefix seen so far.
  struct Walk {
    Walk() = default;
    explicit Walk(std::uint32_t root) : node(root) {}

    std::uint32_t node = kNone;
    unsigned offset = kRootBits;
    std::uint32_t values_run = 0;
    std::uint32_t prefixes = 0;  // of the node with the best prefix; 0: a short one is best
    unsigned best = 0;           // the bit of that prefix
  };

  // True until the first prefix comes.
  bool empty() const { return best_short_.empty(); }

  // The root that the first step leads to.
  static std::uint32_t root_of(const AddressBits<Address>& bits) {
    return bits.extract(0, kRootBits);
  }

  // How many of the first `bit` bits are set: the index in a run of what stands for `bit`.
  static unsigned rank(std::uint32_t bits, unsigned bit) {
    return count_bits(bits & ((std::uint32_t{1} << bit) - 1));
  }

  // Looks at the node of `walk` and leads on to its child, or to kNone.
  void step(const AddressBits<Address>& bits, Walk& walk) const {
    const Node& node = nodes_[walk.node];
    const unsigned branch = bits.extract(walk.offset, kStride);
    const std::uint32_t holding = node.prefixes & detail::kPrefixesOfBranch[branch];
    if (holding != 0) {  // the highest bit is the longest prefix
      walk.best = 31 - static_cast<unsigned>(__builtin_clz(holding));
      walk.prefixes = node.prefixes;
      walk.values_run = node.values_run;
    }
    if ((node.children >> branch & 1) == 0) {
      walk.node = kNone;
      return;
    }
    walk.node = node.children_run + rank(node.children, branch);
    walk.offset += kStride;
  }

  static bool single(std::uint32_t prefixes) { return (prefixes & (prefixes - 1)) == 0; }

  std::uint32_t value_of(const AddressBits<Address>& bits, const Walk& walk) const {
    if (walk.prefixes == 0) return best_short_[root_of(bits)];
    return single(walk.prefixes) ? walk.values_run
                                 : values_[walk.values_run + rank(walk.prefixes, walk.best)];
  }

  // The nodes on the way to a prefix, from its root on.
  struct Way {
    std::array<std::uint32_t, kMaxDepth + 1> nodes;
    unsigned depth = 0;

    std::uint32_t last() const { return nodes[depth]; }
    unsigned offset() const { return kRootBits + depth * kStride; }
  };

  void make_short_prefixes();
  void set_in(Node& node, unsigned bit, std::uint32_t value);
  void erase_in(Node& node, unsigned bit);
  void prune(const AddressBits<Address>& bits, Way& way);
  static unsigned prefix_bit(const AddressBits<Address>& bits, unsigned offset, unsigned length);
  static std::uint32_t heap_position(const AddressBits<Address>& bits, unsigned length);
  void set_short(std::uint32_t heap, std::uint32_t value);
  void paint(std::uint32_t heap, std::uint32_t value);

  RunPool<Node> nodes_;  // in front the roots
  // Of prefixes shorter than the first step; both are empty until the first prefix comes.
  std::vector<std::uint32_t> best_short_;    // the value of the longest, by root
  std::vector<std::uint32_t> short_values_;  // the value of each, by 2^length + bits
  RunPool<std::uint32_t> values_;
};

extern template class PrefixTrie<Ipv4>;
extern template class PrefixTrie<Ipv6Address>;

}  // namespace softcard

#endif  // SOFTCARD_BASE_PREFIX_TRIE_H_
