/*
 * The stack: a singly linked list whose head is the top, and a count.
 *
 *     kestu_stk_t *stack;
 *     kestu_stk_create(&stack, pool);
 *     if ((err = kestu_stk_push(stack, 1, &item, pool)))
 *         return err;
 *     ... = kestu_stk_pop(stack);
 *
 * Stack and elements live in pools and are never given back one by one: a stack that is used for
 * long wants a pool that is cleared from time to time. The stack never owns a datum. A stack
 * belongs to one thread at a time. A null `stack` is an empty one; only pushing to it fails.
 */
#ifndef KESTU_STK_H
#define KESTU_STK_H

#include "kestu_sl.h"

KESTU_BEGIN_DECLS

/* A stack. Read its fields freely; change them through the functions below. */
typedef struct kestu_stk_t {
    kestu_sl_t *top; /* null when the stack is empty */
    uint64_t count;  /* how many elements there are */
} kestu_stk_t;

/*
 * Stores a new, empty stack in `pool` through `out`. Always returns null; when the pool has no
 * memory, the stack is null.
 */
KESTU_API kestu_error_t *kestu_stk_create(kestu_stk_t **out, apr_pool_t *pool);

/*
 * Puts an element of `tag` and `data`, made in `pool`, on top of `stack`. Errors, under "Can't push
 * object to stack.": KESTU_ERR_NO_MEMORY (120012) when the pool has no memory,
 * KESTU_ERR_LIST_INSERTION (120051) for a null stack.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_stk_push(kestu_stk_t *stack, uint32_t tag, void *data,
                                                       apr_pool_t *pool);

/* Takes the top element from `stack` and returns its datum; null when it is empty. */
KESTU_API void *kestu_stk_pop(kestu_stk_t *stack);

/*
 * The datum on top of `stack`, with its tag stored through `tag`, which may be null. Null, with
 * nothing stored, when the stack is empty.
 */
KESTU_API void *kestu_stk_get_data(kestu_stk_t *stack, uint32_t *tag);

/* The number of elements on `stack`. */
KESTU_API uint64_t kestu_stk_count(kestu_stk_t *stack);

/* Empties `stack`. The elements go with their pool. */
KESTU_API void kestu_stk_destroy(kestu_stk_t *stack);

/*
 * Calls `fn` with `baton` for the elements of `stack` from the top to the bottom, as kestu_sl_walk
 * does.
 */
KESTU_API void kestu_stk_walk(kestu_stk_t *stack, kestu_visit_func fn, void *baton);

/* As kestu_stk_walk until `fn` returns a pointer, which is returned; null at the end. */
KESTU_API void *kestu_stk_walk_ptr_first(kestu_stk_t *stack, kestu_ptr_func fn, void *baton);

/* As kestu_stk_walk until `fn` returns an error, which is returned unchanged; null at the end. */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_stk_walk_err_first(kestu_stk_t *stack,
                                                                 kestu_err_func fn, void *baton);

/*
 * Stores through `out` a new stack in `pool` with the elements of `source` in the same order.
 * Error: KESTU_ERR_NO_MEMORY (120012) under "Can't copy stack.", with null stored.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_stk_copy(kestu_stk_t *source, kestu_stk_t **out,
                                                       apr_pool_t *pool);

KESTU_END_DECLS

#endif
