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
 * that node and those before it, back to the first, then those behind it, on to the last. The
 * functions with `fl` in their names go from the first node to the last.
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
enum { KESTU_CDL_OCCUPIED = 1 /* the node is walked and counted */ };

/* One node. */
typedef struct kestu_cdl_t {
    uint32_t tag;             /* the caller's */
    uint32_t flags;           /* KESTU_CDL_OCCUPIED, and bits of the caller's */
    struct kestu_cdl_t *prev; /* null at the first node */
    struct kestu_cdl_t *next; /* null at the last node */
    void *data;               /* the caller's, never freed */
} kestu_cdl_t;

/*
 * Makes an occupied node in `pool` and links it in after the last node. The handle of an empty list
 * becomes the node; otherwise it is not moved. The node is also stored through `out`, which may be
 * null or the handle itself. Free nodes are not looked for. Error: KESTU_ERR_NO_MEMORY (120012)
 * under "Unable to append DL object.", with nothing changed.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_cdl_append(kestu_cdl_t **handle, uint32_t tag,
                                                         void *data, kestu_cdl_t **out,
                                                         apr_pool_t *pool);

/*
 * As kestu_cdl_append, before the first node. The error stands under "Unable to prepend DL
 * object.".
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_cdl_prepend(kestu_cdl_t **handle, uint32_t tag,
                                                          void *data, kestu_cdl_t **out,
                                                          apr_pool_t *pool);

/*
 * As kestu_cdl_append, just after the handle's node. The error stands under "Unable to add DL
 * object.".
 */
KESTU_API KESTU_MUST_USE kestu_error_t *
kestu_cdl_add(kestu_cdl_t **handle, uint32_t tag, void *data, kestu_cdl_t **out, apr_pool_t *pool);

/*
 * Links `new_node`, which must be in no list, just before `node`. Error: KESTU_ERR_LIST_INSERTION
 * (120051) when either is null. A node is never linked beside itself.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_cdl_insert_before(kestu_cdl_t *node,
                                                                kestu_cdl_t *new_node);

/* As kestu_cdl_insert_before, just after `node`. */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_cdl_insert_after(kestu_cdl_t *node,
                                                               kestu_cdl_t *new_node);

/* The first free node outward from `node`, or null when all are occupied. */
KESTU_API kestu_cdl_t *kestu_cdl_get_free(kestu_cdl_t *node);

/*
 * As kestu_cdl_get_free, and marks the node occupied; its tag and datum are still those of its last
 * use.
 */
KESTU_API kestu_cdl_t *kestu_cdl_get_ready(kestu_cdl_t *node);

/* Marks `node` free: it is no longer walked or counted, and may be handed out again. */
KESTU_API void kestu_cdl_set_free(kestu_cdl_t *node);

/* Marks `node` occupied. */
KESTU_API void kestu_cdl_set_occupied(kestu_cdl_t *node);

/*
 * Marks free the first occupied node outward from `node` that carries the pointer `data`. Null data
 * does nothing.
 */
KESTU_API void kestu_cdl_set_free_obj(kestu_cdl_t *node, void *data);

/* Marks every node of the list of `node` free. */
KESTU_API void kestu_cdl_set_allfree(kestu_cdl_t *node);

/* The first node of the list of `node`, be it occupied or free. */
KESTU_API kestu_cdl_t *kestu_cdl_get_first(kestu_cdl_t *node);

/* The last node of the list of `node`, be it occupied or free. */
KESTU_API kestu_cdl_t *kestu_cdl_get_last(kestu_cdl_t *node);

/*
 * The occupied node with the 0-based number `n` from the first node of the list of `node`, null
 * when there are fewer.
 */
KESTU_API kestu_cdl_t *kestu_cdl_get_n(kestu_cdl_t *node, size_t n);

/* The number of occupied nodes in the list of `node`. */
KESTU_API size_t kestu_cdl_count(kestu_cdl_t *node);

/* The datum of `node`; null for a null node. */
KESTU_API void *kestu_cdl_get_data(kestu_cdl_t *node);

/* The tag of `node`; 0 for a null node. */
KESTU_API uint32_t kestu_cdl_get_tag(kestu_cdl_t *node);

/* Sets the datum of `node` to `data`; a null node does nothing. */
KESTU_API void kestu_cdl_set_data(kestu_cdl_t *node, void *data);

/* Sets the tag of `node` to `tag`; a null node does nothing. */
KESTU_API void kestu_cdl_set_tag(kestu_cdl_t *node, uint32_t tag);

/* Sets the datum of `node` to `data` and its tag to `tag`; a null node does nothing. */
KESTU_API void kestu_cdl_set_data_tag(kestu_cdl_t *node, void *data, uint32_t tag);

/* Sets the pointer at `handle` to null. The nodes stay linked and go with their pool. */
KESTU_API void kestu_cdl_destroy(kestu_cdl_t **handle);

/*
 * Calls `fn` on the occupied nodes outward from `node`. It may link nodes in and mark nodes free or
 * occupied.
 */
KESTU_API void kestu_cdl_walk(kestu_cdl_t *node, kestu_visit_func fn, void *baton);

/* As kestu_cdl_walk, from the first node of the list to the last. */
KESTU_API void kestu_cdl_flwalk(kestu_cdl_t *node, kestu_visit_func fn, void *baton);

/* As kestu_cdl_walk until `fn` returns something other than 0, which is returned; 0 at the end. */
KESTU_API int kestu_cdl_walk_int_first(kestu_cdl_t *node, kestu_int_func fn, void *baton);

/* As kestu_cdl_walk until `fn` returns a pointer, which is returned; null at the end. */
KESTU_API void *kestu_cdl_walk_ptr_first(kestu_cdl_t *node, kestu_ptr_func fn, void *baton);

/* As kestu_cdl_walk until `fn` returns an error, which is returned unchanged; null at the end. */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_cdl_walk_err_first(kestu_cdl_t *node,
                                                                 kestu_err_func fn, void *baton);

/* As kestu_cdl_walk_err_first, from the first node of the list to the last. */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_cdl_flwalk_err_first(kestu_cdl_t *node,
                                                                   kestu_err_func fn, void *baton);

/*
 * As kestu_cdl_walk_err_first, and stops with null once the pointer at `result`, which is handed to
 * `fn` and not cleared before, is set after a call.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_cdl_walk_err_or_ptr_first(kestu_cdl_t *node,
                                                                        kestu_err_or_ptr_func fn,
                                                                        void *baton, void **result);

/* As kestu_cdl_walk_err_or_ptr_first, from the first node of the list to the last. */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_cdl_flwalk_err_or_ptr_first(kestu_cdl_t *node,
                                                                          kestu_err_or_ptr_func fn,
                                                                          void *baton,
                                                                          void **result);

/*
 * Walks outward from `node` and marks every occupied node free for which `fn` returns anything but
 * 0.
 */
KESTU_API void kestu_cdl_walk_free(kestu_cdl_t *node, kestu_int_func fn, void *baton);

/*
 * The first occupied node outward from `node` for which `fn` returns anything but 0; null when
 * there is none.
 */
KESTU_API kestu_cdl_t *kestu_cdl_walk_node_first(kestu_cdl_t *node, kestu_int_func fn, void *baton);

KESTU_END_DECLS

#endif
