/*
 * Trees: ordered nodes that carry a tag and a pointer to a datum of the caller's.
 *
 *     kestu_tree_t *tree = NULL, *fruit;
 *     if ((err = kestu_tree_append(&tree, 1, "fruit", &fruit, pool)) ||
 *         (err = kestu_tree_append_child(fruit, 2, "apple", NULL, pool)) ||
 *         (err = kestu_tree_append_child(fruit, 3, "pear", NULL, pool)))
 *         return err;
 *     kestu_tree_walk(tree, print, NULL, stdout);                     // fruit, apple, pear
 *
 * A tree has no header: any node of its top level is a handle to all of it, and null is the empty
 * tree. Nodes of the `tree` functions live in a pool and go with it; those of the `treem` functions
 * come from kestu_mem_malloc and are freed when they are deleted. All functions that neither make
 * nor free nodes serve both kinds. A tree never owns a datum. Trees may be of any depth: nothing
 * here recurses. A tree belongs to one thread at a time.
 *
 * In all functions `tag` and `data` are what a node carries, `node` is a node or null, and `fn`,
 * `pre` and `post` are the caller's callbacks, to which `baton` is handed through.
 */
#ifndef KESTU_TREE_H
#define KESTU_TREE_H

#include "kestu_walk.h"

KESTU_BEGIN_DECLS

/* One node. Its fields may be read and its tag and datum written directly. */
typedef struct kestu_tree_t {
    uint32_t tag;                /* the caller's */
    struct kestu_tree_t *prev;   /* null at the first sibling */
    struct kestu_tree_t *next;   /* null at the last sibling */
    struct kestu_tree_t *parent; /* null on the top level */
    struct kestu_tree_t *child;  /* one of the children, not always the first; null without any */
    void *data;                  /* the caller's, never freed */
} kestu_tree_t;

/*
 * Makes a node without links in `pool` and stores it through `out`. Always returns null; when the
 * pool has no memory, the node is null.
 */
KESTU_API kestu_error_t *kestu_tree_create(uint32_t tag, void *data, kestu_tree_t **out,
                                           apr_pool_t *pool);

/*
 * As kestu_tree_create, from kestu_mem_malloc. Error: KESTU_ERR_NO_MEMORY (120012) under "Can't
 * allocate memory for treem node.", and the node is null as well.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_treem_create(uint32_t tag, void *data,
                                                           kestu_tree_t **out);

/* The sibling before `node`; null at the first one, and for a null node. */
KESTU_API kestu_tree_t *kestu_tree_get_prev(kestu_tree_t *node);

/* The sibling behind `node`; null at the last one, and for a null node. */
KESTU_API kestu_tree_t *kestu_tree_get_next(kestu_tree_t *node);

/* The parent of `node`; null on the top level, and for a null node. */
KESTU_API kestu_tree_t *kestu_tree_get_parent(kestu_tree_t *node);

/*
 * One of the children of `node`, not always the first; null when it has none, and for a null node.
 */
KESTU_API kestu_tree_t *kestu_tree_get_child(kestu_tree_t *node);

/* The first sibling of `node`, found by a walk; null for a null node. */
KESTU_API kestu_tree_t *kestu_tree_get_first(kestu_tree_t *node);

/* The last sibling of `node`, found by a walk; null for a null node. */
KESTU_API kestu_tree_t *kestu_tree_get_last(kestu_tree_t *node);

/*
 * The ancestor of `node` on the top level, which need not be the first there, or the node itself
 * when it stands there. Null for a null node.
 */
KESTU_API kestu_tree_t *kestu_tree_get_top(kestu_tree_t *node);

/* The datum of `node`; null for a null node. */
KESTU_API void *kestu_tree_get_data(kestu_tree_t *node);

/*
 * As kestu_tree_get_data, and stores the tag of the node through `tag`, which may be null. Nothing
 * is stored for a null node.
 */
KESTU_API void *kestu_tree_get_data_tag(kestu_tree_t *node, uint32_t *tag);

/* Sets what `node`, which must not be null, carries to `tag` and `data`. */
KESTU_API void kestu_tree_update(kestu_tree_t *node, uint32_t tag, void *data);

/*
 * Links `node`, which must stand beside no other and below none, just before `ref` and below the
 * parent of `ref`; its children come with it. The parent's `child` is not moved. Error:
 * KESTU_ERR_TREE_INSERTION (120120) when either is null. A node is never linked beside itself.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_tree_insert_before(kestu_tree_t *ref,
                                                                 kestu_tree_t *node);

/* As kestu_tree_insert_before, just after `ref`. */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_tree_insert_after(kestu_tree_t *ref,
                                                                kestu_tree_t *node);

/*
 * Takes `node`, with all that is below it, out of its level and from its parent, and returns it;
 * null for null. When the parent's `child` is the node, it moves to the previous sibling, or else
 * to the next.
 */
KESTU_API kestu_tree_t *kestu_tree_extract(kestu_tree_t *node);

/*
 * Makes a node in `pool` and links it in before the first node of the level of the handle at
 * `root`, walking there from the handle. A handle that is null becomes the node; otherwise it is
 * not moved and need not be the first node. The node is also stored through `out`, which may be
 * null.
 *
 * Error: KESTU_ERR_NO_MEMORY (120012) under "Unable to prepend Tree node.", with tree, handle and
 * `out` untouched.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_tree_prepend(kestu_tree_t **root, uint32_t tag,
                                                           void *data, kestu_tree_t **out,
                                                           apr_pool_t *pool);

/*
 * As kestu_tree_prepend, after the last node of the level. The error stands under "Unable to append
 * Tree node.".
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_tree_append(kestu_tree_t **root, uint32_t tag,
                                                          void *data, kestu_tree_t **out,
                                                          apr_pool_t *pool);

/*
 * As kestu_tree_append, with a node from kestu_mem_malloc. The error stands over "Can't allocate
 * memory for treem node.".
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_treem_append(kestu_tree_t **root, uint32_t tag,
                                                           void *data, kestu_tree_t **out);

/*
 * As kestu_tree_prepend, but just before the node of the handle at `pos`, in constant time. The
 * error stands under "Unable to add Tree node.".
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_tree_add_before(kestu_tree_t **pos, uint32_t tag,
                                                              void *data, kestu_tree_t **out,
                                                              apr_pool_t *pool);

/* As kestu_tree_add_before, just after the node of the handle at `pos`. */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_tree_add_after(kestu_tree_t **pos, uint32_t tag,
                                                             void *data, kestu_tree_t **out,
                                                             apr_pool_t *pool);

/*
 * Makes a node in `pool` and links it in before the first child of `parent`, walking there from
 * `parent->child`. Only the first node below a parent becomes its `child`; later ones, prepended
 * ones too, leave it where it is. The node is also stored through `out`, which may be null.
 *
 * Errors: KESTU_ERR_TREE_INSERTION (120120) when `parent` is null; KESTU_ERR_NO_MEMORY (120012)
 * under "Unable to prepend child Tree node.", with tree and `out` untouched.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_tree_prepend_child(kestu_tree_t *parent, uint32_t tag,
                                                                 void *data, kestu_tree_t **out,
                                                                 apr_pool_t *pool);

/*
 * As kestu_tree_prepend_child, after the last child. KESTU_ERR_NO_MEMORY (120012) stands under
 * "Unable to append child Tree node.".
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_tree_append_child(kestu_tree_t *parent, uint32_t tag,
                                                                void *data, kestu_tree_t **out,
                                                                apr_pool_t *pool);

/*
 * As kestu_tree_append_child, with a node from kestu_mem_malloc. KESTU_ERR_NO_MEMORY (120012)
 * stands over "Can't allocate memory for treem node.".
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_treem_append_child(kestu_tree_t *parent, uint32_t tag,
                                                                 void *data, kestu_tree_t **out);

/*
 * Walks the whole level of `node`, first sibling to last, each with all that is below it: `pre` is
 * called for a node before its children, `post` after them. Either may be null. Neither may change
 * links of the tree.
 */
KESTU_API void kestu_tree_walk(kestu_tree_t *node, kestu_visit_func pre, kestu_visit_func post,
                               void *baton);

/*
 * As kestu_tree_walk until a callback returns something other than 0, which ends the walk at once,
 * without the children and the `post` of its node, and is returned; 0 at the end.
 */
KESTU_API int kestu_tree_walk_int_first(kestu_tree_t *node, kestu_int_func pre, kestu_int_func post,
                                        void *baton);

/*
 * As kestu_tree_walk until a callback returns an error, which ends the walk at once, without the
 * children and the `post` of its node, and is returned unchanged; null at the end.
 * KestuDLlistStopWalking is a result like any other.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *
kestu_tree_walk_err_first(kestu_tree_t *node, kestu_err_func pre, kestu_err_func post, void *baton);

/* The number of nodes that a walk from `node` visits. */
KESTU_API uint64_t kestu_tree_count(kestu_tree_t *node);

/*
 * The first node on a walk from `node`, parents before children, that carries the pointer `data`.
 * Null when there is none.
 */
KESTU_API kestu_tree_t *kestu_tree_search_obj(kestu_tree_t *node, void *data);

/* As kestu_tree_search_obj for the first node for which `fn` returns other than 0. */
KESTU_API kestu_tree_t *kestu_tree_search_func(kestu_tree_t *node, kestu_int_func fn, void *baton);

/*
 * Deletes `node` and all that is below it, children before their parent and siblings in order: each
 * is taken out of the tree, and stays in its pool. Handles to deleted nodes are left dangling. A
 * null node does nothing.
 */
KESTU_API void kestu_tree_node_delete(kestu_tree_t *node);

/*
 * As kestu_tree_node_delete for the whole level of `node`, the siblings before it too, with all
 * that is below.
 */
KESTU_API void kestu_tree_delete(kestu_tree_t *node);

/* As kestu_tree_node_delete, and frees the nodes. */
KESTU_API void kestu_treem_node_delete(kestu_tree_t *node);

/* As kestu_tree_delete, and frees the nodes. */
KESTU_API void kestu_treem_delete(kestu_tree_t *node);

/*
 * As kestu_tree_node_delete, and calls `fn` with the tag and datum of each node that has been taken
 * out.
 */
KESTU_API void kestu_tree_node_delete_func(kestu_tree_t *node, kestu_visit_func fn, void *baton);

/*
 * As kestu_tree_delete, and calls `fn` with the tag and datum of each node that has been taken out.
 */
KESTU_API void kestu_tree_delete_func(kestu_tree_t *node, kestu_visit_func fn, void *baton);

/* As kestu_tree_delete_func, and frees each node behind the call. */
KESTU_API void kestu_treem_delete_func(kestu_tree_t *node, kestu_visit_func fn, void *baton);

/*
 * As kestu_tree_node_delete_func until `fn` returns an error, which is returned unchanged. The node
 * it was for and those before are gone from the tree; the others stay linked as they were.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *
kestu_tree_node_delete_errfunc(kestu_tree_t *node, kestu_err_func fn, void *baton);

/* As kestu_tree_node_delete_errfunc for the whole level of `node`, with all that is below. */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_tree_delete_errfunc(kestu_tree_t *node,
                                                                  kestu_err_func fn, void *baton);

/*
 * Deletes the node that kestu_tree_search_obj finds for `data`, with all that is below it, as
 * kestu_tree_node_delete_func does with `fn`. A datum that is not there changes nothing.
 */
KESTU_API void kestu_tree_delete_obj_func(kestu_tree_t *node, void *data, kestu_visit_func fn,
                                          void *baton);

/*
 * As kestu_tree_delete_obj_func, in the way of kestu_tree_node_delete_errfunc, whose errors it
 * returns.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *
kestu_tree_delete_obj_errfunc(kestu_tree_t *node, void *data, kestu_err_func fn, void *baton);

/* Sets the handle at `root` to null. The nodes stay linked and go with their pool. */
KESTU_API void kestu_tree_destroy(kestu_tree_t **root);

/*
 * Deletes and frees the level of the handle at `root` with all that is below it, as
 * kestu_treem_delete does, and sets the handle to null.
 */
KESTU_API void kestu_treem_destroy(kestu_tree_t **root);

/* As kestu_treem_destroy, with `fn` called for each node as by kestu_treem_delete_func. */
KESTU_API void kestu_treem_destroy_func(kestu_tree_t **root, kestu_visit_func fn, void *baton);

KESTU_END_DECLS

#endif
