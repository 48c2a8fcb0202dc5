// Cursors in ordered maps: the C edge.
#include "containers/map_order.hpp"

using namespace kestu::map;

namespace {

int stand_at(Map *map, const Position &position, kestu_map_cursor_t *cursor) {
    *cursor = {};
    cursor->internal.map = map;
    if (!position.leaf)
        return 0;
    cursor->key = position.leaf->key();
    cursor->length = position.leaf->length;
    cursor->value = position.leaf->value;
    cursor->internal.leaf = position.leaf;
    cursor->internal.node = position.parent;
    cursor->internal.changes = map->changes;
    return 1;
}

// Where the cursor stands, with the node as it is by now.
Position position_of(const kestu_map_cursor_t &cursor) {
    auto *leaf = static_cast<Leaf *>(cursor.internal.leaf);
    const Map &map = *cursor.internal.map;
    if (cursor.internal.changes == map.changes)
        return {static_cast<Node *>(cursor.internal.node), leaf};
    return {way_of(map, Key(*leaf)).parent, leaf};
}

template <typename Find>
int stand_where(Map *map, Find find, kestu_map_cursor_t *cursor) {
    return stand_at(map, map ? find(*map) : Position(), cursor);
}

} // namespace

int kestu_map_first(kestu_map_t *map, kestu_map_cursor_t *cursor) {
    return stand_where(
        map, [](Map &from) { return first_below(nullptr, from.root); }, cursor);
}

int kestu_map_last(kestu_map_t *map, kestu_map_cursor_t *cursor) {
    return stand_where(
        map, [](Map &from) { return last_below(nullptr, from.root); }, cursor);
}

int kestu_map_seek(kestu_map_t *map, const void *key, size_t length, kestu_map_cursor_t *cursor) {
    const auto find = [wanted = Key(key, length)](Map &from) {
        const Way way = way_of(from, wanted);
        return way.leaf && wanted.is_of(*way.leaf) ? Position{way.parent, way.leaf} : Position();
    };
    return stand_where(map, find, cursor);
}

int kestu_map_lower_bound(kestu_map_t *map, const void *key, size_t length,
                          kestu_map_cursor_t *cursor) {
    return stand_where(
        map,
        [&](Map &from) {
            return from_key(from, {key, length});
        },
        cursor);
}

int kestu_map_upper_bound(kestu_map_t *map, const void *key, size_t length,
                          kestu_map_cursor_t *cursor) {
    return stand_where(
        map,
        [&](Map &from) {
            return behind_key(from, {key, length});
        },
        cursor);
}

int kestu_map_longest_prefix(kestu_map_t *map, const void *text, size_t length,
                             kestu_map_cursor_t *cursor) {
    return stand_where(
        map,
        [&](Map &from) {
            return longest_prefix(from, {text, length});
        },
        cursor);
}

int kestu_map_next(kestu_map_cursor_t *cursor) {
    if (!cursor->key)
        return 0;
    const Position at = position_of(*cursor);
    return stand_at(cursor->internal.map, behind(at.parent, Key(*at.leaf)), cursor);
}

int kestu_map_previous(kestu_map_cursor_t *cursor) {
    if (!cursor->key)
        return 0;
    const Position at = position_of(*cursor);
    return stand_at(cursor->internal.map, in_front(at.parent, Key(*at.leaf)), cursor);
}

int kestu_map_delete_at(kestu_map_cursor_t *cursor, void **value) {
    if (!cursor->key)
        return 0;
    const Position at = position_of(*cursor);
    Map *const map = cursor->internal.map;
    Position next = behind(at.parent, Key(*at.leaf));
    void *old = at.leaf->value;
    remove_leaf(*map, at.parent, *at.leaf);
    if (next.leaf) // its node may have become another one
        next.parent = way_of(*map, Key(*next.leaf)).parent;
    const int more = stand_at(map, next, cursor);
    if (value)
        *value = old;
    else
        release_value(*map, old);
    return more;
}
