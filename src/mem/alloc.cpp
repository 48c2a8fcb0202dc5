// The checked wrappers around the system's allocator.
#include "kestu_mem.h"

#include "base/kept_errno.hpp"
#include "mem/memory.hpp"

#include <cstdlib>
#include <cstring>

using namespace kestu;

kestu_error_t *kestu_mem_calloc(size_t count, size_t size, void *out) {
    if (count == 0)
        return fail(KESTU_ERR_ELEMENT_COUNT, "Cannot allocate memory for %zu elements.", count);
    if (size == 0)
        return fail(KESTU_ERR_ELEMENT_SIZE, "Cannot allocate memory for element of size %zu bytes.",
                    size);
    const KeptErrno kept;
    void *block = std::calloc(count, size);
    *static_cast<void **>(out) = block;
    return block ? nullptr : no_memory(count * size);
}

kestu_error_t *kestu_mem_malloc(size_t bytes, void *out) {
    if (bytes == 0)
        return fail(KESTU_ERR_MEMORY_SIZE, "Cannot allocate memory of size %zu bytes.", bytes);
    const KeptErrno kept;
    void *block = std::malloc(bytes);
    *static_cast<void **>(out) = block;
    return block ? nullptr : no_memory(bytes);
}

// Kept: a failure nulls the caller's pointer although the old block stays allocated. Relied on by:
// callers that keep a copy of the pointer.
kestu_error_t *kestu_mem_realloc(size_t bytes, void *inout) {
    if (bytes == 0)
        return fail(KESTU_ERR_MEMORY_SIZE, "Cannot allocate memory for %zu bytes.", bytes);
    const KeptErrno kept;
    auto **pointer = static_cast<void **>(inout);
    *pointer = std::realloc(*pointer, bytes);
    return *pointer ? nullptr
                    : fail(KESTU_ERR_NO_MEMORY_TO_RESIZE,
                           "Failed to reallocate memory for %zu bytes.", bytes);
}

void *kestu_mem_move(void *dst, const void *src, size_t bytes) {
    return std::memmove(dst, src, bytes);
}

void *kestu_mem_copy(void *dst, const void *src, size_t bytes) {
    return std::memcpy(dst, src, bytes);
}

void kestu_mem_free(void *block) {
    std::free(block);
}
