// What the doubly linked families share: the ends of a list and linking nodes in.
#pragma once

#include "containers/stride.hpp"
#include "error/error.hpp"

namespace kestu {

template <typename Node>
Node *first_of(Node *node) {
    Stride stride;
    while (node && node->prev)
        node = stride.step(node, node->prev);
    return node;
}

template <typename Node>
Node *last_of(Node *node) {
    Stride stride;
    while (node && node->next)
        node = stride.step(node, node->next);
    return node;
}

// Puts `node` between two neighbours, either of which may be missing.
template <typename Node>
void link_between(Node *prev, Node *node, Node *next) {
    node->prev = prev;
    node->next = next;
    if (prev)
        prev->next = node;
    if (next)
        next->prev = node;
}

// Joins the neighbours of `node`, which then has none.
template <typename Node>
void unlink(Node *node) {
    if (node->prev)
        node->prev->next = node->next;
    if (node->next)
        node->next->prev = node->prev;
    node->prev = node->next = nullptr;
}

template <typename Node>
void link_before(Node *next, Node *node) {
    link_between(next->prev, node, next);
}

template <typename Node>
void link_after(Node *prev, Node *node) {
    link_between(prev, node, prev->next);
}

template <typename Node>
void link_first(Node *any, Node *node) {
    link_before(first_of(any), node);
}

template <typename Node>
void link_last(Node *any, Node *node) {
    link_after(last_of(any), node);
}

// The checked forms. A node that stands in the wanted place already, or beside itself, stays.
template <typename Node>
[[nodiscard]] kestu_error_t *insert_before(Node *next, Node *node) {
    if (!next || !node)
        return fail(KESTU_ERR_LIST_INSERTION);
    if (node != next && node != next->prev)
        link_before(next, node);
    return nullptr;
}

template <typename Node>
[[nodiscard]] kestu_error_t *insert_after(Node *prev, Node *node) {
    if (!prev || !node)
        return fail(KESTU_ERR_LIST_INSERTION);
    if (node != prev && node != prev->next)
        link_after(prev, node);
    return nullptr;
}

// One of the places in which a list takes a new node, and what a failure to make one is called.
template <typename Node>
struct Place {
    void (*link)(Node *handle, Node *node);
    const char *failed;
};

// Makes a copy of `value` as a new node and links it in; an empty list's handle becomes the node.
// `out` may be null or the handle itself.
template <typename Node, typename Nodes>
[[nodiscard]] kestu_error_t *add_node(const Place<Node> &place, const Nodes &nodes,
                                      const Node &value, Node **handle, Node **out) {
    Node *node = nullptr;
    if (kestu_error_t *err = nodes.make(&node))
        return wrap(err, place.failed);
    *node = value;
    if (*handle)
        place.link(*handle, node);
    else
        *handle = node;
    if (out)
        *out = node;
    return nullptr;
}

} // namespace kestu
