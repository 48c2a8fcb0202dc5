// The order of the leaves of a map.
#pragma once

#include "containers/map_tree.hpp"

namespace kestu::map {

// A leaf and the node in which it hangs; no leaf for nowhere.
struct Position {
    Node *parent = nullptr;
    Leaf *leaf = nullptr;
};

// The first or last leaf at or below a child of `parent`, which may be null for the root.
Position first_below(Node *parent, Child child);
Position last_below(Node *parent, Child child);

// The first leaf behind, or the last in front of, all that lie below `node` in the slot of the key,
// which leads to `node`. A null node stands for the whole map.
Position behind(Node *node, Key key);
Position in_front(Node *node, Key key);

// The first leaf whose key is behind the given one, or else is the key itself.
Position behind_key(const Map &map, Key key);
Position from_key(const Map &map, Key key);

// The leaf with the longest key that begins a text.
Position longest_prefix(const Map &map, Key text);

// Has what a walk comes to soon fetched: a child some steps ahead, and what hangs below one that
// was fetched some steps ago. Most nodes are small.
inline void prefetch_beyond(const Node &node, Place place) {
    if (!node.is_small())
        return;
    const Child *children = node.children();
    if (place + 6 < node.count)
        children[place + 6].prefetch();
    if (place + 3 >= node.count || !children[place + 3].is_node())
        return;
    const Node &next = children[place + 3].node();
    for (Place below = 0; next.is_small() && below < next.count; ++below)
        next.children()[below].prefetch();
}

// Calls `visit` for the leaves at and below `top`, a child of `above`, in their order, until it
// returns something other than 0, which is returned.
template <typename Visit>
int walk(Node *above, Child top, Visit visit) {
    if (!top)
        return 0;
    auto [node, leaf] = first_below(above, top);
    Place place = node == above ? slots : place_from(*node, slot_of(Key(*leaf), node->depth));
    for (;;) {
        if (const int result = visit(*leaf))
            return result;
        while (node != above && (place = next_place(*node, place)) == slots) {
            node = node->parent;
            if (node != above)
                place = place_from(*node, slot_of(Key(*leaf), node->depth));
        }
        if (node == above)
            return 0;
        prefetch_beyond(*node, place);
        for (Child child = at_place(*node, place);; child = at_place(*node, place)) {
            if (child.is_leaf()) {
                leaf = &child.leaf();
                break;
            }
            node = &child.node();
            place = place_from(*node, 0);
        }
    }
}

// Calls `visit` for the leaves whose keys begin with the prefix.
template <typename Visit>
int walk_prefix(const Map &map, Key prefix, Visit visit) {
    Node *above = nullptr;
    Child top = map.root;
    while (top.is_node() && top.node().depth < prefix.length) {
        above = &top.node();
        top = at_slot(*above, slot_of(prefix, above->depth));
    }
    if (!top || prefix.common(*first_below(above, top).leaf) < prefix.length)
        return 0;
    return walk(above, top, visit);
}

} // namespace kestu::map
