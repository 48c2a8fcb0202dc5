// Long ways of a trie on which nothing branches off when they are made.
//
// Keys that share a long beginning have a node of their own for each half-byte of it. The first of
// such nodes, the head, remembers the whole chain: its bytes, so that a lookup compares them at
// once and goes on at the last node, and its nodes, so that counting along the way needs not wait
// for each link. What is inserted later may branch off anywhere; a chain holds as long as its nodes
// stand.
#pragma once

#include "containers/trie_nodes.hpp"

#include <cstddef>

namespace kestu::trie {

// Stands behind the head in its block. What a lookup needs comes first: the bytes follow, and
// behind them the nodes behind the head.
struct Chain {
    size_t steps; // from the head to the last node: two for each byte, as both have even depths
    Inner *last;

    size_t size() const { return steps / 2; }
    uint8_t *bytes() { return reinterpret_cast<uint8_t *>(this + 1); }
    const uint8_t *bytes() const { return reinterpret_cast<const uint8_t *>(this + 1); }
    Inner **nodes() { return reinterpret_cast<Inner **>(bytes() + padded(size())); }
    Inner *const *nodes() const {
        return reinterpret_cast<Inner *const *>(bytes() + padded(size()));
    }

    static size_t padded(size_t size) {
        return (size + sizeof(Inner *) - 1) / sizeof(Inner *) * sizeof(Inner *);
    }
    static size_t block_size(size_t steps) {
        return sizeof(Chain) + padded(steps / 2) + steps * sizeof(Inner *);
    }

    // Adds to the counts of the nodes between `head` and the last. Returns the one above the last.
    Inner *add_to_counts(Inner *head, uint32_t added) const {
        Inner *above = head;
        for (size_t i = 0; i + 1 < steps; ++i) {
            above = nodes()[i];
            above->count += added;
        }
        return above;
    }

    // Whether the way of a key that comes to the head at `depth` goes through the whole chain.
    bool leads(Key key, size_t depth) const {
        const size_t passed = depth / 2;
        return key.length - passed >= size() &&
               std::memcmp(key.bytes + passed, bytes(), size()) == 0;
    }
};

// A head is marked in the gaps behind the two small fields of its record. The second mark tells it
// from records that a caller made, where the gaps hold anything.
class HeadMark {
  public:
    static uint32_t steps(const Inner *inner) {
        const uint32_t count = load(inner, behind_type);
        return count != 0 && load(inner, behind_count) == ~count ? count : 0;
    }
    static void set(Inner *inner, uint32_t steps) {
        store(inner, behind_type, steps);
        store(inner, behind_count, ~steps);
    }

  private:
    static constexpr size_t behind_type = offsetof(Inner, type) + sizeof(uint32_t);
    static constexpr size_t behind_count = offsetof(Inner, count) + sizeof(uint32_t);
    static_assert(offsetof(Inner, end) == behind_type + sizeof(uint32_t));
    static_assert(offsetof(Inner, children) == behind_count + sizeof(uint32_t));

    static uint32_t load(const Inner *inner, size_t at) {
        uint32_t value = 0;
        std::memcpy(&value, reinterpret_cast<const char *>(inner) + at, sizeof value);
        return value;
    }
    static void store(Inner *inner, size_t at, uint32_t value) {
        std::memcpy(reinterpret_cast<char *>(inner) + at, &value, sizeof value);
    }
};

// The chain whose head is `inner`, or null.
inline const Chain *chain_from(const Inner *inner) {
    return HeadMark::steps(inner) != 0 ? reinterpret_cast<const Chain *>(inner + 1) : nullptr;
}

// Makes a chain of the nodes of a key from the depth `first` to the depth `last` where that pays.
class ChainMaker {
  public:
    ChainMaker(Key key, size_t first, size_t last)
        : key_(key), head_depth_(even(first + 1)), steps_(steps_between(head_depth_, even(last))) {}

    // What the block of the node at `depth` takes.
    size_t block_size(size_t depth) const {
        const bool is_head = steps_ != 0 && depth == head_depth_;
        return sizeof(Inner) + (is_head ? Chain::block_size(steps_) : 0);
    }

    // Takes note of the node at `depth`; they come in their order.
    void add(Inner *node, size_t depth) {
        const bool is_head = steps_ != 0 && depth == head_depth_;
        HeadMark::set(node, is_head ? static_cast<uint32_t>(steps_) : 0);
        if (is_head) {
            chain_ = reinterpret_cast<Chain *>(node + 1);
            chain_->steps = steps_;
            std::memcpy(chain_->bytes(), key_.bytes + depth / 2, chain_->size());
        } else if (chain_ && depth - head_depth_ <= steps_) {
            chain_->nodes()[depth - head_depth_ - 1] = chain_->last = node;
        }
    }

  private:
    static constexpr size_t fewest = 32;
    static constexpr size_t most = size_t{1} << 31;

    static size_t even(size_t depth) { return depth / 2 * 2; }
    static size_t steps_between(size_t head, size_t last) {
        return last < head + fewest ? 0 : std::min(last - head, most);
    }

    Key key_;
    size_t head_depth_;
    size_t steps_;
    Chain *chain_ = nullptr;
};

} // namespace kestu::trie
