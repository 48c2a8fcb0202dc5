// Long ways of a trie on which nothing branches off when they are made.
//
// Keys that share a long beginning have a node of their own for each half-byte of it. The first of
// such nodes, the head, remembers the whole chain: its bytes, so that a lookup compares them at
// once and goes on where the key leaves the chain, and its nodes, so that counting along the way
// need not wait for each link. What is inserted later may branch off anywhere; a chain holds as
// long as its nodes stand. Where a caller changed the records, what they say counts: whoever counts
// reads them all, and cuts the chain where they lead elsewhere.
#pragma once

#include "containers/trie_nodes.hpp"

namespace kestu::trie {

// Stands behind the head in its block, and is followed by the bytes and by the nodes behind the
// head.
struct Chain {
    size_t steps;  // from the head to the last node: two for each byte, as both have even depths
    Inner **nodes; // those behind the head

    uint8_t *bytes() { return reinterpret_cast<uint8_t *>(this + 1); }
    const uint8_t *bytes() const { return reinterpret_cast<const uint8_t *>(this + 1); }

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
        return 2 *
               same_bytes(key.bytes + passed, bytes(), std::min(key.length - passed, steps / 2));
    }
};

// A head is marked in the gaps of its record: in the first by where it lies, which no copy of the
// record shares, in the second by what stands behind it as well, which is lost when the memory
// serves for something else. Nothing is read behind a record whose first mark is wrong. It is never
// 0: its factor and the other are odd.
inline uint32_t low_mark_of(const Inner *inner) {
    return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(inner) >> 3 | 1) * 0x9E3779B9;
}
inline uint32_t high_mark_of(const Chain *chain) {
    const uint64_t sum = reinterpret_cast<uintptr_t>(chain) ^
                         reinterpret_cast<uintptr_t>(chain->nodes) * 31 ^ chain->steps * 1022;
    return static_cast<uint32_t>(sum * 0x9E3779B97F4A7C15 >> 32);
}
inline void mark_as_head(Inner *inner) {
    inner->low_mark = low_mark_of(inner);
    inner->high_mark = high_mark_of(reinterpret_cast<Chain *>(inner + 1));
}
inline Chain *chain_behind(Inner *inner) {
    if (inner->low_mark == 0 || inner->low_mark != low_mark_of(inner)) [[likely]]
        return nullptr;
    auto *const chain = reinterpret_cast<Chain *>(inner + 1);
    return inner->high_mark == high_mark_of(chain) ? chain : nullptr;
}

// Forgets the nodes more than `left` steps behind the head.
inline void shorten(Chain *chain, size_t left) {
    chain->steps = std::min(chain->steps, left / 2 * 2);
    mark_as_head(reinterpret_cast<Inner *>(chain) - 1);
}

// Takes the mark from a node that goes: its memory may become a node that a caller makes.
inline void unmark(Inner *inner) {
    inner->low_mark = 0;
    asm volatile("" : : "m"(inner->low_mark)); // the compiler would leave it out before free()
}

// The nodes that the way of a key takes from `first` on, as far as they are known without a look at
// the slots: those of a chain, or none but the first.
struct Stretch {
    Inner *first;
    Chain *chain = nullptr;
    Inner *const *behind = nullptr;
    size_t steps = 0; // from the first node to the last

    Stretch(Inner *node, Key key, size_t depth) : first(node), chain(chain_behind(node)) {
        if (!chain || depth % 2 != 0) [[likely]]
            return;
        behind = chain->nodes;
        steps = chain->shared_steps(key, depth);
        // A mark that is left in the memory of another node counts for nothing.
        if (steps > 0 && node->children[key.half(depth)] != as_node(behind[0]))
            steps = 0;
    }
    Inner *at(size_t step) const { return step == 0 ? first : behind[step - 1]; }
    Inner *last() const { return at(steps); }

    // Adds to the counts. Ends the stretch, and its chain, where the records lead elsewhere. What
    // comes behind is on its way from memory meanwhile.
    void count(uint32_t added, Key key, size_t depth) {
        if (steps > 0 && !key.ends_at(depth + steps))
            __builtin_prefetch(last()->children[key.half(depth + steps)]);
        first->count += added;
        Inner *node = first;
        const auto lead_to = [&](unsigned half, Inner *next) {
            if (node->children[half] != as_node(next) || !is_inner(as_node(next)))
                return false;
            next->count += added;
            node = next;
            return true;
        };
        const uint8_t *byte = key.bytes + depth / 2;
        for (size_t step = 0; step < steps; step += 2, ++byte) {
            if (!lead_to(*byte & 15, behind[step]))
                return end_at(step);
            if (!lead_to(*byte >> 4, behind[step + 1]))
                return end_at(step + 1);
        }
    }

  private:
    void end_at(size_t step) {
        shorten(chain, step);
        steps = step;
    }
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
        if (is_head(depth)) {
            chain_ = reinterpret_cast<Chain *>(node + 1);
            *chain_ = {steps_,
                       reinterpret_cast<Inner **>(chain_->bytes() + Chain::padded(steps_ / 2))};
            mark_as_head(node);
            std::memcpy(chain_->bytes(), key_.bytes + depth / 2, steps_ / 2);
        } else if (chain_ && depth - head_depth_ <= steps_) {
            chain_->nodes[depth - head_depth_ - 1] = node;
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
