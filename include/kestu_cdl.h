/*
 * The circular list: nodes in a pool that are never removed, but marked free and handed out again.
 *
 *     kestu_cdl_t *node = kestu_cdl_get_ready(list);
 *     if (node)
 *         kestu_cdl_set_data_tag(node, &item, tag);
 *     else if ((err = kestu_cdl_append(&list, tag, &item, NULL, pool)))
 *         return err;
 *
 * So a set that lives long and changes often does not grow its pool without bound. Any node is a
 * handle to the whole list, and null is the empty list. A node is occupied or free; only occupied
 * ones are walked and counted. Walks and searches go outward from the node that they are given:
 * that node and those before it, back to the first, then those behind it, on to the last. The names
 * that begin with kestu_cdl_fl go from the first node to the last.
 *
 * The list never owns a datum. A list belongs to one thread at a time. In all functions `tag` and
 * `data` are what a node carries, `fn` is the caller's callback and `baton` is handed through to
 * it. `node` is any node of a list, or null, which is then a list without nodes; `handle` points to
 * such a pointer and is itself never null.
 */
#ifndef KESTU_CDL_H
#define KESTU_CDL_H

#include "kestu_walk.h"

#include <stddef.h>

KESTU_BEGIN_DECLS

/* The bit of `flags` that is set while a node is occupied. The others are the caller's. */
enum { KESTU_CDL_OCCUPIED = 1 };

/* One node. */
typedef struct kestu_cdl_t {
    uint32_t tag;
    uint32_t flags;
    struct kestu_cdl_t *prev; /* null at the first node */
    struct kestu_cdl_t *next; /* null at the last node */
    void *data;
} kestu_cdl_t;

/*
 * Make an occupied node in `pool` and link it in: after the last node, before the first, or just
 * after the handle's node. The handle of an empty list becomes the node; otherwise it is not moved.
 * The node is also stored through `out`, which may be null or the handle itself. Free nodes are not
 * looked for. Error: 120012 under "Unable to append DL object.", "Unable to prepend DL object." or
 * "Unable to add DL object.", with nothing changed.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_cdl_append(kestu_cdl_t **handle, uint32_t tag,
                                                         void *data, kestu_cdl_t **out,
                                                         apr_pool_t *pool);
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_cdl_prepend(kestu_cdl_t **handle, uint32_t tag,
                                                          void *data, kestu_cdl_t **out,
                                                          apr_pool_t *pool);
KESTU_API KESTU_MUST_USE kestu_error_t *
kestu_cdl_add(kestu_cdl_t **handle, uint32_t tag, void *data, kestu_cdl_t **out, apr_pool_t *pool);

/*
 * Links `new_node`, which must be in no list, just before or just after `node`. Error: 120051 when
 * either is null. A node is never linked beside itself.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_cdl_insert_before(kestu_cdl_t *node,
                                                                kestu_cdl_t *new_node);
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_cdl_insert_after(kestu_cdl_t *node,
                                                               kestu_cdl_t *new_node);

/*
 * The first free node outward from `node`, or null when all are occupied. The second form marks it
 * occupied; its tag and datum are still those of its last use.
 */
KESTU_API kestu_cdl_t *kestu_cdl_get_free(kestu_cdl_t *node);
KESTU_API kestu_cdl_t *kestu_cdl_get_ready(kestu_cdl_t *node);

/* Marks `node` free or occupied. */
KESTU_API void kestu_cdl_set_free(kestu_cdl_t *node);
KESTU_API void kestu_cdl_set_occupied(kestu_cdl_t *node);

/*
 * Marks free the first occupied node outward from `node` that carries the pointer `data`. Null data
 * does nothing.
 */
KESTU_API void kestu_cdl_set_free_obj(kestu_cdl_t *node, void *data);

/* Marks every node of the list of `node` free. */
KESTU_API void kestu_cdl_set_allfree(kestu_cdl_t *node);

/* The ends of the list of `node`, be they occupied or free. */
KESTU_API kestu_cdl_t *kestu_cdl_get_first(kestu_cdl_t *node);
KESTU_API kestu_cdl_t *kestu_cdl_get_last(kestu_cdl_t *node);

/*
 * The occupied node with the 0-based number `n` from the first node of the list of `node`, null
 * when there are fewer, and the number of occupied nodes.
 */
KESTU_API kestu_cdl_t *kestu_cdl_get_n(kestu_cdl_t *node, size_t n);
KESTU_API size_t kestu_cdl_count(kestu_cdl_t *node);

/* What `node` carries; null or 0 for null. Setting does nothing for null. */
KESTU_API void *kestu_cdl_get_data(kestu_cdl_t *node);
KESTU_API uint32_t kestu_cdl_get_tag(kestu_cdl_t *node);
KESTU_API void kestu_cdl_set_data(kestu_cdl_t *node, void *data);
KESTU_API void kestu_cdl_set_tag(kestu_cdl_t *node, uint32_t tag);
KESTU_API void kestu_cdl_set_data_tag(kestu_cdl_t *node, void *data, uint32_t tag);

/* Sets the pointer at `handle` to null. The nodes stay linked and go with their pool. */
KESTU_API void kestu_cdl_destroy(kestu_cdl_t **handle);

/*
 * Call `fn` on the occupied nodes outward from `node`, or from the first to the last of its list,
 * or until the kind of result named by the function stops the walk and is returned; 0 or null when
 * nothing did. A callback may link nodes in and mark nodes free or occupied.
 */
KESTU_API void kestu_cdl_walk(kestu_cdl_t *node, kestu_visit_func fn, void *baton);
KESTU_API void kestu_cdl_flwalk(kestu_cdl_t *node, kestu_visit_func fn, void *baton);
KESTU_API int kestu_cdl_walk_int_first(kestu_cdl_t *node, kestu_int_func fn, void *baton);
KESTU_API void *kestu_cdl_walk_ptr_first(kestu_cdl_t *node, kestu_ptr_func fn, void *baton);
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_cdl_walk_err_first(kestu_cdl_t *node,
                                                                 kestu_err_func fn, void *baton);
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_cdl_flwalk_err_first(kestu_cdl_t *node,
                                                                   kestu_err_func fn, void *baton);

/*
 * As the two before, from `node` on, and stop with null once the pointer at `result`, which is
 * handed to `fn` and not cleared before, is set after a call.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_cdl_walk_err_or_ptr_first(kestu_cdl_t *node,
                                                                        kestu_err_or_ptr_func fn,
                                                                        void *baton, void **result);
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_cdl_flwalk_err_or_ptr_first(kestu_cdl_t *node,
                                                                          kestu_err_or_ptr_func fn,
                                                                          void *baton,
                                                                          void **result);

/*
 * Walk outward from `node`. The first form marks every node free for which `fn` returns anything
 * but 0; the second stops at the first such node and returns it.
 */
KESTU_API void kestu_cdl_walk_free(kestu_cdl_t *node, kestu_int_func fn, void *baton);
KESTU_API kestu_cdl_t *kestu_cdl_walk_node_first(kestu_cdl_t *node, kestu_int_func fn, void *baton);

KESTU_END_DECLS

#endif
