// The walk through a tree, which serves walks, count, searches and deletions alike.
#pragma once

#include "containers/links.hpp"
#include "containers/walks.hpp"
#include "kestu_tree.h"

namespace kestu::tree {

using Node = kestu_tree_t;

// Nodes made in a row mostly lie in a row, upwards on the heap and within a block of a pool, while
// the system maps a pool's blocks one below the other. What lies a little further on either way is
// asked for early. These are guesses: a prefetch of any address is harmless.
inline void prefetch_beyond(const Node *node) {
    constexpr uintptr_t ahead = 2048;
    constexpr uintptr_t pool_block = 8192;
    const auto here = reinterpret_cast<uintptr_t>(node);
    __builtin_prefetch(reinterpret_cast<const void *>(here + ahead));
    __builtin_prefetch(reinterpret_cast<const void *>(here - pool_block - ahead));
}

// The first child. A level that was made by way of the `child` of its parent does not know that one
// yet.
inline Node *first_below(Node *parent) {
    Node *const first = first_of(parent->child);
    if (first->parent != parent)
        for (Node *node = first; node; node = node->next)
            node->parent = parent;
    return first;
}

// Walks the level of `any` and all below it, until a visitor returns false: `enter` meets a node
// before its children, `leave` after them and may take the node away. Parents lead back up, so that
// no depth needs a stack.
template <typename Enter, typename Leave>
void walk(Node *any, Enter enter, Leave leave) {
    if (!any)
        return;
    Node *const above = any->parent;
    Node *node = first_of(any);
    while (enter(node)) {
        prefetch_beyond(node);
        if (node->child) {
            node = first_below(node);
            continue;
        }
        for (;;) {
            Node *const next = node->next;
            Node *const parent = node->parent;
            if (!leave(node))
                return;
            if (next) {
                node = next;
                break;
            }
            if (parent == above)
                return;
            node = parent;
        }
    }
}

constexpr auto go_on = [](Node *) { return true; };

// The nodes of a walk, parents before children.
inline auto parents_first(Node *any) {
    return [any](auto visit) { walk(any, visit, go_on); };
}

template <typename Func>
auto walk_calling(Node *any, Func pre, Func post, void *baton) {
    decltype(call(pre, any, baton)) result{};
    const auto calling = [&result, baton](Func fn) {
        return [&result, fn, baton](const Node *node) {
            result = call(fn, node, baton);
            return !result;
        };
    };
    // A walk for one callback only does not ask at each node whether there is another.
    if (!post)
        walk(any, calling(pre), go_on);
    else if (!pre)
        walk(any, go_on, calling(post));
    else
        walk(any, calling(pre), calling(post));
    return result;
}

} // namespace kestu::tree
