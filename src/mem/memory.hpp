// Memory from pools, and saying in one way that there is none.
#pragma once

#include "base/kept_errno.hpp"
#include "base/pool_text.hpp"
#include "error/error.hpp"

#include <apr_pools.h>

#include <string_view>

namespace kestu {

[[nodiscard, gnu::returns_nonnull]] inline kestu_error_t *no_memory(size_t bytes) {
    return fail(KESTU_ERR_NO_MEMORY, "Failed to allocate %zu bytes of memory.", bytes);
}

// Stores a new child of `parent` through `pool`.
[[nodiscard]] inline kestu_error_t *new_pool(apr_pool_t **pool, apr_pool_t *parent) {
    const KeptErrno kept;
    const apr_status_t status = apr_pool_create_ex(pool, parent, nullptr, nullptr);
    return status == APR_SUCCESS ? nullptr : fail_apr(status);
}

// Stores room for `count` objects, not initialised, through `made`, or null.
template <typename T>
[[nodiscard]] kestu_error_t *pool_make(apr_pool_t *pool, T **made, size_t count = 1) {
    const KeptErrno kept;
    const size_t bytes = count * sizeof(T);
    *made = static_cast<T *>(apr_palloc(pool, bytes));
    return *made ? nullptr : no_memory(bytes);
}

// Stores a copy of `text` through `made`, or null.
template <typename Char>
[[nodiscard]] kestu_error_t *pool_make_text(apr_pool_t *pool, Char **made, std::string_view text) {
    *made = pool_copy(pool, text);
    return *made ? nullptr : no_memory(text.size() + 1);
}

} // namespace kestu
