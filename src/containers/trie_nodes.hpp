// The nodes of the trie and the way that keys take through them.
#pragma once

#include "kestu_trie.h"

#include "containers/same_bytes.hpp"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>
#include <iterator>

namespace kestu::trie {

using Node = kestu_trie_node_t;
using Leaf = kestu_trie_leaf_t;

// The public record of an inner node with names for the gaps behind its small fields. In a record
// that a caller made the gaps may hold anything.
struct Inner {
    uint32_t type;
    uint32_t low_mark;
    Leaf *end;
    uint32_t count;
    uint32_t high_mark;
    Node *children[16];
};
static_assert(sizeof(Inner) == sizeof(kestu_trie_inner_t));
static_assert(offsetof(Inner, end) == offsetof(kestu_trie_inner_t, end));
static_assert(offsetof(Inner, count) == offsetof(kestu_trie_inner_t, count));
static_assert(offsetof(Inner, children) == offsetof(kestu_trie_inner_t, children));

// A key, and the half-bytes on which its way branches: the low half of each byte first.
struct Key {
    const uint8_t *bytes;
    size_t length;

    Key(const void *key, size_t size) : bytes(static_cast<const uint8_t *>(key)), length(size) {}
    explicit Key(const Leaf *leaf) : Key(leaf->key, leaf->length) {}

    bool ends_at(size_t depth) const { return depth / 2 >= length; }
    unsigned half(size_t depth) const { return bytes[depth / 2] >> (depth % 2 * 4) & 15; }
    bool is_of(const Leaf *leaf) const {
        return leaf->length == length && (length == 0 || !std::memcmp(leaf->key, bytes, length));
    }
};

// Nodes are told apart by their first field, whichever record they are.
inline uint32_t type_of(const Node *node) {
    return *reinterpret_cast<const uint32_t *>(node);
}
inline bool is_leaf(const Node *node) {
    return type_of(node) == KESTU_TRIE_LEAF;
}
inline bool is_inner(const Node *node) {
    return type_of(node) == KESTU_TRIE_INNER;
}
inline Leaf *as_leaf(Node *node) {
    return reinterpret_cast<Leaf *>(node);
}
inline Inner *as_inner(Node *node) {
    return reinterpret_cast<Inner *>(node);
}
inline const Leaf *as_leaf(const Node *node) {
    return reinterpret_cast<const Leaf *>(node);
}
inline const Inner *as_inner(const Node *node) {
    return reinterpret_cast<const Inner *>(node);
}
template <typename Record>
Node *as_node(Record *record) {
    return reinterpret_cast<Node *>(record);
}

// Has the memory before a node fetched beside it: the leaf that made an inner node necessary was
// taken just before it, and about half of the ways through such a node end at that leaf.
inline void fetch_leaf_beside(const Node *node) {
    constexpr uintptr_t distance = 48; // the fields and a short key, in pools as in the heap
    __builtin_prefetch(
        reinterpret_cast<const void *>(reinterpret_cast<uintptr_t>(node) - distance));
}

// The slots of an inner node in the order of walks: 0 is the end, 1 to 16 are the children.
constexpr unsigned end_slot = 0;

inline Node *at_slot(const Inner *inner, unsigned slot) {
    return slot == end_slot ? as_node(inner->end) : inner->children[slot - 1];
}

// The set of the slots that hold a node, one bit each.
inline uint32_t occupied(const Inner *inner) {
    uint32_t slots = inner->end != nullptr;
    for (unsigned i = 0; i < std::size(inner->children); ++i)
        slots |= uint32_t{inner->children[i] != nullptr} << (i + 1);
    return slots;
}

// The only node below, or null when there are none or more.
inline Node *only_node(const Inner *inner) {
    const uint32_t slots = occupied(inner);
    // Not std::has_single_bit, which counts bits by a function of the compiler's run-time library.
    const bool one = slots != 0 && (slots & (slots - 1)) == 0;
    return one ? at_slot(inner, static_cast<unsigned>(std::countr_zero(slots))) : nullptr;
}

// The first depth from `depth` on at which the ways of two keys part: where their half-bytes differ
// or one of them ends. What the keys hold above does not matter: a caller may have changed it.
inline size_t parting(Key a, Key b, size_t depth) {
    const size_t shorter = std::min(a.length, b.length);
    if (depth / 2 >= shorter)
        return depth;
    if (depth % 2 != 0 && a.half(depth) != b.half(depth))
        return depth;
    const size_t start = (depth + 1) / 2;
    const size_t i = start + same_bytes(a.bytes + start, b.bytes + start, shorter - start);
    const bool same_low_half = i < shorter && a.half(2 * i) == b.half(2 * i);
    return 2 * i + same_low_half;
}

} // namespace kestu::trie
