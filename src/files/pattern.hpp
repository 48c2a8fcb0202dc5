// Compiling lists of file-name patterns with a result to check.
#pragma once

#include <apr_tables.h>

#include <string_view>

namespace kestu {

// The pieces of `text` between semicolons as an array of char * in `pool`; null without memory.
apr_array_header_t *compile_patterns(std::string_view text, apr_pool_t *pool);

} // namespace kestu
