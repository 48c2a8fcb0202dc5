// Where the nodes of containers come from: one algorithm serves the pool and the malloc variant.
#pragma once

#include "base/kept_errno.hpp"
#include "mem/memory.hpp"

#include <apr_pools.h>

#include <cstdlib>

namespace kestu {

// Memory for a node, not initialised, or null when `pool` has none.
template <typename Node>
Node *pool_node(apr_pool_t *pool, size_t bytes = sizeof(Node)) {
    const KeptErrno kept;
    return static_cast<Node *>(apr_palloc(pool, bytes));
}

// Nodes that live as long as their pool and are never given back one by one.
struct PoolNodes {
    apr_pool_t *pool;

    // Stores a new node of `bytes` bytes, not initialised, through `node`.
    template <typename Node>
    kestu_error_t *make(Node **node, size_t bytes = sizeof(Node)) const {
        *node = pool_node<Node>(pool, bytes);
        return *node ? nullptr : no_memory(bytes);
    }
    static void release(void *) {}
};

// Nodes from the system's allocator: what kestu_mem_malloc and kestu_mem_free do, in line.
struct HeapNodes {
    template <typename Node>
    static kestu_error_t *make(Node **node, size_t bytes = sizeof(Node)) {
        const KeptErrno kept;
        *node = static_cast<Node *>(std::malloc(bytes));
        return *node ? nullptr : no_memory(bytes);
    }
    static void release(void *node) { std::free(node); }
};

} // namespace kestu
