// The doubly linked list: the C edge.
#include "kestu_dl.h"

#include "containers/dl_change.hpp"
#include "containers/dl_step.hpp"

#include <cstring>

using namespace kestu;
using namespace kestu::dl;

namespace {

int32_t hook_key(const void *record) {
    int32_t key;
    std::memcpy(&key, static_cast<const char *>(record) + 108, sizeof key);
    return key;
}

} // namespace

// Kept: a pool without memory shows as a null node, not as an error.
// Relied on by: programs that drop what is returned.
kestu_error_t *kestu_dl_create(uint32_t tag, void *data, kestu_dl_t **out, apr_pool_t *pool) {
    *out = pool_node<kestu_dl_t>(pool);
    if (*out)
        **out = unlinked(tag, data);
    return nullptr;
}

kestu_error_t *kestu_dlm_create(uint32_t tag, void *data, kestu_dl_t **out) {
    if (kestu_error_t *err = DlmNodes::make(out))
        return err;
    **out = unlinked(tag, data);
    return nullptr;
}

kestu_error_t *kestu_dl_insert_before(kestu_dl_t *node, kestu_dl_t *new_node) {
    return insert_before(node, new_node);
}

kestu_error_t *kestu_dl_insert_after(kestu_dl_t *node, kestu_dl_t *new_node) {
    return insert_after(node, new_node);
}

kestu_error_t *kestu_dl_add_after(kestu_dl_t **handle, uint32_t tag, void *data, kestu_dl_t **out,
                                  apr_pool_t *pool) {
    return add_node(after_handle, PoolNodes{pool}, unlinked(tag, data), handle, out);
}

kestu_error_t *kestu_dl_add_before(kestu_dl_t **handle, uint32_t tag, void *data, kestu_dl_t **out,
                                   apr_pool_t *pool) {
    return add_node(before_handle, PoolNodes{pool}, unlinked(tag, data), handle, out);
}

kestu_error_t *kestu_dl_prepend(kestu_dl_t **handle, uint32_t tag, void *data, kestu_dl_t **out,
                                apr_pool_t *pool) {
    return add_node(at_front, PoolNodes{pool}, unlinked(tag, data), handle, out);
}

kestu_error_t *kestu_dl_append(kestu_dl_t **handle, uint32_t tag, void *data, kestu_dl_t **out,
                               apr_pool_t *pool) {
    return add_node(at_end, PoolNodes{pool}, unlinked(tag, data), handle, out);
}

kestu_error_t *kestu_dlm_add_after(kestu_dl_t **handle, uint32_t tag, void *data,
                                   kestu_dl_t **out) {
    return add_node(after_handle, DlmNodes{}, unlinked(tag, data), handle, out);
}

kestu_error_t *kestu_dlm_add_before(kestu_dl_t **handle, uint32_t tag, void *data,
                                    kestu_dl_t **out) {
    return add_node(before_handle, DlmNodes{}, unlinked(tag, data), handle, out);
}

kestu_error_t *kestu_dlm_prepend(kestu_dl_t **handle, uint32_t tag, void *data, kestu_dl_t **out) {
    return add_node(at_front, DlmNodes{}, unlinked(tag, data), handle, out);
}

kestu_error_t *kestu_dlm_append(kestu_dl_t **handle, uint32_t tag, void *data, kestu_dl_t **out) {
    return add_node(at_end, DlmNodes{}, unlinked(tag, data), handle, out);
}

// Joining a list with itself would close it to a ring, in which no walk ends.
kestu_dl_t *kestu_dl_join(kestu_dl_t *a, kestu_dl_t *b) {
    kestu_dl_t *const first = first_of(a);
    kestu_dl_t *const second = first_of(b);
    if (first && second && first != second) {
        second->prev = last_of(a);
        second->prev->next = second;
    }
    return first;
}

void *kestu_dl_get_data(kestu_dl_t *node) {
    return node ? node->data : nullptr;
}

void *kestu_dl_get_data_tag(kestu_dl_t *node, uint32_t *tag) {
    if (node && tag)
        *tag = node->tag;
    return kestu_dl_get_data(node);
}

void kestu_dl_update(kestu_dl_t *node, uint32_t tag, void *data) {
    node->tag = tag;
    node->data = data;
}

kestu_dl_t *kestu_dl_get_prev(kestu_dl_t *node) {
    return node ? node->prev : nullptr;
}

kestu_dl_t *kestu_dl_get_next(kestu_dl_t *node) {
    return node ? node->next : nullptr;
}

kestu_dl_t *kestu_dl_get_first(kestu_dl_t *node) {
    return first_of(node);
}

kestu_dl_t *kestu_dl_get_last(kestu_dl_t *node) {
    return last_of(node);
}

kestu_dl_t *kestu_dl_get_n(kestu_dl_t *node, size_t n) {
    return nth_node<kestu_dl_t>(whole_list(node), n);
}

size_t kestu_dl_count(kestu_dl_t *node) {
    size_t count = 0;
    for (const kestu_dl_t *n = node; n; n = n->next)
        ++count;
    for (const kestu_dl_t *n = kestu_dl_get_prev(node); n; n = n->prev)
        ++count;
    return count;
}

kestu_dl_t *kestu_dl_extract(kestu_dl_t *node) {
    return node ? extract(node) : nullptr;
}

void kestu_dl_delete(kestu_dl_t *node) {
    remove<PoolNodes>(node, nobody, nullptr);
}

void kestu_dlm_delete(kestu_dl_t *node) {
    remove<DlmNodes>(node, nobody, nullptr);
}

void kestu_dl_delete_func(kestu_dl_t *node, kestu_visit_func fn, void *baton) {
    remove<PoolNodes>(node, fn, baton);
}

void kestu_dlm_delete_func(kestu_dl_t *node, kestu_visit_func fn, void *baton) {
    remove<DlmNodes>(node, fn, baton);
}

kestu_error_t *kestu_dl_delete_errfunc(kestu_dl_t *node, kestu_err_func fn, void *baton) {
    return remove<PoolNodes>(node, fn, baton);
}

void kestu_dl_delete_obj(kestu_dl_t **handle, void *data) {
    remove_obj<PoolNodes>(handle, data, nobody, nullptr);
}

void kestu_dlm_delete_obj(kestu_dl_t **handle, void *data) {
    remove_obj<DlmNodes>(handle, data, nobody, nullptr);
}

void kestu_dl_delete_obj_func(kestu_dl_t **handle, void *data, kestu_visit_func fn, void *baton) {
    remove_obj<PoolNodes>(handle, data, fn, baton);
}

kestu_error_t *kestu_dl_delete_obj_errfunc(kestu_dl_t **handle, void *data, kestu_err_func fn,
                                           void *baton) {
    return remove_obj<PoolNodes>(handle, data, fn, baton);
}

void kestu_dl_destroy(kestu_dl_t **handle) {
    *handle = nullptr;
}

void kestu_dlm_destroy(kestu_dl_t **handle) {
    remove_all<DlmNodes>(handle, nobody, nullptr);
}

void kestu_dl_destroy_func(kestu_dl_t **handle, kestu_visit_func fn, void *baton) {
    remove_all<PoolNodes>(handle, fn, baton);
}

void kestu_dlm_destroy_func(kestu_dl_t **handle, kestu_visit_func fn, void *baton) {
    remove_all<DlmNodes>(handle, fn, baton);
}

kestu_error_t *kestu_dl_destroy_errfunc(kestu_dl_t **handle, kestu_err_func fn, void *baton) {
    return wrap(remove_all<PoolNodes>(handle, fn, baton), "Error while destroy DL List.");
}

void kestu_dl_walk(kestu_dl_t *node, kestu_visit_func fn, void *baton) {
    visit_all(whole_list(node), fn, baton);
}

int kestu_dl_walk_int_first(kestu_dl_t *node, kestu_int_func fn, void *baton) {
    return first_result(whole_list(node), fn, baton);
}

void *kestu_dl_walk_ptr_first(kestu_dl_t *node, kestu_ptr_func fn, void *baton) {
    return first_result(whole_list(node), fn, baton);
}

kestu_error_t *kestu_dl_walk_err_first(kestu_dl_t *node, kestu_err_func fn, void *baton) {
    return first_result(whole_list(node), fn, baton);
}

kestu_error_t *kestu_dl_walk_err_or_ptr_first(kestu_dl_t *node, kestu_err_or_ptr_func fn,
                                              void *baton, void **result) {
    return first_error_or_pointer(whole_list(node), fn, baton, result);
}

// Reads the next node before the call, unlike the other walks: here a node may go away.
void kestu_dl_dwalk(kestu_dl_t **handle, kestu_int_func fn, void *baton) {
    kestu_dl_t *first_kept = nullptr;
    for (kestu_dl_t *node = first_of(*handle), *next; node; node = next) {
        next = node->next;
        if (fn(node->tag, node->data, baton))
            extract(node);
        else if (!first_kept)
            first_kept = node;
    }
    *handle = first_kept;
}

kestu_error_t *kestu_dl_mwalk_err_first(kestu_dl_t *const *handles, uint32_t n,
                                        kestu_dl_mwalk_func fn, void *baton) {
    if (n == 0)
        return nullptr;
    Cursors lists(n);
    if (kestu_error_t *err = lists.start(handles))
        return err;
    while (lists.read()) {
        if (kestu_error_t *err = fn(n, lists.tags(), lists.data(), baton))
            return err == KestuDLlistStopWalking ? nullptr : err;
        lists.advance();
    }
    return nullptr;
}

kestu_error_t *kestu_dl_exchange(kestu_dl_t *a, kestu_dl_t *b) {
    return exchange(a, b);
}

kestu_error_t *kestu_dl_bubsort(kestu_dl_t *node, kestu_dl_compare_func compare, void *baton) {
    return wrap(sort(node, compare, baton), "Can't sort dllist.");
}

int kestu_hook_bubsort_callback(uint32_t, void *a, uint32_t, void *b, void *) {
    const int32_t key_a = hook_key(a);
    const int32_t key_b = hook_key(b);
    return (key_a > key_b) - (key_a < key_b);
}
