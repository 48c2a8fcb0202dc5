// The walks by callback, one for all containers. A walk is an object that calls a visitor with node
// after node until the visitor returns false; what stands here turns callbacks into visitors.
#pragma once

#include "kestu_walk.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace kestu {

// Walks from `node` to the end. The next node is read after the visit, so that nodes which a
// callback links in behind its own are visited too.
//
// Most lists lie in memory in the order in which they were made, block after block, but where the
// next block begins the processor cannot guess. So each node's counterpart in the next lap of 256
// is fetched into the cache, on the guess that laps repeat; a wrong guess costs next to nothing.
template <typename Node>
auto forward(Node *node) {
    return [node](auto visit) {
        uintptr_t lap_distance = 0;
        for (Node *n = node; n;) {
            const auto lap_start = reinterpret_cast<uintptr_t>(n);
            for (int i = 0; n && i < 256; ++i, n = n->next) {
                const auto address = reinterpret_cast<uintptr_t>(n);
                __builtin_prefetch(reinterpret_cast<const void *>(address + lap_distance));
                if (!visit(n))
                    return;
            }
            lap_distance = reinterpret_cast<uintptr_t>(n) - lap_start;
        }
    };
}

// What `fn` returns of a node, or what does not end a walk when there is no `fn` or no result.
template <typename Result, typename Node>
auto call(Result (*fn)(uint32_t, void *, void *), const Node *node, void *baton) {
    if constexpr (std::is_void_v<Result>) {
        if (fn)
            fn(node->tag, node->data, baton);
        return false;
    } else {
        return fn ? fn(node->tag, node->data, baton) : Result{};
    }
}

// For deletions that hand tag and datum to nobody.
constexpr kestu_visit_func nobody = nullptr;

// Calls `fn` on every node.
template <typename Walk>
void visit_all(Walk walk, kestu_visit_func fn, void *baton) {
    walk([=](auto *node) {
        fn(node->tag, node->data, baton);
        return true;
    });
}

// Stops at the first result of `fn` that is neither 0 nor null, and returns it.
template <typename Walk, typename Result>
Result first_result(Walk walk, Result (*fn)(uint32_t, void *, void *), void *baton) {
    Result result{};
    walk([&](auto *node) {
        result = fn(node->tag, node->data, baton);
        return !result;
    });
    return result;
}

// Stops at the first error of `fn`, which it returns, or once the caller's `result` is set.
template <typename Walk>
kestu_error_t *first_error_or_pointer(Walk walk, kestu_err_or_ptr_func fn, void *baton,
                                      void **result) {
    kestu_error_t *err = nullptr;
    walk([&](auto *node) {
        err = fn(node->tag, node->data, baton, result);
        return !err && !*result;
    });
    return err;
}

// The first node that `is_wanted` accepts, or null.
template <typename Node, typename Walk, typename IsWanted>
Node *find_node(Walk walk, IsWanted is_wanted) {
    Node *found = nullptr;
    walk([&](Node *node) {
        found = is_wanted(node) ? node : nullptr;
        return !found;
    });
    return found;
}

// The node with the 0-based number `n` along the walk, or null when the walk ends before.
template <typename Node, typename Walk>
Node *nth_node(Walk walk, size_t n) {
    return find_node<Node>(walk, [n](Node *) mutable { return n-- == 0; });
}

} // namespace kestu
