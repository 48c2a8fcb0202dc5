/*
 * The singly linked list: nodes in a pool that carry a tag and a pointer to a datum of the
 * caller's.
 *
 *     kestu_sl_t *list = NULL;
 *     kestu_sl_front(&list, 2, &second, pool);
 *     kestu_sl_front(&list, 1, &first, pool);
 *     kestu_sl_walk(list, print, stdout);
 *
 * A list is reached through its head; null is the empty list. A function that takes some other node
 * works from that node on. Nodes go with their pool and are never given back one by one. The list
 * never owns a datum. A list belongs to one thread at a time.
 *
 * In all functions `tag` and `data` are what a node carries, `fn` is the caller's callback and
 * `baton` is handed through to it. `node` may be null unless told otherwise; `head` points to the
 * pointer to the first node and is itself never null.
 */
#ifndef KESTU_SL_H
#define KESTU_SL_H

#include "kestu_walk.h"

#include <stddef.h>

KESTU_BEGIN_DECLS

/* One node. Its fields may be read and its tag and datum written directly. */
typedef struct kestu_sl_t {
    uint32_t tag;            /* the caller's */
    struct kestu_sl_t *next; /* null at the end */
    void *data;              /* the caller's, never freed */
} kestu_sl_t;

/*
 * Makes a node in `pool` and links it in right after the one whose pointer is at `node`; a null
 * pointer becomes the new node. The result is always null: when the pool has no memory, and no
 * abort function of its own to say so, the list stays as it was.
 */
KESTU_API kestu_error_t *kestu_sl_add(kestu_sl_t **node, uint32_t tag, void *data,
                                      apr_pool_t *pool);

/* As kestu_sl_add, before the first node: the pointer at `head` becomes the new one. */
KESTU_API kestu_error_t *kestu_sl_front(kestu_sl_t **head, uint32_t tag, void *data,
                                        apr_pool_t *pool);

/* As kestu_sl_add, after the last node of the list at `head`, which takes a walk. */
KESTU_API kestu_error_t *kestu_sl_append(kestu_sl_t **head, uint32_t tag, void *data,
                                         apr_pool_t *pool);

/* Sets what `node`, which must not be null, carries to `tag` and `data`. */
KESTU_API void kestu_sl_update(kestu_sl_t *node, uint32_t tag, void *data);

/* The node `n` places behind `node`, null when the list ends before. */
KESTU_API kestu_sl_t *kestu_sl_get_n(kestu_sl_t *node, size_t n);

/* The datum of `node`; null for a null node. */
KESTU_API void *kestu_sl_get_data(kestu_sl_t *node);

/*
 * As kestu_sl_get_data, and stores the tag of the node through `tag`, which may be null. Nothing is
 * stored for a null node.
 */
KESTU_API void *kestu_sl_get_data_tag(kestu_sl_t *node, uint32_t *tag);

/* Takes the node behind `node`, if there is one, out of the list. */
KESTU_API void kestu_sl_delete_next(kestu_sl_t *node);

/* Sets the pointer at `head` to null. The nodes stay linked and go with their pool. */
KESTU_API void kestu_sl_destroy(kestu_sl_t **head);

/* Calls `fn` from `node` to the end of the list. It may link nodes in. */
KESTU_API void kestu_sl_walk(kestu_sl_t *node, kestu_visit_func fn, void *baton);

/* As kestu_sl_walk until `fn` returns something other than 0, which is returned; 0 at the end. */
KESTU_API int kestu_sl_walk_int_first(kestu_sl_t *node, kestu_int_func fn, void *baton);

/* As kestu_sl_walk until `fn` returns a pointer, which is returned; null at the end. */
KESTU_API void *kestu_sl_walk_ptr_first(kestu_sl_t *node, kestu_ptr_func fn, void *baton);

/* As kestu_sl_walk until `fn` returns an error, which is returned unchanged; null at the end. */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_sl_walk_err_first(kestu_sl_t *node, kestu_err_func fn,
                                                                void *baton);

KESTU_END_DECLS

#endif
