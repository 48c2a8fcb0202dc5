// What changes a doubly linked list.
#pragma once

#include "containers/links.hpp"
#include "containers/walks.hpp"
#include "kestu_dl.h"
#include "mem/nodes.hpp"

#include <utility>

namespace kestu::dl {

constexpr Place<kestu_dl_t> after_handle{link_after, "Unable to add DL node."};
constexpr Place<kestu_dl_t> before_handle{link_before, "Unable to add DL node."};
constexpr Place<kestu_dl_t> at_front{link_first, "Unable to prepend DL object."};
constexpr Place<kestu_dl_t> at_end{link_last, "Unable to append DL object."};

// Nodes from the system's allocator, whose failures say what they were for.
struct DlmNodes : HeapNodes {
    static kestu_error_t *make(kestu_dl_t **node) {
        kestu_error_t *err = HeapNodes::make(node);
        return err ? wrap(err, "Can't allocate memory for dlm node.") : nullptr;
    }
};

inline kestu_dl_t unlinked(uint32_t tag, void *data) {
    return {tag, nullptr, nullptr, data};
}

inline auto whole_list(kestu_dl_t *node) {
    return forward(first_of(node));
}

inline kestu_dl_t *extract(kestu_dl_t *node) {
    unlink(node);
    return node;
}

template <typename Nodes, typename Func>
auto remove(kestu_dl_t *node, Func fn, void *baton) {
    decltype(call(fn, node, baton)) result{};
    if (!node)
        return result;
    extract(node);
    result = call(fn, node, baton);
    Nodes::release(node);
    return result;
}

template <typename Nodes, typename Func>
auto remove_obj(kestu_dl_t **handle, void *data, Func fn, void *baton) {
    const auto carries = [data](const kestu_dl_t *node) { return node->data == data; };
    kestu_dl_t *const node = data ? find_node<kestu_dl_t>(whole_list(*handle), carries) : nullptr;
    if (node && node == *handle)
        *handle = node->next ? node->next : node->prev;
    return remove<Nodes>(node, fn, baton);
}

template <typename Nodes, typename Func>
auto remove_all(kestu_dl_t **handle, Func fn, void *baton) {
    decltype(call(fn, *handle, baton)) result{};
    while (!result && *handle && (*handle)->prev)
        result = remove<Nodes>((*handle)->prev, fn, baton);
    while (!result && *handle) {
        kestu_dl_t *const node = std::exchange(*handle, (*handle)->next);
        result = remove<Nodes>(node, fn, baton);
    }
    return result;
}

// Puts `node` where another stood between `prev` and `next`; fails when that one stood alone.
inline kestu_error_t *insert_between(kestu_dl_t *prev, kestu_dl_t *node, kestu_dl_t *next) {
    return prev ? insert_after(prev, node) : insert_before(next, node);
}

inline kestu_error_t *exchange_apart(kestu_dl_t *a, kestu_dl_t *b) {
    kestu_dl_t *const a_prev = a->prev, *const a_next = a->next;
    kestu_dl_t *const b_prev = b->prev, *const b_next = b->next;
    extract(a);
    extract(b);
    if (kestu_error_t *err = insert_between(b_prev, a, b_next))
        return err;
    return insert_between(a_prev, b, a_next);
}

inline kestu_error_t *exchange(kestu_dl_t *a, kestu_dl_t *b) {
    kestu_error_t *err = nullptr;
    if (!a || !b)
        return fail(KESTU_ERR_LIST_EXCHANGE);
    if (a->next == b)
        err = insert_after(b, extract(a));
    else if (b->next == a)
        err = insert_after(a, extract(b));
    else if (a != b)
        err = exchange_apart(a, b);
    return wrap(err, "Unable to exchange DL nodes.");
}

inline kestu_error_t *sort(kestu_dl_t *node, kestu_dl_compare_func compare, void *baton) {
    for (kestu_dl_t *a = first_of(node); a; a = a->next)
        for (kestu_dl_t *b = a->next; b; b = b->next) {
            if (compare(a->tag, a->data, b->tag, b->data, baton) <= 0)
                continue;
            if (kestu_error_t *err = exchange(a, b))
                return err;
            std::swap(a, b);
        }
    return nullptr;
}

} // namespace kestu::dl
