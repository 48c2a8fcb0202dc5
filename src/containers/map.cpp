// The ordered map: the C edge.
#include "containers/map_order.hpp"
#include "mem/memory.hpp"

using namespace kestu;
using namespace kestu::map;

namespace {

apr_status_t end_with_pool(void *map) {
    static_cast<Map *>(map)->pool = nullptr;
    auto *handle = static_cast<Map *>(map);
    kestu_map_destroy(&handle);
    return APR_SUCCESS;
}

void release_values(const Map &map) {
    if (map.release)
        walk(nullptr, map.root, [&](const Leaf &leaf) {
            release_value(map, leaf.value);
            return 0;
        });
}

// Stores a value that has left the map through `out`, or releases it.
void hand_out(const Map &map, void *value, void **out) {
    if (out)
        *out = value;
    else
        release_value(map, value);
}

// Puts an entry behind the last one, which is `last`, and makes it the last one.
kestu_error_t *append(Map &map, Position &last, Key key, void *value) {
    const Fork fork = last.leaf ? fork_at(last.parent, *last.leaf, key) : Fork{};
    if (fork.is_there ||
        (fork.leaf && slot_of(key, fork.depth) < slot_of(Key(*fork.leaf), fork.depth)))
        return fail(KESTU_ERR_WRONG_KEY, "Keys do not ascend.");
    return add_leaf(map, fork, key, value, &last.parent, &last.leaf);
}

void take_back(Map &map, size_t count) {
    while (map.count > count) {
        const Position last = last_below(nullptr, map.root);
        remove_leaf(map, last.parent, *last.leaf);
    }
}

} // namespace

kestu_error_t *kestu_map_create(kestu_map_t **out, apr_pool_t *pool) {
    constexpr const char *failed = "Cannot create map.";
    *out = nullptr;
    apr_pool_t *own = nullptr;
    if (pool)
        if (kestu_error_t *err = new_pool(&own, pool))
            return wrap(err, failed);
    const KeptErrno kept;
    void *memory = std::malloc(sizeof(Map));
    if (!memory) {
        if (own)
            apr_pool_destroy(own);
        return wrap(no_memory(sizeof(Map)), failed);
    }
    auto *map = new (memory) Map;
    map->pool = own;
    if (own) // in which there is room for this
        apr_pool_cleanup_register(own, map, end_with_pool, apr_pool_cleanup_null);
    *out = map;
    return nullptr;
}

void kestu_map_destroy(kestu_map_t **map) {
    Map *const old = std::exchange(*map, nullptr);
    if (!old)
        return;
    if (old->pool) { // whose end comes back here
        apr_pool_destroy(old->pool);
        return;
    }
    release_values(*old);
    old->~Map();
    std::free(old);
}

void kestu_map_clear(kestu_map_t *map) {
    release_values(*map);
    map->root = {};
    map->count = 0;
    ++map->changes;
    map->nodes.clear();
    map->leaves.clear();
}

void kestu_map_set_release(kestu_map_t *map, kestu_map_release_func release, void *baton) {
    map->release = release;
    map->baton = baton;
}

size_t kestu_map_count(const kestu_map_t *map) {
    return map ? map->count : 0;
}

kestu_error_t *kestu_map_insert(kestu_map_t *map, const void *key, size_t length, void *value) {
    const Key wanted(key, length);
    const Fork fork = fork_of(*map, wanted);
    if (fork.is_there)
        return wrap(fail(KESTU_ERR_KEY_EXISTS), "Cannot insert into map.");
    Position added;
    return wrap(add_leaf(*map, fork, wanted, value, &added.parent, &added.leaf),
                "Cannot insert into map.");
}

kestu_error_t *kestu_map_replace(kestu_map_t *map, const void *key, size_t length, void *value,
                                 void **old) {
    const Key wanted(key, length);
    const Fork fork = fork_of(*map, wanted);
    if (fork.is_there) {
        hand_out(*map, std::exchange(fork.leaf->value, value), old);
        return nullptr;
    }
    Position added;
    kestu_error_t *err = add_leaf(*map, fork, wanted, value, &added.parent, &added.leaf);
    if (!err && old)
        *old = nullptr;
    return wrap(err, "Cannot insert into map.");
}

kestu_error_t *kestu_map_append(kestu_map_t *map, const void *const *keys, const size_t *lengths,
                                void *const *values, size_t count) {
    const size_t old_count = map->count;
    Position last = last_below(nullptr, map->root);
    for (size_t i = 0; i < count; ++i) {
        void *value = values ? values[i] : nullptr;
        if (kestu_error_t *err = append(*map, last, {keys[i], lengths[i]}, value)) {
            take_back(*map, old_count);
            return wrap(err, "Cannot append to map.");
        }
    }
    return nullptr;
}

kestu_error_t *kestu_map_copy(kestu_map_t **out, const kestu_map_t *map, kestu_map_copy_func copy,
                              void *baton, apr_pool_t *pool) {
    if (kestu_error_t *err = kestu_map_create(out, pool))
        return err;
    if (!map)
        return nullptr;
    if (copy)
        kestu_map_set_release(*out, map->release, map->baton);
    kestu_error_t *err = nullptr;
    Position last;
    walk(nullptr, map->root, [&](const Leaf &leaf) {
        void *value = leaf.value;
        if (copy && (err = copy(&value, leaf.value, baton)))
            return 1;
        if ((err = append(**out, last, Key(leaf), value)) && copy)
            release_value(**out, value);
        return err ? 1 : 0;
    });
    if (err)
        kestu_map_destroy(out);
    return wrap(err, "Cannot copy map.");
}

int kestu_map_find(const kestu_map_t *map, const void *key, size_t length, void **value) {
    const Leaf *leaf = map ? find(*map, {key, length}) : nullptr;
    if (leaf && value)
        *value = leaf->value;
    return leaf != nullptr;
}

int kestu_map_delete(kestu_map_t *map, const void *key, size_t length, void **value) {
    const Key wanted(key, length);
    const Way way = way_of(*map, wanted);
    if (!way.leaf || !wanted.is_of(*way.leaf))
        return 0;
    void *old = way.leaf->value;
    remove_leaf(*map, way.parent, *way.leaf);
    hand_out(*map, old, value);
    return 1;
}

int kestu_map_walk(const kestu_map_t *map, kestu_map_func fn, void *baton) {
    return kestu_map_walk_prefix(map, nullptr, 0, fn, baton);
}

int kestu_map_walk_prefix(const kestu_map_t *map, const void *prefix, size_t length,
                          kestu_map_func fn, void *baton) {
    if (!map)
        return 0;
    return walk_prefix(*map, {prefix, length}, [&](const Leaf &leaf) {
        return fn(leaf.key(), leaf.length, leaf.value, baton);
    });
}
