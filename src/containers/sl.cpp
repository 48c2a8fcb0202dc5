// The singly linked list.
#include "containers/sl.hpp"

#include "containers/walks.hpp"

using namespace kestu;

// Kept: the functions that make nodes return null whatever happens.
// Relied on by: programs that drop what they return.
kestu_error_t *kestu_sl_add(kestu_sl_t **node, uint32_t tag, void *data, apr_pool_t *pool) {
    insert_at(*node ? &(*node)->next : node, tag, data, pool);
    return nullptr;
}

kestu_error_t *kestu_sl_front(kestu_sl_t **head, uint32_t tag, void *data, apr_pool_t *pool) {
    insert_at(head, tag, data, pool);
    return nullptr;
}

kestu_error_t *kestu_sl_append(kestu_sl_t **head, uint32_t tag, void *data, apr_pool_t *pool) {
    kestu_sl_t **end = head;
    while (*end)
        end = &(*end)->next;
    insert_at(end, tag, data, pool);
    return nullptr;
}

void kestu_sl_update(kestu_sl_t *node, uint32_t tag, void *data) {
    node->tag = tag;
    node->data = data;
}

kestu_sl_t *kestu_sl_get_n(kestu_sl_t *node, size_t n) {
    return nth_node<kestu_sl_t>(forward(node), n);
}

void *kestu_sl_get_data(kestu_sl_t *node) {
    return node ? node->data : nullptr;
}

void *kestu_sl_get_data_tag(kestu_sl_t *node, uint32_t *tag) {
    if (node && tag)
        *tag = node->tag;
    return kestu_sl_get_data(node);
}

void kestu_sl_delete_next(kestu_sl_t *node) {
    if (node && node->next)
        node->next = node->next->next;
}

void kestu_sl_destroy(kestu_sl_t **head) {
    *head = nullptr;
}

void kestu_sl_walk(kestu_sl_t *node, kestu_visit_func fn, void *baton) {
    visit_all(forward(node), fn, baton);
}

int kestu_sl_walk_int_first(kestu_sl_t *node, kestu_int_func fn, void *baton) {
    return first_result(forward(node), fn, baton);
}

void *kestu_sl_walk_ptr_first(kestu_sl_t *node, kestu_ptr_func fn, void *baton) {
    return first_result(forward(node), fn, baton);
}

kestu_error_t *kestu_sl_walk_err_first(kestu_sl_t *node, kestu_err_func fn, void *baton) {
    return first_result(forward(node), fn, baton);
}
