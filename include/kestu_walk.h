/*
 * The callbacks that lists, stacks, circular lists and trees share.
 *
 * Each receives the `tag` and the `data` of one node and the caller's `baton`. A walk is named by
 * what ends it: _walk never stops, _walk_int_first stops at the first result that is not 0,
 * _walk_ptr_first at the first pointer that is not null, _walk_err_first at the first error, which
 * it returns unchanged. A callback that wants to stop a walk of the last kind without a failure
 * returns KestuDLlistStopWalking, which the caller knows by its identity and never clears.
 */
#ifndef KESTU_WALK_H
#define KESTU_WALK_H

#include "kestu_error.h"

#include <stdint.h>

KESTU_BEGIN_DECLS

/* Called for one node; what the result means is told by the function that takes the callback. */
typedef void (*kestu_visit_func)(uint32_t tag, void *data, void *baton);
typedef int (*kestu_int_func)(uint32_t tag, void *data, void *baton);
typedef void *(*kestu_ptr_func)(uint32_t tag, void *data, void *baton);
typedef kestu_error_t *(*kestu_err_func)(uint32_t tag, void *data, void *baton);

/* Ends a walk by an error or by setting the pointer at `result`, which is the walk's caller's. */
typedef kestu_error_t *(*kestu_err_or_ptr_func)(uint32_t tag, void *data, void *baton,
                                                void **result);

KESTU_END_DECLS

#endif
