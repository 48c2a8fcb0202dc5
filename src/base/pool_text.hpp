// Texts in pools. APR's own copies crash when a pool has no memory left; these return null.
#pragma once

#include <apr_pools.h>

#include <cstdarg>
#include <string_view>

namespace kestu {

char *pool_copy(apr_pool_t *pool, std::string_view text);

// Formats into the pool, with `suffix` behind. Null with errno ENOMEM when no memory is left, null
// with the engine's errno when the text cannot be formatted.
char *pool_vformat(apr_pool_t *pool, const char *format, va_list args,
                   std::string_view suffix = "");

} // namespace kestu
