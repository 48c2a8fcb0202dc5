/*
 * Arrays of any number of dimensions with sizes given at run time, and access that is checked.
 *
 *     kestu_mem_array_t *a;
 *     kestu_error_t *err = kestu_mem_array_alloc(&a, sizeof(double), 2, 3, 0); // 2 x 3 zeros
 *     const uint32_t last[] = {1, 2};
 *     err = kestu_mem_array_copytoel(a, &value, sizeof value, 2, last);
 *     double **rows = a->data;                                                 // rows[1][2]
 *     kestu_mem_array_free(a);
 *
 * An array belongs to the caller. No state is kept: everything may run at the same time on
 * different arrays, and reading one array too.
 */
#ifndef KESTU_ARRAY_H
#define KESTU_ARRAY_H

#include "kestu_error.h"

#include <stdarg.h>
#include <stddef.h>
#include <stdint.h>

KESTU_BEGIN_DECLS

/*
 * An array. The block at `data` holds dims[0] pointers to blocks of the next dimension, and so on;
 * the blocks of the last dimension hold the elements. With one dimension `data` holds the elements.
 */
typedef struct kestu_mem_array_t {
    uint32_t ndims; /* number of dimensions, at least 1 */
    uint32_t *dims; /* number of values in each dimension, outermost first */
    void *data;     /* the outermost block */
    size_t elsize;  /* bytes of an element */
} kestu_mem_array_t;

/*
 * Stores through `out` a new array of zero-filled elements of `elsize` bytes. `first` and the
 * further counts, up to a 0 that ends them, tell the number of values in each dimension, outermost
 * first. Every block is checked for a size that cannot be, and so are all of them together.
 *
 * Errors, under "Cannot allocate array." and with null stored: KESTU_ERR_ELEMENT_SIZE (120011) for
 * an element size of 0, KESTU_ERR_ELEMENT_COUNT (120010) for a first count of 0,
 * KESTU_ERR_NO_MEMORY (120012) and KESTU_ERR_NO_MEMORY_TO_RESIZE (120013) when no memory is left.
 * Element and pointer blocks that were complete by then stay allocated, except those on the way to
 * the block that failed.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_mem_array_alloc(kestu_mem_array_t **out,
                                                              size_t elsize, int first, ...);

/* As kestu_mem_array_alloc, with the further counts in `rest`. */
KESTU_API KESTU_MUST_USE kestu_error_t *
kestu_mem_array_valloc(kestu_mem_array_t **out, size_t elsize, int first, va_list rest);

/* Releases `array` with all its blocks. Null is allowed. */
KESTU_API void kestu_mem_array_free(kestu_mem_array_t *array);

/*
 * Copies one element from `src` to `array`: to the one at `positions`, one position a dimension,
 * outermost first and counted from 0. `elsize` and `ndims` must be those of the array. Errors have
 * code 0 and stand under "Cannot copy data to element.": "Expected element size 8, found 4",
 * "Expected dimensions 2, found 3", and "Number of values in dimension 1 is 2, requested position
 * is 2", where dimensions count from 1. Nothing is copied then.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_mem_array_copytoel(kestu_mem_array_t *array,
                                                                 const void *src, size_t elsize,
                                                                 int ndims,
                                                                 const uint32_t *positions);

/*
 * As kestu_mem_array_copytoel, from the element of `array` to `dst`. The errors stand under "Cannot
 * copy data from element.".
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_mem_array_copyfromel(const kestu_mem_array_t *array,
                                                                   void *dst, size_t elsize,
                                                                   int ndims,
                                                                   const uint32_t *positions);

/*
 * Sets every byte of every element of `array` to the low 8 bits of `value`. An `elsize` that is not
 * the array's fails as for kestu_mem_array_copytoel, under "Cannot set all elements of an array",
 * and changes nothing.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_mem_array_allset(kestu_mem_array_t *array, int value,
                                                               size_t elsize);

KESTU_END_DECLS

#endif
