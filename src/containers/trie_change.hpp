// What changes a trie: insertion, deletion and release, one algorithm for both kinds of nodes.
#pragma once

#include "containers/trie_way.hpp"
#include "error/error.hpp"

#include <utility>

namespace kestu::trie {

inline uint8_t *key_beside(Leaf *leaf) {
    return reinterpret_cast<uint8_t *>(leaf + 1);
}

// One block holds a leaf and its key, so that a lookup finds both together.
template <typename Nodes>
kestu_error_t *make_leaf(const Nodes &nodes, Key key, void *value, Leaf **leaf) {
    size_t bytes = 0;
    if (__builtin_add_overflow(sizeof(Leaf) + 1, key.length, &bytes))
        bytes = SIZE_MAX;
    if (kestu_error_t *err = nodes.make(leaf, bytes))
        return err;
    uint8_t *copy = key_beside(*leaf);
    if (key.length > 0)
        std::memcpy(copy, key.bytes, key.length);
    copy[key.length] = 0;
    **leaf = {KESTU_TRIE_LEAF, copy, key.length, value};
    return nullptr;
}

// A key that stands in a block of its own is a caller's work and goes with its leaf.
template <typename Nodes>
void release_leaf(Leaf *leaf) {
    if (leaf && leaf->key != key_beside(leaf))
        Nodes::release(leaf->key);
    Nodes::release(leaf);
}

template <typename Nodes>
void release_inner(Inner *inner) {
    unmark(inner);
    Nodes::release(inner);
}

// Releases what hangs below a slot. The inner nodes that wait for it hang on one another by their
// `end`, whose leaf goes first, so that no depth needs a stack.
template <typename Nodes>
void release_all(Node *root) {
    Leaf *waiting = nullptr;
    const auto take = [&waiting](Node *node) {
        if (!node)
            return;
        if (is_inner(node)) {
            release_leaf<Nodes>(as_inner(node)->end);
            as_inner(node)->end = waiting;
            waiting = reinterpret_cast<Leaf *>(node);
        } else if (is_leaf(node)) {
            release_leaf<Nodes>(as_leaf(node));
        }
    };
    take(root);
    while (waiting) {
        auto *inner = reinterpret_cast<Inner *>(waiting);
        waiting = inner->end;
        for (Node *child : inner->children)
            take(child);
        release_inner<Nodes>(inner);
    }
}

inline void attach(Inner *inner, size_t depth, Leaf *leaf) {
    const Key key(leaf);
    if (key.ends_at(depth))
        inner->end = leaf;
    else
        inner->children[key.half(depth)] = as_node(leaf);
}

// Puts inner nodes in the place of a leaf, down to the depth at which its key and the new one part.
template <typename Nodes>
kestu_error_t *split(const Nodes &nodes, Goal goal, Leaf *leaf) {
    Leaf *const present = as_leaf(*goal.slot);
    const Key key(leaf);
    const size_t last = parting(key, Key(present), goal.depth);
    if (key.ends_at(last) && Key(present).ends_at(last))
        return fail(KESTU_ERR_KEY_EXISTS);
    ChainMaker chain(key, goal.depth, last);
    Node *top = nullptr;
    Node **slot = &top;
    for (size_t depth = goal.depth;; ++depth) {
        Inner *inner = nullptr;
        if (kestu_error_t *err = nodes.make(&inner, chain.block_size(depth))) {
            release_all<Nodes>(top);
            return err;
        }
        *inner = {KESTU_TRIE_INNER, 0, nullptr, 2, 0, {}};
        chain.add(inner, depth);
        *slot = as_node(inner);
        if (depth == last) {
            attach(inner, depth, present);
            attach(inner, depth, leaf);
            break;
        }
        slot = &inner->children[key.half(depth)];
    }
    *goal.slot = top;
    return nullptr;
}

template <typename Nodes>
kestu_error_t *put(const Nodes &nodes, Goal goal, Leaf *leaf) {
    if (!goal.slot) {
        if (goal.last->end)
            return fail(KESTU_ERR_KEY_EXISTS);
        goal.last->end = leaf;
        return nullptr;
    }
    if (*goal.slot)
        return is_leaf(*goal.slot) ? split(nodes, goal, leaf) : fail(KESTU_ERR_NODE_TYPE);
    *goal.slot = as_node(leaf);
    return nullptr;
}

// Counts on the way down, which is right in nearly all cases, and takes it back after a failure.
template <typename Nodes>
kestu_error_t *insert(const Nodes &nodes, kestu_trie_t *trie, Key key, void *value,
                      const char *failed) {
    if (!trie)
        return nullptr;
    Leaf *leaf = nullptr;
    if (kestu_error_t *err = make_leaf(nodes, key, value, &leaf))
        return wrap(err, failed);
    if (kestu_error_t *err = put(nodes, follow(&trie->root, key, 1), leaf)) {
        follow(&trie->root, key, -1u);
        release_leaf<Nodes>(leaf);
        return wrap(err, failed);
    }
    return nullptr;
}

inline bool leads_only_to(const Inner *inner, const Node *below) {
    return inner->count == 1 && only_node(inner) == below;
}

// The leaf that alone is left below `last`, the last inner node on the way of a key, takes the
// place of that node and of those above it that lead to nothing else.
template <typename Nodes>
void raise_single_leaf(Node **root, Key key, const Inner *last) {
    Node *const leaf = last->count == 1 ? only_node(last) : nullptr;
    if (!leaf || !is_leaf(leaf))
        return;
    Node **top = root;
    Chain *cut = nullptr; // the chain that loses its end
    size_t left = 0;      // and what is left of it
    Node **slot = root;
    for (size_t depth = 0;; ++depth) {
        const Stretch stretch(as_inner(*slot), key, depth);
        size_t step = stretch.steps;
        while (step > 0 && leads_only_to(stretch.at(step - 1), as_node(stretch.at(step))))
            --step;
        if (step > 0) {
            top = &stretch.at(step - 1)->children[key.half(depth + step - 1)];
            cut = stretch.chain;
            left = step - 1;
        }
        if (stretch.last() == last)
            break;
        depth += stretch.steps;
        slot = &stretch.last()->children[key.half(depth)];
        if (!leads_only_to(stretch.last(), *slot)) {
            top = slot;
            cut = nullptr;
        }
    }
    for (Node *node = *top; node != leaf;) {
        Node *const below = only_node(as_inner(node));
        release_inner<Nodes>(as_inner(node));
        node = below;
    }
    *top = leaf;
    if (cut)
        shorten(cut, left);
}

// Kept: the counts on the way shrink, whether or not the key is there; only a key that ends at an
// inner node without being there leaves that node's count. Relied on by: programs that read counts.
template <typename Nodes>
void remove(Node **root, Key key) {
    const auto [last, slot, depth] = follow(root, key, -1u);
    Leaf *found = nullptr; // whose copy of the key may be the very key that was handed in
    if (!slot) {
        if (!last->end || !key.is_of(last->end)) {
            ++last->count;
            return;
        }
        std::swap(found, last->end);
    } else if (*slot && is_leaf(*slot) && key.is_of(as_leaf(*slot))) {
        found = as_leaf(*slot);
        *slot = nullptr;
    }
    if (last)
        raise_single_leaf<Nodes>(root, key, last);
    release_leaf<Nodes>(found);
}

} // namespace kestu::trie
