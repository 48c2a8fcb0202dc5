/*
 * Tries: maps from keys of any bytes and any length to pointers.
 *
 *     kestu_trie_t *ages = NULL;
 *     if ((err = kestu_triem_create(&ages)) ||
 *         (err = kestu_triem_insert(ages, "Ann", 3, &ann)) ||
 *         (err = kestu_triem_insert(ages, "Anna", 4, &anna)))
 *         return err;
 *     int *age = kestu_trie_search(ages, "Anna", 4);                  // null when absent
 *     kestu_triem_destroy(&ages);
 *
 * A trie branches on the half-bytes of its keys, the low half of each byte first. A key stands
 * whole in a leaf at the least depth at which no other key shares its way, so that a lookup ends
 * with one comparison. Tries of the `trie` functions live in a pool and go with it; those of the
 * `triem` functions come from the system's allocator, which gets back at once what is deleted. Keys
 * are copied, values are never looked at nor freed. Keys may be of any length: nothing here
 * recurses. Any number of threads may search and walk a trie that nobody changes.
 *
 * A caller may change the records: insertions, deletions and walks go by what they say. So do
 * searches, but within a beginning of 16 bytes or more that keys share they may see a changed type
 * or link only after the next insertion or deletion of a key with that beginning; what a caller
 * takes out there stays in memory until then. Nodes that a caller puts into a trie of the `triem`
 * functions come from kestu_mem_malloc, and are freed like its own; so is a leaf's key that he
 * replaces by a block of its own.
 *
 * In all functions `trie` is the handle, `key` points to the `length` bytes of a key and may be
 * null when there are none, and `baton` is handed through to the callback `fn`.
 */
#ifndef KESTU_TRIE_H
#define KESTU_TRIE_H

#include "kestu_error.h"

#include <stddef.h>
#include <stdint.h>

KESTU_BEGIN_DECLS

/* What a node is. Each begins with one of these; other values are invalid. */
enum {
    KESTU_TRIE_LEAF = 0,  /* a kestu_trie_leaf_t */
    KESTU_TRIE_INNER = 1, /* a kestu_trie_inner_t */
};

/* A node of either kind. */
typedef struct kestu_trie_node_t {
    uint32_t type; /* KESTU_TRIE_LEAF or KESTU_TRIE_INNER */
} kestu_trie_node_t;

/* A key and its value. */
typedef struct kestu_trie_leaf_t {
    uint32_t type;   /* KESTU_TRIE_LEAF */
    uint8_t *key;    /* the trie's copy, with a zero byte behind it */
    uint64_t length; /* of the key, in bytes */
    void *value;     /* the caller's, never freed */
} kestu_trie_leaf_t;

/* A branching: at depth d by half-byte number d of the keys. */
typedef struct kestu_trie_inner_t {
    uint32_t type;                   /* KESTU_TRIE_INNER */
    kestu_trie_leaf_t *end;          /* the leaf whose key ends here, or null */
    uint32_t count;                  /* leaves below, less the failed deletions that came by */
    kestu_trie_node_t *children[16]; /* what lies below each half-byte, or null */
} kestu_trie_inner_t;

/* The handle: a cell with the root node, null for an empty trie. */
typedef struct kestu_trie_t {
    kestu_trie_node_t *root; /* a leaf, a branching, or null */
} kestu_trie_t;

/* Receives one entry: the `length` of its `key`, the trie's own copy of it, and its `value`. */
typedef void (*kestu_trie_func)(uint64_t length, const uint8_t *key, void *value, void *baton);

/*
 * Makes an empty trie in `pool` and stores its handle through `out`. Always returns null; when the
 * pool has no memory, the handle is null.
 */
KESTU_API kestu_error_t *kestu_trie_create(kestu_trie_t **out, apr_pool_t *pool);

/*
 * As kestu_trie_create, from the system's allocator. Error: KESTU_ERR_NO_MEMORY (120012) under
 * "Can't create new triem.", and the handle is null as well.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_triem_create(kestu_trie_t **out);

/*
 * Stores `value` under a copy of the key, with nodes from `pool`. A null trie does nothing. Errors,
 * under "Can't insert trie node.", with the trie unchanged in all its counts and slots:
 * KESTU_ERR_KEY_EXISTS (120082) when the key is there already, KESTU_ERR_NODE_TYPE (120091) when a
 * node of invalid type is in its place, KESTU_ERR_NO_MEMORY (120012) when no memory is left. What a
 * failure leaves unused stays in the pool.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_trie_insert(kestu_trie_t *trie, const void *key,
                                                          size_t length, void *value,
                                                          apr_pool_t *pool);

/*
 * As kestu_trie_insert, with nodes from the system's allocator; what a failure leaves unused is
 * freed. Errors stand under "Can't insert triem node.".
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_triem_insert(kestu_trie_t *trie, const void *key,
                                                           size_t length, void *value);

/*
 * The value under the key. Null when it is absent, also from a null trie; a value of null cannot be
 * told from that.
 */
KESTU_API void *kestu_trie_search(const kestu_trie_t *trie, const void *key, size_t length);

/*
 * Whether the key is there: 1, with its value stored through `value`, which may be null; or 0, with
 * nothing stored, also for a null trie.
 */
KESTU_API int kestu_trie_find(const kestu_trie_t *trie, const void *key, size_t length,
                              void **value);

/* The number of entries, found by a walk. */
KESTU_API size_t kestu_trie_count(const kestu_trie_t *trie);

/*
 * Removes the key, if it is there; a branching that is left with one leaf gives its place to it. A
 * key that is absent lowers the counts of all branchings from which its way led on; they keep that,
 * and one whose count is not 1 in the end is not given up. A null trie does nothing.
 */
KESTU_API void kestu_trie_delete(kestu_trie_t *trie, const void *key, size_t length);

/* As kestu_trie_delete, and frees what is taken out. */
KESTU_API void kestu_triem_delete(kestu_trie_t *trie, const void *key, size_t length);

/*
 * Calls `fn` for every entry. A key comes before those that it begins; otherwise the order is that
 * of the first differing half-byte, low halves before high halves, and so not that of bytes. `fn`
 * may search the trie but not change it. Only where no memory is left for the way back, and keys
 * branch off at more than 64 depths of it, a walk needs the keys in the leaves as they were
 * inserted, and may else end early.
 */
KESTU_API void kestu_trie_walk(const kestu_trie_t *trie, kestu_trie_func fn, void *baton);

/* As kestu_trie_walk for every entry below `node`, which may be null. */
KESTU_API void traverse_node(const kestu_trie_node_t *node, kestu_trie_func fn, void *baton);

/*
 * Calls `fn` for every entry whose key begins with the `length` bytes at `prefix`, in the order of
 * kestu_trie_walk, to which it is alike otherwise.
 */
KESTU_API void kestu_trie_walk_prefix(const kestu_trie_t *trie, const void *prefix, size_t length,
                                      kestu_trie_func fn, void *baton);

/* Sets the handle at `trie` to null. The nodes go with their pool. A null handle does nothing. */
KESTU_API void kestu_trie_destroy(kestu_trie_t **trie);

/*
 * Frees the trie at `trie` and its handle, and sets the handle to null. A null handle does nothing.
 * A root of invalid type is not freed.
 */
KESTU_API void kestu_triem_destroy(kestu_trie_t **trie);

KESTU_END_DECLS

#endif
