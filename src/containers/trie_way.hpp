// The way of a key through a trie: looking its end up, and counting on it.
#pragma once

#include "containers/trie_chain.hpp"

namespace kestu::trie {

// A node that is not an inner one counts as a leaf here, whatever its type.
inline const Leaf *find_leaf(Node *node, Key key) {
    for (size_t depth = 0; node; ++depth) {
        if (!is_inner(node))
            return as_leaf(node);
        const Stretch stretch(as_inner(node), key, depth);
        depth += stretch.steps;
        if (key.ends_at(depth))
            return stretch.last()->end;
        node = stretch.last()->children[key.half(depth)];
        fetch_leaf_beside(node);
    }
    return nullptr;
}

// Where the way of a key leads: through the inner node `last`, if through any, to the slot behind
// it that holds no inner node; or no farther than to `last`, when the key is used up there.
struct Goal {
    Inner *last;
    Node **slot;
    size_t depth;
};

// Follows the way of a key and adds to the counts of the inner nodes on it.
inline Goal follow(Node **slot, Key key, uint32_t added) {
    Inner *last = nullptr;
    size_t depth = 0;
    for (; *slot && is_inner(*slot); ++depth) {
        Stretch stretch(as_inner(*slot), key, depth);
        stretch.count(added, key, depth);
        last = stretch.last();
        depth += stretch.steps;
        if (key.ends_at(depth))
            return {last, nullptr, depth};
        slot = &last->children[key.half(depth)];
        fetch_leaf_beside(*slot);
    }
    return {last, slot, depth};
}

} // namespace kestu::trie
