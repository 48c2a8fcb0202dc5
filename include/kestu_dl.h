/*
 * The doubly linked list: nodes that carry a tag and a pointer to a datum of the caller's.
 *
 *     kestu_dl_t *list = NULL;
 *     for (uint32_t i = 0; i < n; ++i)
 *         if ((err = kestu_dl_append(&list, i, &records[i], &list, pool)))
 *             return err;
 *     kestu_dl_walk(list, print, stdout);
 *
 * A list has no header: any of its nodes is a handle to all of it, and null is the empty list. Here
 * the handle moves along with the last node, so that appending does not walk. Nodes of the `dl`
 * functions live in a pool and go with it; those of the `dlm` functions come from kestu_mem_malloc
 * and are freed when they are deleted. All functions that neither make nor free nodes serve both
 * kinds. The list never owns a datum. A list belongs to one thread at a time.
 *
 * In all functions `tag` and `data` are what a node carries, `fn` is the caller's callback and
 * `baton` is handed through to it. `node` is any node of a list, or null, which is then a list
 * without nodes; `handle` points to such a pointer and is itself never null.
 */
#ifndef KESTU_DL_H
#define KESTU_DL_H

#include "kestu_walk.h"

#include <stddef.h>

KESTU_BEGIN_DECLS

/* One node. Its fields may be read and its tag and datum written directly. */
typedef struct kestu_dl_t {
    uint32_t tag;            /* the caller's */
    struct kestu_dl_t *prev; /* null at the first node */
    struct kestu_dl_t *next; /* null at the last node */
    void *data;              /* the caller's, never freed */
} kestu_dl_t;

/*
 * Receives one node of each of `n` lists: their `tags` and `data`, 0 and null for a list that has
 * ended.
 */
typedef kestu_error_t *(*kestu_dl_mwalk_func)(uint32_t n, const uint32_t *tags, void *const *data,
                                              void *baton);

/* More than 0 when the node of `tag_a` and `a` belongs behind that of `tag_b` and `b`. */
typedef int (*kestu_dl_compare_func)(uint32_t tag_a, void *a, uint32_t tag_b, void *b, void *baton);

/*
 * Makes a node that is in no list, in `pool`, and stores it through `out`. Always returns null;
 * when the pool has no memory, the node is null.
 */
KESTU_API kestu_error_t *kestu_dl_create(uint32_t tag, void *data, kestu_dl_t **out,
                                         apr_pool_t *pool);

/*
 * As kestu_dl_create, from kestu_mem_malloc. Error: KESTU_ERR_NO_MEMORY (120012) under "Can't
 * allocate memory for dlm node.".
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_dlm_create(uint32_t tag, void *data,
                                                         kestu_dl_t **out);

/*
 * Links `new_node`, which must be in no list, just before `node`. Error: KESTU_ERR_LIST_INSERTION
 * (120051) when either is null. A node is never linked beside itself.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_dl_insert_before(kestu_dl_t *node,
                                                               kestu_dl_t *new_node);

/* As kestu_dl_insert_before, just after `node`. */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_dl_insert_after(kestu_dl_t *node,
                                                              kestu_dl_t *new_node);

/*
 * Makes a node in `pool` and links it in just after the handle's node, in constant time. The handle
 * of an empty list becomes the node; otherwise it is not moved. The node is also stored through
 * `out`, which may be null, or the handle itself, which then moves to the new node.
 *
 * Error: KESTU_ERR_NO_MEMORY (120012) under "Unable to add DL node.", with list, handle and `out`
 * untouched.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_dl_add_after(kestu_dl_t **handle, uint32_t tag,
                                                           void *data, kestu_dl_t **out,
                                                           apr_pool_t *pool);

/* As kestu_dl_add_after, with the node just before the handle's. */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_dl_add_before(kestu_dl_t **handle, uint32_t tag,
                                                            void *data, kestu_dl_t **out,
                                                            apr_pool_t *pool);

/*
 * As kestu_dl_add_after, with the node before the first of the list, to which it walks from the
 * handle. The error stands under "Unable to prepend DL object.".
 */
KESTU_API KESTU_MUST_USE kestu_error_t *
kestu_dl_prepend(kestu_dl_t **handle, uint32_t tag, void *data, kestu_dl_t **out, apr_pool_t *pool);

/*
 * As kestu_dl_add_after, with the node after the last of the list, to which it walks from the
 * handle: at once when the handle is kept there. The error stands under "Unable to append DL
 * object.".
 */
KESTU_API KESTU_MUST_USE kestu_error_t *
kestu_dl_append(kestu_dl_t **handle, uint32_t tag, void *data, kestu_dl_t **out, apr_pool_t *pool);

/*
 * As kestu_dl_add_after, with a node from kestu_mem_malloc. The error stands over "Can't allocate
 * memory for dlm node.".
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_dlm_add_after(kestu_dl_t **handle, uint32_t tag,
                                                            void *data, kestu_dl_t **out);

/*
 * As kestu_dl_add_before, with a node from kestu_mem_malloc and the errors of kestu_dlm_add_after.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_dlm_add_before(kestu_dl_t **handle, uint32_t tag,
                                                             void *data, kestu_dl_t **out);

/*
 * As kestu_dl_prepend, with a node from kestu_mem_malloc. The error stands over "Can't allocate
 * memory for dlm node.".
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_dlm_prepend(kestu_dl_t **handle, uint32_t tag,
                                                          void *data, kestu_dl_t **out);

/*
 * As kestu_dl_append, with a node from kestu_mem_malloc. The error stands over "Can't allocate
 * memory for dlm node.".
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_dlm_append(kestu_dl_t **handle, uint32_t tag,
                                                         void *data, kestu_dl_t **out);

/*
 * Links the list of `b` behind the list of `a` and returns the first node of a, null when `a` is
 * null. A null `b`, or one in the list of a, changes nothing.
 */
KESTU_API kestu_dl_t *kestu_dl_join(kestu_dl_t *a, kestu_dl_t *b);

/* The datum of `node`; null for a null node. */
KESTU_API void *kestu_dl_get_data(kestu_dl_t *node);

/*
 * As kestu_dl_get_data, and stores the tag of the node through `tag`, which may be null. Nothing is
 * stored for a null node.
 */
KESTU_API void *kestu_dl_get_data_tag(kestu_dl_t *node, uint32_t *tag);

/* Sets what `node`, which must not be null, carries to `tag` and `data`. */
KESTU_API void kestu_dl_update(kestu_dl_t *node, uint32_t tag, void *data);

/* The node before `node`; null at the first one, and for a null node. */
KESTU_API kestu_dl_t *kestu_dl_get_prev(kestu_dl_t *node);

/* The node behind `node`; null at the last one, and for a null node. */
KESTU_API kestu_dl_t *kestu_dl_get_next(kestu_dl_t *node);

/* The first node of the list of `node`, found by a walk; null for a null node. */
KESTU_API kestu_dl_t *kestu_dl_get_first(kestu_dl_t *node);

/* The last node of the list of `node`, found by a walk; null for a null node. */
KESTU_API kestu_dl_t *kestu_dl_get_last(kestu_dl_t *node);

/*
 * The node with the number `n` in the list of `node`, counted from 0 at the first; null when there
 * are fewer.
 */
KESTU_API kestu_dl_t *kestu_dl_get_n(kestu_dl_t *node, size_t n);

/* The number of nodes in the whole list of `node`. */
KESTU_API size_t kestu_dl_count(kestu_dl_t *node);

/* Takes `node` out of its list, clears its links and returns it; null for null. */
KESTU_API kestu_dl_t *kestu_dl_extract(kestu_dl_t *node);

/*
 * Takes `node` out of its list; it stays in its pool. Handles to it are left dangling. A null node
 * does nothing.
 */
KESTU_API void kestu_dl_delete(kestu_dl_t *node);

/* As kestu_dl_delete, and frees the node. */
KESTU_API void kestu_dlm_delete(kestu_dl_t *node);

/* As kestu_dl_delete, and then calls `fn` with the node's tag and datum: to release the datum. */
KESTU_API void kestu_dl_delete_func(kestu_dl_t *node, kestu_visit_func fn, void *baton);

/* As kestu_dl_delete_func, and then frees the node. */
KESTU_API void kestu_dlm_delete_func(kestu_dl_t *node, kestu_visit_func fn, void *baton);

/*
 * As kestu_dl_delete_func, and returns what `fn` returns; the node is out of the list all the same.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_dl_delete_errfunc(kestu_dl_t *node, kestu_err_func fn,
                                                                void *baton);

/*
 * Deletes, as kestu_dl_delete does, the first node of the list at `handle` that carries the pointer
 * `data`. When it is the handle's own node, the handle moves to the next node, or else to the
 * previous one. Null data, or one that no node carries, changes nothing.
 */
KESTU_API void kestu_dl_delete_obj(kestu_dl_t **handle, void *data);

/* As kestu_dl_delete_obj, and frees the node. */
KESTU_API void kestu_dlm_delete_obj(kestu_dl_t **handle, void *data);

/*
 * As kestu_dl_delete_obj, and calls `fn` with the tag and datum of the node that is out of the
 * list.
 */
KESTU_API void kestu_dl_delete_obj_func(kestu_dl_t **handle, void *data, kestu_visit_func fn,
                                        void *baton);

/* As kestu_dl_delete_obj_func, and returns what `fn` returns; null when it was not called. */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_dl_delete_obj_errfunc(kestu_dl_t **handle, void *data,
                                                                    kestu_err_func fn, void *baton);

/* Sets `handle` to null. The nodes stay linked and go with their pool. */
KESTU_API void kestu_dl_destroy(kestu_dl_t **handle);

/*
 * Deletes and frees every node of the list at `handle`: first those before the handle's node,
 * nearest first, then the handle's node and those after it, in order. During the second part the
 * handle stands at the next node that is still there; in the end it is null.
 */
KESTU_API void kestu_dlm_destroy(kestu_dl_t **handle);

/*
 * Takes every node out of the list at `handle`, in the order of kestu_dlm_destroy, and calls `fn`
 * with its tag and datum. The nodes stay in their pool; the handle is null in the end.
 */
KESTU_API void kestu_dl_destroy_func(kestu_dl_t **handle, kestu_visit_func fn, void *baton);

/* As kestu_dl_destroy_func, and frees each node behind the call. */
KESTU_API void kestu_dlm_destroy_func(kestu_dl_t **handle, kestu_visit_func fn, void *baton);

/*
 * As kestu_dl_destroy_func, but stops at the first error of `fn` and returns it under "Error while
 * destroy DL List.", KestuDLlistStopWalking too; the node of the error and those before it stay
 * deleted, and the handle reaches the rest.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_dl_destroy_errfunc(kestu_dl_t **handle,
                                                                 kestu_err_func fn, void *baton);

/*
 * Calls `fn` on the nodes of the list of `node` from the first to the last. It may link nodes in,
 * but must not take its own node out of the list.
 */
KESTU_API void kestu_dl_walk(kestu_dl_t *node, kestu_visit_func fn, void *baton);

/* As kestu_dl_walk until `fn` returns something other than 0, which is returned; 0 at the end. */
KESTU_API int kestu_dl_walk_int_first(kestu_dl_t *node, kestu_int_func fn, void *baton);

/* As kestu_dl_walk until `fn` returns a pointer, which is returned; null at the end. */
KESTU_API void *kestu_dl_walk_ptr_first(kestu_dl_t *node, kestu_ptr_func fn, void *baton);

/* As kestu_dl_walk until `fn` returns an error, which is returned unchanged; null at the end. */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_dl_walk_err_first(kestu_dl_t *node, kestu_err_func fn,
                                                                void *baton);

/*
 * As kestu_dl_walk_err_first, and stops with null once the pointer at `result`, which is handed to
 * `fn` and not cleared before, is set after a call. Unlike the other walks it begins at `node`, not
 * at the first node of the list.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_dl_walk_err_or_ptr_first(kestu_dl_t *node,
                                                                       kestu_err_or_ptr_func fn,
                                                                       void *baton, void **result);

/*
 * Walks the list at `handle` and deletes, as kestu_dl_delete does, every node for which `fn`
 * returns anything but 0; the nodes of `dlm` functions are not freed. The next node is read before
 * the call. The handle then stands at the first node that was kept, or is null.
 */
KESTU_API void kestu_dl_dwalk(kestu_dl_t **handle, kestu_int_func fn, void *baton);

/*
 * Walks `n` lists, reached through the `n` nodes at `handles`, in step until all have ended: the
 * shorter ones show tag 0 and null data while the longer go on. Stops at the first error of `fn`
 * and returns it, or null for KestuDLlistStopWalking. Error of its own: KESTU_ERR_NO_MEMORY
 * (120012) for the cursors.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_dl_mwalk_err_first(kestu_dl_t *const *handles,
                                                                 uint32_t n, kestu_dl_mwalk_func fn,
                                                                 void *baton);

/*
 * Swaps the places of the nodes `a` and `b`, which may be in different lists. A node exchanged with
 * itself stays. Errors, under "Unable to exchange DL nodes.": KESTU_ERR_LIST_EXCHANGE (120052),
 * without a wrapping message, when either is null; KESTU_ERR_LIST_INSERTION (120051) when one of
 * them is alone in a list of its own, which leaves no place to put the other: the lone node `a`
 * then has taken the place of `b`, a lone node `b` has not taken that of `a`, and the other nodes
 * of the pair are in no list.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_dl_exchange(kestu_dl_t *a, kestu_dl_t *b);

/*
 * Sorts the list of `node` in ascending order by exchanging nodes: each place from the first on is
 * compared by `compare` with all behind it and takes whichever belongs before. Takes n(n-1)/2
 * comparisons and is not stable. The handle keeps its node, which may no longer be the first.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *
kestu_dl_bubsort(kestu_dl_t *node, kestu_dl_compare_func compare, void *baton);

/*
 * Sorts the list of the handle in ascending order, as `compare` has it, by merging: stable, in O(n
 * log n) comparisons, in O(n) where it is sorted already, and without memory. Nodes stay what they
 * are and change their places only. The node that is first then becomes the handle.
 */
KESTU_API void kestu_dl_sort(kestu_dl_t **handle, kestu_dl_compare_func compare, void *baton);

/*
 * Does the same as kestu_dl_sort, under the name that goes with the `dlm` functions. `compare` is
 * as there.
 */
KESTU_API void kestu_dlm_sort(kestu_dl_t **handle, kestu_dl_compare_func compare, void *baton);

/* Reverses the order of the list at `handle`. The node that is first then becomes the handle. */
KESTU_API void kestu_dl_reverse(kestu_dl_t **handle);

/*
 * Moves the nodes from `first` to `last`, which comes behind it or is the same, out of their list
 * to just behind `node`, in the same list or another one; in time linear in their number. A handle
 * of the list that they leave must be another node's. Error: KESTU_ERR_LIST_INSERTION (120051)
 * under "Unable to splice DL nodes." with nothing moved, when one is null, when `last` does not
 * come, or when `node` is among them.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_dl_splice(kestu_dl_t *node, kestu_dl_t *first,
                                                        kestu_dl_t *last);

/*
 * A comparison for kestu_dl_bubsort of records whose signed 32-bit key stands 108 bytes from their
 * begin: 1 when the key of `a` is greater than that of `b`, -1 when smaller, else 0. `tag_a`,
 * `tag_b` and `baton` are not used.
 */
KESTU_API int kestu_hook_bubsort_callback(uint32_t tag_a, void *a, uint32_t tag_b, void *b,
                                          void *baton);

KESTU_END_DECLS

#endif
