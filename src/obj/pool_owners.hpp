// Which object a pool belongs to.
#pragma once

#include "obj/object.hpp"

namespace kestu {

// False without memory.
[[nodiscard]] bool set_pool_owner(apr_pool_t *pool, Object &owner);

void clear_pool_owner(apr_pool_t *pool);

// The object whose own pool this is, or null.
Object *pool_owner(apr_pool_t *pool);

} // namespace kestu
