/*
 * Checked allocation, and vectors and matrices whose indices begin where the caller likes.
 *
 *     double **m;
 *     kestu_error_t *err = kestu_mem_matrix_alloc(&m, sizeof **m, 1, rows, 1, columns);
 *     ...                                   // m[1][1] to m[rows][columns] are valid and zero
 *     kestu_mem_matrix_free(m, sizeof **m, 1, rows, 1, columns);
 *
 * Blocks come from the system's allocator and belong to the caller; plain free() releases what
 * kestu_mem_calloc, kestu_mem_malloc and kestu_mem_realloc give. An out-parameter takes the address
 * of a pointer of any type. No state is kept: everything may run at the same time on different
 * blocks.
 */
#ifndef KESTU_MEM_H
#define KESTU_MEM_H

#include "kestu_error.h"

#include <stddef.h>

KESTU_BEGIN_DECLS

/*
 * Stores through `out`, the address of a pointer, a new block of `count` elements of `size` bytes
 * filled with zeros. Errors: KESTU_ERR_ELEMENT_COUNT (120010) for a count of 0 and
 * KESTU_ERR_ELEMENT_SIZE (120011) for an element size of 0, both leaving the pointer as it was;
 * KESTU_ERR_NO_MEMORY (120012) when no memory is left, with the pointer set to null.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_mem_calloc(size_t count, size_t size, void *out);

/*
 * Stores through `out`, the address of a pointer, a new block of `bytes` bytes as they come.
 * Errors: KESTU_ERR_MEMORY_SIZE (120014) for 0 bytes, leaving the pointer as it was;
 * KESTU_ERR_NO_MEMORY (120012) when no memory is left, with the pointer set to null.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_mem_malloc(size_t bytes, void *out);

/*
 * Resizes the block whose pointer stands at `inout` to `bytes` bytes. Errors: KESTU_ERR_MEMORY_SIZE
 * (120014) for 0 bytes, with block and pointer untouched; KESTU_ERR_NO_MEMORY_TO_RESIZE (120013)
 * when no memory is left. The pointer is then set to null while the old block stays allocated: keep
 * a copy of the pointer if the block is still wanted.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_mem_realloc(size_t bytes, void *inout);

/* memmove of `bytes` bytes from `src` to `dst`, which may overlap. Returns `dst`. */
KESTU_API void *kestu_mem_move(void *dst, const void *src, size_t bytes);

/* memcpy of `bytes` bytes from `src` to `dst`, which must not overlap. Returns `dst`. */
KESTU_API void *kestu_mem_copy(void *dst, const void *src, size_t bytes);

/* Releases `block`. Null is allowed. */
KESTU_API void kestu_mem_free(void *block);

/*
 * Stores through `out` a vector of zero-filled elements of `size` bytes that is indexed from `lo`
 * to `hi`. Errors are those of kestu_mem_calloc under "Cannot allocate vector."; the pointer is
 * then not set.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_mem_vector_alloc(void *out, size_t size, int lo,
                                                               int hi);

/* Releases a `vector` of elements of `size` bytes whose low bound is `lo`. Null is allowed. */
KESTU_API void kestu_mem_vector_free(void *vector, size_t size, int lo);

/*
 * Stores through `out` a matrix of zero-filled elements of `size` bytes: an array of pointers to
 * rows that is indexed from `rlo` to `rhi`, each row a block of its own indexed from `clo` to
 * `chi`. Errors are those of kestu_mem_malloc and kestu_mem_calloc under "Cannot allocate matrix.";
 * rows made before a row that failed are not released.
 */
KESTU_API KESTU_MUST_USE kestu_error_t *kestu_mem_matrix_alloc(void *out, size_t size, int rlo,
                                                               int rhi, int clo, int chi);

/*
 * Releases a `matrix` made with the same `size`, `rlo`, `rhi` and `clo`; `chi` is not used. Null is
 * allowed.
 */
KESTU_API void kestu_mem_matrix_free(void *matrix, size_t size, int rlo, int rhi, int clo, int chi);

KESTU_END_DECLS

#endif
