// The one way in which nodes get into a singly linked list or a stack.
#pragma once

#include "kestu_sl.h"
#include "mem/nodes.hpp"

#include <new> // IWYU pragma: keep

namespace kestu {

// Makes a node in front of the one at `link`, which is a list's head or a node's `next`. Null, with
// nothing changed, when the pool has no memory.
inline kestu_sl_t *insert_at(kestu_sl_t **link, uint32_t tag, void *data, apr_pool_t *pool) {
    auto *node = pool_node<kestu_sl_t>(pool);
    if (node)
        *link = new (node) kestu_sl_t{tag, *link, data};
    return node;
}

} // namespace kestu
