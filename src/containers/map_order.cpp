// The order of the leaves of a map.
#include "containers/map_order.hpp"

namespace kestu::map {

Position first_below(Node *parent, Child child) {
    while (child.is_node()) {
        parent = &child.node();
        child = at_place(*parent, place_from(*parent, 0));
    }
    return child ? Position{parent, &child.leaf()} : Position{};
}

Position last_below(Node *parent, Child child) {
    while (child.is_node()) {
        parent = &child.node();
        child = at_place(*parent, last_place(*parent));
    }
    return child ? Position{parent, &child.leaf()} : Position{};
}

Position behind(Node *node, Key key) {
    for (; node; node = node->parent) {
        const Place place = place_from(*node, slot_of(key, node->depth) + 1);
        if (place != slots)
            return first_below(node, at_place(*node, place));
    }
    return {};
}

Position in_front(Node *node, Key key) {
    for (; node; node = node->parent) {
        const Place place = place_before(*node, slot_of(key, node->depth));
        if (place != slots)
            return last_below(node, at_place(*node, place));
    }
    return {};
}

Position behind_key(const Map &map, Key key) {
    const Fork fork = fork_of(map, key);
    if (!fork.leaf)
        return {};
    const bool before_all_below = fork.below && !fork.is_there &&
                                  slot_of(key, fork.depth) < slot_of(Key(*fork.leaf), fork.depth);
    return before_all_below ? first_below(fork.node, fork.below) : behind(fork.node, key);
}

Position from_key(const Map &map, Key key) {
    const Way way = way_of(map, key);
    return way.leaf && key.is_of(*way.leaf) ? Position{way.parent, way.leaf} : behind_key(map, key);
}

Position longest_prefix(const Map &map, Key text) {
    const Fork fork = fork_of(map, text);
    if (fork.leaf && fork.below && fork.below.is_leaf() && fork.leaf->length == fork.depth)
        return {fork.node, fork.leaf};
    for (Node *node = fork.node; node; node = node->parent)
        if (node->has_end)
            return {node, &at_slot(*node, end_slot).leaf()};
    return {};
}

} // namespace kestu::map
