// Where the nodes of containers come from: one algorithm serves the pool and the malloc variant.
#pragma once

#include "mem/memory.hpp"

#include <apr_pools.h>

#include <cstdlib>

namespace kestu {

// Nodes that live as long as their pool and are never given back one by one.
struct PoolNodes {
    apr_pool_t *pool;

    // Stores a new node of `bytes` bytes, not initialised, through `node`.
    template <typename Node>
    kestu_error_t *make(Node **node, size_t bytes = sizeof(Node)) const {
        *node = static_cast<Node *>(apr_palloc(pool, bytes));
        return *node ? nullptr : no_memory(bytes);
    }
    static void release(void *) {}
};

// Nodes from the system's allocator: what kestu_mem_malloc and kestu_mem_free do, in line.
struct HeapNodes {
    template <typename Node>
    static kestu_error_t *make(Node **node, size_t bytes = sizeof(Node)) {
        *node = static_cast<Node *>(std::malloc(bytes));
        return *node ? nullptr : no_memory(bytes);
    }
    static void release(void *node) { std::free(node); }
};

} // namespace kestu
