// Long ways of a trie on which nothing branches off when they are made.
//
// Keys that share a long beginning have a node of their own for each half-byte of it. The first of
// such nodes, the head, remembers the whole chain: its bytes, so that a lookup compares them at
// once and goes on where the key leaves the chain, and its nodes, so that counting along the way
// need not wait for each link. What is inserted later may branch off anywhere; a chain holds as
// long as its nodes stand.
#pragma once

#include "containers/trie_nodes.hpp"

#include <cstddef>

namespace kestu::trie {

// Stands behind the head in its block, and is followed by the bytes and by the nodes behind the
// head.
struct Chain {
    size_t steps; // from the head to the last node: two for each byte, as both have even depths

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

    // How many steps the way of a key that comes to the head at `depth` keeps to the chain, in
    // whole bytes.
    size_t shared_steps(Key key, size_t depth) const {
        const size_t passed = depth / 2;
        return 2 * same_bytes(key.bytes + passed, bytes(), std::min(key.length - passed, size()));
    }
};

// A head is marked in the gaps behind the two small fields of its record. In records that a caller
// made the gaps may hold anything, so the mark is made of the address and stands there twice.
class HeadMark {
  public:
    static bool is_on(const Inner *inner) {
        const uint32_t found = load(inner, behind_type);
        return found != 0 && found == mark(inner) && load(inner, behind_count) == ~found;
    }
    static void set(Inner *inner) {
        store(inner, behind_type, mark(inner));
        store(inner, behind_count, ~mark(inner));
    }
    static void clear(Inner *inner) { store(inner, behind_type, 0); }

  private:
    static constexpr size_t behind_type = offsetof(Inner, type) + sizeof(uint32_t);
    static constexpr size_t behind_count = offsetof(Inner, count) + sizeof(uint32_t);
    static_assert(offsetof(Inner, end) == behind_type + sizeof(uint32_t));
    static_assert(offsetof(Inner, children) == behind_count + sizeof(uint32_t));

    // Never 0, as nodes are aligned to more than one byte.
    static uint32_t mark(const Inner *inner) {
        return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(inner)) | 1;
    }
    static uint32_t load(const Inner *inner, size_t at) {
        uint32_t value = 0;
        std::memcpy(&value, reinterpret_cast<const char *>(inner) + at, sizeof value);
        return value;
    }
    static void store(Inner *inner, size_t at, uint32_t value) {
        std::memcpy(reinterpret_cast<char *>(inner) + at, &value, sizeof value);
    }
};

// The nodes that the way of a key takes from `first` on, as far as they are known without a look at
// the slots: those of a chain, or none but the first.
struct Stretch {
    Inner *first;
    Inner *const *behind = nullptr;
    size_t steps = 0; // from the first node to the last

    Stretch(Inner *node, Key key, size_t depth) : first(node) {
        if (HeadMark::is_on(node)) [[unlikely]] {
            const auto *chain = reinterpret_cast<const Chain *>(node + 1);
            behind = chain->nodes();
            steps = chain->shared_steps(key, depth);
        }
    }
    Inner *at(size_t step) const { return step == 0 ? first : behind[step - 1]; }
    Inner *last() const { return at(steps); }
};

// Makes a chain of the nodes of a key from the depth `first` to the depth `last` where that pays.
class ChainMaker {
  public:
    ChainMaker(Key key, size_t first, size_t last)
        : key_(key), head_depth_(even(first + 1)), steps_(steps_between(head_depth_, even(last))) {}

    // What the block of the node at `depth` takes.
    size_t block_size(size_t depth) const {
        return sizeof(Inner) + (is_head(depth) ? Chain::block_size(steps_) : 0);
    }

    // Takes note of the node at `depth`; they come in their order.
    void add(Inner *node, size_t depth) {
        HeadMark::clear(node);
        if (is_head(depth)) {
            HeadMark::set(node);
            chain_ = reinterpret_cast<Chain *>(node + 1);
            chain_->steps = steps_;
            std::memcpy(chain_->bytes(), key_.bytes + depth / 2, chain_->size());
        } else if (chain_ && depth - head_depth_ <= steps_) {
            chain_->nodes()[depth - head_depth_ - 1] = node;
        }
    }

  private:
    static constexpr size_t fewest = 32;

    bool is_head(size_t depth) const { return steps_ != 0 && depth == head_depth_; }
    static size_t even(size_t depth) { return depth / 2 * 2; }
    static size_t steps_between(size_t head, size_t last) {
        return last < head + fewest ? 0 : last - head;
    }

    Key key_;
    size_t head_depth_;
    size_t steps_;
    Chain *chain_ = nullptr;
};

} // namespace kestu::trie
