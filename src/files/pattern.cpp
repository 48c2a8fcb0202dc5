// Lists of file-name patterns.
#include "files/pattern.hpp"

#include "base/kept_errno.hpp"
#include "kestu_dir.h"

#include <apr_fnmatch.h>
#include <apr_strings.h>

#include <algorithm>
#include <cstring>
#include <string_view>

namespace kestu {

// Array, pointers and text stand in one block, so that one check covers all memory.
apr_array_header_t *compile_patterns(std::string_view text, apr_pool_t *pool) {
    const KeptErrno kept;
    const auto most = static_cast<size_t>(std::count(text.begin(), text.end(), ';')) + 1;
    const size_t head = sizeof(apr_array_header_t) + most * sizeof(char *);
    auto *block = static_cast<char *>(apr_palloc(pool, head + text.size() + 1));
    if (!block)
        return nullptr;
    auto *array = reinterpret_cast<apr_array_header_t *>(block);
    auto **patterns = reinterpret_cast<char **>(array + 1);
    char *rest = block + head;
    std::memcpy(rest, text.data(), text.size());
    rest[text.size()] = '\0';
    int count = 0;
    char *state = nullptr;
    for (char *piece = apr_strtok(rest, ";", &state); piece;
         piece = apr_strtok(nullptr, ";", &state))
        patterns[count++] = piece;
    *array = {.pool = pool,
              .elt_size = sizeof(char *),
              .nelts = count,
              .nalloc = static_cast<int>(most),
              .elts = reinterpret_cast<char *>(patterns)};
    return array;
}

} // namespace kestu

void compilePattern(const char *text, apr_array_header_t **array, apr_pool_t *pool) {
    if (apr_array_header_t *compiled = text ? kestu::compile_patterns(text, pool) : nullptr)
        *array = compiled;
}

int matchToCompositePattern(const char *path, const apr_array_header_t *array,
                            const kestu_dir_traverse_t *options) {
    if (!array)
        return 1;
    if (!path)
        return 0;
    constexpr int match_flags = 0x0F;
    auto *const *patterns = reinterpret_cast<char *const *>(array->elts);
    const int flags = options->flags & match_flags;
    return std::any_of(patterns, patterns + array->nelts, [=](const char *pattern) {
        return apr_fnmatch(pattern, path, flags) == APR_SUCCESS;
    });
}
