// The circular list with free nodes that are used again.
#include "kestu_cdl.h"

#include "containers/links.hpp"
#include "containers/walks.hpp"
#include "mem/nodes.hpp"

using namespace kestu;

namespace {

constexpr uint32_t occupied_bit = KESTU_CDL_OCCUPIED;

constexpr Place<kestu_cdl_t> at_end{link_last, "Unable to append DL object."};
constexpr Place<kestu_cdl_t> at_front{link_first, "Unable to prepend DL object."};
constexpr Place<kestu_cdl_t> after_handle{link_after, "Unable to add DL object."};

kestu_cdl_t occupied_node(uint32_t tag, void *data) {
    return {tag, occupied_bit, nullptr, nullptr, data};
}

bool is_occupied(const kestu_cdl_t *node) {
    return (node->flags & occupied_bit) != 0;
}

// The node and those before it, back to the first, then those behind it.
auto outward(kestu_cdl_t *node) {
    return [node](auto visit) {
        bool go_on = true;
        for (kestu_cdl_t *n = node; n && go_on; n = n->prev)
            go_on = visit(n);
        for (kestu_cdl_t *n = node ? node->next : nullptr; n && go_on; n = n->next)
            go_on = visit(n);
    };
}

auto in_order(kestu_cdl_t *node) {
    return forward(first_of(node));
}

// The part of a walk that concerns occupied nodes.
template <typename Walk>
auto occupied(Walk walk) {
    return [walk](auto visit) {
        walk([&](kestu_cdl_t *node) { return !is_occupied(node) || visit(node); });
    };
}

} // namespace

kestu_error_t *kestu_cdl_append(kestu_cdl_t **handle, uint32_t tag, void *data, kestu_cdl_t **out,
                                apr_pool_t *pool) {
    return add_node(at_end, PoolNodes{pool}, occupied_node(tag, data), handle, out);
}

kestu_error_t *kestu_cdl_prepend(kestu_cdl_t **handle, uint32_t tag, void *data, kestu_cdl_t **out,
                                 apr_pool_t *pool) {
    return add_node(at_front, PoolNodes{pool}, occupied_node(tag, data), handle, out);
}

kestu_error_t *kestu_cdl_add(kestu_cdl_t **handle, uint32_t tag, void *data, kestu_cdl_t **out,
                             apr_pool_t *pool) {
    return add_node(after_handle, PoolNodes{pool}, occupied_node(tag, data), handle, out);
}

kestu_error_t *kestu_cdl_insert_before(kestu_cdl_t *node, kestu_cdl_t *new_node) {
    return insert_before(node, new_node);
}

kestu_error_t *kestu_cdl_insert_after(kestu_cdl_t *node, kestu_cdl_t *new_node) {
    return insert_after(node, new_node);
}

kestu_cdl_t *kestu_cdl_get_free(kestu_cdl_t *node) {
    return find_node<kestu_cdl_t>(outward(node), [](kestu_cdl_t *n) { return !is_occupied(n); });
}

kestu_cdl_t *kestu_cdl_get_ready(kestu_cdl_t *node) {
    kestu_cdl_t *ready = kestu_cdl_get_free(node);
    kestu_cdl_set_occupied(ready);
    return ready;
}

void kestu_cdl_set_free(kestu_cdl_t *node) {
    if (node)
        node->flags &= ~occupied_bit;
}

void kestu_cdl_set_occupied(kestu_cdl_t *node) {
    if (node)
        node->flags |= occupied_bit;
}

void kestu_cdl_set_free_obj(kestu_cdl_t *node, void *data) {
    const auto carries = [=](kestu_cdl_t *n) { return n->data == data; };
    if (data)
        kestu_cdl_set_free(find_node<kestu_cdl_t>(occupied(outward(node)), carries));
}

void kestu_cdl_set_allfree(kestu_cdl_t *node) {
    outward(node)([](kestu_cdl_t *n) {
        kestu_cdl_set_free(n);
        return true;
    });
}

kestu_cdl_t *kestu_cdl_get_first(kestu_cdl_t *node) {
    return first_of(node);
}

kestu_cdl_t *kestu_cdl_get_last(kestu_cdl_t *node) {
    return last_of(node);
}

kestu_cdl_t *kestu_cdl_get_n(kestu_cdl_t *node, size_t n) {
    return nth_node<kestu_cdl_t>(occupied(in_order(node)), n);
}

size_t kestu_cdl_count(kestu_cdl_t *node) {
    size_t count = 0;
    outward(node)([&](const kestu_cdl_t *n) {
        count += is_occupied(n);
        return true;
    });
    return count;
}

void *kestu_cdl_get_data(kestu_cdl_t *node) {
    return node ? node->data : nullptr;
}

uint32_t kestu_cdl_get_tag(kestu_cdl_t *node) {
    return node ? node->tag : 0;
}

void kestu_cdl_set_data(kestu_cdl_t *node, void *data) {
    if (node)
        node->data = data;
}

void kestu_cdl_set_tag(kestu_cdl_t *node, uint32_t tag) {
    if (node)
        node->tag = tag;
}

void kestu_cdl_set_data_tag(kestu_cdl_t *node, void *data, uint32_t tag) {
    kestu_cdl_set_data(node, data);
    kestu_cdl_set_tag(node, tag);
}

void kestu_cdl_destroy(kestu_cdl_t **handle) {
    *handle = nullptr;
}

void kestu_cdl_walk(kestu_cdl_t *node, kestu_visit_func fn, void *baton) {
    visit_all(occupied(outward(node)), fn, baton);
}

void kestu_cdl_flwalk(kestu_cdl_t *node, kestu_visit_func fn, void *baton) {
    visit_all(occupied(in_order(node)), fn, baton);
}

int kestu_cdl_walk_int_first(kestu_cdl_t *node, kestu_int_func fn, void *baton) {
    return first_result(occupied(outward(node)), fn, baton);
}

void *kestu_cdl_walk_ptr_first(kestu_cdl_t *node, kestu_ptr_func fn, void *baton) {
    return first_result(occupied(outward(node)), fn, baton);
}

kestu_error_t *kestu_cdl_walk_err_first(kestu_cdl_t *node, kestu_err_func fn, void *baton) {
    return first_result(occupied(outward(node)), fn, baton);
}

kestu_error_t *kestu_cdl_flwalk_err_first(kestu_cdl_t *node, kestu_err_func fn, void *baton) {
    return first_result(occupied(in_order(node)), fn, baton);
}

kestu_error_t *kestu_cdl_walk_err_or_ptr_first(kestu_cdl_t *node, kestu_err_or_ptr_func fn,
                                               void *baton, void **result) {
    return first_error_or_pointer(occupied(outward(node)), fn, baton, result);
}

kestu_error_t *kestu_cdl_flwalk_err_or_ptr_first(kestu_cdl_t *node, kestu_err_or_ptr_func fn,
                                                 void *baton, void **result) {
    return first_error_or_pointer(occupied(in_order(node)), fn, baton, result);
}

void kestu_cdl_walk_free(kestu_cdl_t *node, kestu_int_func fn, void *baton) {
    occupied(outward(node))([=](kestu_cdl_t *n) {
        if (fn(n->tag, n->data, baton))
            kestu_cdl_set_free(n);
        return true;
    });
}

kestu_cdl_t *kestu_cdl_walk_node_first(kestu_cdl_t *node, kestu_int_func fn, void *baton) {
    return find_node<kestu_cdl_t>(occupied(outward(node)),
                                  [=](kestu_cdl_t *n) { return fn(n->tag, n->data, baton) != 0; });
}
