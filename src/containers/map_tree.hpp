// The map as a whole: the ways that keys take through it, and what changes it.
#pragma once

#include "kestu_map.h"

#include "containers/map_arena.hpp"
#include "containers/map_nodes.hpp"

namespace kestu::map {

constexpr size_t leaf_classes = 103;

} // namespace kestu::map

struct kestu_map_t {
    kestu::map::Child root = {};
    size_t count = 0;
    size_t changes = 0; // cursors look their node up again after each
    kestu::map::Arena<kestu::map::kinds, 64> nodes = {};
    kestu::map::Arena<kestu::map::leaf_classes, 8> leaves = {};
    kestu_map_release_func release = nullptr;
    void *baton = nullptr;
    apr_pool_t *pool = nullptr; // ends with the map, and the map with it; may be null
};

namespace kestu::map {

using Map = kestu_map_t;

// Where a key leads: to the only leaf that may be its own, or to a node in which nothing leads on.
struct Way {
    Node *parent; // of the leaf, or the last node; null for the root
    Leaf *leaf;
};

inline Way way_of(const Map &map, Key key) {
    Node *parent = nullptr;
    Child at = map.root;
    while (at.is_node()) {
        parent = &at.node();
        // The children of larger nodes stand in their later lines.
        __builtin_prefetch(reinterpret_cast<const char *>(parent) + 64);
        if (parent->depth > key.length)
            return {parent, nullptr};
        at = at_slot(*parent, slot_of(key, parent->depth));
    }
    return {parent, at ? &at.leaf() : nullptr};
}

// The leaf of a key, or null.
inline Leaf *find(const Map &map, Key key) {
    Leaf *leaf = way_of(map, key).leaf;
    return leaf && key.is_of(*leaf) ? leaf : nullptr;
}

// Where a key parts from those that are there: `leaf` is one that shares as much with it as any,
// `depth` bytes, or all. `node` is the last node on the way up to that depth, if there is one, and
// `below` the child from which the key parts; nothing when it parts in the node.
struct Fork {
    Leaf *leaf; // null in an empty map
    size_t depth;
    Node *node;
    Child below;
    bool is_there; // the leaf is the key's
};

Fork fork_of(const Map &map, Key key);
// The same for a key of which `leaf`, which hangs in or below `parent`, shares as much as any.
Fork fork_at(Node *parent, Leaf &leaf, Key key);

// Puts a new leaf where its key parts. Returns its parent through `parent`. Errors, with the map as
// it was: KESTU_ERR_NO_MEMORY.
kestu_error_t *add_leaf(Map &map, const Fork &fork, Key key, void *value, Node **parent,
                        Leaf **added);

// Takes out a leaf that hangs in `parent`. Its value is the caller's.
void remove_leaf(Map &map, Node *parent, Leaf &leaf);

// Hands a value to whoever releases it.
inline void release_value(const Map &map, void *value) {
    if (map.release)
        map.release(value, map.baton);
}

} // namespace kestu::map
