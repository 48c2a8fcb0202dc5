// Vectors and matrices with bounds of the caller's own.
#include "kestu_mem.h"

#include "error/error.hpp"

using namespace kestu;

namespace {

// hi - lo + 1.
// Kept: it is computed in 32 bits, and an inverted range becomes a size that no allocator grants.
// Relied on by: programs that take the error of the allocation for that of a wrong range.
size_t count_between(int lo, int hi) {
    const uint32_t count = static_cast<uint32_t>(hi) - static_cast<uint32_t>(lo) + 1;
    return static_cast<size_t>(static_cast<int32_t>(count));
}

// The address of element 0 of a block whose first element is number `lo`, which need not lie in the
// block. Integers, because pointer arithmetic that leaves a block is undefined.
void *move_base(void *block, size_t size, int64_t elements) {
    return reinterpret_cast<void *>(reinterpret_cast<uintptr_t>(block) +
                                    static_cast<uintptr_t>(elements) * size);
}

void *base_of(void *block, size_t size, int lo) {
    return move_base(block, size, -int64_t{lo});
}
void *block_of(void *base, size_t size, int lo) {
    return move_base(base, size, lo);
}

kestu_error_t *alloc_elements(void **out, size_t size, int lo, int hi) {
    void *block = nullptr;
    kestu_error_t *err = kestu_mem_calloc(count_between(lo, hi), size, &block);
    if (!err)
        *out = base_of(block, size, lo);
    return err;
}

} // namespace

kestu_error_t *kestu_mem_vector_alloc(void *out, size_t size, int lo, int hi) {
    return wrap(alloc_elements(static_cast<void **>(out), size, lo, hi), "Cannot allocate vector.");
}

void kestu_mem_vector_free(void *vector, size_t size, int lo) {
    if (vector)
        kestu_mem_free(block_of(vector, size, lo));
}

kestu_error_t *kestu_mem_matrix_alloc(void *out, size_t size, int rlo, int rhi, int clo, int chi) {
    constexpr const char *action = "Cannot allocate matrix.";
    void **rows = nullptr;
    if (kestu_error_t *err = kestu_mem_malloc(count_between(rlo, rhi) * sizeof(void *), &rows))
        return wrap(err, action);
    *static_cast<void **>(out) = base_of(rows, sizeof(void *), rlo);
    for (int64_t r = rlo; r <= rhi; ++r)
        if (kestu_error_t *err = alloc_elements(&rows[r - rlo], size, clo, chi))
            return wrap(err, action);
    return nullptr;
}

void kestu_mem_matrix_free(void *matrix, size_t size, int rlo, int rhi, int clo, int) {
    if (!matrix)
        return;
    auto **rows = static_cast<void **>(block_of(matrix, sizeof(void *), rlo));
    for (int64_t r = rlo; r <= rhi; ++r)
        kestu_mem_vector_free(rows[r - rlo], size, clo);
    kestu_mem_free(rows);
}
