/*
 * Ordered maps: from keys of any bytes and any length to pointers, in the order of the bytes.
 *
 *     kestu_map_t *ages = NULL;
 *     kestu_map_cursor_t at;
 *     if ((err = kestu_map_create(&ages, pool)) ||
 *         (err = kestu_map_insert(ages, "Anna", 4, &anna)) ||
 *         (err = kestu_map_insert(ages, "Bert", 4, &bert)))
 *         return err;
 *     for (int more = kestu_map_lower_bound(ages, "B", 1, &at); more; more = kestu_map_next(&at))
 *         printf("%.*s\n", (int)at.length, (const char *)at.key);         // Bert
 *
 * A map is an adaptive radix tree: a look-up takes time in proportion to the length of its key, and
 * mostly less, however many keys there are. A key comes before those that it begins. Keys are
 * copied; values are pointers that the map does not look at, unless kestu_map_set_release says who
 * releases them. Nothing here recurses, and a failure leaves the map as it was. Any number of
 * threads may read a map that nobody changes.
 *
 * In all functions `map` is the handle, `key`, `prefix` or `text` points to `length` bytes and may
 * be null when there are none, `cursor` is what is set or moved, and `baton` is handed through to
 * the callback. Functions that only read take a null map for an empty one.
 */
#ifndef KESTU_MAP_H
#define KESTU_MAP_H

#include "kestu_error.h"

#include <stddef.h>

KESTU_BEGIN_DECLS

/* A map. Its record is the library's own. */
typedef struct kestu_map_t kestu_map_t;

/*
 * An entry of a map, and the way to its neighbours. What the functions below store here stays right
 * until the entry is removed by other means than the cursor; entries beside it may come and go. The
 * key is the map's own copy, without a zero byte behind it.
 */
typedef struct kestu_map_cursor_t {
    const void *key; /* the map's own copy; null when the cursor stands nowhere */
    size_t length;   /* of the key, in bytes */
    void *value;     /* the value under the key */
    struct {
        kestu_map_t *map;
        void *leaf, *node;
        size_t changes;
    } internal; /* the library's own */
} kestu_map_cursor_t;

/*
 * Receives an entry: its `value`, and its `key` of `length` bytes. What it returns ends a walk
 * unless it is 0. It must not change the map.
 */
typedef int (*kestu_map_func)(const void *key, size_t length, void *value, void *baton);

/* Releases a `value` that leaves the map. It must not use the map. */
typedef void (*kestu_map_release_func)(void *value, void *baton);

/* Stores a copy of `value` through `copy`, or fails. */
typedef kestu_error_t *(*kestu_map_copy_func)(void **copy, void *value, void *baton);

/*
 * Makes an empty map and stores its handle through `out`. It is destroyed with `pool`; with a null
 * pool it lives until kestu_map_destroy. Its memory comes from the system's allocator either way.
 * Fails with KESTU_ERR_NO_MEMORY (120012).
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_map_create(kestu_map_t **out, apr_pool_t *pool);

/*
 * Releases all entries of the map at `map` and the map, and sets the handle to null. A null handle
 * does nothing.
 */
KESTU_API void kestu_map_destroy(kestu_map_t **map);

/* Releases all entries. */
KESTU_API void kestu_map_clear(kestu_map_t *map);

/*
 * From now on `release` is called with `baton` for each value that leaves the map other than into
 * the caller's hands: by kestu_map_clear, by the end of the map, and by kestu_map_replace and the
 * functions that delete when they are given no place for it. Null: nobody.
 */
KESTU_API void kestu_map_set_release(kestu_map_t *map, kestu_map_release_func release, void *baton);

/* The number of entries, in constant time. */
KESTU_API size_t kestu_map_count(const kestu_map_t *map);

/*
 * Stores `value` under a copy of the key. Fails with KESTU_ERR_KEY_EXISTS (120082), and with
 * KESTU_ERR_NO_MEMORY (120012); the value is the caller's then.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_map_insert(kestu_map_t *map, const void *key,
                                                         size_t length, void *value);

/*
 * As kestu_map_insert, but `value` takes the place of the one that is there. That one is stored
 * through `old`, or released when `old` is null; when there was none, null is stored. Fails with
 * KESTU_ERR_NO_MEMORY (120012) alone.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_map_replace(kestu_map_t *map, const void *key,
                                                          size_t length, void *value, void **old);

/*
 * Appends `count` entries to the map, much faster than one by one in any order. The `keys`, of
 * `lengths` bytes, must ascend and come behind all that are there. Null `values` are all null.
 * Fails with KESTU_ERR_WRONG_KEY (120086) and KESTU_ERR_NO_MEMORY (120012), with nothing appended
 * and the values the caller's.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_map_append(kestu_map_t *map, const void *const *keys,
                                                         const size_t *lengths, void *const *values,
                                                         size_t count);

/*
 * Makes a map with the same keys, as kestu_map_create does in `pool`. The values are those of the
 * original and stay the original's, or what `copy`, which may be null, makes of each; the copy of a
 * map then releases them as the original does. Fails with KESTU_ERR_NO_MEMORY (120012) and whatever
 * `copy` fails with; `out` is null then, and the copied values are released.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_map_copy(kestu_map_t **out, const kestu_map_t *map,
                                                       kestu_map_copy_func copy, void *baton,
                                                       apr_pool_t *pool);

/*
 * Whether the key is there: 1, with its value stored through `value`, which may be null; or 0, with
 * nothing stored.
 */
KESTU_API int kestu_map_find(const kestu_map_t *map, const void *key, size_t length, void **value);

/*
 * Deletes the key if it is there, and returns 1, or 0 when it was not. Its value is stored through
 * `value`, or released when `value` is null.
 */
KESTU_API int kestu_map_delete(kestu_map_t *map, const void *key, size_t length, void **value);

/*
 * Lets the cursor stand at the first entry. Returns 1, or 0 when there is none; the cursor then
 * stands nowhere, and its key is null.
 */
KESTU_API int kestu_map_first(kestu_map_t *map, kestu_map_cursor_t *cursor);

/* As kestu_map_first, at the last entry. */
KESTU_API int kestu_map_last(kestu_map_t *map, kestu_map_cursor_t *cursor);

/* As kestu_map_first, at the entry of the key. */
KESTU_API int kestu_map_seek(kestu_map_t *map, const void *key, size_t length,
                             kestu_map_cursor_t *cursor);

/* As kestu_map_first, at the first entry whose key is not before the key. */
KESTU_API int kestu_map_lower_bound(kestu_map_t *map, const void *key, size_t length,
                                    kestu_map_cursor_t *cursor);

/* As kestu_map_first, at the first entry whose key is behind the key. */
KESTU_API int kestu_map_upper_bound(kestu_map_t *map, const void *key, size_t length,
                                    kestu_map_cursor_t *cursor);

/* As kestu_map_first, at the entry with the longest key that begins the text. */
KESTU_API int kestu_map_longest_prefix(kestu_map_t *map, const void *text, size_t length,
                                       kestu_map_cursor_t *cursor);

/*
 * Moves the cursor to the next entry. Returns 1, or 0 behind the last one, as for a cursor that
 * stands nowhere; it stands nowhere then.
 */
KESTU_API int kestu_map_next(kestu_map_cursor_t *cursor);

/* As kestu_map_next, to the previous entry; 0 in front of the first one. */
KESTU_API int kestu_map_previous(kestu_map_cursor_t *cursor);

/*
 * Deletes the entry at which the cursor stands, whose value is stored through `value` or released
 * as by kestu_map_delete, and moves the cursor to the next one. Returns what kestu_map_next would.
 */
KESTU_API int kestu_map_delete_at(kestu_map_cursor_t *cursor, void **value);

/*
 * Calls `fn` for all entries in their order, until it returns something other than 0, which is
 * returned; 0 at the end.
 */
KESTU_API int kestu_map_walk(const kestu_map_t *map, kestu_map_func fn, void *baton);

/* As kestu_map_walk for the entries whose keys begin with the prefix. */
KESTU_API int kestu_map_walk_prefix(const kestu_map_t *map, const void *prefix, size_t length,
                                    kestu_map_func fn, void *baton);

KESTU_END_DECLS

#endif
