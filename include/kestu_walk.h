/*
 * The callbacks that lists, stacks, circular lists and trees share.
 *
 * Each receives the `tag` and the `data` of one node and the caller's `baton`. A walk is named by
 * what ends it: `_walk` never stops, `_walk_int_first` stops at the first result that is not 0,
 * `_walk_ptr_first` at the first pointer that is not null, `_walk_err_first` at the first error,
 * which it returns unchanged. A callback that wants to stop a walk of the last kind without a
 * failure returns KestuDLlistStopWalking, which the caller knows by its identity and never clears.
 *
 * A callback runs on the thread of the walk. The data are the caller's.
 */
#ifndef KESTU_WALK_H
#define KESTU_WALK_H

#include "kestu_error.h"

#include <stdint.h>

KESTU_BEGIN_DECLS

/* Called for one node. It cannot end the walk. */
typedef void (*kestu_visit_func)(uint32_t tag, void *data, void *baton);

/*
 * Called for one node. A result other than 0 means what the function that takes the callback says:
 * most end the walk and return it.
 */
typedef int (*kestu_int_func)(uint32_t tag, void *data, void *baton);

/* Called for one node. A pointer that is not null ends the walk, which returns it. */
typedef void *(*kestu_ptr_func)(uint32_t tag, void *data, void *baton);

/* Called for one node. An error ends the walk, which hands it on to its caller. */
typedef kestu_error_t *(*kestu_err_func)(uint32_t tag, void *data, void *baton);

/*
 * Called for one node. Ends the walk by an error, or by setting the pointer at `result`, which is
 * the walk's caller's.
 */
typedef kestu_error_t *(*kestu_err_or_ptr_func)(uint32_t tag, void *data, void *baton,
                                                void **result);

KESTU_END_DECLS

#endif
