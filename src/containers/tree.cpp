// The tree: the C edge.
#include "kestu_tree.h"

#include "containers/tree_change.hpp"

using namespace kestu;
using namespace kestu::tree;

// Kept: a pool without memory shows as a null node, not as an error.
// Relied on by: programs that drop what is returned.
kestu_error_t *kestu_tree_create(uint32_t tag, void *data, kestu_tree_t **out, apr_pool_t *pool) {
    *out = pool_node<Node>(pool);
    if (*out)
        **out = lone(tag, data);
    return nullptr;
}

kestu_error_t *kestu_treem_create(uint32_t tag, void *data, kestu_tree_t **out) {
    if (kestu_error_t *err = TreemNodes::make(out))
        return err;
    **out = lone(tag, data);
    return nullptr;
}

kestu_tree_t *kestu_tree_get_prev(kestu_tree_t *node) {
    return node ? node->prev : nullptr;
}

kestu_tree_t *kestu_tree_get_next(kestu_tree_t *node) {
    return node ? node->next : nullptr;
}

kestu_tree_t *kestu_tree_get_parent(kestu_tree_t *node) {
    return node ? node->parent : nullptr;
}

kestu_tree_t *kestu_tree_get_child(kestu_tree_t *node) {
    return node ? node->child : nullptr;
}

kestu_tree_t *kestu_tree_get_first(kestu_tree_t *node) {
    return first_of(node);
}

kestu_tree_t *kestu_tree_get_last(kestu_tree_t *node) {
    return last_of(node);
}

kestu_tree_t *kestu_tree_get_top(kestu_tree_t *node) {
    while (node && node->parent)
        node = node->parent;
    return node;
}

void *kestu_tree_get_data(kestu_tree_t *node) {
    return node ? node->data : nullptr;
}

void *kestu_tree_get_data_tag(kestu_tree_t *node, uint32_t *tag) {
    if (node && tag)
        *tag = node->tag;
    return kestu_tree_get_data(node);
}

void kestu_tree_update(kestu_tree_t *node, uint32_t tag, void *data) {
    node->tag = tag;
    node->data = data;
}

kestu_error_t *kestu_tree_insert_before(kestu_tree_t *ref, kestu_tree_t *node) {
    return insert(link_sibling_before, ref, &Node::prev, node);
}

kestu_error_t *kestu_tree_insert_after(kestu_tree_t *ref, kestu_tree_t *node) {
    return insert(link_sibling_after, ref, &Node::next, node);
}

kestu_tree_t *kestu_tree_extract(kestu_tree_t *node) {
    return node ? extract(node) : nullptr;
}

kestu_error_t *kestu_tree_prepend(kestu_tree_t **root, uint32_t tag, void *data, kestu_tree_t **out,
                                  apr_pool_t *pool) {
    return add_node(at_front, PoolNodes{pool}, lone(tag, data), root, out);
}

kestu_error_t *kestu_tree_append(kestu_tree_t **root, uint32_t tag, void *data, kestu_tree_t **out,
                                 apr_pool_t *pool) {
    return add_node(at_end, PoolNodes{pool}, lone(tag, data), root, out);
}

kestu_error_t *kestu_treem_append(kestu_tree_t **root, uint32_t tag, void *data,
                                  kestu_tree_t **out) {
    return add_node(at_end, TreemNodes{}, lone(tag, data), root, out);
}

kestu_error_t *kestu_tree_add_before(kestu_tree_t **pos, uint32_t tag, void *data,
                                     kestu_tree_t **out, apr_pool_t *pool) {
    return add_node(before_handle, PoolNodes{pool}, lone(tag, data), pos, out);
}

kestu_error_t *kestu_tree_add_after(kestu_tree_t **pos, uint32_t tag, void *data,
                                    kestu_tree_t **out, apr_pool_t *pool) {
    return add_node(after_handle, PoolNodes{pool}, lone(tag, data), pos, out);
}

kestu_error_t *kestu_tree_prepend_child(kestu_tree_t *parent, uint32_t tag, void *data,
                                        kestu_tree_t **out, apr_pool_t *pool) {
    return add_child(first_child, PoolNodes{pool}, parent, tag, data, out);
}

kestu_error_t *kestu_tree_append_child(kestu_tree_t *parent, uint32_t tag, void *data,
                                       kestu_tree_t **out, apr_pool_t *pool) {
    return add_child(last_child, PoolNodes{pool}, parent, tag, data, out);
}

kestu_error_t *kestu_treem_append_child(kestu_tree_t *parent, uint32_t tag, void *data,
                                        kestu_tree_t **out) {
    return add_child(last_child, TreemNodes{}, parent, tag, data, out);
}

void kestu_tree_walk(kestu_tree_t *node, kestu_visit_func pre, kestu_visit_func post, void *baton) {
    walk_calling(node, pre, post, baton);
}

int kestu_tree_walk_int_first(kestu_tree_t *node, kestu_int_func pre, kestu_int_func post,
                              void *baton) {
    return walk_calling(node, pre, post, baton);
}

kestu_error_t *kestu_tree_walk_err_first(kestu_tree_t *node, kestu_err_func pre,
                                         kestu_err_func post, void *baton) {
    return walk_calling(node, pre, post, baton);
}

uint64_t kestu_tree_count(kestu_tree_t *node) {
    uint64_t count = 0;
    parents_first(node)([&count](Node *) { return ++count; });
    return count;
}

kestu_tree_t *kestu_tree_search_obj(kestu_tree_t *node, void *data) {
    return find_node<Node>(parents_first(node), [data](Node *n) { return n->data == data; });
}

kestu_tree_t *kestu_tree_search_func(kestu_tree_t *node, kestu_int_func fn, void *baton) {
    return find_node<Node>(parents_first(node),
                           [fn, baton](Node *n) { return fn(n->tag, n->data, baton) != 0; });
}

void kestu_tree_node_delete(kestu_tree_t *node) {
    remove_subtree<PoolNodes>(node, nobody, nullptr);
}

void kestu_tree_delete(kestu_tree_t *node) {
    remove_level<PoolNodes>(node, nobody, nullptr);
}

void kestu_treem_node_delete(kestu_tree_t *node) {
    remove_subtree<TreemNodes>(node, nobody, nullptr);
}

void kestu_treem_delete(kestu_tree_t *node) {
    remove_level<TreemNodes>(node, nobody, nullptr);
}

void kestu_tree_node_delete_func(kestu_tree_t *node, kestu_visit_func fn, void *baton) {
    remove_subtree<PoolNodes>(node, fn, baton);
}

void kestu_tree_delete_func(kestu_tree_t *node, kestu_visit_func fn, void *baton) {
    remove_level<PoolNodes>(node, fn, baton);
}

void kestu_treem_delete_func(kestu_tree_t *node, kestu_visit_func fn, void *baton) {
    remove_level<TreemNodes>(node, fn, baton);
}

kestu_error_t *kestu_tree_node_delete_errfunc(kestu_tree_t *node, kestu_err_func fn, void *baton) {
    return remove_subtree<PoolNodes>(node, fn, baton);
}

kestu_error_t *kestu_tree_delete_errfunc(kestu_tree_t *node, kestu_err_func fn, void *baton) {
    return remove_level<PoolNodes>(node, fn, baton);
}

void kestu_tree_delete_obj_func(kestu_tree_t *node, void *data, kestu_visit_func fn, void *baton) {
    kestu_tree_node_delete_func(kestu_tree_search_obj(node, data), fn, baton);
}

kestu_error_t *kestu_tree_delete_obj_errfunc(kestu_tree_t *node, void *data, kestu_err_func fn,
                                             void *baton) {
    return kestu_tree_node_delete_errfunc(kestu_tree_search_obj(node, data), fn, baton);
}

void kestu_tree_destroy(kestu_tree_t **root) {
    *root = nullptr;
}

void kestu_treem_destroy(kestu_tree_t **root) {
    kestu_treem_destroy_func(root, nobody, nullptr);
}

void kestu_treem_destroy_func(kestu_tree_t **root, kestu_visit_func fn, void *baton) {
    kestu_treem_delete_func(*root, fn, baton);
    *root = nullptr;
}
