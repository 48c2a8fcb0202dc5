// Texts in pools. APR's own copies crash when a pool has no memory left; these return null.
#pragma once

#include "base/draft.hpp"

#include <apr_pools.h>

#include <string_view>

namespace kestu {

char *pool_copy(apr_pool_t *pool, std::string_view text);

// The text of a draft. Of one that could not be formatted, what was produced.
char *pool_draft(apr_pool_t *pool, Draft &draft);

} // namespace kestu
