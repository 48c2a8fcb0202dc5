// What changes a tree.
#pragma once

#include "containers/tree_walk.hpp"
#include "mem/nodes.hpp"

#include <type_traits>

namespace kestu::tree {

// Siblings have the same parent, so a node takes it from the one that it is linked to.
inline void link_sibling_before(Node *next, Node *node) {
    node->parent = next->parent;
    link_before(next, node);
}

inline void link_sibling_after(Node *prev, Node *node) {
    node->parent = prev->parent;
    link_after(prev, node);
}

inline void link_sibling_first(Node *any, Node *node) {
    link_sibling_before(first_of(any), node);
}

inline void link_sibling_last(Node *any, Node *node) {
    link_sibling_after(last_of(any), node);
}

constexpr Place<Node> before_handle{link_sibling_before, "Unable to add Tree node."};
constexpr Place<Node> after_handle{link_sibling_after, "Unable to add Tree node."};
constexpr Place<Node> at_front{link_sibling_first, "Unable to prepend Tree node."};
constexpr Place<Node> at_end{link_sibling_last, "Unable to append Tree node."};
constexpr Place<Node> first_child{link_sibling_first, "Unable to prepend child Tree node."};
constexpr Place<Node> last_child{link_sibling_last, "Unable to append child Tree node."};

// Nodes from the system's allocator, whose failures say what they were for.
struct TreemNodes : HeapNodes {
    static kestu_error_t *make(Node **node) {
        kestu_error_t *err = HeapNodes::make(node);
        return err ? wrap(err, "Can't allocate memory for treem node.") : nullptr;
    }
};

inline Node lone(uint32_t tag, void *data, Node *parent = nullptr) {
    return {tag, nullptr, nullptr, parent, nullptr, data};
}

// Kept: the parent's `child` stays with the child that came first, whatever comes before it.
// Relied on by: programs that hold it as their way into the level of children.
template <typename Nodes>
kestu_error_t *add_child(const Place<Node> &place, const Nodes &nodes, Node *parent, uint32_t tag,
                         void *data, Node **out) {
    if (!parent)
        return fail(KESTU_ERR_TREE_INSERTION);
    return add_node(place, nodes, lone(tag, data, parent), &parent->child, out);
}

// A node that stands in the wanted place already, or beside itself, stays.
inline kestu_error_t *insert(void (*link)(Node *, Node *), Node *ref, Node *Node::*there,
                             Node *node) {
    if (!ref || !node)
        return fail(KESTU_ERR_TREE_INSERTION);
    if (node != ref && node != ref->*there)
        link(ref, node);
    return nullptr;
}

inline Node *extract(Node *node) {
    if (node->parent && node->parent->child == node)
        node->parent->child = node->prev ? node->prev : node->next;
    unlink(node);
    node->parent = nullptr;
    return node;
}

template <typename Nodes, typename Func>
auto remove(Node *node, Func fn, void *baton) {
    extract(node);
    const auto result = call(fn, node, baton);
    Nodes::release(node);
    return result;
}

// Nobody sees these nodes on their way out, so that of all links only the one from above is undone.
inline void release_level(Node *any) {
    if (!any)
        return;
    Node *const above = any->parent;
    walk(any, go_on, [](Node *node) {
        TreemNodes::release(node);
        return true;
    });
    if (above)
        above->child = nullptr;
}

template <typename Nodes, typename Func>
auto remove_level(Node *any, Func fn, void *baton) {
    decltype(call(fn, any, baton)) result{};
    if (std::is_same_v<Nodes, TreemNodes> && !fn) {
        release_level(any);
        return result;
    }
    walk(any, go_on, [&](Node *node) {
        result = remove<Nodes>(node, fn, baton);
        return !result;
    });
    return result;
}

template <typename Nodes, typename Func>
auto remove_subtree(Node *node, Func fn, void *baton) {
    decltype(call(fn, node, baton)) result{};
    if (node)
        result = remove_level<Nodes>(node->child, fn, baton);
    if (node && !result)
        result = remove<Nodes>(node, fn, baton);
    return result;
}

} // namespace kestu::tree
